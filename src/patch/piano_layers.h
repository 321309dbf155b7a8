// Which sample sets the layers of a sampled piano play.
#pragma once

namespace stratovane {

inline constexpr int noSampleSet = 128;

/// The patch's piano variant 0..17: 6 * quality ("ECO", "MID", "XXL") + 3 for "Model 2" +
/// resonance ("Off", "Sustain", "Always"), from normalised values. Any thread.
int pianoVariant(float mode, float model, float resonance);

/// The sample set that a layer plays: `mode` is the element's velocity-map mode, `number` the set
/// it chose, `variant` as above. Modes other than 1..8 and numbers from 128 on give the number
/// back; layers that the variant leaves out give noSampleSet. Any thread.
int pianoLayer(int mode, int number, int variant);

}  // namespace stratovane
