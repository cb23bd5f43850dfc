#include "Tests/Platform/Codecs/LaterFixtures.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace Imaging::Platform {

namespace {

using namespace Fixtures;

constexpr const char* format = "JPEG XL";

RawJxl smallPicture(int bits, int samplesPerPixel) {
    RawJxl picture;
    picture.width = 21;
    picture.height = 13;
    picture.bits = bits;
    picture.samplesPerPixel = samplesPerPixel;
    return picture;
}

TEST(JxlCodec, KeepsGrayAndColourOfEightAndSixteenBits) {
    for (const int bits : {8, 16}) {
        for (const int perPixel : {1, 3}) {
            const Samples samples = pattern(21, 13, perPixel, (1U << bits) - 1);
            const NSData bytes = rawJxl(smallPicture(bits, perPixel), samples);
            EXPECT_EQ(codecForData(bytes)->formatName(), format);
            const DecodedPicture picture = decode(format, bytes);
            EXPECT_EQ(picture.header.bitsPerSample, bits);
            EXPECT_EQ(picture.header.color, perPixel == 1 ? SampleColor::White : SampleColor::RGB);
            EXPECT_EQ(samplesOf(picture), samples);
        }
    }
}

TEST(JxlCodec, MultipliesByAlpha) {
    RawJxl picture = smallPicture(8, 4);
    picture.width = 2;
    picture.height = 1;
    const Samples samples = {200, 100, 50, 51, 9, 8, 7, 255};
    EXPECT_EQ(samplesOf(decode(format, rawJxl(picture, samples))), (Samples{40, 20, 10, 51, 9, 8, 7, 255}));
}

TEST(JxlCodec, ReportsEveryOrientationAndTurnsNothing) {
    const Samples samples = pattern(21, 13, 3, 255);
    for (int orientation = 1; orientation <= 8; ++orientation) {
        RawJxl picture = smallPicture(8, 3);
        picture.orientation = orientation;
        const DecodedPicture decoded = decode(format, rawJxl(picture, samples));
        EXPECT_EQ(decoded.header.orientation, orientation);
        EXPECT_EQ(decoded.header.width, 21U);
        EXPECT_EQ(samplesOf(decoded), samples);
    }
}

TEST(JxlCodec, ReadsProfileAndResolution) {
    RawJxl picture = smallPicture(8, 3);
    picture.profile = sRGBProfile();
    picture.exif = exifRecord({true, {}, {{300, 1}}, 2});
    const NSData bytes = rawJxl(picture, pattern(21, 13, 3, 255));
    const PictureHeader header = readHeader(format, bytes);
    EXPECT_EQ(header.colorProfile, sRGBProfile());
    EXPECT_DOUBLE_EQ(header.resolutionX, 300);
    expectEqualHeaders(header, decode(format, bytes).header);
    // Where the file only states sRGB, the library makes a profile of it.
    EXPECT_FALSE(
        readHeader(format, rawJxl(smallPicture(8, 3), pattern(21, 13, 3, 255))).colorProfile.empty());
}

TEST(JxlCodec, RefusesSizesBeyondTheLimits) {
    const NSData bytes = rawJxl(smallPicture(8, 3), pattern(21, 13, 3, 255));
    EXPECT_EQ(refusalOfDecoding(format, bytes, {21 * 13 - 1, 1 << 20}).code, NSErrorCode::TooLarge);
    EXPECT_EQ(refusalOfDecoding(format, bytes, {1 << 20, 21 * 13 * 3 - 1}).code, NSErrorCode::TooLarge);
}

TEST(JxlCodec, CountsItsWorkingMemoryTowardsTheLimit) {
    RawJxl picture = smallPicture(8, 1);
    picture.width = picture.height = 1500;
    // 2.25 MB, and for three channels of 8 bytes 54 MB.
    const NSData bytes = rawJxl(picture, Samples(2'250'000, 9));
    EXPECT_EQ(refusalOfDecoding(format, bytes, {3'000'000, 50'000'000}).code, NSErrorCode::TooLarge);
    EXPECT_EQ(decode(format, bytes, {3'000'000, 60'000'000}).pixels.data()[2'249'999], 9);
}

TEST(JxlCodec, IsOnlyRead) {
    const SourcePicture picture(1, 1, 8, SampleColor::White, false, {1});
    EXPECT_EQ(refusalOf([&] { encode(format, picture); }).code, NSErrorCode::UnsupportedFormat);
}

} // namespace

} // namespace Imaging::Platform
