// The encoder's search: a path through the step widths, the best one into each width kept.

#include <array>
#include <cmath>
#include <cstddef>
#include <limits>

#include "content/adaptive_delta.h"

namespace stratovane {

namespace {

constexpr int shifts = 17;                    // 64 × 2^16 units cross the whole range in one step
constexpr std::size_t framesAhead = 1 << 16;  // decided at once; bounds the memory
constexpr std::int32_t lowest = -DeltaState::recordBias;
constexpr std::int32_t highest = 0xFFFFFF - DeltaState::recordBias;

std::int32_t inUnits(float value) {
    const float limited = std::isfinite(value) ? std::clamp(value, -1.0f, 1.0f) : 0.0f;
    return static_cast<std::int32_t>(std::lround(limited / DeltaState::unit));
}

struct Path {
    std::int32_t value = 0;
    double cost = std::numeric_limits<double>::infinity();  // squared error so far
};
struct Origin {
    std::uint8_t byte = 0, shift = 0;  // how a path came here, and from which shift
};
using Paths = std::array<Path, shifts>;
using Origins = std::array<Origin, shifts>;

/// The multiple of 2^shift nearest to `wanted`, within bounds.
std::int32_t nearestStep(std::int32_t wanted, int shift, std::int32_t low, std::int32_t high) {
    const auto steps = static_cast<std::int32_t>(
        std::lround(static_cast<double>(wanted) / static_cast<double>(1 << shift)));
    return std::clamp(steps, low, high);
}

/// Extends every path by one frame towards `target`.
void extend(const Paths& from, std::int32_t target, Paths& to, Origins& origins) {
    to = {};
    for (int shift = 0; shift < shifts; ++shift) {
        const Path& path = from[static_cast<std::size_t>(shift)];
        if (!std::isfinite(path.cost)) continue;
        const std::int32_t wanted = target - path.value;
        auto offer = [&](int base, std::int32_t step, int stepShift, int nextShift) {
            if (nextShift >= shifts) return;
            const std::int32_t value = path.value + step * (1 << stepShift);
            if (value < lowest || value > highest) return;
            const double error = value - target, cost = path.cost + error * error;
            Path& best = to[static_cast<std::size_t>(nextShift)];
            if (cost >= best.cost) return;
            best = {value, cost};
            origins[static_cast<std::size_t>(nextShift)] = {static_cast<std::uint8_t>(base + step),
                                                            static_cast<std::uint8_t>(shift)};
        };
        constexpr int plain = 64, doubled = 192;
        offer(plain, nearestStep(wanted, shift, -32, 31), shift, shift > 0 ? shift - 1 : 0);
        offer(plain, nearestStep(wanted, shift, -64, -33), shift, shift);
        offer(plain, nearestStep(wanted, shift, 32, 63), shift, shift);
        offer(doubled, nearestStep(wanted, shift + 1, -64, 63), shift + 1, shift + 1);
    }
}

}  // namespace

Bytes encodeAdaptiveDelta(std::span<const float> values, DeltaState& first) {
    Bytes bytes(values.size());
    first = {};
    if (values.empty()) return bytes;
    Paths paths;  // any width may begin
    for (Path& path : paths) path = {inUnits(values[0]), 0};
    std::vector<Origins> history;
    for (std::size_t start = 0; start < values.size(); start += framesAhead) {
        const std::size_t count = std::min(framesAhead, values.size() - start);
        history.assign(count, {});
        for (std::size_t i = 0; i < count; ++i) {
            const std::size_t next = std::min(start + i + 1, values.size() - 1);
            Paths extended;
            extend(paths, inUnits(values[next]), extended, history[i]);
            paths = extended;
        }
        std::size_t shift = 0;
        for (std::size_t s = 1; s < shifts; ++s)
            if (paths[s].cost < paths[shift].cost) shift = s;
        Paths kept;
        kept[shift] = {paths[shift].value, 0};
        paths = kept;
        for (std::size_t i = count; i-- > 0;) {
            bytes[start + i] = history[i][shift].byte;
            shift = history[i][shift].shift;
        }
        if (start == 0)
            first = {static_cast<float>(inUnits(values[0])) * DeltaState::unit,
                     static_cast<std::int32_t>(shift)};
    }
    return bytes;
}

}  // namespace stratovane
