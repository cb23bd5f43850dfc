// Also tests: Platform/Codecs/Formats/BmpReader.cpp

#include "Tests/Platform/Codecs/LaterFixtures.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace Imaging::Platform {

namespace {

using namespace Fixtures;
using testing::HasSubstr;

std::vector<std::uint32_t> wide(const Samples& samples) { return {samples.begin(), samples.end()}; }

std::vector<Rgb> manyColors(std::size_t count) {
    std::vector<Rgb> colors;
    for (std::size_t i = 0; i < count; ++i) {
        colors.push_back({static_cast<std::uint8_t>(i * 3 + 1), static_cast<std::uint8_t>(255 - i),
                          static_cast<std::uint8_t>(i * 7)});
    }
    return colors;
}

Samples lookedUp(const Samples& indices, const std::vector<Rgb>& colors) {
    Samples samples;
    for (const std::uint16_t index : indices)
        samples.insert(samples.end(), colors[index].begin(), colors[index].end());
    return samples;
}

RawBmp plainBmp(std::int32_t width, std::int32_t height, int bits, std::uint32_t headerSize = 40) {
    RawBmp picture;
    picture.width = width;
    picture.height = height;
    picture.bits = bits;
    picture.headerSize = headerSize;
    if (bits <= 8) picture.colors = manyColors(std::size_t{1} << bits);
    return picture;
}

NSData withRows(const RawBmp& picture, const std::vector<std::uint32_t>& pixels) {
    return rawBmp(picture, bmpRows(picture, pixels));
}

TEST(BmpCodec, LooksColoursUpAtEveryDepthAndWidth) {
    for (const int bits : {1, 2, 4, 8}) {
        for (const std::uint32_t header : {12U, 16U, 40U, 52U, 56U, 64U, 108U, 124U}) {
            for (std::int32_t width = 1; width < 12; ++width) {
                const RawBmp picture = plainBmp(width, 3, bits, header);
                const Samples indices = pattern(static_cast<std::uint32_t>(width), 3, 1, (1U << bits) - 1);
                const DecodedPicture decoded = decode("BMP", withRows(picture, wide(indices)));
                EXPECT_EQ(samplesOf(decoded), lookedUp(indices, picture.colors)) << bits << " " << header;
            }
        }
    }
}

TEST(BmpCodec, ReadsRowsFromTheTopWhereTheHeightIsNegative) {
    RawBmp picture = plainBmp(3, -4, 8);
    const Samples indices = pattern(3, 4, 1, 255);
    const DecodedPicture decoded = decode("BMP", withRows(picture, wide(indices)));
    EXPECT_EQ(decoded.header.height, 4U);
    EXPECT_EQ(samplesOf(decoded), lookedUp(indices, picture.colors));
}

TEST(BmpCodec, ReadsTwentyFourBitsAsBlueGreenRed) {
    for (std::int32_t width = 1; width < 6; ++width) {
        const RawBmp picture = plainBmp(width, 2, 24);
        const Samples samples = pattern(static_cast<std::uint32_t>(width), 2, 3, 255);
        std::vector<std::uint32_t> pixels;
        for (std::size_t i = 0; i < samples.size(); i += 3) {
            pixels.push_back(samples[i] * 65536U + samples[i + 1] * 256U + samples[i + 2]);
        }
        EXPECT_EQ(samplesOf(decode("BMP", withRows(picture, pixels))), samples);
    }
}

TEST(BmpCodec, IgnoresTheFourthByteOfPlainPixels) {
    for (const std::uint32_t header : {40U, 124U}) {
        const DecodedPicture decoded = decode("BMP", withRows(plainBmp(1, 1, 32, header), {0x05010203}));
        EXPECT_FALSE(decoded.header.hasAlpha);
        EXPECT_EQ(samplesOf(decoded), (Samples{1, 2, 3}));
    }
}

TEST(BmpCodec, SpreadsFiveBitsOverEight) {
    // 1 of 31 is 8.2 of 255, 16 of 31 is 131.6 and 30 of 31 is 246.8.
    const DecodedPicture decoded =
        decode("BMP", withRows(plainBmp(2, 1, 16), {31U << 10 | 1, 16U << 10 | 30U << 5}));
    EXPECT_EQ(samplesOf(decoded), (Samples{255, 0, 8, 132, 247, 0}));
}

TEST(BmpCodec, ReadsBitFieldsBehindAndWithinTheHeader) {
    for (const std::uint32_t header : {40U, 52U, 56U, 108U, 124U}) {
        RawBmp picture = plainBmp(2, 1, 16, header);
        picture.compression = 3;
        picture.masks = {0xf800, 0x07e0, 0x001f}; // 5, 6 and 5 bits; 32 of 63 is 129.5
        const NSData bytes = withRows(picture, {0xffff, 32U << 5});
        EXPECT_EQ(samplesOf(decode("BMP", bytes)), (Samples{255, 255, 255, 0, 130, 0})) << header;
        picture.bits = 32;
        picture.masks = {0x3ff00000, 0x000ffc00, 0x000003ff}; // 10 bits each: 512 of 1023 is 127.6
        EXPECT_EQ(samplesOf(decode("BMP", withRows(picture, {512U << 20 | 1023, 0xc0000000}))),
                  (Samples{128, 0, 255, 0, 0, 0}));
    }
}

TEST(BmpCodec, MultipliesByTheAlphaOfItsBitFields) {
    struct Case {
        std::uint32_t header;
        std::uint32_t compression;
    };
    for (const Case& one : {Case{56, 3}, Case{108, 3}, Case{124, 3}, Case{40, 6}}) {
        RawBmp picture = plainBmp(2, 1, 32, one.header);
        picture.compression = one.compression;
        picture.masks = {0x00ff0000, 0x0000ff00, 0x000000ff, 0xff000000};
        const DecodedPicture decoded = decode("BMP", withRows(picture, {0x33c86432, 0x00ffffff}));
        EXPECT_TRUE(decoded.header.hasAlpha);
        // A fifth of 200, 100 and 50.
        EXPECT_EQ(samplesOf(decoded), (Samples{40, 20, 10, 51, 0, 0, 0, 0}));
    }
}

TEST(BmpCodec, ReadsRunsOfBytes) {
    RawBmp picture = plainBmp(4, 3, 8);
    picture.compression = 1;
    // From the bottom: a run; then literals with their filling; then a jump by one right and none up.
    const NSData runs = {3, 9, 1, 7, 0, 0, 0, 3, 1, 2, 3, 0, 1, 4, 0, 0, 0, 2, 1, 0, 3, 5, 0, 1};
    const Samples indices = {0, 5, 5, 5, 1, 2, 3, 4, 9, 9, 9, 7};
    EXPECT_EQ(samplesOf(decode("BMP", rawBmp(picture, runs))), lookedUp(indices, picture.colors));
}

TEST(BmpCodec, ReadsRunsOfNibbles) {
    RawBmp picture = plainBmp(5, 2, 4);
    picture.compression = 2;
    // Three pixels of 1 and 2 in turns, and two of 15; then five literals, in four bytes.
    const NSData runs = {3, 0x12, 2, 0xff, 0, 0, 0, 5, 0x34, 0x56, 0x70, 0, 0, 1};
    const Samples indices = {3, 4, 5, 6, 7, 1, 2, 1, 15, 15};
    EXPECT_EQ(samplesOf(decode("BMP", rawBmp(picture, runs))), lookedUp(indices, picture.colors));
}

TEST(BmpCodec, GivesPixelsThatRunsLeaveOutTheFirstColour) {
    RawBmp picture = plainBmp(2, 2, 8);
    picture.compression = 1;
    EXPECT_EQ(samplesOf(decode("BMP", rawBmp(picture, {1, 4, 0, 1}))),
              lookedUp({0, 0, 4, 0}, picture.colors));
}

TEST(BmpCodec, RefusesRunsThatLeaveThePicture) {
    RawBmp picture = plainBmp(2, 2, 8);
    picture.compression = 1;
    for (const NSData& runs :
         {NSData{3, 4, 0, 1}, NSData{0, 2, 0, 2, 1, 4, 0, 1}, NSData{0, 2, 255, 0, 1, 4, 0, 1}}) {
        const Refusal refusal = refusalOfDecoding("BMP", rawBmp(picture, runs));
        EXPECT_EQ(refusal.code, NSErrorCode::CorruptData);
        EXPECT_THAT(refusal.reason, HasSubstr("leaves the picture"));
    }
}

TEST(BmpCodec, RefusesRunsWithoutAnEndOrThatAreNotThere) {
    RawBmp picture = plainBmp(2, 2, 8);
    picture.compression = 1;
    EXPECT_THAT(refusalOfDecoding("BMP", rawBmp(picture, {2, 4, 0, 0, 2, 4})).reason, HasSubstr("cut short"));
    picture.width = picture.height = 16000; // 256 million pixels out of nothing
    EXPECT_THAT(refusalOfDecoding("BMP", rawBmp(picture, {0, 1})).reason, HasSubstr("cut short"));
}

TEST(BmpCodec, RefusesPixelsWithoutAColour) {
    RawBmp picture = plainBmp(2, 1, 8);
    picture.colors = manyColors(3);
    picture.colorsUsed = 3;
    EXPECT_EQ(samplesOf(decode("BMP", withRows(picture, {2, 0}))), lookedUp({2, 0}, picture.colors));
    EXPECT_EQ(refusalOfDecoding("BMP", withRows(picture, {2, 3})).reason,
              "the BMP data is damaged (a pixel has no colour)");
    picture.colorsUsed = 0; // all of them, says the header, but there is room for three only
    EXPECT_EQ(refusalOfDecoding("BMP", withRows(picture, {2, 3})).code, NSErrorCode::CorruptData);
    picture.colorsUsed = 0xffffffff;
    EXPECT_EQ(samplesOf(decode("BMP", withRows(picture, {2, 0}))), lookedUp({2, 0}, picture.colors));
}

TEST(BmpCodec, FindsPixelsBehindAGapAndReadsResolution) {
    RawBmp picture = plainBmp(1, 1, 24);
    picture.gap = 7;
    picture.perMetreX = 10000;
    picture.perMetreY = 5000;
    const DecodedPicture decoded = decode("BMP", withRows(picture, {0x010203}));
    EXPECT_EQ(samplesOf(decoded), (Samples{1, 2, 3}));
    EXPECT_DOUBLE_EQ(decoded.header.resolutionX, 254);
    EXPECT_DOUBLE_EQ(decoded.header.resolutionY, 127);
    picture.perMetreX = -1;
    EXPECT_EQ(readHeader("BMP", withRows(picture, {0x010203})).resolutionX, 0);
}

TEST(BmpCodec, ReadsAnEmbeddedProfileOfTheRightColours) {
    RawBmp picture = plainBmp(1, 1, 24, 124);
    picture.profile = sRGBProfile();
    const NSData bytes = withRows(picture, {0x010203});
    EXPECT_EQ(readHeader("BMP", bytes).colorProfile, sRGBProfile());
    expectEqualHeaders(readHeader("BMP", bytes), decode("BMP", bytes).header);
    picture.profile = grayProfile();
    EXPECT_TRUE(readHeader("BMP", withRows(picture, {0x010203})).colorProfile.empty());
}

TEST(BmpCodec, RefusesHeadersThatMakeNoSense) {
    const auto codeOf = [](const RawBmp& picture) {
        return refusalOfDecoding("BMP", rawBmp(picture, NSData(64))).code;
    };
    EXPECT_EQ(codeOf(plainBmp(0, 1, 24)), NSErrorCode::CorruptData);
    EXPECT_EQ(codeOf(plainBmp(1, 0, 24)), NSErrorCode::CorruptData);
    EXPECT_EQ(codeOf(plainBmp(-5, 1, 24)), NSErrorCode::CorruptData);
    EXPECT_EQ(codeOf(plainBmp(1, std::numeric_limits<std::int32_t>::min(), 24)), NSErrorCode::CorruptData);
    EXPECT_EQ(codeOf(plainBmp(1, 1, 7)), NSErrorCode::UnsupportedFormat);
    RawBmp packed = plainBmp(1, 1, 24);
    packed.compression = 4; // a JPEG
    EXPECT_EQ(codeOf(packed), NSErrorCode::UnsupportedFormat);
    RawBmp gaps = plainBmp(1, 1, 32);
    gaps.compression = 3;
    gaps.masks = {0xff00ff00, 0xff0000, 0xff};
    EXPECT_EQ(codeOf(gaps), NSErrorCode::CorruptData);
    gaps.masks = {0xff00, 0xff00, 0xff};
    EXPECT_EQ(codeOf(gaps), NSErrorCode::CorruptData);
    RawBmp turned = plainBmp(1, -1, 8);
    turned.compression = 1;
    EXPECT_EQ(codeOf(turned), NSErrorCode::CorruptData);
}

TEST(BmpCodec, RefusesSizesBeyondTheLimitsAndTheData) {
    EXPECT_EQ(refusalOfDecoding("BMP", rawBmp(plainBmp(100000, 100000, 24), {1, 2, 3, 4})).code,
              NSErrorCode::TooLarge);
    EXPECT_THAT(refusalOfDecoding("BMP", rawBmp(plainBmp(10000, 10000, 24), {1, 2, 3, 4})).reason,
                HasSubstr("cut short"));
    EXPECT_EQ(readHeader("BMP", rawBmp(plainBmp(100000, 100000, 24), {})).width, 100000U);
}

TEST(BmpCodec, IsToldFromTextThatBeginsWithItsLetters) {
    EXPECT_EQ(codecForData(withRows(plainBmp(1, 1, 24), {0}))->formatName(), "BMP");
    const std::string text = "BMWs are cars, and so are many others.";
    EXPECT_EQ(codecForData(NSData(text.begin(), text.end())), nullptr);
}

/// A little-endian number of the written file.
std::uint64_t numberAt(const NSData& bytes, std::size_t at, int count) {
    std::uint64_t value = 0;
    for (int i = count - 1; i >= 0; --i) value = value << 8 | bytes.at(at + static_cast<std::size_t>(i));
    return value;
}

TEST(BmpEncoding, WritesColourInTwentyFourBitsFromTheBottom) {
    const SourcePicture picture(1, 2, 8, SampleColor::RGB, false, {1, 2, 3, 4, 5, 6}, 3);
    const NSData bytes = encode("BMP", picture);
    ASSERT_EQ(bytes.size(), 14U + 124 + 8);
    EXPECT_EQ(numberAt(bytes, 2, 4), bytes.size());
    EXPECT_EQ(numberAt(bytes, 10, 4), 138U);
    EXPECT_EQ(numberAt(bytes, 28, 2), 24U);
    EXPECT_EQ(NSData(bytes.begin() + 138, bytes.end()), (NSData{6, 5, 4, 0, 3, 2, 1, 0}));
    EXPECT_EQ(numberAt(bytes, 14 + 56, 4), 0x73524742U); // it states sRGB
}

TEST(BmpEncoding, WritesStraightAlphaInBitFields) {
    const SourcePicture picture(1, 1, 8, SampleColor::RGB, true, {40, 20, 10, 51});
    const NSData bytes = encode("BMP", picture);
    EXPECT_EQ(numberAt(bytes, 138, 4), 0x33c86432U);
    EXPECT_EQ(numberAt(bytes, 14 + 40 + 12, 4), 0xff000000U);
    EXPECT_EQ(samplesOf(decode("BMP", bytes)), (Samples{40, 20, 10, 51}));
}

TEST(BmpEncoding, KeepsEveryOpaqueLayout) {
    for (std::uint32_t width = 1; width < 8; ++width) {
        const Samples colors = pattern(width, 3, 3, 255);
        const SourcePicture picture(width, 3, 8, SampleColor::RGB, false, colors);
        EXPECT_EQ(samplesOf(decode("BMP", encode("BMP", picture))), colors);
        const Samples grays = pattern(width, 3, 1, 255);
        for (const SampleColor color : {SampleColor::White, SampleColor::Black}) {
            const SourcePicture gray(width, 3, 8, color, false, grays);
            Samples expected;
            for (const std::uint16_t sample : grays) {
                const int shown = color == SampleColor::White ? sample : 255 - sample;
                expected.insert(expected.end(), 3, static_cast<std::uint16_t>(shown));
            }
            EXPECT_EQ(samplesOf(decode("BMP", encode("BMP", gray))), expected);
        }
    }
}

TEST(BmpEncoding, WritesResolutionAndProfile) {
    SourcePicture picture(1, 1, 8, SampleColor::RGB, false, {1, 2, 3});
    picture.header.resolutionX = 254;
    picture.header.resolutionY = 127;
    picture.header.colorProfile = sRGBProfile();
    const PictureHeader header = readHeader("BMP", encode("BMP", picture));
    EXPECT_DOUBLE_EQ(header.resolutionX, 254);
    EXPECT_DOUBLE_EQ(header.resolutionY, 127);
    EXPECT_EQ(header.colorProfile, sRGBProfile());
    // Gray becomes RGB, for which its profile means nothing, and then nothing is claimed.
    SourcePicture gray(1, 1, 8, SampleColor::White, false, {9});
    gray.header.colorProfile = grayProfile();
    EXPECT_EQ(numberAt(encode("BMP", gray), 14 + 56, 4), 0x57696e20U);
    gray.header.colorProfile.clear();
    EXPECT_EQ(numberAt(encode("BMP", gray), 14 + 56, 4), 0x73524742U);
}

} // namespace

} // namespace Imaging::Platform
