#include "Tools/Files/Json.h"

#include <gtest/gtest.h>

#include <limits>

using Imaging::Tool::Json;

TEST(Json, WritesEveryKindOfValue) {
    EXPECT_EQ(Json().text(), "null");
    EXPECT_EQ(Json(true).text(), "true");
    EXPECT_EQ(Json(-5).text(), "-5");
    EXPECT_EQ(Json(std::numeric_limits<std::uint64_t>::max()).text(), "18446744073709551615");
    EXPECT_EQ(Json(std::numeric_limits<std::int64_t>::min()).text(), "-9223372036854775808");
    EXPECT_EQ(Json(0.25).text(), "0.25");
    EXPECT_EQ(Json(3.0).text(), "3.0") << "a number that is not whole by its type";
    EXPECT_EQ(Json("a\"\\\n").text(), R"("a\"\\\n")");
    EXPECT_EQ(Json::list({}).text(), "[]");
    EXPECT_EQ(Json::object({}).text(), "{}");
    EXPECT_EQ(Json::list({1, "b", Json(), Json::list({false})}).text(), R"([1,"b",null,[false]])");
}

TEST(Json, KeepsTheOrderOfMembers) {
    Json object = Json::object({{"z", 1}, {"a", Json::object({{"y", 2}, {"b", 3}})}});
    object.add("m", "last");
    EXPECT_EQ(object.text(), R"({"z":1,"a":{"y":2,"b":3},"m":"last"})");
}

TEST(Json, IndentsByTwoSpaces) {
    EXPECT_EQ(Json::list({Json::object({{"a", 1}})}).indentedText(), "[\n  {\n    \"a\": 1\n  }\n]");
}

TEST(Json, PutsTheReplacementCharacterInPlaceOfBytesThatAreNotUTF8) {
    EXPECT_EQ(Json("a\xFF"
                   "b")
                  .text(),
              "\"a\xEF\xBF\xBD"
              "b\"");
}
