// Drives the built content tool.
#include <gtest/gtest.h>
#include <sys/wait.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <numbers>
#include <random>

#include "base/engine_shared.h"
#include "content/bank_file.h"
#include "content/file_bytes.h"
#include "content/program_files.h"
#include "content/sample_set.h"
#include "content/scene_record.h"
#include "content/tone_wheels.h"
#include "content/tuning_table.h"
#include "content/wavetable.h"
#include "effects/catalogue.h"
#include "measure/measure.h"
#include "patch/record_reader.h"
#include "patch/record_writer.h"
#include "patch/scene_table.h"

namespace stratovane {
namespace {

namespace fs = std::filesystem;

constexpr const char* program = STRATOVANE_BUILD_DIR "/stratovane-content";
const fs::path examples = fs::path{STRATOVANE_SOURCE_DIR} / "examples/content";

std::string contents(const fs::path& path) {
    std::ifstream file{path, std::ios::binary};
    return {std::istreambuf_iterator<char>{file}, {}};
}
void put(const fs::path& path, const std::string& text) {
    fs::create_directories(path.parent_path());
    std::ofstream{path, std::ios::binary} << text;
}
void put(const fs::path& path, const Bytes& bytes) {
    put(path, std::string{bytes.begin(), bytes.end()});
}

struct WavLoop {
    std::uint32_t type = 0, first = 0, last = 0;
};
struct Wav {
    int channels = 1, rate = 44100;
    std::vector<std::int16_t> values{};
    int root = -1;
    std::uint32_t fraction = 0;
    std::vector<WavLoop> loops{};

    Bytes bytes() const {
        ByteWriter body;
        auto tag = [&](const char* name, std::size_t size) {
            body.append({reinterpret_cast<const std::uint8_t*>(name), 4});
            body.put(static_cast<std::uint32_t>(size));
        };
        tag("WAVE", 0);
        Bytes out = body.take();
        out.resize(4);
        body.append(out);
        tag("fmt ", 16);
        const int frame = 2 * channels;
        for (const int half : {1, channels}) body.put(static_cast<std::uint16_t>(half));
        for (const int word : {rate, rate * frame}) body.put(static_cast<std::uint32_t>(word));
        for (const int half : {frame, 16}) body.put(static_cast<std::uint16_t>(half));
        if (root >= 0) {
            tag("smpl", 36 + 24 * loops.size());
            for (const std::uint32_t word : {0u, 0u, 0u, static_cast<std::uint32_t>(root), fraction,
                                             0u, 0u, static_cast<std::uint32_t>(loops.size()), 0u})
                body.put(word);
            for (const WavLoop& loop : loops)
                for (const std::uint32_t word : {0u, loop.type, loop.first, loop.last, 0u, 0u})
                    body.put(word);
        }
        tag("data", 2 * values.size());
        for (const std::int16_t value : values) body.put(value);
        const Bytes content = body.take();
        tag("RIFF", content.size());
        body.append(content);
        return body.take();
    }
};

std::vector<std::int16_t> sine(std::size_t frames, double cyclesPerFrame, double level = 0.5) {
    std::vector<std::int16_t> values;
    for (std::size_t i = 0; i < frames; ++i)
        values.push_back(static_cast<std::int16_t>(
            std::lround(32767 * level *
                        std::sin(2 * std::numbers::pi * cyclesPerFrame * static_cast<double>(i)))));
    return values;
}
std::vector<std::int16_t> noise(std::size_t count, unsigned seed) {
    std::mt19937 random{seed};
    std::vector<std::int16_t> values(count);
    for (auto& value : values) value = static_cast<std::int16_t>(random() & 0xFFFF) / 2;
    return values;
}

class ContentTool : public testing::Test {
  protected:
    void SetUp() override {
        std::string pattern = (fs::temp_directory_path() / "content-test-XXXXXX").string();
        ASSERT_NE(mkdtemp(pattern.data()), nullptr);
        folder_ = pattern;
    }
    void TearDown() override { fs::remove_all(folder_); }

