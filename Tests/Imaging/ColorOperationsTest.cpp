// The colour operations against their arithmetic written out plainly, one pixel after another, on every kind
// of vector code; and what the nodes keep, tell and archive.

#include "Imaging/ColorOperations.h"
#include "Imaging/Pixels/ColorTransformPlain.h"
#include "Imaging/Pixels/PixelWorkers.h"
#include "Platform/Foundation/KeyedArchiver.h"
#include "Tests/Imaging/PixelOperationFixtures.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <limits>
#include <string>
#include <vector>

using namespace ImagingTests;
using Imaging::ColorTransformRecord;
using Imaging::HueAdjustRecord;
using Imaging::IMGColorTransformOp;
using Imaging::IMGHueAdjustOp;
using Imaging::Platform::archivedDataWithRootObject;
using Imaging::Platform::NSPropertyListFormat;
using Imaging::Platform::unarchiveObjectOfClass;

namespace {

constexpr float infinity = std::numeric_limits<float>::infinity();
constexpr float notANumber = std::numeric_limits<float>::quiet_NaN();
const float pi = 3.14159265358979F;

using Bytes = std::vector<std::uint8_t>;
using Multipliers = std::array<float, 3>;

// The references

int multipliedByHand(int sample, float multiplier) {
    const float v = static_cast<float>(sample) * multiplier;
    if (std::isnan(v)) return 0;
    if (v < 0) return 0;
    if (v > 255) return 255;
    return static_cast<int>(std::trunc(v));
}

/// The hue of (r, g, b) turned by `h` sextants.
std::array<int, 3> turnedByHand(float h, int r, int g, int b) {
    const double max = std::max({r, g, b});
    const double min = std::min({r, g, b});
    if (max == 0) return {r, g, b};
    const double d = max - min;
    const double s = d / max;
    if (s == 0) return {r, g, b};
    double hue = 0;
    if (max == r) {
        hue = (g - b) / d;
    } else if (max == g) {
        hue = (b - r) / d + 2;
    } else if (max == b) {
        hue = (r - g) / d + 4;
    }
    double x = static_cast<double>(h) + hue;
    if (x >= 6) x -= 6;
    if (x < 0) x += 6;
    const double i = std::floor(x);
    const double f = x - i;
    const double p = (1 - s) * max;
    const double q = (1 - s * f) * max;
    const double t = (1 - (1 - f) * s) * max;
    const auto whole = [](double red, double green, double blue) {
        return std::array{static_cast<int>(red), static_cast<int>(green), static_cast<int>(blue)};
    };
    if (i == 0) return whole(max, t, p);
    if (i == 1) return whole(q, max, p);
    if (i == 2) return whole(p, max, t);
    if (i == 3) return whole(p, q, max);
    if (i == 4) return whole(t, p, max);
    if (i == 5) return whole(max, p, q);
    return {r, g, b};
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

Rows turnedByHand(Rows source, float shift, int samples, Rows destination) {
    for (int y = 0; y < source.height(); ++y) {
        for (int x = 0; x < source.width(); ++x) {
            const std::uint8_t* const from = source.pixel(x, y);
            std::uint8_t* const to = destination.pixel(x, y);
            const std::array<int, 3> turned = turnedByHand(shift, from[0], from[1], from[2]);
            for (std::size_t i = 0; i < 3; ++i) to[i] = static_cast<std::uint8_t>(turned[i]);
            if (samples == 4) to[3] = from[3];
        }
    }
    return destination;
}

// Running the workers over bytes

template<class Record>
Record recordOver(Rows& source, Rows& destination) {
    Record record{};
    record.width = source.width();
    record.height = source.height();
    record.sourceRowLength = static_cast<std::uint32_t>(source.rowLength());
    record.destinationRowLength = static_cast<std::uint32_t>(destination.rowLength());
    record.source = source.data();
    record.destination = destination.data();
    return record;
}

ColorTransformRecord transformRecord(Rows& source, const Multipliers& multipliers, Rows& destination) {
    auto record = recordOver<ColorTransformRecord>(source, destination);
    record.redMultiplier = multipliers[0];
    record.greenMultiplier = multipliers[1];
    record.blueMultiplier = multipliers[2];
    return record;
}

HueAdjustRecord hueRecord(Rows& source, float shift, Rows& destination) {
    auto record = recordOver<HueAdjustRecord>(source, destination);
    record.hueShift = shift;
    return record;
}

/// All colours of one red, or with `step` above 1 some of them, as one picture.
Rows coloursWithRed(int red, int step) {
    const int side = (255 + step) / step;
    Rows rows(side * side, 1, 3, 0);
    for (int i = 0; i < side * side; ++i) {
        std::uint8_t* const pixel = rows.pixel(i, 0);
        pixel[0] = static_cast<std::uint8_t>(red);
        pixel[1] = static_cast<std::uint8_t>(i / side * step);
        pixel[2] = static_cast<std::uint8_t>(i % side * step);
    }
    return rows;
}

/// The shift in sextants of an angle, in the steps of its definition.
float shiftOf(float angle) {
    const double wide = angle;
    return static_cast<float>(wide * 6 / (3.14159265358979323846 + 3.14159265358979323846));
}

// Nodes over pictures of one row

std::shared_ptr<CCImage> transformed(Rows source, float red, float green, float blue) {
    IMGColorTransformOp node(source.node(), red, green, blue, 1);
    return node.untransformedImage();
}

std::shared_ptr<CCImage> turned(Rows source, float angle) {
    return IMGHueAdjustOp(source.node(), angle).untransformedImage();
}

Bytes transformedPixel(const Bytes& rgb, float red, float green, float blue) {
    return samplesOf(transformed(rowOf(3, rgb), red, green, blue));
}

Bytes turnedPixel(const Bytes& rgb, float angle) { return samplesOf(turned(rowOf(3, rgb), angle)); }

struct Counter {
    int tellings = 0;
    void told(IMGImage&) { ++tellings; }
};

std::string xmlOf(const IMGImage& node) {
    const Imaging::Platform::NSData data = archivedDataWithRootObject(node, NSPropertyListFormat::XML);
    return {data.begin(), data.end()};
}

} // namespace

// The arithmetic of the colour transform

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
        ColorTransformRecord record{};
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
        ColorTransformRecord record{};
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
    }
}

