// The host standard's program files: headers of preset and bank files, and files of one element.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "content/bytes.h"

namespace stratovane {

inline constexpr std::size_t presetHeaderBytes = 60, bankHeaderBytes = 160;

/// A preset or bank file as its header tells.
struct ProgramFile {
    bool bank = false;
    std::uint32_t announcedBytes = 0;  // of the chunk; not to be trusted
    ByteView chunk;                    // what the file holds of it
};

/// Nothing when the header is not that of one of our files. Any thread.
std::optional<ProgramFile> openProgramFile(ByteView file);

/// The header that goes before a chunk of a size below 2^24. Any thread.
Bytes presetFileHeader(std::string_view programName, std::size_t chunkBytes);
Bytes bankFileHeader(std::size_t chunkBytes);

inline constexpr std::size_t elementFileBytes = 1252;
using ElementValues = std::array<float, 256>;

/// A file of one element, named after the path it is meant for. Any thread.
Bytes makeElementFile(std::string_view path, const ElementValues& values);
/// The values as they stand, whatever the header; nothing for files of another size. Any thread.
std::optional<ElementValues> readElementFile(ByteView file);

/// The last component of a path less an extension of four characters, the dot included, and less
/// blanks and controls at its ends; cut to 31 characters. Any thread.
std::string_view fileBaseName(std::string_view path);

}  // namespace stratovane
