// One bitmap drawn into another of a description, compared with plain arithmetic on each sample.

#include "Imaging/BitmapFormats.h"
#include "Tests/Imaging/ImagingTestSupport.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <limits>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

using namespace ImagingTests;
using Imaging::bitmapRepresentationWithSize;
using Imaging::Platform::NSBitmapDescription;
using Imaging::Platform::NSBitmapImageRep;

namespace {

constexpr auto white = Imaging::Platform::NSCalibratedWhiteColorSpace;
constexpr auto black = Imaging::Platform::NSCalibratedBlackColorSpace;
constexpr auto rgb = Imaging::Platform::NSCalibratedRGBColorSpace;
constexpr auto deviceWhite = Imaging::Platform::NSDeviceWhiteColorSpace;
constexpr auto deviceBlack = Imaging::Platform::NSDeviceBlackColorSpace;
constexpr auto deviceRGB = Imaging::Platform::NSDeviceRGBColorSpace;

struct Layout {
    std::string_view space;
    int samples;
    bool alpha;
    int bits = 8;
    bool planar = false;
    int pixelPadding = 0; ///< bytes
    std::size_t rowPadding = 0;
};

constexpr Layout sourceLayouts[] = {
    {white, 1, false},
    {white, 2, true},
    {rgb, 3, false},
    {rgb, 4, true},
    {white, 1, false, 8, false, 0, 3},
    {white, 2, true, 8, false, 0, 5},
    {rgb, 3, false, 8, false, 0, 7},
    {rgb, 4, true, 8, false, 0, 9},
    {rgb, 3, false, 8, false, 1, 2},
    {white, 1, false, 8, false, 2, 1},
    {rgb, 4, true, 8, false, 1, 0},
    {white, 1, false, 16},
    {white, 2, true, 16, false, 0, 2},
    {rgb, 3, false, 16, false, 0, 4},
    {rgb, 4, true, 16},
    {deviceWhite, 1, false},
    {deviceWhite, 2, true},
    {deviceRGB, 3, false},
    {deviceRGB, 4, true},
    {black, 1, false},
    {black, 2, true},
    {deviceBlack, 1, false, 16},
    {white, 1, false, 8, true},
    {white, 2, true, 8, true, 0, 3},
    {rgb, 3, false, 8, true},
    {rgb, 4, true, 8, true, 0, 5},
    {rgb, 4, true, 16, true},
    {black, 1, false, 8, true},
};

std::string text(const Layout& layout) {
    return std::string(layout.space) + ", " + std::to_string(layout.samples) + " samples of " +
           std::to_string(layout.bits) + " bits" + (layout.planar ? ", planar" : "") + ", padded by " +
           std::to_string(layout.pixelPadding) + " and " + std::to_string(layout.rowPadding);
}

std::shared_ptr<NSBitmapImageRep> makeBitmap(const Layout& layout, int width, int height) {
    NSBitmapDescription description;
    description.pixelsWide = width;
    description.pixelsHigh = height;
    description.bitsPerSample = layout.bits;
    description.samplesPerPixel = layout.samples;
    description.hasAlpha = layout.alpha;
    description.isPlanar = layout.planar;
    description.colorSpaceName = layout.space;
    const int pixelBytes = (layout.planar ? 1 : layout.samples) * layout.bits / 8 + layout.pixelPadding;
    description.bitsPerPixel = 8 * pixelBytes;
    description.bytesPerRow = static_cast<std::size_t>(width * pixelBytes) + layout.rowPadding;
    return NSBitmapImageRep::bitmapWithDescription(description);
}

/// Where a sample lies, by the bitmap's own figures.
std::uint8_t* sampleAt(const NSBitmapImageRep& bitmap, int x, int y, int sample) {
    const auto at = static_cast<std::size_t>(y) * bitmap.bytesPerRow() +
                    static_cast<std::size_t>(x * (bitmap.bitsPerPixel() / 8));
    const auto& planes = bitmap.bitmapDataPlanes();
    if (bitmap.isPlanar()) return planes[static_cast<std::size_t>(sample)] + at;
    return planes[0] + at + static_cast<std::size_t>(sample * (bitmap.bitsPerSample() / 8));
}

int read(const NSBitmapImageRep& bitmap, int x, int y, int sample) {
    const std::uint8_t* const address = sampleAt(bitmap, x, y, sample);
    if (bitmap.bitsPerSample() == 8) return *address;
    std::uint16_t value = 0;
    std::memcpy(&value, address, 2);
    return value;
}

void write(const NSBitmapImageRep& bitmap, int x, int y, int sample, int value) {
    std::uint8_t* const address = sampleAt(bitmap, x, y, sample);
    if (bitmap.bitsPerSample() == 8) {
        *address = static_cast<std::uint8_t>(value);
        return;
    }
    const auto wide = static_cast<std::uint16_t>(value);
    std::memcpy(address, &wide, 2);
}

/// Random samples, of which colour is never more than alpha, and noise where nothing should be read.
std::shared_ptr<NSBitmapImageRep> randomBitmap(Pixels::Random& random, const Layout& layout, int width,
                                               int height, bool alphaFirst) {
    auto bitmap = makeBitmap(layout, width, height);
    const std::size_t bytes = bitmap->bytesPerRow() * static_cast<std::size_t>(height);
    for (int plane = 0; plane < bitmap->numberOfPlanes(); ++plane) {
        std::uint8_t* const start = bitmap->bitmapDataPlanes()[static_cast<std::size_t>(plane)];
        std::generate(start, start + bytes, [&] { return static_cast<std::uint8_t>(random.sample()); });
    }
    const int maximum = layout.bits == 8 ? 255 : 65535;
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            const int alphaIndex = alphaFirst ? 0 : layout.samples - 1;
            const int alpha = layout.alpha ? random.sample(maximum) : maximum;
            for (int i = 0; i < layout.samples; ++i) {
                const bool isAlpha = layout.alpha && i == alphaIndex;
                write(*bitmap, x, y, i, isAlpha ? alpha : random.sample(alpha));
            }
        }
    }
    return bitmap;
}

