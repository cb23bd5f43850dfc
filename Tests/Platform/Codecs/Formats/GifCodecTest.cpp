// Also tests: Platform/Codecs/Support/ColorReduction.cpp

#include "Platform/Codecs/ColorProfileName.h"
#include "Tests/Platform/Codecs/LaterFixtures.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>

namespace Imaging::Platform {

namespace {

using namespace Fixtures;
using testing::HasSubstr;

const std::vector<Rgb> fourColors = {{10, 20, 30}, {200, 0, 100}, {255, 255, 255}, {1, 2, 3}};

RawGif smallGif() {
    RawGif picture;
    picture.width = 5;
    picture.height = 11;
    picture.colors = fourColors;
    return picture;
}

/// What indices into colours look like: RGB, or RGBA with the transparent one clear.
Samples lookedUp(const Samples& indices, const std::vector<Rgb>& colors, int transparent = -1) {
    Samples samples;
    for (const std::uint16_t index : indices) {
        const bool isClear = index == transparent;
        for (const std::uint8_t sample : colors[index]) samples.push_back(isClear ? 0 : sample);
        if (transparent >= 0) samples.push_back(isClear ? 0 : 255);
    }
    return samples;
}

TEST(GifCodec, LooksColoursUp) {
    const Samples indices = pattern(5, 11, 1, 3);
    const DecodedPicture picture = decode("GIF", rawGif(smallGif(), indices));
    EXPECT_EQ(picture.header.formatName, "GIF");
    EXPECT_FALSE(picture.header.hasAlpha);
    EXPECT_EQ(picture.header.color, SampleColor::RGB);
    EXPECT_EQ(samplesOf(picture), lookedUp(indices, fourColors));
}

TEST(GifCodec, PrefersAPicturesOwnColours) {
    RawGif picture = smallGif();
    picture.ownColors = {{9, 8, 7}, {6, 5, 4}, {3, 2, 1}, {0, 50, 100}};
    const Samples indices = pattern(5, 11, 1, 3);
    EXPECT_EQ(samplesOf(decode("GIF", rawGif(picture, indices))), lookedUp(indices, picture.ownColors));
}

TEST(GifCodec, ReadsAllOf256Colours) {
    RawGif picture;
    picture.width = 16;
    picture.height = 16;
    Samples indices;
    for (std::uint16_t i = 0; i < 256; ++i) {
        indices.push_back(i);
        picture.colors.push_back({static_cast<std::uint8_t>(i), static_cast<std::uint8_t>(255 - i),
                                  static_cast<std::uint8_t>(i ^ 85)});
    }
    EXPECT_EQ(samplesOf(decode("GIF", rawGif(picture, indices))), lookedUp(indices, picture.colors));
}

TEST(GifCodec, PutsInterlacedRowsInOrderForEveryHeight) {
    for (std::uint32_t height = 1; height < 20; ++height) {
        RawGif picture = smallGif();
        picture.height = height;
        picture.interlaced = true;
        const Samples indices = pattern(5, height, 1, 3);
        EXPECT_EQ(samplesOf(decode("GIF", rawGif(picture, indices))), lookedUp(indices, fourColors))
            << height;
    }
}

TEST(GifCodec, MakesTheTransparentColourClear) {
    RawGif picture = smallGif();
    picture.transparent = 2;
    const Samples indices = pattern(5, 11, 1, 3);
    const DecodedPicture decoded = decode("GIF", rawGif(picture, indices));
    EXPECT_TRUE(decoded.header.hasAlpha);
    EXPECT_EQ(samplesOf(decoded), lookedUp(indices, fourColors, 2));
}

TEST(GifCodec, LeavesTheRestOfTheScreenClear) {
    RawGif picture;
    picture.screenWidth = 4;
    picture.screenHeight = 3;
    picture.left = 1;
    picture.top = 1;
    picture.width = 2;
    picture.height = 1;
    picture.colors = fourColors;
    const DecodedPicture decoded = decode("GIF", rawGif(picture, {1, 0}));
    EXPECT_EQ(decoded.header.width, 4U);
    EXPECT_EQ(decoded.header.height, 3U);
    Samples expected(4 * 3 * 4, 0);
    const Samples pixels = {200, 0, 100, 255, 10, 20, 30, 255};
    std::copy(pixels.begin(), pixels.end(), expected.begin() + (4 + 1) * 4);
    EXPECT_EQ(samplesOf(decoded), expected);
}

TEST(GifCodec, EnlargesTheScreenForAPictureBeyondIt) {
    RawGif picture;
    picture.screenWidth = 1;
    picture.screenHeight = 1;
    picture.width = 2;
    picture.height = 2;
    picture.colors = fourColors;
    const DecodedPicture decoded = decode("GIF", rawGif(picture, {0, 1, 2, 3}));
    EXPECT_FALSE(decoded.header.hasAlpha);
    EXPECT_EQ(samplesOf(decoded), lookedUp({0, 1, 2, 3}, fourColors));
}

TEST(GifCodec, ReadsTheFirstOfSeveralPictures) {
    RawGif picture = smallGif();
    const Samples indices = pattern(5, 11, 1, 3);
    const NSData one = rawGif(picture, indices);
    picture.pictures = 3;
    NSData three = rawGif(picture, indices);
    EXPECT_EQ(samplesOf(decode("GIF", three)), lookedUp(indices, fourColors));
    three.resize(one.size() + 3); // into the second one
    EXPECT_EQ(samplesOf(decode("GIF", three)), lookedUp(indices, fourColors));
}

TEST(GifCodec, ReadsAProfileInBlocks) {
    RawGif picture = smallGif();
    picture.profile = sRGBProfile();
    EXPECT_EQ(readHeader("GIF", rawGif(picture, pattern(5, 11, 1, 3))).colorProfile, sRGBProfile());
    picture.profile = grayProfile();
    EXPECT_TRUE(readHeader("GIF", rawGif(picture, pattern(5, 11, 1, 3))).colorProfile.empty());
}

TEST(GifCodec, DescribesInTheHeaderWhatDecodingGives) {
    RawGif picture = smallGif();
    picture.profile = sRGBProfile();
    picture.transparent = 1;
    const NSData bytes = rawGif(picture, pattern(5, 11, 1, 3));
    expectEqualHeaders(readHeader("GIF", bytes), decode("GIF", bytes).header);
}

TEST(GifCodec, RefusesPixelsWithoutAColour) {
    RawGif picture;
    picture.width = 2;
    picture.height = 1;
    picture.colors.assign(256, {1, 2, 3});
    NSData bytes = rawGif(picture, {0, 200});
    EXPECT_EQ(samplesOf(decode("GIF", bytes)).size(), 6U);
    // The same pixels with a palette of 128: the field of the screen, and half of the colours, go.
    ASSERT_EQ(bytes[10] & 0x87, 0x87);
    bytes[10] = static_cast<std::uint8_t>((bytes[10] & 0x78) | 0x86);
    bytes.erase(bytes.begin() + 13, bytes.begin() + 13 + 128 * 3);
    const Refusal refusal = refusalOfDecoding("GIF", bytes);
    EXPECT_EQ(refusal.code, NSErrorCode::CorruptData);
    EXPECT_EQ(refusal.reason, "the GIF data is damaged (a pixel has no colour)");
}

TEST(GifCodec, RefusesAPictureWithoutColoursOrPixels) {
    NSData none = {'G', 'I', 'F', '8', '9', 'a', 1, 0, 1, 0, 0, 0, 0,
                   ',', 0,   0,   0,   0,   1,   0, 1, 0, 0, 2, 0, ';'};
    EXPECT_THAT(refusalOfDecoding("GIF", none).reason, HasSubstr("no colours"));
    const NSData empty = {'G', 'I', 'F', '8', '9', 'a', 1, 0, 1, 0, 0, 0, 0, ';'};
    EXPECT_THAT(refusalOfDecoding("GIF", empty).reason, HasSubstr("no picture"));
}

TEST(GifCodec, RefusesSizesBeyondTheLimits) {
    RawGif picture = smallGif();
    picture.screenWidth = 65535;
    picture.screenHeight = 65535;
    const NSData bytes = rawGif(picture, pattern(5, 11, 1, 3));
    EXPECT_EQ(refusalOfDecoding("GIF", bytes).code, NSErrorCode::TooLarge);
    EXPECT_EQ(readHeader("GIF", bytes).width, 65535U);
}

TEST(GifEncoding, KeepsUpTo256ColoursExactly) {
    Samples samples;
    for (std::uint16_t i = 0; i < 256; ++i) {
        for (const int factor : {1, 7, 31}) samples.push_back(static_cast<std::uint16_t>(i * factor % 256));
    }
    for (const std::size_t padding : {0, 3}) {
        const SourcePicture picture(32, 8, 8, SampleColor::RGB, false, samples, padding);
        const DecodedPicture decoded = decode("GIF", encode("GIF", picture));
        EXPECT_FALSE(decoded.header.hasAlpha);
        EXPECT_EQ(samplesOf(decoded), samples);
    }
}

TEST(GifEncoding, KeepsPicturesOfOneAndTwoColours) {
    for (const Samples& samples : {Samples{7, 7, 7}, Samples{0, 255, 0}}) {
        const SourcePicture picture(3, 1, 8, SampleColor::White, false, samples);
        Samples expected;
        for (const std::uint16_t sample : samples) expected.insert(expected.end(), 3, sample);
        EXPECT_EQ(samplesOf(decode("GIF", encode("GIF", picture))), expected);
    }
}

TEST(GifEncoding, MakesAlphaAllOrNothing) {
    // Premultiplied: below one half clear, from there on opaque in the straight colour (100 of 200 is 127.5).
    const SourcePicture picture(4, 1, 8, SampleColor::RGB, true,
                                {50, 60, 70, 127, 128, 0, 64, 128, 9, 8, 7, 255, 0, 0, 0, 0});
    const DecodedPicture decoded = decode("GIF", encode("GIF", picture));
    EXPECT_EQ(samplesOf(decoded), (Samples{0, 0, 0, 0, 255, 0, 128, 255, 9, 8, 7, 255, 0, 0, 0, 0}));
}

TEST(GifEncoding, ReducesWidePicturesAndInvertedGray) {
    const SourcePicture wide(2, 1, 16, SampleColor::RGB, false, {0, 65535, 257 * 100, 128, 129, 257});
    EXPECT_EQ(samplesOf(decode("GIF", encode("GIF", wide))), (Samples{0, 255, 100, 0, 1, 1}));
    const SourcePicture inverted(2, 1, 8, SampleColor::Black, false, {0, 200});
    EXPECT_EQ(samplesOf(decode("GIF", encode("GIF", inverted))), (Samples{255, 255, 255, 55, 55, 55}));
}

/// A smooth picture of many thousand colours.
Samples gradient(std::uint32_t side) {
    Samples samples;
    for (std::uint32_t y = 0; y < side; ++y) {
        for (std::uint32_t x = 0; x < side; ++x) {
            samples.push_back(static_cast<std::uint16_t>(x * 255 / (side - 1)));
            samples.push_back(static_cast<std::uint16_t>(y * 255 / (side - 1)));
            samples.push_back(static_cast<std::uint16_t>((x + y) * 127 / (side - 1)));
        }
    }
    return samples;
}

TEST(GifEncoding, ChoosesColoursThatAreNearToManyPixels) {
    const Samples samples = gradient(128);
    const SourcePicture picture(128, 128, 8, SampleColor::RGB, false, samples);
    const Samples back = samplesOf(decode("GIF", encode("GIF", picture)));
    ASSERT_EQ(back.size(), samples.size());
    double squares = 0;
    for (std::size_t i = 0; i < samples.size(); ++i)
        squares += (samples[i] - back[i]) * (samples[i] - back[i]);
    // The colours fill a plane; 16 by 16 cells of it would be 16 wide, for which the root of the mean square
    // is 16 / sqrt(12) = 4.6 along the two axes that are free.
    EXPECT_LT(std::sqrt(squares / static_cast<double>(samples.size())), 5);
}

TEST(GifEncoding, DiffusesErrorsOnlyWhenAsked) {
    const Samples samples = gradient(128);
    const SourcePicture picture(128, 128, 8, SampleColor::RGB, false, samples);
    const auto codec = codecForFormat("GIF");
    const NSData plain = codec->encode(picture.view(), {});
    EXPECT_EQ(plain, codec->encode(picture.view(), {0.5, false}));
    const Samples diffused = samplesOf(codec->decode(codec->encode(picture.view(), {0.9, true}), {}));
    EXPECT_NE(samplesOf(decode("GIF", plain)), diffused);
    // Means over squares of 8 by 8 come out closer, which is what diffusion is for.
    const auto error = [&](const Samples& other) {
        double sum = 0;
        for (std::size_t top = 8; top < 120; top += 8) {
            for (std::size_t left = 8; left < 120; left += 8) {
                double difference = 0;
                for (std::size_t i = 0; i < 64; ++i) {
                    const std::size_t at = ((top + i / 8) * 128 + left + i % 8) * 3;
                    difference += other[at] - samples[at];
                }
                sum += std::abs(difference / 64);
            }
        }
        return sum;
    };
    EXPECT_LT(error(diffused), error(samplesOf(decode("GIF", plain))) / 2);
}

TEST(GifEncoding, WritesAProfileAndRefusesWhatGifCannotHold) {
    SourcePicture picture(2, 1, 8, SampleColor::RGB, false, {1, 2, 3, 4, 5, 6});
    EXPECT_EQ(colorProfileName(readHeader("GIF", encode("GIF", picture)).colorProfile), "sRGB IEC61966-2.1");
    picture.header.colorProfile = sRGBProfile();
    EXPECT_EQ(readHeader("GIF", encode("GIF", picture)).colorProfile, sRGBProfile());
    const SourcePicture wide(65536, 1, 8, SampleColor::White, false, Samples(65536, 3));
    EXPECT_EQ(refusalOf([&] { encode("GIF", wide); }).code, NSErrorCode::TooLarge);
}

} // namespace

} // namespace Imaging::Platform
