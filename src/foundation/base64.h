// base64.h: Base64, the form raw data takes inside JSON documents.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace corvetta {

using Bytes = std::vector<std::uint8_t>;

// Standard alphabet with padding (RFC 4648), the form data values take inside JSON documents.
std::string base64Encode(const Bytes& data);
// Refuses characters outside the alphabet, bad padding and lengths that are not a multiple of 4.
std::optional<Bytes> base64Decode(std::string_view text);

}  // namespace corvetta
