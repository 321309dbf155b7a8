// Names, displays, outputs, programs and capabilities.

#include <algorithm>
#include <cstring>

#include "base/text_out.h"
#include "effects/catalogue.h"
#include "engine/engine.h"
#include "host/arpeggiator_request.h"
#include "host/synth.h"
#include "patch/parameter_ids.h"
#include "platform/platform.h"

namespace stratovane {

void Synth::setParameter(std::int32_t index, float value) { parameters_.set(index, value); }

float Synth::getParameter(std::int32_t index) {
    return hidesParameters_ ? 0.0f : parameters_.get(index);
}

void Synth::setProgramName(const char* name) {
    TextOut out{programName_};
    out.text(name);
    trace_.write(TraceLevel::patch, "setProgramName(%s)",
                 static_cast<const char*>(programName_.data()));
}

void Synth::getProgramName(char* name) { std::strcpy(name, programName_.data()); }

namespace {

/// Writes a text that was made whole into a field of the host, and traces when it had to be cut.
template <std::size_t size>
void fitText(Trace& trace, const char* format, std::int32_t index, const TextOut& whole,
             char* field) {
    TextOut out{std::span{field, size}};
    out.text(whole.view());
    if (out.cut()) trace.write(TraceLevel::lifecycle, format, index, whole.view());
}

}  // namespace

void Synth::getParameterDisplay(std::int32_t index, char* text) {
    char whole[64];
    TextOut out{whole};
    parameters_.showValue(out, index);
    fitText<displaySize>(trace_, "parameter %d display too long: %s", index, out, text);
}

void Synth::getParameterName(std::int32_t index, char* text) {
    lazyInit("getParameterName");
    text[0] = '\0';
    if (hidesParameters_) return;
    char whole[64];
    TextOut out{whole};
    parameters_.showName(out, index);
    fitText<nameSize>(trace_, "parameter %d name too long: %s", index, out, text);
}

std::int32_t Synth::getProgramNameIndexed(std::int32_t, std::int32_t, char* name) {
    getProgramName(name);
    return 1;
}

bool Synth::copyProgram(std::int32_t) { return true; }

bool Synth::getOutputProperties(std::int32_t index, OutputProperties* properties) {
    if (properties == nullptr || index < 0 || index >= record_.outputCount) return false;
    const std::string& letters = outputs_.letters;
    const auto pair = static_cast<std::size_t>(index / 2);
    *properties = {};
    TextOut label{properties->label};
    const int number = index / 2 + 1;
    switch (letters[pair]) {
        case 'S':
            properties->flags = OutputProperties::active | OutputProperties::stereo;
            properties->arrangement = OutputProperties::stereoPair;
            label.print("Strato %d", number);
            break;
        case 'Q': {
            // The rear pair of a quad output carries the front's label.
            const bool rear = pair % 2 == 1 && letters[pair - 1] == 'Q';
            const int front = rear ? number - 1 : number;
            properties->flags = OutputProperties::active | OutputProperties::stereo |
                                OutputProperties::usesArrangement;
            properties->arrangement = OutputProperties::quad;
            label.print("Strato %d+%d", front, front + 1);
            break;
        }
        default:
            properties->flags = OutputProperties::active;
            properties->arrangement = OutputProperties::mono;
            label.print("Strato %d%c", number, index % 2 == 0 ? 'L' : 'R');
    }
    TextOut shortLabel{properties->shortLabel};
    shortLabel.text(label.view());
    return true;
}

std::int32_t Synth::getPlugCategory() { return 2; }  // an instrument

bool Synth::getEffectName(char* text) {
    std::strcpy(text, "Stratovane 2");
    return true;
}

bool Synth::getVendorString(char* text) {
    std::strcpy(text, "Taldrimor");
    return true;
}

bool Synth::getProductString(char* text) { return getEffectName(text); }

std::int32_t Synth::canDo(const char* text) {
    for (const char* known :
         {"receiveMrxEvents", "receiveMrxMidiEvent", "sendMrxEvents", "sendMrxMidiEvent"})
        if (std::strcmp(text, known) == 0) return 1;
    if (std::strcmp(text, "midiProgramNames") == 0) return settings_.midiPatches > 1 ? 1 : -1;
    return -1;
}

std::int32_t Synth::keysRequired() { return 0; }

std::int32_t Synth::getMidiProgramName(std::int32_t channel, MidiProgramName* program) {
    if (program == nullptr || channel < 0 || channel >= parts || settings_.midiPatches < 2)
        return 0;
    return programs_.program(*program);
}

std::int32_t Synth::getCurrentMidiProgram(std::int32_t channel, MidiProgramName* program) {
    if (program == nullptr || channel < 0 || channel >= parts) return 0;
    if (settings_.midiPatches < 4) return -1;
    return programs_.current(multi_.part[static_cast<std::size_t>(channel)].location, *program);
}

std::int32_t Synth::getMidiProgramCategory(std::int32_t channel, MidiProgramCategory* category) {
    if (category == nullptr || channel < 0 || channel >= parts || settings_.midiPatches < 2)
        return 0;
    return programs_.category(*category);
}

bool Synth::hasMidiProgramsChanged(std::int32_t channel) {
    return channel >= 0 && channel < parts && settings_.midiPatches >= 3 &&
           programs_.takeChanged(channel);
}

std::int32_t Synth::addEffect(int part, const EffectToAdd& effect) {
    lazyInit("addEffect");
    const Patch& playing = engine_->patch(part);
    const int number = playing.elementCount() + 1;
    if (number > maxElements || effectType(effect.type) == nullptr) return 0;
    auto instance = engine_->makeInstance(part);
    Patch& patch = instance->patch();
    patch.copyFrom(playing);
    patch.setElementCount(number);
    patch.initElement(number, ElementType::effect);
    patch.recall(number, elementIndex::item, storedEffectType(effect.type));
    for (int i = 0; i < effectParameters; ++i)
        patch.recall(number, elementIndex::firstEffectParameter + i,
                     effect.values[static_cast<std::size_t>(i)]);
    engine_->adopt(part, std::move(instance));
    return number;
}

std::intptr_t Synth::vendorSpecific(std::int32_t index, std::intptr_t value, void* pointer, float) {
    switch (index) {
        case fourCharacters("busy"):
            return busy() ? 1 : 0;
        case fourCharacters("voic"):
            return engine_ ? engine_->takeHighestVoices() : 0;
        case fourCharacters("mbox"):
            setMessageBoxHook(reinterpret_cast<MessageBoxHook>(pointer));
            return 0;
        case fourCharacters("fxad"):
            if (pointer == nullptr || value < 0 || value >= parts) return 0;
            return addEffect(static_cast<int>(value), *static_cast<const EffectToAdd*>(pointer));
        case arpeggiatorRequest:
            lazyInit("arpeggiatorRequest");
            return answerArpeggiatorRequest(engine_->arpeggiatorLog(), value,
                                            static_cast<ArpeggiatorTake*>(pointer));
        case fourCharacters("part"): {
            const std::int32_t before = selectedPart_;
            if (value >= 0 && value < parts) selectedPart_ = static_cast<std::int32_t>(value);
            return before + 1;
        }
        default:
            return 0;
    }
}

}  // namespace stratovane
