#include "voice/control_tick.h"

#include <algorithm>
#include <cmath>

#include "voice/glide.h"
#include "voice/part_state.h"
#include "voice/start_voice.h"
#include "voice/voice_modulation.h"
#include "voice/voice_sound.h"

namespace stratovane {
namespace {

constexpr float endLevel = 0.0001f;        // amplitude or output at which an ending voice is let go
constexpr float shortestEndFade = 0.005f;  // seconds

void followElement(const PartState& part, Voice& voice) {
    const std::uint32_t changes = voice.element->changes();
    if (changes == voice.elementChanges) return;
    voice.elementChanges = changes;
    refreshGlideSpeed(voice);
    refreshSound(part, voice);
    refreshSources(part, voice);
}

void tickEnvelopes(const PartState& part, Voice& voice) {
    const ElementControls& element = voice.controls();
    const EnvelopeContext context = envelopeContext(part, voice, element.ampEnvelope);
    // A negative amplitude of the tick before holds the modulation envelope.
    const float rate = voice.inputs.amplitude < 0 ? 0 : std::min(voice.inputs.envelopeRate, 10.0f);
    voice.modulation.tick(rate, element.modulation, context.timeFactor);
    EnvelopeContext filterContext = context;
    filterContext.controls = &element.filterEnvelope;
    voice.filterEnvelope.tick(filterContext);
    voice.amp.tick(context);
}

/// A recording that ends on a value other than 0 would go on as a constant.
void fadeWhenOver(const PartState& part, Voice& voice) {
    if (!soundIsOver(voice) || voice.amp.state == VoiceState::fading) return;
    EnvelopeContext context = envelopeContext(part, voice, voice.controls().ampEnvelope);
    context.muteFadeSeconds = std::max(context.muteFadeSeconds, shortestEndFade);
    voice.amp.setStage(4, context);
}

/// |left| + |right| of the last sample that was played.
float lastOutput(const Voice& voice) {
    constexpr int last = tickFrames - 1;
    const VoiceTick& tick = voice.ticks[voice.playing];
    const float left = tick.samples[last];
    const float right = tick.stereo ? tick.right[last] : left;
    return std::fabs(left * (tick.start.left + last * tick.perSample.left)) +
           std::fabs(right * (tick.start.right + last * tick.perSample.right));
}

/// The ramp of this tick leads from where the last one ended to the new gains.
void setRamp(const PartState& part, Voice& voice, VoiceTick& tick) {
    const float a =
        voiceLevel(part, voice) * voice.amp.level * std::max(voice.inputs.amplitude, 0.0f);
    const float pan = std::clamp(voice.inputs.pan, 0.0f, 1.0f);
    const StereoGain target{a * (1 - pan), a * pan};
    tick.start = voice.gain;
    tick.perSample = {(target.left - voice.gain.left) / tickFrames,
                      (target.right - voice.gain.right) / tickFrames};
    voice.gain = target;
}

}  // namespace

bool hasEnded(const Voice& voice) {
    if (voice.amp.state != VoiceState::sounding && voice.amp.level < endLevel) return true;
    return voice.ticked && soundIsOver(voice) && lastOutput(voice) < endLevel;
}

float voiceLevel(const PartState& part, const Voice& voice) {
    return voice.controls().level * part.controllers.expression * voice.offsets.level;
}

void resetInputs(const PartState& part, Voice& voice) {
    const ElementControls& element = voice.controls();
    VoiceInputs& in = voice.inputs;
    in.pitch = element.pitchOffset + voice.glidePitch +
               (element.patchBend ? part.bendPitch() : part.patch.controls().finePitch);
    in.shape1 = element.wave + voice.offsets.shape1;
    in.shape2 = element.wave2;
    in.cutoff = element.cutoff + voice.offsets.cutoffRandom + voice.offsets.cutoffVelocity +
                element.envelopeToCutoff * voice.filterEnvelope.level;
    in.resonance = element.resonance + voice.offsets.resonance;
    in.pan = element.pan + voice.offsets.pan;
    in.amplitude = in.lfo3Rate = in.envelopeRate = 1;
    in.nowhere = 0;
}

void renderTick(PartState& part, Voice& voice) {
    followRows(part, voice);
    followElement(part, voice);
    voice.step = part.clock.at(voice.dueFrame);
    tickLfo3(part, voice);
    tickEnvelopes(part, voice);
    voice.glidePitch += (voice.glideTarget - voice.glidePitch) * voice.glidePerTick;
    modulateInputs(part, voice);
    voice.playing = voice.playing == 0 ? 1 : 0;
    VoiceTick& tick = voice.ticks[voice.playing];
    tick.firstFrame = voice.dueFrame;
    setRamp(part, voice, tick);
    renderSound(voice, tick);
    fadeWhenOver(part, voice);
    voice.ticked = true;
    voice.dueFrame += tickFrames;
}

}  // namespace stratovane
