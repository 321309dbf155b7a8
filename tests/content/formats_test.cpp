#include <gtest/gtest.h>

#include <cmath>
#include <complex>
#include <limits>

#include "base/fft.h"
#include "content/bank_file.h"
#include "content/content_support.h"
#include "content/scene_record.h"
#include "content/tone_wheels.h"
#include "content/tuning_table.h"
#include "content/wavetable.h"

namespace stratovane {
namespace {

using content_test::asText;
using content_test::randomWave;
using content_test::zoneUpTo;

Bytes randomBytes(std::mt19937& random, std::size_t count) {
    Bytes bytes(count);
    for (auto& byte : bytes) byte = static_cast<std::uint8_t>(random());
    return bytes;
}

TEST(BankFile, ComesBackAsItWasWritten) {
    std::mt19937 random{3};
    TemporaryFolder folder;
    for (int round = 0; round < 20; ++round) {
        BankFileSource source{.code = static_cast<std::int8_t>(random()),
                              .secondName = std::string(random() % 40, 'b')};
        for (std::size_t i = random() % 130; i-- > 0;) {
            BankFileSource::Item item;
            item.name = i % 7 == 0 ? "" : "Item " + std::to_string(random() % 50);
            item.secondName = std::string(random() % 256, 'x');
            item.normal = randomBytes(random, random() % 90);
            item.eco = randomBytes(random, random() % 2 * 30);
            source.items.push_back(item);
        }
        for (std::size_t i = random() % 9; i-- > 0;)
            source.samples.push_back(randomBytes(random, random() % 300));
        if (round % 3 == 0) source.sharedTable = {static_cast<std::uint8_t>(round % 16), 9, 8, 7};
        const Bytes file = writeBankFile(source);
        folder.put("bank", asText(file));

        std::optional<ContentFault> fault;
        const BankFile bank = readBankFile(folder / "bank", fault);
        ASSERT_FALSE(fault) << fault->sentence;
        EXPECT_EQ(bank.code, source.code);
        EXPECT_EQ(bank.secondName, source.secondName);
        const ByteView bytes{file};
        auto at = [&](FileRange range) { return asText(bytes.part(range.offset, range.size)); };
        ASSERT_EQ(bank.items.size(), source.items.size());
        for (std::size_t i = 0; i < source.items.size(); ++i) {
            EXPECT_EQ(bank.items[i].name, source.items[i].name);
            EXPECT_EQ(bank.items[i].secondName, source.items[i].secondName.substr(0, 255));
            EXPECT_EQ(at(bank.items[i].normal), asText(source.items[i].normal));
            EXPECT_EQ(at(bank.items[i].eco), asText(source.items[i].eco));
        }
        ASSERT_EQ(bank.samples.size(), source.samples.empty() ? 0 : source.samples.size() + 1);
        for (std::size_t i = 0; i < source.samples.size(); ++i)
            EXPECT_EQ(at(bank.samples[i + 1]), asText(source.samples[i]));
        EXPECT_EQ(bank.sharedSlot, round % 3 == 0 ? round % 16 : -1);
        if (round % 3 == 0) {
            EXPECT_EQ(bank.sharedTable, source.sharedTable);
        }
    }
}

TEST(BankFile, HeaderRules) {
    TemporaryFolder folder;
    const std::string good = asText(writeBankFile({.code = -3, .items = {{"One", "", {1}, {}}}}));
    auto changed = [&](std::size_t at, const std::string& bytes) {
        return std::string{good}.replace(at, bytes.size(), bytes);
    };
    struct Case {
        const char* what;
        std::string file;
        std::size_t items;
        int code;
    };
    for (const Case& c :
         {Case{"as written", good, 1, -3}, Case{"mixed magic", changed(0, "Mol"), 1, -3},
          Case{"Qor", changed(0, "Qor"), 1, -3}, Case{"wrong magic", changed(1, "x"), 0, 0},
          Case{"no mark", changed(41, "w"), 0, 0}, Case{"format 20", changed(50, "\x14"), 1, -3},
          Case{"format 21", changed(50, "\x15"), 0, 0},
          Case{"format -1", changed(50, "\xFF"), 1, -3}, Case{"87 bytes", good.substr(0, 87), 0, 0},
          Case{"header alone", good.substr(0, 88), 0, 0},
          Case{"block cut", good.substr(0, 100), 0, 0},
          Case{"negative block", changed(87, "\x80"), 0, 0},
          Case{"too many items", changed(88, "\x7F\x7F"), 0, 0},
          Case{"negative items", changed(91, "\xFF"), 0, 0},
          Case{"samples outside", changed(100, "\x01\x01"), 0, 0},
          Case{"names outside", changed(94, "\x7F"), 0, 0}}) {
        folder.put("bank", c.file);
        std::optional<ContentFault> fault;
        const BankFile bank = readBankFile(folder / "bank", fault);
        EXPECT_EQ(bank.items.size(), c.items) << c.what;
        EXPECT_EQ(bank.code, c.code) << c.what;
        EXPECT_EQ(fault.has_value(), c.items == 0) << c.what;
    }
}

// Bank files exist whose second name's length byte stands at byte 3, and such without one.
TEST(BankFile, ReadsTheSecondNameOfAllWriters) {
    TemporaryFolder folder;
    const Bytes written = writeBankFile({.secondName = "Grand"});
    for (const std::string& names :
         {std::string("\0\0\5Grand\0", 9), std::string("\0\0\0\5Grand\0", 10),
          std::string("\0\0\0Grand\0", 9)}) {
        Bytes file{written.begin(), written.begin() + 88 + 16};
        const auto blockBytes = static_cast<std::uint8_t>(16 + names.size());
        file[84] = blockBytes;
        file[92] = 16;
        file.insert(file.end(), names.begin(), names.end());
        folder.put("bank", asText(file));
        std::optional<ContentFault> fault;
        EXPECT_EQ(readBankFile(folder / "bank", fault).secondName, "Grand");
        EXPECT_FALSE(fault);
    }
}

TEST(SampleSet, FindsTheLowestNoteGroupThatCoversTheVelocity) {
    ContentFault fault;
    const auto set = readSampleSet(
        writeSampleSet(std::vector<Zone>{zoneUpTo(40, 1, 64), zoneUpTo(40, 2), zoneUpTo(60, 3, 10),
                                         zoneUpTo(60, 4, 100), zoneUpTo(80, 5), zoneUpTo(127, 0)}),
        fault);
    ASSERT_NE(set, nullptr);
    struct Case {
        int note, velocity, sample;
    };
    for (const Case& c :
         {Case{0, 1, 1}, Case{40, 64, 1}, Case{40, 65, 2}, Case{41, 5, 3}, Case{60, 11, 4},
          Case{50, 101, 5}, Case{60, 101, 5}, Case{80, 127, 5}, Case{81, 1, 0}, Case{127, 127, 0}})
        EXPECT_EQ(set->find(c.note, c.velocity)->sampleNumber, c.sample) << c.note << c.velocity;
    EXPECT_EQ(set->find(0, 1, &set->zones[1])->sampleNumber, 2);
}

TEST(SampleSet, KeepsEveryFieldAndRefusesAnOpenList) {
    const Zone zone{.key = 0x7F7F0001,
                    .sampleNumber = 77,
                    .rootKey = 61,
                    .rootFromKeyRange = true,
                    .frames = 1000,
                    .loopFrames = 400,
                    .tuneSemitones = -0.5f,
                    .loopTuneSemitones = 0.25f,
                    .pan = 0.125f,
                    .level = 0.75f};
    ContentFault fault;
    Bytes bytes = writeSampleSet({&zone, 1});
    ASSERT_EQ(bytes.size(), 64u);
    const auto set = readSampleSet(bytes, fault);
    ASSERT_NE(set, nullptr);
    EXPECT_EQ(writeSampleSet(set->zones), bytes);
    EXPECT_EQ(set->zones[0].rootKey, 61);
    EXPECT_TRUE(set->zones[0].rootFromKeyRange);

    EXPECT_EQ(readSampleSet(ByteView{bytes}.part(0, 63), fault), nullptr);
    bytes[3] = 0x7E;
    EXPECT_EQ(readSampleSet(bytes, fault), nullptr);
    const float infinite = std::numeric_limits<float>::infinity();
    std::memcpy(&bytes[24], &infinite, 4);
    bytes[3] = 0x7F;
    EXPECT_EQ(readSampleSet(bytes, fault)->zones[0].tuneSemitones, 0.0f);
}

TEST(SampleData, PcmComesBackValueForValue) {
    for (const int channels : {1, 2}) {
        std::vector<float> wave = randomWave(200, 5);
        ContentFault fault;
        const SampleSource source{.values = wave, .channels = channels, .rateHz = 48000};
        const auto pcm = readSampleData(writeSampleData(source, SampleFormat::pcm16), fault);
        Bytes bytes = writeSampleData(source, SampleFormat::float32);
        const float none = std::numeric_limits<float>::quiet_NaN();
        std::memcpy(&bytes[16 + 4 * 11], &none, 4);
        wave[11] = 0;
        const auto plain = readSampleData(bytes, fault);
        ASSERT_TRUE(pcm && plain);
        EXPECT_EQ(pcm->frames(), 200 / channels);
        EXPECT_EQ(pcm->channels(), channels);
        EXPECT_EQ(pcm->rateHz(), 48000);
        for (std::size_t i = 0; i < wave.size(); ++i) {
            if (i != 11) {
                EXPECT_EQ(static_cast<float>(pcm->pcm16()[i]) / 32768, wave[i]);
            }
            EXPECT_EQ(plain->float32()[i], wave[i]);
        }
        Zone zone{.frames = 50, .loopFrames = 70};
        EXPECT_EQ(zone.playedLoop(*pcm), 50);
        zone.frames = -1;
        EXPECT_EQ(zone.playedFrames(*pcm), 0);
    }
}

TEST(Wavetable, LevelsKeepAQuarterOfTheirSizeInHarmonics) {
    std::vector<SingleCycle> waves(Wavetable::waves);
    for (std::size_t i = 0; i < 256; ++i) waves[5][i] = static_cast<float>(i) / 128.0f - 1.0f;
    const auto table = makeWavetable(std::span<const SingleCycle, 64>{waves});
    for (int level = 0; level < Wavetable::levels; ++level) {
        const int size = Wavetable::size(level);
        const std::int16_t* wave = table->wave(level, 5);
        EXPECT_EQ(wave[0], wave[size - 1]);
        std::vector<std::complex<double>> spectrum(wave, wave + size - 1);
        fft(spectrum, -1);
        for (int h = 1; h <= (size - 1) / 2; ++h) {
            const double peak = std::abs(spectrum[static_cast<std::size_t>(h)]) / (size - 1);
            const double expected = h <= (size - 1) / 4 ? 1 / (256 * std::sin(M_PI * h / 256)) : 0;
            // Rounding, and the common factor that keeps the overshoot inside full scale.
            EXPECT_NEAR(peak / 32767, expected, 3e-4 + expected * 0.2) << level << ' ' << h;
        }
    }
    ContentFault fault;
    Bytes bytes = writeWavetable(*table);
    EXPECT_EQ(bytes.size(), 8u + 2 * Wavetable::values);
    EXPECT_EQ(writeWavetable(*readWavetable(bytes, fault)), bytes);
    bytes.pop_back();
    EXPECT_EQ(readWavetable(bytes, fault), nullptr);
}

TEST(ToneWheels, ComeBackAndAreRefusedWhenALoopLeaves) {
    std::vector<std::int16_t> values(12 * 32);
    for (std::size_t i = 0; i < values.size(); ++i) values[i] = static_cast<std::int16_t>(i * 37);
    ToneWheelLoops loops;
    std::size_t at = 0;
    for (std::size_t k = 0; k < loops.size(); ++k) {
        loops[k] = std::span{values}.subspan(at, k % 2 == 0 ? 16 : 32);
        at += loops[k].size();
    }
    Bytes bytes = writeToneWheels(0.01f, loops);
    ContentFault fault;
    const auto wheels = readToneWheels(bytes, fault);
    ASSERT_NE(wheels, nullptr);
    EXPECT_EQ(wheels->tuning, 0.01f);
    for (std::size_t k = 0; k < loops.size(); ++k) {
        ASSERT_EQ(static_cast<std::size_t>(wheels->length[k]), loops[k].size());
        EXPECT_TRUE(std::equal(loops[k].begin(), loops[k].end(),
                               wheels->values.begin() + wheels->start[k]));
    }
    struct Case {
        const char* what;
        std::size_t at;
        std::int32_t value;
    };
    for (const Case& c : {Case{"end leaves", 16 + 4 * 11, 4000}, Case{"before", 16, -8},
                          Case{"no whole frames", 64, 12}, Case{"no frames", 64, 0},
                          Case{"sum wraps", 64 + 4 * 3, 0x7FFFFFF8}}) {
        Bytes damaged = bytes;
        std::memcpy(&damaged[c.at], &c.value, 4);
        EXPECT_EQ(readToneWheels(damaged, fault), nullptr) << c.what;
        EXPECT_NE(std::string{fault.sentence}, "") << c.what;
    }
    bytes.resize(bytes.size() - 2);
    EXPECT_EQ(readToneWheels(bytes, fault), nullptr);
}

TEST(Tuning, ReadsItsLinesAndNothingElse) {
    struct Case {
        const char* text;
        int note;
        float semitones;
    };
    for (const Case& c :
         {Case{"note 69=6950.0\n", 69, 0.5f}, Case{"note 69=6950", 69, 0.5f},
          Case{"note   7= 650.0\r\n", 7, -0.5f}, Case{"note+7=+6.5e2\n", 7, -0.5f},
          Case{" note 69=6950\n", 69, 0}, Case{"note 69 =6950\n", 69, 0},
          Case{"Note 69=6950\n", 69, 0}, Case{"note 128=6950\n", 127, 0},
          Case{"note -1=6950\n", 0, 0}, Case{"note 69=\n", 69, 0}, Case{"note 69=nan\n", 69, 0},
          Case{"note 69=inf\n", 69, 0}, Case{"note 69=6900\nnote 69=6950 cents\n", 69, 0.5f}}) {
        const auto table = readTuningText(c.text);
        ASSERT_EQ(table->semitones.size(), 128u);
        EXPECT_EQ(table->semitones[static_cast<std::size_t>(c.note)], c.semitones) << c.text;
    }
    // The rest of a line that is too long is a line.
    const auto pieces = readTuningText(std::string(1023, ';') + "note 60=6050\n");
    EXPECT_EQ(pieces->semitones[60], 0.5f);
}

TEST(Tuning, TextAndItemComeBackValueForValue) {
    std::mt19937 random{11};
    for (int round = 0; round < 20; ++round) {
        std::string text;
        for (int note = 0; note < 128; ++note)
            text +=
                "note " + std::to_string(note) + "=" +
                std::to_string(100 * note + static_cast<double>(random() % 200000) / 1000 - 100) +
                "\n";
        const auto table = readTuningText(text);
        EXPECT_EQ(readTuningText(writeTuningText(*table))->semitones, table->semitones);
        ContentFault fault;
        const Bytes item = writeTuningItem(*table);
        EXPECT_EQ(item.size(), tuningItemBytes);
        EXPECT_EQ(readTuningItem(item, fault)->semitones, table->semitones);
        EXPECT_EQ(readTuningItem(ByteView{item}.part(0, 515), fault), nullptr);
    }
    ContentFault fault;
    EXPECT_TRUE(readTuningItem(Bytes(4), fault)->semitones.empty());
    EXPECT_EQ(readTuningItem(Bytes(4, 0xFF), fault), nullptr);
    EXPECT_EQ(readTuningItem(Bytes(3), fault), nullptr);
}

Scene randomScene(std::mt19937& random) {
    auto unit = [&] { return static_cast<float>(random() % 1000) / 999; };
    Scene scene{.name = std::string(random() % 32, 'n'),
                .flags = static_cast<std::uint32_t>(random() % 4)};
    for (float& value : scene.knobs) value = unit();
    for (float& value : scene.arpeggiator) value = unit();
    for (float& value : scene.steps) value = unit();
    scene.phrase.lengthBeats = 4.0f * static_cast<float>(1 + random() % 8);
    double beats = 0;
    for (std::size_t i = random() % 20; i-- > 0;) {
        constexpr std::uint8_t kinds[] = {0x90, 0xB0, 0xE0, 0xD0};
        scene.phrase.events.push_back(
            {.beats = beats,
             .lengthBeats = 0.01 + static_cast<double>(unit()),
             .status = static_cast<std::uint8_t>(kinds[random() % 4] | random() % 16),
             .data1 = static_cast<std::uint8_t>(random() % 128),
             .data2 = static_cast<std::uint8_t>(1 + random() % 127)});
        beats += static_cast<double>(unit());
    }
    scene.phrase.passThrough = !scene.phrase.events.empty() && random() % 2 == 0;
    return scene;
}

TEST(SceneRecord, ComesBackByteForByte) {
    std::mt19937 random{17};
    for (int round = 0; round < 200; ++round) {
        Scene scene = randomScene(random);
        const Bytes bytes = writeSceneRecord(scene);
        ASSERT_EQ(bytes.size(), (3 * scene.phrase.events.size() + 66) * 8);
        const auto read = readSceneRecord(bytes);
        ASSERT_TRUE(read);
        scene.storedBytes = static_cast<std::uint32_t>(bytes.size());
        EXPECT_EQ(*read, scene);
        EXPECT_EQ(writeSceneRecord(*read), bytes);
    }
    const Bytes empty = writeSceneRecord({.name = "-"});
    EXPECT_EQ(empty.size(), 528u);
    EXPECT_EQ(ByteView{empty}.at<float>(496), 4.0f);
}

TEST(Scene, SizesAndCountsThatLie) {
    std::mt19937 random{19};
    Scene scene = randomScene(random);
    scene.phrase.events.assign(
        3, {.beats = 1, .lengthBeats = 1, .status = 0x90, .data1 = 60, .data2 = 100});
    const Bytes good = writeSceneRecord(scene);
    struct Case {
        const char* what;
        std::size_t at;
        std::int32_t value;
        bool there;
        std::size_t events;
    };
    const auto size = static_cast<std::int32_t>(good.size());
    for (const Case& c :
         {Case{"as written", 0, size, true, 3}, Case{"exactly the events", 0, 504 + 72, true, 3},
          Case{"an event cut", 0, 504 + 71, true, 0}, Case{"fixed part", 0, 504, true, 0},
          Case{"too short", 0, 503, false, 0}, Case{"beyond the bytes", 0, size + 1, false, 0},
          Case{"negative", 0, -1, false, 0}, Case{"many events", 500, 5, true, 0},
          Case{"count wraps", 500, 0x7FFFFFFF, true, 0}, Case{"negative count", 500, -3, true, 0},
          Case{"no length", 496, 0, true, 0}, Case{"length is none", 496, 0x7FC00000, true, 0}}) {
        Bytes bytes = good;
        std::memcpy(&bytes[c.at], &c.value, 4);
        const auto read = readSceneRecord(bytes);
        ASSERT_EQ(read.has_value(), c.there) << c.what;
        if (!read) continue;
        EXPECT_EQ(read->phrase.events.size(), c.events) << c.what;
        if (c.events == 0) {
            EXPECT_EQ(read->phrase, Phrase{}) << c.what;
        }
    }
}

TEST(Phrase, CheckingKeepsWhatCanBePlayed) {
    const double none = std::numeric_limits<double>::quiet_NaN();
    struct Case {
        const char* what;
        PhraseEvent event;
        bool kept;
        double length;
    };
    for (const Case& c : {Case{"note", {1, 2, 0x95, 60, 1}, true, 2},
                          Case{"open note", {1, -1, 0x90, 60, 1}, true, 7},
                          Case{"length is none", {1, none, 0x90, 60, 1}, true, 7},
                          Case{"open at the end", {8, -1, 0x90, 60, 1}, true, 0.01},
                          Case{"short", {1, 0, 0x90, 60, 1}, true, 0.01},
                          Case{"no velocity", {1, 1, 0x90, 60, 0}, false, 0},
                          Case{"velocity 128", {1, 1, 0x90, 60, 128}, false, 0},
                          Case{"note 128", {1, 1, 0x90, 128, 1}, false, 0},
                          Case{"note-off", {1, 1, 0x80, 60, 1}, false, 0},
                          Case{"controller 129", {1, -1, 0xB0, 129, 127}, true, 0},
                          Case{"controller 130", {1, 0, 0xB0, 130, 0}, false, 0},
                          Case{"pressure", {1, 0, 0xD3, 127, 0}, true, 0},
                          Case{"bend", {1, 0, 0xE0, 0, 127}, true, 0},
                          Case{"program", {1, 0, 0xC0, 1, 0}, false, 0},
                          Case{"before the start", {-0.1, 1, 0x90, 60, 1}, false, 0},
                          Case{"time is none", {none, 1, 0x90, 60, 1}, false, 0}}) {
        Phrase phrase{.lengthBeats = 8, .passThrough = true, .events = {c.event}};
        checkPhrase(phrase);
        ASSERT_EQ(phrase.events.size(), c.kept ? 1u : 0u) << c.what;
        if (c.kept) {
            EXPECT_EQ(phrase.events[0].lengthBeats, c.length) << c.what;
        }
        EXPECT_EQ(phrase.passThrough, c.kept) << c.what;
    }
    Phrase phrase{.lengthBeats = 8,
                  .events = {{2, 1, 0x90, 1, 1}, {1, 1, 0x90, 2, 1}, {2, 1, 0x90, 3, 1}}};
    checkPhrase(phrase);
    EXPECT_EQ(phrase.events[0].data1, 2);
    EXPECT_EQ(phrase.events[1].data1, 1);
    EXPECT_EQ(phrase.events[2].data1, 3);
}

}  // namespace
}  // namespace stratovane
