// overlay_fixture.h: The services on a simulated desktop, for the tests of the overlay windows.
#pragma once

#include <QRect>
#include <chrono>
#include <memory>
#include <vector>

#include <gtest/gtest.h>

#include "app/service_root.h"
#include "platform/sim/simulated_desktop.h"
#include "support/manual_plumbing.h"
#include "support/temporary_folder.h"
#include "ui/view_colors.h"

namespace corvetta::testing {

// One 1000x800 display whose visible frame is all of it, and an editor with two windows side by
// side; the windows are told it is their whole desktop.
class OverlayTest : public ::testing::Test {
protected:
    static constexpr Rect kLeft{0, 0, 495, 800}, kRight{505, 0, 495, 800};
    static constexpr QRect kArea{0, 0, 1000, 800};

    static SimulatedDesktopSetup setup() {
        SimulatedDesktopSetup s;
        s.displays = {{1, "Main", {0, 0, 1000, 800}, {0, 0, 1000, 800}, 1, true}};
        s.applications = {{.pid = 100,
                           .bundleIdentifier = "com.example.editor",
                           .name = "Editor",
                           .windows = {{.number = 1, .title = "main.cpp", .frame = kLeft},
                                       {.number = 2, .title = "notes", .frame = kRight}}}};
        return s;
    }
    ProcessPlumbing plumbingWithFolder() {
        auto p = plumbing.on(desktop);
        p.configFolder = folder.path();
        return p;
    }
    void advance(std::chrono::milliseconds by) { plumbing.queue.advance(by); }
    static ViewColors light() {
        ViewColors c = ViewColors::fallback();
        c.backgroundWindow = QColor(0xf6, 0xf6, 0xf8);
        c.backgroundCard = QColor(0xff, 0xff, 0xff);
        c.textPrimary = QColor(0x1d, 0x1d, 0x1f);
        c.textSecondary = QColor(0x6e, 0x6e, 0x73);
        return c;
    }

    TemporaryFolder folder;
    ManualPlumbing plumbing;
    SimulatedDesktop desktop{setup(), plumbing.queue};
    ServiceRoot root{plumbingWithFolder()};
};

}  // namespace corvetta::testing
