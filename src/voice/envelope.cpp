#include "voice/envelope.h"

#include <cmath>

#include "base/units.h"

namespace stratovane {
namespace {

constexpr float farBound = 256;          // never crossed
constexpr float silenceTarget = 1e-10f;  // above the denormal numbers
constexpr int sustainStage = 6;          // entered from the decay alone

}  // namespace

float amplitudePeak(float velocityToLevel, float midiVelocity, float startGain) {
    const float c = velocityToLevel, amount = std::fabs(c);
    float x = (midiVelocity - 1) / 126;
    if (c < 0) x = 1 - x;
    const float y = amount <= 1 ? (x - 0.5f) * amount + 0.55f
                                : x + (x * x - x) * (amount - 1) + 0.07f - 0.02f * amount;
    return (0.07f - 0.02f * amount + y) * startGain;
}

float filterPeak(float velocityToLevel, float velocity) {
    const float c = velocityToLevel, amount = std::fabs(c);
    float x = (velocity + 1) / 2;
    if (c < 0) x = 1 - x;
    x = amount <= 1 ? (x - 0.5f) * amount + 0.5f : x + (x * x - x) * (amount - 1);
    return 2 * x;
}

void SegmentEnvelope::setStage(int stage, const EnvelopeContext& context) {
    const EnvelopeControls& c = *context.controls;
    switch (stage) {
        case -1:
        case 0: {
            state = VoiceState::sounding;
            upperBound_ = peak;
            lowerBound_ = -farBound;
            // A slow pole aimed far above the peak rises nearly straight and crosses it in time.
            target_ = 3.4f * peak;
            nextStage_ = 2;
            const float legato = stage == -1 ? c.legatoAttackSeconds : 0.0f;
            const float seconds = std::exp(context.velocity * c.velocityToAttack) *
                                  (c.attackSeconds + legato) * context.timeFactor;
            coefficient_ = approachCoefficient(seconds, 0.1f * context.tickSeconds);
            break;
        }
        case 1:
            upperBound_ = peak;
            decay(context);
            break;
        case 2:
            decay(context);
            break;
        case 3:
            release(c.releaseSeconds, context);
            break;
        case 4:
            state = VoiceState::fading;
            upperBound_ = farBound;
            lowerBound_ = -farBound;
            target_ = silenceTarget;
            coefficient_ = approachCoefficient(context.muteFadeSeconds, context.tickSeconds);
            break;
        case 5:
            release(c.decaySeconds, context);
            break;
        case sustainStage:
            sustain(context);
            break;
        default:
            break;
    }
}

void SegmentEnvelope::decay(const EnvelopeContext& context) {
    const EnvelopeControls& c = *context.controls;
    if (c.sustain > 0.98f) return sustain(context);
    level = upperBound_;
    const float held = peak * c.sustain, d = c.decayCurve;
    upperBound_ = farBound;
    lowerBound_ = held;
    target_ = held - (peak - held) * d;
    nextStage_ = sustainStage;
    if (held < 1e-6f && c.fadeSeconds <= 0) state = VoiceState::ending;
    const float seconds =
        std::exp(context.keyPitch * c.decayKeytrack + context.velocity * c.velocityToDecay) *
        c.decaySeconds * context.timeFactor;
    // The further the target lies below the held level, the less of the way is gone: the logarithm
    // makes up for it, so that every curve takes about the same time.
    coefficient_ =
        approachCoefficient(seconds, -0.3f * context.tickSeconds * std::log((d + 0.01f) / (d + 1)));
}

void SegmentEnvelope::sustain(const EnvelopeContext& context) {
    const EnvelopeControls& c = *context.controls;
    level = target_ = peak * c.sustain;
    upperBound_ = farBound;
    lowerBound_ = -farBound;
    coefficient_ = 0;
    if (context.startedByRelease) return release(c.releaseSeconds, context);
    if (c.fadeSeconds == 0) return;
    if (c.fadeSeconds < 0) state = VoiceState::ending;
    target_ = c.fadeSeconds < 0 ? 0.0f : peak;
    const float seconds = std::exp(0.5f * context.keyPitch * c.decayKeytrack) *
                          std::fabs(c.fadeSeconds) * context.timeFactor;
    coefficient_ = approachCoefficient(seconds, context.tickSeconds);
}

void SegmentEnvelope::release(float stageSeconds, const EnvelopeContext& context) {
    const EnvelopeControls& c = *context.controls;
    state = VoiceState::ending;
    upperBound_ = farBound;
    lowerBound_ = -farBound;
    target_ = silenceTarget;
    const float seconds =
        std::exp(context.keyPitch * c.releaseKeytrack + context.velocity * c.velocityToRelease) *
        stageSeconds * context.timeFactor;
    coefficient_ = approachCoefficient(seconds, context.tickSeconds);
}

void SegmentEnvelope::tick(const EnvelopeContext& context) {
    level += (target_ - level) * coefficient_;
    if (level > upperBound_ || level < lowerBound_) setStage(nextStage_, context);
}

}  // namespace stratovane
