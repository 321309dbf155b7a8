#include "platform/settings_store.h"

#include "platform/posix/settings_files.h"
#include "platform/posix/settings_text.h"

namespace stratovane {

std::string SettingsStore::read(std::string_view key, std::string_view name) const {
    std::string text;
    SettingsFiles::fromEnvironment().load(text);
    return std::string{SettingsText{text}.value(key, name).substr(0, longestValue)};
}

bool SettingsStore::write(std::string_view key, std::span<const NamedValue> values) {
    const SettingsFiles files = SettingsFiles::fromEnvironment();
    std::string text;
    if (!files.load(text)) return false;
    SettingsText settings{text};
    for (const NamedValue& v : values) {
        if (v.value.size() > longestValue || !SettingsText::canHold(key, v.name, v.value))
            return false;
        settings.set(key, v.name, v.value);
    }
    return files.save(settings.text());
}

}  // namespace stratovane
