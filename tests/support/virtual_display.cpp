#include "support/virtual_display.h"

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <csignal>
#include <cstdlib>
#include <stdexcept>

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>
#include <xcb/xcb.h>

#include "support/child_process.h"
#include "support/fake_x_client.h"
#include "support/temporary_folder.h"

namespace corvetta::testing {
namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

// A process descriptor lets a wait for a child share one poll with X events and carry a deadline.
int processDescriptor(pid_t pid) {
    return static_cast<int>(syscall(SYS_pidfd_open, pid, 0));
}

// Output goes to `log`; `inheritedFd` (if any) stays open in the child under the same number.
pid_t spawn(std::vector<std::string> argv, std::vector<std::string> environment,
            const std::filesystem::path& log, int inheritedFd = -1) {
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, 0, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_addopen(&actions, 1, log.c_str(), O_WRONLY | O_CREAT | O_APPEND, 0600);
    posix_spawn_file_actions_adddup2(&actions, 1, 2);
    if (inheritedFd >= 0) {
        fcntl(inheritedFd, F_SETFD, 0);
    }
    pid_t pid = -1;
    const int failed =
        posix_spawnp(&pid, argv[0].c_str(), &actions, nullptr, nullTerminated(argv).data(),
                     nullTerminated(environment).data());
    posix_spawn_file_actions_destroy(&actions);
    return failed ? -1 : pid;
}

// True once `pid` ended and was reaped before `deadline`; its wait status goes to `status`.
bool reapBefore(pid_t pid, Clock::time_point deadline, int* status = nullptr) {
    const int descriptor = processDescriptor(pid);
    if (descriptor < 0) {
        return waitpid(pid, status, 0) == pid;
    }
    pollfd polled = {descriptor, POLLIN, 0};
    int ready = 0;
    do {
        ready = poll(&polled, 1, millisecondsUntil(deadline));
    } while (ready < 0 && errno == EINTR);
    close(descriptor);
    return ready > 0 && waitpid(pid, status, 0) == pid;
}

void stop(pid_t& pid) {
    if (pid <= 0) {
        return;
    }
    kill(pid, SIGTERM);
    if (!reapBefore(pid, Clock::now() + std::chrono::seconds(5))) {
        kill(pid, SIGKILL);
        waitpid(pid, nullptr, 0);
    }
    pid = -1;
}

// Xvfb reports 96 dots per inch; RandR wants the physical size too.
int millimetres(int pixels) {
    return static_cast<int>(std::lround(pixels * 25.4 / 96.0));
}

std::string monitorGeometry(const VirtualMonitor& monitor) {
    return std::to_string(monitor.width) + "/" + std::to_string(millimetres(monitor.width)) + "x" +
           std::to_string(monitor.height) + "/" + std::to_string(millimetres(monitor.height)) +
           "+" + std::to_string(monitor.x) + "+" + std::to_string(monitor.y);
}

// In the isolated HOME each starts with the configuration its package installs. xfwm4 reads its
// key bindings through xfconf, which needs a session bus of its own.
struct WindowManagerRow {
    WindowManager windowManager;
    const char* name;
    std::vector<std::string> command;
};
const WindowManagerRow kWindowManagers[] = {
    {WindowManager::none, "none", {}},
    {WindowManager::openboxForTests,
     "openbox",
     {"openbox", "--config-file", CORVETTA_OPENBOX_CONFIG}},
    {WindowManager::openbox, "openbox", {"openbox"}},
    {WindowManager::metacity, "metacity", {"metacity"}},
    {WindowManager::icewm, "icewm", {"icewm"}},
    {WindowManager::fluxbox, "fluxbox", {"fluxbox"}},
    {WindowManager::xfwm4, "xfwm4", {"dbus-run-session", "--", "xfwm4"}},
};

const WindowManagerRow& windowManagerRow(WindowManager windowManager) {
    return *std::ranges::find(kWindowManagers, windowManager, &WindowManagerRow::windowManager);
}

}  // namespace

std::string windowManagerName(WindowManager windowManager) {
    return windowManagerRow(windowManager).name;
}

VirtualDisplay::VirtualDisplay(VirtualDisplayOptions options)
    : options_(std::move(options)), scratch_(std::make_unique<TemporaryFolder>()) {
    logPath_ = *scratch_ / "servers.log";
    if (options_.monitors.empty()) {
        throw std::invalid_argument("a virtual display needs at least one monitor");
    }
    startServer();
    defineMonitors();
    if (options_.windowManager != WindowManager::none) {
        startWindowManager();
    }
}

