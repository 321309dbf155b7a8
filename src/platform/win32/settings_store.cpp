#include "platform/settings_store.h"

#include <algorithm>

#include "platform/win32/windows_api.h"

namespace stratovane {

namespace {

class Key {
  public:
    Key() = default;
    ~Key() {
        if (key_ != nullptr) RegCloseKey(key_);
    }
    Key(const Key&) = delete;
    Key& operator=(const Key&) = delete;
    bool open(std::string_view name) {
        return RegOpenKeyExA(HKEY_LOCAL_MACHINE, std::string{name}.c_str(), 0, KEY_QUERY_VALUE,
                             &key_) == ERROR_SUCCESS;
    }
    bool create(std::string_view name) {
        return RegCreateKeyExA(HKEY_LOCAL_MACHINE, std::string{name}.c_str(), 0, nullptr, 0,
                               KEY_SET_VALUE, nullptr, &key_, nullptr) == ERROR_SUCCESS;
    }
    HKEY get() const { return key_; }

  private:
    HKEY key_ = nullptr;
};

bool canHold(const NamedValue& v) {
    constexpr std::string_view lineEnds{"\r\n\0", 3};
    return v.value.size() <= SettingsStore::longestValue && !v.name.empty() &&
           v.name.find('\0') == v.name.npos && v.value.find_first_of(lineEnds) == v.value.npos;
}

}  // namespace

std::string SettingsStore::read(std::string_view key, std::string_view name) const {
    Key opened;
    if (!opened.open(key)) return {};
    char text[longestValue + 1];
    DWORD type = 0, size = sizeof text;
    if (RegQueryValueExA(opened.get(), std::string{name}.c_str(), nullptr, &type,
                         reinterpret_cast<BYTE*>(text), &size) != ERROR_SUCCESS ||
        type != REG_SZ)
        return {};
    // The terminator is there only if whoever wrote it put it there.
    const char* end = std::find(text, text + size, '\0');
    const std::size_t length = std::min(static_cast<std::size_t>(end - text), longestValue);
    return std::string(text, length);
}

bool SettingsStore::write(std::string_view key, std::span<const NamedValue> values) {
    if (!std::all_of(values.begin(), values.end(), canHold)) return false;
    Key created;
    if (!created.create(key)) return false;
    return std::all_of(values.begin(), values.end(), [&](const NamedValue& v) {
        const std::string text{v.value};
        return RegSetValueExA(created.get(), std::string{v.name}.c_str(), 0, REG_SZ,
                              reinterpret_cast<const BYTE*>(text.c_str()),
                              static_cast<DWORD>(text.size() + 1)) == ERROR_SUCCESS;
    });
}

}  // namespace stratovane
