// Text written into a caller's buffer, without allocation and whatever the locale.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>
#include <type_traits>

namespace stratovane {

/// Appends to a fixed buffer, always NUL-terminated; what does not fit is dropped (see `cut`). Any
/// thread.
class TextOut {
  public:
    /// `buffer` must hold at least one character; it becomes the empty text.
    explicit TextOut(std::span<char> buffer) noexcept;

    /// A subset of printf: %d %ld %X %c %s and %f, with the flag '+', a width (zero-filled when it
    /// begins with '0' or stands as a precision of %d) and a precision of %f. Digits are printf's
    /// of the C locale.
    template <class... A>
    void print(std::string_view format, A... arguments) noexcept {
        if constexpr (sizeof...(A) == 0) {
            printArguments(format, nullptr, 0);
        } else {
            const Argument list[] = {Argument{arguments}...};
            printArguments(format, list, sizeof...(A));
        }
    }
    void text(std::string_view text) noexcept;

    std::string_view view() const noexcept { return {buffer_.data(), length_}; }
    /// Whether something did not fit.
    bool cut() const noexcept { return cut_; }

  private:
    struct Argument {
        enum class Kind { integer, number, text } kind;
        std::int64_t integer = 0;
        double number = 0;
        std::string_view text{};
        template <class T>
        requires std::is_integral_v<T> Argument(T value)
            : kind{Kind::integer}, integer{static_cast<std::int64_t>(value)} {}
        Argument(float value) : kind{Kind::number}, number{static_cast<double>(value)} {}
        Argument(double value) : kind{Kind::number}, number{value} {}
        Argument(std::string_view value) : kind{Kind::text}, text{value} {}
        Argument(const char* value) : kind{Kind::text}, text{value} {}
    };
    void printArguments(std::string_view format, const Argument* list, std::size_t count) noexcept;

    std::span<char> buffer_;
    std::size_t length_ = 0;
    bool cut_ = false;
};

}  // namespace stratovane
