// simulated_desktop_file.h: Reads a simulated desktop's JSON file, naming where it is wrong.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include <nlohmann/json_fwd.hpp>

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
// A list of displays as the file's "displays" holds it, for changing a running desktop's
// displays; `place` names the list in the errors ("displays[1].id: duplicate display id 1").
Expected<std::vector<SimulatedDisplay>, DesktopFileError> parseSimulatedDisplays(
    const nlohmann::ordered_json& displays, const std::string& place);
Expected<SimulatedDesktopSetup, DesktopFileError> loadSimulatedDesktop(
    const std::filesystem::path& file);

}  // namespace corvetta
