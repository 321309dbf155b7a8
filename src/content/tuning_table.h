// A tuning: by how many semitones each note leaves equal temperament.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "content/bytes.h"
#include "content/content_data.h"

namespace stratovane {

struct TuningTable final : ContentData {
    static constexpr ContentKind kind = ContentKind::tunings;
    static constexpr int notes = 128;

    std::vector<float> semitones;  // one a note; a scale of up to 100 repeats. May be empty
};

/// Size of the item that a tuning text makes.
inline constexpr std::uint32_t tuningItemBytes = 4 + 4 * TuningTable::notes;

/// Reads the lines "note %d=%f" (cents from note 0) of a text; other lines are skipped. Notes that
/// have none stay at 0. Any thread.
std::unique_ptr<TuningTable> readTuningText(std::string_view text);
/// One line a note. A table that came from a text comes back from this one value for value. Any
/// thread.
std::string writeTuningText(const TuningTable& table);

/// The item in memory and in bank files: a count and that many floats. Nothing when they leave the
/// item or a value is no number. UI thread.
std::unique_ptr<TuningTable> readTuningItem(ByteView item, ContentFault& fault);
Bytes writeTuningItem(const TuningTable& table);

}  // namespace stratovane
