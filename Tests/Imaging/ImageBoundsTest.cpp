#include "Tests/Imaging/ImagingTestSupport.h"

#include <gtest/gtest.h>

#include <memory>
#include <optional>

using namespace ImagingTests;

namespace {

/// (x, y) becomes (30 - y, 7 + x).
const NSAffineTransform turned = matrix(0, 1, -1, 0, 30, 7);

testing::AssertionResult isAt(const std::optional<IMGBounds>& bounds, NSRect rect,
                              const NSAffineTransform& transform) {
    if (!bounds.has_value()) return testing::AssertionFailure() << "no bounds were found";
    const testing::AssertionResult there =
        isRect(bounds->rectangle(), rect.origin.x, rect.origin.y, rect.size.width, rect.size.height);
    if (!there) return there;
    if (!bounds->transform().has_value()) return testing::AssertionFailure() << "there is no transform";
    return isTransform(*bounds->transform(), transform);
}

} // namespace

TEST(ImageBounds, OfOneSourceAreTheSourcesUnderTheNodesTransform) {
    const auto source = leaf(NSMakeRect(2, 3, 10, 4));
    const auto node = nodeOver({source}, turned);
    EXPECT_TRUE(isAt(node->imageBounds(), NSMakeRect(2, 3, 10, 4), turned));
    // x from 30 - 7 to 30 - 3, y from 7 + 2 to 7 + 12
    EXPECT_TRUE(isRect(node->imageBoundsRect(), 23, 9, 4, 10));
    EXPECT_TRUE(isSize(node->imageSize(), 4, 10));
}

TEST(ImageBounds, OfNestedNodesMapAPointByTheOutermostTransformFirst) {
    // The reverse of the order in which the same nodes draw.
    const auto source = leaf(NSMakeRect(2, 3, 10, 4));
    const auto inner = nodeOver({source}, moved(3, 5));
    const auto outer = nodeOver({inner}, matrix(2, 0, 0, 3, 0, 0));
    EXPECT_TRUE(isAt(outer->imageBounds(), NSMakeRect(2, 3, 10, 4), matrix(2, 0, 0, 3, 3, 5)));
    EXPECT_TRUE(isRect(outer->imageBoundsRect(), 7, 14, 20, 12));
}

TEST(ImageBounds, OfOneSourceKeepTheSourcesOwnTransform) {
    const auto source = leaf(NSMakeRect(2, 3, 10, 4));
    source->extent->setTransform(matrix(2, 0, 0, 3, 1, 4));
    const auto node = nodeOver({source}, turned);
    // turned first: (2(30 - y) + 1, 3(7 + x) + 4) = (61 - 2y, 25 + 3x)
    EXPECT_TRUE(isAt(node->imageBounds(), NSMakeRect(2, 3, 10, 4), matrix(0, 3, -2, 0, 61, 25)));
}

TEST(ImageBounds, OfOneSourceWithoutATransformStayWithoutOne) {
    const auto source = leaf(NSMakeRect(2, 3, 10, 4));
    source->extent->setTransform(std::nullopt);
    const IMGBounds bounds = nodeOver({source}, turned)->imageBounds();
    EXPECT_TRUE(isRect(bounds.rectangle(), 2, 3, 10, 4));
    EXPECT_FALSE(bounds.transform().has_value());
}

TEST(ImageBounds, OfSeveralSourcesAreTheUnionUnderTheNodesOwnTransform) {
    const auto a = leaf(NSMakeRect(0, 0, 10, 10));
    const auto b = leaf(NSMakeRect(20, 20, 5, 5));
    const auto node = nodeOver({a, b}, turned);
    EXPECT_TRUE(isAt(node->imageBounds(), NSMakeRect(0, 0, 25, 25), turned));
    EXPECT_TRUE(isRect(nodeOver({a, b})->imageBoundsRect(), 0, 0, 25, 25));
    EXPECT_TRUE(isRect(nodeOver({b, a})->imageBoundsRect(), 0, 0, 25, 25));
}

TEST(ImageBounds, OfSeveralSourcesUniteBoundingRectangles) {
    const auto a = leaf(NSMakeRect(40, 60, 3, 2));
    a->extent->setTransform(moved(-10, 5));
    const auto b = nodeOver({leaf(NSMakeRect(2, 3, 10, 4))}, turned); // (23, 9, 4, 10)
    const auto c = leaf(NSMakeRect(25, 11, 1, 6));
    // a lies at (30, 65, 3, 2)
    EXPECT_TRUE(
        isAt(nodeOver({a, b, c}, moved(1, 2))->imageBounds(), NSMakeRect(23, 9, 10, 58), moved(1, 2)));
}

