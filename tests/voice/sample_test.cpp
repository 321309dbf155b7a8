#include <gtest/gtest.h>

#include "content_part.h"
#include "measure/measure.h"
#include "voice/note_sound.h"
#include "voice/voice_sound.h"

namespace stratovane {
namespace {

using measure::Signal;
constexpr SampleFormat formats[] = {SampleFormat::pcm16, SampleFormat::float32,
                                    SampleFormat::delta};

/// What a voice with the filter off (gain 2) plays of a recording.
struct Player {
    ElementControls controls;
    SampleVoice voice;

    void start(const Recording& recording, int point = 0) {
        voice.start(controls, 0, recording.choice(), point);
    }
    Signal play(float framesPerSample, int frames, Signal* right = nullptr) {
        Signal x;
        float left[tickFrames], other[tickFrames];
        for (int i = 0; i < frames; i += tickFrames) {
            voice.tick(framesPerSample, {});
            voice.render(left, other);
            for (const float y : left) x.push_back(y / 2);
            if (right)
                for (const float y : other) right->push_back(y / 2);
        }
        return x;
    }
};

std::vector<float> ramp(int frames) {
    std::vector<float> x(static_cast<std::size_t>(frames));
    for (std::size_t i = 0; i < x.size(); ++i)
        x[i] = static_cast<float>(i) / static_cast<float>(frames);
    return x;
}

TEST(SampleVoice, StartPointsLieAtTheSquareOfTheLength) {
    Player player;
    for (const int frames : {1000, 20000, 65535, 65536, 99999}) {
        const Recording pcm{ramp(frames), SampleFormat::float32};
        const Recording delta{ramp(frames), SampleFormat::delta};
        for (const int point : {0, 1, 31, 63}) {
            const auto frame = [&](const Recording& recording) {
                player.start(recording, point);  // standing still, nearly
                return double(player.play(1e-6f, 32).front()) * frames;
            };
            const double wanted = std::pow(point / 64.0, 2) * frames;
            EXPECT_NEAR(frame(pcm), wanted, 2 + frames / 65536 * point * point / 2.0) << frames;
            EXPECT_NEAR(std::remainder(frame(pcm), 2), 0, 0.02) << frames << " " << point;
            EXPECT_NEAR(frame(delta), frame(pcm), 0.5) << frames << " " << point;
        }
    }
}

TEST(SampleVoice, AStartBehindTheEndOfTheZonePlaysItsLastFrame) {
    for (const SampleFormat format : formats) {
        Recording recording{ramp(20000), format};
        recording.zone.frames = 7001;
        Player player;
        player.start(recording, 63);
        EXPECT_NEAR(player.play(0.01f, 32).front(), 7000.0f / 20000, 1e-4f);
        EXPECT_FALSE(player.voice.isOver());
        player.play(1, 32);
        EXPECT_TRUE(player.voice.isOver());
    }
}

/// A sine whose loop holds whole periods goes on as if it had no end, however fast it is read.
TEST(SampleVoice, LoopsDoNotClick) {
    constexpr double period = 400;
    for (const SampleFormat format : formats)
        for (const int loop : {400, 1600, 2000})
            for (const float speed : {0.37f, 1.0f, 2.9f, 15.7f}) {
                const Recording recording{sine(period, 2000), format, loop};
                Player player;
                player.start(recording);
                const Signal x = player.play(speed, 30000);
                double worst = 0;
                for (std::size_t i = 0; i < x.size(); ++i) {
                    const double at = double(speed) * (static_cast<double>(i) + 1);
                    worst = std::max(worst,
                                     std::fabs(double(x[i]) -
                                               0.5 * std::sin(2 * std::numbers::pi * at / period)));
                }
                EXPECT_LT(worst, format == SampleFormat::delta ? 1e-3 : 1e-4)
                    << static_cast<int>(format) << " " << loop << " " << speed;
            }
}

TEST(SampleVoice, LoopsOfOneFrameStandStill) {
    for (const SampleFormat format : formats) {
        const Recording recording{ramp(64), format, 1};
        Player player;
        player.start(recording);
        const Signal x = player.play(16, 320);
        EXPECT_NEAR(x[3], 63.0f / 64, 2e-3f);
        for (std::size_t i = 4; i < x.size(); ++i) EXPECT_EQ(x[i], x[4]);
        EXPECT_FALSE(player.voice.isOver());
    }
}

TEST(SampleVoice, OneShotsHoldTheirLastFrame) {
    for (const SampleFormat format : formats) {
        const Recording recording{ramp(101), format};
        Player player;
        player.start(recording);
        const Signal x = player.play(1, 320);
        for (std::size_t i = 0; i < 100; ++i)
            EXPECT_NEAR(x[i], static_cast<float>(i + 1) / 101, 1e-3f);
        for (std::size_t i = 100; i < x.size(); ++i) EXPECT_EQ(x[i], x[99]);
        EXPECT_TRUE(player.voice.isOver());
    }
}

TEST(SampleVoice, StereoSidesArePlayedApartAndForceMonoPlaysTheLeftOne) {
    std::vector<float> both;
    const auto left = sine(100, 2000), right = sine(40, 2000, 0.25);
    for (std::size_t i = 0; i < left.size(); ++i) both.insert(both.end(), {left[i], right[i]});
    for (const SampleFormat format : formats) {
        const Recording stereo{both, format, 1000, 2};
        Player player;
        player.controls.filterMode = FilterMode::low24;
        player.start(stereo);
        ASSERT_TRUE(player.voice.isStereo());
        Signal r;
        const Signal l = player.play(0.7f, 1 << 14, &r);
        const double rate = 100 / 0.7;  // the left side then sounds at 1 Hz
        EXPECT_NEAR(measure::levelAt(l, rate, 1), 0.5, 0.01);
        EXPECT_LT(measure::levelAt(l, rate, 2.5), 3e-4);
        EXPECT_NEAR(measure::levelAt(r, rate, 2.5), 0.25, 0.01);
        EXPECT_LT(measure::levelAt(r, rate, 1), 3e-4);

        player.controls.sample.forceMono = true;
        player.start(stereo);
        ASSERT_FALSE(player.voice.isStereo());
        EXPECT_TRUE(player.play(0.7f, 1 << 14) == l);
    }
}

struct SamplePart : testing::Test, ContentPart {
    static constexpr Zone whole{.frames = 1 << 30};
    /// A set of zones, each with a sample of its own, in a bank.
    void putZones(std::vector<Zone> zones, int bank) {
        BankFileSource source;
        for (Zone& zone : zones) {
            source.samples.push_back(
                writeSampleData({.values = sine(64, 640)}, SampleFormat::float32));
            zone.sampleNumber = static_cast<int>(source.samples.size());
            zone.frames = zone.loopFrames = 640;
        }
        source.items = {{"Set", "", writeSampleSet(zones), {}}};
        put("Samples/0" + std::string(bank < 10 ? "0" : "") + std::to_string(bank) + " Zones",
            source);
        start(ElementType::sample, bank);
    }
    static std::ptrdiff_t indexOf(const NoteSound& sound) {
        return sound.zone.zone - sound.content->get<SampleSet>()->zones.data();
    }
    /// Pitch of the sounding voices' first, in semitones above its sample's own.
    float semitones() { return part->voice(0).basePitch / semitonePitch + part->semitones(0); }
};

TEST_F(SamplePart, PlaysAtItsPitchAtEveryRate) {
    for (const SampleFormat format : formats) {
        putSample({.values = sine(80, 8000), .rateHz = 32000}, format,
                  {.rootKey = 64, .frames = 8000, .loopFrames = 4000, .tuneSemitones = 0.25f});
        for (const double rate : {22050.0, 44100.0, 48000.0, 96000.0, 192000.0})
            for (const int note : {40, 64, 83}) {
                start(ElementType::sample, sampleBank, rate);
                part->on(note);
                part->run(2000);
                const Signal x = part->run(1 << 16);
                const double hz = 400 * std::exp2((note - 64 + 0.25) / 12);
                EXPECT_NEAR(measure::cents(measure::frequencyNear(x, rate, hz), hz), 0, 0.05)
                    << static_cast<int>(format) << " " << rate << " " << note;
            }
    }
}

TEST_F(SamplePart, TheLoopIsTunedWhenItIsFirstEntered) {
    putSample({.values = sine(100, 44100)}, SampleFormat::pcm16,
              {.frames = 44100, .loopFrames = 20000, .loopTuneSemitones = 1});
    start(ElementType::sample);
    part->on(60);
    const auto cents = [&](int frames, double nearHz) {
        return measure::cents(measure::frequencyNear(part->run(frames), 44100, nearHz), 441);
    };
    EXPECT_NEAR(cents(40000, 441), 0, 0.1);
    part->run(6000);
    for (int i = 0; i < 3; ++i) EXPECT_NEAR(cents(30000, 467), 100, 0.1);
}

TEST_F(SamplePart, OneShotsEndAndFreeTheVoice) {
    // One ends in silence, one on a constant that has to be faded.
    for (const double last : {0.0, 0.5}) {
        auto values = sine(100, 4000);
        values.insert(values.end(), 41, static_cast<float>(last));
        putSample({.values = values}, SampleFormat::pcm16, whole);
        start(ElementType::sample);
        part->on(60);
        part->run(4000);
        EXPECT_EQ(part->active(), 1);
        const Signal x = part->run(1600);
        EXPECT_EQ(part->active(), 0) << last;
        double step = 0;
        for (std::size_t i = 60; i < x.size(); ++i)
            step = std::max(step, double(std::fabs(x[i] - x[i - 1])));
        EXPECT_LT(step, 0.01) << last;
    }
}

TEST_F(SamplePart, ZonesAddPanAndLevel) {
    putSample({.values = std::vector<float>(4000, 0.5f)}, SampleFormat::float32,
              {.frames = 4000, .loopFrames = 4000, .pan = -0.25f, .level = 0.5f});
    start(ElementType::sample);
    part->on(60);
    part->run(1000);
    const Voice& voice = part->voice(0);
    EXPECT_FLOAT_EQ(voice.offsets.level, 0.5f * (1 - 0.5858f * 0.25f));
    EXPECT_NEAR(voice.gain.left, 3 * voice.gain.right, 1e-5f);
}

struct Lookup {
    const char* what;
    std::vector<std::pair<int, float>> settings;
    int note, velocity, zone;
};

TEST_F(SamplePart, NoteAndVelocityChooseTheZone) {
    // Zones: up to 47 soft and loud, up to 59, up to 71, above.
    const auto zone = [](int note, int velocity) {
        return Zone{.key = (note * 256 + velocity) * 65536};
    };
    putZones({zone(47, 63), zone(47, 127), zone(59, 127), zone(71, 127), zone(127, 127)},
             sampleBank);
    constexpr int keytrack = 73, layer = 22, byVelocity = 23, offset = 33, scale = 34, mode = 17;
    const Lookup lookups[] = {
        {"as played", {}, 47, 63, 0},
        {"loud", {}, 47, 64, 1},
        {"next", {}, 48, 1, 2},
        {"middle", {}, 60, 64, 3},
        {"top", {}, 72, 64, 4},
        {"transposed", {{-global::transpose, 24 / 72.0f}}, 72, 64, 3},
        {"octave down", {{elementIndex::octave, 0.375f}}, 71, 64, 2},
        {"semitone up", {{elementIndex::semitones, 13 / 24.0f}}, 71, 64, 4},
        {"no keytrack", {{keytrack, 0.25f}}, 100, 64, 3},
        {"layer base 5 lowers", {{layer, 17 / 24.0f}}, 76, 64, 3},
        {"layer base 5 lowers no further", {{layer, 17 / 24.0f}}, 77, 64, 4},
        {"velocity lowers", {{byVelocity, 1}}, 72, 127, 3},  // 63 × 0.1905 = 12
        {"velocity raises", {{byVelocity, 1}}, 60, 1, 4},    // trunc(-12.0015)
        {"velocity offset", {{offset, 0.5f + 2 / 256.0f}}, 47, 62, 1},
        {"velocity offset down", {{offset, 0}}, 47, 127, 0},  // limited to 1
        {"velocity halved", {{scale, 0.375f}}, 47, 127, 0},
        {"mode 1 maps as the others",
         {{-global::pianoMode, 1}, {mode, entry(1, 15.9f)}, {scale, 0.375f}},
         47,
         127,
         0},
    };
    for (const Lookup& l : lookups) {
        ASSERT_NO_FATAL_FAILURE(start(ElementType::sample, sampleBank));
        for (const auto& [index, value] : l.settings)
            part->set(index < 0 ? 0 : 1, std::abs(index), value);
        load();
        NoteSound sound;
        ASSERT_TRUE(
            chooseSound(part->state, part->state.patch.element(1), l.note, l.velocity, sound))
            << l.what;
        EXPECT_EQ(indexOf(sound), l.zone) << l.what;
    }
}

TEST_F(SamplePart, KitsMapKeysOrPlayOneDrum) {
    std::vector<Zone> zones;
    for (int note = 0; note < 127; ++note)
        zones.push_back({.key = (note * 256 + 127) * 65536, .rootFromKeyRange = true});
    zones.push_back({.key = Zone::last, .rootFromKeyRange = true});
    putZones(zones, kitBank);
    const struct {
        float drum;
        int note, zone;
        float semitones;
    } cases[] = {
        {1, 40, 40, 0},           {1, 83, 83, 0},     // every key its own, at its own pitch
        {0.5f, 60, 48, 0},        {0.5f, 67, 48, 7},  // the kit's note 48 on the whole keyboard
        {14 / 24.0f, 55, 50, -5}, {0, 60, 36, 0},
    };
    for (const auto& c : cases) {
        start(ElementType::sample, kitBank);
        part->set(1, elementIndex::formant, c.drum);
        NoteSound sound;
        ASSERT_TRUE(chooseSound(part->state, part->state.patch.element(1), c.note, 100, sound));
        EXPECT_EQ(indexOf(sound), c.zone);
        part->on(c.note);
        ASSERT_EQ(part->active(), 1);
        EXPECT_NEAR(semitones(), c.semitones, 1e-3f) << c.drum << " " << c.note;
        // A transposed part plays another drum, again at its own pitch.
        part->set(0, global::transpose, 39 / 72.0f);
        part->on(c.note - 3);
        EXPECT_NEAR(part->voice(1).basePitch / semitonePitch + part->semitones(1), c.semitones,
                    1e-3f);
    }
}

TEST_F(SamplePart, RootsOfMultiZoneSetsFollowTheKeyRange) {
    putZones({{.key = Zone::last, .rootFromKeyRange = true}}, sampleBank);
    const struct {
        int low, high, root;
    } cases[] = {{0, 127, 60}, {40, 60, 50},  {48, 71, 59}, {36, 64, 52}, {48, 72, 60},
                 {49, 73, 61}, {60, 127, 72}, {0, 23, 11},  {0, 24, 12},  {0, 90, 60}};
    for (const auto& c : cases) {
        start(ElementType::sample);
        part->set(1, elementIndex::keyLow, entry(c.low, 127.9f));
        part->set(1, elementIndex::keyHigh, entry(c.high, 127.9f));
        part->on(c.low);
        ASSERT_EQ(part->active(), 1);
        EXPECT_NEAR(semitones(), static_cast<float>(c.low - c.root), 1e-3f) << c.low;
    }
}

TEST_F(SamplePart, LayersOfLiftedDampersNeedThePedal) {
    putZones({{.key = Zone::last}}, sampleBank);
    for (const int mode : {3, 7, 9}) {
        start(ElementType::sample);
        // Mode 3 plays under the first piano model, mode 7 under the second.
        part->set(0, global::pianoModel, mode == 7 ? 1 : 0);
        part->set(1, elementIndex::velocityMapMode, entry(mode, 15.9f));
        load();
        part->control(64, 36);
        part->on(60);
        EXPECT_EQ(part->active(), mode == 9) << mode;
        part->control(64, 37);
        part->on(62);
        EXPECT_EQ(part->active(), mode == 9 ? 2 : 1) << mode;
    }
}

TEST_F(SamplePart, WithoutDataNothingSounds) {
    BankFileSource source;
    const Zone zones[] = {{.key = (59 * 256 + 127) * 65536, .sampleNumber = 7, .frames = 100},
                          {.key = Zone::last, .sampleNumber = 1, .frames = 0}};
    source.samples = {writeSampleData({.values = sine(10, 100)}, SampleFormat::pcm16)};
    source.items = {{"Set", "", writeSampleSet(zones), {}}};
    put("Samples/020 Empty", source);
    start(ElementType::sample);
    for (const int note : {40, 80}) part->on(note);
    EXPECT_EQ(part->active(), 0);
    start(ElementType::sample, 33);
    part->on(60);
    EXPECT_EQ(part->active(), 0);
}

TEST_F(SamplePart, LegatoNotesStartLaterAndFromTheLevelOfTheLast) {
    putSample({.values = ramp(60000)}, SampleFormat::float32, whole);
    start(ElementType::sample);
    constexpr int legatoStart = 28, legatoAttack = 29;
    part->set(1, tone::monoMode, monoMode(MonoMode::last));
    part->set(1, tone::legatoRetrigger, retrigger(Retrigger::newVoice));
    part->set(1, legatoStart, 0.5f);
    part->set(1, legatoAttack, 0.5f);
    part->on(60);
    part->run(3200);
    EXPECT_NEAR(part->voice(0).sample.filterInput(), 3200 / 60000.0, 1e-3);
    const float level = part->voice(0).amp.level;
    EXPECT_GT(level, 0.3f);
    part->on(62);
    ASSERT_EQ(part->active(), 2);
    EXPECT_EQ(part->voice(1).amp.level, level);
    part->run(32);
    EXPECT_NEAR(part->voice(1).sample.filterInput(), std::pow(31 / 64.0, 2), 1e-2);
    // Without another key the next note starts as ever.
    part->off(60);
    part->off(62);
    part->on(64);
    EXPECT_EQ(part->voice(part->active() - 1).amp.level, 0);
}

TEST_F(SamplePart, ModulationAndSettingsMoveTheStart) {
    putSample({.values = ramp(60000)}, SampleFormat::float32, whole);
    const auto startOf = [&](std::initializer_list<std::pair<int, float>> settings, int velocity) {
        start(ElementType::sample);
        for (const auto& [index, value] : settings) part->set(1, index, value);
        part->on(60, velocity);
        part->run(1);
        return std::sqrt(double(part->voice(0).sample.filterInput()) - 32 / 60000.0) * 64;
    };
    const int row = elementIndex::firstModulationRow;
    EXPECT_NEAR(startOf({{elementIndex::start, 0.5f}}, 64), 31, 0.1);
    EXPECT_NEAR(startOf({{68, 0.0f}}, 127), 62, 0.1);  // harder is later
    EXPECT_NEAR(startOf({{elementIndex::wave, 0.25f}}, 64), 15, 0.1);
    EXPECT_NEAR(startOf({{row, entry(1, 71.9f)},  // a constant to the wave, at full depth
                         {row + 3, entry(modulationDestination::shape1, 15.9f)},
                         {row + 4, 1.0f}},
                        64),
                63, 0.1);
}

TEST_F(SamplePart, WhatSoundsGoesOnWhenTheElementChanges) {
    putSample({.values = sine(64, 6400)}, SampleFormat::delta,
              {.frames = 6400, .loopFrames = 6400});
    start(ElementType::sample);
    part->on(60);
    const Signal before = part->run(1000);
    part->set(1, elementIndex::type, entry(5, 15.9f));
    part->set(1, elementIndex::item, 1);
    const Signal after = part->run(1000);
    EXPECT_NEAR(measure::rms(after), measure::rms(before), 0.3 * measure::rms(before));
    EXPECT_NE(part->voice(0).content.get(), 0u);
}

TEST_F(SamplePart, TuningTablesWrapAndClamp) {
    putSample({.values = sine(64, 640)}, SampleFormat::pcm16, whole);
    TuningTable scale, keyboard;
    scale.semitones = {0, 0.1f, 0.2f, 0.3f, 0.4f, 0.5f, 0.6f};
    for (int i = 0; i < 110; ++i) keyboard.semitones.push_back(static_cast<float>(i) * 0.01f);
    put("Tunings/001 Scales", BankFileSource{.items = {{"Seven", "", writeTuningItem(scale), {}},
                                                       {"Keys", "", writeTuningItem(keyboard), {}},
                                                       {"Nothing", "", writeTuningItem({}), {}}}});
    start(ElementType::analog);
    const struct {
        int item, root, note;
        float semitones;
    } cases[] = {{0, 0, 63, 0},     {0, 0, 60, 0.4f}, {0, 2, 60, 0.2f},   {0, 12, 5, 0},
                 {0, -12, 0, 0.5f}, {1, 0, 50, 0.5f}, {1, 0, 127, 1.09f}, {1, 12, 3, 0},
                 {2, 0, 60, 0},     {128, 0, 60, 0}};
    for (const auto& c : cases) {
        Patch& patch = part->state.patch;
        for (const int slot : {0, 1}) {
            const int bank = slot == 0 ? global::tuningBank1 : global::tuningBank2;
            patch.set(0, bank, entry(1, 128.9f));
            patch.set(0, bank + 1, entry(c.item, 128.9f));
            patch.set(0, bank + 2, (static_cast<float>(c.root) + 12.0f) / 24);
        }
        patch.set(0, 83, 0.75f);  // depth
        load();
        ASSERT_EQ(patch.controls().tuning[0].root, c.root);
        part->on(c.note);
        const Voice& voice = part->voice(part->active() - 1);
        const float depth = patch.controls().tuning2Depth;
        EXPECT_NEAR(voice.notePitch / semitonePitch,
                    static_cast<float>(c.note - 60) + c.semitones * (1 + depth), 1e-3f)
            << c.item << " " << c.note;
        EXPECT_NEAR(voice.tuning2, c.semitones, 1e-5f);
        part->off(c.note);
    }
}

}  // namespace
}  // namespace stratovane
