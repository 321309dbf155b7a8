// A sample set: which sample plays for a note and a velocity, and how.
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <vector>

#include "content/content_data.h"
#include "content/sample_data.h"

namespace stratovane {

struct Zone {
    std::int32_t key = 0;  // (highest note × 256 + highest velocity) × 65536 plus lower bits
    std::int32_t sampleNumber = 0;  // in the bank, 0 none
    std::uint8_t rootKey = 60;
    bool rootFromKeyRange = false;  // the root follows the element's key range
    std::int32_t frames = 0;        // as stored; see playedFrames
    std::int32_t loopFrames = 0;    // as stored, 0 none; see playedLoop
    float tuneSemitones = 0;        // added to the pitch
    float loopTuneSemitones = 0;    // added once, at the first wrap
    float pan = 0;                  // added
    float level = 1;                // factor

    // Where the sample is; null when the bank has no such sample.
    const SampleSlot* sample = nullptr;
    // Adaptive delta: each channel's decoder at the loop's first frame. Written by the UI thread
    // before the sample is published; to be read after the sample was found.
    std::array<DeltaState, 2> loopStart{};

    const SampleData* sampleData() const { return sample != nullptr ? sample->read() : nullptr; }
    /// Frames that are played, 0..the sample's own.
    std::int32_t playedFrames(const SampleData& data) const;
    /// Of these, the last ones that are repeated; 0 none.
    std::int32_t playedLoop(const SampleData& data) const;

    static constexpr std::int32_t last = 0x7F7F0000;  // a key from here on ends the list
};

/// Never empty, and its last zone's key is `Zone::last` or more.
struct SampleSet final : ContentData {
    static constexpr ContentKind kind = ContentKind::samples;

    std::vector<Zone> zones;

    /// The first zone of the lowest group of notes that covers the note whose velocity limit covers
    /// the velocity, searched from a zone on (the first one for null). Notes and velocities 0..127.
    /// Always finds a zone; it may have no sample. Any thread.
    const Zone* find(int note, int velocity, const Zone* from = nullptr) const;
};

/// Reads the zones of an item, or nothing when their list does not end inside it. The zones'
/// samples are found by the bank. UI thread.
std::unique_ptr<SampleSet> readSampleSet(ByteView item, ContentFault& fault);
/// Zones as stored; they must be sorted by key, the last one ending the list. Any thread.
Bytes writeSampleSet(std::span<const Zone> zones);

}  // namespace stratovane
