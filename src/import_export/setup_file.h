// setup_file.h: The set-up file's bytes: writing an export, and reading an export or an old bare
// list.
#pragma once

#include <string>
#include <string_view>

#include "foundation/expected.h"
#include "import_export/import_export_errors.h"
#include "import_export/import_resolution.h"

namespace corvetta {

// Everything an export holds.
struct WorkspaceExportData {
    static constexpr const char* kCurrentVersion = "2.0";

    std::string version = kCurrentVersion;
    Date exportDate;
    std::vector<Workspace> workspaces;
    std::vector<WorkspaceSpace> spaces;
    std::vector<CustomLayoutTemplate> customLayouts;
    ExportedSettings settings;
};

// Pretty-printed with keys sorted at every level, dates as ISO 8601 text.
std::string encodeSetupFile(const WorkspaceExportData& data);

// An export object, or (version "legacy") a bare list of workspaces. Text that is not JSON, or
// records that are damaged, fail with decodingFailed naming the cause; JSON of any other shape
// with invalidFormat.
Expected<ImportResult, ImportError> decodeSetupFile(std::string_view text);

}  // namespace corvetta
