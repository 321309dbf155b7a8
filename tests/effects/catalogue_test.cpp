// What every effect of the catalogue must keep to, whatever it does to sound.
#include "effects/catalogue.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <map>
#include <set>
#include <span>
#include <string>
#include <tuple>
#include <vector>

#include "base/units.h"
#include "effects/effect_unit.h"

namespace stratovane {
namespace {

using Values = std::array<float, effectParameters>;
using Frames = std::vector<StereoFrame>;

constexpr float rates[] = {8000, 44100, 48000, 96000, 192000};
constexpr float beatsPerSecond = 2;

/// Types of successive numbers.
struct Group {
    int first;
    float tailSeconds;  // 0: 200000 samples
    std::vector<std::string_view> names;
    bool holds(int number) const {
        return number >= first && number < first + static_cast<int>(names.size());
    }
};

const Group catalogue[] = {
    {0, 0, {"Reverb", "Hall Reverb", "Plate Reverb", "Room Reverb", "Reverse Reverb"}},
    {5, 0, {"Non-Linear Reverb", "Early Reflections", "Tuned Resonators", "Overheads"}},
    {10, 0, {"Delay", "Stereo Delay", "Long Delay", "Tape Delay"}},
    {14, 0, {"Ducking Delay", "Grain Delay", "Diffuser Delay"}},
    {19, 0, {"Chorus + Reverb", "Chorus", "Quad Chorus", "Space Chorus", "Ensemble"}},
    {30, 0, {"Flanger", "Step Flanger"}},
    {40, 0, {"Phaser", "Deep Phaser", "Bi-Phaser"}},
    {50, 0.05f, {"Pan / Tremolo", "Stereo Width", "Stereo Enhancer"}},
    {54, 0.01f, {"Scanner Vibrato", "Rotary Speaker", "Rotary Speaker 2"}},
    {60, 0, {"Pitch Shift", "Detune"}},
    {70, 0, {"Vintage Filter", "Wah Pedal", "TalkBox"}},
    {80, 0.5f, {"Shelf EQ", "Parametric EQ"}},
    {85, 0.5f, {"Enhancer"}},
    {90, 0.1f, {"Limiter", "Compressor"}},
    {92, 0.5f, {"Multiband"}},
    {93, 0.1f, {"Punch"}},
    {95, 0.1f, {"Gate"}},
    {100, 0.1f, {"Distortion", "Overdrive", "Bit Reduction", "Amp Simulator"}},
    {104, 0.1f, {"Tube Drive", "Waveshaper"}},
    {110, 0.5f, {"Modulate L/R"}},
};

const Group* runOf(int number) {
    const auto found = std::find_if(std::begin(catalogue), std::end(catalogue),
                                    [number](const Group& run) { return run.holds(number); });
    return found == std::end(catalogue) ? nullptr : found;
}

/// Where displays use another name.
const std::map<int, std::string_view> shown = {{3, "Tavaverb"},
                                               {19, "Cho+Rev"},
                                               {55, "Rotary"},
                                               {92, "Multiband Comp"},
                                               {110, "Modulate L->R"}};

bool isOneOf(int number, std::initializer_list<int> list) {
    return std::find(list.begin(), list.end(), number) != list.end();
}

std::string textOf(const std::function<void(TextOut&)>& show, std::size_t most = 64) {
    std::vector<char> buffer(most);
    TextOut out{buffer};
    show(out);
    EXPECT_FALSE(out.cut());
    return std::string{out.view()};
}

Values initialValues(const EffectType& type) {
    Values values{};
    for (std::size_t i = 0; i < values.size(); ++i) values[i] = type.rows[i].initial;
    return values;
}

/// A quarter of the values lie at an end.
Values randomValues(Random& random) {
    Values values{};
    for (float& v : values) {
        const int place = random.draw() % 8;
        v = place == 0 ? 0.0f : place == 1 ? 1.0f : random.unipolar();
    }
    return values;
}

/// What makes the sound of a preset, and is not muted.
Values soundingValues(const EffectType& type) {
    const EffectPreset* preset = firstPresetOf(type.number);
    Values values = preset == nullptr ? initialValues(type) : preset->values;
    if (type.rows[0].label == "Mix") values[0] = 0.6f;
    return values;
}

Frames noise(Random& random, std::size_t frames, float level = 0.5f) {
    Frames io(frames);
    for (StereoFrame& f : io) f = {level * random.bipolar(), level * random.bipolar()};
    return io;
}

struct Rig {
    KeySource keys{.pitch = 2.5f};
    std::unique_ptr<EffectUnit> unit;
    float rate;
    double beat = 0;

