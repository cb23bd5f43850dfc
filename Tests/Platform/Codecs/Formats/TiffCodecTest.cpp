// Also tests: Platform/Codecs/Formats/TiffReader.cpp

#include "Tests/Platform/Codecs/CodecFixtures.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <tiffio.h>

namespace Imaging::Platform {

namespace {

using namespace Fixtures;
using testing::HasSubstr;

constexpr std::uint32_t width = 21; // neither a whole number of tiles nor of strips
constexpr std::uint32_t height = 19;

RawTiff described(int bits, int samplesPerPixel, int photometric) {
    RawTiff picture;
    picture.width = width;
    picture.height = height;
    picture.bits = bits;
    picture.samplesPerPixel = samplesPerPixel;
    picture.photometric = photometric;
    return picture;
}

RawTiff strips(RawTiff picture) {
    picture.rowsPerStrip = 5;
    return picture;
}

RawTiff tiles(RawTiff picture) {
    picture.tile = 16;
    return picture;
}

/// Strips and tiles, together and in planes, in both byte orders and as BigTIFF.
std::vector<RawTiff> arrangements(const RawTiff& picture) {
    std::vector<RawTiff> all;
    for (const RawTiff& pieces : {picture, strips(picture), tiles(picture)}) {
        for (const bool separate : {false, true}) {
            for (const char* mode : {"wl", "wb", "w8b"}) {
                RawTiff arranged = pieces;
                arranged.separate = separate;
                arranged.mode = mode;
                all.push_back(arranged);
            }
        }
    }
    return all;
}

std::uint32_t largest(int bits) { return (1U << bits) - 1; }

TEST(TiffCodec, KeepsGrayInEveryArrangement) {
    for (const int bits : {8, 16}) {
        const Samples samples = pattern(width, height, 1, largest(bits));
        for (const RawTiff& picture : arrangements(described(bits, 1, PHOTOMETRIC_MINISBLACK))) {
            const DecodedPicture decoded = decode("TIFF", rawTiff(picture, samples));
            EXPECT_EQ(decoded.header.formatName, "TIFF");
            EXPECT_EQ(decoded.header.bitsPerSample, bits);
            EXPECT_EQ(decoded.header.color, SampleColor::White);
            EXPECT_FALSE(decoded.header.hasAlpha);
            EXPECT_EQ(samplesOf(decoded), samples) << picture.mode << picture.tile << picture.separate;
        }
    }
}

TEST(TiffCodec, KeepsRGBInEveryArrangement) {
    for (const int bits : {8, 16}) {
        const Samples samples = pattern(width, height, 3, largest(bits));
        for (const RawTiff& picture : arrangements(described(bits, 3, PHOTOMETRIC_RGB))) {
            const DecodedPicture decoded = decode("TIFF", rawTiff(picture, samples));
            EXPECT_EQ(decoded.header.color, SampleColor::RGB);
            EXPECT_EQ(samplesOf(decoded), samples) << picture.mode << picture.tile << picture.separate;
        }
    }
}

TEST(TiffCodec, KeepsAssociatedAlphaAsItIsInEveryArrangement) {
    for (const int bits : {8, 16}) {
        for (const int colors : {1, 3}) {
            const Samples samples = premultipliedPattern(width, height, colors + 1, largest(bits));
            RawTiff picture =
                described(bits, colors + 1, colors == 3 ? PHOTOMETRIC_RGB : PHOTOMETRIC_MINISBLACK);
            picture.extraSamples = {EXTRASAMPLE_ASSOCALPHA};
            for (const RawTiff& arranged : arrangements(picture)) {
                const DecodedPicture decoded = decode("TIFF", rawTiff(arranged, samples));
                EXPECT_TRUE(decoded.header.hasAlpha);
                EXPECT_EQ(decoded.header.samplesPerPixel(), colors + 1);
                EXPECT_EQ(samplesOf(decoded), samples) << arranged.mode << arranged.tile << arranged.separate;
            }
        }
    }
}

TEST(TiffCodec, MultipliesByUnassociatedAlpha) {
    for (const int bits : {8, 16}) {
        const std::uint32_t max = largest(bits);
        const Samples samples = pattern(width, height, 4, max);
        Samples expected = samples;
        for (std::size_t i = 0; i < expected.size(); ++i) {
            const double alpha = samples[i / 4 * 4 + 3];
            if (i % 4 != 3) expected[i] = static_cast<std::uint16_t>(samples[i] * alpha / max + 0.5);
        }
        RawTiff picture = described(bits, 4, PHOTOMETRIC_RGB);
        picture.extraSamples = {EXTRASAMPLE_UNASSALPHA};
        EXPECT_EQ(samplesOf(decode("TIFF", rawTiff(picture, samples))), expected);
        EXPECT_EQ(samplesOf(decode("TIFF", rawTiff(tiles(picture), samples))), expected);
    }
}

TEST(TiffCodec, TellsGrayWhoseZeroIsWhite) {
    const Samples samples = pattern(width, height, 1, 255);
    const DecodedPicture decoded = decode("TIFF", rawTiff(described(8, 1, PHOTOMETRIC_MINISWHITE), samples));
    EXPECT_EQ(decoded.header.color, SampleColor::Black);
    EXPECT_EQ(samplesOf(decoded), samples);
}

/// Every so many samples of a picture, from those at the given places.
Samples taken(const Samples& samples, std::size_t perPixel, const std::vector<std::size_t>& places) {
    Samples result;
    for (std::size_t i = 0; i < samples.size(); i += perPixel) {
        for (const std::size_t place : places) result.push_back(samples[i + place]);
    }
    return result;
}

TEST(TiffCodec, DropsExtraSamplesThatDoNotSayTheyAreAlpha) {
    const Samples samples = pattern(width, height, 4, 255);
    RawTiff picture = described(8, 4, PHOTOMETRIC_RGB);
    picture.extraSamples = {EXTRASAMPLE_UNSPECIFIED};
    for (const RawTiff& arranged : arrangements(picture)) {
        const DecodedPicture decoded = decode("TIFF", rawTiff(arranged, samples));
        EXPECT_FALSE(decoded.header.hasAlpha);
        EXPECT_EQ(samplesOf(decoded), taken(samples, 4, {0, 1, 2}));
    }
}

TEST(TiffCodec, FindsAlphaAmongSeveralExtraSamples) {
    const Samples samples = premultipliedPattern(width, height, 6, 65535);
    RawTiff picture = described(16, 6, PHOTOMETRIC_RGB);
    picture.extraSamples = {EXTRASAMPLE_UNSPECIFIED, EXTRASAMPLE_ASSOCALPHA, EXTRASAMPLE_UNSPECIFIED};
    for (const RawTiff& arranged : arrangements(picture)) {
        const DecodedPicture decoded = decode("TIFF", rawTiff(arranged, samples));
        EXPECT_TRUE(decoded.header.hasAlpha);
        EXPECT_EQ(samplesOf(decoded), taken(samples, 6, {0, 1, 2, 4}));
    }
}

TEST(TiffCodec, ReadsEveryLosslessCompression) {
    for (const int compression : {COMPRESSION_LZW, COMPRESSION_ADOBE_DEFLATE, COMPRESSION_PACKBITS,
                                  COMPRESSION_LZMA, COMPRESSION_ZSTD}) {
        ASSERT_NE(TIFFIsCODECConfigured(static_cast<std::uint16_t>(compression)), 0) << compression;
        const Samples samples = pattern(width, height, 3, 65535);
        RawTiff picture = described(16, 3, PHOTOMETRIC_RGB);
        picture.compression = compression;
        EXPECT_EQ(samplesOf(decode("TIFF", rawTiff(strips(picture), samples))), samples) << compression;
        if (compression == COMPRESSION_PACKBITS) continue; // has no predictor
        picture.predictor = 2;
        picture.mode = "wb";
        EXPECT_EQ(samplesOf(decode("TIFF", rawTiff(tiles(picture), samples))), samples) << compression;
    }
}

TEST(TiffCodec, WidensBitsToRGB) {
    const Samples samples = pattern(width, height, 1, 1);
    for (const int photometric : {PHOTOMETRIC_MINISBLACK, PHOTOMETRIC_MINISWHITE}) {
        Samples expected;
        for (const std::uint16_t sample : samples) {
            const bool isWhite = (sample != 0) == (photometric == PHOTOMETRIC_MINISBLACK);
            expected.insert(expected.end(), 3, isWhite ? 255 : 0);
        }
        for (const int compression : {COMPRESSION_NONE, COMPRESSION_CCITTFAX4, COMPRESSION_CCITTFAX3}) {
            RawTiff picture = described(1, 1, photometric);
            picture.compression = compression;
            const DecodedPicture decoded = decode("TIFF", rawTiff(strips(picture), samples));
            EXPECT_EQ(decoded.header.color, SampleColor::RGB);
            EXPECT_EQ(decoded.header.bitsPerSample, 8);
            EXPECT_EQ(samplesOf(decoded), expected) << photometric << " " << compression;
        }
    }
}

TEST(TiffCodec, KeepsTheStoredOrderOfRowsInEveryOrientation) {
    const Samples gray = pattern(width, height, 1, 255);
    const Samples bits = pattern(width, height, 1, 15);
    Samples widened;
    for (const std::uint16_t sample : bits)
        widened.insert(widened.end(), 3, static_cast<std::uint16_t>(sample * 17));
    for (int orientation = 1; orientation <= 8; ++orientation) {
        RawTiff direct = strips(described(8, 1, PHOTOMETRIC_MINISBLACK));
        direct.orientation = orientation;
        const DecodedPicture decoded = decode("TIFF", rawTiff(direct, gray));
        EXPECT_EQ(decoded.header.orientation, orientation);
        EXPECT_EQ(samplesOf(decoded), gray);
        for (RawTiff converted : {strips(described(4, 1, PHOTOMETRIC_MINISBLACK)),
                                  tiles(described(4, 1, PHOTOMETRIC_MINISBLACK))}) {
            converted.orientation = orientation;
            const DecodedPicture other = decode("TIFF", rawTiff(converted, bits));
            EXPECT_EQ(other.header.orientation, orientation);
            EXPECT_EQ(samplesOf(other), widened) << orientation;
        }
    }
}

TEST(TiffCodec, LooksUpPalettes) {
    for (const int bits : {1, 4, 8}) {
        const Samples samples = pattern(width, height, 1, largest(bits));
        RawTiff picture = described(bits, 1, PHOTOMETRIC_PALETTE);
        const std::size_t colors = std::size_t{1} << bits;
        for (std::size_t i = 0; i < 3 * colors; ++i) {
            picture.colorMap.push_back(static_cast<std::uint16_t>((i * 37 + 5) % 256 * 256 + 128));
        }
        Samples expected;
        for (const std::size_t index : samples) {
            for (std::size_t s = 0; s < 3; ++s) {
                expected.push_back(static_cast<std::uint16_t>(picture.colorMap[s * colors + index] / 256));
            }
        }
        EXPECT_EQ(samplesOf(decode("TIFF", rawTiff(strips(picture), samples))), expected) << bits;
        EXPECT_EQ(samplesOf(decode("TIFF", rawTiff(tiles(picture), samples))), expected) << bits;
    }
}

TEST(TiffCodec, ConvertsCMYKInEveryArrangement) {
    for (const int bits : {8, 16}) {
        const double max = largest(bits);
        const Samples inks = pattern(width, height, 4, largest(bits));
        Samples expected;
        for (std::size_t i = 0; i < inks.size(); i += 4) {
            for (std::size_t ink = 0; ink < 3; ++ink) {
                const double paper = (max - inks[i + ink]) * (max - inks[i + 3]) / max;
                expected.push_back(static_cast<std::uint16_t>(paper + 0.5));
            }
        }
        for (RawTiff picture : arrangements(described(bits, 4, PHOTOMETRIC_SEPARATED))) {
            picture.profile = profileStub("CMYK");
            const DecodedPicture decoded = decode("TIFF", rawTiff(picture, inks));
            EXPECT_EQ(decoded.header.color, SampleColor::RGB);
            EXPECT_TRUE(decoded.header.colorProfile.empty());
            EXPECT_EQ(samplesOf(decoded), expected) << picture.mode << picture.tile << picture.separate;
        }
    }
}

TEST(TiffCodec, ConvertsCMYKWithAlpha) {
    RawTiff picture = described(8, 5, PHOTOMETRIC_SEPARATED);
    picture.width = picture.height = 1;
    picture.extraSamples = {EXTRASAMPLE_UNASSALPHA};
    // 200 * 204 / 255 = 160 and 80, and a fifth of that
    EXPECT_EQ(samplesOf(decode("TIFF", rawTiff(picture, {55, 155, 255, 51, 51}))), (Samples{32, 16, 0, 51}));
}

TEST(TiffCodec, ConvertsYCbCr) {
    // Luma alone is gray; the second colour is worked out with R = Y + 1.402 (Cr - 128), B = Y + 1.772 (Cb -
    // 128) and G = Y - 0.34414 (Cb - 128) - 0.71414 (Cr - 128).
    Samples samples;
    for (std::uint32_t i = 0; i < width * height; ++i) {
        const bool isGray = i % 2 == 0;
        samples.insert(samples.end(), {static_cast<std::uint16_t>(isGray ? 77 : 100),
                                       static_cast<std::uint16_t>(isGray ? 128 : 138),
                                       static_cast<std::uint16_t>(isGray ? 128 : 178)});
    }
    RawTiff picture = strips(described(8, 3, PHOTOMETRIC_YCBCR));
    picture.subsampling = {1, 1};
    const Samples decoded = samplesOf(decode("TIFF", rawTiff(picture, samples)));
    const double expected[2][3] = {{77, 77, 77}, {170.1, 60.85, 117.72}};
    for (std::size_t i = 0; i < decoded.size(); ++i)
        ASSERT_NEAR(decoded[i], expected[i / 3 % 2][i % 3], 1.01) << i;
}

TEST(TiffCodec, ReadsJPEGInTIFF) {
    RawTiff gray = described(8, 1, PHOTOMETRIC_MINISBLACK);
    gray.compression = COMPRESSION_JPEG;
    gray.rowsPerStrip = 8;
    EXPECT_EQ(samplesOf(decode("TIFF", rawTiff(gray, flatBlocks(width, height, 1)))),
              flatBlocks(width, height, 1));
    RawTiff color = tiles(described(8, 3, PHOTOMETRIC_YCBCR));
    color.compression = COMPRESSION_JPEG;
    color.jpegFromRgb = true;
    color.subsampling = {1, 1};
    const Samples samples = flatBlocks(width, height, 3);
    const Samples decoded = samplesOf(decode("TIFF", rawTiff(color, samples)));
    // Where tiles are filled up beyond the picture, blocks are not flat; those are left out.
    for (std::uint32_t y = 0; y < 16; ++y) {
        for (std::uint32_t i = 0; i < 16 * 3; ++i) {
            const std::size_t at = std::size_t{y} * width * 3 + i;
            ASSERT_NEAR(decoded[at], samples[at], 3) << y << " " << i;
        }
    }
}

TEST(TiffCodec, ReadsResolutionInInchesAndCentimetres) {
    RawTiff picture = described(8, 1, PHOTOMETRIC_MINISBLACK);
    const Samples samples = pattern(width, height, 1, 255);
    EXPECT_EQ(readHeader("TIFF", rawTiff(picture, samples)).resolutionX, 0);
    picture.resolutionX = 300;
    picture.resolutionY = 72.5F;
    EXPECT_DOUBLE_EQ(readHeader("TIFF", rawTiff(picture, samples)).resolutionX,
                     300); // inches where nothing is said
    picture.unit = RESUNIT_INCH;
    EXPECT_DOUBLE_EQ(readHeader("TIFF", rawTiff(picture, samples)).resolutionY, 72.5);
    picture.unit = RESUNIT_CENTIMETER;
    EXPECT_DOUBLE_EQ(readHeader("TIFF", rawTiff(picture, samples)).resolutionX, 762);
    picture.unit = RESUNIT_NONE;
    EXPECT_EQ(readHeader("TIFF", rawTiff(picture, samples)).resolutionX, 0);
}

TEST(TiffCodec, GivesProfilesByteForByte) {
    RawTiff color = described(16, 3, PHOTOMETRIC_RGB);
    color.profile = sRGBProfile();
    EXPECT_EQ(decode("TIFF", rawTiff(color, pattern(width, height, 3, 65535))).header.colorProfile,
              color.profile);
    RawTiff gray = described(8, 1, PHOTOMETRIC_MINISWHITE);
    gray.profile = grayProfile();
    EXPECT_EQ(readHeader("TIFF", rawTiff(gray, pattern(width, height, 1, 255))).colorProfile, gray.profile);
    // Bits come out as RGB, which a profile for gray says nothing about.
    RawTiff bits = described(1, 1, PHOTOMETRIC_MINISBLACK);
    bits.profile = grayProfile();
    EXPECT_TRUE(readHeader("TIFF", rawTiff(bits, pattern(width, height, 1, 1))).colorProfile.empty());
}

TEST(TiffCodec, DescribesInTheHeaderWhatDecodingGives) {
    RawTiff picture = described(16, 4, PHOTOMETRIC_RGB);
    picture.extraSamples = {EXTRASAMPLE_UNASSALPHA};
    picture.profile = sRGBProfile();
    picture.orientation = 7;
    picture.resolutionX = 100;
    picture.resolutionY = 200;
    const NSData direct = rawTiff(picture, pattern(width, height, 4, 65535));
    expectEqualHeaders(readHeader("TIFF", direct), decode("TIFF", direct).header);
    const NSData converted = rawTiff(described(4, 1, PHOTOMETRIC_MINISWHITE), pattern(width, height, 1, 15));
    expectEqualHeaders(readHeader("TIFF", converted), decode("TIFF", converted).header);
}

TEST(TiffCodec, RefusesKindsOfSamplesThatItCannotRead) {
    const auto refusal = [](const NSData& bytes) { return refusalOf([&] { readHeader("TIFF", bytes); }); };
    RawTiff signedSamples = described(16, 1, PHOTOMETRIC_MINISBLACK);
    signedSamples.sampleFormat = SAMPLEFORMAT_INT;
    const NSData bytes = rawTiff(signedSamples, pattern(width, height, 1, 65535));
    EXPECT_EQ(refusal(bytes).code, NSErrorCode::UnsupportedFormat);
    EXPECT_THAT(refusal(bytes).reason, HasSubstr("signed"));
    EXPECT_EQ(refusalOfDecoding("TIFF", bytes).code, NSErrorCode::UnsupportedFormat);
    RawTiff palette = described(8, 2, PHOTOMETRIC_PALETTE);
    palette.colorMap.assign(768, 7);
    palette.extraSamples = {EXTRASAMPLE_UNASSALPHA};
    EXPECT_EQ(refusal(rawTiff(palette, pattern(width, height, 2, 255))).code, NSErrorCode::UnsupportedFormat);
}

} // namespace

} // namespace Imaging::Platform
