// Also tests: Tools/Pictures/Operations.cpp
// Also tests: Tools/Pictures/PlacingOperations.cpp

#include "Imaging/CachedImage.h"
#include "Imaging/Canvas.h"
#include "Imaging/CropAndScale.h"
#include "Imaging/TransformOperations.h"
#include "Platform/Foundation/KeyedArchiver.h"
#include "Tests/Tools/Support/Command.h"
#include "Tests/Tools/Support/TestPictures.h"

#include <gmock/gmock.h>

#include <cmath>
#include <cstdlib>
#include <functional>
#include <random>

using namespace TestSupport;
using testing::HasSubstr;

namespace {

using Arguments = std::vector<std::string>;

/// Runs `imaging apply` and reads the result, which must be a PNG.
Picture applied(const TemporaryFolder& folder, Arguments arguments) {
    arguments.insert(arguments.begin(), "apply");
    arguments.insert(arguments.end(), {"-o", folder.path("applied.png")});
    const Result result = run(arguments);
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.err, "");
    EXPECT_EQ(result.out, "");
    return pictureOfPNG(folder.read("applied.png"));
}

Picture applied(const TemporaryFolder& folder, const Picture& picture, Arguments operations) {
    operations.insert(operations.begin(), folder.write("in.png", pngOf(picture, true)));
    return applied(folder, operations);
}

testing::AssertionResult isSame(const Picture& actual, const Picture& expected) {
    if (actual.width != expected.width || actual.height != expected.height) {
        return testing::AssertionFailure() << actual.width << " x " << actual.height << " instead of "
                                           << expected.width << " x " << expected.height;
    }
    for (int y = 0; y < actual.height; ++y) {
        for (int x = 0; x < actual.width; ++x) {
            if (actual.at(x, y) == expected.at(x, y)) continue;
            return testing::AssertionFailure()
                   << actual.at(x, y) << " instead of " << expected.at(x, y) << " at " << x << ", " << y;
        }
    }
    return testing::AssertionSuccess();
}

bool isNear(const Pixel& a, const Pixel& b, int tolerance) {
    return std::abs(a.red - b.red) <= tolerance && std::abs(a.green - b.green) <= tolerance &&
           std::abs(a.blue - b.blue) <= tolerance && std::abs(a.alpha - b.alpha) <= tolerance;
}

// The operations by plain copying, rows downward

using Where = std::function<std::pair<int, int>(int x, int y)>;

/// A picture whose pixels come from those of another; clear where that has none.
Picture copied(const Picture& from, int width, int height, const Where& where) {
    Picture to(width, height, clear);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            const auto [fromX, fromY] = where(x, y);
            if (fromX >= 0 && fromX < from.width && fromY >= 0 && fromY < from.height) {
                to.at(x, y) = from.at(fromX, fromY);
            }
        }
    }
    return to;
}

Picture turnedRight(const Picture& p) {
    return copied(p, p.height, p.width, [&](int x, int y) { return std::pair(y, p.height - 1 - x); });
}

Picture turnedLeft(const Picture& p) {
    return copied(p, p.height, p.width, [&](int x, int y) { return std::pair(p.width - 1 - y, x); });
}

Picture mirrored(const Picture& p, const std::string& way) {
    if (way == "horizontal") {
        return copied(p, p.width, p.height, [&](int x, int y) { return std::pair(p.width - 1 - x, y); });
    }
    if (way == "vertical") {
        return copied(p, p.width, p.height, [&](int x, int y) { return std::pair(x, p.height - 1 - y); });
    }
    if (way == "antidiagonal")
        return copied(p, p.height, p.width, [](int x, int y) { return std::pair(y, x); });
    return copied(p, p.height, p.width,
                  [&](int x, int y) { return std::pair(p.width - 1 - y, p.height - 1 - x); });
}

/// The part of a picture, or of what is around it, that begins at a place.
Picture part(const Picture& p, int left, int top, int width, int height) {
    return copied(p, width, height, [&](int x, int y) { return std::pair(x + left, y + top); });
}

