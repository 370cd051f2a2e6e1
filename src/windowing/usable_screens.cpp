#include "windowing/usable_screens.h"

#include <algorithm>

namespace corvetta {

UsableScreens::UsableScreens(std::span<const Screen> screens, const Screen& currentScreen,
                             LoggingService& logging)
    : screens_(screens),
      currentScreen_(&currentScreen),
      logger_(logging, "UsableScreens", LogCategory::windowPositioning()) {}

const Screen& UsableScreens::nextScreen() const {
    const auto found = std::find_if(screens_.begin(), screens_.end(), [&](const Screen& s) {
        return s.isSameScreen(*currentScreen_);
    });
    const Screen* next = currentScreen_;
    if (found != screens_.end() && screens_.size() >= 2) {
        const auto index = static_cast<std::size_t>(found - screens_.begin());
        next = &screens_[(index + 1) % screens_.size()];
    }
    logger_.debug([&] {
        return "Next screen after " + currentScreen_->description() + ": " + next->description();
    });
    return *next;
}

}  // namespace corvetta
