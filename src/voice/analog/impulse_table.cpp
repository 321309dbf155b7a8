#include "voice/analog/impulse_table.h"

#include <algorithm>
#include <cmath>
#include <complex>
#include <memory>
#include <numbers>
#include <vector>

#include "base/fft.h"

namespace stratovane {
namespace {

constexpr int phases = ImpulseTable::phases, taps = ImpulseTable::taps;
constexpr int reachSamples = 16;         // of the linear-phase prototype, to either side
constexpr std::size_t fftSize = 65536;   // long enough for the cepstrum not to wrap audibly
constexpr std::size_t leadingZeros = 5;  // puts the rise between taps 1 and 3

/// Windowed sinc at 64 times the rate, cut off at half of it, centred in the middle of the result.
std::vector<std::complex<double>> prototype() {
    const double pi = std::numbers::pi;
    std::vector<std::complex<double>> x(fftSize);
    for (int n = -reachSamples * phases; n <= reachSamples * phases; ++n) {
        const double t = double(n) / phases, u = t / reachSamples;
        const double sinc = n == 0 ? 1.0 : std::sin(pi * t) / (pi * t);
        const double blackman = 0.42 + 0.5 * std::cos(pi * u) + 0.08 * std::cos(2 * pi * u);
        x[static_cast<std::size_t>(n + reachSamples * phases)] = sinc * blackman;
    }
    return x;
}

/// The minimum-phase response of equal magnitude: its cepstrum is the real one, folded onto
/// positive time (Oppenheim and Schafer). The floor under the logarithm keeps the zeros finite.
std::vector<double> minimumPhase(std::vector<std::complex<double>> x) {
    const std::size_t n = x.size();
    const double scale = 1.0 / static_cast<double>(n);
    fft(x, -1);
    double loudest = 0;
    for (const auto& bin : x) loudest = std::max(loudest, std::abs(bin));
    const double floor = std::pow(10.0, -8.5) * loudest;
    for (auto& bin : x) bin = std::log(std::abs(bin) + floor);
    fft(x, +1);
    for (std::size_t i = 0; i < n; ++i) {
        const double fold = i == 0 || i == n / 2 ? 1.0 : i < n / 2 ? 2.0 : 0.0;
        x[i] = x[i].real() * scale * fold;
    }
    fft(x, -1);
    for (auto& bin : x) bin = std::exp(bin);
    fft(x, +1);
    std::vector<double> impulse(n);
    for (std::size_t i = 0; i < n; ++i) impulse[i] = x[i].real() * scale;
    return impulse;
}

std::unique_ptr<const ImpulseTable> build() {
    std::vector<double> m = minimumPhase(prototype());
    m.insert(m.begin(), leadingZeros, 0.0);
    double columns[phases + 1][taps];
    for (int j = 0; j <= phases; ++j) {
        double sum = 0;
        for (int t = 0; t < taps; ++t) sum += m[static_cast<std::size_t>(phases * t + j)];
        for (int t = 0; t < taps; ++t)
            columns[j][t] = m[static_cast<std::size_t>(phases * t + j)] / sum;
    }
    auto table = std::make_unique<ImpulseTable>();
    for (int j = 0; j < phases; ++j) {
        for (int t = 0; t < taps; ++t) {
            const auto here = static_cast<float>(columns[j][t]);
            table->impulse[j][t] = here;
            table->difference[j][t] = static_cast<float>(columns[j + 1][t]) - here;
        }
    }
    return table;
}

}  // namespace

const ImpulseTable& impulseTable() {
    static const std::unique_ptr<const ImpulseTable> table = build();
    return *table;
}

void prepareImpulseTable() { impulseTable(); }

}  // namespace stratovane
