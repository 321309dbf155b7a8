#include "content/tuning_table.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <optional>
#include <system_error>

namespace stratovane {

namespace {

constexpr std::size_t longestLine = 1023;  // a longer one is taken in pieces

struct Entry {
    int note = 0;
    float cents = 0;
};

void skipBlanks(std::string_view& text) {
    text.remove_prefix(std::min(text.find_first_not_of(" \t\n\v\f\r"), text.size()));
}

bool skip(std::string_view& text, std::string_view expected) {
    if (!text.starts_with(expected)) return false;
    text.remove_prefix(expected.size());
    return true;
}

/// A number after blanks, with either sign, whatever the locale.
template <class T>
bool takeNumber(std::string_view& text, T& value) {
    skipBlanks(text);
    if (text.size() > 1 && text[0] == '+' && text[1] != '-') text.remove_prefix(1);
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc{}) return false;
    text.remove_prefix(static_cast<std::size_t>(end - text.data()));
    return true;
}

std::optional<Entry> parseLine(std::string_view line) {
    Entry entry;
    if (!skip(line, "note") || !takeNumber(line, entry.note) || !skip(line, "=") ||
        !takeNumber(line, entry.cents))
        return std::nullopt;
    if (entry.note < 0 || entry.note >= TuningTable::notes || !std::isfinite(entry.cents))
        return std::nullopt;
    return entry;
}

float offsetOf(float cents, int note) { return cents * 0.01f - static_cast<float>(note); }

/// The cents that are read back as an offset, or the nearest to it.
float centsOf(float offset, int note) {
    const float start = static_cast<float>((static_cast<double>(offset) + note) * 100);
    float up = start, down = start;
    for (int i = 0; i < 8; ++i) {
        if (offsetOf(up, note) == offset) return up;
        if (offsetOf(down, note) == offset) return down;
        up = std::nextafter(up, INFINITY);
        down = std::nextafter(down, -INFINITY);
    }
    return start;
}

}  // namespace

std::unique_ptr<TuningTable> readTuningText(std::string_view text) {
    auto table = std::make_unique<TuningTable>();
    table->semitones.resize(TuningTable::notes);
    while (!text.empty()) {
        const std::size_t end = text.find('\n');
        const std::size_t length =
            std::min(end == std::string_view::npos ? text.size() : end + 1, longestLine);
        if (const auto entry = parseLine(text.substr(0, length)))
            table->semitones[static_cast<std::size_t>(entry->note)] =
                offsetOf(entry->cents, entry->note);
        text.remove_prefix(length);
    }
    return table;
}

std::string writeTuningText(const TuningTable& table) {
    std::string text;
    for (std::size_t i = 0; i < table.semitones.size(); ++i) {
        const int note = static_cast<int>(i);
        char digits[64];
        const auto end = std::to_chars(digits, digits + sizeof digits,
                                       centsOf(table.semitones[i], note), std::chars_format::fixed)
                             .ptr;
        text += "note " + std::to_string(note) + "=";
        text.append(digits, end);
        text += '\n';
    }
    return text;
}

std::unique_ptr<TuningTable> readTuningItem(ByteView item, ContentFault& fault) {
    const auto count = item.at<std::int32_t>(0);
    if (!item.has(0, 4) || count < 0 || !item.has(4, 4 * static_cast<std::uint64_t>(count))) {
        fault = {0, "the entries leave the tuning"};
        return nullptr;
    }
    auto table = std::make_unique<TuningTable>();
    for (std::uint64_t at = 4; at < 4 + 4 * static_cast<std::uint64_t>(count); at += 4) {
        table->semitones.push_back(item.at<float>(at));
        if (std::isfinite(table->semitones.back())) continue;
        fault = {at, "an entry is no number"};
        return nullptr;
    }
    return table;
}

Bytes writeTuningItem(const TuningTable& table) {
    ByteWriter out;
    out.put(static_cast<std::int32_t>(table.semitones.size()));
    for (const float value : table.semitones) out.put(value);
    return out.take();
}

}  // namespace stratovane
