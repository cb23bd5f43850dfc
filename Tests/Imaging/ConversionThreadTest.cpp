// Conversions of pictures that are large enough to be split over the processor's cores.

#include "Imaging/BitmapFormats.h"
#include "Platform/Graphics/Pictures/BitmapPixels.h"
#include "Tests/Imaging/ConversionFixtures.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <thread>
#include <vector>

using namespace ImagingTests;

namespace {

constexpr int wide = 1500;
constexpr int high = 1001; // bands of unequal length

/// Red, green and blue that tell each pixel from its neighbours and its row from the others.
std::array<std::uint8_t, 3> colorAt(int x, int y) {
    return {static_cast<std::uint8_t>(x), static_cast<std::uint8_t>(y),
            static_cast<std::uint8_t>(x / 256 * 16 + y / 256)};
}

Bitmap largeBitmap() {
    const Bitmap bitmap = Imaging::bitmapWithSize({wide, high}, Imaging::IMGBitmapFormatRGB);
    std::uint8_t* bytes = bitmap->bitmapData();
    for (int y = 0; y < high; ++y) {
        for (int x = 0; x < wide; ++x, bytes += 3) {
            const auto color = colorAt(x, y);
            std::copy(color.begin(), color.end(), bytes);
        }
    }
    return bitmap;
}

Bitmap toRGBA(const Bitmap& bitmap, float width, float height) {
    return Imaging::bitmapRepresentationWithSize(*bitmap, {width, height}, 8, 4, true, false, rgb, true);
}

/// Whether the bytes of a swizzled bitmap are those of the pixel that lies there.
testing::AssertionResult holdsColors(const Bitmap& swizzled, int rowsAbove) {
    const std::uint8_t* bytes = swizzled->bitmapData();
    for (int y = 0; y < swizzled->pixelsHigh(); ++y) {
        for (int x = 0; x < swizzled->pixelsWide(); ++x, bytes += 4) {
            std::array<std::uint8_t, 4> expected{};
            if (y >= rowsAbove && x < wide) {
                const auto color = colorAt(x, y - rowsAbove);
                expected = {255, color[0], color[1], color[2]};
            }
            if (!std::equal(expected.begin(), expected.end(), bytes)) {
                return testing::AssertionFailure() << "another pixel at (" << x << ", " << y << ")";
            }
        }
    }
    return testing::AssertionSuccess();
}

} // namespace

TEST(LargeConversion, PutsEveryPixelInItsPlace) {
    const Bitmap source = largeBitmap();
    EXPECT_TRUE(holdsColors(toRGBA(source, wide, high), 0));
}

TEST(LargeConversion, LeavesTheTopAndTheRightOfALargerSizeEmpty) {
    const Bitmap source = largeBitmap();
    EXPECT_TRUE(holdsColors(toRGBA(source, wide + 13, high + 700), 700));
}

TEST(LargeConversion, CutsAtTheTop) {
    const Bitmap source = largeBitmap();
    EXPECT_TRUE(holdsColors(toRGBA(source, wide - 1, high - 1), -1));
}

TEST(LargeConversion, RunsOnSeveralThreadsAtOnce) {
    const Bitmap source = largeBitmap();
    std::vector<Bitmap> results(4);
    std::vector<std::thread> threads;
    for (Bitmap& result : results) {
        threads.emplace_back([&source, &result] { result = toRGBA(source, wide, high); });
    }
    for (std::thread& thread : threads) thread.join();
    for (const Bitmap& result : results) EXPECT_TRUE(holdsColors(result, 0));
}

TEST(LargeConversion, MakesTheWordsThatAreDrawn) {
    const Bitmap source = largeBitmap();
    const Imaging::Platform::CairoSurface surface = Imaging::Platform::pixelSurfaceOf(
        Imaging::Platform::sourcePixels(*source), Imaging::Platform::pixelLayout(*source));
    const unsigned char* const data = cairo_image_surface_get_data(surface.get());
    const int stride = cairo_image_surface_get_stride(surface.get());
    for (int y = 0; y < high; ++y) {
        const auto* const words =
            reinterpret_cast<const std::uint32_t*>(data + static_cast<std::ptrdiff_t>(y) * stride);
        for (int x = 0; x < wide; ++x) {
            const auto color = colorAt(x, y);
            ASSERT_EQ(words[x], 0xFF000000U + color[0] * 65536U + color[1] * 256U + color[2])
                << x << ", " << y;
        }
    }
}
