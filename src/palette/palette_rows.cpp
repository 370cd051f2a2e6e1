#include "palette/palette_rows.h"

#include <algorithm>
#include <array>
#include <map>

#include "palette/fuzzy_match.h"
#include "palette/palette_actions.h"
#include "shortcuts/key_labels.h"

namespace corvetta {

namespace {

// The built-in layouts in the order the palette lists them (not the store's seeding order).
constexpr std::array<LayoutTemplate, 6> kBuiltInOrder{
    LayoutTemplate::halves,   LayoutTemplate::thirds,    LayoutTemplate::fourths,
    LayoutTemplate::mainLeft, LayoutTemplate::mainRight, LayoutTemplate::full};

std::string counted(std::size_t count, const char* one, const char* many) {
    return std::to_string(count) + " " + (count == 1 ? one : many);
}

template <class Key, class Modifiers>
std::string shortcutText(const std::optional<Key>& keyCode, const std::optional<Modifiers>& mods) {
    if (!keyCode || !mods) {
        return {};
    }
    return shortcutLabel(
        Shortcut{static_cast<std::int64_t>(*keyCode), static_cast<std::uint64_t>(*mods)});
}

class RowBuilder {
public:
    explicit RowBuilder(const PaletteSources& sources) : sources_(sources) {
        for (const auto& space : sources.spaces) {
            spaceNames_.emplace(space.id, space.name);
        }
    }

    std::vector<PaletteRow> build() {
        addSpaces();
        for (const auto& workspace : sources_.workspaces) {
            auto& row = add(PaletteItem(workspace), PaletteSection::workspaces);
            row.shortcutText = shortcutText(workspace.shortcutKeyCode, workspace.shortcutModifiers);
            row.badge = counted(workspace.windowInfos.size(), "window", "windows");
            scope(row, workspace.spaceId);
            // Lists from old versions may hold workspaces without an id, which cannot be deleted.
            row.hasItemActions = workspace.id.has_value();
        }
        addLayouts();
        for (const auto& action : sources_.actions) {
            auto& row = add(PaletteItem(action), PaletteSection::actions);
            const auto& table = paletteActionTable();
            const auto found = std::find_if(table.begin(), table.end(),
                                            [&](const auto& r) { return r.key == action.key; });
            if (found != table.end() && !found->shortcutName.empty() && sources_.shortcutNamed) {
                if (const auto combo = sources_.shortcutNamed(std::string(found->shortcutName))) {
                    row.shortcutText = shortcutLabel(*combo);
                }
            }
        }
        return std::move(rows_);
    }

private:
    PaletteRow& add(PaletteItem item, PaletteSection section) {
        auto title = codePoints(item.name());
        rows_.push_back(
            PaletteRow{.item = std::move(item), .section = section, .title = std::move(title)});
        return rows_.back();
    }

    void scope(PaletteRow& row, const std::optional<Uuid>& spaceId) {
        const auto named = spaceId ? spaceNames_.find(*spaceId) : spaceNames_.end();
        row.scope = named != spaceNames_.end() ? named->second : sources_.globalSpace.name;
        row.inActiveSpace = named != spaceNames_.end() && spaceId == sources_.activeSpaceId;
    }

    // The global space is worth a row only when there is a named space to come back from.
    void addSpaces() {
        if (sources_.spaces.empty()) {
            return;
        }
        std::map<Uuid, std::size_t> workspaceCounts;
        for (const auto& workspace : sources_.workspaces) {
            if (workspace.spaceId) {
                ++workspaceCounts[*workspace.spaceId];
            }
        }
        auto& global = add(PaletteItem(sources_.globalSpace), PaletteSection::spaces);
        global.inActiveSpace =
            !sources_.activeSpaceId || spaceNames_.count(*sources_.activeSpaceId) == 0;
        global.badge = global.inActiveSpace ? "Active" : "";
        for (const auto& space : sources_.spaces) {
            auto& row = add(PaletteItem(space), PaletteSection::spaces);
            row.shortcutText = shortcutText(space.shortcutKeyCode, space.shortcutModifiers);
            row.inActiveSpace = sources_.activeSpaceId == space.id;
            row.badge = row.inActiveSpace
                            ? "Active"
                            : counted(workspaceCounts[space.id], "workspace", "workspaces");
            row.hasItemActions = true;
        }
    }

