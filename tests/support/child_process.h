// child_process.h: An isolated environment for tests that start the program's binaries.
#pragma once

// What tests that start one of the program's binaries need to build its command line and
// environment.

#include <filesystem>
#include <string>
#include <vector>

extern char** environ;

namespace corvetta::testing {

// The test's own environment (sanitizer options, locale) with HOME and the XDG folders moved
// inside `root` ("home", "config", "data"), so a child never touches the real home, and without
// DISPLAY, so it never reaches the user's screen: a test that wants an X display adds its own.
inline std::vector<std::string> isolatedEnvironment(const std::filesystem::path& root) {
    std::vector<std::string> environment = {"HOME=" + (root / "home").string(),
                                            "XDG_CONFIG_HOME=" + (root / "config").string(),
                                            "XDG_DATA_HOME=" + (root / "data").string()};
    for (char** variable = environ; *variable; ++variable) {
        const std::string text = *variable;
        if (!text.starts_with("HOME=") && !text.starts_with("XDG_") &&
            !text.starts_with("DISPLAY=")) {
            environment.push_back(text);
        }
    }
    return environment;
}

// The null-terminated pointer array exec and posix_spawn take; `texts` must outlive it.
inline std::vector<char*> nullTerminated(std::vector<std::string>& texts) {
    std::vector<char*> result;
    for (auto& text : texts) {
        result.push_back(text.data());
    }
    result.push_back(nullptr);
    return result;
}

}  // namespace corvetta::testing
