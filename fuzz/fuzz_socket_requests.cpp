// Whatever bytes a client sends, the server's reading side cuts them into lines, answers what is
// not a request with the fixed error, and hands the rest to the real methods on a simulated
// desktop. Every line must get exactly one answer, and every answer must be one JSON object on
// one line that carries an id; nothing may crash.

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

#include "app/service_root.h"
#include "automation/automation_methods.h"
#include "automation/line_reader.h"
#include "automation/socket_request.h"
#include "foundation/manual_queue.h"
#include "platform/sim/simulated_desktop.h"
#include "support/manual_plumbing.h"

namespace corvetta {
namespace {

SimulatedDesktopSetup fuzzDesktop() {
    SimulatedDesktopSetup setup;
    setup.displays = {{1, "Built-in", {0, 0, 1440, 900}, {0, 0, 1440, 875}, 2, true},
                      {2, "External", {1440, 0, 1920, 1080}, {1440, 0, 1920, 1080}, 1, false}};
    SimulatedApplication editor{101, "com.example.editor", "Editor"};
    editor.windows = {{.number = 11,
                       .title = "main.cpp",
                       .frame = {100, 100, 800, 600},
                       .minSize = Size{300, 200}},
                      {.number = 12,
                       .title = "notes.txt",
                       .frame = {0, 25, 400, 300},
                       .applyDelay = std::chrono::milliseconds(300)}};
    SimulatedMenuItem newWindow{.title = "New Window", .key = "N"};
    newWindow.opensWindow = SimulatedWindow{.title = "Untitled", .frame = {50, 50, 600, 400}};
    editor.menus = {{"File", {newWindow}}};
    setup.applications = {editor};
    setup.installed = {{201,
                        "com.example.browser",
                        "Browser",
                        ActivationPolicy::regular,
                        false,
                        false,
                        {{.number = 21, .frame = {0, 25, 900, 700}}}}};
    setup.frontmost = 101;
    return setup;
}

// The methods of the program's services on a fresh desktop, so each input runs alone.
struct MethodsOnADesktop {
    testing::ManualPlumbing plumbing;
    ManualQueue& queue = plumbing.queue;
    SimulatedDesktop desktop{fuzzDesktop(), queue};
    ServiceRoot services{plumbing.on(desktop, "simulated fuzz desktop")};
    AutomationMethods& methods = *services.automationMethods;
};

void require(bool condition) {
    if (!condition) {
        std::abort();
    }
}

void checkAnswerLine(const std::string& line) {
    require(!line.empty() && line.back() == '\n' && line.find('\n') == line.size() - 1);
    const auto answer = parseJson(line);
    require(answer && answer->is_object() && answer->contains("id") && (*answer)["id"].is_string());
    require(answer->contains("result") != answer->contains("error"));
}

// Answers one line as a connection thread and the main queue would together.
void answerLine(MethodsOnADesktop& rig, const std::string& line) {
    auto request = parseSocketRequest(line);
    if (!request) {
        checkAnswerLine(refusalResponseLine(request.error()));
        return;
    }
    int replies = 0;
    std::optional<MethodOutcome> outcome;
    try {
        rig.methods.dispatch(request->method, request->params, [&](MethodOutcome result) {
            ++replies;
            outcome.emplace(std::move(result));
        });
    } catch (const std::exception& e) {
        ++replies;
        outcome.emplace(unexpected(std::string(e.what())));
    }
    // Every wait of a method is bounded well within this.
    rig.queue.runUntilIdle();
    rig.queue.advance(std::chrono::seconds(30));
    require(replies == 1);
    checkAnswerLine(outcomeResponseLine(request->id, *outcome));
}

}  // namespace
}  // namespace corvetta

// One request runs a large share of the program, so each input reaches tens of thousands of
// features; libFuzzer's entropic scheduling (clang 14) then spends a hundred times longer on its
// bookkeeping than on the input, and slows further as the corpus grows. The plain scheduler keeps
// the smoke run to about a minute. An -entropic flag given on the command line still wins.
extern "C" int LLVMFuzzerInitialize(int* argc, char*** argv) {
    static std::vector<char*> arguments;
    static std::string plainScheduler = "-entropic=0";
    arguments.assign(*argv, *argv + *argc);
    if (std::none_of(arguments.begin(), arguments.end(), [](const char* argument) {
            return std::string_view(argument).starts_with("-entropic=");
        })) {
        arguments.insert(arguments.begin() + 1, plainScheduler.data());
    }
    arguments.push_back(nullptr);
    *argc = static_cast<int>(arguments.size() - 1);
    *argv = arguments.data();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace corvetta;
    if (size == 0) {
        return 0;
    }
    // The first byte says how the stream arrives: in reads of 1 to 128 bytes.
    const std::size_t chunk = 1 + data[0] % 128;
    std::string_view stream(reinterpret_cast<const char*>(data + 1), size - 1);
    MethodsOnADesktop rig;
    LineReader reader(2048);
    while (!stream.empty()) {
        reader.append(stream.substr(0, chunk));
        stream.remove_prefix(std::min(chunk, stream.size()));
        for (auto next = reader.next(); next.kind != LineReader::Next::Kind::needMoreBytes;
             next = reader.next()) {
            if (next.kind == LineReader::Next::Kind::lineTooLong) {
                return 0;
            }
            answerLine(rig, next.text);
        }
    }
    return 0;
}
