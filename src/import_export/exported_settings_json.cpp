#include "import_export/exported_settings_json.h"

#include "foundation/property_value_json.h"
#include "shortcuts/shortcut_json.h"

namespace corvetta {

namespace {

PropertyValue decodeSetting(const ExportedSettingRow& row, const JsonObjectReader& reader) {
    switch (row.kind) {
        case ExportedSettingKind::number:
            return reader.get<double>(row.key);
        case ExportedSettingKind::boolean:
            return reader.get<bool>(row.key);
        case ExportedSettingKind::integer:
            return reader.get<std::int64_t>(row.key);
        case ExportedSettingKind::stringList:
            return PropertyValue(reader.get<std::vector<std::string>>(row.key));
    }
    return {};
}

}  // namespace

Json exportedSettingsToJson(const ExportedSettings& settings) {
    Json object = Json::object();
    for (const auto& row : exportedSettingTable()) {
        if (const auto found = settings.values.find(row.key); found != settings.values.end()) {
            object[row.key] = propertyValueToJson(found->second);
        }
    }
    Json shortcuts = Json::object();
    for (const auto& [name, shortcut] : settings.shortcuts) {
        shortcuts[name] = shortcutToJson(shortcut);
    }
    object["shortcuts"] = std::move(shortcuts);
    return object;
}

ExportedSettings exportedSettingsFromJson(const Json& value, const std::string& path) {
    const JsonObjectReader reader(value, path);
    ExportedSettings settings;
    for (const auto& row : exportedSettingTable()) {
        if (reader.has(row.key)) {
            settings.values[row.key] = decodeSetting(row, reader);
        }
    }
    if (reader.has("shortcuts")) {
        const auto shortcuts = reader.child("shortcuts");
        for (const auto& [name, shortcut] : shortcuts.raw().items()) {
            settings.shortcuts[name] = shortcutFromJson(shortcut, shortcuts.pathOf(name));
        }
    }
    return settings;
}

}  // namespace corvetta
