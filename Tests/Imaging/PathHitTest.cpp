#include "Imaging/Bezier.h"

#include "Platform/Graphics/BezierPath.h"
#include "Tests/Imaging/CurveFixtures.h"
#include "Tests/Imaging/ImagingTestSupport.h"

#include <gtest/gtest.h>

#include <limits>
#include <random>

using namespace Imaging;
using namespace ImagingTests;

namespace {

constexpr float notANumber = std::numeric_limits<float>::quiet_NaN();
constexpr float untouched = -77;

struct Hit {
    bool isHit;
    int element = -5;
    float param = untouched;
};

Hit hit(const NSBezierPath& path, NSPoint point, float distance) {
    Hit result{};
    result.element = -5;
    result.param = untouched;
    result.isHit = intersectsPoint(path, point, &result.element, &result.param, distance);
    return result;
}

testing::AssertionResult isHitAt(const Hit& result, int element, float param) {
    if (result.isHit && result.element == element && result.param == param)
        return testing::AssertionSuccess();
    return testing::AssertionFailure() << (result.isHit ? "hit" : "missed") << ", element " << result.element
                                       << ", param " << result.param;
}

testing::AssertionResult isMiss(const Hit& result, float param) {
    if (!result.isHit && result.element == -5 && result.param == param) return testing::AssertionSuccess();
    return testing::AssertionFailure() << (result.isHit ? "hit" : "missed") << ", element " << result.element
                                       << ", param " << result.param;
}

/// (10, 20) to (40, 60), to (88, -4), closed.
NSBezierPath triangle() {
    NSBezierPath path;
    path.moveToPoint({10, 20});
    path.lineToPoint({40, 60});
    path.lineToPoint({88, -4});
    path.closePath();
    return path;
}

void addCurve(NSBezierPath& path, const BezierCurve& curve) {
    path.curveToPoint(curve.end, curve.control1, curve.control2);
}

NSBezierPath pathOf(const BezierCurve& curve) {
    NSBezierPath path;
    path.moveToPoint(curve.start);
    addCurve(path, curve);
    return path;
}

} // namespace

TEST(PathHit, StoresTheIndexOfALineAndTheFractionAlongIt) {
    EXPECT_TRUE(isHitAt(hit(triangle(), {17.5f, 30}, 1), 1, 0.25f));
    EXPECT_TRUE(isHitAt(hit(triangle(), {13.5f, 33}, 6), 1, 0.25f));
    EXPECT_TRUE(isHitAt(hit(triangle(), {76, 12}, 1), 2, 0.75f));
}

TEST(PathHit, TakesTheFirstElementInTheOrderOfThePath) {
    // Near both lines: 10 before the end of the first, 4 beside the second's beginning.
    EXPECT_TRUE(isHitAt(hit(triangle(), {40, 60}, 2), 1, 1));
    EXPECT_EQ(hit(triangle(), {46, 52}, 0.5f).element, 2);
    EXPECT_EQ(hit(triangle(), {46, 52}, 30).element, 1);
}

TEST(PathHit, RefusesADistanceEqualToTheGivenOne) {
    EXPECT_TRUE(isMiss(hit(triangle(), {13.5f, 33}, 5), 0));
    EXPECT_TRUE(isHitAt(hit(triangle(), {13.5f, 33}, std::nextafter(5.0f, 6.0f)), 1, 0.25f));
    EXPECT_TRUE(isMiss(hit(triangle(), {17.5f, 30}, 0), 0));
}

TEST(PathHit, DoesNotTestTheClosingSegment) {
    // The middle of the way from (88, -4) back to (10, 20).
    EXPECT_TRUE(isMiss(hit(triangle(), {49, 8}, 3), 0));
    NSBezierPath drawn = triangle();
    drawn.lineToPoint({49, 8});
    EXPECT_EQ(hit(drawn, {49, 8}, 3).element, 4) << "a line there is hit";
}

