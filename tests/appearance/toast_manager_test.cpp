#include "appearance/toast_manager.h"

#include <optional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "foundation/manual_queue.h"
#include "support/test_logging.h"

namespace corvetta {
namespace {

enum class Act { show, finish, dismiss };

struct Step {
    double at;
    Act act;
    const char* message = "";
    ToastStyle style = ToastStyle::info;
    double duration = 0;
};

// What is presented at a moment, after the steps of that moment; nullptr means nothing.
struct Look {
    double at;
    const char* presented;
};

struct TimelineCase {
    const char* name;
    std::vector<Step> steps;
    std::vector<Look> looks;
    // Every toast that reached the screen, in order.
    std::vector<std::string> shown;
};

const TimelineCase kTimelines[] = {
    {"second toast replaces the first and restarts the timer",
     {{0, Act::show, "A", ToastStyle::success, 2}, {1.5, Act::show, "B", ToastStyle::info, 2}},
     {{1.0, "A"}, {2.1, "B"}, {3.49, "B"}, {3.5, nullptr}},
     {"A", "B"}},
    {"loading finished within the debounce shows only the result",
     {{0, Act::show, "Working", ToastStyle::loading},
      {0.2, Act::finish, "Done", ToastStyle::success, 2}},
     {{0.2, "Done"}, {0.6, "Done"}, {2.2, nullptr}},
     {"Done"}},
    {"loading seen keeps its minimum time before the result",
     {{0, Act::show, "Working", ToastStyle::loading},
      {0.55, Act::finish, "Done", ToastStyle::success, 2}},
     {{0.49, nullptr}, {0.5, "Working"}, {1.09, "Working"}, {1.1, "Done"}, {3.1, nullptr}},
     {"Working", "Done"}},
    {"loading seen long enough is replaced at once",
     {{0, Act::show, "Working", ToastStyle::loading},
      {2.0, Act::finish, "Failed", ToastStyle::error, 5}},
     {{1.9, "Working"}, {2.0, "Failed"}},
     {"Working", "Failed"}},
    {"dismissal cancels a loading toast not yet seen and a pending result",
     {{0, Act::show, "Working", ToastStyle::loading},
      {0.55, Act::finish, "Done", ToastStyle::success, 2},
      {0.6, Act::dismiss}},
     {{0.6, nullptr}, {2.0, nullptr}},
     {"Working"}},
    {"a toast without duration stays until replaced",
     {{0, Act::show, "Sticky", ToastStyle::info, 0}},
     {{60, "Sticky"}},
     {"Sticky"}},
};

Duration seconds(double value) {
    return std::chrono::round<Duration>(std::chrono::duration<double>(value));
}

std::vector<std::string> shownLog(const testing::TestLogging& logging) {
    std::vector<std::string> shown;
    for (const auto& message : logging.messages(ToastManager::kServiceName)) {
        if (message.starts_with("Toast shown: ")) {
            shown.push_back(message.substr(13));
        }
    }
    return shown;
}

// A manager on its own clock, log and settings.
struct ToastRig {
    ManualClock clock;
    ManualQueue queue{clock};
    NotificationCenter notifications;
    testing::TestLogging logging{notifications, clock};
    InMemoryPreferences defaults;
    ToastManager toasts{defaults, queue, logging.logging};
};

TEST(ToastManagerTest, TimelinesFollowTheDebounceMinimumAndReplacementRules) {
    for (const auto& timeline : kTimelines) {
        SCOPED_TRACE(timeline.name);
        ToastRig rig;
        auto& manager = rig.toasts;
        double now = 0;
        auto moveTo = [&](double at) {
            rig.queue.advance(seconds(at) - seconds(now));
            now = at;
        };
        auto steps = timeline.steps.begin();
        for (const auto& look : timeline.looks) {
            for (; steps != timeline.steps.end() && steps->at <= look.at; ++steps) {
                moveTo(steps->at);
                const ToastData toast{
                    .message = steps->message, .style = steps->style, .duration = steps->duration};
                steps->act == Act::show     ? manager.show(toast)
                : steps->act == Act::finish ? manager.finishLoading(toast)
                                            : manager.dismiss();
            }
            moveTo(look.at);
            SCOPED_TRACE("at " + std::to_string(look.at));
            if (look.presented == nullptr) {
                EXPECT_FALSE(manager.isPresented());
            } else {
                ASSERT_TRUE(manager.isPresented());
                EXPECT_EQ(manager.current()->message, look.presented);
            }
        }
        EXPECT_EQ(shownLog(rig.logging), timeline.shown);
    }
}

TEST(ToastManagerTest, DisabledDropsToastsAndTurningOffTakesTheShownOneAway) {
    ToastRig rig;
    auto& toasts = rig.toasts;
    int changes = 0;
    const auto observation = toasts.observe([&] { ++changes; });
    toasts.show("Saved", ToastStyle::success);
    ASSERT_TRUE(toasts.isPresented());

    toasts.setEnabled(false);
    EXPECT_FALSE(toasts.isPresented());
    EXPECT_EQ(rig.defaults.boolValue(ToastManager::kIsEnabledKey), false);
    toasts.show("Ignored", ToastStyle::error);
    toasts.show("Loading", ToastStyle::loading);
    rig.queue.advance(seconds(1));
    EXPECT_FALSE(toasts.isPresented());
    EXPECT_EQ(shownLog(rig.logging), std::vector<std::string>{"Saved"});
    EXPECT_EQ(changes, 2);

    // The setting outlives the manager.
    ToastManager later{rig.defaults, rig.queue, rig.logging.logging};
    EXPECT_FALSE(later.isEnabled());
}

}  // namespace
}  // namespace corvetta
