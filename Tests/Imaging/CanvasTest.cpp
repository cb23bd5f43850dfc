// Also tests: Imaging/Drawing/RenderedNode.cpp

#include "Imaging/Canvas.h"

#include "Imaging/CropAndScale.h"
#include "Imaging/TransformOperations.h"
#include "Imaging/Transpose.h"
#include "Tests/Imaging/PlacingTestSupport.h"

#include <gtest/gtest.h>

#include <limits>

using namespace ImagingTests;
using Imaging::IMGCanvas;
using Imaging::IMGCompositeOp;
using Imaging::IMGRotationOp;
using Imaging::IMGTranslationOp;

namespace {

std::shared_ptr<IMGImage> placed(const Grid& picture, float x, float y) {
    return IMGTranslationOp::translationBy(NSMakePoint(x, y), pictureNode(picture));
}

/// A canvas of 8 x 6 with a picture of 5 x 3 at (1, 2).
std::shared_ptr<IMGCanvas> canvasWithPicture() {
    return std::make_shared<IMGCanvas>(NSMakeSize(8, 6),
                                       IMGImage::Sources{placed(distinctPicture(5, 3), 1, 2)});
}

} // namespace

TEST(Canvas, ReportsItsSizeWhateverItsSourcesCover) {
    const auto canvas = IMGCanvas::canvasWithSize(NSMakeSize(640, 480));
    EXPECT_TRUE(isRect(canvas->imageBoundsRect(), 0, 0, 640, 480)) << "without any source";
    canvas->addSource(leaf(NSMakeRect(-100, -100, 2000, 2000)));
    EXPECT_TRUE(isSize(canvas->size(), 640, 480));
    EXPECT_TRUE(isRect(canvas->imageBounds().rectangle(), 0, 0, 640, 480));
    EXPECT_TRUE(isTransform(*canvas->imageBounds().transform(), NSAffineTransform()));
    canvas->rotateByDegrees(90);
    EXPECT_TRUE(isTransform(*canvas->imageBounds().transform(), NSAffineTransform()));
}

TEST(Canvas, AnswersForItselfUnderTheGivenTransform) {
    const auto below = leaf(NSMakeRect(0, 0, 4, 3), moved(5, 6));
    const auto canvas = std::make_shared<IMGCanvas>(NSMakeSize(64, 48), IMGImage::Sources{below});
    const auto own = canvas->boundsForImage(*canvas, moved(7, 8));
    ASSERT_TRUE(own.has_value());
    EXPECT_TRUE(isRect(own->rectangle(), 0, 0, 64, 48));
    EXPECT_TRUE(isTransform(*own->transform(), moved(7, 8)));
    const auto found = canvas->boundsForImage(*below, moved(7, 8));
    ASSERT_TRUE(found.has_value());
    EXPECT_TRUE(isRect(found->boundingRect(), 12, 14, 4, 3));
    EXPECT_FALSE(canvas->boundsForImage(*leaf(NSMakeRect(0, 0, 1, 1)), NSAffineTransform()).has_value());
}

TEST(Canvas, CopiesTheTransformThatItIsMadeWith) {
    NSAffineTransform given = moved(3, 4);
    const IMGCanvas canvas(NSMakeSize(8, 6), given, {});
    given.scaleBy(2);
    EXPECT_TRUE(isTransform(canvas.transform(), moved(3, 4)));
    EXPECT_TRUE(isTransform(IMGCanvas(NSMakeSize(8, 6)).transform(), NSAffineTransform()));
}

TEST(Canvas, HandsOutItsTransformItself) {
    const auto canvas = canvasWithPicture();
    const ChangeCounter counter(canvas);
    canvas->canvasTransform()->translateXBy(3, 4);
    EXPECT_TRUE(isTransform(canvas->transform(), moved(3, 4)));
    NSAffineTransform copy = canvas->transform();
    copy.scaleBy(2);
    EXPECT_TRUE(isTransform(canvas->transform(), moved(3, 4)));
    EXPECT_EQ(counter.count(), 0);
}

TEST(Canvas, KeepsTheTransformObjectThatWasSetAndTellsNobody) {
    const auto canvas = canvasWithPicture();
    const ChangeCounter counter(canvas);
    const auto rendered = canvas->untransformedImage();
    const auto shared = std::make_shared<NSAffineTransform>(moved(3, 4));
    canvas->setCanvasTransform(shared);
    EXPECT_EQ(canvas->canvasTransform(), shared);
    shared->translateXBy(1, 1);
    EXPECT_TRUE(isTransform(canvas->transform(), moved(4, 5)));
    EXPECT_EQ(counter.count(), 0);
    EXPECT_EQ(canvas->untransformedImage(), rendered);
}

