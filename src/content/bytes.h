// Little-endian numbers in blocks of bytes, read and written without leaving the block.
#pragma once

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

namespace stratovane {

// Sample frames are played from the bytes of the file as they stand.
static_assert(std::endian::native == std::endian::little);

using Bytes = std::vector<std::uint8_t>;

/// A block of bytes that others wrote. Offsets and sizes are 64-bit, so sums of numbers that a file
/// holds cannot wrap. Any thread.
class ByteView {
  public:
    constexpr ByteView() = default;
    constexpr ByteView(std::span<const std::uint8_t> bytes) : bytes_{bytes} {}
    ByteView(const Bytes& bytes) : bytes_{bytes} {}

    std::uint64_t size() const { return bytes_.size(); }
    const std::uint8_t* data() const { return bytes_.data(); }
    bool has(std::uint64_t offset, std::uint64_t count) const {
        return offset <= bytes_.size() && count <= bytes_.size() - offset;
    }
    /// The number at an offset; 0 when it does not lie inside.
    template <class T>
    T at(std::uint64_t offset) const {
        static_assert(std::is_trivially_copyable_v<T>);
        T value{};
        if (has(offset, sizeof(T)))
            std::memcpy(&value, bytes_.data() + static_cast<std::size_t>(offset), sizeof(T));
        return value;
    }
    /// `count` bytes from an offset, cut where the block ends.
    ByteView part(std::uint64_t offset, std::uint64_t count) const {
        const auto start = static_cast<std::size_t>(std::min(offset, size()));
        return bytes_.subspan(start, static_cast<std::size_t>(std::min(count, size() - start)));
    }
    ByteView from(std::uint64_t offset) const { return part(offset, size()); }
    std::string_view text() const {
        return {reinterpret_cast<const char*>(bytes_.data()), bytes_.size()};
    }
    /// The text up to the first NUL, or all of it.
    std::string_view terminatedText() const { return text().substr(0, text().find('\0')); }

  private:
    std::span<const std::uint8_t> bytes_{};
};

/// Appends to a block of bytes. Any thread. What lets it grow is kept out of line: it is called
/// once a field, from everywhere, and no caller is the faster for having the vector's growth in it.
class ByteWriter {
  public:
    std::size_t size() const { return bytes_.size(); }
    void append(std::span<const std::uint8_t> bytes);
    void zeros(std::size_t count);
    /// Zeros up to a size; what is longer stays.
    void fillTo(std::size_t wanted);
    template <class T>
    void put(T value) {
        static_assert(std::is_trivially_copyable_v<T>);
        append(std::bit_cast<std::array<std::uint8_t, sizeof(T)>>(value));
    }
    template <class T>
    void putAt(std::size_t offset, T value) {
        fillTo(offset + sizeof(T));
        std::memcpy(bytes_.data() + offset, &value, sizeof(T));
    }
    /// A text field of a fixed size, cut so that a NUL ends it.
    void text(std::string_view text, std::size_t field) {
        const std::size_t length = std::min(text.size(), field - 1);
        append({reinterpret_cast<const std::uint8_t*>(text.data()), length});
        zeros(field - length);
    }
    Bytes take() { return std::move(bytes_); }

  private:
    Bytes bytes_;
};

}  // namespace stratovane
