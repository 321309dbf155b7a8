#include "automation/midi_learn.h"

#include "automation/host_parameters.h"
#include "engine/engine.h"
#include "patch/controller_map.h"
#include "patch/parameter_ids.h"
#include "patch/patch.h"

namespace stratovane {

namespace {

constexpr ParameterId idOf(const LearnTarget& target) {
    return static_cast<ParameterId>(target.element << 8 | target.index);
}

bool exists(const LearnTarget& t) {
    if (t.part < 0 || t.part >= parts || t.index < 0) return false;
    if (t.element == 0) return t.index < globalParameters;
    return t.element > 0 && t.element <= elementTotal && t.index < elementParameters;
}

/// Of a send slot: only while there is an effect, and not what its panel uses for itself.
bool takesPart(const Patch& patch, const LearnTarget& t) {
    constexpr int firstOfPanel = 63, lastOfPanel = 66;
    if (t.element < firstSendSlot) return true;
    return patch.get(t.element, elementIndex::item) < 1.0f &&
           (t.index < firstOfPanel || t.index > lastOfPanel);
}

int controllerOf(const Patch& patch, ParameterId id) {
    for (int controller = 0; controller < LearnMenu::controllers; ++controller)
        if (patch.controllerTarget(controller) == id) return controller;
    return LearnMenu::none;
}

struct Named {
    int controller;
    std::string_view name;
};
constexpr Named usualNames[] = {
    {0, "Bank MSB"},        {6, "Data Entry"},      {11, "Expression"},
    {32, "Bank LSB"},       {64, "Sustain"},        {66, "Sostenuto"},
    {67, "Soft Pedal"},     {68, "Legato Switch"},  {84, "Glide Start Note"},
    {98, "NRPN LSB"},       {99, "NRPN MSB"},       {100, "RPN LSB"},
    {101, "RPN MSB"},       {120, "All Sound Off"}, {121, "Reset Controllers"},
    {123, "All Notes Off"}, {126, "Mono Mode"},     {127, "Poly Mode"},
};

}  // namespace

void LearnMenu::showTitle(TextOut& out) const {
    if (assigned == none) return out.text("CC");
    out.print("CC %d", assigned);
}

bool MidiLearn::isOffered(int controller) { return isAssignable(controller); }

void MidiLearn::showController(TextOut& out, const Patch& patch, int controller) {
    out.print(isOffered(controller) ? "%.3d. " : "-G%.3d. ", controller);
    // An entry of an old map for a controller of the engine is kept, but drives nothing.
    if (const ParameterId id = patch.controllerTarget(controller); id != noParameter) {
        const int element = id >> 8;
        if (element != 0) out.print("E%d ", element);
        return patch.showName(out, element, id & 255);
    }
    for (const Named& usual : usualNames)
        if (usual.controller == controller) out.text(usual.name);
}

std::optional<LearnMenu> MidiLearn::open(Engine& engine, const LearnTarget& target) {
    if (!exists(target)) {
        trace_.write(TraceLevel::warning, "Error - mouseClick learn parameter %d", target.index);
        return std::nullopt;
    }
    const Patch& patch = engine.patch(target.part);
    if (!takesPart(patch, target)) return std::nullopt;
    touch(engine, target);
    return LearnMenu{controllerOf(patch, idOf(target))};
}

void MidiLearn::touch(Engine& engine, const LearnTarget& target) {
    Patch& patch = engine.patch(target.part);
    patch.store(target.element, target.index, patch.get(target.element, target.index));
    parameters_.touch(target.part, target.element, target.index);
}

void MidiLearn::assign(Engine& engine, const LearnTarget& target, int controller) {
    if (exists(target) && isOffered(controller))
        engine.patch(target.part).assignController(controller, idOf(target));
}

void MidiLearn::arm(Engine& engine, const LearnTarget& target) {
    if (!exists(target)) return;
    touch(engine, target);
    engine.patch(target.part).armLearn();
}

void MidiLearn::forget(Engine& engine, const LearnTarget& target) {
    if (!exists(target)) return;
    Patch& patch = engine.patch(target.part);
    const int assigned = controllerOf(patch, idOf(target));
    if (assigned != LearnMenu::none) patch.assignController(assigned, noParameter);
}

}  // namespace stratovane
