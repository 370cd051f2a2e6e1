// Filtering 1,000 palette rows as a query is typed letter by letter: the work of one keystroke.

#include <string>
#include <vector>

#include <benchmark/benchmark.h>

#include "palette/fuzzy_match.h"
#include "palette/palette_rows.h"

namespace corvetta {
namespace {

// Names like the ones people give workspaces and layouts, varied enough that every prefix of the
// query keeps a different share of them.
std::vector<PaletteRow> thousandRows() {
    const char* words[] = {"Mail",  "Code",  "Design",  "Review",  "Browser", "Terminal",
                           "Notes", "Music", "Focus",   "Meeting", "Left",    "Right",
                           "Wide",  "Stack", "Writing", "Research"};
    std::vector<PaletteRow> rows;
    for (int i = 0; i < 1000; ++i) {
        const std::string name =
            std::string(words[i % 16]) + " " + words[(i * 7 + 3) % 16] + " " + std::to_string(i);
        rows.push_back(PaletteRow{.item = PaletteItem(PaletteAction{name, name, false, {}}),
                                  .section = static_cast<PaletteSection>(i % 4),
                                  .title = codePoints(name)});
    }
    return rows;
}

// One keystroke of "design": the whole list filtered by the prefix typed so far.
void BM_PaletteFilterKeystroke(benchmark::State& state) {
    const auto rows = thousandRows();
    const std::string query = "design";
    const auto typed = query.substr(0, static_cast<std::size_t>(state.range(0)));
    for (auto _ : state) {
        benchmark::DoNotOptimize(filterPaletteRows(rows, typed, {}));
    }
}
BENCHMARK(BM_PaletteFilterKeystroke)->DenseRange(1, 6)->Unit(benchmark::kMicrosecond);

// The list with nothing typed, recent picks first.
void BM_PaletteFilterEmptyQuery(benchmark::State& state) {
    const auto rows = thousandRows();
    const std::vector<std::string> recent{"action:Mail Code 0", "action:Wide Left 12"};
    for (auto _ : state) {
        benchmark::DoNotOptimize(filterPaletteRows(rows, "", recent));
    }
}
BENCHMARK(BM_PaletteFilterEmptyQuery)->Unit(benchmark::kMicrosecond);

}  // namespace
}  // namespace corvetta
