#include "voice/drawbar/tone_wheel_mix.h"

namespace stratovane {
namespace {

constexpr std::int32_t frameValues = ToneWheels::octaves;

struct WheelPlace {
    std::size_t group;
    std::int32_t octave;  // above the group's first wheel
};
constexpr std::array<WheelPlace, 9> places{
    {{0, 0}, {0, 1}, {0, 2}, {0, 3}, {0, 4}, {1, 0}, {1, 1}, {1, 2}, {2, 0}}};

/// By place: which drawbar, counted as displayed (16', 5 1/3', 8', 4', 2 2/3', 2', 1 3/5', 1 1/3',
/// 1').
constexpr std::array<std::size_t, 9> barOf{0, 2, 3, 5, 8, 1, 4, 7, 6};

constexpr std::int32_t weightOf(std::int32_t position) {
    return position == 0 ? 0 : 32 * position * position + 200;
}

/// How many octaves the fifths of a high key are played too low.
int lowered(int key) {
    if (key >= 120) return 3;
    if (key >= 108) return 2;
    return key > 95 ? 1 : 0;
}

}  // namespace

WheelWeights foldedWeights(const std::array<std::int32_t, 9>& bars, int key) {
    WheelWeights w;
    for (std::size_t i = 0; i < w.size(); ++i) w[i] = weightOf(bars[barOf[i]]);
    const auto fold = [&w](std::size_t from, std::size_t into) {
        w[into] += w[from] / 2;
        w[from] = 0;
    };
    if (key > 78) fold(4, 3);
    if (key >= 91) fold(3, 2);
    if (key >= 103) fold(2, 1);
    if (key >= 115) fold(1, 0);
    if (key > 83) fold(7, 6);
    if (key > 95) {  // the second fifth now plays the wheel of the first
        w[6] = w[6] / 2 + w[5];
        w[5] = 0;
    }
    return w;
}

void ToneWheelMix::place(Group& group, int pitchClass, int octave) {
    const auto k = static_cast<std::size_t>(pitchClass);
    group.octave = octave;
    group.index = wheels_->start[k] + octave;
    group.loopLength = wheels_->length[k];
    group.loopEnd = group.index + group.loopLength - 1;
}

void ToneWheelMix::start(const ToneWheels& wheels, int key, Random& random) {
    constexpr int classes = ToneWheels::pitchClasses, fifth = 7, sixth = 9;
    *this = ToneWheelMix{};
    wheels_ = &wheels;
    int pitchClass = key % classes, octave = key / classes - 3;
    const auto climb = [&](int semitones) {
        pitchClass += semitones;
        if (pitchClass < classes) return;
        pitchClass -= classes;
        ++octave;
    };
    place(groups_[0], pitchClass, octave);
    climb(fifth);
    place(groups_[1], pitchClass, octave + 1 - lowered(key));
    climb(sixth);
    octave = std::min(octave, 5);
    place(groups_[2], pitchClass, octave + 2);
    // Wheels that are struck together are not locked to one another.
    for (Group& group : groups_) group.index += random.draw() % group.loopLength / 8 * 8;
}

bool ToneWheelMix::hasWheel(std::size_t slot) const {
    return groups_[places[slot].group].octave + places[slot].octave < ToneWheels::octaves;
}

void ToneWheelMix::render(const WheelWeights& weights, std::int32_t* sums) {
    std::int32_t fractions[tickFrames], frames[tickFrames];
    std::int32_t position = position_;
    for (int i = 0; i < tickFrames; ++i) {
        position += increment_;
        frames[i] = position >> 16;
        position &= 0xFFFF;
        fractions[i] = position;
        sums[i] = 0;
    }
    position_ = position;

    for (std::size_t g = 0; g < groups_.size(); ++g) {
        Group& group = groups_[g];
        std::int32_t now[tickFrames], next[tickFrames];
        std::int32_t index = group.index;
        const std::int32_t end = group.loopEnd, length = group.loopLength;
        for (int i = 0; i < tickFrames; ++i) {
            index += frameValues * frames[i];
            while (index > end) index -= length;
            now[i] = index;
            const std::int32_t after = index + frameValues;
            next[i] = after > end ? after - length : after;
        }
        group.index = index;
        for (std::size_t slot = 0; slot < places.size(); ++slot) {
            const std::int32_t weight = weights[slot];
            if (places[slot].group != g || weight == 0) continue;
            const std::int16_t* wheel = wheels_->values.data() + places[slot].octave;
            for (int i = 0; i < tickFrames; ++i) {
                const std::int32_t a = wheel[now[i]], b = wheel[next[i]];
                const auto step =
                    static_cast<std::int32_t>((std::int64_t{b - a} * fractions[i]) >> 16);
                sums[i] += (a + step) * weight;
            }
        }
    }
}

}  // namespace stratovane