    int run(const std::string& arguments) {
        const std::string command = "cd " + folder_.string() + " && " + program + " " + arguments +
                                    " >out.txt 2>err.txt </dev/null";
        const int status = std::system(command.c_str());
        out_ = contents(folder_ / "out.txt");
        err_ = contents(folder_ / "err.txt");
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }
    void expectOk(const std::string& arguments) {
        EXPECT_EQ(run(arguments), 0) << arguments << err_;
    }
    void expectRefused(const std::string& arguments, const std::string& sentence, int exit = 2) {
        EXPECT_EQ(run(arguments), exit) << arguments << err_;
        EXPECT_NE(err_.find(sentence), std::string::npos) << "expected " << sentence << "\n"
                                                          << err_;
    }
    Bytes file(const std::string& name) {
        return readFile((folder_ / name).string()).value_or(Bytes{});
    }
    BankFile bank(const std::string& name) {
        std::optional<ContentFault> fault;
        BankFile read = readBankFile((folder_ / name).string(), fault);
        EXPECT_FALSE(fault);
        return read;
    }
    Bytes piece(const std::string& name, FileRange range) {
        return readFilePart((folder_ / name).string(), range.offset, range.size).value_or(Bytes{});
    }
    std::vector<Zone> zones(const std::string& name, FileRange range) {
        ContentFault fault;
        const auto set = readSampleSet(piece(name, range), fault);
        return set ? set->zones : std::vector<Zone>{};
    }
    std::unique_ptr<SampleData> sample(const std::string& name, std::size_t number) {
        ContentFault fault;
        return readSampleData(piece(name, bank(name).samples.at(number)), fault);
    }
    /// Everything in examples/, built into "c".
    void buildExamples() {
        for (const auto& entry : fs::recursive_directory_iterator{examples}) {
            const fs::path from = entry.path();
            fs::path to = folder_ / "c" / fs::relative(from, examples);
            std::string command = "bank build", extension = ".bank";
            if (from.extension() == ".scl") {
                command = "tuning from-scala";
                extension = ".tun";
            } else if (from.extension() != ".json") {
                continue;
            } else if (from.parent_path().parent_path().filename() == "Patches") {
                command = "patch build";
                extension = ".fxp";
            }
            to.replace_extension(extension);
            fs::create_directories(to.parent_path());
            expectOk(command + " '" + from.string() + "' -o '" + to.string() + "'");
        }
    }

