#include "patch/editing/scene_store.h"

#include <memory>
#include <utility>

#include "patch/parameter_ids.h"
#include "patch/patch.h"
#include "patch/scene_table.h"

namespace stratovane {

namespace {

/// The patch's phrase under its name, in a record of the same size.
Scene startingFrom(const Scene* phrase) {
    Scene scene{.name = "-"};
    if (phrase != nullptr) {
        scene.name = phrase->name;
        scene.phrase = phrase->phrase;
        scene.storedBytes = phrase->storedBytes;
    }
    scene.storedBytes = static_cast<std::uint32_t>(sceneRecordBytes(scene));
    return scene;
}

template <std::size_t n>
void takeValues(const Patch& patch, int first, std::array<float, n>& values) {
    for (std::size_t i = 0; i < n; ++i) values[i] = patch.get(0, first + static_cast<int>(i));
}

}  // namespace

bool storeScene(Patch& patch, int slot, std::uint32_t flags) {
    if (slot < 1 || slot >= sceneLayout::slots) return false;
    Scene scene = startingFrom(patch.scenes().at(0));
    scene.flags = flags;
    for (std::size_t i = 0; i < scene.knobs.size(); ++i)
        scene.knobs[i] = patch.get(0, global::knobs[i]);
    takeValues(patch, global::firstArpeggiator, scene.arpeggiator);
    takeValues(patch, global::firstStep, scene.steps);
    patch.putScene(slot, std::make_shared<const Scene>(std::move(scene)));
    if (patch.scenes().current() == slot) patch.selectScene(slot);
    return true;
}

}  // namespace stratovane
