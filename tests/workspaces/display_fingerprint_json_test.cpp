#include "workspaces/display_fingerprint_json.h"

#include <gtest/gtest.h>

namespace corvetta {
namespace {

DisplayFingerprint fullFingerprint() {
    DisplayFingerprint fingerprint;
    fingerprint.resolution = {2560, 1440};
    fingerprint.physicalSize = Size{597, 336};
    fingerprint.scaleFactor = 2;
    fingerprint.colorSpace = "sRGB";
    fingerprint.isBuiltIn = true;
    fingerprint.relativePosition = {-1280.5, 360};
    fingerprint.name = "Studio Display";
    fingerprint.persistentUUID = "9A1B2C3D-0000-4000-8000-000000000001";
    fingerprint.hardwareSerial = "SN123";
    fingerprint.edidFingerprint = "0badf00d";
    return fingerprint;
}

TEST(DisplayFingerprintJson, RoundTripsFullAndBareRecords) {
    DisplayArrangementInfo arrangement;
    arrangement.createdAt = *parseIso8601("2026-11-21T10:15:30Z");
    arrangement.displayFingerprints = {fullFingerprint(), DisplayFingerprint{}};
    arrangement.mainDisplayFingerprint = fullFingerprint();
    arrangement.arrangementFingerprint = "2:main:a|b";
    arrangement.monitorDisplayHeights = {
        {"9A1B2C3D-0000-4000-8000-000000000001", 1440},
        {"1920x1080_1.0_external_unknown_smart_1920x1080_0_0", 1080}};

    const auto json = displayArrangementToJson(arrangement);
    EXPECT_EQ(displayArrangementFromJson(json), arrangement);
    EXPECT_EQ(json["displayFingerprints"][0]["resolution"], Json::parse("[2560.0, 1440.0]"));
    // A bare fingerprint leaves its absent optionals out instead of writing nulls.
    EXPECT_FALSE(json["displayFingerprints"][1].contains("name"));
    EXPECT_FALSE(json["displayFingerprints"][1].contains("physicalSize"));

    DisplayArrangementInfo withoutMain = arrangement;
    withoutMain.mainDisplayFingerprint.reset();
    EXPECT_FALSE(displayArrangementToJson(withoutMain).contains("mainDisplayFingerprint"));
    EXPECT_EQ(displayArrangementFromJson(displayArrangementToJson(withoutMain)), withoutMain);
}

TEST(DisplayFingerprintJson, ReadsDatesStoredAsReferenceSeconds) {
    auto json = displayArrangementToJson(DisplayArrangementInfo{});
    // 2001-01-01T00:00:00Z plus one day, as a Mac's standard encoder writes dates.
    json["createdAt"] = 86400.0;
    EXPECT_EQ(formatIso8601(displayArrangementFromJson(json).createdAt), "2001-01-02T00:00:00Z");
}

TEST(DisplayFingerprintJson, NamesTheDamagedKey) {
    struct Case {
        const char* pointer;
        Json value;
        const char* path;
    };
    const Case cases[] = {
        {"/displayFingerprints/0/resolution", Json("wide"), "displayFingerprints[0].resolution"},
        {"/displayFingerprints/0/isBuiltIn", Json(1), "displayFingerprints[0].isBuiltIn"},
        {"/displayFingerprints", Json::object(), "displayFingerprints"},
        {"/monitorDisplayHeights/A", Json("tall"), "monitorDisplayHeights"},
        {"/createdAt", Json("yesterday"), "createdAt"},
    };
    for (const auto& c : cases) {
        DisplayArrangementInfo arrangement;
        arrangement.displayFingerprints = {fullFingerprint()};
        auto json = displayArrangementToJson(arrangement);
        json[Json::json_pointer(c.pointer)] = c.value;
        try {
            displayArrangementFromJson(json);
            ADD_FAILURE() << c.pointer << " decoded";
        } catch (const JsonDecodeError& error) {
            EXPECT_EQ(error.path(), c.path) << c.pointer;
        }
    }
}

}  // namespace
}  // namespace corvetta
