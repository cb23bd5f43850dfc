// Also tests: Imaging/Image.cpp

#include "Platform/Foundation/Log.h"
#include "Tests/Imaging/ImagingTestSupport.h"

#include <gtest/gtest.h>

#include <array>
#include <limits>
#include <memory>
#include <string>
#include <vector>

using namespace ImagingTests;

namespace {

constexpr int plusLighter = 13;

/// (x, y) becomes (30 - y, 7 + x).
const NSAffineTransform turned = matrix(0, 1, -1, 0, 30, 7);

TransformAndClipRect record(const NSAffineTransform& transform) {
    return TransformAndClipRect::transformAndClipRectWithTransform(transform);
}

TransformAndClipList listOf(const NSAffineTransform& transform) {
    return TransformAndClipList(record(transform));
}

testing::AssertionResult hasRecords(const DrawCall& call, const std::vector<NSAffineTransform>& transforms) {
    if (call.records.size() != transforms.size()) {
        return testing::AssertionFailure() << call.records.size() << " records";
    }
    for (std::size_t i = 0; i < transforms.size(); ++i) {
        testing::AssertionResult same = isTransform(call.records[i].transform(), transforms[i]);
        if (!same) return same << " of record " << i;
    }
    return testing::AssertionSuccess();
}

std::shared_ptr<WatchedPicture> somePicture() { return watchedPicture(distinctPicture(5, 3)); }

} // namespace

TEST(DrawingInARectangle, TakesTheRetainedPathWithTheNodesOwnDefaults) {
    const auto node = leaf(NSMakeRect(4, 6, 8, 5));
    node->drawInRect(NSMakeRect(10, 21, 16, 15));
    ASSERT_EQ(node->retainedDraws.size(), 1U);
    EXPECT_TRUE(node->draws.empty());
    EXPECT_EQ(node->retainedDraws[0].operation, 2);
    EXPECT_EQ(node->retainedDraws[0].fraction, 1.0F);
    EXPECT_EQ(node->retainedDraws[0].image, nullptr);
    EXPECT_EQ(node->retainedDraws[0].imageContext, nullptr);

    node->defaultOperation = plusLighter;
    node->defaultFraction = 0.25F;
    node->drawInRect(NSMakeRect(10, 21, 16, 15));
    EXPECT_EQ(node->retainedDraws[1].operation, plusLighter);
    EXPECT_EQ(node->retainedDraws[1].fraction, 0.25F);
}

TEST(DrawingInARectangle, IsRetainedOrNotAsTheFlagSays) {
    const auto node = leaf(NSMakeRect(4, 6, 8, 5));
    node->defaultOperation = plusLighter;
    node->defaultFraction = 0.25F;
    node->drawInRect(NSMakeRect(10, 21, 16, 15), true);
    EXPECT_EQ(node->retainedDraws.size(), 1U);
    EXPECT_EQ(node->draws.size(), 0U);
    node->drawInRect(NSMakeRect(10, 21, 16, 15), false);
    EXPECT_EQ(node->retainedDraws.size(), 1U);
    ASSERT_EQ(node->draws.size(), 1U);
    EXPECT_EQ(node->draws[0].operation, plusLighter);
    EXPECT_EQ(node->draws[0].fraction, 0.25F);
    EXPECT_EQ(node->draws[0].image, nullptr);
    EXPECT_EQ(node->draws[0].imageContext, nullptr);
}

TEST(DrawingInARectangle, PassesOperationFractionAndTargetOnUnchanged) {
    const auto node = leaf(NSMakeRect(4, 6, 8, 5));
    RecordingTarget target;
    node->drawInRect(NSMakeRect(10, 21, 16, 15), -7, 3.5F, false, &target);
    node->drawInRect(NSMakeRect(10, 21, 16, 15), 9, 0, true, &target);
    ASSERT_EQ(node->draws.size(), 1U);
    EXPECT_EQ(node->draws[0].operation, -7);
    EXPECT_EQ(node->draws[0].fraction, 3.5F);
    EXPECT_EQ(node->draws[0].imageContext, &target);
    ASSERT_EQ(node->retainedDraws.size(), 1U);
    EXPECT_EQ(node->retainedDraws[0].operation, 9);
    EXPECT_EQ(node->retainedDraws[0].fraction, 0);
    EXPECT_EQ(node->retainedDraws[0].imageContext, &target);
}

