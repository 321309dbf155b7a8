#include "base/text_out.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <limits>
#include <random>
#include <string>
#include <vector>

using namespace stratovane;

namespace {

template <class... A>
std::string printed(const char* format, A... arguments) {
    char buffer[512];
    TextOut out{buffer};
    out.print(format, arguments...);
    EXPECT_FALSE(out.cut());
    return buffer;
}

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
#pragma GCC diagnostic ignored "-Wformat-security"
template <class... A>
std::string expected(const char* format, A... arguments) {
    char buffer[512];
    std::snprintf(buffer, sizeof buffer, format, arguments...);
    return buffer;
}
#pragma GCC diagnostic pop

TEST(TextOut, DecimalsAreThoseOfPrintf) {
    std::mt19937 random{1};
    std::uniform_real_distribution<double> mantissa{-1, 1};
    std::uniform_int_distribution<int> exponent{-40, 60};
    std::vector<double> values{0.0,  -0.0, 0.5,   1.5, 2.5,  -0.5, 0.05,
                               0.15, 0.25, 0.995, 1e9, 1e17, 1e300};
    for (int i = 0; i < 4000; ++i) values.push_back(std::ldexp(mantissa(random), exponent(random)));
    // Halves of every size: the digits are those of the exact value, ties to even.
    for (int i = 0; i < 2000; ++i) values.push_back((i - 1000) / 8.0 + 0.5);
    for (double v : values)
        for (const char* f :
             {"%f", "%.0f", "%.1f", "%.2f", "%+.1f", "%+.0f", "%5.1f", "%08.3f", "%+07.2f", "%.9f"})
            ASSERT_EQ(printed(f, v), expected(f, v)) << f;
    using limits = std::numeric_limits<double>;
    for (double v : {limits::infinity(), -limits::infinity(), limits::quiet_NaN(), limits::max(),
                     limits::denorm_min()})
        for (const char* f : {"%.2f", "%+.1f", "%6.0f"}) EXPECT_EQ(printed(f, v), expected(f, v));
    EXPECT_EQ(printed("%.3f", 0.1f), expected("%.3f", double(0.1f)));
}

TEST(TextOut, IntegersAreThoseOfPrintf) {
    std::mt19937 random{2};
    std::vector<int> values{0,
                            1,
                            -1,
                            9,
                            10,
                            -10,
                            127,
                            std::numeric_limits<int>::max(),
                            std::numeric_limits<int>::min()};
    for (int i = 0; i < 2000; ++i) values.push_back(static_cast<int>(random()) >> (i % 31));
    for (int v : values) {
        for (const char* f : {"%d", "%+d", "%5d", "%02d", "%03d", "%.3d", "%+06d", "%X", "%04X"})
            ASSERT_EQ(printed(f, v), expected(f, v)) << f;
        ASSERT_EQ(printed("%ld", long{v} * 65537), expected("%ld", long{v} * 65537));
    }
}

TEST(TextOut, MixesKindsAndStopsWithoutArguments) {
    EXPECT_EQ(printed("%s %d%%%c|%s", "Part", 7, 'L', std::string_view{"text", 2}), "Part 7%L|te");
    EXPECT_EQ(printed("100 %"), "100 ");
    EXPECT_EQ(printed("a %d b %d c", 1), "a 1 b ");
    EXPECT_EQ(printed("%.1f", 3), "3.0");
}

TEST(TextOut, NeverWritesBeyondItsBuffer) {
    for (std::size_t size = 1; size < 24; ++size) {
        char buffer[32];
        std::fill(std::begin(buffer), std::end(buffer), '#');
        TextOut out{std::span{buffer, size}};
        out.print("%s=%+.2f dB", "Level", -12.5f);
        const std::string whole = "Level=-12.50 dB";
        EXPECT_EQ(out.view(), whole.substr(0, size - 1));
        EXPECT_EQ(out.cut(), size <= whole.size());
        EXPECT_EQ(buffer[out.view().size()], '\0');
        EXPECT_EQ(buffer[size], '#');
    }
}

}  // namespace
