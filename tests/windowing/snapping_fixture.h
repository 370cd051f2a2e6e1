// snapping_fixture.h: Runs snaps through the program's services on a simulated desktop.
#pragma once

#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "desktop_fixture.h"
#include "support/temporary_folder.h"
#include "windowing/window_snapping_service.h"

namespace corvetta::testing_support {

// The program's services over a simulated desktop.
struct SnappingRig {
    SnappingRig(SimulatedDesktopSetup setup, ManualQueue& queue, Preferences& defaults,
                NotificationCenter& notifications, Logbook& logbook, LoggingService& logging,
                ServiceCallbacks callbacks)
        : sim(std::move(setup), queue),
          services(
              ProcessPlumbing{sim, queue, defaults, notifications, logbook, logging, std::nullopt,
                              "Corvetta 0.1.0", "simulated desktop test.json", files.path()},
              std::move(callbacks)),
          service(services.windowSnappingService) {}

    // The workspace backup and spaces of this rig alone.
    corvetta::testing::TemporaryFolder files;
    SimulatedDesktop sim;
    ServiceRoot services;
    WindowSnappingService& service;
};

class SnappingTest : public WindowingTest {
protected:
    // Settings the calculations read when built must be stored before this.
    SnappingRig& start(SimulatedDesktopSetup setup, WillSnapHook willSnap = {}) {
        rig.reset();
        auto withHook = callbacks;
        withHook.willSnap = std::move(willSnap);
        rig = std::make_unique<SnappingRig>(std::move(setup), queue, preferences, notifications,
                                            logbook, logging, std::move(withHook));
        return *rig;
    }

    // Runs a service call to its end, the mover's retries included.
    template <class Call>
    SnapResult run(Call&& call) {
        std::optional<SnapResult> result;
        call(rig->service, [&](const SnapResult& r) { result = r; });
        queue.runUntilIdle();
        queue.advance(std::chrono::seconds(1));
        return result.value_or(SnapResult(unexpected(std::string("never completed"))));
    }

    SnapResult snap(const WindowDirection& action) {
        return run([&](auto& service, auto done) { service.snapFrontmostWindow(action, done); });
    }

    std::optional<Rect> frameOf(WindowNumber window) const { return rig->sim.windowFrame(window); }

    ManualQueue queue{clock};
    // What the services ask of the program; the snap hook is given to `start`.
    ServiceCallbacks callbacks;
    std::unique_ptr<SnappingRig> rig;
};

}  // namespace corvetta::testing_support
