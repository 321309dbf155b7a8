#include "summary.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace stratovane::render {

namespace {

template <class... A>
std::string print(const char* format, A... arguments) {
    char text[256];
    std::snprintf(text, sizeof text, format, arguments...);
    return text;
}

std::string minutes(double seconds) {
    const double whole = std::floor(seconds / 60);
    return print("%.0f:%06.3f", whole, seconds - 60 * whole);
}

std::string decibels(double value) {
    return std::isfinite(value) ? print("%.1f dBFS", value) : "-oo dBFS";
}

std::string numberJson(double value) {
    return std::isfinite(value) ? print("%.9g", value) : "null";
}

std::string textJson(const std::string& text) {
    std::string json = "\"";
    for (char c : text) {
        if (c == '"' || c == '\\') json.push_back('\\');
        if (static_cast<unsigned char>(c) < 0x20)
            json.append(print("\\u%04x", static_cast<unsigned>(c)));
        else
            json.push_back(c);
    }
    return json.append("\"");
}

double speed(const Summary& s) {
    return s.elapsedSeconds > 0 ? s.renderedSeconds / s.elapsedSeconds : 0;
}

std::string outputText(const Summary& s) {
    std::string text = s.output;
    return text.append(print(": %s, %d Hz, %d channels\n", s.format.c_str(), s.rate, s.channels));
}

std::string levelText(const Summary& s) {
    std::string text = "Peak ";
    text.append(decibels(s.peakDbfs)).append(", RMS ").append(decibels(s.rmsDbfs));
    return text.append(s.clippedSamples == 0
                           ? ", nothing clipped\n"
                           : print(s.clippingKept ? ", %lld samples above full scale (kept)\n"
                                                  : ", %lld samples clipped\n",
                                   static_cast<long long>(s.clippedSamples)));
}

std::string filesText(const Summary& s) {
    std::string text;
    for (const PairFile& file : s.pairFiles)
        text.append(file.output)
            .append(": output pair ")
            .append(std::to_string(file.pair))
            .append(", peak ")
            .append(decibels(file.peakDbfs))
            .append("\n");
    for (const std::string& file : s.otherFiles) text.append(file).append("\n");
    return text;
}

std::string programsText(const Summary& s) {
    std::string text;
    for (const PlayedProgram& played : s.played) {
        text.append(print("Part %d: ", played.part));
        text.append(played.name.empty() ? "a patch without a name" : played.name);
        if (played.bank) text.append(print(" (bank %d, program %d)", *played.bank, played.program));
        text.append("\n");
    }
    for (const ProgramNotFound& change : s.programsNotFound)
        text.append(print("Channel %d, bank %d, program %d at ", change.channel, change.bank,
                          change.program))
            .append(minutes(change.seconds))
            .append(": no such program\n");
    return text;
}

std::string programsJson(const Summary& s) {
    std::string json = "\"programs\": [", separator;
    for (const PlayedProgram& played : s.played) {
        json.append(separator).append(print("{\"part\": %d, \"name\": ", played.part));
        json.append(textJson(played.name));
        json.append(played.bank
                        ? print(", \"bank\": %d, \"program\": %d}", *played.bank, played.program)
                        : ", \"bank\": null, \"program\": null}");
        separator = ", ";
    }
    json.append("], \"programsNotFound\": [");
    separator.clear();
    for (const ProgramNotFound& change : s.programsNotFound) {
        json.append(separator)
            .append(print("{\"channel\": %d, \"bank\": %d, \"program\": %d, \"seconds\": ",
                          change.channel, change.bank, change.program))
            .append(numberJson(change.seconds))
            .append("}");
        separator = ", ";
    }
    return json.append("]");
}

std::string filesJson(const Summary& s) {
    std::string json = "\"pairFiles\": [", separator;
    for (const PairFile& file : s.pairFiles) {
        json.append(separator).append(print("{\"pair\": %d, \"output\": ", file.pair));
        json.append(textJson(file.output)).append(", \"peakDbfs\": ");
        json.append(numberJson(file.peakDbfs)).append("}");
        separator = ", ";
    }
    json.append("], \"otherFiles\": [");
    separator.clear();
    for (const std::string& file : s.otherFiles) {
        json.append(separator).append(textJson(file));
        separator = ", ";
    }
    return json.append("]");
}

}  // namespace

