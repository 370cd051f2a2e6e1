#include <algorithm>
#include <limits>

#include "automation/mcp_error.h"
#include "automation/method_groups.h"
#include "automation/method_support.h"
#include "foundation/names.h"
#include "workspaces/deeplink.h"
#include "workspaces/display_arrangement_capture.h"
#include "workspaces/display_key.h"
#include "workspaces/space_json.h"
#include "workspaces/space_manager.h"
#include "workspaces/workspace_service.h"

namespace corvetta {

namespace {

Json idOrNull(const std::optional<Uuid>& id) {
    return id ? Json(id->string()) : Json(nullptr);
}

Json deeplinksJson(const Workspace& workspace) {
    Json links = Json::object();
    if (workspace.appDeeplinks) {
        for (const auto& [key, link] : *workspace.appDeeplinks) {
            links[key] = link;
        }
    }
    return links;
}

Json listWorkspaces(const AutomationContext& context) {
    Json entries = Json::array();
    for (const auto& workspace : context.workspaceService.workspaces()) {
        entries.push_back(Json{
            {"id", idOrNull(workspace.id)},
            {"name", workspace.name},
            {"windowCount", workspace.windowInfos.size()},
            {"deeplinks", deeplinksJson(workspace)},
            {"customLayout",
             workspace.customLayout ? Json(workspace.customLayout->name) : Json(nullptr)},
            {"spaceId", idOrNull(workspace.spaceId)},
        });
    }
    return Json{{"workspaces", std::move(entries)}};
}

Json displayJson(const DisplayFingerprint& display, bool isMain) {
    return Json{{"stableID", displayKey(display)},
                {"name", textOrNull(display.name)},
                {"isBuiltIn", display.isBuiltIn},
                {"resolution",
                 {{"width", display.resolution.width}, {"height", display.resolution.height}}},
                {"scaleFactor", display.scaleFactor},
                {"mainDisplay", isMain}};
}

// The recorded display a window stood on: the one its monitor id names.
const DisplayFingerprint* displayOf(const Workspace& workspace, const WindowInfo& window) {
    if (!workspace.displayArrangement || !window.monitorID) {
        return nullptr;
    }
    for (const auto& display : workspace.displayArrangement->displayFingerprints) {
        if (monitorIdentifier(display) == *window.monitorID) {
            return &display;
        }
    }
    return nullptr;
}

Json workspaceLayout(const AutomationContext& context, const MethodParams& params) {
    const auto& workspace = requireWorkspace(context.workspaceService, params.requiredText("name"));
    Json windows = Json::array();
    for (const auto& window : workspace.windowInfos) {
        const auto* display = displayOf(workspace, window);
        windows.push_back(Json{
            {"appBundleIdentifier", textOrNull(window.appBundleIdentifier)},
            {"windowTitle", textOrNull(window.windowTitle)},
            {"monitorID", textOrNull(window.monitorID)},
            {"frame", frameJson(window.frame)},
            {"isFullscreen", window.isFullscreen},
            {"relativePosition",
             display ? Json{{"x", display->relativePosition.x}, {"y", display->relativePosition.y}}
                     : Json(nullptr)},
            {"windowIndex", window.windowIndex ? Json(*window.windowIndex) : Json(nullptr)},
            {"screen", display ? Json(displayKey(*display)) : Json(nullptr)},
            {"newWindowMenuName", textOrNull(window.newWindowMenuName)},
            {"newWindowItemTitle", textOrNull(window.newWindowItemTitle)},
        });
    }
    Json arrangement = nullptr;
    if (const auto& saved = workspace.displayArrangement) {
        Json displays = Json::array();
        for (const auto& display : saved->displayFingerprints) {
            displays.push_back(displayJson(display, display == saved->mainDisplayFingerprint));
        }
        arrangement = Json{{"displays", std::move(displays)},
                           {"arrangementFingerprint", saved->arrangementFingerprint}};
    }
    const std::size_t count = windows.size();
    return Json{{"name", workspace.name},
                {"windowCount", count},
                {"windows", std::move(windows)},
                {"savedDisplayArrangement", std::move(arrangement)},
                {"deeplinks", deeplinksJson(workspace)}};
}

Json listSpaces(const AutomationContext& context) {
    auto& manager = context.spaceManager;
    const auto active = manager.activeSpace().id;
    // The stored record, and where it stands now.
    const auto entry = [&](const WorkspaceSpace& space, bool isGlobal) {
        Json object = workspaceSpaceToJson(space);
        object["isGlobal"] = isGlobal;
        object["isActive"] = space.id == active;
        return object;
    };
    Json spaces = Json::array({entry(manager.globalSpace(), true)});
    for (const auto& space : manager.spaces()) {
        spaces.push_back(entry(space, false));
    }
    return Json{{"spaces", std::move(spaces)}};
}

const WorkspaceSpace& requireSpace(const SpaceManager& manager, const std::string& name) {
    const auto* space = manager.spaceNamed(name);
    if (!space) {
        throw MCPError::notFound("space '" + name + "'");
    }
    return *space;
}

Json activateSpace(const AutomationContext& context, const std::string& name) {
    auto& manager = context.spaceManager;
    // "Global" names the global space; a stored space can never take that name.
    const auto id = name == SpaceManager::kGlobalSpaceName
                        ? std::optional<Uuid>()
                        : std::optional<Uuid>(requireSpace(manager, name).id);
    manager.activate(id);
    const auto& active = manager.activeSpace();
    return Json{{"active", active.name}, {"id", active.id.string()}};
}

Json renameWorkspace(const AutomationContext& context, const MethodParams& params) {
    const auto& workspace = requireWorkspace(context.workspaceService, params.requiredText("name"));
    const auto newName = params.requiredText("new_name");
    if (!workspace.id) {
        throw MCPError::invalidParam("Workspace '" + workspace.name +
                                     "' has no identifier and cannot be renamed");
    }
    const auto id = *workspace.id;
    if (auto renamed = context.workspaceService.rename(id, newName); !renamed) {
        throw MCPError::invalidParam(renamed.error());
    }
    return Json{{"name", context.workspaceService.workspace(id)->name}};
}

// Longer texts are pasted by mistake; no link, path or command needs more.
constexpr std::size_t kMaxDeeplinkLength = 4096;

int requiredWindowIndex(const MethodParams& params) {
    const auto index = params.optionalCount("window_index");
    if (!index) {
        throw MCPError::missingParam("window_index");
    }
    if (*index > static_cast<std::size_t>(std::numeric_limits<int>::max())) {
        throw MCPError::invalidParam("window_index is too large");
    }
    return static_cast<int>(*index);
}

// The deeplink's window, named by application and index. It must be one the workspace holds: a
// link on any other would never be opened, and a typo in the identifier would go unnoticed.
std::string deeplinkKeyFor(const Workspace& workspace, const MethodParams& params) {
    const auto bundle = params.requiredText("bundle_id");
    const int index = requiredWindowIndex(params);
    int position = 0;
    const bool held = std::any_of(
        workspace.windowInfos.begin(), workspace.windowInfos.end(), [&](const WindowInfo& window) {
            if (window.appBundleIdentifier != bundle) {
                return false;
            }
            // Records without an index count the application's windows in order.
            const auto windowIndex = window.windowIndex.value_or(position++);
            return windowIndex == index;
        });
    if (!held) {
        throw MCPError::invalidParam("Workspace '" + workspace.name + "' has no window " +
                                     std::to_string(index) + " of " + bundle);
    }
    return deeplinkKey(bundle, index);
}

void saveDeeplinks(const AutomationContext& context, Workspace changed) {
    if (!context.workspaceService.update(changed)) {
        throw MCPError::invalidParam("Workspace '" + changed.name +
                                     "' has no identifier and cannot be changed");
    }
}

Json setDeeplink(const AutomationContext& context, const MethodParams& params) {
    Workspace changed = requireWorkspace(context.workspaceService, params.requiredText("name"));
    const auto key = deeplinkKeyFor(changed, params);
    const auto value = trimmedName(params.requiredText("value"));
    if (value.empty()) {
        throw MCPError::invalidParam("A deeplink needs a value");
    }
    // A line break would run a typed command early and type the rest as another.
    if (value.find_first_of("\r\n") != std::string::npos || value.size() > kMaxDeeplinkLength) {
        throw MCPError::invalidParam("A deeplink is one line of at most " +
                                     std::to_string(kMaxDeeplinkLength) + " characters");
    }
    const auto entry = deeplinkEntry(key, value);
    auto links = changed.appDeeplinks.value_or(std::map<std::string, std::string>{});
    links[key] = value;
    changed.appDeeplinks = std::move(links);
    saveDeeplinks(context, changed);
    return Json{{"name", changed.name},
                {"key", key},
                {"value", value},
                {"kind", deeplinkKindName(classifyDeeplink(entry->bundleID, value))}};
}

Json removeDeeplink(const AutomationContext& context, const MethodParams& params) {
    Workspace changed = requireWorkspace(context.workspaceService, params.requiredText("name"));
    const auto bundle = params.requiredText("bundle_id");
    const auto key = deeplinkKey(bundle, requiredWindowIndex(params));
    if (!changed.appDeeplinks || changed.appDeeplinks->erase(key) == 0) {
        throw MCPError::notFound("deeplink '" + key + "' in workspace '" + changed.name + "'");
    }
    if (changed.appDeeplinks->empty()) {
        changed.appDeeplinks.reset();
    }
    saveDeeplinks(context, changed);
    return Json{{"removed", key}};
}

}  // namespace

void addWorkspaceMethods(MethodTable& table, const SharedContext& context) {
    table["list_workspaces"] =
        answeringAtOnce([context](const MethodParams&) { return listWorkspaces(*context); });
    table["get_workspace_layout"] = answeringAtOnce(
        [context](const MethodParams& params) { return workspaceLayout(*context, params); });
    table["delete_workspace"] = answeringAtOnce([context](const MethodParams& params) {
        const auto name = params.requiredText("name");
        const auto id = requireWorkspace(context->workspaceService, name).id;
        if (!context->workspaceService.remove(id)) {
            throw MCPError::invalidParam("Workspace '" + name +
                                         "' has no identifier and cannot be deleted");
        }
        return Json{{"deleted", name}};
    });
    table["rename_workspace"] = answeringAtOnce(
        [context](const MethodParams& params) { return renameWorkspace(*context, params); });
    table["set_deeplink"] = answeringAtOnce(
        [context](const MethodParams& params) { return setDeeplink(*context, params); });
    table["remove_deeplink"] = answeringAtOnce(
        [context](const MethodParams& params) { return removeDeeplink(*context, params); });
    table["list_spaces"] =
        answeringAtOnce([context](const MethodParams&) { return listSpaces(*context); });
    table["create_space"] = answeringAtOnce([context](const MethodParams& params) {
        auto created = context->spaceManager.addSpace(params.requiredText("name"));
        if (!created) {
            throw MCPError::invalidParam(created.error());
        }
        return Json{{"id", created->id.string()}, {"name", created->name}};
    });
    table["delete_space"] = answeringAtOnce([context](const MethodParams& params) {
        const auto name = params.requiredText("name");
        context->spaceManager.deleteSpace(requireSpace(context->spaceManager, name).id);
        return Json{{"deleted", name}};
    });
    table["activate_space"] = answeringAtOnce([context](const MethodParams& params) {
        return activateSpace(*context, params.requiredText("name"));
    });
}

}  // namespace corvetta
