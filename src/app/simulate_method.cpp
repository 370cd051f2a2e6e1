#include "app/simulate_method.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <set>

#include "automation/mcp_error.h"
#include "automation/method_params.h"
#include "foundation/json.h"
#include "platform/sim/simulated_desktop.h"
#include "platform/sim/simulated_desktop_file.h"

namespace corvetta {

namespace {

// Everything one request asks for, read and checked in full before any of it is applied, so a
// request with one bad param changes nothing.
struct Simulation {
    std::optional<std::vector<SimulatedDisplay>> displays;
    bool sleep = false;
    std::optional<std::pair<WindowNumber, Rect>> userFrame;
    std::optional<InputEvent> mouse;
    std::optional<std::uint64_t> modifiers;
    std::optional<std::string> launch;
    std::optional<ProcessId> quit;
    std::optional<SystemAppearance> appearance;
};

// The params in the order they are applied.
constexpr std::string_view kParamNames[] = {"displays",  "sleep",      "userFrame", "mouse",
                                            "modifiers", "appearance", "launch",    "quit"};

[[noreturn]] void refuse(const std::string& name, const std::string& problem) {
    throw MCPError::invalidParam("Invalid param " + name + ": " + problem);
}

std::string knownList(const std::set<std::string_view>& known) {
    std::string list;
    for (const auto name : known) {
        list += (list.empty() ? "" : ", ") + std::string(name);
    }
    return list;
}

// An object whose keys are all known, so a misspelt key is reported rather than ignored.
void refuseUnknownKeys(const Json& value, const std::string& name,
                       const std::set<std::string_view>& known) {
    if (!value.is_object()) {
        refuse(name, "expected an object with " + knownList(known));
    }
    for (const auto& [key, member] : value.items()) {
        if (known.count(key) == 0) {
            refuse(name + "." + key, "unknown key (known keys: " + knownList(known) + ")");
        }
    }
}

const Json& member(const Json& object, std::string_view key) {
    static const Json absent;
    const auto found = object.find(key);
    return found == object.end() ? absent : *found;
}

std::optional<std::int64_t> positiveInteger(const Json& value, std::int64_t most) {
    if (!value.is_number_integer()) {
        return std::nullopt;
    }
    // Read unsigned first, so numbers beyond the signed range are refused rather than wrapped.
    if (value.is_number_unsigned()) {
        const auto whole = value.get<std::uint64_t>();
        return whole >= 1 && whole <= static_cast<std::uint64_t>(most)
                   ? std::optional(static_cast<std::int64_t>(whole))
                   : std::nullopt;
    }
    const auto whole = value.get<std::int64_t>();
    return whole >= 1 && whole <= most ? std::optional(whole) : std::nullopt;
}

std::optional<std::vector<double>> numbers(const Json& value, std::size_t count) {
    if (!value.is_array() || value.size() != count) {
        return std::nullopt;
    }
    std::vector<double> result;
    for (const auto& number : value) {
        if (!number.is_number() || !std::isfinite(number.get<double>())) {
            return std::nullopt;
        }
        result.push_back(number.get<double>());
    }
    return result;
}

std::vector<SimulatedDisplay> readDisplays(const Json& value) {
    auto displays = parseSimulatedDisplays(value, "displays");
    if (!displays) {
        throw MCPError::invalidParam("Invalid param " + displays.error().message());
    }
    return std::move(*displays);
}

std::pair<WindowNumber, Rect> readUserFrame(const Json& value, const SimulatedDesktop& desktop) {
    refuseUnknownKeys(value, "userFrame", {"window", "frame"});
    const auto number =
        positiveInteger(member(value, "window"), std::numeric_limits<WindowNumber>::max());
    if (!number) {
        refuse("userFrame.window", "expected a window number");
    }
    const auto frame = numbers(member(value, "frame"), 4);
    if (!frame || (*frame)[2] <= 0 || (*frame)[3] <= 0) {
        refuse("userFrame.frame",
               "expected [x, y, width, height] with a positive width and height");
    }
    const auto window = static_cast<WindowNumber>(*number);
    if (!desktop.window(window)) {
        throw MCPError::notFound("window " + std::to_string(window));
    }
    return {window, Rect((*frame)[0], (*frame)[1], (*frame)[2], (*frame)[3])};
}

InputEvent readMouse(const Json& value) {
    refuseUnknownKeys(value, "mouse", {"event", "location"});
    static constexpr std::pair<std::string_view, EventType> kEvents[] = {
        {"down", EventType::leftMouseDown},
        {"drag", EventType::leftMouseDragged},
        {"up", EventType::leftMouseUp}};
    const Json& name = member(value, "event");
    const auto* event = std::find_if(std::begin(kEvents), std::end(kEvents), [&](const auto& e) {
        return name.is_string() && name.get<std::string>() == e.first;
    });
    if (event == std::end(kEvents)) {
        refuse("mouse.event", R"(expected one of "down", "drag", "up")");
    }
    const auto location = numbers(member(value, "location"), 2);
    if (!location) {
        refuse("mouse.location", "expected [x, y]");
    }
    return InputEvent{event->second, Point{(*location)[0], (*location)[1]}};
}

std::uint64_t readModifiers(const Json& value) {
    constexpr std::uint64_t kModifiers = ModifierFlag::kShift | ModifierFlag::kControl |
                                         ModifierFlag::kOption | ModifierFlag::kCommand;
    if (!value.is_number_integer() || value.get<std::int64_t>() < 0 ||
        (value.get<std::uint64_t>() & ~kModifiers) != 0) {
        refuse("modifiers",
               "expected event modifier flags of Shift (131072), Control (262144), Option "
               "(524288) and Command (1048576) only");
    }
    return value.get<std::uint64_t>();
}

std::string readLaunch(const Json& value, SimulatedDesktop& desktop) {
    if (!value.is_string()) {
        refuse("launch", "expected a bundle identifier");
    }
    const auto bundleIdentifier = value.get<std::string>();
    if (!desktop.applicationsPort().canLaunchApplication(bundleIdentifier)) {
        throw MCPError::notFound("app '" + bundleIdentifier + "'");
    }
    return bundleIdentifier;
}

ProcessId readQuit(const Json& value, SimulatedDesktop& desktop) {
    const auto pid = positiveInteger(value, std::numeric_limits<ProcessId>::max());
    if (!pid) {
        refuse("quit", "expected a pid");
    }
    const auto& applications = desktop.applicationsPort();
    if (applications.currentApplication().processIdentifier == *pid) {
        refuse("quit", "pid " + std::to_string(*pid) + " is Corvetta itself");
    }
    if (!applications.runningApplication(static_cast<ProcessId>(*pid))) {
        throw MCPError::notFound("running app with pid " + std::to_string(*pid));
    }
    return static_cast<ProcessId>(*pid);
}

SystemAppearance readAppearance(const Json& value) {
    for (const auto appearance :
         {SystemAppearance::light, SystemAppearance::dark, SystemAppearance::unknown}) {
        if (value.is_string() && value.get<std::string>() == systemAppearanceName(appearance)) {
            return appearance;
        }
    }
    refuse("appearance", R"(expected "light", "dark" or "unknown")");
}

Simulation readSimulation(const MethodParams& params, SimulatedDesktop& desktop) {
    if (const Json& raw = params.raw(); raw.is_object()) {
        const std::set<std::string_view> known(std::begin(kParamNames), std::end(kParamNames));
        for (const auto& [key, value] : raw.items()) {
            if (known.count(key) == 0) {
                refuse(key, "unknown (known params: " + knownList(known) + ")");
            }
        }
    }
    Simulation simulation;
    if (const auto* displays = params.find("displays")) {
        simulation.displays = readDisplays(*displays);
    }
    if (const auto* sleep = params.find("sleep")) {
        if (!sleep->is_boolean()) {
            refuse("sleep", "expected true or false");
        }
        simulation.sleep = sleep->get<bool>();
    }
    if (const auto* userFrame = params.find("userFrame")) {
        simulation.userFrame = readUserFrame(*userFrame, desktop);
    }
    if (const auto* mouse = params.find("mouse")) {
        simulation.mouse = readMouse(*mouse);
    }
    if (const auto* modifiers = params.find("modifiers")) {
        simulation.modifiers = readModifiers(*modifiers);
    }
    if (const auto* launch = params.find("launch")) {
        simulation.launch = readLaunch(*launch, desktop);
    }
    if (const auto* quit = params.find("quit")) {
        simulation.quit = readQuit(*quit, desktop);
    }
    if (const auto* appearance = params.find("appearance")) {
        simulation.appearance = readAppearance(*appearance);
    }
    return simulation;
}

// The changes up to the launch happen at once; observers of each hear of it before the next.
void applyAtOnce(const Simulation& simulation, SimulatedDesktop& desktop) {
    if (simulation.displays) {
        desktop.setDisplays(*simulation.displays);
    }
    if (simulation.sleep) {
        desktop.sleepAndWake();
    }
    if (simulation.userFrame) {
        desktop.dragWindow(simulation.userFrame->first, simulation.userFrame->second);
    }
    if (auto mouse = simulation.mouse) {
        mouse->modifierFlags = desktop.modifierFlags();
        desktop.postEvent(*mouse);
    }
    if (simulation.modifiers) {
        desktop.postEvent(
            {EventType::flagsChanged, desktop.mouseLocation(), *simulation.modifiers, 0});
    }
    if (simulation.appearance) {
        desktop.setSystemAppearance(*simulation.appearance);
    }
}

// Quits, then answers once the desktop has delivered what followed from every change.
void finish(SimulatedDesktop& desktop, std::optional<ProcessId> quit, const MethodReply& reply) {
    if (quit) {
        desktop.quitApplication(*quit);
    }
    desktop.synchronize([reply] { reply(Json::object()); });
}

void simulate(SimulatedDesktop& desktop, const MethodParams& params, MethodReply& reply) {
    const Simulation simulation = readSimulation(params, desktop);
    applyAtOnce(simulation, desktop);
    if (!simulation.launch) {
        finish(desktop, simulation.quit, std::exchange(reply, nullptr));
        return;
    }
    // A launch completes on a later turn; the quit waits for it, keeping the order asked for.
    desktop.launchApplication(
        *simulation.launch,
        [&desktop, quit = simulation.quit, reply = std::exchange(reply, nullptr)](
            const Expected<RunningApplication, LaunchError>& launched) {
            if (!launched) {
                reply(unexpected(launched.error().message));
                return;
            }
            finish(desktop, quit, reply);
        });
}

}  // namespace

void addSimulateMethod(AutomationMethods& methods, SimulatedDesktop& desktop) {
    methods.add("simulate", [&desktop](const MethodParams& params, MethodReply& reply) {
        simulate(desktop, params, reply);
    });
}

}  // namespace corvetta
