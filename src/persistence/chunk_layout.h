// Where the fields of a bank chunk lie: offsets and sizes in bytes, all numbers little-endian.
// Stored; do not renumber. docs/state-chunk.md shows it as a whole.
#pragma once

#include <cstddef>
#include <cstdint>

#include "content/patch_record_layout.h"

namespace stratovane {

/// A chunk of fewer or more bytes is none of ours.
inline constexpr std::size_t smallestChunk = 1000, largestChunk = 2000000;
/// What one patch may take.
inline constexpr std::size_t largestPreset = 100000;

/// Header, offsets, patch records, master effects, global block.
namespace bankLayout {
inline constexpr std::uint16_t kindWord = 0x142;          // 'B', 1; at recordLayout::kind
inline constexpr std::uint32_t oldestVersion = 10030815;  // older banks look different
inline constexpr int partOffsets = 16;                    // of 16 patch records; 0: none
inline constexpr int masterOffset = 80, globalOffset = 84;
inline constexpr int records = 88;
}  // namespace bankLayout

/// Settings that travel with a song, behind a word that tells how many bytes follow it. Banks of
/// earlier versions end after fewer fields.
namespace globalLayout {
inline constexpr int masterVolume = 4;
inline constexpr int links = 8;  // a byte a part, 1: it also plays what the part before gets
inline constexpr int programName = 24, programNameBytes = 32;
inline constexpr int velocitySensitivity = 56, touchSensitivity = 60, memoryUse = 64;
inline constexpr int tuneSemitones = 68, tuneFraction = 72, lift = 76, generalMidi = 80;
inline constexpr int combiTable = 84, combiSlots = 128;
inline constexpr int currentCombi = 596, combiPreload = 600;
inline constexpr int combiPrevious = 604, combiNext = 608;
inline constexpr int bytes = 620;           // two zero words end it
inline constexpr std::uint32_t told = 608;  // what the first word says
// What the first word must say for a group of fields to be read.
inline constexpr std::uint64_t withName = 52, withCurves = 64, withTuning = 80, withCombis = 96,
                               beyondPreload = 600;
static_assert(combiTable + 4 * combiSlots == currentCombi);
static_assert(combiNext + 4 == 4 + static_cast<int>(told) && bytes == combiNext + 12);
}  // namespace globalLayout

}  // namespace stratovane
