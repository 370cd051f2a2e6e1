// Corvetta's default shortcuts against the default bindings of the desktops people run
// (data/wm_default_bindings.txt, made by scripts/wm-default-bindings), under each way of putting
// the Mac modifiers on X11's: a binding the desktop holds is one the program cannot grab. Prints
// the count per desktop and mapping, the table docs/x11-desktop.md quotes.

#include <cstdio>
#include <fstream>
#include <map>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include <X11/keysym.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/x11/x11_key_codes.h"
#include "shortcuts/shortcut_names.h"

namespace corvetta {
namespace {

// DESKTOP -> the "MODIFIERS KEY" texts it binds.
std::map<std::string, std::set<std::string>> desktopBindings() {
    std::ifstream file(CORVETTA_WM_BINDINGS);
    std::map<std::string, std::set<std::string>> result;
    for (std::string line; std::getline(file, line);) {
        std::istringstream words(line);
        std::string desktop, modifiers, key;
        if (!line.starts_with('#') && words >> desktop >> modifiers >> key) {
            result[desktop].insert(modifiers + " " + key);
        }
    }
    return result;
}

struct Mapping {
    const char* name;
    std::uint16_t control, option, command;
};

const Mapping kMappings[] = {
    {"Option=Alt Command=Super", X11Modifier::kControl, X11Modifier::kMod1, X11Modifier::kMod4},
    {"Option=Super Command=Alt", X11Modifier::kControl, X11Modifier::kMod4, X11Modifier::kMod1},
    {"Control=Alt Option=Super Command=Control", X11Modifier::kMod1, X11Modifier::kMod4,
     X11Modifier::kControl},
};

std::string keyName(std::uint32_t symbol) {
    if ((symbol >= XK_a && symbol <= XK_z) || (symbol >= XK_0 && symbol <= XK_9)) {
        return std::string(1, static_cast<char>(symbol));
    }
    static const std::map<std::uint32_t, std::string> names = {{XK_Left, "Left"},
                                                               {XK_Right, "Right"},
                                                               {XK_Up, "Up"},
                                                               {XK_Down, "Down"},
                                                               {XK_Return, "Return"}};
    const auto found = names.find(symbol);
    return found != names.end() ? found->second : "unnamed";
}

// "Control+Super Left": how the data file spells what the desktop would have to leave free.
std::string asBound(const Shortcut& shortcut, const Mapping& mapping) {
    auto ifHeld = [&](std::uint64_t flag, std::uint16_t modifier) {
        return (shortcut.modifiers & flag) != 0 ? modifier : std::uint16_t{0};
    };
    const auto x11 = ifHeld(ModifierFlag::kControl, mapping.control) |
                     ifHeld(ModifierFlag::kOption, mapping.option) |
                     ifHeld(ModifierFlag::kCommand, mapping.command) |
                     ifHeld(ModifierFlag::kShift, X11Modifier::kShift);
    std::string text;
    for (const auto& [modifier, word] :
         {std::pair{X11Modifier::kControl, "Control"}, std::pair{X11Modifier::kMod1, "Alt"},
          std::pair{X11Modifier::kMod4, "Super"}, std::pair{X11Modifier::kShift, "Shift"}}) {
        if ((x11 & modifier) != 0) {
            text += (text.empty() ? "" : "+") + std::string(word);
        }
    }
    const auto symbol = keySymbolForVirtualKeyCode(static_cast<std::uint32_t>(shortcut.keyCode));
    return text + " " + keyName(symbol.value_or(0));
}

// name -> its combinations out of the box: the library default and the one "reset all" writes.
std::vector<std::pair<std::string, Shortcut>> defaultShortcuts() {
    std::vector<std::pair<std::string, Shortcut>> result;
    for (const auto& row : shortcutNameTable()) {
        for (const auto& shortcut : {row.libraryDefault, row.bridgeDefault}) {
            const auto entry = std::pair{std::string(row.name), shortcut.value_or(Shortcut{})};
            if (shortcut && std::ranges::find(result, entry) == result.end()) {
                result.push_back(entry);
            }
        }
    }
    return result;
}

// The names whose default combination the desktop holds, under the mapping.
std::vector<std::string> collisions(const std::set<std::string>& bound, const Mapping& mapping) {
    std::vector<std::string> names;
    for (const auto& [name, shortcut] : defaultShortcuts()) {
        if (bound.contains(asBound(shortcut, mapping))) {
            names.push_back(name);
        }
    }
    return names;
}

TEST(X11DefaultShortcuts, TheModifierMappingInUseCollidesLeastWithTheDesktopsDefaults) {
    const auto desktops = desktopBindings();
    ASSERT_GE(desktops.size(), 8u) << "the table of bindings is missing: " << CORVETTA_WM_BINDINGS;

    std::printf("%-14s", "desktop");
    for (const auto& mapping : kMappings) {
        std::printf(" | %-40s", mapping.name);
    }
    std::printf("\n");
    std::map<std::string, std::size_t> totals;
    for (const auto& [desktop, bound] : desktops) {
        std::printf("%-14s", desktop.c_str());
        for (const auto& mapping : kMappings) {
            const auto names = collisions(bound, mapping);
            totals[mapping.name] += names.size();
            std::string listed;
            for (const auto& name : names) {
                listed += (listed.empty() ? " " : ", ") + name;
            }
            std::printf(" | %2zu%-38s", names.size(), listed.substr(0, 38).c_str());
        }
        std::printf("\n");
    }

    const Mapping inUse{"in use", x11ModifiersFromCarbon(CarbonModifier::kControl),
                        x11ModifiersFromCarbon(CarbonModifier::kOption),
                        x11ModifiersFromCarbon(CarbonModifier::kCommand)};
    std::size_t inUseTotal = 0;
    for (const auto& [desktop, bound] : desktops) {
        inUseTotal += collisions(bound, inUse).size();
    }
    for (const auto& [name, total] : totals) {
        EXPECT_LE(inUseTotal, total) << name << " collides less";
    }
    // Where the end-to-end tests run the window actions, every default shortcut registers; on
    // fluxbox two stay taken, and the program reports them.
    for (const char* desktop : {"openbox", "metacity", "icewm", "xfwm4"}) {
        EXPECT_THAT(collisions(desktops.at(desktop), inUse), ::testing::IsEmpty()) << desktop;
    }
    EXPECT_THAT(collisions(desktops.at("fluxbox"), inUse),
                ::testing::ElementsAre("leftHalf", "rightHalf"));
}

}  // namespace
}  // namespace corvetta