TEST(Canvas, TurnsBeforeItsPresentTransformAndTellsNobody) {
    const auto canvas = canvasWithPicture();
    const auto shared = std::make_shared<NSAffineTransform>(moved(3, 4));
    canvas->setCanvasTransform(shared);
    const ChangeCounter counter(canvas);
    const auto rendered = canvas->untransformedImage();
    canvas->rotateByDegrees(90);
    EXPECT_TRUE(isTransform(canvas->transform(), matrix(0, 1, -1, 0, 3, 4)));
    EXPECT_TRUE(isTransform(*shared, matrix(0, 1, -1, 0, 3, 4))) << "in place";
    EXPECT_EQ(counter.count(), 0);
    EXPECT_EQ(canvas->untransformedImage(), rendered);
}

TEST(Canvas, WithoutATransformActsAsUnderTheIdentity) {
    const auto canvas = canvasWithPicture();
    canvas->setCanvasTransform(nullptr);
    EXPECT_NO_THROW(canvas->rotateByDegrees(90));
    EXPECT_EQ(canvas->canvasTransform(), nullptr);
    EXPECT_TRUE(isTransform(canvas->transform(), NSAffineTransform()));
    EXPECT_FALSE(PlainValues(*canvas).keys.contains("canvas-transform"));
}

TEST(Canvas, RendersItsSourcesWithoutItsTransformOnce) {
    const Grid first = distinctPicture(5, 3);
    const Grid second = distinctPicture(2, 2, 100);
    const auto canvas = std::make_shared<IMGCanvas>(
        NSMakeSize(8, 6), moved(100, 100), IMGImage::Sources{placed(first, 1, 2), placed(second, 4, 3)});
    const auto rendered = canvas->untransformedImage();
    ASSERT_NE(rendered, nullptr);
    Grid expected(8, 6);
    paint(expected, first, [](Spot p) { return Spot{p.x + 1, p.y + 2}; });
    paint(expected, second, [](Spot p) { return Spot{p.x + 4, p.y + 3}; });
    EXPECT_TRUE(Pixels::areAlike(Pixels::shownBy(*rendered->nsImage(), 8, 6), expected));
    EXPECT_EQ(canvas->untransformedImage(), rendered);
}

TEST(Canvas, EndsAtItsEdgesWhereRenderedOnly) {
    const Grid picture = distinctPicture(5, 3);
    const auto canvas =
        std::make_shared<IMGCanvas>(NSMakeSize(4, 4), IMGImage::Sources{placed(picture, 2, 2)});
    Grid cut(9, 8);
    paint(
        cut, picture,
        [](Spot p) {
            return Spot{p.x + 2, p.y + 2};
        },
        [](Spot p) { return p.x < 2 && p.y < 2; });
    EXPECT_TRUE(Pixels::areAlike(drawnOn(9, 8, [&] { canvas->drawInRect(NSMakeRect(0, 0, 4, 4)); }), cut));
    Grid whole(9, 8);
    paint(whole, picture, [](Spot p) { return Spot{p.x + 2, p.y + 2}; });
    EXPECT_TRUE(Pixels::areAlike(walked(*canvas, 9, 8), whole));
}

TEST(Canvas, LiesUnderItsTransformInItsParent) {
    const Grid picture = distinctPicture(5, 3);
    const auto canvas = canvasWithPicture();
    canvas->setCanvasTransform(std::make_shared<NSAffineTransform>(matrix(0, 1, -1, 0, 7, 1)));
    const auto parent = std::make_shared<IMGImage>(canvas);
    Grid expected(9, 9);
    paint(expected, picture, [](Spot p) { return Spot{7 - (p.y + 2), 1 + (p.x + 1)}; });
    EXPECT_TRUE(Pixels::areAlike(walked(*parent, 9, 9), expected));
    EXPECT_TRUE(Pixels::areAlike(walked(*canvas, 9, 9), expected)) << "and at the root";
}