TEST(PathHit, NeverHitsAPathOfMovesAndClosesOnly) {
    NSBezierPath path;
    path.moveToPoint({10, 20});
    path.moveToPoint({40, 60});
    path.closePath();
    EXPECT_TRUE(isMiss(hit(path, {40, 60}, 100), 0));
    EXPECT_TRUE(isMiss(hit(path, {10, 20}, 100), 0));
}

TEST(PathHit, GoesOnFromTheSubpathsStartAfterAClose) {
    NSBezierPath path = triangle();
    path.lineToPoint({10, 100});
    EXPECT_TRUE(isHitAt(hit(path, {8, 80}, 3), 4, 0.75f));
    EXPECT_FALSE(hit(path, {29.5f, 74}, 3).isHit) << "on the way from (88, -4) to (10, 100)";
}

TEST(PathHit, GoesOnFromAMove) {
    NSBezierPath path;
    path.moveToPoint({10, 20});
    path.lineToPoint({40, 60});
    path.moveToPoint({100, 200});
    path.lineToPoint({130, 240});
    EXPECT_TRUE(isHitAt(hit(path, {107.5f, 210}, 1), 3, 0.25f));
    EXPECT_FALSE(hit(path, {70, 130}, 5).isHit) << "on the way between the lines";
}

TEST(PathHit, GoesOnFromACurvesEnd) {
    NSBezierPath path = pathOf(knownCurve(10));
    path.lineToPoint({100, 150});
    EXPECT_TRUE(isHitAt(hit(path, {77.5f, 120}, 1), 2, 0.25f));
}

TEST(PathHit, FindsTheParameterOfACurve) {
    NSBezierPath path;
    path.moveToPoint({-50, -60});
    path.lineToPoint({10, 20});
    addCurve(path, knownCurve(10));
    const Hit result = hit(path, {51.25f - 4, 42.5f + 3}, 6);
    EXPECT_TRUE(result.isHit);
    EXPECT_EQ(result.element, 2);
    // Pieces are shorter than 1 and the speed is 112.5.
    EXPECT_NEAR(result.param, 0.5, 1 / 112.5);
    float expected = untouched;
    EXPECT_TRUE(FindParamAlongBezierForPoint({51.25f - 4, 42.5f + 3}, knownCurve(10), 1, 6, &expected));
    EXPECT_EQ(result.param, expected);
}

TEST(PathHit, LeavesTheParameterOfACurveThatTheSearchDoesNotConfirm) {
    // Pieces of 150 / 256 with middles 0.29 apart from their ends: the start of one is on the curve, but not
    // within 0.2 of a middle.
    EXPECT_TRUE(isHitAt(hit(pathOf(straightCurve), {55, 80}, 0.2f), 1, 0));
    EXPECT_NE(hit(pathOf(straightCurve), {55, 80}, 0.5f).param, 0);
}

TEST(PathHit, LeavesTheParameterOfAClosedLoopAtZero) {
    EXPECT_TRUE(isHitAt(hit(pathOf({{10, 20}, {60, 80}, {-40, 80}, {10, 20}}), {10, 65}, 2), 1, 0));
}

TEST(PathHit, LeavesTheParameterOfALineWithoutLengthAtZeroAndGivesItHalfAUnitOfSlack) {
    NSBezierPath path;
    path.moveToPoint({10, 20});
    path.lineToPoint({10, 20});
    EXPECT_TRUE(isHitAt(hit(path, {13, 24}, 4.6f), 1, 0));
    EXPECT_TRUE(isMiss(hit(path, {13, 24}, 4.5f), 0));
}

TEST(PathHit, SetsTheParameterToZeroAtMovesAlsoWhenNothingIsHit) {
    EXPECT_TRUE(isMiss(hit(triangle(), {500, 500}, 5), 0));
    EXPECT_TRUE(isMiss(hit(NSBezierPath(), {500, 500}, 5), untouched)) << "an empty path has no moves";
}

