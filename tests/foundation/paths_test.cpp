#include "foundation/paths.h"

#include <map>

#include <gtest/gtest.h>

namespace corvetta {
namespace {

EnvironmentLookup environment(std::map<std::string, std::string> values) {
    return [values](const std::string& name) -> std::optional<std::string> {
        const auto found = values.find(name);
        return found == values.end() ? std::nullopt : std::optional<std::string>(found->second);
    };
}

TEST(Paths, FollowHomeWhenNoXdgVariablesAreSet) {
    const Paths paths = Paths::resolve(environment({{"HOME", "/home/ada"}}));
    EXPECT_EQ(paths.home, "/home/ada");
    EXPECT_EQ(paths.configFolder, "/home/ada/.config/corvetta");
    EXPECT_EQ(paths.preferencesFile(), "/home/ada/.config/corvetta/preferences.json");
    EXPECT_EQ(paths.applicationSupportFolder, "/home/ada/.local/share/Corvetta");
}

TEST(Paths, FollowTheXdgVariables) {
    const Paths paths = Paths::resolve(environment(
        {{"HOME", "/home/ada"}, {"XDG_CONFIG_HOME", "/cfg"}, {"XDG_DATA_HOME", "/data"}}));
    EXPECT_EQ(paths.preferencesFile(), "/cfg/corvetta/preferences.json");
    EXPECT_EQ(paths.applicationSupportFolder, "/data/Corvetta");
}

TEST(Paths, IgnoreEmptyAndRelativeXdgValues) {
    const Paths paths = Paths::resolve(environment(
        {{"HOME", "/home/ada"}, {"XDG_CONFIG_HOME", ""}, {"XDG_DATA_HOME", "relative/data"}}));
    EXPECT_EQ(paths.configFolder, "/home/ada/.config/corvetta");
    EXPECT_EQ(paths.applicationSupportFolder, "/home/ada/.local/share/Corvetta");
}

TEST(Paths, FallBackToTheAccountsHomeWithoutHome) {
    const Paths paths = Paths::resolve(environment({}));
    EXPECT_FALSE(paths.home.empty());
    EXPECT_TRUE(paths.home.is_absolute());
    EXPECT_EQ(paths.configFolder, paths.home / ".config" / "corvetta");
}

}  // namespace
}  // namespace corvetta
