#include "palette/palette_item.h"

namespace corvetta {

namespace {
template <class... Ts>
struct Overloaded : Ts... {
    using Ts::operator()...;
};
template <class... Ts>
Overloaded(Ts...) -> Overloaded<Ts...>;
}  // namespace

std::string PaletteItem::identity() const {
    return std::visit(
        Overloaded{
            [](const WorkspaceSpace& s) { return "space:" + s.id.string(); },
            [](const Workspace& w) {
                return w.id ? "workspace:" + w.id->string() : "workspace-named:" + w.name;
            },
            [](const PaletteBuiltInLayout& l) {
                return "layout:" + std::string(layoutTemplateRow(l.value).rawValue);
            },
            [](const CustomLayoutTemplate& l) { return "customLayout:" + l.id.string(); },
            [](const PaletteAction& a) { return "action:" + a.key; },
        },
        value_);
}

const std::string& PaletteItem::name() const {
    return std::visit(
        Overloaded{
            [](const WorkspaceSpace& s) -> const std::string& { return s.name; },
            [](const Workspace& w) -> const std::string& { return w.name; },
            [](const PaletteBuiltInLayout& l) -> const std::string& { return l.layout.name; },
            [](const CustomLayoutTemplate& l) -> const std::string& { return l.name; },
            [](const PaletteAction& a) -> const std::string& { return a.name; },
        },
        value_);
}

}  // namespace corvetta
