#include "patch/zone_table.h"

#include <algorithm>

#include "base/units.h"

namespace stratovane {

ZoneTable makeZoneTable(float low, float high, float fade) {
    constexpr int full = 10000;
    const int first = choice(low, 127.9f);
    const int end = 1 + choice(high, 127.9f);
    const int step = full / (1 + choice(fade * fade, 127.9f));
    ZoneTable table{};
    for (int i = 0; i < 128; ++i) {
        const int below = full - step * (first - i);
        const int above = full - step * (i - end + 1);
        int gain = 0;
        if (end >= first)
            gain = i < first ? below : i < end ? full : above;
        else
            gain = i < end || i >= first ? full : std::max(above, below);
        table[static_cast<std::size_t>(i)] = static_cast<std::uint16_t>(std::max(gain, 0));
    }
    return table;
}

}  // namespace stratovane
