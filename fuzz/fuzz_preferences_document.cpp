// Any preferences file must load without crashing, and every value it holds must survive being
// written and read back unchanged.

#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "foundation/property_value_json.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace corvetta;
    const auto parsed = parseJson(std::string_view(reinterpret_cast<const char*>(data), size));
    if (!parsed || !parsed->is_object()) {
        return 0;
    }
    for (const auto& [key, member] : parsed->items()) {
        const auto value = propertyValueFromJson(member);
        if (!value) {
            continue;
        }
        const auto again = propertyValueFromJson(Json::parse(propertyValueToJson(*value).dump()));
        if (!again || !(*again == *value)) {
            std::abort();
        }
    }
    return 0;
}
