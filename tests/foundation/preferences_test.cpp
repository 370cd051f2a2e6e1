#include <functional>
#include <optional>
#include <thread>
#include <vector>

#include <gtest/gtest.h>
#include <sys/fsuid.h>

#include "foundation/json.h"
#include "foundation/json_file_preferences.h"
#include "support/temporary_folder.h"

namespace corvetta {
namespace {

using testing::readTestFile;
using testing::TemporaryFolder;
using testing::writeTestFile;

TEST(PreferencesReads, ConvertLikeTheUserDefaultsAndTellAbsentFromZero) {
    InMemoryPreferences prefs({{"zero", 0},
                               {"off", false},
                               {"empty", ""},
                               {"int", 10},
                               {"double", 2.75},
                               {"yes", true},
                               {"text", "42"},
                               {"word", "YES"},
                               {"junk", "abc"},
                               {"almostMaximizeHeight", 0.9}});
    EXPECT_EQ(prefs.integer("zero"), 0);
    EXPECT_EQ(prefs.boolValue("off"), false);
    EXPECT_EQ(prefs.string("empty"), "");
    EXPECT_EQ(prefs.doubleValue("int"), 10.0);
    EXPECT_EQ(prefs.floatValue("int"), 10.0);
    EXPECT_EQ(prefs.integer("double"), 2);
    EXPECT_EQ(prefs.boolValue("double"), true);
    EXPECT_EQ(prefs.integer("yes"), 1);
    EXPECT_EQ(prefs.integer("text"), 42);
    EXPECT_EQ(prefs.boolValue("word"), true);
    EXPECT_EQ(prefs.doubleValue("almostMaximizeHeight"), 0.9);
    // Float reads are narrowed, then widened.
    EXPECT_EQ(prefs.floatValue("almostMaximizeHeight"), static_cast<double>(0.9f));
    EXPECT_FALSE(prefs.integer("junk"));
    EXPECT_FALSE(prefs.boolValue("junk"));
    // Text stays text: a number is not a string.
    EXPECT_FALSE(prefs.string("int"));
    EXPECT_FALSE(prefs.integer("missing") || prefs.boolValue("missing") ||
                 prefs.doubleValue("missing") || prefs.floatValue("missing") ||
                 prefs.string("missing") || prefs.stringList("missing") ||
                 prefs.dictionary("missing") || prefs.data("missing"));
}

TEST(PreferencesReads, ListsDictionariesAndData) {
    InMemoryPreferences prefs;
    prefs.set("categories", std::vector<std::string>{"shortcut", "workspace"});
    prefs.set("mixed", PropertyValue::Array{PropertyValue("a"), PropertyValue(1)});
    prefs.set("dict", PropertyValue::Dictionary{{"keyCode", 123}, {"modifiers", 786432}});
    prefs.set("blob", Bytes{0, 1, 2, 255});
    EXPECT_EQ(prefs.stringList("categories"), (std::vector<std::string>{"shortcut", "workspace"}));
    EXPECT_FALSE(prefs.stringList("mixed"));
    ASSERT_TRUE(prefs.dictionary("dict"));
    EXPECT_EQ(prefs.dictionary("dict")->at("keyCode").toInteger(), 123);
    EXPECT_EQ(prefs.data("blob"), (Bytes{0, 1, 2, 255}));
    EXPECT_FALSE(prefs.data("dict"));
    prefs.remove("blob");
    EXPECT_FALSE(prefs.data("blob"));
}

class JsonFilePreferencesTest : public ::testing::Test {
protected:
    TemporaryFolder folder;
    ManualClock clock;
    std::filesystem::path file = folder / "config/corvetta/preferences.json";
};

TEST_F(JsonFilePreferencesTest, ValuesAreWrittenAsPlainJsonAndSurviveAReload) {
    // Nothing is written until something changes.
    EXPECT_TRUE(JsonFilePreferences(file, clock).synchronize());
    EXPECT_FALSE(std::filesystem::exists(file));
    {
        JsonFilePreferences prefs(file, clock);
        EXPECT_TRUE(prefs.loadWarnings().empty());
        prefs.set("layoutSpacing", 10);
        prefs.set("layoutLockEnabled", false);
        prefs.set("almostMaximizeHeight", 0.85);
        prefs.set("name", "Work");
        prefs.set("Logbook.disabledCategories", std::vector<std::string>{"toast"});
        prefs.set("shortcut", PropertyValue::Dictionary{{"keyCode", 123}});
        prefs.set("savedWorkspaces", Bytes{'[', ']', 0, 200});
        prefs.set("gone", true);
        prefs.remove("gone");
        EXPECT_TRUE(prefs.synchronize());
    }
    const Json written = Json::parse(readTestFile(file));
    EXPECT_EQ(written["layoutSpacing"], 10);
    EXPECT_EQ(written["layoutLockEnabled"], false);
    // Data values are base64 text under a "$data" key.
    EXPECT_EQ(written["savedWorkspaces"], Json({{"$data", "W10AyA=="}}));

    JsonFilePreferences reloaded(file, clock);
    EXPECT_EQ(reloaded.integer("layoutSpacing"), 10);
    EXPECT_EQ(reloaded.boolValue("layoutLockEnabled"), false);
    EXPECT_EQ(reloaded.doubleValue("almostMaximizeHeight"), 0.85);
    EXPECT_EQ(reloaded.string("name"), "Work");
    EXPECT_EQ(reloaded.stringList("Logbook.disabledCategories"), std::vector<std::string>{"toast"});
    EXPECT_EQ(reloaded.dictionary("shortcut")->at("keyCode").toInteger(), 123);
    EXPECT_EQ(reloaded.data("savedWorkspaces"), (Bytes{'[', ']', 0, 200}));
    EXPECT_FALSE(reloaded.object("gone"));
}

TEST_F(JsonFilePreferencesTest, DamagedFileIsQuarantinedAndStartsOnDefaults) {
    const std::string damaged = "{\"layoutSpacing\": 10,";
    writeTestFile(file, damaged);
    clock.setDate(*parseIso8601("2026-11-21T10:15:30Z"));
    JsonFilePreferences prefs(file, clock);

    EXPECT_FALSE(prefs.integer("layoutSpacing"));
    const auto quarantined =
        file.parent_path() / "preferences-quarantine-2026-11-21T10-15-30Z.json";
    ASSERT_TRUE(std::filesystem::exists(quarantined));
    EXPECT_EQ(readTestFile(quarantined), damaged);
    EXPECT_FALSE(std::filesystem::exists(file));
    ASSERT_EQ(prefs.loadWarnings().size(), 1u);
    EXPECT_NE(prefs.loadWarnings()[0].find(quarantined.string()), std::string::npos);
}

// A file a person wrote is read as it stands, and values it cannot hold go back out unchanged.
TEST_F(JsonFilePreferencesTest, ValuesItCannotHoldAreCarriedThroughWrites) {
    writeTestFile(file, R"({"odd": null, "blob": {"$data": "!!"}, "kept": 1})");
    JsonFilePreferences prefs(file, clock);
    EXPECT_EQ(prefs.loadWarnings().size(), 2u);
    EXPECT_EQ(prefs.integer("kept"), 1);
    EXPECT_FALSE(prefs.object("odd"));
    prefs.set("new", 2);
    const Json written = Json::parse(readTestFile(file));
    EXPECT_TRUE(written["odd"].is_null());
    EXPECT_EQ(written["blob"], Json({{"$data", "!!"}}));
    EXPECT_EQ(written["kept"], 1);
    EXPECT_EQ(written["new"], 2);

    // Removing such a member is the one way it goes away.
    prefs.remove("odd");
    EXPECT_FALSE(Json::parse(readTestFile(file)).contains("odd"));
}

// Reads as a user the file's permissions shut out. Root's reads ignore permissions, but not once
// its file-system user id is another's, so the same holds when the tests run as root.
class ReadingAsAnotherUser {
public:
    ReadingAsAnotherUser() : previous_(static_cast<uid_t>(setfsuid(kNobody))) {}
    ~ReadingAsAnotherUser() { setfsuid(previous_); }

private:
    static constexpr uid_t kNobody = 65534;
    uid_t previous_;
};

// Changes stay in memory until the unreadable file is gone; then a new file loses nothing.
TEST_F(JsonFilePreferencesTest, AFileThatCannotBeReadIsNeverWrittenOver) {
    const std::string mine = R"({"layoutSpacing": 10, "gapSize": 3})";
    const struct {
        const char* name;
        std::function<void()> makeUnreadable;
        bool asAnotherUser;
    } cases[] = {
        {"no permission",
         [&] {
             writeTestFile(file, mine);
             for (auto p = file.parent_path(); p != folder.path().parent_path();
                  p = p.parent_path()) {
                 std::filesystem::permissions(p, std::filesystem::perms::others_exec,
                                              std::filesystem::perm_options::add);
             }
             std::filesystem::permissions(file, std::filesystem::perms::none);
         },
         true},
        {"a folder in its place", [&] { std::filesystem::create_directories(file / "mine"); },
         false},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        c.makeUnreadable();
        std::optional<JsonFilePreferences> prefs;
        {
            std::optional<ReadingAsAnotherUser> user;
            if (c.asAnotherUser) {
                user.emplace();
            }
            prefs.emplace(file, clock);
        }
        ASSERT_EQ(prefs->loadWarnings().size(), 1u);
        EXPECT_EQ(prefs->loadWarnings()[0].rfind("Could not read preferences", 0), 0u)
            << prefs->loadWarnings()[0];
        EXPECT_NE(prefs->loadWarnings()[0].find("not overwritten"), std::string::npos);
        prefs->set("layoutSpacing", 12);
        EXPECT_EQ(prefs->integer("layoutSpacing"), 12);
        EXPECT_FALSE(prefs->synchronize());
        EXPECT_NE(prefs->lastWriteError().find(file.string() + " could not be read"),
                  std::string::npos)
            << prefs->lastWriteError();
        if (c.asAnotherUser) {
            std::filesystem::permissions(file, std::filesystem::perms::owner_read);
            EXPECT_EQ(readTestFile(file), mine);
        } else {
            EXPECT_TRUE(std::filesystem::is_directory(file / "mine"));
        }
        std::filesystem::remove_all(file);
        EXPECT_TRUE(prefs->synchronize());
        EXPECT_TRUE(prefs->lastWriteError().empty());
        EXPECT_EQ(JsonFilePreferences(file, clock).integer("layoutSpacing"), 12);
        std::filesystem::remove_all(file);
    }
}

// Which names count as the leftovers of a save is the atomic write's test.
TEST_F(JsonFilePreferencesTest, TemporaryFilesOfAnInterruptedSaveAreRemovedAtStart) {
    writeTestFile(file, R"({"layoutSpacing": 10})");
    writeTestFile(file.parent_path() / ".preferences.json.x1Y2z3", "half a save");
    JsonFilePreferences prefs(file, clock);
    EXPECT_EQ(prefs.integer("layoutSpacing"), 10);
    EXPECT_FALSE(std::filesystem::exists(file.parent_path() / ".preferences.json.x1Y2z3"));
    ASSERT_EQ(prefs.loadWarnings().size(), 1u);
    EXPECT_NE(prefs.loadWarnings()[0].find("interrupted save"), std::string::npos);
}

TEST_F(JsonFilePreferencesTest, ConcurrentWritersLoseNothing) {
    JsonFilePreferences prefs(file, clock);
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([&, t] {
            for (int i = 0; i < 25; ++i) {
                prefs.set("key" + std::to_string(t) + "_" + std::to_string(i), i);
                (void)prefs.integer("key0_0");
            }
        });
    }
    for (auto& thread : threads)
        thread.join();
    JsonFilePreferences reloaded(file, clock);
    EXPECT_EQ(reloaded.snapshot().size(), 100u);
    EXPECT_EQ(reloaded.integer("key3_24"), 24);
}

}  // namespace
}  // namespace corvetta
