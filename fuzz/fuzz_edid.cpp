// EDID bytes come from any display, cable or KVM switch: whatever they are, reading them gives an
// identity or nothing, and a valid one always has a fingerprint.

#include <cstdint>
#include <span>

#include "platform/edid.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace corvetta;
    const std::span<const std::uint8_t> bytes(data, size);
    const auto identity = parseEdid(bytes);
    const auto fingerprint = edidFingerprint(bytes);
    if (identity.has_value() != fingerprint.has_value() ||
        (fingerprint && fingerprint->size() != 8)) {
        __builtin_trap();
    }
    if (identity && identity->persistentUuid().isNil()) {
        __builtin_trap();
    }
    return 0;
}
