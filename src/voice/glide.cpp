#include "voice/glide.h"

#include <algorithm>
#include <cmath>

#include "voice/part_state.h"

namespace stratovane {
namespace {

/// The element's mode, over which the patch has a say when the element listens to it.
GlideMode effectiveMode(const PartState& part, const ElementControls& element) {
    if (!element.receive) return element.glideMode;
    switch (part.patch.controls().glide) {
        case PatchGlide::off:
            return GlideMode::off;
        case PatchGlide::legato:
            return GlideMode::fingered;
        case PatchGlide::on:
            return GlideMode::always;
        case PatchGlide::byElement:
            break;
    }
    return element.glideMode;
}

bool anotherKeyIsHeld(const PartState& part, const ElementControls& element, int note) {
    return std::ranges::any_of(part.heldFor(element).played(),
                               [&](int key) { return key != note && part.keyIsInZone(key); });
}

void glideTo(PartState& part, Voice& voice, int note, float target, float alwaysFrom) {
    const ElementControls& element = voice.controls();
    const GlideMode mode = effectiveMode(part, element);
    float from = target;
    if (mode == GlideMode::always)
        from = alwaysFrom;
    else if (mode == GlideMode::fingered && anotherKeyIsHeld(part, element, note))
        from = voice.element->lastPitch;
    voice.element->lastPitch = target;
    if (element.glideMode != GlideMode::off) {
        const float byVelocity = element.velocityToBend;
        from += element.attackBend * (1 - std::fabs(byVelocity) + byVelocity * voice.velocity);
    }
    voice.glidePitch = from;
    voice.glideTarget = target;
    refreshGlideSpeed(voice);
}

}  // namespace

void startGlide(PartState& part, Voice& voice, int note, float targetPitch) {
    glideTo(part, voice, note, targetPitch, voice.element->lastPitch);
}

void retargetGlide(PartState& part, Voice& voice, int note, float targetPitch) {
    glideTo(part, voice, note, targetPitch, voice.glidePitch);
}

void releaseGlide(Voice& voice) {
    const ElementControls& element = voice.controls();
    if (element.resumeGlide) {
        voice.glideTarget = voice.glidePitch;
        voice.element->lastPitch = voice.glidePitch;
    }
    if (element.glideMode != GlideMode::off) voice.glideTarget += element.releaseBend;
}

void refreshGlideSpeed(Voice& voice) {
    const ElementControls& element = voice.controls();
    voice.glidePerTick = std::min(
        1.0f, element.glideCoefficient * std::exp(voice.velocity * element.velocityToGlide));
}

}  // namespace stratovane
