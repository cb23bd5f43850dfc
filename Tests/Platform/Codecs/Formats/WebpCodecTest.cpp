#include "Tests/Platform/Codecs/LaterFixtures.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <webp/decode.h>

namespace Imaging::Platform {

namespace {

using namespace Fixtures;
using testing::HasSubstr;

TEST(WebpCodec, KeepsLosslessPictures) {
    const Samples samples = pattern(19, 11, 3, 255);
    const DecodedPicture picture = decode("WebP", rawWebp({19, 11, false, -1, {}, {}}, samples));
    EXPECT_EQ(picture.header.formatName, "WebP");
    EXPECT_FALSE(picture.header.hasAlpha);
    EXPECT_EQ(samplesOf(picture), samples);
}

TEST(WebpCodec, MultipliesByAlpha) {
    const Samples straight = {200, 100, 50, 51, 9, 8, 7, 255, 90, 90, 90, 0};
    const DecodedPicture picture = decode("WebP", rawWebp({3, 1, true, -1, {}, {}}, straight));
    EXPECT_TRUE(picture.header.hasAlpha);
    EXPECT_EQ(samplesOf(picture), (Samples{40, 20, 10, 51, 9, 8, 7, 255, 0, 0, 0, 0})); // a fifth of each
}

TEST(WebpCodec, GivesLossyPicturesAsTheLibraryDoes) {
    const Samples samples = flatBlocks(32, 24, 3);
    const NSData bytes = rawWebp({32, 24, false, 80, {}, {}}, samples);
    int width = 0;
    int height = 0;
    std::uint8_t* const expected = WebPDecodeRGB(bytes.data(), bytes.size(), &width, &height);
    ASSERT_NE(expected, nullptr);
    EXPECT_EQ(samplesOf(decode("WebP", bytes)), Samples(expected, expected + 32 * 24 * 3));
    WebPFree(expected);
}

TEST(WebpCodec, ReadsAlphaOfLossyPictures) {
    Samples samples;
    for (int i = 0; i < 64; ++i)
        samples.insert(samples.end(), {128, 128, 128, static_cast<std::uint16_t>(i * 4)});
    const Samples back = samplesOf(decode("WebP", rawWebp({8, 8, true, 90, {}, {}}, samples)));
    for (std::size_t i = 0; i < 64; ++i) EXPECT_EQ(back[i * 4 + 3], i * 4) << i; // alpha is always lossless
}

TEST(WebpCodec, ReadsProfileOrientationAndResolution) {
    RawWebp picture = {3, 2, false, -1, sRGBProfile(), exifRecord({true, 6, {{300, 1}}, 2})};
    const NSData bytes = rawWebp(picture, pattern(3, 2, 3, 255));
    const PictureHeader header = readHeader("WebP", bytes);
    EXPECT_EQ(header.colorProfile, sRGBProfile());
    EXPECT_EQ(header.orientation, 6);
    EXPECT_DOUBLE_EQ(header.resolutionX, 300);
    expectEqualHeaders(header, decode("WebP", bytes).header);
    picture.exif = exifMarker({false, 8, {}, {}}); // with the prefix of JPEG
    picture.profile = grayProfile();
    const PictureHeader other = readHeader("WebP", rawWebp(picture, pattern(3, 2, 3, 255)));
    EXPECT_EQ(other.orientation, 8);
    EXPECT_TRUE(other.colorProfile.empty());
}

/// An animation of one picture on a canvas (RFC 9649, 2.7.1.1).
NSData animation(std::uint32_t canvas, std::uint32_t left, std::uint32_t top, std::uint32_t width,
                 std::uint32_t height, const Samples& samples) {
    const NSData plain = rawWebp({width, height, false, -1, {}, {}}, samples);
    NSData chunks = {'W', 'E', 'B', 'P', 'V', 'P', '8', 'X', 10, 0, 0, 0, 0x12, 0, 0, 0};
    appendLittle(chunks, canvas - 1, 3);
    appendLittle(chunks, canvas - 1, 3);
    const NSData parameters = {'A', 'N', 'I', 'M', 6, 0, 0, 0, 255, 255, 255, 255, 0, 0};
    appendBytes(chunks, parameters);
    NSData frame;
    appendLittle(frame, left / 2, 3);
    appendLittle(frame, top / 2, 3);
    appendLittle(frame, width - 1, 3);
    appendLittle(frame, height - 1, 3);
    appendLittle(frame, 100, 3);
    frame.push_back(0);
    appendBytes(frame, ByteView(plain).subspan(12));
    const NSData name = {'A', 'N', 'M', 'F'};
    appendBytes(chunks, name);
    appendLittle(chunks, frame.size(), 4);
    appendBytes(chunks, frame);
    NSData bytes = {'R', 'I', 'F', 'F'};
    appendLittle(bytes, chunks.size(), 4);
    appendBytes(bytes, chunks);
    return bytes;
}

TEST(WebpCodec, PutsTheFirstPictureOfAnAnimationOnAClearCanvas) {
    const Samples pixels = {1, 2, 3, 4, 5, 6};
    const DecodedPicture picture = decode("WebP", animation(5, 2, 2, 2, 1, pixels));
    EXPECT_EQ(picture.header.width, 5U);
    EXPECT_TRUE(picture.header.hasAlpha);
    Samples expected(5 * 5 * 4, 0);
    const Samples opaque = {1, 2, 3, 255, 4, 5, 6, 255};
    std::copy(opaque.begin(), opaque.end(), expected.begin() + (2 * 5 + 2) * 4);
    EXPECT_EQ(samplesOf(picture), expected);
}

TEST(WebpCodec, CountsItsWorkingMemoryTowardsTheLimit) {
    // 3000 x 3000 pixels of one colour have some dozen bytes. Unpacking takes 36 MB beside 27 MB of the
    // picture.
    const NSData bytes = rawWebp({3000, 3000, false, -1, {}, {}}, Samples(27'000'000, 7));
    EXPECT_LT(bytes.size(), 1000U);
    EXPECT_EQ(refusalOfDecoding("WebP", bytes, {10'000'000, 60'000'000}).code, NSErrorCode::TooLarge);
    EXPECT_EQ(refusalOfDecoding("WebP", bytes, {8'999'999, 100'000'000}).code, NSErrorCode::TooLarge);
    EXPECT_EQ(decode("WebP", bytes, {9'000'000, 64'000'000}).pixels.data()[26'999'999], 7);
}

TEST(WebpCodec, IsOnlyRead) {
    const SourcePicture picture(1, 1, 8, SampleColor::White, false, {1});
    const Refusal refusal = refusalOf([&] { encode("WebP", picture); });
    EXPECT_EQ(refusal.code, NSErrorCode::UnsupportedFormat);
    EXPECT_THAT(refusal.reason, HasSubstr("WebP files are only read"));
}

} // namespace

} // namespace Imaging::Platform