struct Target {
    int width;
    int height;
    int bits;
    int samples;
    bool alpha;
    bool planar;
    std::string_view space;
    bool swizzled;
    bool wasSwizzled;
};

int inDepth(int value, int from, int to) {
    if (from == to) return value;
    return from == 8 ? value * 257 : static_cast<int>(std::lround(value / 257.0));
}

/// Premultiplied red, green, blue and alpha of a source pixel, in the target's depth.
std::array<int, 4> sourcePixel(const NSBitmapImageRep& source, const Layout& layout, int x, int y,
                               const Target& target) {
    const int maximum = target.bits == 8 ? 255 : 65535;
    const bool known = layout.bits == 8 && !layout.planar && layout.pixelPadding == 0;
    const bool alpha = known && ((layout.space == white && layout.samples == 2) ||
                                 (layout.space == rgb && layout.samples == 4));
    const int first = alpha && target.wasSwizzled ? 1 : 0;
    const auto sample = [&](int i) { return inDepth(read(source, x, y, i), layout.bits, target.bits); };
    const int alphaIndex = first == 1 ? 0 : layout.samples - 1;
    const int a = alpha ? sample(alphaIndex) : maximum;
    if (layout.samples > 2) return {sample(first), sample(first + 1), sample(first + 2), a};
    const bool inverted = layout.space == black || layout.space == deviceBlack;
    const int gray = inverted ? maximum - sample(first) : sample(first);
    return {gray, gray, gray, a};
}

/// What the sample `i` of the target is to be for a pixel.
int expectedSample(const std::array<int, 4>& pixel, const Target& target, int i) {
    const int maximum = target.bits == 8 ? 255 : 65535;
    const int colors = target.samples <= 2 ? 1 : 3;
    const bool alphaFirst = target.alpha && target.swizzled;
    if (i == (alphaFirst ? 0 : colors)) return target.alpha ? pixel[3] : maximum;
    if (colors == 3) return pixel[static_cast<std::size_t>(alphaFirst ? i - 1 : i)];
    return static_cast<int>(std::floor((30.0 * pixel[0] + 59.0 * pixel[1] + 11.0 * pixel[2]) / 100 + 0.5));
}

