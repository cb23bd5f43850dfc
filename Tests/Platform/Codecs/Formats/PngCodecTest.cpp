#include "Tests/Platform/Codecs/CodecFixtures.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace Imaging::Platform {

namespace {

using namespace Fixtures;
using testing::HasSubstr;

constexpr std::uint32_t width = 11; // an odd number of bits and not a whole number of interlaced blocks
constexpr std::uint32_t height = 5;

RawPng described(int depth, int colorType) { return {width, height, depth, colorType, {}, {}}; }

/// Colour times alpha, rounded to nearest, in floating point.
Samples premultiplied(const Samples& samples, std::size_t perPixel, double max) {
    Samples result = samples;
    for (std::size_t i = 0; i < result.size(); ++i) {
        if (i % perPixel == perPixel - 1) continue;
        const double alpha = samples[i / perPixel * perPixel + perPixel - 1];
        result[i] = static_cast<std::uint16_t>(samples[i] * alpha / max + 0.5);
    }
    return result;
}

void expectLayout(const PictureHeader& header, int bits, SampleColor color, bool hasAlpha) {
    EXPECT_EQ(header.formatName, "PNG");
    EXPECT_EQ(header.width, width);
    EXPECT_EQ(header.height, height);
    EXPECT_EQ(header.bitsPerSample, bits);
    EXPECT_EQ(header.color, color);
    EXPECT_EQ(header.hasAlpha, hasAlpha);
}

TEST(PngCodec, WidensGrayOfFewBitsToBytes) {
    for (const int depth : {1, 2, 4}) {
        const std::uint32_t max = (1U << depth) - 1;
        const Samples samples = pattern(width, height, 1, max);
        const DecodedPicture picture = decode("PNG", rawPng(described(depth, 0), samples));
        expectLayout(picture.header, 8, SampleColor::White, false);
        Samples expected;
        for (const std::uint16_t sample : samples) {
            expected.push_back(static_cast<std::uint16_t>(sample * 255 / max)); // 255, 85 or 17 times
        }
        EXPECT_EQ(samplesOf(picture), expected) << depth;
    }
}

TEST(PngCodec, KeepsGrayOfEightAndSixteenBits) {
    for (const int depth : {8, 16}) {
        const Samples samples = pattern(width, height, 1, (1U << depth) - 1);
        const DecodedPicture picture = decode("PNG", rawPng(described(depth, 0), samples));
        expectLayout(picture.header, depth, SampleColor::White, false);
        EXPECT_EQ(samplesOf(picture), samples);
    }
}

TEST(PngCodec, KeepsRGBOfEightAndSixteenBits) {
    for (const int depth : {8, 16}) {
        const Samples samples = pattern(width, height, 3, (1U << depth) - 1);
        const DecodedPicture picture = decode("PNG", rawPng(described(depth, 2), samples));
        expectLayout(picture.header, depth, SampleColor::RGB, false);
        EXPECT_EQ(samplesOf(picture), samples);
    }
}

TEST(PngCodec, MultipliesGrayByItsAlpha) {
    for (const int depth : {8, 16}) {
        const std::uint32_t max = (1U << depth) - 1;
        const Samples samples = pattern(width, height, 2, max);
        const DecodedPicture picture = decode("PNG", rawPng(described(depth, 4), samples));
        expectLayout(picture.header, depth, SampleColor::White, true);
        EXPECT_EQ(samplesOf(picture), premultiplied(samples, 2, max));
    }
}

TEST(PngCodec, MultipliesRGBByItsAlpha) {
    for (const int depth : {8, 16}) {
        const std::uint32_t max = (1U << depth) - 1;
        const Samples samples = pattern(width, height, 4, max);
        const DecodedPicture picture = decode("PNG", rawPng(described(depth, 6), samples));
        expectLayout(picture.header, depth, SampleColor::RGB, true);
        EXPECT_EQ(samplesOf(picture), premultiplied(samples, 4, max));
    }
}

TEST(PngCodec, LooksUpPalettes) {
    for (const int depth : {1, 2, 4, 8}) {
        const std::uint32_t max = (1U << depth) - 1;
        const Samples samples = pattern(width, height, 1, max);
        RawPng picture = described(depth, 3);
        NSData palette;
        for (std::uint32_t i = 0; i <= max; ++i) {
            for (const std::uint32_t value : {i, 255 - i, i * 3})
                palette.push_back(static_cast<std::uint8_t>(value));
        }
        picture.beforePixels = {{"PLTE", palette}};
        Samples expected;
        for (const std::uint32_t index : samples) {
            for (std::uint32_t s = 0; s < 3; ++s) expected.push_back(palette[index * 3 + s]);
        }
        const DecodedPicture decoded = decode("PNG", rawPng(picture, samples));
        expectLayout(decoded.header, 8, SampleColor::RGB, false);
        EXPECT_EQ(samplesOf(decoded), expected) << depth;
    }
}

TEST(PngCodec, GivesPalettesTheirAlpha) {
    RawPng picture = {3, 1, 8, 3, {}, {}};
    picture.beforePixels = {{"PLTE", {10, 20, 30, 40, 50, 60, 70, 80, 90}}, {"tRNS", {0, 51}}};
    const DecodedPicture decoded = decode("PNG", rawPng(picture, {0, 1, 2}));
    EXPECT_TRUE(decoded.header.hasAlpha);
    // A fifth of each; the third entry has no alpha of its own and is opaque.
    EXPECT_EQ(samplesOf(decoded), (Samples{0, 0, 0, 0, 8, 10, 12, 51, 70, 80, 90, 255}));
}

TEST(PngCodec, MakesTheTransparentGrayAndColourClear) {
    RawPng gray = {3, 1, 8, 0, {{"tRNS", {0, 7}}}, {}};
    const DecodedPicture grayPicture = decode("PNG", rawPng(gray, {6, 7, 8}));
    EXPECT_EQ(grayPicture.header.color, SampleColor::White);
    EXPECT_EQ(samplesOf(grayPicture), (Samples{6, 255, 0, 0, 8, 255}));
    RawPng color = {2, 1, 16, 2, {{"tRNS", {1, 0, 2, 0, 3, 0}}}, {}};
    const DecodedPicture colorPicture = decode("PNG", rawPng(color, {256, 512, 768, 256, 512, 769}));
    EXPECT_EQ(samplesOf(colorPicture), (Samples{0, 0, 0, 0, 256, 512, 769, 65535}));
    RawPng bits = {2, 1, 1, 0, {{"tRNS", {0, 1}}}, {}};
    EXPECT_EQ(samplesOf(decode("PNG", rawPng(bits, {0, 1}))), (Samples{0, 255, 0, 0}));
}

TEST(PngCodec, ReadsInterlacedPictures) {
    const Samples gray = pattern(width, height, 1, 1);
    Samples expected = gray;
    for (std::uint16_t& sample : expected) sample = static_cast<std::uint16_t>(sample * 255);
    EXPECT_EQ(samplesOf(decode("PNG", interlacedPng(described(1, 0), gray))), expected);
    const Samples wide = pattern(width, height, 4, 65535);
    EXPECT_EQ(samplesOf(decode("PNG", interlacedPng(described(16, 6), wide))), premultiplied(wide, 4, 65535));
    const Samples color = pattern(width, height, 3, 255);
    EXPECT_EQ(samplesOf(decode("PNG", interlacedPng(described(8, 2), color))), color);
}

TEST(PngCodec, ReadsResolutionInPixelsPerMetre) {
    RawPng picture = described(8, 0);
    const Samples samples = pattern(width, height, 1, 255);
    picture.beforePixels = {numbersChunk("pHYs", {10000, 5000}, {1})};
    EXPECT_DOUBLE_EQ(readHeader("PNG", rawPng(picture, samples)).resolutionX, 254);
    EXPECT_DOUBLE_EQ(readHeader("PNG", rawPng(picture, samples)).resolutionY, 127);
    picture.beforePixels = {numbersChunk("pHYs", {10000, 5000}, {0})}; // a mere aspect
    EXPECT_EQ(readHeader("PNG", rawPng(picture, samples)).resolutionX, 0);
}

TEST(PngCodec, ReportsEveryOrientationBeforeAndAfterThePixels) {
    const Samples samples = pattern(width, height, 3, 255);
    for (int orientation = 1; orientation <= 8; ++orientation) {
        const PngChunk exif = {"eXIf", exifRecord({true, orientation, {}, {}})};
        RawPng before = described(8, 2);
        before.beforePixels = {exif};
        EXPECT_EQ(decode("PNG", rawPng(before, samples)).header.orientation, orientation);
        RawPng after = described(8, 2);
        after.afterPixels = {exif};
        const DecodedPicture picture = decode("PNG", rawPng(after, samples));
        EXPECT_EQ(picture.header.orientation, orientation);
        EXPECT_EQ(samplesOf(picture), samples); // reported, not applied
        EXPECT_EQ(readHeader("PNG", rawPng(after, samples)).orientation, orientation);
    }
}

TEST(PngCodec, GivesProfilesByteForByte) {
    RawPng color = described(8, 2);
    color.beforePixels = {profileChunk(sRGBProfile())};
    EXPECT_EQ(decode("PNG", rawPng(color, pattern(width, height, 3, 255))).header.colorProfile,
              sRGBProfile());
    RawPng gray = described(16, 4);
    gray.beforePixels = {profileChunk(grayProfile())};
    EXPECT_EQ(readHeader("PNG", rawPng(gray, pattern(width, height, 2, 65535))).colorProfile, grayProfile());
}

TEST(PngCodec, HasNoProfileWithoutOneAndAppliesNoGamma) {
    RawPng picture = described(8, 2);
    picture.beforePixels = {{"sRGB", {0}}, numbersChunk("gAMA", {100000})};
    const Samples samples = pattern(width, height, 3, 255);
    const DecodedPicture decoded = decode("PNG", rawPng(picture, samples));
    EXPECT_TRUE(decoded.header.colorProfile.empty());
    EXPECT_EQ(samplesOf(decoded), samples);
}

TEST(PngCodec, LeavesOutProfilesForOtherColours) {
    RawPng picture = described(8, 2);
    picture.beforePixels = {profileChunk(grayProfile())};
    EXPECT_TRUE(readHeader("PNG", rawPng(picture, pattern(width, height, 3, 255))).colorProfile.empty());
}

TEST(PngCodec, DescribesInTheHeaderWhatDecodingGives) {
    RawPng picture = {3, 1, 2, 3, {}, {}};
    picture.beforePixels = {profileChunk(sRGBProfile()),
                            {"PLTE", {10, 20, 30, 40, 50, 60, 70, 80, 90}},
                            {"tRNS", {0, 51}},
                            numbersChunk("pHYs", {3000, 3000}, {1})};
    picture.afterPixels = {{"eXIf", exifRecord({false, 8, {}, {}})}};
    const NSData bytes = rawPng(picture, {0, 1, 2});
    expectEqualHeaders(readHeader("PNG", bytes), decode("PNG", bytes).header);
}

TEST(PngCodec, ReadsAHeaderWithoutAnyPixels) {
    NSData bytes = rawPng(described(8, 2), pattern(width, height, 3, 255));
    bytes.resize(8 + 25 + 8); // up to the pixels' chunk and without its content
    EXPECT_EQ(readHeader("PNG", bytes).width, width);
    EXPECT_EQ(refusalOfDecoding("PNG", bytes).code, NSErrorCode::CorruptData);
}

TEST(PngCodec, RefusesAPictureThatIsCutShort) {
    NSData bytes = rawPng(described(8, 2), pattern(width, height, 3, 255));
    bytes.resize(bytes.size() - 13); // a byte more than the last chunk
    const Refusal refusal = refusalOfDecoding("PNG", bytes);
    EXPECT_EQ(refusal.code, NSErrorCode::CorruptData);
    EXPECT_EQ(refusal.reason, "the PNG data ends before the picture is complete; the file may be cut short");
    NSData withoutEnd = rawPng(described(8, 2), pattern(width, height, 3, 255));
    withoutEnd.resize(withoutEnd.size() - 12);
    EXPECT_EQ(refusalOfDecoding("PNG", withoutEnd).code, NSErrorCode::CorruptData);
}

TEST(PngCodec, RefusesWrongChecksumsOfAnyChunk) {
    RawPng picture = described(8, 2);
    picture.beforePixels = {numbersChunk("pHYs", {3000, 3000}, {1}), {"tEXt", {'a', 0, 'b'}}};
    const NSData whole = rawPng(picture, pattern(width, height, 3, 255));
    const std::size_t afterHeader = 8 + 25;
    const std::size_t afterPhysical = afterHeader + 12 + 9;
    const std::size_t afterText = afterPhysical + 12 + 3;
    for (const std::size_t end : {afterHeader, afterPhysical, afterText, whole.size() - 12, whole.size()}) {
        NSData bytes = whole;
        bytes[end - 1] ^= 1;
        const Refusal refusal = refusalOfDecoding("PNG", bytes);
        EXPECT_EQ(refusal.code, NSErrorCode::CorruptData) << end;
        EXPECT_THAT(refusal.reason, HasSubstr("CRC")) << end;
    }
}

/// A picture whose compressed pixels are given.
NSData pngOfPacked(const NSData& packed) {
    NSData bytes = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1a, '\n'};
    for (const PngChunk& chunk :
         {numbersChunk("IHDR", {4, 2}, {8, 0, 0, 0, 0}), PngChunk{"IDAT", packed}, PngChunk{"IEND", {}}}) {
        const NSData encoded = pngChunk(chunk);
        bytes.insert(bytes.end(), encoded.begin(), encoded.end());
    }
    return bytes;
}

