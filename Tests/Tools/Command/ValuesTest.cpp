#include "Tools/Command/Values.h"

#include <gmock/gmock.h>

#include <limits>

using namespace Imaging;
using namespace Imaging::Tool;
using Imaging::Platform::NSColor;

namespace {

/// Red, green, blue and alpha in 255ths.
std::vector<int> bytes(const std::string& text) {
    const NSColor color = parseColor(text, "--color");
    std::vector<int> all;
    for (const float component :
         {color.redComponent(), color.greenComponent(), color.blueComponent(), color.alphaComponent()})
        all.push_back(static_cast<int>(component * 255 + 0.5F));
    return all;
}

} // namespace

TEST(Values, NumbersLieInTheirRangeEndsIncluded) {
    EXPECT_EQ(parseNumber("-3", "--n", -3, 5), -3);
    EXPECT_EQ(parseNumber("5", "--n", -3, 5), 5);
    EXPECT_EQ(wholeNumber(0, std::numeric_limits<std::int64_t>::max())("9223372036854775807", "--n"),
              std::numeric_limits<std::int64_t>::max());
    for (const std::string text : {"", "-4", "6", "1.0", "+1", " 1", "1 ", "0x1", "99999999999999999999"})
        EXPECT_THROW(parseNumber(text, "--n", -3, 5), UsageError) << text;
}

TEST(Values, ListsOfNumbersHaveAPointWhateverTheLocaleAndTheirCount) {
    EXPECT_THAT(parseNumbers("1,-2.5,1e3", "--n", 3, "no list", "1,2,3"),
                testing::ElementsAre(1, -2.5, 1000));
    for (const std::string text :
         {"", "1", "1,2,", ",1,2", "1,2,3,4", "1;2;3", "1,2,nan", "1,2,inf", "1,2,1e7"})
        EXPECT_THROW(parseNumbers(text, "--n", 3, "no list", "1,2,3"), UsageError) << text;
    try {
        parseNumbers("x", "--n", 1, "no angle", "30");
        FAIL();
    } catch (const UsageError& error) {
        EXPECT_STREQ(error.what(), "--n: 'x' is no angle; give 30");
    }
}

TEST(Values, SizesMayLackASideOnlyWhereOneFollows) {
    const auto sides = [](PixelSize size) { return std::pair(size.width, size.height); };
    EXPECT_EQ(sides(parseSize("30x20", "--size")), std::pair(std::int64_t{30}, std::int64_t{20}));
    EXPECT_EQ(sides(parseSize("30X20", "--size")), std::pair(std::int64_t{30}, std::int64_t{20}));
    EXPECT_EQ(sides(parseSize("30", "--size")), std::pair(std::int64_t{30}, std::int64_t{0}));
    EXPECT_EQ(sides(parseSize("x20", "--size")), std::pair(std::int64_t{0}, std::int64_t{20}));
    EXPECT_EQ(sides(parseWholeSize("30x20", "--size")), std::pair(std::int64_t{30}, std::int64_t{20}));
    for (const std::string text :
         {"", "x", "0", "30x", "0x20", "30x0", "-1x2", "3x3x3", "3.5", "4294967296"}) {
        EXPECT_THROW(parseSize(text, "--size"), UsageError) << text;
        EXPECT_THROW(parseWholeSize(text, "--size"), UsageError) << text;
    }
    EXPECT_THROW(parseWholeSize("30", "--size"), UsageError);
    EXPECT_THROW(parseWholeSize("x20", "--size"), UsageError);
}

TEST(Values, ARectangleOfASizeBeginsAtTheOrigin) {
    const auto rect = rectOf({7, 3});
    EXPECT_EQ(rect.origin.x, 0);
    EXPECT_EQ(rect.origin.y, 0);
    EXPECT_EQ(rect.size.width, 7);
    EXPECT_EQ(rect.size.height, 3);
}

TEST(Values, ColoursHaveNamesOrDigits) {
    using testing::ElementsAre;
    EXPECT_THAT(bytes("navy"), ElementsAre(0, 0, 128, 255));
    EXPECT_THAT(bytes("WhiteSmoke"), ElementsAre(245, 245, 245, 255));
    EXPECT_THAT(bytes("transparent"), ElementsAre(0, 0, 0, 0));
    EXPECT_THAT(bytes("#1aF"), ElementsAre(0x11, 0xAA, 0xFF, 255));
    EXPECT_THAT(bytes("#1aF8"), ElementsAre(0x11, 0xAA, 0xFF, 0x88));
    EXPECT_THAT(bytes("#102030"), ElementsAre(0x10, 0x20, 0x30, 255));
    EXPECT_THAT(bytes("#10203040"), ElementsAre(0x10, 0x20, 0x30, 0x40));
    for (const std::string text : {"", "#", "#12", "#12345", "#ggg", "102030", "bluish"})
        EXPECT_THROW(bytes(text), UsageError) << text;
}

TEST(Values, SecondsAreAboveZeroAndUpToADay) {
    EXPECT_EQ(parseSeconds("0.25", "--timeout"), 0.25);
    EXPECT_EQ(parseSeconds("86400", "--timeout"), 86400);
    for (const std::string text : {"", "0", "-1", "86400.5", "1s", "nan", "inf"})
        EXPECT_THROW(parseSeconds(text, "--timeout"), UsageError) << text;
}

TEST(Values, WordsAreExact) {
    EXPECT_EQ(parseFit("cover", "--fit"), Fit::Cover);
    EXPECT_THROW(parseFit("Cover", "--fit"), UsageError);
    EXPECT_THROW(parseFit("", "--fit"), UsageError);
}
