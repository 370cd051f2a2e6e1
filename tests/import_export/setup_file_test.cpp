#include "import_export/setup_file.h"

#include <gtest/gtest.h>

namespace corvetta {
namespace {

TEST(SetupFile, AnEmptySetUpIsAValidFileWithSortedKeys) {
    WorkspaceExportData data;
    data.exportDate = *parseIso8601("2026-11-24T21:40:00Z");
    data.settings.values = {{"gapSize", 5.0}};
    const auto text = encodeSetupFile(data);
    EXPECT_LT(text.find("\"customLayouts\""), text.find("\"exportDate\""));
    EXPECT_LT(text.find("\"spaces\""), text.find("\"version\""));
    EXPECT_NE(text.find("\"exportDate\": \"2026-11-24T21:40:00Z\""), std::string::npos);

    const auto read = decodeSetupFile(text);
    ASSERT_TRUE(read) << read.error().description();
    EXPECT_EQ(read->version, "2.0");
    EXPECT_EQ(read->exportDate, data.exportDate);
    EXPECT_TRUE(read->workspaces.empty() && read->spaces.empty() && read->customLayouts.empty());
    EXPECT_EQ(read->settings, data.settings);
}

TEST(SetupFile, ABareListIsAnOlderExportWithoutSpacesOrSettings) {
    const auto read = decodeSetupFile(
        R"([{"name": "Old", "windowInfos": [{"frame": [[0, 0], [10, 10]], "isFullscreen": false}]}])");
    ASSERT_TRUE(read) << read.error().description();
    EXPECT_EQ(read->version, "legacy");
    ASSERT_EQ(read->workspaces.size(), 1U);
    EXPECT_EQ(read->workspaces[0].name, "Old");
    EXPECT_FALSE(read->workspaces[0].id.has_value());
    EXPECT_FALSE(read->settings.has_value());
    EXPECT_FALSE(read->exportDate.has_value());
}

TEST(SetupFile, AnExportMissingAListIsDamagedNotForeign) {
    const auto read = decodeSetupFile(
        R"({"version": "2.0", "exportDate": "2026-11-24T21:40:00Z", "workspaces": []})");
    ASSERT_FALSE(read);
    EXPECT_EQ(read.error().kind, ImportError::Kind::decodingFailed);
    EXPECT_EQ(read.error().description(), "Failed to read data: Missing key \"spaces\"");
    EXPECT_EQ(decodeSetupFile("42").error().kind, ImportError::Kind::invalidFormat);
}

}  // namespace
}  // namespace corvetta
