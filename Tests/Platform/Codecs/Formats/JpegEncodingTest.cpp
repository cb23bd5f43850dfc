#include "Tests/Platform/Codecs/CodecFixtures.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <limits>

#include <jpeglib.h>

namespace Imaging::Platform {

namespace {

using namespace Fixtures;

struct Structure {
    int components = 0;
    int horizontal = 0; ///< sampling factors of the first component
    int vertical = 0;
    int firstQuantum = 0; ///< of the first table: 1 for the best quality
    bool progressive = false;
};

/// What the raw library says about a picture.
Structure structureOf(const NSData& bytes) {
    jpeg_decompress_struct info{};
    jpeg_error_mgr errors{};
    info.err = jpeg_std_error(&errors);
    jpeg_create_decompress(&info);
    jpeg_mem_src(&info, bytes.data(), bytes.size());
    jpeg_read_header(&info, TRUE);
    Structure structure{info.num_components, info.comp_info[0].h_samp_factor, info.comp_info[0].v_samp_factor,
                        info.quant_tbl_ptrs[0]->quantval[0], info.progressive_mode != FALSE};
    jpeg_destroy_decompress(&info);
    return structure;
}

constexpr std::uint32_t width = 19;
constexpr std::uint32_t height = 11;

TEST(JpegEncoding, KeepsFlatGrayBlocksAtTheBestQuality) {
    const Samples samples = flatBlocks(width, height, 1);
    const SourcePicture picture(width, height, 8, SampleColor::White, false, samples);
    const NSData bytes = encode("JPEG", picture, 1);
    EXPECT_EQ(structureOf(bytes).components, 1);
    EXPECT_EQ(samplesOf(decode("JPEG", bytes)), samples);
}

TEST(JpegEncoding, IsCloseForColourAndSkipsThePaddingOfRows) {
    const Samples samples = flatBlocks(width, height, 3);
    const SourcePicture tight(width, height, 8, SampleColor::RGB, false, samples);
    const SourcePicture padded(width, height, 8, SampleColor::RGB, false, samples, 5);
    const NSData bytes = encode("JPEG", tight, 1);
    EXPECT_EQ(encode("JPEG", padded, 1), bytes);
    const Samples decoded = samplesOf(decode("JPEG", bytes));
    for (std::size_t i = 0; i < samples.size(); ++i) ASSERT_NEAR(decoded[i], samples[i], 3) << i;
}

TEST(JpegEncoding, SamplesColourFullyFromNineTenthsOn) {
    const SourcePicture picture(width, height, 8, SampleColor::RGB, false, flatBlocks(width, height, 3));
    for (const double quality : {0.9, 1.0}) {
        EXPECT_EQ(structureOf(encode("JPEG", picture, quality)).horizontal, 1);
        EXPECT_EQ(structureOf(encode("JPEG", picture, quality)).vertical, 1);
    }
    EXPECT_EQ(structureOf(encode("JPEG", picture, 0.89)).horizontal, 2);
    EXPECT_EQ(structureOf(encode("JPEG", picture, 0.89)).vertical, 2);
    EXPECT_EQ(structureOf(encode("JPEG", picture, 0.89)).components, 3);
}

TEST(JpegEncoding, MapsQualityToOneToAHundredAndClampsIt) {
    const SourcePicture picture(width, height, 8, SampleColor::White, false, flatBlocks(width, height, 1));
    const auto quantum = [&](double quality) {
        return structureOf(encode("JPEG", picture, quality)).firstQuantum;
    };
    EXPECT_EQ(quantum(1), 1);
    EXPECT_EQ(quantum(7), 1);
    EXPECT_EQ(quantum(0.5), 16); // the standard's own table, whose first entry is 16
    EXPECT_EQ(quantum(0.75), 8);
    EXPECT_EQ(quantum(0), 255); // quality 1 scales it fifty times, beyond what a byte holds
    EXPECT_EQ(quantum(-3), 255);
    EXPECT_EQ(quantum(std::numeric_limits<double>::quiet_NaN()), 255);
}

TEST(JpegEncoding, GivesColourAsItLooksOnBlack) {
    // One colour per picture, so that it comes back exactly: premultiplied, 60 of 120 is 60 on black;
    // straight, 200 at alpha 51 is 200 * 51 / 255 = 40.
    const Samples premultiplied = {60, 120};
    SourcePicture picture(1, 1, 8, SampleColor::White, true, premultiplied);
    EXPECT_EQ(samplesOf(decode("JPEG", encode("JPEG", picture, 1))), Samples{60});
    SourcePicture straight(1, 1, 8, SampleColor::White, true, {200, 51});
    straight.premultiplied = false;
    EXPECT_EQ(samplesOf(decode("JPEG", encode("JPEG", straight, 1))), Samples{40});
    SourcePicture color(1, 1, 8, SampleColor::RGB, true, {77, 77, 77, 200});
    EXPECT_EQ(samplesOf(decode("JPEG", encode("JPEG", color, 1))), (Samples{77, 77, 77}));
}

TEST(JpegEncoding, ReducesSixteenBitsToTheNearestByte) {
    // 20174 / 257 = 78.498, 20175 / 257 = 78.502
    const SourcePicture below(1, 1, 16, SampleColor::White, false, {20174}, 2);
    EXPECT_EQ(samplesOf(decode("JPEG", encode("JPEG", below, 1))), Samples{78});
    const SourcePicture above(1, 1, 16, SampleColor::White, false, {20175});
    EXPECT_EQ(samplesOf(decode("JPEG", encode("JPEG", above, 1))), Samples{79});
}

TEST(JpegEncoding, InvertsGrayWhoseZeroIsWhite) {
    const SourcePicture plain(1, 1, 8, SampleColor::Black, false, {55});
    const DecodedPicture decoded = decode("JPEG", encode("JPEG", plain, 1));
    EXPECT_EQ(decoded.header.color, SampleColor::White);
    EXPECT_EQ(samplesOf(decoded), Samples{200});
    // Half transparent: 30 of 100 dark leaves 70 of light.
    const SourcePicture clear(1, 1, 8, SampleColor::Black, true, {30, 100});
    EXPECT_EQ(samplesOf(decode("JPEG", encode("JPEG", clear, 1))), Samples{70});
    SourcePicture straight(1, 1, 8, SampleColor::Black, true, {55, 51}); // (255 - 55) * 51 / 255
    straight.premultiplied = false;
    EXPECT_EQ(samplesOf(decode("JPEG", encode("JPEG", straight, 1))), Samples{40});
}

TEST(JpegEncoding, WritesResolutionAndProfileAndIsUpright) {
    SourcePicture picture(width, height, 8, SampleColor::RGB, false, flatBlocks(width, height, 3));
    picture.header.resolutionX = 300;
    picture.header.resolutionY = 149.6;
    picture.header.colorProfile = sRGBProfile();
    picture.header.colorProfile.resize(80'000, 1); // two markers
    picture.header.orientation = 6;
    const PictureHeader header = readHeader("JPEG", encode("JPEG", picture));
    EXPECT_DOUBLE_EQ(header.resolutionX, 300);
    EXPECT_DOUBLE_EQ(header.resolutionY, 150); // whole numbers only
    EXPECT_EQ(header.colorProfile, picture.header.colorProfile);
    EXPECT_EQ(header.orientation, 1);
}

TEST(JpegEncoding, DeclaresNoResolutionWhereThereIsNone) {
    const SourcePicture picture(width, height, 8, SampleColor::RGB, false, flatBlocks(width, height, 3));
    EXPECT_EQ(readHeader("JPEG", encode("JPEG", picture)).resolutionX, 0);
}

TEST(JpegEncoding, RefusesWhatJPEGCannotHold) {
    const SourcePicture picture(65501, 1, 8, SampleColor::White, false, Samples(65501, 0));
    const Refusal refusal = refusalOf([&] { encode("JPEG", picture); });
    EXPECT_EQ(refusal.code, NSErrorCode::TooLarge);
    EXPECT_THAT(refusal.reason, testing::HasSubstr("65500"));
    SourcePicture heavy(1, 1, 8, SampleColor::RGB, false, {1, 2, 3});
    heavy.header.colorProfile.resize(20'000'000);
    EXPECT_EQ(refusalOf([&] { encode("JPEG", heavy); }).code, NSErrorCode::TooLarge);
}

TEST(JpegEncoding, WritesPicturesOfTheLargestSize) {
    const SourcePicture picture(65500, 1, 8, SampleColor::White, false, Samples(65500, 128));
    EXPECT_EQ(samplesOf(decode("JPEG", encode("JPEG", picture, 1))), Samples(65500, 128));
}

TEST(Encoding, RefusesPicturesThatMakeNoSense) {
    for (const char* format : {"JPEG", "PNG", "TIFF"}) {
        SourcePicture picture(2, 2, 8, SampleColor::RGB, false, Samples(12, 0));
        picture.header.width = 0;
        EXPECT_EQ(refusalOf([&] { encode(format, picture); }).code, NSErrorCode::CorruptData) << format;
        picture.header.width = 2;
        picture.header.bitsPerSample = 4;
        EXPECT_THROW(encode(format, picture), NSException) << format;
        picture.header.bitsPerSample = 8;
        picture.bytesPerRow = 5;
        EXPECT_THROW(encode(format, picture), NSException) << format;
    }
}

} // namespace

} // namespace Imaging::Platform
