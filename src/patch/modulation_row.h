// One of an element's sixteen modulation rows: what it was set to, and the numbers a voice runs on.
#pragma once

#include <array>
#include <cstdint>

namespace stratovane {

inline constexpr int modulationRows = 16;

/// What a row's source (and, up to "Amp Env", its modifier) names. Stored in patches.
namespace modulationSource {
enum : std::int32_t {
    none,
    constant,
    random,
    velocity,
    key,
    pitch,
    modWheel,
    pressure,
    pitchBend,
    breath,
    general3,
    foot,
    sustain,
    softPedal,
    firstKnob,
    lastKnob = firstKnob + 5,
    tuning2,
    sequencer1,
    sequencer2,
    lfo1,
    lfo2,
    lfo3,
    modulationEnvelope,
    filterEnvelope,
    ampEnvelope,
    firstRow,  // outputs of the element's rows
    lastRow = firstRow + modulationRows - 1,
    filterInput = 99,  // not stored: what the sample-and-hold takes without a source
};
}  // namespace modulationSource

/// Where a row's output goes. Stored in patches.
namespace modulationDestination {
enum : std::int32_t { none, pitch, shape1, cutoff, resonance, amp, pan, lfo3Rate, envelopeRate };
inline constexpr std::int32_t shape2 = 9;
}  // namespace modulationDestination

/// What a row does with its source. 1..29 are stored in patches as modifiers 29..57.
namespace rowProcessor {
enum : std::int32_t {
    plain,
    add,
    multiply,
    drive,
    clipAbove,
    clipBelow,
    foldAbove,
    foldBelow,
    curve,
    sine,
    exponential,
    logarithm,
    threshold,
    quantiseOnSteps,
    quantiseBetweenSteps,
    sampleAndHold,
    drift,
    sineAmp,
    sineFrequency,
    linearRamp,
    delayRamp,
    exponentialRamp,
    logarithmicRamp,
    triangleEnvelope,
    gateEnvelope,
    exponentialLag,
    linearLag,
    peakHold,
    differenceHold,
    crossfade,
    clipBelowZero = 97,  // of what exceeds the amount only the negative side
    clipAboveZero,       // only the positive side
    scale,               // plain, but multiplies its destination by 1 + output
    scaleAround,         // likewise, around a controller's centre
    inverted = 100,      // added to the ramps and envelopes
};
}  // namespace rowProcessor

inline constexpr std::int32_t firstProcessorModifier = 29, lastProcessorModifier = 57;

/// A row as its five parameters say.
struct RowSettings {
    std::int32_t source = 0, modifier = 0, destination = 0;
    float parameter = 0;  // -1..1
    float depth = 0;      // -1..1

    bool operator==(const RowSettings&) const = default;
    bool empty() const { return source == 0 && modifier == 0; }
};

/// What the compiled numbers depend on besides.
struct RowContext {
    bool shape2IsPitch = false;  // destination 9 on "Wavetable" elements
    float tickSeconds = 0;
    float tempoFactor = 1;  // multiplies the times that follow tempo
};

/// A row ready to run. Plain rows put (modifier * depth + amount) * source into the destination,
/// processors depth times what they make of source and amount.
struct CompiledRow {
    std::int32_t source = 0, secondSource = 0, destination = 0;
    std::int32_t processor = rowProcessor::plain;
    float amount = 0, depth = 0;
    float initialState = 0;

    bool operator==(const CompiledRow&) const = default;
};

/// Any thread.
CompiledRow compileRow(const RowSettings& settings, const RowContext& context);

/// Owner of the element's controls. The fields of a row change together with its stamp.
struct ModulationRow {
    RowSettings settings;
    CompiledRow compiled;
    std::uint32_t stamp = 0;   // of the last change of `compiled`
    std::uint32_t edited = 0;  // stamp of the last change of `settings`: voices start the row anew
};

struct ModulationRows {
    std::array<ModulationRow, modulationRows> rows{};
    std::int32_t active = 0;    // up to the last row that is not empty
    std::uint32_t changes = 0;  // stamps given so far

    void edit(int row, const RowSettings& settings, const RowContext& context);
    /// For times that follow tempo and rate, and for what the type decides; rows that run go on.
    void recompile(const RowContext& context);
};

}  // namespace stratovane
