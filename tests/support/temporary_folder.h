// temporary_folder.h: Temporary folders and test files, so tests never touch the real home.
#pragma once

#include <filesystem>
#include <string>

namespace corvetta::testing {

// A fresh folder under the system's temporary folder, removed with everything in it at the end.
class TemporaryFolder {
public:
    TemporaryFolder();
    ~TemporaryFolder();
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    const std::filesystem::path& path() const { return path_; }
    std::filesystem::path operator/(const std::string& name) const { return path_ / name; }

private:
    std::filesystem::path path_;
};

// Writes a file for a test to read, creating folders as needed.
void writeTestFile(const std::filesystem::path& path, const std::string& contents);
std::string readTestFile(const std::filesystem::path& path);

}  // namespace corvetta::testing
