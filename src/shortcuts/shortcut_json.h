// shortcut_json.h: Encodes shortcuts as JSON and as the legacy store's archive.
#pragma once

// Heavy (JSON): include only from files that encode or decode shortcuts.

#include <optional>
#include <string>

#include "foundation/base64.h"
#include "foundation/json.h"
#include "shortcuts/shortcut.h"

namespace corvetta {

// {"keyCode": k, "modifiers": m}, as records and exported files carry a shortcut.
Json shortcutToJson(const Shortcut& shortcut);
// Throws JsonDecodeError when a key is missing or a value is not a whole number (a negative mask
// included).
Shortcut shortcutFromJson(const Json& value, const std::string& path = "");

// The legacy store's archive of a shortcut: the JSON form above as UTF-8 data. None for a
// combination that is no key (its key code outside the virtual key codes).
std::optional<Bytes> archiveShortcut(const Shortcut& shortcut);
// None for data that is not such an archive.
std::optional<Shortcut> unarchiveShortcut(const Bytes& data);

}  // namespace corvetta
