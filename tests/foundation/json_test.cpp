#include "foundation/json.h"

#include <gtest/gtest.h>

namespace corvetta {
namespace {

using namespace std::chrono;

// Runs `read`, which must fail with that error: its kind, the key and path it names, its text.
template <typename Read>
void expectDecodeError(Read read, JsonDecodeError::Kind kind, const std::string& key,
                       const std::string& path, const std::string& what) {
    try {
        read();
        ADD_FAILURE() << "expected: " << what;
    } catch (const JsonDecodeError& e) {
        EXPECT_EQ(e.kind(), kind);
        EXPECT_EQ(e.key(), key);
        EXPECT_EQ(e.path(), path);
        EXPECT_EQ(e.what(), what);
    }
}

TEST(JsonWriting, RecordsKeepDeclarationOrderUnlessSortingIsAsked) {
    Json record = Json::object();
    record["version"] = "2.0";
    record["exportDate"] = "2026-11-21T10:15:30Z";
    record["workspaces"] = Json::array({Json{{"name", "Code"}, {"id", "A"}}});
    EXPECT_EQ(
        writeJson(record, JsonStyle::compact),
        R"({"version":"2.0","exportDate":"2026-11-21T10:15:30Z","workspaces":[{"name":"Code","id":"A"}]})");
    EXPECT_EQ(writeJson(record, JsonStyle::prettySortedKeys),
              "{\n"
              "  \"exportDate\": \"2026-11-21T10:15:30Z\",\n"
              "  \"version\": \"2.0\",\n"
              "  \"workspaces\": [\n"
              "    {\n"
              "      \"id\": \"A\",\n"
              "      \"name\": \"Code\"\n"
              "    }\n"
              "  ]\n"
              "}");
    const std::string pretty = writeJson(record, JsonStyle::pretty);
    EXPECT_LT(pretty.find("version"), pretty.find("exportDate"));
    EXPECT_NE(pretty.find("\n  \"version\": \"2.0\""), std::string::npos);
}

TEST(JsonWriting, SortingKeepsNumbersAndArraysIntact) {
    Json record{{"b", 1.5}, {"a", Json::array({3, 2, 1})}, {"c", nullptr}, {"d", 7}};
    EXPECT_EQ(
        writeJson(Json::parse(writeJson(record, JsonStyle::prettySortedKeys)), JsonStyle::compact),
        R"({"a":[3,2,1],"b":1.5,"c":null,"d":7})");
}

TEST(JsonRect, WrittenAsTwoPairsAndReadBack) {
    const Rect frame(0, 25, 720.5, 875);
    EXPECT_EQ(writeJson(rectToJson(frame), JsonStyle::compact), "[[0.0,25.0],[720.5,875.0]]");
    EXPECT_EQ(rectFromJson(Json::parse("[[0, 25], [720.5, 875]]")), frame);
}

TEST(JsonRect, RefusesOtherShapes) {
    for (const char* bad : {"[0, 25, 720, 875]", "[[0, 25], [720]]", "[[0, 25], [720, \"a\"]]",
                            "{\"x\": 0}", "[[0, 25], [720, 875], [1, 1]]", "null"}) {
        EXPECT_THROW(rectFromJson(Json::parse(bad)), JsonDecodeError) << bad;
    }
}

TEST(JsonParsing, ReportsWhereTheTextBroke) {
    EXPECT_TRUE(parseJson(R"({"a": 1})"));
    const auto broken = parseJson(R"({"a": 1,)");
    ASSERT_FALSE(broken);
    EXPECT_NE(broken.error().message.find("Invalid JSON at byte"), std::string::npos);
    EXPECT_FALSE(parseJson(""));
    // A number beyond any double is an error value too, not an escaping exception.
    EXPECT_FALSE(parseJson(R"({"x": 2E88882})"));
    // The parser would stop at a NUL and take what came before for the whole text.
    const auto cut = parseJson(std::string("{\"a\": 1}\0 and more", 18));
    ASSERT_FALSE(cut);
    EXPECT_EQ(cut.error().message, "Invalid JSON at byte 9: a NUL byte");
}

class JsonObjectReaderTest : public ::testing::Test {
protected:
    Json document = Json::parse(R"({
        "id": "e621e1f8-c36c-495a-93fc-0c247a3e6e5f",
        "name": "Code",
        "isFullscreen": false,
        "zOrder": 2,
        "scale": 2.0,
        "keyCode": 123,
        "frame": [[0, 25], [720, 875]],
        "createdAt": "2026-11-21T10:15:30Z",
        "tags": ["a", "b"],
        "folder": null,
        "nested": {"inner": {"count": "three"}},
        "big": 5000000000, "negative": -1, "fraction": 1.5
    })");
};

TEST_F(JsonObjectReaderTest, ReadsEverySupportedType) {
    const JsonObjectReader reader(document);
    EXPECT_EQ(reader.get<Uuid>("id").string(), "E621E1F8-C36C-495A-93FC-0C247A3E6E5F");
    EXPECT_EQ(reader.get<std::string>("name"), "Code");
    EXPECT_FALSE(reader.get<bool>("isFullscreen"));
    EXPECT_EQ(reader.get<int>("zOrder"), 2);
    // A whole number written as a double still reads as an integer.
    EXPECT_EQ(reader.get<std::int64_t>("scale"), 2);
    EXPECT_EQ(reader.get<std::uint32_t>("keyCode"), 123u);
    EXPECT_EQ(reader.get<double>("zOrder"), 2.0);
    EXPECT_EQ(reader.get<Rect>("frame"), Rect(0, 25, 720, 875));
    EXPECT_EQ(formatIso8601(reader.get<Date>("createdAt")), "2026-11-21T10:15:30Z");
    EXPECT_EQ(reader.get<std::vector<std::string>>("tags"), (std::vector<std::string>{"a", "b"}));
}

TEST_F(JsonObjectReaderTest, AbsentAndNullAreMissingButWrongTypesAreDamage) {
    const JsonObjectReader reader(document);
    EXPECT_FALSE(reader.getOptional<std::string>("windowTitle"));
    EXPECT_FALSE(reader.getOptional<std::string>("folder"));
    EXPECT_FALSE(reader.has("folder"));
    EXPECT_EQ(reader.getOptional<int>("zOrder"), 2);
    EXPECT_THROW(reader.getOptional<int>("name"), JsonDecodeError);
    expectDecodeError([&] { reader.get<std::string>("windowTitle"); },
                      JsonDecodeError::Kind::missingKey, "windowTitle", "",
                      "Missing key \"windowTitle\"");
}

TEST_F(JsonObjectReaderTest, ErrorsNameTheKeyAndItsPath) {
    const JsonObjectReader reader(document, "workspaces[1]");
    expectDecodeError([&] { reader.child("nested").child("inner").get<int>("count"); },
                      JsonDecodeError::Kind::malformedValue, "count",
                      "workspaces[1].nested.inner.count",
                      "Malformed value for key \"count\" at workspaces[1].nested.inner.count: "
                      "expected an integer, found a string");
    const Json array = Json::array({1, 2});
    expectDecodeError([&] { JsonObjectReader(array, "spaces[0]"); },
                      JsonDecodeError::Kind::notAnObject, "", "spaces[0]",
                      "Expected an object at spaces[0]: found an array");
    EXPECT_THROW(reader.get<Uuid>("name"), JsonDecodeError);
    EXPECT_THROW(reader.get<Date>("name"), JsonDecodeError);
    EXPECT_THROW(reader.get<bool>("zOrder"), JsonDecodeError);
    EXPECT_THROW(reader.get<int>("isFullscreen"), JsonDecodeError);
    EXPECT_THROW(reader.child("name"), JsonDecodeError);
    // Integers are range-checked.
    EXPECT_THROW(reader.get<int>("big"), JsonDecodeError);
    EXPECT_EQ(reader.get<std::int64_t>("big"), 5000000000);
    EXPECT_THROW(reader.get<std::uint32_t>("negative"), JsonDecodeError);
    EXPECT_THROW(reader.get<int>("fraction"), JsonDecodeError);
}

}  // namespace
}  // namespace corvetta
