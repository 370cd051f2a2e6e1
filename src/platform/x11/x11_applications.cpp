#include "platform/x11/x11_applications.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <set>
#include <sstream>
#include <string>

#include <xcb/xcb_icccm.h>

#include "platform/x11/x11_window_class.h"

namespace corvetta {

namespace {

// The file names a process runs under: its executable's, and its first argument's.
std::vector<std::string> executableNames(ProcessId process) {
    std::vector<std::string> names;
    const std::filesystem::path proc = "/proc/" + std::to_string(process);
    std::error_code error;
    const auto executable = std::filesystem::read_symlink(proc / "exe", error);
    if (!error) {
        names.push_back(executable.filename().string());
    }
    std::ifstream commandLine(proc / "cmdline");
    std::string first;
    if (std::getline(commandLine, first, '\0') && !first.empty()) {
        names.push_back(std::filesystem::path(first).filename().string());
    }
    return names;
}

}  // namespace

struct X11Applications::Observers {
    std::uint64_t nextId = 1;
    std::map<std::uint64_t, std::function<void(const RunningApplication&)>> handlers;
};

X11Applications::X11Applications(X11Connection& connection, RunningApplication self,
                                 X11Launching launching)
    : connection_(connection),
      properties_(connection),
      self_(std::move(self)),
      desktopEntries_(std::move(launching.applicationFolders)),
      launchEnvironment_(std::move(launching.environment)),
      launcher_(connection.queue()),
      observers_(std::make_shared<Observers>()) {
    connection_.selectRootEvents(XCB_EVENT_MASK_PROPERTY_CHANGE);
    lastActive_ = activeProcess();
    events_ = connection_.addEventHandler(
        [this](const xcb_generic_event_t& event) { return handleEvent(event); });
}

X11Applications::~X11Applications() = default;

std::vector<X11Applications::Client> X11Applications::clientsFrontToBack() const {
    if (!stacking_) {
        auto read =
            properties_.values(connection_.root(), "_NET_CLIENT_LIST_STACKING", XCB_ATOM_WINDOW);
        if (!read || read->empty()) {
            read = properties_.values(connection_.root(), "_NET_CLIENT_LIST", XCB_ATOM_WINDOW);
        }
        if (!read) {
            return {};
        }
        stacking_ = std::move(*read);
    }
    const auto* stacking = &*stacking_;
    std::vector<Client> result;
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
            identity.instanceName = windowClass->instanceName;
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
    // Watched before the read, so a change after it cannot go unannounced.
    std::vector<std::pair<xcb_window_t, xcb_get_property_cookie_t>> asked;
    for (const auto window : windows) {
        if (!known_[window].hidden) {
            connection_.watchClient(window);
            asked.emplace_back(window, properties_.requestStates(window));
        }
    }
    const auto hiddenAtom = connection_.atom("_NET_WM_STATE_HIDDEN");
    for (const auto& [window, cookie] : asked) {
        auto state = properties_.valuesOf(cookie, XCB_ATOM_ATOM);
        // A window gone meanwhile counts as not hidden, and is read again next time.
        const bool hidden = state && std::ranges::find(*state, hiddenAtom) != state->end();
        if (state) {
            known_[window].hidden = hidden;
        }
    }
    application.isHidden = !windows.empty() && std::ranges::all_of(windows, [&](auto window) {
        return known_[window].hidden.value_or(false);
    });
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

std::optional<xcb_window_t> X11Applications::activeWindow() const {
    if (!active_) {
        auto read = properties_.values(connection_.root(), "_NET_ACTIVE_WINDOW", XCB_ATOM_WINDOW);
        if (!read) {
            return std::nullopt;
        }
        active_ = read->empty() ? XCB_WINDOW_NONE : read->front();
    }
    if (*active_ == XCB_WINDOW_NONE) {
        return std::nullopt;
    }
    return *active_;
}

std::optional<ProcessId> X11Applications::activeProcess() const {
    const auto active = activeWindow();
    if (!active) {
        return std::nullopt;
    }
    if (const auto found = known_.find(*active); found != known_.end() && found->second.pid > 0) {
        return found->second.pid;
    }
    auto pid = properties_.processOf(*active);
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
    if (notify.window != connection_.root()) {
        if (notify.atom == connection_.atom("_NET_WM_STATE")) {
            if (const auto found = known_.find(notify.window); found != known_.end()) {
                found->second.hidden.reset();
            }
        }
        return false;
    }
    if (notify.atom == connection_.atom("_NET_CLIENT_LIST")) {
        // Window ids are reused once a client disconnects; what was known of them may no longer
        // hold, and a full read costs one round trip.
        known_.clear();
        stacking_.reset();
        return false;
    }
    if (notify.atom == connection_.atom("_NET_CLIENT_LIST_STACKING")) {
        stacking_.reset();
        return false;
    }
    if (notify.atom != connection_.atom("_NET_ACTIVE_WINDOW")) {
        return false;
    }
    active_.reset();
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
    return desktopEntries_.byId(bundleIdentifier).has_value();
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
    const auto installed = desktopEntries_.byId(bundleIdentifier);
    if (!installed) {
        finish(unexpected(LaunchError{LaunchError::Kind::notFound,
                                      "no desktop entry " + bundleIdentifier + ".desktop"}));
        return;
    }
    const auto& entry = installed->entry;
    const auto arguments =
        parseExecLine(entry.exec, {entry.icon, entry.name, installed->path.string()});
    if (!arguments) {
        finish(unexpected(LaunchError{LaunchError::Kind::failed,
                                      installed->path.string() + ": " + arguments.error()}));
        return;
    }
    const auto process = launcher_.launch(*arguments, launchEnvironment_);
    if (!process) {
        finish(unexpected(LaunchError{LaunchError::Kind::failed, process.error()}));
        return;
    }
    RunningApplication launched;
    launched.processIdentifier = *process;
    launched.bundleIdentifier = bundleIdentifier;
    launched.localizedName = entry.name;
    finish(launched);
}

std::optional<InstalledDesktopEntry> X11Applications::desktopEntryOf(ProcessId process) const {
    if (process <= 0 || process == self_.processIdentifier) {
        return std::nullopt;
    }
    ApplicationTraits traits;
    for (const auto window : windowsOf(process)) {
        const auto& identity = identityOf(window);
        if (traits.applicationId.empty()) {
            traits.applicationId = identity.applicationId;
        }
        if (traits.className.empty()) {
            traits.instanceName = identity.instanceName;
            traits.className = identity.className;
        }
    }
    traits.executableNames = executableNames(process);
    return desktopEntries_.forApplication(traits);
}

std::vector<ApplicationAction> X11Applications::applicationActions(ProcessId process) const {
    std::vector<ApplicationAction> actions;
    if (const auto installed = desktopEntryOf(process)) {
        for (const auto& action : installed->entry.actions) {
            actions.push_back({action.identifier, action.name});
        }
    }
    return actions;
}

Expected<void, std::string> X11Applications::performApplicationAction(
    ProcessId process, const std::string& identifier) {
    const auto installed = desktopEntryOf(process);
    if (!installed) {
        return unexpected("no desktop entry found for process " + std::to_string(process));
    }
    const auto& entry = installed->entry;
    const auto action = std::ranges::find(entry.actions, identifier, &DesktopAction::identifier);
    if (action == entry.actions.end()) {
        return unexpected(installed->id + ".desktop has no action " + identifier);
    }
    const auto arguments =
        parseExecLine(action->exec, {entry.icon, entry.name, installed->path.string()});
    if (!arguments) {
        return unexpected(installed->path.string() + ", action " + identifier + ": " +
                          arguments.error());
    }
    const auto launched = launcher_.launch(*arguments, launchEnvironment_);
    if (!launched) {
        return unexpected(launched.error());
    }
    return {};
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