void Meter::measure(std::span<const float> samples) {
    for (float sample : samples) {
        peak_ = std::max(peak_, std::fabs(sample));
        sumOfSquares_ += static_cast<double>(sample) * static_cast<double>(sample);
    }
    samples_ += static_cast<std::int64_t>(samples.size());
}

double Meter::peakDbfs() const { return 20 * std::log10(static_cast<double>(peak_)); }
double Meter::rmsDbfs() const {
    return 10 * std::log10(samples_ == 0 ? 0 : sumOfSquares_ / static_cast<double>(samples_));
}

std::string summaryText(const Summary& s) {
    std::string text = s.output.empty() ? "" : outputText(s);
    text.append(filesText(s));
    text.append(s.fromSong ? "Song " : "Sound ").append(minutes(s.inputSeconds));
    if (s.fileFrames > 0) text.append(", file ").append(minutes(s.fileSeconds));
    text.append("\n");
    if (!s.output.empty()) text.append(levelText(s));
    if (s.highestVoices > 0) text.append(print("At most %d voices at once\n", s.highestVoices));
    text.append(print("Rendered %.1f s in %.2f s: %.1f times real time\n", s.renderedSeconds,
                      s.elapsedSeconds, speed(s)));
    text.append(programsText(s));
    return text;
}

std::string summaryJson(const Summary& s) {
    std::string json = "{\"output\": ";
    json.append(s.output.empty() ? "null" : textJson(s.output));
    json.append(", \"format\": ").append(textJson(s.format));
    json.append(print(", \"sampleRate\": %d, \"channels\": %d", s.rate, s.channels));
    json.append(s.fromSong ? ", \"songSeconds\": " : ", \"soundSeconds\": ")
        .append(numberJson(s.inputSeconds));
    json.append(", \"fileSeconds\": ").append(numberJson(s.fileSeconds));
    json.append(print(", \"fileFrames\": %lld", static_cast<long long>(s.fileFrames)));
    json.append(", \"peakDbfs\": ").append(numberJson(s.peakDbfs));
    json.append(", \"rmsDbfs\": ").append(numberJson(s.rmsDbfs));
    json.append(print(", \"clippedSamples\": %lld", static_cast<long long>(s.clippedSamples)));
    json.append(print(", \"invalidSamples\": %lld", static_cast<long long>(s.invalidSamples)));
    json.append(", \"highestVoices\": ");
    json.append(s.highestVoices > 0 ? print("%d", s.highestVoices) : "null");
    json.append(", \"realTimeFactor\": ").append(numberJson(speed(s)));
    json.append(", ").append(programsJson(s)).append(", ").append(filesJson(s));
    json.append(", \"channelsWithoutPatch\": [");
    for (std::size_t i = 0; i < s.channelsWithoutPatch.size(); ++i)
        json.append(print(i == 0 ? "%d" : ", %d", s.channelsWithoutPatch[i]));
    return json.append("]}\n");
}

std::string hints(const Summary& s) {
    std::string text;
    if (!s.channelsWithoutPatch.empty()) {
        text.append(s.channelsWithoutPatch.size() == 1 ? "Channel" : "Channels");
        for (std::size_t i = 0; i < s.channelsWithoutPatch.size(); ++i)
            text.append(print(i == 0 ? " %d" : ", %d", s.channelsWithoutPatch[i]));
        text.append(s.channelsWithoutPatch.size() == 1 ? " plays on a part" : " play on parts");
        text.append(
            " without a patch and cannot be heard. To hear the song's notes with the patch "
            "of part 1, add --channel 1.\n");
    }
    if (s.invalidSamples > 0)
        text.append(print("%lld samples were no numbers and are silent in the file.\n",
                          static_cast<long long>(s.invalidSamples)));
    if (s.wantsPairFiles && s.pairFiles.empty())
        text.append("No output pair sounds; --multi wrote no file.\n");
    if (s.lostEvents > 0)
        text.append(
            print("%lld events of the arpeggiators came too thick to be kept; a smaller "
                  "--block keeps more.\n",
                  static_cast<long long>(s.lostEvents)));
    if (s.stuck) text.append("The plug-in never finished loading; some sounds may be missing.\n");
    return text;
}

}  // namespace stratovane::render
