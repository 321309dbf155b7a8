// Where a bank file keeps what. Little-endian, 32-bit; offsets of names and tables count from the
// data block, those of items and samples from the start of the file.
#pragma once

#include <cstddef>
#include <cstdint>

namespace stratovane::bankFileLayout {

inline constexpr std::size_t headerBytes = 88;
inline constexpr char magic[2][4] = {"Mil", "Qor"};  // each of the bytes 0..2 comes from either
inline constexpr std::size_t markAt = 41;            // 'W'
inline constexpr std::size_t codeAt = 48, formatAt = 50, sharedTableAt = 80, blockBytesAt = 84;
inline constexpr std::int8_t newestFormat = 20;
inline constexpr int sharedSlots = 16;

// In the data block
inline constexpr std::size_t itemCountAt = 0, namesAt = 4, samplesAt = 8, sampleCountAt = 12,
                             itemsAt = 16;
// Item: name, second name, then for normal and ECO: two run-time words, offset, size; two words.
inline constexpr std::size_t itemBytes = 48, itemNormalAt = 16, itemEcoAt = 32;
// Sample: two run-time words, offset, size, four words.
inline constexpr std::size_t sampleBytes = 32, sampleRangeAt = 8;
// The names area: strings of a length byte, the characters and a NUL. It begins with the empty
// string (two bytes); the characters of the bank's own second name begin at byte 3.
inline constexpr std::size_t secondNameAt = 3;

}  // namespace stratovane::bankFileLayout
