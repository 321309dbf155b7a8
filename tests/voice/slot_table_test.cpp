#include "voice/slot_table.h"

#include <gtest/gtest.h>

#include <set>
#include <vector>

#include "base/random.h"

namespace stratovane {
namespace {

struct Entry {
    int voice, element;
    bool operator==(const Entry&) const = default;
};

TEST(SlotTable, StaysSortedAndAPermutationLikeAPlainList) {
    SlotTable table;
    std::vector<Entry> model;  // the same operations on a vector
    Random random{7};
    const auto place = [&](int element) {
        auto at = model.begin();
        while (at != model.end() && at->element <= element) ++at;
        return at;
    };
    for (int step = 0; step < 100000; ++step) {
        const int element = 1 + random.draw() % 64;
        const int kind = random.draw() % 5;
        if (kind < 2 && table.active() < voicesPerPart) {
            const int slot = table.insert(element);
            model.insert(place(element), {table[slot].voice, element});
        } else if (table.active() > 0) {
            const int slot = random.draw() % table.active();
            const Entry taken = model[static_cast<std::size_t>(slot)];
            model.erase(model.begin() + slot);
            if (kind == 4) {
                const int moved = table.reinsert(slot, element);
                ASSERT_EQ(table[moved].voice, taken.voice);
                model.insert(place(element), {taken.voice, element});
            } else {
                table.free(slot);
            }
        }
        ASSERT_EQ(table.active(), static_cast<int>(model.size()));
        std::set<int> voices;
        for (int i = 0; i < voicesPerPart; ++i) {
            voices.insert(table[i].voice);
        }
        for (int i = 0; i < table.active(); ++i) {
            const Entry found{table[i].voice, table[i].element};
            ASSERT_EQ(found, model[static_cast<std::size_t>(i)]);
        }
        ASSERT_EQ(voices.size(), 64u);
    }
    for (int slot = 0; slot < voicesPerPart; ++slot)
        EXPECT_EQ(table.slotOf(table[slot].voice), slot < table.active() ? slot : -1);
}

}  // namespace
}  // namespace stratovane
