// display_fingerprint_json.h: JSON form of display fingerprints and arrangements, keys named as the
// fields.
#pragma once

#include <string>

#include "foundation/json.h"
#include "workspaces/display_fingerprint.h"

namespace corvetta {

// Absent optionals are left out. Sizes and points are pairs, dates ISO 8601 text.
Json displayFingerprintToJson(const DisplayFingerprint& fingerprint);
Json displayArrangementToJson(const DisplayArrangementInfo& arrangement);

// Throw JsonDecodeError naming the damaged key.
DisplayFingerprint displayFingerprintFromJson(const Json& value, const std::string& path = "");
DisplayArrangementInfo displayArrangementFromJson(const Json& value, const std::string& path = "");

}  // namespace corvetta
