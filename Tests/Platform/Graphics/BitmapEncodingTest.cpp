// Also tests: Platform/Graphics/BitmapCoding.cpp

#include "Platform/Codecs/Codec.h"
#include "Platform/Graphics/BitmapImageRep.h"
#include "Platform/Graphics/Pictures/BitmapPixels.h"
#include "Tests/Platform/Pixels/BitmapLayouts.h"

#include <gtest/gtest.h>
#include <lcms2.h>

#include <cmath>
#include <limits>
#include <vector>

using namespace Imaging::Platform;
using namespace Pixels;

namespace {

/// An ICC profile of sRGB.
NSData colorProfile() {
    const cmsHPROFILE profile = cmsCreate_sRGBProfile();
    cmsUInt32Number size = 0;
    cmsSaveProfileToMem(profile, nullptr, &size);
    NSData bytes(size);
    cmsSaveProfileToMem(profile, bytes.data(), &size);
    cmsCloseProfile(profile);
    return bytes;
}

std::shared_ptr<NSBitmapImageRep> decoded(const std::optional<NSData>& data) {
    if (!data.has_value()) return nullptr;
    NSError error;
    const auto bitmap = NSBitmapImageRep::imageRepWithData(*data, &error);
    EXPECT_EQ(error.message, "");
    return bitmap;
}

/// The largest difference between what the samples of two bitmaps mean, in steps of the given maximum.
double largestDifference(const NSBitmapImageRep& a, const NSBitmapImageRep& b, double maximum) {
    if (a.pixelsWide() != b.pixelsWide() || a.pixelsHigh() != b.pixelsHigh()) return 1e9;
    double largest = 0;
    for (std::int64_t y = 0; y < a.pixelsHigh(); ++y) {
        for (std::int64_t x = 0; x < a.pixelsWide(); ++x) {
            const Color left = meaningOf(a, x, y);
            const Color right = meaningOf(b, x, y);
            for (std::size_t i = 0; i < 4; ++i) {
                largest = std::max(largest, std::abs(left[i] - right[i]) * maximum);
            }
        }
    }
    return largest;
}

/// What comes back is exact where the samples are stored as they are; straight colour comes back
/// premultiplied, which rounds once, and inks come back as light, which rounds once or twice.
double toleranceFor(const NSBitmapDescription& d) {
    const bool straight = d.hasAlpha && (d.bitmapFormat & NSAlphaNonpremultipliedBitmapFormat) != 0;
    if (d.colorSpaceName == NSDeviceCMYKColorSpace) return straight ? 1.02 : 0.52;
    return straight ? 0.5001 : 1e-6;
}

/// A bitmap with a smooth gradient, which lossy compression keeps well.
std::shared_ptr<NSBitmapImageRep> gradient(const NSBitmapDescription& description) {
    auto bitmap = NSBitmapImageRep::bitmapWithDescription(description);
    const int step = bitmap->bitsPerSample() == 16 ? 257 : 1;
    for (int y = 0; y < bitmap->pixelsHigh(); ++y) {
        for (int x = 0; x < bitmap->pixelsWide(); ++x) {
            const auto value = static_cast<std::uint16_t>((40 + 3 * x + 2 * y) * step);
            const auto opaque = static_cast<std::uint16_t>(255 * step);
            std::array<std::uint16_t, 5> samples{value, value, value, value, value};
            if (bitmap->hasAlpha())
                samples[static_cast<std::size_t>(colorSamplesOf(bitmap->colorSpaceName()))] = opaque;
            bitmap->setPixelAt(x, y, samples);
        }
    }
    return bitmap;
}

} // namespace

TEST(BitmapEncoding, TiffGivesTheSamplesOfEveryLayoutBack) {
    Random random(71);
    for (const NSBitmapDescription& d : allBitmapLayouts(7, 4)) {
        const auto bitmap = NSBitmapImageRep::bitmapWithDescription(d);
        fillAtRandom(random, *bitmap);
        const auto back = decoded(bitmap->TIFFRepresentation());
        ASSERT_NE(back, nullptr) << nameOf(d);
        EXPECT_EQ(back->bitsPerSample(), d.bitsPerSample);
        EXPECT_EQ(back->hasAlpha(), d.hasAlpha) << nameOf(d);
        EXPECT_LE(largestDifference(*bitmap, *back, d.bitsPerSample == 8 ? 255 : 65535), toleranceFor(d))
            << nameOf(d);
    }
}

