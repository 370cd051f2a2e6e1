#include "platform/xdg/desktop_entries.h"

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <set>
#include <sstream>

namespace corvetta {

namespace {

std::string lowercase(std::string text) {
    std::ranges::transform(text, text.begin(),
                           [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return text;
}

// Reads at most one byte past the limit, so a link to an endless device cannot grow memory.
std::optional<std::string> readBounded(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    if (!file) {
        return std::nullopt;
    }
    std::string text(kMaxDesktopEntrySize + 1, '\0');
    file.read(text.data(), static_cast<std::streamsize>(text.size()));
    text.resize(static_cast<std::size_t>(file.gcount()));
    return text;
}

std::string fileName(const std::string& path) {
    return std::filesystem::path(path).filename().string();
}

// The program an entry starts, by file name: TryExec, else the first word of Exec.
std::string programName(const DesktopEntry& entry) {
    if (!entry.tryExec.empty()) {
        return fileName(entry.tryExec);
    }
    const auto arguments = parseExecLine(entry.exec, {});
    return arguments ? fileName(arguments->front()) : std::string();
}

// Each folder and subfolder is noted before it is listed, each file before it is read, so a change
// made while reading shows as a difference next time.
std::vector<InstalledDesktopEntry> readEntries(const std::vector<std::filesystem::path>& folders,
                                               FileStamps& stamps) {
    std::vector<InstalledDesktopEntry> result;
    // An ID found once hides the same ID further down the list, whether or not it could be read:
    // that is how a user's own entry overrides or deletes (Hidden) an installed one.
    std::set<std::string> seen;
    for (const auto& folder : folders) {
        stamps.note(folder);
        std::vector<std::pair<std::string, std::filesystem::path>> found;
        std::error_code error;
        for (std::filesystem::recursive_directory_iterator walk(
                 folder, std::filesystem::directory_options::skip_permission_denied, error);
             !error && walk != std::filesystem::recursive_directory_iterator();
             walk.increment(error)) {
            const auto& path = walk->path();
            // A dangling link is passed over, not taken as the end of the folder.
            std::error_code unreadable;
            if (walk->is_directory(unreadable)) {
                stamps.note(path);
                continue;
            }
            if (path.extension() != ".desktop" || !walk->is_regular_file(unreadable)) {
                continue;
            }
            std::string id = path.lexically_relative(folder).replace_extension().string();
            std::ranges::replace(id, '/', '-');
            found.emplace_back(std::move(id), path);
        }
        std::ranges::sort(found);
        for (auto& [id, path] : found) {
            if (!seen.insert(id).second) {
                continue;
            }
            stamps.note(path);
            const auto text = readBounded(path);
            if (!text) {
                continue;
            }
            auto entry = parseDesktopEntry(*text);
            if (entry && !entry->hidden && entry->type == "Application") {
                result.push_back({id, path, std::move(*entry)});
            }
        }
    }
    return result;
}

}  // namespace

std::vector<std::filesystem::path> xdgApplicationFolders() {
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

DesktopEntries::DesktopEntries(std::vector<std::filesystem::path> folders)
    : folders_([folders = std::move(folders)] { return folders; }) {}

DesktopEntries::DesktopEntries(std::function<std::vector<std::filesystem::path>()> folders)
    : folders_(folders ? std::move(folders) : [] { return std::vector<std::filesystem::path>{}; }) {
}

std::shared_ptr<const DesktopEntries::Entries> DesktopEntries::all() const {
    auto folders = folders_();
    const std::lock_guard lock(mutex_);
    if (entries_ && folders == readFolders_ && stamps_.current()) {
        return entries_;
    }
    stamps_ = FileStamps::begin();
    entries_ = std::make_shared<const Entries>(readEntries(folders, stamps_));
    readFolders_ = std::move(folders);
    return entries_;
}

std::optional<InstalledDesktopEntry> DesktopEntries::byId(const std::string& id) const {
    for (const auto& installed : *all()) {
        if (installed.id == id) {
            return installed;
        }
    }
    return std::nullopt;
}

std::optional<InstalledDesktopEntry> DesktopEntries::forApplication(
    const ApplicationTraits& traits) const {
    const auto entries = all();
    const std::string instance = lowercase(traits.instanceName);
    const std::string className = lowercase(traits.className);
    const std::function<bool(const InstalledDesktopEntry&)> rules[] = {
        [&](const InstalledDesktopEntry& e) {
            return !traits.applicationId.empty() && e.id == traits.applicationId;
        },
        [&](const InstalledDesktopEntry& e) {
            const auto& wmClass = e.entry.startupWMClass;
            return !wmClass.empty() &&
                   (wmClass == traits.className || wmClass == traits.instanceName);
        },
        [&](const InstalledDesktopEntry& e) {
            const auto id = lowercase(e.id);
            return (!className.empty() && id == className) || (!instance.empty() && id == instance);
        },
        [&](const InstalledDesktopEntry& e) {
            const auto program = programName(e.entry);
            return !program.empty() && std::ranges::find(traits.executableNames, program) !=
                                           traits.executableNames.end();
        },
    };
    for (const auto& rule : rules) {
        if (const auto found = std::ranges::find_if(*entries, rule); found != entries->end()) {
            return *found;
        }
    }
    return std::nullopt;
}

}  // namespace corvetta
