#include <set>
#include <unordered_set>

#include <gtest/gtest.h>

#include "foundation/base64.h"
#include "foundation/uuid.h"

namespace corvetta {
namespace {

TEST(Uuid, RandomIdentifiersAreVersionFourDistinctAndHashed) {
    std::set<Uuid> ordered;
    std::unordered_set<Uuid> hashed;
    for (int i = 0; i < 200; ++i) {
        const Uuid id = Uuid::random();
        EXPECT_EQ(id.bytes()[6] >> 4, 4);       // version 4
        EXPECT_EQ(id.bytes()[8] & 0xC0, 0x80);  // RFC 4122 variant
        EXPECT_FALSE(id.isNil());
        ordered.insert(id);
        hashed.insert(id);
    }
    EXPECT_EQ(ordered.size(), 200u);
    EXPECT_EQ(hashed.size(), 200u);
}

TEST(Uuid, TextFormIsCanonicalUpperCaseReadInEitherCase) {
    const Uuid id = Uuid::random();
    EXPECT_EQ(Uuid::parse(id.string()), id);
    const auto lower = Uuid::parse("e621e1f8-c36c-495a-93fc-0c247a3e6e5f");
    ASSERT_TRUE(lower);
    EXPECT_EQ(lower->string(), "E621E1F8-C36C-495A-93FC-0C247A3E6E5F");
    EXPECT_TRUE(Uuid().isNil());
    EXPECT_EQ(Uuid().string(), "00000000-0000-0000-0000-000000000000");
}

TEST(Uuid, NameBasedIdentifiersFollowVersionFive) {
    // The RFC's DNS namespace and a name whose version 5 identifier is published.
    const auto dns = Uuid::parse("6ba7b810-9dad-11d1-80b4-00c04fd430c8");
    ASSERT_TRUE(dns);
    EXPECT_EQ(Uuid::nameBased(*dns, "www.example.com").string(),
              "2ED6657D-E927-568B-95E1-2665A8AEA6A2");
    EXPECT_NE(Uuid::nameBased(*dns, "www.example.org"), Uuid::nameBased(*dns, "www.example.com"));
}

TEST(Uuid, RefusesMalformedText) {
    for (const char* bad :
         {"", "E621E1F8C36C495A93FC0C247A3E6E5F", "E621E1F8-C36C-495A-93FC-0C247A3E6E5",
          "E621E1F8-C36C-495A-93FC-0C247A3E6E5F0", "G621E1F8-C36C-495A-93FC-0C247A3E6E5F",
          "{E621E1F8-C36C-495A-93FC-0C247A3E6E5F}", "E621E1F8_C36C_495A_93FC_0C247A3E6E5F"}) {
        EXPECT_FALSE(Uuid::parse(bad)) << bad;
    }
}

TEST(Base64, EncodesWithPaddingAndRoundTripsEveryLength) {
    EXPECT_EQ(base64Encode({}), "");
    EXPECT_EQ(base64Encode({'f'}), "Zg==");
    EXPECT_EQ(base64Encode({'f', 'o'}), "Zm8=");
    EXPECT_EQ(base64Encode({'f', 'o', 'o'}), "Zm9v");
    Bytes data;
    for (int n = 0; n < 40; ++n) {
        EXPECT_EQ(base64Decode(base64Encode(data)), data);
        data.push_back(static_cast<std::uint8_t>(n * 37 + 255));
    }
}

TEST(Base64, RefusesDamagedText) {
    for (const char* bad : {"Zg=", "Z===", "Zm9v!A==", "Zg==Zg==", "Zm=v"}) {
        EXPECT_FALSE(base64Decode(bad)) << bad;
    }
}

}  // namespace
}  // namespace corvetta