    fs::path folder_;
    std::string out_, err_;
};

TEST_F(ContentTool, TheExamplesBecomeAFolderWithoutFaults) {
    buildExamples();
    expectOk("check c");
    EXPECT_EQ(out_, "");
    expectOk("list c");
    for (const char* line :
         {"  010 Examples\t\tTwo plucked notes\t(1 items, 4 samples)\n", "    004 Three Bars\t\t\n",
          "    000 Sine to Saw\t\t\n", "    000 Pure Wheels\t\t\n", "    000 Just Major\t\t\n",
          "Total 259 items + 4 samples\n"})
        EXPECT_NE(out_.find(line), std::string::npos) << line << out_;
    expectOk("find c PLUCK soft");
    EXPECT_EQ(out_, "001.003 Examples: Soft Pluck\n");
    expectOk("find c nothing like it");
    EXPECT_EQ(out_, "");
    expectOk("info 'c/Patches/001 Examples/004 Three Bars.fxp'");
    EXPECT_NE(out_.find("Patch: Three Bars\nCodes: Example\n"), std::string::npos) << out_;
    EXPECT_NE(out_.find("  1 Drawbar: Drawbar\n"), std::string::npos) << out_;
    expectOk("info 'c/Samples/010 Examples.bank'");
    EXPECT_NE(out_.find("delta, 610 frames, 8006 Hz, mono"), std::string::npos) << out_;
}

// Banks.

TEST_F(ContentTool, SampleBanksComeBackByteForByte) {
    put(folder_ / "a.wav", Wav{.values = noise(3000, 1)}.bytes());
    put(folder_ / "b.wav", Wav{.channels = 2,
                               .rate = 22050,
                               .values = noise(4000, 2),
                               .root = 40,
                               .fraction = 1u << 30,
                               .loops = {{0, 500, 1499}}}
                               .bytes());
    put(folder_ / "shared.bin", "\5table");
    for (const char* format : {"pcm16", "float", "delta"}) {
        put(folder_ / "s.json", std::string{R"({"kind": "samples", "second": "Zwölf €",
            "shared": "shared.bin", "code": -3, "format": ")"} +
                                    format + R"(", "items": [
            {"number": 3, "name": "Three", "second": "x", "zones": [
              {"file": "a.wav", "highKey": 50, "highVelocity": 60, "pan": -0.25, "level": 0.5},
              {"file": "b.wav", "highKey": 50, "root": 41, "loopTune": 0.1},
              {"highKey": 70},
              {"file": "b.wav", "tune": 0.3, "length": 900, "loop": 100, "rootFromKeyRange": true}],
             "eco": {"rate": 11025, "format": "pcm16"}}]})");
        expectOk("bank build s.json -o s.bank");
        expectOk("bank extract s.bank -o x");
        expectOk("bank build x/bank.json -o again.bank");
        if (std::string_view{format} != "delta") {
            EXPECT_EQ(file("again.bank"), file("s.bank")) << format;
            continue;
        }
        // Different bytes may mean the same steps; what they decode to is the same.
        for (std::size_t i = 1; i < bank("s.bank").samples.size(); ++i) {
            const auto made = sample("s.bank", i), again = sample("again.bank", i);
            ASSERT_TRUE(made && again);
            ASSERT_EQ(made->frames(), again->frames());
            ASSERT_EQ(made->format(), again->format());
            if (made->format() != SampleFormat::delta) continue;
            for (int channel = 0; channel < made->channels(); ++channel)
                for (std::int32_t frame = 0; frame < made->frames(); frame += 37)
                    EXPECT_EQ(made->stateAt(frame, channel).value,
                              again->stateAt(frame, channel).value)
                        << i << ' ' << frame;
        }
    }
    EXPECT_EQ(bank("s.bank").sharedSlot, 5);
    EXPECT_EQ(bank("s.bank").secondName, "Zw\xF6lf \x80");
    const auto items = bank("s.bank").items;
    ASSERT_EQ(items.size(), 4u);
    EXPECT_EQ(items[0].normal.size, 0u);
    const auto read = zones("s.bank", items[3].normal);
    ASSERT_EQ(read.size(), 4u);
    EXPECT_EQ(read[0].key, (50 * 256 + 60) * 65536);
    EXPECT_EQ(read[0].rootKey, 60);
    EXPECT_EQ(read[0].frames, 3000);
    EXPECT_EQ(read[0].loopFrames, 0);
    // From the file's own chunk: what lies a quarter tone above its key is brought down.
    EXPECT_EQ(read[1].rootKey, 41);
    EXPECT_FLOAT_EQ(read[1].tuneSemitones, -0.25f);
    EXPECT_EQ(read[1].frames, 1500);
    EXPECT_EQ(read[1].loopFrames, 1000);
    EXPECT_EQ(read[2].sampleNumber, 0);
    EXPECT_EQ(read[3].frames, 900);
    EXPECT_EQ(read[3].rootKey, 40);
    EXPECT_TRUE(read[3].rootFromKeyRange);
}

TEST_F(ContentTool, SmallVersionsKeepPitchAndLoopAndLoseWhatTheyCannotHold) {
    // A tone of 100 frames, looped over 1300, and one that a rate of 8000 Hz cannot hold.
    std::vector<std::int16_t> both = sine(6000, 0.01, 0.4);
    const auto high = sine(6000, 0.13, 0.4);
    for (std::size_t i = 0; i < both.size(); ++i)
        both[i] = static_cast<std::int16_t>(both[i] + high[i]);
    put(folder_ / "a.wav", Wav{.values = both, .root = 69, .loops = {{0, 4000, 5299}}}.bytes());
    put(folder_ / "s.json", R"({"kind": "samples", "format": "float", "items": [
        {"zones": [{"file": "a.wav", "highKey": 60}, {"file": "a.wav", "length": 5300, "loop": 1300}],
         "eco": {"rate": 8000}}]})");
    expectOk("bank build s.json -o s.bank");
    const auto items = bank("s.bank").items;
    const auto small = zones("s.bank", items[0].eco);
    ASSERT_EQ(small.size(), 2u);
    const auto data = sample("s.bank", 2);
    ASSERT_TRUE(data);
    EXPECT_EQ(small[0].frames, data->frames());
    EXPECT_EQ(small[0].loopFrames, 236);
    EXPECT_EQ(small[1].frames, small[0].frames);
    EXPECT_EQ(small[1].loopFrames, 236);
    // The loop lasts as long as before, so the tone's 13 periods have the same pitch.
    EXPECT_NEAR(236.0 / data->rateHz(), 1300.0 / 44100, 1300.0 / 44100 * 1e-4);
    const measure::Signal values(data->float32(), data->float32() + data->frames());
    const double perFrame = 441.0 / data->rateHz();
    EXPECT_NEAR(measure::levelAt({&values[100], &values[100 + 236 * 3]}, 1, perFrame), 0.4, 0.004);
    std::vector<float> rest(values.begin() + 100, values.end());
    for (std::size_t i = 0; i < rest.size(); ++i)  // what is not the tone
        rest[i] -= static_cast<float>(
            13107.0 / 32768 *
            std::sin(2 * std::numbers::pi * 0.01 *
                     (5300 + (static_cast<double>(i) + 100 - data->frames()) * 1300 / 236)));
    for (const float value : std::span{rest}.first(rest.size() - 10)) EXPECT_NEAR(value, 0, 1e-3);
    // The loop joins: one period before the end stands what stands at its start.
    const float last = values[values.size() - 1], before = values[values.size() - 237];
    EXPECT_NEAR(last, before, 2e-3);
}

