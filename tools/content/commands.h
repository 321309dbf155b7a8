// What the program does, one function a command. Each throws a Failure.
#pragma once

#include <string>
#include <vector>

#include "failure.h"

namespace stratovane::content_tool {

void listContent(const std::string& folder);
/// Prints a line for every fault; answers Exit::faults when there is one.
Exit checkContent(const std::string& folder);
void findPatches(const std::string& folder, const std::vector<std::string>& words);
void showInfo(const std::string& path);
void makeTuning(const std::string& scale, const std::string& mapping, const std::string& out);
void makePhrase(const std::string& midiFile, const std::string& out);

}  // namespace stratovane::content_tool
