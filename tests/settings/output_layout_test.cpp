#include <gtest/gtest.h>

#include "settings/settings.h"

using namespace stratovane;

namespace {

TEST(OutputLayout, ChoicesForAPair) {
    const struct {
        const char* before;
        int pair;
        char letter;
        const char* after;
    } cases[] = {
        {"SSSS", 1, 'M', "SMSS"},   {"SSSS", 2, 0, "SS"},
        {"SSSS", 0, 0, "SSSS"},     {"SS", 4, 'M', "SSMMM"},
        {"SSSS", 2, 'Q', "SSQQ"},   {"SSSS", 3, 'Q', "SSQQ"},
        {"SSSS", 4, 'Q', "SSSSQQ"}, {"SSSS", 5, 'Q', "SSSSQQ"},
        {"SSQQ", 3, 'S', "SSSS"},   {"QQS", 0, 'M', "MMS"},
        {"SSQQS", 3, 0, "SS"},      {"SSQQS", 2, 0, "SS"},
        {"QQSS", 1, 0, "S"},        {"S", 15, 'Q', "SQQQQQQQQQQQQQQQ"},
        {"SSSS", 16, 'M', "SSSS"},  {"SSSS", -1, 'M', "SSSS"},
        {"SSSS", 1, 'x', "SSSS"},
    };
    for (const auto& c : cases) {
        OutputLayout layout{c.before};
        layout.edit(c.pair, c.letter);
        EXPECT_EQ(layout.letters, c.after) << c.before << ' ' << c.pair << ' ' << c.letter;
    }
}

}  // namespace
