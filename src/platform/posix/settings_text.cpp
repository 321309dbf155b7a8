#include "platform/posix/settings_text.h"

#include <algorithm>

namespace stratovane {

namespace {

using namespace std::string_view_literals;
constexpr std::string_view blanks = " \t";
constexpr std::string_view lineEnds = "\r\n\0"sv;

std::string_view trimmed(std::string_view text) {
    const std::size_t first = text.find_first_not_of(blanks);
    if (first == text.npos) return {};
    return text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

std::string_view withoutReturn(std::string_view line) {
    return line.ends_with('\r') ? line.substr(0, line.size() - 1) : line;
}

bool isComment(std::string_view line) {
    line = trimmed(line);
    return line.starts_with(';') || line.starts_with('#');
}

// A key may end in a blank, so nothing inside the brackets is trimmed.
bool isSection(std::string_view line, std::string_view& key) {
    line = trimmed(line);
    if (line.size() < 2 || line.front() != '[' || line.back() != ']') return false;
    key = line.substr(1, line.size() - 2);
    return true;
}

}  // namespace

SettingsText::SettingsText(std::string_view text) {
    while (!text.empty()) {
        const std::size_t end = std::min(text.find('\n'), text.size());
        lines_.emplace_back(text.substr(0, end));
        text.remove_prefix(std::min(end + 1, text.size()));
    }
}

SettingsText::Place SettingsText::find(std::string_view key, std::string_view name) const {
    Place place{none, none};
    bool inside = false;
    for (std::size_t i = 0; i < lines_.size(); ++i) {
        const std::string_view line = withoutReturn(lines_[i]);
        std::string_view section;
        if (isSection(line, section)) {
            inside = section == key;
            if (inside && place.insert == none) place.insert = i + 1;
            continue;
        }
        if (!inside || trimmed(line).empty()) continue;
        place.insert = i + 1;
        const std::size_t equals = line.find('=');
        if (isComment(line) || equals == line.npos) continue;
        if (trimmed(line.substr(0, equals)) == name) {
            place.value = i;
            break;
        }
    }
    return place;
}

std::string_view SettingsText::value(std::string_view key, std::string_view name) const {
    const Place place = find(key, name);
    if (place.value == none) return {};
    const std::string_view line = withoutReturn(lines_[place.value]);
    return line.substr(line.find('=') + 1);
}

void SettingsText::set(std::string_view key, std::string_view name, std::string_view value) {
    std::string line = std::string{name} + '=' + std::string{value};
    const Place place = find(key, name);
    if (place.value != none) {
        lines_[place.value] = std::move(line);
    } else if (place.insert != none) {
        lines_.insert(lines_.begin() + static_cast<std::ptrdiff_t>(place.insert), std::move(line));
    } else {
        if (!lines_.empty() && !lines_.back().empty()) lines_.emplace_back();
        lines_.push_back('[' + std::string{key} + ']');
        lines_.push_back(std::move(line));
    }
}

std::string SettingsText::text() const {
    std::string whole;
    for (const std::string& line : lines_) {
        whole += line;
        whole += '\n';
    }
    return whole;
}

bool SettingsText::canHold(std::string_view key, std::string_view name, std::string_view value) {
    std::string_view section;
    const auto onOneLine = [](std::string_view text) {
        return text.find_first_of(lineEnds) == text.npos;
    };
    return onOneLine(key) && onOneLine(name) && onOneLine(value) && !name.empty() &&
           trimmed(name) == name && name.find('=') == name.npos && !isComment(name) &&
           !isSection(std::string{name} + '=' + std::string{value}, section);
}

}  // namespace stratovane
