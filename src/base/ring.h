// A bounded queue that any thread may fill and one thread drains.
#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>

namespace stratovane {

/// Each slot carries a sequence number that tells whose turn it is (after D. Vyukov's bounded
/// queue): a writer claims an index by compare-exchange, fills its slot and releases it; the reader
/// takes slots in order and never sees one half-written. Holds `capacity` items (a power of two).
template <class T, std::size_t capacity>
class Ring {
    static_assert((capacity & (capacity - 1)) == 0);

  public:
    Ring() noexcept {
        for (std::size_t i = 0; i < capacity; ++i)
            slots_[i].turn.store(static_cast<std::uint32_t>(i), std::memory_order_relaxed);
    }
    Ring(const Ring&) = delete;
    Ring& operator=(const Ring&) = delete;

    /// False, and nothing stored, when the ring is full. Lock-free. Any thread.
    bool push(const T& item) noexcept {
        std::uint32_t at = write_.load(std::memory_order_relaxed);
        for (;;) {
            Slot& slot = slots_[at % capacity];
            const std::uint32_t turn = slot.turn.load(std::memory_order_acquire);
            const auto ahead = static_cast<std::int32_t>(turn - at);
            if (ahead < 0) return false;
            if (ahead > 0)
                at = write_.load(std::memory_order_relaxed);
            else if (write_.compare_exchange_weak(at, at + 1, std::memory_order_relaxed)) {
                slot.item = item;
                slot.turn.store(at + 1, std::memory_order_release);
                return true;
            }
        }
    }
    /// False when nothing waits. Wait-free. The one reading thread.
    bool pop(T& item) noexcept {
        Slot& slot = slots_[read_ % capacity];
        if (slot.turn.load(std::memory_order_acquire) != read_ + 1) return false;
        item = slot.item;
        slot.turn.store(read_ + static_cast<std::uint32_t>(capacity), std::memory_order_release);
        ++read_;
        return true;
    }
    /// Whether nothing waits. The one reading thread.
    bool empty() const noexcept {
        return slots_[read_ % capacity].turn.load(std::memory_order_acquire) != read_ + 1;
    }

  private:
    struct Slot {
        std::atomic<std::uint32_t> turn;
        T item{};
    };
    std::array<Slot, capacity> slots_;
    std::atomic<std::uint32_t> write_{0};
    std::uint32_t read_ = 0;  // the reading thread's alone
};

}  // namespace stratovane
