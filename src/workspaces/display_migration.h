// display_migration.h: Maps a saved window frame onto the displays as they are now.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "foundation/geometry.h"
#include "platform/screen.h"
#include "workspaces/display_fingerprint.h"
#include "workspaces/workspace.h"

namespace corvetta {

// Which rule placed a window.
enum class MigrationRule {
    // Its display is here, at the same size: the same offset from the display's corner.
    sameDisplay,
    // Its display is here at another size: offset and size scaled with it.
    scaled,
    // Its display is gone: proportionally onto the display that took its role.
    replacement,
    // The record does not say which display it stood on: kept where it is.
    unknownDisplay,
};

// "same_display", "scaled", "replacement", "unknown_display", for log lines.
const char* migrationRuleName(MigrationRule rule);

struct MigratedFrame {
    // Accessibility space, whole points, inside the target's visible frame.
    Rect frame;
    // Index into the current screens.
    std::size_t screenIndex = 0;
    MigrationRule rule = MigrationRule::unknownDisplay;

    bool operator==(const MigratedFrame&) const = default;
};

// The display a window stands on: the first whose frame contains the window's centre, else the
// one it overlaps most; none when it overlaps no display. Frames in one space, any space.
std::optional<std::size_t> displayHolding(const Rect& window, const std::vector<Rect>& displays);

// Matches the saved displays to the current ones once (identical monitors by place, then UUID,
// then display key, then fingerprint similarity; each current display taken once), then places
// windows: relative to their display, never as absolute desktop pixels. docs/workspaces.md has
// the rules with worked examples.
class DisplayMigration {
public:
    // `current` as the displays port lists them, the primary first.
    DisplayMigration(std::optional<DisplayArrangementInfo> saved, std::vector<Screen> current);

    // None only when there are no current displays.
    std::optional<MigratedFrame> migrate(const WindowInfo& window) const;

    // The current display a saved one matched, by index; none when it is gone.
    std::optional<std::size_t> matchOf(std::size_t savedIndex) const {
        return matches_[savedIndex];
    }

private:
    struct Current {
        DisplayFingerprint fingerprint;
        Rect frame;
        Rect visibleFrame;
    };

    void matchDisplays();
    std::optional<std::size_t> savedIndexOf(const std::string& monitorID) const;
    // The saved display's frame in the saved arrangement's accessibility space.
    Rect savedFrame(std::size_t savedIndex) const;
    std::size_t replacementFor(std::size_t savedIndex) const;
    MigratedFrame unknownDisplay(const Rect& frame) const;
    MigratedFrame placed(Rect frame, std::size_t screenIndex, MigrationRule rule) const;

    std::optional<DisplayArrangementInfo> saved_;
    std::vector<Current> current_;
    std::vector<std::optional<std::size_t>> matches_;
};

}  // namespace corvetta
