#include "pair_files.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>

#include "mrx/host_records.h"
#include "offered_programs.h"
#include "sound_file.h"

namespace stratovane::render {

namespace {

namespace fs = std::filesystem;

std::string labelOf(PluginHost& plugIn, int output) {
    OutputProperties properties{};
    if (plugIn.request(Opcode::getOutputProperties, output, 0, &properties) == 0) return {};
    return recordName({properties.label, sizeof properties.label});
}

/// The pair's number and the labels of its outputs, one when both have the same.
std::string fileName(PluginHost& plugIn, int pair, Format format) {
    char number[16];
    std::snprintf(number, sizeof number, "%02d", pair);
    const std::string left = labelOf(plugIn, 2 * pair - 2), right = labelOf(plugIn, 2 * pair - 1);
    std::string name = number;
    if (!left.empty()) name.append(" ").append(left);
    if (right != left && !right.empty()) name.append(left.empty() ? " " : " + ").append(right);
    std::replace_if(
        name.begin(), name.end(),
        [](char c) { return c == '/' || static_cast<unsigned char>(c) < ' '; }, '_');
    return name.append(formatExtension(format));
}

}  // namespace

NewFolder::~NewFolder() {
    std::error_code error;
    if (!made_.empty()) fs::remove(made_, error);
}

std::optional<Failure> NewFolder::make(const std::string& path) {
    std::error_code error;
    if (fs::is_directory(path, error)) return {};
    if (!fs::create_directories(path, error) && !fs::is_directory(path, error))
        return Failure{Exit::output,
                       "the folder " + path + " cannot be made" +
                           (error ? ": " + error.message() : "; something else has its name")};
    made_ = path;
    return {};
}

std::optional<Failure> PairFiles::open(PluginHost& plugIn, std::int64_t mostFrames) {
    if (auto failure = folder_.make(options_.multi)) return failure;
    for (int pair = 1; pair <= plugIn.outputs() / 2; ++pair) {
        const fs::path path = fs::path{options_.multi} / fileName(plugIn, pair, options_.format);
        pairs_.push_back(std::make_unique<Pair>(options_, pair, path.string()));
        if (auto failure = pairs_.back()->recording.open(options_.sampleRate, 2, mostFrames))
            return failure;
    }
    return {};
}

std::optional<Failure> PairFiles::append(std::span<float* const> outputs, std::int32_t frames) {
    for (auto& pair : pairs_) {
        const auto first = static_cast<std::size_t>(2 * pair->number - 2);
        if (auto failure = pair->recording.take().append(outputs.subspan(first, 2), frames))
            return failure;
    }
    return {};
}

std::optional<Failure> PairFiles::write(std::int64_t songFrames) {
    float peak = 0;
    for (auto& pair : pairs_) peak = std::max(peak, pair->recording.take().peak());
    std::int64_t end = 0;
    for (auto& pair : pairs_) {
        pair->recording.normalizeFrom(peak);
        std::int64_t audible = 0;
        if (auto failure = pair->recording.findAudibleFrames(0, audible)) return failure;
        pair->sounds = audible > 0;
        end = std::max(end, audible);
    }
    if (options_.tail != Options::Tail::automatic) end = pairs_.front()->recording.take().frames();
    if (end == 0) end = songFrames;
    for (auto& pair : pairs_) {
        if (!pair->sounds) continue;
        pair->recording.take().cutTo(end);
        if (auto failure = pair->recording.write()) return failure;
    }
    return {};
}

std::optional<Failure> PairFiles::commit() {
    for (auto& pair : pairs_) {
        if (!pair->sounds) continue;
        if (auto failure = pair->recording.commit()) return failure;
    }
    return {};
}

void PairFiles::report(Summary& summary) const {
    summary.wantsPairFiles = true;
    for (const auto& pair : pairs_) {
        if (!pair->sounds) continue;
        const Summary& own = pair->summary;
        summary.pairFiles.push_back({pair->number, own.output, own.peakDbfs});
        if (!summary.output.empty()) continue;
        // The figures of the one output are those of these, as far as they are common.
        summary.format = own.format;
        summary.rate = own.rate;
        summary.channels = own.channels;
        summary.fileFrames = own.fileFrames;
        summary.fileSeconds = own.fileSeconds;
        summary.invalidSamples += own.invalidSamples;
        summary.clippedSamples += own.clippedSamples;
        summary.clippingKept = own.clippingKept;
    }
}

}  // namespace stratovane::render
