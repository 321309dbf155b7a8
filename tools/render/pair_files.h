// A sound file for every output pair that sounds.
#pragma once

#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "failure.h"
#include "plugin_host.h"
#include "recording.h"

namespace stratovane::render {

/// A folder that is made when it is missing, and goes with the object while it is empty.
class NewFolder {
  public:
    NewFolder() = default;
    ~NewFolder();
    NewFolder(const NewFolder&) = delete;
    NewFolder& operator=(const NewFolder&) = delete;
    std::optional<Failure> make(const std::string& path);

  private:
    std::string made_;
};

/// All files have one length and one gain, so that together they are what the plug-in played. No
/// file is left behind unless `commit` succeeded.
class PairFiles {
  public:
    explicit PairFiles(const Options& options) : options_{options} {}

    /// `mostFrames`: no file will hold more.
    std::optional<Failure> open(PluginHost& plugIn, std::int64_t mostFrames);
    std::optional<Failure> append(std::span<float* const> outputs, std::int32_t frames);
    /// Writes the pairs that sound; an automatic tail ends with the last of them, but where nothing
    /// sounds with the song.
    std::optional<Failure> write(std::int64_t songFrames);
    std::optional<Failure> commit();
    void report(Summary& summary) const;

  private:
    struct Pair {
        Pair(const Options& options, int pairNumber, std::string path)
            : number{pairNumber}, recording{options, std::move(path), summary} {}
        int number;  // from 1
        bool sounds = false;
        Summary summary;
        Recording recording;
    };

    const Options& options_;
    NewFolder folder_;  // outlives the temporary files in it
    std::vector<std::unique_ptr<Pair>> pairs_;
};

}  // namespace stratovane::render
