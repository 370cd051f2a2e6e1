// Any text pasted as a theme must import or fail with one of the import's errors, and a theme it
// accepts must survive being stored and read back.

#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "appearance/theme_import_service.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace corvetta;
    const auto parsed =
        ThemeImportService::parse(std::string_view(reinterpret_cast<const char*>(data), size));
    if (!parsed) {
        if (parsed.error().message().empty()) {
            std::abort();
        }
        return 0;
    }
    if (!parsed->light && !parsed->dark) {
        std::abort();
    }
    const ThemeDefinition theme{.id = "custom.fuzz",
                                .name = parsed->name,
                                .useVibrancy = parsed->useVibrancy,
                                .light = parsed->light.value_or(*parsed->dark),
                                .dark = parsed->dark.value_or(*parsed->light)};
    const auto stored = decodeThemeDefinition(encodeThemeDefinition(theme));
    if (!stored || *stored != theme) {
        std::abort();
    }
    return 0;
}
