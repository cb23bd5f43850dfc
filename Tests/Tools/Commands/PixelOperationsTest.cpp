// Also tests: Tools/Pictures/ApartFromAlpha.cpp
// Also tests: Tools/Files/KernelFile.cpp

#include "Tests/Tools/Support/Command.h"
#include "Tests/Tools/Support/TestPictures.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <filesystem>

using namespace TestSupport;
using testing::HasSubstr;

namespace {

using Arguments = std::vector<std::string>;

Result apply(const TemporaryFolder& folder, Arguments arguments) {
    arguments.insert(arguments.begin(), "apply");
    arguments.insert(arguments.end(), {"-o", folder.path("out.png")});
    return run(arguments);
}

Picture applied(const TemporaryFolder& folder, const Arguments& arguments) {
    const Result result = apply(folder, arguments);
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.err, "");
    return pictureOfPNG(folder.read("out.png"));
}

/// One line about a file, and no picture.
void expectRefusal(const TemporaryFolder& folder, const Arguments& arguments, const std::string& about,
                   const std::vector<std::string>& words) {
    const Result result = apply(folder, arguments);
    EXPECT_EQ(result.status, 1);
    EXPECT_THAT(result.err, testing::StartsWith("imaging: " + about + ": "));
    for (const std::string& word : words) EXPECT_THAT(result.err, HasSubstr(word));
    EXPECT_EQ(result.err.find('\n'), result.err.size() - 1);
    EXPECT_FALSE(std::filesystem::exists(folder.path("out.png")));
}

std::uint8_t multiplied(std::uint8_t sample, double factor) {
    return static_cast<std::uint8_t>(std::clamp(std::trunc(sample * factor), 0.0, 255.0));
}

/// Random colours under random alpha, a third each transparent, opaque and between.
Picture randomGlass(int width, int height, unsigned seed) {
    Picture picture = randomPicture(width, height, seed);
    const Picture random = randomPicture(width, height, seed + 1000);
    for (std::size_t i = 0; i < picture.pixels.size(); ++i) {
        const Pixel& r = random.pixels[i];
        picture.pixels[i].alpha = r.red < 85 ? std::uint8_t{0} : r.red < 170 ? std::uint8_t{255} : r.green;
    }
    return picture;
}

/// round(sample * alpha / 255)
std::uint8_t premultiplied(int sample, std::uint8_t alpha) {
    return static_cast<std::uint8_t>(std::lround(sample * alpha / 255.0));
}

/// round(sample * 255 / alpha)
std::uint8_t divided(int sample, std::uint8_t alpha) {
    return alpha == 0 ? std::uint8_t{0} : static_cast<std::uint8_t>(std::lround(sample * 255.0 / alpha));
}

/// Compares what a file's pixel is once it is multiplied by its alpha, which is where its precision lies.
void expectPremultiplied(const Pixel& pixel, int r, int g, int b, std::uint8_t alpha, int tolerance = 1) {
    EXPECT_EQ(pixel.alpha, alpha);
    EXPECT_NEAR(premultiplied(pixel.red, pixel.alpha), r, tolerance) << pixel;
    EXPECT_NEAR(premultiplied(pixel.green, pixel.alpha), g, tolerance) << pixel;
    EXPECT_NEAR(premultiplied(pixel.blue, pixel.alpha), b, tolerance) << pixel;
}

/// White in the middle of black, 9 x 9.
Picture point() {
    Picture picture(9, 9, black);
    picture.at(4, 4) = white;
    return picture;
}

} // namespace

TEST(PixelOperations, ColorMultipliesInTheOrderGiven) {
    const TemporaryFolder folder;
    const Picture picture = randomPicture(13, 7, 501);
    const std::string in = folder.write("in.png", pngOf(picture));
    const Picture once = applied(folder, {in, "--color", "2,1,0.5"});
    // Clamped in between, so that the order shows.
    const Picture upThenDown = applied(folder, {in, "--color", "2,2,2", "--color", "0.5,0.5,0.5"});
    for (int y = 0; y < picture.height; ++y) {
        for (int x = 0; x < picture.width; ++x) {
            const Pixel p = picture.at(x, y);
            EXPECT_EQ(once.at(x, y), (Pixel{multiplied(p.red, 2), p.green, multiplied(p.blue, 0.5)}));
            EXPECT_EQ(upThenDown.at(x, y).red, multiplied(multiplied(p.red, 2), 0.5));
        }
    }
}

