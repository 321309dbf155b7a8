#include "persistence/global_block.h"

#include <algorithm>
#include <cmath>

#include "engine/master_tune.h"
#include "engine/multi_setup.h"
#include "persistence/chunk_layout.h"

namespace stratovane {

namespace {

namespace layout = globalLayout;

/// A block up to where its size word, or the data, ends.
class Covered {
  public:
    explicit Covered(ByteView block)
        : size_{block.at<std::uint32_t>(0)}, bytes_{block.part(0, sizeof(std::uint32_t) + size_)} {}

    bool sizeIsAtLeast(std::uint64_t size) const {
        return size_ >= size && bytes_.has(0, sizeof(std::uint32_t) + size);
    }
    template <class T>
    std::optional<T> at(int offset) const {
        const auto from = static_cast<std::uint64_t>(offset);
        if (!bytes_.has(from, sizeof(T))) return std::nullopt;
        return bytes_.at<T>(from);
    }
    template <class T>
    T get(int offset, T otherwise) const {
        return at<T>(offset).value_or(otherwise);
    }
    float unit(int offset) const { return toUnitRange(get(offset, 0.0f)); }
    std::string_view text(int offset, int bytes) const {
        return bytes_.part(static_cast<std::uint64_t>(offset), static_cast<std::uint64_t>(bytes))
            .terminatedText();
    }

  private:
    std::uint64_t size_;
    ByteView bytes_;
};

std::optional<std::int32_t> controller(std::optional<std::int32_t> stored) {
    if (!stored) return std::nullopt;
    return std::clamp(*stored, -1, 127);
}

SongTuning readTuning(const Covered& block) {
    constexpr std::int32_t most = MasterTune::mostSemitones;
    const float fraction = block.get(layout::tuneFraction, 0.0f);
    return {
        .semitones = std::clamp(block.get<std::int32_t>(layout::tuneSemitones, 0), -most, most),
        .fraction = std::isfinite(fraction)
                        ? std::clamp(fraction, static_cast<float>(-most), static_cast<float>(most))
                        : 0.0f,
        .lift = block.unit(layout::lift),
        .generalMidi = block.get<std::int32_t>(layout::generalMidi, 0) > 0,
    };
}

SongCombis readCombis(const Covered& block) {
    SongCombis combis;
    for (std::size_t slot = 0; slot < combis.table.size(); ++slot)
        combis.table[slot] =
            block.get(layout::combiTable + 4 * static_cast<int>(slot), CombiTable::none);
    combis.current = block.get(layout::currentCombi, CombiTable::none);
    combis.preload = std::clamp(block.get<std::int32_t>(layout::combiPreload, 0), 0, 2);
    combis.stepsKnown = block.sizeIsAtLeast(layout::beyondPreload + 1);
    combis.previousController = controller(block.at<std::int32_t>(layout::combiPrevious));
    combis.nextController = controller(block.at<std::int32_t>(layout::combiNext));
    return combis;
}

}  // namespace

GlobalBlock readGlobalBlock(ByteView bytes) {
    const Covered block{bytes};
    GlobalBlock read;
    read.masterVolume = block.at<float>(layout::masterVolume);
    for (int part = 1; part < parts; ++part)
        if (const auto link = block.at<std::uint8_t>(layout::links + part))
            read.links[static_cast<std::size_t>(part)] = *link != 0;
    if (block.sizeIsAtLeast(layout::withName))
        read.programName = block.text(layout::programName, layout::programNameBytes);
    if (block.sizeIsAtLeast(layout::withCurves))
        read.curves = {.velocity = block.unit(layout::velocitySensitivity),
                       .touch = block.unit(layout::touchSensitivity),
                       .memoryUse = block.unit(layout::memoryUse)};
    if (block.sizeIsAtLeast(layout::withTuning)) read.tuning = readTuning(block);
    if (block.sizeIsAtLeast(layout::withCombis)) read.combis = readCombis(block);
    return read;
}

Bytes writeGlobalBlock(const GlobalBlock& block) {
    ByteWriter out;
    out.put(layout::told);
    out.put(block.masterVolume.value_or(0.0f));
    for (const auto& link : block.links)
        out.put(static_cast<std::uint8_t>(link.value_or(false) ? 1 : 0));
    out.text(block.programName.value_or(""), layout::programNameBytes);
    const SongCurves curves = block.curves.value_or(SongCurves{});
    out.put(curves.velocity);
    out.put(curves.touch);
    out.put(curves.memoryUse);
    const SongTuning tuning = block.tuning.value_or(SongTuning{});
    out.put(tuning.semitones);
    out.put(tuning.fraction);
    out.put(tuning.lift);
    out.put<std::int32_t>(tuning.generalMidi ? 1 : 0);
    const SongCombis combis = block.combis.value_or(SongCombis{});
    for (const std::int32_t location : combis.table) out.put(location);
    out.put(combis.current);
    out.put(combis.preload);
    out.put(combis.previousController.value_or(-1));
    out.put(combis.nextController.value_or(-1));
    out.fillTo(layout::bytes);
    return out.take();
}

}  // namespace stratovane
