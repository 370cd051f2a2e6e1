#include "platform/sim/simulated_menus.h"

#include <string>
#include <vector>

#include "platform/accessibility_menus.h"

namespace corvetta::sim {

namespace {

// Window tokens are window numbers (32 bits) and close buttons set the top bit; menu elements
// set the next one and keep their kind and position below it.
constexpr std::uint64_t kMenuBit = std::uint64_t{1} << 62;
constexpr int kKindShift = 48;
constexpr int kMenuShift = 24;
constexpr std::uint64_t kIndexMask = (std::uint64_t{1} << 24) - 1;

std::int64_t modifierMask(const SimulatedMenuItem& item) {
    return (item.shift ? AXMenuItemModifier::kShift : 0) |
           (item.option ? AXMenuItemModifier::kOption : 0) |
           (item.control ? AXMenuItemModifier::kControl : 0) |
           (item.command ? 0 : AXMenuItemModifier::kNoCommand);
}

AXElement elementOf(const SimulatedApplication& application, const MenuElement& element) {
    return AXElement(application.pid, menuToken(element));
}

}  // namespace

bool isMenuToken(std::uint64_t token) {
    return (token & kMenuBit) != 0 && (token >> 63) == 0;
}

std::uint64_t menuToken(const MenuElement& element) {
    return kMenuBit | (std::uint64_t{static_cast<std::uint8_t>(element.kind)} << kKindShift) |
           ((element.menu & kIndexMask) << kMenuShift) | (element.item & kIndexMask);
}

std::optional<MenuElement> findMenuElement(const SimulatedApplication& application,
                                           std::uint64_t token) {
    if (!isMenuToken(token)) {
        return std::nullopt;
    }
    const auto kind = (token & ~kMenuBit) >> kKindShift;
    if (kind > static_cast<std::uint64_t>(MenuElementKind::menuItem)) {
        return std::nullopt;
    }
    const MenuElement element{static_cast<MenuElementKind>(kind),
                              static_cast<std::size_t>((token >> kMenuShift) & kIndexMask),
                              static_cast<std::size_t>(token & kIndexMask)};
    // Rebuilding the token rejects stray bits, so every element has exactly one token.
    if (menuToken(element) != token || application.menus.empty()) {
        return std::nullopt;
    }
    if (element.kind == MenuElementKind::menuBar) {
        return element.menu == 0 && element.item == 0 ? std::optional(element) : std::nullopt;
    }
    if (element.menu >= application.menus.size()) {
        return std::nullopt;
    }
    if (element.kind == MenuElementKind::menuItem) {
        return element.item < application.menus[element.menu].items.size() ? std::optional(element)
                                                                           : std::nullopt;
    }
    return element.item == 0 ? std::optional(element) : std::nullopt;
}

Expected<AXValue, AXErrorCode> menuBarOf(const SimulatedApplication& application) {
    if (application.menus.empty()) {
        return unexpected(AXErrorCode::noValue);
    }
    return AXValue(elementOf(application, {MenuElementKind::menuBar, 0, 0}));
}

Expected<AXValue, AXErrorCode> menuAttribute(const SimulatedApplication& application,
                                             const MenuElement& element,
                                             std::string_view attribute) {
    switch (element.kind) {
        case MenuElementKind::menuBar:
            if (attribute == AXMenuAttribute::kRole) {
                return AXValue(std::string(AXMenuRole::kMenuBar));
            }
            if (attribute == AXMenuAttribute::kChildren) {
                std::vector<AXElement> items;
                for (std::size_t m = 0; m < application.menus.size(); ++m) {
                    items.push_back(elementOf(application, {MenuElementKind::menuBarItem, m, 0}));
                }
                return AXValue(std::move(items));
            }
            break;
        case MenuElementKind::menuBarItem:
            if (attribute == AXMenuAttribute::kRole) {
                return AXValue(std::string(AXMenuRole::kMenuBarItem));
            }
            if (attribute == AXAttribute::kTitle) {
                return AXValue(application.menus[element.menu].title);
            }
            if (attribute == AXMenuAttribute::kEnabled) {
                return AXValue(true);
            }
            if (attribute == AXMenuAttribute::kChildren) {
                return AXValue(std::vector<AXElement>{
                    elementOf(application, {MenuElementKind::menu, element.menu, 0})});
            }
            break;
        case MenuElementKind::menu:
            if (attribute == AXMenuAttribute::kRole) {
                return AXValue(std::string(AXMenuRole::kMenu));
            }
            if (attribute == AXMenuAttribute::kChildren) {
                std::vector<AXElement> items;
                for (std::size_t i = 0; i < application.menus[element.menu].items.size(); ++i) {
                    items.push_back(
                        elementOf(application, {MenuElementKind::menuItem, element.menu, i}));
                }
                return AXValue(std::move(items));
            }
            break;
        case MenuElementKind::menuItem: {
            const auto& item = application.menus[element.menu].items[element.item];
            if (attribute == AXMenuAttribute::kRole) {
                return AXValue(std::string(AXMenuRole::kMenuItem));
            }
            if (attribute == AXAttribute::kTitle) {
                return AXValue(item.title);
            }
            if (attribute == AXMenuAttribute::kEnabled) {
                return AXValue(item.enabled);
            }
            if (attribute == AXMenuAttribute::kCommandCharacter) {
                if (item.key.empty()) {
                    return unexpected(AXErrorCode::noValue);
                }
                return AXValue(item.key);
            }
            if (attribute == AXMenuAttribute::kCommandModifiers) {
                return AXValue(modifierMask(item));
            }
            if (attribute == AXMenuAttribute::kChildren) {
                return AXValue(std::vector<AXElement>{});
            }
            break;
        }
    }
    return unexpected(AXErrorCode::attributeUnsupported);
}

Expected<const SimulatedMenuItem*, AXErrorCode> menuAction(const SimulatedApplication& application,
                                                           const MenuElement& element,
                                                           std::string_view action) {
    if (action != AXAction::kPress) {
        return unexpected(AXErrorCode::actionUnsupported);
    }
    if (element.kind == MenuElementKind::menuBarItem) {
        return static_cast<const SimulatedMenuItem*>(nullptr);
    }
    if (element.kind != MenuElementKind::menuItem) {
        return unexpected(AXErrorCode::actionUnsupported);
    }
    const auto& item = application.menus[element.menu].items[element.item];
    // A disabled item stays shut, as it does under the pointer.
    if (!item.enabled) {
        return unexpected(AXErrorCode::cannotComplete);
    }
    return &item;
}

}  // namespace corvetta::sim
