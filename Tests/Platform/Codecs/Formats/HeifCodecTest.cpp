#include "Tests/Platform/Codecs/LaterFixtures.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace Imaging::Platform {

namespace {

using namespace Fixtures;

TEST(HeifCodec, KeepsLosslessAvif) {
    const Samples samples = pattern(64, 48, 3, 255);
    const NSData bytes = rawHeif({64, 48, 8, false, false, {}, {}}, samples);
    EXPECT_EQ(codecForData(bytes)->formatName(), "HEIF");
    const DecodedPicture picture = decode("HEIF", bytes);
    EXPECT_FALSE(picture.header.hasAlpha);
    EXPECT_EQ(samplesOf(picture), samples);
}

TEST(HeifCodec, ReadsHeic) {
    const Samples samples = flatBlocks(64, 64, 3);
    const NSData bytes = rawHeif({64, 64, 8, false, true, {}, {}}, samples);
    EXPECT_EQ(codecForData(bytes)->formatName(), "HEIF");
    const Samples back = samplesOf(decode("HEIF", bytes));
    ASSERT_EQ(back.size(), samples.size());
    for (std::size_t i = 0; i < samples.size(); ++i) EXPECT_NEAR(back[i], samples[i], 3) << i;
}

TEST(HeifCodec, SpreadsTenBitsOverSixteen) {
    const Samples samples = pattern(64, 48, 3, 1023);
    const DecodedPicture picture = decode("HEIF", rawHeif({64, 48, 10, false, true, {}, {}}, samples));
    EXPECT_EQ(picture.header.bitsPerSample, 16);
    const Samples back = samplesOf(picture);
    for (std::size_t i = 0; i < samples.size(); ++i)
        ASSERT_EQ(back[i], (samples[i] * 65535U + 511) / 1023) << i;
}

TEST(HeifCodec, MultipliesByAlpha) {
    Samples straight;
    for (int i = 0; i < 64 * 64; ++i) straight.insert(straight.end(), {200, 100, 50, 51}); // a fifth of each
    const DecodedPicture picture = decode("HEIF", rawHeif({64, 64, 8, true, false, {}, {}}, straight));
    EXPECT_TRUE(picture.header.hasAlpha);
    const Samples back = samplesOf(picture);
    for (std::size_t i = 0; i < back.size(); i += 4) {
        ASSERT_EQ(Samples(back.begin() + static_cast<std::ptrdiff_t>(i),
                          back.begin() + static_cast<std::ptrdiff_t>(i) + 4),
                  (Samples{40, 20, 10, 51}));
    }
}

TEST(HeifCodec, ReadsProfileAndResolutionAndIsUpright) {
    const NSData bytes =
        rawHeif({64, 48, 8, false, false, sRGBProfile(), exifRecord({true, 6, {{300, 1}}, 2})},
                pattern(64, 48, 3, 255));
    const PictureHeader header = readHeader("HEIF", bytes);
    EXPECT_EQ(header.colorProfile, sRGBProfile());
    EXPECT_DOUBLE_EQ(header.resolutionX, 300);
    EXPECT_EQ(header.orientation, 1); // turning is the format's own matter
    expectEqualHeaders(header, decode("HEIF", bytes).header);
}

TEST(HeifCodec, RefusesSizesBeyondTheLimits) {
    const NSData bytes = rawHeif({64, 48, 8, false, false, {}, {}}, pattern(64, 48, 3, 255));
    EXPECT_EQ(refusalOfDecoding("HEIF", bytes, {64 * 48 - 1, 1 << 20}).code, NSErrorCode::TooLarge);
    EXPECT_EQ(refusalOfDecoding("HEIF", bytes, {1 << 20, 64 * 48 * 3 - 1}).code, NSErrorCode::TooLarge);
}

TEST(HeifCodec, IsOnlyRead) {
    const SourcePicture picture(1, 1, 8, SampleColor::White, false, {1});
    EXPECT_EQ(refusalOf([&] { encode("HEIF", picture); }).code, NSErrorCode::UnsupportedFormat);
}

} // namespace

} // namespace Imaging::Platform
