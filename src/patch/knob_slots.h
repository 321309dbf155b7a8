// An element's two knob inputs and the four parameters they move.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>

#include "base/units.h"
#include "patch/parameter_ids.h"

namespace stratovane {

enum class KnobMode : std::int32_t { positive, negative, bipolar, toggle };

/// What a knob's position 0..1 means to a slot: at most -1..1.
constexpr float slotValue(KnobMode mode, float position) {
    switch (mode) {
        case KnobMode::positive:
            return position;
        case KnobMode::negative:
            return position - 1;
        case KnobMode::bipolar:
            return position - 0.5f;
        case KnobMode::toggle:
            return isOn(position) ? 1.0f : 0.0f;
    }
    return 0;
}

struct KnobSlot {
    float value = 0;
    std::array<int, 2> destinations{elementIndex::firstRouted, elementIndex::firstRouted};
    std::array<float, 2> depths{};  // -1..1

    bool operator==(const KnobSlot&) const = default;
};

/// Owner of the element's controls.
struct KnobSlots {
    static constexpr int count = 2;

    std::array<KnobSlot, count> slots;
    std::array<int, count> knobs{};  // 1..6; others are not connected
    bool applying = false;           // destinations are being set: a knob number among them too
    /// By parameter: bit 2 * slot + i is set where destination i of a slot points.
    std::array<std::uint8_t, 256> routes{};

    KnobSlots() { routes[elementIndex::firstRouted] = 0xF; }

    void point(int slot, int i, int destination) {
        int& held = slots[static_cast<std::size_t>(slot)].destinations[static_cast<std::size_t>(i)];
        const auto bit = static_cast<std::uint8_t>(1u << (2 * slot + i));
        routes[static_cast<std::size_t>(held)] &= static_cast<std::uint8_t>(~bit);
        held = destination;
        routes[static_cast<std::size_t>(held)] |= bit;
    }
    /// A parameter's stored value as the knobs leave it.
    float routed(int index, float v) const {
        const std::uint8_t bits = routes[static_cast<std::size_t>(index)];
        if (bits == 0) return v;
        for (std::size_t i = 0; i < 2 * count; ++i) {
            const KnobSlot& slot = slots[i / 2];
            if (bits & (1u << i)) v += slot.depths[i % 2] * slot.value;
        }
        return std::clamp(v, 0.0f, 1.0f);
    }
};

}  // namespace stratovane
