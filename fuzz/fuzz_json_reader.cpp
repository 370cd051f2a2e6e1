// Records are decoded field by field with JsonObjectReader; whatever the document, decoding must
// either succeed or raise JsonDecodeError, never crash or throw anything else.

#include <cstdint>
#include <string_view>

#include "foundation/json.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace corvetta;
    const auto parsed = parseJson(std::string_view(reinterpret_cast<const char*>(data), size));
    if (!parsed) {
        return 0;
    }
    try {
        const JsonObjectReader reader(*parsed, "root");
        (void)reader.getOptional<Uuid>("id");
        (void)reader.getOptional<std::string>("name");
        (void)reader.getOptional<bool>("isFullscreen");
        (void)reader.getOptional<int>("zOrder");
        (void)reader.getOptional<std::uint32_t>("shortcutKeyCode");
        (void)reader.getOptional<std::int64_t>("count");
        (void)reader.getOptional<double>("scale");
        (void)reader.getOptional<Rect>("frame");
        (void)reader.getOptional<Date>("createdAt");
        (void)reader.getOptional<std::vector<std::string>>("tags");
        if (reader.has("nested")) {
            (void)reader.child("nested").get<Rect>("frame");
        }
    } catch (const JsonDecodeError&) {
    }
    return 0;
}