TEST(PixelOperations, ColorWorksOnWhatWasPlacedAndIsOpaque) {
    const TemporaryFolder folder;
    const std::string in = folder.write("in.png", pngOf(Picture(8, 6, Pixel{100, 80, 60}), true));
    const Picture result = applied(folder, {in, "--turn", "left", "--scale", "3x4", "--color", "2,0,1"});
    EXPECT_EQ(result.width, 3);
    EXPECT_EQ(result.height, 4);
    EXPECT_EQ(result.at(1, 2), (Pixel{200, 0, 60}));
}

TEST(PixelOperations, WhatComesAfterwardsIsPlacedAsUsual) {
    const TemporaryFolder folder;
    Picture picture(4, 2, black);
    picture.at(3, 0) = Pixel{100, 0, 0};
    const std::string in = folder.write("in.png", pngOf(picture));
    const Picture result = applied(folder, {in, "--color", "2,1,1", "--turn", "left"});
    ASSERT_EQ(result.width, 2);
    ASSERT_EQ(result.height, 4);
    EXPECT_EQ(result.at(0, 0), (Pixel{200, 0, 0})) << "the upper right corner turned left";
}

TEST(PixelOperations, ColorAndHueRefuseGrayByItsName) {
    const TemporaryFolder folder;
    const std::string gray = folder.write("gray.tif", tiffWithStrip(4, 4, 8, 16));
    expectRefusal(folder, {gray, "--color", "1,1,2"}, gray, {"gray without alpha", "imaging draw"});
    expectRefusal(folder, {gray, "--hue", "30"}, gray, {"gray without alpha", "no hue"});
}

TEST(PixelOperations, ColorGivesTransparentPixelsTheColourOfOpaqueOnesAndKeepsTheirAlpha) {
    const TemporaryFolder folder;
    const Picture picture = randomGlass(37, 23, 502);
    const std::string in = folder.write("in.png", pngOf(picture, true));
    const Picture result = applied(folder, {in, "--color", "1.5,0.5,0.9"});
    for (int y = 0; y < picture.height; ++y) {
        for (int x = 0; x < picture.width; ++x) {
            const Pixel p = picture.at(x, y);
            const auto colored = [&](std::uint8_t sample, double factor) {
                return premultiplied(multiplied(divided(premultiplied(sample, p.alpha), p.alpha), factor),
                                     p.alpha);
            };
            expectPremultiplied(result.at(x, y), colored(p.red, 1.5), colored(p.green, 0.5),
                                colored(p.blue, 0.9), p.alpha);
        }
    }
}

TEST(PixelOperations, ColorsThatStayAsTheyAreLeaveTransparentPixelsToTheBit) {
    const TemporaryFolder folder;
    const std::string in = folder.write("in.png", pngOf(randomGlass(41, 19, 503), true));
    const Picture untouched = applied(folder, {in, "--canvas", "41x19"});
    EXPECT_EQ(applied(folder, {in, "--color", "1,1,1"}).pixels, untouched.pixels);
}

TEST(PixelOperations, ColorLeavesNoFringesAtTheEdgesOfAPictureThatWasTurned) {
    const TemporaryFolder folder;
    const Picture picture(31, 17, Pixel{180, 90, 40});
    const std::string in = folder.write("in.png", pngOf(picture));
    const Picture result = applied(folder, {in, "--rotate", "-7.5", "--color", "1.25,0.5,2"});
    int edges = 0;
    // What turning rounds is doubled here, then truncated and rounded again: 3 at most. Colours taken for
    // premultiplied ones, or clamped at 255 as they stand, would be tens away.
    for (const Pixel& pixel : result.pixels) {
        expectPremultiplied(pixel, premultiplied(225, pixel.alpha), premultiplied(45, pixel.alpha),
                            premultiplied(80, pixel.alpha), pixel.alpha, 3);
        if (pixel.alpha > 0 && pixel.alpha < 255) ++edges;
    }
    EXPECT_GT(edges, 40) << "around all four sides";
}

TEST(PixelOperations, ColorBeforeATurnAndAfterItAreTheSame) {
    const TemporaryFolder folder;
    const std::string in = folder.write("in.png", pngOf(randomPicture(29, 21, 504)));
    const Picture before = applied(folder, {in, "--color", "0.5,0.75,1", "--rotate", "20"});
    const Picture after = applied(folder, {in, "--rotate", "20", "--color", "0.5,0.75,1"});
    ASSERT_EQ(before.pixels.size(), after.pixels.size());
    for (std::size_t i = 0; i < before.pixels.size(); ++i) {
        const Pixel& p = before.pixels[i];
        EXPECT_EQ(after.pixels[i].alpha, p.alpha);
        // Each of the two ways rounds or truncates three times.
        expectPremultiplied(after.pixels[i], premultiplied(p.red, p.alpha), premultiplied(p.green, p.alpha),
                            premultiplied(p.blue, p.alpha), p.alpha, 3);
    }
}

