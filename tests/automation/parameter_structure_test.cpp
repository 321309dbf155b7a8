#include "automation/parameter_structure.h"

#include <gtest/gtest.h>

#include <map>
#include <sstream>
#include <vector>

#include "automation/host_rows.h"

namespace stratovane {
namespace {

struct Found {
    int id;
    std::string place;  // groups and name, with slashes between
};

/// Reads the text as strictly as it is written: one element a line, properly nested.
std::vector<Found> parse(const std::string& text) {
    std::vector<Found> found;
    std::vector<std::string> open;
    std::istringstream lines{text};
    bool inside = false;
    for (std::string line; std::getline(lines, line);) {
        const std::string element = line.substr(line.find_first_not_of(' '));
        const auto attribute = [&element](const std::string& name) {
            const std::size_t at = element.find(" " + name + "=\"");
            if (at == element.npos) return std::string{"missing"};
            const std::size_t from = at + name.size() + 3;
            return element.substr(from, element.find('"', from) - from);
        };
        if (element.starts_with("<!--")) {
            EXPECT_TRUE(element.ends_with("-->") && !inside) << line;
        } else if (element == "<MRXParametersStructure>") {
            EXPECT_FALSE(inside);
            inside = true;
        } else if (element == "</MRXParametersStructure>") {
            EXPECT_TRUE(inside && open.empty());
            inside = false;
        } else if (element.starts_with("<Group ")) {
            EXPECT_TRUE(inside && element.ends_with("\">")) << line;
            open.push_back(attribute("name"));
        } else if (element == "</Group>") {
            if (open.empty()) {
                ADD_FAILURE() << "closes too much";
                return found;
            }
            open.pop_back();
        } else {
            EXPECT_TRUE(inside && element.starts_with("<Param ") && element.ends_with("/>"))
                << line;
            EXPECT_EQ(attribute("label"), "") << line;
            std::string place;
            for (const std::string& group : open) place += group + "/";
            found.push_back({std::stoi(attribute("id")), place + attribute("name")});
        }
    }
    EXPECT_FALSE(inside);
    return found;
}

TEST(ParameterStructure, ListsEachParameterOnceInOrder) {
    const std::vector<Found> all = parse(parameterStructure());
    std::map<int, std::string> places;
    for (const Found& f : all) EXPECT_TRUE(places.insert({f.id, f.place}).second) << f.id;
    for (int id = 0; id < hostParameters; ++id) {
        const HostAddress a = decodeHostIndex(id);
        const bool listed = a.block != HostBlock::strip || (a.row < 48 && a.row != strip::lock);
        EXPECT_EQ(places.count(id), listed ? 1u : 0u) << id;
    }
    const std::pair<int, const char*> samples[] = {
        {0, "Master Volume"},
        {152, "Channel 2/Link Switch"},
        {1, "Channel 1/Mute"},
        {14, "Channel 1/Stratoknob 6"},
        {152 * 15 + 15, "Channel 16/MIDI/Low Key"},
        {26, "Channel 1/MIDI/Level Trim"},
        {23, "Channel 1/MIDI/Polyphony"},
        {28, "Channel 1/MIDI/Pitchbend Down"},
        {39, "Channel 1/Arpeggiator/On"},
        {45, "Channel 1/Arpeggiator/Rate"},
        {47, "Channel 1/Arpeggiator/Swing"},
        {38, "Channel 1/Microtuning/Tuning2 Depth"},
        {5, "Channel 1/FX Send 1"},
        {24, "Channel 1/FX Mode"},
        {56, "Channel 1/Patch Send FX 1/Mute"},
        {57, "Channel 1/Patch Send FX 1/Parameter 1"},
        {56 + 72 + 17, "Channel 1/Patch Send FX 4/Output"},
        {56 + 18, "Channel 1/Patch Send FX 1/Level"},
        {2432 + 16, "Global Send FX 1/Parameter 16"},
        {2432 + 24 + 19, "Global Send FX 2/Pan"},
        {2527, "Global Send FX 4/Send to FX4"},
    };
    for (const auto& [id, place] : samples) EXPECT_EQ(places[id], place) << id;

    // The order of part 2's list, and what follows the last part.
    const int order[] = {152, 153, 154, 155, 156, 161, 162, 163, 164, 165, 166, 181, 182};
    std::size_t at = 0;
    while (all[at].id != 152) ++at;
    for (const int id : order) EXPECT_EQ(all[at++].id, id);
    EXPECT_EQ(all[all.size() - 96].id, 2433);
}

}  // namespace
}  // namespace stratovane
