// desktop_opening.h: Opens the desktop chosen at start, or an empty one, and describes it.
#pragma once

#include <memory>
#include <optional>
#include <string>

#include "app/command_line.h"
#include "foundation/expected.h"
#include "foundation/main_queue.h"
#include "platform/desktop.h"

namespace corvetta {

// Opens the chosen desktop; the error is a sentence for the user, naming the file and the place
// in it that is wrong.
Expected<std::unique_ptr<Desktop>, std::string> openDesktop(const DesktopChoice& choice,
                                                            MainQueue& queue);

// What runs when no desktop was chosen: one display, no other application. Window actions have
// nothing to act on, but everything else starts as usual.
std::unique_ptr<Desktop> openEmptyDesktop(MainQueue& queue);

// "simulated desktop from desk.json: 2 displays, 4 running applications", for the start-up log
// and status queries; without a choice, the empty desktop.
std::string describeDesktop(Desktop& desktop, const std::optional<DesktopChoice>& choice);

}  // namespace corvetta
