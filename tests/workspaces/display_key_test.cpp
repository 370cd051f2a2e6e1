#include "workspaces/display_key.h"

#include <gtest/gtest.h>

namespace corvetta {
namespace {

DisplayFingerprint external(double x) {
    DisplayFingerprint fingerprint;
    fingerprint.resolution = {1920, 1080};
    fingerprint.relativePosition = {x, 0};
    fingerprint.name = "DELL U2720Q";
    return fingerprint;
}

TEST(DisplayKey, IdentityFallsBackFromUuidToSerialToEdidToPosition) {
    auto fingerprint = external(-1920);
    fingerprint.persistentUUID = "37D8832A-2D66-02CA-B9F7-8F30A301B230";
    fingerprint.hardwareSerial = "SN-9";
    fingerprint.edidFingerprint = "1234abcd";
    EXPECT_EQ(displayKey(fingerprint), "1920x1080_1.0_external_dellu2720q_uuid_37D8832A");
    fingerprint.persistentUUID = "";
    EXPECT_EQ(displayKey(fingerprint), "1920x1080_1.0_external_dellu2720q_serial_SN-9");
    fingerprint.hardwareSerial.reset();
    EXPECT_EQ(displayKey(fingerprint), "1920x1080_1.0_external_dellu2720q_edid_1234abcd");
    fingerprint.edidFingerprint.reset();
    EXPECT_EQ(displayKey(fingerprint), "1920x1080_1.0_external_dellu2720q_smart_1920x1080_-1920_0");
    // Identical monitors with no identity are told apart by their places alone.
    EXPECT_NE(displayKey(fingerprint), displayKey(external(1920)));

    DisplayFingerprint panel;
    panel.resolution = {1512, 982.4};
    panel.scaleFactor = 2;
    panel.isBuiltIn = true;
    EXPECT_EQ(displayKey(panel), "1512x982_2.0_builtin_unknown_smart_1512x982_0_0");
}

TEST(ArrangementFingerprint, SortsKeysAndNamesTheMainDisplay) {
    const auto a = external(0);
    const auto b = external(1920);
    const auto expected = "2:" + displayKey(a) + ":" + displayKey(a) + "|" + displayKey(b);
    EXPECT_EQ(arrangementFingerprint({b, a}, a), expected);
    EXPECT_EQ(arrangementFingerprint({}, std::nullopt), "0:none:");
}

}  // namespace
}  // namespace corvetta
