// command_palette_model.h: The command palette's state: rows, selection, keys, item actions.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "diagnostics/logger.h"
#include "foundation/notification_center.h"
#include "foundation/preferences.h"
#include "palette/palette_item.h"
#include "palette/palette_recents.h"
#include "palette/palette_rows.h"
#include "platform/applications.h"

namespace corvetta {

class CustomLayoutStore;
class KeyboardShortcutsBridge;
class LayoutService;
class SpaceManager;
class WorkspaceRestorer;
class WorkspaceService;

// Everything the palette shows and does, without drawing: the rows of the stores filtered by the
// search text, the selection, the item-actions panel with its delete confirmation, the footer
// hints, and what a row does when it is activated. A window draws it, forwards typing to
// setSearchText and the five keys as the notifications below, and redraws on kDidChange.
// docs/command-palette.md has the rules. Main thread only.
class CommandPaletteModel {
public:
    static constexpr const char* kServiceName = "CommandPalette";

    // The keys, as the window posts them.
    static constexpr const char* kNavigateDown = "PaletteNavigateDown";
    static constexpr const char* kNavigateUp = "PaletteNavigateUp";
    static constexpr const char* kOpenItemActions = "PaletteOpenItemActions";
    static constexpr const char* kConfirm = "PaletteConfirm";
    static constexpr const char* kEscape = "PaletteEscape";
    // Posted after every change of what the palette shows.
    static constexpr const char* kDidChange = "com.corvetta.commandPaletteDidChange";

    static constexpr const char* kPlaceholder = "Search spaces, workspaces, layouts & actions…";
    static constexpr const char* kNothingToList = "No workspaces or spaces.";
    static constexpr const char* kCloneSuffix = " Copy";
    static constexpr const char* kDeleteMessage = "This action cannot be undone.";
    static constexpr const char* kDeleteSpaceMessage =
        "Its workspaces will be reassigned to the default space.";
    static constexpr const char* kDeleteButton = "Delete";
    static constexpr const char* kCancelButton = "Cancel";

    struct Services {
        SpaceManager& spaceManager;
        WorkspaceService& workspaceService;
        CustomLayoutStore& customLayoutStore;
        LayoutService& layoutService;
        WorkspaceRestorer& restorer;
        KeyboardShortcutsBridge& shortcuts;
        ApplicationsPort& applications;
        Preferences& defaults;
        NotificationCenter& notifications;
        LoggingService& logging;
        // The application that was in front before the palette came up (never this one).
        std::function<std::optional<RunningApplication>()> previousFrontmostApp;
        // Quits the program.
        std::function<void()> quit;
        // Applies a layout the user picked; without one, the layout service does it quietly.
        std::function<void(const CustomLayoutTemplate&)> applyLayout = {};
    };

    explicit CommandPaletteModel(Services services);
    CommandPaletteModel(const CommandPaletteModel&) = delete;
    CommandPaletteModel& operator=(const CommandPaletteModel&) = delete;

    // Inputs of the owner. `onDismiss` closes the palette; the other two are optional.
    std::function<void()> onDismiss;
    std::function<void()> onOpenSettings;
    std::function<void(const PaletteExternalAction&)> onExternalAction;

    // A fresh start each time the palette opens: empty search, first row selected, the panel
    // closed, the rows read from the stores, `previousApp` remembered. Keys count from here on.
    void willShow();
    // Keys no longer count; store changes are read again at the next show.
    void didHide();
    bool isShown() const { return shown_; }
    const std::optional<RunningApplication>& previousApp() const { return previousApp_; }

    // State.
    const std::string& searchText() const { return searchText_; }
    int selectedIndex() const { return selectedIndex_; }
    bool showingItemActions() const { return showingItemActions_; }
    int itemActionIndex() const { return itemActionIndex_; }
    const std::optional<PaletteItem>& itemPendingDelete() const { return itemPendingDelete_; }
    // Typing goes to the search field unless the panel has the keys.
    bool searchFocused() const { return searchFocused_; }

    // What to draw.
    const std::vector<PaletteRow>& rows() const { return rows_; }
    const std::vector<VisibleSection>& sections() const { return sections_; }
    int visibleRowCount() const;
    // The visible row at a flat index (sections in order), none out of range.
    const VisibleRow* visibleRow(int index) const;
    const PaletteRow* selectedRow() const;
    // "No workspaces or spaces." before the layouts when there is neither and nothing is typed;
    // "No results for \"text\"" when a search matches nothing; else none.
    std::optional<std::string> emptyText() const;
    // The panel's rows for the selected item; empty while the panel is closed.
    const std::vector<PaletteItemAction>& itemActions() const { return itemActions_; }
    struct DeleteConfirmation {
        std::string title;
        std::string message;
        std::string confirmButton;
        std::string cancelButton;
    };
    std::optional<DeleteConfirmation> deleteConfirmation() const;
    std::vector<PaletteHint> hints() const;

    // Input.
    void setSearchText(std::string text);
    // Selects a row (a click); out of range is ignored.
    void select(int index);
    // Runs the selected row, or the selected item action, or confirms a pending delete.
    void confirm();
    void navigate(int step);
    void openItemActions();
    void escape();
    void chooseItemAction(int index);
    void confirmDelete();
    void cancelDelete();
    void openSettings();

private:
    void observeKeys();
    void observeStores();
    void rebuildRows();
    void refilter(std::optional<std::string> keepSelected);
    void changed();
    void dismiss();
    void activate(const PaletteRow& row);
    void applyLayout(const CustomLayoutTemplate& layout);
    void runAction(const PaletteAction& action);
    void closePanel();
    std::vector<PaletteItemAction> itemActionsFor(const PaletteItem& item);
    void edit(const PaletteItem& item);
    void clone(const PaletteItem& item);
    void remove(const PaletteItem& item);
    std::vector<PaletteAction> actions();

    Services services_;
    Logger logger_;
    PaletteRecents recents_;
    std::vector<ObserverToken> observers_;

    bool shown_ = false;
    std::optional<RunningApplication> previousApp_;
    std::string searchText_;
    int selectedIndex_ = 0;
    bool showingItemActions_ = false;
    int itemActionIndex_ = 0;
    std::optional<PaletteItem> itemPendingDelete_;
    bool searchFocused_ = true;

    std::vector<PaletteRow> rows_;
    std::vector<VisibleSection> sections_;
    std::vector<PaletteItemAction> itemActions_;
};

}  // namespace corvetta
