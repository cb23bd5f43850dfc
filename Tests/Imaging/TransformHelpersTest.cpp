#include "Imaging/Geometry.h"

#include "Platform/Graphics/Image.h"
#include "Tests/Imaging/ImagingTestSupport.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <limits>
#include <new>
#include <random>
#include <string>

#include <sys/mman.h>
#include <unistd.h>

using namespace Imaging;
using Imaging::Platform::NSException;
using Imaging::Platform::NSMakePoint;
using Imaging::Platform::NSMakeRect;
using Imaging::Platform::NSMakeSize;
using ImagingTests::isPoint;
using ImagingTests::isRect;
using ImagingTests::isTransform;
using ImagingTests::matrix;
using ImagingTests::moved;

namespace {

constexpr float infinity = std::numeric_limits<float>::infinity();

/// Off the origin, off the axes, without symmetry, and invertible; all entries are exact.
const NSAffineTransform slanted = matrix(2, 0.5f, -0.25f, 3, 7, -11);

} // namespace

TEST(TransformFrom, MovesByTheTargetsCentreThenScalesThenMovesBackByTheOthers) {
    // Centres (20, 40) and (-6, 9), scales 3 and 0.5: x becomes 3 · (x - 6) - 20, y becomes 0.5 · (y + 9)
    // - 40.
    const NSAffineTransform transform = transformFrom(NSMakeRect(18, 30, 4, 20), NSMakeRect(-12, 4, 12, 10));
    EXPECT_TRUE(isTransform(transform, matrix(3, 0, 0, 0.5f, -38, -35.5f)));
    EXPECT_TRUE(isPoint(transform.transformPoint(NSMakePoint(8, 11)), -14, -30));
}

TEST(TransformFrom, DoesNotMapTheOneRectangleOntoTheOtherOffTheOrigin) {
    const NSRect from = NSMakeRect(18, 30, 4, 20);
    const NSRect to = NSMakeRect(-12, 4, 12, 10);
    EXPECT_FALSE(isRect(transformRect(transformFrom(from, to), from), -12, 4, 12, 10));
    // (18, 30) becomes (3 · 12 - 20, 0.5 · 39 - 40).
    EXPECT_TRUE(isRect(transformRect(transformFrom(from, to), from), 16, -20.5f, 12, 10));
}

TEST(TransformFrom, MapsRectanglesAboutTheOriginOntoEachOther) {
    const NSRect from = NSMakeRect(-2, -10, 4, 20);
    const NSRect to = NSMakeRect(-6, -5, 12, 10);
    EXPECT_TRUE(isRect(transformRect(transformFrom(from, to), from), -6, -5, 12, 10));
    EXPECT_TRUE(isRect(transformRect(transformFrom(to, from), to), -2, -10, 4, 20));
}

TEST(TransformFrom, ScalesByOneBetweenEmptyRectangles) {
    EXPECT_TRUE(isTransform(transformFrom(NSMakeRect(3, 5, 0, 0), NSMakeRect(20, 9, 0, 0)), moved(17, 4)));
    // Widths alone: the heights 4 and 8 still count.
    EXPECT_TRUE(isTransform(transformFrom(NSMakeRect(3, 5, 0, 4), NSMakeRect(20, 9, 0, 8)),
                            matrix(1, 0, 0, 2, 17, 2 * 13 - 7)));
    EXPECT_TRUE(isTransform(transformFrom(NSMakeRect(3, 5, 4, 0), NSMakeRect(20, 9, 8, 0)),
                            matrix(2, 0, 0, 1, 2 * 24 - 5, 4)));
}

TEST(TransformFrom, DividesByAnExtentThatOnlyTheFirstRectangleLacks) {
    const NSAffineTransform wide = transformFrom(NSMakeRect(3, 5, 0, 4), NSMakeRect(20, 9, 6, 8));
    EXPECT_EQ(wide.transformStruct().m11, infinity);
    EXPECT_FALSE(wide.isInvertible());
    const NSAffineTransform high = transformFrom(NSMakeRect(3, 5, 6, 0), NSMakeRect(20, 9, 6, -8));
    EXPECT_EQ(high.transformStruct().m22, -infinity);
    EXPECT_FALSE(high.isInvertible());
}

