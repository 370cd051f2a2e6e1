// window_matching.h: Pairs an application's saved windows with its live ones: title, index, order.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace corvetta {

// How a saved window found its live one.
enum class WindowMatchRule { title, index, order };

// "title", "index", "order", for log lines.
const char* windowMatchRuleName(WindowMatchRule rule);

struct WindowMatch {
    std::size_t saved = 0;
    std::size_t live = 0;
    WindowMatchRule rule = WindowMatchRule::order;

    bool operator==(const WindowMatch&) const = default;
};

struct WindowMatching {
    // In the saved windows' order.
    std::vector<WindowMatch> matches;
    // Saved windows no live window is left for: they must be opened.
    std::vector<std::size_t> unmatchedSaved;
    // Live windows no saved one took: left where they are.
    std::vector<std::size_t> unmatchedLive;
};

// What identifies a saved window: its title and index at capture.
struct SavedWindowIdentity {
    std::optional<std::string> title;
    std::optional<int> index;
};

// Each live window is taken once. First every saved window with a title takes the first free live
// window with exactly that title (an application's documents keep their titles across restarts);
// then every saved window left takes the live window at its saved index, if that one is free (the
// same window renamed: a terminal showing another command); then the saved windows left take the
// free live windows in order. Live windows are given front to back, saved ones in capture order.
WindowMatching matchWindows(const std::vector<SavedWindowIdentity>& saved,
                            const std::vector<std::string>& liveTitles);

}  // namespace corvetta
