// Patch files for the content folders of tests.
#pragma once

#include <filesystem>
#include <fstream>

#include "base/engine_shared.h"
#include "content/program_files.h"
#include "patch/parameter_ids.h"
#include "patch/patch.h"
#include "patch/record_writer.h"

namespace stratovane {

/// A saw of a level and a pan of its own; makes missing folders.
inline void putSawPatch(const std::filesystem::path& file, float level, float pan = 0.5f) {
    const EngineShared shared;
    Patch patch{shared};
    patch.makeSawtooth();
    patch.setText(0, "name in the record");
    patch.store(0, global::level, level);
    patch.store(0, global::pan, pan);
    const auto record = writePatchRecord(patch, nullptr);
    std::filesystem::create_directories(file.parent_path());
    std::ofstream out{file, std::ios::binary};
    for (const auto& bytes : {presetFileHeader("x", record.size()), record})
        out.write(reinterpret_cast<const char*>(bytes.data()),
                  static_cast<std::streamsize>(bytes.size()));
}

}  // namespace stratovane
