// Keeps a render and a change of rate out of each other's way.
#pragma once

#include <atomic>
#include <thread>

namespace stratovane {

/// The audio thread enters for a render or an event call and is turned away, at once, while the
/// gate is held; the UI thread holds it and waits for a render that runs to end. No lock: the audio
/// thread never waits.
class RenderGate {
  public:
    /// A stay of the audio thread; false when it must not render. Wait-free.
    class Pass {
      public:
        explicit Pass(RenderGate& gate) noexcept : gate_{gate} {
            State expected = State::open;
            entered_ = gate.state_.compare_exchange_strong(
                expected, State::rendering, std::memory_order_acquire, std::memory_order_relaxed);
            if (entered_) gate.renderer_.store(self(), std::memory_order_relaxed);
        }
        ~Pass() {
            if (!entered_) return;
            gate_.renderer_.store(nullptr, std::memory_order_relaxed);
            gate_.state_.store(State::open, std::memory_order_release);
        }
        Pass(const Pass&) = delete;
        Pass& operator=(const Pass&) = delete;
        explicit operator bool() const noexcept { return entered_; }

      private:
        RenderGate& gate_;
        bool entered_;
    };

    /// Holds the gate while it lives. Inside a render of the same thread it holds nothing and waits
    /// for nothing: the host called back out of it. UI thread.
    class Hold {
      public:
        explicit Hold(RenderGate& gate) noexcept : gate_{gate} {
            if (gate.renderer_.load(std::memory_order_relaxed) == self()) return;
            for (;;) {
                State expected = State::open;
                if (gate.state_.compare_exchange_weak(expected, State::held,
                                                      std::memory_order_acquire,
                                                      std::memory_order_relaxed))
                    break;
                std::this_thread::yield();
            }
            held_ = true;
        }
        ~Hold() {
            if (held_) gate_.state_.store(State::open, std::memory_order_release);
        }
        Hold(const Hold&) = delete;
        Hold& operator=(const Hold&) = delete;

      private:
        RenderGate& gate_;
        bool held_ = false;
    };

  private:
    enum class State { open, rendering, held };
    /// An address that differs from thread to thread.
    static const void* self() noexcept {
        static thread_local const char here = 0;
        return &here;
    }
    std::atomic<State> state_{State::open};
    std::atomic<const void*> renderer_{nullptr};
};

}  // namespace stratovane
