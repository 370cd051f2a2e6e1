// x11_screens.h: The displays port on X11, over RandR monitors less what panels reserve.
#pragma once

#include <memory>
#include <optional>
#include <vector>

#include "platform/screen.h"
#include "platform/x11/x11_connection.h"
#include "platform/x11/x11_coordinates.h"
#include "platform/x11/x11_properties.h"

namespace corvetta {

// One RandR monitor in root coordinates.
struct X11Monitor {
    xcb_atom_t name = XCB_ATOM_NONE;
    RootRect rect;
    bool primary = false;
    // The first output it shows (several when cloned); none for a monitor defined on no output.
    std::uint32_t output = XCB_NONE;
    int widthMillimetres = 0;
    int heightMillimetres = 0;
};

// What a monitor's output says about the display on it: its EDID and connector.
struct X11DisplayInfo {
    DisplayIdentity identity;
    // The EDID's monitor name, when it gives one.
    std::optional<std::string> productName;
    bool builtIn = false;
};

// The displays port over RandR 1.5 monitors: the RandR primary first (else the first monitor),
// numbered by their names' atoms, which stay the same while the server runs. Each display's
// identity comes from its output's "EDID" and "ConnectorType" properties. Visible frames leave
// out what panels and docks reserve (_NET_WORKAREA and every client's struts). What was read is
// kept until the server announces a change of the monitors, the work area, the client list or a
// client's struts, since every frame conversion needs the monitors; a change that alters the
// displays is announced once per burst of events.
class X11Screens final : public ScreenPort {
public:
    explicit X11Screens(X11Connection& connection);
    ~X11Screens() override;
    X11Screens(const X11Screens&) = delete;
    X11Screens& operator=(const X11Screens&) = delete;

    std::vector<Screen> screens() const override;
    // The monitor holding the centre of the active window, else the primary.
    std::optional<Screen> mainScreen() const override;
    [[nodiscard]] Registration observeScreenParameters(std::function<void()> handler) override;

    // The monitors, primary first; the whole root window when RandR names none.
    std::vector<X11Monitor> monitors() const;
    // The conversions from root coordinates, as the monitors are now.
    X11Coordinates coordinates() const;

private:
    std::vector<X11Monitor> readMonitors() const;
    // One per monitor, in the same order; read with the monitors, since only RandR changes them.
    const std::vector<X11DisplayInfo>& displayInfo() const;
    std::vector<Screen> readScreens() const;
    bool handleEvent(const xcb_generic_event_t& event);
    void announceSoon();
    std::optional<RootRect> workArea() const;

    struct Observers;
    X11Connection& connection_;
    mutable X11Properties properties_;
    std::uint8_t randrFirstEvent_ = 0;
    bool hasRandr_ = false;
    mutable std::optional<std::vector<X11Monitor>> monitors_;
    mutable std::optional<std::vector<X11DisplayInfo>> displayInfo_;
    mutable std::optional<std::vector<Screen>> screens_;
    std::shared_ptr<Observers> observers_;
    Registration events_;
};

}  // namespace corvetta
