#include "app/desktop_opening.h"

#include "automation/bundle_identifier.h"
#include "platform/sim/simulated_desktop.h"
#include "platform/sim/simulated_desktop_file.h"
#include "platform/x11/x11_desktop.h"

namespace corvetta {

namespace {

Expected<std::unique_ptr<Desktop>, std::string> openX11Desktop(const DesktopChoice& choice,
                                                               MainQueue& queue) {
    auto desktop = X11Desktop::open(choice.display, queue, {}, bundleIdentifier());
    if (!desktop) {
        return unexpected(desktop.error());
    }
    return std::unique_ptr<Desktop>(std::move(*desktop));
}

}  // namespace

Expected<std::unique_ptr<Desktop>, std::string> openDesktop(const DesktopChoice& choice,
                                                            MainQueue& queue) {
    if (choice.kind == DesktopChoice::Kind::x11) {
        return openX11Desktop(choice, queue);
    }
    auto setup = loadSimulatedDesktop(choice.file);
    if (!setup) {
        return unexpected("desktop file " + choice.file.string() + ": " + setup.error().message());
    }
    return std::unique_ptr<Desktop>(std::make_unique<SimulatedDesktop>(std::move(*setup), queue));
}

std::unique_ptr<Desktop> openEmptyDesktop(MainQueue& queue) {
    SimulatedDesktopSetup setup;
    setup.displays.push_back(SimulatedDisplay{.id = 1,
                                              .name = "Display",
                                              .frame = Rect(0, 0, 1440, 900),
                                              .visibleFrame = Rect(0, 0, 1440, 875),
                                              .builtin = true});
    return std::make_unique<SimulatedDesktop>(std::move(setup), queue);
}

std::string describeDesktop(Desktop& desktop, const std::optional<DesktopChoice>& choice) {
    const auto plural = [](std::size_t count, const std::string& noun) {
        return std::to_string(count) + " " + noun + (count == 1 ? "" : "s");
    };
    std::string source = "empty simulated desktop";
    if (choice && choice->kind == DesktopChoice::Kind::x11) {
        source = "X display " +
                 (choice->display.empty() ? std::string("from DISPLAY") : choice->display);
    } else if (choice) {
        source = "simulated desktop from " + choice->file.string();
    }
    return source + ": " + plural(desktop.screenPort().screens().size(), "display") + ", " +
           plural(desktop.applicationsPort().runningApplications().size(), "running application");
}

}  // namespace corvetta
