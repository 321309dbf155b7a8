// The samples of a bank that is being made: each recording in each form once.
#pragma once

#include <map>
#include <string>
#include <tuple>

#include "bank_spec.h"
#include "content/bytes.h"
#include "json_node.h"
#include "sound.h"

namespace stratovane::content_tool {

class SamplePool {
  public:
    /// Sample files are found from the folder of the JSON file.
    explicit SamplePool(std::string folder) : folder_{std::move(folder)} {}

    struct Sample {
        int number = 0;  // in the bank
        Sound sound;     // as encoded; its values are gone
        std::int64_t frames = 0;
        std::int64_t originalFrames = 0;  // before the rate was changed
        double ratio = 1;                 // frames now to frames then, exactly
    };
    /// `rateHz` 0 keeps the recording's rate. Faults are told at the node.
    const Sample& add(const JsonNode& file, SampleFormat format, int rateHz);
    std::vector<Bytes> take() { return std::move(samples_); }

  private:
    std::string folder_;
    std::map<std::tuple<std::string, SampleFormat, int>, Sample> known_;
    std::vector<Bytes> samples_;
};

/// A path of the JSON file, taken from the folder in which that lies.
std::string besideSpec(const std::string& folder, const JsonNode& path);

}  // namespace stratovane::content_tool
