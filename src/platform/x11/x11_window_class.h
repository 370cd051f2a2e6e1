// x11_window_class.h: Reads a window's WM_CLASS, which names its application on X11.
#pragma once

#include <optional>
#include <string>

#include "platform/x11/x11_properties.h"

namespace corvetta {

// WM_CLASS: the instance name and the class name the application gave its window.
struct X11WindowClass {
    std::string instanceName;
    std::string className;
};

// None when the property (WM_CLASS, as read) is absent, empty, or the window is gone.
inline std::optional<X11WindowClass> parseWindowClass(const Expected<std::string, X11Error>& text) {
    if (!text || text->empty()) {
        return std::nullopt;
    }
    // Two NUL-terminated strings, instance then class.
    const auto split = text->find('\0');
    X11WindowClass result;
    result.instanceName = text->substr(0, split);
    if (split != std::string::npos) {
        result.className = text->substr(split + 1);
        if (const auto end = result.className.find('\0'); end != std::string::npos) {
            result.className.resize(end);
        }
    }
    if (result.className.empty()) {
        result.className = result.instanceName;
    }
    return result;
}

inline std::optional<X11WindowClass> readWindowClass(X11Properties& properties,
                                                     xcb_window_t window) {
    return parseWindowClass(properties.bytes(window, XCB_ATOM_WM_CLASS, XCB_ATOM_STRING));
}

}  // namespace corvetta
