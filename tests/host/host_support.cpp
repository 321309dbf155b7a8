#include "host/host_support.h"

#include <dlfcn.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>

namespace stratovane {

TestHost* TestHost::current_ = nullptr;

TestHost::TestHost(const std::string& settings, const Identity& identity) : identity_{identity} {
    current_ = this;
    settingsPath_ = (std::filesystem::temp_directory_path() /
                     ("stratovane-test-" + std::to_string(getpid()) + ".ini"))
                        .string();
    // No content but a test's own, whatever lies beside the plug-in.
    const bool ownContent = settings.find("Content Location=") != std::string::npos;
    std::ofstream{settingsPath_} << "[Software\\Taldrimor\\Stratovane 2]\n"
                                 << (ownContent ? "" : "Content Location=/nonexistent/\n")
                                 << settings;
    setenv("STRATOVANE_SETTINGS", settingsPath_.c_str(), 1);
    const std::string path = std::string{STRATOVANE_BUILD_DIR} + "/stratovane2.so";
    library_ = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (library_ == nullptr) {
        ADD_FAILURE() << dlerror();
        return;
    }
    void* entry = dlsym(library_, "main");
    if (entry == nullptr) {
        ADD_FAILURE() << "no entry";
        return;
    }
    record = reinterpret_cast<EffectRecord* (*)(HostCallback)>(entry)(&TestHost::callback);
    if (record != nullptr) outputs.resize(static_cast<std::size_t>(record->outputCount));
}

TestHost::~TestHost() {
    if (record != nullptr) ask(Opcode::close);
    if (library_ != nullptr) dlclose(library_);
    std::filesystem::remove(settingsPath_);
    current_ = nullptr;
}

std::intptr_t TestHost::callback(EffectRecord*, std::int32_t opcode, std::int32_t, std::intptr_t,
                                 void* pointer, float) {
    TestHost& host = *current_;
    {
        const std::lock_guard lock{host.requestsMutex_};
        host.requests.push_back(opcode);
    }
    switch (static_cast<HostRequest>(opcode)) {
        case HostRequest::version:
            return host.identity_.answers ? 2300 : 0;
        case HostRequest::productString:
            std::strcpy(static_cast<char*>(pointer), host.identity_.product.c_str());
            return 1;
        case HostRequest::vendorString:
            std::strcpy(static_cast<char*>(pointer), host.identity_.vendor.c_str());
            return 1;
        case HostRequest::vendorVersion:
            return host.identity_.version;
        case HostRequest::getTime:
            return host.givesTime ? reinterpret_cast<std::intptr_t>(&host.time) : 0;
        case HostRequest::sendEvents: {
            const auto* list = static_cast<const EventList*>(pointer);
            for (std::int32_t i = 0; i < list->count; ++i) {
                const auto* event = reinterpret_cast<const MidiEvent*>(list->events[i]);
                host.echoed.push_back({event->bytes[0], event->bytes[1], event->bytes[2]});
            }
            return 1;
        }
        default:
            return 0;
    }
}

std::intptr_t TestHost::ask(Opcode opcode, std::int32_t index, std::intptr_t value, void* pointer,
                            float number) const {
    return record->request(record, static_cast<std::int32_t>(opcode), index, value, pointer,
                           number);
}

std::string TestHost::text(Opcode opcode, std::int32_t index) const {
    char buffer[256];
    std::memset(buffer, '#', sizeof buffer);
    ask(opcode, index, 0, buffer);
    const auto* end = static_cast<const char*>(std::memchr(buffer, 0, sizeof buffer));
    return end == nullptr ? "no end" : std::string(static_cast<const char*>(buffer), end);
}

void TestHost::start(float rate, std::int32_t block) {
    ask(Opcode::setSampleRate, 0, 0, nullptr, rate);
    ask(Opcode::setBlockSize, 0, block);
    ask(Opcode::mainsChanged, 0, 1);
}

void TestHost::settle() {
    constexpr int patience = 1000;
    int calls = 0;
    do {
        render(0);
        ask(Opcode::idle);
    } while (ask(Opcode::vendorSpecific, fourCharacters("busy")) != 0 && ++calls < patience);
    EXPECT_LT(calls, patience) << "always busy";
}

void TestHost::midi(std::vector<MidiEvent> events) const {
    // The list's pointers continue behind its declared end.
    std::vector<std::intptr_t> memory(events.size() + 2);
    auto* list = reinterpret_cast<EventList*>(memory.data());
    list->count = static_cast<std::int32_t>(events.size());
    for (std::size_t i = 0; i < events.size(); ++i)
        memory[i + 1] = reinterpret_cast<std::intptr_t>(&events[i]);
    EXPECT_EQ(ask(Opcode::processEvents, 0, 0, list), 1);
}

void TestHost::exclusive(std::vector<std::uint8_t> bytes, std::int32_t frame) const {
    bytes.insert(bytes.begin(), 0xF0);
    bytes.push_back(0xF7);
    SystemExclusiveEvent event;
    event.head.frame = frame;
    event.dump = bytes.data();
    event.dumpLength = static_cast<std::int32_t>(bytes.size());
    EventList list;
    list.count = 1;
    list.events[0] = &event.head;
    EXPECT_EQ(ask(Opcode::processEvents, 0, 0, &list), 1);
}

void TestHost::render(std::int32_t frames) {
    std::vector<float*> pointers;
    for (auto& output : outputs) {
        output.assign(static_cast<std::size_t>(frames), 7.0f);
        pointers.push_back(output.data());
    }
    record->processReplacing(record, nullptr, pointers.data(), frames);
}

float TestHost::peak(std::size_t output) const {
    float peak = 0;
    for (const float x : outputs[output]) peak = std::max(peak, std::fabs(x));
    return peak;
}

int TestHost::sent(HostRequest request) const {
    return static_cast<int>(
        std::count(requests.begin(), requests.end(), static_cast<std::int32_t>(request)));
}

MidiEvent message(int status, int data1, int data2, std::int32_t frame) {
    MidiEvent event;
    event.head.frame = frame;
    event.bytes[0] = static_cast<std::uint8_t>(status);
    event.bytes[1] = static_cast<std::uint8_t>(data1);
    event.bytes[2] = static_cast<std::uint8_t>(data2);
    return event;
}

}  // namespace stratovane
