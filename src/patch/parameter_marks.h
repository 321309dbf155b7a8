// Which parameters wait for their owner to apply them.
#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>

#include "base/shared.h"

namespace stratovane {

/// Threads: any thread sets marks; one thread takes them.
/// Invariant: bits are set from the inside out (parameter, element, summary) and taken from the
/// outside in, so that a mark is never lost and what was stored before it is seen by the taker. A
/// summary bit may outlive its mark; the taker then looks once for nothing.
class ParameterMarks {
  public:
    static constexpr int elements = 69, indices = 256;

    void set(int element, int index) noexcept {
        const auto e = static_cast<std::size_t>(element), i = static_cast<std::size_t>(index);
        bits_[e][i / 32].set(1u << (i % 32));
        elements_[e / 32].set(1u << (e % 32));
        summary_.set(1u << (e / 32));
    }
    /// One load.
    bool any() const noexcept { return summary_.get() != 0; }

    /// Calls apply(element, index) for every mark in ascending order. Costs one load when there is
    /// none. Marks that `apply` sets itself are taken now or next time.
    template <class Apply>
    void take(Apply&& apply) {
        std::uint32_t groups = summary_.take();
        for (; groups != 0; groups &= groups - 1) {
            const int group = std::countr_zero(groups);
            std::uint32_t marked = elements_[static_cast<std::size_t>(group)].take();
            for (; marked != 0; marked &= marked - 1)
                takeElement(32 * group + std::countr_zero(marked), apply);
        }
    }

  private:
    template <class Apply>
    void takeElement(int element, Apply& apply) {
        auto& words = bits_[static_cast<std::size_t>(element)];
        for (std::size_t word = 0; word < words.size(); ++word)
            for (std::uint32_t bits = words[word].take(); bits != 0; bits &= bits - 1)
                apply(element, static_cast<int>(32 * word) + std::countr_zero(bits));
    }

    SharedBits summary_;
    std::array<SharedBits, 3> elements_;
    std::array<std::array<SharedBits, indices / 32>, elements> bits_;
};

}  // namespace stratovane
