#include "windowing/usable_screens.h"

#include <algorithm>

namespace corvetta {

UsableScreens::UsableScreens(std::span<const Screen> screens, const Screen& currentScreen,
                             LoggingService& logging)
    : screens_(screens),
      currentScreen_(&currentScreen),
      logger_(logging, "UsableScreens", LogCategory::windowPositioning()) {}

const Screen& UsableScreens::nextScreen() const {
    const Screen& next = neighbour(1);
    logger_.debug([&] {
        return "Next screen after " + currentScreen_->description() + ": " + next.description();
    });
    return next;
}

const Screen& UsableScreens::previousScreen() const {
    const Screen& previous = neighbour(screens_.size() - 1);
    logger_.debug([&] {
        return "Previous screen before " + currentScreen_->description() + ": " +
               previous.description();
    });
    return previous;
}

const Screen& UsableScreens::neighbour(std::size_t step) const {
    const auto found = std::find_if(screens_.begin(), screens_.end(), [&](const Screen& s) {
        return s.isSameScreen(*currentScreen_);
    });
    if (found == screens_.end() || screens_.size() < 2) {
        return *currentScreen_;
    }
    const auto index = static_cast<std::size_t>(found - screens_.begin());
    return screens_[(index + step) % screens_.size()];
}

}  // namespace corvetta
