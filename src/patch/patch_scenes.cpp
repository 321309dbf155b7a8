// What a scene of the patch sets off: values that come back, and the arpeggiator's phrase.
#include <utility>

#include "base/units.h"
#include "content/content_library.h"
#include "content/phrase.h"
#include "patch/parameter_ids.h"
#include "patch/patch.h"
#include "patch/scene_table.h"

namespace stratovane {

namespace {

constexpr int ownPhrase = 0;           // the slot of the patch's phrase, which recalls nothing
constexpr float sceneChoices = 64.9f;  // as "Current Scene" is decoded; the last one names no slot
constexpr int lastRecalled = 33;

/// What a scene leaves as it is though it lies among the arpeggiator's values.
constexpr bool isKept(int index) {
    return index == global::latch || index == global::phraseBank || index == global::phraseProgram;
}

/// Without events a phrase counts as none.
const Phrase* playable(const Scene* scene) {
    return scene == nullptr || scene->phrase.events.empty() ? nullptr : &scene->phrase;
}

}  // namespace

void Patch::recallValues(const Scene& scene, int slot, When when) {
    if (slot == ownPhrase) return;
    if ((scene.flags & Scene::recallsKnobs) != 0)
        for (std::size_t i = 0; i < scene.knobs.size(); ++i)
            write(0, global::knobs[i], scene.knobs[i], when);
    if ((scene.flags & Scene::recallsArpeggiator) == 0) return;
    for (int index = global::firstArpeggiator; index <= lastRecalled; ++index)
        if (!isKept(index))
            write(0, index,
                  scene.arpeggiator[static_cast<std::size_t>(index - global::firstArpeggiator)],
                  when);
    for (std::size_t i = 0; i < scene.steps.size(); ++i)
        write(0, global::firstStep + static_cast<int>(i), scene.steps[i], when);
}

/// The arpeggiator keeps its phrase where a scene has none; the patch's own slot always counts.
void Patch::choosePhrase(const Scene& scene, int slot) {
    if (slot == ownPhrase || playable(&scene) != nullptr) phraseSlot_ = slot;
}

void Patch::followPhrase() { phrase_.publish(playable(scenes_->at(phraseSlot_))); }

void Patch::askForPhrase() {
    if (!live_) return followPhrase();
    phraseStale_.set(1);
    due_.set(1);
}

void Patch::enterStoredScene() {
    const int slot = choice(get(0, global::currentScene), sceneChoices);
    const Scene* scene = scenes_->at(slot);
    if (scene == nullptr) return;
    scenes_->select(slot);
    recallValues(*scene, slot, When::owner);
    choosePhrase(*scene, slot);
    followPhrase();
}

bool Patch::selectScene(int slot, Recall recall) {
    const Scene* scene = scenes_->at(slot);
    if (scene == nullptr) return false;
    scenes_->select(slot);
    // Stored without being applied: what it sets off happens here.
    Shared<float>& stored = values_[global::currentScene];
    if (choice(stored, sceneChoices) != slot)
        stored = static_cast<float>(slot) / static_cast<float>(sceneLayout::slots);
    if (recall == Recall::values) recallValues(*scene, slot, When::marked);
    choosePhrase(*scene, slot);
    askForPhrase();
    changes_.bump();
    return true;
}

void Patch::putScene(int slot, std::shared_ptr<const Scene> record) {
    if (slot < 0 || slot >= sceneLayout::slots) return;
    const Scene* fresh = record.get();
    SceneTable::Record former = scenes_->put(slot, std::move(record));
    // The owner may be about to choose the former record's phrase: it looks again at its next
    // render, and until the render in progress is over the record is kept.
    if (former && phrase_.read() == &former->phrase) phrase_.publish(playable(fresh));
    askForPhrase();
    shared_.retired.add(std::move(former), shared_.epoch);
}

void Patch::takePhrase(std::shared_ptr<const Scene> record) {
    putScene(ownPhrase, std::move(record));
    selectScene(ownPhrase);
}

/// What "Bank" and "Prog" name in the library; bank 0, item 0 and what is not there change nothing.
void Patch::loadPhrase() {
    constexpr int controllerBank = 10;  // its phrases let the keys through
    const int bank = choice(get(0, global::phraseBank), 128.9f);
    const int item = choice(get(0, global::phraseProgram), 128.9f);
    if (bank + item == 0 || place_.library == nullptr) return;
    const auto bytes = place_.library->itemData(ContentKind::phrases, bank, item);
    auto scene = bytes ? readSceneRecord(*bytes) : std::nullopt;
    if (!scene) return;
    if (bank == controllerBank && !scene->phrase.events.empty()) scene->phrase.passThrough = true;
    takePhrase(std::make_shared<const Scene>(std::move(*scene)));
}

}  // namespace stratovane
