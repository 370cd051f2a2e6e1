// files.h: Atomic writes and quarantine, so no crash or bad file loses saved data.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>

#include "foundation/date.h"
#include "foundation/expected.h"

namespace corvetta {

struct FileError {
    std::filesystem::path path;
    std::string reason;

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

Expected<std::string, FileError> readFile(const std::filesystem::path& path);

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
