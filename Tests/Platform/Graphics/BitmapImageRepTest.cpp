// Also tests: Platform/Graphics/FocusedBitmap.cpp

#include "Platform/Graphics/BitmapImageRep.h"

#include "Platform/Foundation/Exception.h"
#include "Tests/Platform/Pixels/BitmapLayouts.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <string>
#include <vector>

using namespace Imaging::Platform;
using namespace Pixels;

namespace {

NSBitmapDescription sized(std::int64_t width, std::int64_t height) {
    NSBitmapDescription description;
    description.pixelsWide = width;
    description.pixelsHigh = height;
    return description;
}

bool isAccepted(const NSBitmapDescription& description) {
    return NSBitmapImageRep::bitmapWithDescription(description) != nullptr;
}

/// The largest distance between what a picture with the bitmap shows and what the samples mean, in 255ths.
double largestErrorShown(const std::shared_ptr<NSBitmapImageRep>& bitmap) {
    const auto width = static_cast<int>(bitmap->pixelsWide());
    const auto height = static_cast<int>(bitmap->pixelsHigh());
    NSImage image(bitmap->size());
    image.addRepresentation(bitmap);
    const Grid shown = shownBy(image, width, height);
    double largest = 0;
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            const Color exact = meaningOf(*bitmap, x, y);
            const Color actual = colorOf(shown.at(x, y));
            for (std::size_t i = 0; i < 4; ++i) {
                largest = std::max(largest, std::abs(exact[i] - actual[i]) * 255);
            }
        }
    }
    return largest;
}

} // namespace

TEST(BitmapImageRep, AcceptsExactlyTheLayoutsThatMakeSense) {
    for (const std::string_view space : colorSpaceNames) {
        for (const int bits : {-8, 0, 1, 2, 4, 8, 12, 16, 32}) {
            for (int samples = -1; samples <= 7; ++samples) {
                for (const bool alpha : {false, true}) {
                    for (const bool planar : {false, true}) {
                        NSBitmapDescription d = sized(3, 2);
                        d.colorSpaceName = space;
                        d.bitsPerSample = bits;
                        d.samplesPerPixel = samples;
                        d.hasAlpha = alpha;
                        d.isPlanar = planar;
                        const bool expected = (bits == 8 || bits == 16) && samples <= 5 &&
                                              samples >= colorSamplesOf(space) + (alpha ? 1 : 0);
                        EXPECT_EQ(isAccepted(d), expected) << nameOf(d);
                    }
                }
            }
        }
    }
}

TEST(BitmapImageRep, RefusesSizesPaddingAndNamesThatMakeNoSense) {
    EXPECT_FALSE(isAccepted(sized(0, 1)));
    EXPECT_FALSE(isAccepted(sized(1, 0)));
    EXPECT_FALSE(isAccepted(sized(-1, 5)));
    EXPECT_FALSE(isAccepted(sized(std::numeric_limits<std::int64_t>::min(), 1)));
    NSBitmapDescription d = sized(3, 2);
    d.bytesPerRow = 11;
    EXPECT_FALSE(isAccepted(d)) << "a row shorter than its pixels";
    d.bytesPerRow = 12;
    EXPECT_TRUE(isAccepted(d));
    d = sized(3, 2);
    d.bitsPerPixel = 24;
    EXPECT_FALSE(isAccepted(d)) << "a pixel shorter than its samples";
    d.bitsPerPixel = 36;
    EXPECT_FALSE(isAccepted(d)) << "a pixel of no whole bytes";
    d.bitsPerPixel = -32;
    EXPECT_FALSE(isAccepted(d));
    d.bitsPerPixel = 40;
    EXPECT_TRUE(isAccepted(d));
    d.bytesPerRow = 14;
    EXPECT_FALSE(isAccepted(d)) << "a row shorter than its padded pixels";
    d = sized(3, 2);
    for (const std::string_view name : {"", "NSCalibratedRGBColorSpac", "nscalibratedrgbcolorspace", "RGB"}) {
        d.colorSpaceName = name;
        EXPECT_FALSE(isAccepted(d)) << name;
    }
}

