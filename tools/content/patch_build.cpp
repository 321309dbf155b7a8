#include <algorithm>
#include <charconv>
#include <cmath>
#include <set>

#include "base/trace.h"
#include "content/program_files.h"
#include "content/scene_record.h"
#include "failure.h"
#include "json_node.h"
#include "loose_patch.h"
#include "output_file.h"
#include "patch/controller_map.h"
#include "patch/record_parser.h"
#include "patch/record_writer.h"
#include "patch/scene_table.h"
#include "patch_json.h"

namespace stratovane::content_tool {

namespace {

constexpr std::size_t longestOf(int fieldBytes) { return static_cast<std::size_t>(fieldBytes) - 1; }

/// The number that a key begins with; what follows a blank is for human eyes.
int indexOf(const std::string& key, const JsonNode& node, int count) {
    int index = -1;
    const auto [end, error] = std::from_chars(key.data(), key.data() + key.size(), index);
    const bool ends = end == key.data() + key.size() || *end == ' ';
    if (error != std::errc{} || !ends || index < 0 || index >= count)
        node.refuse("a key begins with an index from 0 to " + std::to_string(count - 1));
    return index;
}

void setValues(const JsonNode& node, Patch& patch, int element) {
    const int count = element == 0 ? globalParameters : elementParameters;
    std::set<int> given;
    for (const auto& [key, member] : node.members()) {
        const int index = indexOf(key, member, count);
        if (!given.insert(index).second) member.refuse("this index stands twice");
        if (member.isObject()) {
            member.allow({"value", "shows"});
            patch.recall(element, index, member.at("value").number(0, 1));
        } else {
            patch.recall(element, index, member.number(0, 1));
        }
    }
}

void setElement(const JsonNode& node, Patch& patch, int number) {
    patch.setText(number, node.text("name", longestOf(recordLayout::elementNameBytes)));
    if (const auto values = node.find("values")) setValues(*values, patch, number);
}

void setTexts(const JsonNode& root, Patch& patch) {
    auto set = [&](const JsonNode& node, int selector) {
        const auto* row =
            std::find_if(recordTexts.begin(), recordTexts.end(),
                         [&](const RecordText& text) { return text.selector == selector; });
        patch.setText(selector, node.text(longestOf(row->bytes)));
    };
    if (const auto name = root.find("name")) set(*name, 0);
    if (const auto codes = root.find("codes")) set(*codes, codesSelector);
    if (const auto texts = root.find("texts")) {
        const auto nodes = texts->elements(std::size(textSelectors));
        for (std::size_t i = 0; i < nodes.size(); ++i) set(nodes[i], textSelectors[i]);
    }
    if (const auto knobs = root.find("knobs")) {
        const auto nodes = knobs->elements(6);
        for (std::size_t i = 0; i < nodes.size(); ++i) set(nodes[i], static_cast<int>(i) - 6);
    }
}

using SendNodes = std::array<std::optional<JsonNode>, sendSlots>;
using SendSources = std::array<SendSource, sendSlots>;

/// Each slot into the patch that has it.
void setSends(const JsonNode& list, Patch& patch, Patch& master, SendNodes& nodes,
              SendSources& sources) {
    for (const JsonNode& node : list.elements()) {
        node.allow({"slot", "source", "name", "values"});
        const int slot = node.at("slot").integer(1, sendSlots) - 1;
        const auto i = static_cast<std::size_t>(slot);
        if (nodes[i]) node.refuse("this slot stands twice");
        const JsonNode source = node.at("source");
        const std::string name = source.text(longestOf(recordLayout::elementNameBytes));
        if (name != "patch" && name != "master")
            source.refuse("\"patch\" or \"master\" was expected");
        nodes[i] = node;
        sources[i] = name == "patch" ? SendSource::patch : SendSource::master;
        setElement(node, name == "patch" ? patch : master, firstSendSlot + slot);
    }
}

void setControllers(const JsonNode& root, Patch& patch) {
    const ControllerMap& usual = defaultControllerMap(choice(patch.get(0, global::type), 15.9f));
    for (int i = 0; i < recordLayout::controllers; ++i)
        patch.assignController(i, usual[static_cast<std::size_t>(i)]);
    const auto given = root.find("controllers");
    if (!given) return;
    for (const auto& [key, member] : given->members())
        patch.assignController(indexOf(key, member, recordLayout::controllers),
                               static_cast<ParameterId>(member.integer(0, noParameter)));
}

template <std::size_t n>
void readNumbers(const JsonNode& scene, std::string_view key, std::array<float, n>& values) {
    const auto list = scene.find(key);
    if (!list) return;
    const auto nodes = list->elements(n);
    constexpr float widest = 1e6f;
    for (std::size_t i = 0; i < n; ++i) values[i] = nodes[i].number(-widest, widest);
}

Phrase readPhrase(const JsonNode& node) {
    node.allow({"length", "events"});
    Phrase phrase;
    phrase.lengthBeats = node.number("length", 1.0f / 16, 1024, Phrase::defaultBeats);
    const auto list = node.find("events");
    if (!list) return phrase;
    for (const JsonNode& event : list->elements()) {
        const auto fields = event.elements(6);
        auto byte = [&](std::size_t i) {
            return static_cast<std::uint8_t>(fields[i].integer(0, 255));
        };
        if (byte(5) != 0) phrase.passThrough = phrase.passThrough || phrase.events.empty();
        phrase.events.push_back(
            {fields[0].exactNumber(), fields[1].exactNumber(), byte(2), byte(3), byte(4)});
    }
    const std::size_t all = phrase.events.size();
    checkPhrase(phrase);
    if (phrase.events.size() != all)
        list->refuse(std::to_string(all - phrase.events.size()) +
                     " of the events cannot be played");
    return phrase;
}

void setScenes(const JsonNode& list, Patch& patch) {
    for (const JsonNode& node : list.elements()) {
        node.allow({"slot", "name", "flags", "knobs", "arp", "steps", "phrase", "bytes"});
        const int slot = node.at("slot").integer(0, sceneLayout::slots - 1);
        if (patch.scenes().at(slot) != nullptr) node.refuse("this slot stands twice");
        constexpr int sceneNameBytes = 32, mostBytes = 1 << 24, mostFlags = 0x7FFFFFFF;
        Scene scene{.name = node.text("name", longestOf(sceneNameBytes))};
        scene.flags = static_cast<std::uint32_t>(node.integer("flags", 0, mostFlags, 0));
        readNumbers(node, "knobs", scene.knobs);
        readNumbers(node, "arp", scene.arpeggiator);
        readNumbers(node, "steps", scene.steps);
        if (const auto phrase = node.find("phrase")) scene.phrase = readPhrase(*phrase);
        scene.storedBytes = static_cast<std::uint32_t>(node.integer("bytes", 0, mostBytes, 0));
        patch.scenes().put(slot, std::make_shared<const Scene>(std::move(scene)));
    }
}

/// The writer takes effects that sound and marks the codes as the user's; a maker means what the
/// JSON says.
void settle(Bytes& record, const Patch& patch, const SendNodes& nodes, const SendSources& sources) {
    const std::string_view codes = patch.text(codesSelector);
    const auto field = record.begin() + recordLayout::codes;
    std::fill(field, field + recordLayout::codesBytes, std::uint8_t{0});
    std::copy(codes.begin(), codes.end(), field);
    for (std::size_t i = 0; i < nodes.size(); ++i) {
        if (!nodes[i] ||
            record[recordLayout::sendSources + i] == static_cast<std::uint8_t>(sources[i]))
            continue;
        nodes[i]->refuse(sources[i] == SendSource::patch
                             ? "the slot is not stored: it needs global 62 on \"Patch\", and an "
                               "effect that is not muted"
                             : "the slot is not stored: it needs an effect that is not muted");
    }
}

}  // namespace

void buildPatch(const std::string& specPath, const std::string& patchPath) {
    const Json json = readJson(specPath);
    const JsonNode root{json, specPath};
    root.allow({"name", "codes", "texts", "knobs", "location", "globals", "elements", "sends",
                "controllers", "scenes"});
    LoosePatch patch, master;
    setTexts(root, *patch);
    if (const auto location = root.find("location")) {
        const double word = location->exactNumber();
        if (!(word >= 0 && word <= 0xFFFFFFFFu) || word != std::floor(word))
            location->refuse("a whole number from 0 to 4294967295 was expected");
        patch->setIdWord(static_cast<std::uint32_t>(word));
    }
    if (const auto globals = root.find("globals")) setValues(*globals, *patch, 0);
    if (const auto elements = root.find("elements")) {
        const auto nodes = elements->elements();
        if (nodes.size() > maxElements) elements->refuse("a patch has at most 64 elements");
        patch->setElementCount(static_cast<int>(nodes.size()));
        for (std::size_t i = 0; i < nodes.size(); ++i) {
            nodes[i].allow({"name", "values"});
            setElement(nodes[i], *patch, static_cast<int>(i) + 1);
        }
    }
    SendNodes sendNodes;
    SendSources sources{};
    if (const auto sends = root.find("sends"))
        setSends(*sends, *patch, *master, sendNodes, sources);
    setControllers(root, *patch);
    if (const auto scenes = root.find("scenes")) setScenes(*scenes, *patch);

    Bytes record = writePatchRecord(*patch, &*master);
    settle(record, *patch, sendNodes, sources);
    Bytes file = presetFileHeader(patch->name(), record.size());
    file.insert(file.end(), record.begin(), record.end());
    writeWhole(patchPath, file);
}

}  // namespace stratovane::content_tool
