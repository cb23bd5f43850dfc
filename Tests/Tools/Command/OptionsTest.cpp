#include "Tools/Command/Options.h"

#include "Tests/Tools/Support/OptionReading.h"
#include "Tools/Command/Messages.h"
#include "Tools/Command/Values.h"

#include <gmock/gmock.h>

using namespace TestSupport;
using namespace Imaging;
using namespace Imaging::Tool;
using testing::ElementsAre;

namespace {

std::string complaint(const OptionTable& table, const std::vector<std::string>& arguments) {
    try {
        readOptions(table, arguments);
        return "none";
    } catch (const UsageError& error) {
        return error.what();
    }
}

} // namespace

TEST(Options, PutConvertedValuesIntoTheirPlaces) {
    PixelSize size;
    std::optional<std::int64_t> columns;
    std::string hint;
    bool isSilent = false;
    std::optional<bool> loops;
    const OptionTable table = {{"--size", "SIZE", "", into(size, parseSize)},
                               {"--columns", "N", "", into(columns, wholeNumber(1, 10))},
                               {"--hint", "TEXT", "", into(hint)},
                               {"-q,--quiet", "", "", raise(isSilent)},
                               {"--loop", "", "", raise(loops)}};
    EXPECT_THAT(readOptions(table, {"a.png", "--size", "30x20", "-q", "--columns=7", "--hint", "a b", "b"}),
                ElementsAre("a.png", "b"));
    EXPECT_EQ(size.width, 30);
    EXPECT_EQ(size.height, 20);
    EXPECT_EQ(columns, 7);
    EXPECT_EQ(hint, "a b");
    EXPECT_TRUE(isSilent);
    EXPECT_EQ(loops, std::nullopt);
}

TEST(Options, GiveTheirLongNameToTheConverterForItsComplaints) {
    std::int64_t number = 0;
    const OptionTable table = {{"-n,--number,--count", "N", "", into(number, wholeNumber(1, 10))},
                               {"-x", "N", "", into(number, wholeNumber(1, 10))}};
    EXPECT_EQ(complaint(table, {"-n", "11"}), "--number: '11' is not a whole number from 1 to 10");
    EXPECT_EQ(complaint(table, {"--count", "0"}), "--number: '0' is not a whole number from 1 to 10");
    EXPECT_EQ(complaint(table, {"-x", "0"}), "-x: '0' is not a whole number from 1 to 10");
    GivenText given;
    readOptions({{"-f,--frames", "A-B", "", into(given, asGiven)}}, {"-f", "1-5"});
    EXPECT_EQ(given.text, "1-5");
    EXPECT_EQ(given.option, "--frames");
}

TEST(Options, CountAnEmptyValueAsNoneWhereThereMayBeNone) {
    std::optional<std::int64_t> maybe = 3;
    std::int64_t always = 3;
    EXPECT_EQ(complaint({{"--maybe", "N", "", into(maybe, wholeNumber(1, 10))}}, {"--maybe", ""}), "none");
    EXPECT_EQ(maybe, 3);
    EXPECT_EQ(complaint({{"--always", "N", "", into(always, wholeNumber(1, 10))}}, {"--always", ""}),
              "--always: '' is not a whole number from 1 to 10");
}

TEST(Options, FindWhatRowsAboveThemHaveFilled) {
    std::string path;
    std::string format;
    const OptionTable table = {
        {"-o", "FILE", "", required(into(path), "the output is missing")},
        {"--format", "WORD", "", orElse(into(format), [&] { format = "by " + path; })}};
    readOptions(table, {"--format", "png", "-o", "a"});
    EXPECT_EQ(format, "png");
    for (const std::vector<std::string>& without :
         {std::vector<std::string>{"-o", "b"}, {"--format", "", "-o", "b"}}) {
        readOptions(table, without);
        EXPECT_EQ(format, "by b");
    }
    EXPECT_EQ(complaint(table, {"--format", "png"}), "the output is missing");
    EXPECT_EQ(complaint(table, {"-o", ""}), "the output is missing");
}

TEST(Options, TakeTheLastValueUnlessTheyAreTakenEveryTime) {
    std::int64_t number = 0;
    std::vector<std::string> steps;
    const auto step = [&steps](const std::string& text, const std::string& option) {
        steps.push_back(option + text);
    };
    const OptionTable table = {{"--number", "N", "", into(number, wholeNumber(1, 10))},
                               {"--turn", "WAY", "", {.take = step, .everyTime = true}},
                               {"--sharpen", "", "", {.take = step, .isFlag = true, .everyTime = true}}};
    // What does not count is not looked at either.
    readOptions(table, {"--turn", "left", "--number", "many", "--sharpen", "--turn", "right", "--number", "4",
                        "--sharpen"});
    EXPECT_EQ(number, 4);
    EXPECT_THAT(steps, ElementsAre("--turnleft", "--sharpen", "--turnright", "--sharpen"));
}

TEST(Options, OfSeveralTablesStandOneAfterAnother) {
    bool flag = false;
    const OptionTable one = {{"--a", "", "", raise(flag)}};
    const OptionTable two = {{"--b", "", "", raise(flag)}, {"--c", "", "", raise(flag)}};
    std::string names;
    for (const Option& option : joined({one, two, one})) names += option.names;
    EXPECT_EQ(names, "--a--b--c--a");
}
