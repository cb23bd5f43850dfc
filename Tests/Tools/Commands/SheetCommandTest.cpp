// Also tests: Tools/Pictures/SheetLayout.cpp
// Also tests: Tools/Files/PictureFiles.cpp

#include "Tests/Tools/Support/Command.h"
#include "Tests/Tools/Support/TestPictures.h"

#include <gmock/gmock.h>

#include <algorithm>

#include <cstdlib>

using namespace TestSupport;

namespace {

constexpr Pixel gray{54, 54, 54, 255}; // #363636, the background unless another one is asked for

/// Cells of 40 x 40 pixels, which have 4 between and around them, without frames.
Picture sheet(const TemporaryFolder& folder, std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), "sheet");
    arguments.insert(arguments.end(), {"--cell", "40x40", "-o", folder.path("sheet.png")});
    const Result result = run(arguments);
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.err, "");
    EXPECT_EQ(result.out, "");
    return pictureOfPNG(folder.read("sheet.png"));
}

void fill(Picture& picture, int left, int top, int width, int height, Pixel pixel) {
    for (int y = top; y < top + height; ++y) {
        for (int x = left; x < left + width; ++x) picture.at(x, y) = pixel;
    }
}

void expectSame(const Picture& actual, const Picture& expected) {
    ASSERT_EQ(actual.width, expected.width);
    ASSERT_EQ(actual.height, expected.height);
    EXPECT_EQ(actual.pixels, expected.pixels);
}

} // namespace

TEST(SheetCommand, PutsPicturesIntoTheMiddleOfTheirCells) {
    const TemporaryFolder folder;
    const std::string wide = folder.write("1.png", pngOf(Picture(20, 10, red)));
    const std::string tall = folder.write("2.png", pngOf(Picture(10, 20, green)));
    const std::string whole = folder.write("3.png", pngOf(Picture(80, 80, blue)));
    // Two columns of cells at 4 and 48; the rows begin at 4 and 48 from the top.
    Picture expected(92, 92, gray);
    fill(expected, 4, 14, 40, 20, red);
    fill(expected, 58, 4, 20, 40, green);
    fill(expected, 4, 48, 40, 40, blue);
    const Picture result = sheet(folder, {wide, tall, whole, "--columns", "2", "--frame", "none"});
    expectSame(result, expected);
    EXPECT_FALSE(result.hasAlpha);
    expectSame(sheet(folder, {wide, tall, whole, "--columns", "2", "--frame", "0,white"}), expected);
}

TEST(SheetCommand, ShowsEveryOrientationUpright) {
    const TemporaryFolder folder;
    const Picture stored(3, 2, {red, green, blue, white, black, yellow});
    for (int orientation = 1; orientation <= 8; ++orientation) {
        SCOPED_TRACE(orientation);
        const std::string png = pngWithChunks(stored, pngChunk("eXIf", exifWithOrientation(orientation)));
        const Picture upright = seen(stored, orientation);
        const Picture result = sheet(folder, {folder.write("in.png", png), "--frame", "none"});
        // The picture grows until its longer side is 40, in the middle of the cell at (4, 4); the middles of
        // its pixels keep their colours.
        const double side = 40.0 / 3;
        for (int y = 0; y < upright.height; ++y) {
            for (int x = 0; x < upright.width; ++x) {
                const int column = static_cast<int>(24 + side * (x + 0.5 - upright.width / 2.0));
                const int row = static_cast<int>(24 + side * (y + 0.5 - upright.height / 2.0));
                const Pixel shown = result.at(column, row);
                const Pixel expected = upright.at(x, y);
                EXPECT_LE(std::abs(shown.red - expected.red), 40) << x << ' ' << y << shown;
                EXPECT_LE(std::abs(shown.green - expected.green), 40) << x << ' ' << y << shown;
                EXPECT_LE(std::abs(shown.blue - expected.blue), 40) << x << ' ' << y << shown;
            }
        }
    }
}

TEST(SheetCommand, ChoosesAsManyColumnsAsRows) {
    const TemporaryFolder folder;
    const std::string one = folder.write("1.png", pngOf(Picture(20, 20, red)));
    const std::vector<std::vector<int>> counts = {{1, 1, 1}, {3, 3, 1},  {4, 4, 1},
                                                  {5, 4, 2}, {16, 4, 4}, {17, 5, 4}};
    for (const std::vector<int>& expected : counts) {
        const std::vector<std::string> names(static_cast<std::size_t>(expected[0]), one);
        const Picture result = sheet(folder, names);
        EXPECT_EQ(result.width, expected[1] * 44 + 4) << expected[0];
        EXPECT_EQ(result.height, expected[2] * 44 + 4) << expected[0];
    }
}

