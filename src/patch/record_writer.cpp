#include "patch/record_writer.h"

#include <string>

#include "patch/record_fields.h"
#include "patch/scene_table.h"

namespace stratovane {

namespace {

namespace layout = recordLayout;

/// A saved patch is the user's own, whatever libraries it was made of.
std::string codesForSaving(std::string_view codes) {
    constexpr std::string_view own = "User";
    constexpr std::size_t roomBelow = 57;
    std::string result{codes};
    if (codes.find(own) == std::string_view::npos && codes.size() < roomBelow) result += own;
    return result;
}

/// Name and 256 values of an element or send slot.
void writeElement(ByteWriter& out, const Patch& patch, int number) {
    out.text(patch.text(number), layout::elementNameBytes);
    for (int i = 0; i < layout::values; ++i) out.put(patch.get(number, i));
}

SendSource sendSource(const Patch& patch, const Patch* master, int number) {
    if (isOn(patch.get(0, global::fxSends)) && slotSounds(patch, number)) return SendSource::patch;
    return master && slotSounds(*master, number) ? SendSource::master : SendSource::none;
}

void writeScenes(ByteWriter& out, const SceneTable& scenes) {
    out.put(static_cast<std::int32_t>(scenes.highest()));
    for (int slot = 0; slot <= scenes.highest(); ++slot) {
        if (const Scene* scene = scenes.at(slot))
            out.append(writeSceneRecord(*scene));
        else
            out.put<std::uint32_t>(0);
    }
}

}  // namespace

Bytes writePatchRecord(const Patch& patch, const Patch* master) {
    std::array<SendSource, sendSlots> sources{};
    for (int slot = 0; slot < sendSlots; ++slot)
        sources[static_cast<std::size_t>(slot)] = sendSource(patch, master, firstSendSlot + slot);

    ByteWriter out;
    out.put(layout::tag);
    out.put(layout::currentVersion);
    out.fillTo(layout::kind);
    out.put(layout::patchKind);
    out.put(patch.idWord());
    out.put(static_cast<std::int32_t>(patch.elementCount()));
    for (const SendSource source : sources) out.put(source);
    out.fillTo(layout::name);
    for (const RecordText& text : recordTexts) {
        const std::string_view own = patch.text(text.selector);
        const auto field = static_cast<std::size_t>(text.bytes);
        if (text.selector == codesSelector)
            out.text(codesForSaving(own), field);
        else
            out.text(own, field);
    }
    // Indices beyond the patch's own read as 0.
    for (int i = 0; i < layout::values; ++i) out.put(patch.get(0, i));
    for (int number = 1; number <= patch.elementCount(); ++number) writeElement(out, patch, number);
    for (int slot = 0; slot < sendSlots; ++slot) {
        const SendSource source = sources[static_cast<std::size_t>(slot)];
        if (source != SendSource::none)
            writeElement(out, source == SendSource::patch ? patch : *master, firstSendSlot + slot);
    }
    out.put(layout::tailMark);
    for (int controller = 0; controller < layout::controllers; ++controller)
        out.put<std::uint16_t>(patch.storedTarget(controller));
    writeScenes(out, patch.scenes());
    out.put<std::uint32_t>(0);
    return out.take();
}

}  // namespace stratovane
