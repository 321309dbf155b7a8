// A value of a JSON file that knows its place, so that whatever is wrong with it is told there.
#pragma once

#include <initializer_list>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace stratovane::content_tool {

using Json = nlohmann::ordered_json;

/// Reads a file; twice the same key in an object is a fault, too.
Json readJson(const std::string& path);
/// A number that is written with nine digits, which tell every float from its neighbours.
Json shortNumber(float value);

/// The getters throw a Failure that names file, place and what was expected.
class JsonNode {
  public:
    JsonNode(const Json& value, std::string file) : value_{&value}, file_{std::move(file)} {}

    [[noreturn]] void refuse(const std::string& sentence) const;
    const std::string& file() const { return file_; }

    bool isObject() const { return value_->is_object(); }
    bool isArray() const { return value_->is_array(); }
    /// Of an object: whether no other keys than these are there.
    void allow(std::initializer_list<std::string_view> keys) const;
    std::optional<JsonNode> find(std::string_view key) const;
    JsonNode at(std::string_view key) const;
    std::vector<JsonNode> elements() const;
    std::vector<JsonNode> elements(std::size_t count) const;
    /// Keys and values of an object in the file's order.
    std::vector<std::pair<std::string, JsonNode>> members() const;

    int integer(int low, int high) const;
    float number(float low, float high) const;
    double exactNumber() const;
    bool flag() const;
    /// In Windows-1252, at most `longest` bytes, without NUL.
    std::string text(std::size_t longest) const;
    /// Bytes as they stand: paths.
    std::string path() const;

    // A member or what stands for it when it is not there.
    int integer(std::string_view key, int low, int high, int otherwise) const;
    float number(std::string_view key, float low, float high, float otherwise) const;
    bool flag(std::string_view key, bool otherwise) const;
    std::string text(std::string_view key, std::size_t longest) const;

  private:
    JsonNode below(const Json& value, std::string_view key) const;
    void expectObject() const;

    const Json* value_;
    std::string file_, place_;
};

}  // namespace stratovane::content_tool
