// add_space_form.h: The add-space form: a name checked as it is typed, and the space it adds.
#pragma once

#include <optional>

#include "workspaces/name_form.h"
#include "workspaces/space_manager.h"

namespace corvetta {

// Adds a space under the name typed, checked against the other spaces (and "Global") as it is
// typed and again whenever the spaces change. The new space is not activated: adding a context
// and switching to it are two decisions.
class AddSpaceForm final : public NameForm {
public:
    static constexpr const char* kDidChange = "com.corvetta.addSpaceFormDidChange";

    AddSpaceForm(SpaceManager& spaces, NotificationCenter& notifications);

    void open();
    // The space added last, once the form is done.
    const std::optional<WorkspaceSpace>& added() const { return added_; }

protected:
    Expected<void, std::string> validate(const std::string& name) const override;
    Expected<void, std::string> add() override;
    std::optional<std::string> writeError() const override { return spaces_.lastWriteError(); }
    Expected<void, std::string> writeAgain() override { return spaces_.save(); }

private:
    SpaceManager& spaces_;
    std::optional<WorkspaceSpace> added_;
    ObserverToken spacesObserver_;
};

}  // namespace corvetta