TEST(PngCodec, RefusesPixelsThatDoNotFillThePicture) {
    EXPECT_EQ(samplesOf(decode("PNG", pngOfPacked(zlibPacked(NSData{0, 1, 2, 3, 4, 0, 5, 6, 7, 8})))),
              (Samples{1, 2, 3, 4, 5, 6, 7, 8}));
    EXPECT_EQ(refusalOfDecoding("PNG", pngOfPacked(zlibPacked(NSData{0, 1, 2, 3, 4, 0, 5, 6, 7}))).code,
              NSErrorCode::CorruptData);
}

TEST(PngCodec, RefusesPixelsWhoseOwnChecksumIsWrong) {
    NSData packed = zlibPacked(NSData{0, 1, 2, 3, 4, 0, 5, 6, 7, 8});
    packed.back() ^= 1;
    EXPECT_EQ(refusalOfDecoding("PNG", pngOfPacked(packed)).code, NSErrorCode::CorruptData);
}

TEST(PngCodec, ToleratesBytesAfterTheEnd) {
    NSData bytes = rawPng(described(8, 2), pattern(width, height, 3, 255));
    bytes.insert(bytes.end(), {1, 2, 3});
    EXPECT_EQ(samplesOf(decode("PNG", bytes)), pattern(width, height, 3, 255));
}

