#include "patch/editing/knob_inputs.h"

#include "base/units.h"
#include "patch/knob_slots.h"
#include "patch/parameter_ids.h"
#include "patch/patch.h"

namespace stratovane {

void followKnobs(Patch& patch, int element) {
    for (int slot = 0; slot < KnobSlots::count; ++slot) {
        const int knob = choice(patch.get(element, elementIndex::firstSlotKnob + slot), 7.9f);
        if (knob < 1 || knob > 6) continue;
        patch.recall(element, elementIndex::firstSlotInput + slot,
                     patch.get(0, global::knobs[knob - 1]));
    }
}

}  // namespace stratovane
