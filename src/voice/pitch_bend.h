// The pitch-bend lever.
#pragma once

#include <array>
#include <cmath>

namespace stratovane {

/// Where the lever of a message stands, -1..1 (just below).
inline float bendPosition(int low, int high) {
    return static_cast<float>((high - 64) * 128 + low) * 0.00012207031f;
}

/// Semitones at a position for a range code: 0..12 semitones, 13 semitone steps over an octave, 14
/// the steps of a harmonic scale with a little give, 15 two octaves.
inline float bendSemitones(float position, int rangeCode) {
    constexpr int semitoneSteps = 13, harmonicSteps = 14, twoOctaves = 15;
    constexpr std::array<float, 7> harmonics{-11.55f, -6.72f, -3.0f, 0.0f, 4.87f, 8.84f, 11.55f};
    switch (rangeCode) {
        case semitoneSteps:
            return std::floor(position * 12 + 0.5f);
        case harmonicSteps: {
            const int index = static_cast<int>(position * 3 + 3.5f);
            return position * 0.45f + harmonics[static_cast<std::size_t>(index < 0   ? 0
                                                                         : index > 6 ? 6
                                                                                     : index)];
        }
        case twoOctaves:
            return position * 24;
        default:
            return position * static_cast<float>(rangeCode);
    }
}

}  // namespace stratovane
