// x11_applications.h: The applications port on X11, over the client list and desktop entries.
#pragma once

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "platform/applications.h"
#include "platform/x11/x11_connection.h"
#include "platform/x11/x11_properties.h"

namespace corvetta {

// The applications port over the window manager's client list: an application is the client
// windows of one process (_NET_WM_PID). Its bundle identifier is the desktop entry the window
// names (_GTK_APPLICATION_ID, _KDE_NET_WM_DESKTOP_FILE), else its WM_CLASS class; its name the
// WM_CLASS class. The front application owns _NET_ACTIVE_WINDOW; changes of it are the
// activation notifications. Hidden means every window of it is minimized.
class X11Applications final : public ApplicationsPort {
public:
    // `self` is this process as the workspace should see it.
    X11Applications(X11Connection& connection, RunningApplication self);
    ~X11Applications() override;
    X11Applications(const X11Applications&) = delete;
    X11Applications& operator=(const X11Applications&) = delete;

    RunningApplication currentApplication() const override;
    std::vector<RunningApplication> runningApplications() const override;
    std::optional<RunningApplication> runningApplication(ProcessId process) const override;
    std::optional<RunningApplication> frontmostApplication() const override;
    [[nodiscard]] Registration observeDidActivateApplication(
        std::function<void(const RunningApplication&)> handler) override;
    // An installed desktop entry named `<identifier>.desktop` in the XDG data folders.
    bool canLaunchApplication(const std::string& bundleIdentifier) const override;
    void launchApplication(const std::string& bundleIdentifier,
                           LaunchCompletion completion) override;
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

private:
    struct Client {
        xcb_window_t window = 0;
        ProcessId pid = 0;
    };
    // What does not change while a window lives: its process and what names its application.
    struct Identity {
        std::string className;
        std::string applicationId;
    };
    struct Known {
        ProcessId pid = 0;
        std::optional<Identity> identity;
    };
    std::vector<Client> clientsFrontToBack() const;
    void forgetAllBut(const std::vector<xcb_window_t>& clients) const;
    const Identity& identityOf(xcb_window_t window) const;
    RunningApplication describe(ProcessId process, const std::vector<xcb_window_t>& windows) const;
    std::optional<ProcessId> activeProcess() const;
    bool handleEvent(const xcb_generic_event_t& event);

    struct Observers;
    X11Connection& connection_;
    mutable X11Properties properties_;
    mutable std::unordered_map<xcb_window_t, Known> known_;
    RunningApplication self_;
    std::optional<ProcessId> lastActive_;
    std::shared_ptr<Observers> observers_;
    Registration events_;
};

}  // namespace corvetta
