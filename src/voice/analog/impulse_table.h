// The band-limited impulse that every edge of the analog oscillators is made of.
#pragma once

namespace stratovane {

/// A minimum-phase impulse of 32 taps at 64 positions between two samples, each of unit sum. The
/// response is -0.3 dB at 0.45, -6 at 0.5, -28 at 0.55 and below -75 dB from 0.6 of the rate on.
/// Phase-major, with the difference to the next phase beside it, so that an interpolated impulse is
/// eight vector additions.
struct ImpulseTable {
    static constexpr int taps = 32, phases = 64;
    alignas(64) float impulse[phases][taps];
    alignas(64) float difference[phases][taps];
};

/// The one table, built by its first user (a few milliseconds): construction calls
/// prepareImpulseTable so that the audio thread never does. Any thread.
const ImpulseTable& impulseTable();
void prepareImpulseTable();

}  // namespace stratovane
