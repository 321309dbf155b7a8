// A plain radix-2 Fourier transform for tables and measurements; nothing that renders uses it.
#pragma once

#include <cmath>
#include <complex>
#include <cstddef>
#include <numbers>
#include <utility>
#include <vector>

namespace stratovane {

/// Transforms in place; the size must be a power of two. `sign` -1 is forward, +1 backward; neither
/// scales. Any thread.
inline void fft(std::vector<std::complex<double>>& x, int sign) {
    const std::size_t n = x.size();
    for (std::size_t i = 1, j = 0; i < n; ++i) {  // bit-reversed order
        std::size_t bit = n >> 1;
        for (; j & bit; bit >>= 1) j ^= bit;
        j ^= bit;
        if (i < j) std::swap(x[i], x[j]);
    }
    std::vector<std::complex<double>> turns(n / 2);
    for (std::size_t i = 0; i < turns.size(); ++i)
        turns[i] = std::polar(
            1.0, sign * 2 * std::numbers::pi * static_cast<double>(i) / static_cast<double>(n));
    for (std::size_t half = 1; half < n; half *= 2) {
        const std::size_t stride = n / (2 * half);
        for (std::size_t start = 0; start < n; start += 2 * half) {
            for (std::size_t i = 0; i < half; ++i) {
                // Spelled out: the library's product checks for infinities.
                const std::complex<double> w = turns[i * stride], b = x[start + half + i];
                const std::complex<double> t{w.real() * b.real() - w.imag() * b.imag(),
                                             w.real() * b.imag() + w.imag() * b.real()};
                x[start + half + i] = x[start + i] - t;
                x[start + i] += t;
            }
        }
    }
}

}  // namespace stratovane
