#include "Tests/Tools/Support/Command.h"
#include "Tests/Tools/Support/TestPictures.h"

#include <gmock/gmock.h>

#include <cstdlib>
#include <thread>

using namespace TestSupport;

namespace {

/// Runs `imaging draw` and reads the result, which must be a PNG.
Picture drawn(const TemporaryFolder& folder, std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), "draw");
    arguments.insert(arguments.end(), {"-o", folder.path("drawn.png")});
    const Result result = run(arguments);
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.err, "");
    EXPECT_EQ(result.out, "");
    return pictureOfPNG(folder.read("drawn.png"));
}

void expectSame(const Picture& actual, const Picture& expected) {
    ASSERT_EQ(actual.width, expected.width);
    ASSERT_EQ(actual.height, expected.height);
    EXPECT_EQ(actual.pixels, expected.pixels);
}

bool isNear(const Pixel& a, const Pixel& b, int tolerance) {
    return std::abs(a.red - b.red) <= tolerance && std::abs(a.green - b.green) <= tolerance &&
           std::abs(a.blue - b.blue) <= tolerance && a.alpha == b.alpha;
}

/// Four quarters of 16 x 16 pixels: red and green above, blue and white below.
Picture quarters() {
    Picture picture(32, 32, red);
    for (int y = 0; y < 32; ++y) {
        for (int x = 0; x < 32; ++x) {
            if (x >= 16) picture.at(x, y) = y < 16 ? green : white;
            if (x < 16 && y >= 16) picture.at(x, y) = blue;
        }
    }
    return picture;
}

} // namespace

TEST(DrawCommand, KeepsEveryPixelAtItsOwnSize) {
    const TemporaryFolder folder;
    const unsigned seed = 20261121;
    SCOPED_TRACE(seed);
    const Picture picture = randomPicture(61, 37, seed);
    const Picture result = drawn(folder, {folder.write("in.png", pngOf(picture))});
    expectSame(result, picture);
    EXPECT_FALSE(result.hasAlpha) << "an opaque result needs none";
}

TEST(DrawCommand, KeepsTransparency) {
    const TemporaryFolder folder;
    // Colours of 0 and 255 stay whole numbers when they are multiplied by alpha and divided again.
    const Picture picture(3, 1, {red, clear, {0, 255, 255, 128}});
    const Picture result = drawn(folder, {folder.write("in.png", pngOf(picture, true))});
    EXPECT_TRUE(result.hasAlpha);
    expectSame(result, picture);
}

TEST(DrawCommand, WritesAnOpaquePictureWithAlphaChannelWithoutOne) {
    const TemporaryFolder folder;
    const Picture result = drawn(folder, {folder.write("in.png", pngOf(Picture(2, 2, red), true))});
    EXPECT_FALSE(result.hasAlpha);
    expectSame(result, Picture(2, 2, red));
}

TEST(DrawCommand, WritesTheFormatOfTheSuffixWithTheSameSideUp) {
    const TemporaryFolder folder;
    const std::string in = folder.write("in.png", pngOf(quarters()));
    const std::vector<std::pair<std::string, std::string>> starts = {{"a.jpg", "\xff\xd8\xff"},
                                                                     {"a.JPEG", "\xff\xd8\xff"},
                                                                     {"a.png", "\x89PNG"},
                                                                     {"a.tif", std::string("II*\0", 4)},
                                                                     {"a.tiff", std::string("II*\0", 4)}};
    for (const auto& [name, start] : starts) {
        ASSERT_EQ(run({"draw", in, "-o", folder.path(name)}).status, 0) << name;
        const std::string bytes = folder.read(name);
        EXPECT_EQ(bytes.substr(0, start.size()), start) << name;
        const Picture result = pictureOfAnyFormat(bytes);
        ASSERT_EQ(result.width, 32) << name;
        ASSERT_EQ(result.height, 32) << name;
        EXPECT_FALSE(result.hasAlpha) << name;
        const int tolerance = start[0] == '\xff' ? 12 : 0;
        EXPECT_TRUE(isNear(result.at(3, 3), red, tolerance)) << name << result.at(3, 3);
        EXPECT_TRUE(isNear(result.at(28, 3), green, tolerance)) << name << result.at(28, 3);
        EXPECT_TRUE(isNear(result.at(3, 28), blue, tolerance)) << name << result.at(3, 28);
        EXPECT_TRUE(isNear(result.at(28, 28), white, tolerance)) << name << result.at(28, 28);
    }
}

