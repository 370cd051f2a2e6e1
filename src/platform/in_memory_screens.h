// in_memory_screens.h: Displays held in memory that announce each change, for the simulation.
#pragma once

#include <memory>

#include "platform/screen.h"

namespace corvetta {

// Displays held in memory, changed by the test or tool that owns them. Every change announces
// itself to the observers synchronously, as the platform's screen notification would.
class InMemoryScreens final : public ScreenPort {
public:
    InMemoryScreens();
    explicit InMemoryScreens(std::vector<Screen> screens);
    ~InMemoryScreens() override;

    std::vector<Screen> screens() const override;
    std::optional<Screen> mainScreen() const override;
    [[nodiscard]] Registration observeScreenParameters(std::function<void()> handler) override;

    // Replaces the arrangement; the first screen becomes the primary. The main screen follows by
    // its number, and falls back to the primary when it is gone.
    void setScreens(std::vector<Screen> screens);
    // The display with the key window; false when no display has that number.
    bool setMainScreen(ScreenNumber number);

private:
    struct Observers;
    std::vector<Screen> screens_;
    std::optional<ScreenNumber> main_;
    std::shared_ptr<Observers> observers_;
};

}  // namespace corvetta
