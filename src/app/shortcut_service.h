// shortcut_service.h: Owns the live global shortcuts and sends each press to its service.
#pragma once

#include <array>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "diagnostics/logger.h"
#include "foundation/notification_center.h"
#include "foundation/preferences.h"
#include "layouts/custom_layout_store.h"
#include "shortcuts/hot_key_store.h"
#include "shortcuts/keyboard_shortcuts_bridge.h"
#include "shortcuts/shortcut_directory.h"
#include "shortcuts/window_presenter.h"
#include "windowing/window_snapping_service.h"
#include "workspaces/hold_to_cycle.h"
#include "workspaces/space_manager.h"
#include "workspaces/workspace_restorer.h"
#include "workspaces/workspace_service.h"

namespace corvetta {

// Owns the live global shortcuts: the window actions and built-in layouts, the fixed commands,
// the cycles, and one shortcut per workspace, space and layout template that has a combination;
// sends each press to the service that performs it. The window actions' and built-in layouts'
// keys are grabbed only while the accessibility permission is granted and the user has not
// switched keyboard window management off: without the permission no window can move, and a key
// that does nothing should stay free for other applications. The records' shortcuts are
// registered again whenever their stores announce a change. Main thread only.
class ShortcutService final : public ShortcutDirectory {
public:
    static constexpr const char* kWindowManagementEnabledKey = "windowManagementEnabled";

    struct Services {
        KeyboardShortcutsBridge& shortcutBridge;
        const HotKeyStore& hotKeyStore;
        WindowSnappingService& snappingService;
        WorkspaceService& workspaceService;
        SpaceManager& spaceManager;
        CustomLayoutStore& layoutStore;
        WorkspaceRestorer& restorer;
        WindowPresenter& windowPresenter;
        EventMonitorPort& events;
        const Preferences& defaults;
        NotificationCenter& notifications;
        LoggingService& logging;
    };
    struct Actions {
        std::function<void()> quit;
        // Places the front windows into the template's panes.
        std::function<void(const Uuid& templateId)> applyLayout;
    };

    ShortcutService(Services services, Actions actions);
    ~ShortcutService() override;
    ShortcutService(const ShortcutService&) = delete;
    ShortcutService& operator=(const ShortcutService&) = delete;

    // At start and whenever the set of shortcuts must be rebuilt.
    void registerAllShortcuts();
    // After a change of the permission or of the switch: grabs or releases the window actions'
    // keys when whether they should be live has changed. Before registerAllShortcuts it only
    // remembers the permission.
    void updateWindowManagementShortcuts(bool accessibilityPermissionGranted);
    void unregisterAllShortcuts();

    // Absent means on.
    bool isWindowManagementEnabled() const;

    // The reason a record or action cannot take `shortcut`: another name holds it. The name's own
    // family prefixes the message ("Workspace shortcut conflict: Shortcut conflicts with
    // space 'Home'"). For the record forms as well as changeShortcut.
    std::optional<std::string> conflictFor(const std::string& name, const Shortcut& shortcut) const;

    std::vector<ShortcutListing> listShortcuts() const override;
    Expected<ShortcutListing, ShortcutChangeError> changeShortcut(
        const std::string& name, const std::optional<Shortcut>& shortcut) override;

    const HoldToCycle& cycle() const { return cycle_; }

private:
    enum class Family { workspace, space, layout };
    struct RecordShortcut {
        Family family;
        Uuid id;
        std::string name;
        std::string owner;
        std::optional<Shortcut> shortcut;
    };

    bool windowActionsWanted() const;
    void registerWindowManagementShortcuts();
    void unregisterWindowManagementShortcuts();
    void registerFixedShortcuts();
    void registerRecordShortcuts();
    void unregisterRecordShortcuts();
    void observeStores();
    void applyBuiltInLayout(const std::string& shortcutName);
    void pressRecord(Family family, const Uuid& id);

    std::vector<RecordShortcut> recordShortcuts() const;
    std::vector<ShortcutListing> staticListings() const;
    std::optional<RecordShortcut> findRecord(const std::string& name) const;
    ShortcutListing listing(const std::string& name, std::string owner,
                            std::optional<Shortcut> shortcut) const;
    Expected<void, ShortcutChangeError> store(const RecordShortcut& record,
                                              const std::optional<Shortcut>& shortcut);

    Services services_;
    Actions actions_;
    Logger logger_;
    HoldToCycle cycle_;
    // Per family: record id to the name its shortcut is registered under.
    std::array<std::map<Uuid, std::string>, 3> registeredRecordShortcuts_;
    std::vector<ObserverToken> storeObservers_;
    bool permissionGranted_ = false;
    bool started_ = false;
    bool windowActionsRegistered_ = false;
};

}  // namespace corvetta
