// window_direction_json.h: Placements and snap positions as JSON, damaged records refused.
#pragma once

#include <string>

#include <nlohmann/json_fwd.hpp>

#include "windowing/window_direction.h"

namespace corvetta {

using Json = nlohmann::ordered_json;

// The stored form {"type": raw value} or {"type": "custom", "rect": [x, y, width, height]}.
Json toJson(const WindowDirection& direction);
Json toJson(const SnapPosition& position);

// Throw JsonDecodeError (foundation/json.h) for a value that is not an object, a missing or
// unknown "type", or a "custom" without "rect". A "rect" that is not exactly four numbers is
// data corruption, and the error's text is then exactly "Expected 4 values for rect".
WindowDirection windowDirectionFromJson(const Json& value, const std::string& path = "");
SnapPosition snapPositionFromJson(const Json& value, const std::string& path = "");

}  // namespace corvetta
