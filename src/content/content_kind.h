// The six kinds of content, and how an item of them is addressed.
#pragma once

#include <array>
#include <cstdint>
#include <string_view>

namespace stratovane {

/// Stored in content ids and shown in traces; do not renumber.
enum class ContentKind : std::int32_t {
    patches = 1,
    samples,
    wavetables,
    tunings,
    drawbars,
    phrases
};

inline constexpr int contentKinds = 6;
inline constexpr int banksPerKind = 128, itemsPerBank = 128;

struct ContentKindFacts {
    std::string_view folder;  // below the content root
    std::string_view title;   // of its list in the listing
    std::string_view extension;
};

inline constexpr std::array<ContentKindFacts, contentKinds> contentKindFacts{{
    {.folder = "Patches/", .title = "Patch Banks\n", .extension = ".fxp"},
    {.folder = "Samples/", .title = "Sample Banks\n", .extension = ""},
    {.folder = "Wavetables/", .title = "Wavetable Banks\n", .extension = ""},
    {.folder = "Tunings/", .title = "Tuning Banks\n", .extension = ".tun"},
    {.folder = "Drawbars/", .title = "Drawbar Banks\n", .extension = ""},
    {.folder = "Phrases/", .title = "Phrase Banks\n", .extension = ".phr"},
}};

/// Any int may stand for a kind at the library's border.
constexpr bool isKind(ContentKind kind) {
    return kind >= ContentKind::patches && kind <= ContentKind::phrases;
}
constexpr std::size_t indexOf(ContentKind kind) { return static_cast<std::size_t>(kind) - 1; }
constexpr const ContentKindFacts& factsOf(ContentKind kind) {
    return contentKindFacts[indexOf(kind)];
}
constexpr bool isLocationNumber(int number) { return number >= 0 && number < banksPerKind; }

/// Patch banks from here on hold whole setups.
inline constexpr int firstCombiBank = 120;
constexpr std::string_view extensionOf(ContentKind kind, int bank) {
    return kind == ContentKind::patches && bank >= firstCombiBank ? ".fxb"
                                                                  : factsOf(kind).extension;
}

/// One item of a known kind: bank × 256 + item, the ECO version marked by bit 16.
struct PackedItem {
    std::uint32_t word = none;

    static constexpr std::uint32_t none = 128 << 8 | 128, ecoBit = 1u << 16;
    static constexpr PackedItem of(int bank, int item, bool eco) {
        return {static_cast<std::uint32_t>(bank & 255) << 8 |
                static_cast<std::uint32_t>(item & 255) | (eco ? ecoBit : 0)};
    }
    constexpr int bank() const { return static_cast<int>(word >> 8 & 255); }
    constexpr int item() const { return static_cast<int>(word & 255); }
    constexpr bool eco() const { return (word & ecoBit) != 0; }
    constexpr bool isItem() const { return isLocationNumber(bank()) && isLocationNumber(item()); }
    constexpr bool operator==(const PackedItem&) const = default;
};

/// What a voice plays, so that nothing is released under it: kind × 2^24 + packed item.
struct ContentId {
    std::uint32_t word = 0;

    static constexpr ContentId of(ContentKind kind, PackedItem item) {
        return {static_cast<std::uint32_t>(kind) << 24 | item.word};
    }
    constexpr ContentKind kind() const { return static_cast<ContentKind>(word >> 24); }
    constexpr PackedItem item() const { return {word & 0xFFFFFF}; }
    constexpr bool operator==(const ContentId&) const = default;
};

}  // namespace stratovane
