#include "Imaging/TransformOperations.h"

#include "Tests/Imaging/PlacingTestSupport.h"

#include <gtest/gtest.h>

#include <limits>
#include <memory>

using namespace ImagingTests;
using Imaging::IMGAffineTransformOp;
using Imaging::IMGRotationOp;
using Imaging::IMGTranslationOp;

namespace {

constexpr float notANumber = std::numeric_limits<float>::quiet_NaN();
constexpr float infinity = std::numeric_limits<float>::infinity();

std::shared_ptr<TestNode> source() { return leaf(NSMakeRect(0, 0, 100, 50)); }

/// A transform without any symmetry.
NSAffineTransform skewed() { return matrix(2, 0.5F, -0.25F, 3, 7, -11); }

} // namespace

// IMGAffineTransformOp

TEST(AffineTransformOp, CopiesTheTransformThatItIsMadeWith) {
    NSAffineTransform given = skewed();
    const auto node = IMGAffineTransformOp::transformBy(given, source());
    given.translateXBy(100, 100);
    EXPECT_TRUE(isTransform(node->affineTransform(), skewed()));
    EXPECT_TRUE(isTransform(node->transform(), skewed()));
}

TEST(AffineTransformOp, HandsOutCopies) {
    const auto node = IMGAffineTransformOp::transformBy(skewed(), source());
    NSAffineTransform handedOut = node->affineTransform();
    handedOut.scaleBy(5);
    NSAffineTransform whole = node->transform();
    whole.scaleBy(5);
    EXPECT_TRUE(isTransform(node->transform(), skewed()));
}

TEST(AffineTransformOp, SeesWhatTheCallerDoesToATransformThatWasSet) {
    const auto node = IMGAffineTransformOp::transformBy(skewed(), source());
    const ChangeCounter counter(node);
    const auto shared = std::make_shared<NSAffineTransform>(moved(3, 4));
    node->setAffineTransform(shared);
    EXPECT_EQ(counter.count(), 1);
    EXPECT_TRUE(isTransform(node->transform(), moved(3, 4)));
    shared->translateXBy(10, 20);
    EXPECT_TRUE(isTransform(node->transform(), moved(13, 24)));
    EXPECT_TRUE(isTransform(node->affineTransform(), moved(13, 24)));
    EXPECT_EQ(counter.count(), 1) << "nobody is told of that";
}

TEST(AffineTransformOp, IgnoresAnEqualTransformAndDoesNotKeepIt) {
    const auto node = IMGAffineTransformOp::transformBy(skewed(), source());
    const ChangeCounter counter(node);
    const auto equal = std::make_shared<NSAffineTransform>(skewed());
    node->setAffineTransform(equal);
    EXPECT_EQ(counter.count(), 0);
    equal->translateXBy(10, 20);
    EXPECT_TRUE(isTransform(node->transform(), skewed()));
}

TEST(AffineTransformOp, ComparesByValueSoThatTheSameObjectChangedIsNoNews) {
    const auto node = IMGAffineTransformOp::transformBy(skewed(), source());
    const auto shared = std::make_shared<NSAffineTransform>(moved(3, 4));
    node->setAffineTransform(shared);
    shared->translateXBy(1, 1);
    const ChangeCounter counter(node);
    node->setAffineTransform(shared);
    EXPECT_EQ(counter.count(), 0);
}

TEST(AffineTransformOp, TakesAValueThatIsNotANumberAsAnotherTransformEachTime) {
    const auto node = IMGAffineTransformOp::transformBy(moved(notANumber, 0), source());
    const ChangeCounter counter(node);
    node->setAffineTransform(std::make_shared<NSAffineTransform>(moved(notANumber, 0)));
    EXPECT_EQ(counter.count(), 1);
}

TEST(AffineTransformOp, WithoutATransformActsAsTheIdentity) {
    const auto node = IMGAffineTransformOp::transformBy(skewed(), source());
    const ChangeCounter counter(node);
    node->setAffineTransform(nullptr);
    EXPECT_EQ(counter.count(), 1);
    EXPECT_TRUE(isTransform(node->transform(), NSAffineTransform()));
    EXPECT_TRUE(isTransform(node->affineTransform(), NSAffineTransform()));
    EXPECT_FALSE(PlainValues(*node).keys.contains("transform"));
    node->setAffineTransform(std::make_shared<NSAffineTransform>());
    EXPECT_EQ(counter.count(), 2) << "having one is something else than having none";
}

