// snapping_fixture.h: The snapping service over real services on a simulated desktop.
#pragma once

#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "desktop_fixture.h"
#include "windowing/window_snapping_service.h"

namespace corvetta::testing_support {

// Every service a snap passes through, real ones all, over a simulated desktop.
struct SnappingRig {
    SnappingRig(SimulatedDesktopSetup setup, ManualQueue& queue, const Preferences& defaults,
                LoggingService& logging, WillSnapHook willSnap)
        : sim(std::move(setup), queue),
          services(sim, queue, defaults, logging),
          service(services.mover, services.screenDetection, services.accessibility,
                  services.calculation, sim.applicationsPort(), defaults, logging,
                  std::move(willSnap)) {}

    SimulatedDesktop sim;
    DesktopServices services;
    WindowSnappingService service;
};

class SnappingTest : public WindowingTest {
protected:
    // Settings the calculations read when built must be stored before this.
    SnappingRig& start(SimulatedDesktopSetup setup, WillSnapHook willSnap = {}) {
        rig.reset();
        rig = std::make_unique<SnappingRig>(std::move(setup), queue, preferences, logging,
                                            std::move(willSnap));
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
    std::unique_ptr<SnappingRig> rig;
};

}  // namespace corvetta::testing_support
