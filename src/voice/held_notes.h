// The keys that are down, in play order and sorted.
#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <span>

namespace stratovane {

/// A key is listed at most once; pressing a listed key again leaves its place. Audio thread.
class HeldNotes {
  public:
    int count() const { return count_; }
    /// Oldest first.
    std::span<const std::uint8_t> played() const { return {played_.data(), size()}; }
    /// Lowest first.
    std::span<const std::uint8_t> sorted() const { return {sorted_.data(), size()}; }
    bool contains(int note) const {
        return std::binary_search(sorted().begin(), sorted().end(), note);
    }
    /// `note` 0..127.
    void press(int note) {
        if (contains(note)) return;
        int place = count_;
        for (; place > 0 && sorted_[at(place - 1)] > note; --place)
            sorted_[at(place)] = sorted_[at(place - 1)];
        sorted_[at(place)] = static_cast<std::uint8_t>(note);
        played_[at(count_)] = static_cast<std::uint8_t>(note);
        ++count_;
    }
    void release(int note) {
        if (!contains(note)) return;
        const auto key = static_cast<std::uint8_t>(note);
        std::remove(sorted_.begin(), sorted_.begin() + count_, key);
        std::remove(played_.begin(), played_.begin() + count_, key);
        --count_;
    }

  private:
    static std::size_t at(int i) { return static_cast<std::size_t>(i); }
    std::size_t size() const { return at(count_); }

    std::array<std::uint8_t, 128> played_{}, sorted_{};
    int count_ = 0;
};

}  // namespace stratovane