TEST(DrawCommand, ShowsEveryOrientationUpright) {
    const TemporaryFolder folder;
    const Picture stored(3, 2, {red, green, blue, white, black, yellow});
    for (int orientation = 1; orientation <= 8; ++orientation) {
        SCOPED_TRACE(orientation);
        const std::string png = pngWithChunks(stored, pngChunk("eXIf", exifWithOrientation(orientation)));
        expectSame(drawn(folder, {folder.write("in.png", png)}), seen(stored, orientation));
    }
}

TEST(DrawCommand, DrawsAPictureAsItIsStoredWhenAskedTo) {
    const TemporaryFolder folder;
    const Picture stored(3, 2, {red, green, blue, white, black, yellow});
    const std::string png = pngWithChunks(stored, pngChunk("eXIf", exifWithOrientation(6)));
    expectSame(drawn(folder, {folder.write("in.png", png), "--no-orient"}), stored);
}

TEST(DrawCommand, TurnsAPhotographAndBringsItIntoASize) {
    const TemporaryFolder folder;
    // Stored with red at the left; to be turned right, so red belongs at the top.
    Picture stored(64, 32, blue);
    for (int y = 0; y < 32; ++y) {
        for (int x = 0; x < 32; ++x) stored.at(x, y) = red;
    }
    const std::string jpeg = jpegWithExif(jpegOf(stored), exifWithOrientation(6));
    const Picture result = drawn(folder, {folder.write("in.jpg", jpeg), "--size", "16"});
    ASSERT_EQ(result.width, 16);
    ASSERT_EQ(result.height, 32);
    EXPECT_TRUE(isNear(result.at(8, 6), red, 12)) << result.at(8, 6);
    EXPECT_TRUE(isNear(result.at(8, 26), blue, 12)) << result.at(8, 26);
}

TEST(DrawCommand, ContainsAPictureInTheMiddleOfTheBackground) {
    const TemporaryFolder folder;
    const std::string wide = folder.write("wide.png", pngOf(Picture(4, 2, red)));
    // 4 x 2 becomes 6 x 3; the 3 rows left over are 2 above and 1 below.
    Picture expected(6, 6, blue);
    for (int y = 2; y < 5; ++y) {
        for (int x = 0; x < 6; ++x) expected.at(x, y) = red;
    }
    expectSame(drawn(folder, {wide, "--size", "6x6", "--background", "blue"}), expected);
    expectSame(drawn(folder, {wide, "--size", "6x6", "--background", "#00f", "--fit", "contain"}), expected);
}

TEST(DrawCommand, LeavesTheBackgroundTransparent) {
    const TemporaryFolder folder;
    const std::string tall = folder.write("tall.png", pngOf(Picture(2, 4, red)));
    // 2 x 4 stays as high and gets 1 column at each side.
    const Picture result = drawn(folder, {tall, "--size", "4x4"});
    Picture expected(4, 4, clear);
    for (int y = 0; y < 4; ++y) expected.at(1, y) = expected.at(2, y) = red;
    EXPECT_TRUE(result.hasAlpha);
    expectSame(result, expected);
}

TEST(DrawCommand, MakesTheBackgroundOfAJpegWhite) {
    const TemporaryFolder folder;
    const std::string in = folder.write("in.png", pngOf(Picture(16, 32, clear), true));
    ASSERT_EQ(run({"draw", in, "-o", folder.path("white.jpg"), "--size", "32x32"}).status, 0);
    for (const Pixel& pixel : pictureOfAnyFormat(folder.read("white.jpg")).pixels) {
        EXPECT_TRUE(isNear(pixel, white, 2)) << pixel;
    }
    // Half of black on white is gray: 255 · (1 - 128/255) = 127.
    const std::string half = folder.path("half.jpg");
    ASSERT_EQ(run({"draw", in, "-o", half, "--size", "32x32", "--background", "#00000080"}).status, 0);
    for (const Pixel& pixel : pictureOfAnyFormat(folder.read("half.jpg")).pixels) {
        EXPECT_TRUE(isNear(pixel, {127, 127, 127, 255}, 3)) << pixel;
    }
}

