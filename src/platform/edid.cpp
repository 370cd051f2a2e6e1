#include "platform/edid.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <numeric>

namespace corvetta {

namespace {

constexpr std::size_t kBlockSize = 128;
constexpr std::array<std::uint8_t, 8> kHeader{0x00, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0x00};
constexpr std::array<std::size_t, 4> kDescriptorOffsets{54, 72, 90, 108};
constexpr std::uint8_t kMonitorNameTag = 0xFC;
constexpr std::uint8_t kSerialTextTag = 0xFF;

// Ours alone, so identifiers derived from EDIDs never collide with another program's.
const Uuid& displayNamespace() {
    static const Uuid space = *Uuid::parse("163ADF2D-4194-4177-B331-7B70B688F6F7");
    return space;
}

bool isValidBaseBlock(std::span<const std::uint8_t> bytes) {
    if (bytes.size() < kBlockSize || !std::equal(kHeader.begin(), kHeader.end(), bytes.begin())) {
        return false;
    }
    const auto block = bytes.first(kBlockSize);
    return std::accumulate(block.begin(), block.end(), 0u) % 256 == 0;
}

// Descriptor text: up to 13 characters, ended by a line feed and padded with blanks. Anything
// outside printable ASCII is dropped rather than trusted.
std::optional<std::string> descriptorText(std::span<const std::uint8_t> descriptor) {
    std::string text;
    for (const auto byte : descriptor.subspan(5, 13)) {
        if (byte == '\n') {
            break;
        }
        if (byte >= 0x20 && byte < 0x7F) {
            text.push_back(static_cast<char>(byte));
        }
    }
    const auto last = text.find_last_not_of(' ');
    text.erase(last == std::string::npos ? 0 : last + 1);
    if (text.empty()) {
        return std::nullopt;
    }
    return text;
}

}  // namespace

std::optional<std::string> EdidIdentity::serial() const {
    if (serialNumber) {
        return std::to_string(*serialNumber);
    }
    return serialText;
}

Uuid EdidIdentity::persistentUuid() const {
    return Uuid::nameBased(displayNamespace(), manufacturerId + ":" + std::to_string(productCode) +
                                                   ":" + serial().value_or(""));
}

std::optional<EdidIdentity> parseEdid(std::span<const std::uint8_t> bytes) {
    if (!isValidBaseBlock(bytes)) {
        return std::nullopt;
    }
    EdidIdentity identity;
    // Three 5-bit letters, 'A' being 1, big-endian.
    const unsigned maker = (unsigned{bytes[8]} << 8) | bytes[9];
    for (const int shift : {10, 5, 0}) {
        identity.manufacturerId.push_back(static_cast<char>('A' - 1 + ((maker >> shift) & 0x1F)));
    }
    identity.productCode = static_cast<std::uint16_t>(bytes[10] | (bytes[11] << 8));
    const std::uint32_t serial = std::uint32_t{bytes[12]} | (std::uint32_t{bytes[13]} << 8) |
                                 (std::uint32_t{bytes[14]} << 16) |
                                 (std::uint32_t{bytes[15]} << 24);
    if (serial != 0) {
        identity.serialNumber = serial;
    }
    for (const auto offset : kDescriptorOffsets) {
        const auto descriptor = bytes.subspan(offset, 18);
        // A display descriptor starts with three zero bytes; a timing descriptor does not.
        if (descriptor[0] != 0 || descriptor[1] != 0 || descriptor[2] != 0) {
            continue;
        }
        if (descriptor[3] == kMonitorNameTag && !identity.monitorName) {
            identity.monitorName = descriptorText(descriptor);
        } else if (descriptor[3] == kSerialTextTag && !identity.serialText) {
            identity.serialText = descriptorText(descriptor);
        }
    }
    return identity;
}

std::optional<std::string> edidFingerprint(std::span<const std::uint8_t> bytes) {
    if (!isValidBaseBlock(bytes)) {
        return std::nullopt;
    }
    std::uint32_t hash = 2166136261u;
    for (const auto byte : bytes) {
        hash = (hash ^ byte) * 16777619u;
    }
    std::array<char, 9> text{};
    std::snprintf(text.data(), text.size(), "%08x", hash);
    return std::string(text.data(), 8);
}

}  // namespace corvetta