    Rig(const EffectType& type, const Values& values, float atRate)
        : unit{type.make()}, rate{atRate} {
        unit->setSeed(77);
        unit->setTempo(60 * beatsPerSecond, double(beatsPerSecond / rate));
        unit->setKeySource(&keys);
        set(values);
        unit->setSampleRate(rate);
    }
    void set(const Values& values) {
        for (int i = 0; i < effectParameters; ++i)
            unit->setParameter(i, values[static_cast<std::size_t>(i)]);
    }
    void process(std::span<StereoFrame> io, bool& silent) {
        unit->process(io, beat, silent);
        beat += double(io.size()) * double(beatsPerSecond / rate);
    }
    void process(std::span<StereoFrame> io) {
        bool silent = false;
        process(io, silent);
        EXPECT_FALSE(silent);
    }
    /// Sizes come from `next`.
    void processCut(Frames& io, const std::function<std::size_t()>& next) {
        for (std::size_t at = 0; at < io.size();) {
            const std::size_t size = std::min(next(), io.size() - at);
            process(std::span{io}.subspan(at, size));
            at += size;
        }
    }
};

float largest(const Frames& io) {
    float peak = 0;
    for (const StereoFrame& f : io)
        for (const float x : {f.left, f.right})
            if (!(std::fabs(x) <= peak)) peak = std::fabs(x);  // NaN passes on
    return peak;
}

float largestDifference(const Frames& a, const Frames& b) {
    Frames difference(a.size());
    for (std::size_t i = 0; i < a.size(); ++i)
        difference[i] = {a[i].left - b[i].left, a[i].right - b[i].right};
    return largest(difference);
}

bool same(const Frames& a, const Frames& b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                      [](const StereoFrame& x, const StereoFrame& y) {
                          return x.left == y.left && x.right == y.right;
                      });
}

/// For the message of a failure: what it takes to repeat it.
std::string describe(const EffectType& type, float rate, const Values& values) {
    return textOf(
        [&](TextOut& out) {
            out.print("%s at %.0f:", type.name, rate);
            for (const float v : values) out.print(" %.4f", v);
        },
        256);
}

TEST(Catalogue, HoldsTheNamesAndNumbersThatPatchesStore) {
    ASSERT_EQ(effectTypes().size(), 52u);
    for (int number = -1; number <= 130; ++number) {
        const Group* run = runOf(number);
        const EffectType* type = effectType(number);
        ASSERT_EQ(type != nullptr, run != nullptr) << number;
        EXPECT_EQ(makeEffectUnit(number) != nullptr, type != nullptr) << number;
        if (type == nullptr) continue;
        const std::string_view name = run->names[static_cast<std::size_t>(number - run->first)];
        EXPECT_EQ(type->name, name);
        EXPECT_EQ(textOf([&](TextOut& out) { showEffectLabel(out, *type, -1); }),
                  shown.contains(number) ? shown.at(number) : name);
        EXPECT_EQ(choice(storedEffectType(number), 128.9f), number);
    }
}

TEST(Catalogue, LabelsAndDisplaysReadWell) {
    Random random{5};
    for (const EffectType* type : effectTypes()) {
        SCOPED_TRACE(type->name);
        std::set<std::string> labels;
        for (int i = 0; i < effectParameters; ++i) {
            const std::string label =
                textOf([&](TextOut& out) { showEffectLabel(out, *type, i); }, 24);
            // "Mode" of the filter and of its channels share a name.
            EXPECT_TRUE(label.empty() || labels.insert(label).second || type->number == 70)
                << label;
            const float initial = type->rows[static_cast<std::size_t>(i)].initial;
            EXPECT_TRUE(initial >= 0 && initial <= 1) << label;
            for (int step = 0; step <= 40; ++step) {
                EffectView view{.values = randomValues(random)};
                view.sampleRate = rates[random.draw() % 5];
                view.values[static_cast<std::size_t>(i)] = float(step) / 40;
                const std::string text =
                    textOf([&](TextOut& out) { showEffectValue(out, *type, i, view); });
                EXPECT_FALSE(text.empty()) << label << " at " << step;
                for (const char* bad : {"nan", "inf", "%f", "e+"})
                    EXPECT_EQ(text.find(bad), text.npos) << label << ": " << text;
            }
        }
        EXPECT_GE(labels.size(), 2u);
        for (const int index : {-2, effectParameters})
            EXPECT_EQ(textOf([&](TextOut& out) { showEffectLabel(out, *type, index); }), "");
    }
}

TEST(Catalogue, PresetsHoldUsableTypesAndGapsAreEmpty) {
    EXPECT_EQ(effectPresets().size(), 57u);
    for (const EffectPreset& preset : effectPresets()) {
        EXPECT_NE(effectType(preset.type), nullptr) << preset.item;
        EXPECT_EQ(effectPreset(preset.item).name, preset.name);
    }
    // Item, type, name, and one telling value.
    const std::tuple<int, int, std::string_view, std::size_t, float> telling[] = {
        {2, 0, "Reverb", 2, 0.2f},
        {14, 15, "Grain Delay", 6, 0.53f},
        {33, 70, "Vintage Filter", 11, 0.2f},
        {49, 110, "Modulate L/R", 0, 1.0f},
        {98, 1, "GM Reverb", 6, 0.78f},
        {103, 1, "GM Medium Hall", 2, 0.225f},
        {104, 1, "GM Large Hall", 2, 0.225f},
        {105, 128, "", 1, 0.0f},
        {108, 1, "GM Plate Reverb", 4, 1.0f},
        {115, 30, "GM Flanger", 5, 0.4f},
        {116, 128, "", 11, 0.5f},
        {-1, 128, "", 0, 0.5f}};
    for (const auto& [item, type, name, index, value] : telling) {
        const EffectPreset preset = effectPreset(item);
        EXPECT_EQ(preset.type, type) << item;
        EXPECT_EQ(preset.name, name) << item;
        EXPECT_EQ(preset.values[index], value) << item;
    }
    EXPECT_EQ(firstPresetOf(1)->item, 3);
    EXPECT_EQ(firstPresetOf(8), nullptr);
}

TEST(Catalogue, UnitWithoutRatePassesEverythingOn) {
    Random random{11};
    const Frames input = noise(random, 300);
    for (const EffectType* type : effectTypes()) {
        const auto unit = type->make();
        EXPECT_EQ(&unit->type(), type);
        for (bool silent : {false, true}) {
            const bool before = silent;
            Frames io = input;
            unit->setTempo(90, 90.0 / 60 / 44100);
            unit->process(io, 0, silent);
            EXPECT_TRUE(same(io, input)) << type->name;
            EXPECT_EQ(silent, before) << type->name;
        }
    }
}

TEST(Catalogue, BlocksMayBeCutAnywhere) {
    Random random{21};
    const Frames input = noise(random, 4800);
    const auto step = [](std::size_t size) { return [size] { return size; }; };
    const auto anySize = [&random] { return static_cast<std::size_t>(1 + random.draw() % 2048); };
    for (const EffectType* type : effectTypes()) {
        // The rotary speakers' rotors follow their speed block by block.
        if (isOneOf(type->number, {55, 56})) continue;
        // These glide once a block until they have arrived.
        const bool glides = isOneOf(type->number, {81, 104});
        const Frames before = noise(random, glides ? 64 * 600 : 1);
        for (int set = 0; set < 15; ++set) {
            const float rate = rates[set % 5];
            Values values = randomValues(random);
            // Synced, they look at the song position where a block begins.
            if (isOneOf(type->number, {31, 71, 72})) values[1] = 0;
            SCOPED_TRACE(describe(*type, rate, values));
            Frames reference;
            for (const auto& next : std::initializer_list<std::function<std::size_t()>>{
                     step(64), step(1), step(7), step(256), step(2048), anySize}) {
                Rig rig{*type, values, rate};
                Frames settle = before, io = input;
                rig.processCut(settle, step(64));
                rig.processCut(io, next);
                if (reference.empty()) reference = io;
                const float tolerance = 1e-6f * std::max(1.0f, largest(reference));
                EXPECT_LE(largestDifference(io, reference), tolerance);
            }
            if (HasFailure()) break;
        }
    }
}

TEST(Catalogue, OutputStaysFiniteAndBounded) {
    Random random{31};
    const Frames loud = noise(random, 2048, 1), huge = noise(random, 256, 1000);
    for (const EffectType* type : effectTypes())
        for (const float rate : rates)
            for (int set = 0; set < 4; ++set) {
                Values values = randomValues(random);
                SCOPED_TRACE(describe(*type, rate, values));
                Rig rig{*type, values, rate};
                for (int block = 0; block < 8; ++block) {
                    if (block > 3) rig.set(values = randomValues(random));
                    if (block == 5) rig.unit->setTempo(20, 20.0 / 60 / double(rate));
                    if (block == 6) rig.keys.pitch = 8 * random.unipolar();
                    Frames io = block == 4 ? Frames(2048) : loud;
                    rig.process(io);
                    ASSERT_LT(largest(io), 1e4f) << "block " << block;
                }
                Frames io = huge;
                rig.process(io);
                ASSERT_TRUE(std::isfinite(largest(io)));
            }
}

TEST(Catalogue, SampleRateChangeBeginsAnew) {
    Random random{41};
    const Frames input = noise(random, 3000);
    for (const EffectType* type : effectTypes()) {
        if (type->number == 102) continue;  // its hold counts on
        for (const float rate : rates) {
            const Values values = randomValues(random);
            SCOPED_TRACE(describe(*type, rate, values));
            Rig fresh{*type, values, rate}, used{*type, values, rate};
            Frames expected = input, io = input;
            fresh.process(expected);
            used.process(io);
            used.unit->setSampleRate(rate == 8000 ? 96000.0f : 8000.0f);
            used.process(io);
            used.unit->setSampleRate(rate);
            used.beat = 0;
            io = input;
            used.process(io);
            EXPECT_TRUE(same(io, expected));
        }
    }
}

/// Silence, by flag and by zeros, in blocks of `size`.
struct Silence {
    static constexpr std::size_t size = 2048;
    Rig& rig;
    Frames io = Frames(size);

