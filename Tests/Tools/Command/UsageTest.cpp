// Also tests: Tools/main.cpp
// Also tests: Tools/Command/CommandLine.cpp
// Also tests: Tools/Command/Subcommand.cpp

#include "Tests/Tools/Support/Command.h"

#include <gmock/gmock.h>

#include <sstream>

using namespace TestSupport;
using testing::EndsWith;
using testing::HasSubstr;
using testing::StartsWith;

namespace {

void expectWrongUsage(const std::vector<std::string>& arguments, const std::string& line) {
    const Result result = run(arguments);
    EXPECT_EQ(result.status, 2) << line;
    EXPECT_EQ(result.out, "") << line;
    EXPECT_EQ(result.err, line + "\n");
}

} // namespace

TEST(CommandUsage, HelpGoesToStandardOutputAndEndsInExamples) {
    const Result result = run({"--help"});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.err, "");
    for (const char* subcommand : {"info", "draw", "apply", "graph", "archive", "sheet", "show", "transition",
                                   "transitions", "doctor"})
        EXPECT_THAT(result.out, HasSubstr(subcommand));
    EXPECT_THAT(result.out, EndsWith("  imaging draw --help\n"));
}

TEST(CommandUsage, EverySubcommandHasHelpWithItsExitStatusAndExamples) {
    for (const std::string subcommand : {"info", "draw", "apply", "graph", "archive", "sheet", "show",
                                         "transition", "transitions", "doctor"}) {
        const Result result = run({subcommand, "--help"});
        EXPECT_EQ(result.status, 0);
        EXPECT_EQ(result.err, "");
        const std::string operands = subcommand == "transition"    ? " FROM TO"
                                     : subcommand == "transitions" ? "\n"
                                     : subcommand == "doctor"      ? "\n"
                                                                   : " INPUT";
        EXPECT_THAT(result.out, HasSubstr("Usage: imaging " + subcommand + " [OPTION...]" + operands));
        EXPECT_THAT(result.out, HasSubstr("--timeout SECONDS"));
        EXPECT_THAT(result.out, HasSubstr("Exit status:\n  0  done\n  1  "));
        const std::size_t examples = result.out.find("\nExamples:\n");
        ASSERT_NE(examples, std::string::npos);
        EXPECT_THAT(result.out.substr(examples + 11), StartsWith("  imaging " + subcommand));
        EXPECT_EQ(result.out.substr(examples + 11).find("\n\n"), std::string::npos) << "examples come last";
        EXPECT_EQ(run({subcommand, "-h"}).out, result.out);
    }
}

TEST(CommandUsage, HelpFitsIntoEightyColumns) {
    for (const char* subcommand : {"info", "draw", "apply", "graph", "archive", "sheet", "show", "transition",
                                   "transitions", "doctor"}) {
        std::istringstream help(run({subcommand, "--help"}).out);
        for (std::string line; std::getline(help, line);) EXPECT_LE(line.size(), 80U) << line;
    }
}

TEST(CommandUsage, VersionIsOneLine) {
    const Result result = run({"--version"});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.out, "imaging 0.1.0\n");
    EXPECT_EQ(result.err, "");
}

TEST(CommandUsage, NamesTheSubcommandThatWasMeant) {
    expectWrongUsage({}, "imaging: a subcommand is missing; known are info, draw, apply, graph, archive, "
                         "sheet, show, transition, transitions and doctor "
                         "(see 'imaging --help')");
    expectWrongUsage({"drwa", "a.png"},
                     "imaging: there is no subcommand 'drwa'; did you mean 'draw'? (see 'imaging --help')");
    expectWrongUsage({"compose"}, "imaging: there is no subcommand 'compose' (see 'imaging --help')");
    expectWrongUsage({"--frobnicate"}, "imaging: there is no option '--frobnicate' (see 'imaging --help')");
    expectWrongUsage(
        {"--vresion"},
        "imaging: there is no option '--vresion'; did you mean '--version'? (see 'imaging --help')");
}

