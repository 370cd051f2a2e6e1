#include "layouts/custom_layout_template_json.h"

#include <limits>

namespace corvetta {

namespace {

// Key codes and modifier masks are unsigned; a negative or fractional number is damage.
std::uint64_t unsignedValue(const JsonObjectReader& reader, std::string_view key,
                            std::uint64_t maximum) {
    const Json& value = *reader.raw().find(key);
    const bool whole =
        value.is_number_unsigned() || (value.is_number_integer() && value.get<std::int64_t>() >= 0);
    if (!whole || value.get<std::uint64_t>() > maximum) {
        throw JsonDecodeError(JsonDecodeError::Kind::malformedValue, reader.pathOf(key),
                              std::string(key),
                              "expected a whole number from 0 to " + std::to_string(maximum));
    }
    return value.get<std::uint64_t>();
}

}  // namespace

Json layoutTemplateToJson(const CustomLayoutTemplate& layout) {
    Json panes = Json::array();
    for (const auto& pane : layout.panes) {
        panes.push_back(rectToJson(pane));
    }
    Json object = {{"id", layout.id.string()},
                   {"name", layout.name},
                   {"templateDescription", layout.templateDescription},
                   {"panes", std::move(panes)}};
    if (layout.spaceId) {
        object["spaceId"] = layout.spaceId->string();
    }
    if (layout.folder) {
        object["folder"] = *layout.folder;
    }
    if (layout.shortcutKeyCode) {
        object["shortcutKeyCode"] = *layout.shortcutKeyCode;
    }
    if (layout.shortcutModifiers) {
        object["shortcutModifiers"] = *layout.shortcutModifiers;
    }
    if (layout.defaultTemplateKey) {
        object["defaultTemplateKey"] = *layout.defaultTemplateKey;
    }
    object["applyToAllDisplays"] = layout.applyToAllDisplays;
    return object;
}

CustomLayoutTemplate layoutTemplateFromJson(const Json& value, const std::string& path) {
    const JsonObjectReader reader(value, path);
    CustomLayoutTemplate layout;
    layout.id = reader.get<Uuid>("id");
    layout.name = reader.get<std::string>("name");
    layout.templateDescription = reader.get<std::string>("templateDescription");
    const auto panes = reader.get<Json>("panes");
    if (!panes.is_array()) {
        throw JsonDecodeError(JsonDecodeError::Kind::malformedValue, reader.pathOf("panes"),
                              "panes", "expected a list of rectangles");
    }
    for (std::size_t i = 0; i < panes.size(); ++i) {
        layout.panes.push_back(
            rectFromJson(panes[i], reader.pathOf("panes") + "[" + std::to_string(i) + "]"));
    }
    layout.spaceId = reader.getOptional<Uuid>("spaceId");
    layout.folder = reader.getOptional<std::string>("folder");
    if (reader.has("shortcutKeyCode")) {
        layout.shortcutKeyCode = static_cast<std::uint16_t>(
            unsignedValue(reader, "shortcutKeyCode", std::numeric_limits<std::uint16_t>::max()));
    }
    if (reader.has("shortcutModifiers")) {
        layout.shortcutModifiers =
            unsignedValue(reader, "shortcutModifiers", std::numeric_limits<std::uint64_t>::max());
    }
    layout.defaultTemplateKey = reader.getOptional<std::string>("defaultTemplateKey");
    layout.applyToAllDisplays = reader.getOptional<bool>("applyToAllDisplays").value_or(false);
    return layout;
}

std::string encodeLayoutTemplates(const std::vector<CustomLayoutTemplate>& layouts) {
    Json document = Json::array();
    for (const auto& layout : layouts) {
        document.push_back(layoutTemplateToJson(layout));
    }
    return writeJson(document, JsonStyle::compact);
}

Expected<std::vector<CustomLayoutTemplate>, std::string> decodeLayoutTemplates(
    std::string_view document) {
    const auto parsed = parseJson(document);
    if (!parsed) {
        return unexpected(parsed.error().message);
    }
    if (!parsed->is_array()) {
        return unexpected(std::string("expected a list of layout templates"));
    }
    std::vector<CustomLayoutTemplate> layouts;
    try {
        for (std::size_t i = 0; i < parsed->size(); ++i) {
            layouts.push_back(layoutTemplateFromJson((*parsed)[i], "[" + std::to_string(i) + "]"));
        }
    } catch (const JsonDecodeError& error) {
        return unexpected(std::string(error.what()));
    }
    return layouts;
}

}  // namespace corvetta