testing::AssertionResult isConverted(const NSBitmapImageRep& source, const Layout& layout,
                                     const Target& target, const NSBitmapImageRep& result) {
    const int sourceHeight = static_cast<int>(source.pixelsHigh());
    for (int y = 0; y < target.height; ++y) {
        const int sourceY = sourceHeight - (target.height - y); // both stand on their lower edges
        for (int x = 0; x < target.width; ++x) {
            const bool drawn = sourceY >= 0 && sourceY < sourceHeight && x < source.pixelsWide();
            std::array<int, 4> pixel{};
            if (drawn) pixel = sourcePixel(source, layout, x, sourceY, target);
            for (int i = 0; i < target.samples; ++i) {
                const int expected = drawn ? expectedSample(pixel, target, i) : 0;
                const int actual = read(result, x, y, i);
                if (actual == expected) continue;
                return testing::AssertionFailure() << actual << " instead of " << expected << " in sample "
                                                   << i << " of column " << x << ", row " << y;
            }
        }
    }
    return testing::AssertionSuccess();
}

std::shared_ptr<NSBitmapImageRep> converted(const NSBitmapImageRep& source, const Target& t) {
    const NSSize size = NSMakeSize(static_cast<float>(t.width), static_cast<float>(t.height));
    return bitmapRepresentationWithSize(source, size, t.bits, t.samples, t.alpha, t.planar, t.space,
                                        t.swizzled, t.wasSwizzled);
}

/// Every target layout of a size.
std::vector<Target> targetsOf(int width, int height, int bits) {
    std::vector<Target> targets;
    for (int samples = 1; samples <= 4; ++samples) {
        for (const bool alpha : {false, true}) {
            if (alpha && samples % 2 != 0) continue;
            for (const bool planar : {false, true}) {
                for (const bool swizzled : {false, true}) {
                    targets.push_back({width, height, bits, samples, alpha, planar,
                                       samples <= 2 ? white : rgb, swizzled, false});
                }
            }
        }
    }
    return targets;
}

void expectAllConversions(Pixels::Random& random, const Layout& layout, int width, int height,
                          const std::vector<Target>& targets) {
    for (Target target : targets) {
        for (const bool wasSwizzled : {false, true}) {
            target.wasSwizzled = wasSwizzled;
            const auto source = randomBitmap(random, layout, width, height, wasSwizzled);
            const auto result = converted(*source, target);
            ASSERT_NE(result, nullptr);
            EXPECT_TRUE(isConverted(*source, layout, target, *result))
                << text(layout) << " to " << target.samples << " samples of " << target.bits
                << (target.alpha ? " with alpha" : "") << (target.planar ? ", planar" : "")
                << (target.swizzled ? ", swizzled" : "") << (wasSwizzled ? ", was swizzled" : "");
        }
    }
}

} // namespace

TEST(BitmapConversion, ToEightBitsGivesEverySample) {
    Pixels::Random random(20260411);
    for (const Layout& layout : sourceLayouts) {
        if (layout.bits == 16 && layout.samples > 2) continue; // below
        expectAllConversions(random, layout, 13, 7, targetsOf(13, 7, 8));
    }
}

TEST(BitmapConversion, ToSixteenBitsGivesEverySample) {
    Pixels::Random random(20260412);
    for (const Layout& layout : sourceLayouts) {
        expectAllConversions(random, layout, 9, 5, targetsOf(9, 5, 16));
    }
}

TEST(BitmapConversion, OfSixteenBitColorToEightBitsRoundsToNearest) {
    Pixels::Random random(20260413);
    for (const Layout& layout : sourceLayouts) {
        if (layout.bits == 8 || layout.samples <= 2) continue;
        std::vector<Target> targets = targetsOf(13, 7, 8);
        std::erase_if(targets, [](const Target& t) { return t.samples <= 2; });
        expectAllConversions(random, layout, 13, 7, targets);
    }
}

TEST(BitmapConversion, OfSixteenBitColorToEightBitGrayIsWithinAStepOfTheExactGray) {
    // Colour and depth change at once, and each may round.
    Pixels::Random random(20260414);
    for (const Layout& layout : {Layout{rgb, 3, false, 16}, Layout{deviceRGB, 4, true, 16}}) {
        const auto source = randomBitmap(random, layout, 13, 7, false);
        const auto result = converted(*source, {13, 7, 8, 1, false, false, white, false, false});
        ASSERT_NE(result, nullptr);
        for (int y = 0; y < 7; ++y) {
            for (int x = 0; x < 13; ++x) {
                const double exact = (0.3 * read(*source, x, y, 0) + 0.59 * read(*source, x, y, 1) +
                                      0.11 * read(*source, x, y, 2)) /
                                     257;
                EXPECT_NEAR(read(*result, x, y, 0), exact, 1.0001);
            }
        }
    }
}