    /// Whether the unit told of sound.
    bool tells() {
        std::fill(io.begin(), io.end(), StereoFrame{});
        bool silent = true;
        rig.process(io, silent);
        return !silent;
    }
    /// Whether the unit leaves what is marked as silent alone.
    bool rests() {
        const Frames marked(size, StereoFrame{0.25f, -0.125f});
        io = marked;
        bool silent = true;
        rig.process(io, silent);
        return silent && same(io, marked);
    }
    bool audible() const { return largest(io) > 0.5e-5f; }
};

void sound(Rig& rig, Random& random) {
    Frames io = noise(random, 4096);
    rig.process(io);
}

/// Sounds on for exactly its tail, tells so, then leaves the buffer alone until sound comes.
void expectTailAtOnce(const EffectType& type, Rig& rig, Random& random) {
    const float seconds = runOf(type.number)->tailSeconds;
    const auto samples = static_cast<std::size_t>(seconds > 0 ? rig.rate * seconds : 200000);
    for (int round = 0; round < 2; ++round) {
        Silence silence{rig};
        EXPECT_LE(int(silence.tells()) + int(silence.tells()), round == 0 ? 1 : 0);
        EXPECT_TRUE(silence.rests());
        sound(rig, random);
        std::size_t blocks = 0;
        while (blocks < 1000 && silence.tells()) ++blocks;
        EXPECT_EQ(blocks, samples / Silence::size + 1);
        EXPECT_TRUE(silence.rests());
    }
}

/// Tells of sound where there is some, and rests a tail after the last.
void expectTailWhenAudible(const EffectType& type, Rig& rig, Random& random) {
    // Delays expect an echo for as long as their line besides: at most 15 s here.
    const bool hasLine = type.number >= 10 && type.number <= 15;
    const std::size_t least = 200000 / Silence::size + 1;
    const std::size_t most =
        hasLine ? least + static_cast<std::size_t>(rig.rate * 15) / Silence::size : least;
    sound(rig, random);
    Silence silence{rig};
    std::size_t quiet = 0, blocks = 0;
    for (; quiet < most && blocks < 4000; ++blocks) {
        const bool told = silence.tells();
        ASSERT_EQ(told, silence.audible()) << "block " << blocks;
        quiet = told ? 0 : quiet + 1;
    }
    ASSERT_EQ(quiet, most) << "it never fell silent";
    EXPECT_TRUE(silence.rests());
    // Still at work one block before the tail ends.
    sound(rig, random);
    for (quiet = 0; quiet + 1 < least;) quiet = silence.tells() ? 0 : quiet + 1;
    EXPECT_FALSE(silence.rests());
}

TEST(Catalogue, TailsAreExactAndTheFlagTellsTheTruth) {
    Random random{51};
    for (const EffectType* type : effectTypes()) {
        Rig rig{*type, soundingValues(*type), 44100};
        rig.keys.pitch = -10;
        SCOPED_TRACE(type->name);
        const bool echoes = isOneOf(type->number, {0, 1, 2, 3, 7, 10, 11, 12, 13, 14, 15, 19, 60});
        const bool always = isOneOf(type->number, {4, 16, 105});
        ASSERT_EQ(type->wakes, echoes ? Waking::audible : always ? Waking::never : Waking::atOnce);
        switch (type->wakes) {
            case Waking::atOnce:
                expectTailAtOnce(*type, rig, random);
                break;
            case Waking::audible:
                expectTailWhenAudible(*type, rig, random);
                break;
            case Waking::never: {
                sound(rig, random);
                Silence silence{rig};
                EXPECT_FALSE(silence.tells());
                EXPECT_FALSE(silence.rests());
                break;
            }
        }
    }
}

// A parameter must not depend on having been set after another one.
TEST(Catalogue, ParametersMayBeSetInAnyOrder) {
    Random random{61};
    constexpr float rate = 44100;
    Frames input = noise(random, 60000);
    const Frames quiet = noise(random, 30000, 0.002f);
    input.insert(input.end(), quiet.begin(), quiet.end());
    for (const EffectType* type : effectTypes()) {
        const Values values = randomValues(random);
        SCOPED_TRACE(describe(*type, rate, values));
        Rig expected{*type, values, rate}, turned{*type, randomValues(random), rate};
        for (int i = effectParameters - 1; i >= 0; --i)
            turned.unit->setParameter(i, values[static_cast<std::size_t>(i)]);
        const auto blocks = [] { return std::size_t{256}; };
        Frames a = input, b = input;
        expected.processCut(a, blocks);
        turned.processCut(b, blocks);
        const Frames endA(a.end() - 4096, a.end()), endB(b.end() - 4096, b.end());
        EXPECT_LE(largestDifference(endA, endB), 1e-3f * std::max(1.0f, largest(endA)));
    }
}

}  // namespace
}  // namespace stratovane
