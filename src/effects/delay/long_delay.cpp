// Long Delay: the Delay on a line of four seconds.
#include "effects/all_types.h"
#include "effects/delay/mono_delay.h"

namespace stratovane {

namespace {

constexpr float lineSeconds = 4.01f;

class LongDelay final : public MonoDelay {
  public:
    LongDelay() : MonoDelay{effect::longDelay, lineSeconds} {}
};

}  // namespace

constinit const EffectType effect::longDelay{.number = 12,
                                             .name = "Long Delay",
                                             .wakes = Waking::audible,
                                             .make = makeEffect<LongDelay>,
                                             .rows = {{{"Mix", 0.5f, showEffectPercent},
                                                       {"Sync", 0, showEffectSwitch},
                                                       {"Delay", 0.5f, showEchoTime<lineSeconds>},
                                                       {"Feedback", 0.5f, showEffectPercent},
                                                       {"Balance", 0.5f, showBalance},
                                                       {"HF Damp", 1, showInvertedPercent}}}};

}  // namespace stratovane
