#include "workspaces/display_fingerprint_json.h"

namespace corvetta {

namespace {

void putOptional(Json& object, const char* key, const std::optional<std::string>& value) {
    if (value) {
        object[key] = *value;
    }
}

}  // namespace

Json displayFingerprintToJson(const DisplayFingerprint& fingerprint) {
    Json object = Json::object();
    object["resolution"] = sizeToJson(fingerprint.resolution);
    if (fingerprint.physicalSize) {
        object["physicalSize"] = sizeToJson(*fingerprint.physicalSize);
    }
    object["scaleFactor"] = fingerprint.scaleFactor;
    putOptional(object, "colorSpace", fingerprint.colorSpace);
    object["isBuiltIn"] = fingerprint.isBuiltIn;
    object["relativePosition"] = pointToJson(fingerprint.relativePosition);
    putOptional(object, "name", fingerprint.name);
    putOptional(object, "persistentUUID", fingerprint.persistentUUID);
    putOptional(object, "hardwareSerial", fingerprint.hardwareSerial);
    putOptional(object, "edidFingerprint", fingerprint.edidFingerprint);
    return object;
}

Json displayArrangementToJson(const DisplayArrangementInfo& arrangement) {
    Json object = Json::object();
    object["createdAt"] = formatIso8601(arrangement.createdAt);
    Json fingerprints = Json::array();
    for (const auto& fingerprint : arrangement.displayFingerprints) {
        fingerprints.push_back(displayFingerprintToJson(fingerprint));
    }
    object["displayFingerprints"] = std::move(fingerprints);
    if (arrangement.mainDisplayFingerprint) {
        object["mainDisplayFingerprint"] =
            displayFingerprintToJson(*arrangement.mainDisplayFingerprint);
    }
    object["arrangementFingerprint"] = arrangement.arrangementFingerprint;
    object["monitorDisplayHeights"] = arrangement.monitorDisplayHeights;
    return object;
}

DisplayFingerprint displayFingerprintFromJson(const Json& value, const std::string& path) {
    const JsonObjectReader reader(value, path);
    DisplayFingerprint fingerprint;
    fingerprint.resolution = reader.get<Size>("resolution");
    fingerprint.physicalSize = reader.getOptional<Size>("physicalSize");
    fingerprint.scaleFactor = reader.get<double>("scaleFactor");
    fingerprint.colorSpace = reader.getOptional<std::string>("colorSpace");
    fingerprint.isBuiltIn = reader.get<bool>("isBuiltIn");
    fingerprint.relativePosition = reader.get<Point>("relativePosition");
    fingerprint.name = reader.getOptional<std::string>("name");
    fingerprint.persistentUUID = reader.getOptional<std::string>("persistentUUID");
    fingerprint.hardwareSerial = reader.getOptional<std::string>("hardwareSerial");
    fingerprint.edidFingerprint = reader.getOptional<std::string>("edidFingerprint");
    return fingerprint;
}

DisplayArrangementInfo displayArrangementFromJson(const Json& value, const std::string& path) {
    const JsonObjectReader reader(value, path);
    DisplayArrangementInfo arrangement;
    arrangement.createdAt = reader.get<Date>("createdAt");
    const auto fingerprints = reader.get<Json>("displayFingerprints");
    const auto fingerprintsPath = reader.pathOf("displayFingerprints");
    if (!fingerprints.is_array()) {
        throw JsonDecodeError(JsonDecodeError::Kind::malformedValue, fingerprintsPath,
                              "displayFingerprints", "expected an array of fingerprints");
    }
    for (std::size_t index = 0; index < fingerprints.size(); ++index) {
        arrangement.displayFingerprints.push_back(displayFingerprintFromJson(
            fingerprints[index], fingerprintsPath + "[" + std::to_string(index) + "]"));
    }
    if (reader.has("mainDisplayFingerprint")) {
        arrangement.mainDisplayFingerprint = displayFingerprintFromJson(
            reader.raw().at("mainDisplayFingerprint"), reader.pathOf("mainDisplayFingerprint"));
    }
    arrangement.arrangementFingerprint = reader.get<std::string>("arrangementFingerprint");
    const auto heights = reader.get<Json>("monitorDisplayHeights");
    const auto heightsPath = reader.pathOf("monitorDisplayHeights");
    if (!heights.is_object()) {
        throw JsonDecodeError(JsonDecodeError::Kind::malformedValue, heightsPath,
                              "monitorDisplayHeights", "expected an object of heights");
    }
    for (const auto& [monitor, height] : heights.items()) {
        arrangement.monitorDisplayHeights[monitor] =
            decodeJsonValue<double>(height, heightsPath, monitor);
    }
    return arrangement;
}

}  // namespace corvetta