TEST(ColorTransform, IgnoresTheAlphaMultiplier) {
    Rows source = rowOf(3, {200, 100, 51});
    IMGColorTransformOp node(source.node(), 1, 1, 1, 0);
    EXPECT_EQ(samplesOf(node.untransformedImage()), (Bytes{200, 100, 51}));
}

// The arithmetic of the hue adjustment

TEST(HueAdjust, TurnsRedIntoGreenByTwoSextants) {
    EXPECT_EQ(turnedPixel({255, 0, 0}, 2 * pi / 3), (Bytes{0, 255, 0}));
    EXPECT_EQ(turnedPixel({255, 0, 0}, -2 * pi / 3), (Bytes{0, 0, 255}));
}

TEST(HueAdjust, PutsTheSamplesOfEachSextantInTheirPlaces) {
    // Of (200, 150, 100) s is 1/2 and the hue 1/2: half way up in every even sextant, half way down in odd
    // ones.
    const Bytes expected[] = {{200, 150, 100}, {150, 200, 100}, {100, 200, 150},
                              {100, 150, 200}, {150, 100, 200}, {200, 100, 150}};
    Rows source = rowOf(3, {200, 150, 100});
    for (int sextants = -6; sextants < 6; ++sextants) {
        Rows actual(1, 1, 3, 0);
        Imaging::hue_adjust_rgb(
            Imaging::interleavedRows(hueRecord(source, static_cast<float>(sextants), actual))[0]);
        EXPECT_EQ(Bytes(actual.data(), actual.data() + 3), expected[(sextants + 6) % 6]) << sextants;
    }
}

TEST(HueAdjust, LeavesGrayAndBlackPixelsAlone) {
    for (const float angle : {0.0F, 1.0F, -2.5F, 100.0F, notANumber}) {
        for (int value = 0; value < 256; ++value) {
            const auto gray = static_cast<std::uint8_t>(value);
            ASSERT_EQ(turnedPixel({gray, gray, gray}, angle), (Bytes{gray, gray, gray}));
        }
    }
}

TEST(HueAdjust, LeavesEveryPixelAloneFromThirteenSextantsOn) {
    Rows colours = coloursWithRed(77, 5);
    for (const float shift : {13.0F, 20.0F, 1e30F, infinity, -infinity, -12.0F, -13.0F, notANumber}) {
        Rows actual(colours.width(), 1, 3, 0);
        Imaging::hue_adjust_rgb(Imaging::interleavedRows(hueRecord(colours, shift, actual))[0]);
        EXPECT_EQ(actual, colours) << shift;
    }
    EXPECT_EQ(turnedPixel({255, 10, 0}, 13 * pi / 3 + 0.001F), (Bytes{255, 10, 0}));
    EXPECT_NE(turnedPixel({255, 10, 0}, pi), (Bytes{255, 10, 0}));
}

TEST(HueAdjust, LeavesPixelsAloneWhoseHueComesBackToAWholeTurn) {
    // A shift just below 0 plus 6 is 6 itself in doubles, and that is no sextant.
    Rows source = rowOf(3, {255, 7, 7});
    Rows actual(1, 1, 3, 0);
    Imaging::hue_adjust_rgb(Imaging::interleavedRows(hueRecord(source, -1e-20F, actual))[0]);
    EXPECT_EQ(actual, source);
}

