// automation_methods_fixture.h: The socket methods of the program's services, for their tests.
#pragma once

#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "automation/automation_methods.h"
#include "windowing/snapping_fixture.h"

namespace corvetta::testing_support {

// The methods over every real window service on a simulated desktop: a 1440x900 primary display
// (25-point menu bar) and a 1920x1080 one to its right. The editor is in front with a window and a
// minimized one, and a File menu whose "New Window" opens "Untitled"; the terminal has no menus;
// notes has a ⌘N item that opens nothing; a helper runs as an accessory; the browser is installed.
class AutomationMethodsTest : public SnappingTest {
protected:
    static constexpr ProcessId kEditor = 100;
    static constexpr ProcessId kTerminal = 200;
    static constexpr ProcessId kNotes = 300;
    static constexpr WindowNumber kMain = 11;

    static SimulatedDesktopSetup setup() {
        SimulatedDesktopSetup s;
        s.displays = {{1, "Built-in", {0, 0, 1440, 900}, {0, 0, 1440, 875}, 2, true},
                      {2,
                       "External",
                       {1440, 0, 1920, 1080},
                       {1440, 0, 1920, 1080},
                       1,
                       false,
                       DisplayIdentity{"E621E1F8-C36C-495A-93FC-0C247A3E6E5F"}}};
        const auto app = [](ProcessId pid, const std::string& name,
                            std::vector<SimulatedWindow> windows) {
            return SimulatedApplication{.pid = pid,
                                        .bundleIdentifier = "com.example." + name,
                                        .name = name,
                                        .windows = std::move(windows)};
        };
        s.applications = {
            app(kEditor, "editor",
                {{.number = kMain, .title = "main.cpp", .frame = {100, 100, 800, 600}},
                 {.number = 12,
                  .title = "old.txt",
                  .frame = {0, 25, 300, 200},
                  .minimized = true}}),
            app(kTerminal, "terminal",
                {{.number = 21, .title = "zsh", .frame = {0, 25, 400, 300}}}),
            app(kNotes, "notes", {}),
            app(400, "helper", {{.number = 41, .frame = {0, 25, 50, 50}}}),
        };
        s.applications[0].menus = {
            {"File",
             {{.title = "New Tab", .key = "T"},
              {.title = "New Window",
               .key = "N",
               .shift = true,
               .opensWindow = SimulatedWindow{.title = "Untitled", .frame = {50, 50, 600, 400}}}}}};
        s.applications[2].menus = {{"Edit", {{.title = "Undo", .key = "Z"}}},
                                   {"File",
                                    {{.title = "New Window", .enabled = false},
                                     {.title = "New Note"},
                                     {.title = "Create", .key = "N"}}}};
        s.applications[3].activationPolicy = ActivationPolicy::accessory;
        s.installed = {app(500, "browser", {{.number = 51, .frame = {0, 25, 900, 700}}})};
        s.frontmost = kEditor;
        return s;
    }

    void SetUp() override { startMethods(setup()); }

    void startMethods(SimulatedDesktopSetup desktopSetup) {
        callbacks.shortcutsNotRegistered = [] {
            return std::vector<std::pair<std::string, std::string>>{{"leftHalf", "⌃⌥←"}};
        };
        start(std::move(desktopSetup));
        methods = rig->services.automationMethods.get();
    }

    // Dispatches without running the queue; the replies arrive in `replies`.
    std::shared_ptr<std::vector<MethodOutcome>> send(const std::string& method,
                                                     const Json& params = Json::object()) {
        auto replies = std::make_shared<std::vector<MethodOutcome>>();
        methods->dispatch(method, params,
                          [replies](MethodOutcome outcome) { replies->push_back(outcome); });
        return replies;
    }

    // Dispatches and runs the queue for a second; exactly one reply must arrive.
    MethodOutcome call(const std::string& method, const Json& params = Json::object()) {
        const auto replies = send(method, params);
        queue.runUntilIdle();
        queue.advance(std::chrono::seconds(1));
        EXPECT_EQ(replies->size(), 1u) << method;
        return replies->empty() ? MethodOutcome(unexpected(std::string("no reply")))
                                : replies->front();
    }

    Json result(const std::string& method, const Json& params = Json::object()) {
        const auto outcome = call(method, params);
        EXPECT_TRUE(outcome.has_value()) << method << ": " << outcome.error();
        return outcome ? *outcome : Json();
    }

    std::string error(const std::string& method, const Json& params = Json::object()) {
        const auto outcome = call(method, params);
        EXPECT_FALSE(outcome.has_value()) << method << " answered " << outcome->dump();
        return outcome ? std::string() : outcome.error();
    }

    AutomationMethods* methods = nullptr;
};

}  // namespace corvetta::testing_support