TEST_F(ContentTool, WavetablesTakeCyclesOfAnyLength) {
    Wav wav;
    for (int w = 0; w < 64; ++w) {
        const auto cycle = sine(100, 0.01 * (1 + w % 3));
        wav.values.insert(wav.values.end(), cycle.begin(), cycle.end());
    }
    put(folder_ / "w.wav", wav.bytes());
    put(folder_ / "w.json", R"({"kind": "wavetables", "items": [{"name": "W", "file": "w.wav"}]})");
    expectOk("bank build w.json -o w.bank");
    ContentFault fault;
    const auto table = readWavetable(piece("w.bank", bank("w.bank").items.at(0).normal), fault);
    ASSERT_TRUE(table);
    for (int w = 0; w < 64; ++w)
        for (int level = 0; level < 5; ++level) {  // eight values and more hold three harmonics
            const int size = Wavetable::size(level);
            for (int i = 0; i < size; ++i)
                ASSERT_NEAR(table->wave(level, w)[i],
                            16383 * std::sin(2 * std::numbers::pi * (1 + w % 3) * i / (size - 1)),
                            3)
                    << level << ' ' << w << ' ' << i;
        }
    expectOk("bank extract w.bank -o x");
    expectOk("bank build x/bank.json -o again.bank");
    const auto again =
        readWavetable(piece("again.bank", bank("again.bank").items.at(0).normal), fault);
    ASSERT_TRUE(again);
    for (std::size_t i = 0; i < Wavetable::values; ++i)  // levels are made anew
        ASSERT_NEAR(again->data[i], table->data[i], 1) << i;
    // One file a wave.
    std::string list;
    for (int w = 0; w < 64; ++w) list += std::string{w == 0 ? "" : ", "} + "\"one.wav\"";
    put(folder_ / "one.wav", Wav{.values = sine(64, 1.0 / 64)}.bytes());
    put(folder_ / "l.json", R"({"kind": "wavetables", "items": [{"waves": [)" + list + "]}]}");
    expectOk("bank build l.json -o l.bank");
    const auto alike = readWavetable(piece("l.bank", bank("l.bank").items.at(0).normal), fault);
    ASSERT_TRUE(alike);
    EXPECT_NEAR(alike->wave(0, 63)[64], 16383, 3);
}

TEST_F(ContentTool, DrawbarBanksComeBackByteForByte) {
    std::string list;
    for (int k = 0; k < 12; ++k) {
        const std::string name = std::to_string(k) + ".wav";
        put(folder_ / name,
            Wav{.channels = 8, .values = noise(8 * (50 + static_cast<std::size_t>(k)), 7)}.bytes());
        list += (k == 0 ? "\"" : ", \"") + name + "\"";
    }
    put(folder_ / "d.json",
        R"({"kind": "drawbars", "items": [{"tuning": -0.5, "loops": [)" + list + "]}]}");
    expectOk("bank build d.json -o d.bank");
    ContentFault fault;
    const auto wheels = readToneWheels(piece("d.bank", bank("d.bank").items.at(0).normal), fault);
    ASSERT_TRUE(wheels);
    EXPECT_EQ(wheels->tuning, -0.5f);
    for (std::size_t k = 0; k < 12; ++k)
        EXPECT_EQ(wheels->length[k], static_cast<int>(8 * (50 + k)));
    EXPECT_EQ(wheels->values[static_cast<std::size_t>(wheels->start[3])], noise(1, 7)[0]);
    expectOk("bank extract d.bank -o x");
    expectOk("bank build x/bank.json -o again.bank");
    EXPECT_EQ(file("again.bank"), file("d.bank"));
}

struct Refusal {
    std::string json;
    const char* sentence;
};