TEST(HueAdjust, WrapsOnceOnly) {
    // Hue −1 + 1/2 for (200, 100, 150): with 12 it is 11.5, and 5.5 after one turn; with 12.75 it is
    // still 6.25.
    Rows source = rowOf(3, {200, 100, 150});
    Rows actual(1, 1, 3, 0);
    Imaging::hue_adjust_rgb(Imaging::interleavedRows(hueRecord(source, 12, actual))[0]);
    EXPECT_EQ(Bytes(actual.data(), actual.data() + 3), (Bytes{200, 100, 150}));
    Imaging::hue_adjust_rgb(Imaging::interleavedRows(hueRecord(source, 7, actual))[0]);
    EXPECT_EQ(Bytes(actual.data(), actual.data() + 3), (Bytes{200, 150, 100}));
    Imaging::hue_adjust_rgb(Imaging::interleavedRows(hueRecord(source, 12.75F, actual))[0]);
    EXPECT_EQ(actual, source);
}

TEST(HueAdjust, KeepsAlphaAndDoesNotTakeItOutOfTheColour) {
    EXPECT_EQ(samplesOf(turned(rowOf(4, {100, 0, 0, 120}), 2 * pi / 3)), (Bytes{0, 100, 0, 120}));
    EXPECT_EQ(samplesOf(turned(rowOf(4, {60, 60, 60, 61, 0, 0, 0, 9}), 1)),
              (Bytes{60, 60, 60, 61, 0, 0, 0, 9}));
}

TEST(HueAdjust, AgreesWithItsArithmeticForColoursOfAllKindsUnderManyAngles) {
    Pixels::Random random(31);
    std::vector<float> shifts = {0,      -0.0F,   1,        2,         3,         5,     6,
                                 -1,     -6,      0.5F,     6.5F,      11.75F,    12.5F, 1e7F,
                                 1e-30F, -1e-20F, infinity, -infinity, notANumber};
    for (int i = 0; i < 12; ++i) shifts.push_back(random.single(-14, 14));
    onEveryTarget([&] {
        for (const float shift : shifts) {
            for (const int red : {0, 1, 100, 254, 255}) {
                Rows source = coloursWithRed(red, 15);
                Rows actual(source.width(), 1, 3, 0);
                const Rows expected = turnedByHand(source, shift, 3, actual);
                for (const auto& record : Imaging::interleavedRows(hueRecord(source, shift, actual))) {
                    Imaging::hue_adjust_rgb(record);
                }
                ASSERT_EQ(actual, expected) << "shift " << shift << ", red " << red;
            }
        }
    });
}

TEST(HueAdjust, AgreesWithThePlainWorkerForEveryColour) {
    for (const float shift : {0.0F, 2.0F, 0.66845F, -3.3333333F, 8.25F}) {
        for (int red = 0; red < 256; ++red) {
            Rows source = coloursWithRed(red, 1);
            Rows actual(source.width(), 1, 3, 0);
            Rows plain = actual;
            Imaging::hue_adjust_rgb(Imaging::interleavedRows(hueRecord(source, shift, actual))[0]);
            Imaging::Plain::hue_adjust_rgb(Imaging::interleavedRows(hueRecord(source, shift, plain))[0]);
            ASSERT_EQ(actual, plain) << "shift " << shift << ", red " << red;
        }
    }
}

TEST(HueAdjust, DoesPicturesOfEverySizeAndLeavesPaddingAlone) {
    Pixels::Random random(32);
    const auto check = [&](int samples, NSSize size, auto worker, auto plainWorker) {
        Rows source(static_cast<int>(size.width), static_cast<int>(size.height), samples,
                    random.integer(0, 9));
        source.fill(random);
        Rows actual(source.width(), source.height(), samples, random.integer(0, 9));
        Rows plain = actual;
        const float shift = random.single(-8, 14);
        const Rows expected = turnedByHand(source, shift, samples, actual);
        for (const auto& record : Imaging::interleavedRows(hueRecord(source, shift, actual))) worker(record);
        ASSERT_EQ(actual, expected) << samples << " samples, " << size.width << " x " << size.height;
        for (const auto& record : Imaging::interleavedRows(hueRecord(source, shift, plain))) {
            plainWorker(record);
        }
        ASSERT_EQ(plain, expected) << samples << " samples, " << size.width << " x " << size.height;
    };
    onEveryTarget([&] {
        for (const NSSize size : oddSizes()) {
            check(3, size, Imaging::hue_adjust_rgb, Imaging::Plain::hue_adjust_rgb);
            check(4, size, Imaging::hue_adjust_rgba, Imaging::Plain::hue_adjust_rgba);
        }
    });
}

