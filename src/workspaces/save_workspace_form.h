// save_workspace_form.h: The save-workspace form: name, options, space and the windows to keep.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "foundation/notification_center.h"
#include "foundation/uuid.h"
#include "workspaces/name_form.h"
#include "workspaces/space_manager.h"
#include "workspaces/workspace_capture.h"
#include "workspaces/workspace_service.h"

namespace corvetta {

// A space the workspace can go into; no id is the global space.
struct SpaceChoice {
    std::optional<Uuid> id;
    std::string name;

    bool operator==(const SpaceChoice&) const = default;
};

// One window the workspace will hold, as the form lists it.
struct CapturedWindowRow {
    std::string application;
    std::string title;

    bool operator==(const CapturedWindowRow&) const = default;
};

// Saves the windows on screen as a new workspace through the capture's own save path. Opening
// captures the windows once; the list saved is the list shown, refreshed only when asked, so the
// user saves what they saw. The name is checked in the chosen space (the active one at opening),
// and again whenever the workspaces or spaces change while the form is open.
class SaveWorkspaceForm final : public NameForm {
public:
    static constexpr const char* kDidChange = "com.corvetta.saveWorkspaceFormDidChange";

    struct Services {
        WorkspaceCapture& capture;
        WorkspaceService& workspaces;
        SpaceManager& spaces;
        NotificationCenter& notifications;
    };

    explicit SaveWorkspaceForm(Services services);

    // Empty name, options off, the active space chosen, the windows captured.
    void open();
    void refreshWindows();

    bool closeNonWorkspaceWindows() const { return draft_.closeNonWorkspaceWindows; }
    void setCloseNonWorkspaceWindows(bool on);
    bool skipLaunchMissingApps() const { return draft_.skipLaunchMissingApps; }
    void setSkipLaunchMissingApps(bool on);

    // The global space first, then the stored spaces in their order.
    const std::vector<SpaceChoice>& spaceChoices() const { return spaceChoices_; }
    const std::optional<Uuid>& spaceId() const { return draft_.spaceId; }
    // An id that names no space chooses the global space.
    void chooseSpace(const std::optional<Uuid>& id);

    const std::vector<CapturedWindowRow>& windowRows() const { return rows_; }
    // The workspace saved last, once the form is done.
    const std::optional<Workspace>& saved() const { return saved_; }

protected:
    Expected<void, std::string> validate(const std::string& name) const override;
    bool ready() const override { return !draft_.windows.empty(); }
    Expected<void, std::string> add() override;
    std::optional<std::string> writeError() const override;
    Expected<void, std::string> writeAgain() override;

private:
    void readSpaces();

    Services services_;
    WorkspaceDraft draft_;
    std::vector<SpaceChoice> spaceChoices_;
    std::vector<CapturedWindowRow> rows_;
    std::optional<Workspace> saved_;
    ObserverToken workspacesObserver_;
    ObserverToken spacesObserver_;
};

}  // namespace corvetta
