// exported_settings_json.h: JSON form of the exported settings.
#pragma once

#include <string>

#include "foundation/json.h"
#include "import_export/exported_settings.h"

namespace corvetta {

Json exportedSettingsToJson(const ExportedSettings& settings);
// Missing keys are left out; a value of the wrong kind throws JsonDecodeError naming it, since
// applying half a damaged file would lose the user's own values for nothing.
ExportedSettings exportedSettingsFromJson(const Json& value, const std::string& path = "settings");

}  // namespace corvetta
