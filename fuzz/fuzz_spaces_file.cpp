// Any spaces file must load or fail cleanly, and what it loads must survive being written again.

#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "workspaces/space_json.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace corvetta;
    const auto loaded =
        decodeSpacesPayload(std::string_view(reinterpret_cast<const char*>(data), size));
    if (!loaded) {
        return 0;
    }
    const auto again = decodeSpacesPayload(encodeSpacesPayload(*loaded));
    if (!again || *again != *loaded) {
        std::abort();
    }
    return 0;
}