TEST(TransformFrom, CollapsesOntoARectangleWithoutExtent) {
    const auto m = transformFrom(NSMakeRect(3, 5, 2, 4), NSMakeRect(20, 9, 0, 0)).transformStruct();
    EXPECT_EQ(m.m11, 0);
    EXPECT_EQ(m.m22, 0);
    EXPECT_EQ(m.tX, -4);
    EXPECT_EQ(m.tY, -7);
}

TEST(TransformRect, MapsTheOriginAsAPointAndTheSizeAsAVector) {
    EXPECT_TRUE(isRect(transformRect(matrix(2, 0, 0, 3, 7, -11), NSMakeRect(-4, 5, 6, 8)), -1, 4, 12, 24));
}

TEST(TransformRect, MakesTheExtentsPositive) {
    EXPECT_TRUE(isRect(transformRect(matrix(-2, 0, 0, 3, 7, -11), NSMakeRect(-4, 5, 6, 8)), 3, 4, 12, 24));
    EXPECT_TRUE(isRect(transformRect(matrix(2, 0, 0, -3, 7, -11), NSMakeRect(-4, 5, 6, 8)), -1, -50, 12, 24));
    EXPECT_TRUE(isRect(transformRect(matrix(-1, 0, 0, -1, 0, 0), NSMakeRect(-4, 5, 6, 8)), -2, -13, 6, 8));
    EXPECT_TRUE(isRect(transformRect(NSAffineTransform(), NSMakeRect(10, 10, -4, -6)), 6, 4, 4, 6));
}

TEST(TransformRect, ComesBackByTheInverse) {
    const NSAffineTransform transform = matrix(-2, 0, 0, 4, 7, -11);
    const NSRect there = transformRect(transform, NSMakeRect(-4, 5, 6, 8));
    EXPECT_TRUE(isRect(transformRect(invertedTransform(transform), there), -4, 5, 6, 8));
}

TEST(TransformRect, TurnsAQuarterByTheImageOfTheSize) {
    // (x, y) becomes (30 - y, 7 + x); the size (6, 8) becomes (-8, 6).
    EXPECT_TRUE(isRect(transformRect(matrix(0, 1, -1, 0, 30, 7), NSMakeRect(3, 5, 6, 8)), 17, 10, 8, 6));
}

TEST(TransformRect, IsNoBoundingBoxUnderAShear) {
    // The size (6, 8) becomes (2 · 6 - 0.25 · 8, 0.5 · 6 + 3 · 8); the box would be 14 wide.
    EXPECT_TRUE(isRect(transformRect(slanted, NSMakeRect(4, 8, 6, 8)), 13, 15, 10, 27));
}

TEST(TransformCurve, MapsAllFourPoints) {
    const BezierCurve curve{{4, 8}, {-4, 12}, {0, -8}, {2, 16}};
    const BezierCurve result = transformCurve(slanted, curve);
    EXPECT_TRUE(isPoint(result.start, 13, 15));
    EXPECT_TRUE(isPoint(result.control1, -4, 23));
    EXPECT_TRUE(isPoint(result.control2, 9, -35));
    EXPECT_TRUE(isPoint(result.end, 7, 38));
}

TEST(InvertedTransform, UndoesTheTransformAndLeavesItAlone) {
    const NSAffineTransform transform = matrix(2, 0, 0, -4, 7, -12);
    const NSAffineTransform before = transform;
    EXPECT_TRUE(isTransform(invertedTransform(transform), matrix(0.5f, 0, 0, -0.25f, -3.5f, -3)));
    EXPECT_TRUE(isTransform(transform, before));
    EXPECT_TRUE(isTransform(invertedTransform(invertedTransform(transform)), transform));
}

TEST(InvertedTransform, BringsRandomCurvesBack) {
    const std::uint32_t seed = 1618;
    SCOPED_TRACE(testing::Message() << "seed " << seed);
    std::mt19937 random(seed);
    std::uniform_real_distribution<float> entry(-3, 3);
    std::uniform_real_distribution<float> place(-200, 200);
    const auto point = [&] { return NSMakePoint(place(random), place(random)); };
    int tried = 0;
    while (tried < 200) {
        const NSAffineTransform transform =
            matrix(entry(random), entry(random), entry(random), entry(random), place(random), place(random));
        const auto m = transform.transformStruct();
        if (std::fabs(m.m11 * m.m22 - m.m12 * m.m21) < 0.5f) continue;
        ++tried;
        const BezierCurve curve{point(), point(), point(), point()};
        const BezierCurve back =
            transformCurve(invertedTransform(transform), transformCurve(transform, curve));
        ASSERT_TRUE(EqualPointsAlmost(back.start, curve.start, 0.01f));
        ASSERT_TRUE(EqualPointsAlmost(back.control1, curve.control1, 0.01f));
        ASSERT_TRUE(EqualPointsAlmost(back.control2, curve.control2, 0.01f));
        ASSERT_TRUE(EqualPointsAlmost(back.end, curve.end, 0.01f));
    }
}

