#include "platform/folder.h"

#include <dirent.h>
#include <sys/stat.h>

#include <algorithm>
#include <memory>

namespace stratovane {

bool listFolder(const std::string& path, std::vector<FolderEntry>& entries) {
    struct Close {
        void operator()(DIR* folder) const { closedir(folder); }
    };
    entries.clear();
    const std::unique_ptr<DIR, Close> folder{opendir(path.c_str())};
    if (!folder) return false;
    while (const dirent* found = readdir(folder.get())) {
        const std::string name = found->d_name;
        if (name == "." || name == "..") continue;
        struct stat status {};
        if (fstatat(dirfd(folder.get()), name.c_str(), &status, 0) != 0) continue;
        if (S_ISREG(status.st_mode) || S_ISDIR(status.st_mode))
            entries.push_back({name, S_ISDIR(status.st_mode)});
    }
    std::sort(entries.begin(), entries.end(),
              [](const FolderEntry& a, const FolderEntry& b) { return a.name < b.name; });
    return true;
}

}  // namespace stratovane
