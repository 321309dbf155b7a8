#include "measure/measure.h"

#include <algorithm>
#include <cmath>
#include <complex>
#include <limits>
#include <numbers>

#include "base/fft.h"

namespace stratovane::measure {
namespace {

constexpr double pi = std::numbers::pi;

double blackmanHarris(std::size_t i, std::size_t n) {
    const double x = 2 * pi * static_cast<double>(i) / static_cast<double>(n);
    return 0.35875 - 0.48829 * std::cos(x) + 0.14128 * std::cos(2 * x) - 0.01168 * std::cos(3 * x);
}

/// Windowed Fourier sum of a stretch at one frequency; the phase counts from sample 0 of x.
std::complex<double> sumAt(const Signal& x, std::size_t from, std::size_t size, double cycles) {
    std::complex<double> sum = 0;
    double weight = 0;
    for (std::size_t i = 0; i < size; ++i) {
        const double w = blackmanHarris(i, size);
        weight += w;
        const double turn = cycles * static_cast<double>(from + i);
        sum += w * double(x[from + i]) * std::polar(1.0, -2 * pi * (turn - std::floor(turn)));
    }
    return 2.0 * sum / weight;
}

}  // namespace

double decibels(double ratio) { return 20 * std::log10(std::max(ratio, 1e-15)); }

double mean(const Signal& x) {
    double sum = 0;
    for (float s : x) sum += double(s);
    return sum / static_cast<double>(x.size());
}

double rms(const Signal& x) {
    double sum = 0;
    for (float s : x) sum += double(s) * double(s);
    return std::sqrt(sum / static_cast<double>(x.size()));
}

double peak(const Signal& x) {
    double largest = 0;
    for (float s : x) largest = std::max(largest, std::fabs(double(s)));
    return largest;
}

bool allFinite(const Signal& x) {
    return std::all_of(x.begin(), x.end(), [](float s) { return std::isfinite(s); });
}

std::size_t Spectrum::strongestBin() const {
    return static_cast<std::size_t>(std::max_element(amplitudes.begin(), amplitudes.end()) -
                                    amplitudes.begin());
}

double Spectrum::largest(double fromHz, double toHz) const {
    double found = 0;
    for (std::size_t i = 0; i < amplitudes.size(); ++i)
        if (hz(i) >= fromHz && hz(i) <= toHz) found = std::max(found, amplitudes[i]);
    return found;
}

std::string Spectrum::peaks(double aboveDb, int most) const {
    const double strongest = amplitudes[strongestBin()];
    std::string text;
    for (std::size_t i = 1; i + 1 < amplitudes.size() && most > 0; ++i) {
        const double a = amplitudes[i], db = decibels(a / strongest);
        if (a < amplitudes[i - 1] || a <= amplitudes[i + 1] || db < aboveDb) continue;
        text += std::to_string(hz(i)) + " Hz " + std::to_string(db) + " dB\n";
        --most;
    }
    return text;
}

Spectrum spectrum(const Signal& x, double rate) {
    std::size_t size = 1;
    while (size * 2 <= x.size()) size *= 2;
    std::vector<std::complex<double>> bins(size);
    double weight = 0;
    for (std::size_t i = 0; i < size; ++i) {
        const double w = blackmanHarris(i, size);
        bins[i] = w * double(x[x.size() - size + i]);
        weight += w;
    }
    fft(bins, -1);
    Spectrum s;
    s.binHz = rate / static_cast<double>(size);
    for (std::size_t i = 0; i < size / 2; ++i)
        s.amplitudes.push_back((i == 0 ? 1 : 2) * std::abs(bins[i]) / weight);
    return s;
}

double inharmonicDb(const Spectrum& s, double fundamentalHz, double belowHz) {
    constexpr double lobeBins = 5;
    double strongest = 0, stray = 0;
    for (std::size_t i = 0; i < s.amplitudes.size(); ++i) {
        const double harmonic = std::round(s.hz(i) / fundamentalHz);
        const bool near = std::fabs(s.hz(i) - harmonic * fundamentalHz) <= lobeBins * s.binHz;
        if (near && harmonic > 0) strongest = std::max(strongest, s.amplitudes[i]);
        if (!near && s.hz(i) < belowHz) stray = std::max(stray, s.amplitudes[i]);
    }
    return decibels(stray / strongest);
}

double levelAt(const Signal& x, double rate, double hz) {
    return std::abs(sumAt(x, 0, x.size(), hz / rate));
}

double frequencyNear(const Signal& x, double rate, double nearHz) {
    const std::size_t half = x.size() / 2;
    double cycles = nearHz / rate;
    for (int pass = 0; pass < 4; ++pass) {
        const double turn = std::arg(sumAt(x, half, half, cycles) / sumAt(x, 0, half, cycles));
        cycles += turn / (2 * pi * static_cast<double>(half));
    }
    return cycles * rate;
}

double cents(double hz, double referenceHz) { return 1200 * std::log2(hz / referenceHz); }

std::size_t firstAbove(const Signal& x, double level) {
    return static_cast<std::size_t>(
        std::find_if(x.begin(), x.end(), [=](float s) { return double(s) > level; }) - x.begin());
}

std::size_t firstBelow(const Signal& x, double level, std::size_t from) {
    const auto start = x.begin() + static_cast<std::ptrdiff_t>(from);
    return static_cast<std::size_t>(
        std::find_if(start, x.end(), [=](float s) { return double(s) < level; }) - x.begin());
}

double decaySeconds(const Signal& x, double rate, double db, double windowSeconds) {
    const auto window = static_cast<std::size_t>(windowSeconds * rate);
    double first = 0;
    for (std::size_t from = 0; from + window <= x.size(); from += window) {
        double largest = 0;
        for (std::size_t i = from; i < from + window; ++i)
            largest = std::max(largest, std::fabs(double(x[i])));
        if (from == 0) first = largest;
        if (decibels(largest / first) <= -db) return static_cast<double>(from) / rate;
    }
    return std::numeric_limits<double>::infinity();
}

Signal impulseResponse(const std::function<Signal(const Signal&)>& system, std::size_t size) {
    Signal unit(size);
    unit[0] = 1;
    return system(unit);
}

double gainDb(const Signal& impulseResponse, double rate, double hz) {
    std::complex<double> sum = 0;
    for (std::size_t i = 0; i < impulseResponse.size(); ++i)
        sum += double(impulseResponse[i]) *
               std::polar(1.0, -2 * pi * hz / rate * static_cast<double>(i));
    return decibels(std::abs(sum));
}

}  // namespace stratovane::measure
