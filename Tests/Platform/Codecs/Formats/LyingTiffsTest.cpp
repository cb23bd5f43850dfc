// Also tests: Platform/Codecs/Formats/TiffHandle.cpp

#include "Tests/Platform/Codecs/CodecFixtures.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <tiffio.h>

#include <algorithm>

namespace Imaging::Platform {

namespace {

using namespace Fixtures;
using testing::HasSubstr;

/// A gray TIFF of one strip whose size and strip are as told.
NSData grayTiff(std::uint32_t width, std::uint32_t height, std::uint32_t offset, std::uint32_t count,
                std::uint32_t rowsPerStrip, std::uint32_t compression = 1) {
    const std::vector<TiffEntry> entries = {
        {256, 4, 1, width}, {257, 4, 1, height}, {258, 3, 1, 8}, {259, 3, 1, compression},
        {262, 3, 1, 1},     {273, 4, 1, offset}, {277, 3, 1, 1}, {278, 4, 1, rowsPerStrip},
        {279, 4, 1, count},
    };
    return tiffOfEntries(entries, NSData(64, 7));
}

constexpr std::uint32_t dataAt = 8 + 2 + 12 * 9 + 4;

TEST(LyingTiffs, AreReadWhenTheyDoNotLie) {
    const DecodedPicture picture = decode("TIFF", grayTiff(8, 8, dataAt, 64, 8));
    EXPECT_EQ(samplesOf(picture), Samples(64, 7));
}

TEST(LyingTiffs, AreRefusedForSizesBeyondTheLimits) {
    EXPECT_EQ(refusalOfDecoding("TIFF", grayTiff(100000, 100000, dataAt, 64, 100000)).reason,
              "the picture is 100000 x 100000 pixels, more than the limit of 268435456 pixels");
    EXPECT_EQ(refusalOfDecoding("TIFF", grayTiff(0xffffffff, 0xffffffff, dataAt, 64, 0xffffffff)).code,
              NSErrorCode::TooLarge);
    EXPECT_EQ(refusalOfDecoding("TIFF", grayTiff(0, 8, dataAt, 64, 8)).code, NSErrorCode::CorruptData);
    EXPECT_EQ(refusalOfDecoding("TIFF", grayTiff(8, 0, dataAt, 64, 8)).code, NSErrorCode::CorruptData);
}

TEST(LyingTiffs, AreRefusedForStripsOutsideTheData) {
    const std::string cut = "the TIFF data ends before the picture is complete; the file may be cut short";
    EXPECT_EQ(refusalOfDecoding("TIFF", grayTiff(8, 8, dataAt + 1, 64, 8)).reason, cut);
    EXPECT_EQ(refusalOfDecoding("TIFF", grayTiff(8, 8, 0xfffffff0, 64, 8, 5)).reason, cut);
    EXPECT_EQ(refusalOfDecoding("TIFF", grayTiff(8, 8, dataAt, 0x7fffffff, 8, 5)).reason, cut);
}

TEST(LyingTiffs, AreRefusedForStripsThatHoldTooLittle) {
    EXPECT_EQ(refusalOfDecoding("TIFF", grayTiff(8, 9, dataAt, 64, 9)).code, NSErrorCode::CorruptData);
    EXPECT_EQ(refusalOfDecoding("TIFF", grayTiff(16000, 16000, dataAt, 64, 16000)).code,
              NSErrorCode::CorruptData);
    EXPECT_EQ(refusalOfDecoding("TIFF", grayTiff(16000, 16000, dataAt, 64, 16000, 5)).code,
              NSErrorCode::CorruptData);
}

TEST(LyingTiffs, AreRefusedForHundredsOfMillionsOfStripsWithoutMemoryForThem) {
    // 8 bytes for each of two numbers would be 4 GB.
    EXPECT_EQ(refusalOfDecoding("TIFF", grayTiff(1, 250'000'000, dataAt, 64, 1)).code,
              NSErrorCode::CorruptData);
}

TEST(LyingTiffs, AreRefusedForTilesLargerThanTheLimit) {
    const std::vector<TiffEntry> entries = {
        {256, 4, 1, 8}, {257, 4, 1, 8},     {258, 3, 1, 8},     {259, 3, 1, 5}, {262, 3, 1, 1},
        {277, 3, 1, 1}, {322, 4, 1, 65536}, {323, 4, 1, 65536}, {324, 4, 1, 8}, {325, 4, 1, 64},
    };
    EXPECT_EQ(refusalOfDecoding("TIFF", tiffOfEntries(entries, NSData(64, 7))).code, NSErrorCode::TooLarge);
}

/// A TIFF of many strips, each of which is all of the file.
NSData overlappingTiff(std::uint32_t strips) {
    const std::vector<TiffEntry> entries = {
        {256, 4, 1, 1},
        {257, 4, 1, strips},
        {258, 3, 1, 8},
        {259, 3, 1, COMPRESSION_LZW},
        {262, 3, 1, 1},
        {273, 4, strips, tiffDataOffset(9)},
        {277, 3, 1, 1},
        {278, 4, 1, 1},
        {279, 4, strips, tiffDataOffset(9) + 4 * strips},
    };
    NSData data(8 * std::size_t{strips}, 0);
    const std::size_t size = tiffDataOffset(9) + data.size();
    for (std::size_t i = 0; i < strips; ++i) {
        data[4 * i] = 8; // every strip begins behind the header
        for (std::size_t byte = 0; byte < 4; ++byte) {
            data[4 * (strips + i) + byte] = static_cast<std::uint8_t>((size - 8) >> (8 * byte));
        }
    }
    return tiffOfEntries(entries, data);
}

TEST(LyingTiffs, AreRefusedForStripsThatShareTheirBytesOverAndOver) {
    const Refusal refusal = refusalOfDecoding("TIFF", overlappingTiff(10000));
    EXPECT_EQ(refusal.code, NSErrorCode::CorruptData);
    EXPECT_THAT(refusal.reason, HasSubstr("overlap"));
}

TEST(LyingTiffs, AreRefusedForTagsThatClaimTheSameBytesOverAndOver) {
    std::vector<TiffEntry> entries;
    for (std::uint16_t i = 0; i < 1000; ++i) {
        entries.push_back({static_cast<std::uint16_t>(40000 + i), 1, 60000, 100}); // 60 MB of 64 KB
    }
    const Refusal refusal = refusalOfDecoding("TIFF", tiffOfEntries(entries, NSData(65536, 0)));
    EXPECT_EQ(refusal.code, NSErrorCode::CorruptData);
    EXPECT_THAT(refusal.reason, HasSubstr("claim"));
}

TEST(LyingTiffs, AreRefusedForJPEGStripsThatAreTooSmall) {
    RawTiff picture;
    picture.width = picture.height = 16;
    picture.samplesPerPixel = 1;
    picture.photometric = PHOTOMETRIC_MINISBLACK;
    picture.compression = COMPRESSION_JPEG;
    NSData bytes = rawTiff(picture, flatBlocks(16, 16, 1));
    EXPECT_EQ(samplesOf(decode("TIFF", bytes)), flatBlocks(16, 16, 1));
    const NSData frame = {0xff, 0xc0, 0, 11, 8, 0, 16, 0, 16};
    const auto found = std::search(bytes.begin(), bytes.end(), frame.begin(), frame.end());
    ASSERT_NE(found, bytes.end());
    found[6] = 8; // half of the rows are not there
    EXPECT_EQ(refusalOfDecoding("TIFF", bytes).code, NSErrorCode::CorruptData);
}

TEST(LyingTiffs, AreRefusedForACompressionThatNobodyKnows) {
    const Refusal refusal = refusalOfDecoding("TIFF", grayTiff(8, 8, dataAt, 64, 8, 4711));
    EXPECT_EQ(refusal.code, NSErrorCode::UnsupportedFormat);
    EXPECT_THAT(refusal.reason, HasSubstr("4711"));
}

} // namespace

} // namespace Imaging::Platform
