// Also tests: Imaging/Pixels/ColorTransformPlain.cpp
// Also tests: Imaging/Pixels/ColorTransformVectors.cpp

// The colour transform against its arithmetic written out plainly, one pixel after another, on every kind of
// vector code; and what the node keeps, tells and archives.

#include "Imaging/ColorTransform.h"
#include "Imaging/Pixels/ColorTransformVectors.h"
#include "Platform/Foundation/KeyedArchiver.h"
#include "Tests/Imaging/PixelOperationFixtures.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <string>
#include <vector>

using namespace ImagingTests;
using Imaging::ColorTransformRecord;
using Imaging::IMGColorTransformOp;
using Imaging::Platform::archivedDataWithRootObject;
using Imaging::Platform::NSPropertyListFormat;
using Imaging::Platform::unarchiveObjectOfClass;

namespace {

constexpr float infinity = std::numeric_limits<float>::infinity();
constexpr float notANumber = std::numeric_limits<float>::quiet_NaN();

using Bytes = std::vector<std::uint8_t>;
using Multipliers = std::array<float, 3>;

// The reference

int multipliedByHand(int sample, float multiplier) {
    const float v = static_cast<float>(sample) * multiplier;
    if (std::isnan(v)) return 0;
    if (v < 0) return 0;
    if (v > 255) return 255;
    return static_cast<int>(std::trunc(v));
}

Rows transformedByHand(Rows source, const Multipliers& multipliers, Rows destination) {
    for (int y = 0; y < source.height(); ++y) {
        for (int x = 0; x < source.width(); ++x) {
            for (std::size_t i = 0; i < 3; ++i) {
                destination.pixel(x, y)[i] =
                    static_cast<std::uint8_t>(multipliedByHand(source.pixel(x, y)[i], multipliers[i]));
            }
        }
    }
    return destination;
}

// Running the workers over bytes

ColorTransformRecord transformRecord(Rows& source, const Multipliers& multipliers, Rows& destination) {
    auto record = recordOver<ColorTransformRecord>(source, destination);
    record.redMultiplier = multipliers[0];
    record.greenMultiplier = multipliers[1];
    record.blueMultiplier = multipliers[2];
    return record;
}

// Nodes over pictures of one row

std::shared_ptr<CCImage> transformed(Rows source, float red, float green, float blue) {
    IMGColorTransformOp node(source.node(), red, green, blue, 1);
    return node.untransformedImage();
}

Bytes transformedPixel(const Bytes& rgb, float red, float green, float blue) {
    return samplesOf(transformed(rowOf(3, rgb), red, green, blue));
}

std::string xmlOf(const IMGImage& node) {
    const Imaging::Platform::NSData data = archivedDataWithRootObject(node, NSPropertyListFormat::XML);
    return {data.begin(), data.end()};
}

} // namespace

// The arithmetic

TEST(ColorTransform, MultipliesAndTruncates) {
    EXPECT_EQ(transformedPixel({200, 100, 51}, 2, 1, 0.5F), (Bytes{255, 100, 25}));
    EXPECT_EQ(transformedPixel({3, 5, 255}, 1.4F, 0.99F, 1.0F), (Bytes{4, 4, 255}));
}

TEST(ColorTransform, LeavesSamplesAloneUnderOne) {
    for (int value = 0; value < 256; ++value) {
        const auto sample = static_cast<std::uint8_t>(value);
        EXPECT_EQ(transformedPixel({sample, sample, sample}, 1, 1, 1), (Bytes{sample, sample, sample}));
    }
}

TEST(ColorTransform, GivesZeroForNegativeProducts) {
    EXPECT_EQ(transformedPixel({200, 1, 0}, -1, -0.001F, -infinity), (Bytes{0, 0, 0}));
}

TEST(ColorTransform, ClampsEndlessProductsAndGivesZeroForNoNumber) {
    EXPECT_EQ(transformedPixel({1, 0, 7}, infinity, infinity, notANumber), (Bytes{255, 0, 0}));
    EXPECT_EQ(transformedPixel({1, 0, 7}, 3e38F, 3e38F, 1e-45F), (Bytes{255, 0, 0}));
}

