// palette_actions.h: The program's own commands the palette lists after the layouts.
#pragma once

#include <span>
#include <string_view>

namespace corvetta {

enum class PaletteCommand { newSpace, newWorkspace, newLayout, checkForUpdates, quit };

struct PaletteActionRow {
    PaletteCommand command;
    std::string_view label;
    std::string_view key;
    // The global shortcut that does the same thing; its combination is the row's shortcut text.
    std::string_view shortcutName;
    // The palette's own windows keep the focus; quitting hands it back to the user's application.
    bool reactivatePreviousApp;
    // Only a build with a software updater offers it; Linux has none (updates come with the
    // distribution's packages).
    bool needsUpdater;
};

// Every action, in the order the palette lists them.
std::span<const PaletteActionRow> paletteActionTable();

}  // namespace corvetta