TEST(DrawingInARectangle, HandsDownOneRecordWithTheFitTransformAndNoClip) {
    const auto node = leaf(NSMakeRect(4, 6, 8, 5));
    for (const bool retained : {true, false}) {
        node->drawInRect(NSMakeRect(10, 21, 16, 15), 2, 1, retained);
        const DrawCall& call = retained ? node->retainedDraws.back() : node->draws.back();
        // 2(x - 4) + 10 and 3(y - 6) + 21
        EXPECT_TRUE(hasRecords(call, {matrix(2, 0, 0, 3, 2, 3)}));
        EXPECT_FALSE(call.records.at(0).hasClipRect());
    }
}

TEST(DrawingInARectangle, AppliesTheNodesTransformBeforeTheFit) {
    const auto node = nodeOver({leaf(NSMakeRect(2, 3, 10, 4))}, turned); // at (23, 9, 4, 10)
    node->drawInRect(NSMakeRect(6, 8, 12, 5), false);
    // (3(30 - y - 23) + 6, 0.5(7 + x - 9) + 8)
    EXPECT_TRUE(hasRecords(node->draws.at(0), {matrix(0, 0.5F, -3, 0, 27, 7)}));
}

TEST(DrawingInARectangle, CanMirrorByANegativeSize) {
    const auto node = leaf(NSMakeRect(4, 6, 8, 5));
    node->drawInRect(NSMakeRect(10, 21, -16, 15), false);
    // -2(x - 4) + 10 and 3(y - 6) + 21
    EXPECT_TRUE(hasRecords(node->draws.at(0), {matrix(-2, 0, 0, 3, 18, 3)}));
}

TEST(DrawingInARectangle, OfANodeWithoutAreaDrawsNothingAndDisturbsNothing) {
    const Grid picture = distinctPicture(5, 3);
    const auto rendered = CCImage::ccImageWithNSImage(Pixels::imageOf(picture));
    const auto shown = pictureNode(picture);
    for (const NSRect extent : {NSMakeRect(4, 6, 0, 5), NSMakeRect(4, 6, 8, 0), NSMakeRect(0, 0, 0, 0)}) {
        const auto node = leaf(extent);
        node->rendered = rendered;
        const Grid drawn = drawnOn(9, 8, [&] {
            node->drawInRect(NSMakeRect(0, 0, 9, 8));
            shown->drawWithTransform(moved(2, 4), 2, 1);
        });
        Grid expected(9, 8);
        paint(expected, picture, [](Spot p) { return Spot{p.x + 2, p.y + 4}; });
        EXPECT_TRUE(Pixels::areAlike(drawn, expected));
    }
}

TEST(DrawingInARectangle, WithoutSourcesIsAFailedAssertion) {
    IMGImage node;
    EXPECT_THROW(node.drawInRect(NSMakeRect(1, 2, 3, 4)), NSException);
    EXPECT_THROW(node.drawInRect(NSMakeRect(1, 2, 3, 4), false), NSException);
}

TEST(DrawingWithATransform, AppliesTheNodesOwnBeforeTheGivenOne) {
    const auto node = leaf(NSMakeRect(4, 6, 8, 5), matrix(2, 0, 0, 3, 1, 4));
    const NSAffineTransform given = turned;
    node->drawWithTransform(given, plusLighter, 0.75F);
    ASSERT_EQ(node->draws.size(), 1U);
    // (2x + 1, 3y + 4) and then turned
    EXPECT_TRUE(hasRecords(node->draws[0], {matrix(0, 2, -3, 0, 26, 8)}));
    EXPECT_FALSE(node->draws[0].records[0].hasClipRect());
    EXPECT_EQ(node->draws[0].operation, plusLighter);
    EXPECT_EQ(node->draws[0].fraction, 0.75F);
    EXPECT_EQ(node->draws[0].image, nullptr);
    EXPECT_EQ(node->draws[0].imageContext, nullptr);
    EXPECT_TRUE(isTransform(given, turned));
}

