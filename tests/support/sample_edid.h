// sample_edid.h: A real monitor's EDID base block, for the tests that read display identities.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace corvetta::testing {

// A 24-inch "DELL U2415": maker DEL, product 0xA0C4, serial number 842550092, serial descriptor
// "7MT0186R0QXL", detailed timing 1920x1200, range limits; checksum 0xfb. Its FNV-1a hash is
// 2394d1fb and its identifier 3E032273-F3BF-5457-A5D3-2F2BED4A0A2E (computed independently).
inline const std::string kSampleEdidHex =
    "00ffffffffffff0010acc4a04c4b3832"
    "1e190104a53420783aee95a3544c9926"
    "0f5054a54b00714f8180a940d1c00101"
    "010101010101283c80a070b023403020"
    "360006442100001a000000ff00374d54"
    "30313836523051584c0a000000fc0044"
    "454c4c2055323431350a2020000000fd"
    "00313d1e5311000a20202020202000fb";

inline std::vector<std::uint8_t> sampleEdid() {
    std::vector<std::uint8_t> bytes;
    for (std::size_t i = 0; i < kSampleEdidHex.size(); i += 2) {
        bytes.push_back(
            static_cast<std::uint8_t>(std::stoi(kSampleEdidHex.substr(i, 2), nullptr, 16)));
    }
    return bytes;
}

}  // namespace corvetta::testing