TEST(Canvas, DropsItsPictureWithEveryChangeOfItsSources) {
    const auto canvas = canvasWithPicture();
    auto rendered = canvas->untransformedImage();
    const auto isFresh = [&] {
        const auto before = std::exchange(rendered, canvas->untransformedImage());
        return rendered != before;
    };
    EXPECT_FALSE(isFresh());
    const ChangeCounter counter(canvas);
    canvas->addSource(placed(distinctPicture(2, 2, 100), 4, 3));
    EXPECT_TRUE(isFresh());
    EXPECT_EQ(counter.count(), 0) << "an added source is not announced";
    canvas->replaceSourceAtIndex(0, placed(distinctPicture(2, 2), 0, 0));
    EXPECT_TRUE(isFresh());
    EXPECT_EQ(counter.count(), 1);
    canvas->sourceAtIndex(0)->changed();
    EXPECT_TRUE(isFresh());
    EXPECT_EQ(counter.count(), 2);
    const auto old = canvas->sourceAtIndex(0);
    canvas->replaceSource(old, old);
    EXPECT_TRUE(isFresh());
    EXPECT_EQ(counter.count(), 3);
    canvas->changed();
    EXPECT_TRUE(isFresh());
    EXPECT_EQ(counter.count(), 4);
}

TEST(Canvas, DropsItsPictureForAnEqualSourceTooThoughNothingIsAnnounced) {
    const auto canvas = canvasWithPicture();
    const auto rendered = canvas->untransformedImage();
    const ChangeCounter counter(canvas);
    canvas->replaceSourceAtIndex(0, canvas->sourceAtIndex(0));
    EXPECT_EQ(counter.count(), 0);
    EXPECT_NE(canvas->untransformedImage(), rendered);
}

TEST(Canvas, TellsAParentThatRendersOfAChangeBelow) {
    const auto canvas = canvasWithPicture();
    const auto above = Imaging::IMGCropAndScale::cropWithSourceImage(
        canvas, NSMakeRect(0, 0, 8, 6), NSMakeSize(16, 12), Imaging::SCALE_TO_FILL, false);
    const auto rendered = above->untransformedImage();
    canvas->rotateByDegrees(90);
    EXPECT_EQ(above->untransformedImage(), rendered) << "nobody was told";
    canvas->changed();
    EXPECT_NE(above->untransformedImage(), rendered);
}

TEST(Canvas, WithoutFiniteAreaRendersNothing) {
    constexpr float infinity = std::numeric_limits<float>::infinity();
    constexpr float notANumber = std::numeric_limits<float>::quiet_NaN();
    for (const NSSize size : {NSMakeSize(0, 0), NSMakeSize(0, 6), NSMakeSize(8, 0), NSMakeSize(-8, 6),
                              NSMakeSize(infinity, 6), NSMakeSize(8, notANumber)}) {
        const auto canvas =
            std::make_shared<IMGCanvas>(size, IMGImage::Sources{pictureNode(distinctPicture(5, 3))});
        EXPECT_EQ(canvas->untransformedImage(), nullptr);
        EXPECT_TRUE(
            Pixels::areAlike(drawnOn(8, 8, [&] { canvas->drawInRect(NSMakeRect(0, 0, 8, 8)); }), Grid(8, 8)));
        EXPECT_NO_THROW(drawnOn(8, 8, [&] { canvas->drawInRect(NSMakeRect(0, 0, 8, 8), false); }));
    }
    EXPECT_THROW(IMGCanvas(NSMakeSize(1e6F, 1e6F)).untransformedImage(), NSException) << "beyond the limits";
}

TEST(Canvas, GoesOnWithTheNextSourceWhenOneFails) {
    const Grid picture = distinctPicture(5, 3);
    const auto bad = std::make_shared<TestNode>();
    bad->failing = Failing::Draw;
    const auto canvas =
        std::make_shared<IMGCanvas>(NSMakeSize(5, 3), IMGImage::Sources{bad, pictureNode(picture)});
    const auto rendered = canvas->untransformedImage();
    EXPECT_TRUE(Pixels::areAlike(Pixels::shownBy(*rendered->nsImage(), 5, 3), picture));
}

