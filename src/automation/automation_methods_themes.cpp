#include <filesystem>
#include <optional>
#include <string>

#include "automation/mcp_error.h"
#include "automation/method_groups.h"

namespace corvetta {

namespace {

Json themeEntry(const ThemeDefinition& theme, const ThemeManager& themes) {
    return Json{{"id", theme.id},
                {"name", theme.name},
                {"source", themeSourceName(theme.source)},
                {"current", theme.id == themes.current().id}};
}

Json listThemes(const AutomationContext& context) {
    Json themes = Json::array();
    for (const auto& theme : context.themes.installedThemes()) {
        themes.push_back(themeEntry(theme, context.themes));
    }
    return Json{{"themes", std::move(themes)},
                {"current", context.themes.current().id},
                {"appearance", context.themes.isDark() ? "dark" : "light"}};
}

// The theme from a file the server reads, or from JSON text in the request; exactly one.
Json importTheme(const AutomationContext& context, const MethodParams& params) {
    const auto path = params.optionalText("path");
    // As text, the way it is pasted, or as the object itself, the way a client builds it.
    std::optional<std::string> text;
    if (const auto* json = params.find("json"); json != nullptr && json->is_object()) {
        text = writeJson(*json, JsonStyle::compact);
    } else {
        text = params.optionalText("json");
    }
    if (path.has_value() == text.has_value()) {
        throw MCPError::invalidParam(
            "Invalid param: give either path (a theme file) or json (the theme itself)");
    }
    if (path && !std::filesystem::path(*path).is_absolute()) {
        // The server does not share the client's working folder.
        throw MCPError::invalidParam("Invalid param path: must be an absolute path, got \"" +
                                     *path + "\"");
    }
    const auto editing = params.optionalText("editing");
    const auto result = path ? context.themes.importThemeFile(*path, editing)
                             : context.themes.importTheme(*text, editing);
    context.announcer.themeImported(result);
    if (!result) {
        throw MCPError::invalidParam(result.error().message());
    }
    return themeEntry(*result, context.themes);
}

const ThemeDefinition& requireTheme(const AutomationContext& context, const std::string& id) {
    const auto* theme = context.themes.find(id);
    if (theme == nullptr) {
        throw MCPError::notFound("theme '" + id + "'");
    }
    return *theme;
}

Json selectTheme(const AutomationContext& context, const MethodParams& params) {
    const auto& theme = requireTheme(context, params.requiredText("id"));
    context.themes.select(theme.id);
    return themeEntry(context.themes.current(), context.themes);
}

Json deleteTheme(const AutomationContext& context, const MethodParams& params) {
    const std::string id = requireTheme(context, params.requiredText("id")).id;
    if (!context.themes.deleteTheme(id)) {
        throw MCPError::invalidParam("Invalid param id: '" + id +
                                     "' is a built-in theme; only imported themes can be deleted");
    }
    return Json{{"deleted", id}, {"current", context.themes.current().id}};
}

}  // namespace

void addThemeMethods(MethodTable& table, const SharedContext& context) {
    table["list_themes"] =
        answeringAtOnce([context](const MethodParams&) { return listThemes(*context); });
    table["import_theme"] = answeringAtOnce(
        [context](const MethodParams& params) { return importTheme(*context, params); });
    table["select_theme"] = answeringAtOnce(
        [context](const MethodParams& params) { return selectTheme(*context, params); });
    table["delete_theme"] = answeringAtOnce(
        [context](const MethodParams& params) { return deleteTheme(*context, params); });
}

}  // namespace corvetta