std::string joined(const std::vector<int>& numbers, const std::string& separator) {
    std::string text;
    for (const int number : numbers) text += (text.empty() ? "" : separator) + std::to_string(number);
    return text;
}

/// Operations that copy pixels, chosen at random, on a picture and on the command line.
class RandomChain {
public:
    RandomChain(unsigned seed, Picture picture) : m_random(seed), m_picture(std::move(picture)) {}

    void extend() {
        switch (number(0, 5)) {
        case 0:
            return turn();
        case 1:
            return flip();
        case 2:
            return crop();
        case 3:
            return moveAndTurn();
        case 4:
            return putOnCanvas(0, 0);
        default:
            return moveOntoCanvas();
        }
    }

    const Picture& picture() const { return m_picture; }
    const Arguments& arguments() const { return m_arguments; }

private:
    int number(int low, int high) { return std::uniform_int_distribution<int>(low, high)(m_random); }

    void add(const std::string& option, const std::string& value) {
        m_arguments.push_back(option);
        m_arguments.push_back(value);
    }

    void turn() {
        const int way = number(0, 2);
        add("--turn", way == 0 ? "left" : way == 1 ? "right" : "180");
        if (way == 2) m_picture = turnedLeft(m_picture);
        m_picture = way == 1 ? turnedRight(m_picture) : turnedLeft(m_picture);
    }

    void flip() {
        static const Arguments ways = {"horizontal", "vertical", "diagonal", "antidiagonal"};
        const std::string& way = ways.at(static_cast<std::size_t>(number(0, 3)));
        add("--flip", way);
        m_picture = mirrored(m_picture, way);
    }

    void crop() {
        const int left = number(-3, m_picture.width - 1);
        const int top = number(-3, m_picture.height - 1);
        const int width = number(std::max(1, 1 - left), 16);
        const int height = number(std::max(1, 1 - top), 16);
        add("--crop", joined({left, top, width, height}, ","));
        m_picture = part(m_picture, left, top, width, height);
    }

    void moveAndTurn() {
        const int right = number(-4, 4);
        const int down = number(-4, 4);
        add("--translate", joined({right, down}, ","));
        m_picture = part(m_picture, -right, -down, m_picture.width, m_picture.height);
        turn();
    }

    void putOnCanvas(int right, int down) {
        const int width = number(1, 20);
        const int height = number(1, 20);
        add("--canvas", joined({width, height}, "x"));
        m_picture = part(m_picture, -right, -down, width, height);
    }

    void moveOntoCanvas() {
        const std::vector<int> first = {number(-4, 4), number(-4, 4)};
        const std::vector<int> second = {number(-4, 9), number(-4, 9)};
        add("--translate", joined(first, ","));
        add("--translate", joined(second, ","));
        putOnCanvas(first[0] + second[0], first[1] + second[1]);
    }

    std::mt19937 m_random;
    Picture m_picture;
    Arguments m_arguments;
};

std::string archived(const Imaging::Platform::NSCoding& root) {
    const Imaging::Platform::NSData data = Imaging::Platform::archivedDataWithRootObject(root);
    return {data.begin(), data.end()};
}

void expectWrongUsage(const Arguments& operations, const std::string& message) {
    Arguments arguments = {"apply", "/nowhere/in.png", "-o", "out.png"};
    arguments.insert(arguments.end(), operations.begin(), operations.end());
    const Result result = run(arguments);
    EXPECT_EQ(result.status, 2) << message;
    EXPECT_EQ(result.out, "");
    EXPECT_EQ(result.err, "imaging: apply: " + message + " (see 'imaging apply --help')\n");
}

} // namespace

TEST(ApplyCommand, WithoutOperationsCopiesThePicture) {
    const TemporaryFolder folder;
    const Picture picture = randomPicture(31, 17, 1);
    const Picture result = applied(folder, picture, {});
    EXPECT_TRUE(isSame(result, picture));
    EXPECT_FALSE(result.hasAlpha);
}

