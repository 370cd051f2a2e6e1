#include "platform/sim/simulated_desktop_file.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <limits>
#include <set>

#include "foundation/files.h"
#include "foundation/json.h"
#include "foundation/uuid.h"
#include "platform/edid.h"

namespace corvetta {

namespace {

// Raised while reading and turned into the result at the top; never leaves this file.
struct FileProblem {
    std::string place;
    std::string problem;
};

[[noreturn]] void refuse(const std::string& place, std::string problem) {
    throw FileProblem{place, std::move(problem)};
}

std::string indexed(const std::string& place, std::size_t index) {
    return place + "[" + std::to_string(index) + "]";
}

double number(const Json& value, const std::string& place) {
    if (!value.is_number() || !std::isfinite(value.get<double>())) {
        refuse(place, "expected a number");
    }
    return value.get<double>();
}

// Whole numbers only: a fractional pid or window number is a typo, not a value to round.
// `most` is never negative.
std::int64_t integer(const Json& value, const std::string& place, std::int64_t least,
                     std::int64_t most) {
    if (value.is_number_unsigned()) {
        const auto whole = value.get<std::uint64_t>();
        if (whole <= static_cast<std::uint64_t>(most) &&
            static_cast<std::int64_t>(whole) >= least) {
            return static_cast<std::int64_t>(whole);
        }
    } else if (value.is_number_integer()) {
        const auto whole = value.get<std::int64_t>();
        if (whole >= least && whole <= most) {
            return whole;
        }
    }
    refuse(place, least == 1 ? "expected a positive integer" : "expected an integer");
}

// [x, y, width, height] with a positive width and height.
Rect rect(const Json& value, const std::string& place) {
    if (!value.is_array() || value.size() != 4 ||
        !std::all_of(value.begin(), value.end(), [](const Json& v) {
            return v.is_number() && std::isfinite(v.get<double>());
        })) {
        refuse(place, "expected [x, y, width, height]");
    }
    const Rect result(value[0].get<double>(), value[1].get<double>(), value[2].get<double>(),
                      value[3].get<double>());
    if (result.size.width <= 0 || result.size.height <= 0) {
        refuse(place, "width and height must be positive");
    }
    return result;
}

std::pair<double, double> pair(const Json& value, const std::string& place,
                               const std::string& shape) {
    if (!value.is_array() || value.size() != 2 || !value[0].is_number() || !value[1].is_number() ||
        !std::isfinite(value[0].get<double>()) || !std::isfinite(value[1].get<double>())) {
        refuse(place, "expected " + shape);
    }
    return {value[0].get<double>(), value[1].get<double>()};
}

Size positiveSize(const Json& value, const std::string& place) {
    const auto [width, height] = pair(value, place, "[width, height]");
    if (width <= 0 || height <= 0) {
        refuse(place, "width and height must be positive");
    }
    return {width, height};
}

// One JSON object whose keys are all known, so a misspelt key is reported, not ignored.
class ObjectReader {
public:
    ObjectReader(const Json& value, std::string place, std::set<std::string_view> known)
        : value_(value), place_(std::move(place)) {
        if (!value_.is_object()) {
            refuse(place_, "expected an object");
        }
        for (const auto& [key, member] : value_.items()) {
            if (known.count(key) == 0) {
                std::string list;
                for (const auto name : known) {
                    list += (list.empty() ? "" : ", ") + std::string(name);
                }
                refuse(placeOf(key), "unknown key (known keys: " + list + ")");
            }
        }
    }

    std::string placeOf(std::string_view key) const {
        return place_.empty() ? std::string(key) : place_ + "." + std::string(key);
    }
    const Json* find(std::string_view key) const {
        const auto found = value_.find(key);
        return found == value_.end() ? nullptr : &*found;
    }
    const Json& required(std::string_view key) const {
        const auto* found = find(key);
        if (found == nullptr) {
            refuse(placeOf(key), "required");
        }
        return *found;
    }