VirtualDisplay::~VirtualDisplay() {
    managerWatch_.reset();
    stop(windowManager_);
    stop(server_);
}

std::vector<std::string> VirtualDisplay::environment(std::vector<std::string> base) const {
    std::erase_if(base, [](const std::string& entry) {
        return entry.starts_with("DISPLAY=") || entry.starts_with("WAYLAND_DISPLAY=");
    });
    base.push_back("DISPLAY=" + displayName_);
    // The interface's keyboard library (libxkbcommon-x11, under Qt) hands strndup buffers that are
    // bounded by their length, not by a terminating zero: legal, but the sanitizer's strict string
    // checks call it an overflow. Programs on an X display get every other check; ASan reads its
    // options left to right, so the last word wins.
    for (auto& entry : base) {
        if (entry.starts_with("ASAN_OPTIONS=")) {
            entry += ":strict_string_checks=0";
        }
    }
    return base;
}

std::vector<std::string> VirtualDisplay::environment() const {
    return environment(currentEnvironment());
}

std::string VirtualDisplay::serverOutput() const {
    return readTestFile(logPath_);
}

void VirtualDisplay::startServer() {
    int width = 0, height = 0;
    for (const auto& monitor : options_.monitors) {
        width = std::max(width, monitor.x + monitor.width);
        height = std::max(height, monitor.y + monitor.height);
    }
    int numberPipe[2];
    if (pipe2(numberPipe, O_CLOEXEC) != 0) {
        fail("could not create a pipe for Xvfb");
    }
    // -noreset: otherwise the server forgets the monitors when the last client disconnects.
    server_ = spawn({"Xvfb", "-displayfd", std::to_string(numberPipe[1]), "-screen", "0",
                     std::to_string(width) + "x" + std::to_string(height) + "x24", "+extension",
                     "RANDR", "-nolisten", "tcp", "-noreset"},
                    currentEnvironment(), logPath_, numberPipe[1]);
    close(numberPipe[1]);

    // Xvfb writes the display number once it accepts connections.
    std::string number;
    const auto deadline = Clock::now() + kSafetyDeadline;
    while (server_ > 0 && number.find('\n') == std::string::npos) {
        pollfd polled = {numberPipe[0], POLLIN, 0};
        char buffer[16];
        if (poll(&polled, 1, millisecondsUntil(deadline)) <= 0) {
            break;
        }
        const ssize_t count = read(numberPipe[0], buffer, sizeof buffer);
        if (count <= 0) {
            break;
        }
        number.append(buffer, static_cast<std::size_t>(count));
    }
    close(numberPipe[0]);
    if (number.find('\n') == std::string::npos) {
        fail("Xvfb did not report a display number");
    }
    number.pop_back();
    displayName_ = ":" + number;
}

void VirtualDisplay::defineMonitors() {
    const auto environmentHere = environment();
    for (std::size_t index = 0; index < options_.monitors.size(); ++index) {
        // Xvfb has a single output, "screen"; further monitors stand on no output.
        const pid_t xrandr =
            spawn({"xrandr", "--setmonitor", "M" + std::to_string(index + 1),
                   monitorGeometry(options_.monitors[index]), index == 0 ? "screen" : "none"},
                  environmentHere, logPath_);
        int status = 0;
        if (xrandr <= 0 || !reapBefore(xrandr, Clock::now() + kSafetyDeadline, &status) ||
            !WIFEXITED(status) || WEXITSTATUS(status) != 0) {
            fail("xrandr --setmonitor failed");
        }
    }
}

void VirtualDisplay::startWindowManager() {
    // Fluxbox writes its configuration into HOME on its first start, and without a HOME to write
    // into it runs with no key bindings at all.
    std::error_code error;
    std::filesystem::create_directories(scratch_->path() / "home", error);
    windowManager_ = spawn(windowManagerRow(options_.windowManager).command,
                           environment(isolatedEnvironment(scratch_->path())), logPath_);
    if (windowManager_ <= 0) {
        fail("could not start " + windowManagerName(options_.windowManager));
    }
    waitUntilManaged();
}

