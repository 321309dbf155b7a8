#include "voice/element_notes.h"

#include <algorithm>

#include "voice/part_state.h"
#include "voice/voice_sound.h"

namespace stratovane {
namespace {

std::size_t zoneIndex(const PartState& part, int note) {
    return static_cast<std::size_t>(std::clamp(note + part.patch.controls().transpose, 0, 127));
}

bool triggers(TriggerCondition condition, const TriggerState& state, std::uint32_t elementNote) {
    switch (condition) {
        case TriggerCondition::modWheelUp:
            return state.modWheelUp;
        case TriggerCondition::modWheelDown:
            return !state.modWheelUp;
        case TriggerCondition::sustainUp:
            return !state.sustainDown;
        case TriggerCondition::sustainDown:
            return state.sustainDown;
        case TriggerCondition::oddPatchNote:
            return state.oddNote;
        case TriggerCondition::evenPatchNote:
            return !state.oddNote;
        case TriggerCondition::oddElementNote:
            return elementNote % 2 == 1;
        case TriggerCondition::evenElementNote:
            return elementNote % 2 == 0;
        case TriggerCondition::none:
        case TriggerCondition::noArpeggiator:
            break;
    }
    return true;
}

}  // namespace

TriggerState triggerState(const PartState& part) {
    return {part.notesPlayed % 2 == 1, part.controllers.wheelPosition > 0.5f,
            part.controllers.sustainDown};
}

ZoneGain partZoneGain(const PartState& part, int note, int velocity) {
    const PatchControls& patch = part.patch.controls();
    return ZoneGain{patch.keyGain[static_cast<std::size_t>(note)]} *
           ZoneGain{patch.velocityGain[static_cast<std::size_t>(velocity)]};
}

ZoneGain acceptNote(PartState& part, int element, int note, int velocity,
                    const TriggerState& trigger, bool monoSounds, NoteSound& sound) {
    constexpr ZoneGain unity = 10000;
    Element& owner = part.patch.element(element);
    const ElementControls& controls = owner.controls();
    const ZoneGain keyGain{controls.keyGain[zoneIndex(part, note)]};
    if (controls.muted || owner.type() == ElementType::effect || keyGain == 0) return 0;
    ++owner.noteCounter;
    if (!triggers(controls.trigger, trigger, owner.noteCounter) || !canSound(owner) ||
        !chooseSound(part, owner, note, velocity, sound))
        return 0;
    return keyGain * (monoSounds
                          ? unity
                          : ZoneGain{controls.velocityGain[static_cast<std::size_t>(velocity)]});
}

int priorityNote(const PartState& part, int element) {
    const ElementControls& controls = part.patch.element(element).controls();
    const auto inZones = [&](int note) {
        return part.keyIsInZone(note) && controls.keyGain[zoneIndex(part, note)] != 0;
    };
    const auto first = [&](auto key, auto end) -> int {
        key = std::find_if(key, end, inZones);
        return key == end ? -1 : *key;
    };
    const HeldNotes& held = part.heldFor(controls);
    const auto sorted = held.sorted(), played = held.played();
    switch (controls.monoMode) {
        case MonoMode::lowest:
            return first(sorted.begin(), sorted.end());
        case MonoMode::highest:
            return first(sorted.rbegin(), sorted.rend());
        case MonoMode::first:
            return first(played.begin(), played.end());
        case MonoMode::last:
            return first(played.rbegin(), played.rend());
        case MonoMode::poly:
            break;
    }
    return -1;
}

}  // namespace stratovane