TEST(BitmapEncoding, PngGivesTheSamplesOfEveryLayoutBack) {
    Random random(72);
    for (const NSBitmapDescription& d : allBitmapLayouts(7, 4)) {
        const auto bitmap = NSBitmapImageRep::bitmapWithDescription(d);
        fillAtRandom(random, *bitmap);
        const auto back = decoded(bitmap->representationUsingType(NSPNGFileType, {}));
        ASSERT_NE(back, nullptr) << nameOf(d);
        EXPECT_EQ(back->bitsPerSample(), d.bitsPerSample);
        EXPECT_LE(largestDifference(*bitmap, *back, d.bitsPerSample == 8 ? 255 : 65535), toleranceFor(d))
            << nameOf(d);
    }
}

TEST(BitmapEncoding, JpegShowsEveryLayoutInEightBitsWithoutAlpha) {
    for (const NSBitmapDescription& d : allBitmapLayouts(33, 21)) {
        const auto bitmap = gradient(d);
        if ((d.bitmapFormat & NSAlphaFirstBitmapFormat) != 0) continue; // the gradient's alpha would differ
        const auto back = decoded(
            bitmap->representationUsingType(NSJPEGFileType, {{std::string(NSImageCompressionFactor), 1.0}}));
        ASSERT_NE(back, nullptr) << nameOf(d);
        EXPECT_EQ(back->bitsPerSample(), 8);
        EXPECT_FALSE(back->hasAlpha());
        EXPECT_EQ(back->samplesPerPixel(), colorSamplesOf(d.colorSpaceName) == 1 ? 1 : 3) << nameOf(d);
        EXPECT_LE(largestDifference(*bitmap, *back, 255), 5) << nameOf(d);
    }
}

TEST(BitmapEncoding, JpegPutsTransparentPixelsOnBlack) {
    Grid grid(16, 16, {100, 50, 0, 128});
    const auto back = decoded(bitmapOf(grid)->representationUsingType(
        NSJPEGFileType, {{std::string(NSImageCompressionFactor), 1.0}}));
    ASSERT_NE(back, nullptr);
    const auto pixel = back->pixelAt(8, 8);
    EXPECT_NEAR(pixel[0], 100, 3);
    EXPECT_NEAR(pixel[1], 50, 3);
    EXPECT_NEAR(pixel[2], 0, 3);
}

TEST(BitmapEncoding, ALowerCompressionFactorMakesASmallerJpeg) {
    Random random(73);
    const auto bitmap = bitmapOf(random.grid(64, 64));
    const auto sizeAt = [&](NSImageProperty factor) {
        return bitmap
            ->representationUsingType(NSJPEGFileType, {{std::string(NSImageCompressionFactor), factor}})
            ->size();
    };
    EXPECT_LT(sizeAt(0.1), sizeAt(0.9));
    EXPECT_EQ(sizeAt(7.0), sizeAt(1.0));
    EXPECT_EQ(sizeAt(-1.0), sizeAt(0.0));
    EXPECT_GT(sizeAt(std::numeric_limits<double>::quiet_NaN()), 0U);
    EXPECT_GT(sizeAt(std::string("high")), 0U) << "a value of another type is not used";
}