TEST(ImageBounds, OfSeveralSourcesLeaveEmptyOnesOut) {
    const auto full = leaf(NSMakeRect(4, 6, 8, 5));
    const auto flat = leaf(NSMakeRect(100, 200, 0, 30));
    const auto low = leaf(NSMakeRect(-50, -60, 30, 0)); // reaches up to zero, see below, and so is not empty
    const auto thin = leaf(NSMakeRect(70, 3, 9, 0));
    EXPECT_TRUE(isRect(nodeOver({full, flat, thin})->imageBoundsRect(), 4, 6, 8, 5));
    EXPECT_TRUE(isRect(nodeOver({thin, flat, full})->imageBoundsRect(), 4, 6, 8, 5));
    EXPECT_TRUE(isRect(nodeOver({full, low})->imageBoundsRect(), -50, -60, 62, 71));
}

TEST(ImageBounds, OfALongChainOfNodesWithSeveralSourcesAreSoonKnown) {
    // Asking any source twice at each of the levels would never end.
    std::shared_ptr<IMGImage> top = leaf(NSMakeRect(20, 20, 5, 5));
    for (int i = 0; i < 64; ++i) {
        top = std::make_shared<IMGImage>(IMGImage::Sources{leaf(NSMakeRect(3, 4, 10, 10)), top});
    }
    EXPECT_TRUE(isRect(top->imageBoundsRect(), 3, 4, 22, 21));
}

TEST(ImageBounds, OfEmptySourcesAloneAreTheZeroRectangle) {
    const auto flat = leaf(NSMakeRect(100, 200, 0, 30));
    const auto thin = leaf(NSMakeRect(70, 3, 9, 0));
    EXPECT_TRUE(isAt(nodeOver({flat, thin}, turned)->imageBounds(), NSMakeRect(0, 0, 0, 0), turned));
}

TEST(ImageBounds, AtNegativeCoordinatesReachUpToZeroEverywhere) {
    const auto source = leaf(NSMakeRect(-30, -20, 10, 10));
    const auto node = nodeOver({source});
    EXPECT_TRUE(isRect(node->imageBoundsRect(), -30, -20, 30, 20));
    EXPECT_TRUE(isSize(node->imageSize(), 30, 20));
    // United by their bounding rectangles
    EXPECT_TRUE(isRect(nodeOver({source, leaf(NSMakeRect(-50, -15, 5, 6))})->imageBounds().rectangle(), -50,
                       -20, 50, 20));
    // Fitted as if they were that large: 60 / 30 and 10 / 20
    EXPECT_TRUE(isAt(node->boundsForImage(*source, NSMakeRect(6, 8, 60, 10)), NSMakeRect(-30, -20, 10, 10),
                     matrix(2, 0, 0, 0.5F, 66, 18)));
}

TEST(ImageBounds, WithoutSourcesAreAFailedAssertion) {
    const IMGImage node;
    try {
        node.imageBounds();
        FAIL() << "nothing was thrown";
    } catch (const NSException& exception) {
        EXPECT_EQ(exception.name(), "NSInternalInconsistencyException");
        EXPECT_EQ(exception.reason(), "Invalid parameter not satisfying: [m_sources count] > 0");
    }
    EXPECT_THROW(node.imageBoundsRect(), NSException);
    EXPECT_THROW(node.imageSize(), NSException);
}

TEST(ImageBounds, WithoutSourcesNameTheSourceAndLineOfTheAssertion) {
    const ToleratedAssertions tolerated;
    TestNode node;
    node.ownTransform = turned;
    const IMGBounds bounds = node.imageBounds();
    ASSERT_EQ(tolerated.failures().size(), 1U);
    EXPECT_EQ(tolerated.failures()[0].file, "Imaging/Image");
    EXPECT_EQ(tolerated.failures()[0].line, 378);
    EXPECT_EQ(tolerated.failures()[0].description, "Invalid parameter not satisfying: [m_sources count] > 0");
    EXPECT_TRUE(isAt(bounds, NSMakeRect(0, 0, 0, 0), turned)); // where the handler returns
}

