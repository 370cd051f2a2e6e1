// opening.h: The opening port: links and files opened with an application, terminals, typed text.
#pragma once

#include <string>
#include <vector>

#include "foundation/expected.h"

namespace corvetta {

// The opening port: hands things to other applications as the system's launcher would. Each call
// returns once the request is on its way; the error says why it could not be made. An application
// that is not running is started by the request.
class OpeningPort {
public:
    virtual ~OpeningPort() = default;

    // Opens a link ("https://…", "vscode://…", "file://…") or an absolute path with the
    // application.
    virtual Expected<void, std::string> open(const std::string& bundleIdentifier,
                                             const std::string& target) = 0;
    // Opens a new window of the terminal application, its shell started in `directory` (absolute).
    virtual Expected<void, std::string> openTerminal(const std::string& bundleIdentifier,
                                                     const std::string& directory) = 0;
    // Types the text into the focused window as key presses ("\n" presses Return).
    virtual Expected<void, std::string> typeText(const std::string& text) = 0;
    // Runs the application's own command-line program with the arguments: on macOS the one
    // inside its bundle ("Contents/MacOS/<name>"), on Linux the one its desktop entry starts.
    virtual Expected<void, std::string> runApplicationProgram(
        const std::string& bundleIdentifier, const std::vector<std::string>& arguments) = 0;
};

}  // namespace corvetta
