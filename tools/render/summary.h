// What a rendering came to, for people and for programs.
#pragma once

#include <cstdint>
#include <optional>
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

/// A patch that a part (from 1) played; without a bank it is not from the content library.
struct PlayedProgram {
    int part = 1;
    std::string name;
    std::optional<int> bank;
    int program = 0;
};

/// A program change of a channel (from 1) that changed nothing. The bank is what was selected: MSB
/// * 128 + LSB.
struct ProgramNotFound {
    int channel = 1, bank = 0, program = 0;
    double seconds = 0;
};

struct PairFile {
    int pair = 1;
    std::string output;
    double peakDbfs = 0;
};

struct Summary {
    std::string output, format;  // no output: only files of other kinds
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
    std::vector<PlayedProgram> played;
    std::vector<ProgramNotFound> programsNotFound;
    bool wantsPairFiles = false;
    std::vector<PairFile> pairFiles;
    std::vector<std::string> otherFiles;  // banks, presets, events
    std::int64_t lostEvents = 0;          // that arpeggiators played
};

std::string summaryText(const Summary& summary);
std::string summaryJson(const Summary& summary);
/// What the user should know beside the figures; a line each, empty when there is nothing.
std::string hints(const Summary& summary);

}  // namespace stratovane::render
