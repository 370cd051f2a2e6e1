// custom_layout_template.h: A user's layout template, and the editable panes the builder works on.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "foundation/geometry.h"
#include "foundation/uuid.h"
#include "layouts/layout_template.h"

namespace corvetta {

// A layout as the user keeps it: every template the user sees, the built-in copies included.
// Fields are in the order the stored JSON lists its keys.
struct CustomLayoutTemplate {
    Uuid id;
    std::string name;
    std::string templateDescription;
    // Unit rectangles of the usable area (origin lower-left, y upward), in fill order.
    std::vector<Rect> panes;
    // Absent: the global space.
    std::optional<Uuid> spaceId;
    // Absent: ungrouped.
    std::optional<std::string> folder;
    std::optional<std::uint16_t> shortcutKeyCode;
    // Event modifier flags (ModifierFlag), as every record keeps them.
    std::optional<std::uint64_t> shortcutModifiers;
    // The built-in case this copy was seeded from; absent for the user's own templates.
    std::optional<std::string> defaultTemplateKey;
    bool applyToAllDisplays = false;

    bool operator==(const CustomLayoutTemplate&) const = default;

    // A fresh copy of a built-in arrangement: new id, no space, folder or shortcut.
    static CustomLayoutTemplate builtIn(LayoutTemplate value);
    // "layout_" + the id's upper-case text, the name its own shortcut is registered under.
    std::string shortcutName() const;
};

// A pane while the builder edits it; the id only tells panes apart during the edit.
struct BuilderPane {
    Uuid id;
    Rect frame;
};

// Every pane gets a fresh id, in fill order.
std::vector<BuilderPane> builderPanes(const CustomLayoutTemplate& layout);
// The frames in the builder's order, as the template stores them.
std::vector<Rect> templatePanes(const std::vector<BuilderPane>& panes);

}  // namespace corvetta
