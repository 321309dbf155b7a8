// What an effect type is: one record that names, numbers, describes and makes it.
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <string_view>

#include "base/text_out.h"

namespace stratovane {

class EffectUnit;

inline constexpr int effectParameters = 12;

/// What a display may depend on beside its own value. Texts are made from stored values alone, so
/// that any thread may ask for them.
struct EffectView {
    std::array<float, effectParameters> values{};  // normalised
    float sampleRate = 44100.0f;                   // Hz
};

using ShowEffect = void (*)(TextOut&, float v, const EffectView&);

/// One parameter. An empty label hides the slot; without `show` it displays as percent.
struct EffectRow {
    std::string_view label{};
    float initial = 0;
    ShowEffect show = nullptr;
};

/// How long a unit sounds on after its input fell silent: a number of samples, or of seconds when
/// that is above 0 (truncated to samples). A unit may add its line (EffectUnit::setTail).
struct Tail {
    std::int32_t samples = 200000;
    float seconds = 0;
};

/// How a unit that runs on silent input tells that the buffer carries sound.
enum class Waking {
    audible,  // when its output is
    atOnce,   // whenever it ran
    never,    // it runs on every block and leaves the flag alone
};

struct EffectType {
    int number = 0;  // stored in patches; do not renumber
    std::string_view name{};
    std::string_view shown{};  // display name; empty: as the name
    Tail tail{};
    Waking wakes = Waking::atOnce;
    std::unique_ptr<EffectUnit> (*make)() = nullptr;
    std::array<EffectRow, effectParameters> rows{};
};

}  // namespace stratovane