// Waiting for the window manager's root properties (and not for time) keeps clients from mapping
// before anything manages them. Openbox publishes them before its start is over, though, and a map
// request that reaches it late in its start sits unread until something else arrives: so a probe
// window is mapped (and mapped again after a short while without an answer, which is that
// something) until the window manager frames it, then destroyed; after that it handles requests
// as they come.
void VirtualDisplay::waitUntilManaged() {
    // The connection stays open while the display runs: a client connecting after it closed
    // would be given the same window ids, and openbox was seen to confuse a new window with the
    // probe it had just let go.
    try {
        managerWatch_ = std::make_unique<FakeClient>(displayName_);
    } catch (const std::runtime_error& error) {
        fail(error.what());
    }
    auto* c = managerWatch_->raw();
    const xcb_window_t root = managerWatch_->root();
    const uint32_t mask = XCB_EVENT_MASK_PROPERTY_CHANGE;
    xcb_change_window_attributes(c, root, XCB_CW_EVENT_MASK, &mask);
    const xcb_atom_t clientList = managerWatch_->atom("_NET_CLIENT_LIST");
    auto windowsIn = [&](xcb_atom_t property) {
        auto* reply = xcb_get_property_reply(
            c, xcb_get_property(c, 0, root, property, XCB_ATOM_WINDOW, 0, 1024), nullptr);
        const int count =
            reply && reply->type == XCB_ATOM_WINDOW ? xcb_get_property_value_length(reply) / 4 : -1;
        free(reply);
        return count;
    };
    const int windowManagerDescriptor = processDescriptor(windowManager_);
    const auto deadline = Clock::now() + kSafetyDeadline;
    std::string problem;
    // Waits for the X server's next word (true) or `patience` (false); the problem on failure.
    auto awaitEvent = [&](int patience) {
        if (auto* event = xcb_poll_for_event(c)) {
            free(event);
            return true;
        }
        pollfd polled[2] = {{xcb_get_file_descriptor(c), POLLIN, 0},
                            {windowManagerDescriptor, POLLIN, 0}};
        const int ready = poll(polled, windowManagerDescriptor >= 0 ? 2 : 1,
                               std::min(patience, millisecondsUntil(deadline)));
        if (ready > 0 && windowManagerDescriptor >= 0 && polled[1].revents) {
            problem =
                windowManagerName(options_.windowManager) + " ended before managing the screen";
        } else if (xcb_connection_has_error(c)) {
            problem = "lost the connection to " + displayName_;
        } else if (ready == 0 && Clock::now() >= deadline) {
            problem =
                windowManagerName(options_.windowManager) + " did not manage the screen in time";
        }
        if (auto* event = xcb_poll_for_event(c)) {
            free(event);
        }
        return ready > 0;
    };
    const xcb_atom_t announcements[] = {managerWatch_->atom("_NET_SUPPORTING_WM_CHECK"),
                                        clientList};
    while (problem.empty() && !std::all_of(std::begin(announcements), std::end(announcements),
                                           [&](xcb_atom_t p) { return windowsIn(p) >= 0; })) {
        awaitEvent(millisecondsUntil(deadline));
    }

    const xcb_window_t probe = xcb_generate_id(c);
    const uint32_t probeMask = XCB_EVENT_MASK_STRUCTURE_NOTIFY;
    xcb_create_window(c, XCB_COPY_FROM_PARENT, probe, root, 0, 0, 10, 10, 0,
                      XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT, XCB_CW_EVENT_MASK,
                      &probeMask);
    auto framed = [&] {
        auto* tree = xcb_query_tree_reply(c, xcb_query_tree(c, probe), nullptr);
        const bool reparented = tree && tree->parent != root;
        free(tree);
        return reparented;
    };
    while (problem.empty() && !framed()) {
        xcb_map_window(c, probe);
        xcb_flush(c);
        const auto retry = Clock::now() + milliseconds(200);
        while (problem.empty() && Clock::now() < retry && !framed()) {
            awaitEvent(millisecondsUntil(retry));
        }
    }
    xcb_destroy_window(c, probe);
    xcb_flush(c);
    while (problem.empty() && windowsIn(clientList) != 0) {
        awaitEvent(millisecondsUntil(deadline));
    }
    if (windowManagerDescriptor >= 0) {
        close(windowManagerDescriptor);
    }
    if (!problem.empty()) {
        fail(problem);
    }
}

void VirtualDisplay::fail(const std::string& what) {
    managerWatch_.reset();
    stop(windowManager_);
    stop(server_);
    throw std::runtime_error(what + "; output of the servers:\n" + serverOutput());
}

}  // namespace corvetta::testing