TEST(ApplyCommand, TurnsWithoutLosingAPixel) {
    const TemporaryFolder folder;
    const Picture picture = randomPicture(31, 18, 2);
    EXPECT_TRUE(isSame(applied(folder, picture, {"--turn", "right"}), turnedRight(picture)));
    EXPECT_TRUE(isSame(applied(folder, picture, {"--turn", "left"}), turnedLeft(picture)));
    EXPECT_TRUE(isSame(applied(folder, picture, {"--turn", "180"}), turnedLeft(turnedLeft(picture))));
    EXPECT_TRUE(isSame(applied(folder, picture, {"--turn", "right", "--turn", "left"}), picture));
}

TEST(ApplyCommand, FlipsWithoutLosingAPixel) {
    const TemporaryFolder folder;
    const Picture picture = randomPicture(31, 18, 3);
    for (const std::string way : {"horizontal", "vertical", "diagonal", "antidiagonal"}) {
        EXPECT_TRUE(isSame(applied(folder, picture, {"--flip", way}), mirrored(picture, way))) << way;
    }
    // A small one by hand, row by row: a b / c d / e f
    const Picture small(2, 3, {red, green, blue, white, black, yellow});
    EXPECT_TRUE(isSame(applied(folder, small, {"--flip", "antidiagonal"}),
                       Picture(3, 2, {red, blue, black, green, white, yellow})));
    EXPECT_TRUE(isSame(applied(folder, small, {"--flip", "diagonal"}),
                       Picture(3, 2, {yellow, white, green, black, blue, red})));
}

TEST(ApplyCommand, RotatesByQuarterTurnsLikeTurning) {
    const TemporaryFolder folder;
    const Picture picture = randomPicture(31, 18, 4);
    const std::vector<std::pair<std::string, Picture>> cases = {{"90", turnedRight(picture)},
                                                                {"-90", turnedLeft(picture)},
                                                                {"450", turnedRight(picture)},
                                                                {"0", picture},
                                                                {"360", picture},
                                                                {"-180", turnedLeft(turnedLeft(picture))},
                                                                {"270.0", turnedLeft(picture)}};
    for (const auto& [degrees, expected] : cases) {
        EXPECT_TRUE(isSame(applied(folder, picture, {"--rotate", degrees}), expected)) << degrees;
    }
}

TEST(ApplyCommand, RotatesClockwiseAndGrowsToHoldAll) {
    const TemporaryFolder folder;
    Picture picture(100, 50, blue);
    for (int y = 0; y < 50; ++y) {
        for (int x = 0; x < 20; ++x) picture.at(x, y) = red; // at the left
    }
    const Picture result = applied(folder, picture, {"--rotate", "45"});
    // (100 + 50) / sqrt 2 = 106.07 pixels
    ASSERT_EQ(result.width, 107);
    ASSERT_EQ(result.height, 107);
    EXPECT_TRUE(result.hasAlpha);
    for (const auto& [x, y] : {std::pair(2, 2), {104, 2}, {2, 104}, {104, 104}})
        EXPECT_EQ(result.at(x, y), clear);
    EXPECT_EQ(result.at(53, 53), blue);
    // The middle of the left edge, 48 pixels left of the middle, goes up and left by 34 each.
    EXPECT_EQ(result.at(53 - 33, 53 - 33), red);
    EXPECT_EQ(result.at(53 + 33, 53 + 33), blue);
    // Each of the rotated pixels by trigonometry.
    int compared = 0;
    for (int y = 0; y < 107; ++y) {
        for (int x = 0; x < 107; ++x) {
            const double dx = x + 0.5 - 53.5;
            const double dy = y + 0.5 - 53.5;
            const double fromX = 50 + (dx + dy) * std::sqrt(0.5);
            const double fromY = 25 + (dy - dx) * std::sqrt(0.5);
            const bool isInside = fromX > 1.5 && fromX < 98.5 && fromY > 1.5 && fromY < 48.5;
            const bool isOutside = fromX < -1.5 || fromX > 101.5 || fromY < -1.5 || fromY > 51.5;
            if (isOutside) {
                EXPECT_EQ(result.at(x, y), clear) << x << ' ' << y;
            }
            if (isInside && std::abs(fromX - 20) > 1.5) {
                EXPECT_EQ(result.at(x, y), fromX < 20 ? red : blue) << x << ' ' << y;
                ++compared;
            }
        }
    }
    EXPECT_GT(compared, 4000);
}

