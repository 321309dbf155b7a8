// Delay: two taps on one damped line of a second and a half.
#include "effects/all_types.h"
#include "effects/delay/mono_delay.h"

namespace stratovane {

namespace {

constexpr float lineSeconds = 1.51f;

class Delay final : public MonoDelay {
  public:
    Delay() : MonoDelay{effect::delay, lineSeconds} {}
};

}  // namespace

constinit const EffectType effect::delay{.number = 10,
                                         .name = "Delay",
                                         .wakes = Waking::audible,
                                         .make = makeEffect<Delay>,
                                         .rows = {{{"Mix", 0.5f, showEffectPercent},
                                                   {"Sync", 0, showEffectSwitch},
                                                   {"Delay", 0.5f, showEchoTime<lineSeconds>},
                                                   {"Feedback", 0.5f, showEffectPercent},
                                                   {"Balance", 0.5f, showBalance},
                                                   {"HF Damp", 1, showInvertedPercent}}}};

}  // namespace stratovane
