// EDID bytes come from any display, cable or KVM switch: whatever they are, reading them gives an
// identity or nothing, and a valid one always has a fingerprint. Each input is also read with the
// header and checksum made right, so the descriptors behind them are explored too.

#include <cstdint>
#include <numeric>
#include <span>
#include <vector>

#include "platform/edid.h"

namespace {

void check(std::span<const std::uint8_t> bytes) {
    using namespace corvetta;
    const auto identity = parseEdid(bytes);
    const auto fingerprint = edidFingerprint(bytes);
    if (identity.has_value() != fingerprint.has_value() ||
        (fingerprint && fingerprint->size() != 8)) {
        __builtin_trap();
    }
    if (identity && (identity->manufacturerId.size() != 3 || identity->persistentUuid().isNil())) {
        __builtin_trap();
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    check({data, size});
    if (size < 128) {
        return 0;
    }
    std::vector<std::uint8_t> repaired(data, data + size);
    const std::uint8_t header[] = {0x00, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0x00};
    std::copy(std::begin(header), std::end(header), repaired.begin());
    const unsigned sum = std::accumulate(repaired.begin(), repaired.begin() + 127, 0u);
    repaired[127] = static_cast<std::uint8_t>(256 - sum % 256);
    if (!corvetta::parseEdid(repaired)) {
        __builtin_trap();
    }
    check(repaired);
    return 0;
}