TEST(ApplyCommand, CropsFromTheUpperLeftCorner) {
    const TemporaryFolder folder;
    const Picture picture = randomPicture(31, 18, 5);
    EXPECT_TRUE(isSame(applied(folder, picture, {"--crop", "3,5,20,10"}), part(picture, 3, 5, 20, 10)));
    EXPECT_TRUE(isSame(applied(folder, picture, {"--crop", "0,0,1,1"}), part(picture, 0, 0, 1, 1)));
    EXPECT_TRUE(isSame(applied(folder, picture, {"--crop", "30,17,1,1"}), part(picture, 30, 17, 1, 1)));
}

TEST(ApplyCommand, CropsWhatIsBeyondAsTransparent) {
    const TemporaryFolder folder;
    const Picture picture = randomPicture(11, 8, 6);
    const Picture result = applied(folder, picture, {"--crop", "-3,4,9,20"});
    EXPECT_TRUE(result.hasAlpha);
    EXPECT_TRUE(isSame(result, part(picture, -3, 4, 9, 20)));
}

TEST(ApplyCommand, RefusesToCropWhereThereIsNothing) {
    const TemporaryFolder folder;
    const std::string in = folder.write("in.png", pngOf(Picture(11, 8, red)));
    for (const std::string area : {"11,0,1,1", "0,8,5,5", "-5,0,5,5", "0,-5,5,5"}) {
        const Result result = run({"apply", in, "--crop", area, "-o", folder.path("out.png")});
        EXPECT_EQ(result.status, 1) << area;
        EXPECT_THAT(result.err, HasSubstr("imaging: " + in + ": --crop: the "));
        EXPECT_THAT(result.err, HasSubstr("lie outside the picture, which is 11 x 8 pixels there"));
    }
    EXPECT_EQ(folder.count(), 1) << "nothing is written";
}

TEST(ApplyCommand, ScalesToContainInTheMiddle) {
    const TemporaryFolder folder;
    // Twice as large is 8 x 4, with 2 transparent rows above and below.
    const Picture result = applied(folder, Picture(4, 2, red), {"--scale", "8x8"});
    EXPECT_TRUE(isSame(result, part(Picture(8, 4, red), 0, -2, 8, 8)));
    EXPECT_TRUE(isSame(applied(folder, Picture(4, 2, red), {"--scale", "8x8", "--fit", "contain"}), result));
    EXPECT_TRUE(isSame(applied(folder, Picture(2, 4, red), {"--scale", "6x4"}),
                       part(Picture(2, 4, red), -2, 0, 6, 4)));
}

TEST(ApplyCommand, ScalesByOneSideInShape) {
    const TemporaryFolder folder;
    EXPECT_TRUE(isSame(applied(folder, Picture(4, 2, red), {"--scale", "6"}), Picture(6, 3, red)));
    EXPECT_TRUE(isSame(applied(folder, Picture(4, 2, red), {"--scale", "x1"}), Picture(2, 1, red)));
}

TEST(ApplyCommand, ScalesByStretching) {
    const TemporaryFolder folder;
    EXPECT_TRUE(isSame(applied(folder, Picture(4, 2, red), {"--scale", "6x9", "--fit", "stretch"}),
                       Picture(6, 9, red)));
    Picture board(8, 8, black);
    for (int y = 0; y < 8; ++y) {
        for (int x = 0; x < 8; ++x) board.at(x, y) = (x + y) % 2 == 0 ? white : black;
    }
    for (const Pixel& pixel : applied(folder, board, {"--scale", "2x4", "--fit", "stretch"}).pixels) {
        EXPECT_TRUE(isNear(pixel, {128, 128, 128, 255}, 1)) << pixel;
    }
}