TEST(Canvas, CopyHasTheSourcesAndNoTransform) {
    const auto canvas = canvasWithPicture();
    canvas->rotateByDegrees(90);
    const auto rendered = canvas->untransformedImage();
    const auto copy = std::dynamic_pointer_cast<IMGCanvas>(canvas->copy());
    ASSERT_NE(copy, nullptr);
    EXPECT_TRUE(isSize(copy->size(), 8, 6));
    EXPECT_EQ(copy->sources(), canvas->sources());
    EXPECT_TRUE(isTransform(copy->transform(), NSAffineTransform()));
    EXPECT_NE(copy->untransformedImage(), rendered);
    copy->addSource(pictureNode(distinctPicture(2, 2)));
    EXPECT_EQ(canvas->sources().size(), 1U) << "the list is its own";
}

TEST(Canvas, ComesBackFromItsArchive) {
    const IMGCanvas canvas(NSMakeSize(8.5F, 6), matrix(0.5F, 1, -1, 2, 3, 4),
                           {placed(distinctPicture(5, 3), 1, 2), pictureNode(distinctPicture(2, 2))});
    EXPECT_EQ(PlainValues(canvas).keys, (std::set<std::string>{"source-images", "size", "canvas-transform"}));
    EXPECT_EQ(canvas.archiveClassName(), "IMGCanvas");
    for (const auto format : bothFormats) {
        const auto back = archivedAndBack(canvas, format);
        EXPECT_TRUE(isSize(back->size(), 8.5F, 6));
        EXPECT_TRUE(isTransform(back->transform(), canvas.transform()));
        EXPECT_EQ(back->sources().size(), 2U);
        const auto rendered = back->untransformedImage();
        back->sourceAtIndex(1)->changed();
        EXPECT_NE(back->untransformedImage(), rendered);
    }
    PlainValues none;
    const IMGCanvas empty(none);
    EXPECT_TRUE(isSize(empty.size(), 0, 0));
    EXPECT_EQ(empty.canvasTransform(), nullptr);
    EXPECT_TRUE(isTransform(empty.transform(), NSAffineTransform()));
}

// IMGCompositeOp

TEST(CompositeOp, AnswersForItselfWithItsSourcesUnmoved) {
    const auto composite = std::make_shared<IMGCompositeOp>(IMGImage::Sources{
        leaf(NSMakeRect(0, 0, 100, 100)),
        IMGTranslationOp::translationBy(NSMakePoint(50, 0), leaf(NSMakeRect(0, 0, 100, 100)))});
    const auto own = composite->boundsForImage(*composite, matrix(0, 1, -1, 0, 7, 8));
    ASSERT_TRUE(own.has_value());
    EXPECT_TRUE(isRect(own->rectangle(), 0, 0, 100, 100));
    EXPECT_TRUE(isTransform(*own->transform(), matrix(0, 1, -1, 0, 7, 8)));
    EXPECT_TRUE(isRect(composite->imageBoundsRect(), 0, 0, 150, 100));
}

TEST(CompositeOp, CountsTheTransformsBelowItsSources) {
    // Of the two shifts, the outer one is left out.
    const auto inner = IMGTranslationOp::translationBy(NSMakePoint(30, 7), leaf(NSMakeRect(0, 0, 10, 10)));
    const auto composite = std::make_shared<IMGCompositeOp>(IMGImage::Sources{
        leaf(NSMakeRect(0, 0, 5, 5)), IMGTranslationOp::translationBy(NSMakePoint(50, 0), inner)});
    EXPECT_TRUE(
        isRect(composite->boundsForImage(*composite, NSAffineTransform())->rectangle(), 0, 0, 40, 17));
}

TEST(CompositeOp, UnitesRectanglesAroundRotatedSources) {
    const auto turned =
        IMGRotationOp::rotationByDegrees(90, NSMakePoint(0, 0), leaf(NSMakeRect(0, 0, 20, 10)));
    const auto outer = std::make_shared<IMGImage>(turned); // so that the rotation lies below the source
    const auto composite =
        std::make_shared<IMGCompositeOp>(IMGImage::Sources{leaf(NSMakeRect(1, 2, 3, 4)), outer});
    EXPECT_TRUE(
        isRect(composite->boundsForImage(*composite, NSAffineTransform())->rectangle(), -10, 0, 14, 20));
}