TEST(ImageBounds, WithSourcesAssertNothing) {
    const ToleratedAssertions tolerated;
    nodeOver({leaf(NSMakeRect(2, 3, 10, 4))})->imageBounds();
    EXPECT_TRUE(tolerated.failures().empty());
}

TEST(BoundsSearch, ForASourceAppliesItsTransformFirst) {
    const auto source = leaf(NSMakeRect(2, 3, 10, 4), matrix(2, 0, 0, 3, 1, 4));
    const auto node = nodeOver({source}, moved(100, 100)); // the given transform holds the node's own already
    // (2x + 1, 3y + 4) and then turned: (26 - 3y, 8 + 2x)
    EXPECT_TRUE(
        isAt(node->boundsForImage(*source, turned), NSMakeRect(2, 3, 10, 4), matrix(0, 2, -3, 0, 26, 8)));
}

TEST(BoundsSearch, LeavesTheGivenTransformAsItIs) {
    const NSAffineTransform given = turned;
    const auto source = leaf(NSMakeRect(2, 3, 10, 4), moved(5, 6));
    nodeOver({source})->boundsForImage(*source, given);
    EXPECT_TRUE(isTransform(given, turned));
}

TEST(BoundsSearch, FindsAGrandchildUnderBothTransforms) {
    const auto source = leaf(NSMakeRect(2, 3, 10, 4), matrix(2, 0, 0, 3, 1, 4));
    const auto inner = nodeOver({leaf(NSMakeRect(0, 0, 1, 1)), source}, moved(-5, 6));
    const auto root = nodeOver({leaf(NSMakeRect(0, 0, 2, 2)), inner}, moved(100, 100));
    // (2x + 1, 3y + 4), moved to (2x - 4, 3y + 10), turned to (20 - 3y, 3 + 2x)
    EXPECT_TRUE(
        isAt(root->boundsForImage(*source, turned), NSMakeRect(2, 3, 10, 4), matrix(0, 2, -3, 0, 20, 3)));
}

TEST(BoundsSearch, ForTheNodeItselfGivesItsFirstSourcesOwn) {
    const auto source = leaf(NSMakeRect(2, 3, 10, 4), moved(5, 6));
    const auto other = leaf(NSMakeRect(9, 9, 9, 9));
    const auto node = nodeOver({source, other});
    EXPECT_TRUE(
        isAt(node->boundsForImage(*node, turned), NSMakeRect(2, 3, 10, 4), matrix(0, 1, -1, 0, 24, 12)));
    const auto reversed = nodeOver({other, source});
    EXPECT_TRUE(isAt(reversed->boundsForImage(*reversed, turned), NSMakeRect(9, 9, 9, 9), turned));
}

TEST(BoundsSearch, ForTheNodeItselfGoesOnToTheNextSourceWithAnAnswer) {
    const auto empty = std::make_shared<TestNode>(); // knows nothing of where it is
    const auto source = leaf(NSMakeRect(2, 3, 10, 4), moved(5, 6));
    const auto node = nodeOver({empty, source});
    EXPECT_TRUE(
        isAt(node->boundsForImage(*node, turned), NSMakeRect(2, 3, 10, 4), matrix(0, 1, -1, 0, 24, 12)));
}

TEST(BoundsSearch, ForAnInnerNodeDescendsToItsLeaf) {
    const auto source = leaf(NSMakeRect(2, 3, 10, 4), moved(5, 6));
    const auto inner = nodeOver({source}, moved(1, 2));
    const auto root = nodeOver({inner});
    // (x + 5 + 1, y + 6 + 2), turned: (22 - y, 13 + x)
    EXPECT_TRUE(
        isAt(root->boundsForImage(*inner, turned), NSMakeRect(2, 3, 10, 4), matrix(0, 1, -1, 0, 22, 13)));
    EXPECT_TRUE(
        isAt(root->boundsForImage(*root, turned), NSMakeRect(2, 3, 10, 4), matrix(0, 1, -1, 0, 22, 13)));
}

TEST(BoundsSearch, TakesTheFirstPlaceOfANodeThatStandsInSeveral) {
    const auto source = leaf(NSMakeRect(2, 3, 10, 4));
    const auto first = nodeOver({source}, moved(1, 2));
    const auto second = nodeOver({source}, moved(5, 6));
    EXPECT_TRUE(isAt(nodeOver({second, first})->boundsForImage(*source, NSAffineTransform()),
                     NSMakeRect(2, 3, 10, 4), moved(5, 6)));
}

