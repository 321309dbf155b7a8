// The modulation rows of a sounding voice.
#pragma once

namespace stratovane {

struct PartState;
struct Voice;

/// A new note: every row starts anew. Audio thread, like all below.
void startSlots(const PartState& part, Voice& voice);
/// Rows edited since start anew, the others go on.
void followRows(const PartState& part, Voice& voice);
/// The element receives other controllers than before.
void refreshSources(const PartState& part, Voice& voice);
/// Sets the voice's inputs to their bases and lets the active rows move them, in order.
void modulateInputs(const PartState& part, Voice& voice);

/// LFO 3: a new note, a note taken over, a tick.
void startLfo3(Voice& voice);
void retriggerLfo3(Voice& voice);
void tickLfo3(const PartState& part, Voice& voice);

}  // namespace stratovane
