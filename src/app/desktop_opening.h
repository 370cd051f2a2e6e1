#pragma once

#include <memory>
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

// "simulated desktop from desk.json: 2 displays, 4 applications", for the start-up log.
std::string describeDesktop(Desktop& desktop, const DesktopChoice& choice);

}  // namespace corvetta
