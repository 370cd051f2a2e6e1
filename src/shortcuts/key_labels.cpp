#include "shortcuts/key_labels.h"

#include <map>
#include <string_view>

namespace corvetta {

namespace {

const std::map<std::int64_t, std::string_view>& keyLabels() {
    static const std::map<std::int64_t, std::string_view> labels = {
        {0, "A"},     {1, "S"},      {2, "D"},     {3, "F"},     {4, "H"},      {5, "G"},
        {6, "Z"},     {7, "X"},      {8, "C"},     {9, "V"},     {10, "§"},     {11, "B"},
        {12, "Q"},    {13, "W"},     {14, "E"},    {15, "R"},    {16, "Y"},     {17, "T"},
        {18, "1"},    {19, "2"},     {20, "3"},    {21, "4"},    {22, "6"},     {23, "5"},
        {24, "="},    {25, "9"},     {26, "7"},    {27, "-"},    {28, "8"},     {29, "0"},
        {30, "]"},    {31, "O"},     {32, "U"},    {33, "["},    {34, "I"},     {35, "P"},
        {36, "↩"},    {37, "L"},     {38, "J"},    {39, "'"},    {40, "K"},     {41, ";"},
        {42, "\\"},   {43, ","},     {44, "/"},    {45, "N"},    {46, "M"},     {47, "."},
        {48, "⇥"},    {49, "Space"}, {50, "`"},    {51, "⌫"},    {53, "⎋"},     {64, "F17"},
        {65, "."},    {67, "*"},     {69, "+"},    {71, "⌧"},    {75, "/"},     {76, "⌤"},
        {78, "-"},    {79, "F18"},   {80, "F19"},  {81, "="},    {82, "0"},     {83, "1"},
        {84, "2"},    {85, "3"},     {86, "4"},    {87, "5"},    {88, "6"},     {89, "7"},
        {90, "F20"},  {91, "8"},     {92, "9"},    {96, "F5"},   {97, "F6"},    {98, "F7"},
        {99, "F3"},   {100, "F8"},   {101, "F9"},  {103, "F11"}, {105, "F13"},  {106, "F16"},
        {107, "F14"}, {109, "F10"},  {111, "F12"}, {113, "F15"}, {114, "Help"}, {115, "↖"},
        {116, "⇞"},   {117, "⌦"},    {118, "F4"},  {119, "↘"},   {120, "F2"},   {121, "⇟"},
        {122, "F1"},  {123, "←"},    {124, "→"},   {125, "↓"},   {126, "↑"},
    };
    return labels;
}

}  // namespace

std::string modifierSymbols(std::uint64_t eventModifierFlags) {
    static constexpr std::pair<std::uint64_t, std::string_view> kSymbols[] = {
        {ModifierFlag::kControl, "⌃"},
        {ModifierFlag::kOption, "⌥"},
        {ModifierFlag::kShift, "⇧"},
        {ModifierFlag::kCommand, "⌘"},
    };
    std::string symbols;
    for (const auto& [flag, symbol] : kSymbols) {
        if ((eventModifierFlags & flag) != 0) {
            symbols += symbol;
        }
    }
    return symbols;
}

std::string keyLabel(std::int64_t keyCode) {
    const auto found = keyLabels().find(keyCode);
    return found != keyLabels().end() ? std::string(found->second)
                                      : "Key " + std::to_string(keyCode);
}

std::string shortcutLabel(const Shortcut& shortcut) {
    return modifierSymbols(shortcut.modifiers) + keyLabel(shortcut.keyCode);
}

}  // namespace corvetta
