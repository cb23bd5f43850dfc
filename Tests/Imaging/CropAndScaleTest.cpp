#include "Imaging/CropAndScale.h"

#include "Imaging/Canvas.h"
#include "Imaging/TransformOperations.h"
#include "Tests/Imaging/PlacingTestSupport.h"

#include <gtest/gtest.h>

#include <array>
#include <limits>

using namespace ImagingTests;
using Imaging::IMGCanvas;
using Imaging::IMGCropAndScale;
using Imaging::IMGTranslationOp;
using Imaging::SCALE_NONE;
using Imaging::SCALE_PROPORTIONALLY;
using Imaging::SCALE_TO_FILL;

namespace {

constexpr float notANumber = std::numeric_limits<float>::quiet_NaN();
constexpr float infinity = std::numeric_limits<float>::infinity();

std::shared_ptr<IMGCropAndScale> crop(std::shared_ptr<IMGImage> source, NSRect area, NSSize target,
                                      int scaling, bool clip = false) {
    return IMGCropAndScale::cropWithSourceImage(std::move(source), area, target, scaling, clip);
}

std::shared_ptr<TestNode> source() { return leaf(NSMakeRect(0, 0, 400, 300)); }

/// The node's fitting: what its target rectangle, fitted to itself, makes of the source's space.
NSAffineTransform fitting(const IMGCropAndScale& node) {
    return node.transformFromSourceToDestination({Imaging::Platform::NSZeroPoint, node.targetSize()});
}

NSPoint fitted(const IMGCropAndScale& node, float x, float y) {
    return fitting(node).transformPoint(NSMakePoint(x, y));
}

/// What a draw passes to the source.
DrawCall drawCall(IMGCropAndScale& node, TestNode& source) {
    source.draws.clear();
    node.drawWithTransform(moved(1, 2), 5, 0.25F);
    EXPECT_EQ(source.draws.size(), 1U);
    return source.draws.at(0);
}

/// How much of the pixel whose lower left corner is (x, y) lies in the rectangle.
double coverage(int x, int y, double left, double bottom, double right, double top) {
    const double width = std::min<double>(right, x + 1) - std::max<double>(left, x);
    const double height = std::min<double>(top, y + 1) - std::max<double>(bottom, y);
    return std::max(width, 0.0) * std::max(height, 0.0);
}

} // namespace

TEST(CropAndScale, ScalesProportionallyByTheSmallerFactorAndCentresVertically) {
    const auto node = crop(source(), NSMakeRect(0, 0, 400, 300), NSMakeSize(200, 200), SCALE_PROPORTIONALLY);
    EXPECT_TRUE(isPoint(fitted(*node, 0, 0), 0, 25));
    EXPECT_TRUE(isPoint(fitted(*node, 400, 300), 200, 175));
}

TEST(CropAndScale, ScalesProportionallyByTheSmallerFactorAndCentresHorizontally) {
    // Factors 0.5 and 0.25: 100 x 400 of the area's (30, 20) become 25 x 100 in the middle of 50.
    const auto node = crop(source(), NSMakeRect(30, 20, 100, 400), NSMakeSize(50, 100), SCALE_PROPORTIONALLY);
    EXPECT_TRUE(isPoint(fitted(*node, 30, 20), 12.5F, 0));
    EXPECT_TRUE(isPoint(fitted(*node, 130, 420), 37.5F, 100));
}

TEST(CropAndScale, OfEqualFactorsFillsTheTarget) {
    const auto node = crop(source(), NSMakeRect(30, 20, 100, 50), NSMakeSize(400, 200), SCALE_PROPORTIONALLY);
    EXPECT_TRUE(isPoint(fitted(*node, 30, 20), 0, 0));
    EXPECT_TRUE(isPoint(fitted(*node, 130, 70), 400, 200));
}

TEST(CropAndScale, FillsTheTargetEachAxisByItself) {
    const auto node = crop(source(), NSMakeRect(0, 0, 400, 300), NSMakeSize(200, 200), SCALE_TO_FILL);
    EXPECT_TRUE(isNearPoint(fitted(*node, 400, 300), 200, 200, 1e-4));
    EXPECT_TRUE(isPoint(fitted(*node, 200, 0), 100, 0));
    node->setSourceArea(NSMakeRect(-20, 10, 50, 40));
    EXPECT_TRUE(isPoint(fitted(*node, -20, 10), 0, 0));
    EXPECT_TRUE(isPoint(fitted(*node, 30, 50), 200, 200));
}

