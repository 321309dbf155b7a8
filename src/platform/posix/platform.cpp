#include "platform/platform.h"

#include <dlfcn.h>

#include <cstdio>
#include <filesystem>

#include "platform/message_box.h"

namespace stratovane {

std::string ownPath() {
    Dl_info info{};
    if (dladdr(reinterpret_cast<const void*>(&ownPath), &info) == 0 || info.dli_fname == nullptr)
        return {};
    std::filesystem::path path = info.dli_fname;
    std::error_code failed;
    // A program that the shell found by name alone: only the system knows where it was.
    if (!path.has_parent_path()) {
        const std::filesystem::path program =
            std::filesystem::read_symlink("/proc/self/exe", failed);
        if (!failed) return program.string();
    }
    path = std::filesystem::absolute(path, failed);
    return failed ? std::string{} : path.string();
}

void debugOutput(const char* line) { std::fputs(line, stderr); }

int systemMessageBox(const char* text, bool) {
    std::fprintf(stderr, "Stratovane 2: %s\n", text);
    return 0;
}

}  // namespace stratovane
