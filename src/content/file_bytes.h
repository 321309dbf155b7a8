// Whole files and pieces of files.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "content/bytes.h"

namespace stratovane {

/// Nothing when there is no such file. UI thread.
std::optional<std::uint64_t> fileSize(const std::string& path);

/// Exactly `count` bytes from an offset, or nothing; a count that the file does not hold asks for
/// no memory. UI thread.
std::optional<Bytes> readFilePart(const std::string& path, std::uint64_t offset,
                                  std::uint64_t count);
/// From an offset to the end. UI thread.
std::optional<Bytes> readFileFrom(const std::string& path, std::uint64_t offset);
inline std::optional<Bytes> readFile(const std::string& path) { return readFileFrom(path, 0); }

/// Replaces the file; false when not everything was written. UI thread.
bool writeFile(const std::string& path, ByteView bytes);
/// Replaces the file by way of another one beside it, so that whatever fails leaves it as it was.
/// False when it failed. UI thread.
bool replaceFile(const std::string& path, ByteView bytes);

}  // namespace stratovane