TEST(ApplyCommand, PutsInTheMiddleWithoutScaling) {
    const TemporaryFolder folder;
    const Picture picture = randomPicture(7, 5, 7);
    for (const auto& [width, height] : {std::pair(11, 9), {10, 8}, {3, 3}, {4, 2}, {12, 2}, {7, 5}, {1, 1}}) {
        // Where there is one pixel too many, it is at the right and at the top.
        const int left = static_cast<int>(std::floor((width - 7) / 2.0));
        const int below = static_cast<int>(std::floor((height - 5) / 2.0));
        const int above = height - 5 - below;
        const std::string size = joined({width, height}, "x");
        EXPECT_TRUE(isSame(applied(folder, picture, {"--scale", size, "--fit", "none"}),
                           part(picture, -left, -above, width, height)))
            << size;
    }
    // What was cut off does not come back.
    EXPECT_TRUE(isSame(applied(folder, picture, {"--scale", "3x3", "--fit", "none", "--canvas", "7x5"}),
                       part(part(picture, 2, 1, 3, 3), 0, 0, 7, 5)));
}

TEST(ApplyCommand, AFitBelongsToTheScaleBeforeIt) {
    const TemporaryFolder folder;
    const Picture red4(4, 2, red);
    // The first one puts it into the middle of 4 x 4, the second one stretches that.
    EXPECT_TRUE(isSame(applied(folder, red4, {"--scale", "4x4", "--scale", "8x12", "--fit", "stretch"}),
                       part(Picture(8, 6, red), 0, -3, 8, 12)));
    EXPECT_TRUE(isSame(applied(folder, red4, {"--scale", "3x3", "--fit", "stretch", "--scale", "6x6"}),
                       Picture(6, 6, red)));
    EXPECT_TRUE(isSame(applied(folder, red4, {"--scale", "4x4", "--fit", "none", "--fit", "stretch"}),
                       Picture(4, 4, red)))
        << "the last one counts";
}

TEST(ApplyCommand, MovesWithinThePicture) {
    const TemporaryFolder folder;
    const Picture picture = randomPicture(9, 7, 8);
    EXPECT_TRUE(isSame(applied(folder, picture, {"--translate", "2,3"}), part(picture, -2, -3, 9, 7)));
    EXPECT_TRUE(isSame(applied(folder, picture, {"--translate", "-4,-1"}), part(picture, 4, 1, 9, 7)));
    EXPECT_TRUE(isSame(applied(folder, picture, {"--translate", "-4,-1", "--translate", "4,1"}), picture));
    EXPECT_TRUE(isSame(applied(folder, picture, {"--translate", "100,0"}), Picture(9, 7, clear)));
}

TEST(ApplyCommand, PlacesOnACanvas) {
    const TemporaryFolder folder;
    const Picture picture = randomPicture(9, 7, 9);
    EXPECT_TRUE(isSame(applied(folder, picture, {"--canvas", "12x10"}), part(picture, 0, 0, 12, 10)));
    EXPECT_TRUE(isSame(applied(folder, picture, {"--canvas", "5x4"}), part(picture, 0, 0, 5, 4)));
    EXPECT_TRUE(isSame(applied(folder, picture, {"--translate", "6,5", "--canvas", "12x10"}),
                       part(picture, -6, -5, 12, 10)));
    EXPECT_TRUE(isSame(applied(folder, picture, {"--canvas", "12x10", "--translate", "6,5"}),
                       part(picture, -6, -5, 12, 10)));
}

TEST(ApplyCommand, DoesNotBringBackWhatACanvasOrAMoveCutOff) {
    const TemporaryFolder folder;
    const Picture picture(40, 40, red);
    // A canvas of 20 x 20 in the corner, turned: its corners are not red again.
    const Picture turned = applied(folder, picture, {"--canvas", "20x20", "--rotate", "45"});
    ASSERT_EQ(turned.width, 29);
    for (const auto& [x, y] : {std::pair(1, 1), {27, 1}, {1, 27}, {27, 27}})
        EXPECT_EQ(turned.at(x, y), clear);
    EXPECT_EQ(turned.at(14, 14), red);
    EXPECT_TRUE(
        isSame(applied(folder, picture,
                       {"--translate", "20,0", "--turn", "180", "--turn", "180", "--translate", "-20,0"}),
               part(Picture(20, 40, red), 0, 0, 40, 40)));
    EXPECT_TRUE(isSame(applied(folder, picture, {"--canvas", "20x20", "--canvas", "30x30"}),
                       part(Picture(20, 20, red), 0, 0, 30, 30)));
    EXPECT_TRUE(isSame(applied(folder, picture, {"--translate", "30,30", "--scale", "80x80"}),
                       part(Picture(20, 20, red), -60, -60, 80, 80)));
}

