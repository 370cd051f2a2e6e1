// x11_applications.h: The applications port on X11, over the client list and desktop entries.
#pragma once

// x11_applications.h: The applications port over the window manager's client list, with launches
// and desktop actions through the applications' desktop entries.

#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "platform/applications.h"
#include "platform/x11/x11_connection.h"
#include "platform/x11/x11_properties.h"
#include "platform/xdg/desktop_entries.h"
#include "platform/xdg/process_launcher.h"

namespace corvetta {

// Where applications' desktop entries are found and what launched programs get.
struct X11Launching {
    // Asked at each lookup of a desktop entry.
    std::function<std::vector<std::filesystem::path>()> applicationFolders;
    // NAME=VALUE texts; DISPLAY names the display this program is on.
    std::vector<std::string> environment;
};

// The applications port over the window manager's client list: an application is the client
// windows of one process (_NET_WM_PID). Its bundle identifier is the desktop entry the window
// names (_GTK_APPLICATION_ID, _KDE_NET_WM_DESKTOP_FILE), else its WM_CLASS class; its name the
// WM_CLASS class. The front application owns _NET_ACTIVE_WINDOW; changes of it are the
// activation notifications. Hidden means every window of it is minimized. An application's desktop
// entry is found by what its windows and process tell (DesktopEntries::forApplication); its
// desktop actions are its application actions.
class X11Applications final : public ApplicationsPort {
public:
    // `self` is this process as the workspace should see it.
    X11Applications(X11Connection& connection, RunningApplication self, X11Launching launching);
    ~X11Applications() override;
    X11Applications(const X11Applications&) = delete;
    X11Applications& operator=(const X11Applications&) = delete;

    RunningApplication currentApplication() const override;
    std::vector<RunningApplication> runningApplications() const override;
    std::optional<RunningApplication> runningApplication(ProcessId process) const override;
    std::optional<RunningApplication> frontmostApplication() const override;
    [[nodiscard]] Registration observeDidActivateApplication(
        std::function<void(const RunningApplication&)> handler) override;
    // An installed desktop entry with the desktop file ID `<identifier>`.
    bool canLaunchApplication(const std::string& bundleIdentifier) const override;
    // Runs the entry's Exec, without a shell.
    void launchApplication(const std::string& bundleIdentifier,
                           LaunchCompletion completion) override;
    std::vector<ApplicationAction> applicationActions(ProcessId process) const override;
    // Runs the action's Exec, without a shell; the new process is not waited for.
    Expected<void, std::string> performApplicationAction(ProcessId process,
                                                         const std::string& identifier) override;
    // Asks the window manager to activate the process's front window, as a pager would
    // (source indication 2).
    bool activate(ProcessId process) override;
    // Minimizes every window of the process.
    bool hide(ProcessId process) override;
    void setActivationPolicy(ActivationPolicy policy) override;

    // The process's client windows, front to back.
    std::vector<xcb_window_t> windowsOf(ProcessId process) const;
    // Whether the window is one of the process's clients. Known windows are answered without
    // asking the server until the client list changes; a window destroyed meanwhile fails the
    // request that follows anyway.
    bool isClientOf(xcb_window_t window, ProcessId process) const;
    // _NET_ACTIVE_WINDOW; none when no window is active or the property cannot be read.
    std::optional<xcb_window_t> activeWindow() const;

private:
    struct Client {
        xcb_window_t window = 0;
        ProcessId pid = 0;
    };
    // What does not change while a window lives: its process and what names its application.
    struct Identity {
        std::string instanceName;
        std::string className;
        std::string applicationId;
    };
    struct Known {
        ProcessId pid = 0;
        std::optional<Identity> identity;
        // Minimized (_NET_WM_STATE_HIDDEN), kept until the window announces a change of its
        // states: the window is watched from the first read on.
        std::optional<bool> hidden;
    };
    std::vector<Client> clientsFrontToBack() const;
    void forgetAllBut(const std::vector<xcb_window_t>& clients) const;
    const Identity& identityOf(xcb_window_t window) const;
    RunningApplication describe(ProcessId process, const std::vector<xcb_window_t>& windows) const;
    std::optional<ProcessId> activeProcess() const;
    bool handleEvent(const xcb_generic_event_t& event);
    std::optional<InstalledDesktopEntry> desktopEntryOf(ProcessId process) const;

    struct Observers;
    X11Connection& connection_;
    mutable X11Properties properties_;
    mutable std::unordered_map<xcb_window_t, Known> known_;
    // The root's client list and active window as last read, kept until the window manager
    // announces a change of them: every key press asks for both. What comes from outside (the
    // socket) synchronizes first, so no announcement is left unread when they are used.
    mutable std::optional<std::vector<xcb_window_t>> stacking_;
    mutable std::optional<xcb_window_t> active_;
    RunningApplication self_;
    DesktopEntries desktopEntries_;
    std::vector<std::string> launchEnvironment_;
    ProcessLauncher launcher_;
    std::optional<ProcessId> lastActive_;
    std::shared_ptr<Observers> observers_;
    Registration events_;
};

}  // namespace corvetta
