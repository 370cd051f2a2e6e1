// shortcut_directory.h: Every shortcut by name, with its owner and state, to list and change.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "foundation/expected.h"
#include "shortcuts/shortcut.h"

namespace corvetta {

// One shortcut name as clients see it.
struct ShortcutListing {
    std::string name;
    // What the name belongs to, as conflict messages say it: "action 'leftHalf'",
    // "workspace 'Work'", "space 'Home'", "layout 'Halves'".
    std::string owner;
    std::optional<Shortcut> shortcut;
    // The combination for display ("⌃⌥←"), empty without one.
    std::string label;
    // Whether a hot key is live for it now.
    bool registered = false;
};

struct ShortcutChangeError {
    enum class Kind {
        // Neither a static name nor a record's name.
        unknownName,
        // Another name holds the combination; the message names it.
        conflict,
        // The store did not keep the value.
        notStored,
    };
    Kind kind = Kind::unknownName;
    std::string message;
};

// The static names (recorder scratch names aside), then the workspaces', spaces' and layout
// templates' names in stored order, whether or not they have a combination.
class ShortcutDirectory {
public:
    virtual ~ShortcutDirectory() = default;
    virtual std::vector<ShortcutListing> listShortcuts() const = 0;
    // Stores the combination (none clears it) where the name keeps it: the hot-key store for a
    // static name, the record for a record's name; the live hot key follows.
    virtual Expected<ShortcutListing, ShortcutChangeError> changeShortcut(
        const std::string& name, const std::optional<Shortcut>& shortcut) = 0;
};

}  // namespace corvetta
