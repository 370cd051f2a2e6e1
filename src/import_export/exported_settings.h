// exported_settings.h: The settings an exported set-up carries: one table of keys, kinds and
// defaults.
#pragma once

#include <map>
#include <span>
#include <string>
#include <vector>

#include "foundation/preferences.h"
#include "shortcuts/shortcut.h"

namespace corvetta {

class HotKeyStore;

enum class ExportedSettingKind { number, boolean, integer, stringList };

struct ExportedSettingRow {
    const char* key;
    ExportedSettingKind kind;
    // What an export writes while the user never set the value.
    PropertyValue (*fallback)();
};

// Every setting an export writes, in the file's order (the "shortcuts" dictionary follows them).
std::span<const ExportedSettingRow> exportedSettingTable();
const ExportedSettingRow* findExportedSetting(std::string_view key);

// The settings part of an export: every table key with its value, and each static shortcut name
// with the combination in effect.
struct ExportedSettings {
    // Keys of the table; a file may leave some out, and those are then not applied.
    std::map<std::string, PropertyValue> values;
    std::map<std::string, Shortcut> shortcuts;

    bool operator==(const ExportedSettings&) const = default;
};

// The current values: stored ones where in range, the defaults otherwise.
ExportedSettings currentExportedSettings(const Preferences& defaults, const HotKeyStore& hotKeys);

// What an import changed, and what it left alone and why.
struct AppliedSettings {
    std::vector<std::string> changedKeys;
    std::vector<std::string> changedShortcuts;
    // "<key>: <reason>", e.g. a number out of range or a shortcut name this version lacks.
    std::vector<std::string> skipped;
};

// Writes every value that differs from the one in effect; values out of range and unknown
// shortcut names are skipped, never stored.
AppliedSettings applyExportedSettings(const ExportedSettings& settings, Preferences& defaults,
                                      HotKeyStore& hotKeys);

}  // namespace corvetta