TEST(CropAndScale, WithoutScalingPutsTheAreasCentreOnTheOrigin) {
    const auto node = crop(source(), NSMakeRect(0, 0, 400, 300), NSMakeSize(200, 200), SCALE_NONE);
    EXPECT_TRUE(isPoint(fitted(*node, 200, 150), 0, 0)) << "not on the target's centre";
    EXPECT_TRUE(isPoint(fitted(*node, 210, 140), 10, -10));
}

TEST(CropAndScale, OfAnotherModeLeavesTheSourceWhereItIs) {
    for (const int mode : {3, -1, 1000}) {
        const auto node = crop(source(), NSMakeRect(10, 20, 40, 30), NSMakeSize(200, 200), mode);
        EXPECT_TRUE(isTransform(fitting(*node), NSAffineTransform())) << mode;
    }
}

TEST(CropAndScale, TakesTheSourceToADestination) {
    const auto node = crop(source(), NSMakeRect(10, 20, 40, 30), NSMakeSize(80, 120), SCALE_TO_FILL);
    // (10, 20) is (0, 0) of the target, (50, 50) its (80, 120); both are halved and moved.
    const NSAffineTransform t = node->transformFromSourceToDestination(NSMakeRect(-7, 5, 40, 60));
    EXPECT_TRUE(isPoint(t.transformPoint(NSMakePoint(10, 20)), -7, 5));
    EXPECT_TRUE(isPoint(t.transformPoint(NSMakePoint(50, 50)), 33, 65));
}

TEST(CropAndScale, ReportsItsTargetAsItsExtent) {
    const auto node = crop(source(), NSMakeRect(-10, -10, 40, 30), NSMakeSize(80, 120), SCALE_TO_FILL);
    EXPECT_TRUE(isRect(node->imageBounds().rectangle(), 0, 0, 80, 120));
    EXPECT_TRUE(isTransform(*node->imageBounds().transform(), NSAffineTransform()));
    EXPECT_TRUE(isTransform(node->transform(), NSAffineTransform()));
}

TEST(CropAndScale, FindsNodesBelowUnderItsFitting) {
    const auto picture = leaf(NSMakeRect(0, 0, 40, 30), moved(3, 4));
    const auto node = crop(picture, NSMakeRect(10, 20, 40, 30), NSMakeSize(80, 90), SCALE_TO_FILL);
    const auto found = node->boundsForImage(*picture, moved(100, 200));
    ASSERT_TRUE(found.has_value());
    // ((0, 0) + (3, 4) - (10, 20)) · (2, 3) + (100, 200)
    EXPECT_TRUE(isPoint(found->bottomLeft(), 86, 152));
    EXPECT_TRUE(isPoint(found->topRight(), 166, 242));
}

TEST(CropAndScale, DoesNotAnswerForItself) {
    const auto picture = leaf(NSMakeRect(0, 0, 40, 30));
    const auto node = crop(picture, NSMakeRect(10, 20, 40, 30), NSMakeSize(80, 90), SCALE_TO_FILL);
    EXPECT_FALSE(node->boundsForImage(*node, NSAffineTransform()).has_value());
    EXPECT_FALSE(node->boundsForImage(*source(), NSAffineTransform()).has_value());
}

TEST(CropAndScale, DrawsWithItsFittingAndItsSourcesTransform) {
    const auto below = source();
    below->ownTransform = matrix(0, 1, -1, 0, 3, 4);
    const auto node = crop(below, NSMakeRect(10, 20, 40, 30), NSMakeSize(80, 90), SCALE_TO_FILL);
    const DrawCall call = drawCall(*node, *below);
    ASSERT_EQ(call.records.size(), 3U);
    EXPECT_TRUE(isTransform(call.records[0].transform(), moved(1, 2)));
    EXPECT_TRUE(isTransform(call.records[1].transform(), matrix(2, 0, 0, 3, -20, -60)));
    EXPECT_FALSE(call.records[1].hasClipRect());
    EXPECT_TRUE(isTransform(call.records[2].transform(), below->ownTransform));
    EXPECT_FALSE(call.records[2].hasClipRect());
    EXPECT_EQ(call.operation, 5);
    EXPECT_EQ(call.fraction, 0.25F);
}

