// A pointer that one thread publishes and another follows.
#pragma once

#include <atomic>

namespace stratovane {

/// What the pointee holds before `publish` is seen by whoever reads the pointer afterwards.
/// Wait-free on both sides. Any thread.
template <class T>
class Published {
  public:
    constexpr Published(T* pointer = nullptr) noexcept : pointer_{pointer} {}
    Published(const Published&) = delete;
    Published& operator=(const Published&) = delete;
    void publish(T* pointer) noexcept { pointer_.store(pointer, std::memory_order_release); }
    T* read() const noexcept { return pointer_.load(std::memory_order_acquire); }
    T* exchange(T* pointer) noexcept {
        return pointer_.exchange(pointer, std::memory_order_acq_rel);
    }

  private:
    std::atomic<T*> pointer_;
};

}  // namespace stratovane
