// The machine-wide preferences and their text forms.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

#include "base/shared.h"

namespace stratovane {

class SettingsStore;

enum class CombiUse : std::int32_t { off, on, chain };

/// Curves of 128 entries from host values to part values; entry 0 is 0.
using MidiCurve = std::array<Shared<std::uint8_t>, 128>;
void makeVelocityCurve(float sensitivity,
                       MidiCurve& curve);                  // sensitivity 0..1, 0.5 changes nothing
void makeTouchCurve(float sensitivity, MidiCurve& curve);  // at 0 pressure is off

/// One letter per output pair: 'S' stereo, 'M' two mono outputs, 'Q' half of a quad pair.
struct OutputLayout {
    std::string letters = "SSSS";
    /// Applies a choice for a pair 0..15: 'M', 'S', 'Q', or 0 for off (ends the string there; not
    /// on pair 0). Quad pairs come in couples of an even and the following odd one. Other choices
    /// change nothing.
    void edit(int pair, char letter);
    int pairs() const { return static_cast<int>(letters.size()); }
};

/// Threads: read and written by the UI thread; what the audio thread reads is Shared.
struct Settings {
    std::uint32_t traceMask = 1;
    std::string contentLocation;  // ends without or with a separator, as stored
    OutputLayout outputs;
    float velocitySensitivity = 0.5f;
    float touchSensitivity = 0.5f;
    MidiCurve velocityCurve, touchCurve;
    Shared<std::int32_t> midiPatches{4};  // 0..4
    Shared<CombiUse> midiCombis{CombiUse::on};
    std::int32_t inspector = 3;    // bit 0 banks 77..79, bit 1 banks 80..89
    bool oneBasedNumbers = false;  // "MIDI Numbering"
    Shared<std::int32_t> combiNextController{-1}, combiPreviousController{-1};
    std::int32_t meterMode = 0;
    float memoryUse = 0.5f;                  // 0 ECO, 0.5 Default, 1 XXL
    Shared<float> masterVolume{0.5005933f};  // parameter value of -6 dB
    float lift = 0.33f;
    std::int32_t combiPreload = 0;  // 0 off, 1 next, 2 full
    std::int32_t sceneRoot = 24;
    bool sceneMidi = false;
    std::int32_t updateDisplay = 2;

    enum class Which { all, withoutContentAndOutputs };
    /// Reads every value; what is missing or does not parse takes its default
    /// (`updateDisplayDefault` is 1 on hosts whose inspector cannot follow playback). UI thread.
    void read(const SettingsStore& store, Which which, std::int32_t updateDisplayDefault);
    /// Writes the values that are kept. False when the store refused. UI thread.
    bool write(SettingsStore& store) const;
    /// What is stored as soon as it is chosen. False when the store refused. UI thread.
    bool writeOutputs(SettingsStore& store) const;
    bool writeContentLocation(SettingsStore& store) const;

    /// The folder beside the library that holds the content unless a setting names another.
    static std::string defaultContentLocation();
    /// A chosen folder without trailing blanks, tabs and line ends, and with a separator at its
    /// end; empty when nothing else is left.
    static std::string asContentLocation(std::string_view path);
};

/// The key everything is stored under.
inline constexpr std::string_view settingsKey = "Software\\Taldrimor\\Stratovane 2";

/// Only "Debug": it must be known before anything else is traced. 1 when missing. UI thread.
std::uint32_t readTraceMask(const SettingsStore& store);

}  // namespace stratovane
