// One effect, set up and driven by a test.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <initializer_list>
#include <memory>
#include <numbers>
#include <span>
#include <string>
#include <string_view>
#include <tuple>
#include <utility>
#include <vector>

#include "base/text_out.h"
#include "effects/catalogue.h"
#include "effects/effect_unit.h"
#include "measure/measure.h"

namespace stratovane {

/// A table of cases.
template <class... T>
using Rows = std::vector<std::tuple<T...>>;

struct StereoSignal {
    measure::Signal left, right;
};

inline StereoSignal silence(std::size_t size) {
    return {measure::Signal(size, 0.0f), measure::Signal(size, 0.0f)};
}

inline StereoSignal impulse(std::size_t size, float left = 1, float right = 1) {
    StereoSignal x = silence(size);
    x.left[0] = left;
    x.right[0] = right;
    return x;
}

inline measure::Signal sine(std::size_t size, double cyclesPerSample, double amplitude = 1) {
    measure::Signal x(size);
    for (std::size_t i = 0; i < size; ++i)
        x[i] = static_cast<float>(
            amplitude * std::sin(2 * std::numbers::pi * cyclesPerSample * static_cast<double>(i)));
    return x;
}

/// A unit of a type with its defaults but for the values given.
class EffectRun {
  public:
    using Values = std::vector<std::pair<int, float>>;

    EffectRun(int number, const Values& values, float rate = 48000)
        : rate_{rate}, unit_{makeEffectUnit(number)} {
        unit_->setSeed(7);
        unit_->setKeySource(&keys);
        tempo(120);
        set(values);
        unit_->setSampleRate(rate);
    }
    EffectUnit& unit() { return *unit_; }
    void set(int index, float value) { unit_->setParameter(index, value); }
    void set(const Values& values) {
        for (const auto& [index, value] : values) set(index, value);
    }
    void key(float pitch) { keys.pitch = pitch; }
    void tempo(float beatsPerMinute) {
        beatsPerSample_ = static_cast<double>(beatsPerMinute) / (60.0 * static_cast<double>(rate_));
        unit_->setTempo(beatsPerMinute, beatsPerSample_);
    }
    /// Renders on from the frame and song position reached, in blocks that claim to carry sound or
    /// not.
    StereoSignal operator()(const StereoSignal& in, std::size_t block = 256, bool silent = false) {
        StereoSignal out;
        std::vector<StereoFrame> io(block);
        for (std::size_t at = 0; at < in.left.size(); at += block) {
            const std::size_t size = std::min(block, in.left.size() - at);
            for (std::size_t i = 0; i < size; ++i) io[i] = {in.left[at + i], in.right[at + i]};
            flag_ = silent;
            unit_->process({io.data(), size}, beat_, flag_);
            beat_ += beatsPerSample_ * static_cast<double>(size);
            for (std::size_t i = 0; i < size; ++i) {
                out.left.push_back(io[i].left);
                out.right.push_back(io[i].right);
            }
        }
        return out;
    }
    StereoSignal operator()(const measure::Signal& both) { return (*this)({both, both}); }
    /// The silence flag as the last block left it.
    bool flag() const { return flag_; }
    double beat() const { return beat_; }

    KeySource keys;

  private:
    float rate_;
    double beatsPerSample_ = 0, beat_ = 0;
    bool flag_ = false;
    std::unique_ptr<EffectUnit> unit_;
};

/// What a parameter shows among the type's defaults and the values given.
inline std::string shownEffectValue(int number, int index, const EffectRun::Values& values) {
    const EffectType& type = *effectType(number);
    EffectView view;
    for (std::size_t i = 0; i < view.values.size(); ++i) view.values[i] = type.rows[i].initial;
    for (const auto& [at, value] : values) view.values[static_cast<std::size_t>(at)] = value;
    char text[64];
    TextOut out{text};
    showEffectValue(out, type, index, view);
    return std::string{out.view()};
}

/// Texts of a type's parameters at some values, all else at its defaults (so below 0, too).
struct Shows {
    int type;
    std::vector<std::tuple<int, float, std::string_view>> texts;
};
inline void expectShown(const std::vector<Shows>& all) {
    for (const auto& [type, texts] : all)
        for (const auto& [index, value, text] : texts) {
            EffectRun::Values values;
            if (value >= 0) values.emplace_back(index, value);
            EXPECT_EQ(shownEffectValue(type, index, values), text)
                << effectType(type)->name << ", " << index;
        }
}

}  // namespace stratovane