TEST(BitmapImageRep, RefusesWhatIsBeyondThePictureLimitsAndSizesThatOverflow) {
    constexpr std::int64_t large = std::numeric_limits<std::int64_t>::max();
    EXPECT_FALSE(isAccepted(sized(large, large)));
    EXPECT_FALSE(isAccepted(sized(large / 4, 1)));
    EXPECT_FALSE(isAccepted(sized(1, large)));
    NSBitmapDescription wideRows = sized(1, 3);
    wideRows.bytesPerRow = std::numeric_limits<std::size_t>::max() / 2;
    EXPECT_FALSE(isAccepted(wideRows));
    const LimitScope limits({1000, 3000});
    EXPECT_TRUE(isAccepted(sized(10, 75)));
    EXPECT_FALSE(isAccepted(sized(10, 76))) << "3040 bytes";
    NSBitmapDescription gray = sized(10, 100);
    gray.samplesPerPixel = 1;
    gray.hasAlpha = false;
    gray.colorSpaceName = NSCalibratedWhiteColorSpace;
    EXPECT_TRUE(isAccepted(gray));
    gray.pixelsHigh = 101;
    EXPECT_FALSE(isAccepted(gray)) << "1010 pixels";
    NSBitmapDescription planar = sized(10, 75);
    planar.isPlanar = true;
    EXPECT_TRUE(isAccepted(planar));
    planar.bytesPerRow = 11;
    EXPECT_FALSE(isAccepted(planar)) << "four planes of 825 bytes";
}

TEST(BitmapImageRep, FillsInWhatTheDescriptionLeavesOpen) {
    NSBitmapDescription d = sized(5, 3);
    const auto meshed = NSBitmapImageRep::bitmapWithDescription(d);
    EXPECT_EQ(meshed->bytesPerRow(), 20U);
    EXPECT_EQ(meshed->bitsPerPixel(), 32);
    EXPECT_EQ(meshed->numberOfPlanes(), 1);
    EXPECT_EQ(meshed->bitmapDataPlanes()[0], meshed->bitmapData());
    EXPECT_EQ(meshed->bitmapDataPlanes()[1], nullptr);
    d.isPlanar = true;
    d.bitsPerSample = 16;
    const auto planar = NSBitmapImageRep::bitmapWithDescription(d);
    EXPECT_EQ(planar->bytesPerRow(), 10U);
    EXPECT_EQ(planar->bitsPerPixel(), 16);
    EXPECT_EQ(planar->numberOfPlanes(), 4);
    for (std::size_t i = 1; i < 4; ++i) {
        EXPECT_EQ(planar->bitmapDataPlanes()[i] - planar->bitmapDataPlanes()[i - 1], 30);
    }
    EXPECT_EQ(planar->bitmapDataPlanes()[4], nullptr);
}

TEST(BitmapImageRep, RemembersItsDescription) {
    const std::string name(NSDeviceWhiteColorSpace);
    NSBitmapDescription d = sized(5, 3);
    std::shared_ptr<NSBitmapImageRep> bitmap;
    {
        const std::string passing = name;
        d.colorSpaceName = passing;
        d.samplesPerPixel = 2;
        d.bitmapFormat = NSAlphaFirstBitmapFormat;
        bitmap = NSBitmapImageRep::bitmapWithDescription(d);
    }
    EXPECT_EQ(bitmap->colorSpaceName(), name); // the caller's characters are gone
    EXPECT_EQ(bitmap->pixelsWide(), 5);
    EXPECT_EQ(bitmap->pixelsHigh(), 3);
    EXPECT_EQ(bitmap->samplesPerPixel(), 2);
    EXPECT_EQ(bitmap->bitsPerSample(), 8);
    EXPECT_EQ(bitmap->bitmapFormat(), NSAlphaFirstBitmapFormat);
    EXPECT_TRUE(bitmap->hasAlpha());
    EXPECT_FALSE(bitmap->isPlanar());
    EXPECT_TRUE(NSEqualSizes(bitmap->size(), NSMakeSize(5, 3)));
}

TEST(BitmapImageRep, BeginsWithAllBytesZeroPaddingIncluded) {
    NSBitmapDescription d = sized(7, 5);
    d.bytesPerRow = 41;
    const auto bitmap = NSBitmapImageRep::bitmapWithDescription(d);
    const std::vector<std::uint8_t> zeros(std::size_t{41} * 5);
    EXPECT_EQ(std::memcmp(bitmap->bitmapData(), zeros.data(), zeros.size()), 0);
}

TEST(BitmapImageRep, OnUninitialisedPixelsIsDescribedAsAnyOther) {
    NSBitmapDescription d = sized(5, 3);
    d.samplesPerPixel = 3;
    d.hasAlpha = false;
    const auto bitmap = NSBitmapImageRep::bitmapWithUninitialisedPixels(d);
    ASSERT_NE(bitmap, nullptr);
    EXPECT_EQ(bitmap->bytesPerRow(), 15U);
    EXPECT_EQ(bitmap->bitsPerPixel(), 24);
    std::memset(bitmap->bitmapData(), 0x5A, 45); // the memory is the bitmap's own
    EXPECT_EQ(bitmap->pixelAt(4, 2), (std::array<std::uint16_t, 5>{0x5A, 0x5A, 0x5A, 0, 0}));
    d.samplesPerPixel = 2;
    EXPECT_EQ(NSBitmapImageRep::bitmapWithUninitialisedPixels(d), nullptr);
    const LimitScope limits({.maximumPixels = 14, .maximumBytes = 1000});
    d.samplesPerPixel = 3;
    EXPECT_EQ(NSBitmapImageRep::bitmapWithUninitialisedPixels(d), nullptr);
}

