// Where the fields of a patch record lie: offsets and sizes in bytes, all numbers little-endian.
#pragma once

#include <cstdint>

namespace stratovane {

/// Header and texts, 256 global values, elements, send slots, end mark, and (behind end mark 2)
/// controller map, highest scene, scenes and a final zero word.
namespace recordLayout {
inline constexpr std::uint32_t tag = 0x52527651, reversedTag = 0x51765252;  // "QvRR"
inline constexpr std::uint32_t currentVersion = 200050508;
inline constexpr std::uint32_t firstUnknownVersion = 220000000;
inline constexpr std::uint32_t patchKind = 0x150;  // 'P', 1
inline constexpr std::uint8_t bankKind = 'B';

inline constexpr int version = 4, kind = 12;
inline constexpr int headerBytes = 16;  // what old banks leave out
inline constexpr int idWord = 16, elementCount = 20, sendSources = 24;
inline constexpr int name = 32, nameBytes = 32;
inline constexpr int codes = 64, codesBytes = 64;
inline constexpr int text1 = 128, text1Bytes = 128;
inline constexpr int text2 = 256, text2Bytes = 128;
inline constexpr int text3 = 384, text3Bytes = 64;
inline constexpr int knobNames = 448, knobNameBytes = 16;
inline constexpr int globals = 544;
inline constexpr int elements = 1568;

inline constexpr int values = 256;  // floats of the patch and of each element
inline constexpr int valueBytes = 4 * values;
inline constexpr int elementNameBytes = 32;
inline constexpr int elementBytes = elementNameBytes + valueBytes;
static_assert(globals + valueBytes == elements);

inline constexpr std::uint32_t noTailMark = 0, tailMark = 2;  // end marks
inline constexpr int controllers = 128;
inline constexpr int controllerMapBytes = 2 * controllers;

inline constexpr int wrapperBytes = 60;  // of the program file that may stand before a record
}  // namespace recordLayout

/// The scenes of a patch; what one holds is told with its reader.
namespace sceneLayout {
inline constexpr int slots = 64;
inline constexpr int smallestBytes = 504;  // without events
}  // namespace sceneLayout

}  // namespace stratovane