TEST(PngCodec, RefusesHeadersBeyondTheLimitsOrWithoutPixels) {
    const auto lying = [](std::uint32_t w, std::uint32_t h) {
        NSData bytes = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1a, '\n'};
        const NSData header = pngChunk(numbersChunk("IHDR", {w, h}, {16, 6, 0, 0, 1}));
        const NSData pixels = pngChunk({"IDAT", zlibPacked(NSData{0})});
        bytes.insert(bytes.end(), header.begin(), header.end());
        bytes.insert(bytes.end(), pixels.begin(), pixels.end());
        return bytes;
    };
    EXPECT_EQ(refusalOfDecoding("PNG", lying(100000, 100000)).reason,
              "the picture is 100000 x 100000 pixels, more than the limit of 268435456 pixels");
    EXPECT_EQ(refusalOfDecoding("PNG", lying(100000, 100000)).code, NSErrorCode::TooLarge);
    EXPECT_EQ(readHeader("PNG", lying(100000, 100000)).height, 100000U);
    EXPECT_EQ(refusalOfDecoding("PNG", lying(0x7fffffff, 1)).code, NSErrorCode::TooLarge);
    EXPECT_EQ(refusalOfDecoding("PNG", lying(0, 7)).code, NSErrorCode::CorruptData);
    EXPECT_EQ(refusalOfDecoding("PNG", lying(7, 0)).code, NSErrorCode::CorruptData);
    EXPECT_EQ(refusalOfDecoding("PNG", lying(0x80000000, 1)).code, NSErrorCode::CorruptData);
}

