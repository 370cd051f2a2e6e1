#include "platform/edid.h"

#include <functional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "support/sample_edid.h"

namespace corvetta {
namespace {

using testing::sampleEdid;

// Clears the serial number field and fixes the checksum up again.
void withoutSerialNumber(std::vector<std::uint8_t>& bytes) {
    for (std::size_t i = 12; i < 16; ++i) {
        bytes[127] = static_cast<std::uint8_t>(bytes[127] + bytes[i]);
        bytes[i] = 0;
    }
}

TEST(Edid, ReadsMakerProductSerialAndDescriptors) {
    const auto bytes = sampleEdid();
    const auto identity = parseEdid(bytes);
    ASSERT_TRUE(identity);
    EXPECT_EQ(identity->manufacturerId, "DEL");
    EXPECT_EQ(identity->productCode, 0xA0C4);
    EXPECT_EQ(identity->serialNumber, 842550092u);
    EXPECT_EQ(identity->monitorName, "DELL U2415");
    EXPECT_EQ(identity->serialText, "7MT0186R0QXL");
    EXPECT_EQ(identity->serial(), "842550092");
    EXPECT_EQ(identity->persistentUuid().string(), "3E032273-F3BF-5457-A5D3-2F2BED4A0A2E");
    EXPECT_EQ(edidFingerprint(bytes), "2394d1fb");
}

TEST(Edid, SerialFallsBackToTheDescriptorText) {
    auto bytes = sampleEdid();
    withoutSerialNumber(bytes);
    const auto identity = parseEdid(bytes);
    ASSERT_TRUE(identity);
    EXPECT_FALSE(identity->serialNumber);
    EXPECT_EQ(identity->serial(), "7MT0186R0QXL");
    EXPECT_NE(identity->persistentUuid(), parseEdid(sampleEdid())->persistentUuid());
    EXPECT_NE(edidFingerprint(bytes), edidFingerprint(sampleEdid()));
}

TEST(Edid, DamagedOrShortBytesGiveNothing) {
    const std::vector<std::pair<const char*, std::function<void(std::vector<std::uint8_t>&)>>>
        damages = {
            {"empty", [](auto& b) { b.clear(); }},
            {"short", [](auto& b) { b.resize(127); }},
            {"bad checksum", [](auto& b) { b[20] ^= 1; }},
            {"bad header",
             [](auto& b) {
                 b[1] = 0;
                 b[127] = static_cast<std::uint8_t>(b[127] + 255);
             }},
        };
    for (const auto& [name, damage] : damages) {
        auto bytes = sampleEdid();
        damage(bytes);
        EXPECT_FALSE(parseEdid(bytes)) << name;
        EXPECT_FALSE(edidFingerprint(bytes)) << name;
    }
    // Extension blocks are hashed with the base block but never read.
    auto extended = sampleEdid();
    extended.resize(256, 0xAB);
    EXPECT_TRUE(parseEdid(extended));
    EXPECT_NE(edidFingerprint(extended), edidFingerprint(sampleEdid()));
}

}  // namespace
}  // namespace corvetta
