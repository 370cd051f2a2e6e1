// Any set-up file must read or fail cleanly, and what it reads must survive being exported again.

#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "import_export/setup_file.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace corvetta;
    const auto read = decodeSetupFile(std::string_view(reinterpret_cast<const char*>(data), size));
    if (!read) {
        if (read.error().description().empty()) {
            std::abort();
        }
        return 0;
    }
    // Dates are written to the second, so the first export may round them; from then on an
    // export must read back exactly.
    const auto exportOf = [](const ImportResult& result) {
        WorkspaceExportData exported;
        exported.version = result.version;
        exported.exportDate = result.exportDate.value_or(Date{});
        exported.workspaces = result.workspaces;
        exported.spaces = result.spaces;
        exported.customLayouts = result.customLayouts;
        exported.settings = result.settings.value_or(ExportedSettings{});
        return encodeSetupFile(exported);
    };
    const auto once = decodeSetupFile(exportOf(*read));
    if (!once) {
        std::abort();
    }
    const auto twice = decodeSetupFile(exportOf(*once));
    if (!twice || twice->workspaces != once->workspaces || twice->spaces != once->spaces ||
        twice->customLayouts != once->customLayouts || twice->settings != once->settings ||
        once->workspaces.size() != read->workspaces.size()) {
        std::abort();
    }
    return 0;
}