TEST(DrawCommand, CoversAndCutsAwayWhatReachesBeyond) {
    const TemporaryFolder folder;
    const std::string wide =
        folder.write("wide.png", pngOf(Picture(4, 2, {red, green, blue, white, white, yellow, black, red})));
    expectSame(drawn(folder, {wide, "--size", "2x2", "--fit", "cover"}),
               Picture(2, 2, {green, blue, yellow, black}));
    const std::string tall =
        folder.write("tall.png", pngOf(Picture(2, 4, {red, green, blue, white, white, yellow, black, red})));
    expectSame(drawn(folder, {tall, "--size", "2x2", "--fit", "cover"}),
               Picture(2, 2, {blue, white, white, yellow}));
}

TEST(DrawCommand, StretchesEachDirectionByItself) {
    const TemporaryFolder folder;
    const std::string in = folder.write("in.png", pngOf(Picture(2, 1, {red, green})));
    expectSame(drawn(folder, {in, "--size", "2x3", "--fit", "stretch", "--background", "blue"}),
               Picture(2, 3, {red, green, red, green, red, green}));
}

TEST(DrawCommand, FollowsTheShapeWhereOneSideIsGiven) {
    const TemporaryFolder folder;
    const std::string in = folder.write("in.png", pngOf(Picture(5, 3, red)));
    expectSame(drawn(folder, {in, "--size", "10"}), Picture(10, 6, red));
    expectSame(drawn(folder, {in, "--size", "x6"}), Picture(10, 6, red));
    expectSame(drawn(folder, {in, "--size", "2"}), Picture(2, 1, red));  // 1.2 rows
    expectSame(drawn(folder, {in, "--size", "x1"}), Picture(2, 1, red)); // 1.67 columns
    const std::string line = folder.write("line.png", pngOf(Picture(100, 1, red)));
    expectSame(drawn(folder, {line, "--size", "10"}), Picture(10, 1, red)); // never 0
}

TEST(DrawCommand, AveragesWhatItMakesSmaller) {
    const TemporaryFolder folder;
    Picture board(8, 8, black);
    for (int y = 0; y < 8; ++y) {
        for (int x = 0; x < 8; ++x) board.at(x, y) = (x + y) % 2 == 0 ? white : black;
    }
    const Picture result = drawn(folder, {folder.write("in.png", pngOf(board)), "--size", "2x2"});
    for (const Pixel& pixel : result.pixels) EXPECT_TRUE(isNear(pixel, {128, 128, 128, 255}, 1)) << pixel;
}

TEST(DrawCommand, KnowsColoursByNameAndByDigits) {
    const TemporaryFolder folder;
    const std::string in = folder.write("in.png", pngOf(Picture(1, 1, clear), true));
    const std::vector<std::pair<std::string, Pixel>> colors = {{"#1a2", {0x11, 0xAA, 0x22, 255}},
                                                               {"#1A2B3C", {0x1A, 0x2B, 0x3C, 255}},
                                                               {"#ff0000ff", red},
                                                               {"#f000", clear},
                                                               {"transparent", clear},
                                                               {"White", white},
                                                               {"black", black},
                                                               {"gray", {128, 128, 128, 255}},
                                                               {"grey", {128, 128, 128, 255}},
                                                               {"silver", {192, 192, 192, 255}},
                                                               {"navy", {0, 0, 128, 255}},
                                                               {"teal", {0, 128, 128, 255}},
                                                               {"lightgray", {211, 211, 211, 255}},
                                                               {"lime", green},
                                                               {"green", {0, 128, 0, 255}}};
    for (const auto& [text, pixel] : colors) {
        EXPECT_EQ(drawn(folder, {in, "--background", text}).at(0, 0), pixel) << text;
    }
}