TEST(PixelOperations, HueTurnsTheColoursOfTransparentPixelsAndKeepsTheirAlpha) {
    const TemporaryFolder folder;
    Picture picture(256, 1, red);
    for (int x = 0; x < picture.width; ++x) picture.at(x, 0).alpha = static_cast<std::uint8_t>(x);
    const std::string in = folder.write("in.png", pngOf(picture, true));
    const Picture result = applied(folder, {in, "--hue", "120"});
    for (int x = 0; x < picture.width; ++x)
        expectPremultiplied(result.at(x, 0), 0, x, 0, static_cast<std::uint8_t>(x), 0);
}

TEST(PixelOperations, TheGraphShowsWhatIsDoneAboutAlpha) {
    const TemporaryFolder folder;
    const std::string in = folder.write("in.png", pngOf(Picture(2, 2, Pixel{9, 8, 7, 6}), true));
    const Result result = run({"graph", in, "--color", "1,2,0.5"});
    EXPECT_EQ(result.status, 0) << result.err;
    const std::size_t upper = result.out.find("AlphaPutBack");
    const std::size_t middle = result.out.find("IMGColorTransformOp 1,2,0.5");
    const std::size_t lower = result.out.find("ColorsWithoutAlpha");
    EXPECT_LT(upper, middle);
    EXPECT_LT(middle, lower);
    EXPECT_NE(lower, std::string::npos);
}

TEST(PixelOperations, HueTurnsByWholeTurnsTooAndKeepsAlpha) {
    const TemporaryFolder folder;
    const std::string in = folder.write("in.png", pngOf(Picture(3, 3, red), true));
    EXPECT_EQ(applied(folder, {in, "--hue", "120"}).at(1, 1), green);
    EXPECT_EQ(applied(folder, {in, "--hue", "-120"}).at(1, 1), blue);
    EXPECT_EQ(applied(folder, {in, "--hue", "1200"}).at(1, 1), green) << "three turns and a third";
}

TEST(PixelOperations, BlurSpreadsAPointAsTheBellSays) {
    // Sigma 1: taps 223, 1000, 1649, 1000, 223 of 4095, along both axes, truncated each time.
    const TemporaryFolder folder;
    const std::string in = folder.write("in.png", pngOf(point()));
    const Picture result = applied(folder, {in, "--blur", "1"});
    const auto filtered = [](int sample, int tap) { return sample * tap / 4095; };
    constexpr int taps[] = {223, 1000, 1649, 1000, 223};
    for (int y = -2; y <= 2; ++y) {
        for (int x = -2; x <= 2; ++x) {
            const int expected = filtered(filtered(255, taps[x + 2]), taps[y + 2]);
            EXPECT_EQ(result.at(4 + x, 4 + y).red, expected) << x << ", " << y;
        }
    }
    EXPECT_EQ(result.at(7, 4), black);
}

TEST(PixelOperations, SharpenLeavesEvenPicturesAlone) {
    const TemporaryFolder folder;
    const Picture even(5, 5, Pixel{90, 120, 33});
    const std::string in = folder.write("in.png", pngOf(even));
    EXPECT_EQ(applied(folder, {in, "--sharpen"}).at(2, 2), (Pixel{90, 120, 33}));
    const std::string dot = folder.write("dot.png", pngOf(point()));
    EXPECT_EQ(applied(folder, {dot, "--sharpen"}).at(4, 4), white);
    EXPECT_EQ(applied(folder, {dot, "--sharpen"}).at(3, 4), black);
}

TEST(PixelOperations, AKernelIsReadFromRowsOfNumbers) {
    const TemporaryFolder folder;
    const std::string in = folder.write("in.png", pngOf(point()));
    const std::string kernel = folder.write("cross.txt", "# a cross\n 0, 1,0\r\n1\t4 1 # middle\n\n0 1 0");
    const Picture result = applied(folder, {in, "--kernel", kernel});
    EXPECT_EQ(result.at(4, 4).red, 255 * 4 / 8);
    EXPECT_EQ(result.at(4, 5).red, 255 / 8);
    EXPECT_EQ(result.at(5, 5).red, 0);
    const std::string row = folder.write("row.txt", "1 2 1\n");
    EXPECT_EQ(applied(folder, {in, "--kernel", row}).at(5, 5).red, 255 / 4 / 4) << "along both axes";
}

