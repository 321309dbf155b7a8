#include "json_node.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <set>

#include "content/file_bytes.h"
#include "failure.h"
#include "shared/windows_1252.h"

namespace stratovane::content_tool {

namespace {

struct LineColumn {
    std::size_t line = 1, column = 1;
};
LineColumn placeOf(std::string_view text, std::size_t offset) {
    const std::string_view before = text.substr(0, offset);
    const std::size_t start = before.rfind('\n');
    return {1 + static_cast<std::size_t>(std::count(before.begin(), before.end(), '\n')),
            start == std::string_view::npos ? offset + 1 : offset - start};
}

/// What the parser says, less its own name, number and count of lines.
std::string reasonOf(std::string_view what) {
    const std::size_t at = what.find(": ");
    return std::string{at == std::string_view::npos ? what : what.substr(at + 2)};
}

std::string plain(double value) {
    char digits[32];
    return {digits, std::to_chars(digits, digits + sizeof digits, value).ptr};
}

}  // namespace

Json readJson(const std::string& path) {
    const auto bytes = readFile(path);
    if (!bytes) throw Failure{Exit::input, path + " cannot be read"};
    const std::string_view text = ByteView{*bytes}.text();
    std::vector<std::set<std::string>> keys;
    auto look = [&](int, Json::parse_event_t event, Json& parsed) {
        if (event == Json::parse_event_t::object_start) keys.emplace_back();
        if (event == Json::parse_event_t::object_end) keys.pop_back();
        if (event == Json::parse_event_t::key &&
            !keys.back().insert(parsed.get<std::string>()).second)
            throw Failure{Exit::input, path + ": the key \"" + parsed.get<std::string>() +
                                           "\" stands twice in one object"};
        return true;
    };
    try {
        return Json::parse(text, look, true, true);
    } catch (const Json::parse_error& error) {
        const LineColumn place = placeOf(text, error.byte == 0 ? 0 : error.byte - 1);
        throw Failure{Exit::input, path + ", line " + std::to_string(place.line) + ", column " +
                                       std::to_string(place.column) + ": " +
                                       reasonOf(error.what())};
    }
}

Json shortNumber(float value) {
    char digits[32];
    const auto end =
        std::to_chars(digits, digits + sizeof digits, value, std::chars_format::general, 9).ptr;
    double number = 0;
    std::from_chars(digits, end, number);
    if (std::nearbyint(number) == number && std::fabs(number) < 1e9)
        return static_cast<std::int64_t>(number);
    return number;
}

void JsonNode::refuse(const std::string& sentence) const {
    throw Failure{Exit::input, file_ + ", at " + (place_.empty() ? "/" : place_) + ": " + sentence};
}

JsonNode JsonNode::below(const Json& value, std::string_view key) const {
    JsonNode node{value, file_};
    node.place_ = place_ + "/" + std::string{key};
    return node;
}

void JsonNode::expectObject() const {
    if (!value_->is_object()) refuse("an object was expected");
}

void JsonNode::allow(std::initializer_list<std::string_view> keys) const {
    expectObject();
    for (const auto& [key, value] : value_->items())
        if (std::find(keys.begin(), keys.end(), key) == keys.end())
            below(value, key).refuse("there is no such key here");
}

std::optional<JsonNode> JsonNode::find(std::string_view key) const {
    expectObject();
    const auto found = value_->find(std::string{key});
    if (found == value_->end()) return std::nullopt;
    return below(*found, key);
}

JsonNode JsonNode::at(std::string_view key) const {
    auto found = find(key);
    if (!found) refuse("\"" + std::string{key} + "\" is missing");
    return *found;
}

std::vector<JsonNode> JsonNode::elements() const {
    if (!value_->is_array()) refuse("a list was expected");
    std::vector<JsonNode> nodes;
    for (const Json& value : *value_) nodes.push_back(below(value, std::to_string(nodes.size())));
    return nodes;
}

std::vector<JsonNode> JsonNode::elements(std::size_t count) const {
    auto nodes = elements();
    if (nodes.size() != count)
        refuse("a list of " + std::to_string(count) + " was expected, not of " +
               std::to_string(nodes.size()));
    return nodes;
}

std::vector<std::pair<std::string, JsonNode>> JsonNode::members() const {
    expectObject();
    std::vector<std::pair<std::string, JsonNode>> nodes;
    for (const auto& [key, value] : value_->items()) nodes.emplace_back(key, below(value, key));
    return nodes;
}

int JsonNode::integer(int low, int high) const {
    const double value = value_->is_number() ? value_->get<double>() : NAN;
    if (!(value >= low && value <= high) || value != std::floor(value))
        refuse("a whole number from " + std::to_string(low) + " to " + std::to_string(high) +
               " was expected");
    return static_cast<int>(value);
}

double JsonNode::exactNumber() const {
    if (!value_->is_number()) refuse("a number was expected");
    return value_->get<double>();
}

float JsonNode::number(float low, float high) const {
    const auto value = value_->is_number() ? value_->get<float>() : NAN;
    if (!(value >= low && value <= high))
        refuse("a number from " + plain(static_cast<double>(low)) + " to " +
               plain(static_cast<double>(high)) + " was expected");
    return value;
}

bool JsonNode::flag() const {
    if (!value_->is_boolean()) refuse("true or false was expected");
    return value_->get<bool>();
}

std::string JsonNode::text(std::size_t longest) const {
    if (!value_->is_string()) refuse("a text was expected");
    const auto text = windows1252FromUtf8(value_->get_ref<const std::string&>());
    if (!text) refuse("the text has a character that Windows-1252 has not");
    if (text->find('\0') != std::string::npos) refuse("the text has a NUL");
    if (text->size() > longest)
        refuse("the text has more than " + std::to_string(longest) + " characters");
    return *text;
}

std::string JsonNode::path() const {
    if (!value_->is_string() || value_->get_ref<const std::string&>().empty())
        refuse("the path of a file was expected");
    return value_->get<std::string>();
}

int JsonNode::integer(std::string_view key, int low, int high, int otherwise) const {
    const auto node = find(key);
    return node ? node->integer(low, high) : otherwise;
}
float JsonNode::number(std::string_view key, float low, float high, float otherwise) const {
    const auto node = find(key);
    return node ? node->number(low, high) : otherwise;
}
bool JsonNode::flag(std::string_view key, bool otherwise) const {
    const auto node = find(key);
    return node ? node->flag() : otherwise;
}
std::string JsonNode::text(std::string_view key, std::size_t longest) const {
    const auto node = find(key);
    return node ? node->text(longest) : std::string{};
}

}  // namespace stratovane::content_tool
