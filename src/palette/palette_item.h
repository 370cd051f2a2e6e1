// palette_item.h: What the command palette lists and offers: items, actions, hints.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <variant>

#include "layouts/custom_layout_template.h"
#include "layouts/layout_template.h"
#include "workspaces/workspace.h"
#include "workspaces/workspace_space.h"

namespace corvetta {

// One of the program's own commands, listed after the layouts.
struct PaletteAction {
    std::string name;
    // Stable identifier ("newSpace", "quit"); also the row's identity.
    std::string key;
    // Give focus back to the application that was in front before the palette opened, after
    // running.
    bool reactivatePreviousApp = false;
    std::function<void()> execute;
};

// A built-in arrangement as the palette lists it: the user's copy of it from the layout store
// (its name, shortcut and space), or, when the user deleted that copy, the arrangement itself.
struct PaletteBuiltInLayout {
    LayoutTemplate value = LayoutTemplate::full;
    CustomLayoutTemplate layout;
};

// A row of the palette: a space, a workspace, a built-in layout, one of the user's own layout
// templates, or an action.
class PaletteItem {
public:
    enum class Kind { space, workspace, layout, customLayout, action };
    using Value = std::variant<WorkspaceSpace, Workspace, PaletteBuiltInLayout,
                               CustomLayoutTemplate, PaletteAction>;

    explicit PaletteItem(Value value) : value_(std::move(value)) {}

    Kind kind() const { return static_cast<Kind>(value_.index()); }
    const Value& value() const { return value_; }
    template <class T>
    const T* as() const {
        return std::get_if<T>(&value_);
    }
    // Tells rows apart across rebuilds and is what the recent picks remember:
    // "space:<id>", "workspace:<id>" (a workspace from an old version without an id:
    // "workspace-named:<name>"), "layout:<case>", "customLayout:<id>", "action:<key>".
    std::string identity() const;
    const std::string& name() const;

private:
    Value value_;
};

// A row of the item-actions panel.
struct PaletteItemAction {
    // "edit", "clone", "delete".
    std::string id;
    std::string name;
    // A freedesktop icon name; the view falls back to no icon.
    std::string icon;
    // The theme role the view colours it with: "accent" or "destructive".
    std::string color;
    std::function<void()> action;
};

// What the palette asks its owner to do, because only the owner opens windows.
struct PaletteExternalAction {
    enum class Kind { editSpace, editWorkspace, editLayout, newSpace, newWorkspace, newLayout };
    Kind kind = Kind::newSpace;
    // The item to edit; none for the three "new" kinds.
    std::optional<PaletteItem> item;
};

// One key hint of the footer.
struct PaletteHint {
    std::string key;
    std::string label;

    bool operator==(const PaletteHint&) const = default;
};

}  // namespace corvetta
