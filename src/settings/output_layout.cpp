#include <algorithm>

#include "base/units.h"
#include "settings/settings.h"

namespace stratovane {

void OutputLayout::edit(int pair, char letter) {
    constexpr char off = '\0';
    if (pair < 0 || pair >= maxOutputPairs) return;
    if (letter != 'S' && letter != 'M' && letter != 'Q' && (letter != off || pair == 0)) return;

    // Worked out on the full row, in which the first pair that is off ends the layout.
    std::string row = letters;
    row.resize(maxOutputPairs, off);
    const auto at = [&row](int i) -> char& { return row[static_cast<std::size_t>(i)]; };
    const bool wasQuad = at(pair) == 'Q';
    const int partner = pair ^ 1;

    for (int i = 0; i < pair; ++i)
        if (at(i) == off) at(i) = letter;
    at(pair) = letter;
    if (letter == 'Q' || wasQuad) at(partner) = letter;
    if (at(0) == off) at(0) = 'S';
    letters = row.substr(0, row.find(off));
}

}  // namespace stratovane
