#include "base/text_out.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstring>

namespace stratovane {

TextOut::TextOut(std::span<char> buffer) noexcept : buffer_{buffer} { buffer_[0] = '\0'; }

void TextOut::text(std::string_view text) noexcept {
    const std::size_t room = buffer_.size() - 1 - length_;
    const std::size_t taken = std::min(room, text.size());
    // An empty view may point nowhere, which memcpy must not be given.
    if (taken > 0) std::memcpy(buffer_.data() + length_, text.data(), taken);
    length_ += taken;
    buffer_[length_] = '\0';
    cut_ = cut_ || taken < text.size();
}

namespace {

struct Directive {
    bool plus = false, zeros = false;
    int width = 0;
    int precision = -1;
    char letter = 0;
};

Directive parse(std::string_view format, std::size_t& at) {
    Directive d;
    auto number = [&] {
        int n = 0;
        while (at < format.size() && format[at] >= '0' && format[at] <= '9')
            n = n * 10 + (format[at++] - '0');
        return n;
    };
    while (at < format.size() && (format[at] == '+' || format[at] == '0')) {
        (format[at] == '+' ? d.plus : d.zeros) = true;
        ++at;
    }
    d.width = number();
    if (at < format.size() && format[at] == '.') {
        ++at;
        d.precision = number();
    }
    while (at < format.size() && format[at] == 'l') ++at;
    if (at < format.size()) d.letter = format[at++];
    return d;
}

}  // namespace

void TextOut::printArguments(std::string_view format, const Argument* list,
                             std::size_t count) noexcept {
    std::size_t next = 0;
    for (std::size_t at = 0; at < format.size();) {
        const std::size_t percent = std::min(format.find('%', at), format.size());
        text(format.substr(at, percent - at));
        at = percent + 1;
        if (at >= format.size()) break;
        if (format[at] == '%') {
            text("%");
            ++at;
            continue;
        }
        const Directive d = parse(format, at);
        if (next >= count) break;
        const Argument& argument = list[next++];
        if (argument.kind == Argument::Kind::text) {
            text(argument.text);
            continue;
        }
        if (d.letter == 'c') {
            const char c = static_cast<char>(argument.integer);
            text({&c, 1});
            continue;
        }
        char digits[352];  // the longest double printed plainly has 309 digits before the point
        char* end = digits;
        bool negative = false;
        if (d.letter == 'f') {
            const double value = argument.kind == Argument::Kind::number
                                     ? argument.number
                                     : static_cast<double>(argument.integer);
            negative = std::signbit(value) && !std::isnan(value);
            end = std::to_chars(digits, digits + sizeof digits, std::fabs(value),
                                std::chars_format::fixed,
                                d.precision < 0 ? 6 : std::min(d.precision, 20))
                      .ptr;
        } else {
            const std::int64_t value = argument.kind == Argument::Kind::integer
                                           ? argument.integer
                                           : static_cast<std::int64_t>(argument.number);
            negative = value < 0 && d.letter != 'X';
            std::uint64_t magnitude = static_cast<std::uint64_t>(value);
            if (negative) magnitude = 0 - magnitude;
            if (d.letter == 'X') magnitude &= 0xFFFFFFFFu;
            end =
                std::to_chars(digits, digits + sizeof digits, magnitude, d.letter == 'X' ? 16 : 10)
                    .ptr;
            if (d.letter == 'X')
                for (char* c = digits; c < end; ++c)
                    if (*c >= 'a') *c = static_cast<char>(*c - 'a' + 'A');
        }
        const int length = static_cast<int>(end - digits);
        const bool sign = negative || d.plus;
        int zeros = 0;
        if (d.letter != 'f' && d.precision > length) zeros = d.precision - length;
        const int pad = d.width - length - zeros - (sign ? 1 : 0);
        if (!d.zeros)
            for (int i = 0; i < pad; ++i) text(" ");
        if (sign) text(negative ? "-" : "+");
        if (d.zeros)
            for (int i = 0; i < pad; ++i) text("0");
        for (int i = 0; i < zeros; ++i) text("0");
        text({digits, static_cast<std::size_t>(length)});
    }
}

}  // namespace stratovane
