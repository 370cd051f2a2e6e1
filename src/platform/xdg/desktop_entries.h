// desktop_entries.h: Finds the installed desktop entry of an application, by id or by its process.
#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "platform/xdg/desktop_entry.h"
#include "platform/xdg/file_stamps.h"

namespace corvetta {

// An installed entry: its desktop file ID ("org.gnome.Terminal", from the path below
// "applications/" with "/" as "-" and ".desktop" left off) and where it was read.
struct InstalledDesktopEntry {
    std::string id;
    std::filesystem::path path;
    DesktopEntry entry;
};

// What a running application tells of itself that can name its entry.
struct ApplicationTraits {
    // The desktop file ID the window names (_GTK_APPLICATION_ID, _KDE_NET_WM_DESKTOP_FILE).
    std::string applicationId;
    // WM_CLASS.
    std::string instanceName;
    std::string className;
    // The file name of the process's executable, and of its first argument (they differ for
    // interpreted programs and wrappers).
    std::vector<std::string> executableNames;
};

// "$XDG_DATA_HOME/applications" (default ~/.local/share), then "applications" in each of
// $XDG_DATA_DIRS (default /usr/local/share:/usr/share): the order in which an ID is looked up,
// the first one found hiding the others.
std::vector<std::filesystem::path> xdgApplicationFolders();

// The entries in a list of "applications" folders, as they are when asked (so an application
// installed meanwhile is found). What was read is kept while the list of folders, every folder and
// subfolder, and every entry file read still carry the stamps they had when read; a lookup then
// costs a stat of each instead of reading and decoding them all. Entries that cannot be read or
// decoded, that are hidden, or whose Type is not Application are left out.
class DesktopEntries {
public:
    explicit DesktopEntries(std::vector<std::filesystem::path> folders);
    // The folders are asked for at each lookup, as the environment naming them may change; no
    // function, no folders.
    explicit DesktopEntries(std::function<std::vector<std::filesystem::path>()> folders);

    // The entry with that desktop file ID.
    std::optional<InstalledDesktopEntry> byId(const std::string& id) const;
    // The running application's entry, by the first rule that finds one: (1) the desktop file ID
    // is the application ID; (2) StartupWMClass is the WM_CLASS class or instance name; (3) the
    // ID is the class or instance name, ignoring case; (4) the file name of the program that
    // TryExec or Exec names is one of the executable names. Within a rule the first folder wins,
    // and within a folder the first ID in byte order.
    std::optional<InstalledDesktopEntry> forApplication(const ApplicationTraits& traits) const;

private:
    using Entries = std::vector<InstalledDesktopEntry>;
    // What the folders hold now: what was read last while it is current, else read again.
    std::shared_ptr<const Entries> all() const;

    std::function<std::vector<std::filesystem::path>()> folders_;
    mutable std::mutex mutex_;
    mutable std::vector<std::filesystem::path> readFolders_;
    mutable FileStamps stamps_;
    mutable std::shared_ptr<const Entries> entries_;
};

}  // namespace corvetta
