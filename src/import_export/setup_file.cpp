#include "import_export/setup_file.h"

#include "foundation/json.h"
#include "import_export/exported_settings_json.h"
#include "layouts/custom_layout_template_json.h"
#include "workspaces/space_json.h"
#include "workspaces/workspace_json.h"

namespace corvetta {

namespace {

template <class Record, class Encode>
Json arrayOf(const std::vector<Record>& records, Encode encode) {
    Json array = Json::array();
    for (const auto& record : records) {
        array.push_back(encode(record));
    }
    return array;
}

template <class Decode>
auto decodeArray(const JsonObjectReader& reader, const char* key, Decode decode) {
    const Json& value = reader.raw().at(key);
    const auto path = reader.pathOf(key);
    if (!value.is_array()) {
        throw JsonDecodeError(JsonDecodeError::Kind::malformedValue, path, key,
                              "expected an array");
    }
    std::vector<decltype(decode(value, path))> records;
    for (std::size_t index = 0; index < value.size(); ++index) {
        records.push_back(decode(value[index], path + "[" + std::to_string(index) + "]"));
    }
    return records;
}

ImportResult decodeExport(const Json& document) {
    const JsonObjectReader reader(document);
    for (const char* key : {"version", "exportDate", "workspaces", "spaces", "customLayouts"}) {
        if (!reader.has(key)) {
            throw JsonDecodeError(JsonDecodeError::Kind::missingKey, "", key, "value is required");
        }
    }
    ImportResult result;
    result.version = reader.get<std::string>("version");
    result.exportDate = reader.get<Date>("exportDate");
    result.workspaces = decodeArray(
        reader, "workspaces",
        [](const Json& value, const std::string& path) { return workspaceFromJson(value, path); });
    result.spaces = decodeArray(reader, "spaces", [](const Json& value, const std::string& path) {
        return workspaceSpaceFromJson(value, path);
    });
    result.customLayouts =
        decodeArray(reader, "customLayouts", [](const Json& value, const std::string& path) {
            return layoutTemplateFromJson(value, path);
        });
    if (reader.has("settings")) {
        result.settings = exportedSettingsFromJson(reader.raw().at("settings"), "settings");
    }
    return result;
}

ImportResult decodeLegacy(const Json& document) {
    ImportResult result;
    result.version = "legacy";
    for (std::size_t index = 0; index < document.size(); ++index) {
        result.workspaces.push_back(
            workspaceFromJson(document[index], "[" + std::to_string(index) + "]"));
    }
    return result;
}

}  // namespace

std::string encodeSetupFile(const WorkspaceExportData& data) {
    Json document = Json::object();
    document["version"] = data.version;
    document["exportDate"] = formatIso8601(data.exportDate);
    document["workspaces"] = arrayOf(data.workspaces, workspaceToJson);
    document["spaces"] = arrayOf(data.spaces, workspaceSpaceToJson);
    document["customLayouts"] = arrayOf(data.customLayouts, layoutTemplateToJson);
    document["settings"] = exportedSettingsToJson(data.settings);
    return writeJson(document, JsonStyle::prettySortedKeys);
}

Expected<ImportResult, ImportError> decodeSetupFile(std::string_view text) {
    const auto document = parseJson(text);
    if (!document) {
        return unexpected(ImportError{ImportError::Kind::decodingFailed, document.error().message});
    }
    try {
        if (document->is_array()) {
            return decodeLegacy(*document);
        }
        if (document->is_object() &&
            (document->contains("workspaces") || document->contains("version"))) {
            return decodeExport(*document);
        }
    } catch (const JsonDecodeError& error) {
        return unexpected(ImportError{ImportError::Kind::decodingFailed, error.what()});
    }
    return unexpected(ImportError{ImportError::Kind::invalidFormat, {}});
}

}  // namespace corvetta
