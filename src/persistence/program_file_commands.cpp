#include "persistence/program_file_commands.h"

#include <algorithm>

#include "content/file_bytes.h"
#include "content/program_files.h"
#include "engine/engine.h"
#include "persistence/chunk_layout.h"
#include "persistence/chunk_reader.h"
#include "persistence/chunk_writer.h"
#include "persistence/message.h"
#include "persistence/stay.h"

namespace stratovane {

namespace {

bool write(const std::string& path, Bytes header, const Bytes& chunk) {
    header.insert(header.end(), chunk.begin(), chunk.end());
    if (replaceFile(path, header)) return true;
    tell("Error writing " + path);
    return false;
}

}  // namespace

bool ProgramFileCommands::writePreset(Engine& engine, int part, const std::string& path) {
    const Stay stay{setup_.inside};
    const Bytes chunk = writer_.preset(engine, part);
    return !chunk.empty() &&
           write(path, presetFileHeader(engine.patch(part).name(), chunk.size()), chunk);
}

bool ProgramFileCommands::writeBank(Engine& engine, const std::string& path) {
    const Stay stay{setup_.inside};
    const Bytes chunk = writer_.bank(engine);
    return !chunk.empty() && write(path, bankFileHeader(chunk.size()), chunk);
}

bool ProgramFileCommands::read(Engine& engine, int part, const std::string& path) {
    const Stay stay{setup_.inside};
    const auto there = fileSize(path);
    if (!there) return false;
    // Whatever its size, no more is read than a file of ours can hold.
    const auto bytes =
        readFilePart(path, 0, std::min<std::uint64_t>(*there, bankHeaderBytes + largestChunk));
    if (!bytes) return false;
    const auto file = openProgramFile(*bytes);
    if (!file) {
        tell(path + " is not a Stratovane file!");
        return false;
    }
    if (file->announcedBytes > largestChunk || file->chunk.size() < file->announcedBytes) {
        tell(printed("Error loading chunk (%s, %d bytes)", file->chunk.part(0, 4).terminatedText(),
                     file->announcedBytes));
        return false;
    }
    return reader_.read(
        engine, file->chunk,
        {.wanted = file->bank ? ChunkReader::Wanted::bank : ChunkReader::Wanted::preset,
         .part = part});
}

}  // namespace stratovane
