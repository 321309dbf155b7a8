#include <cstdio>

#include "base/trace.h"
#include "content/file_bytes.h"
#include "content/scene_record.h"
#include "failure.h"
#include "json_node.h"
#include "loose_patch.h"
#include "patch/controller_map.h"
#include "patch/record_reader.h"
#include "patch/scene_table.h"
#include "patch_json.h"
#include "shared/windows_1252.h"

namespace stratovane::content_tool {

namespace {

std::string nameText(const Patch& patch, int element, int index) {
    char buffer[128];
    TextOut out{buffer};
    patch.showName(out, element, index);
    return utf8FromWindows1252(out.view());
}
std::string valueText(const Patch& patch, int element, int index, float value) {
    char buffer[128];
    TextOut out{buffer};
    patch.showValue(out, element, index, value);
    return utf8FromWindows1252(out.view());
}

/// The index, for human eyes with the parameter's name behind.
std::string keyOf(const Patch& patch, int element, int index) {
    const std::string name = nameText(patch, element, index);
    const std::string number = std::to_string(index);
    return name.find_first_not_of(' ') == std::string::npos ? number : number + " " + name;
}

/// What a reader puts in the place of these is for players; here stands what the record holds.
float globalValue(const Patch& patch, const PatchRecord& record, int index) {
    constexpr int first = recordLayout::globals - recordLayout::headerBytes;
    const float read = patch.get(0, index);
    if (index != global::pianoMode && index != global::type) return read;
    const auto stored = record.fixedPart.at<float>(static_cast<std::uint64_t>(first + 4 * index));
    return stored >= 0 && stored <= 1 ? stored : read;
}

Json values(const Patch& patch, const Patch& fresh, const PatchRecord& record, int element,
            Shows shows) {
    Json json = Json::object();
    const int count = element == 0 ? globalParameters : elementParameters;
    for (int i = 0; i < count; ++i) {
        const float value = element == 0 ? globalValue(patch, record, i) : patch.get(element, i);
        if (shows == Shows::changes && value == fresh.get(element, i)) continue;
        Json& entry = json[keyOf(patch, element, i)];
        entry["value"] = shortNumber(value);
        entry["shows"] = valueText(patch, element, i, value);
    }
    return json;
}

Json element(const Patch& patch, const Patch& fresh, const PatchRecord& record, int number,
             Shows shows) {
    Json json;
    json["name"] = utf8FromWindows1252(patch.text(number));
    json["values"] = values(patch, fresh, record, number, shows);
    return json;
}

template <std::size_t n>
Json numbers(const std::array<float, n>& all) {
    Json list = Json::array();
    for (const float value : all) list.push_back(shortNumber(value));
    return list;
}

Json sceneJson(int slot, const Scene* scene) {
    Json json;
    json["slot"] = slot;
    json["name"] = utf8FromWindows1252(scene->name);
    json["flags"] = scene->flags;
    json["knobs"] = numbers(scene->knobs);
    json["arp"] = numbers(scene->arpeggiator);
    json["steps"] = numbers(scene->steps);
    Scene usual = *scene;
    usual.storedBytes = 0;
    if (sceneRecordBytes(usual) != scene->storedBytes) json["bytes"] = scene->storedBytes;
    Json& phrase = json["phrase"];
    phrase["length"] = shortNumber(scene->phrase.lengthBeats);
    phrase["events"] = Json::array();
    bool isFirst = true;
    for (const PhraseEvent& event : scene->phrase.events) {
        const int last = isFirst && scene->phrase.passThrough ? 1 : 0;
        isFirst = false;
        phrase["events"].push_back(
            {event.beats, event.lengthBeats, event.status, event.data1, event.data2, last});
    }
    return json;
}

Json controllers(const Patch& patch, const PatchRecord& record, Shows shows) {
    Json json = Json::object();
    const int type = choice(globalValue(patch, record, global::type), 15.9f);
    const ControllerMap& usual = defaultControllerMap(type);
    for (int controller = 0; controller < recordLayout::controllers; ++controller) {
        const ParameterId id = patch.storedTarget(controller);
        if (shows == Shows::everything || id != usual[static_cast<std::size_t>(controller)])
            json[std::to_string(controller)] = id;
    }
    return json;
}

}  // namespace

std::string patchJson(const std::string& path, Shows shows) {
    const auto bytes = readFile(path);
    if (!bytes) throw Failure{Exit::input, path + " cannot be read"};
    Trace trace{[](const char* text) { std::fputs(text, stderr); }};
    LoosePatch patch, fresh;
    const auto parsed = parsePatchRecord(*bytes);
    if (const auto* fault = std::get_if<RecordFault>(&parsed))
        throw Failure{Exit::input, path + ", byte " + std::to_string(fault->offset) + ": " +
                                       std::string{fault->sentence}};
    const auto& record = std::get<PatchRecord>(parsed);
    // Everything into the patch itself; where a slot came from is told beside it.
    fillPatch(*patch, record, {}, trace);

    Json json;
    json["name"] = utf8FromWindows1252(patch->name());
    json["codes"] = utf8FromWindows1252(patch->text(codesSelector));
    for (const int selector : textSelectors)
        json["texts"].push_back(utf8FromWindows1252(patch->text(selector)));
    for (int knob = 1; knob <= 6; ++knob)
        json["knobs"].push_back(utf8FromWindows1252(patch->knobName(knob)));
    json["location"] = patch->idWord();
    json["globals"] = values(*patch, *fresh, record, 0, shows);
    json["elements"] = Json::array();
    for (int number = 1; number <= patch->elementCount(); ++number)
        json["elements"].push_back(element(*patch, *fresh, record, number, shows));
    json["sends"] = Json::array();
    for (int slot = 0; slot < sendSlots; ++slot) {
        const SendSource source = record.sends[static_cast<std::size_t>(slot)].source;
        if (source == SendSource::none) continue;
        Json send;
        send["slot"] = slot + 1;
        send["source"] = source == SendSource::master ? "master" : "patch";
        send.update(element(*patch, *fresh, record, firstSendSlot + slot, shows));
        json["sends"].push_back(send);
    }
    json["controllers"] = controllers(*patch, record, shows);
    json["scenes"] = Json::array();
    for (int slot = 0; slot < sceneLayout::slots; ++slot)
        if (const auto* stored = patch->scenes().at(slot))
            json["scenes"].push_back(sceneJson(slot, stored));
    return json.dump(1) + "\n";
}

}  // namespace stratovane::content_tool
