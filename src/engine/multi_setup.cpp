#include "engine/multi_setup.h"

#include "patch/parameter_ids.h"
#include "patch/patch.h"

namespace stratovane {

void MessageSets::applyTo(Patch& fresh) const {
    struct Target {
        Kind kind;
        int index;
    };
    constexpr Target targets[] = {
        {bendRange, global::bendUp},  {bendRange, global::bendDown},
        {fineTune, global::fineTune}, {coarseTune, global::transpose},
        {monoMode, global::monoPoly},
    };
    for (const Target& target : targets)
        if ((noted.get() >> target.kind & 1) != 0)
            fresh.recall(0, target.index, values[static_cast<std::size_t>(target.kind)]);
}

}  // namespace stratovane
