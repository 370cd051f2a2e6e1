// deeplink_opener.h: Opens a restored workspace's deeplinks, one application after another.
#pragma once

#include <chrono>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "diagnostics/logger.h"
#include "foundation/main_queue.h"
#include "platform/accessibility.h"
#include "platform/applications.h"
#include "platform/opening.h"
#include "workspaces/deeplink.h"
#include "workspaces/workspace.h"

namespace corvetta {

// What opening a workspace's deeplinks did.
struct DeeplinkReport {
    // Handed to the application (links, files, terminal directories, typed commands).
    int opened = 0;
    // Already shown by an open window, which was raised instead.
    int raised = 0;
    // Could not be handed over (no such application, no key for a character, focus moved away).
    int failed = 0;
    // Entries whose key or text could not be read.
    int skipped = 0;

    bool operator==(const DeeplinkReport&) const = default;
};

// Opens the deeplinks of a workspace at the end of its restoration. Applications take turns
// kStagger apart, so one application's launch or new window does not race another's; an
// application's own links go together, in window order. A link an open window of the application
// already shows is raised rather than opened again; a terminal command is typed into the
// application's window (WezTerm's through its own command-line program); an application that is
// not running is started by the dispatch. Main thread only; work still waiting when the opener
// goes away is dropped.
class DeeplinkOpener {
public:
    static constexpr Duration kStagger = std::chrono::milliseconds(500);
    // From bringing a terminal window to the front to typing into it, so the window manager has
    // given it the keyboard focus.
    static constexpr Duration kFocusSettle = std::chrono::milliseconds(200);
    // How often the window is brought forward again when another window of the application took
    // the focus meanwhile, before the command is given up.
    static constexpr int kFocusAttempts = 3;
    // A terminal started to type into is looked at this often for its first window, this long.
    static constexpr Duration kWindowPoll = std::chrono::milliseconds(250);
    static constexpr Duration kWindowWait = std::chrono::seconds(5);

    // `home` stands for "~" in paths.
    DeeplinkOpener(AccessibilityPort& accessibility, ApplicationsPort& applications,
                   OpeningPort& opening, MainQueue& queue, LoggingService& logging,
                   std::filesystem::path home);
    ~DeeplinkOpener();
    DeeplinkOpener(const DeeplinkOpener&) = delete;
    DeeplinkOpener& operator=(const DeeplinkOpener&) = delete;

    // `done` runs once, on the main queue, after the last dispatch.
    void openDeeplinks(const Workspace& workspace, std::function<void(const DeeplinkReport&)> done);

    const Logger logger;
    const std::string serviceName = "DeeplinkOpener";

private:
    struct Run;

    void dispatchApplication(const std::shared_ptr<Run>& run,
                             const std::vector<DeeplinkEntry>& entries);
    void dispatch(const std::shared_ptr<Run>& run, const DeeplinkEntry& entry,
                  std::optional<ProcessId> process);
    void typeCommand(const std::shared_ptr<Run>& run, const DeeplinkEntry& entry,
                     const std::string& command, std::optional<ProcessId> process);
    void waitForWindow(const std::shared_ptr<Run>& run, const DeeplinkEntry& entry,
                       const std::string& command, ProcessId process, Duration waited);
    void focusAndType(const std::shared_ptr<Run>& run, const DeeplinkEntry& entry,
                      const std::string& command, ProcessId process, const AXElement& window,
                      int attempt);
    // The window of the running application that shows the target already.
    std::optional<AXElement> windowShowing(ProcessId process, const std::string& raw,
                                           const std::string& target);
    std::vector<AXElement> windowsOf(ProcessId process);
    std::optional<ProcessId> runningProcess(const std::string& bundleID) const;
    // "~" expanded, a "file://" link to a terminal turned into its path.
    std::string targetOf(DeeplinkKind kind, const std::string& text) const;
    void later(Duration delay, std::function<void()> work);
    // One application or typed command less to go; the report goes out after the last.
    void finishOne(const std::shared_ptr<Run>& run);

    AccessibilityPort& accessibility_;
    ApplicationsPort& applications_;
    OpeningPort& opening_;
    MainQueue& queue_;
    std::filesystem::path home_;
    // Delayed work finds it gone once the opener is.
    std::shared_ptr<bool> alive_ = std::make_shared<bool>(true);
};

}  // namespace corvetta
