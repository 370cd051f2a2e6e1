// e2e_desktop.h: End-to-end fixture: the real program on Xvfb with openbox and real clients.
#pragma once

// The fixture of the end-to-end tests: a private X server with the window manager, real clients,
// and the real program driven through key presses and its automation socket.

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "automation/socket_client.h"
#include "support/running_process.h"
#include "support/temporary_folder.h"
#include "support/virtual_display.h"
#include "x_probe.h"

namespace corvetta::testing {

class E2eDesktop : public ::testing::Test {
protected:
    // Xvfb with these monitors and the window manager (openbox without key bindings unless told),
    // managing before this returns; replaces the desktop (and everything on it) a previous call
    // built.
    void startDesktop(std::vector<VirtualMonitor> monitors = {{0, 0, 1280, 800}},
                      WindowManager windowManager = WindowManager::openboxForTests);

    // corvetta-test-client with `arguments` (see tests/e2e/test_client.cpp); its window once the
    // window manager has framed and mapped it, or 0 (with a test failure).
    uint32_t startClient(std::vector<std::string> arguments);
    // A real xterm (which sizes itself in character cells) titled `title`; its window once the
    // window manager has framed it, or 0 (with a test failure).
    uint32_t startXterm(const std::string& title);
    // Kills the client that owns `window` and waits until the window manager let it go.
    void killClient(uint32_t window);

    // The real program on this desktop with `preferences` as its preferences file; returns once it
    // is ready and its socket answers.
    void startCorvetta(const std::string& preferences = "{}");
    // One request over the socket, answered: the whole answer line, "" when none came.
    std::string request(const std::string& method, const std::string& params = "");
    // "sync": every move under way has ended and the program has caught up with the server.
    void sync();
    // Whether the program wrote `text` on its standard error by now, or within `limit`.
    bool corvettaSaid(const std::string& text,
                      std::chrono::seconds limit = std::chrono::seconds(0));
    // How much the program has written on its standard error so far: a mark for the next call.
    std::size_t corvettaOutputMark();
    // Waits (10 s at most) until the program writes one of `texts` after `mark`: which one came
    // first, none when none came.
    std::optional<std::size_t> waitForCorvettaToSay(std::size_t mark,
                                                    const std::vector<std::string>& texts);
    // xrandr with these arguments on this desktop; whether it succeeded.
    bool xrandr(std::vector<std::string> arguments);

    // The window's outer frame as the X server has it.
    XFrame frameOf(uint32_t window);

    VirtualDisplay& display() { return *display_; }
    XProbe& x() { return *probe_; }
    // Isolated HOME and XDG folders in this test's folder, DISPLAY on the virtual display.
    std::vector<std::string> environment() const;
    // XDG_DATA_HOME of that environment.
    std::filesystem::path dataHome() const { return root_ / "data"; }

private:
    TemporaryFolder root_;
    std::unique_ptr<VirtualDisplay> display_;
    std::unique_ptr<XProbe> probe_;
    std::map<uint32_t, std::unique_ptr<RunningProcess>> clients_;
    std::unique_ptr<RunningProcess> corvetta_;
    std::optional<SocketClient> socket_;
    int requests_ = 0;
};

}  // namespace corvetta::testing
