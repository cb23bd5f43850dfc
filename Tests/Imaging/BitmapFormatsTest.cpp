// Which layout a bitmap has, for every colour space and number of samples, and new bitmaps of each layout.

#include "Imaging/BitmapFormats.h"

#include "Tests/Imaging/ImagingTestSupport.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <memory>
#include <string_view>

using namespace ImagingTests;
using Imaging::bitmapWithSize;
using Imaging::hasAlpha;
using Imaging::imgBitmapFormat;
using Imaging::IMGBitmapFormat;
using Imaging::isGrayscale;
using Imaging::isInvertedGrayscale;
using Imaging::Platform::NSBitmapDescription;
using Imaging::Platform::NSBitmapImageRep;

namespace {

constexpr std::string_view colorSpaces[] = {
    Imaging::Platform::NSCalibratedWhiteColorSpace, Imaging::Platform::NSCalibratedBlackColorSpace,
    Imaging::Platform::NSCalibratedRGBColorSpace,   Imaging::Platform::NSDeviceWhiteColorSpace,
    Imaging::Platform::NSDeviceBlackColorSpace,     Imaging::Platform::NSDeviceRGBColorSpace,
    Imaging::Platform::NSDeviceCMYKColorSpace};

struct Layout {
    std::string_view space = Imaging::Platform::NSCalibratedRGBColorSpace;
    int samples = 3;
    bool alpha = false;
    int bitsPerSample = 8;
    bool planar = false;
    int bitsPerPixel = 0;
    std::size_t bytesPerRow = 0;
};

std::shared_ptr<NSBitmapImageRep> bitmapLike(const Layout& layout) {
    NSBitmapDescription description;
    description.pixelsWide = 3;
    description.pixelsHigh = 2;
    description.bitsPerSample = layout.bitsPerSample;
    description.samplesPerPixel = layout.samples;
    description.hasAlpha = layout.alpha;
    description.isPlanar = layout.planar;
    description.colorSpaceName = layout.space;
    description.bytesPerRow = layout.bytesPerRow;
    description.bitsPerPixel = layout.bitsPerPixel;
    return NSBitmapImageRep::bitmapWithDescription(description);
}

int formatOf(const Layout& layout) {
    const auto bitmap = bitmapLike(layout);
    return bitmap == nullptr ? -1 : imgBitmapFormat(*bitmap);
}

bool isBlank(const NSBitmapImageRep& bitmap) {
    const auto bytes = bitmap.bytesPerRow() * static_cast<std::size_t>(bitmap.pixelsHigh());
    return std::all_of(bitmap.bitmapData(), bitmap.bitmapData() + bytes, [](auto byte) { return byte == 0; });
}

constexpr auto white = Imaging::Platform::NSCalibratedWhiteColorSpace;
constexpr auto black = Imaging::Platform::NSCalibratedBlackColorSpace;
constexpr auto rgb = Imaging::Platform::NSCalibratedRGBColorSpace;

} // namespace

TEST(BitmapFormat, HasItsNumbers) {
    EXPECT_EQ(Imaging::IMGBitmapFormatUnknown, 0);
    EXPECT_EQ(Imaging::IMGBitmapFormatGrayscale, 1);
    EXPECT_EQ(Imaging::IMGBitmapFormatGrayscaleAlpha, 2);
    EXPECT_EQ(Imaging::IMGBitmapFormatRGB, 3);
    EXPECT_EQ(Imaging::IMGBitmapFormatRGBA, 4);
}

TEST(BitmapFormat, IsOneOfFourInTheCalibratedSpaces) {
    EXPECT_EQ(formatOf({white, 1, false}), 1);
    EXPECT_EQ(formatOf({white, 2, true}), 2);
    EXPECT_EQ(formatOf({rgb, 3, false}), 3);
    EXPECT_EQ(formatOf({rgb, 4, true}), 4);
}

TEST(BitmapFormat, DoesNotDependOnTheLengthOfARow) {
    EXPECT_EQ(formatOf({white, 1, false, 8, false, 0, 7}), 1);
    EXPECT_EQ(formatOf({white, 2, true, 8, false, 0, 16}), 2);
    EXPECT_EQ(formatOf({rgb, 3, false, 8, false, 0, 64}), 3);
    EXPECT_EQ(formatOf({rgb, 4, true, 8, false, 0, 13}), 4);
}

