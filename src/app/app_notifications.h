// app_notifications.h: Names the notifications and settings that change behaviour at run time.
#pragma once

namespace corvetta {

// Application-wide notifications the delegate listens for. Each setting's change is announced
// under the setting's own name by whoever changed it (settings window, import, automation).
struct AppNotifications {
    static constexpr const char* kDisplayConfigurationChanged = "DisplayConfigurationChanged";
    static constexpr const char* kDragToSnapEnabledChanged = "DragToSnapEnabledChanged";
    static constexpr const char* kSnapModifiersChanged = "SnapModifiersChanged";
    static constexpr const char* kAvoidSystemConflictsChanged = "AvoidSystemConflictsChanged";
    static constexpr const char* kWindowManagementEnabledChanged = "WindowManagementEnabledChanged";
    static constexpr const char* kRefreshStatusMenu = "RefreshStatusMenu";
    static constexpr const char* kWorkspacesDidChange = "com.corvetta.workspacesDidChange";
    // The delegate rebuilt the status menu; the status item redraws it.
    static constexpr const char* kStatusMenuDidChange = "com.corvetta.statusMenuDidChange";
};

// The notification that announces each setting whose change someone reacts to at once; the
// others are read whenever they are needed.
struct SettingChangeNotification {
    const char* setting;
    const char* notification;
};
inline constexpr SettingChangeNotification kSettingChangeNotifications[] = {
    {"dragToSnapEnabled", AppNotifications::kDragToSnapEnabledChanged},
    {"snapModifiers", AppNotifications::kSnapModifiersChanged},
    {"avoidSystemConflicts", AppNotifications::kAvoidSystemConflictsChanged},
    {"windowManagementEnabled", AppNotifications::kWindowManagementEnabledChanged},
    {"hideWindowManagementMenuItems", AppNotifications::kRefreshStatusMenu},
};

// The settings read at launch and by the handlers above.
struct AppSettings {
    static constexpr const char* kDragToSnapEnabled = "dragToSnapEnabled";
    static constexpr const char* kSnapModifiers = "snapModifiers";
    static constexpr const char* kAvoidSystemConflicts = "avoidSystemConflicts";
    static constexpr const char* kHideWindowManagementMenuItems = "hideWindowManagementMenuItems";
};

}  // namespace corvetta
