// The UI thread's idle call: programs, requests, and what the engine leaves to be done.

#include <span>

#include "base/text_out.h"
#include "engine/engine.h"
#include "host/synth.h"
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
    loadWaitingPrograms();
    engine_->idle();
    multi_.libraryState = library_.idle();
    trace_.flush();
    return 1;
}

void Synth::handleRequests() {
    Request request;
    while (multi_.requests.pop(request)) {
        switch (request.kind) {
            case Request::Kind::loadCombi:
                loader_.load(*engine_, parts - 1, request.argument,
                             LibraryLoader::AskedBy::message);
                multi_.refresh.bump();
                break;
        }
    }
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
    TextOut status{statusText_};
    status.print("MIDI Program Change %d, Bank %d, Channel %d", programOf(location),
                 bankOf(location), part);
    PartSetup& setup = multi_.part[static_cast<std::size_t>(part)];
    const CombiUse combis = settings_.midiCombis;
    bool wanted = false;
    if (location >= firstCombi) {
        wanted = combis == CombiUse::chain || (combis == CombiUse::on && part == parts - 1);
        if (wanted) multi_.combis.current = CombiTable::none;
    } else if (location != 0) {
        wanted = settings_.midiPatches != 0 || isDefaultPatch || multi_.generalMidi;
    }
    if (wanted) loader_.load(*engine_, part, location, LibraryLoader::AskedBy::message);
    // Played or not, the word now says what the part plays, unless another change came meanwhile.
    settleProgram(setup);
}

bool Synth::busy() const {
    if (lazyInitPending_) return true;
    if (multi_.programRequests.get() != handledRequests_ || !multi_.requests.empty()) return true;
    return library_.busy() || engine_->busy();
}

}  // namespace stratovane