TEST(SheetCommand, SurroundsPicturesWithAMatALineAndAShadow) {
    const TemporaryFolder folder;
    const std::string wide = folder.write("1.png", pngOf(Picture(60, 30, blue)));
    const Picture result = sheet(folder, {wide, "--frame", "5,#ff8000", "--background", "white"});
    ASSERT_EQ(result.width, 48);
    // Inside the mat there are 30 x 30 pixels, of which the picture takes 30 x 15: 7 rows are left below it
    // and 8 above, so that it begins 4 + 5 + 8 from the top.
    const Pixel mat{255, 128, 0, 255};
    const Pixel line{204, 102, 0, 255}; // a fifth darker
    for (int x = 9; x < 39; ++x) {
        for (int y = 17; y < 32; ++y) ASSERT_EQ(result.at(x, y), blue) << x << ' ' << y;
        EXPECT_EQ(result.at(x, 16), line);
        EXPECT_EQ(result.at(x, 32), line);
        EXPECT_EQ(result.at(x, 12), mat);
        EXPECT_EQ(result.at(x, 15), mat);
        EXPECT_EQ(result.at(x, 36), mat);
    }
    EXPECT_EQ(result.at(8, 20), line);
    EXPECT_EQ(result.at(7, 20), mat);
    EXPECT_EQ(result.at(4, 20), mat);
    EXPECT_NE(result.at(3, 20), mat);
    // The shadow is gray, falls downward, and has ended before the edge of the sheet.
    const Pixel below = result.at(24, 37);
    EXPECT_EQ(below.red, below.green);
    EXPECT_LT(below.red, result.at(24, 11).red);
    EXPECT_LT(below.red, result.at(24, 39).red);
    EXPECT_EQ(result.at(24, 47), white);
    EXPECT_EQ(result.at(24, 0), white);
}

TEST(SheetCommand, OrdersAFolderAsPeopleCount) {
    const TemporaryFolder folder;
    std::filesystem::create_directory(folder.path("in"));
    std::filesystem::create_directory(folder.path("in/1 folder.png"));
    folder.write("in/1 folder.png/z.png", pngOf(Picture(1, 1, white)));
    folder.write("in/IMG_10.png", pngOf(Picture(1, 1, blue)));
    folder.write("in/IMG_2.jpg", pngOf(Picture(1, 1, green))); // told by content
    folder.write("in/img_1", pngOf(Picture(1, 1, red)));
    folder.write("in/IMG_010.png", pngOf(Picture(1, 1, black)));
    folder.write("in/.hidden.png", pngOf(Picture(1, 1, white)));
    folder.write("in/notes.png", "no picture");
    folder.write("in/empty.jpg", "");
    Picture expected(4 * 44 + 4, 48, gray);
    const std::vector<Pixel> order = {red, green, black, blue};
    for (int i = 0; i < 4; ++i) fill(expected, 4 + 44 * i, 4, 40, 40, order[static_cast<std::size_t>(i)]);
    expectSame(sheet(folder, {folder.path("in"), "--frame", "none"}), expected);
    // Several inputs stay in their own order, a folder's pictures in its place.
    folder.write("first.png", pngOf(Picture(1, 1, yellow)));
    const Picture more =
        sheet(folder, {folder.path("first.png"), folder.path("in"), "--frame", "none", "--columns", "5"});
    EXPECT_EQ(more.at(20, 20), yellow);
    EXPECT_EQ(more.at(64, 20), red);
    EXPECT_EQ(more.at(20 + 4 * 44, 20), blue);
}

TEST(SheetCommand, LeavesItselfOutOfItsFolder) {
    const TemporaryFolder folder;
    folder.write("a.png", pngOf(Picture(1, 1, red)));
    const Picture first = sheet(folder, {folder.path("")});
    const Picture second = sheet(folder, {folder.path("")});
    expectSame(second, first);
    EXPECT_EQ(second.width, 48);
}

TEST(SheetCommand, NamesAPictureThatCannotBeReadAndMakesNoSheet) {
    const TemporaryFolder folder;
    const std::string good = folder.write("a.png", pngOf(Picture(8, 8, red)));
    const std::string whole = pngOf(randomPicture(20, 20, 8));
    const std::string cut = folder.write("b.png", whole.substr(0, whole.size() / 2));
    const Result result = run({"sheet", folder.path(""), "-o", folder.path("sheet.png")});
    EXPECT_EQ(result.status, 1);
    EXPECT_THAT(result.err, testing::HasSubstr("/b.png: the PNG data ends before the picture is complete"));
    EXPECT_EQ(result.err.find('\n'), result.err.size() - 1);
    EXPECT_EQ(folder.count(), 2);
}