TEST(CropAndScale, ClipsToItsAreaInTheSourcesSpace) {
    const auto below = source();
    const auto node = crop(below, NSMakeRect(10, 20, 40, 30), NSMakeSize(80, 90), SCALE_TO_FILL, true);
    const DrawCall call = drawCall(*node, *below);
    ASSERT_EQ(call.records.size(), 3U);
    EXPECT_TRUE(call.records[1].hasClipRect());
    EXPECT_TRUE(isRect(call.records[1].clipRect(), 10, 20, 40, 30));
    EXPECT_FALSE(call.records[2].hasClipRect());
}

TEST(CropAndScale, PassesAnImageAndTargetOn) {
    const auto below = source();
    const auto node = crop(below, NSMakeRect(10, 20, 40, 30), NSMakeSize(80, 90), SCALE_TO_FILL);
    const auto image = CCImage::ccImageWithNSImage(nullptr);
    RecordingTarget target;
    node->drawImage(image, TransformAndClipList(), 2, 1, &target);
    ASSERT_EQ(below->draws.size(), 1U);
    EXPECT_EQ(below->draws[0].image, image.get());
    EXPECT_EQ(below->draws[0].imageContext, &target);
}

TEST(CropAndScale, PaintsItsSourcePixelForPixelInEveryMode) {
    const Grid picture = distinctPicture(6, 5);
    struct Case {
        int mode;
        NSSize target;
        double scaleX, scaleY, x, y; ///< a point of the source goes to (scale · point + (x, y))
    };
    // The area is 3 x 2 at (2, 1).
    for (const Case& c :
         {Case{SCALE_PROPORTIONALLY, {6, 8}, 2, 2, -4, 0},   // 4 high in 8: 2 up
          Case{SCALE_PROPORTIONALLY, {10, 4}, 2, 2, -2, -2}, // 6 wide in 10: 2 right
          Case{SCALE_TO_FILL, {6, 6}, 2, 3, -4, -3}, Case{SCALE_TO_FILL, {3, 2}, 1, 1, -2, -1},
          Case{SCALE_NONE, {6, 8}, 1, 1, -3.5, -2}, Case{17, {6, 8}, 1, 1, 0, 0}}) {
        for (const bool clip : {false, true}) {
            SCOPED_TRACE(testing::Message() << "mode " << c.mode << ", target " << c.target.width << " x "
                                            << c.target.height << ", clip " << clip);
            const auto node = crop(pictureNode(picture), NSMakeRect(2, 1, 3, 2), c.target, c.mode, clip);
            const double half = c.mode == SCALE_NONE ? 0.5 : 0; // to whole pixels
            // Each target pixel shows the source's pixel that its centre falls into.
            Grid expected(30, 30);
            for (int y = 0; y < 30; ++y) {
                for (int x = 0; x < 30; ++x) {
                    const double sx = (x + 0.5 - 8 - half - c.x) / c.scaleX;
                    const double sy = (y + 0.5 - 8 - c.y) / c.scaleY;
                    const bool inside =
                        clip ? sx > 2 && sx < 5 && sy > 1 && sy < 3 : sx > 0 && sx < 6 && sy > 0 && sy < 5;
                    if (inside) {
                        expected.at(x, 29 - y) =
                            picture.above(static_cast<int>(std::floor(sx)), static_cast<int>(std::floor(sy)));
                    }
                }
            }
            const Grid drawn = walked(*node, 30, 30, moved(static_cast<float>(8 + half), 8));
            if (c.scaleX == 1) {
                EXPECT_TRUE(Pixels::areAlike(drawn, expected));
                continue;
            }
            // Enlarged pictures are interpolated, so the colours only hint at where they are from.
            for (int y = 0; y < 30; ++y) {
                for (int x = 0; x < 30; ++x) {
                    ASSERT_EQ(drawn.at(x, y).a, expected.at(x, y).a) << x << ' ' << y;
                    ASSERT_LE(Pixels::difference(drawn.at(x, y), expected.at(x, y)), 16) << x << ' ' << y;
                }
            }
        }
    }
}