TEST(AffineTransformOp, DrawsItsSourceUnderItsTransform) {
    const Grid picture = distinctPicture(5, 3);
    // A quarter turn counter-clockwise, then a shift.
    const auto node = IMGAffineTransformOp::transformBy(matrix(0, 1, -1, 0, 6, 2), pictureNode(picture));
    Grid expected(9, 9);
    paint(expected, picture, [](Spot p) { return Spot{6 - p.y, 2 + p.x}; });
    EXPECT_TRUE(Pixels::areAlike(walked(*node, 9, 9), expected));
}

TEST(AffineTransformOp, CopySharesTheSourceAndNotTheTransform) {
    const auto below = source();
    const auto node = IMGAffineTransformOp::transformBy(skewed(), below);
    const auto shared = std::make_shared<NSAffineTransform>(moved(3, 4));
    node->setAffineTransform(shared);
    const auto copy = std::dynamic_pointer_cast<IMGAffineTransformOp>(node->copy());
    ASSERT_NE(copy, nullptr);
    EXPECT_EQ(copy->sources(), IMGImage::Sources{below});
    shared->translateXBy(10, 20);
    EXPECT_TRUE(isTransform(copy->transform(), moved(3, 4)));
    const ChangeCounter counter(copy);
    below->changed();
    EXPECT_EQ(counter.count(), 1);
}

TEST(AffineTransformOp, ComesBackFromItsArchive) {
    const auto node = IMGAffineTransformOp::transformBy(skewed(), pictureNode(distinctPicture(4, 3)));
    EXPECT_EQ(PlainValues(*node).keys, (std::set<std::string>{"source-images", "transform"}));
    for (const auto format : bothFormats) {
        const auto back = archivedAndBack(*node, format);
        EXPECT_TRUE(isTransform(back->transform(), skewed()));
        ASSERT_EQ(back->sources().size(), 1U);
        EXPECT_TRUE(isSize(back->sourceAtIndex(0)->imageSize(), 4, 3));
    }
    PlainValues none;
    EXPECT_TRUE(isTransform(IMGAffineTransformOp(none).transform(), NSAffineTransform()));
}

// IMGRotationOp

TEST(RotationOp, TurnsCounterClockwiseAboutItsOrigin) {
    const auto node = IMGRotationOp::rotationByDegrees(90, NSMakePoint(50, 50), source());
    EXPECT_EQ(node->rotationDegrees(), 90);
    EXPECT_TRUE(isPoint(node->origin(), 50, 50));
    EXPECT_TRUE(isPoint(node->transform().transformPoint(NSMakePoint(100, 50)), 50, 100));
    EXPECT_TRUE(isPoint(node->transform().transformPoint(NSMakePoint(50, 50)), 50, 50));
}

TEST(RotationOp, TurnsByAnyAngleAsTrigonometryHasIt) {
    for (const float degrees : {30.0F, -71.5F, 135.0F, 359.0F, 1000.0F}) {
        const auto node = IMGRotationOp::rotationByDegrees(degrees, NSMakePoint(-7, 13), source());
        const double radians = static_cast<double>(degrees) * std::acos(-1.0) / 180;
        const double dx = 41 - -7;
        const double dy = -29 - 13;
        const double x = -7 + dx * std::cos(radians) - dy * std::sin(radians);
        const double y = 13 + dx * std::sin(radians) + dy * std::cos(radians);
        EXPECT_TRUE(isNearPoint(node->transform().transformPoint(NSMakePoint(41, -29)), x, y, 1e-4))
            << degrees;
    }
}

