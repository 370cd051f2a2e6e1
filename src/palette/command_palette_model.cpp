#include "palette/command_palette_model.h"

#include <algorithm>

#include "layouts/custom_layout_store.h"
#include "layouts/layout_service.h"
#include "palette/fuzzy_match.h"
#include "palette/palette_actions.h"
#include "shortcuts/keyboard_shortcuts_bridge.h"
#include "workspaces/space_manager.h"
#include "workspaces/workspace_restorer.h"
#include "workspaces/workspace_service.h"

namespace corvetta {

namespace {

// Inside the palette the item-actions key is the platform's command key: ⌘ on a Mac, Ctrl on
// Linux, where Alt+K would reach the window manager's menus and Super is taken by the desktop.
#ifdef __APPLE__
constexpr const char* kItemActionsKey = "⌘K";
#else
constexpr const char* kItemActionsKey = "Ctrl+K";
#endif

enum class ItemVerb { edit, clone, remove };

// The panel's rows for each kind of item, in order.
struct ItemActionRow {
    PaletteItem::Kind kind;
    ItemVerb verb;
    const char* name;
};
constexpr ItemActionRow kItemActionTable[] = {
    {PaletteItem::Kind::workspace, ItemVerb::edit, "Edit Workspace"},
    {PaletteItem::Kind::workspace, ItemVerb::clone, "Clone Workspace"},
    {PaletteItem::Kind::workspace, ItemVerb::remove, "Delete Workspace"},
    {PaletteItem::Kind::space, ItemVerb::edit, "Edit Space"},
    {PaletteItem::Kind::space, ItemVerb::remove, "Delete Space"},
    {PaletteItem::Kind::customLayout, ItemVerb::edit, "Edit Layout"},
    {PaletteItem::Kind::customLayout, ItemVerb::clone, "Clone Layout"},
    {PaletteItem::Kind::customLayout, ItemVerb::remove, "Delete Layout"},
};

// The verb's id, icon and colour role, the same for every kind.
struct VerbLook {
    const char* id;
    const char* icon;
    const char* color;
};
VerbLook lookOf(ItemVerb verb) {
    switch (verb) {
        case ItemVerb::edit:
            return {"edit", "document-edit", "accent"};
        case ItemVerb::clone:
            return {"clone", "edit-copy", "accent"};
        case ItemVerb::remove:
            break;
    }
    return {"delete", "edit-delete", "destructive"};
}

int wrapped(int index, int count) {
    return count == 0 ? 0 : ((index % count) + count) % count;
}

// "Name Copy", or "Name Copy 2", "Name Copy 3"… when the plain copy's name is taken.
template <class Taken>
std::string copyName(const std::string& name, Taken taken) {
    std::string candidate = name + CommandPaletteModel::kCloneSuffix;
    for (int n = 2; taken(candidate); ++n) {
        candidate = name + CommandPaletteModel::kCloneSuffix + " " + std::to_string(n);
    }
    return candidate;
}

}  // namespace

CommandPaletteModel::CommandPaletteModel(Services services)
    : services_(std::move(services)),
      logger_(services_.logging, kServiceName, LogCategory::shortcut()),
      recents_(services_.defaults) {
    observeKeys();
    observeStores();
}

void CommandPaletteModel::observeKeys() {
    const std::pair<const char*, std::function<void()>> keys[] = {
        {kNavigateDown, [this] { navigate(1); }},
        {kNavigateUp, [this] { navigate(-1); }},
        {kOpenItemActions, [this] { openItemActions(); }},
        {kConfirm, [this] { confirm(); }},
        {kEscape, [this] { escape(); }},
    };
    for (const auto& [name, handler] : keys) {
        // A palette that is not on screen has no keys.
        observers_.push_back(
            services_.notifications.addObserver(name, [this, run = handler](const Notification&) {
                if (shown_) {
                    run();
                }
            }));
    }
}

void CommandPaletteModel::observeStores() {
    for (const char* name : {WorkspaceService::kWorkspacesDidChange, SpaceManager::kSpacesDidChange,
                             CustomLayoutStore::kDidChangeNotification}) {
        observers_.push_back(services_.notifications.addObserver(name, [this](const Notification&) {
            if (!shown_) {
                return;
            }
            const auto* selected = selectedRow();
            auto keep = selected ? std::optional(selected->item.identity()) : std::nullopt;
            rebuildRows();
            refilter(std::move(keep));
            changed();
        }));
    }
}

void CommandPaletteModel::willShow() {
    shown_ = true;
    previousApp_ = services_.previousFrontmostApp ? services_.previousFrontmostApp() : std::nullopt;
    searchText_.clear();
    selectedIndex_ = 0;
    showingItemActions_ = false;
    itemActions_.clear();
    itemActionIndex_ = 0;
    itemPendingDelete_.reset();
    searchFocused_ = true;
    rebuildRows();
    refilter(std::nullopt);
    changed();
}

void CommandPaletteModel::didHide() {
    shown_ = false;
}

// MARK: - What to draw

int CommandPaletteModel::visibleRowCount() const {
    int count = 0;
    for (const auto& section : sections_) {
        count += static_cast<int>(section.rows.size());
    }
    return count;
}

const VisibleRow* CommandPaletteModel::visibleRow(int index) const {
    if (index < 0) {
        return nullptr;
    }
    auto remaining = static_cast<std::size_t>(index);
    for (const auto& section : sections_) {
        if (remaining < section.rows.size()) {
            return &section.rows[remaining];
        }
        remaining -= section.rows.size();
    }
    return nullptr;
}

const PaletteRow* CommandPaletteModel::selectedRow() const {
    const auto* visible = visibleRow(selectedIndex_);
    return visible ? &rows_[visible->row] : nullptr;
}

std::optional<std::string> CommandPaletteModel::emptyText() const {
    if (!FuzzyQuery(searchText_).isEmpty()) {
        if (visibleRowCount() == 0) {
            return "No results for \"" + searchText_ + "\"";
        }
        return std::nullopt;
    }
    if (services_.spaceManager.spaces().empty() &&
        services_.workspaceService.workspaces().empty()) {
        return std::string(kNothingToList);
    }
    return std::nullopt;
}

std::optional<CommandPaletteModel::DeleteConfirmation> CommandPaletteModel::deleteConfirmation()
    const {
    if (!itemPendingDelete_) {
        return std::nullopt;
    }
    std::string message = kDeleteMessage;
    if (itemPendingDelete_->kind() == PaletteItem::Kind::space) {
        message += std::string(" ") + kDeleteSpaceMessage;
    }
    return DeleteConfirmation{"Delete \"" + itemPendingDelete_->name() + "\"", message,
                              kDeleteButton, kCancelButton};
}

std::vector<PaletteHint> CommandPaletteModel::hints() const {
    return {{kItemActionsKey, "actions"},
            {"↵", "activate"},
            {"↑↓", "navigate"},
            {"esc", showingItemActions_ ? "back" : "close"}};
}

// MARK: - Input

void CommandPaletteModel::setSearchText(std::string text) {
    if (text == searchText_) {
        return;
    }
    searchText_ = std::move(text);
    itemPendingDelete_.reset();
    closePanel();
    selectedIndex_ = 0;
    refilter(std::nullopt);
    changed();
}

void CommandPaletteModel::select(int index) {
    if (index < 0 || index >= visibleRowCount() || showingItemActions_) {
        return;
    }
    selectedIndex_ = index;
    changed();
}

void CommandPaletteModel::confirm() {
    if (itemPendingDelete_) {
        confirmDelete();
    } else if (showingItemActions_) {
        chooseItemAction(itemActionIndex_);
    } else if (const auto* row = selectedRow()) {
        const PaletteRow chosen = *row;
        activate(chosen);
    }
}

void CommandPaletteModel::navigate(int step) {
    if (itemPendingDelete_) {
        return;
    }
    if (showingItemActions_) {
        itemActionIndex_ = wrapped(itemActionIndex_ + step, static_cast<int>(itemActions_.size()));
    } else {
        selectedIndex_ = wrapped(selectedIndex_ + step, visibleRowCount());
    }
    changed();
}

void CommandPaletteModel::openItemActions() {
    if (itemPendingDelete_) {
        return;
    }
    if (showingItemActions_) {
        closePanel();
        changed();
        return;
    }
    const auto* row = selectedRow();
    if (!row || !row->hasItemActions) {
        return;
    }
    itemActions_ = itemActionsFor(row->item);
    showingItemActions_ = true;
    itemActionIndex_ = 0;
    searchFocused_ = false;
    changed();
}

void CommandPaletteModel::escape() {
    if (itemPendingDelete_) {
        cancelDelete();
    } else if (showingItemActions_) {
        closePanel();
        changed();
    } else {
        dismiss();
    }
}

void CommandPaletteModel::chooseItemAction(int index) {
    if (!showingItemActions_ || index < 0 || index >= static_cast<int>(itemActions_.size())) {
        return;
    }
    itemActionIndex_ = index;
    const auto action = itemActions_[static_cast<std::size_t>(index)].action;
    action();
}

void CommandPaletteModel::confirmDelete() {
    if (!itemPendingDelete_) {
        return;
    }
    const PaletteItem item = *itemPendingDelete_;
    itemPendingDelete_.reset();
    closePanel();
    remove(item);
    refilter(std::nullopt);
    changed();
}

void CommandPaletteModel::cancelDelete() {
    if (itemPendingDelete_) {
        itemPendingDelete_.reset();
        changed();
    }
}

void CommandPaletteModel::openSettings() {
    if (onOpenSettings) {
        dismiss();
        onOpenSettings();
    }
}

// MARK: - Rows

std::vector<PaletteAction> CommandPaletteModel::actions() {
    std::vector<PaletteAction> result;
    for (const auto& row : paletteActionTable()) {
        if (row.needsUpdater) {
            continue;
        }
        const auto external = [this](PaletteExternalAction::Kind kind) {
            return [this, kind] {
                if (onExternalAction) {
                    onExternalAction(PaletteExternalAction{kind, std::nullopt});
                } else {
                    logger_.warning("Command palette: no window answers this action");
                }
            };
        };
        std::function<void()> execute;
        switch (row.command) {
            case PaletteCommand::newSpace:
                execute = external(PaletteExternalAction::Kind::newSpace);
                break;
            case PaletteCommand::newWorkspace:
                execute = external(PaletteExternalAction::Kind::newWorkspace);
                break;
            case PaletteCommand::newLayout:
                execute = external(PaletteExternalAction::Kind::newLayout);
                break;
            case PaletteCommand::quit:
                execute = [this] {
                    if (services_.quit) {
                        services_.quit();
                    }
                };
                break;
            case PaletteCommand::checkForUpdates:
                break;
        }
        result.push_back(PaletteAction{std::string(row.label), std::string(row.key),
                                       row.reactivatePreviousApp, std::move(execute)});
    }
    return result;
}

void CommandPaletteModel::rebuildRows() {
    auto& spaces = services_.spaceManager;
    const auto& shortcuts = services_.shortcuts;
    rows_ = buildPaletteRows(PaletteSources{
        .spaces = spaces.spaces(),
        .globalSpace = spaces.globalSpace(),
        .workspaces = services_.workspaceService.workspaces(),
        .layouts = services_.customLayoutStore.layouts(),
        .activeSpaceId = services_.workspaceService.activeSpaceId(),
        .actions = actions(),
        .shortcutNamed = [&shortcuts](const std::string& name) { return shortcuts.shortcut(name); },
    });
}

void CommandPaletteModel::refilter(std::optional<std::string> keepSelected) {
    const bool typed = !FuzzyQuery(searchText_).isEmpty();
    sections_ = filterPaletteRows(rows_, searchText_,
                                  typed ? std::vector<std::string>{} : recents_.identities());
    const int count = visibleRowCount();
    if (keepSelected) {
        for (int i = 0; i < count; ++i) {
            if (rows_[visibleRow(i)->row].item.identity() == *keepSelected) {
                selectedIndex_ = i;
                return;
            }
        }
    }
    selectedIndex_ = std::clamp(selectedIndex_, 0, std::max(count - 1, 0));
}

void CommandPaletteModel::changed() {
    services_.notifications.post(kDidChange);
}

// MARK: - Doing

void CommandPaletteModel::dismiss() {
    if (onDismiss) {
        onDismiss();
    }
}

void CommandPaletteModel::applyLayout(const CustomLayoutTemplate& layout) {
    if (services_.applyLayout) {
        services_.applyLayout(layout);
    } else {
        services_.layoutService.applyCustomLayout(layout);
    }
}

void CommandPaletteModel::activate(const PaletteRow& row) {
    const auto& item = row.item;
    recents_.record(item.identity());
    logger_.info("Command palette: activating '" + item.name() + "'");
    dismiss();
    if (const auto* space = item.as<WorkspaceSpace>()) {
        services_.spaceManager.activate(space->id);
    } else if (const auto* workspace = item.as<Workspace>()) {
        services_.restorer.restore(
            *workspace, RestoreTrigger::user,
            [logger = logger_](const RestoreReport& report) { logger.info(report.summary); });
    } else if (const auto* builtIn = item.as<PaletteBuiltInLayout>()) {
        applyLayout(builtIn->layout);
    } else if (const auto* layout = item.as<CustomLayoutTemplate>()) {
        applyLayout(*layout);
    } else if (const auto* action = item.as<PaletteAction>()) {
        runAction(*action);
    }
}

void CommandPaletteModel::runAction(const PaletteAction& action) {
    if (action.execute) {
        action.execute();
    }
    if (!action.reactivatePreviousApp || !previousApp_) {
        return;
    }
    if (!services_.applications.activate(previousApp_->processIdentifier)) {
        logger_.info("Command palette: previous application is gone: " +
                     previousApp_->description());
    }
}

void CommandPaletteModel::closePanel() {
    showingItemActions_ = false;
    itemActions_.clear();
    itemActionIndex_ = 0;
    searchFocused_ = true;
}

std::vector<PaletteItemAction> CommandPaletteModel::itemActionsFor(const PaletteItem& item) {
    std::vector<PaletteItemAction> result;
    for (const auto& row : kItemActionTable) {
        if (row.kind != item.kind()) {
            continue;
        }
        const auto look = lookOf(row.verb);
        std::function<void()> run;
        switch (row.verb) {
            case ItemVerb::edit:
                run = [this, item] { edit(item); };
                break;
            case ItemVerb::clone:
                run = [this, item] { clone(item); };
                break;
            case ItemVerb::remove:
                run = [this, item] {
                    itemPendingDelete_ = item;
                    changed();
                };
                break;
        }
        result.push_back(PaletteItemAction{look.id, row.name, look.icon, look.color, run});
    }
    return result;
}

void CommandPaletteModel::edit(const PaletteItem& item) {
    using Kind = PaletteExternalAction::Kind;
    const Kind kind = item.kind() == PaletteItem::Kind::space       ? Kind::editSpace
                      : item.kind() == PaletteItem::Kind::workspace ? Kind::editWorkspace
                                                                    : Kind::editLayout;
    dismiss();
    if (onExternalAction) {
        onExternalAction(PaletteExternalAction{kind, item});
    } else {
        logger_.warning("Command palette: no window answers this action");
    }
}

void CommandPaletteModel::clone(const PaletteItem& item) {
    std::string identity;
    if (const auto* workspace = item.as<Workspace>()) {
        Workspace copy = *workspace;
        copy.id = Uuid::random();
        // One combination cannot answer for two workspaces.
        copy.shortcutKeyCode.reset();
        copy.shortcutModifiers.reset();
        copy.name = copyName(workspace->name, [&](const std::string& name) {
            return !services_.workspaceService.validateName(name, std::nullopt, copy.spaceId);
        });
        identity = PaletteItem(copy).identity();
        services_.workspaceService.add(std::move(copy));
    } else if (const auto* layout = item.as<CustomLayoutTemplate>()) {
        CustomLayoutTemplate copy = *layout;
        copy.id = Uuid::random();
        copy.shortcutKeyCode.reset();
        copy.shortcutModifiers.reset();
        copy.name = copyName(layout->name, [&](const std::string& name) {
            return services_.customLayoutStore.isNameTaken(name, copy.spaceId);
        });
        identity = PaletteItem(copy).identity();
        services_.customLayoutStore.add(std::move(copy));
    }
    logger_.info("Command palette: cloned '" + item.name() + "'");
    closePanel();
    rebuildRows();
    refilter(identity);
    changed();
}

void CommandPaletteModel::remove(const PaletteItem& item) {
    logger_.info("Command palette: deleting '" + item.name() + "'");
    if (const auto* space = item.as<WorkspaceSpace>()) {
        services_.spaceManager.deleteSpace(space->id);
    } else if (const auto* workspace = item.as<Workspace>()) {
        services_.workspaceService.remove(workspace->id);
    } else if (const auto* layout = item.as<CustomLayoutTemplate>()) {
        services_.customLayoutStore.remove(layout->id);
    }
    rebuildRows();
}

}  // namespace corvetta