TEST(ColorTransform, RoundsTheProductAsFloatsDoBeforeItTruncates) {
    // 10 · 0.7 is 6.99999988 with the float next to 0.7, and rounded to a float it is 7.
    EXPECT_EQ(transformedPixel({10, 10, 10}, 0.7F, 0.7F, 0.7F), (Bytes{7, 7, 7}));
}

TEST(ColorTransform, AgreesWithItsArithmeticForEverySampleUnderManyMultipliers) {
    Pixels::Random random(21);
    std::vector<float> multipliers = {0,    -0.0F,    1,         0.5F,       2,       255,  256,  1e-45F, -3,
                                      1e9F, infinity, -infinity, notANumber, 1 / 3.F, 0.7F, 1.1F, 0.99F};
    for (int i = 0; i < 400; ++i) multipliers.push_back(random.single(-0.5F, i % 2 == 0 ? 2.0F : 40.0F));
    Rows source(256, 1, 3, 0);
    for (int x = 0; x < 256; ++x) std::fill_n(source.pixel(x, 0), 3, static_cast<std::uint8_t>(x));
    onEveryTarget([&] {
        for (std::size_t i = 0; i < multipliers.size(); ++i) {
            const Multipliers three = {multipliers[i], multipliers[(i + 7) % multipliers.size()],
                                       multipliers[(i + 12) % multipliers.size()]};
            Rows actual(256, 1, 3, 0);
            Rows expected = transformedByHand(source, three, actual);
            Imaging::runPixelWorkers(Imaging::color_transform,
                                     Imaging::interleavedRows(transformRecord(source, three, actual)));
            ASSERT_EQ(actual, expected) << three[0] << ' ' << three[1] << ' ' << three[2];
        }
    });
}

TEST(ColorTransform, FindsWholeMultipliersThatGiveTheSameSamples) {
    Pixels::Random random(24);
    std::vector<float> multipliers = {0, 1, 255, 256, -1, infinity, -infinity, notANumber, 1e-30F};
    const std::size_t special = multipliers.size();
    for (int i = 0; i < 500; ++i) multipliers.push_back(random.single(0, i % 2 == 0 ? 2.0F : 30.0F));
    int missing = 0;
    for (std::size_t i = 0; i < multipliers.size(); ++i) {
        ColorTransformRecord record;
        record.redMultiplier = multipliers[i];
        const auto whole = Imaging::wholeMultipliers(record);
        if (!whole.has_value()) {
            ASSERT_GE(i, special) << multipliers[i];
            ++missing;
            continue;
        }
        for (std::uint64_t sample = 0; sample < 256; ++sample) {
            const std::uint64_t shifted = sample * whole->values[0] >> (16 + whole->shift);
            ASSERT_EQ(std::min(shifted, std::uint64_t{255}),
                      static_cast<std::uint64_t>(multipliedByHand(static_cast<int>(sample), multipliers[i])))
                << multipliers[i] << " times " << sample;
        }
    }
    EXPECT_LE(missing, 5);
}

TEST(ColorTransform, AgreesWithItsArithmeticWhereNoWholeMultiplierDoes) {
    // Floats next to fractions of samples: some of the fraction's multiples round up to it, others do not.
    std::vector<float> multipliers;
    for (int numerator = 1; numerator < 60; ++numerator) {
        const float next = std::nextafter(static_cast<float>(numerator) / 30, 0.0F);
        ColorTransformRecord record;
        record.redMultiplier = next;
        if (!Imaging::wholeMultipliers(record).has_value()) multipliers.push_back(next);
    }
    ASSERT_GE(multipliers.size(), 3U);
    // 0.42 is such a one too: 50 times the float next to it rounds to 21, 150 times it stays below 63.
    ASSERT_EQ(multipliedByHand(50, 0.42F), 21);
    ASSERT_EQ(multipliedByHand(150, 0.42F), 62);
    multipliers.push_back(0.42F);
    Rows source(256, 1, 3, 0);
    for (int x = 0; x < 256; ++x) std::fill_n(source.pixel(x, 0), 3, static_cast<std::uint8_t>(x));
    onEveryTarget([&] {
        for (const float multiplier : multipliers) {
            const Multipliers three = {multiplier, multiplier, 1.75F};
            Rows actual(256, 1, 3, 0);
            const Rows expected = transformedByHand(source, three, actual);
            Imaging::color_transform(Imaging::interleavedRows(transformRecord(source, three, actual))[0]);
            ASSERT_EQ(actual, expected) << multiplier;
        }
    });
}

