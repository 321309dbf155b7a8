// Preset and bank files, byte for byte.
#pragma once

#include <string>

namespace stratovane {

/// A chunk that begins as every one of ours, named "Test"; the rest tells what was mixed up.
inline std::string chunkOf(std::size_t size, std::size_t step = 3) {
    std::string chunk(size, '\0');
    for (std::size_t i = 0; i < size; ++i) chunk[i] = static_cast<char>(i * step >> 2);
    chunk.replace(0, 4, "QvRR");
    chunk.replace(32, 5, std::string{"Test\0", 5});
    return chunk;
}

/// The file that holds it: a header of 60 or 160 bytes, sizes big-endian.
inline std::string file(bool bank, const std::string& chunk) {
    std::string bytes(bank ? 160 : 60, '\0');
    const auto put = [&](std::size_t at, std::size_t value) {
        for (std::size_t i = 0; i < 4; ++i)
            bytes[at + i] = static_cast<char>(value >> (24 - 8 * i));
    };
    bytes.replace(0, 4, "CcnK");
    bytes.replace(8, 4, bank ? "FBCh" : "FPCh");
    put(12, 1);
    bytes.replace(16, 4, "QvRR");
    put(20, 1);
    put(24, bank ? 1 : 2528);
    if (!bank) bytes.replace(28, 4, "Test");
    put(bytes.size() - 4, chunk.size());
    return bytes + chunk;
}

}  // namespace stratovane
