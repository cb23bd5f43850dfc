#include "Platform/Codecs/ColorProfileName.h"
#include "Tests/Platform/Codecs/CodecFixtures.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <tiffio.h>

namespace Imaging::Platform {

namespace {

using namespace Fixtures;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr std::uint32_t width = 13;
constexpr std::uint32_t height = 7;

struct Layout {
    int bits;
    SampleColor color;
    bool hasAlpha;
    int samplesPerPixel() const { return (color == SampleColor::RGB ? 3 : 1) + (hasAlpha ? 1 : 0); }
    std::uint32_t max() const { return (1U << bits) - 1; }
};

std::vector<Layout> allLayouts() {
    std::vector<Layout> layouts;
    for (const int bits : {8, 16}) {
        for (const SampleColor color : {SampleColor::White, SampleColor::Black, SampleColor::RGB}) {
            for (const bool hasAlpha : {false, true}) layouts.push_back({bits, color, hasAlpha});
        }
    }
    return layouts;
}

TEST(TiffEncoding, KeepsEveryLayoutBitForBit) {
    for (const Layout& layout : allLayouts()) {
        // Colours above their alpha are kept, too: nothing is recomputed.
        const Samples samples = pattern(width, height, layout.samplesPerPixel(), layout.max());
        for (const std::size_t padding : {0, 5}) {
            const SourcePicture picture(width, height, layout.bits, layout.color, layout.hasAlpha, samples,
                                        padding);
            const NSData bytes = encode("TIFF", picture);
            const DecodedPicture decoded = decode("TIFF", bytes);
            EXPECT_EQ(decoded.header.bitsPerSample, layout.bits);
            EXPECT_EQ(decoded.header.color, layout.color);
            EXPECT_EQ(decoded.header.hasAlpha, layout.hasAlpha);
            EXPECT_EQ(samplesOf(decoded), samples);
        }
    }
}

TEST(TiffEncoding, SaysInItsTagsWhatItHolds) {
    for (const Layout& layout : allLayouts()) {
        const SourcePicture picture(width, height, layout.bits, layout.color, layout.hasAlpha,
                                    pattern(width, height, layout.samplesPerPixel(), layout.max()));
        const NSData bytes = encode("TIFF", picture);
        const int photometric = layout.color == SampleColor::RGB     ? PHOTOMETRIC_RGB
                                : layout.color == SampleColor::White ? PHOTOMETRIC_MINISBLACK
                                                                     : PHOTOMETRIC_MINISWHITE;
        EXPECT_EQ(tiffTag(bytes, TIFFTAG_PHOTOMETRIC, -1), photometric);
        EXPECT_EQ(tiffTag(bytes, TIFFTAG_SAMPLESPERPIXEL, -1), layout.samplesPerPixel());
        EXPECT_EQ(tiffTag(bytes, TIFFTAG_BITSPERSAMPLE, -1), layout.bits);
        EXPECT_EQ(tiffTag(bytes, TIFFTAG_ORIENTATION, -1), ORIENTATION_TOPLEFT);
        if (layout.hasAlpha) {
            EXPECT_THAT(tiffExtraSamples(bytes), ElementsAre(EXTRASAMPLE_ASSOCALPHA));
        } else {
            EXPECT_THAT(tiffExtraSamples(bytes), IsEmpty());
        }
    }
}

TEST(TiffEncoding, StoresStraightColoursAsUnassociated) {
    SourcePicture straight(1, 1, 8, SampleColor::RGB, true, {200, 100, 50, 51});
    straight.premultiplied = false;
    const NSData bytes = encode("TIFF", straight);
    EXPECT_THAT(tiffExtraSamples(bytes), ElementsAre(EXTRASAMPLE_UNASSALPHA));
    EXPECT_EQ(samplesOf(decode("TIFF", bytes)), (Samples{40, 20, 10, 51})); // a fifth of each
}

TEST(TiffEncoding, WritesResolutionAndProfileAndIsUpright) {
    SourcePicture picture(width, height, 16, SampleColor::RGB, false, pattern(width, height, 3, 65535));
    picture.header.resolutionX = 300;
    picture.header.resolutionY = 72.25;
    picture.header.colorProfile = sRGBProfile();
    picture.header.orientation = 8;
    const PictureHeader header = readHeader("TIFF", encode("TIFF", picture));
    EXPECT_DOUBLE_EQ(header.resolutionX, 300);
    EXPECT_DOUBLE_EQ(header.resolutionY, 72.25);
    EXPECT_EQ(header.colorProfile, picture.header.colorProfile);
    EXPECT_EQ(header.orientation, 1);
    const SourcePicture plain(width, height, 8, SampleColor::RGB, false, pattern(width, height, 3, 255));
    EXPECT_EQ(readHeader("TIFF", encode("TIFF", plain)).resolutionX, 0);
    EXPECT_EQ(colorProfileName(readHeader("TIFF", encode("TIFF", plain)).colorProfile), "sRGB IEC61966-2.1");
}

TEST(TiffEncoding, WritesPicturesOfSeveralStrips) {
    // 3 MB in strips of at most one, with rows left over for a fourth.
    const Samples samples = pattern(1003, 1001, 3, 255);
    for (const std::size_t padding : {0, 3}) {
        const SourcePicture picture(1003, 1001, 8, SampleColor::RGB, false, samples, padding);
        EXPECT_EQ(samplesOf(decode("TIFF", encode("TIFF", picture))), samples);
    }
}

TEST(TiffEncoding, WritesRowsLargerThanAStrip) {
    const Samples samples = pattern(1'100'000, 2, 1, 255);
    const SourcePicture picture(1'100'000, 2, 8, SampleColor::White, false, samples);
    EXPECT_EQ(samplesOf(decode("TIFF", encode("TIFF", picture))), samples);
}

} // namespace

} // namespace Imaging::Platform
