#include "patch/patch.h"

#include <algorithm>
#include <cassert>
#include <utility>

#include "base/units.h"
#include "content/content_library.h"
#include "effects/effect_unit.h"
#include "patch/controller_map.h"
#include "patch/element.h"
#include "patch/element_rows.h"
#include "patch/global_rows.h"
#include "patch/parameter_ids.h"
#include "patch/patch_texts.h"
#include "patch/scene_table.h"

namespace stratovane {

Patch::Patch(const EngineShared& shared)
    : shared_{shared},
      rate_{static_cast<double>(shared.sampleRate.get())},
      elements_{std::make_unique<Element[]>(elementTotal + 1)},
      texts_{std::make_unique<PatchTexts>()},
      scenes_{std::make_unique<SceneTable>()} {
    for (int i = 0; i < globalParameters; ++i) {
        const GlobalRow* row = globalRow(i);
        values_[static_cast<std::size_t>(i)] = row ? row->initial : 0.0f;
    }
    for (int number = 1; number <= elementTotal; ++number) {
        Element& made = element(number);
        made.patch_ = this;
        made.number_ = number;
        for (int i = 0; i < elementParameters; ++i)
            made.values_[static_cast<std::size_t>(i)] = constructionValue(i);
    }
    resetControllers(controls_.type);
    for (int i = 0; i < globalParameters; ++i) applyGlobal(i);
    for (int number = 1; number <= elementTotal; ++number) element(number).applyAll();
    layoutChanged_.take();
}

Patch::~Patch() {
    if (place_.library == nullptr) return;
    for (int number = 1; number <= elementTotal; ++number) element(number).releaseContent();
    for (; !waitingReleases_.empty(); waitingReleases_.removeOldest())
        place_.library->release(waitingReleases_.oldest().id);
}

// Setting.

bool Patch::exists(int element, int index) const {
    if (element == 0) return index >= 0 && index < globalParameters;
    return element > 0 && element <= elementTotal && index >= 0 && index < elementParameters;
}

void Patch::rememberChange(int element, int index) {
    lastChanged_ = element * elementParameters + index;
    learnArmed_.take();
}

void Patch::store(int element, int index, float value) {
    if (!exists(element, index)) return;
    rememberChange(element, index);
    write(element, index, value, When::marked);
}
void Patch::set(int element, int index, float value) {
    if (!exists(element, index)) return;
    rememberChange(element, index);
    write(element, index, value, When::owner);
}
void Patch::recall(int element, int index, float value) {
    if (exists(element, index)) write(element, index, value, When::marked);
}
void Patch::recallNow(int element, int index, float value) {
    if (exists(element, index)) write(element, index, value, When::owner);
}

void Patch::write(int number, int index, float value, When when) {
    value = toUnitRange(value);
    bool counts = true;
    if (number == 0) {
        Shared<float>& stored = values_[static_cast<std::size_t>(index)];
        if (const GlobalRow* row = globalRow(index); row && row->choices > 0)
            counts = choice(stored, row->choices) != choice(value, row->choices);
        stored = value;
    } else {
        element(number).values_[static_cast<std::size_t>(index)] = value;
    }
    settle(number, index, when);
    if (counts) changes_.bump();
}

float Patch::get(int number, int index) const {
    if (!exists(number, index)) return 0;
    return number == 0 ? values_[static_cast<std::size_t>(index)].get()
                       : element(number).stored(index);
}

// Applying.

/// Whether a row is first for the UI thread; under the type as stored, which any thread may read.
bool Patch::loads(int number, int index) const {
    if (number == 0) {
        const GlobalRow* row = globalRow(index);
        return row && row->loads;
    }
    const ElementRow* row = elementRow(ParameterView{*this, number, index}.type(), index);
    return row && row->loads;
}

/// Applies a stored value or leaves it to the thread that must. Only the owner may say
/// `When::owner`.
void Patch::settle(int number, int index, When when) {
    if (!live_) {
        apply(number, index);
        if (loads(number, index)) load(number, index);
        return;
    }
    if (loads(number, index)) return loading_.set(number, index);
    if (when == When::owner) return apply(number, index);
    markForOwner(changed_, number, index);
}

void Patch::markForOwner(ParameterMarks& marks, int number, int index) {
    marks.set(number, index);
    due_.set(1);  // last, so that whoever takes it finds the mark
}

void Patch::apply(int number, int index) {
    if (number == 0)
        applyGlobal(index);
    else
        element(number).apply(index);
}

void Patch::applyGlobal(int index) {
    const GlobalRow* row = globalRow(index);
    if (!row) return;
    if (row->apply) {
        GlobalScope scope{*this, controls_, arpeggiator_, index};
        row->apply(scope, values_[static_cast<std::size_t>(index)]);
    }
    if (row->resends >= 0) resend(row->resends);
}

void Patch::applyMarked() {
    if (due_.take() == 0) return;
    if (phraseStale_.take() != 0) followPhrase();
    loaded_.take([this](int number, int index) { apply(number, index); });
    changed_.take([this](int number, int index) {
        // A type change on its way may have made a plain row of one that loads.
        const ElementRow* row = number == 0 ? nullptr : elementRow(element(number).type_, index);
        if (row && row->loads)
            loading_.set(number, index);
        else
            apply(number, index);
    });
}

void Patch::applyLoading() {
    loading_.take([this](int number, int index) {
        load(number, index);
        markForOwner(loaded_, number, index);
    });
}

void Patch::load(int number, int index) {
    if (number > 0) {
        element(number).refreshUnit();
        element(number).refreshContent();
    } else if (index >= global::tuningBank1 && index < global::tuningBank1 + 2) {
        refreshTuningTable(0);
    } else if (index >= global::tuningBank2 && index < global::tuningBank2 + 2) {
        refreshTuningTable(1);
    } else if (index == global::phraseProgram) {
        loadPhrase();
    } else {
        // ECO switch and piano variant choose for the elements.
        for (int n = 1; n <= elementCount_; ++n) element(n).refreshContent();
    }
}

/// Bank or item 128 stands for no table; an item that is not there leaves the table before.
void Patch::refreshTuningTable(int slot) {
    const auto at = static_cast<std::size_t>(slot);
    const int bankIndex = slot == 0 ? global::tuningBank1 : global::tuningBank2;
    const PackedItem wanted = PackedItem::of(choice(get(0, bankIndex), 128.9f),
                                             choice(get(0, bankIndex + 1), 128.9f), false);
    if (wanted == selectedTunings_[at] || place_.library == nullptr) return;
    selectedTunings_[at] = wanted;
    if (!wanted.isItem()) return tunings_[at].publish(nullptr);
    const ItemSlot* table =
        place_.library->acquire(ContentKind::tunings, wanted.bank(), wanted.item(), false);
    if (table != nullptr) tunings_[at].publish(table);
}

bool Patch::waits() const { return due_.get() != 0 || loading_.any(); }

void Patch::setSampleRate(double rate) {
    rate_ = rate;
    applyGlobal(global::lfo1Rate);
    applyGlobal(global::lfo2Rate);
    for (int number = 1; number <= elementTotal; ++number) {
        element(number).applyAll();
        if (EffectUnit* unit = element(number).unit()) {
            unit->setTempo(shared_.tempo, beatsPerFrame());
            unit->setSampleRate(static_cast<float>(rate));
        }
    }
}

double Patch::beatsPerFrame() const {
    return static_cast<double>(shared_.tempo.get()) / (60.0 * rate_);
}

void Patch::setTempo(float beatsPerMinute, double beatsPerSample) {
    for (int number = 1; number <= elementTotal; ++number)
        if (EffectUnit* unit = element(number).unit())
            unit->setTempo(beatsPerMinute, beatsPerSample);
    if (beatsPerMinute == tempo_) return;
    tempo_ = beatsPerMinute;
    for (int number = 1; number <= elementCount_; ++number) element(number).recompileRows();
}

void Patch::renewEffects() {
    for (int number = 1; number <= elementTotal; ++number)
        if (element(number).unit() != nullptr) element(number).renewUnit();
}

void Patch::refreshTuning() { settle(0, global::fineTune, When::marked); }

float GlobalScope::value(int other) const { return patch.values_[static_cast<std::size_t>(other)]; }
double GlobalScope::rate() const { return patch.rate_; }
float GlobalScope::tuningSemitones() const { return patch.shared_.tuningSemitones; }
void GlobalScope::reapply(int other) { patch.settle(0, other, Patch::When::owner); }
void GlobalScope::reapplyReaders(int destination) { patch.reapplyReaders(destination); }
void GlobalScope::reapplyPianoLayers() {
    constexpr int pianoElements = 8;
    for (int number = 1; number <= pianoElements; ++number)
        if (patch.element(number).type() == ElementType::sample)
            patch.settle(number, elementIndex::item, Patch::When::owner);
}
void GlobalScope::turnKnob(int knob) { patch.turnKnob(knob); }
void GlobalScope::rebuildMacros() { patch.rebuildMacros(); }
void GlobalScope::resetControllers() { patch.resetControllers(controls.type); }
void GlobalScope::enterStoredScene() { patch.enterStoredScene(); }
float GlobalScope::macro(int destination, float v) const { return patch.macro(destination, v); }

// Texts.

void Patch::showName(TextOut& out, int number, int index) const {
    if (!exists(number, index)) return;
    const ParameterView view{*this, number, index};
    const auto show = [&](const auto* row) {
        if (!row) return;
        if (row->showName) return row->showName(out, view);
        out.text(row->name);
    };
    if (number == 0)
        show(globalRow(index));
    else
        show(elementRow(view.type(), index));
}

void Patch::showValue(TextOut& out, int number, int index) const {
    showValue(out, number, index, get(number, index));
}

void Patch::showValue(TextOut& out, int number, int index, float value) const {
    if (!exists(number, index)) return;
    constexpr float asStored = -1.0f;
    const float v = value == asStored ? get(number, index) : toUnitRange(value);
    const ParameterView view{*this, number, index};
    const auto show = [&](const auto* row) {
        if (row && row->show) return row->show(out, v, view);
        showPercent(out, v);
    };
    if (number == 0)
        show(globalRow(index));
    else
        show(elementRow(view.type(), index));
}

std::string_view Patch::text(int selector) const { return texts_->get(selector); }
void Patch::setText(int selector, std::string_view text) { texts_->set(selector, text); }

// Elements.

Element& Patch::element(int number) {
    assert(number >= 1 && number <= elementTotal);
    return elements_[static_cast<std::size_t>(number)];
}
const Element& Patch::element(int number) const {
    assert(number >= 1 && number <= elementTotal);
    return elements_[static_cast<std::size_t>(number)];
}

std::span<const std::uint8_t> Patch::effectElements() {
    if (std::exchange(effectsChanged_, false)) {
        effectCount_ = 0;
        for (int number = 1; number <= elementCount_; ++number)
            if (element(number).type() == ElementType::effect)
                effectList_[static_cast<std::size_t>(effectCount_++)] =
                    static_cast<std::uint8_t>(number);
    }
    return {effectList_.data(), static_cast<std::size_t>(effectCount_)};
}

void Patch::setElementCount(int count) {
    count = std::clamp(count, 0, maxElements);
    effectsChanged_ = true;
    const int before = elementCount_;
    elementCount_ = count;
    for (int number = count + 1; number <= before; ++number) {
        recall(number, elementIndex::mute, 1.0f);
        recall(number, elementIndex::bank, 1.0f);
        recall(number, elementIndex::item, 1.0f);
        setText(number, {});
    }
    // The patch's switches and macros have passed over elements beyond the count.
    for (int number = before + 1; number <= count; ++number) element(number).applyAll();
}

void Patch::initElement(int number, ElementType type) {
    std::array<float, elementParameters> common;
    for (int i = 0; i < elementParameters; ++i)
        common[static_cast<std::size_t>(i)] = constructionValue(i);
    initElement(number, type, common);
}

void Patch::initElement(int number, ElementType type,
                        std::span<const float, elementParameters> common) {
    const bool slot = number >= firstSendSlot && number <= elementTotal;
    if (slot ? type != ElementType::effect : number < 1 || number > elementCount_) return;
    if (type < ElementType::effect || type > ElementType::analog) return;
    constexpr int typedValues = 20;  // of the block, at its start; no type has other initial ones
    const auto init = [&](int index, float value) { recall(number, index, value); };
    init(elementIndex::mute, 0.0f);
    init(elementIndex::item, 1.0f);
    init(elementIndex::type, static_cast<float>(type) * 0.06666667f);
    for (int i = elementIndex::receive; i < elementParameters; ++i) {
        const bool isTypes =
            i >= elementIndex::firstBlock && i < elementIndex::firstBlock + typedValues;
        init(i, isTypes ? initialValue(type, i) : common[static_cast<std::size_t>(i)]);
    }
    if (type == ElementType::fm) init(elementIndex::filterVelocityToAttack, 0.5f);
    if (type == ElementType::analog) init(elementIndex::randomStart, 1.0f);
    setText(number, elementTypeName(type));
}

void Patch::makeSawtooth() {
    setText(0, "Sawtooth");
    setElementCount(1);
    initElement(1, ElementType::analog);
    recall(0, global::level, 0.5f);
    recall(0, global::type, 0.3333333f);
}

void Patch::copyFrom(const Patch& other) {
    setElementCount(other.elementCount());
    for (int i = 0; i < globalParameters; ++i) {
        // The scenes come as they are, with the phrase that "Prog" once loaded.
        if (i == global::phraseProgram || i == global::currentScene)
            values_[static_cast<std::size_t>(i)] = other.values_[static_cast<std::size_t>(i)];
        else
            recall(0, i, other.get(0, i));
    }
    for (int number = 1; number <= elementTotal; ++number)
        for (int i = 0; i < elementParameters; ++i) recall(number, i, other.get(number, i));
    constexpr int firstText = -10;
    for (int selector = firstText; selector <= elementTotal; ++selector)
        setText(selector, other.text(selector));
    for (int controller = 0; controller < 128; ++controller)
        assignController(controller, other.storedTarget(controller));
    scenes() = other.scenes();
    phraseSlot_ = other.phraseSlot_;
    followPhrase();
    setIdWord(other.idWord());
}

// Controllers.

void Patch::resetControllers(int type) {
    const ControllerMap& defaults = defaultControllerMap(type);
    std::copy(defaults.begin(), defaults.end(), controllerMap_.begin());
}

ParameterId Patch::storedTarget(int controller) const {
    if (controller < 0 || controller > 127) return noParameter;
    return controllerMap_[static_cast<std::size_t>(controller)];
}
ParameterId Patch::controllerTarget(int controller) const {
    return isAssignable(controller) ? storedTarget(controller) : noParameter;
}

void Patch::assignController(int controller, ParameterId id) {
    if (controller >= 0 && controller <= 127)
        controllerMap_[static_cast<std::size_t>(controller)] = id;
}

void Patch::armLearn() { learnArmed_.set(1); }

bool Patch::learn(int controller) {
    const ParameterId target = lastChanged();
    if (!isAssignable(controller) || target == noParameter) return false;
    if (learnArmed_.take() == 0) return false;
    assignController(controller, target);
    return true;
}

}  // namespace stratovane
