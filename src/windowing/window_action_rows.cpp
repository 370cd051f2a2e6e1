#include "windowing/window_action_rows.h"

namespace corvetta {

namespace {

template <class Matches>
const WindowActionRow* findRow(Matches matches) {
    const auto found = std::find_if(kWindowActionRows.begin(), kWindowActionRows.end(), matches);
    return found == kWindowActionRows.end() ? nullptr : &*found;
}

}  // namespace

const WindowActionRow* findWindowActionByKeyName(std::string_view keyName) {
    if (keyName.empty()) {
        return nullptr;
    }
    return findRow([&](const WindowActionRow& row) { return row.keyName == keyName; });
}

const WindowActionRow* findWindowActionByCommand(std::string_view command) {
    if (command.empty()) {
        return nullptr;
    }
    return findRow([&](const WindowActionRow& row) { return row.command == command; });
}

}  // namespace corvetta
