#include "import_export/workspace_import_export_service.h"

#include <ctime>

#include "foundation/files.h"
#include "import_export/setup_file.h"
#include "layouts/custom_layout_store.h"
#include "workspaces/space_manager.h"
#include "workspaces/workspace_service.h"

namespace corvetta {

namespace {

std::string counts(std::size_t workspaces, std::size_t spaces, std::size_t layouts) {
    return std::to_string(workspaces) + " workspaces, " + std::to_string(spaces) + " spaces, " +
           std::to_string(layouts) + " layouts";
}

}  // namespace

WorkspaceImportExportService::WorkspaceImportExportService(
    WorkspaceService& workspaces, SpaceManager& spaces, CustomLayoutStore& layouts,
    Preferences& defaults, HotKeyStore& hotKeys, LoggingService& logging, const Clock& clock,
    SettingsChanged settingsChanged)
    : workspaces_(workspaces),
      spaces_(spaces),
      layouts_(layouts),
      defaults_(defaults),
      hotKeys_(hotKeys),
      clock_(clock),
      settingsChanged_(std::move(settingsChanged)),
      logger(logging, kServiceName) {}

std::string WorkspaceImportExportService::proposedFileName() const {
    const std::time_t seconds = std::chrono::system_clock::to_time_t(clock_.now());
    std::tm local{};
    localtime_r(&seconds, &local);
    char stamp[32];
    std::strftime(stamp, sizeof stamp, "%Y-%m-%d_%H-%M-%S", &local);
    return std::string("Corvetta_Backup_") + stamp + ".json";
}

Expected<std::filesystem::path, ExportError> WorkspaceImportExportService::exportSetup(
    const std::filesystem::path& target) {
    WorkspaceExportData data;
    data.exportDate = clock_.now();
    data.workspaces = workspaces_.workspaces();
    data.spaces = spaces_.spaces();
    data.customLayouts = layouts_.layouts();
    data.settings = currentExportedSettings(defaults_, hotKeys_);
    logger.info("Starting export: " +
                counts(data.workspaces.size(), data.spaces.size(), data.customLayouts.size()));

    std::error_code ignored;
    const auto file =
        std::filesystem::is_directory(target, ignored) ? target / proposedFileName() : target;
    if (const auto written = writeFileAtomically(file, encodeSetupFile(data)); !written) {
        ExportError error{ExportError::Kind::encodingFailed, written.error().description()};
        logger.error("Failed to export: " + error.description());
        return unexpected(error);
    }
    logger.info("Successfully exported to " + file.string());
    return file;
}

Expected<ImportResult, ImportError> WorkspaceImportExportService::readImport(
    const std::filesystem::path& file) {
    const auto text = readFile(file);
    if (!text) {
        ImportError error =
            text.error().isMissing()
                ? ImportError{ImportError::Kind::fileNotFound, {}}
                : ImportError{ImportError::Kind::decodingFailed, text.error().description()};
        logger.error("Import failed: " + error.description());
        return unexpected(error);
    }
    auto result = decodeSetupFile(*text);
    if (!result) {
        logger.error("Import failed: " + result.error().description());
        return result;
    }
    if (result->version == "legacy") {
        logger.info("Imported file uses legacy format");
    }
    logger.info("Parsed import: " + counts(result->workspaces.size(), result->spaces.size(),
                                           result->customLayouts.size()));
    return result;
}

ResolvedImport WorkspaceImportExportService::resolve(const ImportResult& file) {
    // The global space counts as a space of the store, so no imported space takes its name.
    auto spaces = spaces_.spaces();
    spaces.push_back(spaces_.globalSpace());
    const auto resolved =
        resolveImport(file, CurrentSetup{workspaces_.workspaces(), spaces, layouts_.layouts()});
    logger.info("Resolved import: " + std::to_string(resolved.workspacesToAdd.size()) +
                " workspaces, " + std::to_string(resolved.layoutsToAdd.size()) + " layouts, " +
                std::to_string(resolved.spacesToCreate.size()) + " new spaces, " +
                std::to_string(resolved.renamedCount) + " renamed, " +
                std::to_string(resolved.clearedShortcutCount) + " shortcuts cleared, " +
                std::to_string(resolved.terminalCommandCount) + " with terminal commands");
    return resolved;
}

AppliedImport WorkspaceImportExportService::apply(const ResolvedImport& resolved) {
    spaces_.addSpaces(resolved.spacesToCreate);
    layouts_.add(resolved.layoutsToAdd);
    workspaces_.addWorkspaces(resolved.workspacesToAdd);
    AppliedImport applied;
    if (resolved.settings) {
        applied.settings = applyExportedSettings(*resolved.settings, defaults_, hotKeys_);
        for (const auto& skipped : applied.settings.skipped) {
            logger.warning("Import skipped setting " + skipped);
        }
        if (!applied.settings.changedKeys.empty() && settingsChanged_) {
            settingsChanged_(applied.settings.changedKeys);
        }
    }
    logger.info("Imported " + counts(resolved.workspacesToAdd.size(),
                                     resolved.spacesToCreate.size(), resolved.layoutsToAdd.size()));
    return applied;
}

}  // namespace corvetta
