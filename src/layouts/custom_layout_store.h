// custom_layout_store.h: Keeps the user's layout templates in the user defaults and seeds the six.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "diagnostics/logger.h"
#include "foundation/clock.h"
#include "foundation/notification_center.h"
#include "foundation/preferences.h"
#include "layouts/custom_layout_template.h"
#include "shortcuts/keyboard_shortcuts_bridge.h"

namespace corvetta {

// Every layout template the user sees, in display order, stored whole as one JSON document under
// `kKey` and rewritten whole after each change. Each change posts `kDidChangeNotification`, so
// menus, the palette and the shortcut service rebuild. A stored document that cannot be decoded
// leaves the list empty, and its raw bytes are written to a quarantine file in `quarantineFolder`
// before anything overwrites them; until that has worked, saves leave the stored value alone.
// Main thread only.
class CustomLayoutStore {
public:
    static constexpr const char* kKey = "corvetta.customLayoutTemplates";
    static constexpr const char* kSeededKey = "corvetta.customLayoutTemplates.hasSeeded";
    static constexpr const char* kDidChangeNotification = "com.corvetta.layoutsDidChange";
    // Damaged documents go to "layouts-quarantine-<timestamp>.json".
    static constexpr const char* kQuarantineStem = "layouts";

    // Loads the stored templates; writes nothing.
    CustomLayoutStore(Preferences& defaults, KeyboardShortcutsBridge& shortcuts,
                      NotificationCenter& notifications, const Clock& clock,
                      std::filesystem::path quarantineFolder, LoggingService& logging);
    CustomLayoutStore(const CustomLayoutStore&) = delete;
    CustomLayoutStore& operator=(const CustomLayoutStore&) = delete;

    const std::vector<CustomLayoutTemplate>& layouts() const { return layouts_; }
    const CustomLayoutTemplate* find(const Uuid& id) const;

    // Replaces the list with the stored one; missing or damaged gives an empty list.
    void load();
    // False when the list could not be encoded or the stored value had to be kept; memory keeps
    // the change either way.
    bool save();

    // Once per installation, at start-up: the built-in copies that are missing, at the front,
    // taking over the shortcuts the user had set for the built-in layouts. A built-in copy the
    // user deletes afterwards comes back only through restoreDefaults.
    void seedDefaultsIfNeeded();
    // The cases no template was seeded from, in enumeration order.
    std::vector<LayoutTemplate> missingDefaultTemplates() const;
    // Puts the built-in copies back first, in enumeration order, keeping the user's edits of the
    // ones present; the user's own templates follow. Nothing changes when none is missing.
    void restoreDefaults();

    void add(CustomLayoutTemplate layout);
    // Appends several and saves once.
    void add(std::vector<CustomLayoutTemplate> layouts);
    // Replaces the template with the same id; false when there is none.
    bool update(const CustomLayoutTemplate& layout);
    // Removes it and clears its own shortcut; false when there is none.
    bool remove(const Uuid& id);
    // An absent space moves the template to the global space.
    bool setSpace(const Uuid& templateId, std::optional<Uuid> spaceId);
    // An absent `to` ungroups the folder's templates.
    void renameFolder(const std::string& from, std::optional<std::string> to);
    // A named space was deleted: its templates become global.
    void moveLayoutsToGlobal(const Uuid& spaceId);

    // Whether `name` (already trimmed) clashes with a template in scope other than `excluding`:
    // one in the same space, or a global one, compared trimmed and case-insensitively. A global
    // candidate does not clash with templates inside named spaces.
    bool isNameTaken(std::string_view name, const std::optional<Uuid>& spaceId,
                     const std::optional<Uuid>& excluding = std::nullopt) const;

private:
    // Saves, then tells the observers.
    void changed();
    // Writes the damaged stored document aside, once; true when nothing is left to keep.
    bool keepDamagedDocumentAside();

    Preferences& defaults_;
    KeyboardShortcutsBridge& shortcuts_;
    NotificationCenter& notifications_;
    const Clock& clock_;
    std::filesystem::path quarantineFolder_;
    Logger logger_;
    std::vector<CustomLayoutTemplate> layouts_;
    // The raw stored document that could not be decoded, until it is safe in a quarantine file.
    std::optional<std::string> damagedDocument_;
};

}  // namespace corvetta
