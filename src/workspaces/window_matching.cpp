#include "workspaces/window_matching.h"

#include <algorithm>

namespace corvetta {

const char* windowMatchRuleName(WindowMatchRule rule) {
    switch (rule) {
        case WindowMatchRule::title:
            return "title";
        case WindowMatchRule::index:
            return "index";
        case WindowMatchRule::order:
            break;
    }
    return "order";
}

WindowMatching matchWindows(const std::vector<SavedWindowIdentity>& saved,
                            const std::vector<std::string>& liveTitles) {
    std::vector<std::optional<std::size_t>> liveOf(saved.size());
    std::vector<std::optional<WindowMatchRule>> ruleOf(saved.size());
    std::vector<bool> taken(liveTitles.size(), false);
    const auto take = [&](std::size_t s, std::size_t l, WindowMatchRule rule) {
        liveOf[s] = l;
        ruleOf[s] = rule;
        taken[l] = true;
    };

    for (std::size_t s = 0; s < saved.size(); ++s) {
        const auto& title = saved[s].title;
        if (!title || title->empty()) {
            continue;
        }
        for (std::size_t l = 0; l < liveTitles.size(); ++l) {
            if (!taken[l] && liveTitles[l] == *title) {
                take(s, l, WindowMatchRule::title);
                break;
            }
        }
    }
    for (std::size_t s = 0; s < saved.size(); ++s) {
        const auto index = saved[s].index;
        if (liveOf[s] || !index || *index < 0 ||
            static_cast<std::size_t>(*index) >= liveTitles.size() ||
            taken[static_cast<std::size_t>(*index)]) {
            continue;
        }
        take(s, static_cast<std::size_t>(*index), WindowMatchRule::index);
    }
    std::size_t next = 0;
    for (std::size_t s = 0; s < saved.size(); ++s) {
        if (liveOf[s]) {
            continue;
        }
        while (next < liveTitles.size() && taken[next]) {
            ++next;
        }
        if (next < liveTitles.size()) {
            take(s, next, WindowMatchRule::order);
        }
    }

    WindowMatching result;
    for (std::size_t s = 0; s < saved.size(); ++s) {
        if (liveOf[s]) {
            result.matches.push_back({s, *liveOf[s], *ruleOf[s]});
        } else {
            result.unmatchedSaved.push_back(s);
        }
    }
    for (std::size_t l = 0; l < liveTitles.size(); ++l) {
        if (!taken[l]) {
            result.unmatchedLive.push_back(l);
        }
    }
    return result;
}

}  // namespace corvetta
