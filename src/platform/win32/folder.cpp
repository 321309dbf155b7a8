#include "platform/folder.h"

#include <algorithm>

#include "platform/win32/windows_api.h"

namespace stratovane {

bool listFolder(const std::string& path, std::vector<FolderEntry>& entries) {
    entries.clear();
    const bool ended = path.ends_with('\\') || path.ends_with('/');
    WIN32_FIND_DATAA found{};
    const HANDLE search = FindFirstFileA((path + (ended ? "*" : "\\*")).c_str(), &found);
    if (search == INVALID_HANDLE_VALUE) return false;
    do {
        const std::string name = found.cFileName;
        if (name != "." && name != "..")
            entries.push_back({name, (found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0});
    } while (FindNextFileA(search, &found));
    FindClose(search);
    std::sort(entries.begin(), entries.end(),
              [](const FolderEntry& a, const FolderEntry& b) { return a.name < b.name; });
    return true;
}

}  // namespace stratovane
