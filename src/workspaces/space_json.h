// space_json.h: JSON form of spaces and of the spaces file.
#pragma once

#include <string>
#include <string_view>

#include "foundation/expected.h"
#include "foundation/json.h"
#include "workspaces/workspace_space.h"

namespace corvetta {

// Keys are the field names in declaration order; absent optionals are left out.
Json workspaceSpaceToJson(const WorkspaceSpace& space);
// Throws JsonDecodeError naming the damaged key.
WorkspaceSpace workspaceSpaceFromJson(const Json& value, const std::string& path = "");

// {"spaces": [...]}, pretty-printed.
std::string encodeSpacesPayload(const SpacesPayload& payload);
// The whole file or nothing: any damaged space fails it, with the reason.
Expected<SpacesPayload, std::string> decodeSpacesPayload(std::string_view text);

}  // namespace corvetta