TEST(CropAndScale, PaintsNothingOutsideAndAllInsideAnAreaBetweenPixels) {
    Grid picture(20, 20, Pixels::red);
    struct Case {
        NSRect area;
        NSSize target;
        double left, bottom, right, top; ///< where the area lies, on the target
        int mode;
    };
    for (const Case& c :
         {Case{NSMakeRect(3.25F, 4.5F, 7.5F, 6.25F), {7.5F, 6.25F}, 0, 0, 7.5, 6.25, SCALE_TO_FILL},
          Case{NSMakeRect(3, 4, 5, 8), {12, 12}, 2.25, 0, 9.75, 12, SCALE_PROPORTIONALLY},
          Case{NSMakeRect(3, 4, 7, 3), {8.75F, 9}, 0, 2.625, 8.75, 6.375, SCALE_PROPORTIONALLY},
          Case{NSMakeRect(2, 3, 4.5F, 6.75F), {9, 9}, -2.25, -3.375, 2.25, 3.375, SCALE_NONE}}) {
        const auto node = crop(pictureNode(picture), c.area, c.target, c.mode, true);
        const Grid drawn = walked(*node, 24, 24, moved(5, 5));
        for (int y = 0; y < 24; ++y) {
            for (int x = 0; x < 24; ++x) {
                const double covered = coverage(x, y, c.left + 5, c.bottom + 5, c.right + 5, c.top + 5);
                const int alpha = drawn.above(x, y).a;
                EXPECT_NEAR(alpha, 255 * covered, 2.5) << x << ' ' << y;
                if (covered == 0) {
                    EXPECT_EQ(alpha, 0) << x << ' ' << y;
                }
                if (covered == 1) {
                    EXPECT_EQ(drawn.above(x, y), Pixels::red) << x << ' ' << y;
                }
            }
        }
    }
}

TEST(CropAndScale, ClipsUnderARotationAbove) {
    const Grid picture = distinctPicture(6, 5);
    const auto node =
        crop(pictureNode(picture), NSMakeRect(2, 1, 3, 2), NSMakeSize(3, 2), SCALE_TO_FILL, true);
    const auto turned = Imaging::IMGRotationOp::rotationByDegrees(90, NSMakePoint(0, 0), node);
    Grid expected(8, 8);
    paint(
        expected, picture,
        [](Spot p) {
            return Spot{-(p.y - 1) + 4, p.x - 2 + 3};
        },
        [](Spot p) { return p.x > 2 && p.x < 5 && p.y > 1 && p.y < 3; });
    EXPECT_TRUE(Pixels::areAlike(walked(*turned, 8, 8, moved(4, 3)), expected));
}

TEST(CropAndScale, OfAnAreaBeyondItsSourcePaintsWhatThereIs) {
    const Grid picture = distinctPicture(4, 3);
    const auto node =
        crop(pictureNode(picture), NSMakeRect(-2, -2, 4, 4), NSMakeSize(4, 4), SCALE_TO_FILL, true);
    Grid expected(6, 6);
    paint(
        expected, picture,
        [](Spot p) {
            return Spot{p.x + 2, p.y + 2};
        },
        [](Spot p) { return p.x < 2 && p.y < 2; });
    EXPECT_TRUE(Pixels::areAlike(walked(*node, 6, 6), expected));
}

