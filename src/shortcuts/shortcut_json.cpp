#include "shortcuts/shortcut_json.h"

namespace corvetta {

Json shortcutToJson(const Shortcut& shortcut) {
    return Json{{"keyCode", shortcut.keyCode}, {"modifiers", shortcut.modifiers}};
}

Shortcut shortcutFromJson(const Json& value, const std::string& path) {
    const JsonObjectReader reader(value, path);
    const auto keyCode = reader.get<std::int64_t>("keyCode");
    const auto modifiers = reader.get<std::int64_t>("modifiers");
    if (modifiers < 0) {
        throw JsonDecodeError(JsonDecodeError::Kind::malformedValue, reader.pathOf("modifiers"),
                              "modifiers", "expected a mask, found a negative number");
    }
    return {keyCode, static_cast<std::uint64_t>(modifiers)};
}

std::optional<Bytes> archiveShortcut(const Shortcut& shortcut) {
    if (shortcut.keyCode < 0 || shortcut.keyCode > kMaxVirtualKeyCode) {
        return std::nullopt;
    }
    const auto text = writeJson(shortcutToJson(shortcut), JsonStyle::compact);
    return Bytes(text.begin(), text.end());
}

std::optional<Shortcut> unarchiveShortcut(const Bytes& data) {
    const auto document =
        parseJson(std::string_view(reinterpret_cast<const char*>(data.data()), data.size()));
    if (!document) {
        return std::nullopt;
    }
    try {
        const auto shortcut = shortcutFromJson(*document);
        if (shortcut.keyCode < 0 || shortcut.keyCode > kMaxVirtualKeyCode) {
            return std::nullopt;
        }
        return shortcut;
    } catch (const JsonDecodeError&) {
        return std::nullopt;
    }
}

}  // namespace corvetta
