#include "import_export/import_resolution.h"

#include <map>
#include <set>
#include <unordered_set>

#include "workspaces/deeplink.h"

namespace corvetta {

namespace {

// A combination as the clash check compares it; records keep their modifiers in different widths.
using Combo = std::pair<std::uint32_t, std::uint64_t>;

template <class Record>
std::optional<Combo> comboOf(const Record& record) {
    if (!record.shortcutKeyCode || !record.shortcutModifiers) {
        return std::nullopt;
    }
    return Combo{*record.shortcutKeyCode, *record.shortcutModifiers};
}

class Resolver {
public:
    Resolver(const CurrentSetup& current, const std::function<Uuid()>& newId, ResolvedImport& out)
        : newId_(newId), out_(out) {
        for (const auto& space : current.spaces) {
            spaceNames_.insert(space.name);
            spaceIds_.insert(space.id);
            existingSpaces_.insert(space.id);
            claimCombo(space);
        }
        for (const auto& layout : current.layouts) {
            layoutNames_.insert(layout.name);
            layoutIds_.insert(layout.id);
            claimCombo(layout);
            if (layout.defaultTemplateKey) {
                builtInKeys_.insert(*layout.defaultTemplateKey);
            }
        }
        for (const auto& workspace : current.workspaces) {
            workspaceNames_.insert(workspace.name);
            if (workspace.id) {
                workspaceIds_.insert(*workspace.id);
            }
            claimCombo(workspace);
        }
    }

    void addSpace(WorkspaceSpace space) {
        const Uuid fileId = space.id;
        space.id = unusedId(space.id, spaceIds_);
        spaceMap_[fileId] = space.id;
        space.name = uniqueName("space", space.name, spaceNames_);
        keepOrClearCombo(space);
        out_.spacesToCreate.push_back(std::move(space));
    }

    void addLayout(CustomLayoutTemplate layout) {
        layout.id = unusedId(layout.id, layoutIds_);
        layout.name = uniqueName("layout", layout.name, layoutNames_);
        layout.spaceId = mappedSpace(layout.spaceId);
        keepOrClearCombo(layout);
        if (layout.defaultTemplateKey && !builtInKeys_.insert(*layout.defaultTemplateKey).second) {
            layout.defaultTemplateKey.reset();
        }
        out_.layoutsToAdd.push_back(std::move(layout));
    }

    void addWorkspace(Workspace workspace) {
        workspace.id = workspace.id ? unusedId(*workspace.id, workspaceIds_)
                                    : unusedId(newId_(), workspaceIds_);
        workspace.name = uniqueName("workspace", workspace.name, workspaceNames_);
        workspace.spaceId = mappedSpace(workspace.spaceId);
        keepOrClearCombo(workspace);
        if (hasTerminalCommand(workspace)) {
            ++out_.terminalCommandCount;
        }
        out_.workspacesToAdd.push_back(std::move(workspace));
    }

private:
    std::string uniqueName(const char* kind, const std::string& name,
                           std::set<std::string>& taken) {
        if (taken.insert(name).second) {
            return name;
        }
        std::string candidate = name + " (Imported)";
        for (int number = 2; taken.count(candidate) != 0; ++number) {
            candidate = name + " (Imported " + std::to_string(number) + ")";
        }
        taken.insert(candidate);
        ++out_.renamedCount;
        out_.renames.push_back({kind, name, candidate});
        return candidate;
    }

    Uuid unusedId(const Uuid& wanted, std::unordered_set<Uuid>& taken) {
        Uuid id = wanted;
        while (id.isNil() || !taken.insert(id).second) {
            id = newId_();
        }
        return id;
    }

    std::optional<Uuid> mappedSpace(const std::optional<Uuid>& spaceId) const {
        if (!spaceId) {
            return std::nullopt;
        }
        if (const auto found = spaceMap_.find(*spaceId); found != spaceMap_.end()) {
            return found->second;
        }
        if (existingSpaces_.count(*spaceId) != 0) {
            return spaceId;
        }
        return std::nullopt;
    }

    template <class Record>
    void claimCombo(const Record& record) {
        if (const auto combo = comboOf(record)) {
            combos_.insert(*combo);
        }
    }

    template <class Record>
    void keepOrClearCombo(Record& record) {
        const auto combo = comboOf(record);
        if (combo && !combos_.insert(*combo).second) {
            record.shortcutKeyCode.reset();
            record.shortcutModifiers.reset();
            ++out_.clearedShortcutCount;
        }
    }

    static bool hasTerminalCommand(const Workspace& workspace) {
        if (!workspace.appDeeplinks) {
            return false;
        }
        for (const auto& [key, raw] : *workspace.appDeeplinks) {
            const auto entry = deeplinkEntry(key, raw);
            if (entry && classifyDeeplink(entry->bundleID, raw) == DeeplinkKind::terminalCommand) {
                return true;
            }
        }
        return false;
    }

    const std::function<Uuid()>& newId_;
    ResolvedImport& out_;
    std::set<std::string> spaceNames_, layoutNames_, workspaceNames_;
    std::unordered_set<Uuid> spaceIds_, layoutIds_, workspaceIds_, existingSpaces_;
    std::map<Uuid, Uuid> spaceMap_;
    std::set<Combo> combos_;
    std::set<std::string> builtInKeys_;
};

}  // namespace

ResolvedImport resolveImport(const ImportResult& file, const CurrentSetup& current,
                             const std::function<Uuid()>& newId) {
    ResolvedImport resolved;
    resolved.settings = file.settings;
    Resolver resolver(current, newId, resolved);
    for (const auto& space : file.spaces) {
        resolver.addSpace(space);
    }
    for (const auto& layout : file.customLayouts) {
        resolver.addLayout(layout);
    }
    for (const auto& workspace : file.workspaces) {
        resolver.addWorkspace(workspace);
    }
    return resolved;
}

}  // namespace corvetta