TEST(HueAdjust, CountsTheAngleInSextantsThroughDoubles) {
    Pixels::Random random(33);
    Rows source(64, 3, 3, 5);
    source.fill(random);
    for (int i = 0; i < 40; ++i) {
        const float angle = random.single(-15, 15);
        Rows expected(64, 3, 3, 0);
        expected = turnedByHand(source, shiftOf(angle), 3, expected);
        EXPECT_EQ(samplesOf(turned(source, angle)),
                  Bytes(expected.data(), expected.data() + std::ptrdiff_t{64} * 3 * 3))
            << angle;
    }
}

TEST(HueAdjust, TreatsNoGrayLayout) {
    Pixels::Random random(34);
    for (const IMGBitmapFormat format : allFormats) {
        Rows source(9, 4, format, 2);
        source.fill(random);
        const auto result = turned(source, 1);
        EXPECT_EQ(Imaging::imgBitmapFormat(*bitmapOfResult(result)), format);
        EXPECT_EQ(areAllZero(samplesOf(result)),
                  format == IMGBitmapFormatGrayscale || format == IMGBitmapFormatGrayscaleAlpha);
    }
}

// The nodes

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

namespace {

/// Writes itself under the name of a class with the keys of a plain node alone, as an older program might.
class Bare : public IMGImage {
public:
    Bare(std::string name, std::shared_ptr<IMGImage> source)
        : IMGImage(std::move(source)), m_name(std::move(name)) {}
    std::string archiveClassName() const override { return m_name; }

private:
    std::string m_name;
};

} // namespace

TEST(ColorTransformNode, HasMultipliersOfZeroFromAnArchiveWithoutThem) {
    const Bare bare("IMGColorTransformOp", pictureNode(distinctPicture(2, 2)));
    const auto back = unarchiveObjectOfClass<IMGColorTransformOp>(
        archivedDataWithRootObject(bare, NSPropertyListFormat::Binary));
    EXPECT_EQ(back->redMultiplier(), 0);
    EXPECT_EQ(back->greenMultiplier(), 0);
    EXPECT_EQ(back->blueMultiplier(), 0);
    EXPECT_EQ(back->alphaMultiplier(), 0);
}

TEST(HueAdjustNode, HoldsItsSourceAndAngle) {
    const auto source = leaf(NSMakeRect(0, 0, 1, 1));
    const auto node = IMGHueAdjustOp::hueAdjustWithSourceImage(source, 1.25F);
    EXPECT_EQ(node->sourceAtIndex(0), source);
    EXPECT_EQ(node->angle(), 1.25F);
    EXPECT_EQ(node->name(), "hue adjust");
    EXPECT_THROW(IMGHueAdjustOp(nullptr, 1), NSException);
}

TEST(HueAdjustNode, DropsItsResultAndTellsWhenTheAngleBecomesAnother) {
    Rows source = rowOf(3, {255, 0, 0});
    IMGHueAdjustOp node(source.node(), 0);
    Counter counter;
    node.addImageDidChangeObserver(&counter, &Counter::told);
    const auto result = node.untransformedImage();
    node.setAngle(0);
    EXPECT_EQ(node.untransformedImage(), result);
    EXPECT_EQ(counter.tellings, 0);
    node.setAngle(2 * pi / 3);
    EXPECT_EQ(counter.tellings, 1);
    EXPECT_EQ(samplesOf(node.untransformedImage()), (Bytes{0, 255, 0}));
}

TEST(HueAdjustNode, CopiesOnTheSameSource) {
    const auto source = leaf(NSMakeRect(0, 0, 1, 1));
    const auto copy = std::dynamic_pointer_cast<IMGHueAdjustOp>(IMGHueAdjustOp(source, 1.25F).copy());
    ASSERT_NE(copy, nullptr);
    EXPECT_EQ(copy->sourceAtIndex(0), source);
    EXPECT_EQ(copy->angle(), 1.25F);
}

TEST(HueAdjustNode, ComesBackFromAnArchive) {
    const IMGHueAdjustOp node(pictureNode(distinctPicture(2, 2)), 1.25F);
    for (const auto format : {NSPropertyListFormat::Binary, NSPropertyListFormat::XML}) {
        const auto back = unarchiveObjectOfClass<IMGHueAdjustOp>(archivedDataWithRootObject(node, format));
        ASSERT_EQ(back->sources().size(), 1U);
        EXPECT_EQ(back->angle(), 1.25F);
    }
    const Bare bare("IMGHueAdjustOp", pictureNode(distinctPicture(2, 2)));
    const auto back = unarchiveObjectOfClass<IMGHueAdjustOp>(
        archivedDataWithRootObject(bare, NSPropertyListFormat::Binary));
    EXPECT_EQ(back->angle(), 0);
}