TEST(RotationOp, IgnoresAnAngleThatIsATenThousandthAwayOrMore) {
    const auto node = IMGRotationOp::rotationByDegrees(0.5F, NSMakePoint(0, 0), source());
    const ChangeCounter counter(node);
    // The third is 0.5001 in 32 bits, whose distance from 0.5 is 0.000100017.
    for (const float degrees : {10.5F, -9.5F, 0.5001F, notANumber, infinity, -infinity}) {
        node->setRotationDegrees(degrees);
        EXPECT_EQ(node->rotationDegrees(), 0.5F) << degrees;
    }
    EXPECT_EQ(counter.count(), 0);
}

TEST(RotationOp, TakesAnAngleThatIsNearerEvenTheSame) {
    const auto node = IMGRotationOp::rotationByDegrees(0.5F, NSMakePoint(0, 0), source());
    const ChangeCounter counter(node);
    node->setRotationDegrees(0.50005F);
    EXPECT_EQ(node->rotationDegrees(), 0.50005F);
    EXPECT_EQ(counter.count(), 1);
    node->setRotationDegrees(0.50005F);
    EXPECT_EQ(counter.count(), 2);
    node->setRotationDegrees(0.49999F);
    EXPECT_EQ(node->rotationDegrees(), 0.49999F);
    EXPECT_EQ(counter.count(), 3);
}

TEST(RotationOp, OfNoAngleStaysThatWay) {
    const auto node = IMGRotationOp::rotationByDegrees(notANumber, NSMakePoint(0, 0), source());
    node->setRotationDegrees(0);
    EXPECT_TRUE(std::isnan(node->rotationDegrees()));
    EXPECT_TRUE(Pixels::areAlike(walked(*IMGRotationOp::rotationByDegrees(notANumber, NSMakePoint(1, 1),
                                                                          pictureNode(distinctPicture(4, 3))),
                                        4, 3),
                                 Grid(4, 3)));
}

TEST(RotationOp, RecomputesItsTransformAfterAChangeOnly) {
    const auto node = IMGRotationOp::rotationByDegrees(90, NSMakePoint(2, 3), source());
    const NSAffineTransform before = node->transform();
    EXPECT_TRUE(isTransform(before, matrix(0, 1, -1, 0, 5, 1)));
    const ChangeCounter counter(node);
    node->setOrigin(NSMakePoint(2, 3));
    EXPECT_EQ(counter.count(), 0);
    node->setOrigin(NSMakePoint(-4, 6));
    EXPECT_EQ(counter.count(), 1);
    EXPECT_TRUE(isPoint(node->origin(), -4, 6));
    EXPECT_TRUE(isTransform(node->transform(), matrix(0, 1, -1, 0, 2, 10)));
}

TEST(RotationOp, ForgetsItsTransformWhenItsSourceChangesAndTellsOn) {
    const auto below = source();
    const auto node = IMGRotationOp::rotationByDegrees(30, NSMakePoint(2, 3), below);
    const ChangeCounter counter(node);
    const NSAffineTransform before = node->transform();
    below->changed();
    EXPECT_EQ(counter.count(), 1);
    EXPECT_TRUE(isTransform(node->transform(), before));
}

TEST(RotationOp, DrawsQuarterTurnsExactly) {
    const Grid picture = distinctPicture(5, 3);
    const auto node = IMGRotationOp::rotationByDegrees(-90, NSMakePoint(2.5F, 4.5F), pictureNode(picture));
    Grid expected(12, 12);
    // (x, y) turns to (y, -x) about (2.5, 4.5).
    paint(expected, picture, [](Spot p) { return Spot{2.5 + (p.y - 4.5) + 4, 4.5 - (p.x - 2.5)}; });
    EXPECT_TRUE(Pixels::areAlike(walked(*node, 12, 12, moved(4, 0)), expected));
}

TEST(RotationOp, BoundsAreTheSourcesUnderItsTransform) {
    const auto node = IMGRotationOp::rotationByDegrees(90, NSMakePoint(50, 25), source());
    const IMGBounds bounds = node->imageBounds();
    EXPECT_TRUE(isRect(bounds.rectangle(), 0, 0, 100, 50));
    EXPECT_TRUE(isTransform(*bounds.transform(), node->transform()));
    EXPECT_TRUE(isRect(bounds.boundingRect(), 25, -25, 50, 100));
}

