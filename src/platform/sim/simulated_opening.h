// simulated_opening.h: The simulated desktop's opening port: records what was opened or typed.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/opening.h"
#include "platform/window_list.h"

namespace corvetta {

namespace sim {
class DesktopModel;
}

// One request the port received, as a test reads it back.
struct SimulatedOpeningRequest {
    enum class Kind { open, terminal, typed, program };
    Kind kind = Kind::open;
    // Empty for typed text.
    std::string bundleIdentifier;
    // The link or path, the directory, the text typed, or the program's arguments joined by
    // spaces.
    std::string target;
    // Typed text: the window that had the keyboard focus.
    std::optional<WindowNumber> window;

    bool operator==(const SimulatedOpeningRequest&) const = default;
};

// Opening a link, a path or a terminal directory starts the application when it is installed and
// not running, then gives it a new window titled after the target, in front (as applications
// show what they were asked to open). Typed text goes to the front application's focused window.
// Every request that succeeds is recorded, in order.
class SimulatedOpening final : public OpeningPort {
public:
    explicit SimulatedOpening(std::shared_ptr<sim::DesktopModel> model);

    Expected<void, std::string> open(const std::string& bundleIdentifier,
                                     const std::string& target) override;
    Expected<void, std::string> openTerminal(const std::string& bundleIdentifier,
                                             const std::string& directory) override;
    Expected<void, std::string> typeText(const std::string& text) override;
    Expected<void, std::string> runApplicationProgram(
        const std::string& bundleIdentifier, const std::vector<std::string>& arguments) override;

    const std::vector<SimulatedOpeningRequest>& requests() const { return requests_; }

private:
    Expected<void, std::string> openWindow(SimulatedOpeningRequest request);

    std::shared_ptr<sim::DesktopModel> model_;
    std::vector<SimulatedOpeningRequest> requests_;
};

}  // namespace corvetta