TEST(PathHit, NeedsNeitherIndexNorParameter) {
    int element = -5;
    float param = untouched;
    const NSBezierPath path = pathOf(knownCurve(10));
    EXPECT_TRUE(intersectsPoint(triangle(), {17.5f, 30}, nullptr, nullptr, 1));
    EXPECT_TRUE(intersectsPoint(triangle(), {17.5f, 30}, &element, nullptr, 1));
    EXPECT_EQ(element, 1);
    EXPECT_TRUE(intersectsPoint(triangle(), {17.5f, 30}, nullptr, &param, 1));
    EXPECT_EQ(param, 0.25f);
    EXPECT_TRUE(intersectsPoint(path, {51.25f, 42.5f}, nullptr, nullptr, 1));
    EXPECT_FALSE(intersectsPoint(path, {500, 500}, nullptr, nullptr, 1));
}

TEST(PathHit, HitsASymmetricSAlongItsChord) {
    EXPECT_TRUE(hit(pathOf(symmetricS), {30, 20}, 1).isHit);
    EXPECT_FALSE(hit(pathOf(symmetricS), {29, 46}, 5).isHit) << "on the hump";
}

TEST(PathHit, FindsTheFourSidesOfARectangleButTheLast) {
    const NSBezierPath path =
        NSBezierPath::bezierPathWithRect(Imaging::Platform::NSMakeRect(-30, 15, 80, 40));
    EXPECT_TRUE(isHitAt(hit(path, {-10, 16}, 2), 1, 0.25f));
    EXPECT_TRUE(isHitAt(hit(path, {49, 25}, 2), 2, 0.25f));
    EXPECT_TRUE(isHitAt(hit(path, {30, 54}, 2), 3, 0.25f));
    EXPECT_TRUE(isMiss(hit(path, {-30, 35}, 2), 0)) << "the left side is the closing segment";
}

TEST(PathHit, EndsWithoutNumbers) {
    EXPECT_TRUE(isMiss(hit(triangle(), {notANumber, 30}, 5), 0));
    EXPECT_TRUE(isMiss(hit(triangle(), {17.5f, 30}, notANumber), 0));
    NSBezierPath path;
    path.moveToPoint({10, 20});
    path.curveToPoint({40, 60}, {notANumber, 3}, {4, 5});
    path.lineToPoint({88, -4});
    EXPECT_TRUE(isHitAt(hit(path, {76, 12}, 1), 2, 0.75f));
}

TEST(PathHit, AgreesWithDenseSamplingAlongAnEllipse) {
    const std::uint32_t seed = 64738;
    SCOPED_TRACE(testing::Message() << "seed " << seed);
    std::mt19937 random(seed);
    std::uniform_real_distribution<float> place(-120, 180);
    const NSBezierPath path =
        NSBezierPath::bezierPathWithOvalInRect(Imaging::Platform::NSMakeRect(-70, -40, 200, 120));
    int hits = 0;
    for (int round = 0; round < 300; ++round) {
        const NSPoint point{place(random), place(random)};
        double nearest = std::numeric_limits<double>::infinity();
        for (int i = 0; i < 40000; ++i) {
            const double angle = i * 6.283185307179586 / 40000;
            nearest = std::min(nearest, gap(point, {30 + 100 * std::cos(angle), 20 + 60 * std::sin(angle)}));
        }
        // A flat piece bulges by up to sqrt(c / 200), where c is below 20 for this ellipse.
        if (std::fabs(nearest - 12) < 0.5) continue;
        const Hit result = hit(path, point, 12);
        ASSERT_EQ(result.isHit, nearest < 12);
        if (!result.isHit) continue;
        ++hits;
        std::array<NSPoint, 3> points;
        std::array<NSPoint, 3> before;
        path.elementAtIndex(static_cast<std::size_t>(result.element), &points);
        const auto kind = path.elementAtIndex(static_cast<std::size_t>(result.element) - 1, &before);
        const NSPoint start = kind == Imaging::Platform::NSBezierPathElement::CurveTo ? before[2] : before[0];
        const ExactCurve curve(BezierCurve{start, points[0], points[1], points[2]});
        ASSERT_LT(gap(point, exactPointAt(curve, result.param)), 12.5);
    }
    EXPECT_GT(hits, 20);
}
