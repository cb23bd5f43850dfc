// Also tests: Platform/Codecs/Codec.cpp
// Also tests: Platform/Codecs/Formats/BuiltInCodecs.cpp

#include "Tests/Platform/Codecs/CodecFixtures.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <limits>
#include <thread>

namespace Imaging::Platform {

namespace {

using namespace Fixtures;

NSData smallPng() { return rawPng({2, 1, 8, 0, {}, {}}, {7, 9}); }

PictureHeader headerOf(std::uint32_t width, std::uint32_t height, int bits, SampleColor color,
                       bool hasAlpha) {
    PictureHeader header;
    header.width = width;
    header.height = height;
    header.bitsPerSample = bits;
    header.color = color;
    header.hasAlpha = hasAlpha;
    return header;
}

/// Hands everything on to another codec and counts.
class CountingCodec : public Codec {
public:
    CountingCodec(std::string name, std::shared_ptr<const Codec> inner)
        : m_name(std::move(name)), m_inner(std::move(inner)) {}

    std::string_view formatName() const override { return m_name; }
    bool recognises(ByteView bytes) const override { return m_inner->recognises(bytes); }
    PictureHeader readHeader(ByteView bytes) const override {
        ++headers;
        return m_inner->readHeader(bytes);
    }
    DecodedPicture decode(ByteView bytes, const PictureLimits& limits) const override {
        ++pictures;
        return m_inner->decode(bytes, limits);
    }
    NSData encode(const PictureView& picture, const EncodeOptions& options) const override {
        return m_inner->encode(picture, options);
    }

