#include "patch/modulation_texts.h"

#include <array>
#include <cmath>
#include <cstddef>

#include "base/displays.h"
#include "patch/element_controls.h"
#include "patch/parameter_ids.h"

namespace stratovane {

namespace {

constexpr float sourceFactor = 71.9f;

constexpr std::array<std::string_view, 29> sources{
    "",          "Constant",   "Random",     "Velocity",   "Key",    "Pitch",
    "Mod Wheel", "Aftertouch", "Pitch Bend", "Breath Ctl", "Wheel3", "Foot Ctl",
    "SusPed",    "SoftPed",    "Knob 1",     "Knob 2",     "Knob 3", "Knob 4",
    "Knob 5",    "Knob 6",     "Scale2",     "Seq 1",      "Seq 2",  "LFO 1",
    "LFO 2",     "LFO 3",      "Mod Env",    "Filt Env",   "Amp Env"};
constexpr int firstRowSource = 29, lastRowSource = 44;

// How a processor's parameter reads.
enum class Amount { percent, cubed, cycles, steps, time, hertz, signedTime };
struct Processor {
    std::string_view name;
    Amount amount = Amount::percent;
};
constexpr int firstProcessor = 29;
constexpr std::array<Processor, 29> processors{{
    {"Add", Amount::cubed},
    {"Multiply", Amount::cubed},
    {"Drive", Amount::cubed},
    {"Clip +"},
    {"Clip -"},
    {"Rect +"},
    {"Rect -"},
    {"Curve"},
    {"Sine", Amount::cycles},
    {"Exp"},
    {"Log"},
    {"Switch"},
    {"Quant 1", Amount::steps},
    {"Quant 2", Amount::steps},
    {"S+H", Amount::time},
    {"Drift", Amount::time},
    {"Sine Amp", Amount::hertz},
    {"Sine Freq", Amount::hertz},
    {"Lin Ramp", Amount::signedTime},
    {"Delay Ramp", Amount::signedTime},
    {"Exp Ramp", Amount::signedTime},
    {"Log Ramp", Amount::signedTime},
    {"Tri Env", Amount::signedTime},
    {"Gate Env", Amount::signedTime},
    {"Log Lag", Amount::time},
    {"Lin Lag", Amount::time},
    {"Peak Hold", Amount::time},
    {"Diff Hold", Amount::time},
    {"X-Fade"},
}};

const Processor* processor(int modifier) {
    const auto at = static_cast<std::size_t>(modifier - firstProcessor);
    return modifier >= firstProcessor && at < processors.size() ? &processors[at] : nullptr;
}

constexpr std::array<std::string_view, 16> macroDestinations{
    "(none)", "Wave",  "LFO Rate", "Cutoff", "Reso",  "Filt Env", "Filt Att", "Filt Dec",
    "Attack", "Decay", "Release",  "Start",  "Glide", "-",        "Sustain",  "Filt Sus"};

constexpr int pitchDestination = 1;

}  // namespace

std::string_view macroDestinationName(int destination) {
    const auto at = static_cast<std::size_t>(destination + 1);
    return at < macroDestinations.size() ? macroDestinations[at] : std::string_view{};
}

void showRowName(TextOut& out, const ParameterView& view) {
    static constexpr std::string_view fields[] = {"Src", "Mod", "Param", "Dest", "Depth"};
    const int at = view.index - elementIndex::firstModulationRow;
    out.print(" %ld %s", 1 + at / 5, fields[at % 5]);
}

void showRowSource(TextOut& out, float v, const ParameterView&) {
    const int source = choice(v, sourceFactor);
    if (source < firstRowSource) return out.text(sources[static_cast<std::size_t>(source)]);
    if (source <= lastRowSource) out.print("Row %ld", source - firstRowSource + 1);
}

void showRowModifier(TextOut& out, float v, const ParameterView&) {
    const int modifier = choice(v, sourceFactor);
    if (modifier < firstProcessor) return out.text(sources[static_cast<std::size_t>(modifier)]);
    if (const Processor* found = processor(modifier)) out.text(found->name);
}

void showRowParameter(TextOut& out, float v, const ParameterView& view) {
    const Processor* found = processor(choice(view.stored(view.index - 1), sourceFactor));
    const float fromCentre = v - 0.5f;
    switch (found ? found->amount : Amount::percent) {
        case Amount::percent:
            return out.print("%+.1f %%", 200.0f * v - 100.0f);
        case Amount::cubed:
            return out.print("%+.3f", fromCentre * fromCentre * fromCentre * 80.0f);
        case Amount::cycles:
            return out.print("%.2f cyc", fromCentre * 8.0f);
        case Amount::steps:
            return out.print("%ld", 2 + choice(v * v, 30.9f));
        case Amount::time:
            return showTime(out, v);
        case Amount::hertz:
            return out.print("%.2f Hz", std::pow(10.0f, 2.0f * v - 1.0f));
        case Amount::signedTime: {
            const float amount = 2.0f * v - 1.0f;
            out.text(amount > 0.0f ? "+" : "-");
            return showTime(out, std::fabs(amount));
        }
    }
}

void showRowDestination(TextOut& out, float v, const ParameterView& view) {
    const ElementType type = view.type();
    const bool analog = type == ElementType::analog;
    switch (choice(v, 15.9f)) {
        case pitchDestination:
            return out.text("Pitch");
        case 2:
            return out.text(analog ? "Osc1 Wave" : "Wave");
        case 3:
            return out.text("Cutoff");
        case 4:
            return out.text("Reso");
        case 5:
            return out.text("Amp");
        case 6:
            return out.text("Pan");
        case 7:
            return out.text("LFO3 Rate");
        case 8:
            return out.text("Mod Env");
        case 9:
            return out.text(analog                           ? "Osc2 Wave"
                            : type == ElementType::wavetable ? "Osc1 Pitch"
                                                             : "");
        default:
            return;
    }
}

void showRowDepth(TextOut& out, float v, const ParameterView& view) {
    if (choice(view.stored(view.index - 1), 15.9f) == pitchDestination)
        return out.print("%+.2f", signedSquare(v) * 48.0f);
    out.print("%+.1f %%", signedSquare(v) * 400.0f);
}

}  // namespace stratovane
