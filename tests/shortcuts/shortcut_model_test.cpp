#include <set>

#include <gtest/gtest.h>

#include "shortcuts/key_labels.h"
#include "shortcuts/shortcut_json.h"
#include "shortcuts/shortcut_names.h"
#include "windowing/action_titles.h"
#include "windowing/window_direction.h"

namespace corvetta {
namespace {

std::string label(const std::optional<Shortcut>& shortcut) {
    return shortcut ? shortcutLabel(*shortcut) : "none";
}

TEST(ShortcutNamesTest, EveryRowWithBothDefaultsInOrder) {
    struct Row {
        std::string name, library, bridge;
        bool inNameMap;
    };
    // clang-format off
    const std::vector<Row> expected = {
        {"leftHalf", "⌃⌥←", "⌃⌥←", true}, {"rightHalf", "⌃⌥→", "⌃⌥→", true},
        {"topHalf", "⌃⌥↑", "⌃⌥↑", true}, {"bottomHalf", "⌃⌥↓", "⌃⌥↓", true},
        {"topLeftQuarter", "⌃⌥U", "⌃⌥U", true}, {"topRightQuarter", "⌃⌥I", "⌃⌥I", true},
        {"bottomLeftQuarter", "⌃⌥J", "⌃⌥J", true}, {"bottomRightQuarter", "⌃⌥K", "⌃⌥K", true},
        {"leftThird", "⌃⌥D", "⌃⌥D", true}, {"centerThird", "⌃⌥F", "⌃⌥F", true},
        {"rightThird", "⌃⌥G", "⌃⌥G", true}, {"leftTwoThirds", "⌃⌥E", "⌃⌥E", true},
        {"centerTwoThirds", "⌃⌥R", "⌃⌥R", true}, {"rightTwoThirds", "⌃⌥T", "⌃⌥T", true},
        {"topThird", "none", "none", true}, {"centerVerticalThird", "none", "none", true},
        {"bottomThird", "none", "none", true}, {"fullscreen", "⌃⌥↩", "⌃⌥↩", true},
        {"center", "none", "none", true}, {"moveToNextDisplay", "⌃⌥⌘→", "⌃⌥⌘→", true},
        {"moveToPreviousDisplay", "⌃⌥⌘←", "⌃⌥⌘←", true}, {"saveWorkspace", "⌃⌥S", "⌃⌥S", true},
        {"quitApp", "⌃⌥⇧Q", "⌃⌥Q", true}, {"newLayout", "⌃⌥L", "none", false},
        {"addSpace", "⌃⌥N", "none", false}, {"cycleWorkspaces", "none", "none", false},
        {"cycleSpaces", "none", "none", false}, {"commandPalette", "none", "none", false},
        {"applyLayoutHalves", "none", "none", true}, {"applyLayoutThirds", "none", "none", true},
        {"applyLayoutFourths", "none", "none", true}, {"applyLayoutMainLeft", "none", "none", true},
        {"applyLayoutMainRight", "none", "none", true}, {"applyLayoutFull", "none", "none", true},
        {"temp_workspace_shortcut", "none", "none", false},
        {"temp_layout_shortcut", "none", "none", false},
    };
    // clang-format on
    const auto& table = shortcutNameTable();
    ASSERT_EQ(table.size(), expected.size());
    for (std::size_t i = 0; i < table.size(); ++i) {
        SCOPED_TRACE(expected[i].name);
        EXPECT_EQ(table[i].name, expected[i].name);
        EXPECT_EQ(label(table[i].libraryDefault), expected[i].library);
        EXPECT_EQ(label(table[i].bridgeDefault), expected[i].bridge);
        EXPECT_EQ(table[i].inNameMap, expected[i].inNameMap);
        EXPECT_EQ(findShortcutNameRow(expected[i].name), &table[i]);
    }
    EXPECT_EQ(findShortcutNameRow("workspace_1"), nullptr);
}

TEST(ShortcutNamesTest, WindowActionNamesAreTheActionsKeyNames) {
    std::set<std::string> keyNames;
    const auto collect = [&](const auto& titles) {
        for (const auto& title : titles) {
            keyNames.emplace(title.keyName);
        }
    };
    collect(halvesActionTitles());
    collect(quartersActionTitles());
    collect(thirdsActionTitles());
    collect(otherActionTitles());
    const auto names = shortcutNames(ShortcutRole::windowAction);
    EXPECT_EQ(std::set<std::string>(names.begin(), names.end()), keyNames);
    // Each is a direction's case name except the maximize action and the two display moves.
    for (const auto& name : names) {
        const bool special =
            name == "fullscreen" || name == "moveToNextDisplay" || name == "moveToPreviousDisplay";
        EXPECT_NE(directionTypeFromRawValue(name).has_value(), special) << name;
    }
    EXPECT_EQ(shortcutNames(ShortcutRole::cycle),
              (std::vector<std::string>{"cycleWorkspaces", "cycleSpaces"}));
    EXPECT_EQ(shortcutNames(ShortcutRole::layoutPreset).size(), 6u);
}

TEST(ShortcutNamesTest, RecordNamesAndTheLibrarysDefaults) {
    const std::string id = "E621E1F8-C36C-495A-93FC-0C247A3E6E5F";
    EXPECT_EQ(workspaceShortcutName(id), "workspace_" + id);
    EXPECT_EQ(spaceShortcutName(id), "space_" + id);
    EXPECT_EQ(layoutShortcutName(id), "layout_" + id);

    EXPECT_EQ(libraryShortcutName("quitApp").defaultShortcut,
              (HotKeyShortcut{12, CarbonModifier::kControl | CarbonModifier::kOption |
                                      CarbonModifier::kShift}));
    EXPECT_FALSE(libraryShortcutName("topThird").defaultShortcut.has_value());
    EXPECT_FALSE(libraryShortcutName(workspaceShortcutName(id)).defaultShortcut.has_value());
}

TEST(ShortcutConverterTest, FourModifiersBitForBitOthersDropped) {
    using namespace ModifierFlag;
    const std::pair<std::uint64_t, std::uint32_t> pairs[] = {
        {kShift, 0x200}, {kControl, 0x1000}, {kOption, 0x800}, {kCommand, 0x100}};
    // Every subset of the four survives the round trip both ways.
    for (unsigned subset = 0; subset < 16; ++subset) {
        std::uint64_t flags = 0;
        std::uint32_t carbon = 0;
        for (unsigned bit = 0; bit < 4; ++bit) {
            if ((subset & (1u << bit)) != 0) {
                flags |= pairs[bit].first;
                carbon |= pairs[bit].second;
            }
        }
        EXPECT_EQ(ShortcutConverter::carbonModifiers(flags), carbon) << subset;
        EXPECT_EQ(ShortcutConverter::eventModifierFlags(carbon), flags) << subset;
    }
    // Caps Lock, numeric pad, function key and device bits; Carbon's Caps Lock and right-hand bits.
    EXPECT_EQ(ShortcutConverter::carbonModifiers(kControl | 0x10000 | 0x200000 | 0x800000 | 0x101),
              CarbonModifier::kControl);
    EXPECT_EQ(ShortcutConverter::eventModifierFlags(CarbonModifier::kCommand | 0x400 | 0x2000),
              kCommand);

    const Shortcut shortcut{123, kControl | kOption};
    const auto hotKey = ShortcutConverter::toHotKeyShortcut(shortcut);
    ASSERT_TRUE(hotKey.has_value());
    EXPECT_EQ(*hotKey, (HotKeyShortcut{123, 0x1800}));
    EXPECT_EQ(ShortcutConverter::toShortcut(*hotKey), shortcut);
    EXPECT_FALSE(ShortcutConverter::toHotKeyShortcut({-1, kControl}).has_value());
    EXPECT_FALSE(ShortcutConverter::toHotKeyShortcut({0x10000, kControl}).has_value());
}

TEST(ShortcutJsonTest, EncodedFormAndDamagedArchives) {
    const Shortcut shortcut{12, ModifierFlag::kControl | ModifierFlag::kOption};
    EXPECT_EQ(writeJson(shortcutToJson(shortcut), JsonStyle::compact),
              R"({"keyCode":12,"modifiers":786432})");
    const auto archive = archiveShortcut(shortcut);
    ASSERT_TRUE(archive.has_value());
    EXPECT_EQ(unarchiveShortcut(*archive), shortcut);
    EXPECT_FALSE(archiveShortcut({-5, 0}).has_value());

    for (const std::string damaged :
         {"", "\xff\xfe", "[1, 2]", R"({"keyCode": 12})", R"({"keyCode": "12", "modifiers": 0})",
          R"({"keyCode": 12, "modifiers": -1})", R"({"keyCode": 70000, "modifiers": 0})",
          R"({"keyCode": 1.5, "modifiers": 0})"}) {
        EXPECT_FALSE(unarchiveShortcut(Bytes(damaged.begin(), damaged.end())).has_value())
            << damaged;
    }
}

TEST(KeyLabelsTest, ModifiersInMenuOrderThenTheKey) {
    using namespace ModifierFlag;
    // clang-format off
    const std::vector<std::pair<Shortcut, std::string>> rows = {
        {{123, kControl | kOption}, "⌃⌥←"},
        {{126, kCommand | kShift | kOption | kControl}, "⌃⌥⇧⌘↑"}, {{36, kCommand}, "⌘↩"},
        {{0, kShift}, "⇧A"}, {{29, kControl}, "⌃0"}, {{122, 0}, "F1"}, {{111, kOption}, "⌥F12"},
        {{49, kControl}, "⌃Space"}, {{48, kOption}, "⌥⇥"}, {{51, kCommand}, "⌘⌫"}, {{117, 0}, "⌦"},
        {{53, 0}, "⎋"}, {{43, kCommand}, "⌘,"}, {{76, 0}, "⌤"},
        {{200, kControl | 0x800000}, "⌃Key 200"},
    };
    // clang-format on
    for (const auto& [shortcut, expected] : rows) {
        EXPECT_EQ(shortcutLabel(shortcut), expected) << shortcut.keyCode;
    }
}

}  // namespace
}  // namespace corvetta