TEST(DrawCommand, SpendsFewerBytesOnLowerQuality) {
    const TemporaryFolder folder;
    const unsigned seed = 4;
    SCOPED_TRACE(seed);
    const std::string in = folder.write("in.png", pngOf(randomPicture(64, 64, seed)));
    std::vector<std::size_t> sizes;
    for (const char* quality : {"1", "50", "90", "100"}) {
        ASSERT_EQ(run({"draw", in, "-o", folder.path("out.jpg"), "--quality", quality}).status, 0);
        sizes.push_back(folder.read("out.jpg").size());
    }
    EXPECT_LT(sizes[0] * 2, sizes[1]);
    EXPECT_LT(sizes[1], sizes[2]);
    EXPECT_LT(sizes[2], sizes[3]);
    ASSERT_EQ(run({"draw", in, "-o", folder.path("out.jpg")}).status, 0);
    EXPECT_EQ(folder.read("out.jpg").size(), sizes[2]) << "90 unless another one is asked for";
}

TEST(DrawCommand, ReadsStandardInputAndWritesStandardOutput) {
    const TemporaryFolder folder;
    const Picture picture = randomPicture(7, 5, 1);
    const Result result = run({"draw", "-", "-o", "-", "--format", "png"}, {.input = pngOf(picture)});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.err, "");
    expectSame(pictureOfPNG(result.out), picture);
    const Result jpeg = run({"draw", "-", "-o", "-", "--format", "JPG"}, {.input = pngOf(picture)});
    EXPECT_EQ(jpeg.out.substr(0, 2), "\xff\xd8");
}

TEST(DrawCommand, TellsTheFormatByContentAndTheOutputByOption) {
    const TemporaryFolder folder;
    const Picture picture = randomPicture(7, 5, 2);
    expectSame(drawn(folder, {folder.write("mislabelled.jpg", pngOf(picture))}), picture);
    ASSERT_EQ(
        run({"draw", folder.path("mislabelled.jpg"), "-o", folder.path("x.dat"), "--format", "png"}).status,
        0);
    expectSame(pictureOfPNG(folder.read("x.dat")), picture);
}

TEST(DrawCommand, MayReplaceItsInput) {
    const TemporaryFolder folder;
    const std::string path = folder.write("photo.png", pngOf(Picture(4, 4, green)));
    ASSERT_EQ(run({"draw", path, "-o", path, "--size", "2x2"}).status, 0);
    expectSame(pictureOfPNG(folder.read("photo.png")), Picture(2, 2, green));
    EXPECT_EQ(folder.count(), 1);
}

TEST(DrawCommand, TakesFileURLsAndOddNames) {
    const TemporaryFolder folder;
    const Picture picture(1, 1, green);
    for (const std::string name :
         {"a b.png", "[a,b]", "info", "++",
          "gr\xc3\xbc\xc3\x9f"
          "e.png",
          "line\nbreak.png", "100%.png", "'\"$(x).png", "\xff\xfe.png", "http:", "-"}) {
        folder.write(name, pngOf(picture));
        const std::string operand = name == "-" ? "./-" : name;
        const Result result = run({"draw", operand, "-o", "out.png"}, {.folder = folder.path("")});
        EXPECT_EQ(result.status, 0) << name << result.err;
        expectSame(pictureOfPNG(folder.read("out.png")), picture);
        std::filesystem::remove(folder.path("out.png"));
    }
    folder.write("-o", pngOf(picture));
    EXPECT_EQ(run({"draw", "-o", "out.png", "--", "-o"}, {.folder = folder.path("")}).status, 0);
    const std::string url = "file://" + folder.path("a%20b.png");
    expectSame(drawn(folder, {url}), picture);
}

TEST(DrawCommand, ReadsAndWritesPipes) {
    const TemporaryFolder folder;
    const Picture picture(2, 2, yellow);
    const std::string pipe = folder.path("pipe");
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    std::thread writer([&folder, &picture] { folder.write("pipe", pngOf(picture)); });
    const Picture result = drawn(folder, {pipe});
    writer.join();
    expectSame(result, picture);
    std::string read;
    std::thread reader([&folder, &read] { read = folder.read("pipe"); });
    const Result out = run({"draw", folder.path("drawn.png"), "-o", pipe, "--format", "png"});
    reader.join();
    EXPECT_EQ(out.status, 0) << out.err;
    expectSame(pictureOfPNG(read), picture);
}

