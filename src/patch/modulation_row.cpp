#include "patch/modulation_row.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <span>

#include "base/units.h"

namespace stratovane {
namespace {

constexpr float twentyOctavesPitch = 13.862944f;

/// Rows that only sum a controller into the amplitude turn it around the controller's centre.
bool isContinuousController(std::int32_t source) {
    return source == modulationSource::modWheel || source == modulationSource::pressure ||
           (source >= modulationSource::breath && source <= modulationSource::lastKnob);
}

/// Coefficients per tick, never above 1.
struct TickRates {
    float tickSeconds;

    float linear(float seconds) const {
        return seconds < 0.001f ? 1.0f : std::min(tickSeconds / seconds, 1.0f);
    }
    float approach(float seconds) const {
        return std::min(approachCoefficient(seconds, tickSeconds), 1.0f);
    }
};

void compilePlain(CompiledRow& row, const RowSettings& s) {
    const float p = s.parameter;
    row.secondSource = s.modifier;
    row.amount = s.depth;
    if (s.modifier != modulationSource::none) {
        row.amount = (p > 0 ? 1 - p : 1.0f) * s.depth;
        row.depth = p * s.depth;
    }
    if (s.destination == modulationDestination::amp) {
        row.processor = s.modifier == modulationSource::none && isContinuousController(s.source)
                            ? rowProcessor::scaleAround
                            : rowProcessor::scale;
    }
}

/// n steps over the range -1..1: n + 1 levels.
void compileQuantiser(CompiledRow& row, float p) {
    const float v = (p + 1) / 2;
    const int n = 1 + choice(v * v, 30.9f);
    const bool second = row.processor == rowProcessor::quantiseBetweenSteps;
    const float half = static_cast<float>(n) / 2;
    row.processor = n % 2 == 0 ? rowProcessor::quantiseOnSteps : rowProcessor::quantiseBetweenSteps;
    row.amount = n == 1 || second ? half - 0.001f : half + 0.499f;
    row.initialState = 2.0f / static_cast<float>(n);
}

/// Multiplies 0.001 up to 1 in the time given.
void compileLogarithmicRamp(CompiledRow& row, float seconds, float tickSeconds) {
    constexpr float start = 0.001f, logarithmOfWay = 6.9077554f, largestExponent = 80;
    row.amount = 1;
    row.initialState = 1;  // at its end
    if (!(seconds > 0)) return;
    row.amount = std::exp(std::min(logarithmOfWay * tickSeconds / seconds, largestExponent));
    row.initialState = start;
}

void compileProcessor(CompiledRow& row, const RowSettings& s, const RowContext& context) {
    constexpr float pi = 3.14159265f;
    const float p = s.parameter;
    const TickRates rates{context.tickSeconds};
    const float time = timeSeconds((p + 1) / 2), signedTime = timeSeconds(std::fabs(p));
    const float tempoTime = time * context.tempoFactor;
    const float signedTempoTime = signedTime * context.tempoFactor;
    row.processor = s.modifier - firstProcessorModifier + 1;
    row.amount = p;
    row.depth = s.depth;
    switch (row.processor) {
        case rowProcessor::add:
        case rowProcessor::multiply:
        case rowProcessor::drive:
            row.amount = 10 * p * p * p;
            break;
        case rowProcessor::clipAbove:
            if (p < 0) row.processor = rowProcessor::clipBelowZero;
            break;
        case rowProcessor::clipBelow:
            if (p > 0) row.processor = rowProcessor::clipAboveZero;
            break;
        case rowProcessor::curve:
            if (p < 0) row.amount = 0.5847f * p;
            break;
        case rowProcessor::sine:
            row.amount = 25.132742f * p;  // four cycles
            break;
        case rowProcessor::exponential:
            row.amount = 10 * std::fabs(p) * p;
            break;
        case rowProcessor::quantiseOnSteps:
        case rowProcessor::quantiseBetweenSteps:
            compileQuantiser(row, p);
            break;
        case rowProcessor::sampleAndHold:
            row.amount = rates.linear(tempoTime);
            if (row.source == modulationSource::none) row.source = modulationSource::filterInput;
            break;
        case rowProcessor::drift:
            row.amount = 0.1f * rates.approach(time);
            break;
        case rowProcessor::sineAmp:
        case rowProcessor::sineFrequency:
            row.amount = std::pow(10.0f, p) * context.tickSeconds * (2 * pi);
            break;
        case rowProcessor::linearRamp:
        case rowProcessor::gateEnvelope:
            row.amount = rates.linear(signedTempoTime);
            break;
        case rowProcessor::delayRamp:
        case rowProcessor::triangleEnvelope:
            row.amount = rates.linear(signedTempoTime) / 2;
            break;
        case rowProcessor::exponentialRamp:
            row.amount = rates.approach(signedTempoTime);
            break;
        case rowProcessor::logarithmicRamp:
            compileLogarithmicRamp(row, signedTime, context.tickSeconds);
            break;
        case rowProcessor::exponentialLag:
            row.amount = rates.approach(time);
            break;
        case rowProcessor::linearLag:
            row.amount = rates.linear(tempoTime);
            break;
        case rowProcessor::peakHold:
        case rowProcessor::differenceHold:
            row.amount = p <= 0.99f ? rates.linear(time) : 0.0f;
            break;
        default:
            break;
    }
    if (row.processor >= rowProcessor::linearRamp && row.processor <= rowProcessor::gateEnvelope &&
        p < 0)
        row.processor += rowProcessor::inverted;
}

/// Destinations measured as pitch take octaves.
float destinationScale(const RowSettings& s, const RowContext& context) {
    switch (s.destination) {
        case modulationDestination::pitch:
        case modulationDestination::lfo3Rate:
        case modulationDestination::envelopeRate:
            return octavePitch;
        case modulationDestination::shape2:
            return context.shape2IsPitch ? octavePitch : 1.0f;
        case modulationDestination::cutoff:
            return s.source == modulationSource::key || s.source == modulationSource::pitch
                       ? 1.0f
                       : twentyOctavesPitch;
        default:
            return 1.0f;
    }
}

}  // namespace

CompiledRow compileRow(const RowSettings& settings, const RowContext& context) {
    RowSettings s = settings;
    if (s.modifier > lastProcessorModifier) s.modifier = modulationSource::none;
    CompiledRow row{.source = s.source, .destination = s.destination};
    const bool plain = s.modifier < firstProcessorModifier;
    if (plain)
        compilePlain(row, s);
    else
        compileProcessor(row, s, context);
    const float scale = destinationScale(s, context);
    row.depth *= scale;
    if (plain) row.amount *= scale;
    return row;
}

void ModulationRows::edit(int index, const RowSettings& settings, const RowContext& context) {
    ModulationRow& row = rows[static_cast<std::size_t>(index)];
    if (row.settings == settings) return;
    row.settings = settings;
    row.compiled = compileRow(settings, context);
    row.stamp = row.edited = ++changes;
    for (active = modulationRows; active > 0; --active)
        if (!rows[static_cast<std::size_t>(active - 1)].settings.empty()) break;
}

void ModulationRows::recompile(const RowContext& context) {
    for (ModulationRow& row : std::span{rows}.first(static_cast<std::size_t>(active))) {
        const CompiledRow compiled = compileRow(row.settings, context);
        if (compiled == row.compiled) continue;
        row.compiled = compiled;
        row.stamp = ++changes;
    }
}

}  // namespace stratovane
