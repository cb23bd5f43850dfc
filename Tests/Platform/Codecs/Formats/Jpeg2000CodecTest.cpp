// Also tests: Platform/Codecs/Formats/IsoBoxes.cpp
// Also tests: Platform/Codecs/Formats/Jpeg2000Codestream.cpp
// Also tests: Platform/Codecs/Formats/Jpeg2000Library.cpp
// Also tests: Platform/Codecs/Formats/Jpeg2000Reader.cpp

#include "Tests/Platform/Codecs/LaterFixtures.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>

namespace Imaging::Platform {

namespace {

using namespace Fixtures;
using testing::HasSubstr;

constexpr const char* format = "JPEG 2000";

RawJpeg2000 smallPicture(int components, int bits, int colorSpace) {
    RawJpeg2000 picture;
    picture.width = 21;
    picture.height = 13;
    picture.components = components;
    picture.bits = bits;
    picture.colorSpace = colorSpace;
    return picture;
}

TEST(Jpeg2000Codec, KeepsGrayAndColourOfEightAndSixteenBits) {
    for (const bool isFile : {true, false}) {
        for (const int bits : {8, 16}) {
            for (const int components : {1, 3}) {
                for (const std::uint32_t tile : {0U, 16U}) {
                    RawJpeg2000 picture = smallPicture(components, bits, components == 1 ? 2 : 1);
                    picture.isFile = isFile;
                    picture.tile = tile;
                    const Samples samples = pattern(21, 13, components, (1U << bits) - 1);
                    const DecodedPicture decoded = decode(format, rawJpeg2000(picture, samples));
                    EXPECT_EQ(decoded.header.bitsPerSample, bits);
                    EXPECT_EQ(decoded.header.color, components == 1 ? SampleColor::White : SampleColor::RGB);
                    EXPECT_EQ(samplesOf(decoded), samples);
                }
            }
        }
    }
}

TEST(Jpeg2000Codec, SpreadsOtherDepthsOverAllBits) {
    RawJpeg2000 picture = smallPicture(1, 4, 2);
    const Samples few = pattern(21, 13, 1, 15);
    const Samples shown = samplesOf(decode(format, rawJpeg2000(picture, few)));
    for (std::size_t i = 0; i < few.size(); ++i) EXPECT_EQ(shown[i], few[i] * 17);
    picture.bits = 12;
    const Samples many = pattern(21, 13, 1, 4095);
    const DecodedPicture decoded = decode(format, rawJpeg2000(picture, many));
    EXPECT_EQ(decoded.header.bitsPerSample, 16);
    const Samples wide = samplesOf(decoded);
    for (std::size_t i = 0; i < many.size(); ++i) EXPECT_EQ(wide[i], (many[i] * 65535U + 2047) / 4095);
}

TEST(Jpeg2000Codec, ReadsSignedSamples) {
    RawJpeg2000 picture = smallPicture(3, 8, 1);
    picture.isSigned = true;
    const Samples samples = pattern(21, 13, 3, 255);
    EXPECT_EQ(samplesOf(decode(format, rawJpeg2000(picture, samples))), samples);
}

TEST(Jpeg2000Codec, MultipliesByAlpha) {
    RawJpeg2000 picture = smallPicture(4, 8, 1);
    picture.width = 2;
    picture.height = 1;
    picture.alpha = 3;
    const NSData bytes = rawJpeg2000(picture, {200, 100, 50, 51, 9, 8, 7, 255});
    const DecodedPicture decoded = decode(format, bytes);
    EXPECT_TRUE(decoded.header.hasAlpha);
    EXPECT_EQ(samplesOf(decoded), (Samples{40, 20, 10, 51, 9, 8, 7, 255}));
    expectEqualHeaders(readHeader(format, bytes), decoded.header);
}

TEST(Jpeg2000Codec, ConvertsCmykByThePlainProduct) {
    RawJpeg2000 picture = smallPicture(4, 8, 5);
    picture.width = 2;
    picture.height = 1;
    // (255 - 100) * (255 - 50) / 255 = 124.6, and so on; the second one is full black.
    const Samples shown = samplesOf(decode(format, rawJpeg2000(picture, {100, 0, 255, 50, 0, 0, 0, 255})));
    EXPECT_EQ(shown, (Samples{125, 205, 0, 0, 0, 0}));
}

TEST(Jpeg2000Codec, ConvertsYccWithReducedColour) {
    RawJpeg2000 picture = smallPicture(3, 8, 3);
    picture.width = 4;
    picture.height = 2;
    picture.reduction = 2;
    // The colour of the upper left pixel of each square of four counts for all of it.
    const Samples samples = {100, 128, 228, 50,  1, 1, 80, 28, 128, 80,  1, 1,
                             0,   1,   1,   255, 1, 1, 80, 1,  1,   200, 1, 1};
    const Samples shown = samplesOf(decode(format, rawJpeg2000(picture, samples)));
    // Red difference of 100: + 140.2 and - 71.4. Blue difference of - 100: - 177.2 and + 34.4.
    EXPECT_EQ(shown, (Samples{240, 29, 100, 190, 0,   50,  80, 114, 0, 80,  114, 0,
                              140, 0,  0,   255, 184, 255, 80, 114, 0, 200, 234, 23}));
}

TEST(Jpeg2000Codec, ReadsProfilesOfTheRightColours) {
    RawJpeg2000 picture = smallPicture(3, 8, 1);
    picture.profile = sRGBProfile();
    const NSData bytes = rawJpeg2000(picture, pattern(21, 13, 3, 255));
    EXPECT_EQ(readHeader(format, bytes).colorProfile, sRGBProfile());
    expectEqualHeaders(readHeader(format, bytes), decode(format, bytes).header);
    RawJpeg2000 gray = smallPicture(1, 8, 2);
    gray.profile = grayProfile();
    EXPECT_EQ(readHeader(format, rawJpeg2000(gray, pattern(21, 13, 1, 255))).colorProfile, grayProfile());
}

/// A JP2 file whose header box has gained a palette of three columns and a mapping of one component to them.
NSData withPalette(NSData bytes, const std::vector<Rgb>& colors) {
    NSData boxes;
    appendBig(boxes, 8 + 3 + 3 + colors.size() * 3, 4);
    const NSData palette = {'p', 'c', 'l', 'r'};
    appendBytes(boxes, palette);
    appendBig(boxes, colors.size(), 2);
    const NSData columns = {3, 7, 7, 7};
    appendBytes(boxes, columns);
    for (const Rgb& color : colors) appendBytes(boxes, color);
    appendBig(boxes, 8 + 12, 4);
    const NSData mapping = {'c', 'm', 'a', 'p', 0, 0, 1, 0, 0, 0, 1, 1, 0, 0, 1, 2};
    appendBytes(boxes, mapping);
    const std::string name = "jp2h";
    const auto at = std::search(bytes.begin(), bytes.end(), name.begin(), name.end()) - 4;
    const std::size_t size = at[2] * 256U + at[3];
    const std::size_t grown = size + boxes.size();
    at[2] = static_cast<std::uint8_t>(grown >> 8);
    at[3] = static_cast<std::uint8_t>(grown);
    bytes.insert(at + static_cast<std::ptrdiff_t>(size), boxes.begin(), boxes.end());
    // The colour box said gray, and palettes are of colour.
    const NSData gray = {'c', 'o', 'l', 'r', 1, 0, 0, 0, 0, 0, 17};
    const auto color = std::search(bytes.begin(), bytes.end(), gray.begin(), gray.end());
    color[10] = 16;
    return bytes;
}

TEST(Jpeg2000Codec, LooksUpPalettesAndRefusesPixelsWithoutAColour) {
    RawJpeg2000 picture = smallPicture(1, 8, 2);
    picture.width = 3;
    picture.height = 1;
    const std::vector<Rgb> colors = {{1, 2, 3}, {40, 50, 60}, {255, 0, 9}};
    const NSData bytes = withPalette(rawJpeg2000(picture, {2, 0, 1}), colors);
    const DecodedPicture decoded = decode(format, bytes);
    EXPECT_EQ(decoded.header.color, SampleColor::RGB);
    EXPECT_EQ(samplesOf(decoded), (Samples{255, 0, 9, 1, 2, 3, 40, 50, 60}));
    expectEqualHeaders(readHeader(format, bytes), decoded.header);
}

TEST(Jpeg2000Codec, RefusesSizesAndTilesBeyondTheLimitsBeforeAnythingIsTaken) {
    NSData bytes = rawJpeg2000(smallPicture(1, 8, 2), pattern(21, 13, 1, 255));
    const NSData marker = {0xff, 0x4f, 0xff, 0x51};
    const auto at = std::search(bytes.begin(), bytes.end(), marker.begin(), marker.end());
    const auto put = [&](int offset, std::uint32_t value) {
        for (int i = 0; i < 4; ++i) at[offset + i] = static_cast<std::uint8_t>(value >> (24 - 8 * i));
    };
    put(8, 100000);
    put(12, 100000);
    EXPECT_EQ(refusalOfDecoding(format, bytes).code, NSErrorCode::TooLarge);
    EXPECT_EQ(readHeader(format, bytes).width, 100000U);
    put(8, 1000);
    put(12, 60);
    put(24, 1); // 60,000 tiles of one pixel, for each of which the library takes several thousand bytes
    put(28, 1);
    EXPECT_EQ(refusalOfDecoding(format, bytes, {1'000'000, 100'000'000}).code, NSErrorCode::TooLarge);
}

TEST(Jpeg2000Encoding, LosesNothingAtTheBestQuality) {
    for (const int bits : {8, 16}) {
        for (const SampleColor color : {SampleColor::White, SampleColor::RGB}) {
            for (const std::size_t padding : {0, 3}) {
                const int perPixel = color == SampleColor::RGB ? 3 : 1;
                const Samples samples = pattern(13, 7, perPixel, (1U << bits) - 1);
                const SourcePicture picture(13, 7, bits, color, false, samples, padding * 2);
                EXPECT_EQ(samplesOf(decode(format, encode(format, picture, 1))), samples);
            }
        }
    }
}

TEST(Jpeg2000Encoding, KeepsAlphaAndPicturesOfOnePixel) {
    const Samples samples = premultipliedPattern(5, 4, 4, 255);
    const SourcePicture picture(5, 4, 8, SampleColor::RGB, true, samples);
    const DecodedPicture decoded = decode(format, encode(format, picture, 1));
    EXPECT_TRUE(decoded.header.hasAlpha);
    EXPECT_EQ(samplesOf(decoded), samples);
    const SourcePicture one(1, 1, 8, SampleColor::White, true, {7, 9});
    EXPECT_EQ(samplesOf(decode(format, encode(format, one, 1))), (Samples{7, 9}));
}

TEST(Jpeg2000Encoding, IsCloserAndLargerTheHigherTheQuality) {
    Samples samples;
    for (std::uint32_t i = 0; i < 64 * 64; ++i) {
        for (std::uint32_t s = 0; s < 3; ++s) {
            samples.push_back(static_cast<std::uint16_t>((i % 64 * 2 + i / 64 + s * 20 + i * i % 23) % 256));
        }
    }
    const SourcePicture picture(64, 64, 8, SampleColor::RGB, false, samples);
    std::size_t size = 0;
    double before = 1e9;
    for (const double quality : {0.1, 0.5, 0.9, 1.0}) {
        const NSData bytes = encode(format, picture, quality);
        const Samples back = samplesOf(decode(format, bytes));
        double error = 0;
        for (std::size_t i = 0; i < samples.size(); ++i) error += std::abs(samples[i] - back[i]);
        EXPECT_GT(bytes.size(), size) << quality;
        EXPECT_LT(error, before) << quality;
        size = bytes.size();
        before = error;
    }
    EXPECT_EQ(before, 0);
    EXPECT_EQ(encode(format, picture, 7), encode(format, picture, 1));
    EXPECT_EQ(encode(format, picture, -1), encode(format, picture, 0));
    EXPECT_EQ(encode(format, picture, std::nan("")), encode(format, picture, 0));
}

TEST(Jpeg2000Encoding, WritesResolutionAndProfile) {
    SourcePicture picture(3, 2, 8, SampleColor::RGB, false, pattern(3, 2, 3, 255));
    picture.header.resolutionX = 300;
    picture.header.resolutionY = 72.5;
    picture.header.colorProfile = sRGBProfile();
    const NSData bytes = encode(format, picture);
    const PictureHeader header = readHeader(format, bytes);
    EXPECT_NEAR(header.resolutionX, 300, 1e-4);
    EXPECT_NEAR(header.resolutionY, 72.5, 1e-4);
    EXPECT_EQ(header.colorProfile, sRGBProfile());
    EXPECT_EQ(samplesOf(decode(format, bytes)).size(), 18U);
    // Without a profile it states the colours itself: 16 is sRGB and 17 gray with its curve.
    for (const bool isGray : {false, true}) {
        const SourcePicture plain(3, 2, 8, isGray ? SampleColor::White : SampleColor::RGB, false,
                                  pattern(3, 2, isGray ? 1 : 3, 255));
        const NSData stated = {
            'c', 'o', 'l', 'r', 1, 0, 0, 0, 0, 0, static_cast<std::uint8_t>(isGray ? 17 : 16)};
        const NSData written = encode(format, plain);
        EXPECT_NE(std::search(written.begin(), written.end(), stated.begin(), stated.end()), written.end());
        EXPECT_EQ(readHeader(format, written).resolutionX, 0);
    }
}

} // namespace

} // namespace Imaging::Platform
