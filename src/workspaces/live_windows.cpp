#include "workspaces/live_windows.h"

#include <cstdint>

#include "windowing/ax_reading.h"

namespace corvetta {

namespace {

template <class T>
std::optional<T> valueOf(const Expected<AXValue, AXErrorCode>& read) {
    if (!read) {
        return std::nullopt;
    }
    if (const auto* value = std::get_if<T>(&*read)) {
        return *value;
    }
    return std::nullopt;
}

}  // namespace

Expected<std::vector<LiveWindow>, AXErrorCode> standardWindowsOf(AccessibilityPort& accessibility,
                                                                 ProcessId application) {
    const auto elements = readAttribute<std::vector<AXElement>>(
        accessibility, accessibility.applicationElement(application), AXAttribute::kWindows);
    if (!elements) {
        return unexpected(elements.error());
    }
    std::vector<LiveWindow> windows;
    for (const auto& element : *elements) {
        // One batched read per window: on a display server every read is a round trip.
        const auto values = accessibility.copyMultipleAttributeValues(
            element,
            {AXAttribute::kSubrole, AXAttribute::kPosition, AXAttribute::kSize, AXAttribute::kTitle,
             AXAttribute::kMinimized, AXAttribute::kFullScreen, AXAttribute::kWindowId});
        const auto subrole = valueOf<std::string>(values[0]);
        const auto position = valueOf<Point>(values[1]);
        const auto size = valueOf<Size>(values[2]);
        if ((subrole && *subrole != kStandardWindowSubrole) || !position || !size) {
            continue;
        }
        LiveWindow window{.element = element,
                          .frame = Rect(*position, *size),
                          .title = valueOf<std::string>(values[3]).value_or(""),
                          .isMinimized = valueOf<bool>(values[4]).value_or(false),
                          .isFullscreen = valueOf<bool>(values[5]).value_or(false)};
        if (const auto number = valueOf<std::int64_t>(values[6])) {
            window.number = static_cast<WindowNumber>(*number);
        }
        windows.push_back(std::move(window));
    }
    return windows;
}

std::vector<RunningApplication> runningCopiesOf(const ApplicationsPort& applications,
                                                const std::string& bundleIdentifier) {
    std::vector<RunningApplication> copies;
    for (auto& application : applications.runningApplications()) {
        if (application.bundleIdentifier == bundleIdentifier) {
            copies.push_back(std::move(application));
        }
    }
    return copies;
}

std::vector<LiveWindow> standardWindowsOfApplication(AccessibilityPort& accessibility,
                                                     const ApplicationsPort& applications,
                                                     const std::string& bundleIdentifier) {
    std::vector<LiveWindow> windows;
    for (const auto& copy : runningCopiesOf(applications, bundleIdentifier)) {
        if (auto some = standardWindowsOf(accessibility, copy.processIdentifier)) {
            windows.insert(windows.end(), some->begin(), some->end());
        }
    }
    return windows;
}

}  // namespace corvetta
