#include "patch/record_reader.h"

#include <memory>
#include <utility>

#include "base/trace.h"
#include "patch/scene_table.h"

namespace stratovane {

namespace {

namespace layout = recordLayout;

// Records from before these versions are repaired where the meaning of a value has changed since.
constexpr std::uint32_t clickVersion = 11040105;
constexpr std::uint32_t gateVersion = layout::currentVersion;
constexpr std::uint32_t analogExtensionVersion = layout::currentVersion;

constexpr int unsetType = 0;
/// Patches of these types always had the later parameters of "Analog" elements.
constexpr bool hadAnalogExtension(int patchType) { return patchType == 1 || patchType == 5; }
constexpr float storedAnalogType = 0.3333333f;
constexpr float noItem = 1.0f;  // stands for no bank, no content and no effect

std::string_view textAt(ByteView bytes, int offset, int size) {
    return bytes.part(static_cast<std::uint64_t>(offset), static_cast<std::uint64_t>(size))
        .terminatedText();
}
float valueAt(ByteView values, int index) {
    return values.at<float>(static_cast<std::uint64_t>(index) * sizeof(float));
}
ByteView elementValues(ByteView element) {
    return element.part(layout::elementNameBytes, layout::valueBytes);
}

void readTexts(Patch& patch, const PatchRecord& record) {
    for (const RecordText& text : recordTexts)
        patch.setText(text.selector,
                      textAt(record.fixedPart, text.offset - layout::headerBytes, text.bytes));
}

// Global values.

float repairedGlobal(int index, float v, std::uint32_t version, float pianoMode) {
    if (index == global::gate && version < gateVersion) return 0.5f;
    if (index == global::pianoMode && v > 0.99f) return pianoMode;
    return v;
}

void readGlobals(Patch& patch, const PatchRecord& record, float pianoMode, Trace& trace) {
    const ByteView values =
        record.fixedPart.part(layout::globals - layout::headerBytes, layout::valueBytes);
    for (int i = 0; i < layout::values; ++i) {
        const float v = valueAt(values, i);
        if (v >= 0.0f && v <= 1.0f)
            patch.recall(0, i, repairedGlobal(i, v, record.version, pianoMode));
        else if (i != global::gate)
            trace.write(TraceLevel::warning, "Warning - Patch parameter %d = %.4f", i, v);
    }
}

// Elements.

struct Repair {
    int index;
    float value;
};
constexpr Repair analogExtension[] = {{25, 0.5f}, {26, 0.5f}, {34, 0.333f}, {27, 0}, {32, 0},
                                      {33, 0},    {35, 0},    {36, 0},      {37, 0}, {125, 0}};

using Values = std::array<float, layout::values>;

void repairElement(Values& values, std::uint32_t version, int patchType) {
    if (version < clickVersion) {
        float& click = values[elementIndex::noteOnClick];
        click = click <= 0.99f ? 0.3f * click : 0.0f;
    }
    const int type = choice(toUnitRange(values[elementIndex::type]), 15.9f);
    if (version < analogExtensionVersion && type == static_cast<int>(ElementType::analog) &&
        !hadAnalogExtension(patchType))
        for (const Repair& repair : analogExtension)
            values[static_cast<std::size_t>(repair.index)] = repair.value;
}

Values load(ByteView element) {
    Values values;
    const ByteView stored = elementValues(element);
    for (int i = 0; i < layout::values; ++i)
        values[static_cast<std::size_t>(i)] = valueAt(stored, i);
    return values;
}

void setElement(Patch& patch, int number, ByteView element, const Values& values) {
    patch.setText(number, textAt(element, 0, layout::elementNameBytes));
    for (int i = 0; i < layout::values; ++i)
        patch.recall(number, i, values[static_cast<std::size_t>(i)]);
}

void emptyElement(Patch& patch, int number) {
    patch.recall(number, elementIndex::mute, 1.0f);
    patch.recall(number, elementIndex::bank, noItem);
    patch.recall(number, elementIndex::item, noItem);
    patch.setText(number, {});
}

void readElements(Patch& patch, const PatchRecord& record) {
    patch.setElementCount(record.elementCount);
    int type = choice(patch.get(0, global::type), 15.9f);
    if (type == unsetType) {
        patch.recall(0, global::type, storedAnalogType);
        type = choice(storedAnalogType, 15.9f);
    }
    for (int number = 1; number <= maxElements; ++number) {
        if (number > record.elementCount) {
            emptyElement(patch, number);
            continue;
        }
        const ByteView element = record.elements.part(
            static_cast<std::uint64_t>(number - 1) * layout::elementBytes, layout::elementBytes);
        Values values = load(element);
        repairElement(values, record.version, type);
        setElement(patch, number, element, values);
    }
}

// Send slots.

/// The effects that a bus has unless somebody chose another one.
bool isDefaultEffect(int slot, std::string_view name) {
    switch (slot) {
        case 0:
            return name == "Long Reverb" || name == "GM Reverb";
        case 1:
            return name == "Short Reverb";
        case 2:
            return name == "GM Chorus";
        default:
            return false;
    }
}

void setSlot(Patch& target, int number, ByteView slot) {
    Values values = load(slot);
    values[elementIndex::type] = 0.0f;  // whatever it says, a slot holds an effect
    setElement(target, number, slot, values);
}

/// Answers whether the master channel's slot was filled.
bool readSend(Patch& patch, const PatchRecord& record, int slot, const ReadOptions& options) {
    const SendRecord& send = record.sends[static_cast<std::size_t>(slot)];
    const int number = firstSendSlot + slot;
    if (send.source == SendSource::none) return false;
    if (send.source == SendSource::master && options.masterEffects == MasterEffects::stepOver) {
        emptyElement(patch, number);
        return false;
    }
    if (send.source == SendSource::master && options.master && record.elementCount != 0) {
        if (options.master->get(number, elementIndex::item) > 0.999f) {
            setSlot(*options.master, number, send.slot);
            emptyElement(patch, number);
            return true;
        }
        if (isDefaultEffect(slot, textAt(send.slot, 0, layout::elementNameBytes))) return false;
    }
    setSlot(patch, number, send.slot);
    return false;
}

// Controllers and scenes.

/// Records without a controller map name a controller for each knob instead.
void readOldKnobControllers(Patch& patch) {
    for (std::size_t i = 0; i < std::size(global::knobs); ++i) {
        const int controller = choice(patch.get(0, global::oldKnobControllers[i]), 128.9f);
        if (controller >= 1 && controller <= 127)
            patch.assignController(controller, static_cast<ParameterId>(global::knobs[i]));
    }
    patch.recall(0, global::currentScene, 0.0f);
    patch.recall(0, global::sceneMidiSelect, 0.0f);
    patch.recall(0, global::sceneRootNote, 1.0f);
    patch.recall(0, global::phraseHighKey, 1.0f);
}

void readTail(Patch& patch, const PatchRecord& record, Trace& trace) {
    if (record.endMark == layout::noTailMark) return readOldKnobControllers(patch);
    if (record.endMark != layout::tailMark) {
        trace.write(TraceLevel::warning, "Warning - unexpected patch data endmark %d",
                    static_cast<std::int32_t>(record.endMark));
        return;
    }
    for (int i = 0; i < layout::controllers; ++i)
        patch.assignController(i, record.controllers.at<std::uint16_t>(
                                      static_cast<std::uint64_t>(i) * sizeof(ParameterId)));
    for (int slot = 0; slot < sceneLayout::slots; ++slot) {
        if (auto scene = readSceneRecord(record.scenes[static_cast<std::size_t>(slot)]))
            patch.scenes().put(slot, std::make_shared<const Scene>(std::move(*scene)));
    }
    // Only the scene's phrase counts now: the record's own knobs and arpeggio stand.
    patch.selectScene(choice(patch.get(0, global::currentScene), 64.9f), Patch::Recall::nothing);
}

}  // namespace

ReadResult fillPatch(Patch& fresh, const PatchRecord& record, const ReadOptions& options,
                     Trace& trace) {
    ReadResult result;
    fresh.setIdWord(record.idWord);
    readTexts(fresh, record);
    readGlobals(fresh, record, options.pianoMode, trace);
    readElements(fresh, record);
    for (int slot = 0; slot < sendSlots; ++slot)
        result.filledMaster[static_cast<std::size_t>(slot)] =
            readSend(fresh, record, slot, options);
    readTail(fresh, record, trace);
    // Once more, now that the elements are there that the knobs reach.
    for (const int knob : global::knobs) fresh.recall(0, knob, fresh.get(0, knob));
    return result;
}

std::variant<ReadResult, RecordFault> readPatchRecord(Patch& fresh, ByteView block,
                                                      const ReadOptions& options, Trace& trace) {
    const ParsedRecord parsed = parsePatchRecord(block);
    if (const auto* fault = std::get_if<RecordFault>(&parsed)) return *fault;
    return fillPatch(fresh, std::get<PatchRecord>(parsed), options, trace);
}

}  // namespace stratovane
