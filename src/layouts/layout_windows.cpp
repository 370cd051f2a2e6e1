// Which windows a layout may place: the collection half of LayoutService.

#include <cmath>
#include <optional>

#include "layouts/layout_service.h"
#include "windowing/excluded_applications.h"

namespace corvetta {

namespace {

// A window that does not tell its number is the listed window whose frame is this close on
// every side (strictly less).
constexpr double kFrameMatchTolerance = 5;

bool framesAgree(const Rect& a, const Rect& b) {
    return std::fabs(a.minX() - b.minX()) < kFrameMatchTolerance &&
           std::fabs(a.minY() - b.minY()) < kFrameMatchTolerance &&
           std::fabs(a.width() - b.width()) < kFrameMatchTolerance &&
           std::fabs(a.height() - b.height()) < kFrameMatchTolerance;
}

bool isUsableBounds(const Rect& bounds) {
    return !bounds.isNull() && std::isfinite(bounds.minX()) && std::isfinite(bounds.minY()) &&
           std::isfinite(bounds.width()) && std::isfinite(bounds.height());
}

// The window list's bounds (top-left origin) are compared with the display frames (bottom-left
// origin) as they are: on the primary display both agree in x, and this only decides which
// display a window belongs to. Kept so, as the platform's own layout did.
std::optional<std::size_t> displayOf(const Rect& bounds, const std::vector<Screen>& displays) {
    const Point centre{bounds.midX(), bounds.midY()};
    for (std::size_t i = 0; i < displays.size(); ++i) {
        if (displays[i].frame.contains(centre)) {
            return i;
        }
    }
    for (std::size_t i = 0; i < displays.size(); ++i) {
        if (displays[i].frame.intersects(bounds)) {
            return i;
        }
    }
    return std::nullopt;
}

std::optional<Rect> accessibilityFrame(const Expected<AXValue, AXErrorCode>& position,
                                       const Expected<AXValue, AXErrorCode>& size) {
    const auto* origin = position ? std::get_if<Point>(&*position) : nullptr;
    const auto* extent = size ? std::get_if<Size>(&*size) : nullptr;
    if (origin == nullptr || extent == nullptr) {
        return std::nullopt;
    }
    return Rect(*origin, *extent);
}

}  // namespace

bool LayoutService::isExcluded(ProcessId process,
                               std::unordered_map<ProcessId, bool>& known) const {
    if (const auto found = known.find(process); found != known.end()) {
        return found->second;
    }
    const auto application = ports_.applications.runningApplication(process);
    const bool excluded =
        !application || !application->bundleIdentifier ||
        isExcludedApplication(*application->bundleIdentifier, ports_.applications, defaults_);
    known.emplace(process, excluded);
    return excluded;
}

LayoutService::WindowMap LayoutService::windowMap(ProcessId process,
                                                  const std::vector<WindowListEntry>& listed) {
    WindowMap map;
    const auto windows = ports_.accessibility.copyAttributeValue(
        ports_.accessibility.applicationElement(process), AXAttribute::kWindows);
    const auto* elements = windows ? std::get_if<std::vector<AXElement>>(&*windows) : nullptr;
    if (elements == nullptr) {
        logger.warning("kAXWindowsAttribute failed for pid " + std::to_string(process) +
                       (windows ? std::string() : ": " + describe(windows.error())));
        return map;
    }
    std::vector<AXElement> unnumbered;
    for (const auto& element : *elements) {
        const auto number =
            ports_.accessibility.copyAttributeValue(element, AXAttribute::kWindowId);
        const auto* value = number ? std::get_if<std::int64_t>(&*number) : nullptr;
        if (value != nullptr && *value >= 0 && *value <= UINT32_MAX) {
            map.emplace(static_cast<WindowNumber>(*value), element);
        } else {
            unnumbered.push_back(element);
        }
    }
    for (const auto& element : unnumbered) {
        const auto values = ports_.accessibility.copyMultipleAttributeValues(
            element, {AXAttribute::kPosition, AXAttribute::kSize});
        const auto frame = accessibilityFrame(values.at(0), values.at(1));
        if (!frame) {
            continue;
        }
        for (const auto& entry : listed) {
            if (entry.ownerPid == process && !map.contains(entry.number) &&
                framesAgree(entry.bounds, *frame)) {
                map.emplace(entry.number, element);
                break;
            }
        }
    }
    return map;
}

std::vector<EligibleWindow> LayoutService::eligibleWindows(
    std::optional<std::vector<Screen>> displays) {
    if (!displays) {
        displays = targetDisplays(false);
    }
    std::vector<EligibleWindow> result;
    const auto listed = ports_.windowList.onScreenWindows();
    // Built once per application and run: most applications own several listed windows.
    std::unordered_map<ProcessId, WindowMap> maps;
    std::unordered_map<ProcessId, bool> excluded;
    for (const auto& entry : listed) {
        if (entry.layer != 0 || entry.ownerPid <= 0 || entry.number == 0 ||
            !isUsableBounds(entry.bounds)) {
            continue;
        }
        const auto display = displayOf(entry.bounds, *displays);
        if (!display || isExcluded(entry.ownerPid, excluded)) {
            continue;
        }
        auto map = maps.find(entry.ownerPid);
        if (map == maps.end()) {
            map = maps.emplace(entry.ownerPid, windowMap(entry.ownerPid, listed)).first;
        }
        const auto found = map->second.find(entry.number);
        if (found == map->second.end()) {
            logger.info("[Layout] ✗ cgWin=" + std::to_string(entry.number));
            continue;
        }
        logger.info("[Layout] ✓ cgWin=" + std::to_string(entry.number));
        result.push_back(EligibleWindow{(*displays)[*display], found->second});
    }
    logger.info(std::to_string(result.size()) + " eligible window(s) for layout");
    return result;
}

}  // namespace corvetta
