// Any stored layout templates document must decode or be refused without crashing, and every
// document that decodes must survive being written and read back unchanged.

#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "layouts/custom_layout_template_json.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace corvetta;
    const auto decoded =
        decodeLayoutTemplates(std::string_view(reinterpret_cast<const char*>(data), size));
    if (!decoded) {
        return 0;
    }
    const auto again = decodeLayoutTemplates(encodeLayoutTemplates(*decoded));
    if (!again || *again != *decoded) {
        std::abort();
    }
    return 0;
}