TEST(RotationOp, WhollyAtNegativeCoordinatesHasABoundingRectangleUpToZero) {
    const auto node = IMGRotationOp::rotationByDegrees(180, NSMakePoint(-10, -10), source());
    // The rectangle itself is (-120, -70, 100, 50).
    EXPECT_TRUE(isRect(node->imageBoundsRect(), -120, -70, 120, 70));
}

TEST(RotationOp, CopyHasTheSameParametersAndSource) {
    const auto below = source();
    const auto node = IMGRotationOp::rotationByDegrees(30, NSMakePoint(2, 3), below);
    node->transform();
    const auto copy = std::dynamic_pointer_cast<IMGRotationOp>(node->copy());
    ASSERT_NE(copy, nullptr);
    EXPECT_EQ(copy->sources(), IMGImage::Sources{below});
    EXPECT_EQ(copy->rotationDegrees(), 30);
    copy->setOrigin(NSMakePoint(0, 0));
    EXPECT_TRUE(isPoint(node->origin(), 2, 3));
    EXPECT_FALSE(node->transform().isEqual(copy->transform()));
}

TEST(RotationOp, ComesBackFromItsArchive) {
    const auto node = IMGRotationOp::rotationByDegrees(0.1F, NSMakePoint(2.3F, -3.7F), source());
    EXPECT_EQ(PlainValues(*node).keys, (std::set<std::string>{"source-images", "angle-degrees", "origin"}));
    const auto real =
        IMGRotationOp::rotationByDegrees(0.1F, NSMakePoint(2.3F, -3.7F), pictureNode(distinctPicture(4, 3)));
    for (const auto format : bothFormats) {
        const auto back = archivedAndBack(*real, format);
        EXPECT_EQ(back->rotationDegrees(), 0.1F);
        EXPECT_TRUE(isPoint(back->origin(), 2.3F, -3.7F));
        EXPECT_TRUE(isTransform(back->transform(), real->transform()));
        const ChangeCounter counter(back);
        back->sourceAtIndex(0)->changed();
        EXPECT_EQ(counter.count(), 1);
    }
    PlainValues none;
    const IMGRotationOp empty(none);
    EXPECT_EQ(empty.rotationDegrees(), 0);
    EXPECT_TRUE(isPoint(empty.origin(), 0, 0));
}

// IMGTranslationOp

TEST(TranslationOp, MovesItsSource) {
    const Grid picture = distinctPicture(5, 3);
    const auto node = IMGTranslationOp::translationBy(NSMakePoint(2, 4), pictureNode(picture));
    EXPECT_TRUE(isTransform(node->transform(), moved(2, 4)));
    Grid expected(8, 8);
    paint(expected, picture, [](Spot p) { return Spot{p.x + 2, p.y + 4}; });
    EXPECT_TRUE(Pixels::areAlike(walked(*node, 8, 8), expected));
    EXPECT_TRUE(isRect(node->imageBoundsRect(), 2, 4, 5, 3));
}

TEST(TranslationOp, AnnouncesAnotherPointOnly) {
    const auto node = IMGTranslationOp::translationBy(NSMakePoint(2, 4), source());
    node->transform();
    const ChangeCounter counter(node);
    node->setTranslation(NSMakePoint(2, 4));
    EXPECT_EQ(counter.count(), 0);
    node->setTranslation(NSMakePoint(2, 4.5F));
    EXPECT_EQ(counter.count(), 1);
    EXPECT_TRUE(isPoint(node->translation(), 2, 4.5F));
    EXPECT_TRUE(isTransform(node->transform(), moved(2, 4.5F)));
    node->setTranslation(NSMakePoint(notANumber, 0));
    node->setTranslation(NSMakePoint(notANumber, 0));
    EXPECT_EQ(counter.count(), 3) << "what is not a number equals nothing";
}

TEST(TranslationOp, WithoutBoundDrawsNothing) {
    const auto picture = pictureNode(distinctPicture(4, 3));
    for (const float x : {infinity, -infinity, notANumber, 3e38F}) {
        const auto node = IMGTranslationOp::translationBy(NSMakePoint(x, 0), picture);
        EXPECT_TRUE(Pixels::areAlike(walked(*node, 4, 3), Grid(4, 3))) << x;
    }
}

