// x11_opening.h: The opening port on X11: desktop entries' Exec with files, terminals, XTest
// typing.
#pragma once

#include <string>
#include <vector>

#include "platform/opening.h"
#include "platform/x11/x11_applications.h"
#include "platform/x11/x11_connection.h"
#include "platform/xdg/desktop_entries.h"
#include "platform/xdg/process_launcher.h"

namespace corvetta {

// Links and files open through the application's desktop entry: its Exec with the target in its
// field codes, started without a shell. The entry is the one whose desktop file ID is the bundle
// identifier, else the one the identifier names as a window class would. A terminal opens in a
// directory through its own option (terminalLaunchInDirectory). Text is typed with XTest into
// whatever window has the keyboard focus.
class X11Opening final : public OpeningPort {
public:
    X11Opening(X11Connection& connection, X11Launching launching);

    Expected<void, std::string> open(const std::string& bundleIdentifier,
                                     const std::string& target) override;
    Expected<void, std::string> openTerminal(const std::string& bundleIdentifier,
                                             const std::string& directory) override;
    // Fails, typing nothing, when a character has no key on the keyboard's current mapping.
    Expected<void, std::string> typeText(const std::string& text) override;
    Expected<void, std::string> runApplicationProgram(
        const std::string& bundleIdentifier, const std::vector<std::string>& arguments) override;

private:
    // The entry's Exec expanded for the targets.
    Expected<std::vector<std::string>, std::string> commandOf(
        const std::string& bundleIdentifier, const std::vector<std::string>& targets) const;
    Expected<void, std::string> start(const std::vector<std::string>& arguments,
                                      const std::string& workingDirectory = {});

    X11Connection& connection_;
    DesktopEntries entries_;
    std::vector<std::string> environment_;
    ProcessLauncher launcher_;
};

}  // namespace corvetta