TEST(CropAndScale, OfAnAreaOrTargetWithoutExtentDrawsNothing) {
    const auto picture = pictureNode(distinctPicture(8, 8));
    const std::array<NSSize, 9> sizes = {NSMakeSize(0, 0),          NSMakeSize(0, 4),
                                         NSMakeSize(4, 0),          NSMakeSize(notANumber, 4),
                                         NSMakeSize(4, notANumber), NSMakeSize(infinity, 4),
                                         NSMakeSize(4, infinity),   NSMakeSize(infinity, infinity),
                                         NSMakeSize(1e-45F, 1e38F)};
    for (const int mode : {SCALE_PROPORTIONALLY, SCALE_TO_FILL}) {
        for (const bool clip : {false, true}) {
            for (const NSSize size : sizes) {
                SCOPED_TRACE(testing::Message() << "mode " << mode << ", clip " << clip << ", size "
                                                << size.width << " x " << size.height);
                const auto area = crop(picture, {{1, 1}, size}, NSMakeSize(4, 4), mode, clip);
                const auto target = crop(picture, NSMakeRect(1, 1, 4, 4), size, mode, clip);
                const auto both = crop(picture, {{1, 1}, size}, NSMakeSize(0, 0), mode, clip);
                const bool isWholeNumber = size.width > 0 && size.height > 0 && std::isfinite(size.width) &&
                                           std::isfinite(size.height);
                EXPECT_NO_THROW(walked(*area, 8, 8));
                EXPECT_NO_THROW(drawnOn(8, 8, [&] { target->drawInRect(NSMakeRect(0, 0, 8, 8), false); }));
                EXPECT_TRUE(Pixels::areAlike(walked(*both, 8, 8), Grid(8, 8)));
                if (isWholeNumber) continue;
                const bool hasOneSide = (size.width == 0) != (size.height == 0);
                if (mode != SCALE_PROPORTIONALLY || clip || !hasOneSide) {
                    EXPECT_TRUE(Pixels::areAlike(walked(*area, 8, 8), Grid(8, 8)));
                }
                EXPECT_TRUE(Pixels::areAlike(
                    drawnOn(8, 8, [&] { target->drawInRect(NSMakeRect(0, 0, 8, 8), false); }), Grid(8, 8)));
                EXPECT_EQ(target->untransformedImage(), nullptr);
                EXPECT_EQ(target->image(), nullptr);
            }
        }
    }
}

TEST(CropAndScale, OfAnAreaWithOneSideOnlyIsScaledByThatSide) {
    const Grid picture = distinctPicture(8, 8);
    const auto node =
        crop(pictureNode(picture), NSMakeRect(1, 1, 0, 4), NSMakeSize(4, 4), SCALE_PROPORTIONALLY);
    Grid expected(8, 8);
    paint(expected, picture, [](Spot p) { return Spot{p.x - 1 + 2, p.y - 1}; });
    EXPECT_TRUE(Pixels::areAlike(walked(*node, 8, 8), expected));
    node->setSourceArea(NSMakeRect(1, 1, 4, 0));
    Grid turned(8, 8);
    paint(turned, picture, [](Spot p) { return Spot{p.x - 1, p.y - 1 + 2}; });
    EXPECT_TRUE(Pixels::areAlike(walked(*node, 8, 8), turned));
    node->setDoClip(true);
    EXPECT_TRUE(Pixels::areAlike(walked(*node, 8, 8), Grid(8, 8))) << "nothing lies in the area";
}

TEST(CropAndScale, RendersItselfOnceAtItsTargetSize) {
    const Grid picture = distinctPicture(6, 5);
    const auto node =
        crop(pictureNode(picture), NSMakeRect(2, 1, 3, 2), NSMakeSize(3, 4), SCALE_PROPORTIONALLY, true);
    const auto rendered = node->untransformedImage();
    ASSERT_NE(rendered, nullptr);
    EXPECT_TRUE(isSize(rendered->size(), 3, 4));
    Grid expected(3, 4);
    paint(
        expected, picture,
        [](Spot p) {
            return Spot{p.x - 2, p.y - 1 + 1};
        },
        [](Spot p) { return p.x > 2 && p.x < 5 && p.y > 1 && p.y < 3; });
    EXPECT_TRUE(Pixels::areAlike(Pixels::shownBy(*rendered->nsImage(), 3, 4), expected));
    EXPECT_EQ(node->untransformedImage(), rendered);
    EXPECT_EQ(node->image(), rendered);
}

TEST(CropAndScale, DropsWhatItRenderedWithEveryChange) {
    const auto below = pictureNode(distinctPicture(6, 5));
    const auto node = crop(below, NSMakeRect(2, 1, 3, 2), NSMakeSize(3, 4), SCALE_PROPORTIONALLY);
    auto rendered = node->untransformedImage();
    const auto isFresh = [&] {
        const auto before = std::exchange(rendered, node->untransformedImage());
        return rendered != before;
    };
    EXPECT_FALSE(isFresh());
    node->setSourceArea(NSMakeRect(1, 1, 3, 2));
    EXPECT_TRUE(isFresh());
    node->setTargetSize(NSMakeSize(5, 4));
    EXPECT_TRUE(isFresh());
    node->setImageScaling(SCALE_TO_FILL);
    EXPECT_TRUE(isFresh());
    node->setDoClip(true);
    EXPECT_TRUE(isFresh());
    below->changed();
    EXPECT_TRUE(isFresh());
    node->changed();
    EXPECT_TRUE(isFresh());
}