TEST(PixelOperations, KernelFilesThatMakeNoSenseAreRefusedByLine) {
    const TemporaryFolder folder;
    const std::string in = folder.write("in.png", pngOf(point()));
    const auto refused = [&](const std::string& text, const std::vector<std::string>& words) {
        const std::string kernel = folder.write("kernel.txt", text);
        expectRefusal(folder, {in, "--kernel", kernel}, kernel, words);
    };
    refused("", {"no numbers"});
    refused("# nothing\n\n", {"no numbers"});
    refused("1\n2\n", {"two numbers in a row"});
    refused("1 2\n1 2 3\n", {"line 2", "3 numbers", "2 in the first"});
    refused("1 2\n1 x\n", {"line 2", "'x'"});
    refused("1 2.5\n", {"line 1", "'2.5'"});
    refused("1 99999999999\n", {"line 1", "'99999999999'"});
    expectRefusal(folder, {in, "--kernel", folder.path("missing.txt")}, folder.path("missing.txt"),
                  {"no such file"});
}

TEST(PixelOperations, AMaskMultipliesColourAndAlpha) {
    const TemporaryFolder folder;
    const std::string in = folder.write("in.png", pngOf(Picture(2, 1, Pixel{200, 100, 50})));
    Picture gray(2, 1, black);
    gray.at(1, 0) = white;
    const std::string mask = folder.write("mask.png", pngOf(gray));
    const Picture result = applied(folder, {in, "--canvas", "2x1", "--mask", mask});
    EXPECT_EQ(result.at(0, 0), clear);
    EXPECT_EQ(result.at(1, 0).alpha, 254) << "a white mask multiplies by 255 / 256";
    EXPECT_NEAR(result.at(1, 0).red, 200, 1);
}

TEST(PixelOperations, AMaskOfAnotherSizeIsRefusedWithBothSizes) {
    const TemporaryFolder folder;
    const std::string in = folder.write("in.png", pngOf(Picture(6, 4, red), true));
    const std::string mask = folder.write("mask.png", pngOf(Picture(5, 4, white)));
    expectRefusal(folder, {in, "--mask", mask}, mask, {"5 x 4 pixels", "6 x 4", "--scale 6x4"});
}

TEST(PixelOperations, AMaskNeedsAlpha) {
    const TemporaryFolder folder;
    const std::string in = folder.write("in.png", pngOf(Picture(6, 4, red)));
    const std::string mask = folder.write("mask.png", pngOf(Picture(6, 4, white)));
    expectRefusal(folder, {in, "--mask", mask}, in, {"RGB without alpha", "--canvas 6x4"});
}

TEST(PixelOperations, WrongValuesAreWrongUsage) {
    const TemporaryFolder folder;
    const std::string in = folder.write("in.png", pngOf(Picture(2, 2, red)));
    for (const Arguments& wrong : std::vector<Arguments>{{"--color", "1,2"},
                                                         {"--color", "a,b,c"},
                                                         {"--hue", "nan"},
                                                         {"--blur", "-1"},
                                                         {"--blur", "1e6"},
                                                         {"--blur", "wide"}}) {
        const Result result = apply(folder, {in, wrong[0], wrong[1]});
        EXPECT_EQ(result.status, 2) << wrong[0] << " " << wrong[1];
        EXPECT_THAT(result.err, HasSubstr(wrong[0]));
    }
}

TEST(PixelOperations, TheGraphShowsTheirNodes) {
    const TemporaryFolder folder;
    const std::string in = folder.write("in.png", pngOf(Picture(2, 2, red)));
    const Result result =
        run({"graph", in, "--color", "1,2,0.5", "--blur", "1.5", "--sharpen", "--hue", "0"});
    EXPECT_EQ(result.status, 0) << result.err;
    EXPECT_THAT(result.out, HasSubstr("IMGColorTransformOp 1,2,0.5"));
    EXPECT_THAT(result.out, HasSubstr("IMGGaussianOp radius 1.5"));
    EXPECT_THAT(result.out, HasSubstr("IMGConvolutionOp sharpen 3x3"));
    EXPECT_THAT(result.out, HasSubstr("IMGHueAdjustOp 0 radians"));
}