TEST(PngCodec, ReadsRowsOfMoreThanAMillionPixels) {
    const Samples samples(1'500'000, 1);
    RawPng picture = {1'500'000, 1, 1, 0, {}, {}};
    EXPECT_EQ(samplesOf(decode("PNG", rawPng(picture, samples))), Samples(1'500'000, 255));
}

TEST(PngCodec, CountsTheLibrarysRowsTowardsTheLimitWhereTheyAreLarge) {
    // One row of 1500000 pixels takes the library 36 MB.
    const NSData bytes = rawPng({1'500'000, 1, 1, 0, {}, {}}, Samples(1'500'000, 1));
    EXPECT_EQ(refusalOfDecoding("PNG", bytes, {1'500'000, 1'500'000}).code, NSErrorCode::TooLarge);
}

TEST(PngCodec, RefusesAProfileThatUnpacksToTooMuch) {
    NSData profile = sRGBProfile();
    profile.resize(32U << 20); // its own first word says so too
    profile[0] = 2;
    profile[1] = profile[2] = profile[3] = 0;
    RawPng picture = described(8, 2);
    picture.beforePixels = {profileChunk(profile)};
    const Refusal refusal = refusalOfDecoding("PNG", rawPng(picture, pattern(width, height, 3, 255)));
    EXPECT_EQ(refusal.code, NSErrorCode::TooLarge);
    EXPECT_THAT(refusal.reason, HasSubstr("profile"));
}

TEST(PngCodec, LeavesPackedTextPacked) {
    NSData text = {'a', 0, 0};
    const NSData packed = zlibPacked(NSData(30U << 20)); // 30 MB in about as many kilobytes
    text.insert(text.end(), packed.begin(), packed.end());
    RawPng picture = described(8, 2);
    picture.beforePixels.assign(20, {"zTXt", text});
    const Samples samples = pattern(width, height, 3, 255);
    EXPECT_EQ(samplesOf(decode("PNG", rawPng(picture, samples))), samples);
}

} // namespace

} // namespace Imaging::Platform