    mutable std::atomic<int> headers = 0;
    mutable std::atomic<int> pictures = 0;

private:
    std::string m_name;
    std::shared_ptr<const Codec> m_inner;
};

/// A format of its own: the letter G and then gray samples of one row, the first below 10.
class OneRowCodec : public Codec {
public:
    std::string_view formatName() const override { return "One row"; }
    bool recognises(ByteView bytes) const override {
        return bytes.size() > 1 && bytes[0] == 'G' && bytes[1] < 10;
    }
    PictureHeader readHeader(ByteView bytes) const override {
        PictureHeader header =
            headerOf(static_cast<std::uint32_t>(bytes.size() - 1), 1, 8, SampleColor::White, false);
        header.formatName = formatName();
        return header;
    }
    DecodedPicture decode(ByteView bytes, const PictureLimits& limits) const override {
        DecodedPicture picture;
        picture.header = readHeader(bytes);
        picture.bytesPerRow = checkPictureLimits(picture.header, limits);
        picture.pixels = PixelBuffer::uninitialised(bytes.size() - 1);
        std::copy(bytes.begin() + 1, bytes.end(), picture.pixels.data());
        return picture;
    }
    NSData encode(const PictureView&, const EncodeOptions&) const override {
        throw CodecException(NSErrorCode::UnsupportedFormat, "one-row pictures are only read");
    }
};

/// Puts the limits of the process back at the end of a test.
class LimitsGuard {
public:
    ~LimitsGuard() { setPictureLimits(m_before); }

private:
    PictureLimits m_before = pictureLimits();
};

TEST(CodecRegistry, TellsFormatsApartByTheirFirstBytes) {
    EXPECT_EQ(codecForData(NSData{0xff, 0xd8, 0xff})->formatName(), "JPEG");
    EXPECT_EQ(codecForData(smallPng())->formatName(), "PNG");
    EXPECT_EQ(codecForData(NSData{'I', 'I', 42, 0})->formatName(), "TIFF");
    EXPECT_EQ(codecForData(NSData{'M', 'M', 0, 42})->formatName(), "TIFF");
    EXPECT_EQ(codecForData(NSData{'I', 'I', 43, 0})->formatName(), "TIFF");
    EXPECT_EQ(codecForData(NSData{'I', 'I', 0, 42}), nullptr);
    EXPECT_EQ(codecForData(NSData{'M', 'M', 42, 0}), nullptr);
    EXPECT_EQ(codecForData(NSData{0x89, 'P', 'N', 'G'}), nullptr);
    EXPECT_EQ(codecForData(NSData{0xff, 0xd8}), nullptr);
    EXPECT_EQ(codecForData({}), nullptr);
}

TEST(CodecRegistry, FindsCodecsByTheExactNameOfTheirFormat) {
    for (const char* name : {"JPEG", "PNG", "TIFF"}) EXPECT_EQ(codecForFormat(name)->formatName(), name);
    EXPECT_EQ(codecForFormat("png"), nullptr);
    EXPECT_EQ(codecForFormat(""), nullptr);
}

TEST(CodecRegistry, RefusesDataOfNoKnownFormatAndNamesTheKnownOnes) {
    const Refusal refusal = refusalOf([] { decodePicture(NSData{'h', 'e', 'l', 'l', 'o'}); });
    EXPECT_EQ(refusal.code, NSErrorCode::UnsupportedFormat);
    for (const char* name : {"JPEG", "PNG", "TIFF"}) EXPECT_THAT(refusal.reason, testing::HasSubstr(name));
    EXPECT_EQ(refusalOf([] { readPictureHeader(NSData{1, 2, 3}); }).code, NSErrorCode::UnsupportedFormat);
}

TEST(CodecRegistry, RefusesNoDataAtAll) {
    EXPECT_EQ(refusalOf([] { decodePicture({}); }).code, NSErrorCode::UnsupportedFormat);
    EXPECT_EQ(refusalOf([] { decodePicture({}); }).reason, "there is no data");
}

TEST(CodecRegistry, DecodesWithTheLimitsOfTheProcess) {
    const LimitsGuard guard;
    setPictureLimits({1, 1000});
    EXPECT_EQ(pictureLimits().maximumPixels, 1U);
    EXPECT_EQ(pictureLimits().maximumBytes, 1000U);
    EXPECT_EQ(refusalOf([] { decodePicture(smallPng()); }).code, NSErrorCode::TooLarge);
    EXPECT_EQ(readPictureHeader(smallPng()).width, 2U); // headers may be looked at nevertheless
    setPictureLimits({2, 2});
    EXPECT_EQ(samplesOf(decodePicture(smallPng())), (Samples{7, 9}));
}

TEST(CodecRegistry, UsesACodecThatWasAdded) {
    registerCodec(std::make_shared<OneRowCodec>());
    const DecodedPicture picture = decodePicture(NSData{'G', 5, 6, 7});
    EXPECT_EQ(samplesOf(picture), (Samples{5, 6, 7}));
    EXPECT_EQ(picture.header.formatName, "One row");
    EXPECT_NE(codecForFormat("One row"), nullptr);
}

TEST(CodecRegistry, LetsACodecOfTheSameNameWrapTheBuiltInOne) {
    const std::shared_ptr<const Codec> builtIn = codecForFormat("PNG");
    const auto counting = std::make_shared<CountingCodec>("PNG", builtIn);
    registerCodec(counting);
    EXPECT_EQ(codecForFormat("PNG"), counting);
    EXPECT_EQ(samplesOf(decodePicture(smallPng())), (Samples{7, 9}));
    EXPECT_EQ(readPictureHeader(smallPng()).width, 2U);
    EXPECT_EQ(counting->pictures, 1);
    EXPECT_EQ(counting->headers, 1);
    registerCodec(builtIn);
    EXPECT_EQ(codecForData(smallPng()), builtIn);
    decodePicture(smallPng());
    EXPECT_EQ(counting->pictures, 1);
}

TEST(CodecRegistry, AsksTheLastCodecAddedFirst) {
    const std::shared_ptr<const Codec> builtIn = codecForFormat("PNG");
    const auto first = std::make_shared<CountingCodec>("first", builtIn);
    const auto second = std::make_shared<CountingCodec>("second", builtIn);
    registerCodec(first);
    registerCodec(second);
    EXPECT_EQ(codecForData(smallPng()), second);
    registerCodec(first); // added again, so now the last
    EXPECT_EQ(codecForData(smallPng()), first);
    registerCodec(builtIn);
    EXPECT_EQ(codecForData(smallPng()), builtIn);
}

TEST(CodecRegistry, RefusesANullCodec) { EXPECT_THROW(registerCodec(nullptr), NSException); }

TEST(CodecRegistry, MayBeUsedFromManyThreadsAtOnce) {
    const std::shared_ptr<const Codec> builtIn = codecForFormat("PNG");
    std::atomic<int> right = 0;
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([&] {
            for (int round = 0; round < 50; ++round) {
                registerCodec(builtIn);
                right += samplesOf(decodePicture(smallPng())) == Samples{7, 9} ? 1 : 0;
            }
        });
    }
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(right, 200);
}

TEST(PictureLimits, GiveTheBytesOfARowWithoutPadding) {
    const PictureLimits limits;
    EXPECT_EQ(checkPictureLimits(headerOf(7, 3, 8, SampleColor::RGB, false), limits), 21U);
    EXPECT_EQ(checkPictureLimits(headerOf(7, 3, 8, SampleColor::RGB, true), limits), 28U);
    EXPECT_EQ(checkPictureLimits(headerOf(7, 3, 16, SampleColor::White, false), limits), 14U);
    EXPECT_EQ(checkPictureLimits(headerOf(7, 3, 16, SampleColor::Black, true), limits), 28U);
}

TEST(PictureLimits, AllowExactlyTheLimitAndNothingBeyond) {
    const PictureHeader header = headerOf(10, 20, 8, SampleColor::RGB, false);
    EXPECT_EQ(checkPictureLimits(header, {200, 600}), 30U);
    EXPECT_EQ(refusalOf([&] { checkPictureLimits(header, {199, 600}); }).code, NSErrorCode::TooLarge);
    EXPECT_EQ(refusalOf([&] { checkPictureLimits(header, {200, 599}); }).code, NSErrorCode::TooLarge);
}

TEST(PictureLimits, SayHowLargeThePictureIsAndWhatTheLimitIs) {
    const PictureHeader header = headerOf(100000, 100000, 8, SampleColor::RGB, false);
    EXPECT_EQ(refusalOf([&] { checkPictureLimits(header, {}); }).reason,
              "the picture is 100000 x 100000 pixels, more than the limit of 268435456 pixels");
}

TEST(PictureLimits, RefusePicturesWithoutPixelsAsDamaged) {
    EXPECT_EQ(refusalOf([] { checkPictureLimits(headerOf(0, 5, 8, SampleColor::RGB, false), {}); }).code,
              NSErrorCode::CorruptData);
    EXPECT_EQ(refusalOf([] { checkPictureLimits(headerOf(5, 0, 8, SampleColor::RGB, false), {}); }).code,
              NSErrorCode::CorruptData);
}

TEST(PictureLimits, DoNotOverflowForTheLargestHeaders) {
    constexpr auto most = std::numeric_limits<std::uint32_t>::max();
    constexpr auto unlimited = std::numeric_limits<std::uint64_t>::max();
    // 2^64 - 2^33 + 1 pixels fit in 64 bits, and eight times as many bytes do not.
    const PictureHeader header = headerOf(most, most, 16, SampleColor::RGB, true);
    EXPECT_EQ(refusalOf([&] {
                  checkPictureLimits(header, {unlimited, unlimited});
              }).code,
              NSErrorCode::TooLarge);
}

} // namespace

} // namespace Imaging::Platform
