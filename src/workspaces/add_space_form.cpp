#include "workspaces/add_space_form.h"

namespace corvetta {

AddSpaceForm::AddSpaceForm(SpaceManager& spaces, NotificationCenter& notifications)
    : NameForm(notifications, kDidChange), spaces_(spaces) {
    spacesObserver_ = notifications.addObserver(SpaceManager::kSpacesDidChange,
                                                [this](const Notification&) { revalidate(); });
}

void AddSpaceForm::open() {
    added_.reset();
    reset();
    changed();
}

Expected<void, std::string> AddSpaceForm::validate(const std::string& name) const {
    if (auto valid = spaces_.validateName(name, std::nullopt); !valid) {
        return unexpected(valid.error());
    }
    return {};
}

Expected<void, std::string> AddSpaceForm::add() {
    auto space = spaces_.addSpace(name());
    if (!space) {
        return unexpected(space.error());
    }
    added_ = std::move(*space);
    return {};
}

}  // namespace corvetta
