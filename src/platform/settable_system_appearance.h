// settable_system_appearance.h: An appearance changed by hand: the simulated desktop's and tests'.
#pragma once

#include "foundation/observer_list.h"
#include "platform/system_appearance.h"

namespace corvetta {

// Starts unknown, as a desktop without a settings service would; `set` announces real changes
// only.
class SettableSystemAppearance final : public SystemAppearancePort {
public:
    SystemAppearance currentAppearance() const override { return appearance_; }
    Registration observeAppearance(std::function<void(SystemAppearance)> handler) override {
        return observers_.add(std::move(handler));
    }
    void set(SystemAppearance appearance) {
        if (appearance != appearance_) {
            appearance_ = appearance;
            observers_.notify(appearance);
        }
    }

private:
    SystemAppearance appearance_ = SystemAppearance::unknown;
    ObserverList<SystemAppearance> observers_;
};

}  // namespace corvetta
