// Also tests: Imaging/Pixels/HueAdjustPlain.cpp
// Also tests: Imaging/Pixels/HueAdjustVectors.cpp

// The hue adjustment against its arithmetic written out plainly, one pixel after another, on every kind of
// vector code; and what the node keeps, tells and archives.

#include "Imaging/HueAdjust.h"
#include "Imaging/Pixels/HueAdjustVectors.h"
#include "Platform/Foundation/KeyedArchiver.h"
#include "Tests/Imaging/PixelOperationFixtures.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <limits>
#include <vector>

using namespace ImagingTests;
using Imaging::HueAdjustRecord;
using Imaging::IMGHueAdjustOp;
using Imaging::Platform::archivedDataWithRootObject;
using Imaging::Platform::NSPropertyListFormat;
using Imaging::Platform::unarchiveObjectOfClass;

namespace {

constexpr float infinity = std::numeric_limits<float>::infinity();
constexpr float notANumber = std::numeric_limits<float>::quiet_NaN();
const float pi = 3.14159265358979F;

using Bytes = std::vector<std::uint8_t>;

// The reference

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

std::shared_ptr<CCImage> turned(Rows source, float angle) {
    return IMGHueAdjustOp(source.node(), angle).untransformedImage();
}

Bytes turnedPixel(const Bytes& rgb, float angle) { return samplesOf(turned(rowOf(3, rgb), angle)); }

} // namespace

// The arithmetic

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
        EXPECT_EQ(IMGHueAdjustOp(source.node(), 1).treatsFormat(format), !areAllZero(samplesOf(result)));
    }
}

// The node

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