TEST(BitmapFormat, GoesBySamplesAndNotByTheAlphaFlag) {
    EXPECT_EQ(formatOf({white, 2, false}), 2);
    EXPECT_EQ(formatOf({rgb, 4, false}), 4);
}

TEST(BitmapFormat, IsUnknownInEveryOtherSpace) {
    for (const std::string_view space : colorSpaces) {
        if (space == white || space == rgb) continue;
        for (int samples = 1; samples <= 5; ++samples) {
            for (const bool alpha : {false, true}) {
                const int format = formatOf({space, samples, alpha});
                EXPECT_TRUE(format == 0 || format == -1) << space << ", " << samples << " samples";
            }
        }
    }
    EXPECT_EQ(formatOf({Imaging::Platform::NSDeviceRGBColorSpace, 4, true}), 0);
    EXPECT_EQ(formatOf({Imaging::Platform::NSDeviceWhiteColorSpace, 1, false}), 0);
    EXPECT_EQ(formatOf({black, 1, false}), 0);
}

TEST(BitmapFormat, IsUnknownForPixelsWithPadding) {
    EXPECT_EQ(formatOf({rgb, 3, false, 8, false, 32}), 0);
    EXPECT_EQ(formatOf({white, 1, false, 8, false, 16}), 0);
    EXPECT_EQ(formatOf({white, 2, true, 8, false, 24}), 0);
    EXPECT_EQ(formatOf({rgb, 4, true, 8, false, 40}), 0);
}

TEST(BitmapFormat, IsUnknownForSixteenBitsASample) {
    EXPECT_EQ(formatOf({white, 1, false, 16}), 0);
    EXPECT_EQ(formatOf({white, 2, true, 16}), 0);
    EXPECT_EQ(formatOf({rgb, 3, false, 16}), 0);
    EXPECT_EQ(formatOf({rgb, 4, true, 16}), 0);
}

TEST(BitmapFormat, IsUnknownForPlanarBitmaps) {
    EXPECT_EQ(formatOf({white, 1, false, 8, true}), 0);
    EXPECT_EQ(formatOf({white, 2, true, 8, true}), 0);
    EXPECT_EQ(formatOf({rgb, 3, false, 8, true}), 0);
    EXPECT_EQ(formatOf({rgb, 4, true, 8, true}), 0);
    EXPECT_EQ(formatOf({rgb, 4, true, 8, true, 32}), 0); // in each plane
}

TEST(BitmapFormat, IsUnknownForOtherSampleCounts) {
    EXPECT_EQ(formatOf({rgb, 5, true}), 0);
    EXPECT_EQ(formatOf({white, 3, true}), 0);
    EXPECT_EQ(formatOf({white, 4, true}), 0); // 32 bits a pixel, but no colour
}

TEST(BitmapAlpha, IsThereForTheTwoKnownLayoutsWithAlphaOnly) {
    EXPECT_TRUE(hasAlpha(*bitmapLike({white, 2, true})));
    EXPECT_TRUE(hasAlpha(*bitmapLike({rgb, 4, true})));
    EXPECT_TRUE(hasAlpha(*bitmapLike({rgb, 4, false}))); // by its layout
    EXPECT_FALSE(hasAlpha(*bitmapLike({white, 1, false})));
    EXPECT_FALSE(hasAlpha(*bitmapLike({rgb, 3, false})));
}

TEST(BitmapAlpha, IsNotThereForAnUnknownLayoutThatCarriesSome) {
    for (const Layout& layout :
         {Layout{Imaging::Platform::NSDeviceRGBColorSpace, 4, true},
          Layout{Imaging::Platform::NSDeviceWhiteColorSpace, 2, true}, Layout{black, 2, true},
          Layout{rgb, 4, true, 16}, Layout{rgb, 4, true, 8, true}, Layout{rgb, 4, true, 8, false, 40}}) {
        const auto bitmap = bitmapLike(layout);
        EXPECT_TRUE(bitmap->hasAlpha());
        EXPECT_FALSE(hasAlpha(*bitmap)) << layout.space;
    }
}

