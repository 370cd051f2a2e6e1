// palette_rows.h: The palette's rows, built from the stores, and their filtering by a query.
#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "palette/palette_item.h"
#include "shortcuts/shortcut.h"

namespace corvetta {

enum class PaletteSection { spaces, workspaces, layouts, actions };

// Every section in the order the palette shows them, with its header.
struct PaletteSectionRow {
    PaletteSection section;
    std::string_view title;
};
std::span<const PaletteSectionRow> paletteSectionTable();

struct PaletteRow {
    PaletteItem item;
    PaletteSection section;
    // The name as code points: what the query matches, and what matched positions index.
    std::u32string title;
    // The combination that does the same from anywhere ("⌃⌥1"); empty without one.
    std::string shortcutText;
    // Windows of a workspace, panes of a layout, "Active" for the active space.
    std::string badge;
    // "Global" or the name of the space the item belongs to; empty for spaces and actions.
    std::string scope;
    // The item belongs to the space that is active now (the active space's own row included).
    bool inActiveSpace = false;
    // Edit, clone or delete are offered for it.
    bool hasItemActions = false;
};

// What the rows are built from, read from the stores when the palette opens or they change.
struct PaletteSources {
    // Named spaces in stored order, and the "Global" stand-in listed before them.
    const std::vector<WorkspaceSpace>& spaces;
    const WorkspaceSpace& globalSpace;
    const std::vector<Workspace>& workspaces;
    const std::vector<CustomLayoutTemplate>& layouts;
    std::optional<Uuid> activeSpaceId;
    std::vector<PaletteAction> actions;
    // The stored combination of a global shortcut, for the actions' shortcut text.
    std::function<std::optional<Shortcut>(const std::string& shortcutName)> shortcutNamed;
};

std::vector<PaletteRow> buildPaletteRows(const PaletteSources& sources);

struct VisibleRow {
    std::size_t row = 0;
    // The match's score; without a query, minus the rank among the recent picks.
    int score = 0;
    // Code-point indices of the title that the query matched, for highlighting.
    std::vector<int> matched;
};

struct VisibleSection {
    PaletteSection section;
    std::string_view title;
    std::vector<VisibleRow> rows;
};

// The sections that keep rows, in section order. With a query: the matching rows of each section,
// best score first (equal scores keep stored order). Without one: every row, the ones picked
// recently first (most recent first, `recent` holding identities), then stored order.
std::vector<VisibleSection> filterPaletteRows(const std::vector<PaletteRow>& rows,
                                              std::string_view query,
                                              const std::vector<std::string>& recent);

}  // namespace corvetta
