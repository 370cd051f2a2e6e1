// shortcut_families.h: The records' shortcut families and the comparisons the shortcut service
// shares.
#pragma once

#include <array>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "layouts/custom_layout_store.h"
#include "shortcuts/shortcut.h"
#include "shortcuts/shortcut_names.h"
#include "workspaces/space_manager.h"
#include "workspaces/workspace_service.h"

namespace corvetta::shortcut_families {

// The records' shortcut families: the name prefix, how the family's owners and conflicts read,
// the store announcing their changes, and the lines framing their registration.
struct FamilyRow {
    std::string_view prefix;
    std::string (*shortcutName)(std::string_view id);
    const char* noun;
    const char* conflictPrefix;
    const char* didChange;
    std::vector<const char*> startLines;
    const char* doneLine;
};

inline const std::array<FamilyRow, 3>& familyTable() {
    static const std::array<FamilyRow, 3> table{{
        {kWorkspaceShortcutPrefix,
         workspaceShortcutName,
         "workspace",
         "Workspace shortcut conflict: ",
         WorkspaceService::kWorkspacesDidChange,
         {"Registering workspace shortcuts...",
          "Registering workspace shortcuts with KeyboardShortcuts"},
         "Workspace shortcuts registration complete"},
        {kSpaceShortcutPrefix,
         spaceShortcutName,
         "space",
         "Space shortcut conflict: ",
         SpaceManager::kSpacesDidChange,
         {"Registering space shortcuts..."},
         "Space shortcuts registration complete"},
        {kLayoutShortcutPrefix,
         layoutShortcutName,
         "layout",
         "Layout shortcut conflict: ",
         CustomLayoutStore::kDidChangeNotification,
         {"Registering custom layout shortcuts..."},
         "Custom layout shortcuts registration complete"},
    }};
    return table;
}

inline constexpr const char* kActionConflictPrefix = "Shortcut conflict: ";

// Both the records' optional halves, or nothing.
template <class Record>
std::optional<Shortcut> recordShortcut(const Record& record) {
    if (!record.shortcutKeyCode || !record.shortcutModifiers) {
        return std::nullopt;
    }
    return Shortcut{*record.shortcutKeyCode, *record.shortcutModifiers};
}

// Only the four modifiers make a combination different; the other flag bits never reach a hot key.
inline Shortcut normalized(const Shortcut& shortcut) {
    return {shortcut.keyCode, ShortcutConverter::eventModifierFlags(
                                  ShortcutConverter::carbonModifiers(shortcut.modifiers))};
}

inline std::string quoted(const char* noun, const std::string& name) {
    return std::string(noun) + " '" + name + "'";
}

}  // namespace corvetta::shortcut_families