TEST(ColorTransform, DoesPicturesOfEverySizeAndLeavesPaddingAlone) {
    Pixels::Random random(22);
    onEveryTarget([&] {
        for (const NSSize size : oddSizes()) {
            Rows source(static_cast<int>(size.width), static_cast<int>(size.height), 3, random.integer(0, 9));
            source.fill(random);
            Rows actual(source.width(), source.height(), 3, random.integer(0, 9));
            const Multipliers multipliers = {random.single(-1, 3), random.single(0, 2), random.single(0, 1)};
            Rows plain = actual;
            const Rows expected = transformedByHand(source, multipliers, actual);
            for (const auto& record :
                 Imaging::interleavedRows(transformRecord(source, multipliers, actual))) {
                Imaging::color_transform(record);
            }
            ASSERT_EQ(actual, expected) << size.width << " x " << size.height;
            for (const auto& record : Imaging::interleavedRows(transformRecord(source, multipliers, plain))) {
                Imaging::Plain::color_transform(record);
            }
            ASSERT_EQ(plain, expected) << size.width << " x " << size.height;
        }
    });
}

TEST(ColorTransform, TakesTheRowsOfItsRecordOnly) {
    Rows source(5, 6, 3, 0);
    source.clear();
    for (const int first : {0, 1}) {
        Rows destination(5, 6, 3, 0);
        Imaging::color_transform(Imaging::interleavedRows(
            transformRecord(source, {1, 1, 1}, destination))[static_cast<std::size_t>(first)]);
        for (int y = 0; y < 6; ++y) EXPECT_EQ(*destination.pixel(4, y), y % 2 == first ? 0 : Rows::guard);
    }
}

TEST(ColorTransform, TreatsNoLayoutButRGB) {
    Pixels::Random random(23);
    for (const IMGBitmapFormat format : allFormats) {
        Rows source(9, 4, format, 2);
        source.fill(random);
        const auto result = transformed(source, 1, 1, 1);
        EXPECT_EQ(Imaging::imgBitmapFormat(*bitmapOfResult(result)), format);
        EXPECT_EQ(areAllZero(samplesOf(result)), format != IMGBitmapFormatRGB);
        EXPECT_EQ(IMGColorTransformOp(source.node(), 1, 1, 1, 1).treatsFormat(format),
                  format == IMGBitmapFormatRGB);
    }
}

TEST(ColorTransform, IgnoresTheAlphaMultiplier) {
    Rows source = rowOf(3, {200, 100, 51});
    IMGColorTransformOp node(source.node(), 1, 1, 1, 0);
    EXPECT_EQ(samplesOf(node.untransformedImage()), (Bytes{200, 100, 51}));
}

// The node

TEST(ColorTransformNode, HoldsItsSourceAndMultipliers) {
    const auto source = leaf(NSMakeRect(0, 0, 1, 1));
    const auto node = IMGColorTransformOp::colorTransformWithSourceImage(source, 1, 2, 3, 4);
    ASSERT_EQ(node->sources().size(), 1U);
    EXPECT_EQ(node->sourceAtIndex(0), source);
    EXPECT_EQ(node->redMultiplier(), 1);
    EXPECT_EQ(node->greenMultiplier(), 2);
    EXPECT_EQ(node->blueMultiplier(), 3);
    EXPECT_EQ(node->alphaMultiplier(), 4);
    EXPECT_THROW(IMGColorTransformOp(nullptr, 1, 1, 1, 1), NSException);
}