TEST(BitmapConversion, ToALargerSizeLeavesTheTopAndTheRightUndrawn) {
    Pixels::Random random(20260415);
    for (const Layout& layout : {Layout{rgb, 4, true}, Layout{white, 1, false, 8, false, 0, 3},
                                 Layout{deviceRGB, 3, false}, Layout{rgb, 3, false, 16}}) {
        std::vector<Target> targets = targetsOf(11, 9, 8);
        std::erase_if(targets, [&](const Target& t) { return layout.bits == 16 && t.samples <= 2; });
        expectAllConversions(random, layout, 6, 4, targets);
    }
}

TEST(BitmapConversion, ToASmallerSizeCutsAtTheTopAndTheRight) {
    Pixels::Random random(20260416);
    for (const Layout& layout : {Layout{rgb, 4, true}, Layout{white, 2, true, 8, false, 0, 3}}) {
        expectAllConversions(random, layout, 11, 9, targetsOf(6, 4, 8));
        expectAllConversions(random, layout, 11, 4, targetsOf(6, 9, 8));
    }
}

TEST(BitmapConversion, OfASinglePixelWorks) {
    Pixels::Random random(20260417);
    expectAllConversions(random, {rgb, 4, true}, 1, 1, targetsOf(1, 1, 8));
}

TEST(BitmapConversion, MakesABitmapOfTheDescription) {
    Pixels::Random random(20260418);
    const auto source = randomBitmap(random, {rgb, 4, true}, 6, 4, false);
    const auto result =
        bitmapRepresentationWithSize(*source, NSMakeSize(7.9F, 5.2F), 16, 2, true, true, deviceWhite, true);
    ASSERT_NE(result, nullptr);
    EXPECT_NE(result, source);
    EXPECT_EQ(result->pixelsWide(), 7);
    EXPECT_EQ(result->pixelsHigh(), 5);
    EXPECT_EQ(result->bitsPerSample(), 16);
    EXPECT_EQ(result->samplesPerPixel(), 2);
    EXPECT_TRUE(result->hasAlpha());
    EXPECT_TRUE(result->isPlanar());
    EXPECT_EQ(result->colorSpaceName(), deviceWhite);
}

TEST(BitmapConversion, TakesTheSourceAsNotSwizzledUnlessItIsSaid) {
    Pixels::Random random(20260419);
    const Layout layout = {rgb, 4, true};
    const auto source = randomBitmap(random, layout, 6, 4, false);
    const auto result = bitmapRepresentationWithSize(*source, NSMakeSize(6, 4), 8, 4, true, false, rgb, true);
    ASSERT_NE(result, nullptr);
    EXPECT_TRUE(isConverted(*source, layout, {6, 4, 8, 4, true, false, rgb, true, false}, *result));
}

TEST(BitmapConversion, SwizzlesThereAndBack) {
    Pixels::Random random(20260420);
    const auto source = randomBitmap(random, {rgb, 4, true}, 6, 4, false);
    const auto swizzled = converted(*source, {6, 4, 8, 4, true, false, rgb, true, false});
    ASSERT_NE(swizzled, nullptr);
    const auto back = converted(*swizzled, {6, 4, 8, 4, true, false, rgb, false, true});
    ASSERT_NE(back, nullptr);
    EXPECT_TRUE(std::equal(source->bitmapData(), source->bitmapData() + 6 * 4 * 4, back->bitmapData()));
    EXPECT_EQ(read(*swizzled, 1, 2, 0), read(*source, 1, 2, 3));
    EXPECT_EQ(read(*swizzled, 1, 2, 3), read(*source, 1, 2, 2));
}

TEST(BitmapConversion, WritesIntoBlackIsZeroTargetsAsItDoesIntoOthers) {
    // The target's space is a name only: what is drawn into is device gray.
    Pixels::Random random(20260421);
    const Layout layout = {white, 1, false};
    const auto source = randomBitmap(random, layout, 6, 4, false);
    const Target target = {6, 4, 8, 1, false, false, black, false, false};
    const auto result = converted(*source, target);
    ASSERT_NE(result, nullptr);
    EXPECT_EQ(result->colorSpaceName(), black);
    EXPECT_TRUE(isConverted(*source, layout, target, *result));
}

