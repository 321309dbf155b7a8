// What a voice does every 32 samples.
#pragma once

namespace stratovane {

struct PartState;
struct Voice;

/// Whether a voice that is due has ended. Audio thread, like all below.
bool hasEnded(const Voice& voice);
/// Renders the voice's next 32 samples and the gains to mix them with into its free tick.
void renderTick(PartState& part, Voice& voice);
/// Sets the modulation inputs to their bases.
void resetInputs(const PartState& part, Voice& voice);
/// Level of the voice before its envelope.
float voiceLevel(const PartState& part, const Voice& voice);

}  // namespace stratovane
