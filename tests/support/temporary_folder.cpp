#include "support/temporary_folder.h"

#include <fstream>
#include <sstream>
#include <stdexcept>

#include <stdlib.h>

namespace corvetta::testing {

TemporaryFolder::TemporaryFolder() {
    std::string pattern =
        (std::filesystem::temp_directory_path() / "corvetta-test-XXXXXX").string();
    if (!mkdtemp(pattern.data())) {
        throw std::runtime_error("could not create a temporary folder");
    }
    path_ = pattern;
}

TemporaryFolder::~TemporaryFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
}

void writeTestFile(const std::filesystem::path& path, const std::string& contents) {
    std::filesystem::create_directories(path.parent_path());
    std::ofstream out(path, std::ios::binary);
    out << contents;
}

std::string readTestFile(const std::filesystem::path& path) {
    std::ifstream in(path, std::ios::binary);
    std::ostringstream contents;
    contents << in.rdbuf();
    return contents.str();
}

}  // namespace corvetta::testing
