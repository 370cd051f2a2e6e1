// simulated_desktop_file.h: Reads a simulated desktop's JSON file, naming where it is wrong.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>

#include "foundation/expected.h"
#include "platform/sim/simulated_desktop_setup.h"

namespace corvetta {

// Why a desktop file was refused: the place ("applications[0].windows[1].frame") and what is wrong
// there; the place is empty for a file that is not JSON at all or cannot be read.
struct DesktopFileError {
    std::string place;
    std::string problem;

    // "applications[0].windows[1].frame: expected [x, y, width, height]".
    std::string message() const;
};

Expected<SimulatedDesktopSetup, DesktopFileError> parseSimulatedDesktop(std::string_view text);
Expected<SimulatedDesktopSetup, DesktopFileError> loadSimulatedDesktop(
    const std::filesystem::path& file);

}  // namespace corvetta