TEST(DrawCommand, RefusesResultsThatCannotBeDrawn) {
    const TemporaryFolder folder;
    const std::string in = folder.write("in.png", pngOf(Picture(4, 3, red)));
    const std::string out = folder.path("out.png");
    const Result wide = run({"draw", in, "-o", out, "--size", "32751x1"});
    EXPECT_EQ(wide.status, 1);
    EXPECT_EQ(wide.err, "imaging: " + out +
                            ": the result would be 32751 x 1 pixels, and at most 32750 can be drawn "
                            "along a side; choose a smaller --size\n");
    const Result large = run({"draw", in, "-o", out, "--size", "32750"});
    EXPECT_EQ(large.status, 1);
    EXPECT_EQ(large.err, "imaging: " + out +
                             ": the result would be 32750 x 24563 pixels, more than the limit of "
                             "268435456 pixels; choose a smaller --size\n");
    EXPECT_EQ(folder.count(), 1);
    // The largest are drawn whole, also when they are made smaller or larger.
    expectSame(drawn(folder, {in, "--size", "32750x1", "--fit", "stretch"}), Picture(32750, 1, red));
    const std::string longest = folder.write("longest.png", pngOf(Picture(32750, 2, red)));
    for (const int width : {1, 100, 4100, 8100, 16375, 24500, 32749, 32750}) {
        expectSame(drawn(folder, {longest, "--size", std::to_string(width) + "x3", "--fit", "stretch"}),
                   Picture(width, 3, red));
    }
}

TEST(DrawCommand, DrawsAPictureThatIsWiderThanAnyCanvasAndRefusesSuchACanvas) {
    const TemporaryFolder folder;
    const std::string in = folder.write("in.png", pngOf(Picture(32751, 1, red)));
    const std::string out = folder.path("out.png");
    EXPECT_EQ(run({"draw", in, "-o", out, "--size", "8x8", "--fit", "stretch"}).status, 0);
    expectSame(pictureOfPNG(folder.read("out.png")), Picture(8, 8, red));

    const Result result = run({"draw", in, "-o", folder.path("large.png")});
    EXPECT_EQ(result.status, 1);
    EXPECT_THAT(result.err, testing::HasSubstr("at most 32750"));
    EXPECT_EQ(folder.count(), 2);
}

TEST(DrawCommand, NumbersDoNotDependOnTheLocale) {
    const TemporaryFolder folder;
    const std::string in = folder.write("in.png", pngOf(Picture(4, 2, red)));
    const Result result = run({"draw", in, "-o", folder.path("out.png"), "--size", "8", "--timeout", "1.5"},
                              {.environment = {{"LC_ALL", "de_DE.UTF-8"}}});
    EXPECT_EQ(result.status, 0) << result.err;
    expectSame(pictureOfPNG(folder.read("out.png")), Picture(8, 4, red));
}

TEST(DrawCommand, DrawsAFrameOverThePicturesEdges) {
    const TemporaryFolder folder;
    const std::string in = folder.write("in.png", pngOf(Picture(12, 8, red)));
    Picture expected(12, 8, blue);
    for (int y = 2; y < 6; ++y) {
        for (int x = 2; x < 10; ++x) expected.at(x, y) = red;
    }
    expectSame(drawn(folder, {in, "--frame", "2,blue"}), expected);
    // Contained: around the picture, not around the background.
    Picture contained(20, 8, white);
    for (int y = 0; y < 8; ++y) {
        for (int x = 0; x < 12; ++x) contained.at(x + 4, y) = expected.at(x, y);
    }
    expectSame(drawn(folder, {in, "--size", "20x8", "--background", "white", "--frame", "2,#00f"}),
               contained);
}

