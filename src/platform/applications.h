// applications.h: The applications port: running applications, the front one, launching.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "foundation/expected.h"
#include "foundation/registration.h"
#include "platform/accessibility.h"

namespace corvetta {

enum class ActivationPolicy { regular, accessory, prohibited };

// A running application as the workspace reports it.
struct RunningApplication {
    ProcessId processIdentifier = 0;
    // Absent for helper processes and tools that have no bundle.
    std::optional<std::string> bundleIdentifier;
    std::string localizedName;
    ActivationPolicy activationPolicy = ActivationPolicy::regular;
    bool isHidden = false;

    bool operator==(const RunningApplication&) const = default;
    // "Editor (com.example.editor, pid 101)", for log lines.
    std::string description() const;
};

struct LaunchError {
    enum class Kind { notFound, failed };
    Kind kind = Kind::failed;
    std::string message;
};

using LaunchCompletion = std::function<void(const Expected<RunningApplication, LaunchError>&)>;

// Something an application's launcher offers beside starting it: on Linux a desktop action of its
// desktop entry ("new-window" named "New Window"); macOS has none.
struct ApplicationAction {
    std::string identifier;
    std::string name;

    bool operator==(const ApplicationAction&) const = default;
};

// The applications port: what the shared workspace knows about running applications.
class ApplicationsPort {
public:
    virtual ~ApplicationsPort() = default;

    // This process, as the workspace sees it.
    virtual RunningApplication currentApplication() const = 0;
    virtual std::vector<RunningApplication> runningApplications() const = 0;
    virtual std::optional<RunningApplication> runningApplication(ProcessId process) const = 0;
    // The application that receives key events; none while nothing is in front.
    virtual std::optional<RunningApplication> frontmostApplication() const = 0;
    // "NSWorkspaceDidActivateApplicationNotification": called on the main thread with the
    // application that came to the front, this one included, for as long as the registration lives.
    [[nodiscard]] virtual Registration observeDidActivateApplication(
        std::function<void(const RunningApplication&)> handler) = 0;
    // Whether an application with this identifier is installed.
    virtual bool canLaunchApplication(const std::string& bundleIdentifier) const = 0;
    // Launches (or finds the running copy of) the application and activates it; the completion
    // runs on the main thread, never before this call returns.
    virtual void launchApplication(const std::string& bundleIdentifier,
                                   LaunchCompletion completion) = 0;
    // The actions the running application's launcher offers, in its order; none where the
    // platform has no such thing.
    virtual std::vector<ApplicationAction> applicationActions(ProcessId process) const;
    // Starts one of them; the error says why it could not.
    virtual Expected<void, std::string> performApplicationAction(ProcessId process,
                                                                 const std::string& identifier);
    // false when no such application runs.
    virtual bool activate(ProcessId process) = 0;
    virtual bool hide(ProcessId process) = 0;
    // This process: an accessory application has a status-bar item and no Dock icon.
    virtual void setActivationPolicy(ActivationPolicy policy) = 0;
};

}  // namespace corvetta
