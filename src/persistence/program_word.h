// What becomes of a waiting program change when a part gets another patch.
#pragma once

#include "engine/multi_setup.h"

namespace stratovane {

/// After a load, done or refused, that a message asked for: the word, `asked` since that message,
/// names what the part plays, so that a program change to it is taken for a repetition. What a
/// message behind that one made of it stays. UI thread.
inline void settleProgram(PartSetup& setup, std::uint32_t asked) {
    setup.pendingProgram.replace(asked, static_cast<std::uint32_t>(setup.location.get()));
}

/// After a load by the user or the host: it came later than whatever waits. UI thread.
inline void overrideProgram(PartSetup& setup) {
    setup.pendingProgram.store(static_cast<std::uint32_t>(setup.location.get()));
}

}  // namespace stratovane
