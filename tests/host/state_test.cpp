// State chunks and combis as a host sees them, through the library's entry point.

#include <gtest/gtest.h>

#include <atomic>
#include <cstring>
#include <thread>

#include "content/bytes.h"
#include "content/program_files.h"
#include "host/host_support.h"
#include "support/temporary_folder.h"

namespace stratovane {
namespace {

constexpr std::int32_t bank = 0, preset = 1;

Bytes getChunk(const TestHost& host, std::int32_t kind) {
    void* data = &data;
    const auto size = static_cast<std::size_t>(host.ask(Opcode::getChunk, kind, 0, &data));
    const auto* bytes = static_cast<const std::uint8_t*>(data);
    EXPECT_EQ(size == 0, data == nullptr);
    return size == 0 ? Bytes{} : Bytes(bytes, bytes + size);
}
std::intptr_t setChunk(const TestHost& host, std::int32_t kind, const Bytes& bytes) {
    return host.ask(Opcode::setChunk, kind, static_cast<std::intptr_t>(bytes.size()),
                    const_cast<std::uint8_t*>(bytes.data()));
}
void onMessage(const TestHost& host, int (*hook)(const char*, int)) {
    host.ask(Opcode::vendorSpecific, fourCharacters("mbox"), 0, reinterpret_cast<void*>(hook));
}

TEST(HostState, ASetupComesBackInAnotherInstance) {
    std::vector<float> values;
    Bytes chunk;
    {
        TestHost host{"Lift=60\nMemory Use=XXL\n"};
        host.start();
        const Bytes sawtooth = getChunk(host, preset);
        host.ask(Opcode::vendorSpecific, fourCharacters("part"), 4);
        ASSERT_EQ(setChunk(host, preset, sawtooth), 1);
        for (std::int32_t i = 0; i < 2528; ++i)
            if (i >= 2432 || i % 152 != 25) host.set(i, static_cast<float>(i * 7 % 100) / 99.0f);
        host.settle();
        chunk = getChunk(host, bank);
        ASSERT_EQ(setChunk(host, bank, chunk), 1);  // so that empty parts show what they have
        for (std::int32_t i = 0; i < 2528; ++i) values.push_back(host.get(i));
    }
    TestHost host;
    EXPECT_EQ(setChunk(host, bank, chunk), 1);  // before the first resume
    host.start();
    host.settle();  // and no default patch comes after it
    EXPECT_EQ(getChunk(host, bank), chunk);
    for (std::int32_t i = 0; i < 2528; ++i)
        if (i >= 2432 || i % 152 < 48 || i % 152 > 55) {
            ASSERT_EQ(host.get(i), values[static_cast<std::size_t>(i)]) << i;
        }
}

TEST(HostState, UpdatesTheDisplayWhenAsked) {
    for (const auto& [setting, playing, updates] :
         {std::tuple{"0", false, 0}, {"1", false, 1}, {"1", true, 0}, {"2", true, 1}}) {
        TestHost host{std::string{"UpdateDisplay="} + setting + "\n"};
        host.start();
        host.time.flags = playing ? 2 : 0;
        host.render(64);
        EXPECT_EQ(setChunk(host, preset, getChunk(host, preset)), 1);
        EXPECT_EQ(host.sent(HostRequest::updateDisplay), updates) << setting << playing;
    }
}

TEST(HostState, TheHostComesInAgainThroughAMessage) {
    static const TestHost* inside;
    static std::vector<std::intptr_t> answers;
    TestHost host;
    host.start();
    host.settle();
    const Bytes before = getChunk(host, bank);
    inside = &host;
    answers.clear();
    onMessage(host, [](const char* text, int) {
        EXPECT_STREQ(text, "Error loading chunk (abcd, 1200 bytes)");
        void* data = nullptr;
        answers.push_back(inside->ask(Opcode::idle));
        answers.push_back(inside->ask(Opcode::getChunk, 0, 0, &data));
        answers.push_back(setChunk(*inside, bank, Bytes(2000, 'x')));
        EXPECT_EQ(data, nullptr);
        return 1;
    });
    Bytes wrong(1200, 0);
    std::memcpy(wrong.data(), "abcd", 4);
    EXPECT_EQ(setChunk(host, bank, wrong), 0);
    EXPECT_EQ(answers, (std::vector<std::intptr_t>{1, 0, 0}));  // once
    onMessage(host, nullptr);
    EXPECT_EQ(getChunk(host, bank), before);
    EXPECT_EQ(host.ask(Opcode::setChunk, 0, 5000, nullptr), 0);
    EXPECT_EQ(host.ask(Opcode::getChunk, 0, 0, nullptr), 0);
}

TEST(HostState, AProgramChangeOnTheLastChannelLoadsACombi) {
    TemporaryFolder folder;
    Bytes chunk;
    {
        TestHost maker;
        maker.start();
        maker.set(2, 0.3f);
        chunk = getChunk(maker, bank);
    }
    Bytes file = bankFileHeader(chunk.size());
    file.insert(file.end(), chunk.begin(), chunk.end());
    std::filesystem::create_directories(folder / "Patches/121 Sets");
    folder.put("Patches/121 Sets/004 Trio.fxb", std::string(file.begin(), file.end()));
    TestHost host{"Content Location=" + folder / "" + "\n"};
    host.start();
    host.settle();
    host.set(2, 0.9f);
    const auto change = [&](int channel) {
        host.midi({message(0xB0 | channel, 32, 121), message(0xC0 | channel, 4)});
        host.settle();
    };
    change(3);
    EXPECT_FLOAT_EQ(host.get(2), 0.9f);  // not the combi channel
    change(15);
    EXPECT_FLOAT_EQ(host.get(2), 0.3f);
    EXPECT_EQ(host.text(Opcode::getProgramName), "Trio");
    host.midi({message(0x90, 60, 100)});
    host.render(512);
    EXPECT_GT(host.peak(0), 0.001f);
    host.set(2, 0.9f);
    change(15);  // part 16 plays nothing now, so this is no repetition
    EXPECT_FLOAT_EQ(host.get(2), 0.3f);
}

TEST(HostState, SavesAndRestoresWhileTheHostPlays) {
    TestHost host;
    host.start();
    struct {
        std::int32_t type = 0;  // a reverb
        float values[12] = {};
    } effect;
    host.ask(Opcode::vendorSpecific, fourCharacters("fxad"), 0, &effect);
    Bytes chunk = getChunk(host, bank);
    // A shared delay, too, which every restoring builds anew.
    const std::size_t master = ByteView{chunk}.at<std::uint32_t>(80) + 32;
    const float mute = 0, type = 10.5f / 128.9f;
    std::memcpy(chunk.data() + master, &mute, sizeof mute);
    std::memcpy(chunk.data() + master + 4 * 19, &type, sizeof type);
    std::atomic<bool> stop{false};
    std::thread audio{[&] {
        for (int key = 0; !stop; ++key) {
            host.midi({message(0x90, key & 127, 100), message(0xB0, 7, key & 127)});
            host.render(64);
        }
    }};
    for (int i = 0; i < 12; ++i) {
        EXPECT_EQ(setChunk(host, bank, chunk), 1);
        EXPECT_GT(getChunk(host, bank).size(), chunk.size());  // the patch took the effect along
        EXPECT_EQ(host.ask(Opcode::idle), 1);
    }
    stop = true;
    audio.join();
}

}  // namespace
}  // namespace stratovane