TEST(TranslationOp, CopyAndArchiveKeepTheShift) {
    const auto picture = pictureNode(distinctPicture(4, 3));
    const auto node = IMGTranslationOp::translationBy(NSMakePoint(0.1F, -4e10F), picture);
    EXPECT_EQ(PlainValues(*node).keys, (std::set<std::string>{"source-images", "translation"}));
    const auto copy = std::dynamic_pointer_cast<IMGTranslationOp>(node->copy());
    ASSERT_NE(copy, nullptr);
    EXPECT_EQ(copy->sources(), IMGImage::Sources{picture});
    EXPECT_TRUE(isPoint(copy->translation(), 0.1F, -4e10F));
    for (const auto format : bothFormats) {
        EXPECT_TRUE(isPoint(archivedAndBack(*node, format)->translation(), 0.1F, -4e10F));
    }
    PlainValues none;
    EXPECT_TRUE(isPoint(IMGTranslationOp(none).translation(), 0, 0));
}

// All three

TEST(TransformOperations, ShowTheirSourcesRenderedPicture) {
    const auto below = source();
    below->rendered = CCImage::ccImageWithNSImage(Pixels::imageOf(distinctPicture(2, 2)));
    EXPECT_EQ(IMGAffineTransformOp(skewed(), below).untransformedImage(), below->rendered);
    EXPECT_EQ(IMGRotationOp(30, NSMakePoint(1, 2), below).untransformedImage(), below->rendered);
    EXPECT_EQ(IMGTranslationOp(NSMakePoint(1, 2), below).untransformedImage(), below->rendered);
}

TEST(TransformOperations, DrawTheRenderedPictureUnderTheFitTransform) {
    const Grid picture = distinctPicture(4, 2);
    const auto turned = IMGRotationOp::rotationByDegrees(90, NSMakePoint(2, 1), pictureNode(picture));
    // Its bounding rectangle is (1, -1, 2, 4); the centre of the picture stays where it is.
    Grid expected(5, 6);
    paint(expected, picture, [](Spot p) { return Spot{2 - (p.y - 1) - 1 + 2, 1 + (p.x - 2) + 1 + 1}; });
    for (const bool retained : {true, false}) {
        EXPECT_TRUE(Pixels::areAlike(
            drawnOn(5, 6, [&] { turned->drawInRect(NSMakeRect(2, 1, 2, 4), retained); }), expected))
            << retained;
    }
}

TEST(TransformOperations, HaveNamesForUsersThatAreTheirKeysWithoutACatalogue) {
    EXPECT_EQ(IMGAffineTransformOp(skewed(), source()).name(), "transform");
    EXPECT_EQ(IMGRotationOp(30, NSMakePoint(1, 2), source()).name(), "rotation");
    EXPECT_EQ(IMGTranslationOp(NSMakePoint(1, 2), source()).name(), "translation");
}

TEST(TransformOperations, HaveArchiveNames) {
    EXPECT_EQ(IMGAffineTransformOp(skewed(), source()).archiveClassName(), "IMGAffineTransformOp");
    EXPECT_EQ(IMGRotationOp(30, NSMakePoint(1, 2), source()).archiveClassName(), "IMGRotationOp");
    EXPECT_EQ(IMGTranslationOp(NSMakePoint(1, 2), source()).archiveClassName(), "IMGTranslationOp");
}

TEST(TransformOperations, RefuseANullSource) {
    EXPECT_THROW(IMGAffineTransformOp(skewed(), nullptr), NSException);
    EXPECT_THROW(IMGRotationOp(30, NSMakePoint(1, 2), nullptr), NSException);
    EXPECT_THROW(IMGTranslationOp(NSMakePoint(1, 2), nullptr), NSException);
}

TEST(TransformOperations, WithoutASourceSayThatRatherThanCrash) {
    PlainValues none;
    IMGRotationOp rotation(none);
    EXPECT_THROW(rotation.untransformedImage(), NSException);
    EXPECT_THROW(rotation.copy(), NSException);
    EXPECT_NO_THROW(rotation.drawWithTransform(NSAffineTransform(), 2, 1));
    EXPECT_EQ(rotation.image(), nullptr);
}

