// workspace_json.h: JSON form of workspaces, and the tolerant reading of a stored list.
#pragma once

#include <string>
#include <string_view>

#include "foundation/expected.h"
#include "foundation/json.h"
#include "workspaces/workspace.h"

namespace corvetta {

// Keys are the field names in declaration order; frames are [[x, y], [width, height]]; absent
// optionals are left out.
Json workspaceToJson(const Workspace& workspace);
// Throws JsonDecodeError naming the damaged key: "name", "windowInfos" and each window's "frame"
// and "isFullscreen" are required, everything else may be missing.
Workspace workspaceFromJson(const Json& value, const std::string& path = "");

// The stored form: a pretty-printed array. Fails (with the reason) only on text that is not
// UTF-8, which JSON cannot carry.
Expected<std::string, std::string> encodeWorkspaces(const std::vector<Workspace>& workspaces);

// Decodes each element of a JSON array on its own; an element that fails is skipped and counted.
// Fails as a whole (with the reason) only when the text is not a JSON array.
Expected<LossyWorkspaces, std::string> decodeLossyWorkspaces(std::string_view text);

}  // namespace corvetta
