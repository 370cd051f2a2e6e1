// workspace_space.h: The named spaces that group workspaces and layout templates.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "foundation/uuid.h"

namespace corvetta {

// A named context that workspaces and layout templates point at by id.
struct WorkspaceSpace {
    Uuid id;
    std::string name;
    std::optional<std::uint16_t> shortcutKeyCode;
    std::optional<std::uint32_t> shortcutModifiers;
    // Grouping folder in the settings list.
    std::optional<std::string> folder;

    bool operator==(const WorkspaceSpace&) const = default;
};

// The whole content of the spaces file.
struct SpacesPayload {
    std::vector<WorkspaceSpace> spaces;

    bool operator==(const SpacesPayload&) const = default;
};

}  // namespace corvetta
