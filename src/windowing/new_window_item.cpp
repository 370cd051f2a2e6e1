#include "windowing/new_window_item.h"

#include <algorithm>
#include <cctype>
#include <cstdint>
#include <vector>

#include "platform/accessibility_menus.h"
#include "windowing/ax_reading.h"

namespace corvetta {

namespace {

enum class Rank { newWindowTitle, commandN, newPrefix, none };

std::string lowercase(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return text;
}

// In the order menus show them: Control, Option, Shift, Command, then the key.
std::string shortcutText(const std::string& key, std::int64_t modifiers) {
    if (key.empty()) {
        return "";
    }
    std::string text;
    if ((modifiers & AXMenuItemModifier::kControl) != 0) {
        text += "⌃";
    }
    if ((modifiers & AXMenuItemModifier::kOption) != 0) {
        text += "⌥";
    }
    if ((modifiers & AXMenuItemModifier::kShift) != 0) {
        text += "⇧";
    }
    if ((modifiers & AXMenuItemModifier::kNoCommand) == 0) {
        text += "⌘";
    }
    std::string upper = key;
    std::transform(upper.begin(), upper.end(), upper.begin(),
                   [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
    return text + upper;
}

Rank rankOf(const std::string& title, const std::string& key, std::int64_t modifiers) {
    const std::string lowered = lowercase(title);
    if (lowered == "new window") {
        return Rank::newWindowTitle;
    }
    if (lowercase(key) == "n" && modifiers == 0) {
        return Rank::commandN;
    }
    if (lowered.starts_with("new ")) {
        return Rank::newPrefix;
    }
    return Rank::none;
}

std::string simplified(const std::string& text) {
    std::string result;
    for (const unsigned char c : text) {
        if (std::isalnum(c)) {
            result += static_cast<char>(std::tolower(c));
        }
    }
    return result;
}

std::vector<AXElement> children(AccessibilityPort& accessibility, const AXElement& element) {
    return readAttribute<std::vector<AXElement>>(accessibility, element, AXMenuAttribute::kChildren)
        .value_or(std::vector<AXElement>{});
}

// The menu a menu-bar item opens: its child with the menu role.
std::optional<AXElement> menuOf(AccessibilityPort& accessibility, const AXElement& barItem) {
    for (const auto& child : children(accessibility, barItem)) {
        if (readAttribute<std::string>(accessibility, child, AXMenuAttribute::kRole).value_or("") ==
            AXMenuRole::kMenu) {
            return child;
        }
    }
    return std::nullopt;
}

}  // namespace

Expected<std::optional<FoundMenuItem>, std::string> findNewWindowMenuItem(
    AccessibilityPort& accessibility, ProcessId application) {
    const auto menuBar = readAttribute<AXElement>(
        accessibility, accessibility.applicationElement(application), AXMenuAttribute::kMenuBar);
    if (!menuBar) {
        if (menuBar.error() == AXErrorCode::noValue ||
            menuBar.error() == AXErrorCode::attributeUnsupported) {
            return std::optional<FoundMenuItem>();
        }
        return unexpected("Cannot read the menu bar: " + describe(menuBar.error()));
    }

    std::optional<FoundMenuItem> best;
    Rank bestRank = Rank::none;
    for (const auto& barItem : children(accessibility, *menuBar)) {
        const auto menu = menuOf(accessibility, barItem);
        if (!menu) {
            continue;
        }
        const std::string menuName =
            readAttribute<std::string>(accessibility, barItem, AXAttribute::kTitle).value_or("");
        for (const auto& item : children(accessibility, *menu)) {
            const auto title = readAttribute<std::string>(accessibility, item, AXAttribute::kTitle);
            if (!title || !readAttribute<bool>(accessibility, item, AXMenuAttribute::kEnabled)
                               .value_or(false)) {
                continue;
            }
            const std::string key =
                readAttribute<std::string>(accessibility, item, AXMenuAttribute::kCommandCharacter)
                    .value_or("");
            const std::int64_t modifiers =
                readAttribute<std::int64_t>(accessibility, item, AXMenuAttribute::kCommandModifiers)
                    .value_or(0);
            const Rank rank = rankOf(*title, key, modifiers);
            if (rank < bestRank) {
                bestRank = rank;
                best = FoundMenuItem{item, menuName, *title, shortcutText(key, modifiers)};
            }
        }
    }
    return best;
}

std::optional<ApplicationAction> newWindowAction(const std::vector<ApplicationAction>& actions) {
    for (const auto& action : actions) {
        if (simplified(action.identifier) == "newwindow") {
            return action;
        }
    }
    for (const auto& action : actions) {
        if (simplified(action.name) == "newwindow") {
            return action;
        }
    }
    return std::nullopt;
}

Expected<std::optional<NewWindowItem>, std::string> findNewWindowItem(
    AccessibilityPort& accessibility, const ApplicationsPort& applications, ProcessId application) {
    auto found = findNewWindowMenuItem(accessibility, application);
    if (!found) {
        return unexpected(found.error());
    }
    if (*found) {
        auto item = std::move(**found);
        auto menuName = item.menuName;
        auto itemTitle = item.itemTitle;
        auto shortcut = item.shortcut;
        return std::optional<NewWindowItem>(NewWindowItem{
            std::move(item), std::move(menuName), std::move(itemTitle), std::move(shortcut)});
    }
    const auto action = newWindowAction(applications.applicationActions(application));
    if (!action) {
        return std::optional<NewWindowItem>();
    }
    return std::optional<NewWindowItem>(
        NewWindowItem{*action, action->identifier, action->name, ""});
}

}  // namespace corvetta