TEST(DrawingWithATransform, NeverTakesTheRetainedPath) {
    const auto node = leaf(NSMakeRect(4, 6, 8, 5));
    const auto picture = somePicture();
    node->rendered = CCImage::ccImageWithNSImage(picture);
    RecordingTarget target;
    drawnOn(9, 8, [&] {
        node->drawWithTransform(turned, 2, 1);
        node->drawWithTransform(turned, 2, 1, &target);
    });
    EXPECT_EQ(node->draws.size(), 2U);
    EXPECT_EQ(node->draws[1].imageContext, &target);
    EXPECT_TRUE(node->retainedDraws.empty());
    EXPECT_TRUE(target.calls.empty());
    EXPECT_TRUE(picture->drawings.empty());
    EXPECT_EQ(node->renderings, 0);
}

TEST(DrawingWithATransform, NeedsNoBounds) {
    IMGImage node;
    EXPECT_NO_THROW(node.drawWithTransform(turned, 2, 1)); // without sources
}

TEST(DrawingTheSources, AppendsARecordForEachLevel) {
    const auto source = leaf(NSMakeRect(1, 2, 3, 4), moved(5, 6));
    const auto inner = nodeOver({source}, matrix(2, 0, 0, 3, 1, 4));
    const auto root = nodeOver({inner}, moved(100, 200));
    root->drawWithTransform(turned, plusLighter, 0.5F);
    EXPECT_TRUE(hasRecords(root->draws.at(0), {matrix(0, 1, -1, 0, 30 - 200, 7 + 100)}));
    EXPECT_TRUE(hasRecords(inner->draws.at(0), {matrix(0, 1, -1, 0, -170, 107), matrix(2, 0, 0, 3, 1, 4)}));
    EXPECT_TRUE(hasRecords(source->draws.at(0),
                           {matrix(0, 1, -1, 0, -170, 107), matrix(2, 0, 0, 3, 1, 4), moved(5, 6)}));
    for (const TransformAndClipRect& each : source->draws[0].records) EXPECT_FALSE(each.hasClipRect());
}

TEST(DrawingTheSources, KeepsTheClipsOfTheRecordsAbove) {
    const auto source = leaf(NSMakeRect(1, 2, 3, 4), moved(5, 6));
    const auto root = nodeOver({source});
    const TransformAndClipList list(
        TransformAndClipRect::transformAndClipRectWithTransform(turned, NSMakeRect(3, 1, 4, 1)));
    root->drawImage(nullptr, list, 2, 1, nullptr);
    const auto& records = source->draws.at(0).records;
    ASSERT_EQ(records.size(), 2U);
    EXPECT_TRUE(records[0].hasClipRect());
    EXPECT_TRUE(isRect(records[0].clipRect(), 3, 1, 4, 1));
    EXPECT_FALSE(records[1].hasClipRect());
    EXPECT_EQ(list.size(), 1U);
}

TEST(DrawingTheSources, GoesInOrderWithTheSameListForEach) {
    std::vector<std::string> log;
    std::array<std::shared_ptr<TestNode>, 3> sources;
    for (std::size_t i = 0; i < sources.size(); ++i) {
        sources[i] = leaf(NSMakeRect(0, 0, 1, 1), moved(static_cast<float>(i), 9));
        sources[i]->name = std::string(1, static_cast<char>('a' + i));
        sources[i]->log = &log;
    }
    const auto root = nodeOver({sources[2], sources[0], sources[1], sources[0]});
    root->drawImage(nullptr, listOf(turned), 2, 1, nullptr);
    EXPECT_EQ(log, (std::vector<std::string>{"c", "a", "b", "a"}));
    for (std::size_t i = 0; i < sources.size(); ++i) {
        EXPECT_TRUE(hasRecords(sources[i]->draws.at(0), {turned, moved(static_cast<float>(i), 9)}));
    }
}

