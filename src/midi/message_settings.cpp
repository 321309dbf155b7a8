#include "midi/message_settings.h"

#include "automation/host_parameters.h"
#include "base/trace.h"
#include "engine/engine.h"
#include "engine/multi_setup.h"

namespace stratovane {

void MessageSettings::apply(Engine& engine, const Request& setting) {
    const std::int32_t argument = setting.argument;
    switch (setting.kind) {
        case Request::Kind::generalMidi:
            multi_.generalMidi = argument != 0;
            return;
        case Request::Kind::hostValue:
            return parameters_.set(argument, setting.value);
        case Request::Kind::patchValue: {
            const int part = argument >> 16;
            engine.patch(part).store(argument >> 8 & 255, argument & 255, setting.value);
            multi_.part[static_cast<std::size_t>(part)].changes.bump();
            return;
        }
        case Request::Kind::tuneSemitones:
            multi_.tune.semitones = argument;
            return applyMasterTune(engine, shared_, multi_.tune);
        case Request::Kind::tuneFraction:
            multi_.tune.fraction = setting.value;
            return applyMasterTune(engine, shared_, multi_.tune);
        default:
            return;
    }
}

void MessageSettings::set(Engine& engine, const Request& setting) {
    // Asked first: what is done by then cannot undo the setting any more.
    const bool repeats = multi_.requests.waits();
    apply(engine, setting);
    if (repeats) ask(setting);
}

bool MessageSettings::ask(const Request& request) {
    if (multi_.requests.push(request)) return true;
    trace_.later(TraceLevel::warning, "request dropped: kind %d, %X",
                 static_cast<std::int32_t>(request.kind), request.argument);
    return false;
}

}  // namespace stratovane