TEST(CropAndScale, KeepsWhatItRenderedAndAnnouncesNothingForEqualValues) {
    const auto node = crop(pictureNode(distinctPicture(6, 5)), NSMakeRect(2, 1, 3, 2), NSMakeSize(3, 4),
                           SCALE_TO_FILL, true);
    const auto rendered = node->untransformedImage();
    const ChangeCounter counter(node);
    node->setSourceArea(NSMakeRect(2, 1, 3, 2));
    node->setTargetSize(NSMakeSize(3, 4));
    node->setImageScaling(SCALE_TO_FILL);
    node->setDoClip(true);
    EXPECT_EQ(counter.count(), 0);
    EXPECT_EQ(node->untransformedImage(), rendered);
    node->setSourceArea(NSMakeRect(2, 1, 3, 3));
    node->setTargetSize(NSMakeSize(3, 5));
    node->setImageScaling(99);
    node->setDoClip(false);
    EXPECT_EQ(counter.count(), 4);
    EXPECT_TRUE(isRect(node->sourceArea(), 2, 1, 3, 3));
    EXPECT_TRUE(isSize(node->targetSize(), 3, 5));
    EXPECT_EQ(node->imageScaling(), 99);
    EXPECT_FALSE(node->doClip());
}

TEST(CropAndScale, OfATargetAsLargeAsItsAreaShowsTheWholeSource) {
    const auto below = pictureNode(distinctPicture(6, 5));
    const auto node = crop(below, NSMakeRect(2, 1, 3, 2), NSMakeSize(3, 2), SCALE_TO_FILL, true);
    EXPECT_EQ(node->untransformedImage(), below->untransformedImage());
    EXPECT_NE(node->description().find("Cached image:(null)"), std::string::npos);
}

TEST(CropAndScale, DrawsItsRenderedPictureWhereRetained) {
    const Grid picture = distinctPicture(6, 5);
    const auto node =
        crop(pictureNode(picture), NSMakeRect(2, 1, 3, 2), NSMakeSize(3, 4), SCALE_PROPORTIONALLY, true);
    const Grid drawn = drawnOn(8, 8, [&] { node->drawInRect(NSMakeRect(4, 3, 3, 4)); });
    Grid expected(8, 8);
    paint(
        expected, picture,
        [](Spot p) {
            return Spot{p.x + 2, p.y + 3};
        },
        [](Spot p) { return p.x > 2 && p.x < 5 && p.y > 1 && p.y < 3; });
    EXPECT_TRUE(Pixels::areAlike(drawn, expected));
}

