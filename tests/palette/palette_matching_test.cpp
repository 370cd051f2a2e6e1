// Matching and ordering of the palette's rows: every case is a query over a list of titles.

#include <gtest/gtest.h>

#include "palette/fuzzy_match.h"
#include "palette/palette_rows.h"

namespace corvetta {
namespace {

PaletteRow actionRow(const std::string& title, PaletteSection section = PaletteSection::actions) {
    return PaletteRow{.item = PaletteItem(PaletteAction{title, title, false, {}}),
                      .section = section,
                      .title = codePoints(title)};
}

struct MatchCase {
    const char* query;
    std::vector<std::string> titles;
    std::vector<std::string> recent;
    // Titles shown, in order.
    std::vector<std::string> expected;
    // Matched code points of the first one shown.
    std::vector<int> firstMatched;
};

TEST(PaletteMatching, QueriesOverTitlesGiveOrderAndMatchedCharacters) {
    const std::vector<MatchCase> cases{
        // Nothing typed: stored order, except that recent picks come first, latest first.
        {"", {"Halves", "Thirds", "Full"}, {}, {"Halves", "Thirds", "Full"}, {}},
        {" ",
         {"Halves", "Thirds", "Full"},
         {"action:Full", "action:Thirds"},
         {"Full", "Thirds", "Halves"},
         {}},
        // Consecutive characters from the first one.
        {"hal",
         {"Thirds", "Show All Layouts", "Halves"},
         {},
         {"Halves", "Show All Layouts"},
         {0, 1, 2}},
        // Word starts beat a consecutive pair in the middle, which beats a gap.
        {"ml", {"Small", "Html", "Main Left"}, {}, {"Main Left", "Html", "Small"}, {0, 5}},
        // "camelCase" and digits after letters start words.
        {"nw", {"Snowy", "newWorkspace"}, {}, {"newWorkspace", "Snowy"}, {0, 3}},
        {"2", {"12", "a2"}, {}, {"a2", "12"}, {1}},
        // Smart case: an upper-case letter makes the whole query exact.
        {"ML", {"html", "Main Left"}, {}, {"Main Left"}, {0, 5}},
        {"ml", {"HTML"}, {}, {"HTML"}, {2, 3}},
        // Every term must match somewhere; the matched characters are the union.
        {"left main",
         {"Main Right", "Left Half", "Main Left"},
         {},
         {"Main Left"},
         {0, 1, 2, 3, 5, 6, 7, 8}},
        {"xyz", {"Halves"}, {}, {}, {}},
        {"hh", {"Half"}, {}, {}, {}},
        // Positions count characters, not bytes; accents are not folded.
        {"café", {"Café Bar", "Cafe"}, {}, {"Café Bar"}, {0, 1, 2, 3}},
        {"bar", {"Café Bar"}, {}, {"Café Bar"}, {5, 6, 7}},
    };
    for (const auto& c : cases) {
        std::vector<PaletteRow> rows;
        for (const auto& title : c.titles) {
            rows.push_back(actionRow(title));
        }
        const auto sections = filterPaletteRows(rows, c.query, c.recent);
        std::vector<std::string> shown;
        for (const auto& section : sections) {
            for (const auto& visible : section.rows) {
                shown.push_back(rows[visible.row].item.name());
            }
        }
        EXPECT_EQ(shown, c.expected) << "query '" << c.query << "'";
        if (!sections.empty()) {
            EXPECT_EQ(sections.front().rows.front().matched, c.firstMatched)
                << "query '" << c.query << "'";
        }
    }
}

TEST(PaletteMatching, SectionsKeepTheirOrderAndEmptyOnesDisappear) {
    const std::vector<PaletteRow> rows{
        actionRow("Quit", PaletteSection::actions), actionRow("Queue", PaletteSection::layouts),
        actionRow("Work", PaletteSection::spaces), actionRow("Quiet", PaletteSection::workspaces)};
    // "Quit" matches best but the actions come last.
    const auto sections = filterPaletteRows(rows, "qu", {});
    ASSERT_EQ(sections.size(), 3u);
    EXPECT_EQ(sections[0].title, "Workspaces");
    EXPECT_EQ(sections[1].title, "Layouts");
    EXPECT_EQ(sections[2].title, "Actions");
    EXPECT_EQ(filterPaletteRows(rows, "", {}).size(), 4u);
}

TEST(PaletteMatching, InvalidUtf8PassesThroughByteByByte) {
    EXPECT_EQ(codePoints("a\xff"
                         "b"),
              (std::u32string{U'a', 0xff, U'b'}));
    EXPECT_EQ(codePoints("\xe2\x82"), (std::u32string{0xe2, 0x82}));
    EXPECT_EQ(utf8(codePoints("Café ⌘ 𝄞")), "Café ⌘ 𝄞");
}

}  // namespace
}  // namespace corvetta
