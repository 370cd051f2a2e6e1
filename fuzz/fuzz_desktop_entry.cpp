// Desktop entries come from any package or any user: whatever the text, the reader gives an entry
// or a refusal, and every Exec line in it splits into arguments or is refused, also when it is
// given links and files to open.

#include <cstdint>
#include <string_view>

#include "platform/xdg/desktop_entry.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace corvetta;
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    const ExecContext context{"icon", "Name", "/applications/entry.desktop"};
    (void)parseExecLine(text, context);
    ExecContext opening = context;
    opening.targets = {"file:///home/me/a%20b%2", "https://example.com/%zz", "/srv"};
    (void)parseExecLine(text, opening);
    const auto entry = parseDesktopEntry(text);
    if (!entry) {
        return 0;
    }
    (void)parseExecLine(entry->exec, {entry->icon, entry->name, ""});
    for (const auto& action : entry->actions) {
        const auto arguments = parseExecLine(action.exec, context);
        if (arguments && arguments->front().empty()) {
            __builtin_trap();
        }
    }
    return 0;
}
