#include "Tools/Command/Messages.h"

#include <gtest/gtest.h>

using namespace Imaging;
using namespace Imaging::Tool;

TEST(Messages, ControlCharactersAreShownAsEscapes) {
    EXPECT_EQ(escaped("a\nb\tc"), "a\\nb\\tc");
    EXPECT_EQ(escaped("\x1b[31m\x7f"), "\\x1b[31m\\x7f");
    EXPECT_EQ(escaped("\xC2\x9B"
                      "1m"),
              "\\x9b1m")
        << "the one-character form of the same sequence";
    EXPECT_EQ(escaped("\xC3\xBC \xC2\xA0\xFF"), "\xC3\xBC \xC2\xA0\xFF")
        << "letters, and bytes that are none";
    EXPECT_EQ(escaped("\xC2"), "\xC2");
}

TEST(Messages, TheNearestKnownWordIsSuggestedWhereAThirdAtMostIsWrong) {
    const std::vector<std::string> known = {"draw", "apply", "archive"};
    EXPECT_EQ(suggestion("darw", known), "; did you mean 'draw'?") << "neighbours that are swapped";
    EXPECT_EQ(suggestion("archve", known), "; did you mean 'archive'?");
    EXPECT_EQ(suggestion("aply", known), "; did you mean 'apply'?");
    EXPECT_EQ(suggestion("compose", known), "");
    EXPECT_EQ(suggestion("", known), "");
    EXPECT_EQ(suggestion(std::string(65, 'a'), {std::string(64, 'a')}), "") << "too long to compare";
}

TEST(Messages, AnEnumerationEndsInAnd) {
    EXPECT_EQ(enumeration({}), "");
    EXPECT_EQ(enumeration({"a"}), "a");
    EXPECT_EQ(enumeration({"a", "b"}), "a and b");
    EXPECT_EQ(enumeration({"a", "b", "c"}), "a, b and c");
}

TEST(Messages, AFailureKeepsItsSubjectApart) {
    const Failure failure("a.png", "it is gone");
    EXPECT_EQ(failure.subject(), "a.png");
    EXPECT_STREQ(failure.what(), "it is gone");
}