TEST(GrayBitmaps, AreThoseInTheFourGraySpaces) {
    for (const std::string_view space : colorSpaces) {
        const auto bitmap = bitmapLike({space, 4, false});
        ASSERT_NE(bitmap, nullptr);
        const bool whiteIsOne = space == white || space == Imaging::Platform::NSDeviceWhiteColorSpace;
        const bool whiteIsZero = space == black || space == Imaging::Platform::NSDeviceBlackColorSpace;
        EXPECT_EQ(isGrayscale(*bitmap), whiteIsOne || whiteIsZero) << space;
        EXPECT_EQ(isInvertedGrayscale(*bitmap), whiteIsZero) << space;
    }
}

TEST(NewBitmap, HasTheLayoutThatIsAskedFor) {
    const struct {
        int format;
        int samples;
        bool alpha;
        std::string_view space;
    } cases[] = {{1, 1, false, white}, {2, 2, true, white}, {3, 3, false, rgb}, {4, 4, true, rgb}};
    for (const auto& [format, samples, alpha, space] : cases) {
        const auto bitmap = bitmapWithSize(NSMakeSize(7, 5), static_cast<IMGBitmapFormat>(format));
        ASSERT_NE(bitmap, nullptr) << format;
        EXPECT_EQ(bitmap->pixelsWide(), 7);
        EXPECT_EQ(bitmap->pixelsHigh(), 5);
        EXPECT_EQ(bitmap->bitsPerSample(), 8);
        EXPECT_EQ(bitmap->samplesPerPixel(), samples);
        EXPECT_EQ(bitmap->hasAlpha(), alpha);
        EXPECT_FALSE(bitmap->isPlanar());
        EXPECT_EQ(bitmap->colorSpaceName(), space);
        EXPECT_EQ(imgBitmapFormat(*bitmap), format);
        EXPECT_EQ(hasAlpha(*bitmap), alpha);
        EXPECT_TRUE(isBlank(*bitmap));
        ASSERT_NE(bitmap->bitmapData(), nullptr);
        bitmap->bitmapData()[0] = 9; // the caller's to write
        EXPECT_EQ(bitmap->pixelAt(0, 0)[0], 9);
    }
}

TEST(NewBitmap, IsMadeUnderTheCustomaryNameToo) {
    const auto bitmap = Imaging::initWithSize(NSMakeSize(7, 5), Imaging::IMGBitmapFormatRGB);
    ASSERT_NE(bitmap, nullptr);
    EXPECT_EQ(bitmap->pixelsWide(), 7);
    EXPECT_EQ(bitmap->pixelsHigh(), 5);
    EXPECT_EQ(imgBitmapFormat(*bitmap), Imaging::IMGBitmapFormatRGB);
    EXPECT_EQ(Imaging::initWithSize(NSMakeSize(0, 5), Imaging::IMGBitmapFormatRGB), nullptr);
}

TEST(NewBitmap, IsRGBAForAnyOtherValue) {
    for (const int format : {0, 5, -1, 4711}) {
        const auto bitmap = bitmapWithSize(NSMakeSize(7, 5), static_cast<IMGBitmapFormat>(format));
        ASSERT_NE(bitmap, nullptr) << format;
        EXPECT_EQ(imgBitmapFormat(*bitmap), 4);
    }
}

TEST(NewBitmap, HasItsSizeTruncatedTowardZero) {
    const auto bitmap = bitmapWithSize(NSMakeSize(7.99F, 5.5F), Imaging::IMGBitmapFormatRGB);
    ASSERT_NE(bitmap, nullptr);
    EXPECT_EQ(bitmap->pixelsWide(), 7);
    EXPECT_EQ(bitmap->pixelsHigh(), 5);
}

TEST(NewBitmap, IsNoneWithoutAPixelOrBeyondTheLimits) {
    const float infinite = std::numeric_limits<float>::infinity();
    const float nothing = std::numeric_limits<float>::quiet_NaN();
    for (const NSSize size : {NSMakeSize(0, 5), NSMakeSize(7, 0.99F), NSMakeSize(-7, 5), NSMakeSize(7, -5),
                              NSMakeSize(infinite, 5), NSMakeSize(7, nothing), NSMakeSize(1e6F, 1e6F),
                              NSMakeSize(3e38F, 3e38F)}) {
        EXPECT_EQ(bitmapWithSize(size, Imaging::IMGBitmapFormatGrayscale), nullptr)
            << size.width << " x " << size.height;
    }
}
