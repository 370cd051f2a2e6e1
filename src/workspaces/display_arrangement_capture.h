// display_arrangement_capture.h: Records the displays as they are now, as a saved workspace keeps
// them.
#pragma once

#include <string>
#include <vector>

#include "foundation/date.h"
#include "platform/screen.h"
#include "workspaces/display_fingerprint.h"

namespace corvetta {

// One display, placed relative to the main display (the primary, which holds the menu bar).
DisplayFingerprint displayFingerprint(const Screen& screen, const Screen& mainDisplay);

// The id a saved window names its display by: the persistent UUID's text, else (a display that
// reports none) its display key.
std::string monitorIdentifier(const DisplayFingerprint& fingerprint);

// Every display of `screens` (the primary first, as the displays port lists them), stamped `now`.
// No screens give an empty arrangement whose main display is absent.
DisplayArrangementInfo captureDisplayArrangement(const std::vector<Screen>& screens, Date now);

}  // namespace corvetta
