// file_stamps.h: Notes files' and folders' stamps when they are read, to tell later if any changed.
#pragma once

#include <cstdint>
#include <filesystem>
#include <vector>

namespace corvetta {

// A record of what was read: note each file or folder before reading it. Adding, removing or
// renaming an entry changes its folder's stamp; writing a file changes its own. A stamp too close
// to when the record began may hide a change made in the same tick of the filesystem's clock, so
// such a record is never taken as current.
class FileStamps {
public:
    // Begins a record that nothing has been noted in; it is not current.
    FileStamps() = default;
    static FileStamps begin();

    // Notes the path as it is now, also when it does not exist (its appearing is a change).
    void note(const std::filesystem::path& path);
    // Every path noted is as it was, and the record can be trusted to tell.
    bool current() const;

private:
    struct Stamp {
        std::filesystem::path path;
        bool exists = false;
        std::int64_t modified = 0;  // nanoseconds since the epoch
        std::int64_t changed = 0;   // the inode's change time, which no tool sets back
        std::uint64_t size = 0;
        std::uint64_t device = 0;
        std::uint64_t inode = 0;
        bool operator==(const Stamp&) const = default;
    };
    static Stamp stampOf(const std::filesystem::path& path);

    bool begun_ = false;
    std::int64_t began_ = 0;
    bool tooRecent_ = false;
    std::vector<Stamp> stamps_;
};

}  // namespace corvetta
