// A scene: knobs, arpeggiator settings and phrase as stored in patches; a phrase file is one, too.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>

#include "content/bytes.h"
#include "content/phrase.h"

namespace stratovane {

struct Scene {
    static constexpr std::uint32_t recallsKnobs = 1, recallsArpeggiator = 2;  // of `flags`

    std::string name{};  // at most 31 characters
    std::uint32_t flags = 0;
    std::array<float, 6> knobs{};         // normalised
    std::array<float, 20> arpeggiator{};  // global values 17..36
    std::array<float, 80> steps{};        // global values 172..251
    Phrase phrase{};
    // The size the record had or is to have at least; 0: that of a fresh record.
    std::uint32_t storedBytes = 0;

    bool operator==(const Scene&) const = default;
};

/// Reads the record that begins with the first byte; its size word says where it ends. Nothing when
/// that is below the fixed part or beyond the bytes. A phrase that does not fit the record or whose
/// length is not usable is empty; its events are checked. NaN becomes 0. UI thread.
std::optional<Scene> readSceneRecord(ByteView bytes);

/// Size of what `writeSceneRecord` gives.
std::size_t sceneRecordBytes(const Scene& scene);
/// Reserved bytes are 0. Any thread but the audio thread.
Bytes writeSceneRecord(const Scene& scene);

}  // namespace stratovane