TEST(BitmapImageRep, PixelsAreCountedFromTheTopLeftAndReadInStoredOrder) {
    NSBitmapDescription d = sized(3, 2);
    d.bitsPerSample = 16;
    d.bitsPerPixel = 72;
    d.bytesPerRow = 29;
    const auto bitmap = NSBitmapImageRep::bitmapWithDescription(d);
    bitmap->setPixelAt(2, 1, {0x0102, 0x0304, 0x0506, 0x0708, 0xFFFF});
    const std::array<std::uint16_t, 4> expected{0x0102, 0x0304, 0x0506, 0x0708};
    EXPECT_EQ(std::memcmp(bitmap->bitmapData() + 29 + 18, expected.data(), 8), 0);
    EXPECT_EQ(bitmap->bitmapData()[29 + 18 + 8], 0) << "padding was written";
    EXPECT_EQ(bitmap->pixelAt(2, 1), (std::array<std::uint16_t, 5>{0x0102, 0x0304, 0x0506, 0x0708, 0}));
    for (const auto& [x, y] : std::vector<std::pair<int, int>>{{-1, 0}, {0, -1}, {3, 0}, {0, 2}}) {
        EXPECT_THROW(bitmap->pixelAt(x, y), NSException);
        EXPECT_THROW(bitmap->setPixelAt(x, y, {}), NSException);
    }
}

TEST(BitmapImageRep, WorksOnTheCallersMemoryInPlace) {
    std::vector<std::uint8_t> memory(2 * 3 * 4, 9);
    {
        const auto bitmap = NSBitmapImageRep::bitmapOverPlanes(sized(2, 3), {memory.data()});
        ASSERT_NE(bitmap, nullptr);
        EXPECT_EQ(bitmap->bitmapData(), memory.data());
        bitmap->setPixelAt(1, 2, {1, 2, 3, 4});
        memory[0] = 77;
        EXPECT_EQ(bitmap->pixelAt(0, 0)[0], 77);
    }
    EXPECT_EQ(memory[23], 4); // still there, and not freed
    EXPECT_EQ(NSBitmapImageRep::bitmapOverPlanes(sized(2, 3), {}), nullptr);
    EXPECT_EQ(NSBitmapImageRep::bitmapOverPlanes(sized(0, 3), {memory.data()}), nullptr);
}

TEST(BitmapImageRep, NeedsAPlaneForEverySampleOfAPlanarLayout) {
    std::array<std::vector<std::uint8_t>, 4> memory;
    NSBitmapImageRep::Planes planes{};
    for (std::size_t i = 0; i < 4; ++i) {
        memory[i].assign(6, static_cast<std::uint8_t>(i + 1));
        planes[i] = memory[i].data();
    }
    NSBitmapDescription d = sized(2, 3);
    d.isPlanar = true;
    const auto bitmap = NSBitmapImageRep::bitmapOverPlanes(d, planes);
    ASSERT_NE(bitmap, nullptr);
    EXPECT_EQ(bitmap->pixelAt(1, 2), (std::array<std::uint16_t, 5>{1, 2, 3, 4, 0}));
    planes[3] = nullptr;
    EXPECT_EQ(NSBitmapImageRep::bitmapOverPlanes(d, planes), nullptr);
}

TEST(BitmapImageRep, EveryLayoutIsDrawnAsItsSamplesAreMeant) {
    Random random(61);
    int count = 0;
    for (const NSBitmapDescription& d : allBitmapLayouts(9, 5)) {
        const auto bitmap = NSBitmapImageRep::bitmapWithDescription(d);
        ASSERT_NE(bitmap, nullptr) << nameOf(d);
        fillAtRandom(random, *bitmap);
        // Samples of 16 bits are rounded to 8 first, then each product once: alpha 0.5, inks up to 2.
        EXPECT_LE(largestErrorShown(bitmap), d.bitsPerSample == 8 ? 1.01 : 2.51) << nameOf(d);
        ++count;
    }
    EXPECT_GT(count, 300);
}

TEST(BitmapImageRep, KeepsPropertiesByName) {
    const auto bitmap = NSBitmapImageRep::bitmapWithDescription(sized(1, 1));
    EXPECT_EQ(bitmap->valueForProperty(NSImageResolutionX), std::nullopt);
    bitmap->setProperty(NSImageResolutionX, 150.0);
    bitmap->setProperty("mine", std::string("value"));
    EXPECT_EQ(std::get<double>(*bitmap->valueForProperty(NSImageResolutionX)), 150.0);
    bitmap->setProperty(NSImageResolutionX, 300.0);
    EXPECT_EQ(std::get<double>(*bitmap->valueForProperty(NSImageResolutionX)), 300.0);
    EXPECT_EQ(bitmap->properties().size(), 2U);
}

