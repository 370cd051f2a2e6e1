#include <filesystem>

#include "foundation/files.h"
#include "layouts/custom_layout_template_json.h"
#include "shortcuts/shortcut_fixture.h"
#include "support/temporary_folder.h"

namespace corvetta {
namespace {

using testing_support::kControlOption;

const Uuid kSpaceA = *Uuid::parse("AAAAAAAA-0000-4000-8000-000000000001");
const Uuid kSpaceB = *Uuid::parse("BBBBBBBB-0000-4000-8000-000000000002");

class CustomLayoutStoreTest : public testing_support::ShortcutTest {
protected:
    CustomLayoutStore& store() { return s().customLayoutStore; }
    std::vector<std::string> names() {
        std::vector<std::string> result;
        for (const auto& layout : store().layouts()) {
            result.push_back(layout.name);
        }
        return result;
    }
    void storeDocument(const std::string& document) {
        defaults.set(CustomLayoutStore::kKey, Bytes(document.begin(), document.end()));
        restart();
    }
    static CustomLayoutTemplate own(std::string name, std::optional<Uuid> space = {}) {
        return {.id = Uuid::random(),
                .name = std::move(name),
                .panes = {{0, 0, 1, 1}},
                .spaceId = space};
    }

    int changes = 0;
    ObserverToken observer = notifications.addObserver(CustomLayoutStore::kDidChangeNotification,
                                                       [this](const Notification&) { ++changes; });
};

const std::vector<std::string> kBuiltInNames = {"Full",    "Halves",    "Thirds",
                                                "Fourths", "Main Left", "Main Right"};

TEST_F(CustomLayoutStoreTest, AFreshInstallSeedsTheSixOnceInOrder) {
    store().seedDefaultsIfNeeded();
    EXPECT_EQ(names(), kBuiltInNames);
    EXPECT_EQ(defaults.boolValue(CustomLayoutStore::kSeededKey), true);
    EXPECT_EQ(changes, 1);
    const auto& thirds = store().layouts()[2];
    EXPECT_EQ(thirds.defaultTemplateKey, "thirds");
    EXPECT_EQ(thirds.panes[2], Rect(0.6666666666666666, 0, 0.3333333333333333, 1));
    EXPECT_TRUE(store().missingDefaultTemplates().empty());
    EXPECT_EQ(templatePanes(builderPanes(thirds)), thirds.panes);

    const auto seeded = store().layouts();
    restart();
    store().seedDefaultsIfNeeded();
    EXPECT_EQ(store().layouts(), seeded);
}

TEST_F(CustomLayoutStoreTest, ADeletedBuiltInComesBackOnlyThroughRestoreDefaults) {
    store().seedDefaultsIfNeeded();
    auto full = store().layouts()[0];
    full.name = "Everything";
    store().update(full);
    store().add(own("Mine"));
    store().remove(store().layouts()[1].id);
    restart();
    store().seedDefaultsIfNeeded();
    EXPECT_EQ(store().missingDefaultTemplates(), std::vector{LayoutTemplate::halves});
    EXPECT_EQ(names()[1], "Thirds");

    store().restoreDefaults();
    EXPECT_EQ(names(), (std::vector<std::string>{"Everything", "Halves", "Thirds", "Fourths",
                                                 "Main Left", "Main Right", "Mine"}));
    EXPECT_EQ(store().layouts()[0].id, full.id);
}

TEST_F(CustomLayoutStoreTest, RestoreDefaultsWithAllSixPresentChangesNothing) {
    store().add(own("Mine"));
    store().seedDefaultsIfNeeded();
    auto duplicate = store().layouts()[0];
    duplicate.id = Uuid::random();
    store().add(duplicate);
    const auto before = store().layouts();
    changes = 0;
    store().restoreDefaults();
    EXPECT_EQ(store().layouts(), before);
    EXPECT_EQ(changes, 0);
}

TEST_F(CustomLayoutStoreTest, StoredDocumentsLoadWholeOrNotAtAll) {
    const std::string id = "\"id\": \"E621E1F8-C36C-495A-93FC-0C247A3E6E5F\", \"name\": \"A\", ";
    const struct {
        std::string document;
        std::size_t loaded;
    } cases[] = {
        {"[{" + id + "\"templateDescription\": \"\", \"panes\": [[[0, 0], [1, 1]]]}]", 1},
        {"[{" + id + "\"templateDescription\": \"\", \"panes\": []}, {" + id +
             "\"templateDescription\": \"\"}]",
         0},
        {"[{" + id + "\"templateDescription\": \"\", \"panes\": [], \"shortcutKeyCode\": 70000}]",
         0},
        {"[{" + id + "\"templateDescription\": \"\", \"panes\": [[0, 0, 1, 1]]}]", 0},
        {"{}", 0},
        {"[", 0},
    };
    for (const auto& c : cases) {
        storeDocument(c.document);
        ASSERT_EQ(store().layouts().size(), c.loaded) << c.document;
        if (c.loaded > 0) {
            EXPECT_FALSE(store().layouts()[0].applyToAllDisplays);
        }
    }
}

TEST_F(CustomLayoutStoreTest, TheStoredFormKeepsFieldOrderAndLeavesAbsentOptionalsOut) {
    CustomLayoutTemplate full = {.id = *Uuid::parse("E621E1F8-C36C-495A-93FC-0C247A3E6E5F"),
                                 .name = "N",
                                 .templateDescription = "D",
                                 .panes = {{0, 0.5, 0.25, 0.5}},
                                 .spaceId = kSpaceA,
                                 .folder = "F",
                                 .shortcutKeyCode = 4,
                                 .shortcutModifiers = 0x1C0000,
                                 .defaultTemplateKey = "halves",
                                 .applyToAllDisplays = true};
    EXPECT_EQ(
        encodeLayoutTemplates({full}),
        R"([{"id":"E621E1F8-C36C-495A-93FC-0C247A3E6E5F","name":"N","templateDescription":"D",)"
        R"("panes":[[[0.0,0.5],[0.25,0.5]]],"spaceId":"AAAAAAAA-0000-4000-8000-000000000001",)"
        R"("folder":"F","shortcutKeyCode":4,"shortcutModifiers":1835008,)"
        R"("defaultTemplateKey":"halves","applyToAllDisplays":true}])");
    EXPECT_EQ(decodeLayoutTemplates(encodeLayoutTemplates({full}))->front(), full);
    const CustomLayoutTemplate bare = {.id = full.id, .name = "N"};
    EXPECT_EQ(
        encodeLayoutTemplates({bare}),
        R"([{"id":"E621E1F8-C36C-495A-93FC-0C247A3E6E5F","name":"N","templateDescription":"",)"
        R"("panes":[],"applyToAllDisplays":false}])");
}

TEST_F(CustomLayoutStoreTest, ADamagedDocumentIsKeptAsideBeforeAnythingOverwritesIt) {
    const std::string damaged = R"([{"id": "not an id"}])";
    storeDocument(damaged);
    EXPECT_TRUE(store().layouts().empty());

    testing::TemporaryFolder folder;
    CustomLayoutStore kept(defaults, s().shortcutBridge, notifications, clock, folder.path(),
                           logging);
    kept.seedDefaultsIfNeeded();
    const auto quarantined =
        folder / ("layouts-quarantine-" + fileNameTimestamp(clock.now()) + ".json");
    EXPECT_EQ(testing::readTestFile(quarantined), damaged);
    EXPECT_TRUE(wasLogged("Damaged layout templates kept aside in " + quarantined.string()));
    kept.add(own("Mine"));
    restart();
    // Seeded over the damaged list, then saved with the user's own.
    EXPECT_EQ(names().size(), 7U);
    EXPECT_EQ(names().back(), "Mine");
}

TEST_F(CustomLayoutStoreTest, SeedingMovesTheBuiltInLayoutsShortcutsToTheirCopies) {
    const Shortcut combination{18, kControlOption};
    s().shortcutBridge.setShortcut("applyLayoutHalves", combination);
    store().seedDefaultsIfNeeded();
    const auto& halves = store().layouts()[1];
    EXPECT_EQ(halves.shortcutKeyCode, 18);
    EXPECT_EQ(halves.shortcutModifiers, kControlOption);
    EXPECT_EQ(s().shortcutBridge.shortcut(halves.shortcutName()), combination);
    EXPECT_EQ(s().shortcutBridge.shortcut("applyLayoutHalves"), std::nullopt);
    EXPECT_EQ(store().layouts()[0].shortcutKeyCode, std::nullopt);
}

TEST_F(CustomLayoutStoreTest, RemovingATemplateClearsItsShortcut) {
    store().add(own("Mine"));
    const auto mine = store().layouts()[0];
    s().shortcutBridge.setShortcut(mine.shortcutName(), Shortcut{18, kControlOption});
    s().shortcutBridge.registerShortcut(mine.shortcutName(), [] {});
    ASSERT_TRUE(s().shortcutBridge.isShortcutRegistered(mine.shortcutName()));
    EXPECT_TRUE(store().remove(mine.id));
    EXPECT_FALSE(store().remove(mine.id));
    EXPECT_TRUE(store().layouts().empty());
    EXPECT_FALSE(s().shortcutBridge.isShortcutRegistered(mine.shortcutName()));
    EXPECT_EQ(s().shortcutBridge.shortcut(mine.shortcutName()), std::nullopt);
}

TEST_F(CustomLayoutStoreTest, NamesAreUniqueInTheirSpaceAndAgainstGlobalOnes) {
    store().add(own("work ", kSpaceA));
    store().add(own("WORK"));
    store().add(own("Other", kSpaceB));
    const auto otherId = store().layouts()[2].id;
    const struct {
        std::string name;
        std::optional<Uuid> space;
        std::optional<Uuid> excluding;
        bool taken;
    } cases[] = {
        {"Work", kSpaceA, {}, true},        {"work", {}, {}, true},
        {"Work", kSpaceB, {}, true},        {"other", kSpaceB, {}, true},
        {"other", kSpaceB, otherId, false}, {"other", {}, {}, false},
        {"other", kSpaceA, {}, false},      {"Play", kSpaceA, {}, false},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(store().isNameTaken(c.name, c.space, c.excluding), c.taken) << c.name;
    }
    store().remove(store().layouts()[1].id);
    EXPECT_FALSE(store().isNameTaken("Work", kSpaceB));
    EXPECT_FALSE(store().isNameTaken("Work", std::nullopt));
}

TEST_F(CustomLayoutStoreTest, SpacesAndFoldersMoveTogether) {
    store().add(own("One", kSpaceA));
    store().add(own("Two", kSpaceA));
    store().add(own("Three", kSpaceB));
    store().setSpace(store().layouts()[0].id, kSpaceB);
    store().moveLayoutsToGlobal(kSpaceA);
    auto third = store().layouts()[2];
    third.folder = "Code";
    store().update(third);
    store().renameFolder("Code", std::nullopt);
    restart();
    const auto& l = store().layouts();
    EXPECT_EQ(l[0].spaceId, kSpaceB);
    EXPECT_EQ(l[1].spaceId, std::nullopt);
    EXPECT_EQ(l[2].folder, std::nullopt);
    EXPECT_EQ(l[2].spaceId, kSpaceB);
    EXPECT_FALSE(store().update(own("Nobody")));
}

}  // namespace
}  // namespace corvetta
