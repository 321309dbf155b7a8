// Phaser: four all-pass stages a side, the right sweep shifted against the left.
#include "effects/all_types.h"
#include "effects/modulation/phaser_unit.h"

namespace stratovane {

namespace {

struct Phaser final : PhaserUnit<false> {
    Phaser() : PhaserUnit{effect::phaser} {}
};

}  // namespace

constinit const EffectType effect::phaser{
    .number = 40, .name = "Phaser", .make = makeEffect<Phaser>, .rows = phaserRows};

}  // namespace stratovane
