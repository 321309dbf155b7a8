// Values that one thread writes and another reads.
#pragma once

#include <atomic>
#include <cstdint>
#include <type_traits>

namespace stratovane {

/// A value that one thread writes and another reads, where any recent value will do. Any thread.
/// Relaxed: it orders nothing else; hand-overs use acquire/release instead. There is no `+=`, which
/// would read and write in two steps; SharedCounter and SharedBits do that in one.
template <class T>
class Shared {
    static_assert(std::is_trivially_copyable_v<T> && sizeof(T) <= 4);
    static_assert(std::atomic<T>::is_always_lock_free);

  public:
    constexpr Shared(T value = {}) noexcept : value_{value} {}
    Shared(const Shared&) = delete;
    Shared& operator=(const Shared& other) noexcept {
        *this = other.get();
        return *this;
    }
    T operator=(T value) noexcept {
        value_.store(value, std::memory_order_relaxed);
        return value;
    }
    operator T() const noexcept { return get(); }
    T get() const noexcept { return value_.load(std::memory_order_relaxed); }

  private:
    std::atomic<T> value_;
};

/// A counter that several threads bump; readers compare it with the count they saw last. Any
/// thread.
class SharedCounter {
  public:
    std::uint32_t bump() noexcept { return count_.fetch_add(1, std::memory_order_release) + 1; }
    std::uint32_t get() const noexcept { return count_.load(std::memory_order_acquire); }

  private:
    std::atomic<std::uint32_t> count_{0};
};

/// A word of flags that several threads set and one takes. Any thread.
/// `set` releases and `take` acquires: what was written before a flag was set is seen after it is
/// taken.
class SharedBits {
  public:
    constexpr SharedBits(std::uint32_t bits = 0) noexcept : bits_{bits} {}
    void set(std::uint32_t bits) noexcept { bits_.fetch_or(bits, std::memory_order_release); }
    std::uint32_t clear(std::uint32_t bits) noexcept {
        return bits_.fetch_and(~bits, std::memory_order_acq_rel);
    }
    std::uint32_t take() noexcept {
        return bits_.load(std::memory_order_relaxed) == 0
                   ? 0
                   : bits_.exchange(0, std::memory_order_acq_rel);
    }
    std::uint32_t get() const noexcept { return bits_.load(std::memory_order_acquire); }
    void store(std::uint32_t bits) noexcept { bits_.store(bits, std::memory_order_release); }
    /// Replaces `expected` by `wanted`; on failure stores what is there into `expected`.
    bool replace(std::uint32_t& expected, std::uint32_t wanted) noexcept {
        return bits_.compare_exchange_strong(expected, wanted, std::memory_order_acq_rel,
                                             std::memory_order_acquire);
    }

  private:
    std::atomic<std::uint32_t> bits_;
};

}  // namespace stratovane
