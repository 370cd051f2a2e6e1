#include "foundation/files.h"

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cstring>
#include <system_error>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace corvetta {

namespace {
Unexpected<FileError> failure(const std::filesystem::path& path, const std::string& what) {
    const int number = errno;
    return unexpected(FileError{path, what + " (" + std::strerror(number) + ")", number});
}

// mkstemp's six letters.
constexpr std::string_view kTemporarySuffixPattern = "XXXXXX";

// Hidden and in the same folder, so the rename stays within one file system.
std::string temporaryNamePrefix(const std::filesystem::path& path) {
    return "." + path.filename().string() + ".";
}

bool isTemporaryNameOf(const std::string& name, const std::string& prefix) {
    if (name.size() != prefix.size() + kTemporarySuffixPattern.size() ||
        !name.starts_with(prefix)) {
        return false;
    }
    return std::all_of(name.begin() + static_cast<std::ptrdiff_t>(prefix.size()), name.end(),
                       [](unsigned char c) { return std::isalnum(c) != 0; });
}

std::string megabytes(std::size_t bytes) {
    return bytes % (std::size_t{1} << 20) == 0 ? std::to_string(bytes >> 20) + " MiB"
                                               : std::to_string(bytes) + " bytes";
}

// Closes the descriptor and removes the temporary file unless the write went through.
class TemporaryFile {
public:
    explicit TemporaryFile(std::string pattern) : path_(std::move(pattern)) {
        fd_ = mkstemp(path_.data());
        created_ = fd_ >= 0;
        if (created_) {
            fcntl(fd_, F_SETFD, FD_CLOEXEC);
        }
    }
    ~TemporaryFile() {
        if (fd_ >= 0) {
            close(fd_);
        }
        if (created_ && !committed_) {
            unlink(path_.c_str());
        }
    }
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;

    int fd() const { return fd_; }
    const std::string& path() const { return path_; }
    bool closeNow() { return close(std::exchange(fd_, -1)) == 0; }
    void commit() { committed_ = true; }

private:
    std::string path_;
    int fd_ = -1;
    bool created_ = false;
    bool committed_ = false;
};
}  // namespace

std::string FileError::description() const {
    return reason + ": " + path.string();
}

bool FileError::isMissing() const {
    return errorNumber == ENOENT;
}

Expected<void, FileError> createFolders(const std::filesystem::path& folder) {
    std::error_code error;
    std::filesystem::create_directories(folder, error);
    if (error) {
        return unexpected(FileError{folder, "Could not create folder (" + error.message() + ")"});
    }
    if (!std::filesystem::is_directory(folder, error)) {
        return unexpected(FileError{folder, "Could not create folder (not a folder)"});
    }
    return {};
}

Expected<void, FileError> writeFileAtomically(const std::filesystem::path& path,
                                              std::string_view contents) {
    const auto folder = path.has_parent_path() ? path.parent_path() : std::filesystem::path(".");
    if (auto made = createFolders(folder); !made) {
        return made;
    }
    TemporaryFile temporary(
        (folder / (temporaryNamePrefix(path) + std::string(kTemporarySuffixPattern))).string());
    if (temporary.fd() < 0) {
        return failure(path, "Could not create a temporary file");
    }
    const char* data = contents.data();
    std::size_t left = contents.size();
    while (left > 0) {
        const ssize_t written = write(temporary.fd(), data, left);
        if (written < 0) {
            if (errno == EINTR) {
                continue;
            }
            return failure(path, "Could not write");
        }
        data += written;
        left -= static_cast<std::size_t>(written);
    }
    // Keep the mode of the file being replaced; new files get the usual 0644.
    struct stat existing {};
    const mode_t mode = stat(path.c_str(), &existing) == 0 ? (existing.st_mode & 07777) : 0644;
    fchmod(temporary.fd(), mode);
    if (fsync(temporary.fd()) != 0) {
        return failure(path, "Could not flush");
    }
    if (!temporary.closeNow()) {
        return failure(path, "Could not close");
    }
    if (rename(temporary.path().c_str(), path.c_str()) != 0) {
        return failure(path, "Could not replace");
    }
    temporary.commit();
    // Make the rename itself durable.
    if (const int dir = open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC); dir >= 0) {
        fsync(dir);
        close(dir);
    }
    return {};
}

Expected<std::string, FileError> readFile(const std::filesystem::path& path, std::size_t limit) {
    const int fd = open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (fd < 0) {
        return failure(path, "Could not open");
    }
    struct stat info {};
    if (fstat(fd, &info) != 0 || S_ISDIR(info.st_mode)) {
        if (S_ISDIR(info.st_mode)) {
            errno = EISDIR;
        }
        auto error = failure(path, "Could not read");
        close(fd);
        return error;
    }
    std::string contents;
    char buffer[65536];
    while (true) {
        const ssize_t n = read(fd, buffer, sizeof buffer);
        if (n == 0) {
            break;
        }
        if (n < 0) {
            if (errno == EINTR) {
                continue;
            }
            auto error = failure(path, "Could not read");
            close(fd);
            return error;
        }
        if (contents.size() + static_cast<std::size_t>(n) > limit) {
            close(fd);
            return unexpected(
                FileError{path, "Refused to read a file larger than " + megabytes(limit)});
        }
        contents.append(buffer, static_cast<std::size_t>(n));
    }
    close(fd);
    return contents;
}

std::vector<std::filesystem::path> removeAbandonedTemporaryFiles(
    const std::filesystem::path& path) {
    std::vector<std::filesystem::path> removed;
    const auto folder = path.has_parent_path() ? path.parent_path() : std::filesystem::path(".");
    const std::string prefix = temporaryNamePrefix(path);
    std::error_code error;
    for (std::filesystem::directory_iterator it(folder, error), end; !error && it != end;
         it.increment(error)) {
        const auto& candidate = it->path();
        if (isTemporaryNameOf(candidate.filename().string(), prefix) &&
            it->symlink_status(error).type() == std::filesystem::file_type::regular &&
            std::filesystem::remove(candidate, error)) {
            removed.push_back(candidate);
        }
    }
    return removed;
}

std::filesystem::path quarantinePath(const std::filesystem::path& folder, std::string_view stem,
                                     Date when) {
    const std::string base = std::string(stem) + "-quarantine-" + fileNameTimestamp(when);
    std::filesystem::path candidate = folder / (base + ".json");
    for (int n = 2; std::filesystem::exists(candidate); ++n) {
        candidate = folder / (base + "-" + std::to_string(n) + ".json");
    }
    return candidate;
}

Expected<std::filesystem::path, FileError> quarantineData(const std::filesystem::path& folder,
                                                          std::string_view stem,
                                                          std::string_view contents, Date when) {
    if (auto made = createFolders(folder); !made) {
        return unexpected(made.error());
    }
    const auto target = quarantinePath(folder, stem, when);
    if (auto written = writeFileAtomically(target, contents); !written) {
        return unexpected(written.error());
    }
    return target;
}

Expected<std::filesystem::path, FileError> quarantineFile(const std::filesystem::path& file,
                                                          std::string_view stem, Date when) {
    const auto target = quarantinePath(file.parent_path(), stem, when);
    if (rename(file.c_str(), target.c_str()) != 0) {
        return failure(file, "Could not move aside");
    }
    return target;
}

}  // namespace corvetta
