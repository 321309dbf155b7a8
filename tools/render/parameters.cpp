#include "parameters.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <cstdio>
#include <string_view>

namespace stratovane::render {

namespace {

/// Names agree without regard to case and to how many blanks stand in one place.
std::string comparable(std::string_view name) {
    std::string text;
    for (const char c : name) {
        if (c == ' ' && (text.empty() || text.back() == ' ')) continue;
        text.push_back(static_cast<char>(std::tolower(static_cast<unsigned char>(c))));
    }
    if (text.ends_with(' ')) text.pop_back();
    return text;
}

std::optional<int> asIndex(std::string_view text) {
    int index = 0;
    const char* end = text.data() + text.size();
    const auto read = std::from_chars(text.data(), end, index);
    if (read.ec == std::errc::result_out_of_range) return -1;  // a number, and of no parameter
    if (read.ec != std::errc{} || read.ptr != end) return {};
    return index;
}

Failure usage(std::string sentence) { return {Exit::usage, std::move(sentence)}; }

std::variant<int, Failure> find(PluginHost& plugIn, const std::string& parameter) {
    const int count = plugIn.parameters();
    if (const auto index = asIndex(parameter)) {
        if (*index >= 0 && *index < count) return *index;
        return usage("there is no parameter " + parameter + "; they are numbered from 0 to " +
                     std::to_string(count - 1));
    }
    const std::string wanted = comparable(parameter);
    std::vector<int> found;
    for (int index = 0; index < count; ++index)
        if (comparable(plugIn.text(Opcode::getParameterName, index)) == wanted)
            found.push_back(index);
    if (found.size() == 1) return found.front();
    if (found.empty())
        return usage("there is no parameter \"" + parameter + "\"; --list-parameters lists them");
    return usage(std::to_string(found.size()) + " parameters are called \"" + parameter +
                 "\", the first has the index " + std::to_string(found.front()) +
                 "; give an index");
}

}  // namespace

std::optional<Failure> setParameters(PluginHost& plugIn,
                                     const std::vector<ParameterChoice>& choices) {
    std::vector<int> indices;
    for (const ParameterChoice& choice : choices) {
        const auto index = find(plugIn, choice.parameter);
        if (const auto* failure = std::get_if<Failure>(&index)) return *failure;
        indices.push_back(std::get<int>(index));
    }
    for (std::size_t i = 0; i < choices.size(); ++i)
        plugIn.setParameter(indices[i], choices[i].value);
    return {};
}

std::string parameterList(PluginHost& plugIn) {
    std::string list;
    for (int index = 0; index < plugIn.parameters(); ++index) {
        char line[512];
        std::snprintf(line, sizeof line, "%4d  %-23s %s", index,
                      plugIn.text(Opcode::getParameterName, index).c_str(),
                      plugIn.text(Opcode::getParameterDisplay, index).c_str());
        std::string_view text{line};
        text = text.substr(0, text.find_last_not_of(' ') + 1);
        list.append(text).push_back('\n');
    }
    return list;
}

}  // namespace stratovane::render