TEST_F(ContentTool, FaultsOfBankJsonAreToldWithTheirPlace) {
    put(folder_ / "mono.wav", Wav{.values = sine(100, 0.01)}.bytes());
    put(folder_ / "wide.wav", Wav{.channels = 3, .values = sine(99, 0.01)}.bytes());
    put(folder_ / "turns.wav",
        Wav{.values = sine(100, 0.01), .root = 60, .loops = {{1, 0, 99}}}.bytes());
    put(folder_ / "leaves.wav",
        Wav{.values = sine(100, 0.01), .root = 60, .loops = {{0, 50, 100}}}.bytes());
    put(folder_ / "text.wav", "no sound");
    const auto samples = [](const std::string& rest) {
        return R"({"kind": "samples", )" + rest + "}";
    };
    const auto zone = [](const std::string& inside) {
        return R"({"kind": "samples", "items": [{"zones": [{)" + inside + "}]}]}";
    };
    const auto item = [](const std::string& kind, const std::string& inside) {
        return R"({"kind": ")" + kind + R"(", "items": [{)" + inside + "}]}";
    };
    const Refusal cases[] = {
        {"{\"kind\": \"samples\",\n  \"items\": [}", "s.json, line 2, column 13: "},
        {R"({"kind": "samples", "kind": "drawbars"})", "the key \"kind\" stands twice"},
        {R"([])", "s.json, at /: an object was expected"},
        {R"({"items": []})", "at /: \"kind\" is missing"},
        {R"({"kind": "sample", "items": []})", "at /kind: \"samples\", \"wavetables\""},
        {samples(R"("item": [])"), "at /item: there is no such key here"},
        {samples(R"("items": {})"), "at /items: a list was expected"},
        {samples(R"("code": 128, "items": [])"), "at /code: a whole number from -128 to 127"},
        {samples(R"("second": "\u3042", "items": [])"), "at /second: the text has a character"},
        {samples(R"("format": "mp3", "items": [])"), "at /format: \"pcm16\""},
        {samples(R"("items": [{"number": 128, "zones": []}])"), "at /items/0/number: "},
        {samples(R"("items": [{"number": 1, "zones": []}, {"number": 1, "zones": []}])"),
         "at /items/1: there is an item 1 already"},
        {samples(R"("items": [{}])"), "at /items/0: \"zones\" is missing"},
        {samples(R"("items": [{"zones": [{}, {"root": 1.5}]}])"),
         "at /items/0/zones/1/root: a whole number from 0 to 127 was expected"},
        {zone(R"("file": "mono.wav", "length": 101)"),
         "at /items/0/zones/0/length: a whole number from 0 to 100"},
        {zone(R"("file": "mono.wav", "loop": 101)"), "at /items/0/zones/0/loop: "},
        {zone(R"("file": "wide.wav")"), "at /items/0/zones/0/file: a sample is mono or stereo"},
        {zone(R"("file": "turns.wav")"),
         "at /items/0/zones/0: the loop in the sound file does not run forward"},
        {zone(R"("file": "leaves.wav")"),
         "at /items/0/zones/0/file: the loop that stands in the sound file"},
        {zone(R"("file": "none.wav")"), "none.wav cannot be read: "},
        {zone(R"("file": "text.wav")"), "text.wav cannot be read: "},
        {zone(R"("file": 5)"), "the path of a file was expected"},
        {samples(R"("items": [{"zones": [], "eco": {"rate": 5}}])"), "at /items/0/eco/rate: "},
        {item("wavetables", R"("file": "mono.wav")"),
         "at /items/0/file: 64 cycles of one length were expected, not 100 frames"},
        {item("wavetables", R"("file": "a", "waves": [])"), "either \"file\" or \"waves\""},
        {item("wavetables", R"("waves": ["mono.wav"])"),
         "at /items/0/waves: a list of 64 was expected, not of 1"},
        {item("drawbars", R"("loops": [1, 2])"), "at /items/0/loops: a list of 12"},
        {item("drawbars", R"("loops": ["mono.wav","","","","","","","","","","",""])"),
         "at /items/0/loops/0: a loop has eight channels"},
    };
    put(folder_ / "old.bank", "before");
    for (const Refusal& c : cases) {
        put(folder_ / "s.json", c.json);
        expectRefused("bank build s.json -o old.bank", c.sentence);
    }
    EXPECT_EQ(contents(folder_ / "old.bank"), "before");
    expectRefused("bank build none.json -o x.bank", "none.json cannot be read");
    expectRefused("bank extract mono.wav -o x", "mono.wav, byte 0: not a bank file");
}

// Check.

