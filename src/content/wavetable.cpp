#include "content/wavetable.h"

#include <cmath>
#include <complex>
#include <vector>

#include "base/fft.h"

namespace stratovane {

namespace {

constexpr std::size_t headerBytes = 8;  // says nothing
constexpr std::size_t dataBytes = 2 * Wavetable::values;

using Spectrum = std::vector<std::complex<double>>;

/// A cycle of `size` values from the harmonics 0..size / 4 of a spectrum of 256.
Spectrum cycleOf(const Spectrum& full, std::size_t size) {
    Spectrum kept(size);
    kept[0] = full[0];
    for (std::size_t h = 1; h <= size / 4; ++h) {
        kept[h] = full[h];
        kept[size - h] = std::conj(full[h]);
    }
    fft(kept, 1);
    for (auto& value : kept) value /= static_cast<double>(full.size());
    return kept;
}

}  // namespace

std::unique_ptr<Wavetable> readWavetable(ByteView item, ContentFault& fault) {
    if (!item.has(headerBytes, dataBytes)) {
        fault = {item.size(), "the wavetable ends before its last level"};
        return nullptr;
    }
    auto table = std::make_unique<Wavetable>();
    std::memcpy(table->data.data(), item.data() + headerBytes, dataBytes);
    return table;
}

Bytes writeWavetable(const Wavetable& table) {
    ByteWriter out;
    out.zeros(headerBytes);
    for (const std::int16_t value : table.data) out.put(value);
    return out.take();
}

std::unique_ptr<Wavetable> makeWavetable(std::span<const SingleCycle, Wavetable::waves> waves) {
    std::vector<double> values(Wavetable::values);
    double peak = 0;
    for (std::size_t w = 0; w < waves.size(); ++w) {
        Spectrum full(waves[w].begin(), waves[w].end());
        fft(full, -1);
        for (int level = 0; level < Wavetable::levels; ++level) {
            const auto size = static_cast<std::size_t>(Wavetable::size(level));
            const Spectrum cycle = cycleOf(full, size - 1);
            double* out = values.data() + Wavetable::valuesBelow(level) + w * size;
            for (std::size_t i = 0; i < size; ++i) {
                out[i] = cycle[i % (size - 1)].real();
                peak = std::max(peak, std::fabs(out[i]));
            }
        }
    }
    constexpr double fullScale = 32767;
    const double scale = fullScale / std::max(peak, 1.0);
    auto table = std::make_unique<Wavetable>();
    for (std::size_t i = 0; i < values.size(); ++i)
        table->data[i] = static_cast<std::int16_t>(std::lround(values[i] * scale));
    return table;
}

}  // namespace stratovane
