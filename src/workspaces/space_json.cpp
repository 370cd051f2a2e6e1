#include "workspaces/space_json.h"

#include <limits>

namespace corvetta {

WorkspaceSpace workspaceSpaceFromJson(const Json& value, const std::string& path) {
    const JsonObjectReader reader(value, path);
    WorkspaceSpace space;
    space.id = reader.get<Uuid>("id");
    space.name = reader.get<std::string>("name");
    if (const auto keyCode = reader.getOptional<std::uint32_t>("shortcutKeyCode")) {
        if (*keyCode > std::numeric_limits<std::uint16_t>::max()) {
            throw JsonDecodeError(JsonDecodeError::Kind::malformedValue,
                                  reader.pathOf("shortcutKeyCode"), "shortcutKeyCode",
                                  "expected a key code from 0 to 65535");
        }
        space.shortcutKeyCode = static_cast<std::uint16_t>(*keyCode);
    }
    space.shortcutModifiers = reader.getOptional<std::uint32_t>("shortcutModifiers");
    space.folder = reader.getOptional<std::string>("folder");
    return space;
}

Json workspaceSpaceToJson(const WorkspaceSpace& space) {
    Json object = Json::object();
    object["id"] = space.id.string();
    object["name"] = space.name;
    if (space.shortcutKeyCode) {
        object["shortcutKeyCode"] = *space.shortcutKeyCode;
    }
    if (space.shortcutModifiers) {
        object["shortcutModifiers"] = *space.shortcutModifiers;
    }
    if (space.folder) {
        object["folder"] = *space.folder;
    }
    return object;
}

std::string encodeSpacesPayload(const SpacesPayload& payload) {
    Json spaces = Json::array();
    for (const auto& space : payload.spaces) {
        spaces.push_back(workspaceSpaceToJson(space));
    }
    // Names come from the socket and forms as UTF-8; replace rather than fail on anything else.
    return Json{{"spaces", std::move(spaces)}}.dump(2, ' ', false,
                                                    nlohmann::json::error_handler_t::replace);
}

Expected<SpacesPayload, std::string> decodeSpacesPayload(std::string_view text) {
    auto parsed = parseJson(text);
    if (!parsed) {
        return unexpected(parsed.error().message);
    }
    try {
        const JsonObjectReader reader(*parsed);
        const auto spaces = reader.get<Json>("spaces");
        if (!spaces.is_array()) {
            throw JsonDecodeError(JsonDecodeError::Kind::malformedValue, "spaces", "spaces",
                                  "expected an array of spaces");
        }
        SpacesPayload payload;
        for (std::size_t index = 0; index < spaces.size(); ++index) {
            payload.spaces.push_back(
                workspaceSpaceFromJson(spaces[index], "spaces[" + std::to_string(index) + "]"));
        }
        return payload;
    } catch (const JsonDecodeError& error) {
        return unexpected(std::string(error.what()));
    }
}

}  // namespace corvetta
