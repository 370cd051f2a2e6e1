// custom_layout_template_json.h: The stored JSON form of layout templates, written and read back.
#pragma once

// Includes the JSON library: only for the .cpp files that encode or decode templates.

#include <string>
#include <string_view>
#include <vector>

#include "foundation/expected.h"
#include "foundation/json.h"
#include "layouts/custom_layout_template.h"

namespace corvetta {

// One template: its keys in field order, each pane as [[x, y], [width, height]], absent optionals
// left out.
Json layoutTemplateToJson(const CustomLayoutTemplate& layout);
// "id", "name", "templateDescription" and "panes" are required; a missing "applyToAllDisplays"
// reads as false. Throws JsonDecodeError naming the damaged key.
CustomLayoutTemplate layoutTemplateFromJson(const Json& value, const std::string& path);

// The whole stored document, a JSON array. One damaged template fails the whole document; the
// error says where.
std::string encodeLayoutTemplates(const std::vector<CustomLayoutTemplate>& layouts);
Expected<std::vector<CustomLayoutTemplate>, std::string> decodeLayoutTemplates(
    std::string_view document);

}  // namespace corvetta
