#include "platform/xdg/file_stamps.h"

#include <algorithm>
#include <ctime>

#include <sys/stat.h>

namespace corvetta {

namespace {

// Kernels stamp files from a clock that lags the real one by up to a tick (at most 10 ms); a
// stamp within this of the record's start may be shared by a write made just after the read.
constexpr std::int64_t kStampTolerance = 100'000'000;

std::int64_t nanoseconds(const timespec& time) {
    return static_cast<std::int64_t>(time.tv_sec) * 1'000'000'000 + time.tv_nsec;
}

}  // namespace

FileStamps FileStamps::begin() {
    FileStamps stamps;
    timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    stamps.begun_ = true;
    stamps.began_ = nanoseconds(now);
    return stamps;
}

FileStamps::Stamp FileStamps::stampOf(const std::filesystem::path& path) {
    Stamp stamp{path};
    struct stat status {};
    if (::stat(path.c_str(), &status) == 0) {
        stamp.exists = true;
        stamp.modified = nanoseconds(status.st_mtim);
        stamp.changed = nanoseconds(status.st_ctim);
        stamp.size = static_cast<std::uint64_t>(status.st_size);
        stamp.device = static_cast<std::uint64_t>(status.st_dev);
        stamp.inode = static_cast<std::uint64_t>(status.st_ino);
    }
    return stamp;
}

void FileStamps::note(const std::filesystem::path& path) {
    auto stamp = stampOf(path);
    // A later write moves the modification time to its own tick, so only a recent one can hide it.
    if (stamp.exists && stamp.modified > began_ - kStampTolerance) {
        tooRecent_ = true;
    }
    stamps_.push_back(std::move(stamp));
}

bool FileStamps::current() const {
    return begun_ && !tooRecent_ && std::ranges::all_of(stamps_, [](const Stamp& stamp) {
               return stampOf(stamp.path) == stamp;
           });
}

}  // namespace corvetta
