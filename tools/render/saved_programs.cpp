#include "saved_programs.h"

#include "content/patch_record_layout.h"
#include "content/program_files.h"

namespace stratovane::render {

namespace {

std::optional<Failure> asFailure(const std::optional<std::string>& fault) {
    if (fault) return Failure{Exit::output, *fault};
    return {};
}

}  // namespace

std::optional<Failure> SavedPrograms::open(const Options& options) {
    const auto add = [this](std::optional<int> part, const std::string& path) {
        files_.push_back(std::make_unique<File>());
        files_.back()->part = part;
        return asFailure(files_.back()->file.open(path));
    };
    if (!options.saveBank.empty())
        if (auto failure = add({}, options.saveBank)) return failure;
    for (const PresetTarget& preset : options.savePresets)
        if (auto failure = add(preset.part, preset.path)) return failure;
    return {};
}

std::optional<Failure> SavedPrograms::write(PluginHost& plugIn) {
    for (auto& each : files_) {
        auto& [part, file] = *each;
        if (part) plugIn.selectPart(*part);
        const Bytes chunk = plugIn.getChunk(part.has_value());
        if (chunk.empty())
            return Failure{Exit::plugIn, part ? "part " + std::to_string(*part + 1) +
                                                    " is empty and has no preset to save"
                                              : "the plug-in gives no bank to save"};
        const auto name = ByteView{chunk}.part(recordLayout::name, recordLayout::nameBytes);
        if (auto failure =
                asFailure(file.write(part ? presetFileHeader(name.terminatedText(), chunk.size())
                                          : bankFileHeader(chunk.size()))))
            return failure;
        if (auto failure = asFailure(file.write(chunk))) return failure;
    }
    return {};
}

std::optional<Failure> SavedPrograms::commit() {
    for (auto& each : files_)
        if (auto failure = asFailure(each->file.keep())) return failure;
    return {};
}

}  // namespace stratovane::render