TEST(ApplyCommand, CarriesOutOperationsInTheirOrder) {
    const TemporaryFolder folder;
    const Picture picture = randomPicture(12, 8, 10);
    EXPECT_TRUE(isSame(applied(folder, picture, {"--crop", "0,0,6,4", "--turn", "right"}),
                       turnedRight(part(picture, 0, 0, 6, 4))));
    EXPECT_TRUE(isSame(applied(folder, picture, {"--turn", "right", "--crop", "0,0,6,4"}),
                       part(turnedRight(picture), 0, 0, 6, 4)));
    // Wherever the other arguments stand.
    const std::string in = folder.write("in.png", pngOf(picture));
    EXPECT_TRUE(isSame(applied(folder, {"--turn=right", in, "--no-orient", "--crop=0,0,6,4"}),
                       part(turnedRight(picture), 0, 0, 6, 4)));
}

TEST(ApplyCommand, MakesTheSameOfAnyChainAsPlainCopying) {
    const TemporaryFolder folder;
    for (unsigned seed = 1; seed <= 60; ++seed) {
        RandomChain chain(
            seed, randomPicture(5 + static_cast<int>(seed % 7), 3 + static_cast<int>(seed % 5), seed));
        const Picture first = chain.picture();
        for (unsigned i = 0; i < 1 + seed % 8; ++i) chain.extend();
        std::string line = "seed " + std::to_string(seed);
        for (const std::string& argument : chain.arguments()) line += " " + argument;
        EXPECT_TRUE(isSame(applied(folder, first, chain.arguments()), chain.picture())) << line;
    }
}

TEST(ApplyCommand, BringsEveryOrientationUprightFirst) {
    const TemporaryFolder folder;
    const Picture stored(3, 2, {red, green, blue, white, black, yellow});
    for (int orientation = 1; orientation <= 8; ++orientation) {
        SCOPED_TRACE(orientation);
        const std::string in =
            folder.write("in.png", pngWithChunks(stored, pngChunk("eXIf", exifWithOrientation(orientation))));
        const Picture upright = seen(stored, orientation);
        EXPECT_TRUE(isSame(applied(folder, {in}), upright));
        EXPECT_TRUE(isSame(applied(folder, {in, "--crop", "1,0,1,2"}), part(upright, 1, 0, 1, 2)));
        EXPECT_TRUE(isSame(applied(folder, {in, "--turn", "left"}), turnedLeft(upright)));
        EXPECT_TRUE(isSame(applied(folder, {in, "--no-orient", "--turn", "left"}), turnedLeft(stored)));
    }
}

TEST(ApplyCommand, BringsPhotographsOfEveryOrientationUpright) {
    const TemporaryFolder folder;
    // Quarters of 16 x 8 pixels, so that the codec keeps their colours.
    Picture stored(32, 16, red);
    for (int y = 0; y < 16; ++y) {
        for (int x = 0; x < 32; ++x) {
            if (x >= 16) stored.at(x, y) = y < 8 ? green : white;
            if (x < 16 && y >= 8) stored.at(x, y) = blue;
        }
    }
    const std::string jpeg = jpegOf(stored);
    for (int orientation = 1; orientation <= 8; ++orientation) {
        SCOPED_TRACE(orientation);
        const std::string in = folder.write("in.jpg", jpegWithExif(jpeg, exifWithOrientation(orientation)));
        const Picture upright = seen(stored, orientation);
        const Picture result = applied(folder, {in});
        ASSERT_EQ(result.width, upright.width);
        ASSERT_EQ(result.height, upright.height);
        for (const auto& [x, y] : {std::pair(0.25, 0.25), {0.75, 0.25}, {0.25, 0.75}, {0.75, 0.75}}) {
            const int column = static_cast<int>(x * result.width);
            const int row = static_cast<int>(y * result.height);
            EXPECT_TRUE(isNear(result.at(column, row), upright.at(column, row), 16))
                << result.at(column, row) << " at " << column << ", " << row;
        }
    }
}

