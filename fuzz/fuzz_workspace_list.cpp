// Any stored workspace list must load without crashing, and whatever it loads must be written and
// read back unchanged, in the bytes of the whole list printed at once.

#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "workspaces/workspace_json.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace corvetta;
    const auto loaded =
        decodeLossyWorkspaces(std::string_view(reinterpret_cast<const char*>(data), size));
    if (!loaded) {
        return 0;
    }
    const auto encoded = encodeWorkspaces(loaded->workspaces);
    if (!encoded) {
        // Only text that is not UTF-8 cannot be written; the parser never lets such text in.
        std::abort();
    }
    Json whole = Json::array();
    for (const auto& workspace : loaded->workspaces) {
        whole.push_back(workspaceToJson(workspace));
    }
    if (*encoded != whole.dump(2)) {
        std::abort();
    }
    const auto again = decodeLossyWorkspaces(*encoded);
    if (!again || again->dropped != 0 || again->workspaces != loaded->workspaces) {
        std::abort();
    }
    return 0;
}
