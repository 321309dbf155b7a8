#include "effects/effect_unit.h"

#include <algorithm>
#include <cmath>

namespace stratovane {

namespace {

bool audible(std::span<const StereoFrame> io) {
    constexpr float threshold = 0.5e-5f;
    return std::any_of(io.begin(), io.end(), [](const StereoFrame& f) {
        return std::fabs(f.left) > threshold || std::fabs(f.right) > threshold;
    });
}

}  // namespace

EffectUnit::EffectUnit(const EffectType& type) : type_{type} {
    for (std::size_t i = 0; i < values_.size(); ++i) values_[i] = type.rows[i].initial;
}

void EffectUnit::setSampleRate(float rate) {
    rate_ = rate;
    tailSamples_ = type_.tail.seconds > 0 ? static_cast<std::int32_t>(rate * type_.tail.seconds)
                                          : type_.tail.samples;
    tail_ = 0;
    random_ = Random{seed_};
    ready_ = prepare();
    if (!ready_) return;
    reset();
    for (int i = 0; i < effectParameters; ++i) update(i);
}

void EffectUnit::setTempo(float beatsPerMinute, double beatsPerSample) {
    if (!std::isfinite(beatsPerMinute) || !(beatsPerMinute > 0) || !std::isfinite(beatsPerSample) ||
        !(beatsPerSample > 0))
        return;
    const auto samplesPerBeat = static_cast<float>(1.0 / beatsPerSample);
    if (!std::isfinite(samplesPerBeat) || !std::isfinite(60.0f / beatsPerMinute)) return;
    beatsPerSample_ = beatsPerSample;
    samplesPerBeat_ = samplesPerBeat;
    secondsPerBeat_ = 60.0 / beatsPerMinute;
    if (ready_) tempoChanged();
}

void EffectUnit::setParameter(int index, float value) {
    values_[static_cast<std::size_t>(index)] = value;
    if (ready_) update(index);
}

bool EffectUnit::process(std::span<StereoFrame> io, double beat, bool& silent) {
    if (!ready_ || !begin(silent)) return false;
    inputSilent_ = silent;
    if (type_.wakes == Waking::never) {
        render(io, beat);
        return true;
    }
    if (silent && tail_ < 0) {
        idle(static_cast<int>(io.size()));
        return false;
    }
    tail_ = silent ? tail_ - static_cast<std::int32_t>(io.size()) : tailSamples_;
    const bool asleep = silent;
    if (type_.wakes == Waking::atOnce) silent = false;
    render(io, beat);
    if (asleep && type_.wakes == Waking::audible && audible(io)) {
        tail_ = tailSamples_;
        silent = false;
    }
    return true;
}

}  // namespace stratovane