TEST(BitmapEncoding, StraightColourIsStoredStraightInEveryOrder) {
    // A faint pixel whose straight colour would be lost by premultiplying in 8 bits.
    for (const unsigned format : {2U, 3U}) {
        for (const bool planar : {false, true}) {
            NSBitmapDescription d;
            d.pixelsWide = d.pixelsHigh = 1;
            d.bitmapFormat = format;
            d.isPlanar = planar;
            const auto bitmap = NSBitmapImageRep::bitmapWithDescription(d);
            if (format == 3U)
                bitmap->setPixelAt(0, 0, {2, 200, 90, 17});
            else
                bitmap->setPixelAt(0, 0, {200, 90, 17, 2});
            const auto png = bitmap->representationUsingType(NSPNGFileType, {});
            const auto straight = NSBitmapImageRep::bitmapWithDescription([] {
                NSBitmapDescription plain;
                plain.pixelsWide = plain.pixelsHigh = 1;
                plain.bitmapFormat = NSAlphaNonpremultipliedBitmapFormat;
                return plain;
            }());
            straight->setPixelAt(0, 0, {200, 90, 17, 2});
            EXPECT_EQ(png, straight->representationUsingType(NSPNGFileType, {})) << format << planar;
            EXPECT_EQ(bitmap->TIFFRepresentation(), straight->TIFFRepresentation()) << format << planar;
        }
    }
}

TEST(BitmapEncoding, SixteenBitRowsAtOddAddressesAreEncodedToo) {
    std::vector<std::uint8_t> memory(200, 0);
    for (std::size_t i = 0; i < memory.size(); ++i) memory[i] = static_cast<std::uint8_t>(i * 37);
    NSBitmapDescription d;
    d.pixelsWide = 5;
    d.pixelsHigh = 4;
    d.bitsPerSample = 16;
    d.samplesPerPixel = 3;
    d.hasAlpha = false;
    for (const std::size_t bytesPerRow : {30U, 31U}) {
        for (const std::size_t offset : {0U, 1U}) {
            d.bytesPerRow = bytesPerRow;
            const auto bitmap = NSBitmapImageRep::bitmapOverPlanes(d, {memory.data() + offset});
            for (const int type : {NSTIFFFileType, NSPNGFileType}) {
                const auto back = decoded(bitmap->representationUsingType(type, {}));
                ASSERT_NE(back, nullptr);
                EXPECT_EQ(largestDifference(*bitmap, *back, 65535), 0) << bytesPerRow << " from " << offset;
            }
        }
    }
}

TEST(BitmapEncoding, TheProfileGoesAlong) {
    const auto bitmap = bitmapOf(Grid(3, 3, red));
    const NSData profile = colorProfile();
    bitmap->setProperty(NSImageColorSyncProfileData, profile);
    for (const int type : {NSTIFFFileType, NSPNGFileType, NSJPEGFileType}) {
        const auto back = decoded(bitmap->representationUsingType(type, {}));
        const auto property = back->valueForProperty(NSImageColorSyncProfileData);
        ASSERT_TRUE(property.has_value()) << type;
        EXPECT_EQ(std::get<NSData>(*property), profile) << type;
    }
}

TEST(BitmapEncoding, TheDeclaredResolutionGoesAlongAndMakesTheSize) {
    const auto bitmap = bitmapOf(Grid(30, 20, red));
    bitmap->setProperty(NSImageResolutionX, 300.0);
    bitmap->setProperty(NSImageResolutionY, 300.0);
    for (const int type : {NSTIFFFileType, NSJPEGFileType}) {
        const auto back = decoded(bitmap->representationUsingType(type, {}));
        EXPECT_EQ(std::get<double>(*back->valueForProperty(NSImageResolutionX)), 300.0);
        EXPECT_EQ(back->size().width, 7.2F);
        EXPECT_EQ(back->size().height, 4.8F);
    }
    // PNG counts whole pixels a metre: 11811 instead of 11811.02.
    const auto png = decoded(bitmap->representationUsingType(NSPNGFileType, {}));
    EXPECT_NEAR(png->size().width, 7.2F, 1e-4);
    EXPECT_NEAR(png->size().height, 4.8F, 1e-4);
}

