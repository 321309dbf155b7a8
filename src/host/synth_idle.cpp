// The UI thread's idle call: programs, requests, and what the engine leaves to be done.

#include <optional>
#include <utility>

#include "engine/engine.h"
#include "host/synth.h"
#include "patch/parameter_ids.h"
#include "persistence/program_word.h"
#include "persistence/stay.h"

namespace stratovane {

void Synth::onUserInterfaceRequest() { trace_.flush(); }

std::int32_t Synth::fxIdle() {
    if (inside_) return 1;
    const Stay stay{inside_};
    lazyInit("fxIdle");
    if (multi_.patchLoaded) {
        multi_.patchLoaded = false;
        partsChanged();
    }
    handleRequests();
    if (!heldRequest_) loadWaitingPrograms();
    engine_->idle();
    multi_.libraryState = library_.idle();
    trace_.flush();
    return 1;
}

void Synth::handleRequests() {
    // Messages may ask faster than combis load: beyond a few a call the next one waits until the
    // patches that it replaces can be deleted.
    constexpr int mostLoads = 8;
    int loads = 0;
    for (std::uint32_t n = multi_.requests.count(); n > 0; --n) {
        Request request;
        if (heldRequest_)
            request = *std::exchange(heldRequest_, std::nullopt);
        else if (!multi_.requests.pop(request))
            break;
        if (loads == mostLoads && request.loadsAllParts()) {
            heldRequest_ = request;
            break;
        }
        if (request.loadsAllParts()) ++loads;
        generalMidi_.carryOut(*engine_, request);
        if (request.kind == Request::Kind::resetGeneralMidi) finishReset();
        multi_.requests.done();
    }
}

void Synth::resetGeneralMidi() {
    lazyInit("resetGeneralMidi");
    if (multi_.generalMidi) GeneralMidi::announceReset(multi_);
    generalMidi_.reset(*engine_, GeneralMidi::AskedBy::user);
    finishReset();
}

void Synth::finishReset() {
    readSettingsAgain();
    multi_.refresh.bump();
    multi_.dirty = true;
    setProgramName("Stratovane 2");
    partsChanged();
}

void Synth::readSettingsAgain() {
    settings_.read(store_, Settings::Which::withoutContentAndOutputs, followsPlayback_ ? 2 : 1);
    parameters_.set(0, settings_.masterVolume);
    engine_->setLift(settings_.lift);
    parameters_.refreshMasterGain();
    library_.setPreloadMode(settings_.combiPreload);
    for (int part = 0; part < parts; ++part)
        engine_->patch(part).recall(0, global::eco, settings_.memoryUse);
}

void Synth::loadWaitingPrograms() {
    // What arrives while this runs is seen at the next call: the count is taken before the words.
    const std::uint32_t requests = multi_.programRequests.get();
    if (requests == handledRequests_) return;
    bool defaultRound = false;
    if (multi_.defaultPatchWanted) {
        constexpr std::uint32_t defaultPatch = programWaits | 84 << 8;
        trace_.write(TraceLevel::patch, "Loading default patch:");
        multi_.defaultPatchWanted = false;
        // A program change that waits already wins.
        SharedBits& word = multi_.part[0].pendingProgram;
        std::uint32_t waiting = word.get();
        while ((waiting & programWaits) == 0 && !defaultRound)
            defaultRound = word.replace(waiting, defaultPatch);
    }
    auto loadWaiting = [&](bool combis) {
        for (int part = 0; part < parts; ++part) {
            SharedBits& word = multi_.part[static_cast<std::size_t>(part)].pendingProgram;
            const bool isCombi = static_cast<std::int32_t>(word.get() & 0xFFFF) >= firstCombi;
            if ((word.get() & programWaits) == 0 || isCombi != combis) continue;
            const std::uint32_t taken = word.clear(programWaits);
            if ((taken & programWaits) == 0) continue;
            loadProgram(part, static_cast<std::int32_t>(taken & 0xFFFF), defaultRound && part == 0);
        }
    };
    loadWaiting(true);
    loadWaiting(false);
    handledRequests_ = requests;
}

void Synth::loadProgram(int part, std::int32_t location, bool isDefaultPatch) {
    status_.tellProgramChange(location, part);
    const CombiUse combis = settings_.midiCombis;
    bool wanted = false;
    const bool isCombi = location >= firstCombi;
    if (isCombi) {
        wanted = combis == CombiUse::chain || (combis == CombiUse::on && part == parts - 1);
        if (wanted) multi_.combis.current = CombiTable::none;
    } else if (location != 0) {
        wanted = settings_.midiPatches != 0 || isDefaultPatch || multi_.generalMidi;
    }
    if (wanted) loader_.load(*engine_, part, location, LibraryLoader::AskedBy::message);
    // Not wanted, it is as if it had not come.
    if (!wanted)
        settleProgram(multi_.part[static_cast<std::size_t>(part)],
                      static_cast<std::uint32_t>(location));
}

bool Synth::busy() const {
    if (lazyInitPending_) return true;
    if (multi_.programRequests.get() != handledRequests_ || multi_.requests.waits()) return true;
    return library_.busy() || engine_->busy();
}

}  // namespace stratovane
