#include "layouts/custom_layout_template.h"

#include "shortcuts/shortcut_names.h"

namespace corvetta {

CustomLayoutTemplate CustomLayoutTemplate::builtIn(LayoutTemplate value) {
    const auto& row = layoutTemplateRow(value);
    CustomLayoutTemplate layout;
    layout.id = Uuid::random();
    layout.name = std::string(row.name);
    layout.templateDescription = std::string(row.description);
    layout.panes = row.panes;
    layout.defaultTemplateKey = std::string(row.rawValue);
    return layout;
}

std::string CustomLayoutTemplate::shortcutName() const {
    return layoutShortcutName(id.string());
}

std::vector<BuilderPane> builderPanes(const CustomLayoutTemplate& layout) {
    std::vector<BuilderPane> panes;
    panes.reserve(layout.panes.size());
    for (const auto& frame : layout.panes) {
        panes.push_back({Uuid::random(), frame});
    }
    return panes;
}

std::vector<Rect> templatePanes(const std::vector<BuilderPane>& panes) {
    std::vector<Rect> frames;
    frames.reserve(panes.size());
    for (const auto& pane : panes) {
        frames.push_back(pane.frame);
    }
    return frames;
}

}  // namespace corvetta
