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
using Arguments = std::vector<std::string>;

TEST(CommandLine, HelpAndVersionInLongAndShortForms) {
    const struct {
        Arguments arguments;
        bool help, version;
    } cases[] = {{{}, false, false},    {{"--help"}, true, false},
                 {{"-h"}, true, false}, {{"--version"}, false, true},
                 {{"-V"}, false, true}, {{"-V", "--help"}, true, true}};
    for (const auto& c : cases) {
        SCOPED_TRACE(::testing::PrintToString(c.arguments));
        const auto options = parseCommandLine(c.arguments);
        ASSERT_TRUE(options.has_value()) << options.error().message;
        EXPECT_EQ(options->showHelp, c.help);
        EXPECT_EQ(options->showVersion, c.version);
    }
}

TEST(CommandLine, RefusesUnknownOptionsAndArguments) {
    const std::pair<Arguments, std::string> cases[] = {
        {{"--bogus"}, "unrecognized option '--bogus'"},
        {{"-v"}, "unrecognized option '-v'"},  // case matters
        {{"--help=yes"}, "unrecognized option '--help=yes'"},
        {{"--help", "--bogus"}, "unrecognized option '--bogus'"},  // not excused by a valid one
        {{"extra"}, "unexpected argument 'extra'"},
        {{"--version", "file.json"}, "unexpected argument 'file.json'"},
    };
    for (const auto& [arguments, message] : cases) {
        const auto result = parseCommandLine(arguments);
        EXPECT_EQ(result ? "(accepted)" : result.error().message, message);
    }
}

TEST(CommandLine, DesktopChoice) {
    const std::pair<Arguments, std::string> accepted[] = {
        {{"--desktop=sim:desk.json"}, "desk.json"},
        {{"--desktop", "sim:/tmp/a b.json"}, "/tmp/a b.json"},
        {{"--desktop=sim:one.json", "--desktop=sim:two.json"}, "two.json"},  // the last one wins
    };
    for (const auto& [arguments, file] : accepted) {
        const auto options = parseCommandLine(arguments);
        ASSERT_TRUE(options.has_value()) << options.error().message;
        EXPECT_EQ(options->desktop,
                  (DesktopChoice{.kind = DesktopChoice::Kind::simulated, .file = file}));
    }
    EXPECT_FALSE(parseCommandLine({})->desktop.has_value());
    EXPECT_EQ(parseCommandLine({"--desktop=x11"})->desktop,
              DesktopChoice{.kind = DesktopChoice::Kind::x11});
    EXPECT_EQ(parseCommandLine({"--desktop", "x11::7"})->desktop,
              (DesktopChoice{.kind = DesktopChoice::Kind::x11, .display = ":7"}));
    EXPECT_EQ(defaultDesktopChoice(":0"), DesktopChoice{.kind = DesktopChoice::Kind::x11});
    EXPECT_EQ(defaultDesktopChoice(""), std::nullopt);
    EXPECT_EQ(defaultDesktopChoice(std::nullopt), std::nullopt);
    EXPECT_EQ(parseCommandLine({"--socket", "/tmp/c.sock"})->socketPath, "/tmp/c.sock");
    EXPECT_EQ(parseCommandLine({"--socket=/run/x.sock"})->socketPath, "/run/x.sock");

    // Where the interface shows: never with --no-ui, the X desktop's own display first.
    struct InterfaceCase {
        Arguments arguments;
        std::optional<std::string> displayVariable;
        std::optional<std::string> expected;
    };
    const InterfaceCase interfaces[] = {
        {{}, ":0", ":0"},
        {{"--no-ui"}, ":0", std::nullopt},
        {{"--desktop=x11::7"}, ":0", ":7"},
        {{"--desktop=x11::7", "--no-ui"}, ":0", std::nullopt},
        {{"--desktop=sim:d.json"}, std::nullopt, std::nullopt},
        {{"--desktop=sim:d.json"}, "", std::nullopt},
        {{"--desktop=sim:d.json"}, ":3", ":3"},
    };
    for (const auto& c : interfaces) {
        EXPECT_EQ(interfaceDisplay(*parseCommandLine(c.arguments), c.displayVariable), c.expected)
            << c.arguments.size();
    }

    const std::pair<Arguments, std::string> refused[] = {
        {{"--desktop"}, "option '--desktop' needs a value"},
        {{"--desktop=sim:"}, "option '--desktop=sim:' needs a desktop file"},
        {{"--desktop=wayland"},
         "unsupported desktop 'wayland' (available: x11, x11:DISPLAY, sim:FILE)"},
        {{"--desktop="}, "unsupported desktop '' (available: x11, x11:DISPLAY, sim:FILE)"},
        {{"--desktops=sim:x"}, "unrecognized option '--desktops=sim:x'"},
        {{"--socket"}, "option '--socket' needs a value"},
        {{"--socket="}, "option '--socket' needs a path"},
    };
    for (const auto& [arguments, message] : refused) {
        const auto result = parseCommandLine(arguments);
        EXPECT_EQ(result ? "(accepted)" : result.error().message, message);
    }
}

TEST(CommandLine, HelpAndVersionTexts) {
    const std::string help = helpText();
    EXPECT_THAT(help, StartsWith("Usage: corvetta"));
    EXPECT_THAT(help, HasSubstr("-h, --help"));
    EXPECT_THAT(help, HasSubstr("-V, --version"));
    EXPECT_THAT(help, HasSubstr("corvetta/preferences.json"));
    EXPECT_EQ(help.back(), '\n');
    EXPECT_THAT(versionText(), MatchesRegex("corvetta [0-9]+\\.[0-9]+\\.[0-9]+"));
}

}  // namespace
}  // namespace corvetta