TEST(DrawCommand, AFramesAlphaCountsAndIsEvenAllAround) {
    const TemporaryFolder folder;
    const std::string in = folder.write("in.png", pngOf(Picture(10, 10, red)));
    const Picture result = drawn(folder, {in, "--frame", "3,#00ff0080"});
    for (int y = 0; y < 10; ++y) {
        for (int x = 0; x < 10; ++x) {
            const bool inside = x >= 3 && x < 7 && y >= 3 && y < 7;
            EXPECT_TRUE(isNear(result.at(x, y), inside ? red : Pixel{127, 128, 0, 255}, 1)) << x << ", " << y;
        }
    }
    const std::string nothing = folder.write("nothing.png", pngOf(Picture(10, 10, clear), true));
    EXPECT_EQ(drawn(folder, {nothing, "--frame", "1,#00ff0080"}).at(0, 5), (Pixel{0, 255, 0, 128}));
}

TEST(DrawCommand, AFrameOfAPictureThatIsCutIsAlongTheCut) {
    const TemporaryFolder folder;
    const std::string in = folder.write("in.png", pngOf(Picture(40, 10, red)));
    Picture expected(10, 10, green);
    for (int y = 1; y < 9; ++y) {
        for (int x = 1; x < 9; ++x) expected.at(x, y) = red;
    }
    expectSame(drawn(folder, {in, "--size", "10x10", "--fit", "cover", "--frame", "1,lime"}), expected);
}

TEST(DrawCommand, AFrameWiderThanHalfThePictureFillsIt) {
    const TemporaryFolder folder;
    const std::string in = folder.write("in.png", pngOf(Picture(12, 8, red)));
    for (const char* frame : {"4,blue", "5,blue", "7,blue", "1000,blue"}) {
        expectSame(drawn(folder, {in, "--frame", frame}), Picture(12, 8, blue));
    }
}

TEST(DrawCommand, WritesAHintIntoTheMiddleOfThePicture) {
    const TemporaryFolder folder;
    const std::string in = folder.write("in.png", pngOf(Picture(200, 60, black)));
    const Picture result = drawn(folder, {in, "--size", "300x90", "--fit", "contain", "--hint", "HOH"});
    int left = 300;
    int right = 0;
    int top = 90;
    int bottom = 0;
    int brightest = 0;
    for (int y = 0; y < 90; ++y) {
        for (int x = 0; x < 300; ++x) {
            const Pixel& pixel = result.at(x, y);
            EXPECT_EQ(pixel.red, pixel.blue);
            brightest = std::max<int>(brightest, pixel.red);
            if (pixel.red < 40) continue;
            left = std::min(left, x);
            right = std::max(right, x);
            top = std::min(top, y);
            bottom = std::max(bottom, y);
        }
    }
    EXPECT_NEAR(brightest, 170, 1) << "light gray";
    EXPECT_NEAR((left + right) / 2.0, 149.5, 2);
    // Capitals stand a little above the middle of what a line takes, and are about 0.7 of 18 high.
    EXPECT_NEAR((top + bottom) / 2.0, 44.5, 4);
    EXPECT_NEAR(bottom - top + 1, 13, 2);
    EXPECT_GT(right - left, 30);
}

TEST(DrawCommand, RefusesFramesThatAreNone) {
    const TemporaryFolder folder;
    const std::string in = folder.write("in.png", pngOf(Picture(2, 2, red)));
    const std::vector<std::pair<std::string, std::string>> wrong = {
        {"3", "--frame: '3' has no colour; give both, as in 12,white or 4,#00000080"},
        {"wide,red", "--frame: 'wide' is no width in pixels; give 12 or 2.5"},
        {",red", "--frame: '' is no width in pixels; give 12 or 2.5"},
        {"0,red", "--frame: the width has to be more than 0"},
        {"-1,red", "--frame: the width has to be more than 0"},
        {"2,rde", "--frame: "},
        {"2,", "--frame: "}};
    for (const auto& [frame, message] : wrong) {
        const Result result = run({"draw", in, "-o", folder.path("out.png"), "--frame", frame});
        EXPECT_EQ(result.status, 2) << frame;
        EXPECT_THAT(result.err, testing::StartsWith("imaging: draw: " + message)) << frame;
    }
    EXPECT_EQ(folder.count(), 1);
}