TEST(InvertedTransform, ThrowsWhenThereIsNoInverse) {
    EXPECT_THROW(invertedTransform(matrix(2, 4, 1, 2, 7, -11)), NSException);
    EXPECT_THROW(invertedTransform(transformFrom(NSMakeRect(3, 5, 0, 4), NSMakeRect(20, 9, 6, 8))),
                 NSException);
}

TEST(TransformDescription, NamesTheEntriesInTheOrderOfTheMatrix) {
    const std::string text = description(slanted);
    const std::string entries = "> { m11=2.000000 m21=-0.250000 m12=0.500000 m22=3.000000 tX=7.000000 "
                                "tY=-11.000000 }";
    ASSERT_EQ(text.size(), std::string("NSAffineTransform <0x01234567").size() + entries.size());
    EXPECT_EQ(text.substr(text.size() - entries.size()), entries);
    EXPECT_EQ(text.substr(0, 21), "NSAffineTransform <0x");
}

TEST(TransformDescription, PrintsTheLow32BitsOfTheAddressAsEightLowerCaseDigits) {
    const NSAffineTransform transforms[3];
    for (const NSAffineTransform& transform : transforms) {
        std::uint64_t address = reinterpret_cast<std::uintptr_t>(&transform);
        std::string digits;
        for (int i = 0; i < 8; ++i, address /= 16) digits.insert(0, 1, "0123456789abcdef"[address % 16]);
        EXPECT_EQ(description(transform).substr(21, 8), digits);
        EXPECT_EQ(description(transform)[29], '>');
    }
}

TEST(TransformDescription, PadsALowAddressWithZerosAndDropsTheHighBits) {
    // Somewhere in 4 GiB of addresses there is one that ends in these bits.
    constexpr std::uintptr_t lowBits = 0x0002ab40;
    const auto pageSize = static_cast<std::uintptr_t>(sysconf(_SC_PAGESIZE));
    const std::size_t reserved = (std::size_t{1} << 32) + pageSize;
    void* const region =
        mmap(nullptr, reserved, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    ASSERT_NE(region, MAP_FAILED);
    const auto begin = reinterpret_cast<std::uintptr_t>(region);
    std::uintptr_t address = (begin & ~std::uintptr_t{0xffffffff}) | lowBits;
    if (address < begin) address += std::uintptr_t{1} << 32;
    void* const page = reinterpret_cast<void*>(address & ~(pageSize - 1));
    ASSERT_EQ(mprotect(page, pageSize, PROT_READ | PROT_WRITE), 0);
    const auto* const transform = new (reinterpret_cast<void*>(address)) NSAffineTransform();
    EXPECT_EQ(description(*transform), "NSAffineTransform <0x0002ab40> { m11=1.000000 m21=0.000000 "
                                       "m12=0.000000 m22=1.000000 tX=0.000000 tY=0.000000 }");
    EXPECT_EQ(munmap(region, reserved), 0);
}

TEST(TransformDescription, WidensTheFloatsAndPrintsAllTheirDigits) {
    const std::string text =
        description(matrix(0.1f, 3.4028235e38f, infinity, -infinity, -0.0000004f, 16777216.5f));
    // 0.1f is 0.100000001490116…; the largest float is 2^128 - 2^104.
    EXPECT_NE(text.find("m11=0.100000 "), std::string::npos) << text;
    EXPECT_NE(text.find("m12=340282346638528859811704183484516925440.000000 "), std::string::npos) << text;
    EXPECT_NE(text.find("m21=inf "), std::string::npos) << text;
    EXPECT_NE(text.find("m22=-inf "), std::string::npos) << text;
    EXPECT_NE(text.find("tX=-0.000000 "), std::string::npos) << text;
    EXPECT_NE(text.find("tY=16777216.000000 }"), std::string::npos) << text;
}

TEST(PictureBounds, AreTheSizeAtTheOrigin) {
    const Imaging::Platform::NSImage picture(NSMakeSize(37.5f, 22));
    EXPECT_TRUE(isRect(bounds(picture), 0, 0, 37.5f, 22));
}