    void addLayouts() {
        for (const auto value : kBuiltInOrder) {
            const auto& rowOfTable = layoutTemplateRow(value);
            const auto copy = std::find_if(
                sources_.layouts.begin(), sources_.layouts.end(), [&](const auto& layout) {
                    return layout.defaultTemplateKey == rowOfTable.rawValue;
                });
            PaletteBuiltInLayout builtIn{value, copy != sources_.layouts.end()
                                                    ? *copy
                                                    : CustomLayoutTemplate::builtIn(value)};
            auto& row = add(PaletteItem(builtIn), PaletteSection::layouts);
            layoutDetails(row, builtIn.layout);
        }
        for (const auto& layout : sources_.layouts) {
            // A key this version does not know is a user's template as far as the palette goes.
            if (layout.defaultTemplateKey &&
                layoutTemplateFromRawValue(*layout.defaultTemplateKey)) {
                continue;
            }
            auto& row = add(PaletteItem(layout), PaletteSection::layouts);
            layoutDetails(row, layout);
            row.hasItemActions = true;
        }
    }

    void layoutDetails(PaletteRow& row, const CustomLayoutTemplate& layout) {
        row.shortcutText = shortcutText(layout.shortcutKeyCode, layout.shortcutModifiers);
        row.badge = counted(layout.panes.size(), "pane", "panes");
        scope(row, layout.spaceId);
    }

    const PaletteSources& sources_;
    std::map<Uuid, std::string> spaceNames_;
    std::vector<PaletteRow> rows_;
};

}  // namespace

std::span<const PaletteSectionRow> paletteSectionTable() {
    static constexpr std::array<PaletteSectionRow, 4> kTable{{
        {PaletteSection::spaces, "Spaces"},
        {PaletteSection::workspaces, "Workspaces"},
        {PaletteSection::layouts, "Layouts"},
        {PaletteSection::actions, "Actions"},
    }};
    return kTable;
}

std::vector<PaletteRow> buildPaletteRows(const PaletteSources& sources) {
    return RowBuilder(sources).build();
}

std::vector<VisibleSection> filterPaletteRows(const std::vector<PaletteRow>& rows,
                                              std::string_view query,
                                              const std::vector<std::string>& recent) {
    const FuzzyQuery fuzzy(query);
    std::vector<VisibleSection> sections;
    for (const auto& header : paletteSectionTable()) {
        sections.push_back(VisibleSection{header.section, header.title, {}});
    }
    for (std::size_t i = 0; i < rows.size(); ++i) {
        auto& section = sections[static_cast<std::size_t>(rows[i].section)];
        if (fuzzy.isEmpty()) {
            // Recent picks rank by how recently (a negative score, so the sort below serves
            // both cases); the rest share the lowest rank and keep stored order.
            const auto at = std::find(recent.begin(), recent.end(), rows[i].item.identity());
            const int rank = at == recent.end() ? static_cast<int>(recent.size())
                                                : static_cast<int>(at - recent.begin());
            section.rows.push_back(VisibleRow{i, -rank, {}});
        } else if (auto match = fuzzy.match(rows[i].title)) {
            section.rows.push_back(VisibleRow{i, match->score, std::move(match->positions)});
        }
    }
    std::erase_if(sections, [](const VisibleSection& s) { return s.rows.empty(); });
    for (auto& section : sections) {
        std::stable_sort(
            section.rows.begin(), section.rows.end(),
            [](const VisibleRow& a, const VisibleRow& b) { return a.score > b.score; });
    }
    return sections;
}

}  // namespace corvetta
