#include "mrx/host_plugin_base.h"

#include <algorithm>
#include <limits>

namespace stratovane {

namespace {

constexpr std::int32_t identification = fourCharacters("ZqRk");
constexpr std::int32_t interfaceVersionNumber = 2300;

/// Nothing may be thrown into a host: what fails for lack of memory answers 0.
template <class Answer, class Call>
Answer guarded(Answer otherwise, Call call) noexcept {
    try {
        return call();
    } catch (...) {
        return otherwise;
    }
}

HostPluginBase* objectOf(EffectRecord* record) {
    return record != nullptr ? static_cast<HostPluginBase*>(record->object) : nullptr;
}

constexpr bool needsPointer(Opcode opcode) {
    switch (opcode) {
        case Opcode::setProgramName:
        case Opcode::getProgramName:
        case Opcode::getParameterLabel:
        case Opcode::getParameterDisplay:
        case Opcode::getParameterName:
        case Opcode::getChunk:
        case Opcode::setChunk:
        case Opcode::processEvents:
        case Opcode::programNameIndexed:
        case Opcode::getOutputProperties:
        case Opcode::effectName:
        case Opcode::vendorString:
        case Opcode::productString:
        case Opcode::canDo:
        case Opcode::getMidiProgramName:
        case Opcode::getCurrentMidiProgram:
        case Opcode::getMidiProgramCategory:
            return true;
        default:
            return false;
    }
}

constexpr bool fitsCount(std::intptr_t value, std::int32_t least) {
    return value >= least && value <= std::numeric_limits<std::int32_t>::max();
}

// What is not a number fails both comparisons.
constexpr bool isSampleRate(float hertz) { return hertz >= 2000.0f && hertz <= 768000.0f; }

void clear(char* text) { text[0] = '\0'; }

}  // namespace

HostPluginBase::HostPluginBase(HostCallback host, std::int32_t programs, std::int32_t parameters)
    : host_{host} {
    record_.request = requestEntry;
    record_.process = processEntry;
    record_.setParameter = setParameterEntry;
    record_.getParameter = getParameterEntry;
    record_.processReplacing = processReplacingEntry;
    record_.programCount = programs;
    record_.parameterCount = parameters;
    record_.object = this;
}

std::intptr_t HostPluginBase::requestEntry(EffectRecord* record, std::int32_t opcode,
                                           std::int32_t index, std::intptr_t value, void* pointer,
                                           float number) {
    HostPluginBase* object = objectOf(record);
    if (object == nullptr) return 0;
    return guarded<std::intptr_t>(0, [&] {
        return object->dispatch(static_cast<Opcode>(opcode), index, value, pointer, number);
    });
}

void HostPluginBase::processEntry(EffectRecord* record, float** inputs, float** outputs,
                                  std::int32_t frames) {
    if (HostPluginBase* object = objectOf(record))
        guarded(0, [&] { return object->process(inputs, outputs, frames), 0; });
}

void HostPluginBase::processReplacingEntry(EffectRecord* record, float** inputs, float** outputs,
                                           std::int32_t frames) {
    if (HostPluginBase* object = objectOf(record))
        guarded(0, [&] { return object->processReplacing(inputs, outputs, frames), 0; });
}

void HostPluginBase::setParameterEntry(EffectRecord* record, std::int32_t index, float value) {
    if (HostPluginBase* object = objectOf(record))
        guarded(0, [&] { return object->setParameter(index, value), 0; });
}

float HostPluginBase::getParameterEntry(EffectRecord* record, std::int32_t index) {
    HostPluginBase* object = objectOf(record);
    return object == nullptr ? 0.0f : guarded(0.0f, [&] { return object->getParameter(index); });
}

std::intptr_t HostPluginBase::dispatch(Opcode opcode, std::int32_t index, std::intptr_t value,
                                       void* pointer, float number) {
    if (opcode != Opcode::processEvents) onUserInterfaceRequest();
    if (pointer == nullptr && needsPointer(opcode)) return 0;
    const auto text = static_cast<char*>(pointer);
    switch (opcode) {
        case Opcode::open:
            return open(), 0;
        case Opcode::close:
            close();
            delete this;
            return 0;
        case Opcode::setProgram:
            if (value >= 0 && value < 1) setProgram(static_cast<std::int32_t>(value));
            return 0;
        case Opcode::getProgram:
            return program_;
        case Opcode::setProgramName:
            return setProgramName(text), 0;
        case Opcode::getProgramName:
            return getProgramName(text), 0;
        case Opcode::getParameterLabel:
            return getParameterLabel(index, text), 0;
        case Opcode::getParameterDisplay:
            return getParameterDisplay(index, text), 0;
        case Opcode::getParameterName:
            return getParameterName(index, text), 0;
        case Opcode::setSampleRate:
            if (isSampleRate(number)) setSampleRate(number);
            return 0;
        case Opcode::setBlockSize:
            if (fitsCount(value, 1)) setBlockSize(static_cast<std::int32_t>(value));
            return 0;
        case Opcode::mainsChanged:
            return value == 0 ? suspend() : resume(), 0;
        case Opcode::editorRectangle:
        case Opcode::editorOpen:
        case Opcode::editorClose:
        case Opcode::editorIdle:
        case Opcode::editorKeyDown:
        case Opcode::editorKeyUp:
        case Opcode::editorKnobMode:
            return editorRequest(opcode, index, value, pointer, number);
        case Opcode::identify:
            return identification;
        case Opcode::getChunk:
            return getChunk(static_cast<void**>(pointer), index != 0);
        case Opcode::setChunk:
            if (!fitsCount(value, 0)) return 0;
            return setChunk(pointer, static_cast<std::int32_t>(value), index != 0);
        case Opcode::processEvents:
            return processEvents(static_cast<const EventList*>(pointer));
        case Opcode::canBeAutomated:
            return canBeAutomated(index);
        case Opcode::categoryCount:
            return 1;
        case Opcode::programNameIndexed:
            return getProgramNameIndexed(static_cast<std::int32_t>(value), index, text);
        case Opcode::copyProgram:
            return copyProgram(index);
        case Opcode::getOutputProperties:
            return getOutputProperties(index, static_cast<OutputProperties*>(pointer));
        case Opcode::plugCategory:
            return getPlugCategory();
        case Opcode::effectName:
            return getEffectName(text);
        case Opcode::vendorString:
            return getVendorString(text);
        case Opcode::productString:
            return getProductString(text);
        case Opcode::vendorVersion:
            return getVendorVersion();
        case Opcode::vendorSpecific:
            return vendorSpecific(index, value, pointer, number);
        case Opcode::canDo:
            return canDo(text);
        case Opcode::idle:
            return fxIdle();
        case Opcode::keysRequired:
            return keysRequired();
        case Opcode::interfaceVersion:
            return interfaceVersionNumber;
        case Opcode::getMidiProgramName:
            return getMidiProgramName(index, static_cast<MidiProgramName*>(pointer));
        case Opcode::getCurrentMidiProgram:
            return getCurrentMidiProgram(index, static_cast<MidiProgramName*>(pointer));
        case Opcode::getMidiProgramCategory:
            return getMidiProgramCategory(index, static_cast<MidiProgramCategory*>(pointer));
        case Opcode::hasMidiProgramsChanged:
            return hasMidiProgramsChanged(index);
        case Opcode::getMeterLevel:
            return 0;
    }
    return 0;  // a request we do not know
}

std::intptr_t HostPluginBase::callHost(HostRequest request, std::int32_t index, std::intptr_t value,
                                       void* pointer, float number) const {
    if (host_ == nullptr) return 0;
    // The host knows us by the address of the record; asking it changes nothing in there.
    return host_(const_cast<EffectRecord*>(&record_), static_cast<std::int32_t>(request), index,
                 value, pointer, number);
}

void HostPluginBase::setParameterAutomated(std::int32_t index, float value) {
    setParameter(index, value);
    callHost(HostRequest::automate, index, 0, nullptr, value);
}

void HostPluginBase::processReplacing(float**, float** outputs, std::int32_t frames) {
    if (outputs == nullptr || frames <= 0) return;
    for (std::int32_t i = 0; i < record_.outputCount; ++i)
        if (outputs[i] != nullptr) std::fill_n(outputs[i], frames, 0.0f);
}

void HostPluginBase::setParameter(std::int32_t, float) {}
float HostPluginBase::getParameter(std::int32_t) { return 0.0f; }
void HostPluginBase::process(float**, float**, std::int32_t) {}
void HostPluginBase::open() {}
void HostPluginBase::close() {}
void HostPluginBase::setProgram(std::int32_t program) { program_ = program; }
void HostPluginBase::setProgramName(const char*) {}
void HostPluginBase::getProgramName(char* name) { clear(name); }
void HostPluginBase::getParameterLabel(std::int32_t, char* label) { clear(label); }
void HostPluginBase::getParameterDisplay(std::int32_t, char* text) { clear(text); }
void HostPluginBase::getParameterName(std::int32_t, char* text) { clear(text); }
void HostPluginBase::setSampleRate(float hertz) { sampleRate_ = hertz; }
void HostPluginBase::setBlockSize(std::int32_t frames) { blockSize_ = frames; }
void HostPluginBase::suspend() {}
void HostPluginBase::resume() {}
std::intptr_t HostPluginBase::editorRequest(Opcode, std::int32_t, std::intptr_t, void*, float) {
    return 0;
}
std::int32_t HostPluginBase::getChunk(void**, bool) { return 0; }
std::int32_t HostPluginBase::setChunk(const void*, std::int32_t, bool) { return 0; }
std::int32_t HostPluginBase::processEvents(const EventList*) { return 0; }
bool HostPluginBase::canBeAutomated(std::int32_t) { return true; }
std::int32_t HostPluginBase::getProgramNameIndexed(std::int32_t, std::int32_t, char*) { return 0; }
bool HostPluginBase::copyProgram(std::int32_t) { return false; }
bool HostPluginBase::getOutputProperties(std::int32_t, OutputProperties*) { return false; }
std::int32_t HostPluginBase::getPlugCategory() { return 0; }
bool HostPluginBase::getEffectName(char*) { return false; }
bool HostPluginBase::getVendorString(char*) { return false; }
bool HostPluginBase::getProductString(char*) { return false; }
std::int32_t HostPluginBase::getVendorVersion() { return 0; }
std::intptr_t HostPluginBase::vendorSpecific(std::int32_t, std::intptr_t, void*, float) {
    return 0;
}
std::int32_t HostPluginBase::canDo(const char*) { return 0; }
std::int32_t HostPluginBase::fxIdle() { return 0; }
std::int32_t HostPluginBase::keysRequired() { return 0; }
std::int32_t HostPluginBase::getMidiProgramName(std::int32_t, MidiProgramName*) { return 0; }
std::int32_t HostPluginBase::getCurrentMidiProgram(std::int32_t, MidiProgramName*) { return 0; }
std::int32_t HostPluginBase::getMidiProgramCategory(std::int32_t, MidiProgramCategory*) {
    return 0;
}
bool HostPluginBase::hasMidiProgramsChanged(std::int32_t) { return false; }

}  // namespace stratovane
