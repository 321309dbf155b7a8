// What lies in a folder.
#pragma once

#include <string>
#include <vector>

namespace stratovane {

struct FolderEntry {
    std::string name;  // bytes, without the path
    bool isFolder = false;
};

/// The files and folders in `path`, sorted by the bytes of their names; links count as what they
/// lead to, and what is neither file nor folder is left out. False, and nothing listed, when the
/// folder cannot be read. UI thread.
bool listFolder(const std::string& path, std::vector<FolderEntry>& entries);

}  // namespace stratovane