TEST(BitmapConversion, InvertsBlackIsZeroSources) {
    const auto source = makeBitmap({black, 1, false}, 2, 1);
    write(*source, 0, 0, 0, 0);
    write(*source, 1, 0, 0, 200);
    const auto result = converted(*source, {2, 1, 8, 1, false, false, white, false, false});
    ASSERT_NE(result, nullptr);
    EXPECT_EQ(read(*result, 0, 0, 0), 255);
    EXPECT_EQ(read(*result, 1, 0, 0), 55);
}

TEST(BitmapConversion, TurnsColorIntoGrayByTheStatedWeights) {
    const auto source = makeBitmap({rgb, 3, false}, 3, 1);
    for (int i = 0; i < 3; ++i) write(*source, i, 0, i, 255);
    const auto result = converted(*source, {3, 1, 8, 1, false, false, white, false, false});
    ASSERT_NE(result, nullptr);
    EXPECT_EQ(read(*result, 0, 0, 0), 77);  // 76.5
    EXPECT_EQ(read(*result, 1, 0, 0), 150); // 150.45
    EXPECT_EQ(read(*result, 2, 0, 0), 28);  // 28.05
}

TEST(BitmapConversion, ClampsTheSamplesOfTheTarget) {
    Pixels::Random random(20260422);
    const auto source = randomBitmap(random, {rgb, 4, true, 16}, 6, 4, false);
    const auto color = converted(*source, {6, 4, 8, 5, true, false, rgb, false, false});
    ASSERT_NE(color, nullptr);
    EXPECT_EQ(color->samplesPerPixel(), 4);
    const auto gray = converted(*source, {6, 4, 8, 3, true, false, white, false, false});
    ASSERT_NE(gray, nullptr);
    EXPECT_EQ(gray->samplesPerPixel(), 2);
}

TEST(BitmapConversion, LeavesTheSourceAsItIs) {
    Pixels::Random random(20260423);
    const Layout layout = {rgb, 4, true, 8, true, 0, 3};
    const auto source = randomBitmap(random, layout, 6, 4, false);
    std::vector<int> before;
    const auto samples = [&] {
        std::vector<int> all;
        for (int y = 0; y < 4; ++y) {
            for (int x = 0; x < 6; ++x) {
                for (int i = 0; i < 4; ++i) all.push_back(read(*source, x, y, i));
            }
        }
        return all;
    };
    before = samples();
    converted(*source, {6, 4, 8, 4, true, false, rgb, true, false});
    EXPECT_EQ(samples(), before);
}

TEST(BitmapConversion, ToADescriptionWithoutSenseIsNone) {
    const auto source = makeBitmap({rgb, 4, true}, 6, 4);
    const float infinite = std::numeric_limits<float>::infinity();
    for (const NSSize size :
         {NSMakeSize(0, 4), NSMakeSize(6, 0.5F), NSMakeSize(-6, 4), NSMakeSize(infinite, 4),
          NSMakeSize(6, std::nanf("")), NSMakeSize(1e8F, 1e8F)}) {
        EXPECT_EQ(bitmapRepresentationWithSize(*source, size, 8, 4, true, false, rgb, false), nullptr);
    }
    const NSSize size = NSMakeSize(6, 4);
    EXPECT_EQ(bitmapRepresentationWithSize(*source, size, 12, 4, true, false, rgb, false), nullptr);
    EXPECT_EQ(bitmapRepresentationWithSize(*source, size, 8, 0, false, false, white, false), nullptr);
    EXPECT_EQ(bitmapRepresentationWithSize(*source, size, 8, -3, false, false, white, false), nullptr);
    EXPECT_EQ(bitmapRepresentationWithSize(*source, size, 8, 1, true, false, white, false), nullptr);
    EXPECT_EQ(bitmapRepresentationWithSize(*source, size, 8, 2, false, false, rgb, false), nullptr);
    EXPECT_EQ(bitmapRepresentationWithSize(*source, size, 8, 3, true, false, rgb, false), nullptr);
    EXPECT_EQ(bitmapRepresentationWithSize(*source, size, 8, 3, false, false, "no such space", false),
              nullptr);
}