TEST(ColorTransformNode, DropsItsResultAndTellsWhenAMultiplierBecomesAnother) {
    Rows source = rowOf(3, {200, 100, 51});
    IMGColorTransformOp node(source.node(), 1, 1, 1, 1);
    Counter counter;
    node.addImageDidChangeObserver(&counter, &Counter::told);
    auto result = node.untransformedImage();
    int expected = 0;
    for (const auto set :
         {&IMGColorTransformOp::setRedMultiplier, &IMGColorTransformOp::setGreenMultiplier,
          &IMGColorTransformOp::setBlueMultiplier, &IMGColorTransformOp::setAlphaMultiplier}) {
        (node.*set)(1);
        EXPECT_EQ(node.untransformedImage(), result);
        EXPECT_EQ(counter.tellings, expected);
        (node.*set)(0.5F);
        EXPECT_EQ(counter.tellings, ++expected);
        EXPECT_NE(node.untransformedImage(), result);
        result = node.untransformedImage();
    }
    EXPECT_EQ(samplesOf(result), (Bytes{100, 50, 25}));
    EXPECT_EQ(node.redMultiplier(), 0.5F);
    EXPECT_EQ(node.alphaMultiplier(), 0.5F);
}

TEST(ColorTransformNode, HasANameAndCopiesOnTheSameSource) {
    const auto source = leaf(NSMakeRect(0, 0, 1, 1));
    const IMGColorTransformOp node(source, 1, 2, 3, 4);
    EXPECT_EQ(node.name(), "color transform");
    const auto copy = std::dynamic_pointer_cast<IMGColorTransformOp>(node.copy());
    ASSERT_NE(copy, nullptr);
    EXPECT_EQ(copy->sourceAtIndex(0), source);
    EXPECT_EQ(copy->redMultiplier(), 1);
    EXPECT_EQ(copy->greenMultiplier(), 2);
    EXPECT_EQ(copy->blueMultiplier(), 3);
    EXPECT_EQ(copy->alphaMultiplier(), 4);
}

TEST(ColorTransformNode, ComesBackFromAnArchive) {
    const IMGColorTransformOp node(pictureNode(distinctPicture(2, 2)), 1.5F, -2, 0.1F, 4);
    for (const auto format : {NSPropertyListFormat::Binary, NSPropertyListFormat::XML}) {
        const auto back =
            unarchiveObjectOfClass<IMGColorTransformOp>(archivedDataWithRootObject(node, format));
        ASSERT_EQ(back->sources().size(), 1U);
        EXPECT_EQ(back->redMultiplier(), 1.5F);
        EXPECT_EQ(back->greenMultiplier(), -2);
        EXPECT_EQ(back->blueMultiplier(), 0.1F);
        EXPECT_EQ(back->alphaMultiplier(), 4);
    }
    const std::string xml = xmlOf(node);
    for (const char* const key : {"red-multiplier", "green-multiplier", "blue-multiplier", "alpha-multiplier",
                                  "source-images", "<string>IMGColorTransformOp</string>"}) {
        EXPECT_NE(xml.find(key), std::string::npos) << key;
    }
    for (const char* const hidden : {"PixelOperation", "CachedOperation", "cached"}) {
        EXPECT_EQ(xml.find(hidden), std::string::npos) << hidden;
    }
}

TEST(ColorTransformNode, HasMultipliersOfZeroFromAnArchiveWithoutThem) {
    const Bare bare("IMGColorTransformOp", pictureNode(distinctPicture(2, 2)));
    const auto back = unarchiveObjectOfClass<IMGColorTransformOp>(
        archivedDataWithRootObject(bare, NSPropertyListFormat::Binary));
    EXPECT_EQ(back->redMultiplier(), 0);
    EXPECT_EQ(back->greenMultiplier(), 0);
    EXPECT_EQ(back->blueMultiplier(), 0);
    EXPECT_EQ(back->alphaMultiplier(), 0);
}