TEST(ApplyCommand, TakesGraphsOfOperations) {
    const TemporaryFolder folder;
    const Picture picture = randomPicture(9, 7, 11);
    const auto leaf = Imaging::IMGImage::imageWithContentsOfFile(folder.write("a.png", pngOf(picture)));
    const auto moved = Imaging::IMGTranslationOp::translationBy({2, 1}, leaf);
    const auto canvas = std::make_shared<Imaging::IMGCanvas>(Imaging::Platform::NSMakeSize(12, 10),
                                                             Imaging::IMGImage::Sources{moved});
    const std::string graph = folder.write("a.graph", archived(*canvas));
    // (2, 1) from the lower left corner is 2 rows from the top.
    const Picture expected = part(picture, -2, -2, 12, 10);
    EXPECT_TRUE(isSame(applied(folder, {graph}), expected));
    EXPECT_TRUE(isSame(applied(folder, {graph, "--turn", "left"}), turnedLeft(expected)));
    const Result drawn = run({"draw", graph, "-o", folder.path("drawn.png")});
    EXPECT_EQ(drawn.status, 0);
    EXPECT_TRUE(isSame(pictureOfPNG(folder.read("drawn.png")), expected));
}

TEST(ApplyCommand, RefusesGraphsWhoseOperationsHaveNothingBelow) {
    struct Alone : Imaging::Platform::NSCoding {
        std::string name;
        std::string archiveClassName() const override { return name; }
        void encodeWithCoder(Imaging::Platform::NSCoder& coder) const override {
            coder.encodeSize({4, 3}, "target-size");
            coder.encodeRect({{0, 0}, {4, 3}}, "source-area");
        }
    };
    const TemporaryFolder folder;
    for (const std::string name :
         {"IMGCropAndScale", "IMGTransposeOp", "IMGRotationOp", "IMGAffineTransformOp"}) {
        Alone alone;
        alone.name = name;
        const std::string graph = folder.write("a.graph", archived(alone));
        for (const std::string subcommand : {"apply", "draw", "sheet"}) {
            const Result result = run({subcommand, graph, "-o", folder.path("out.png")});
            EXPECT_EQ(result.status, 1) << name;
            EXPECT_THAT(result.err, HasSubstr("has nothing below it")) << name;
        }
        EXPECT_EQ(run({"graph", graph}).status, 0);
    }
    EXPECT_EQ(folder.count(), 1);
}

TEST(ApplyCommand, PutsABackgroundBehind) {
    const TemporaryFolder folder;
    Picture expected(4, 4, blue);
    expected.at(1, 1) = red;
    EXPECT_TRUE(isSame(applied(folder, Picture(1, 1, red),
                               {"--translate", "1,1", "--canvas", "4x4", "--background", "blue"}),
                       expected));
    const std::string in = folder.write("in.png", pngOf(Picture(16, 16, red)));
    ASSERT_EQ(run({"apply", in, "--canvas", "32x16", "-o", folder.path("out.jpg")}).status, 0);
    const Picture jpeg = pictureOfAnyFormat(folder.read("out.jpg"));
    EXPECT_TRUE(isNear(jpeg.at(4, 8), red, 12)) << jpeg.at(4, 8);
    EXPECT_TRUE(isNear(jpeg.at(28, 8), white, 12)) << jpeg.at(28, 8);
}

TEST(ApplyCommand, ReadsStandardInputAndWritesStandardOutput) {
    const Picture picture = randomPicture(7, 5, 12);
    const Result result =
        run({"apply", "-", "--turn", "right", "-o", "-", "--format", "png"}, {.input = pngOf(picture)});
    EXPECT_EQ(result.status, 0);
    EXPECT_TRUE(isSame(pictureOfPNG(result.out), turnedRight(picture)));
}