TEST(BitmapEncoding, ASizeOfOnesOwnGoesAlongAsResolution) {
    const auto bitmap = bitmapOf(Grid(30, 20, red));
    bitmap->setSize(NSMakeSize(15, 20)); // 144 and 72 pixels an inch
    const auto back = decoded(bitmap->TIFFRepresentation());
    EXPECT_TRUE(NSEqualSizes(back->size(), NSMakeSize(15, 20)));
    EXPECT_EQ(std::get<double>(*back->valueForProperty(NSImageResolutionX)), 144.0);
    EXPECT_EQ(std::get<double>(*back->valueForProperty(NSImageResolutionY)), 72.0);
    for (const float side : {0.0F, -5.0F, std::nanf(""), std::numeric_limits<float>::infinity()}) {
        bitmap->setSize(NSMakeSize(side, side));
        const auto without = decoded(bitmap->TIFFRepresentation());
        ASSERT_NE(without, nullptr);
        EXPECT_TRUE(NSEqualSizes(without->size(), NSMakeSize(30, 20))) << side;
    }
}

TEST(BitmapEncoding, ADecodedBitmapTellsWhereItComesFrom) {
    const auto back = decoded(bitmapOf(Grid(3, 2, red))->representationUsingType(NSPNGFileType, {}));
    EXPECT_EQ(std::get<std::string>(*back->valueForProperty(NSImageSourceFormat)), "PNG");
    EXPECT_EQ(std::get<int>(*back->valueForProperty(NSImageOrientation)), 1);
    EXPECT_EQ(back->valueForProperty(NSImageResolutionX), std::nullopt);
    EXPECT_EQ(back->valueForProperty(NSImageColorSyncProfileData), std::nullopt);
    EXPECT_TRUE(NSEqualSizes(back->size(), NSMakeSize(3, 2)));
    EXPECT_EQ(back->colorSpaceName(), NSCalibratedRGBColorSpace);
    EXPECT_EQ(back->bitmapFormat(), 0U);
    EXPECT_FALSE(back->isPlanar());
}

TEST(BitmapEncoding, EveryTypeGivesAPlainPictureBack) {
    const auto bitmap = bitmapOf(Grid(3, 2, red));
    for (const int type : {NSTIFFFileType, NSBMPFileType, NSGIFFileType, NSPNGFileType, NSJPEG2000FileType}) {
        const auto back =
            decoded(bitmap->representationUsingType(type, {{std::string(NSImageCompressionFactor), 1.0}}));
        ASSERT_NE(back, nullptr) << type;
        EXPECT_EQ(largestDifference(*bitmap, *back, 255), 0) << type;
    }
}

TEST(BitmapEncoding, SaysWhyATypeCannotBeWritten) {
    NSError error;
    EXPECT_EQ(bitmapOf(Grid(3, 2))->representationUsingType(99, {}, &error), std::nullopt);
    EXPECT_EQ(error.code, NSErrorCode::UnsupportedFormat);
    EXPECT_NE(error.message, "");
    EXPECT_EQ(bitmapOf(Grid(3, 2))->representationUsingType(-1, {}), std::nullopt);
}

TEST(BitmapEncoding, SaysWhyBytesCannotBeDecoded) {
    NSError error;
    const NSData nonsense{'n', 'o', 'n', 's', 'e', 'n', 's', 'e'};
    EXPECT_EQ(NSBitmapImageRep::imageRepWithData(nonsense, &error), nullptr);
    EXPECT_EQ(error.code, NSErrorCode::UnsupportedFormat);
    EXPECT_EQ(NSBitmapImageRep::imageRepWithData({}, &error), nullptr);
    NSData png = *bitmapOf(Grid(30, 20, red))->representationUsingType(NSPNGFileType, {});
    png.resize(png.size() / 2);
    EXPECT_EQ(NSBitmapImageRep::imageRepWithData(png, &error), nullptr);
    EXPECT_EQ(error.code, NSErrorCode::CorruptData);
}

TEST(BitmapEncoding, DecodesOnlyWithinThePictureLimits) {
    const NSData png = *bitmapOf(Grid(30, 20, red))->representationUsingType(NSPNGFileType, {});
    NSError error;
    {
        const LimitScope limits({599, 1U << 20});
        EXPECT_EQ(NSBitmapImageRep::imageRepWithData(png, &error), nullptr);
        EXPECT_EQ(error.code, NSErrorCode::TooLarge);
    }
    const LimitScope limits({600, 1U << 20});
    EXPECT_NE(NSBitmapImageRep::imageRepWithData(png), nullptr);
}
