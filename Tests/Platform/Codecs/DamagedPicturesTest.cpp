// Also tests: Platform/Codecs/Support/CodecSupport.cpp

#include "Tests/Platform/Codecs/LaterFixtures.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <tiffio.h>

#include <algorithm>
#include <iostream>
#include <random>
#include <set>
#include <sstream>

namespace Imaging::Platform {

namespace {

using namespace Fixtures;
using testing::HasSubstr;

/// Enough for everything here, so that a header that lies is found out early and cheaply.
constexpr PictureLimits limits{1'000'000, 16'000'000};

struct Example {
    std::string format;
    std::string name;
    NSData bytes;
    std::size_t needless = 0; ///< bytes at the end that a whole picture does without
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

void addGifs(std::vector<Example>& examples) {
    RawGif picture;
    picture.width = 9;
    picture.height = 7;
    picture.colors = {{1, 2, 3}, {40, 50, 60}, {255, 0, 7}, {9, 99, 199}};
    // The last byte says that no more pictures follow.
    examples.push_back({"GIF", "plain", rawGif(picture, pattern(9, 7, 1, 3)), 1});
    picture.interlaced = true;
    picture.transparent = 1;
    picture.screenWidth = 20;
    picture.screenHeight = 10;
    picture.left = 3;
    picture.profile = sRGBProfile();
    examples.push_back({"GIF", "with everything", rawGif(picture, pattern(9, 7, 1, 3)), 1});
}

void addBmps(std::vector<Example>& examples) {
    const Samples samples = pattern(9, 7, 1, 3);
    const std::vector<std::uint32_t> pixels(samples.begin(), samples.end());
    RawBmp picture;
    picture.width = 9;
    picture.height = 7;
    const auto add = [&](const std::string& name) {
        examples.push_back({"BMP", name, rawBmp(picture, bmpRows(picture, pixels))});
    };
    add("24 bits");
    picture.headerSize = 124;
    picture.bits = 32;
    picture.compression = 3;
    picture.masks = {0xff0000, 0xff00, 0xff, 0xff000000};
    picture.profile = sRGBProfile();
    add("bit fields with profile");
    picture = RawBmp{};
    picture.width = 9;
    picture.height = -7;
    picture.bits = 4;
    picture.headerSize = 12;
    picture.colors.assign(16, {1, 2, 3});
    picture.height = 7;
    add("core header");
    picture.headerSize = 40;
    picture.bits = 8;
    picture.compression = 1;
    const NSData runs = {9, 1, 0, 0, 0, 5, 1, 2, 3, 4, 5, 0, 0, 2, 1, 2, 3, 1, 0, 0, 9, 3, 0, 1};
    examples.push_back({"BMP", "runs", rawBmp(picture, runs)});
}

void addWebps(std::vector<Example>& examples) {
    examples.push_back({"WebP", "lossless", rawWebp({9, 7, true, -1, {}, {}}, pattern(9, 7, 4, 255))});
    examples.push_back({"WebP", "lossy", rawWebp({9, 7, false, 80, {}, {}}, pattern(9, 7, 3, 255))});
    const NSData exif = exifRecord({true, 6, {{300, 1}}, 2});
    examples.push_back(
        {"WebP", "with records", rawWebp({9, 7, true, 80, sRGBProfile(), exif}, pattern(9, 7, 4, 255))});
}

void addJpeg2000s(std::vector<Example>& examples) {
    RawJpeg2000 picture;
    picture.width = 19;
    picture.height = 11;
    examples.push_back({"JPEG 2000", "file", rawJpeg2000(picture, pattern(19, 11, 3, 255))});
    picture.isFile = false;
    picture.tile = 16;
    examples.push_back({"JPEG 2000", "codestream", rawJpeg2000(picture, pattern(19, 11, 3, 255))});
}

void addOptional([[maybe_unused]] std::vector<Example>& examples) {
#ifdef IMAGING_WITH_HEIF
    examples.push_back({"HEIF", "AVIF", rawHeif({16, 16, 8, false, false, {}, {}}, pattern(16, 16, 3, 255))});
    examples.push_back({"HEIF", "HEIC", rawHeif({16, 16, 8, false, true, {}, {}}, flatBlocks(16, 16, 3))});
#endif
#ifdef IMAGING_WITH_JXL
    RawJxl picture;
    picture.width = 19;
    picture.height = 11;
    examples.push_back({"JPEG XL", "codestream", rawJxl(picture, pattern(19, 11, 3, 255))});
    picture.samplesPerPixel = 4;
    picture.exif = exifRecord({true, {}, {{300, 1}}, 2});
    picture.profile = sRGBProfile();
    examples.push_back({"JPEG XL", "container", rawJxl(picture, pattern(19, 11, 4, 255))});
#endif
}

/// Made once, because encoding some of them takes time.
const std::vector<Example>& allExamples() {
    static const std::vector<Example> all = [] {
        std::vector<Example> examples;
        addJpegs(examples);
        addPngs(examples);
        addTiffs(examples);
        addGifs(examples);
        addBmps(examples);
        addWebps(examples);
        addJpeg2000s(examples);
        addOptional(examples);
        return examples;
    }();
    return all;
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

/// What was printed, but for libjxl: as Debian builds it, it says on standard error what it dislikes.
std::string captured() {
    std::istringstream lines(testing::internal::GetCapturedStderr());
    std::string kept;
    for (std::string line; std::getline(lines, line);) {
        if (!line.empty() && line.find("/lib/jxl/") == std::string::npos) kept += line + "\n";
    }
    return kept;
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
    EXPECT_EQ(captured(), "");
}

TEST(DamagedPictures, AreRefusedWhereverTheyAreCutShort) {
    testing::internal::CaptureStderr();
    for (const Example& example : allExamples()) {
        SCOPED_TRACE(example.format + " " + example.name);
        // libtiff writes the directory last, so that what is cut off is always needed.
        for (std::size_t size = 0; size < example.bytes.size() - example.needless; ++size) {
            const NSData cut = exactCopy(ByteView(example.bytes).first(size));
            EXPECT_FALSE(decodesOrIsRefused(example.format, cut)) << size;
        }
    }
    EXPECT_EQ(captured(), "");
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
    EXPECT_EQ(captured(), "");
}

TEST(DamagedPictures, AreRefusedWhenTheyAreGarbage) {
    std::mt19937 random(7);
    std::set<std::string> formats;
    for (const Example& example : allExamples()) formats.insert(example.format);
    for (const std::string& format : formats) {
        EXPECT_FALSE(decodesOrIsRefused(format, {}));
        for (std::size_t size = 1; size < 300; size += 7) {
            NSData garbage(size);
            for (std::uint8_t& byte : garbage) byte = static_cast<std::uint8_t>(random());
            EXPECT_FALSE(decodesOrIsRefused(format, garbage));
        }
    }
}

} // namespace

} // namespace Imaging::Platform