TEST_F(ContentTool, CheckNamesEveryFault) {
    buildExamples();
    const std::string samples = "c/Samples/010 Examples.bank",
                      patch = "c/Patches/001 Examples/000 Plain Saw.fxp";
    const std::string tables = "c/Wavetables/001 Examples.bank",
                      drawbars = "c/Drawbars/001 Examples.bank";
    const BankFile made = bank(samples);
    const FileRange zoneList = made.items[0].normal, data = made.samples[1];
    const FileRange table = bank(tables).items[0].normal;
    const FileRange wheels = bank(drawbars).items[0].normal;
    const std::size_t z = zoneList.offset, d = data.offset, w = wheels.offset, t = table.offset;
    struct Damage {
        std::string path;
        std::size_t at;
        Bytes bytes;  // none: the file ends here
        std::size_t told;
        const char* sentence;
    };
    const Damage cases[] = {
        {samples, 0, {'X'}, 0, "not a bank file"},
        {samples, 84, {255, 255, 255, 0}, 84, "the data block leaves the file"},
        {samples, z, {0, 0, 0, 128}, z, "the zones are not in order of their keys"},
        {samples, z + 8, {9}, z + 8, "the bank has no such sample"},
        {samples, z + 16, {255, 255}, z + 16, "the zone's length leaves its sample"},
        {samples, z + 20, {255, 255}, z + 20, "the zone's loop leaves its length"},
        {samples, z + 67, {0}, z + 128, "the zones do not end inside the item"},
        {samples, d + 4, {255, 255}, d + 4, "the frames leave the sample"},
        {samples, d + 12, {3}, d + 12, "neither mono nor stereo"},
        {tables, t + 100, {}, t, "what the tables tell leaves the file"},
        {drawbars, w + 64, {1}, w + 64, "a loop is not made of whole frames"},
        {patch, 0, {'X'}, 0, "the header is not that of a program file"},
        {patch, 60, {'X'}, 60, "there is no patch record"},
        {patch, 80, {65}, 80, "the number of elements is not 0 to 64"},
        {patch, 1000, {}, 56, "the chunk is shorter than the header tells"},
        {"c/Tunings/001 Examples/000 Just Major.tun", 0, {}, 0, "the tuning has no line"},
        {"c/Phrases/001 P/000 A.phr", 0, {1, 2, 3}, 0, "the phrase's size does not fit the file"},
        {"c/Patches/001 Examples/a.txt", 0, {1}, 0, "the name is not that of an item of this kind"},
        {"c/Patches/001 Examples/000 Other.fxp", 0, {1}, 0, "the header is not"},
        {"c/Patches/120 Setups/000 A.fxb", 0, {1}, 0, "the header is not that of a program file"},
        {"c/Samples/readme", 0, {1}, 0, "the name is not that of a bank"},
        {"c/Samples/010 Other.bank", 0, {1}, 0, "an earlier bank has this number"},
    };
    for (const Damage& c : cases) {
        const bool isNew = !fs::exists(folder_ / c.path);
        const Bytes good = file(c.path);
        Bytes bad = good;
        if (c.bytes.empty()) bad.resize(c.at);
        bad.resize(std::max(bad.size(), c.at + c.bytes.size()));
        std::copy(c.bytes.begin(), c.bytes.end(), bad.begin() + static_cast<std::ptrdiff_t>(c.at));
        put(folder_ / c.path, bad);
        EXPECT_EQ(run("check c"), 1) << c.sentence;
        const std::string line = c.path + ", byte " + std::to_string(c.told) + ": " + c.sentence;
        EXPECT_NE(out_.find(line), std::string::npos) << line << "\n" << out_;
        if (isNew)
            fs::remove(folder_ / c.path);
        else
            put(folder_ / c.path, good);
    }
    fs::remove(folder_ / "c/Phrases/001 P");
    fs::remove(folder_ / "c/Patches/120 Setups");
    EXPECT_EQ(run("check c"), 0) << out_;
    expectRefused("check nowhere", "nowhere cannot be read");
    fs::create_directories(folder_ / "empty");
    expectRefused("check empty", "there is no content in empty");
    expectRefused("list empty", "there is no content in empty");
}

// Tunings and phrases.

struct ScalaCase {
    const char *scale, *mapping;
    std::map<int, double> cents;  // from note 0, by note
};

TEST_F(ContentTool, ScalaScalesBecomeTunings) {
    const char* twelve =
        "12\n12\n100.\n200.\n300.\n400.\n500.\n600.\n700.\n800.\n900.\n1000.\n1100.\n2/1\n";
    const ScalaCase cases[] = {
        {twelve, nullptr, {{0, 0}, {60, 6000}, {127, 12700}}},
        // Three notes repeat at the octave: note 69 is degree 9.
        {"just\r\n! a comment\r\n 3 ! notes\r\n 5/4 third\r\n 701.955\r\n 2\r\n",
         nullptr,
         {{66, 5700}, {69, 6900}, {70, 7286.3137}}},
        // A above middle C at 432 Hz.
        {twelve, "! map\n0\n0\n127\n60\n69\n432.0\n12\n", {{69, 6868.2333}, {60, 5968.2333}}},
        // White keys only; the rest keeps equal temperament.
        {"7\n7\n204.\n386.\n498.\n702.\n884.\n1088.\n2/1\n",
         "12\n0\n127\n60\n60\n261.6255653\n7\n0\nx\n1\nx\n2\n3\nx\n4\nx\n5\nx\n6\n",
         {{60, 6000}, {61, 6100}, {62, 6204}, {64, 6386}, {72, 7200}, {71, 7088}, {59, 5888}}},
        // Only a range of notes.
        {"one\n1\n2400.\n",
         "0\n60\n62\n60\n60\n261.6255653\n0\n",
         {{59, 5900}, {61, 8400}, {63, 6300}}},
    };
    for (const ScalaCase& c : cases) {
        put(folder_ / "a.scl", c.scale);
        if (c.mapping != nullptr) put(folder_ / "a.kbm", c.mapping);
        expectOk(std::string{"tuning from-scala a.scl "} + (c.mapping != nullptr ? "a.kbm" : "") +
                 " -o a.tun");
        const auto table = readTuningText(contents(folder_ / "a.tun"));
        for (const auto& [note, cents] : c.cents)
            EXPECT_NEAR(static_cast<double>(table->semitones[static_cast<std::size_t>(note)]),
                        cents / 100 - note, 2e-4)
                << c.scale << note;
    }
    const std::pair<const char*, const char*> bad[] = {
        {"", "a.scl, line 0: a description was expected"},
        {"x\nmany\n", "a.scl, line 2: the number of notes was expected"},
        {"x\n2\n3/2\n", "a.scl, line 3: the file ends before a pitch"},
        {"x\n1\n3/0\n", "a.scl, line 3: a pitch was expected"},
        {"x\n1\n-2\n", "a.scl, line 3: a pitch was expected"},
        {"x\n1\n7.x\n", "a.scl, line 3: a pitch was expected"},
    };
    for (const auto& [text, sentence] : bad) {
        put(folder_ / "a.scl", std::string{text});
        expectRefused("tuning from-scala a.scl -o b.tun", sentence);
    }
    put(folder_ / "a.scl", twelve);
    put(folder_ / "a.kbm", "2\n0\n127\n60\n61\n440\n12\n0\nx\n");
    expectRefused("tuning from-scala a.scl a.kbm -o b.tun", "the reference note has no degree");
    put(folder_ / "a.kbm", "2\n0\n200\n");
    expectRefused("tuning from-scala a.scl a.kbm -o b.tun",
                  "a.kbm, line 3: the last note was expected, from 0 to 127");
    EXPECT_FALSE(fs::exists(folder_ / "b.tun"));
}

