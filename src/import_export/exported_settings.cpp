#include "import_export/exported_settings.h"

#include <cmath>

#include "shortcuts/hot_key_store.h"
#include "shortcuts/shortcut_names.h"
#include "windowing/calculation_settings.h"

namespace corvetta {

namespace {

namespace cs = calculation_settings;
using Kind = ExportedSettingKind;

template <auto Value>
PropertyValue constant() {
    return PropertyValue(Value);
}

PropertyValue noBundles() {
    return PropertyValue(std::vector<std::string>{});
}

PropertyValue fraction() {
    return cs::kDefaultAlmostMaximizeFraction;
}
PropertyValue minimumFraction() {
    return cs::kDefaultMinimumWindowFraction;
}
PropertyValue gap() {
    return cs::kDefaultGapSize;
}
PropertyValue offset() {
    return cs::kDefaultSizeOffset;
}
PropertyValue zero() {
    return 0.0;
}

constexpr ExportedSettingRow kRows[] = {
    {cs::kGapSize, Kind::number, gap},
    {cs::kSizeOffset, Kind::number, offset},
    {cs::kMinimumWindowWidth, Kind::number, minimumFraction},
    {cs::kMinimumWindowHeight, Kind::number, minimumFraction},
    {cs::kAlmostMaximizeHeight, Kind::number, fraction},
    {cs::kAlmostMaximizeWidth, Kind::number, fraction},
    {cs::kSpecifiedHeight, Kind::number, zero},
    {cs::kSpecifiedWidth, Kind::number, zero},
    {cs::kCurtainChangeSize, Kind::boolean, constant<false>},
    {cs::kLayoutSpacing, Kind::number, zero},
    {"windowManagementEnabled", Kind::boolean, constant<true>},
    {"hideWindowManagementMenuItems", Kind::boolean, constant<false>},
    {"dragToSnapEnabled", Kind::boolean, constant<true>},
    {"snapModifiers", Kind::integer, constant<0>},
    {"avoidSystemConflicts", Kind::boolean, constant<true>},
    {"showToastNotifications", Kind::boolean, constant<true>},
    {"userExcludedBundleIDs", Kind::stringList, noBundles},
};

bool isNumericCalculationSetting(const char* key) {
    for (const auto& setting : cs::kNumericSettings) {
        if (std::string_view(setting.key) == key) {
            return true;
        }
    }
    return false;
}

std::optional<PropertyValue> storedValue(const Preferences& defaults,
                                         const ExportedSettingRow& row) {
    switch (row.kind) {
        case Kind::number:
            if (isNumericCalculationSetting(row.key)) {
                return cs::read(defaults, row.key);
            }
            if (const auto value = defaults.doubleValue(row.key)) {
                return *value;
            }
            return std::nullopt;
        case Kind::boolean:
            if (const auto value = defaults.boolValue(row.key)) {
                return *value;
            }
            return std::nullopt;
        case Kind::integer:
            if (const auto value = defaults.integer(row.key)) {
                return *value;
            }
            return std::nullopt;
        case Kind::stringList:
            if (const auto value = defaults.stringList(row.key)) {
                return PropertyValue(*value);
            }
            return std::nullopt;
    }
    return std::nullopt;
}

// Why a value cannot be stored under the row's key, or empty when it can.
std::string refusal(const ExportedSettingRow& row, const PropertyValue& value) {
    if (row.kind == Kind::number && isNumericCalculationSetting(row.key)) {
        const auto number = value.toDouble();
        if (!number || !cs::isInRange(row.key, *number)) {
            return "out of range";
        }
    }
    if (row.kind == Kind::integer) {
        const auto number = value.toInteger();
        if (!number || *number < 0) {
            return "not a modifier mask";
        }
    }
    return {};
}

}  // namespace

std::span<const ExportedSettingRow> exportedSettingTable() {
    return kRows;
}

const ExportedSettingRow* findExportedSetting(std::string_view key) {
    for (const auto& row : kRows) {
        if (key == row.key) {
            return &row;
        }
    }
    return nullptr;
}

ExportedSettings currentExportedSettings(const Preferences& defaults, const HotKeyStore& hotKeys) {
    ExportedSettings settings;
    for (const auto& row : kRows) {
        settings.values[row.key] = storedValue(defaults, row).value_or(row.fallback());
    }
    for (const auto& name : shortcutNameTable()) {
        if (name.role == ShortcutRole::recorderScratch) {
            continue;
        }
        if (const auto shortcut = hotKeys.shortcut(libraryShortcutName(name.name))) {
            settings.shortcuts[std::string(name.name)] = ShortcutConverter::toShortcut(*shortcut);
        }
    }
    return settings;
}

AppliedSettings applyExportedSettings(const ExportedSettings& settings, Preferences& defaults,
                                      HotKeyStore& hotKeys) {
    AppliedSettings applied;
    // Compared with what is in effect, so a default the user never set stays unset.
    const auto current = currentExportedSettings(defaults, hotKeys);
    for (const auto& [key, value] : settings.values) {
        const auto* row = findExportedSetting(key);
        if (row == nullptr) {
            applied.skipped.push_back(key + ": not a setting of this version");
            continue;
        }
        if (const auto reason = refusal(*row, value); !reason.empty()) {
            applied.skipped.push_back(key + ": " + reason);
            continue;
        }
        if (current.values.at(key) != value) {
            defaults.set(key, value);
            applied.changedKeys.push_back(key);
        }
    }
    for (const auto& [name, shortcut] : settings.shortcuts) {
        const auto* row = findShortcutNameRow(name);
        if (row == nullptr || row->role == ShortcutRole::recorderScratch) {
            applied.skipped.push_back(name + ": not a shortcut of this version");
            continue;
        }
        const auto hotKey = ShortcutConverter::toHotKeyShortcut(shortcut);
        if (!hotKey) {
            applied.skipped.push_back(name + ": not a key code");
            continue;
        }
        const auto libraryName = libraryShortcutName(name);
        if (hotKeys.shortcut(libraryName) != hotKey) {
            hotKeys.setShortcut(libraryName, hotKey);
            applied.changedShortcuts.push_back(name);
        }
    }
    return applied;
}

}  // namespace corvetta
