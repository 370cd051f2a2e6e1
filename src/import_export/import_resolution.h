// import_resolution.h: Turns what a set-up file holds into what importing it adds, without
// overwriting anything.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "foundation/date.h"
#include "foundation/uuid.h"
#include "import_export/exported_settings.h"
#include "layouts/custom_layout_template.h"
#include "workspaces/workspace.h"
#include "workspaces/workspace_space.h"

namespace corvetta {

// What a file held, as read.
struct ImportResult {
    std::vector<Workspace> workspaces;
    std::vector<WorkspaceSpace> spaces;
    std::vector<CustomLayoutTemplate> customLayouts;
    // "2.0" from this version's exports, "legacy" for a bare list of workspaces.
    std::string version;
    // Both absent for a legacy file.
    std::optional<Date> exportDate;
    std::optional<ExportedSettings> settings;
};

// One name an import changes, for the preview.
struct ImportRename {
    // "workspace", "space" or "layout".
    std::string kind;
    std::string from;
    std::string to;
};

// What importing will do, once confirmed.
struct ResolvedImport {
    std::vector<WorkspaceSpace> spacesToCreate;
    std::vector<CustomLayoutTemplate> layoutsToAdd;
    std::vector<Workspace> workspacesToAdd;
    int clearedShortcutCount = 0;
    int renamedCount = 0;
    std::optional<ExportedSettings> settings;
    // Imported workspaces with a deeplink a terminal would type as a command.
    int terminalCommandCount = 0;
    std::vector<ImportRename> renames;
};

// The set-up an import merges into.
struct CurrentSetup {
    const std::vector<Workspace>& workspaces;
    const std::vector<WorkspaceSpace>& spaces;
    const std::vector<CustomLayoutTemplate>& layouts;
};

// Names stay unique per kind ("<name> (Imported)", "(Imported 2)", ...), identifiers the store
// already has are renewed and the references to them follow, references to spaces nobody has
// become the global space, combinations already in use are cleared, and a built-in layout copy
// the store already has becomes the user's own. `newId` makes fresh identifiers.
ResolvedImport resolveImport(const ImportResult& file, const CurrentSetup& current,
                             const std::function<Uuid()>& newId = &Uuid::random);

}  // namespace corvetta
