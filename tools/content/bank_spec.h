// What bank files are made of and taken apart into: a JSON file and sound files beside it.
#pragma once

#include <string>

#include "content/content_kind.h"
#include "content/sample_data.h"

namespace stratovane::content_tool {

/// Words of the JSON form.
struct FormatName {
    const char* name;
    SampleFormat format;
};
inline constexpr FormatName formatNames[] = {{"pcm16", SampleFormat::pcm16},
                                             {"float", SampleFormat::float32},
                                             {"delta", SampleFormat::delta}};

/// Empty for no format.
inline const char* formatName(SampleFormat format) {
    for (const FormatName& row : formatNames)
        if (row.format == format) return row.name;
    return "";
}
struct BankKindName {
    const char* name;
    ContentKind kind;
};
inline constexpr BankKindName bankKindNames[] = {{"samples", ContentKind::samples},
                                                 {"wavetables", ContentKind::wavetables},
                                                 {"drawbars", ContentKind::drawbars}};
inline constexpr std::size_t longestName = 255;
/// What the loader answers while a bank's items come in, unless the maker wishes otherwise.
inline constexpr int defaultCode = 1;

void buildBank(const std::string& specPath, const std::string& bankPath);
/// Writes "bank.json" and sound files into a folder. What the JSON form cannot say is told on
/// standard error.
void extractBank(const std::string& bankPath, const std::string& folder);

}  // namespace stratovane::content_tool
