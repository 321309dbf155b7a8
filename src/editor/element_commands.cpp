#include "editor/element_commands.h"

#include "base/trace.h"
#include "engine/engine.h"
#include "patch/editing/element_order.h"
#include "patch/effect_preset.h"

namespace stratovane {

namespace {

/// Changes a copy of a part's patch and hands it over.
template <class Change>
void rebuild(Engine& engine, int part, Change change) {
    engine.patch(part).applyLoading();  // a phrase that still waits to be loaded comes along
    auto instance = engine.makeInstance(part);
    instance->patch().copyFrom(engine.patch(part));
    change(instance->patch());
    engine.adopt(part, std::move(instance));
}

}  // namespace

bool ElementCommands::copy(int part, int element) {
    access_.trace.write(TraceLevel::patch, "copy patch %d element %d", part, element);
    const Patch* patch = access_.patch(part);
    return patch != nullptr && clipboard_.copy(*patch, element);
}

bool ElementCommands::paste(int part, int element, Paste how) {
    const bool inserts = how == Paste::insert;
    access_.trace.write(TraceLevel::patch, "%s patch %d element %d", inserts ? "insert" : "paste",
                        part, element);
    Patch* patch = access_.patch(part);
    if (patch == nullptr || (!EditorAccess::isPart(part) && element < firstSendSlot)) return false;
    const bool moves = inserts && element >= 1 && element <= maxElements;
    const bool done = moves ? insert(part, element) : clipboard_.paste(*patch, element);
    if (done) access_.tellChange(part, element);
    return done;
}

bool ElementCommands::insert(int part, int element) {
    if (!hasRoom(access_.engine->patch(part), element)) return false;
    rebuild(*access_.engine, part, [&](Patch& fresh) {
        makeRoom(fresh, element);
        clipboard_.paste(fresh, element);
    });
    return true;
}

bool ElementCommands::remove(int part, int element) {
    access_.trace.write(TraceLevel::patch, "delete patch %d element %d", part, element);
    const Patch* patch = EditorAccess::isPart(part) ? access_.patch(part) : nullptr;
    if (patch == nullptr || element < 1 || element > patch->elementCount()) return false;
    rebuild(*access_.engine, part, [&](Patch& fresh) { removeElement(fresh, element); });
    access_.tellChange(part, element);
    return true;
}

bool ElementCommands::init(int part, int element, int type) {
    access_.trace.write(TraceLevel::patch, "init patch %d element %d", part, element);
    Patch* patch = access_.patch(part);
    const bool isType = type >= static_cast<int>(ElementType::effect) &&
                        type <= static_cast<int>(ElementType::analog);
    const auto wanted = static_cast<ElementType>(type);
    if (patch == nullptr || !isType || !isEditable(*patch, element) ||
        (element >= firstSendSlot && wanted != ElementType::effect))
        return false;
    patch->initElement(element, wanted, common_);
    patch->applyLoading();
    access_.tellChange(part, element);
    return true;
}

}  // namespace stratovane