TEST(CropAndScale, RefusesToRenderATargetBeyondTheLimits) {
    const auto node = crop(pictureNode(distinctPicture(6, 5)), NSMakeRect(0, 0, 6, 5), NSMakeSize(100'000, 3),
                           SCALE_TO_FILL);
    EXPECT_THROW(node->untransformedImage(), NSException);
    EXPECT_EQ(node->image(), nullptr);
}

TEST(CropAndScale, PassesOnWhatItsSourceThrowsAndLeavesTheContext) {
    const auto below = source();
    below->failing = Failing::Draw;
    const auto node = crop(below, NSMakeRect(0, 0, 4, 3), NSMakeSize(8, 8), SCALE_TO_FILL);
    const auto before = Imaging::Platform::NSGraphicsContext::currentContext();
    EXPECT_THROW(node->untransformedImage(), NSException);
    EXPECT_EQ(Imaging::Platform::NSGraphicsContext::currentContext(), before);
}

TEST(CropAndScale, DescribesItself) {
    const auto below = pictureNode(distinctPicture(6, 5));
    const auto node =
        crop(below, NSMakeRect(0, 0.5F, 400, 300), NSMakeSize(200, 150.25F), SCALE_PROPORTIONALLY, true);
    EXPECT_EQ(node->description(), "Sources:(" + below->description() +
                                       "), Transform:(null), Cached image:(null), Source area:{{0, 0.5}, "
                                       "{400, 300}}, Target size:{200, 150.25}, Image scaling:0, CLIP");
    node->setDoClip(false);
    node->setImageScaling(-2);
    const auto rendered = node->untransformedImage();
    EXPECT_TRUE(node->description().ends_with("Image scaling:-2, NO_CLIP"));
    EXPECT_NE(node->description().find("Cached image:" + rendered->description() + ", "), std::string::npos);
    node->addSource(std::make_shared<IMGImage>());
    EXPECT_EQ(node->description().find("Sources:(" + below->description() + ", <IMGImage: 0x"), 0U);
}

TEST(CropAndScale, CopyHasTheSameParametersAndSourceAndNothingRendered) {
    const auto below = pictureNode(distinctPicture(6, 5));
    const auto node = crop(below, NSMakeRect(2, 1, 3, 2), NSMakeSize(3, 4), SCALE_NONE, true);
    const auto rendered = node->untransformedImage();
    const auto copy = std::dynamic_pointer_cast<IMGCropAndScale>(node->copy());
    ASSERT_NE(copy, nullptr);
    EXPECT_EQ(copy->sources(), IMGImage::Sources{below});
    EXPECT_TRUE(isRect(copy->sourceArea(), 2, 1, 3, 2));
    EXPECT_TRUE(isSize(copy->targetSize(), 3, 4));
    EXPECT_EQ(copy->imageScaling(), SCALE_NONE);
    EXPECT_TRUE(copy->doClip());
    EXPECT_NE(copy->untransformedImage(), rendered);
}

TEST(CropAndScale, ComesBackFromItsArchive) {
    const auto node = crop(pictureNode(distinctPicture(6, 5)), NSMakeRect(0.1F, -1, 3, 2),
                           NSMakeSize(3, 4.7F), SCALE_NONE, true);
    EXPECT_EQ(PlainValues(*node).keys, (std::set<std::string>{"source-images", "source-area", "target-size",
                                                              "image-scaling", "do-clip"}));
    EXPECT_EQ(node->archiveClassName(), "IMGCropAndScale");
    for (const auto format : bothFormats) {
        const auto back = archivedAndBack(*node, format);
        EXPECT_TRUE(isRect(back->sourceArea(), 0.1F, -1, 3, 2));
        EXPECT_TRUE(isSize(back->targetSize(), 3, 4.7F));
        EXPECT_EQ(back->imageScaling(), SCALE_NONE);
        EXPECT_TRUE(back->doClip());
        const ChangeCounter counter(back);
        back->sourceAtIndex(0)->changed();
        EXPECT_EQ(counter.count(), 1);
    }
    PlainValues none;
    IMGCropAndScale empty(none);
    EXPECT_TRUE(isRect(empty.sourceArea(), 0, 0, 0, 0));
    EXPECT_TRUE(isSize(empty.targetSize(), 0, 0));
    EXPECT_EQ(empty.imageScaling(), SCALE_PROPORTIONALLY);
    EXPECT_FALSE(empty.doClip());
    EXPECT_THROW(empty.drawWithTransform(NSAffineTransform(), 2, 1), NSException) << "it has no source";
}

TEST(CropAndScale, HasANameForUsers) {
    EXPECT_EQ(crop(source(), NSMakeRect(0, 0, 1, 1), NSMakeSize(1, 1), 0)->name(), "crop");
}

TEST(CropAndScale, CropsACropOfACanvas) {
    const Grid picture = distinctPicture(6, 5);
    const auto canvas = IMGCanvas::canvasWithSize(NSMakeSize(10, 10));
    canvas->addSource(IMGTranslationOp::translationBy(NSMakePoint(2, 3), pictureNode(picture)));
    const auto inner = crop(canvas, NSMakeRect(3, 4, 5, 4), NSMakeSize(5, 4), SCALE_TO_FILL, true);
    const auto outer = crop(inner, NSMakeRect(1, 1, 3, 2), NSMakeSize(3, 2), SCALE_TO_FILL, true);
    Grid expected(6, 6);
    // The inner area begins at the picture's (1, 1), the outer one at (2, 2).
    paint(
        expected, picture,
        [](Spot p) {
            return Spot{p.x - 2 + 1, p.y - 2 + 2};
        },
        [](Spot p) { return p.x > 2 && p.x < 5 && p.y > 2 && p.y < 4; });
    EXPECT_TRUE(Pixels::areAlike(walked(*outer, 6, 6, moved(1, 2)), expected));
}
