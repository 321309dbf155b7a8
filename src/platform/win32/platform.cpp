#include "platform/platform.h"

#include "platform/message_box.h"
#include "platform/win32/windows_api.h"

namespace stratovane {

std::string ownPath() {
    HMODULE module = nullptr;
    if (!GetModuleHandleExA(
            GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
            reinterpret_cast<LPCSTR>(&ownPath), &module))
        return {};
    std::string path(MAX_PATH, '\0');
    for (;;) {
        const DWORD length =
            GetModuleFileNameA(module, path.data(), static_cast<DWORD>(path.size()));
        if (length < path.size()) {
            path.resize(length);
            return path;
        }
        if (path.size() > 32768) return {};  // the longest path there can be
        path.resize(path.size() * 2);
    }
}

void debugOutput(const char* line) { OutputDebugStringA(line); }

int systemMessageBox(const char* text, bool question) {
    const UINT buttons = question ? MB_YESNO | MB_ICONQUESTION : MB_OK | MB_ICONWARNING;
    const int answer = MessageBoxA(nullptr, text, "Stratovane 2", buttons | MB_TASKMODAL);
    return question && answer == IDYES ? 1 : 0;
}

}  // namespace stratovane