TEST(DrawingTheSources, PassesImageOperationFractionAndTargetOnUnchanged) {
    const auto source = leaf(NSMakeRect(1, 2, 3, 4));
    source->defaultOperation = 5;
    source->defaultFraction = 0.125F;
    const auto root = nodeOver({nodeOver({source})});
    const auto image = CCImage::ccImageWithNSImage(somePicture());
    RecordingTarget target;
    root->drawImage(image, listOf(turned), -3, 7.25F, &target);
    ASSERT_EQ(source->draws.size(), 1U);
    EXPECT_EQ(source->draws[0].image, image.get());
    EXPECT_EQ(source->draws[0].operation, -3);
    EXPECT_EQ(source->draws[0].fraction, 7.25F);
    EXPECT_EQ(source->draws[0].imageContext, &target);
}

TEST(DrawingTheSources, GoesOnAfterASourceThatThrows) {
    for (const Failing place : {Failing::Draw, Failing::Transform}) {
        for (const Thrown kind : {Thrown::Exception, Thrown::StandardException, Thrown::Number}) {
            const auto broken = leaf(NSMakeRect(1, 2, 3, 4));
            broken->failing = place;
            broken->thrown = kind;
            const auto before = leaf(NSMakeRect(1, 2, 3, 4));
            const auto after = leaf(NSMakeRect(1, 2, 3, 4), moved(5, 6));
            const auto root = nodeOver({before, broken, after});
            EXPECT_NO_THROW(root->drawWithTransform(turned, 2, 1));
            EXPECT_EQ(broken->draws.size(), place == Failing::Draw ? 1U : 0U);
            EXPECT_EQ(before->draws.size(), 1U);
            ASSERT_EQ(after->draws.size(), 1U);
            EXPECT_TRUE(hasRecords(after->draws[0], {turned, moved(5, 6)}));
        }
    }
}

TEST(DrawingTheSources, AbandonsTheRestOfASourceThatThrows) {
    const auto inner = leaf(NSMakeRect(1, 2, 3, 4));
    const auto broken = nodeOver({inner});
    broken->failing = Failing::Draw;
    nodeOver({broken})->drawWithTransform(turned, 2, 1);
    EXPECT_TRUE(inner->draws.empty());
}

TEST(DrawingTheSources, LogsNothingOfWhatItSwallows) {
    int messages = 0;
    Imaging::Platform::setLogSink([&](const std::string&) { ++messages; });
    const auto broken = leaf(NSMakeRect(1, 2, 3, 4));
    const auto root = nodeOver({broken}, turned);
    for (const Failing place : {Failing::Draw, Failing::Bounds, Failing::Transform}) {
        broken->failing = place;
        root->drawWithTransform(turned, 2, 1);
        root->boundsForImage(*broken, turned);
    }
    root->failing = Failing::Draw;
    EXPECT_EQ(root->image(), nullptr);
    EXPECT_FALSE(root->representationUsingType(Imaging::Platform::NSPNGFileType, {}).has_value());
    Imaging::Platform::setLogSink(nullptr);
    EXPECT_EQ(messages, 0);
}

TEST(DrawingTheSources, LetsTheRootsOwnFailureThrough) {
    const auto root = nodeOver({leaf(NSMakeRect(1, 2, 3, 4))});
    root->failing = Failing::Transform;
    EXPECT_THROW(root->drawWithTransform(turned, 2, 1), NSException);
    EXPECT_THROW(root->drawInRect(NSMakeRect(1, 2, 3, 4)), NSException);
}

TEST(RetainedDrawing, PaintsTheNodesRenderedResult) {
    const auto picture = somePicture();
    const auto node = leaf(NSMakeRect(0, 0, 5, 3));
    node->rendered = CCImage::ccImageWithNSImage(picture);
    drawnOn(9, 8, [&] { node->drawRetainedImage(nullptr, listOf(moved(2, 1)), plusLighter, 0.5F, nullptr); });
    ASSERT_EQ(picture->drawings.size(), 1U);
    EXPECT_EQ(picture->drawings[0].operation, plusLighter);
    EXPECT_EQ(picture->drawings[0].fraction, 0.5F);
    EXPECT_EQ(node->renderings, 1);
}

