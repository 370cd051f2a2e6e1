#include "workspaces/workspace_capture.h"

#include <algorithm>
#include <cctype>
#include <limits>
#include <map>
#include <optional>
#include <unordered_map>

#include "windowing/new_window_item.h"
#include "workspaces/display_arrangement_capture.h"
#include "workspaces/display_migration.h"
#include "workspaces/live_windows.h"

namespace corvetta {

namespace {

std::string lowered(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return text;
}

bool containsIgnoringCase(const std::vector<std::string>& list, const std::string& text) {
    const std::string key = lowered(text);
    return std::any_of(list.begin(), list.end(),
                       [&](const std::string& entry) { return lowered(entry) == key; });
}

// The displays in accessibility space, with the ids windows name them by.
struct DisplaysNow {
    std::vector<Rect> frames;
    std::vector<std::string> identifiers;

    explicit DisplaysNow(const std::vector<Screen>& screens) {
        for (const auto& screen : screens) {
            const double pivot = screens.front().frame.height();
            frames.emplace_back(screen.frame.minX(), pivot - screen.frame.maxY(),
                                screen.frame.width(), screen.frame.height());
            identifiers.push_back(monitorIdentifier(displayFingerprint(screen, screens.front())));
        }
    }

    std::optional<std::string> identifierOf(const Rect& window) const {
        const auto index = displayHolding(window, frames);
        return index ? std::optional<std::string>(identifiers[*index]) : std::nullopt;
    }
};

}  // namespace

struct WorkspaceCapture::Candidate {
    WindowInfo info;
    std::optional<WindowNumber> number;
};

WorkspaceCapture::WorkspaceCapture(AccessibilityPort& accessibility, WindowListPort& windowList,
                                   ApplicationsPort& applications, ScreenPort& screens,
                                   Preferences& defaults, WorkspaceService& workspaceService,
                                   const Clock& clock, LoggingService& logging)
    : accessibility_(accessibility),
      windowList_(windowList),
      applications_(applications),
      screens_(screens),
      defaults_(defaults),
      workspaceService_(workspaceService),
      clock_(clock),
      logger(logging, kServiceName) {}

bool WorkspaceCapture::isExcluded(const std::string& bundleIdentifier) const {
    return isExcludedApplication(bundleIdentifier, applications_, defaults_);
}

std::vector<RunningApplication> WorkspaceCapture::applicationsToCapture(
    const std::vector<std::string>& bundleIdentifiers) const {
    std::vector<RunningApplication> result;
    const ProcessId self = applications_.currentApplication().processIdentifier;
    for (auto& application : applications_.runningApplications()) {
        if (application.activationPolicy != ActivationPolicy::regular ||
            application.processIdentifier == self || !application.bundleIdentifier ||
            isExcluded(*application.bundleIdentifier) ||
            (!bundleIdentifiers.empty() &&
             !containsIgnoringCase(bundleIdentifiers, *application.bundleIdentifier))) {
            continue;
        }
        result.push_back(std::move(application));
    }
    return result;
}

void WorkspaceCapture::addWindowsOf(const RunningApplication& application,
                                    std::vector<Candidate>& windows,
                                    NewWindowItems& newWindowItems) {
    const auto live = standardWindowsOf(accessibility_, application.processIdentifier);
    if (!live) {
        logger.warning("Skipping " + application.description() +
                       ": cannot read its windows: " + describe(live.error()));
        return;
    }
    const std::string& bundleIdentifier = *application.bundleIdentifier;
    int index = static_cast<int>(std::count_if(windows.begin(), windows.end(), [&](const auto& w) {
        return w.info.appBundleIdentifier == bundleIdentifier;
    }));
    if (live->empty()) {
        return;
    }
    // Once per application, not per process: every copy of it has the same menus and the same
    // desktop entry, and finding the entry reads the installed ones from disk.
    auto known = newWindowItems.find(bundleIdentifier);
    if (known == newWindowItems.end()) {
        auto found =
            findNewWindowItem(accessibility_, applications_, application.processIdentifier);
        if (!found) {
            logger.debug("No new-window item of " + application.description() + ": " +
                         found.error());
        }
        known = newWindowItems.emplace(bundleIdentifier, found ? std::move(*found) : std::nullopt)
                    .first;
    }
    const auto& newWindowItem = known->second;
    for (const auto& window : *live) {
        Candidate candidate;
        WindowInfo& info = candidate.info;
        info.frame = window.frame;
        info.appBundleIdentifier = bundleIdentifier;
        info.isFullscreen = window.isFullscreen;
        if (window.isMinimized) {
            info.isMinimized = true;
        }
        info.windowTitle = window.title;
        info.windowIndex = index++;
        if (newWindowItem) {
            info.newWindowMenuName = newWindowItem->menuName;
            info.newWindowItemTitle = newWindowItem->itemTitle;
        }
        candidate.number = window.number;
        windows.push_back(std::move(candidate));
    }
}

std::vector<WindowInfo> WorkspaceCapture::captureWindows(
    const std::vector<std::string>& bundleIdentifiers) {
    const auto applications = applicationsToCapture(bundleIdentifiers);
    std::vector<Candidate> candidates;
    NewWindowItems newWindowItems;
    for (const auto& application : applications) {
        addWindowsOf(application, candidates, newWindowItems);
    }

    // The window server knows the stacking of what is on screen; minimized windows, and those it
    // does not list, follow in the applications' own order.
    std::unordered_map<WindowNumber, std::size_t> stacking;
    const auto numbers = windowList_.windowNumbersFrontToBack();
    for (std::size_t i = 0; i < numbers.size(); ++i) {
        stacking.emplace(numbers[i], i);
    }
    const auto placeOf = [&](const Candidate& candidate) {
        const auto found = candidate.number && !candidate.info.isMinimized
                               ? stacking.find(*candidate.number)
                               : stacking.end();
        return found == stacking.end() ? std::numeric_limits<std::size_t>::max() : found->second;
    };
    std::stable_sort(
        candidates.begin(), candidates.end(),
        [&](const Candidate& a, const Candidate& b) { return placeOf(a) < placeOf(b); });

    const DisplaysNow displays(screens_.screens());
    std::vector<WindowInfo> windows;
    for (auto& candidate : candidates) {
        candidate.info.zOrder = static_cast<int>(windows.size());
        candidate.info.monitorID = displays.identifierOf(candidate.info.frame);
        windows.push_back(std::move(candidate.info));
    }
    logger.info("Captured " + std::to_string(windows.size()) + " window(s) of " +
                std::to_string(applications.size()) + " application(s)");
    return windows;
}

Expected<Workspace, std::string> WorkspaceCapture::captureWorkspace(
    const std::string& name, const std::vector<std::string>& bundleIdentifiers) {
    const auto spaceId = workspaceService_.activeSpaceId();
    // Checked before capturing, so a taken name costs no walk through every window.
    if (auto valid = workspaceService_.validateName(name, std::nullopt, spaceId); !valid) {
        return unexpected(valid.error());
    }
    return saveWorkspace(
        {.name = name, .spaceId = spaceId, .windows = captureWindows(bundleIdentifiers)});
}

Expected<Workspace, std::string> WorkspaceCapture::saveWorkspace(WorkspaceDraft draft) {
    auto validName = workspaceService_.validateName(draft.name, std::nullopt, draft.spaceId);
    if (!validName) {
        return unexpected(validName.error());
    }
    if (draft.windows.empty()) {
        return unexpected(std::string(kNothingToCapture));
    }
    Workspace workspace;
    workspace.id = Uuid::random();
    workspace.name = std::move(*validName);
    workspace.windowInfos = std::move(draft.windows);
    workspace.displayArrangement = captureDisplayArrangement(screens_.screens(), clock_.now());
    // Off is stored as absent, as records written before the options existed have it.
    if (draft.closeNonWorkspaceWindows) {
        workspace.closeNonWorkspaceWindows = true;
    }
    if (draft.skipLaunchMissingApps) {
        workspace.skipLaunchMissingApps = true;
    }
    workspace.spaceId = draft.spaceId;
    workspaceService_.add(workspace);
    return workspace;
}

std::string WorkspaceCapture::applicationName(const std::string& bundleIdentifier) const {
    for (const auto& application : applications_.runningApplications()) {
        if (application.bundleIdentifier == bundleIdentifier &&
            !application.localizedName.empty()) {
            return application.localizedName;
        }
    }
    return bundleIdentifier;
}

}  // namespace corvetta
