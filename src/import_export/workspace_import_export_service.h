// workspace_import_export_service.h: Writes the whole set-up to one file and merges such a file
// back in.
#pragma once

#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "diagnostics/logger.h"
#include "foundation/clock.h"
#include "foundation/expected.h"
#include "import_export/import_export_errors.h"
#include "import_export/import_resolution.h"

namespace corvetta {

class CustomLayoutStore;
class HotKeyStore;
class Preferences;
class SpaceManager;
class WorkspaceService;

// What an import changed, beyond the records it added.
struct AppliedImport {
    AppliedSettings settings;
};

class WorkspaceImportExportService {
public:
    static constexpr const char* kServiceName = "WorkspaceImportExportService";

    // Told which settings an import changed, so whoever reacts to them can be told.
    using SettingsChanged = std::function<void(const std::vector<std::string>& keys)>;

    WorkspaceImportExportService(WorkspaceService& workspaces, SpaceManager& spaces,
                                 CustomLayoutStore& layouts, Preferences& defaults,
                                 HotKeyStore& hotKeys, LoggingService& logging, const Clock& clock,
                                 SettingsChanged settingsChanged);

    // "Corvetta_Backup_<local yyyy-MM-dd_HH-mm-ss>.json", the name an export proposes.
    std::string proposedFileName() const;

    // Writes the set-up to `target`, or into it under the proposed name when it is a folder.
    // Returns the file written.
    Expected<std::filesystem::path, ExportError> exportSetup(const std::filesystem::path& target);

    // Reads a file; changes nothing.
    Expected<ImportResult, ImportError> readImport(const std::filesystem::path& file);
    // What importing `file` would add to the set-up as it is now.
    ResolvedImport resolve(const ImportResult& file);
    // Adds the resolved records to their stores (spaces first, so references hold throughout)
    // and applies the file's settings.
    AppliedImport apply(const ResolvedImport& resolved);

private:
    WorkspaceService& workspaces_;
    SpaceManager& spaces_;
    CustomLayoutStore& layouts_;
    Preferences& defaults_;
    HotKeyStore& hotKeys_;
    const Clock& clock_;
    SettingsChanged settingsChanged_;
    Logger logger;
};

}  // namespace corvetta
