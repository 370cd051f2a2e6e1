// Desktop files are written by hand, so any text must either give a desktop or a refusal that
// names its place; and whatever desktop a file describes must start and answer its ports.

#include <cstdint>
#include <string_view>

#include "foundation/manual_queue.h"
#include "platform/sim/simulated_desktop.h"
#include "platform/sim/simulated_desktop_file.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace corvetta;
    const auto setup =
        parseSimulatedDesktop(std::string_view(reinterpret_cast<const char*>(data), size));
    if (!setup) {
        (void)setup.error().message();
        return 0;
    }
    ManualClock clock;
    ManualQueue queue(clock);
    SimulatedDesktop desktop(*setup, queue);
    auto& ax = desktop.accessibilityPort();
    for (const auto& entry : desktop.windowListPort().onScreenWindows()) {
        const AXElement window(entry.ownerPid, entry.number);
        (void)ax.copyAttributeValue(window, "AXPosition");
        (void)ax.setAttributeValue(window, "AXSize", Size{1e6, 1});
        (void)ax.setAttributeValue(window, "AXFullScreen", true);
    }
    for (const auto& app : desktop.applicationsPort().runningApplications()) {
        (void)ax.copyAttributeValue(ax.applicationElement(app.processIdentifier), "AXWindows");
        desktop.applicationsPort().activate(app.processIdentifier);
    }
    desktop.setDockHidden(true);
    // Slow launches and late windows all land within a day.
    for (const auto& app : setup->installed) {
        desktop.applicationsPort().launchApplication(*app.bundleIdentifier, [](const auto&) {});
    }
    queue.advance(std::chrono::hours(25));
    return 0;
}
