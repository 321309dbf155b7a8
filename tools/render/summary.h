// What a rendering came to, for people and for programs.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace stratovane::render {

/// Measures the samples of the finished file.
class Meter {
  public:
    void measure(std::span<const float> samples);

    double peakDbfs() const;  // minus infinity for silence
    double rmsDbfs() const;

  private:
    float peak_ = 0;
    double sumOfSquares_ = 0;
    std::int64_t samples_ = 0;
};

struct Summary {
    std::string output, format;
    int rate = 0, channels = 0;
    bool fromSong = true;  // else from a sound file
    double inputSeconds = 0, fileSeconds = 0;
    std::int64_t fileFrames = 0;
    double peakDbfs = 0, rmsDbfs = 0;
    std::int64_t clippedSamples = 0, invalidSamples = 0;
    bool clippingKept = false;  // the format holds what is above full scale
    int highestVoices = 0;      // 0: not known
    double renderedSeconds = 0, elapsedSeconds = 0;
    std::vector<int> channelsWithoutPatch;  // from 1
    bool stuck = false;
};

std::string summaryText(const Summary& summary);
std::string summaryJson(const Summary& summary);
/// What the user should know beside the figures; a line each, empty when there is nothing.
std::string hints(const Summary& summary);

}  // namespace stratovane::render
