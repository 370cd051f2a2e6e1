#include "foundation/paths.h"

#include <filesystem>
#include <map>
#include <string>

#include <gtest/gtest.h>

namespace corvetta {
namespace {

EnvironmentLookup environment(std::map<std::string, std::string> values) {
    return [values](const std::string& name) -> std::optional<std::string> {
        const auto found = values.find(name);
        return found == values.end() ? std::nullopt : std::optional<std::string>(found->second);
    };
}

// Empty and relative XDG values are ignored, as the XDG rules ask.
TEST(Paths, FollowTheXdgVariablesElseHome) {
    const struct {
        std::map<std::string, std::string> environment;
        std::filesystem::path preferences, support;
    } rows[] = {
        {{{"HOME", "/home/ada"}},
         "/home/ada/.config/corvetta/preferences.json",
         "/home/ada/.local/share/Corvetta"},
        {{{"HOME", "/home/ada"}, {"XDG_CONFIG_HOME", "/cfg"}, {"XDG_DATA_HOME", "/data"}},
         "/cfg/corvetta/preferences.json",
         "/data/Corvetta"},
        {{{"HOME", "/home/ada"}, {"XDG_CONFIG_HOME", ""}, {"XDG_DATA_HOME", "relative/data"}},
         "/home/ada/.config/corvetta/preferences.json",
         "/home/ada/.local/share/Corvetta"},
    };
    for (const auto& row : rows) {
        const Paths paths = Paths::resolve(environment(row.environment));
        EXPECT_EQ(paths.home, "/home/ada");
        EXPECT_EQ(paths.preferencesFile(), row.preferences);
        EXPECT_EQ(paths.configFolder, row.preferences.parent_path());
        EXPECT_EQ(paths.applicationSupportFolder, row.support);
    }
}

TEST(Paths, FallBackToTheAccountsHomeWithoutHome) {
    const Paths paths = Paths::resolve(environment({}));
    EXPECT_FALSE(paths.home.empty());
    EXPECT_TRUE(paths.home.is_absolute());
    EXPECT_EQ(paths.configFolder, paths.home / ".config" / "corvetta");
}

}  // namespace
}  // namespace corvetta
