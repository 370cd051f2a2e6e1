// files.h: Atomic writes, bounded reads and quarantine files for the program's own files.
#pragma once

#include <cstddef>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "foundation/date.h"
#include "foundation/expected.h"

namespace corvetta {

struct FileError {
    std::filesystem::path path;
    std::string reason;
    // The errno behind it; 0 when the refusal is our own (a file over the size limit).
    int errorNumber = 0;

    bool isMissing() const;

    // "<reason>: <path>", the form log lines use.
    std::string description() const;
};

// Writes through a temporary file in the same folder that is flushed to disk and then renamed over
// the target, so a crash or a full disk leaves either the old file or the new one, never a mix.
// Missing folders are created.
Expected<void, FileError> writeFileAtomically(const std::filesystem::path& path,
                                              std::string_view contents);

// Creates the folder and any missing parents; an existing folder is fine.
Expected<void, FileError> createFolders(const std::filesystem::path& folder);

// The most any file read whole may hold. Our own files stay far below it; a link to /dev/zero or a
// runaway file must not grow the memory without end.
inline constexpr std::size_t kMaxReadFileBytes = std::size_t{16} << 20;

// The whole file; a file larger than `limit` is refused, whatever its size claims to be.
Expected<std::string, FileError> readFile(const std::filesystem::path& path,
                                          std::size_t limit = kMaxReadFileBytes);

// Removes what writes to `path` left when the process was killed half-way: the hidden temporary
// files named after it in its folder (".<name>.XXXXXX", regular files only). Returns the removed
// paths. Meant for the start, before this process writes the file itself.
std::vector<std::filesystem::path> removeAbandonedTemporaryFiles(const std::filesystem::path& path);

// A name for keeping damaged data aside: "<stem>-quarantine-<timestamp>.json" in `folder`, with
// ":" in the ISO timestamp replaced by "-", and "-2", "-3", ... added if that name is taken.
std::filesystem::path quarantinePath(const std::filesystem::path& folder, std::string_view stem,
                                     Date when);

// Writes raw bytes that could not be decoded to a fresh quarantine file; returns its path.
Expected<std::filesystem::path, FileError> quarantineData(const std::filesystem::path& folder,
                                                          std::string_view stem,
                                                          std::string_view contents, Date when);

// Moves a damaged file aside under a quarantine name in its own folder; returns the new path.
Expected<std::filesystem::path, FileError> quarantineFile(const std::filesystem::path& file,
                                                          std::string_view stem, Date when);

}  // namespace corvetta