TEST(BoundsSearch, FindsNothingForAStranger) {
    const auto source = leaf(NSMakeRect(2, 3, 10, 4));
    const auto root = nodeOver({nodeOver({source})});
    const auto stranger = leaf(NSMakeRect(2, 3, 10, 4));
    EXPECT_FALSE(root->boundsForImage(*stranger, turned).has_value());
    EXPECT_FALSE(root->boundsForImage(*stranger, NSMakeRect(6, 8, 12, 5)).has_value());
    const IMGImage bare;
    EXPECT_FALSE(bare.boundsForImage(bare, turned).has_value());
}

TEST(BoundsSearch, FindsByEquality) {
    const auto source = leaf(NSMakeRect(2, 3, 10, 4));
    const auto twin = std::make_shared<TestNode>();
    source->label = twin->label = 4;
    EXPECT_TRUE(isAt(nodeOver({source})->boundsForImage(*twin, turned), NSMakeRect(2, 3, 10, 4), turned));
    const auto node = nodeOver({source});
    const auto nodeTwin = std::make_shared<TestNode>();
    node->label = nodeTwin->label = 5;
    EXPECT_TRUE(isAt(node->boundsForImage(*nodeTwin, turned), NSMakeRect(2, 3, 10, 4), turned));
}

TEST(BoundsSearch, GoesOnAfterASourceThatThrows) {
    const auto wanted = leaf(NSMakeRect(2, 3, 10, 4), moved(5, 6));
    for (const Failing place : {Failing::Bounds, Failing::Transform}) {
        for (const Thrown kind : {Thrown::Exception, Thrown::StandardException, Thrown::Number}) {
            const auto broken = nodeOver({wanted});
            broken->failing = place;
            broken->thrown = kind;
            const auto root = nodeOver({broken, wanted});
            EXPECT_TRUE(isAt(root->boundsForImage(*wanted, turned), NSMakeRect(2, 3, 10, 4),
                             matrix(0, 1, -1, 0, 24, 12)));
        }
    }
}

TEST(BoundsSearch, FindsNothingWhereTheOnlySourceThrows) {
    const auto broken = leaf(NSMakeRect(2, 3, 10, 4));
    broken->failing = Failing::Bounds;
    EXPECT_FALSE(nodeOver({broken})->boundsForImage(*broken, turned).has_value());
}

TEST(BoundsInARectangle, AreThoseUnderTheFitTransform) {
    const auto source = leaf(NSMakeRect(4, 6, 8, 5));
    const auto node = nodeOver({source});
    // 2(x - 4) + 10 and 3(y - 6) + 21
    EXPECT_TRUE(isAt(node->boundsForImage(*source, NSMakeRect(10, 21, 16, 15)), NSMakeRect(4, 6, 8, 5),
                     matrix(2, 0, 0, 3, 2, 3)));
    EXPECT_TRUE(isAt(node->boundsForImage(*node, NSMakeRect(10, 21, 16, 15)), NSMakeRect(4, 6, 8, 5),
                     matrix(2, 0, 0, 3, 2, 3)));
}

TEST(BoundsInARectangle, HoldTheNodesTransformOnceAndThatOfEachSource) {
    const auto source = leaf(NSMakeRect(2, 3, 10, 4));
    const auto node = nodeOver({source}, turned);
    // The node lies at (23, 9, 4, 10); factors 12 / 4 and 5 / 10:
    // (3(30 - y - 23) + 6, 0.5(7 + x - 9) + 8) = (27 - 3y, 0.5x + 7)
    const auto bounds = node->boundsForImage(*source, NSMakeRect(6, 8, 12, 5));
    EXPECT_TRUE(isAt(bounds, NSMakeRect(2, 3, 10, 4), matrix(0, 0.5F, -3, 0, 27, 7)));
    EXPECT_TRUE(isRect(bounds->boundingRect(), 6, 8, 12, 5));
}

TEST(BoundsInARectangle, AreTheNodesOwnAnswerToASearch) {
    const auto node = leaf(NSMakeRect(4, 6, 8, 5), moved(1, 1));
    EXPECT_TRUE(isAt(node->boundsForImage(*node, NSMakeRect(10, 21, 16, 15)), NSMakeRect(4, 6, 8, 5),
                     matrix(2, 0, 0, 3, 2 + 2, 3 + 3)));
}
