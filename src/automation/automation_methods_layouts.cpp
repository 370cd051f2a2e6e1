#include <algorithm>
#include <cmath>
#include <string>

#include "automation/mcp_error.h"
#include "automation/method_groups.h"
#include "foundation/names.h"
#include "layouts/custom_layout_template.h"

namespace corvetta {

namespace {

// Sums of thirds land a rounding error past 1; that is still the edge of the area.
constexpr double kUnitTolerance = 1e-9;

Json optionalText(const std::optional<std::string>& text) {
    return text ? Json(*text) : Json();
}

// Panes go out as [x, y, width, height], the form save_layout takes, so a listed layout can be
// sent back as it is.
Json layoutEntry(const CustomLayoutTemplate& layout) {
    Json panes = Json::array();
    for (const auto& pane : layout.panes) {
        panes.push_back(
            Json::array({pane.origin.x, pane.origin.y, pane.size.width, pane.size.height}));
    }
    Json shortcut;
    if (layout.shortcutKeyCode && layout.shortcutModifiers) {
        shortcut =
            Json{{"keyCode", *layout.shortcutKeyCode}, {"modifiers", *layout.shortcutModifiers}};
    }
    return Json{{"id", layout.id.string()},
                {"name", layout.name},
                {"description", layout.templateDescription},
                {"panes", std::move(panes)},
                {"spaceId", layout.spaceId ? Json(layout.spaceId->string()) : Json()},
                {"folder", optionalText(layout.folder)},
                {"shortcut", std::move(shortcut)},
                {"defaultTemplateKey", optionalText(layout.defaultTemplateKey)},
                {"applyToAllDisplays", layout.applyToAllDisplays}};
}

Json listLayouts(const AutomationContext& context) {
    Json layouts = Json::array();
    for (const auto& layout : context.layoutStore.layouts()) {
        layouts.push_back(layoutEntry(layout));
    }
    return Json{{"layouts", std::move(layouts)}};
}

[[noreturn]] void refusePane(std::size_t index, const std::string& problem) {
    throw MCPError::invalidParam("Invalid param panes: pane " + std::to_string(index + 1) + " " +
                                 problem);
}

// Unit rectangles of the usable area, origin lower-left, as templates store them.
std::vector<Rect> requiredPanes(const MethodParams& params) {
    const auto* value = params.find("panes");
    if (value == nullptr) {
        throw MCPError::missingParam("panes");
    }
    if (!value->is_array() || value->empty()) {
        throw MCPError::invalidParam(
            "Invalid param panes: expected a list of at least one [x, y, width, height]");
    }
    std::vector<Rect> panes;
    for (std::size_t i = 0; i < value->size(); ++i) {
        const Json& pane = (*value)[i];
        if (!pane.is_array() || pane.size() != 4 ||
            !std::all_of(pane.begin(), pane.end(), [](const Json& v) {
                return v.is_number() && std::isfinite(v.get<double>());
            })) {
            refusePane(i, "is not [x, y, width, height]");
        }
        const Rect frame(pane[0].get<double>(), pane[1].get<double>(), pane[2].get<double>(),
                         pane[3].get<double>());
        if (frame.size.width <= 0 || frame.size.height <= 0) {
            refusePane(i, "needs a positive width and height");
        }
        if (frame.origin.x < 0 || frame.origin.y < 0 ||
            frame.origin.x + frame.size.width > 1 + kUnitTolerance ||
            frame.origin.y + frame.size.height > 1 + kUnitTolerance) {
            refusePane(i,
                       "reaches outside the unit square (0 <= x, y and x + width, y + height "
                       "<= 1)");
        }
        panes.push_back(frame);
    }
    return panes;
}

Json saveLayout(const AutomationContext& context, const MethodParams& params) {
    const auto name = trimmedName(params.requiredText("name"));
    if (name.empty()) {
        throw MCPError::invalidParam("Invalid param name: expected a name that is not blank");
    }
    // A space by name; "Global", like leaving it out, is the global space.
    std::optional<Uuid> spaceId;
    if (const auto space = params.optionalText("space");
        space && *space != SpaceManager::kGlobalSpaceName) {
        const auto* found = context.spaceManager.spaceNamed(*space);
        if (found == nullptr) {
            throw MCPError::notFound("space '" + *space + "'");
        }
        spaceId = found->id;
    }
    CustomLayoutTemplate layout;
    layout.id = Uuid::random();
    layout.name = name;
    layout.templateDescription = params.optionalText("description").value_or("");
    layout.panes = requiredPanes(params);
    layout.spaceId = spaceId;
    if (context.layoutStore.isNameTaken(name, spaceId)) {
        // The layout builder's own words.
        throw MCPError::invalidParam(
            spaceId ? "A layout with this name already exists in this space or the global space."
                    : "A layout with this name already exists.");
    }
    context.layoutStore.add(layout);
    methodsLogger(context).info("Saved layout '" + name + "' with " +
                                std::to_string(layout.panes.size()) + " panes");
    return layoutEntry(layout);
}

// Among templates of one name, the active space's comes first, then the global one, then any
// other: the one the user would pick in the palette.
const CustomLayoutTemplate& requireLayout(const AutomationContext& context,
                                          const std::string& name) {
    const auto active = context.spaceManager.activeSpace().id;
    const CustomLayoutTemplate* best = nullptr;
    int bestRank = 3;
    for (const auto& layout : context.layoutStore.layouts()) {
        if (layout.name != name) {
            continue;
        }
        const int rank = layout.spaceId == active ? 0 : !layout.spaceId ? 1 : 2;
        if (rank < bestRank) {
            best = &layout;
            bestRank = rank;
        }
    }
    if (best == nullptr) {
        throw MCPError::notFound("layout '" + name + "'");
    }
    return *best;
}

// Answers once every window has reached its pane, or its move has given up.
void applyWorkspaceLayout(const SharedContext& context, const MethodParams& params,
                          MethodReply& reply) {
    const auto& layout = requireLayout(*context, params.requiredText("name"));
    context->layoutService.applyCustomLayout(
        layout, [context, name = layout.name,
                 reply = std::exchange(reply, nullptr)](const LayoutResult& result) {
            context->announcer.layoutApplied(name, result);
            if (!result) {
                reply(unexpected(std::string(description(result.error()))));
                return;
            }
            reply(Json{{"name", result->templateName},
                       {"windowCount", result->windowsPlaced},
                       {"windowsVerified", result->windowsVerified}});
        });
}

}  // namespace

void addLayoutMethods(MethodTable& table, const SharedContext& context) {
    table["list_layouts"] =
        answeringAtOnce([context](const MethodParams&) { return listLayouts(*context); });
    table["save_layout"] = answeringAtOnce(
        [context](const MethodParams& params) { return saveLayout(*context, params); });
    table["apply_workspace_layout"] = [context](const MethodParams& params, MethodReply& reply) {
        applyWorkspaceLayout(context, params, reply);
    };
}

}  // namespace corvetta