TEST(TransformOperations, FindWhereANodeFarBelowLies) {
    const auto picture = pictureNode(distinctPicture(4, 2));
    const auto shifted = IMGTranslationOp::translationBy(NSMakePoint(10, 20), picture);
    const auto turned = IMGRotationOp::rotationByDegrees(90, NSMakePoint(0, 0), shifted);
    const auto scaled = IMGAffineTransformOp::transformBy(matrix(2, 0, 0, 3, 1, 1), turned);
    NSAffineTransform whole = scaled->transform();
    const auto found = scaled->boundsForImage(*picture, whole);
    ASSERT_TRUE(found.has_value());
    // (0, 0) moves to (10, 20), turns to (-20, 10) and is scaled to (-39, 31); (4, 2) likewise.
    EXPECT_TRUE(isPoint(found->bottomLeft(), -39, 31));
    EXPECT_TRUE(isPoint(found->topRight(), -22 * 2 + 1, 14 * 3 + 1));
    // Drawn, the same corner is there.
    const Grid drawn = walked(*scaled, 10, 20, moved(44, -30));
    EXPECT_EQ(drawn.above(4, 1).a, 255);
    EXPECT_EQ(drawn.above(5, 1).a, 0);
}

TEST(TransformOperations, BoundsOfNestedNodesPrependTheOuterTransform) {
    // The bounds of a chain apply the outer node's transform before the inner one's, a draw the other way
    // round; the two differ unless the transforms commute.
    const auto shifted = IMGTranslationOp::translationBy(NSMakePoint(10, 20), source());
    const auto turned = IMGRotationOp::rotationByDegrees(90, NSMakePoint(0, 0), shifted);
    NSAffineTransform expected = moved(10, 20);
    expected.prependTransform(matrix(0, 1, -1, 0, 0, 0));
    const IMGBounds bounds = turned->imageBounds();
    EXPECT_TRUE(isRect(bounds.rectangle(), 0, 0, 100, 50));
    EXPECT_TRUE(isTransform(*bounds.transform(), expected));
    // (0, 0, 100, 50) turns to (-50, 0, 50, 100) and then moves.
    EXPECT_TRUE(isRect(bounds.boundingRect(), -40, 20, 50, 100));
}

TEST(TransformOperations, BoundsFourLevelsDeepUnderRotations) {
    const auto a = IMGRotationOp::rotationByDegrees(30, NSMakePoint(50, 25), source());
    const auto b = IMGTranslationOp::translationBy(NSMakePoint(-5, 9), a);
    const auto c = IMGRotationOp::rotationByDegrees(-75, NSMakePoint(10, 3), b);
    const auto d = IMGRotationOp::rotationByDegrees(60, NSMakePoint(1, 2), c);
    const IMGBounds bounds = d->imageBounds();
    EXPECT_TRUE(isRect(bounds.rectangle(), 0, 0, 100, 50));
    const auto turn = [](Spot p, double degrees, double x, double y) {
        const double angle = degrees * std::acos(-1.0) / 180;
        return Spot{x + (p.x - x) * std::cos(angle) - (p.y - y) * std::sin(angle),
                    y + (p.x - x) * std::sin(angle) + (p.y - y) * std::cos(angle)};
    };
    for (const auto& [corner, actual] : {std::pair{Spot{0, 0}, bounds.bottomLeft()},
                                         {Spot{100, 0}, bounds.bottomRight()},
                                         {Spot{0, 50}, bounds.topLeft()},
                                         {Spot{100, 50}, bounds.topRight()}}) {
        const Spot afterD = turn(corner, 60, 1, 2); // the outermost acts first
        const Spot afterC = turn(afterD, -75, 10, 3);
        const Spot afterB{afterC.x - 5, afterC.y + 9};
        const Spot expected = turn(afterB, 30, 50, 25);
        EXPECT_TRUE(isNearPoint(actual, expected.x, expected.y, 1e-3));
    }
}
