// Bi-Phaser: the Phaser, and its mix through four more stages and mixed once more.
#include "effects/all_types.h"
#include "effects/modulation/phaser_unit.h"

namespace stratovane {

namespace {

struct BiPhaser final : PhaserUnit<true> {
    BiPhaser() : PhaserUnit{effect::biPhaser} {}
};

}  // namespace

constinit const EffectType effect::biPhaser{
    .number = 42, .name = "Bi-Phaser", .make = makeEffect<BiPhaser>, .rows = phaserRows};

}  // namespace stratovane