TEST(RetainedDrawing, PaintsTheImageThatIsPassedDownInstead) {
    const auto own = somePicture();
    const auto passed = somePicture();
    const auto node = leaf(NSMakeRect(0, 0, 5, 3));
    node->rendered = CCImage::ccImageWithNSImage(own);
    RecordingTarget target;
    drawnOn(9, 8, [&] {
        node->drawRetainedImage(CCImage::ccImageWithNSImage(passed), listOf(moved(2, 1)), 2, 1, nullptr);
        node->drawRetainedImage(CCImage::ccImageWithNSImage(passed), listOf(moved(2, 1)), 2, 1, &target);
    });
    EXPECT_EQ(passed->drawings.size(), 2U);
    EXPECT_TRUE(own->drawings.empty());
    EXPECT_TRUE(target.calls.empty());
    EXPECT_EQ(node->renderings, 0);
}

TEST(RetainedDrawing, LeavesTheNodeToTheDrawingTarget) {
    const auto picture = somePicture();
    const auto node = leaf(NSMakeRect(0, 0, 5, 3));
    node->rendered = CCImage::ccImageWithNSImage(picture);
    RecordingTarget target;
    drawnOn(9, 8, [&] {
        node->drawRetainedImage(nullptr, listOf(turned).appending(record(moved(5, 6))), -4, 0.75F, &target);
    });
    ASSERT_EQ(target.calls.size(), 1U);
    EXPECT_EQ(target.calls[0].node, node.get());
    EXPECT_TRUE(hasRecords(target.calls[0], {turned, moved(5, 6)}));
    EXPECT_EQ(target.calls[0].operation, -4);
    EXPECT_EQ(target.calls[0].fraction, 0.75F);
    EXPECT_TRUE(picture->drawings.empty());
    EXPECT_EQ(node->renderings, 0);
}

TEST(RetainedDrawing, DrawsNothingForANodeWithoutARenderedResult) {
    const Grid below = distinctPicture(9, 8);
    const auto node = nodeOver({pictureNode(distinctPicture(5, 3, 90))});
    const Grid drawn = drawnOn(9, 8, [&] {
        pictureNode(below)->drawWithTransform(NSAffineTransform(), 2, 1);
        node->drawInRect(NSMakeRect(0, 0, 9, 8));
    });
    EXPECT_TRUE(Pixels::areAlike(drawn, below));
}

TEST(RetainedDrawing, DoesNotWalkDownToTheSources) {
    const auto source = leaf(NSMakeRect(1, 2, 3, 4));
    const auto node = nodeOver({source});
    node->rendered = CCImage::ccImageWithNSImage(somePicture());
    drawnOn(9, 8, [&] { node->drawInRect(NSMakeRect(0, 0, 9, 8)); });
    EXPECT_TRUE(source->draws.empty());
    EXPECT_TRUE(source->retainedDraws.empty());
    EXPECT_EQ(node->renderings, 1);
}

TEST(RetainedDrawing, EndsSilentlyWhateverIsThrown) {
    for (const Thrown kind : {Thrown::Exception, Thrown::StandardException, Thrown::Number}) {
        const auto node = leaf(NSMakeRect(0, 0, 5, 3));
        const auto picture = somePicture();
        picture->throwsOnDraw = kind;
        node->rendered = CCImage::ccImageWithNSImage(picture);
        drawnOn(9, 8, [&] {
            EXPECT_NO_THROW(node->drawRetainedImage(nullptr, listOf(turned), 2, 1, nullptr));
            EXPECT_EQ(picture->drawings.size(), 1U);
            node->failing = Failing::Rendering;
            node->thrown = kind;
            EXPECT_NO_THROW(node->drawRetainedImage(nullptr, listOf(turned), 2, 1, nullptr));
            EXPECT_EQ(picture->drawings.size(), 1U);
        });
    }
    RecordingTarget target;
    target.fails = true;
    const auto node = leaf(NSMakeRect(0, 0, 5, 3));
    EXPECT_NO_THROW(node->drawRetainedImage(nullptr, listOf(turned), 2, 1, &target));
    EXPECT_EQ(target.calls.size(), 1U);
}

TEST(RetainedDrawing, WorksWithoutAnythingToDrawOn) {
    const auto node = leaf(NSMakeRect(0, 0, 5, 3));
    node->rendered = CCImage::ccImageWithNSImage(somePicture());
    EXPECT_NO_THROW(node->drawInRect(NSMakeRect(0, 0, 5, 3)));
}
