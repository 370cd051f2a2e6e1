#include "windowing/screen_detection_service.h"

#include <cmath>
#include <utility>

namespace corvetta {

namespace {

// Displays whose vertical centres are closer than this count as side by side.
constexpr double kSideBySideTolerance = 50;

// Insertion sort: the reading order is not a strict weak ordering when displays overlap in
// unusual ways, and the standard sorts may then misbehave. Stable, and the lists are tiny.
void sortInReadingOrder(std::vector<Screen>& screens) {
    for (std::size_t i = 1; i < screens.size(); ++i) {
        for (std::size_t j = i;
             j > 0 && ScreenDetectionService::readsBefore(screens[j], screens[j - 1]); --j) {
            std::swap(screens[j], screens[j - 1]);
        }
    }
}

}  // namespace

ScreenDetectionService::ScreenDetectionService(ScreenPort& screens, LoggingService& logging)
    : screens_(screens),
      logger_(logging, "ScreenDetectionService", LogCategory::windowPositioning()) {
    // The registration is dropped with the service, so the handler never outlives it.
    screenObserver_ = screens_.observeScreenParameters([this] { cachedOrderedScreens_.reset(); });
}

bool ScreenDetectionService::readsBefore(const Screen& a, const Screen& b) {
    const Rect& fa = a.frame;
    const Rect& fb = b.frame;
    if (fb.maxY() <= fa.minY()) {
        return true;
    }
    if (fa.maxY() <= fb.minY()) {
        return false;
    }
    const double d = fa.midY() - fb.midY();
    if (std::fabs(d) > kSideBySideTolerance) {
        return d > 0;
    }
    return fa.minX() < fb.minX();
}

const std::vector<Screen>& ScreenDetectionService::orderedScreens() {
    if (!cachedOrderedScreens_) {
        auto screens = screens_.screens();
        sortInReadingOrder(screens);
        cachedOrderedScreens_ = std::move(screens);
    }
    return *cachedOrderedScreens_;
}

Rect ScreenDetectionService::flipped(const Rect& frame) const {
    if (frame.isNull()) {
        return frame;
    }
    const auto all = screens_.screens();
    const double pivot = all.empty() ? 0 : all.front().frame.maxY();
    return Rect(frame.origin.x, pivot - (frame.origin.y + frame.size.height), frame.size.width,
                frame.size.height);
}

std::optional<Screen> ScreenDetectionService::screenContaining(const Rect& frame) {
    // Flipped here and flipped back by the walk: the frame is tested as the caller gave it.
    return screenContainingAccessibilityFrame(flipped(frame));
}

std::optional<Screen> ScreenDetectionService::screenContainingAccessibilityFrame(
    const Rect& accessibilityFrame) {
    const Rect frame = flipped(accessibilityFrame);
    const auto& ordered = orderedScreens();
    std::optional<Screen> answer;
    for (const auto& screen : ordered) {
        if (screen.frame.contains(frame)) {
            answer = screen;
            break;
        }
    }
    if (!answer) {
        answer = screens_.mainScreen();
        const double area = frame.isNull() ? 0 : frame.area();
        double bestShare = 0;
        for (const auto& screen : ordered) {
            const Rect shared = screen.frame.intersection(frame);
            if (shared.isEmpty() || area <= 0) {
                continue;
            }
            const double share = shared.area() / area;
            if (share > bestShare) {
                bestShare = share;
                answer = screen;
            }
        }
    }
    logger_.info([&] {
        return "Selected screen: " + (answer ? answer->description() : std::string("none"));
    });
    return answer;
}

}  // namespace corvetta
