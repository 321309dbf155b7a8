#include "mrx/host_plugin_base.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <new>
#include <string>
#include <vector>

#include "base/text_out.h"

using namespace stratovane;

namespace {

/// Notes each operation that the dispatcher reaches, with what it was given.
class Recorder final : public HostPluginBase {
  public:
    explicit Recorder(std::vector<std::string>& log, HostCallback host = nullptr)
        : HostPluginBase{host, 1, 2528}, log_{log} {}
    ~Recorder() override { note("deleted"); }
    float rate() const { return sampleRate_; }
    std::int32_t blockFrames() const { return blockSize_; }
    int uiRequests = 0;

  private:
    template <class... A>
    void note(const char* format, A... arguments) {
        char line[128];
        TextOut out{line};
        out.print(format, arguments...);
        log_.emplace_back(out.view());
    }
    void onUserInterfaceRequest() override { ++uiRequests; }

    void setParameter(std::int32_t i, float v) override { note("set %d %.2f", i, v); }
    float getParameter(std::int32_t i) override { return static_cast<float>(i) / 4; }
    void process(float**, float**, std::int32_t n) override { note("add %d", n); }
    void processReplacing(float**, float**, std::int32_t n) override { note("replace %d", n); }
    void open() override { note("open"); }
    void close() override { note("close"); }
    void setProgram(std::int32_t p) override { note("program %d", p); }
    void setProgramName(const char* name) override { note("name %s", name); }
    void getProgramName(char* name) override { std::strcpy(name, "Kept"); }
    void getParameterDisplay(std::int32_t i, char* text) override { number(text, i); }
    void getParameterName(std::int32_t i, char* text) override { number(text, i + 1); }
    void suspend() override { note("suspend"); }
    void resume() override { note("resume"); }
    std::intptr_t editorRequest(Opcode opcode, std::int32_t i, std::intptr_t v, void*,
                                float x) override {
        note("editor %d %d %ld %.1f", static_cast<int>(opcode), i, v, x);
        return 7;
    }
    std::int32_t getChunk(void** data, bool preset) override {
        *data = this;
        return preset ? 11 : 12;
    }
    std::int32_t setChunk(const void*, std::int32_t size, bool preset) override {
        note("chunk %d %d", size, preset);
        return 1;
    }
    std::int32_t processEvents(const EventList* events) override { return events->count; }
    std::int32_t getProgramNameIndexed(std::int32_t category, std::int32_t i, char* name) override {
        number(name, 100 * category + i);
        return 1;
    }
    bool copyProgram(std::int32_t p) override { return note("copy %d", p), true; }
    bool getOutputProperties(std::int32_t i, OutputProperties* p) override {
        return p->flags = i, true;
    }
    std::int32_t getPlugCategory() override { return 2; }
    bool getEffectName(char* text) override { return number(text, 45), true; }
    bool getVendorString(char* text) override { return number(text, 47), true; }
    bool getProductString(char* text) override { return number(text, 48), true; }
    std::int32_t getVendorVersion() override { return 3; }
    std::intptr_t vendorSpecific(std::int32_t i, std::intptr_t v, void*, float x) override {
        note("vendor %d %ld %.1f", i, v, x);
        if (i == fourCharacters("boom")) throw std::bad_alloc{};
        return v + 1;
    }
    std::int32_t canDo(const char* text) override { return text[0] == 'y' ? 1 : -1; }
    std::int32_t fxIdle() override { return 1; }
    std::int32_t keysRequired() override { return 5; }
    std::int32_t getMidiProgramName(std::int32_t c, MidiProgramName*) override { return 620 + c; }
    std::int32_t getCurrentMidiProgram(std::int32_t c, MidiProgramName*) override {
        return 630 + c;
    }
    std::int32_t getMidiProgramCategory(std::int32_t c, MidiProgramCategory*) override {
        return 640 + c;
    }
    bool hasMidiProgramsChanged(std::int32_t c) override { return c == 3; }

