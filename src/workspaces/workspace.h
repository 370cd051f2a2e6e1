// workspace.h: The saved workspace records: windows, their frames and displays, and shortcuts.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "foundation/geometry.h"
#include "foundation/uuid.h"
#include "workspaces/display_fingerprint.h"

namespace corvetta {

// One saved window: where it stood and enough identity to find or recreate it later.
struct WindowInfo {
    // Accessibility space: top-left origin of the main display, y downward.
    Rect frame;
    // The display's persistent UUID text; a display that has none (no EDID) is named by its
    // display key instead, so windows on it still find their display again.
    std::optional<std::string> monitorID;
    std::optional<std::string> appBundleIdentifier;
    bool isFullscreen = false;
    // Stacking position at capture, 0 = frontmost.
    std::optional<int> zOrder;
    std::optional<std::string> windowTitle;
    // Index among the application's windows at capture.
    std::optional<int> windowIndex;
    // The menu holding the application's "new window" item, and that item.
    std::optional<std::string> newWindowMenuName;
    std::optional<std::string> newWindowItemTitle;
    // Present (true) only for a window that was minimized, so records of ordinary windows stay
    // the ones a Mac writes.
    std::optional<bool> isMinimized;

    bool operator==(const WindowInfo&) const = default;
};

// A layout attached to a workspace. Its panes are unit rectangles of a display's usable area
// (origin at the lower left, y upward, first pane filled first), the same form layout templates
// keep, so a template can be attached or extracted without conversion.
struct CustomLayout {
    Uuid id;
    std::string name;
    std::vector<Rect> layout;

    bool operator==(const CustomLayout&) const = default;
};

// A key code and modifier flags, compared as a pair when shortcuts are checked for clashes.
struct ShortcutCombo {
    std::uint16_t keyCode = 0;
    std::uint32_t modifiers = 0;

    bool operator==(const ShortcutCombo&) const = default;
};

// A named, saved set of application windows. The id is optional on purpose: lists written by old
// versions hold workspaces without one.
struct Workspace {
    std::optional<Uuid> id;
    std::string name;
    std::vector<WindowInfo> windowInfos;
    std::optional<std::uint16_t> shortcutKeyCode;
    std::optional<std::uint32_t> shortcutModifiers;
    std::optional<DisplayArrangementInfo> displayArrangement;
    std::optional<CustomLayout> customLayout;
    // Absent means off.
    std::optional<bool> closeNonWorkspaceWindows;
    std::optional<bool> skipLaunchMissingApps;
    // Absent means the global space.
    std::optional<Uuid> spaceId;
    std::optional<std::string> folder;
    // Deeplink key to the raw deeplink text.
    std::optional<std::map<std::string, std::string>> appDeeplinks;

    bool operator==(const Workspace&) const = default;
};

// A stored list read element by element: what decoded, and how many entries did not.
struct LossyWorkspaces {
    std::vector<Workspace> workspaces;
    std::size_t dropped = 0;
};

}  // namespace corvetta

template <>
struct std::hash<corvetta::ShortcutCombo> {
    std::size_t operator()(const corvetta::ShortcutCombo& combo) const noexcept {
        return (std::size_t{combo.keyCode} << 32) ^ combo.modifiers;
    }
};
