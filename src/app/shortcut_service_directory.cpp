// The shortcut service's directory side: every name with its owner and state, conflicts, and
// changes of a name's combination where that name keeps it.
#include <algorithm>

#include "app/shortcut_families.h"
#include "app/shortcut_service.h"
#include "shortcuts/key_labels.h"
#include "shortcuts/shortcut_names.h"

namespace corvetta {

using shortcut_families::familyTable;
using shortcut_families::kActionConflictPrefix;
using shortcut_families::normalized;
using shortcut_families::quoted;
using shortcut_families::recordShortcut;

std::vector<ShortcutService::RecordShortcut> ShortcutService::recordShortcuts() const {
    std::vector<RecordShortcut> records;
    const auto add = [&](Family family, const Uuid& id, const std::string& recordName,
                         std::optional<Shortcut> shortcut) {
        const auto& row = familyTable()[static_cast<std::size_t>(family)];
        records.push_back(
            {family, id, row.shortcutName(id.string()), quoted(row.noun, recordName), shortcut});
    };
    for (const auto& workspace : services_.workspaceService.workspaces()) {
        if (workspace.id) {
            add(Family::workspace, *workspace.id, workspace.name, recordShortcut(workspace));
        }
    }
    for (const auto& space : services_.spaceManager.spaces()) {
        add(Family::space, space.id, space.name, recordShortcut(space));
    }
    for (const auto& layout : services_.layoutStore.layouts()) {
        add(Family::layout, layout.id, layout.name, recordShortcut(layout));
    }
    return records;
}

std::optional<std::string> ShortcutService::conflictFor(const std::string& name,
                                                        const Shortcut& shortcut) const {
    const auto wanted = normalized(shortcut);
    const auto clash = [&](const std::string& owner) {
        const char* prefix = kActionConflictPrefix;
        for (const auto& row : familyTable()) {
            if (name.starts_with(row.prefix)) {
                prefix = row.conflictPrefix;
            }
        }
        return std::string(prefix) + "Shortcut conflicts with " + owner;
    };
    for (const auto& listed : staticListings()) {
        if (listed.name != name && listed.shortcut && normalized(*listed.shortcut) == wanted) {
            return clash(listed.owner);
        }
    }
    for (const auto& record : recordShortcuts()) {
        if (record.name != name && record.shortcut && normalized(*record.shortcut) == wanted) {
            return clash(record.owner);
        }
    }
    return std::nullopt;
}

ShortcutListing ShortcutService::listing(const std::string& name, std::string owner,
                                         std::optional<Shortcut> shortcut) const {
    return ShortcutListing{
        .name = name,
        .owner = std::move(owner),
        .shortcut = shortcut,
        .label = shortcut ? shortcutLabel(*shortcut) : std::string(),
        .registered = services_.shortcutBridge.isShortcutRegistered(name),
    };
}

std::vector<ShortcutListing> ShortcutService::staticListings() const {
    std::vector<ShortcutListing> listings;
    for (const auto& row : shortcutNameTable()) {
        if (row.role == ShortcutRole::recorderScratch) {
            continue;
        }
        const std::string name(row.name);
        // The live store only: a bridge fallback is no hot key.
        const auto live = services_.hotKeyStore.shortcut(libraryShortcutName(name));
        listings.push_back(
            listing(name, quoted("action", name),
                    live ? std::optional(ShortcutConverter::toShortcut(*live)) : std::nullopt));
    }
    return listings;
}

std::vector<ShortcutListing> ShortcutService::listShortcuts() const {
    auto listings = staticListings();
    for (const auto& record : recordShortcuts()) {
        listings.push_back(listing(record.name, record.owner, record.shortcut));
    }
    return listings;
}

std::optional<ShortcutService::RecordShortcut> ShortcutService::findRecord(
    const std::string& name) const {
    for (const auto& row : familyTable()) {
        if (!name.starts_with(row.prefix)) {
            continue;
        }
        const auto id = Uuid::parse(std::string_view(name).substr(row.prefix.size()));
        if (!id) {
            return std::nullopt;
        }
        for (auto& record : recordShortcuts()) {
            if (record.id == *id && record.name.starts_with(row.prefix)) {
                return record;
            }
        }
        return std::nullopt;
    }
    return std::nullopt;
}

Expected<ShortcutListing, ShortcutChangeError> ShortcutService::changeShortcut(
    const std::string& name, const std::optional<Shortcut>& shortcut) {
    const auto* row = findShortcutNameRow(name);
    const bool isStatic = row && row->role != ShortcutRole::recorderScratch;
    const auto record = isStatic ? std::nullopt : findRecord(name);
    if (!isStatic && !record) {
        return unexpected(
            ShortcutChangeError{ShortcutChangeError::Kind::unknownName, "shortcut '" + name + "'"});
    }
    if (shortcut && (shortcut->keyCode < 0 || shortcut->keyCode > kMaxVirtualKeyCode)) {
        return unexpected(ShortcutChangeError{ShortcutChangeError::Kind::notStored,
                                              "A key code is a whole number from 0 to 65535"});
    }
    if (shortcut) {
        if (auto conflict = conflictFor(record ? record->name : name, *shortcut)) {
            logger_.warning(*conflict);
            return unexpected(
                ShortcutChangeError{ShortcutChangeError::Kind::conflict, std::move(*conflict)});
        }
    }
    if (record) {
        if (auto stored = store(*record, shortcut); !stored) {
            return unexpected(stored.error());
        }
        for (auto& listed : listShortcuts()) {
            if (listed.name == record->name) {
                return std::move(listed);
            }
        }
    } else if (!services_.shortcutBridge.setShortcut(name, shortcut)) {
        return unexpected(ShortcutChangeError{ShortcutChangeError::Kind::notStored,
                                              "The shortcut for '" + name + "' was not stored"});
    }
    for (auto& listed : staticListings()) {
        if (listed.name == name) {
            return std::move(listed);
        }
    }
    return unexpected(ShortcutChangeError{ShortcutChangeError::Kind::unknownName, name});
}

Expected<void, ShortcutChangeError> ShortcutService::store(
    const RecordShortcut& record, const std::optional<Shortcut>& shortcut) {
    const auto keyCode =
        shortcut ? std::optional(static_cast<std::uint16_t>(shortcut->keyCode)) : std::nullopt;
    const auto refused = [&](std::string why) {
        return unexpected(ShortcutChangeError{
            ShortcutChangeError::Kind::notStored,
            "The shortcut of " + record.owner + " was not stored: " + std::move(why)});
    };
    switch (record.family) {
        case Family::workspace: {
            std::optional<ShortcutCombo> combo;
            if (shortcut) {
                combo = ShortcutCombo{*keyCode, static_cast<std::uint32_t>(shortcut->modifiers)};
            }
            services_.workspaceService.updateWorkspaceShortcut(record.id, combo);
            return {};
        }
        case Family::space: {
            auto space = *services_.spaceManager.space(record.id);
            space.shortcutKeyCode = keyCode;
            space.shortcutModifiers =
                shortcut ? std::optional(static_cast<std::uint32_t>(shortcut->modifiers))
                         : std::nullopt;
            if (auto updated = services_.spaceManager.updateSpace(space); !updated) {
                return refused(updated.error());
            }
            return {};
        }
        case Family::layout: {
            auto layout = *services_.layoutStore.find(record.id);
            layout.shortcutKeyCode = keyCode;
            layout.shortcutModifiers = shortcut ? std::optional(shortcut->modifiers) : std::nullopt;
            if (!services_.layoutStore.update(layout)) {
                return refused("the layout store refused it");
            }
            return {};
        }
    }
    return {};
}

}  // namespace corvetta
