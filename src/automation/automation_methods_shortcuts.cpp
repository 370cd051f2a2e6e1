#include "automation/mcp_error.h"
#include "automation/method_groups.h"
#include "platform/input_events.h"

namespace corvetta {

namespace {

constexpr std::uint64_t kFourModifiers =
    ModifierFlag::kShift | ModifierFlag::kControl | ModifierFlag::kOption | ModifierFlag::kCommand;

Json listingJson(const ShortcutListing& listing) {
    const auto& shortcut = listing.shortcut;
    return Json{
        {"name", listing.name},
        {"owner", listing.owner},
        {"keyCode", shortcut ? Json(shortcut->keyCode) : Json(nullptr)},
        {"modifiers", shortcut ? Json(shortcut->modifiers) : Json(nullptr)},
        {"label", shortcut ? Json(listing.label) : Json(nullptr)},
        {"registered", listing.registered},
    };
}

Json listShortcuts(const AutomationContext& context) {
    Json entries = Json::array();
    for (const auto& listing : context.shortcuts.listShortcuts()) {
        entries.push_back(listingJson(listing));
    }
    return Json{{"shortcuts", std::move(entries)}};
}

// {"name", "keyCode", "modifiers"} or {"name", "clear": true}.
std::optional<Shortcut> requestedShortcut(const MethodParams& params) {
    const auto* clear = params.find("clear");
    if (clear && !clear->is_boolean()) {
        throw MCPError::invalidParam("Invalid param clear: expected true or false");
    }
    if (clear && clear->get<bool>()) {
        if (params.find("keyCode") || params.find("modifiers")) {
            throw MCPError::invalidParam(
                "Invalid param clear: a shortcut is either cleared or given keyCode and modifiers");
        }
        return std::nullopt;
    }
    const auto keyCode = params.optionalCount("keyCode");
    if (!keyCode) {
        throw MCPError::missingParam("keyCode");
    }
    if (*keyCode > static_cast<std::size_t>(kMaxVirtualKeyCode)) {
        throw MCPError::invalidParam("Invalid param keyCode: expected a key code from 0 to 65535");
    }
    const auto modifiers = params.optionalCount("modifiers");
    if (!modifiers) {
        throw MCPError::missingParam("modifiers");
    }
    if ((*modifiers & ~kFourModifiers) != 0) {
        throw MCPError::invalidParam(
            "Invalid param modifiers: expected event modifier flags of Shift (131072), Control "
            "(262144), Option (524288) and Command (1048576)");
    }
    return Shortcut{static_cast<std::int64_t>(*keyCode), *modifiers};
}

Json setShortcut(const AutomationContext& context, const MethodParams& params) {
    const auto name = params.requiredText("name");
    const auto shortcut = requestedShortcut(params);
    auto changed = context.shortcuts.changeShortcut(name, shortcut);
    if (!changed) {
        if (changed.error().kind == ShortcutChangeError::Kind::unknownName) {
            throw MCPError::notFound("shortcut '" + name + "'");
        }
        throw MCPError::invalidParam(changed.error().message);
    }
    return listingJson(*changed);
}

}  // namespace

void addShortcutMethods(MethodTable& table, const SharedContext& context) {
    table.emplace("list_shortcuts", answeringAtOnce([context](const MethodParams&) {
                      return listShortcuts(*context);
                  }));
    table.emplace("set_shortcut", answeringAtOnce([context](const MethodParams& params) {
                      return setShortcut(*context, params);
                  }));
}

}  // namespace corvetta
