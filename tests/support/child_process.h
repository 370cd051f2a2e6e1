// child_process.h: An isolated environment for tests that start the program's binaries.
#pragma once

// What tests that start one of the program's binaries need to build its command line and
// environment, and to wait for them with a deadline.

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <string>
#include <vector>

extern char** environ;

namespace corvetta::testing {

// This process's environment, NAME=VALUE texts.
inline std::vector<std::string> currentEnvironment() {
    std::vector<std::string> result;
    for (char** variable = environ; *variable; ++variable) {
        result.emplace_back(*variable);
    }
    return result;
}

// The test's own environment (sanitizer options, locale) with HOME and the XDG folders moved
// inside `root` ("home", "config", "data"), so a child never touches the real home, and without
// DISPLAY, so it never reaches the user's screen: a test that wants an X display adds its own.
inline std::vector<std::string> isolatedEnvironment(const std::filesystem::path& root) {
    auto environment = currentEnvironment();
    std::erase_if(environment, [](const std::string& text) {
        return text.starts_with("HOME=") || text.starts_with("XDG_") ||
               text.starts_with("DISPLAY=");
    });
    environment.insert(environment.begin(), {"HOME=" + (root / "home").string(),
                                             "XDG_CONFIG_HOME=" + (root / "config").string(),
                                             "XDG_DATA_HOME=" + (root / "data").string()});
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

// What is left of `deadline`, for poll; never negative.
inline int millisecondsUntil(std::chrono::steady_clock::time_point deadline) {
    const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(
        deadline - std::chrono::steady_clock::now());
    return static_cast<int>(std::max<long>(0, left.count()));
}

}  // namespace corvetta::testing
