#include "voice/voice_allocation.h"

#include <algorithm>
#include <limits>

#include "voice/part_state.h"
#include "voice/start_voice.h"

namespace stratovane {
namespace {

constexpr float quietLevel = 0.03f;  // voices below go before any louder one
constexpr int fadingSlots = 6;       // slots beyond the limit in which taken voices fade

/// What would be lost with a voice; lower goes first.
struct Claim {
    int priority = 0;
    bool maybeQuiet = false;
};

Claim claimOf(const PartState& part, int slot) {
    const Voice& voice = part.voiceAt(slot);
    const VoiceSlot& entry = part.slots[slot];
    const int base = voice.controls().priority;
    if (voice.amp.state == VoiceState::fading) return {base + 3, false};
    if (voice.amp.state == VoiceState::sounding && entry.key != VoiceSlot::released)
        return {base + (entry.keyDown() ? 2 : 1), false};
    return {base, true};
}

/// The quietest and the least claimed of a set of slots.
struct Candidates {
    int count = 0;
    int quietest = -1;
    float threshold = quietLevel;
    int lowestPriority = std::numeric_limits<int>::max();

    void consider(const PartState& part, int slot) {
        const Claim claim = claimOf(part, slot);
        const float level = part.voiceAt(slot).amp.level;
        ++count;
        lowestPriority = std::min(lowestPriority, claim.priority);
        if (!claim.maybeQuiet || level >= threshold) return;
        threshold = level;
        quietest = slot;
    }
};

/// The oldest voice of the lowest priority; voices of the note under way are not old.
int oldest(const PartState& part, int priority, int element) {
    int found = 0;
    std::int32_t stamp = part.eventCounter;
    for (int slot = 0; slot < part.slots.active(); ++slot) {
        if (element != 0 && part.slots[slot].element != element) continue;
        const std::int32_t started = part.voiceAt(slot).startStamp;
        if (claimOf(part, slot).priority != priority || started >= stamp) continue;
        stamp = started;
        found = slot;
    }
    return found;
}

}  // namespace

int allocateVoice(PartState& part, int element) {
    SlotTable& slots = part.slots;
    if (slots.active() == 0) return slots.insert(element);
    Candidates all, own;
    for (int slot = 0; slot < slots.active(); ++slot) {
        all.consider(part, slot);
        if (slots[slot].element == element) own.consider(part, slot);
    }
    const int limit = part.patch.controls().voiceLimit;
    const bool atOwnLimit = own.count >= part.patch.element(element).controls().maxVoices;
    if (!atOwnLimit && all.quietest < 0 && slots.active() < limit) return slots.insert(element);

    const Candidates& candidates = atOwnLimit ? own : all;
    const int chosen = candidates.quietest >= 0
                           ? candidates.quietest
                           : oldest(part, candidates.lowestPriority, atOwnLimit ? element : 0);
    if (slots.active() < limit + fadingSlots && slots.active() < voicesPerPart) {
        releaseSlot(part, chosen);
        return slots.insert(element);
    }
    return slots.reinsert(chosen, element);
}

void releaseSlot(PartState& part, int slot) {
    Voice& voice = part.voiceAt(slot);
    part.slots[slot].key = VoiceSlot::released;
    voice.amp.setStage(4, envelopeContext(part, voice, voice.controls().ampEnvelope));
    voice.startStamp = part.eventCounter++;
    if (!voice.ticked) voice.dueFrame = part.clock.frame();
}

}  // namespace stratovane
