// Patches as readable JSON, both ways.
#pragma once

#include <string>

namespace stratovane::content_tool {

/// The three free texts in the order of the JSON form, as Patch::text takes them.
inline constexpr int textSelectors[] = {-10, -7, -8};

enum class Shows { changes, everything };

/// A patch record or program file as JSON text; what holds its default is left out unless wanted.
std::string patchJson(const std::string& path, Shows shows);
/// Writes a program file.
void buildPatch(const std::string& specPath, const std::string& patchPath);

}  // namespace stratovane::content_tool