TEST(SheetCommand, GoesOnWithoutBadPicturesOnDemand) {
    const TemporaryFolder folder;
    const std::string a = folder.write("a.png", pngOf(Picture(8, 8, red)));
    const std::string bad = folder.write("b.png", "no picture");
    const std::string c = folder.write("c.png", pngOf(Picture(8, 8, green)));
    const Result result = run({"sheet", a, bad, c, "--skip-bad", "--columns", "1", "--cell", "40x40",
                               "--frame", "none", "-o", folder.path("sheet.png")});
    EXPECT_EQ(result.status, 0);
    EXPECT_THAT(result.err, testing::AllOf(testing::StartsWith(
                                               "imaging: " + bad +
                                               ": the data is not a picture of a known format (JPEG, PNG"),
                                           testing::EndsWith(", JPEG 2000)\n")));
    EXPECT_EQ(std::count(result.err.begin(), result.err.end(), '\n'), 1);
    Picture expected(48, 92, gray); // the others close up
    fill(expected, 4, 4, 40, 40, red);
    fill(expected, 4, 48, 40, 40, green);
    expectSame(pictureOfPNG(folder.read("sheet.png")), expected);
}

TEST(SheetCommand, MakesNoSheetOfNothing) {
    const TemporaryFolder folder;
    const std::string bad = folder.write("b.png", "no picture");
    const std::string out = folder.path("sheet.png");
    const Result skipped = run({"sheet", bad, "--skip-bad", "-o", out});
    EXPECT_EQ(skipped.status, 1);
    EXPECT_THAT(skipped.err, testing::EndsWith("imaging: " + out + ": none of the pictures can be read\n"));
    const Result empty = run({"sheet", folder.path(""), "-o", out});
    EXPECT_EQ(empty.status, 1);
    EXPECT_EQ(empty.err, "imaging: " + folder.path("") + ": there are no pictures in this folder\n");
    const Result missing = run({"sheet", folder.path("missing"), "-o", out});
    EXPECT_EQ(missing.err, "imaging: " + folder.path("missing") + ": there is no such file\n");
    EXPECT_EQ(folder.count(), 1);
}

TEST(SheetCommand, SaysWhatToDoWhenTheSheetWouldBeTooLarge) {
    const TemporaryFolder folder;
    const std::string a = folder.write("a.png", pngOf(Picture(8, 8, red)));
    const std::string out = folder.path("sheet.png");
    const Result result = run({"sheet", a, a, "-o", out, "--cell", "20000x100", "--columns", "2"});
    EXPECT_EQ(result.status, 1);
    // The gap is a tenth of the shorter side: 2 · 20010 + 10, and 100 + 2 · 10.
    EXPECT_EQ(result.err, "imaging: " + out +
                              ": the result would be 40030 x 120 pixels, and at most 32750 can be "
                              "drawn along a side; choose a smaller --cell or make several sheets\n");
}

TEST(SheetCommand, ShowsPhotographsUpright) {
    const TemporaryFolder folder;
    const std::string png =
        pngWithChunks(Picture(2, 1, {red, green}), pngChunk("eXIf", exifWithOrientation(6)));
    const Picture result = sheet(folder, {folder.write("a.png", png), "--frame", "none"});
    EXPECT_EQ(result.at(24, 6), red);
    EXPECT_EQ(result.at(24, 41), green);
    EXPECT_EQ(result.at(6, 24), gray); // 20 columns in the middle of 40
}

TEST(SheetCommand, TakesNoMoreMemoryForMorePictures) {
    const TemporaryFolder folder;
    const std::string path = folder.write("a.png", pngOf(Picture(1500, 1500, red)));
    // The sanitizer keeps memory that was freed, unless it is told how much of it.
    const char* options = std::getenv("ASAN_OPTIONS");
    const std::string sanitizer = std::string(options != nullptr ? options : "") + ":quarantine_size_mb=1";
    const auto peak = [&](std::size_t count) {
        std::vector<std::string> arguments(count, path);
        arguments.insert(arguments.begin(), "sheet");
        arguments.insert(arguments.end(),
                         {"--columns", "8", "--cell", "16x16", "-o", folder.path("sheet.png")});
        const Result result = run(arguments, {.environment = {{"ASAN_OPTIONS", sanitizer}}});
        EXPECT_EQ(result.status, 0) << result.err;
        return result.peakMemory;
    };
    // 40 such pictures are 270 MB decoded and 360 MB ready to draw.
    EXPECT_LT(peak(40) - peak(2), 100 * 1024);
}