TEST(CommandUsage, NamesTheOptionThatWasMeant) {
    expectWrongUsage(
        {"draw", "a.png", "-o", "b.png", "--sise=3x3"},
        "imaging: draw: there is no option '--sise'; did you mean '--size'? (see 'imaging draw --help')");
    expectWrongUsage({"info", "-x", "a.png"},
                     "imaging: info: there is no option '-x' (see 'imaging info --help')");
}

TEST(CommandUsage, NamesWhatIsMissing) {
    expectWrongUsage({"info"}, "imaging: info: an input is missing (see 'imaging info --help')");
    expectWrongUsage({"info", ""}, "imaging: info: a name is empty (see 'imaging info --help')");
    expectWrongUsage({"draw"}, "imaging: draw: an input is missing (see 'imaging draw --help')");
    expectWrongUsage({"sheet", "-o", "a.png"},
                     "imaging: sheet: a picture or folder is missing (see 'imaging sheet --help')");
    for (const std::string subcommand : {"draw", "apply", "archive", "sheet"}) {
        expectWrongUsage({subcommand, "a.png"},
                         "imaging: " + subcommand +
                             ": the output is missing: -o FILE, or -o - for standard output "
                             "(see 'imaging " +
                             subcommand + " --help')");
    }
}

TEST(CommandUsage, NamesOptionsWithoutOrWithTooManyValues) {
    expectWrongUsage({"draw", "a.png", "-o"},
                     "imaging: draw: the option --output needs a value (see 'imaging draw --help')");
    expectWrongUsage({"draw", "--size=", "a.png"},
                     "imaging: the option --size needs a value (see 'imaging --help')");
    expectWrongUsage({"info", "--json=5", "a.png"},
                     "imaging: info: the option --json takes no value (see 'imaging info --help')");
    expectWrongUsage(
        {"draw", "a.png", "b.png", "-o", "c.png"},
        "imaging: draw: 'b.png' is one too many: this takes one input only (see 'imaging draw --help')");
}

TEST(CommandUsage, RefusesOutputsOfUnknownFormat) {
    const std::string hint = " (see 'imaging draw --help')";
    expectWrongUsage(
        {"draw", "a.png", "-o", "b.webp"},
        "imaging: draw: -o b.webp: the suffix names no format that can be written; those that work are "
        ".jpg, .jpeg, .png, .tif, .tiff, .gif, .bmp, .jp2, .pdf and .svg, or add --format" +
            hint);
    expectWrongUsage(
        {"draw", "a.png", "-o", "b"},
        "imaging: draw: -o b: the suffix names no format that can be written; those that work are "
        ".jpg, .jpeg, .png, .tif, .tiff, .gif, .bmp, .jp2, .pdf and .svg, or add --format" +
            hint);
    expectWrongUsage(
        {"draw", "a.png", "-o", "-"},
        "imaging: draw: -o -: standard output has no suffix to tell the format by; add --format" + hint);
    expectWrongUsage({"draw", "a.png", "-o", "-", "--format", "jgp"},
                     "imaging: draw: --format: 'jgp' cannot be written; known are jpg, jpeg, png, tif, tiff, "
                     "gif, bmp, jp2, pdf and svg; did you mean 'jpg'?" +
                         hint);
}

TEST(CommandUsage, RefusesQualitiesThatMeanNothing) {
    const std::string hint = " (see 'imaging draw --help')";
    expectWrongUsage(
        {"draw", "a.png", "-o", "b.png", "--quality", "80"},
        "imaging: draw: --quality: only JPEG and JPEG 2000 have a quality; leave it out or write a .jpg" +
            hint);
    for (const std::string quality : {"0", "101", "-1", "8o", "", "7.5", "99999999999999999999"}) {
        if (quality.empty()) continue;
        expectWrongUsage({"draw", "a.png", "-o", "b.jpg", "--quality", quality},
                         "imaging: draw: --quality: '" + quality + "' is not a whole number from 1 to 100" +
                             hint);
    }
}

