#include "platform/sim/simulated_desktop_file.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <limits>
#include <set>

#include "foundation/files.h"
#include "foundation/json.h"
#include "foundation/uuid.h"
#include "platform/sim/desktop_file_values.h"

namespace corvetta {

namespace {

using namespace desktop_file;

Duration milliseconds(const Json& value, const std::string& place) {
    const double count = number(value, place);
    // A day is far beyond any real application and keeps the conversion from overflowing.
    if (count < 0 || count > 86'400'000) {
        refuse(place, "expected milliseconds from 0 to 86400000");
    }
    return std::chrono::duration_cast<Duration>(std::chrono::duration<double, std::milli>(count));
}

// Whose window it is. A window a menu item opens gets its number when it opens, so it has none in
// the file; only an application that is launched can be slow to show its windows.
enum class WindowOwner { runningApplication, installedApplication, menuItem };

SimulatedWindow readWindow(const Json& value, const std::string& place, WindowOwner owner) {
    std::set<std::string_view> known{
        "title",        "frame",   "minSize",       "maxSize",    "resizeIncrements",
        "applyDelayMs", "movable", "resizable",     "fullScreen", "minimized",
        "layer",        "subrole", "reportsMinSize"};
    if (owner != WindowOwner::menuItem) {
        known.insert({"number", "appearsAfterMs"});
    }
    const ObjectReader reader(value, place, std::move(known));
    SimulatedWindow window;
    if (owner != WindowOwner::menuItem) {
        window.number =
            static_cast<WindowNumber>(integer(reader.required("number"), reader.placeOf("number"),
                                              1, std::numeric_limits<WindowNumber>::max()));
    }
    window.title = reader.text("title", "");
    window.frame = rect(reader.required("frame"), reader.placeOf("frame"));
    window.minSize = reader.size("minSize");
    window.reportsMinSize = reader.flag("reportsMinSize", true);
    window.maxSize = reader.size("maxSize");
    if (window.minSize && window.maxSize &&
        (window.maxSize->width < window.minSize->width ||
         window.maxSize->height < window.minSize->height)) {
        refuse(reader.placeOf("maxSize"), "smaller than minSize");
    }
    window.resizeIncrements = reader.size("resizeIncrements");
    if (const auto* delay = reader.find("applyDelayMs")) {
        window.applyDelay = milliseconds(*delay, reader.placeOf("applyDelayMs"));
    }
    window.movable = reader.flag("movable", true);
    window.resizable = reader.flag("resizable", true);
    window.fullScreen = reader.flag("fullScreen", false);
    window.minimized = reader.flag("minimized", false);
    if (const auto* layer = reader.find("layer")) {
        window.layer = static_cast<int>(integer(*layer, reader.placeOf("layer"),
                                                std::numeric_limits<int>::min(),
                                                std::numeric_limits<int>::max()));
    }
    window.subrole = reader.text("subrole", std::string(kStandardWindowSubrole));
    if (const auto* after = reader.find("appearsAfterMs")) {
        if (owner != WindowOwner::installedApplication) {
            refuse(reader.placeOf("appearsAfterMs"), "only for windows of installed applications");
        }
        window.appearsAfter = milliseconds(*after, reader.placeOf("appearsAfterMs"));
    }
    return window;
}

SimulatedMenuItem readMenuItem(const Json& value, const std::string& place) {
    const ObjectReader reader(
        value, place, {"title", "key", "modifiers", "enabled", "opensWindow", "opensAfterMs"});
    SimulatedMenuItem item;
    item.title = reader.text("title", "");
    item.key = reader.text("key", "");
    if (reader.find("modifiers") != nullptr) {
        if (item.key.empty()) {
            refuse(reader.placeOf("modifiers"), "needs a key");
        }
        item.command = false;
        for (const auto& [modifier, modifierPlace] : reader.elements("modifiers")) {
            const std::string name = modifier->is_string() ? modifier->get<std::string>() : "";
            bool* flag = name == "command"   ? &item.command
                         : name == "shift"   ? &item.shift
                         : name == "option"  ? &item.option
                         : name == "control" ? &item.control
                                             : nullptr;
            if (flag == nullptr) {
                refuse(modifierPlace, R"(expected one of "command", "shift", "option", "control")");
            }
            *flag = true;
        }
    }
    item.enabled = reader.flag("enabled", true);
    if (const auto* window = reader.find("opensWindow")) {
        item.opensWindow =
            readWindow(*window, reader.placeOf("opensWindow"), WindowOwner::menuItem);
    }
    if (const auto* delay = reader.find("opensAfterMs")) {
        if (!item.opensWindow) {
            refuse(reader.placeOf("opensAfterMs"), "needs opensWindow");
        }
        item.opensAfter = milliseconds(*delay, reader.placeOf("opensAfterMs"));
    }
    return item;
}

SimulatedMenu readMenu(const Json& value, const std::string& place) {
    const ObjectReader reader(value, place, {"title", "items"});
    SimulatedMenu menu;
    menu.title = reader.text("title", "");
    for (const auto& [item, itemPlace] : reader.elements("items")) {
        menu.items.push_back(readMenuItem(*item, itemPlace));
    }
    return menu;
}

enum class Installation { running, installed };

// `fallback` supplies what an entry leaves out; only this program's own entry has one.
SimulatedApplication readApplication(const Json& value, const std::string& place,
                                     const SimulatedApplication* fallback,
                                     Installation installation = Installation::running) {
    const ObjectReader reader(value, place,
                              {"pid", "bundleIdentifier", "name", "activationPolicy", "hidden",
                               "unresponsive", "windows", "menus", "launchDelayMs"});
    SimulatedApplication app = fallback != nullptr ? *fallback : SimulatedApplication{};
    if (fallback == nullptr || reader.find("pid") != nullptr) {
        app.pid = static_cast<ProcessId>(integer(reader.required("pid"), reader.placeOf("pid"), 1,
                                                 std::numeric_limits<ProcessId>::max()));
    }
    if (reader.find("bundleIdentifier") != nullptr) {
        app.bundleIdentifier = reader.text("bundleIdentifier", "");
    }
    if (fallback == nullptr) {
        reader.required("name");
    }
    app.name = reader.text("name", app.name);
    app.activationPolicy = oneOf(reader, "activationPolicy", app.activationPolicy,
                                 {{"regular", ActivationPolicy::regular},
                                  {"accessory", ActivationPolicy::accessory},
                                  {"prohibited", ActivationPolicy::prohibited}});
    app.hidden = reader.flag("hidden", app.hidden);
    app.unresponsive = reader.flag("unresponsive", app.unresponsive);
    const auto owner = installation == Installation::installed ? WindowOwner::installedApplication
                                                               : WindowOwner::runningApplication;
    for (const auto& [window, windowPlace] : reader.elements("windows")) {
        app.windows.push_back(readWindow(*window, windowPlace, owner));
    }
    for (const auto& [menu, menuPlace] : reader.elements("menus")) {
        app.menus.push_back(readMenu(*menu, menuPlace));
    }
    if (const auto* delay = reader.find("launchDelayMs")) {
        if (installation != Installation::installed) {
            refuse(reader.placeOf("launchDelayMs"), "only for installed applications");
        }
        app.launchDelay = milliseconds(*delay, reader.placeOf("launchDelayMs"));
    }
    return app;
}

SimulatedDock readDock(const Json& value, const std::string& place) {
    const ObjectReader reader(value, place, {"display", "edge", "size", "hidden", "intellihide"});
    SimulatedDock dock;
    dock.display =
        static_cast<ScreenNumber>(integer(reader.required("display"), reader.placeOf("display"), 1,
                                          std::numeric_limits<ScreenNumber>::max()));
    dock.edge =
        oneOf(reader, "edge", DockEdge::bottom,
              {{"bottom", DockEdge::bottom}, {"left", DockEdge::left}, {"right", DockEdge::right}});
    dock.size = number(reader.required("size"), reader.placeOf("size"));
    if (dock.size < 0) {
        refuse(reader.placeOf("size"), "must not be negative");
    }
    dock.hidden = reader.flag("hidden", false);
    dock.intellihide = reader.flag("intellihide", false);
    return dock;
}

// A combination in the event-flag form records use; only the four modifiers may be set, so a
// mistyped mask is caught rather than silently narrowed.
HotKeyCombination readReservedHotKey(const Json& value, const std::string& place) {
    const ObjectReader reader(value, place, {"keyCode", "modifiers"});
    const auto keyCode = integer(reader.required("keyCode"), reader.placeOf("keyCode"), 0,
                                 std::numeric_limits<std::uint16_t>::max());
    const auto modifiers = integer(reader.required("modifiers"), reader.placeOf("modifiers"), 0,
                                   std::numeric_limits<std::int64_t>::max());
    if (eventFlagsFromCarbonModifiers(carbonModifiersFromEventFlags(
            static_cast<std::uint64_t>(modifiers))) != static_cast<std::uint64_t>(modifiers)) {
        refuse(reader.placeOf("modifiers"),
               "expected Shift (131072), Control (262144), Option (524288) or Command (1048576) "
               "bits only");
    }
    return {static_cast<std::uint32_t>(keyCode),
            carbonModifiersFromEventFlags(static_cast<std::uint64_t>(modifiers))};
}

// Identifiers that must be unique across the file, each reported where it repeats.
class UniqueCheck {
public:
    explicit UniqueCheck(std::string what) : what_(std::move(what)) {}
    void add(std::int64_t value, const std::string& place) {
        if (!seen_.insert(value).second) {
            refuse(place, "duplicate " + what_ + " " + std::to_string(value));
        }
    }

private:
    std::string what_;
    std::set<std::int64_t> seen_;
};

void checkApplication(const SimulatedApplication& app, const std::string& place, UniqueCheck& pids,
                      UniqueCheck& windows) {
    pids.add(app.pid, place + ".pid");
    for (std::size_t w = 0; w < app.windows.size(); ++w) {
        windows.add(app.windows[w].number, indexed(place + ".windows", w) + ".number");
    }
}

void checkApplications(const std::vector<SimulatedApplication>& applications,
                       const std::string& listPlace, UniqueCheck& pids, UniqueCheck& windows) {
    for (std::size_t i = 0; i < applications.size(); ++i) {
        checkApplication(applications[i], indexed(listPlace, i), pids, windows);
    }
}

// The displays, primary first, each id once.
std::vector<SimulatedDisplay> readDisplayList(const Json& value, const std::string& place) {
    if (!value.is_array()) {
        refuse(place, "expected an array");
    }
    if (value.empty()) {
        refuse(place, "expected at least one display");
    }
    std::vector<SimulatedDisplay> displays;
    UniqueCheck displayIds("display id");
    for (std::size_t i = 0; i < value.size(); ++i) {
        displays.push_back(readDisplay(value[i], indexed(place, i)));
        displayIds.add(displays.back().id, indexed(place, i) + ".id");
    }
    if (displays.front().frame.origin != Point{0, 0}) {
        refuse(indexed(place, 0) + ".frame",
               "the first display is the primary and must start at [0, 0]");
    }
    return displays;
}

SimulatedDesktopSetup readDesktop(const Json& document) {
    const ObjectReader reader(
        document, "",
        {"displays", "applications", "frontmost", "dock", "accessibilityTrusted", "mouseLocation",
         "installed", "self", "reservedHotKeys"});
    SimulatedDesktopSetup setup;

    const auto* displays = reader.find("displays");
    setup.displays = readDisplayList(displays != nullptr ? *displays : Json::array(), "displays");

    for (const auto& [app, place] : reader.elements("applications")) {
        setup.applications.push_back(readApplication(*app, place, nullptr));
    }
    for (const auto& [app, place] : reader.elements("installed")) {
        setup.installed.push_back(readApplication(*app, place, nullptr, Installation::installed));
        if (!setup.installed.back().bundleIdentifier) {
            refuse(place + ".bundleIdentifier", "required to launch the application");
        }
    }
    if (const auto* self = reader.find("self")) {
        const SimulatedApplication defaults = setup.self;
        setup.self = readApplication(*self, "self", &defaults);
    }
    UniqueCheck pids("pid");
    UniqueCheck windows("window number");
    checkApplication(setup.self, "self", pids, windows);
    checkApplications(setup.applications, "applications", pids, windows);
    checkApplications(setup.installed, "installed", pids, windows);

    if (const auto* frontmost = reader.find("frontmost")) {
        const auto pid = static_cast<ProcessId>(
            integer(*frontmost, "frontmost", 1, std::numeric_limits<ProcessId>::max()));
        const bool running = pid == setup.self.pid ||
                             std::any_of(setup.applications.begin(), setup.applications.end(),
                                         [&](const auto& a) { return a.pid == pid; });
        if (!running) {
            refuse("frontmost", "no application with pid " + std::to_string(pid));
        }
        setup.frontmost = pid;
    }

    if (const auto* dock = reader.find("dock")) {
        setup.dock = readDock(*dock, "dock");
        const bool known = std::any_of(setup.displays.begin(), setup.displays.end(),
                                       [&](const auto& d) { return d.id == setup.dock->display; });
        if (!known) {
            refuse("dock.display", "no display with id " + std::to_string(setup.dock->display));
        }
    }
    setup.accessibilityTrusted = reader.flag("accessibilityTrusted", true);
    if (const auto* mouse = reader.find("mouseLocation")) {
        const auto [x, y] = pair(*mouse, "mouseLocation", "[x, y]");
        setup.mouseLocation = {x, y};
    }
    for (const auto& [hotKey, place] : reader.elements("reservedHotKeys")) {
        setup.reservedHotKeys.push_back(readReservedHotKey(*hotKey, place));
    }
    return setup;
}

}  // namespace

std::string DesktopFileError::message() const {
    return place.empty() ? problem : place + ": " + problem;
}

Expected<SimulatedDesktopSetup, DesktopFileError> parseSimulatedDesktop(std::string_view text) {
    Json document;
    try {
        document = Json::parse(text);
    } catch (const nlohmann::json::exception& error) {
        return unexpected(DesktopFileError{"", error.what()});
    }
    try {
        return readDesktop(document);
    } catch (const FileProblem& problem) {
        return unexpected(DesktopFileError{problem.place, problem.problem});
    }
}

Expected<std::vector<SimulatedDisplay>, DesktopFileError> parseSimulatedDisplays(
    const Json& displays, const std::string& place) {
    try {
        return readDisplayList(displays, place);
    } catch (const FileProblem& problem) {
        return unexpected(DesktopFileError{problem.place, problem.problem});
    }
}

Expected<SimulatedDesktopSetup, DesktopFileError> loadSimulatedDesktop(
    const std::filesystem::path& file) {
    const auto contents = readFile(file);
    if (!contents) {
        return unexpected(
            DesktopFileError{"", "cannot read " + file.string() + ": " + contents.error().reason});
    }
    return parseSimulatedDesktop(*contents);
}

}  // namespace corvetta
