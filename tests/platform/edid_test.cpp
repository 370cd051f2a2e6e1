#include "platform/edid.h"

#include <numeric>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "support/sample_edid.h"

namespace corvetta {
namespace {

using testing::sampleEdid;

// The sample with `values` written from `at`, its checksum made right again unless told not to.
std::vector<std::uint8_t> sampleWith(std::size_t at, std::vector<std::uint8_t> values,
                                     bool fixChecksum = true) {
    auto bytes = sampleEdid();
    std::copy(values.begin(), values.end(), bytes.begin() + static_cast<std::ptrdiff_t>(at));
    if (fixChecksum) {
        bytes[127] = static_cast<std::uint8_t>(
            256 - std::accumulate(bytes.begin(), bytes.begin() + 127, 0u) % 256);
    }
    return bytes;
}

TEST(Edid, ReadsMakerProductSerialAndDescriptors) {
    const auto identity = parseEdid(sampleEdid());
    ASSERT_TRUE(identity);
    EXPECT_EQ(identity->manufacturerId, "DEL");
    EXPECT_EQ(identity->productCode, 0xA0C4);
    EXPECT_EQ(identity->monitorName, "DELL U2415");
    EXPECT_EQ(identity->serialText, "7MT0186R0QXL");
    EXPECT_EQ(identity->serial(), "842550092");
    EXPECT_EQ(identity->persistentUuid().string(), "3E032273-F3BF-5457-A5D3-2F2BED4A0A2E");
    EXPECT_EQ(edidFingerprint(sampleEdid()), "2394d1fb");

    // Without the serial number field the descriptor's text is the serial.
    const auto unnumbered = parseEdid(sampleWith(12, {0, 0, 0, 0}));
    ASSERT_TRUE(unnumbered);
    EXPECT_EQ(unnumbered->serial(), "7MT0186R0QXL");
    EXPECT_NE(unnumbered->persistentUuid(), identity->persistentUuid());
}

TEST(Edid, DamagedOrShortBytesGiveNothing) {
    const std::vector<std::pair<const char*, std::vector<std::uint8_t>>> damaged = {
        {"empty", {}},
        {"short",
         [] {
             auto bytes = sampleEdid();
             bytes.resize(127);
             return bytes;
         }()},
        {"bad checksum", sampleWith(20, {0}, false)},
        {"bad header", sampleWith(1, {0})},
    };
    for (const auto& [name, bytes] : damaged) {
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
