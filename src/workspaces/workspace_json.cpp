#include "workspaces/workspace_json.h"

#include <limits>

#include "workspaces/display_fingerprint_json.h"

namespace corvetta {

namespace {

template <class T>
void putOptional(Json& object, const char* key, const std::optional<T>& value) {
    if (value) {
        object[key] = *value;
    }
}

void putOptional(Json& object, const char* key, const std::optional<Uuid>& value) {
    if (value) {
        object[key] = value->string();
    }
}

JsonDecodeError malformed(const JsonObjectReader& reader, const char* key, std::string detail) {
    return JsonDecodeError(JsonDecodeError::Kind::malformedValue, reader.pathOf(key), key,
                           std::move(detail));
}

std::optional<std::uint16_t> optionalKeyCode(const JsonObjectReader& reader, const char* key) {
    const auto value = reader.getOptional<std::uint32_t>(key);
    if (value && *value > std::numeric_limits<std::uint16_t>::max()) {
        throw malformed(reader, key, "expected a key code from 0 to 65535");
    }
    return value ? std::optional<std::uint16_t>(static_cast<std::uint16_t>(*value)) : std::nullopt;
}

// An array whose elements are decoded by `element`, each with its index in the path.
template <class T, class Decode>
std::vector<T> arrayOf(const JsonObjectReader& reader, const char* key, Decode element) {
    const auto value = reader.get<Json>(key);
    if (!value.is_array()) {
        throw malformed(reader, key, "expected an array");
    }
    std::vector<T> result;
    result.reserve(value.size());
    for (std::size_t index = 0; index < value.size(); ++index) {
        result.push_back(
            element(value[index], reader.pathOf(key) + "[" + std::to_string(index) + "]"));
    }
    return result;
}

Json windowInfoToJson(const WindowInfo& window) {
    constexpr std::size_t kWindowKeys = 9;
    Json object = Json::object();
    object.get_ref<Json::object_t&>().reserve(kWindowKeys);
    object["frame"] = rectToJson(window.frame);
    putOptional(object, "monitorID", window.monitorID);
    putOptional(object, "appBundleIdentifier", window.appBundleIdentifier);
    object["isFullscreen"] = window.isFullscreen;
    putOptional(object, "zOrder", window.zOrder);
    putOptional(object, "windowTitle", window.windowTitle);
    putOptional(object, "windowIndex", window.windowIndex);
    putOptional(object, "newWindowMenuName", window.newWindowMenuName);
    putOptional(object, "newWindowItemTitle", window.newWindowItemTitle);
    putOptional(object, "isMinimized", window.isMinimized);
    return object;
}

WindowInfo windowInfoFromJson(const Json& value, const std::string& path) {
    const JsonObjectReader reader(value, path);
    WindowInfo window;
    window.frame = reader.get<Rect>("frame");
    window.monitorID = reader.getOptional<std::string>("monitorID");
    window.appBundleIdentifier = reader.getOptional<std::string>("appBundleIdentifier");
    window.isFullscreen = reader.get<bool>("isFullscreen");
    window.zOrder = reader.getOptional<int>("zOrder");
    window.windowTitle = reader.getOptional<std::string>("windowTitle");
    window.windowIndex = reader.getOptional<int>("windowIndex");
    window.newWindowMenuName = reader.getOptional<std::string>("newWindowMenuName");
    window.newWindowItemTitle = reader.getOptional<std::string>("newWindowItemTitle");
    window.isMinimized = reader.getOptional<bool>("isMinimized");
    return window;
}

Json customLayoutToJson(const CustomLayout& layout) {
    Json panes = Json::array();
    for (const auto& pane : layout.layout) {
        panes.push_back(rectToJson(pane));
    }
    return Json{{"id", layout.id.string()}, {"name", layout.name}, {"layout", std::move(panes)}};
}

CustomLayout customLayoutFromJson(const JsonObjectReader& reader) {
    CustomLayout layout;
    layout.id = reader.get<Uuid>("id");
    layout.name = reader.get<std::string>("name");
    layout.layout = arrayOf<Rect>(reader, "layout", [](const Json& pane, const std::string& at) {
        return rectFromJson(pane, at);
    });
    return layout;
}

std::optional<std::map<std::string, std::string>> deeplinksFromJson(
    const JsonObjectReader& reader) {
    if (!reader.has("appDeeplinks")) {
        return std::nullopt;
    }
    const auto value = reader.get<Json>("appDeeplinks");
    if (!value.is_object()) {
        throw malformed(reader, "appDeeplinks", "expected an object of texts");
    }
    std::map<std::string, std::string> links;
    for (const auto& [key, link] : value.items()) {
        if (!link.is_string()) {
            throw malformed(reader, "appDeeplinks", "the deeplink for " + key + " is not text");
        }
        links[key] = link.get<std::string>();
    }
    return links;
}

}  // namespace

Json workspaceToJson(const Workspace& workspace) {
    Json object = Json::object();
    putOptional(object, "id", workspace.id);
    object["name"] = workspace.name;
    Json windows = Json::array();
    for (const auto& window : workspace.windowInfos) {
        windows.push_back(windowInfoToJson(window));
    }
    object["windowInfos"] = std::move(windows);
    putOptional(object, "shortcutKeyCode", workspace.shortcutKeyCode);
    putOptional(object, "shortcutModifiers", workspace.shortcutModifiers);
    if (workspace.displayArrangement) {
        object["displayArrangement"] = displayArrangementToJson(*workspace.displayArrangement);
    }
    if (workspace.customLayout) {
        object["customLayout"] = customLayoutToJson(*workspace.customLayout);
    }
    putOptional(object, "closeNonWorkspaceWindows", workspace.closeNonWorkspaceWindows);
    putOptional(object, "skipLaunchMissingApps", workspace.skipLaunchMissingApps);
    putOptional(object, "spaceId", workspace.spaceId);
    putOptional(object, "folder", workspace.folder);
    if (workspace.appDeeplinks) {
        object["appDeeplinks"] = *workspace.appDeeplinks;
    }
    return object;
}

Workspace workspaceFromJson(const Json& value, const std::string& path) {
    const JsonObjectReader reader(value, path);
    Workspace workspace;
    workspace.id = reader.getOptional<Uuid>("id");
    workspace.name = reader.get<std::string>("name");
    workspace.windowInfos = arrayOf<WindowInfo>(reader, "windowInfos", windowInfoFromJson);
    workspace.shortcutKeyCode = optionalKeyCode(reader, "shortcutKeyCode");
    workspace.shortcutModifiers = reader.getOptional<std::uint32_t>("shortcutModifiers");
    if (reader.has("displayArrangement")) {
        workspace.displayArrangement = displayArrangementFromJson(
            reader.get<Json>("displayArrangement"), reader.pathOf("displayArrangement"));
    }
    if (reader.has("customLayout")) {
        workspace.customLayout = customLayoutFromJson(reader.child("customLayout"));
    }
    workspace.closeNonWorkspaceWindows = reader.getOptional<bool>("closeNonWorkspaceWindows");
    workspace.skipLaunchMissingApps = reader.getOptional<bool>("skipLaunchMissingApps");
    workspace.spaceId = reader.getOptional<Uuid>("spaceId");
    workspace.folder = reader.getOptional<std::string>("folder");
    workspace.appDeeplinks = deeplinksFromJson(reader);
    return workspace;
}

Expected<std::string, std::string> encodeWorkspaces(const std::vector<Workspace>& workspaces) {
    if (workspaces.empty()) {
        return writeJson(Json::array(), JsonStyle::pretty);
    }
    // The same bytes as the whole list pretty-printed at once, written one workspace at a time:
    // a document of every workspace costs more to build and tear down than to print, and every
    // change saves the whole list.
    constexpr unsigned kIndent = 2;
    std::string text = "[\n";
    text.reserve(workspaces.size() * 1536);
    nlohmann::detail::serializer<Json> printer(
        nlohmann::detail::output_adapter<char, std::string>(text), ' ');
    try {
        for (std::size_t index = 0; index < workspaces.size(); ++index) {
            text.append(index == 0 ? "" : ",\n").append(kIndent, ' ');
            printer.dump(workspaceToJson(workspaces[index]), true, false, kIndent, kIndent);
        }
    } catch (const nlohmann::json::exception& error) {
        return unexpected(std::string(error.what()));
    }
    text += "\n]";
    return text;
}

Expected<LossyWorkspaces, std::string> decodeLossyWorkspaces(std::string_view text) {
    auto parsed = parseJson(text);
    if (!parsed) {
        return unexpected(parsed.error().message);
    }
    if (!parsed->is_array()) {
        return unexpected(std::string("expected an array of workspaces"));
    }
    LossyWorkspaces result;
    for (std::size_t index = 0; index < parsed->size(); ++index) {
        try {
            result.workspaces.push_back(
                workspaceFromJson((*parsed)[index], "[" + std::to_string(index) + "]"));
        } catch (const JsonDecodeError&) {
            ++result.dropped;
        }
    }
    return result;
}

}  // namespace corvetta