TEST(ApplyCommand, MayReplaceItsInput) {
    const TemporaryFolder folder;
    const Picture picture = randomPicture(7, 5, 13);
    const std::string path = folder.write("in.png", pngOf(picture));
    ASSERT_EQ(run({"apply", path, "--turn", "right", "-o", path}).status, 0);
    EXPECT_TRUE(isSame(pictureOfPNG(folder.read("in.png")), turnedRight(picture)));
    EXPECT_EQ(folder.count(), 1);
}

TEST(ApplyCommand, RefusesResultsThatAreTooLarge) {
    const TemporaryFolder folder;
    const std::string in = folder.write("in.png", pngOf(Picture(2, 2, red)));
    for (const Arguments& operation :
         {Arguments{"--canvas", "40000x2"}, {"--scale", "4000000000"}, {"--crop", "0,0,30000,30000"}}) {
        const Result result = run({"apply", in, operation[0], operation[1], "-o", folder.path("out.png")});
        EXPECT_EQ(result.status, 1) << operation[1];
        EXPECT_THAT(result.err, HasSubstr("the result would be "));
        EXPECT_THAT(result.err, HasSubstr("; --scale or --crop it to a smaller size\n"));
    }
    EXPECT_EQ(folder.count(), 1);
    // What is large on the way only costs nothing.
    EXPECT_TRUE(isSame(applied(folder, {in, "--canvas", "1000000x1000000", "--crop", "1,1,2,2"}),
                       part(Picture(2, 2, red), 1, 1, 2, 2)));
}

TEST(ApplyCommand, SaysWhatIsWrongWithItsOperations) {
    expectWrongUsage({"--rotate", "right"},
                     "--rotate: 'right' is no angle in degrees; give a number such as 30 or -12.5");
    for (const std::string angle : {"nan", "inf", "1e9", "1,2", "30deg", "+5"}) {
        expectWrongUsage({"--rotate", angle},
                         "--rotate: '" + angle +
                             "' is no angle in degrees; give a number such as 30 or -12.5");
    }
    expectWrongUsage(
        {"--turn", "rihgt"},
        "--turn: there is no turn named 'rihgt'; known are left, right and 180; did you mean 'right'?");
    expectWrongUsage({"--flip", "both"},
                     "--flip: there is no flip named 'both'; known are horizontal, vertical, "
                     "diagonal and antidiagonal");
    for (const std::string area :
         {"1,2,3", "1,2,3,4,5", "0,0,0,5", "0,0,5,-5", "0.5,0,5,5", "a,b,c,d", ",,,", "0,0,5,nan"}) {
        expectWrongUsage({"--crop", area},
                         "--crop: '" + area +
                             "' is no area; give X,Y,W,H in whole pixels from the upper left "
                             "corner, such as 10,20,400,300");
    }
    expectWrongUsage({"--scale", "0x5"},
                     "--scale: '0x5' is no size in pixels; give WxH, W or xH, such as 800x600, "
                     "800 or x600");
    expectWrongUsage({"--scale", "5x5", "--fit", "cover"},
                     "--fit: there is no way to fit named 'cover'; known are contain, stretch and none");
    expectWrongUsage({"--fit", "none", "--scale", "5x5"},
                     "--fit: there is no --scale before it; give it after the one that it belongs to");
    expectWrongUsage(
        {"--translate", "5"},
        "--translate: '5' is no distance; give X,Y in pixels to the right and down, such as 40,-15");
    expectWrongUsage({"--canvas", "300"}, "--canvas: '300' is no size in pixels; give WxH, such as 400x300");
    expectWrongUsage({"--rotate"}, "the option --rotate needs a value");
    expectWrongUsage({"--trun", "left"}, "there is no option '--trun'; did you mean '--turn'?");
    expectWrongUsage({"second.png", "--turn", "left"},
                     "'second.png' is one too many: this takes one input only");
}
