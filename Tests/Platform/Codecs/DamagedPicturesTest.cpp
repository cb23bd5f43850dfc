#include "Tests/Platform/Codecs/CodecFixtures.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <tiffio.h>

#include <algorithm>
#include <iostream>
#include <random>

namespace Platform {

namespace {

using namespace Fixtures;
using testing::HasSubstr;

/// Enough for everything here, so that a header that lies is found out early and cheaply.
constexpr PictureLimits limits{1'000'000, 16'000'000};

struct Example {
    std::string format;
    std::string name;
    NSData bytes;
};

void addJpegs(std::vector<Example>& examples) {
    RawJpeg picture;
    picture.width = 17;
    picture.height = 9;
    for (const int components : {1, 3, 4}) {
        picture.components = components;
        for (const bool progressive : {false, true}) {
            picture.progressive = progressive;
            const std::string name = std::to_string(components) + (progressive ? " progressive" : "");
            examples.push_back({"JPEG", name, rawJpeg(picture, pattern(17, 9, components, 255))});
        }
    }
    picture.components = 3;
    picture.transformed = true;
    picture.markers = {{0xe1, exifMarker({true, 6, {{300, 1}}, 2})}};
    picture.profile = sRGBProfile();
    examples.push_back({"JPEG", "with records", rawJpeg(picture, pattern(17, 9, 3, 255))});
}

void addPngs(std::vector<Example>& examples) {
    RawPng picture = {9, 7, 8, 6, {}, {}};
    examples.push_back({"PNG", "plain", rawPng(picture, pattern(9, 7, 4, 255))});
    examples.push_back({"PNG", "interlaced", interlacedPng(picture, pattern(9, 7, 4, 255))});
    picture.beforePixels = {profileChunk(sRGBProfile()), numbersChunk("pHYs", {3000, 3000}, {1})};
    picture.afterPixels = {{"eXIf", exifRecord({true, 6, {}, {}})}};
    examples.push_back({"PNG", "with records", rawPng(picture, pattern(9, 7, 4, 255))});
    RawPng palette = {9, 7, 2, 3, {{"PLTE", {1, 2, 3, 4, 5, 6, 7, 8, 9}}, {"tRNS", {9, 99}}}, {}};
    examples.push_back({"PNG", "palette", rawPng(palette, pattern(9, 7, 1, 3))});
}

void addTiffs(std::vector<Example>& examples) {
    RawTiff picture;
    picture.width = 19;
    picture.height = 11;
    picture.rowsPerStrip = 4;
    const auto add = [&](const std::string& name, int perPixel, std::uint32_t max) {
        picture.samplesPerPixel = perPixel;
        examples.push_back({"TIFF", name, rawTiff(picture, pattern(19, 11, perPixel, max))});
    };
    add("plain", 3, 255);
    picture.mode = "w8b";
    picture.separate = true;
    add("separate BigTIFF", 3, 255);
    picture.mode = "wb";
    picture.tile = 16;
    picture.bits = 16;
    picture.compression = COMPRESSION_ADOBE_DEFLATE;
    picture.extraSamples = {EXTRASAMPLE_UNASSALPHA};
    add("deflated tiles", 4, 65535);
    picture = RawTiff{};
    picture.width = 19;
    picture.height = 11;
    picture.profile = sRGBProfile();
    picture.compression = COMPRESSION_LZW;
    add("LZW with profile", 3, 255);
    picture.photometric = PHOTOMETRIC_SEPARATED;
    add("CMYK", 4, 255);
    picture.photometric = PHOTOMETRIC_RGB;
    picture.compression = COMPRESSION_JPEG;
    add("JPEG", 3, 255);
    picture.photometric = PHOTOMETRIC_YCBCR;
    picture.jpegFromRgb = true;
    add("YCbCr JPEG", 3, 255);
    picture.jpegFromRgb = false;
    picture.photometric = PHOTOMETRIC_MINISWHITE;
    picture.bits = 1;
    for (const int compression : {COMPRESSION_CCITTFAX4, COMPRESSION_CCITTFAX3, COMPRESSION_PACKBITS}) {
        picture.compression = compression;
        add("bits " + std::to_string(compression), 1, 1);
    }
}

std::vector<Example> allExamples() {
    std::vector<Example> examples;
    addJpegs(examples);
    addPngs(examples);
    addTiffs(examples);
    return examples;
}

/// Decodes and answers whether a picture came of it. Anything but a whole picture and a CodecException, and a
/// message that is not a line of words, fails the test.
bool decodesOrIsRefused(const std::string& format, ByteView bytes) {
    try {
        const DecodedPicture picture = decode(format, bytes, limits);
        samplesOf(picture); // reads every byte
        expectEqualHeaders(readHeader(format, bytes), picture.header);
        return true;
    } catch (const CodecException& exception) {
        EXPECT_NE(exception.code(), NSErrorCode::None);
        EXPECT_THAT(exception.reason(),
                    testing::Not(testing::AnyOf(HasSubstr("\n"), testing::EndsWith("."))));
        EXPECT_FALSE(exception.reason().empty());
        return false;
    }
}

/// A copy whose end is the end of its memory.
NSData exactCopy(ByteView bytes) { return {bytes.begin(), bytes.end()}; }

TEST(DamagedPictures, AreWholeAndQuietWhileNothingIsDamaged) {
    testing::internal::CaptureStderr();
    for (const Example& example : allExamples()) {
        SCOPED_TRACE(example.format + " " + example.name);
        EXPECT_TRUE(decodesOrIsRefused(example.format, example.bytes));
        EXPECT_EQ(codecForData(example.bytes)->formatName(), example.format);
    }
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

TEST(DamagedPictures, AreRefusedWhereverTheyAreCutShort) {
    testing::internal::CaptureStderr();
    for (const Example& example : allExamples()) {
        SCOPED_TRACE(example.format + " " + example.name);
        // libtiff writes the directory last, so that what is cut off is always needed; in all formats nothing
        // after the last byte is.
        for (std::size_t size = 0; size < example.bytes.size(); ++size) {
            const NSData cut = exactCopy(ByteView(example.bytes).first(size));
            EXPECT_FALSE(decodesOrIsRefused(example.format, cut)) << size;
        }
    }
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

TEST(DamagedPictures, AreWholeOrRefusedWithAnyBytesChanged) {
    const unsigned int seed = 20240519;
    std::cout << "seed " << seed << '\n';
    std::mt19937 random(seed);
    testing::internal::CaptureStderr();
    int refused = 0;
    for (const Example& example : allExamples()) {
        SCOPED_TRACE(example.format + " " + example.name);
        for (int round = 0; round < 150; ++round) {
            NSData changed = exactCopy(example.bytes);
            const int count = 1 + static_cast<int>(random() % 4);
            for (int i = 0; i < count; ++i) {
                // Headers are short and the pixels long, so the beginning and the end get their share.
                const std::size_t span =
                    random() % 2 == 0 ? std::min<std::size_t>(changed.size(), 64) : changed.size();
                const std::size_t at = random() % span;
                changed[random() % 4 == 0 ? changed.size() - 1 - at : at] =
                    static_cast<std::uint8_t>(random());
            }
            refused += decodesOrIsRefused(example.format, changed) ? 0 : 1;
        }
    }
    EXPECT_GT(refused, 500); // the changes do reach what matters
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

TEST(DamagedPictures, AreRefusedWhenTheyAreGarbage) {
    std::mt19937 random(7);
    for (const char* format : {"JPEG", "PNG", "TIFF"}) {
        EXPECT_FALSE(decodesOrIsRefused(format, {}));
        for (std::size_t size = 1; size < 300; size += 7) {
            NSData garbage(size);
            for (std::uint8_t& byte : garbage) byte = static_cast<std::uint8_t>(random());
            EXPECT_FALSE(decodesOrIsRefused(format, garbage));
        }
    }
}

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
    EXPECT_TRUE(decodesOrIsRefused("TIFF", bytes));
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

} // namespace Platform
