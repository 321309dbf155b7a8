#include "settings/settings.h"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <vector>

#include "base/displays.h"
#include "base/text_out.h"
#include "base/units.h"
#include "platform/platform.h"
#include "platform/settings_store.h"
#include "settings/number_text.h"

namespace stratovane {

namespace {

constexpr std::string_view contentFolder = "Stratovane 2 Content";
constexpr std::string_view sensitivityName = "Vel Sens";  // also tells whether a key is in use
constexpr std::string_view outputsName = "Outputs";
constexpr std::string_view contentLocationName = "Content Location";
// Earlier installations: the same key without its number.
constexpr std::string_view formerKey = settingsKey.substr(0, settingsKey.size() - 1);

/// The letter at `index` in lower case, 0 behind the end.
char letterAt(std::string_view text, std::size_t index) {
    const char c = index < text.size() ? text[index] : '\0';
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

std::int32_t integer(std::string_view text, std::int32_t otherwise, std::int32_t least,
                     std::int32_t most) {
    return std::clamp(parseInteger(text).value_or(otherwise), least, most);
}

float sensitivity(std::string_view text) {
    return static_cast<float>(integer(text, 0, -100, 100)) * 0.005f + 0.5f;
}
void showSensitivity(TextOut& out, float s) {
    out.print("%d", static_cast<std::int32_t>(std::lround(s * 200.0f)) - 100);
}

/// Full volume is 20 log10(2) dB, which is kept as "+6.0 dB": that text gives it back whole.
float volume(std::string_view text) {
    const float decibels = std::max(parseDecimal(text).value_or(-6.0f), -90.0f);
    if (decibels >= 6.0f) return 1.0f;
    return std::sqrt(std::pow(10.0f, decibels / 20.0f) / 2.0f);
}

std::int32_t patchesLevel(std::string_view text) {
    const char first = letterAt(text, 0);
    if (letterAt(text, 1) == 'f') return 0;
    return first >= '0' && first <= '9' ? std::min(first - '0', 4) : 4;
}

/// How one value is read and kept. Every text can be read: a missing or damaged one gives the
/// default. A value without `show`, or one that shows nothing, is left in the store as it is.
struct Row {
    std::string_view name;
    void (*read)(Settings& s, std::string_view text);
    void (*show)(const Settings& s, TextOut& out) = nullptr;
};

constexpr Row rows[] = {
    {sensitivityName,
     [](Settings& s, std::string_view text) {
         s.velocitySensitivity = sensitivity(text);
         makeVelocityCurve(s.velocitySensitivity, s.velocityCurve);
     },
     [](const Settings& s, TextOut& out) { showSensitivity(out, s.velocitySensitivity); }},
    {"Touch Sens",
     [](Settings& s, std::string_view text) {
         s.touchSensitivity = sensitivity(text);
         makeTouchCurve(s.touchSensitivity, s.touchCurve);
     },
     [](const Settings& s, TextOut& out) { showSensitivity(out, s.touchSensitivity); }},
    {"MIDI Patches", [](Settings& s, std::string_view text) { s.midiPatches = patchesLevel(text); },
     [](const Settings& s, TextOut& out) {
         if (s.midiPatches == 0) out.text("OFF");
         if (s.midiPatches == 4) out.text("ON");
     }},
    {"MIDI Combis",
     [](Settings& s, std::string_view text) {
         const char third = letterAt(text, 2);
         s.midiCombis = third == 'a'   ? CombiUse::chain
                        : third == 'f' ? CombiUse::off
                                       : CombiUse::on;
     },
     [](const Settings& s, TextOut& out) {
         const CombiUse use = s.midiCombis;
         out.text(use == CombiUse::chain ? "Chain" : use == CombiUse::off ? "OFF" : "ON");
     }},
    {"Inspector", [](Settings& s, std::string_view text) { s.inspector = integer(text, 3, 0, 9); },
     [](const Settings& s, TextOut& out) { out.print("%d", s.inspector); }},
    {"MIDI Numbering",
     [](Settings& s, std::string_view text) { s.oneBasedNumbers = letterAt(text, 0) == '1'; },
     [](const Settings& s, TextOut& out) { out.text(s.oneBasedNumbers ? "1-128" : "0-127"); }},
    {"CombiNextCC",
     [](Settings& s, std::string_view text) { s.combiNextController = integer(text, -1, -1, 127); },
     [](const Settings& s, TextOut& out) { out.print("%d", s.combiNextController.get()); }},
    {"CombiPrevCC",
     [](Settings& s, std::string_view text) {
         s.combiPreviousController = integer(text, -1, -1, 127);
     },
     [](const Settings& s, TextOut& out) { out.print("%d", s.combiPreviousController.get()); }},
    {"Meter Mode", [](Settings& s, std::string_view text) { s.meterMode = integer(text, 0, 0, 9); },
     [](const Settings& s, TextOut& out) { out.print("%d", s.meterMode); }},
    {"Memory Use",
     [](Settings& s, std::string_view text) {
         const char first = letterAt(text, 0);
         s.memoryUse = first == 'e' ? 0.0f : first == 'x' ? 1.0f : 0.5f;
     },
     [](const Settings& s, TextOut& out) {
         const int use = choice(s.memoryUse, 2.9f);
         out.text(use == 0 ? "ECO" : use == 2 ? "XXL" : "Default");
     }},
    {"Master Vol", [](Settings& s, std::string_view text) { s.masterVolume = volume(text); },
     [](const Settings& s, TextOut& out) { showPatchLevel(out, s.masterVolume); }},
    {"Lift",
     [](Settings& s, std::string_view text) {
         s.lift = static_cast<float>(integer(text, 33, 0, 100)) / 100.0f;
     },
     [](const Settings& s, TextOut& out) { out.print("%ld", std::lround(s.lift * 100.0f)); }},
    {"Combi Preload Mode",
     [](Settings& s, std::string_view text) {
         const char first = letterAt(text, 0);
         s.combiPreload = first == 'n' ? 1 : first == 'f' ? 2 : 0;
     },
     [](const Settings& s, TextOut& out) {
         out.text(s.combiPreload == 1 ? "Next" : s.combiPreload == 2 ? "Full" : "Off");
     }},
    {"Default Scene Root",
     [](Settings& s, std::string_view text) { s.sceneRoot = integer(text, 24, 0, 127); }},
    {"Default Scene MIDI",
     [](Settings& s, std::string_view text) { s.sceneMidi = letterAt(text, 1) == 'n'; }},
    {"UpdateDisplay",
     [](Settings& s, std::string_view text) {
         s.updateDisplay = integer(text, s.updateDisplay, 0, 2);
     }},
};

constexpr bool endsInSeparator(std::string_view path) {
    return path.ends_with('/') || path.ends_with('\\');
}

}  // namespace

std::uint32_t readTraceMask(const SettingsStore& store) {
    return static_cast<std::uint32_t>(parseInteger(store.read(settingsKey, "Debug")).value_or(1));
}

void Settings::read(const SettingsStore& store, Which which, std::int32_t updateDisplayDefault) {
    const auto holds = [&store](std::string_view key) {
        return !store.read(key, sensitivityName).empty();
    };
    const std::string_view key = !holds(settingsKey) && holds(formerKey) ? formerKey : settingsKey;
    if (which == Which::all) {
        traceMask = readTraceMask(store);
        contentLocation = store.read(settingsKey, contentLocationName);
        if (contentLocation.empty()) contentLocation = defaultContentLocation();
        outputs.letters = store.read(key, outputsName);
        if (outputs.letters.empty() || outputs.pairs() > maxOutputPairs)
            outputs.letters = OutputLayout{}.letters;
    }
    updateDisplay = updateDisplayDefault;
    for (const Row& row : rows) row.read(*this, store.read(key, row.name));
}

bool Settings::write(SettingsStore& store) const {
    char buffers[std::size(rows)][32];
    std::vector<NamedValue> values{{outputsName, outputs.letters}};
    for (std::size_t i = 0; i < std::size(rows); ++i) {
        if (rows[i].show == nullptr) continue;
        TextOut out{buffers[i]};
        rows[i].show(*this, out);
        if (!out.view().empty()) values.push_back({rows[i].name, out.view()});
    }
    return store.write(settingsKey, values);
}

bool Settings::writeOutputs(SettingsStore& store) const {
    return store.write(settingsKey, outputsName, outputs.letters);
}

bool Settings::writeContentLocation(SettingsStore& store) const {
    return store.write(settingsKey, contentLocationName, contentLocation);
}

std::string Settings::defaultContentLocation() {
    const std::string own = ownPath();
    constexpr bool backslashes = std::filesystem::path::preferred_separator == '\\';
    const std::size_t separator = own.find_last_of(backslashes ? "/\\" : "/");
    const std::string folder = separator == own.npos ? std::string{} : own.substr(0, separator + 1);
    return folder + std::string{contentFolder};
}

std::string Settings::asContentLocation(std::string_view path) {
    path = path.substr(0, path.find_last_not_of(" \t\r\n") + 1);
    std::string location{path};
    if (!location.empty() && !endsInSeparator(location)) location += '/';
    return location;
}

}  // namespace stratovane