TEST(CompositeOp, TakesASourceWithoutAnAnswerAsNothing) {
    const auto silent = std::make_shared<IMGImage>();
    const auto picture = leaf(NSMakeRect(10, 20, 5, 6));
    const IMGCompositeOp first(IMGImage::Sources{silent, picture});
    EXPECT_TRUE(isRect(first.boundsForImage(first, NSAffineTransform())->rectangle(), 10, 20, 5, 6));
    const IMGCompositeOp last(IMGImage::Sources{picture, silent});
    EXPECT_TRUE(isRect(last.boundsForImage(last, NSAffineTransform())->rectangle(), 10, 20, 5, 6));
    const IMGCompositeOp only(IMGImage::Sources{silent});
    EXPECT_TRUE(isRect(only.boundsForImage(only, NSAffineTransform())->rectangle(), 0, 0, 0, 0));
    const IMGCompositeOp none;
    EXPECT_TRUE(isRect(none.boundsForImage(none, NSAffineTransform())->rectangle(), 0, 0, 0, 0));
}

TEST(CompositeOp, PassesOverASourceThatThrowsAndAsksTheNextOne) {
    const auto broken = leaf(NSMakeRect(100, 100, 900, 900));
    broken->failing = Failing::Bounds;
    const auto one = leaf(NSMakeRect(10, 20, 5, 6));
    const auto two = leaf(NSMakeRect(30, 40, 1, 2));
    for (const Thrown thrown : {Thrown::Exception, Thrown::StandardException, Thrown::Number}) {
        broken->thrown = thrown;
        const IMGCompositeOp first(IMGImage::Sources{broken, one, two});
        EXPECT_TRUE(isRect(first.boundsForImage(first, NSAffineTransform())->rectangle(), 10, 20, 21, 22));
        const IMGCompositeOp middle(IMGImage::Sources{one, broken, two});
        EXPECT_TRUE(isRect(middle.boundsForImage(middle, NSAffineTransform())->rectangle(), 10, 20, 21, 22));
    }
    const IMGCompositeOp only(IMGImage::Sources{broken});
    EXPECT_TRUE(isRect(only.boundsForImage(only, moved(3, 4))->rectangle(), 0, 0, 0, 0));
}

TEST(CompositeOp, KeepsTheFirstRectangleAsItIsEvenWithoutArea) {
    const auto line = leaf(NSMakeRect(10, 20, 0, 6));
    const IMGCompositeOp alone(IMGImage::Sources{line});
    EXPECT_TRUE(isRect(alone.boundsForImage(alone, NSAffineTransform())->rectangle(), 10, 20, 0, 6));
}

TEST(CompositeOp, FindsNodesBelowItLikeAnyNode) {
    const auto picture = leaf(NSMakeRect(0, 0, 5, 6), moved(2, 3));
    const IMGCompositeOp composite(IMGImage::Sources{leaf(NSMakeRect(0, 0, 1, 1)), picture});
    const auto found = composite.boundsForImage(*picture, moved(10, 20));
    ASSERT_TRUE(found.has_value());
    EXPECT_TRUE(isRect(found->boundingRect(), 12, 23, 5, 6));
    EXPECT_FALSE(composite.boundsForImage(*leaf(NSMakeRect(0, 0, 1, 1)), NSAffineTransform()).has_value());
}

TEST(CompositeOp, DrawsAllItsSourcesInOrder) {
    const Grid first = distinctPicture(5, 3);
    const Grid second = distinctPicture(2, 2, 100);
    IMGCompositeOp composite(IMGImage::Sources{placed(first, 1, 1), placed(second, 3, 2)});
    Grid expected(8, 6);
    paint(expected, first, [](Spot p) { return Spot{p.x + 1, p.y + 1}; });
    paint(expected, second, [](Spot p) { return Spot{p.x + 3, p.y + 2}; });
    EXPECT_TRUE(Pixels::areAlike(walked(composite, 8, 6), expected));
}

TEST(CompositeOp, CopyAndArchiveKeepItsClass) {
    const auto picture = pictureNode(distinctPicture(5, 3));
    const auto composite = std::make_shared<IMGCompositeOp>(IMGImage::Sources{picture, picture});
    const auto copy = std::dynamic_pointer_cast<IMGCompositeOp>(composite->copy());
    ASSERT_NE(copy, nullptr);
    EXPECT_EQ(copy->sources(), composite->sources());
    EXPECT_EQ(composite->archiveClassName(), "IMGCompositeOp");
    for (const auto format : bothFormats) {
        const auto back = archivedAndBack(*composite, format);
        ASSERT_EQ(back->sources().size(), 2U);
        EXPECT_EQ(back->sourceAtIndex(0), back->sourceAtIndex(1));
    }
}
