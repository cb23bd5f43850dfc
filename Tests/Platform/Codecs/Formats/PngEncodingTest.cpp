// Also tests: Platform/Codecs/Support/StraightRows.cpp

#include "Tests/Platform/Codecs/CodecFixtures.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace Imaging::Platform {

namespace {

using namespace Fixtures;

constexpr std::uint32_t width = 13;
constexpr std::uint32_t height = 7;

int samplesPerPixel(SampleColor color, bool hasAlpha) {
    return (color == SampleColor::RGB ? 3 : 1) + (hasAlpha ? 1 : 0);
}

/// The samples as they are in the file, found with the chunk's bytes: depth and colour type of IHDR.
std::pair<int, int> depthAndType(const NSData& bytes) { return {bytes[8 + 8 + 8], bytes[8 + 8 + 9]}; }

TEST(PngEncoding, KeepsOpaquePicturesBitForBit) {
    for (const int bits : {8, 16}) {
        for (const SampleColor color : {SampleColor::White, SampleColor::RGB}) {
            const Samples samples = pattern(width, height, samplesPerPixel(color, false), (1U << bits) - 1);
            for (const std::size_t padding : {0, 3}) {
                const SourcePicture picture(width, height, bits, color, false, samples, padding);
                const NSData bytes = encode("PNG", picture);
                EXPECT_EQ(depthAndType(bytes), std::pair(bits, color == SampleColor::RGB ? 2 : 0));
                const DecodedPicture decoded = decode("PNG", bytes);
                EXPECT_EQ(decoded.header.bitsPerSample, bits);
                EXPECT_EQ(decoded.header.color, color);
                EXPECT_EQ(samplesOf(decoded), samples);
            }
        }
    }
}

TEST(PngEncoding, GivesPremultipliedPicturesBackBitForBit) {
    for (const int bits : {8, 16}) {
        for (const SampleColor color : {SampleColor::White, SampleColor::RGB}) {
            const Samples samples =
                premultipliedPattern(width, height, samplesPerPixel(color, true), (1U << bits) - 1);
            const SourcePicture picture(width, height, bits, color, true, samples, 1);
            const NSData bytes = encode("PNG", picture);
            EXPECT_EQ(depthAndType(bytes), std::pair(bits, color == SampleColor::RGB ? 6 : 4));
            const DecodedPicture decoded = decode("PNG", bytes);
            EXPECT_TRUE(decoded.header.hasAlpha);
            EXPECT_EQ(samplesOf(decoded), samples);
        }
    }
}

TEST(PngEncoding, IsStableAfterTheFirstRound) {
    const Samples samples = pattern(width, height, 4, 255); // colours above their alpha, too
    const SourcePicture picture(width, height, 8, SampleColor::RGB, true, samples);
    const NSData once = encode("PNG", picture);
    const DecodedPicture decoded = decode("PNG", once);
    const SourcePicture again(width, height, 8, SampleColor::RGB, true, samplesOf(decoded));
    EXPECT_EQ(samplesOf(decode("PNG", encode("PNG", again))), samplesOf(decoded));
}

TEST(PngEncoding, StoresStraightColoursAsTheyAre) {
    SourcePicture straight(2, 1, 8, SampleColor::RGB, true, {200, 100, 50, 51, 9, 8, 7, 0});
    straight.premultiplied = false;
    // 200 * 51 / 255 = 40, 20 and 10: only unmultiplied storage gives these back exactly.
    EXPECT_EQ(samplesOf(decode("PNG", encode("PNG", straight))), (Samples{40, 20, 10, 51, 0, 0, 0, 0}));
    const SourcePicture premultiplied(2, 1, 8, SampleColor::RGB, true, {40, 20, 10, 51, 0, 0, 0, 0});
    SourcePicture same(2, 1, 8, SampleColor::RGB, true, {200, 100, 50, 51, 0, 0, 0, 0});
    same.premultiplied = false;
    EXPECT_EQ(encode("PNG", premultiplied), encode("PNG", same));
}

TEST(PngEncoding, InvertsGrayWhoseZeroIsWhite) {
    const SourcePicture plain(3, 1, 16, SampleColor::Black, false, {0, 65535, 1000});
    const DecodedPicture decoded = decode("PNG", encode("PNG", plain));
    EXPECT_EQ(decoded.header.color, SampleColor::White);
    EXPECT_EQ(samplesOf(decoded), (Samples{65535, 0, 64535}));
    // 20 of 51 dark is 100 of 255; 155 is left, and premultiplied again 31.
    const SourcePicture clear(2, 1, 8, SampleColor::Black, true, {20, 51, 0, 0});
    EXPECT_EQ(samplesOf(decode("PNG", encode("PNG", clear))), (Samples{31, 51, 0, 0}));
}

TEST(PngEncoding, WritesResolutionAndProfileAndIsUpright) {
    SourcePicture picture(width, height, 8, SampleColor::RGB, false, pattern(width, height, 3, 255));
    picture.header.resolutionX = 254;
    picture.header.resolutionY = 300;
    picture.header.colorProfile = sRGBProfile();
    picture.header.orientation = 3;
    const PictureHeader header = readHeader("PNG", encode("PNG", picture));
    EXPECT_DOUBLE_EQ(header.resolutionX, 254);        // 10000 pixels per metre
    EXPECT_NEAR(header.resolutionY, 300, 0.0254 / 2); // whole pixels per metre
    EXPECT_EQ(header.colorProfile, picture.header.colorProfile);
    EXPECT_EQ(header.orientation, 1);
    SourcePicture gray(width, height, 8, SampleColor::White, false, pattern(width, height, 1, 255));
    gray.header.colorProfile = grayProfile();
    EXPECT_EQ(readHeader("PNG", encode("PNG", gray)).colorProfile, grayProfile());
    EXPECT_EQ(readHeader("PNG", encode("PNG", gray)).resolutionX, 0);
}

TEST(PngEncoding, LeavesOutProfilesForOtherColoursAndDamagedOnes) {
    SourcePicture picture(1, 1, 8, SampleColor::White, false, {5});
    picture.header.colorProfile = sRGBProfile();
    EXPECT_TRUE(readHeader("PNG", encode("PNG", picture)).colorProfile.empty());
    picture.header.colorProfile = grayProfile();
    picture.header.colorProfile.resize(picture.header.colorProfile.size() - 100);
    const NSData bytes = encode("PNG", picture);
    EXPECT_TRUE(readHeader("PNG", bytes).colorProfile.empty());
    EXPECT_EQ(samplesOf(decode("PNG", bytes)), Samples{5});
}

TEST(PngEncoding, WritesRowsOfMoreThanAMillionPixels) {
    const Samples samples(1'200'000, 77);
    const SourcePicture picture(1'200'000, 1, 8, SampleColor::White, false, samples);
    EXPECT_EQ(samplesOf(decode("PNG", encode("PNG", picture))), samples);
}

} // namespace

} // namespace Imaging::Platform
