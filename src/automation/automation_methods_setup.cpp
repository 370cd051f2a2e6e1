#include <filesystem>
#include <optional>
#include <string>

#include "automation/mcp_error.h"
#include "automation/method_groups.h"

namespace corvetta {

namespace {

// The server does not share the client's working folder, so a relative path would land
// somewhere the client never meant.
std::filesystem::path requiredAbsolutePath(const MethodParams& params) {
    std::filesystem::path path = params.requiredText("path");
    if (!path.is_absolute()) {
        throw MCPError::invalidParam("Invalid param path: must be an absolute path, got \"" +
                                     path.string() + "\"");
    }
    return path;
}

Json summary(const ImportResult& file, const ResolvedImport& resolved) {
    Json renames = Json::array();
    for (const auto& rename : resolved.renames) {
        renames.push_back(Json{{"kind", rename.kind}, {"from", rename.from}, {"to", rename.to}});
    }
    return Json{{"version", file.version},
                {"workspaces", resolved.workspacesToAdd.size()},
                {"layouts", resolved.layoutsToAdd.size()},
                {"newSpaces", resolved.spacesToCreate.size()},
                {"renamed", resolved.renamedCount},
                {"shortcutsCleared", resolved.clearedShortcutCount},
                {"terminalCommands", resolved.terminalCommandCount},
                {"settings", resolved.settings.has_value()},
                {"renames", std::move(renames)}};
}

ImportResult readImport(const AutomationContext& context, const std::filesystem::path& path) {
    auto file = context.importExport.readImport(path);
    if (!file) {
        if (file.error().kind == ImportError::Kind::fileNotFound) {
            throw MCPError::notFound("file '" + path.string() + "'");
        }
        throw MCPError::invalidParam("Invalid param path: " + file.error().description());
    }
    return std::move(*file);
}

Json exportSetup(const AutomationContext& context, const MethodParams& params) {
    const auto written = context.importExport.exportSetup(requiredAbsolutePath(params));
    if (!written) {
        throw MCPError::invalidParam("Invalid param path: " + written.error().description());
    }
    return Json{{"path", written->string()},
                {"workspaces", context.workspaceService.workspaces().size()},
                {"spaces", context.spaceManager.spaces().size()},
                {"layouts", context.layoutStore.layouts().size()}};
}

Json importPreview(const AutomationContext& context, const MethodParams& params) {
    const auto file = readImport(context, requiredAbsolutePath(params));
    return summary(file, context.importExport.resolve(file));
}

Json importSetup(const AutomationContext& context, const MethodParams& params) {
    const auto path = requiredAbsolutePath(params);
    std::optional<ImportResult> file;
    try {
        file = readImport(context, path);
    } catch (const MCPError& error) {
        context.announcer.setupImportFailed(error.description());
        throw;
    }
    const auto resolved = context.importExport.resolve(*file);
    const auto applied = context.importExport.apply(resolved);
    context.announcer.setupImported(resolved);
    Json answer = summary(*file, resolved);
    Json changed = applied.settings.changedKeys;
    for (const auto& name : applied.settings.changedShortcuts) {
        changed.push_back(name);
    }
    answer["settingsChanged"] = std::move(changed);
    answer["settingsSkipped"] = applied.settings.skipped;
    return answer;
}

}  // namespace

void addSetupMethods(MethodTable& table, const SharedContext& context) {
    table["export_setup"] =
        answeringAtOnce([context](const MethodParams& p) { return exportSetup(*context, p); });
    table["import_preview"] =
        answeringAtOnce([context](const MethodParams& p) { return importPreview(*context, p); });
    table["import_setup"] =
        answeringAtOnce([context](const MethodParams& p) { return importSetup(*context, p); });
}

}  // namespace corvetta
