// Giving a voice a note: from nothing, or while it sounds.
#pragma once

#include "patch/element_controls.h"
#include "voice/envelope.h"
#include "voice/midi_bytes.h"
#include "voice/note_sound.h"

namespace stratovane {

struct PartState;
struct Voice;

/// A note as one voice receives it.
struct VoiceNote {
    int note = 60;  // as played
    float detuneCents = 0;
    int velocity = 64;  // 1..127
    EventSource source = EventSource::host;
    NoteSound sound{};  // what the element chose for it
};

/// Starts the voice of a slot, which allocateVoice gave; the slot's note, key and mute condition
/// are set as well. `gain` is that of the zones, 0..1; `unisonIndex` 0, or 1..n. Audio thread.
void startVoice(PartState& part, int slot, const VoiceNote& note, float gain, int unisonIndex);

/// Hands a sounding voice another note; `mode` tells which of its envelopes start again (from
/// where they are). Audio thread.
void retargetVoice(PartState& part, int slot, const VoiceNote& note, Retrigger mode);

/// What the envelopes of a voice need to know. Audio thread.
EnvelopeContext envelopeContext(const PartState& part, const Voice& voice,
                                const EnvelopeControls& envelope);

/// The tempo factor of the element's envelopes.
float envelopeTimeFactor(const PartState& part, const Voice& voice);

}  // namespace stratovane
