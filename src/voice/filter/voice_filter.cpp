#include "voice/filter/voice_filter.h"

#include <algorithm>
#include <cmath>

#include "voice/filter/filter_cores.h"

namespace stratovane {
namespace {

struct ModeRow {
    float input, low, band, high, low2, band2;  // tap weights
    float target;                               // damping beyond the stability limit
};

constexpr ModeRow modes[] = {
    {2, 0, 0, 0, 0, 0, 0.77f},  // off
    {0, 0, 0, 0, 1, 0, 0.77f},  // low24
    {0, 1, 0, 0, 0, 0, 0.77f},  // low12
    {0, 0, 0, 0, 0, 1, 0.77f},  // band18
    {0, 0, 1, 0, 0, 0, 0.77f},  // band12
    {0, 0, 0, 1, 0, 0, 0.3f},   // high12
    {2, 0, -1, 0, 0, 0, 0.5f},  // peak
    {2, 0, 0, -1, 0, 0, 0.5f},  // presence
    {0, 1, 0, 0, 0, 0, 0.77f},  // damper
};
constexpr ModeRow alternativeBand18{0, 0, 0, 0, 0, 1, 0.77f};
constexpr ModeRow alternativePeak{2, 0, 0, 0, 0, -1, 0.5f};
constexpr ModeRow ladderLow24{0, 0, 0, 0, 0, 1, 0.77f};   // stage 4
constexpr ModeRow ladderLow12{0, 0, 1, 0, 0, 0, 0.77f};   // stage 2
constexpr ModeRow ladderDamper{0, 1, 0, 0, 0, 0, 0.77f};  // stage 1

constexpr float stageRatio = 0.63f;  // of the second stage's cutoff to the first's
constexpr float highestStep = 16;    // of f before it is used; far above every limit
constexpr float ringing = 2;         // band states of a filter that oscillates from the start
constexpr float againstDenormals = 1e-8f;

bool isLadder(FilterCore core) {
    return core == FilterCore::ladder || core == FilterCore::ladderModulated;
}

const ModeRow& modeRow(FilterCore core, FilterMode mode) {
    if (isLadder(core)) {
        if (mode == FilterMode::low24) return ladderLow24;
        return mode == FilterMode::low12 ? ladderLow12 : ladderDamper;
    }
    if (core == FilterCore::alternativeBand)
        return mode == FilterMode::peak ? alternativePeak : alternativeBand18;
    return modes[std::clamp(static_cast<int>(mode), 0, static_cast<int>(FilterMode::damper))];
}

/// Largest f1 and f2 at which the first stage is stable.
float stabilityLimit(float damping) { return 1.92f - 0.85f * damping; }

}  // namespace

void VoiceFilter::start(FilterCore core, FilterMode mode, bool selfOscillating) {
    *this = VoiceFilter{};
    mode_ = mode;
    setCore(core, 0, 0);
    if (!selfOscillating) return;
    for (FilterKernel& k : kernels_) k.band = k.band2 = ringing;
}

void VoiceFilter::setMode(FilterMode mode) {
    mode_ = mode;
    const ModeRow& row = modeRow(core_, mode_);
    for (FilterKernel& k : kernels_) {
        k.inputTap = row.input;
        k.lowTap = row.low;
        k.bandTap = row.band;
        k.highTap = row.high;
        k.low2Tap = row.low2;
        k.band2Tap = row.band2;
    }
}

void VoiceFilter::setCore(FilterCore core, float filterMod, float distortion) {
    core_ = core;
    filterMod_ = filterMod;
    for (FilterKernel& k : kernels_) k.distortion = distortion;
    setMode(mode_);
}

void VoiceFilter::click(float k) {
    for (FilterKernel& kernel : kernels_) {
        kernel.low = kernel.low2 = k;
        kernel.band += k;
        kernel.band2 += k;
    }
}

float VoiceFilter::energy() const {
    float loudest = 0;
    for (int i = 0; i < channels_; ++i) {
        const FilterKernel& k = kernels_[i];
        loudest = std::max(loudest, 0.005f * (k.low * k.low + k.band * k.band));
    }
    return loudest;
}

void VoiceFilter::update(const FilterInputs& inputs) {
    const float f = std::min(std::exp(inputs.pitch * inputs.keytrack + inputs.cutoff), highestStep);
    for (FilterKernel& k : kernels_) {
        k.band += againstDenormals;
        k.band2 += againstDenormals;
    }
    float q = 0.95f - inputs.resonance;
    if (q < 0.15f) {
        q = std::max(q, f > 1 ? (f - 1) * 0.05f : 0.0f);
        energy_ += (energy() - energy_) * 0.05f;
        q += energy_;
    }
    q = std::min(q, 1.0f);
    if (isLadder(core_))
        updateLadder(f, q);
    else
        updateDigital(f, q);
}

void VoiceFilter::updateDigital(float f, float q) {
    const bool alternative = core_ == FilterCore::alternativeBand;
    float limit = stabilityLimit(q), f1 = f, f2 = f;
    float f3 = std::min(1.0f, f * stageRatio);
    if (alternative) f3 = std::min(1.0f, 1.2f * filterMod_ * f);
    if (f > limit) {
        q += std::min(f - limit, 1.0f) * (modeRow(core_, mode_).target - q);
        limit = stabilityLimit(q);
        f1 = limit;
        f2 = std::min(f, limit);
    } else if (mode_ >= FilterMode::damper) {
        f1 = limit;
    }
    for (FilterKernel& k : kernels_) {
        k.f1 = f1;
        k.f2 = f2;
        k.f3 = f3;
        k.damping = q;
        k.damping2 = alternative ? 0.8f * q + 0.08f : 1.0f;
        k.limit = limit;
    }
}

void VoiceFilter::updateLadder(float f, float q) {
    constexpr float highest = 3.25f;
    const float g = 0.28f * std::min(f, highest);
    const float d = (g - 0.366f) * (g - 0.366f);
    for (FilterKernel& k : kernels_) {
        k.stage = (0.8f * (1 - g) + 1) * g;
        k.feedback = ((20 * d + 7) * d + 2.5f) * (1 - q) * (1 - g);
    }
}

void VoiceFilter::render(const float* x, const float* factors, float* y, int channel) {
    SampleInput input{x};
    renderFilter(core_, kernels_[channel], input, factors, y);
}

}  // namespace stratovane
