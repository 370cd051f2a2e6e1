#include "workspaces/deeplink_opener.h"

#include <algorithm>
#include <map>
#include <variant>

#include "foundation/names.h"
#include "workspaces/deeplink_profiles.h"

namespace corvetta {

namespace {

// Attributes a Mac window names its document and page by; other desktops have neither.
constexpr std::string_view kDocumentAttribute = "AXDocument";
constexpr std::string_view kURLAttribute = "AXURL";
constexpr std::string_view kFileScheme = "file://";

std::string withoutTrailingSlash(std::string text) {
    while (text.size() > 1 && text.back() == '/') {
        text.pop_back();
    }
    return text;
}

std::string withoutFileScheme(const std::string& text) {
    if (!text.starts_with(kFileScheme)) {
        return text;
    }
    auto path = text.substr(kFileScheme.size());
    if (path.starts_with("localhost/")) {
        path = path.substr(std::string_view("localhost").size());
    }
    return path;
}

// " — ", " - ", ": " and " | " separate what a title shows: "myapp — Visual Studio Code",
// "me@host: ~/src".
std::vector<std::string> titleSegments(const std::string& title) {
    std::vector<std::string> segments{title};
    for (const std::string_view separator : {" — ", " - ", ": ", " | "}) {
        std::vector<std::string> split;
        for (const auto& segment : segments) {
            std::size_t start = 0;
            for (auto at = segment.find(separator); at != std::string::npos;
                 at = segment.find(separator, start)) {
                split.push_back(segment.substr(start, at - start));
                start = at + separator.size();
            }
            split.push_back(segment.substr(start));
        }
        segments = std::move(split);
    }
    return segments;
}

}  // namespace

struct DeeplinkOpener::Run {
    DeeplinkReport report;
    // Applications and typed commands still to go; `done` follows the last.
    int outstanding = 0;
    std::function<void(const DeeplinkReport&)> done;
};

DeeplinkOpener::DeeplinkOpener(AccessibilityPort& accessibility, ApplicationsPort& applications,
                               OpeningPort& opening, MainQueue& queue, LoggingService& logging,
                               std::filesystem::path home)
    : logger(logging, "DeeplinkOpener", LogCategory::deeplink()),
      accessibility_(accessibility),
      applications_(applications),
      opening_(opening),
      queue_(queue),
      home_(std::move(home)) {}

DeeplinkOpener::~DeeplinkOpener() {
    *alive_ = false;
}

void DeeplinkOpener::later(Duration delay, std::function<void()> work) {
    const std::weak_ptr<bool> alive = alive_;
    const auto guarded = [alive, work = std::move(work)] {
        if (const auto flag = alive.lock(); flag && *flag) {
            work();
        }
    };
    if (delay <= Duration::zero()) {
        queue_.post(guarded);
    } else {
        queue_.postDelayed(delay, guarded);
    }
}

void DeeplinkOpener::finishOne(const std::shared_ptr<Run>& run) {
    if (--run->outstanding == 0) {
        queue_.post([run] { run->done(run->report); });
    }
}

void DeeplinkOpener::openDeeplinks(const Workspace& workspace,
                                   std::function<void(const DeeplinkReport&)> done) {
    auto run = std::make_shared<Run>();
    run->done = std::move(done);
    // Applications in the order the workspace lists their windows, then any others by key.
    std::vector<std::string> order;
    for (const auto& window : workspace.windowInfos) {
        if (window.appBundleIdentifier &&
            std::find(order.begin(), order.end(), *window.appBundleIdentifier) == order.end()) {
            order.push_back(*window.appBundleIdentifier);
        }
    }
    std::map<std::string, std::vector<DeeplinkEntry>> byApplication;
    for (const auto& [key, raw] :
         workspace.appDeeplinks.value_or(std::map<std::string, std::string>{})) {
        auto entry = deeplinkEntry(key, trimmedName(raw));
        if (!entry) {
            logger.warning("🔗 Skipping deeplink with unreadable key '" + key + "'");
            ++run->report.skipped;
            continue;
        }
        if (entry->raw.empty()) {
            logger.warning("🔗 [" + key + "] Skipping empty deeplink");
            ++run->report.skipped;
            continue;
        }
        if (std::find(order.begin(), order.end(), entry->bundleID) == order.end()) {
            order.push_back(entry->bundleID);
        }
        byApplication[entry->bundleID].push_back(std::move(*entry));
    }
    std::erase_if(order,
                  [&](const std::string& bundle) { return !byApplication.contains(bundle); });
    if (order.empty()) {
        queue_.post([run] { run->done(run->report); });
        return;
    }
    run->outstanding = static_cast<int>(order.size());
    for (std::size_t turn = 0; turn < order.size(); ++turn) {
        auto entries = std::move(byApplication[order[turn]]);
        std::stable_sort(entries.begin(), entries.end(), [](const auto& a, const auto& b) {
            return a.windowIndex < b.windowIndex;
        });
        later(kStagger * static_cast<int>(turn),
              [this, run, entries = std::move(entries)] { dispatchApplication(run, entries); });
    }
    logger.info("🔗 All deeplinks scheduled (staggered per-app)");
}

void DeeplinkOpener::dispatchApplication(const std::shared_ptr<Run>& run,
                                         const std::vector<DeeplinkEntry>& entries) {
    const auto& bundle = entries.front().bundleID;
    const auto process = runningProcess(bundle);
    if (!process) {
        logger.info("🔗 [" + bundle + "] app not running — dispatch will launch it");
    }
    for (const auto& entry : entries) {
        dispatch(run, entry, process);
    }
    finishOne(run);
}

void DeeplinkOpener::dispatch(const std::shared_ptr<Run>& run, const DeeplinkEntry& entry,
                              std::optional<ProcessId> process) {
    const auto kind = classifyDeeplink(entry.bundleID, entry.raw);
    const std::string prefix = "🔗 [" + entry.bundleID + "] ";
    if (kind == DeeplinkKind::terminalCommand) {
        typeCommand(run, entry, entry.raw, process);
        return;
    }
    const auto target = targetOf(kind, entry.raw);
    if (process) {
        if (const auto window = windowShowing(*process, entry.raw, target)) {
            accessibility_.performAction(*window, AXAction::kRaise);
            applications_.activate(*process);
            logger.info(prefix + "'" + entry.raw + "' — raised existing window, skipped dispatch");
            ++run->report.raised;
            return;
        }
    }
    if (entry.raw.starts_with("http://")) {
        logger.warning(prefix + "Restoring non-https URL '" + entry.raw +
                       "' — verify this is intentional");
    }
    const auto opened = kind == DeeplinkKind::terminalCwd
                            ? opening_.openTerminal(entry.bundleID, target)
                            : opening_.open(entry.bundleID, target);
    if (!opened) {
        logger.error(prefix + "Could not open '" + target + "': " + opened.error());
        ++run->report.failed;
        return;
    }
    logger.info(prefix + "Opened '" + target + "'");
    ++run->report.opened;
}

void DeeplinkOpener::typeCommand(const std::shared_ptr<Run>& run, const DeeplinkEntry& entry,
                                 const std::string& command, std::optional<ProcessId> process) {
    const std::string prefix = "🔗 [" + entry.bundleID + "] ";
    if (isWezTerm(entry.bundleID) && process) {
        // Its own program reaches the focused pane without the keyboard; "--no-paste" sends the
        // text as typed, so the line feed runs it.
        const auto sent = opening_.runApplicationProgram(
            entry.bundleID, {"cli", "send-text", "--no-paste", command + "\n"});
        if (!sent) {
            logger.error(prefix + "wezterm cli send-text failed: " + sent.error());
            ++run->report.failed;
            return;
        }
        logger.info(prefix + "wezterm cli send-text '" + command + "'");
        ++run->report.opened;
        return;
    }
    ++run->outstanding;
    if (process) {
        waitForWindow(run, entry, command, *process, Duration::zero());
        return;
    }
    const std::weak_ptr<bool> alive = alive_;
    applications_.launchApplication(
        entry.bundleID, [this, alive, run, entry, command, prefix](const auto& launched) {
            if (const auto flag = alive.lock(); !flag || !*flag) {
                return;
            }
            if (!launched) {
                logger.error(prefix + "Could not launch to type '" + command +
                             "': " + launched.error().message);
                ++run->report.failed;
                finishOne(run);
                return;
            }
            if (isWezTerm(entry.bundleID)) {
                // Now that it runs, its program can take the text.
                typeCommand(run, entry, command, launched->processIdentifier);
                finishOne(run);
                return;
            }
            waitForWindow(run, entry, command, launched->processIdentifier, Duration::zero());
        });
}

void DeeplinkOpener::waitForWindow(const std::shared_ptr<Run>& run, const DeeplinkEntry& entry,
                                   const std::string& command, ProcessId process, Duration waited) {
    const auto windows = windowsOf(process);
    if (!windows.empty()) {
        const auto index = static_cast<std::size_t>(entry.windowIndex);
        focusAndType(run, entry, command, process, windows[index < windows.size() ? index : 0], 1);
        return;
    }
    if (waited >= kWindowWait) {
        logger.error("🔗 [" + entry.bundleID + "] No window to type '" + command + "' into");
        ++run->report.failed;
        finishOne(run);
        return;
    }
    later(kWindowPoll, [this, run, entry, command, process, waited] {
        waitForWindow(run, entry, command, process, waited + kWindowPoll);
    });
}

void DeeplinkOpener::focusAndType(const std::shared_ptr<Run>& run, const DeeplinkEntry& entry,
                                  const std::string& command, ProcessId process,
                                  const AXElement& window, int attempt) {
    accessibility_.performAction(window, AXAction::kRaise);
    applications_.activate(process);
    later(kFocusSettle, [this, run, entry, command, process, window, attempt] {
        const std::string prefix = "🔗 [" + entry.bundleID + "] ";
        // Keystrokes go wherever the focus is: only ever into the window meant for them. A window
        // the application opened meanwhile may have taken the focus; the window is raised again.
        const auto front = applications_.frontmostApplication();
        const auto focused = accessibility_.copyAttributeValue(
            accessibility_.applicationElement(process), AXAttribute::kFocusedWindow);
        const auto* focusedWindow = focused ? std::get_if<AXElement>(&*focused) : nullptr;
        const bool inFront = front && front->processIdentifier == process;
        if (inFront && (focusedWindow == nullptr || *focusedWindow != window) &&
            attempt < kFocusAttempts) {
            focusAndType(run, entry, command, process, window, attempt + 1);
            return;
        }
        if (!inFront || focusedWindow == nullptr || *focusedWindow != window) {
            logger.error(prefix + "Focus moved to another window; not typing '" + command + "'");
            ++run->report.failed;
        } else if (const auto typed = opening_.typeText(command + "\n"); !typed) {
            logger.error(prefix + "Could not type '" + command + "': " + typed.error());
            ++run->report.failed;
        } else {
            logger.info(prefix + "CGEvent keystrokes '" + command + "'");
            ++run->report.opened;
        }
        finishOne(run);
    });
}

std::vector<AXElement> DeeplinkOpener::windowsOf(ProcessId process) {
    const auto windows = accessibility_.copyAttributeValue(
        accessibility_.applicationElement(process), AXAttribute::kWindows);
    if (!windows) {
        return {};
    }
    const auto* list = std::get_if<std::vector<AXElement>>(&*windows);
    return list ? *list : std::vector<AXElement>{};
}

std::optional<AXElement> DeeplinkOpener::windowShowing(ProcessId process, const std::string& raw,
                                                       const std::string& target) {
    const auto wanted = withoutTrailingSlash(withoutFileScheme(target));
    const auto lastComponent = std::filesystem::path(wanted).filename().string();
    const bool isPath = wanted.starts_with('/');
    const auto textOf = [&](const AXElement& window, std::string_view attribute) {
        const auto value = accessibility_.copyAttributeValue(window, attribute);
        const auto* text = value ? std::get_if<std::string>(&*value) : nullptr;
        return text ? *text : std::string();
    };
    for (const auto& window : windowsOf(process)) {
        for (const auto attribute : {kDocumentAttribute, kURLAttribute}) {
            const auto shown = textOf(window, attribute);
            if (!shown.empty() && withoutTrailingSlash(withoutFileScheme(shown)) == wanted) {
                return window;
            }
        }
        const auto title = textOf(window, AXAttribute::kTitle);
        if (title.empty()) {
            continue;
        }
        if (title.find(raw) != std::string::npos || title.find(wanted) != std::string::npos) {
            return window;
        }
        if (isPath && !lastComponent.empty()) {
            const auto segments = titleSegments(title);
            if (std::find(segments.begin(), segments.end(), lastComponent) != segments.end()) {
                return window;
            }
        }
    }
    return std::nullopt;
}

std::optional<ProcessId> DeeplinkOpener::runningProcess(const std::string& bundleID) const {
    for (const auto& application : applications_.runningApplications()) {
        if (application.bundleIdentifier == bundleID) {
            return application.processIdentifier;
        }
    }
    return std::nullopt;
}

std::string DeeplinkOpener::targetOf(DeeplinkKind kind, const std::string& text) const {
    if (kind == DeeplinkKind::browserURL || kind == DeeplinkKind::appURL) {
        return text;
    }
    std::string path = kind == DeeplinkKind::terminalCwd ? withoutFileScheme(text) : text;
    if (path == "~") {
        return home_.string();
    }
    if (path.starts_with("~/")) {
        return (home_ / path.substr(2)).string();
    }
    return path;
}

}  // namespace corvetta
