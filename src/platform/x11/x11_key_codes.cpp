#include "platform/x11/x11_key_codes.h"

#include <cstdlib>
#include <map>
#include <memory>
#include <utility>

#include <X11/keysym.h>

#include "platform/hot_keys.h"

namespace corvetta {

namespace {

// macOS virtual key codes (ANSI layout) with the key at the same place on a US PC keyboard.
// Help sits where PC keyboards have Insert; the numeric pad's Clear where they have Num Lock, but
// Num Lock is a lock, so Clear keeps its own symbol.
const std::map<std::uint32_t, std::uint32_t>& keySymbols() {
    static const std::map<std::uint32_t, std::uint32_t> symbols = {
        {0, XK_a},
        {1, XK_s},
        {2, XK_d},
        {3, XK_f},
        {4, XK_h},
        {5, XK_g},
        {6, XK_z},
        {7, XK_x},
        {8, XK_c},
        {9, XK_v},
        {11, XK_b},
        {12, XK_q},
        {13, XK_w},
        {14, XK_e},
        {15, XK_r},
        {16, XK_y},
        {17, XK_t},
        {18, XK_1},
        {19, XK_2},
        {20, XK_3},
        {21, XK_4},
        {22, XK_6},
        {23, XK_5},
        {24, XK_equal},
        {25, XK_9},
        {26, XK_7},
        {27, XK_minus},
        {28, XK_8},
        {29, XK_0},
        {30, XK_bracketright},
        {31, XK_o},
        {32, XK_u},
        {33, XK_bracketleft},
        {34, XK_i},
        {35, XK_p},
        {36, XK_Return},
        {37, XK_l},
        {38, XK_j},
        {39, XK_apostrophe},
        {40, XK_k},
        {41, XK_semicolon},
        {42, XK_backslash},
        {43, XK_comma},
        {44, XK_slash},
        {45, XK_n},
        {46, XK_m},
        {47, XK_period},
        {48, XK_Tab},
        {49, XK_space},
        {50, XK_grave},
        {51, XK_BackSpace},
        {53, XK_Escape},
        {64, XK_F17},
        {65, XK_KP_Decimal},
        {67, XK_KP_Multiply},
        {69, XK_KP_Add},
        {71, XK_Clear},
        {75, XK_KP_Divide},
        {76, XK_KP_Enter},
        {78, XK_KP_Subtract},
        {79, XK_F18},
        {80, XK_F19},
        {81, XK_KP_Equal},
        {82, XK_KP_0},
        {83, XK_KP_1},
        {84, XK_KP_2},
        {85, XK_KP_3},
        {86, XK_KP_4},
        {87, XK_KP_5},
        {88, XK_KP_6},
        {89, XK_KP_7},
        {90, XK_F20},
        {91, XK_KP_8},
        {92, XK_KP_9},
        {96, XK_F5},
        {97, XK_F6},
        {98, XK_F7},
        {99, XK_F3},
        {100, XK_F8},
        {101, XK_F9},
        {103, XK_F11},
        {105, XK_F13},
        {106, XK_F16},
        {107, XK_F14},
        {109, XK_F10},
        {111, XK_F12},
        {113, XK_F15},
        {114, XK_Insert},
        {115, XK_Home},
        {116, XK_Prior},
        {117, XK_Delete},
        {118, XK_F4},
        {119, XK_End},
        {120, XK_F2},
        {121, XK_Next},
        {122, XK_F1},
        {123, XK_Left},
        {124, XK_Right},
        {125, XK_Down},
        {126, XK_Up},
    };
    return symbols;
}

// Option is Super and Command is Alt: the keys at their places on a PC keyboard (Ctrl, Super, Alt
// from the left), and the mapping under which the default shortcuts collide least with the
// desktops' own bindings, which take Control+Alt+arrows for workspaces nearly everywhere
// (docs/x11-desktop.md, tests/x11/x11_default_shortcuts_test.cpp).
constexpr std::array<std::pair<std::uint32_t, std::uint16_t>, 4> kCarbonToX11{{
    {CarbonModifier::kShift, X11Modifier::kShift},
    {CarbonModifier::kControl, X11Modifier::kControl},
    {CarbonModifier::kOption, X11Modifier::kMod4},
    {CarbonModifier::kCommand, X11Modifier::kMod1},
}};

}  // namespace

std::optional<std::uint32_t> keySymbolForVirtualKeyCode(std::uint32_t virtualKeyCode) {
    const auto found = keySymbols().find(virtualKeyCode);
    if (found == keySymbols().end()) {
        return std::nullopt;
    }
    return found->second;
}

std::uint16_t x11ModifiersFromCarbon(std::uint32_t carbonModifiers) {
    std::uint16_t modifiers = 0;
    for (const auto& [carbon, x11] : kCarbonToX11) {
        if ((carbonModifiers & carbon) != 0) {
            modifiers |= x11;
        }
    }
    return modifiers;
}

std::uint64_t eventFlagsFromX11Modifiers(std::uint16_t state) {
    std::uint32_t carbon = 0;
    for (const auto& [carbonBit, x11] : kCarbonToX11) {
        if ((state & x11) != 0) {
            carbon |= carbonBit;
        }
    }
    return eventFlagsFromCarbonModifiers(carbon);
}

ModifierMasksOfKeys readModifierMasksOfKeys(xcb_connection_t* connection) {
    ModifierMasksOfKeys masks{};
    const std::unique_ptr<xcb_get_modifier_mapping_reply_t, decltype(&std::free)> mapping(
        xcb_get_modifier_mapping_reply(connection, xcb_get_modifier_mapping(connection), nullptr),
        &std::free);
    if (!mapping) {
        return masks;
    }
    const xcb_keycode_t* keyCodes = xcb_get_modifier_mapping_keycodes(mapping.get());
    const int perModifier = mapping->keycodes_per_modifier;
    for (int modifier = 0; modifier < 8; ++modifier) {
        for (int slot = 0; slot < perModifier; ++slot) {
            if (const xcb_keycode_t keyCode = keyCodes[modifier * perModifier + slot]) {
                masks[keyCode] |= static_cast<std::uint16_t>(1u << modifier);
            }
        }
    }
    return masks;
}

}  // namespace corvetta
