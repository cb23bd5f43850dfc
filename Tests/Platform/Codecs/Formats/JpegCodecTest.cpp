#include "Tests/Platform/Codecs/CodecFixtures.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>

namespace Imaging::Platform {

namespace {

using namespace Fixtures;
using testing::HasSubstr;

constexpr std::uint32_t width = 21; // not a whole number of blocks either way
constexpr std::uint32_t height = 13;

RawJpeg plain(int components) {
    RawJpeg picture;
    picture.width = width;
    picture.height = height;
    picture.components = components;
    return picture;
}

RawJpeg transformed(int components) {
    RawJpeg picture = plain(components);
    picture.transformed = true;
    return picture;
}

/// The position of the first marker of a kind: its 0xff byte.
std::size_t markerAt(const NSData& bytes, std::uint8_t marker) {
    const NSData wanted = {0xff, marker};
    return static_cast<std::size_t>(std::search(bytes.begin(), bytes.end(), wanted.begin(), wanted.end()) -
                                    bytes.begin());
}

void insert(NSData& bytes, std::size_t at, const NSData& inserted) {
    bytes.insert(bytes.begin() + static_cast<std::ptrdiff_t>(at), inserted.begin(), inserted.end());
}

void expectNear(const Samples& actual, const Samples& expected, int tolerance) {
    ASSERT_EQ(actual.size(), expected.size());
    for (std::size_t i = 0; i < actual.size(); ++i) ASSERT_NEAR(actual[i], expected[i], tolerance) << i;
}

/// What CMYK is by the plain product, in floating point.
Samples rgbOfInks(const Samples& inks, bool inverted) {
    Samples rgb;
    for (std::size_t i = 0; i < inks.size(); i += 4) {
        const auto paper = [&](std::size_t ink) { return inverted ? inks[i + ink] : 255 - inks[i + ink]; };
        for (std::size_t ink = 0; ink < 3; ++ink) {
            rgb.push_back(static_cast<std::uint16_t>(paper(ink) * paper(3) / 255.0 + 0.5));
        }
    }
    return rgb;
}

TEST(JpegCodec, KeepsGrayAsOneSample) {
    const Samples samples = flatBlocks(width, height, 1);
    const DecodedPicture picture = decode("JPEG", rawJpeg(plain(1), samples));
    EXPECT_EQ(picture.header.formatName, "JPEG");
    EXPECT_EQ(picture.header.width, width);
    EXPECT_EQ(picture.header.height, height);
    EXPECT_EQ(picture.header.bitsPerSample, 8);
    EXPECT_EQ(picture.header.color, SampleColor::White);
    EXPECT_FALSE(picture.header.hasAlpha);
    EXPECT_EQ(samplesOf(picture), samples);
}

TEST(JpegCodec, ReadsRGBWithoutATransform) {
    const Samples samples = flatBlocks(width, height, 3);
    const DecodedPicture picture = decode("JPEG", rawJpeg(plain(3), samples));
    EXPECT_EQ(picture.header.color, SampleColor::RGB);
    EXPECT_EQ(samplesOf(picture), samples);
}

TEST(JpegCodec, ConvertsYCbCrToRGB) {
    const Samples samples = flatBlocks(width, height, 3);
    expectNear(samplesOf(decode("JPEG", rawJpeg(transformed(3), samples))), samples, 2);
}

TEST(JpegCodec, ReadsProgressiveAndArithmeticPictures) {
    const Samples samples = flatBlocks(width, height, 3);
    RawJpeg picture = plain(3);
    picture.progressive = true;
    EXPECT_EQ(samplesOf(decode("JPEG", rawJpeg(picture, samples))), samples);
    picture.arithmetic = true;
    EXPECT_EQ(samplesOf(decode("JPEG", rawJpeg(picture, samples))), samples);
}

TEST(JpegCodec, ConvertsInvertedCMYKOfAdobeToRGB) {
    const Samples inks = flatBlocks(width, height, 4);
    const DecodedPicture picture = decode("JPEG", rawJpeg(plain(4), inks));
    EXPECT_EQ(picture.header.color, SampleColor::RGB);
    EXPECT_EQ(samplesOf(picture), rgbOfInks(inks, true));
}

TEST(JpegCodec, ConvertsCMYKWithoutAdobesMarkerToRGB) {
    RawJpeg picture = plain(4);
    picture.adobe = false;
    const Samples inks = flatBlocks(width, height, 4);
    EXPECT_EQ(samplesOf(decode("JPEG", rawJpeg(picture, inks))), rgbOfInks(inks, false));
}

TEST(JpegCodec, ConvertsYCCKToRGB) {
    const Samples inks = flatBlocks(width, height, 4);
    expectNear(samplesOf(decode("JPEG", rawJpeg(transformed(4), inks))), rgbOfInks(inks, true), 3);
}

TEST(JpegCodec, ReadsDensityPerInchAndPerCentimetre) {
    RawJpeg picture = transformed(3);
    picture.density = 150; // and twice that vertically
    picture.densityUnit = 1;
    const Samples samples = flatBlocks(width, height, 3);
    EXPECT_DOUBLE_EQ(readHeader("JPEG", rawJpeg(picture, samples)).resolutionX, 150);
    EXPECT_DOUBLE_EQ(readHeader("JPEG", rawJpeg(picture, samples)).resolutionY, 300);
    picture.densityUnit = 2;
    EXPECT_DOUBLE_EQ(readHeader("JPEG", rawJpeg(picture, samples)).resolutionX, 381); // 150 * 2.54
    picture.densityUnit = 0;
    EXPECT_EQ(readHeader("JPEG", rawJpeg(picture, samples)).resolutionX, 0);
}

TEST(JpegCodec, TakesResolutionFromExifOnlyWithoutADensity) {
    RawJpeg picture = transformed(3);
    picture.markers = {{0xe1, exifMarker({true, {}, {{240, 1}}, 2})}};
    const Samples samples = flatBlocks(width, height, 3);
    EXPECT_DOUBLE_EQ(readHeader("JPEG", rawJpeg(picture, samples)).resolutionX, 240);
    picture.densityUnit = 1;
    picture.density = 72;
    EXPECT_DOUBLE_EQ(readHeader("JPEG", rawJpeg(picture, samples)).resolutionX, 72);
    picture.jfif = false;
    EXPECT_DOUBLE_EQ(readHeader("JPEG", rawJpeg(picture, samples)).resolutionX, 240);
}

TEST(JpegCodec, ReportsEveryOrientationAndTurnsNothing) {
    const Samples samples = flatBlocks(width, height, 1);
    for (int orientation = 1; orientation <= 8; ++orientation) {
        RawJpeg picture = plain(1);
        // Another APP1 marker comes first, as in files with XMP.
        picture.markers = {{0xe1, {'h', 't', 't', 'p'}}, {0xe1, exifMarker({false, orientation, {}, {}})}};
        const DecodedPicture decoded = decode("JPEG", rawJpeg(picture, samples));
        EXPECT_EQ(decoded.header.orientation, orientation);
        EXPECT_EQ(decoded.header.width, width);
        EXPECT_EQ(samplesOf(decoded), samples);
    }
}

TEST(JpegCodec, GivesProfilesByteForByte) {
    RawJpeg color = transformed(3);
    color.profile = sRGBProfile();
    const Samples samples = flatBlocks(width, height, 3);
    EXPECT_EQ(decode("JPEG", rawJpeg(color, samples)).header.colorProfile, color.profile);
    RawJpeg gray = plain(1);
    gray.profile = grayProfile();
    EXPECT_EQ(readHeader("JPEG", rawJpeg(gray, flatBlocks(width, height, 1))).colorProfile, gray.profile);
}

TEST(JpegCodec, JoinsAProfileInSeveralPieces) {
    RawJpeg picture = transformed(3);
    picture.profile = sRGBProfile();
    picture.profile.resize(150'000, 0x5a); // more than two markers hold
    EXPECT_EQ(readHeader("JPEG", rawJpeg(picture, flatBlocks(width, height, 3))).colorProfile,
              picture.profile);
}

TEST(JpegCodec, LeavesOutProfilesForOtherColours) {
    RawJpeg inks = plain(4);
    inks.profile = profileStub("CMYK");
    EXPECT_TRUE(decode("JPEG", rawJpeg(inks, flatBlocks(width, height, 4))).header.colorProfile.empty());
    inks.profile = sRGBProfile(); // a lie about the inks, and not a description of what becomes of them
    EXPECT_TRUE(readHeader("JPEG", rawJpeg(inks, flatBlocks(width, height, 4))).colorProfile.empty());
    RawJpeg color = transformed(3);
    color.profile = grayProfile();
    EXPECT_TRUE(readHeader("JPEG", rawJpeg(color, flatBlocks(width, height, 3))).colorProfile.empty());
}

TEST(JpegCodec, LeavesOutAProfileThatLacksAPiece) {
    RawJpeg picture = transformed(3);
    NSData marker = {'I', 'C', 'C', '_', 'P', 'R', 'O', 'F', 'I', 'L', 'E', 0, 1, 2}; // the first of two
    const NSData profile = sRGBProfile();
    marker.insert(marker.end(), profile.begin(), profile.end());
    picture.markers = {{0xe2, marker}};
    const Samples samples = flatBlocks(width, height, 3);
    const DecodedPicture decoded = decode("JPEG", rawJpeg(picture, samples));
    EXPECT_TRUE(decoded.header.colorProfile.empty());
    expectNear(samplesOf(decoded), samples, 2);
}

TEST(JpegCodec, DescribesInTheHeaderWhatDecodingGives) {
    RawJpeg picture = transformed(3);
    picture.profile = sRGBProfile();
    picture.densityUnit = 1;
    picture.density = 99;
    picture.markers = {{0xe1, exifMarker({true, 5, {}, {}})}};
    const NSData bytes = rawJpeg(picture, flatBlocks(width, height, 3));
    expectEqualHeaders(readHeader("JPEG", bytes), decode("JPEG", bytes).header);
    const NSData inks = rawJpeg(plain(4), flatBlocks(width, height, 4));
    expectEqualHeaders(readHeader("JPEG", inks), decode("JPEG", inks).header);
}

TEST(JpegCodec, ReadsAHeaderWithoutAnyPixels) {
    const NSData bytes = rawJpeg(transformed(3), flatBlocks(width, height, 3));
    const std::size_t scan = markerAt(bytes, 0xda);
    const NSData header(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(scan + 14));
    EXPECT_EQ(readHeader("JPEG", header).width, width);
    EXPECT_EQ(refusalOfDecoding("JPEG", header).code, NSErrorCode::CorruptData);
}

TEST(JpegCodec, ToleratesStrayBytesBeforeAMarkerAndUnknownTransforms) {
    const Samples samples = flatBlocks(width, height, 1);
    NSData stray = rawJpeg(plain(1), samples);
    insert(stray, markerAt(stray, 0xdb), {1, 2, 3});
    EXPECT_EQ(samplesOf(decode("JPEG", stray)), samples);
    const Samples color = flatBlocks(width, height, 3);
    NSData adobe = rawJpeg(plain(3), color);
    const std::size_t marker = markerAt(adobe, 0xee);
    adobe[marker + 15] = 7; // the last byte of the marker: no transform that is known, so YCbCr is assumed
    EXPECT_EQ(decode("JPEG", adobe).header.width, width);
}

TEST(JpegCodec, ToleratesBytesAfterTheEnd) {
    const Samples samples = flatBlocks(width, height, 1);
    NSData bytes = rawJpeg(plain(1), samples);
    bytes.insert(bytes.end(), {9, 8, 7});
    EXPECT_EQ(samplesOf(decode("JPEG", bytes)), samples);
}

TEST(JpegCodec, RefusesAPictureThatIsCutShort) {
    NSData bytes = rawJpeg(plain(1), flatBlocks(width, height, 1));
    bytes.resize(bytes.size() - 3);
    const Refusal refusal = refusalOfDecoding("JPEG", bytes);
    EXPECT_EQ(refusal.code, NSErrorCode::CorruptData);
    EXPECT_EQ(refusal.reason, "the JPEG data ends before the picture is complete; the file may be cut short");
}

TEST(JpegCodec, CheckingRefusesWhatDecodingRefusesInTheSameWords) {
    RawJpeg progressive = plain(3);
    progressive.progressive = true;
    const auto codec = codecForFormat("JPEG");
    for (const NSData& whole : {rawJpeg(plain(1), pattern(width, height, 1, 255)),
                                rawJpeg(transformed(3), pattern(width, height, 3, 255)),
                                rawJpeg(progressive, pattern(width, height, 3, 255)),
                                rawJpeg(transformed(4), pattern(width, height, 4, 255))}) {
        EXPECT_NO_THROW(codec->check(whole, pictureLimits()));
        int refused = 0;
        const auto compare = [&](const NSData& bytes) {
            const auto reasonOf = [](const auto& read) -> std::string {
                try {
                    read();
                    return "";
                } catch (const CodecException& exception) {
                    return exception.reason();
                }
            };
            const std::string reason = reasonOf([&] { codec->decode(bytes, pictureLimits()); });
            EXPECT_EQ(reasonOf([&] { codec->check(bytes, pictureLimits()); }), reason);
            refused += reason.empty() ? 0 : 1;
        };
        for (std::size_t i = 0; i < whole.size(); ++i) {
            compare({whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(i)}); // cut short
            NSData damaged = whole;
            damaged[i] ^= 0x10;
            compare(damaged);
        }
        EXPECT_GT(refused, static_cast<int>(whole.size())) << "all that are cut short, and some others";
    }
}

TEST(JpegCodec, RefusesAPictureWhoseEndMarkerComesTooEarly) {
    NSData bytes = rawJpeg(plain(1), pattern(width, height, 1, 255));
    bytes.resize((markerAt(bytes, 0xda) + bytes.size()) / 2);
    bytes.insert(bytes.end(), {0xff, 0xd9});
    const Refusal refusal = refusalOfDecoding("JPEG", bytes);
    EXPECT_EQ(refusal.code, NSErrorCode::CorruptData);
    EXPECT_THAT(refusal.reason, HasSubstr("damaged"));
}

TEST(JpegCodec, RefusesKindsOfJPEGThatItCannotRead) {
    const Samples samples = flatBlocks(width, height, 1);
    NSData twelveBits = rawJpeg(plain(1), samples);
    const std::size_t frame = markerAt(twelveBits, 0xc0);
    twelveBits[frame + 4] = 12;
    EXPECT_EQ(refusalOfDecoding("JPEG", twelveBits).code, NSErrorCode::UnsupportedFormat);
    EXPECT_THAT(refusalOfDecoding("JPEG", twelveBits).reason, HasSubstr("precision 12"));
    NSData lossless = rawJpeg(plain(1), samples);
    lossless[frame + 1] = 0xc3;
    EXPECT_EQ(refusalOfDecoding("JPEG", lossless).code, NSErrorCode::UnsupportedFormat);
    RawJpeg two = plain(2);
    two.jfif = false;
    const Refusal refusal = refusalOfDecoding("JPEG", rawJpeg(two, flatBlocks(width, height, 2)));
    EXPECT_EQ(refusal.code, NSErrorCode::UnsupportedFormat);
    EXPECT_THAT(refusal.reason, HasSubstr("2 components"));
}

TEST(JpegCodec, RefusesAPictureWithoutPixels) {
    NSData bytes = rawJpeg(plain(1), flatBlocks(width, height, 1));
    const std::size_t frame = markerAt(bytes, 0xc0);
    bytes[frame + 5] = bytes[frame + 6] = 0; // the height
    EXPECT_EQ(refusalOfDecoding("JPEG", bytes).code, NSErrorCode::CorruptData);
    EXPECT_EQ(refusalOf([&] { readHeader("JPEG", bytes); }).code, NSErrorCode::CorruptData);
}

TEST(JpegCodec, RefusesAHeaderBeyondTheLimits) {
    NSData bytes = rawJpeg(plain(1), flatBlocks(width, height, 1));
    const std::size_t frame = markerAt(bytes, 0xc0);
    for (std::size_t i = 5; i <= 8; ++i) bytes[frame + i] = 0xfa; // 64250 each way
    const Refusal refusal = refusalOfDecoding("JPEG", bytes);
    EXPECT_EQ(refusal.code, NSErrorCode::TooLarge);
    EXPECT_EQ(refusal.reason, "the picture is 64250 x 64250 pixels, more than the limit of 268435456 pixels");
    EXPECT_EQ(readHeader("JPEG", bytes).width, 64250U);
}

TEST(JpegCodec, CountsTheCoefficientsOfProgressivePicturesTowardsTheLimit) {
    // 1760 x 1760: 9.3 MB of pixels, and 18.6 MB of coefficients, which is above what goes uncounted.
    RawJpeg picture = plain(3);
    picture.width = picture.height = 1760;
    const std::uint64_t size = 1760ULL * 1760 * 3;
    const Samples samples(size, 128);
    EXPECT_EQ(decode("JPEG", rawJpeg(picture, samples), {1760 * 1760, size}).pixels.size(), size);
    picture.progressive = true;
    const NSData progressive = rawJpeg(picture, samples);
    EXPECT_EQ(refusalOfDecoding("JPEG", progressive, {1760 * 1760, size}).code, NSErrorCode::TooLarge);
    // The library rounds up to whole blocks; two and a bit times as much again is plenty.
    EXPECT_EQ(decode("JPEG", progressive, {1760 * 1760, size * 3 + size / 8}).pixels.data()[size - 1], 128);
}

TEST(JpegCodec, ReadsAHundredScansAndRefusesMore) {
    RawJpeg picture = plain(1);
    const Samples samples = flatBlocks(width, height, 1);
    picture.singleScans = 100;
    EXPECT_EQ(samplesOf(decode("JPEG", rawJpeg(picture, samples))), samples);
    picture.singleScans = 101;
    const Refusal refusal = refusalOfDecoding("JPEG", rawJpeg(picture, samples));
    EXPECT_EQ(refusal.code, NSErrorCode::TooLarge);
    EXPECT_THAT(refusal.reason, HasSubstr("100 scans"));
}

} // namespace

} // namespace Imaging::Platform
