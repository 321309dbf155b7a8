// The keys an arpeggiator plays on: those held, and those let go that a latch keeps.
#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <span>

namespace stratovane {

struct ArpeggiatorKey {
    std::uint8_t note = 0, velocity = 0;
    bool held = false;  // false: let go, kept by a latch
};

/// At most sixteen, each key once. Audio thread.
class ArpeggiatorKeys {
  public:
    static constexpr int capacity = 16;

    int count() const { return count_; }
    bool empty() const { return count_ == 0; }
    /// Oldest first.
    std::span<const ArpeggiatorKey> played() const { return {played_.data(), size()}; }
    /// Lowest first.
    std::span<const ArpeggiatorKey> sorted() const { return {sorted_.data(), size()}; }
    bool anyHeld() const { return std::ranges::any_of(played(), &ArpeggiatorKey::held); }

    /// False, and nothing changed, for a key that is listed and for one too many.
    bool press(int note, int velocity) {
        if (count_ == capacity || find(note) != end()) return false;
        *end() = {static_cast<std::uint8_t>(note), static_cast<std::uint8_t>(velocity), true};
        ++count_;
        sort();
        return true;
    }
    void remove(int note) {
        removeIf([note](const ArpeggiatorKey& key) { return key.note == note; });
    }
    /// The key is up but stays.
    void latch(int note) {
        if (ArpeggiatorKey* key = find(note); key != end()) key->held = false;
        sort();
    }
    void dropReleased() {
        removeIf([](const ArpeggiatorKey& key) { return !key.held; });
    }
    void clear() { count_ = 0; }

  private:
    std::size_t size() const { return static_cast<std::size_t>(count_); }
    ArpeggiatorKey* end() { return played_.data() + count_; }
    ArpeggiatorKey* find(int note) {
        return std::find_if(played_.data(), end(),
                            [note](const ArpeggiatorKey& key) { return key.note == note; });
    }
    template <class Condition>
    void removeIf(Condition condition) {
        count_ =
            static_cast<int>(std::remove_if(played_.data(), end(), condition) - played_.data());
        sort();
    }
    void sort() {
        sorted_ = played_;
        std::sort(sorted_.begin(), sorted_.begin() + count_,
                  [](const ArpeggiatorKey& a, const ArpeggiatorKey& b) { return a.note < b.note; });
    }

    std::array<ArpeggiatorKey, capacity> played_{}, sorted_{};
    int count_ = 0;
};

}  // namespace stratovane
