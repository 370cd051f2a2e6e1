#include "workspaces/auto_restore_decision.h"

#include <gtest/gtest.h>

namespace corvetta {
namespace {

using namespace std::chrono_literals;
using enum DisplayChangeType;

const Uuid kA = Uuid::random(), kB = Uuid::random();
constexpr std::nullopt_t none = std::nullopt;

// Every rule; rows also hold conditions of later rules, so a change of order fails.
TEST(AutoRestoreDecisionTest, FirstApplicableRuleDecides) {
    struct Row {
        bool enabled, restoring;
        std::optional<std::chrono::seconds> sinceFire;
        bool hasWorkspace;
        std::optional<Uuid> space, active;
        std::optional<DisplayChangeType> change;
        bool wasMissing, didWake;
        AutoRestoreDecision expected;
    };
    const std::string other = "'Work' belongs to a different space than the active one";
    // clang-format off
    const Row rows[] = {
        {false, true, 1s, false, none, none, none, true, true, {false, true, "feature disabled"}},
        {true, true, 1s, false, none, none, none, false, true, {false, false, "a restoration is already in progress"}},
        {true, false, 2s, false, none, none, none, true, true, {false, true, "within cooldown window"}},
        {true, false, none, false, kA, none, none, false, true, {false, false, "no last-restored workspace on record"}},
        {true, false, 3s, true, kA, none, none, false, true, {false, false, other}},
        {true, false, none, true, none, kA, none, true, true, {false, true, other}},
        {true, false, none, true, kA, kB, noChange, false, false, {false, false, other}},
        {true, false, none, true, kA, kA, none, true, true, {true, false, "system woke from sleep"}},
        {true, false, none, true, none, none, none, true, false, {false, true, "'Work' has no saved display arrangement to compare"}},
        {true, false, none, true, none, none, displayRemoved, true, true, {true, true, "system woke from sleep"}},
        {true, false, none, true, none, none, noChange, true, true, {true, false, "system woke from sleep"}},
        {true, false, none, true, none, none, displayRemoved, false, false, {true, true, "display disconnected"}},
        {true, false, none, true, none, none, positionChanged, true, false, {true, false, "display reconnected"}},
        {true, false, none, true, none, none, displayRemoved, true, false, {false, true, "a display 'Work' needs is still missing"}},
        {true, false, 3s, true, kA, kA, displayAdded, false, false, {false, false, "displays already present, nothing to recover"}},
    };
    // clang-format on
    const Date now(std::chrono::seconds(1'800'000'000));
    for (std::size_t i = 0; i < std::size(rows); ++i) {
        const Row& row = rows[i];
        AutoRestoreDecisionInput input{.enabled = row.enabled,
                                       .isRestoring = row.restoring,
                                       .now = now,
                                       .activeSpaceId = row.active,
                                       .changeType = row.change,
                                       .wasMissing = row.wasMissing,
                                       .didWake = row.didWake};
        if (row.sinceFire) {
            input.lastFireTime = now - *row.sinceFire;
        }
        if (row.hasWorkspace) {
            input.workspace = Workspace{.name = "Work", .spaceId = row.space};
        }
        const auto decision = decideAutoRestore(input);
        EXPECT_EQ(decision.reason, row.expected.reason) << "row " << i;
        EXPECT_EQ(decision, row.expected) << "row " << i;
    }
}

}  // namespace
}  // namespace corvetta