    std::string text(std::string_view key, std::string fallback) const {
        const auto* found = find(key);
        if (found == nullptr) {
            return fallback;
        }
        if (!found->is_string()) {
            refuse(placeOf(key), "expected a string");
        }
        return found->get<std::string>();
    }
    bool flag(std::string_view key, bool fallback) const {
        const auto* found = find(key);
        if (found == nullptr) {
            return fallback;
        }
        if (!found->is_boolean()) {
            refuse(placeOf(key), "expected true or false");
        }
        return found->get<bool>();
    }
    std::optional<Size> size(std::string_view key) const {
        const auto* found = find(key);
        return found == nullptr ? std::nullopt : std::optional(positiveSize(*found, placeOf(key)));
    }
    // The members of an array under `key` with their places; none when absent.
    std::vector<std::pair<const Json*, std::string>> elements(std::string_view key) const {
        std::vector<std::pair<const Json*, std::string>> result;
        const auto* found = find(key);
        if (found == nullptr) {
            return result;
        }
        if (!found->is_array()) {
            refuse(placeOf(key), "expected an array");
        }
        for (std::size_t i = 0; i < found->size(); ++i) {
            result.emplace_back(&(*found)[i], indexed(placeOf(key), i));
        }
        return result;
    }

private:
    const Json& value_;
    std::string place_;
};

template <class Enum>
Enum oneOf(const ObjectReader& reader, std::string_view key, Enum fallback,
           const std::vector<std::pair<std::string_view, Enum>>& names) {
    const auto* found = reader.find(key);
    if (found == nullptr) {
        return fallback;
    }
    if (found->is_string()) {
        for (const auto& [name, value] : names) {
            if (found->get<std::string>() == name) {
                return value;
            }
        }
    }
    std::string list;
    for (const auto& [name, value] : names) {
        list += (list.empty() ? "\"" : ", \"") + std::string(name) + "\"";
    }
    refuse(reader.placeOf(key), "expected one of " + list);
}

std::optional<std::string> optionalText(const ObjectReader& reader, std::string_view key) {
    if (reader.find(key) == nullptr) {
        return std::nullopt;
    }
    return reader.text(key, "");
}

// "00ffffffffffff00...": two hexadecimal digits per byte, nothing else.
std::vector<std::uint8_t> hexBytes(const Json& value, const std::string& place) {
    if (!value.is_string()) {
        refuse(place, "expected a string");
    }
    const auto& text = value.get_ref<const std::string&>();
    auto digit = [&](char c) {
        if (c >= '0' && c <= '9') {
            return c - '0';
        }
        if (c >= 'a' && c <= 'f') {
            return c - 'a' + 10;
        }
        if (c >= 'A' && c <= 'F') {
            return c - 'A' + 10;
        }
        refuse(place, "expected hexadecimal bytes");
    };
    if (text.size() % 2 != 0) {
        refuse(place, "expected hexadecimal bytes");
    }
    std::vector<std::uint8_t> bytes;
    for (std::size_t i = 0; i < text.size(); i += 2) {
        bytes.push_back(static_cast<std::uint8_t>(digit(text[i]) * 16 + digit(text[i + 1])));
    }
    return bytes;
}

// As a real display: what the file does not say is read from the EDID, where it has it.
DisplayIdentity readIdentity(const ObjectReader& reader, std::optional<std::string>& edidName) {
    DisplayIdentity identity;
    if (const auto uuid = optionalText(reader, "uuid")) {
        const auto parsed = Uuid::parse(*uuid);
        if (!parsed) {
            refuse(reader.placeOf("uuid"), "expected a UUID (8-4-4-4-12 hexadecimal digits)");
        }
        identity.persistentUUID = parsed->string();
    }
    identity.serial = optionalText(reader, "serial");
    if (const auto* edid = reader.find("edid")) {
        identity.edid = hexBytes(*edid, reader.placeOf("edid"));
        if (const auto parsed = parseEdid(identity.edid)) {
            edidName = parsed->monitorName;
            if (!identity.serial) {
                identity.serial = parsed->serial();
            }
            if (!identity.persistentUUID) {
                identity.persistentUUID = parsed->persistentUuid().string();
            }
        }
    }
    identity.physicalSize = reader.size("physicalSize");
    identity.colorSpace = optionalText(reader, "colorSpace");
    return identity;
}

SimulatedDisplay readDisplay(const Json& value, const std::string& place) {
    const ObjectReader reader(value, place,
                              {"id", "name", "frame", "visibleFrame", "scale", "builtin", "uuid",
                               "serial", "edid", "physicalSize", "colorSpace"});
    SimulatedDisplay display;
    display.id = static_cast<ScreenNumber>(integer(reader.required("id"), reader.placeOf("id"), 1,
                                                   std::numeric_limits<ScreenNumber>::max()));
    std::optional<std::string> edidName;
    display.identity = readIdentity(reader, edidName);
    display.name = reader.text("name", edidName.value_or("Display " + std::to_string(display.id)));
    display.frame = rect(reader.required("frame"), reader.placeOf("frame"));
    display.visibleFrame = display.frame;
    if (const auto* visible = reader.find("visibleFrame")) {
        display.visibleFrame = rect(*visible, reader.placeOf("visibleFrame"));
        if (!display.frame.contains(display.visibleFrame)) {
            refuse(reader.placeOf("visibleFrame"), "must lie inside the frame");
        }
    }
    if (const auto* scale = reader.find("scale")) {
        display.scale = number(*scale, reader.placeOf("scale"));
        if (display.scale <= 0) {
            refuse(reader.placeOf("scale"), "must be positive");
        }
    }
    display.builtin = reader.flag("builtin", false);
    return display;
}

Duration milliseconds(const Json& value, const std::string& place) {
    const double count = number(value, place);
    // A day is far beyond any real application and keeps the conversion from overflowing.
    if (count < 0 || count > 86'400'000) {
        refuse(place, "expected milliseconds from 0 to 86400000");
    }
    return std::chrono::duration_cast<Duration>(std::chrono::duration<double, std::milli>(count));
}

// A window a menu item opens gets its number when it opens, so it has none in the file.
enum class WindowNumbering { given, assignedWhenOpened };

SimulatedWindow readWindow(const Json& value, const std::string& place,
                           WindowNumbering numbering = WindowNumbering::given) {
    std::set<std::string_view> known{
        "title",        "frame",   "minSize",   "maxSize",    "resizeIncrements",
        "applyDelayMs", "movable", "resizable", "fullScreen", "minimized",
        "layer",        "subrole"};
    if (numbering == WindowNumbering::given) {
        known.insert("number");
    }
    const ObjectReader reader(value, place, std::move(known));
    SimulatedWindow window;
    if (numbering == WindowNumbering::given) {
        window.number =
            static_cast<WindowNumber>(integer(reader.required("number"), reader.placeOf("number"),
                                              1, std::numeric_limits<WindowNumber>::max()));
    }
    window.title = reader.text("title", "");
    window.frame = rect(reader.required("frame"), reader.placeOf("frame"));
    window.minSize = reader.size("minSize");
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
            readWindow(*window, reader.placeOf("opensWindow"), WindowNumbering::assignedWhenOpened);
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

// `fallback` supplies what an entry leaves out; only this program's own entry has one.
SimulatedApplication readApplication(const Json& value, const std::string& place,
                                     const SimulatedApplication* fallback) {
    const ObjectReader reader(value, place,
                              {"pid", "bundleIdentifier", "name", "activationPolicy", "hidden",
                               "unresponsive", "windows", "menus"});
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
    for (const auto& [window, windowPlace] : reader.elements("windows")) {
        app.windows.push_back(readWindow(*window, windowPlace));
    }
    for (const auto& [menu, menuPlace] : reader.elements("menus")) {
        app.menus.push_back(readMenu(*menu, menuPlace));
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
        setup.installed.push_back(readApplication(*app, place, nullptr));
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
