// Which element parameters the patch's macro destinations bend.
#pragma once

#include <array>

#include "patch/parameter_ids.h"
#include "patch/patch_controls.h"

namespace stratovane {

struct MacroReaders {
    int first = -1, second = -1;  // element indices in the order they are re-applied; -1 none
};

inline constexpr int waveMacro = 0, lfoRateMacro = 1;

/// By destination. `elementIndex::formant` is meant on "Sample" elements alone; destination 1 also
/// bends the patch's LFOs; destination 12 has no element parameter.
inline constexpr std::array<MacroReaders, macroDestinations> macroReaders{{
    {elementIndex::wave, elementIndex::formant},
    {elementIndex::lfo3Rate},
    {elementIndex::cutoff},
    {elementIndex::resonance},
    {elementIndex::filterEnvelope},
    {elementIndex::filterAttack},
    {elementIndex::filterRelease, elementIndex::filterDecay},
    {elementIndex::attack},
    {elementIndex::decay},
    {elementIndex::release},
    {elementIndex::start},
    {elementIndex::glideTime},
    {},
    {elementIndex::sustain},
    {elementIndex::filterSustain},
}};

}  // namespace stratovane
