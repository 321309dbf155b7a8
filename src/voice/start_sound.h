// The sounds that play content: where they begin.
#pragma once

namespace stratovane {

struct PartState;
struct Voice;
struct VoiceNote;

/// A note of a mono element while another key is held. Audio thread, like all below.
bool isLegato(const PartState& part, const Voice& voice);
/// Starts the zone that the note chose; runs the modulation rows once, which may move the start
/// point. Returns the zone's factor on the level.
float startSample(const PartState& part, Voice& voice, const VoiceNote& note);
void startDrawbar(const PartState& part, Voice& voice, const VoiceNote& note);

}  // namespace stratovane
