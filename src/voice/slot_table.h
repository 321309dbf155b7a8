// Which voices of a part are in use, in the order they are mixed.
#pragma once

#include <array>
#include <cstdint>

#include "voice/midi_bytes.h"

namespace stratovane {

inline constexpr int voicesPerPart = 64;

/// A voice in use.
struct VoiceSlot {
    static constexpr std::int16_t released = -1;  // key is up and nothing holds the voice
    static constexpr std::int16_t held = 255;     // key is up, a pedal holds the voice

    std::uint8_t voice = 0;    // index into the pool
    std::uint8_t element = 0;  // number of the element it plays, 1..64
    std::uint8_t note = 0;     // as played, before transposition
    EventSource source = EventSource::host;
    std::int16_t key = released;  // the key while it is down, else `held` or `released`
    std::int32_t muteCondition = 0;

    bool keyDown() const { return key != released && key != held; }
};

/// Slots 0 .. active() - 1 are in use, sorted by element, newer behind older ones; the voice
/// indices behind them are free. The 64 indices are always a permutation. Audio thread.
class SlotTable {
  public:
    SlotTable();
    int active() const { return active_; }
    VoiceSlot& operator[](int slot) { return slots_[static_cast<std::size_t>(slot)]; }
    const VoiceSlot& operator[](int slot) const { return slots_[static_cast<std::size_t>(slot)]; }

    /// Puts a free voice behind the last slot of this or a lower element and returns its slot.
    /// There must be one (active() below 64).
    int insert(int element);
    /// Takes a slot out and puts its voice in again for `element`; returns the new slot.
    int reinsert(int slot, int element);
    void free(int slot);
    void freeAll() { active_ = 0; }
    /// The slot of a voice in use, -1 when it is free.
    int slotOf(int voice) const;

  private:
    void removeAt(int slot);

    std::array<VoiceSlot, voicesPerPart> slots_;
    int active_ = 0;
};

}  // namespace stratovane
