// A part with its note handling open to view, and shorthands to play it.
#pragma once

#include <algorithm>
#include <cmath>
#include <set>
#include <vector>

#include "patch/element.h"
#include "patch/parameter_ids.h"
#include "voice/control_tick.h"
#include "voice/part_events.h"
#include "voice/part_mix.h"
#include "voice/part_output.h"
#include "voice/part_sends.h"
#include "voice/part_state.h"

namespace stratovane {

/// Element parameters by number that only these tests name.
namespace tone {
inline constexpr int mute = 0, triggerCondition = 55, muteCondition = 56, monoMode = 57;
inline constexpr int maxVoices = 58, envelopeMode = 59, unisonVoices = 60, unisonDetune = 61;
inline constexpr int unisonPan = 62, noteDelay = 63, delayTime = 64, randomStart = 69;
inline constexpr int cents = 72, patchBend = 75, glideMode = 76, glideType = 77;
inline constexpr int glideTime = 78, attackBend = 80, releaseBend = 82, legatoRetrigger = 83;
inline constexpr int releaseRetrigger = 84, muteFade = 124, click = 125, attack = 126;
inline constexpr int decay = 127, sustain = 128, fade = 129, release = 130;
inline constexpr int velocityToLevel = 132, receiveVelocity = 138, level = 139, pan = 140;
inline constexpr int priority = 144, undamped = 148;
}  // namespace tone

/// The normalised value that chooses entry `i` of a list decoded with `factor` (3.9 for four).
inline float entry(int i, float factor) { return (static_cast<float>(i) + 0.5f) / factor; }
inline float monoMode(MonoMode mode) { return entry(static_cast<int>(mode), 4.9f); }
inline float retrigger(Retrigger mode) { return entry(static_cast<int>(mode), 4.9f); }
inline float glideMode(GlideMode mode) { return entry(static_cast<int>(mode), 3.9f); }

class TestPart {
  public:
    EngineShared shared;
    PartState state;
    PartMix mix;
    PartSends sends;

    explicit TestPart(int elements = 1, double rate = 44100) : state{shared, 1} {
        state.prepare(rate, 1024);
        mix.prepare(1024);
        sends.prepare(1024);
        state.patch.setSampleRate(rate);
        state.patch.makeSawtooth();
        state.patch.setElementCount(elements);
        for (int e = 1; e <= elements; ++e) {
            state.patch.initElement(e, ElementType::analog);
            set(e, tone::randomStart, 0);
        }
    }
    void set(int element, int index, float value) { state.patch.set(element, index, value); }
    void setAll(int index, float value) {
        for (int e = 1; e <= state.patch.elementCount(); ++e) set(e, index, value);
    }
    void event(int status, int first, int second, int fourth = 0,
               EventSource source = EventSource::host) {
        handlePartEvent(state,
                        {static_cast<std::uint8_t>(status), static_cast<std::uint8_t>(first),
                         static_cast<std::uint8_t>(second), static_cast<std::uint8_t>(fourth)},
                        source);
    }
    void on(int note, int velocity = 100) { event(0x90, note, velocity); }
    void off(int note) { event(0x80, note, 0); }
    void control(int number, int value) { event(0xB0, number, value); }
    void bend(int high, int low = 0) { event(0xE0, low, high); }
    void renderPiece(int frames) {
        const OutputSettings output;
        const RenderTarget target;
        state.followLfos();
        state.clock.beginPiece(frames, state.controllers.pressure);
        mix.render(state, {output, target, sends}, {0, frames, 0});
        state.clock.endPiece(frames);
    }
    std::vector<float> run(int frames) {
        std::vector<float> left;
        for (int done = 0; done < frames;) {
            const int piece = std::min(frames - done, mix.capacity());
            renderPiece(piece);
            for (const StereoFrame& frame : mix.buffer(piece)) left.push_back(frame.left);
            done += piece;
        }
        return left;
    }

    int active() const { return state.slots.active(); }
    const VoiceSlot& slot(int i) const { return state.slots[i]; }
    const Voice& voice(int i) const { return state.voiceAt(i); }
    /// Notes of the voices whose key is down or held by a pedal.
    std::multiset<int> playing(int element = 0) const {
        std::multiset<int> notes;
        for (int i = 0; i < active(); ++i)
            if (slot(i).key != VoiceSlot::released && (element == 0 || slot(i).element == element))
                notes.insert(slot(i).note);
        return notes;
    }
    int fading() const {
        int count = 0;
        for (int i = 0; i < active(); ++i) count += voice(i).amp.state == VoiceState::fading;
        return count;
    }
    /// Semitones from middle C at which a slot's voice sounds now.
    float semitones(int i) {
        Voice& v = state.voiceAt(i);
        const VoiceInputs kept = v.inputs;
        resetInputs(state, v);
        const float pitch = v.inputs.pitch;
        v.inputs = kept;
        return pitch / semitonePitch;
    }
};

using Notes = std::multiset<int>;

inline bool isSilent(const std::vector<float>& x) {
    return std::ranges::all_of(x, [](float y) { return y == 0; });
}

}  // namespace stratovane
