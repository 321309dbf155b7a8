// Diagnostic lines of one instance, chosen by level bits.
#pragma once

#include <array>
#include <cstdint>

#include "base/ring.h"
#include "base/shared.h"
#include "base/text_out.h"

namespace stratovane {

enum class TraceLevel : std::uint32_t {
    warning = 1,
    lifecycle = 2,
    midi = 4,
    transport = 8,
    content = 16,
    patch = 32,
    editor = 64,
};

/// Writes lines of the levels in its mask, each "SV2 ", the text and a line feed, to a sink.
/// Threads: `write` on the UI thread; `later` on the audio thread, which stores the numbers in a
/// ring that `flush` (UI thread) writes out. A full ring loses lines, never time.
class Trace {
  public:
    using Sink = void (*)(const char* line);  // receives the finished line; UI thread

    explicit Trace(Sink sink = nullptr) noexcept : sink_{sink} {}
    void setSink(Sink sink) noexcept { sink_ = sink; }
    void setMask(std::uint32_t mask) noexcept { mask_ = mask; }
    bool on(TraceLevel level) const noexcept {
        return (mask_.get() & static_cast<std::uint32_t>(level)) != 0;
    }

    template <class... A>
    void write(TraceLevel level, std::string_view format, A... arguments) {
        if (!on(level) || sink_ == nullptr) return;
        char line[512];
        TextOut out{std::span{line, sizeof line - 1}};
        out.text("SV2 ");
        out.print(format, arguments...);
        emit(line, out.view().size());
    }

    /// `format` must be a literal: only its address is kept. At most five numbers.
    template <class... A>
    void later(TraceLevel level, const char* format, A... numbers) noexcept {
        static_assert(sizeof...(A) <= 5);
        if (!on(level)) return;
        lines_.push(Line{level, format, {static_cast<double>(numbers)...}});
    }
    void flush() {
        Line line;
        while (lines_.pop(line))
            write(line.level, line.format, line.numbers[0], line.numbers[1], line.numbers[2],
                  line.numbers[3], line.numbers[4]);
    }

  private:
    struct Line {
        TraceLevel level = TraceLevel::warning;
        const char* format = nullptr;
        std::array<double, 5> numbers{};
    };
    void emit(char* line, std::size_t length) const {
        line[length] = '\n';
        line[length + 1] = '\0';
        sink_(line);
    }

    Sink sink_;
    Shared<std::uint32_t> mask_{1};
    Ring<Line, 64> lines_;
};

}  // namespace stratovane