TEST_F(ContentTool, MidiFilesBecomePhrases) {
    const std::string head{"MThd\0\0\0\6\0\0\0\1\0\x60MTrk\0\0\0\x0C", 22};
    put(folder_ / "A riff.mid", head + std::string{"\0\x90\x3C\x64\x60\x80\x3C\0\0\xFF\x2F\0", 12});
    expectOk("phrase from-midi 'A riff.mid' -o a.phr");
    const auto scene = readSceneRecord(file("a.phr"));
    ASSERT_TRUE(scene);
    EXPECT_EQ(scene->name, "A riff");
    ASSERT_EQ(scene->phrase.events.size(), 1u);
    EXPECT_EQ(scene->phrase.events[0], (PhraseEvent{0, 1, 0x90, 60, 100}));
    expectOk("info a.phr");
    EXPECT_EQ(out_.substr(0, out_.find("Controllers")),
              "Phrase: A riff\nLength: 4.000 beats\nNotes: 1\n");
    put(folder_ / "b.mid", std::string{"MThd"});
    expectRefused("phrase from-midi b.mid -o b.phr", "SV2 ReadSMF: File too short!");
}

// Patches.

Bytes programFile(const Bytes& record) {
    Bytes file = presetFileHeader("Random", record.size());
    file.insert(file.end(), record.begin(), record.end());
    return file;
}

TEST_F(ContentTool, PatchesComeBackByteForByte) {
    std::mt19937 random{11};
    auto value = [&] { return static_cast<float>(random() % 1000001) * 1e-6f; };
    for (int round = 0; round < 6; ++round) {
        EngineShared shared;
        Patch patch{shared}, master{shared};
        patch.setText(0, "Gr\xFC\xDF \x80");
        patch.setText(-9, "Own \x81");
        for (int selector : {-10, -7, -8, -6, -1}) patch.setText(selector, "Text \xE4");
        patch.setElementCount(round);
        for (int i = 0; i < globalParameters; ++i)
            if (random() % 3 != 0) patch.recall(0, i, value());
        for (int number = 1; number <= round; ++number) {
            patch.setText(number, "Element");
            for (int i = 0; i < elementParameters; ++i)
                if (random() % 3 != 0) patch.recall(number, i, value());
        }
        patch.recall(0, global::fxSends, round % 2 == 0 ? 1.0f : 0.0f);
        for (Patch* owner : {&patch, &master}) {
            const int slot = owner == &patch ? 65 : 67;
            owner->setText(slot, "Echo");
            for (int i = 0; i < elementParameters; ++i) owner->recall(slot, i, value());
            owner->recall(slot, elementIndex::mute, 0);
            owner->recall(slot, elementIndex::type, 0);
            owner->recall(slot, elementIndex::item, storedEffectType(20));
        }
        for (int i = 0; i < 10; ++i)
            patch.assignController(static_cast<int>(random() % 128),
                                   static_cast<ParameterId>(random()));
        Scene scene{.name = "Sc\xE8ne", .flags = 3};
        for (float& knob : scene.knobs) knob = value();
        for (float& step : scene.steps) step = value();
        scene.phrase.events = {{0.1, 1.0 / 3, 0x90, 60, 100}, {2, 0, 0xB0, 1, 5}};
        scene.phrase.passThrough = round % 2 == 0;
        scene.storedBytes = round < 3 ? 0 : 700;
        patch.scenes().put(round % 2 == 0 ? 5 : 0, std::make_shared<const Scene>(scene));
        patch.setIdWord(static_cast<std::uint32_t>(random()));
        Bytes record = writePatchRecord(patch, &master);
        // Content makers have codes of their own.
        std::memcpy(record.data() + recordLayout::codes, "Own \x81\0\0\0\0", 9);
        Bytes original = programFile(record);
        std::memset(original.data() + 28, 0, 28);
        std::memcpy(original.data() + 28, "Gr\xFC\xDF \x80", 6);
        put(folder_ / "p.fxp", original);
        for (const char* all : {"", "--all"}) {
            expectOk(std::string{"patch show p.fxp -o p.json "} + all);
            expectOk("patch build p.json -o again.fxp");
            EXPECT_EQ(file("again.fxp"), original) << round << all;
        }
    }
    expectOk("patch show p.fxp");
    EXPECT_NE(out_.find("\"name\": \"Grüß €\""), std::string::npos) << out_.substr(0, 200);
    EXPECT_NE(out_.find("\"106 "), std::string::npos);
    EXPECT_NE(out_.find("\"source\": \"master\""), std::string::npos);
}

