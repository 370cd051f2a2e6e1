#include "workspaces/deeplink.h"

#include <gtest/gtest.h>

namespace corvetta {
namespace {

TEST(Deeplink, KeysSplitBackIntoApplicationAndWindow) {
    const auto key = deeplinkKey("com.microsoft.VSCode", 2);
    EXPECT_EQ(key, "com.microsoft.VSCode#2");
    const auto entry = deeplinkEntry(key, "vscode://file//src");
    ASSERT_TRUE(entry.has_value());
    EXPECT_EQ(entry->bundleID, "com.microsoft.VSCode");
    EXPECT_EQ(entry->windowIndex, 2);
    for (const char* damaged : {"", "#1", "app#", "app#-1", "app#1x", "app"}) {
        EXPECT_FALSE(deeplinkEntry(damaged, "x").has_value()) << damaged;
    }
}

TEST(Deeplink, ClassifiesByTextAndApplication) {
    struct Case {
        const char* bundle;
        const char* raw;
        DeeplinkKind kind;
    };
    const Case cases[] = {
        {"com.google.Chrome", "https://example.com", DeeplinkKind::browserURL},
        {"com.apple.Terminal", "http://localhost:3000", DeeplinkKind::browserURL},
        {"notion.id", "notion://page/1", DeeplinkKind::appURL},
        {"com.apple.finder", "file:///Users/me", DeeplinkKind::filePath},
        {"dev.zed.Zed", "~/Projects/app", DeeplinkKind::filePath},
        {"com.apple.Terminal", " ~/Projects/app ", DeeplinkKind::terminalCwd},
        {"org.gnome.Terminal", "/srv", DeeplinkKind::terminalCwd},
        {"com.apple.Terminal", "npm run dev", DeeplinkKind::terminalCommand},
        {"XTerm", "ssh host://x", DeeplinkKind::terminalCommand},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(classifyDeeplink(c.bundle, c.raw), c.kind) << c.bundle << " " << c.raw;
    }
}

}  // namespace
}  // namespace corvetta
