// edid.h: Reads a display's identity out of its EDID bytes, the way every platform describes it.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>

#include "foundation/uuid.h"

namespace corvetta {

// What the base block of an EDID (VESA E-EDID 1.3/1.4) tells about the display that sent it.
struct EdidIdentity {
    // Three letters, "DEL", "SAM": the PNP id of the maker.
    std::string manufacturerId;
    std::uint16_t productCode = 0;
    // The 32-bit serial number field; absent when the display leaves it 0.
    std::optional<std::uint32_t> serialNumber;
    // The display descriptors' texts: monitor name (0xFC) and serial number (0xFF).
    std::optional<std::string> monitorName;
    std::optional<std::string> serialText;

    // The serial a user reads on the label: the serial number field as decimal digits, else the
    // descriptor's text; absent when the display gives neither.
    std::optional<std::string> serial() const;
    // Name-based identifier over maker, product and serial: the same on every run and every
    // machine, and the same for two displays only when they are indistinguishable by their EDID.
    Uuid persistentUuid() const;
};

// Absent when the bytes are no EDID: shorter than a block, without the fixed header, or with a
// base block whose checksum does not add up. Extension blocks are not read.
std::optional<EdidIdentity> parseEdid(std::span<const std::uint8_t> bytes);

// "%08x" of the 32-bit FNV-1a hash of every byte (extensions included), for a valid EDID only: a
// damaged read would give a key that changes from one read to the next.
std::optional<std::string> edidFingerprint(std::span<const std::uint8_t> bytes);

}  // namespace corvetta