TEST(BitmapImageRep, CopiesWhatWasDrawnInARectangleOfTheContext) {
    Random random(62);
    const Grid content = random.grid(12, 10);
    Canvas canvas(content);
    const auto bitmap = NSBitmapImageRep::bitmapWithFocusedViewRect(NSMakeRect(2, 3, 5, 4));
    ASSERT_NE(bitmap, nullptr);
    EXPECT_EQ(bitmap->colorSpaceName(), NSCalibratedRGBColorSpace);
    Grid expected(5, 4);
    for (int y = 0; y < 4; ++y) {
        for (int x = 0; x < 5; ++x) expected.at(x, 3 - y) = content.above(2 + x, 3 + y);
    }
    EXPECT_TRUE(areAlike(gridOf(*bitmap), expected));
}

TEST(BitmapImageRep, CopiesTheContextsOwnPixelsWithEdgesRoundedAndCutAtItsEnds) {
    Random random(63);
    const Grid content = random.grid(12, 10);
    Canvas canvas(content);
    NSAffineTransform doubled;
    doubled.scaleXBy(2, 2);
    canvas.context().concat(doubled);
    const auto inner = NSBitmapImageRep::bitmapWithFocusedViewRect(NSMakeRect(1.1F, 0.9F, 2, 3));
    ASSERT_NE(inner, nullptr); // 2.2 to 6.2 and 1.8 to 7.8
    EXPECT_EQ(inner->pixelsWide(), 4);
    EXPECT_EQ(inner->pixelsHigh(), 6);
    EXPECT_EQ(gridOf(*inner).above(0, 0), content.above(2, 2));
    const auto outer = NSBitmapImageRep::bitmapWithFocusedViewRect(NSMakeRect(4, -3, 100, 5));
    ASSERT_NE(outer, nullptr);
    EXPECT_EQ(outer->pixelsWide(), 4);
    EXPECT_EQ(outer->pixelsHigh(), 4);
    EXPECT_EQ(gridOf(*outer).above(3, 3), content.above(11, 3));
}

TEST(BitmapImageRep, HasNothingToCopyWithoutPixelsInTheRectangle) {
    EXPECT_EQ(NSBitmapImageRep::bitmapWithFocusedViewRect(NSMakeRect(0, 0, 5, 5)), nullptr);
    Canvas canvas(8, 8, white);
    const float infinity = std::numeric_limits<float>::infinity();
    const float notANumber = std::nanf("");
    for (const NSRect rect : {NSMakeRect(2, 2, 0, 5), NSMakeRect(2, 2, -3, 5), NSMakeRect(20, 2, 5, 5),
                              NSMakeRect(2, -9, 5, 5), NSMakeRect(2.1F, 2.1F, 0.2F, 0.2F),
                              NSMakeRect(notANumber, 2, 5, 5), NSMakeRect(2, notANumber, 5, 5),
                              NSMakeRect(2, 2, notANumber, 5), NSMakeRect(-infinity, 0, infinity, 5)}) {
        EXPECT_EQ(NSBitmapImageRep::bitmapWithFocusedViewRect(rect), nullptr);
    }
    canvas.context().concat(NSAffineTransform({0, 0, 0, 0, 0, 0}));
    EXPECT_EQ(NSBitmapImageRep::bitmapWithFocusedViewRect(NSMakeRect(0, 0, 5, 5)), nullptr);
}

TEST(BitmapImageRep, CopiesFromWithinAGroupOfTheCallersContext) {
    Random random(64);
    const Grid content = random.grid(10, 10);
    Canvas canvas(10, 10);
    cairo_rectangle(canvas.cairo(), 4, 3, 5, 5);
    cairo_clip(canvas.cairo());
    cairo_push_group(canvas.cairo());
    imageOf(content)->drawInRect(NSMakeRect(0, 0, 10, 10), NSZeroRect, NSCompositeCopy, 1);
    const auto bitmap = NSBitmapImageRep::bitmapWithFocusedViewRect(NSMakeRect(5, 4, 2, 3));
    cairo_pattern_destroy(cairo_pop_group(canvas.cairo()));
    ASSERT_NE(bitmap, nullptr);
    for (int y = 0; y < 3; ++y) {
        for (int x = 0; x < 2; ++x) EXPECT_EQ(gridOf(*bitmap).above(x, y), content.above(5 + x, 4 + y));
    }
}
