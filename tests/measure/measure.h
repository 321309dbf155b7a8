// Measurements that the tests of sound share: levels, spectra, pitch, times.
#pragma once

#include <functional>
#include <string>
#include <vector>

namespace stratovane::measure {

using Signal = std::vector<float>;

double decibels(double ratio);
double mean(const Signal& x);
double rms(const Signal& x);
double peak(const Signal& x);
bool allFinite(const Signal& x);

/// Amplitudes of a windowed Fourier transform (four-term Blackman-Harris, side lobes at -92 dB): a
/// sine of amplitude 1 shows as 1. Bins are rate / size apart; a sine spreads over four to each
/// side.
struct Spectrum {
    std::vector<double> amplitudes;
    double binHz = 1;
    double hz(std::size_t bin) const { return static_cast<double>(bin) * binHz; }
    std::size_t strongestBin() const;
    /// The largest amplitude from one frequency to another.
    double largest(double fromHz, double toHz) const;
    /// Peaks above a level relative to the strongest, for the message of a failing test.
    std::string peaks(double aboveDb = -90, int most = 30) const;
};
/// Uses the largest power of two that fits, at the end of the signal.
Spectrum spectrum(const Signal& x, double rate);

/// What is neither near a harmonic of `fundamentalHz` nor above `belowHz`, relative to the
/// strongest partial.
double inharmonicDb(const Spectrum& s, double fundamentalHz, double belowHz);

/// Amplitude of the sine at one frequency, between bins too.
double levelAt(const Signal& x, double rate, double hz);
/// Frequency of the partial near `nearHz`, from the turn of its phase between two halves.
double frequencyNear(const Signal& x, double rate, double nearHz);
double cents(double hz, double referenceHz);

/// First index at which a signal passes the level; its size if it never does.
std::size_t firstAbove(const Signal& x, double level);
std::size_t firstBelow(const Signal& x, double level, std::size_t from = 0);
/// Seconds until the largest sample of a following stretch of `windowSeconds` is `db` below that of
/// the first one; infinity if it never is.
double decaySeconds(const Signal& x, double rate, double db, double windowSeconds);

/// A linear system's response to a unit sample, and the gain that belongs to it.
Signal impulseResponse(const std::function<Signal(const Signal&)>& system, std::size_t size);
double gainDb(const Signal& impulseResponse, double rate, double hz);

}  // namespace stratovane::measure
