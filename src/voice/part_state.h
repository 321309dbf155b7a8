// What note handling and rendering of a part share.
#pragma once

#include <array>
#include <cstdint>
#include <memory>

#include "base/engine_shared.h"
#include "base/random.h"
#include "patch/patch.h"
#include "voice/arpeggiator/arpeggiator.h"
#include "voice/controllers.h"
#include "voice/held_notes.h"
#include "voice/part_clock.h"
#include "voice/slot_table.h"
#include "voice/voice.h"

namespace stratovane {

using VoicePool = std::array<Voice, voicesPerPart>;

/// A plain record of the audio thread (of its builder before hand-over).
struct PartState {
    PartState(const EngineShared& shared, std::uint32_t seed)
        : patch{shared},
          random{seed},
          clock{random.seed(), random.seed()},
          arpeggiator{random.seed()} {}

    Patch patch;
    SlotTable slots;
    std::unique_ptr<VoicePool> voices = std::make_unique<VoicePool>();
    Controllers controllers;
    HeldNotes held;      // what plays: keys, but for those the arpeggiator took, and its notes
    HeldNotes heldKeys;  // the player's, taken or not
    std::array<std::int8_t, 128> detuneCents{};  // of the last note-on of each key
    MusicalTime time;
    Random random;
    PartClock clock;
    Arpeggiator arpeggiator;
    double rate = 44100;
    float tickSeconds = 0;   // both of rate
    float middleCPitch = 0;  // cycles per sample

    std::int32_t eventCounter = 0;
    std::int32_t intervalStart = 0;  // voices started before it are not resumed
    std::uint32_t notesPlayed = 0;   // parity drives the odd and even trigger conditions

    /// Rate in hertz; pieces of up to `maxFrames` will be rendered. Nothing may render meanwhile.
    void prepare(double newRate, int maxFrames) {
        rate = newRate;
        // Until the next tempo comes along.
        time.beatsPerFrame = static_cast<double>(time.tempo) * (1.0 / (rate * 60.0));
        tickSeconds = static_cast<float>(tickFrames / rate);
        middleCPitch = stratovane::middleCPitch(rate);
        clock.prepare(rate, maxFrames);
    }
    /// Quarter notes in a control tick.
    float beatsPerTick() const { return time.tempo / 60 * tickSeconds; }
    /// Rates and waves of the part's LFOs for the frames to come.
    void followLfos() {
        const auto& lfos = patch.controls().lfo;
        for (std::size_t i = 0; i < lfos.size(); ++i) clock.followLfo(i, lfos[i], beatsPerTick());
    }
    ArpeggiatorScore score() const {
        return {patch.arpeggiator(), patch.phrase(), time.beatsPerFrame};
    }
    ArpeggiatorView arpeggiatorView() const { return ArpeggiatorView{patch.arpeggiator()}; }
    /// The keys that an element follows: one marked "No Arp" knows only the player's.
    const HeldNotes& heldFor(const ElementControls& element) const {
        return element.trigger == TriggerCondition::noArpeggiator ? heldKeys : held;
    }
    Voice& voiceAt(int slot) { return (*voices)[slots[slot].voice]; }
    const Voice& voiceAt(int slot) const { return (*voices)[slots[slot].voice]; }
    /// Pitch of lever and fine tuning.
    float bendPitch() const {
        return controllers.bendSemitones * semitonePitch + patch.controls().finePitch;
    }
    bool keyIsInZone(int note) const {
        return patch.controls().keyGain[static_cast<std::size_t>(note)] != 0;
    }
};

}  // namespace stratovane
