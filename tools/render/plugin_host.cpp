#include "plugin_host.h"

#include <dlfcn.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <iterator>
#include <new>

#include "shared/windows_1252.h"

namespace stratovane::render {

namespace {

constexpr std::intptr_t hostVersion = 2300, productVersion = 2000;
constexpr int mostOutputs = 32;
constexpr std::chrono::seconds patience{60};
constexpr std::size_t headWords = offsetof(EventList, events) / sizeof(std::intptr_t);
static_assert(headWords * sizeof(std::intptr_t) == offsetof(EventList, events));

// A message-box hook gets no pointer of ours. Null: messages are told at once.
std::string* messages = nullptr;

int showMessage(const char* text, int) {
    if (messages == nullptr)
        std::fprintf(stderr, "The plug-in says: %s\n", text);
    else
        messages->append(messages->empty() ? "" : "; ").append(text);
    return 0;  // no, to what is a question
}

std::intptr_t answerText(void* buffer, const char* text) {
    if (buffer == nullptr) return 0;
    std::strcpy(static_cast<char*>(buffer), text);
    return 1;
}

}  // namespace

PluginHost::~PluginHost() {
    if (record_ != nullptr) {
        if (running_) request(Opcode::mainsChanged, 0, 0);
        request(Opcode::vendorSpecific, fourCharacters("mbox"));
        request(Opcode::close);
    }
    if (library_ != nullptr) dlclose(library_);
}

std::optional<Failure> PluginHost::load(const std::string& path) {
    library_ = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (library_ == nullptr)
        return Failure{Exit::plugIn,
                       std::string{"the plug-in cannot be loaded: "}.append(dlerror())};
    using Entry = EffectRecord* (*)(HostCallback);
    const auto entry = reinterpret_cast<Entry>(dlsym(library_, "main"));
    if (entry == nullptr)
        return Failure{Exit::plugIn, path + " is no plug-in: it exports no \"main\""};
    EffectRecord* record = entry(callback);
    if (record == nullptr) return Failure{Exit::plugIn, path + " refused to start"};
    if (record->magic != fourCharacters("MrxP") || record->request == nullptr ||
        record->processReplacing == nullptr || (record->flags & canRenderReplacing) == 0 ||
        record->outputCount < 2 || record->outputCount > mostOutputs)
        return Failure{Exit::plugIn, path + " answers with a record that is no instrument's"};
    record_ = record;
    record_->userPointer = this;
    request(Opcode::vendorSpecific, fourCharacters("mbox"), 0,
            reinterpret_cast<void*>(&showMessage));
    request(Opcode::open);
    return {};
}

void PluginHost::start(int rate, std::int32_t blockFrames) {
    samples_.assign(static_cast<std::size_t>(outputs()),
                    std::vector<float>(static_cast<std::size_t>(blockFrames)));
    pointers_.clear();
    for (auto& output : samples_) pointers_.push_back(output.data());
    request(Opcode::setSampleRate, 0, 0, nullptr, static_cast<float>(rate));
    request(Opcode::setBlockSize, 0, blockFrames);
    request(Opcode::mainsChanged, 0, 1);
    running_ = true;
    settle();
    highestVoices();  // counting starts here
}

void PluginHost::render(std::span<const SongEvent> events, std::int64_t start, std::int32_t frames,
                        const TimeInfo& time) {
    time_ = time;
    if (!events.empty()) sendEvents(events, start);
    record_->processReplacing(record_, nullptr, pointers_.data(), frames);
}

void PluginHost::sendEvents(std::span<const SongEvent> events, std::int64_t start) {
    midi_.clear();
    exclusive_.clear();
    midi_.reserve(events.size());  // the list points into both
    exclusive_.reserve(events.size());
    // The record itself has room for two.
    list_.assign(headWords + std::max(events.size(), std::size(EventList{}.events)), 0);
    auto* list = new (list_.data()) EventList;
    list->count = static_cast<std::int32_t>(events.size());
    std::intptr_t* pointer = list_.data() + headWords;
    for (const SongEvent& event : events) {
        Event* head = nullptr;
        if (event.exclusive.empty()) {
            MidiEvent& midi = midi_.emplace_back();
            std::copy(event.bytes.begin(), event.bytes.end(), midi.bytes);
            head = &midi.head;
        } else {
            SystemExclusiveEvent& exclusive = exclusive_.emplace_back();
            exclusive.dumpLength = static_cast<std::int32_t>(event.exclusive.size());
            exclusive.dump = event.exclusive.data();
            head = &exclusive.head;
        }
        head->frame = static_cast<std::int32_t>(event.frame - start);
        *pointer++ = reinterpret_cast<std::intptr_t>(head);
    }
    request(Opcode::processEvents, 0, 0, list_.data());
}

void PluginHost::idle() { request(Opcode::idle); }

void PluginHost::settle() {
    const auto begun = std::chrono::steady_clock::now();
    do {
        idle();
        if (stuck_ || std::chrono::steady_clock::now() - begun > patience) stuck_ = true;
    } while (!stuck_ && request(Opcode::vendorSpecific, fourCharacters("busy")) == 1);
}

bool PluginHost::addEffect(int part, EffectChoice effect) {
    const std::intptr_t element =
        request(Opcode::vendorSpecific, fourCharacters("fxad"), part, &effect);
    takeOver();
    return element > 0;
}

void PluginHost::takeOver() {
    settle();
    // A patch is taken over at the start of a block, one a block: this one before the next is made.
    record_->processReplacing(record_, nullptr, pointers_.data(), 0);
}

std::string PluginHost::text(Opcode opcode, std::int32_t index) {
    char buffer[256] = {};
    request(opcode, index, 0, buffer);
    std::string_view text{buffer};
    const auto from = std::min(text.find_first_not_of(' '), text.size());
    text.remove_prefix(from);
    text = text.substr(0, text.find_last_not_of(' ') + 1);
    return utf8FromWindows1252(text);
}

void PluginHost::deliver(std::span<const SongEvent> events) {
    render(events, 0, 0, {});
    takeOver();
}

void PluginHost::selectPart(int part) {
    request(Opcode::vendorSpecific, fourCharacters("part"), part);
}

std::optional<std::string> PluginHost::setChunk(ByteView chunk, bool preset) {
    std::string told;
    messages = &told;
    // The request's pointer is for either direction; this one is only read.
    const bool taken =
        request(Opcode::setChunk, preset ? 1 : 0, static_cast<std::intptr_t>(chunk.size()),
                const_cast<std::uint8_t*>(chunk.data())) == 1;
    messages = nullptr;
    if (!taken) return told.empty() ? "it gives no reason" : told;
    if (!told.empty()) showMessage(told.c_str(), 0);
    takeOver();
    return {};
}

Bytes PluginHost::getChunk(bool preset) {
    void* data = nullptr;
    const std::intptr_t size = request(Opcode::getChunk, preset ? 1 : 0, 0, &data);
    if (size <= 0 || data == nullptr) return {};
    const auto* bytes = static_cast<const std::uint8_t*>(data);
    return {bytes, bytes + size};
}

int PluginHost::highestVoices() {
    return static_cast<int>(request(Opcode::vendorSpecific, fourCharacters("voic")));
}

std::intptr_t PluginHost::request(Opcode opcode, std::int32_t index, std::intptr_t value,
                                  void* pointer, float number) {
    return record_->request(record_, static_cast<std::int32_t>(opcode), index, value, pointer,
                            number);
}

std::intptr_t PluginHost::callback(EffectRecord* record, std::int32_t opcode, std::int32_t,
                                   std::intptr_t, void* pointer, float) {
    switch (static_cast<HostRequest>(opcode)) {
        case HostRequest::version:
            return hostVersion;
        case HostRequest::vendorString:
            return answerText(pointer, "Taldrimor");
        case HostRequest::productString:
            return answerText(pointer, "Stratovane Render");
        case HostRequest::vendorVersion:
            return productVersion;
        case HostRequest::wantMidi:
        case HostRequest::sendEvents:
        case HostRequest::needIdle:
        case HostRequest::updateDisplay:
            return 1;
        case HostRequest::getTime: {
            // During construction the record does not know its host yet, and no time runs.
            if (record == nullptr || record->userPointer == nullptr) return 0;
            return reinterpret_cast<std::intptr_t>(
                &static_cast<PluginHost*>(record->userPointer)->time_);
        }
        default:
            return 0;
    }
}

}  // namespace stratovane::render
