// interface_frontend.h: Starts the interface (Qt's loop, the status item, our windows) on a
// display.
#pragma once

#include <string>

#include "app/frontend.h"

namespace corvetta {

// The frontend that shows the interface on the X display `display`. When that display cannot be
// reached it says so and hands back the poll loop, so the shortcuts and the socket still work.
FrontendFactory interfaceFrontendFactory(std::string display);

}  // namespace corvetta
