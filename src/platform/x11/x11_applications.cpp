#include "platform/x11/x11_applications.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <set>
#include <sstream>
#include <string>

#include <spawn.h>
#include <sys/types.h>
#include <unistd.h>
#include <xcb/xcb_icccm.h>

#include "platform/x11/x11_window_class.h"

extern char** environ;

namespace corvetta {

namespace {

std::vector<std::filesystem::path> applicationFolders() {
    std::vector<std::filesystem::path> folders;
    const char* dataHome = std::getenv("XDG_DATA_HOME");
    const char* home = std::getenv("HOME");
    if (dataHome && *dataHome) {
        folders.emplace_back(dataHome);
    } else if (home && *home) {
        folders.push_back(std::filesystem::path(home) / ".local/share");
    }
    const char* dataDirs = std::getenv("XDG_DATA_DIRS");
    std::stringstream dirs(dataDirs && *dataDirs ? dataDirs : "/usr/local/share:/usr/share");
    for (std::string folder; std::getline(dirs, folder, ':');) {
        if (!folder.empty()) {
            folders.emplace_back(folder);
        }
    }
    for (auto& folder : folders) {
        folder /= "applications";
    }
    return folders;
}

std::optional<std::filesystem::path> desktopEntry(const std::string& identifier) {
    if (identifier.empty() || identifier.find('/') != std::string::npos) {
        return std::nullopt;
    }
    for (const auto& folder : applicationFolders()) {
        const auto path = folder / (identifier + ".desktop");
        std::error_code error;
        if (std::filesystem::is_regular_file(path, error)) {
            return path;
        }
    }
    return std::nullopt;
}

// The "[Desktop Entry]" group's value for the key; empty when absent.
std::string entryValue(const std::filesystem::path& path, const std::string& key) {
    std::ifstream file(path);
    bool inMainGroup = false;
    for (std::string line; std::getline(file, line);) {
        if (line.starts_with("[")) {
            inMainGroup = line == "[Desktop Entry]";
        } else if (inMainGroup && line.starts_with(key + "=")) {
            return line.substr(key.size() + 1);
        }
    }
    return {};
}

// The Exec line without its field codes (%f, %U, ...), which a launch without files leaves out.
std::string commandLine(std::string exec) {
    std::string result;
    for (std::size_t index = 0; index < exec.size(); ++index) {
        if (exec[index] == '%' && index + 1 < exec.size()) {
            if (exec[index + 1] == '%') {
                result += '%';
            }
            ++index;
            continue;
        }
        result += exec[index];
    }
    return result;
}

}  // namespace

struct X11Applications::Observers {
    std::uint64_t nextId = 1;
    std::map<std::uint64_t, std::function<void(const RunningApplication&)>> handlers;
};

X11Applications::X11Applications(X11Connection& connection, RunningApplication self)
    : connection_(connection),
      properties_(connection),
      self_(std::move(self)),
      observers_(std::make_shared<Observers>()) {
    connection_.selectRootEvents(XCB_EVENT_MASK_PROPERTY_CHANGE);
    lastActive_ = activeProcess();
    events_ = connection_.addEventHandler(
        [this](const xcb_generic_event_t& event) { return handleEvent(event); });
}

X11Applications::~X11Applications() = default;

std::vector<X11Applications::Client> X11Applications::clientsFrontToBack() const {
    auto stacking =
        properties_.values(connection_.root(), "_NET_CLIENT_LIST_STACKING", XCB_ATOM_WINDOW);
    if (!stacking || stacking->empty()) {
        stacking = properties_.values(connection_.root(), "_NET_CLIENT_LIST", XCB_ATOM_WINDOW);
    }
    std::vector<Client> result;
    if (!stacking) {
        return result;
    }
    forgetAllBut(*stacking);
    // A window's process never changes, so each is asked once, and those not yet known all at
    // once.
    std::vector<std::pair<xcb_window_t, xcb_get_property_cookie_t>> asked;
    for (const auto window : *stacking) {
        if (!known_.contains(window)) {
            asked.emplace_back(window,
                               properties_.request(window, "_NET_WM_PID", XCB_ATOM_CARDINAL));
        }
    }
    for (const auto& [window, cookie] : asked) {
        auto pid = properties_.valuesOf(cookie, XCB_ATOM_CARDINAL);
        // A window gone meanwhile is left for the next read to leave out.
        if (pid) {
            known_[window].pid = pid->empty() ? 0 : static_cast<ProcessId>(pid->front());
        }
    }
    for (auto window = stacking->rbegin(); window != stacking->rend(); ++window) {
        if (auto found = known_.find(*window); found != known_.end() && found->second.pid > 0) {
            result.push_back({*window, found->second.pid});
        }
    }
    return result;
}

void X11Applications::forgetAllBut(const std::vector<xcb_window_t>& clients) const {
    std::erase_if(known_, [&](const auto& entry) {
        return std::ranges::find(clients, entry.first) == clients.end();
    });
}

const X11Applications::Identity& X11Applications::identityOf(xcb_window_t window) const {
    auto& known = known_[window];
    if (!known.identity) {
        // Set before the window is mapped and kept, so read once.
        const auto classCookie = properties_.request(window, XCB_ATOM_WM_CLASS, XCB_ATOM_STRING);
        const auto gtkCookie =
            properties_.request(window, connection_.atom("_GTK_APPLICATION_ID"), XCB_ATOM_ANY);
        const auto kdeCookie =
            properties_.request(window, connection_.atom("_KDE_NET_WM_DESKTOP_FILE"), XCB_ATOM_ANY);
        Identity identity;
        if (auto windowClass = parseWindowClass(properties_.bytesOf(classCookie))) {
            identity.className = windowClass->className;
        }
        auto named = properties_.bytesOf(gtkCookie);
        auto kdeNamed = properties_.bytesOf(kdeCookie);
        if (!named || named->empty()) {
            named = std::move(kdeNamed);
        }
        if (named && !named->empty()) {
            identity.applicationId = named->substr(0, named->find('\0'));
            if (identity.applicationId.ends_with(".desktop")) {
                identity.applicationId.resize(identity.applicationId.size() - 8);
            }
        }
        known.identity = std::move(identity);
    }
    return *known.identity;
}

std::vector<xcb_window_t> X11Applications::windowsOf(ProcessId process) const {
    std::vector<xcb_window_t> result;
    for (const auto& client : clientsFrontToBack()) {
        if (client.pid == process) {
            result.push_back(client.window);
        }
    }
    return result;
}

bool X11Applications::isClientOf(xcb_window_t window, ProcessId process) const {
    if (const auto found = known_.find(window); found != known_.end()) {
        return found->second.pid == process && process > 0;
    }
    const auto windows = windowsOf(process);
    return std::ranges::find(windows, window) != windows.end();
}

RunningApplication X11Applications::describe(ProcessId process,
                                             const std::vector<xcb_window_t>& windows) const {
    if (process == self_.processIdentifier) {
        return self_;
    }
    RunningApplication application;
    application.processIdentifier = process;
    for (const auto window : windows) {
        if (const auto& identity = identityOf(window); !identity.className.empty()) {
            application.localizedName = identity.className;
            application.bundleIdentifier = identity.className;
            break;
        }
    }
    for (const auto window : windows) {
        if (const auto& identity = identityOf(window); !identity.applicationId.empty()) {
            application.bundleIdentifier = identity.applicationId;
            break;
        }
    }
    std::vector<xcb_get_property_cookie_t> states;
    for (const auto window : windows) {
        states.push_back(properties_.request(window, "_NET_WM_STATE", XCB_ATOM_ATOM));
    }
    const auto hiddenAtom = connection_.atom("_NET_WM_STATE_HIDDEN");
    bool allHidden = !windows.empty();
    for (const auto cookie : states) {
        auto state = properties_.valuesOf(cookie, XCB_ATOM_ATOM);
        allHidden = allHidden && state && std::ranges::find(*state, hiddenAtom) != state->end();
    }
    application.isHidden = allHidden;
    return application;
}

RunningApplication X11Applications::currentApplication() const {
    return self_;
}

std::vector<RunningApplication> X11Applications::runningApplications() const {
    std::map<ProcessId, std::vector<xcb_window_t>> byProcess;
    std::vector<ProcessId> order;
    for (const auto& client : clientsFrontToBack()) {
        if (!byProcess.contains(client.pid)) {
            order.push_back(client.pid);
        }
        byProcess[client.pid].push_back(client.window);
    }
    std::vector<RunningApplication> result;
    if (!byProcess.contains(self_.processIdentifier)) {
        result.push_back(self_);
    }
    for (const auto pid : order) {
        result.push_back(describe(pid, byProcess[pid]));
    }
    return result;
}

std::optional<RunningApplication> X11Applications::runningApplication(ProcessId process) const {
    if (process == self_.processIdentifier) {
        return self_;
    }
    const auto windows = windowsOf(process);
    if (windows.empty()) {
        return std::nullopt;
    }
    return describe(process, windows);
}

std::optional<ProcessId> X11Applications::activeProcess() const {
    auto active = properties_.values(connection_.root(), "_NET_ACTIVE_WINDOW", XCB_ATOM_WINDOW);
    if (!active || active->empty() || active->front() == XCB_WINDOW_NONE) {
        return std::nullopt;
    }
    auto pid = properties_.processOf(active->front());
    if (!pid || !*pid) {
        return std::nullopt;
    }
    return **pid;
}

std::optional<RunningApplication> X11Applications::frontmostApplication() const {
    const auto process = activeProcess();
    return process ? runningApplication(*process) : std::nullopt;
}

Registration X11Applications::observeDidActivateApplication(
    std::function<void(const RunningApplication&)> handler) {
    const std::uint64_t id = observers_->nextId++;
    observers_->handlers.emplace(id, std::move(handler));
    return Registration([weak = std::weak_ptr<Observers>(observers_), id] {
        if (auto observers = weak.lock()) {
            observers->handlers.erase(id);
        }
    });
}

bool X11Applications::handleEvent(const xcb_generic_event_t& event) {
    if ((event.response_type & 0x7f) != XCB_PROPERTY_NOTIFY) {
        return false;
    }
    const auto& notify = reinterpret_cast<const xcb_property_notify_event_t&>(event);
    if (notify.window == connection_.root() &&
        notify.atom == connection_.atom("_NET_CLIENT_LIST")) {
        // Window ids are reused once a client disconnects; what was known of them may no longer
        // hold, and a full read costs one round trip.
        known_.clear();
        return false;
    }
    if (notify.window != connection_.root() ||
        notify.atom != connection_.atom("_NET_ACTIVE_WINDOW")) {
        return false;
    }
    const auto process = activeProcess();
    // Focus moving between windows of one application is no activation.
    if (!process || process == lastActive_) {
        lastActive_ = process;
        return false;
    }
    lastActive_ = process;
    const auto application = runningApplication(*process);
    if (!application) {
        return false;
    }
    std::vector<std::uint64_t> ids;
    for (const auto& entry : observers_->handlers) {
        ids.push_back(entry.first);
    }
    for (const auto id : ids) {
        if (auto found = observers_->handlers.find(id); found != observers_->handlers.end()) {
            auto handler = found->second;
            handler(*application);
        }
    }
    return false;
}

bool X11Applications::canLaunchApplication(const std::string& bundleIdentifier) const {
    return desktopEntry(bundleIdentifier).has_value();
}

void X11Applications::launchApplication(const std::string& bundleIdentifier,
                                        LaunchCompletion completion) {
    auto finish = [this, completion = std::move(completion)](
                      Expected<RunningApplication, LaunchError> outcome) {
        connection_.queue().post(
            [completion, outcome = std::move(outcome)] { completion(outcome); });
    };
    for (const auto& application : runningApplications()) {
        if (application.bundleIdentifier == bundleIdentifier &&
            application.processIdentifier != self_.processIdentifier) {
            activate(application.processIdentifier);
            finish(application);
            return;
        }
    }
    const auto entry = desktopEntry(bundleIdentifier);
    if (!entry) {
        finish(unexpected(LaunchError{LaunchError::Kind::notFound,
                                      "no desktop entry " + bundleIdentifier + ".desktop"}));
        return;
    }
    std::string command = commandLine(entryValue(*entry, "Exec"));
    if (command.empty()) {
        finish(unexpected(
            LaunchError{LaunchError::Kind::failed, entry->string() + " has no Exec line"}));
        return;
    }
    std::string shell = "/bin/sh";
    std::string flag = "-c";
    char* arguments[] = {shell.data(), flag.data(), command.data(), nullptr};
    pid_t pid = 0;
    if (posix_spawn(&pid, shell.c_str(), nullptr, nullptr, arguments, environ) != 0) {
        finish(unexpected(LaunchError{LaunchError::Kind::failed, "cannot start " + command}));
        return;
    }
    RunningApplication launched;
    launched.processIdentifier = pid;
    launched.bundleIdentifier = bundleIdentifier;
    launched.localizedName = entryValue(*entry, "Name");
    finish(launched);
}

bool X11Applications::activate(ProcessId process) {
    const auto windows = windowsOf(process);
    if (windows.empty()) {
        return false;
    }
    xcb_client_message_event_t message{};
    message.response_type = XCB_CLIENT_MESSAGE;
    message.format = 32;
    message.window = windows.front();
    message.type = connection_.atom("_NET_ACTIVE_WINDOW");
    // Source 2: a pager or taskbar acting for the user, which window managers do not refuse.
    message.data.data32[0] = 2;
    message.data.data32[1] = XCB_CURRENT_TIME;
    xcb_send_event(connection_.raw(), 0, connection_.root(),
                   XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT | XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY,
                   reinterpret_cast<const char*>(&message));
    connection_.flush();
    return true;
}

bool X11Applications::hide(ProcessId process) {
    const auto windows = windowsOf(process);
    for (const auto window : windows) {
        xcb_client_message_event_t message{};
        message.response_type = XCB_CLIENT_MESSAGE;
        message.format = 32;
        message.window = window;
        message.type = connection_.atom("WM_CHANGE_STATE");
        message.data.data32[0] = XCB_ICCCM_WM_STATE_ICONIC;
        xcb_send_event(connection_.raw(), 0, connection_.root(),
                       XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT | XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY,
                       reinterpret_cast<const char*>(&message));
    }
    connection_.flush();
    return !windows.empty();
}

void X11Applications::setActivationPolicy(ActivationPolicy policy) {
    self_.activationPolicy = policy;
}

}  // namespace corvetta
