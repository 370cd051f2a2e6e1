// display_key.h: The stable text key that names one display, and the key of a whole arrangement.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "workspaces/display_fingerprint.h"

namespace corvetta {

// "<w>x<h>_<scale>_<builtin|external>_<name>_<identity>", the identity being the first of the
// persistent UUID's first 8 characters, the serial, the EDID hash's first 8 characters, or the
// resolution and relative position when the display reports none of them. Two identical
// monitors without any identity therefore differ only by where they stand.
std::string displayKey(const DisplayFingerprint& fingerprint);

// "<count>:<main display's key or none>:<every key, sorted, joined by |>".
std::string arrangementFingerprint(const std::vector<DisplayFingerprint>& fingerprints,
                                   const std::optional<DisplayFingerprint>& mainDisplay);

}  // namespace corvetta