TEST(CommandUsage, RefusesSizesThatAreNone) {
    for (const std::string size :
         {"x", "0", "0x3", "3x0", "3x", "-3x3", "3x3x3", "3 x 3", "3.5", "99999999999x1"}) {
        expectWrongUsage({"draw", "a.png", "-o", "b.png", "--size", size},
                         "imaging: draw: --size: '" + size +
                             "' is no size in pixels; give WxH, W or xH, such as "
                             "800x600, 800 or x600 (see 'imaging draw --help')");
    }
    expectWrongUsage({"sheet", "a.png", "-o", "b.png", "--cell", "300"},
                     "imaging: sheet: --cell: '300' is no size in pixels; give WxH, such as 400x300 "
                     "(see 'imaging sheet --help')");
    expectWrongUsage({"sheet", "a.png", "-o", "b.png", "--cell", "300x15"},
                     "imaging: sheet: --cell: '300x15' is too small; each side takes at least 16 pixels "
                     "(see 'imaging sheet --help')");
}

TEST(CommandUsage, ListsTheWaysToFitAndTheColours) {
    expectWrongUsage(
        {"draw", "a.png", "-o", "b.png", "--fit", "contian"},
        "imaging: draw: --fit: there is no way to fit named 'contian'; known are contain, cover and "
        "stretch; did you mean 'contain'? (see 'imaging draw --help')");
    expectWrongUsage(
        {"draw", "a.png", "-o", "b.png", "--background", "yelow"},
        "imaging: draw: --background: 'yelow' is no colour; known are #rgb, #rrggbb, #rrggbbaa, "
        "transparent, aqua, black, blue, fuchsia, gray, green, lime, maroon, navy, olive, purple, red, "
        "silver, teal, white, yellow, darkgray, dimgray, gainsboro, grey, lightgray, darkgrey, dimgrey, "
        "lightgrey and whitesmoke; did you mean 'yellow'? (see 'imaging draw --help')");
    for (const std::string color : {"#", "#12", "#12345", "#1234567", "#123456789", "#ggg", "#+12", "# 12"}) {
        EXPECT_EQ(run({"draw", "a.png", "-o", "b.png", "--background", color}).status, 2) << color;
    }
}

TEST(CommandUsage, RefusesFramesAndColumnsThatAreNone) {
    const std::string hint = " (see 'imaging sheet --help')";
    expectWrongUsage({"sheet", "a.png", "-o", "b.png", "--frame", "3"},
                     "imaging: sheet: --frame: '3' is no frame; give WIDTH,COLOR, such as 8,white, or none" +
                         hint);
    expectWrongUsage({"sheet", "a.png", "-o", "b.png", "--cell", "40x60", "--frame", "11,white"},
                     "imaging: sheet: --frame: '11' is not a whole number from 0 to 10" + hint);
    EXPECT_EQ(run({"sheet", "a.png", "-o", "b.png", "--frame", "3,pinkish"}).status, 2);
    expectWrongUsage({"sheet", "a.png", "-o", "b.png", "--columns", "0"},
                     "imaging: sheet: --columns: '0' is not a whole number from 1 to 1000" + hint);
}

TEST(CommandUsage, RefusesTimesAndAmountsThatAreNone) {
    for (const std::string time : {"0", "-1", "soon", "1,5", "nan", "inf", "86401"}) {
        expectWrongUsage({"info", "--timeout", time, "a.png"},
                         "imaging: info: --timeout: '" + time +
                             "' is not a number of seconds above 0 and up to 86400 "
                             "(see 'imaging info --help')");
    }
    expectWrongUsage({"info", "--max-download", "0", "a.png"},
                     "imaging: info: --max-download: '0' is not a whole number from 1 to 1048576 "
                     "(see 'imaging info --help')");
}

TEST(CommandUsage, NothingIsReadBeforeAllArgumentsAreRight) {
    // The input does not exist, and yet it is the argument that is complained about.
    EXPECT_EQ(run({"draw", "/nowhere/a.png", "-o", "b.png", "--fit", "tight"}).status, 2);
    EXPECT_EQ(run({"sheet", "/nowhere", "-o", "b.png", "--columns", "many"}).status, 2);
}

TEST(CommandUsage, TheLastOfSeveralValuesCounts) {
    const TemporaryFolder folder;
    const Result result = run({"draw", "/nowhere/a.png", "-o", "first.gif", "-o", folder.path("second.png")});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.err, "imaging: /nowhere/a.png: there is no such file\n");
}
