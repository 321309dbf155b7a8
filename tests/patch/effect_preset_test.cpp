#include "patch/effect_preset.h"

#include <gtest/gtest.h>

#include "effects/catalogue.h"
#include "effects/effect_unit.h"
#include "patch/element.h"
#include "patch/parameter_ids.h"
#include "patch/patch.h"

namespace stratovane {
namespace {

TEST(EffectPresets, FillASlotThatPlays) {
    EngineShared shared;
    Patch patch{shared};
    patch.handOver();
    for (const int index : {20, elementIndex::level, elementIndex::pan})
        patch.store(65, index, 0.123f);
    loadEffectPreset(patch, 65, 108);
    patch.applyMarked();
    EXPECT_EQ(patch.text(65), "GM Plate Reverb");
    ASSERT_NE(patch.element(65).unit(), nullptr);
    const EffectPreset preset = effectPreset(108);
    EXPECT_EQ(patch.element(65).controls().effect.type, preset.type);
    for (int i = 0; i < effectParameters; ++i)
        EXPECT_EQ(patch.get(65, 25 + i), preset.values[static_cast<std::size_t>(i)]) << i;
    EXPECT_FALSE(patch.element(65).controls().muted);
    for (const int index : {20, elementIndex::level, elementIndex::pan})
        EXPECT_EQ(patch.get(65, index), 0.123f) << index;

    loadEffectPreset(patch, 65, 105);  // an empty one
    EXPECT_EQ(patch.text(65), "");
    EXPECT_EQ(patch.get(65, elementIndex::item), 1.0f);
    EXPECT_EQ(patch.get(65, elementIndex::mute), 0.0f);
    EXPECT_EQ(patch.element(65).unit(), nullptr);
    loadEffectPreset(patch, 65, 99);
    emptyEffect(patch, 65);
    EXPECT_EQ(patch.text(65), "");
    EXPECT_EQ(patch.get(65, elementIndex::mute), 1.0f);
    EXPECT_EQ(patch.element(65).unit(), nullptr);
}

TEST(EffectPresets, TurnAnElementIntoAnEffectButNoneThatIsNotThere) {
    EngineShared shared;
    Patch patch{shared};
    patch.setElementCount(1);
    patch.initElement(1, ElementType::analog);
    loadEffectPreset(patch, 1, 16);
    EXPECT_EQ(patch.element(1).type(), ElementType::effect);
    EXPECT_EQ(patch.text(1), "Chorus");
    const std::uint32_t changes = patch.changes();
    for (const int element : {-1, 0, 2, 64, 69}) {
        loadEffectPreset(patch, element, 16);
        emptyEffect(patch, element);
    }
    EXPECT_EQ(patch.changes(), changes);
}

}  // namespace
}  // namespace stratovane
