#include "palette/palette_actions.h"

#include <array>

namespace corvetta {

std::span<const PaletteActionRow> paletteActionTable() {
    static constexpr std::array<PaletteActionRow, 5> kTable{{
        {PaletteCommand::newSpace, "New Space", "newSpace", "addSpace", false, false},
        {PaletteCommand::newWorkspace, "New Workspace", "newWorkspace", "saveWorkspace", false,
         false},
        {PaletteCommand::newLayout, "New Layout", "newLayout", "newLayout", false, false},
        {PaletteCommand::checkForUpdates, "Check for Updates", "checkForUpdates", "", false, true},
        {PaletteCommand::quit, "Quit Corvetta", "quit", "quitApp", true, false},
    }};
    return kTable;
}

}  // namespace corvetta