TEST_F(ContentTool, FaultsOfPatchJsonAreToldWithTheirPlace) {
    const Refusal cases[] = {
        {R"({"nam": "x"})", "p.json, at /nam: there is no such key here"},
        {R"({"name": "01234567890123456789012345678901"})",
         "at /name: the text has more than 31 characters"},
        {R"({"texts": ["a"]})", "at /texts: a list of 3 was expected, not of 1"},
        {R"({"globals": {"252": 0}})", "at /globals/252: a key begins with an index from 0 to 251"},
        {R"({"globals": {"Level": 0}})", "at /globals/Level: a key begins with an index"},
        {R"({"globals": {"67 Level": 1.5}})",
         "at /globals/67 Level: a number from 0 to 1 was expected"},
        {R"({"globals": {"67": 0, "67 Level": 1}})",
         "at /globals/67 Level: this index stands twice"},
        {R"({"elements": [{"values": {"1": {"shows": "x"}}}]})",
         "at /elements/0/values/1: \"value\" is missing"},
        {R"({"elements": [{"values": {"1": {"value": 0, "x": 1}}}]})",
         "at /elements/0/values/1/x: there is no such key"},
        {R"({"elements": [{"type": "Analog"}]})", "at /elements/0/type: there is no such key here"},
        {R"({"sends": [{"slot": 5, "source": "patch"}]})",
         "at /sends/0/slot: a whole number from 1 to 4"},
        {R"({"sends": [{"slot": 1, "source": "us"}]})",
         "at /sends/0/source: \"patch\" or \"master\""},
        {R"({"sends": [{"slot": 1, "source": "patch"}]})", "at /sends/0: the slot is not stored"},
        {R"({"controllers": {"128": 0}})",
         "at /controllers/128: a key begins with an index from 0 to 127"},
        {R"({"controllers": {"1": 65536}})", "at /controllers/1: a whole number from 0 to 65535"},
        {R"({"scenes": [{"slot": 1}, {"slot": 1}]})", "at /scenes/1: this slot stands twice"},
        {R"({"scenes": [{"slot": 1, "knobs": [0]}]})", "at /scenes/0/knobs: a list of 6"},
        {R"({"scenes": [{"slot": 1, "phrase": {"events": [[0, 1, 144, 60, 0, 0]]}}]})",
         "at /scenes/0/phrase/events: 1 of the events cannot be played"},
    };
    for (const Refusal& c : cases) {
        put(folder_ / "p.json", c.json);
        expectRefused("patch build p.json -o p.fxp", c.sentence);
    }
    EXPECT_FALSE(fs::exists(folder_ / "p.fxp"));
    put(folder_ / "bad.fxp", "nothing");
    expectRefused("patch show bad.fxp", "bad.fxp, byte 0: there is no patch record");
}

// The program itself.

TEST_F(ContentTool, ExitCodesTellWhatWentWrong) {
    expectOk("--help");
    expectOk("bank build --help");
    expectRefused("", "subcommand", 1);
    expectRefused("bank", "subcommand", 1);
    expectRefused("list", "DIR", 1);
    expectRefused("bank build x.json", "--output", 1);
    expectRefused("frobnicate", "subcommand", 1);
    expectRefused("info none.bank", "none.bank cannot be read", 2);
    put(folder_ / "p.json", "{}");
    expectRefused("patch build p.json -o none/p.fxp", "none/p.fxp cannot be written", 4);
    fs::create_directories(folder_ / "taken");
    expectRefused("patch build p.json -o taken",
                  "taken cannot be written: it exists and is no file", 4);
    for (const auto& entry : fs::directory_iterator{folder_})
        EXPECT_FALSE(entry.path().filename().string().starts_with(".stratovane")) << entry.path();
}

}  // namespace
}  // namespace stratovane
