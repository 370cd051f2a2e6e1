#include "windowing/accessibility_element.h"

#include <algorithm>
#include <array>
#include <utility>

namespace corvetta {

namespace {

constexpr std::array<std::string_view, 2> kFrameAttributes{AXAttribute::kPosition,
                                                           AXAttribute::kSize};

// An attribute's value when it has the kind the caller expects; a value of another kind is as
// useless as none.
template <class T>
Expected<T, AccessibilityError> typed(const Expected<AXValue, AXErrorCode>& value) {
    if (!value) {
        return unexpected(AccessibilityError::failedToGet(value.error()));
    }
    if (const T* typedValue = std::get_if<T>(&*value)) {
        return *typedValue;
    }
    return unexpected(AccessibilityError{AccessibilityError::Kind::invalidValue});
}

template <class T>
Expected<T, AccessibilityError> readAttribute(AccessibilityPort& port, const AXElement& element,
                                              std::string_view attribute) {
    return typed<T>(port.copyAttributeValue(element, attribute));
}

Expected<void, AccessibilityError> writeAttribute(AccessibilityPort& port, const AXElement& element,
                                                  std::string_view attribute,
                                                  const AXValue& value) {
    const AXErrorCode code = port.setAttributeValue(element, attribute, value);
    if (code != AXErrorCode::success) {
        return unexpected(AccessibilityError::failedToSet(code));
    }
    return {};
}

}  // namespace

AccessibilityElement::AccessibilityElement(AccessibilityPort& accessibility, ScreenPort& screens,
                                           WindowListPort& windowList,
                                           ApplicationsPort& applications, PointerPort& pointer,
                                           LoggingService& logging)
    : accessibility_(accessibility),
      screens_(screens),
      windowList_(windowList),
      applications_(applications),
      pointer_(pointer),
      logger_(logging, "AccessibilityElement", LogCategory::accessibility()) {}

bool AccessibilityElement::isTrusted() const {
    return accessibility_.isProcessTrusted();
}

Expected<AXElement, AccessibilityError> AccessibilityElement::frontmostWindow() {
    const auto application = applications_.frontmostApplication();
    if (!application) {
        return unexpected(AccessibilityError::failedToGet(AXErrorCode::noValue));
    }
    return focusedWindow(application->processIdentifier);
}

Expected<AXElement, AccessibilityError> AccessibilityElement::focusedWindow(ProcessId application) {
    return readAttribute<AXElement>(accessibility_, accessibility_.applicationElement(application),
                                    AXAttribute::kFocusedWindow);
}

Expected<std::vector<AXElement>, AccessibilityError> AccessibilityElement::windows(
    ProcessId application) {
    return readAttribute<std::vector<AXElement>>(
        accessibility_, accessibility_.applicationElement(application), AXAttribute::kWindows);
}

Expected<Rect, AccessibilityError> AccessibilityElement::frame(const AXElement& window) {
    auto values = accessibility_.copyMultipleAttributeValues(
        window, {kFrameAttributes.begin(), kFrameAttributes.end()});
    return frameOf(values[0], values[1]);
}

AccessibilityElement::FrameAndFullScreen AccessibilityElement::frameAndFullScreen(
    const AXElement& window) {
    auto values = accessibility_.copyMultipleAttributeValues(
        window, {kFrameAttributes[0], kFrameAttributes[1], AXAttribute::kFullScreen});
    return {frameOf(values[0], values[1]), typed<bool>(values[2])};
}

Expected<Rect, AccessibilityError> AccessibilityElement::frameOf(
    const Expected<AXValue, AXErrorCode>& positionValue,
    const Expected<AXValue, AXErrorCode>& sizeValue) {
    const auto position = typed<Point>(positionValue);
    if (!position) {
        return unexpected(position.error());
    }
    const auto size = typed<Size>(sizeValue);
    if (!size) {
        logger_.logger().warning("Failed to get current size: " + size.error().description());
        return unexpected(size.error());
    }
    return convertFrame(Rect(*position, *size));
}

Expected<void, AccessibilityError> AccessibilityElement::setFrame(const AXElement& window,
                                                                  const Rect& newFrame) {
    const Rect axFrame = convertFrame(newFrame);
    logger_.debug([&] {
        const auto old = frame(window);
        return "Setting window frame from " +
               (old ? old->description() : old.error().description()) +
               " (AX: " + axFrame.description() + ")" + " to " + newFrame.description();
    });
    // Every write is tried even after one fails: a window that refuses its size may still move.
    const std::array<std::pair<std::string_view, AXValue>, 3> writes{{
        {AXAttribute::kSize, axFrame.size},
        {AXAttribute::kPosition, axFrame.origin},
        {AXAttribute::kSize, axFrame.size},
    }};
    Expected<void, AccessibilityError> outcome;
    for (const auto& [attribute, value] : writes) {
        auto written = writeAttribute(accessibility_, window, attribute, value);
        if (!written && outcome) {
            outcome = std::move(written);
        }
    }
    logger_.debug([&] {
        const auto now = frame(window);
        return "After setting frame, window is at: " +
               (now ? now->description() : now.error().description());
    });
    return outcome;
}

std::optional<Size> AccessibilityElement::minimumSize(const AXElement& window) {
    auto size = readAttribute<Size>(accessibility_, window, AXAttribute::kMinSize);
    if (!size) {
        // Many windows do not publish one; that is no fault of theirs.
        logger_.debug(
            [&] { return "Failed to get minimum size attribute: " + size.error().description(); });
        return std::nullopt;
    }
    return *size;
}

Expected<bool, AccessibilityError> AccessibilityElement::isFullScreen(const AXElement& window) {
    return readAttribute<bool>(accessibility_, window, AXAttribute::kFullScreen);
}

Expected<std::string, AccessibilityError> AccessibilityElement::title(const AXElement& window) {
    return readAttribute<std::string>(accessibility_, window, AXAttribute::kTitle);
}

std::optional<WindowNumber> AccessibilityElement::windowNumber(const AXElement& window) {
    const auto number = readAttribute<std::int64_t>(accessibility_, window, AXAttribute::kWindowId);
    if (!number || *number < 0) {
        return std::nullopt;
    }
    return static_cast<WindowNumber>(*number);
}

Expected<ProcessId, AccessibilityError> AccessibilityElement::process(const AXElement& element) {
    auto pid = accessibility_.processOf(element);
    if (!pid) {
        return unexpected(AccessibilityError::failedToGet(pid.error()));
    }
    return *pid;
}

std::optional<Screen> AccessibilityElement::screenOf(const AXElement& window) {
    const auto windowFrame = frame(window);
    if (!windowFrame) {
        return std::nullopt;
    }
    const Point centre{windowFrame->midX(), windowFrame->midY()};
    for (auto& screen : screens_.screens()) {
        if (screen.frame.contains(centre)) {
            return std::move(screen);
        }
    }
    return std::nullopt;
}

std::optional<AXElement> AccessibilityElement::windowUnderMouse() {
    const Point location = pointer_.mouseLocation();
    logger_.debug(
        [&] { return "Looking for window at mouse location: " + location.description(); });
    // A point is a rectangle without height, so the frame conversion serves it too.
    const Point axLocation = convertFrame(Rect(location, Size{})).origin;
    const auto entries = windowList_.onScreenWindows();
    const auto under = std::find_if(entries.begin(), entries.end(), [&](const auto& entry) {
        return entry.layer == 0 && entry.bounds.contains(axLocation);
    });
    if (under == entries.end()) {
        return std::nullopt;
    }
    const auto candidates = windows(under->ownerPid);
    if (!candidates) {
        return std::nullopt;
    }
    for (const auto& candidate : *candidates) {
        if (windowNumber(candidate) == under->number) {
            return candidate;
        }
    }
    return std::nullopt;
}

Rect AccessibilityElement::convertFrame(const Rect& frame) const {
    if (frame.isNull()) {
        return frame;
    }
    const auto all = screens_.screens();
    if (all.empty()) {
        return frame;
    }
    // The primary display's frame starts at the origin, so its maximum y is its height.
    const double pivot = all.front().frame.maxY();
    return Rect(frame.origin.x, pivot - (frame.origin.y + frame.size.height), frame.size.width,
                frame.size.height);
}

}  // namespace corvetta
