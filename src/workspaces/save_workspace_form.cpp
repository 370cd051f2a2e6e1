#include "workspaces/save_workspace_form.h"

#include <algorithm>

namespace corvetta {

SaveWorkspaceForm::SaveWorkspaceForm(Services services)
    : NameForm(services.notifications, kDidChange), services_(services) {
    workspacesObserver_ = services_.notifications.addObserver(
        WorkspaceService::kWorkspacesDidChange, [this](const Notification&) { revalidate(); });
    spacesObserver_ = services_.notifications.addObserver(SpaceManager::kSpacesDidChange,
                                                          [this](const Notification&) {
                                                              if (isOpen()) {
                                                                  readSpaces();
                                                                  revalidate();
                                                              }
                                                          });
}

void SaveWorkspaceForm::open() {
    draft_ = WorkspaceDraft{.spaceId = services_.workspaces.activeSpaceId()};
    saved_.reset();
    reset();
    readSpaces();
    refreshWindows();
}

void SaveWorkspaceForm::refreshWindows() {
    if (phase() != Phase::editing) {
        return;
    }
    draft_.windows = services_.capture.captureWindows();
    rows_.clear();
    for (const auto& window : draft_.windows) {
        rows_.push_back({services_.capture.applicationName(window.appBundleIdentifier.value_or("")),
                         window.windowTitle.value_or("")});
    }
    changed();
}

void SaveWorkspaceForm::setCloseNonWorkspaceWindows(bool on) {
    draft_.closeNonWorkspaceWindows = on;
    changed();
}

void SaveWorkspaceForm::setSkipLaunchMissingApps(bool on) {
    draft_.skipLaunchMissingApps = on;
    changed();
}

void SaveWorkspaceForm::chooseSpace(const std::optional<Uuid>& id) {
    const bool known = id && services_.spaces.space(*id) != nullptr;
    draft_.spaceId = known ? id : std::nullopt;
    revalidate();
}

void SaveWorkspaceForm::readSpaces() {
    const auto& global = services_.spaces.globalSpace();
    spaceChoices_ = {{std::nullopt, global.name}};
    for (const auto& space : services_.spaces.spaces()) {
        spaceChoices_.push_back({space.id, space.name});
    }
    // The chosen space was deleted meanwhile: its workspaces went to the global space too.
    if (draft_.spaceId && services_.spaces.space(*draft_.spaceId) == nullptr) {
        draft_.spaceId.reset();
    }
}

Expected<void, std::string> SaveWorkspaceForm::validate(const std::string& name) const {
    if (auto valid = services_.workspaces.validateName(name, std::nullopt, draft_.spaceId);
        !valid) {
        return unexpected(valid.error());
    }
    return {};
}

Expected<void, std::string> SaveWorkspaceForm::add() {
    auto draft = draft_;
    draft.name = name();
    auto workspace = services_.capture.saveWorkspace(std::move(draft));
    if (!workspace) {
        return unexpected(workspace.error());
    }
    saved_ = std::move(*workspace);
    return {};
}

std::optional<std::string> SaveWorkspaceForm::writeError() const {
    return services_.workspaces.lastWriteError();
}

Expected<void, std::string> SaveWorkspaceForm::writeAgain() {
    return services_.workspaces.save();
}

}  // namespace corvetta
