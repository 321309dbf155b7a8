#include "voice/start_sound.h"

#include <algorithm>

#include "voice/part_state.h"
#include "voice/start_voice.h"
#include "voice/voice_modulation.h"

namespace stratovane {
namespace {

int startPoint(const PartState& part, Voice& voice) {
    constexpr int last = SampleData::startPoints - 1;
    modulateInputs(part, voice);
    const ElementControls& element = voice.controls();
    const float legato = isLegato(part, voice) ? element.sample.legatoStart : 0;
    const float place = element.start + 0.5f * voice.random.unipolar() * element.randomStart -
                        element.velocityToStart * voice.velocity + voice.inputs.shape1 + legato;
    return std::clamp(static_cast<int>(last * place), 0, last);
}

/// The loudest percussion of the part's other drawbar voices whose keys are held, by finger or
/// pedal; -1 when there are none.
float heldPercussion(const PartState& part, const Voice& voice) {
    float loudest = -1;
    for (int slot = 0; slot < part.slots.active(); ++slot) {
        const Voice& other = part.voiceAt(slot);
        if (&other == &voice || other.type != ElementType::drawbar ||
            part.slots[slot].key == VoiceSlot::released)
            continue;
        loudest = std::max(loudest, other.drawbar.percussion());
    }
    return loudest;
}

int transposed(const PartState& part, const VoiceNote& note) {
    return note.note + part.patch.controls().transpose;
}

}  // namespace

bool isLegato(const PartState& part, const Voice& voice) {
    const ElementControls& element = voice.controls();
    return element.monoMode != MonoMode::poly && part.heldFor(element).count() > 1;
}

float startSample(const PartState& part, Voice& voice, const VoiceNote& note) {
    const ElementControls& element = voice.controls();
    const ZoneChoice& choice = note.sound.zone;
    voice.sample.start(element, voice.velocity, choice, startPoint(part, voice));
    voice.basePitch = zonePitch(choice, element, transposed(part, note), part.rate);
    voice.offsets.pan += choice.zone->pan;
    return choice.zone->level;
}

void startDrawbar(const PartState& part, Voice& voice, const VoiceNote& note) {
    const ElementControls& element = voice.controls();
    const ToneWheels& wheels = *note.sound.wheels;
    const int key = drawbarKey(element, transposed(part, note));
    voice.drawbar.start(element, wheels,
                        {key, note.velocity, voice.velocity, heldPercussion(part, voice)},
                        part.rate, voice.random);
    voice.basePitch = drawbarPitch(wheels, key, part.rate);
}

}  // namespace stratovane
