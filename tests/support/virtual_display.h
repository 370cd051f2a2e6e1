// virtual_display.h: A private Xvfb, with RandR monitors and optionally openbox, for tests.
#pragma once

// A private X server for tests that need one, so no test ever touches the user's display.

#include <chrono>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include <sys/types.h>

namespace corvetta::testing {

class FakeClient;
class TemporaryFolder;

// A monitor in root-window coordinates (top-left origin, y down), as the X server reports it.
struct VirtualMonitor {
    int x = 0, y = 0, width = 0, height = 0;
};

// The window managers Debian ships, each in its own default configuration (what a user who installs
// it gets), except `openboxForTests`: openbox with tests/e2e/openbox-rc.xml, which binds no keys.
enum class WindowManager { none, openboxForTests, openbox, metacity, icewm, fluxbox, xfwm4 };

// "openbox", "metacity", ...; for messages and test names.
std::string windowManagerName(WindowManager windowManager);

struct VirtualDisplayOptions {
    // The screen is their bounding box; the first one is listed first by RandR.
    std::vector<VirtualMonitor> monitors = {{0, 0, 1280, 800}};
    WindowManager windowManager = WindowManager::none;
};

// Starts Xvfb on a free display number, defines the monitors through RandR before any other client
// connects, optionally starts the window manager and waits until it manages the root window. The
// destructor stops and reaps everything. Throws std::runtime_error (with the servers' output) when
// something does not come up within the safety deadline.
class VirtualDisplay {
public:
    explicit VirtualDisplay(VirtualDisplayOptions options = {});
    ~VirtualDisplay();
    VirtualDisplay(const VirtualDisplay&) = delete;
    VirtualDisplay& operator=(const VirtualDisplay&) = delete;

    // ":N", for xcb_connect and DISPLAY.
    const std::string& displayName() const { return displayName_; }

    // `base` (NAME=VALUE texts) with DISPLAY pointing here and no other display named.
    std::vector<std::string> environment(std::vector<std::string> base) const;
    // This process's environment, pointed here.
    std::vector<std::string> environment() const;

    // What Xvfb, xrandr and the window manager printed so far; for failure messages.
    std::string serverOutput() const;

    // Generous: sanitizer builds start slowly and ctest runs many servers at once.
    static constexpr std::chrono::seconds kSafetyDeadline{30};

private:
    void startServer();
    void defineMonitors();
    void startWindowManager();
    void waitUntilManaged();
    [[noreturn]] void fail(const std::string& what);

    VirtualDisplayOptions options_;
    std::unique_ptr<TemporaryFolder> scratch_;
    std::filesystem::path logPath_;
    std::string displayName_;
    pid_t server_ = -1;
    pid_t windowManager_ = -1;
    std::unique_ptr<FakeClient> managerWatch_;
};

}  // namespace corvetta::testing