    static void number(char* text, int n) { TextOut{{text, 8}}.print("%d", n); }
    std::vector<std::string>& log_;
};

struct Request {
    std::int32_t opcode, index;
    std::intptr_t value;
    float number;
    std::intptr_t answer;
    const char* seen;  // noted by the plug-in, or written into the host's buffer
};

constexpr std::int32_t most = std::numeric_limits<std::int32_t>::max();
constexpr Request requests[] = {
    {0, 0, 0, 0, 0, "open"},
    {2, 0, 0, 0, 0, "program 0"},
    {2, 0, 1, 0, 0, ""},
    {2, 0, -1, 0, 0, ""},
    {3, 0, 0, 0, 0, ""},
    {4, 0, 0, 0, 0, "name buffer"},
    {5, 0, 0, 0, 0, "Kept"},
    {7, 12, 0, 0, 0, "12"},
    {8, 12, 0, 0, 0, "13"},
    {9, 0, 0, 0, 0, ""},
    {12, 0, 0, 0, 0, "suspend"},
    {12, 0, 1, 0, 0, "resume"},
    {13, 1, 2, 3, 7, "editor 13 1 2 3.0"},
    {14, 0, 0, 0, 7, "editor 14 0 0 0.0"},
    {15, 0, 0, 0, 7, "editor 15 0 0 0.0"},
    {19, 0, 0, 0, 7, "editor 19 0 0 0.0"},
    {22, 0, 0, 0, 0x5A71526B, ""},
    {24, 0, 40, 0, 1, "chunk 40 0"},
    {24, 1, 0, 0, 1, "chunk 0 1"},
    {24, 0, -1, 0, 0, ""},
    {26, 2527, 0, 0, 1, ""},
    {28, 0, 0, 0, 1, ""},
    {29, 5, 3, 0, 1, "305"},
    {30, 6, 0, 0, 1, "copy 6"},
    {35, 0, 0, 0, 2, ""},
    {45, 0, 0, 0, 1, "45"},
    {47, 0, 0, 0, 1, "47"},
    {48, 0, 0, 0, 1, "48"},
    {49, 0, 0, 0, 3, ""},
    {50, 9, 41, 2, 42, "vendor 9 41 2.0"},
    {50, fourCharacters("boom"), 0, 0, 0, "vendor 1651470189 0 0.0"},
    {51, 0, 0, 0, -1, ""},
    {53, 0, 0, 0, 1, ""},
    {57, 0, 0, 0, 5, ""},
    {58, 0, 0, 0, 2300, ""},
    {59, 1, 0, 0, 7, "editor 59 1 0 0.0"},
    {60, 1, 0, 0, 7, "editor 60 1 0 0.0"},
    {61, 0, 2, 0, 7, "editor 61 0 2 0.0"},
    {62, 4, 0, 0, 624, ""},
    {63, 4, 0, 0, 634, ""},
    {64, 4, 0, 0, 644, ""},
    {65, 3, 0, 0, 1, ""},
    {65, 4, 0, 0, 0, ""},
    // Nobody knows these.
    {27, 1, 1, 1, 0, ""},
    {66, 1, 1, 1, 0, ""},
    {-1, 1, 1, 1, 0, ""},
    {most, 1, 1, 1, 0, ""},
};

struct HostPlugin : testing::Test {
    ~HostPlugin() override {
        if (plugin != nullptr) ask(1);
    }
    std::intptr_t ask(std::int32_t opcode, std::int32_t index = 0, std::intptr_t value = 0,
                      void* pointer = nullptr, float number = 0) {
        EffectRecord* record = plugin->record();
        return record->request(record, opcode, index, value, pointer, number);
    }
    std::vector<std::string> log;
    Recorder* plugin = new Recorder{log};
};

TEST_F(HostPlugin, EveryRequestReachesItsOperationAndAnswers) {
    for (const Request& r : requests) {
        SCOPED_TRACE(testing::Message() << "opcode " << r.opcode << " value " << r.value);
        char buffer[128] = "buffer";
        log.clear();
        const int before = plugin->uiRequests;
        EXPECT_EQ(ask(r.opcode, r.index, r.value, buffer, r.number), r.answer);
        const std::string seen = !log.empty()                    ? log.front()
                                 : std::strcmp(buffer, "buffer") ? buffer
                                                                 : "";
        EXPECT_EQ(seen, r.seen);
        EXPECT_EQ(plugin->uiRequests, before + 1);
    }
}

TEST_F(HostPlugin, RequestsWithRecordsOfTheirOwn) {
    void* data = nullptr;
    EXPECT_EQ(ask(23, 1, 0, &data), 11);
    EXPECT_EQ(ask(23, 0, 0, &data), 12);
    EXPECT_EQ(data, plugin);
    OutputProperties properties{};
    EXPECT_EQ(ask(34, 9, 0, &properties), 1);
    EXPECT_EQ(properties.flags, 9);
    char label[8] = "old";
    EXPECT_EQ(ask(6, 0, 0, label), 0);
    EXPECT_STREQ(label, "");
    EventList events;
    events.count = 2;
    const int before = plugin->uiRequests;
    EXPECT_EQ(ask(25, 0, 0, &events), 2);
    EXPECT_EQ(plugin->uiRequests, before) << "events come on the audio thread";
}

TEST_F(HostPlugin, NullPointersAnswerNothing) {
    for (int opcode : {4, 5, 6, 7, 8, 23, 24, 25, 29, 34, 45, 47, 48, 51, 62, 63, 64})
        EXPECT_EQ(ask(opcode, 0, 0), 0) << opcode;
    EXPECT_TRUE(log.empty());
    EffectRecord* record = plugin->record();
    EXPECT_EQ(record->request(nullptr, 58, 0, 0, nullptr, 0), 0);
    EffectRecord orphan = *record;
    orphan.object = nullptr;
    EXPECT_EQ(record->request(&orphan, 58, 0, 0, nullptr, 0), 0);
    EXPECT_EQ(record->getParameter(&orphan, 1), 0.0f);
    record->process(nullptr, nullptr, nullptr, 1);
    EXPECT_TRUE(log.empty());
}

TEST_F(HostPlugin, RateAndBlockSizeTakeOnlyWhatCanBeRendered) {
    const float nan = std::nanf(""), infinite = std::numeric_limits<float>::infinity();
    for (float bad : {0.0f, 1999.9f, 768001.0f, -44100.0f, nan, infinite, -infinite}) {
        ask(10, 0, 0, nullptr, bad);
        EXPECT_EQ(plugin->rate(), 44100.0f) << bad;
    }
    for (float good : {2000.0f, 96000.0f, 768000.0f}) {
        ask(10, 0, 0, nullptr, good);
        EXPECT_EQ(plugin->rate(), good);
    }
    const std::intptr_t beyond = sizeof(std::intptr_t) > 4 ? std::intptr_t{most} + 2 : -5;
    for (std::intptr_t bad : {std::intptr_t{0}, std::intptr_t{-1}, beyond}) {
        ask(11, 0, bad);
        EXPECT_EQ(plugin->blockFrames(), 1024) << bad;
    }
    ask(11, 0, 1);
    EXPECT_EQ(plugin->blockFrames(), 1);
}

TEST_F(HostPlugin, DirectEntriesCallTheirOperations) {
    EffectRecord* record = plugin->record();
    EXPECT_EQ(record->parameterCount, 2528);
    record->process(record, nullptr, nullptr, 16);
    record->processReplacing(record, nullptr, nullptr, 17);
    record->setParameter(record, 9, 0.25f);
    EXPECT_EQ(log, (std::vector<std::string>{"add 16", "replace 17", "set 9 0.25"}));
    EXPECT_EQ(record->getParameter(record, 2), 0.5f);
}

TEST_F(HostPlugin, CloseEndsTheInstanceAfterItsOperation) {
    EXPECT_EQ(ask(1), 0);
    plugin = nullptr;
    EXPECT_EQ(log, (std::vector<std::string>{"close", "deleted"}));
}

TEST(HostPluginDefaults, AnswerWithoutTouchingMoreThanTheyMay) {
    auto* plugin = new HostPluginBase{nullptr, 1, 4};
    EffectRecord* record = plugin->record();
    for (int opcode = 2; opcode < 80; ++opcode) {
        char buffer[256];
        std::memset(buffer, 'x', sizeof buffer);
        const std::intptr_t answer = record->request(record, opcode, 0, 0, buffer, 48000.0f);
        const std::intptr_t expected = opcode == 22   ? fourCharacters("ZqRk")
                                       : opcode == 58 ? 2300
                                                      : opcode == 26 || opcode == 28;
        EXPECT_EQ(answer, expected) << opcode;
        const bool emptied = opcode >= 5 && opcode <= 8;
        EXPECT_EQ(buffer[0], emptied ? '\0' : 'x') << opcode;
        EXPECT_EQ(buffer[1], 'x') << opcode;
    }
    float left[3] = {1, 2, 3}, *outputs[2] = {left, nullptr};
    record->outputCount = 2;
    record->process(record, nullptr, outputs, 2);
    EXPECT_EQ(left[0], 1.0f);
    record->processReplacing(record, nullptr, outputs, 2);
    EXPECT_TRUE(left[0] == 0.0f && left[1] == 0.0f && left[2] == 3.0f);
    record->request(record, 1, 0, 0, nullptr, 0);
}

TEST(HostPluginDefaults, AutomationTellsTheHost) {
    const HostCallback host = [](EffectRecord* record, std::int32_t opcode, std::int32_t index,
                                 std::intptr_t, void*, float v) -> std::intptr_t {
        // The host finds its own data by the record.
        *static_cast<std::string*>(record->userPointer) +=
            std::to_string(opcode) + ' ' + std::to_string(index) + ' ' + std::to_string(v);
        return 0;
    };
    std::vector<std::string> log;
    std::string told;
    auto* plugin = new Recorder{log, host};
    plugin->record()->userPointer = &told;
    plugin->setParameterAutomated(8, 0.5f);
    EXPECT_EQ(told, "0 8 0.500000");
    EXPECT_EQ(log, std::vector<std::string>{"set 8 0.50"});
    plugin->record()->request(plugin->record(), 1, 0, 0, nullptr, 0);
}

}  // namespace
