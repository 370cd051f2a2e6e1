#include "app/command_line.h"

#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace corvetta {
namespace {

using ::testing::HasSubstr;
using ::testing::MatchesRegex;
using ::testing::StartsWith;

CommandLineOptions parsed(const std::vector<std::string>& arguments) {
    const auto result = parseCommandLine(arguments);
    EXPECT_TRUE(result.has_value());
    return result.value_or(CommandLineOptions{});
}

std::string errorFor(const std::vector<std::string>& arguments) {
    const auto result = parseCommandLine(arguments);
    return result ? "(accepted)" : result.error().message;
}

TEST(CommandLine, NoArgumentsMeansRun) {
    const auto options = parsed({});
    EXPECT_FALSE(options.showHelp);
    EXPECT_FALSE(options.showVersion);
}

TEST(CommandLine, HelpAndVersionInLongAndShortForms) {
    EXPECT_TRUE(parsed({"--help"}).showHelp);
    EXPECT_TRUE(parsed({"-h"}).showHelp);
    EXPECT_FALSE(parsed({"-h"}).showVersion);
    EXPECT_TRUE(parsed({"--version"}).showVersion);
    EXPECT_TRUE(parsed({"-V"}).showVersion);
    EXPECT_FALSE(parsed({"-V"}).showHelp);
    const auto both = parsed({"-V", "--help"});
    EXPECT_TRUE(both.showHelp);
    EXPECT_TRUE(both.showVersion);
}

TEST(CommandLine, RefusesUnknownOptionsAndArguments) {
    EXPECT_EQ(errorFor({"--bogus"}), "unrecognized option '--bogus'");
    EXPECT_EQ(errorFor({"-v"}), "unrecognized option '-v'");  // case matters
    EXPECT_EQ(errorFor({"--help=yes"}), "unrecognized option '--help=yes'");
    // A valid option does not excuse a bad one after it.
    EXPECT_EQ(errorFor({"--help", "--bogus"}), "unrecognized option '--bogus'");
    EXPECT_EQ(errorFor({"extra"}), "unexpected argument 'extra'");
    EXPECT_EQ(errorFor({"--version", "file.json"}), "unexpected argument 'file.json'");
}

TEST(CommandLine, HelpDescribesUsageOptionsAndFiles) {
    const std::string help = helpText();
    EXPECT_THAT(help, StartsWith("Usage: corvetta"));
    EXPECT_THAT(help, HasSubstr("-h, --help"));
    EXPECT_THAT(help, HasSubstr("-V, --version"));
    EXPECT_THAT(help, HasSubstr("corvetta/preferences.json"));
    EXPECT_EQ(help.back(), '\n');
}

TEST(CommandLine, VersionIsProgramNameAndNumber) {
    EXPECT_THAT(versionText(), MatchesRegex("corvetta [0-9]+\\.[0-9]+\\.[0-9]+"));
}

}  // namespace
}  // namespace corvetta
