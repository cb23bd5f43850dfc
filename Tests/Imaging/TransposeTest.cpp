#include "Imaging/Transpose.h"

#include "Imaging/TransformOperations.h"
#include "Tests/Imaging/PlacingTestSupport.h"

#include <gtest/gtest.h>

#include <array>
#include <limits>

using namespace ImagingTests;
using namespace Imaging;

namespace {

/// The linear part of a mapping of whole numbers: (x, y) goes to (a·x + b·y, c·x + d·y).
struct Mapping {
    int a, b, c, d;
    friend bool operator==(const Mapping&, const Mapping&) = default;

    Spot operator()(Spot p) const { return {a * p.x + b * p.y, c * p.x + d * p.y}; }
};

/// `first`, then `second`.
Mapping product(const Mapping& second, const Mapping& first) {
    return {second.a * first.a + second.b * first.c, second.a * first.b + second.b * first.d,
            second.c * first.a + second.d * first.c, second.c * first.b + second.d * first.d};
}

constexpr std::array<Mapping, 8> mappings = {{
    {1, 0, 0, -1},  // FLIP_VERTICAL
    {-1, 0, 0, 1},  // FLIP_HORIZONTAL
    {0, -1, -1, 0}, // FLIP_ANTIDIAGONAL
    {0, 1, 1, 0},   // FLIP_DIAGONAL
    {1, 0, 0, 1},   // ROTATE_0
    {0, -1, 1, 0},  // ROTATE_90
    {-1, 0, 0, -1}, // ROTATE_180
    {0, 1, -1, 0},  // ROTATE_270
}};

/// What the modifications 8 to 11 do.
constexpr std::array<Mapping, 4> steps = {{
    {0, 1, -1, 0}, // clockwise
    {0, -1, 1, 0}, // counter-clockwise
    {-1, 0, 0, 1}, // left and right
    {1, 0, 0, -1}, // top and bottom
}};

Mapping mappingOf(int type) { return mappings.at(static_cast<std::size_t>(type)); }

std::shared_ptr<TestNode> source() { return leaf(NSMakeRect(0, 0, 200, 100)); }

} // namespace

TEST(TransposeTypes, HaveTheNumbersThatArchivesHold) {
    EXPECT_EQ(FLIP_VERTICAL, 0);
    EXPECT_EQ(FLIP_HORIZONTAL, 1);
    EXPECT_EQ(FLIP_ANTIDIAGONAL, 2);
    EXPECT_EQ(FLIP_DIAGONAL, 3);
    EXPECT_EQ(ROTATE_0, 4);
    EXPECT_EQ(ROTATE_90, 5);
    EXPECT_EQ(ROTATE_180, 6);
    EXPECT_EQ(ROTATE_270, 7);
    EXPECT_EQ(MODIFY_ROTATE_CLOCKWISE, 8);
    EXPECT_EQ(MODIFY_ROTATE_COUNTERCLOCKWISE, 9);
    EXPECT_EQ(MODIFY_FLIP_HORIZONTAL, 10);
    EXPECT_EQ(MODIFY_FLIP_VERTICAL, 11);
}

TEST(TransposeTypes, ModifiedAreTheProductsOfTheirMappings) {
    for (int modification = 8; modification <= 11; ++modification) {
        for (int type = 0; type < 8; ++type) {
            const int result = IMGTransposeOp::type(type, modification);
            ASSERT_GE(result, 0);
            ASSERT_LT(result, 8);
            const Mapping& step = steps.at(static_cast<std::size_t>(modification - 8));
            EXPECT_EQ(mappingOf(result), product(step, mappingOf(type)))
                << "type " << type << ", modification " << modification;
        }
    }
}

TEST(TransposeTypes, ReversedUndoThemselves) {
    for (int type = 0; type < 8; ++type) {
        const int reversed = IMGTransposeOp::reversedType(type);
        EXPECT_EQ(product(mappingOf(reversed), mappingOf(type)), mappingOf(ROTATE_0)) << type;
        EXPECT_EQ(IMGTransposeOp::reversedType(reversed), type);
    }
    EXPECT_EQ(IMGTransposeOp::reversedType(ROTATE_90), ROTATE_270);
    EXPECT_EQ(IMGTransposeOp::reversedType(ROTATE_180), ROTATE_180);
    EXPECT_EQ(IMGTransposeOp::reversedType(FLIP_DIAGONAL), FLIP_DIAGONAL);
}

TEST(TransposeTypes, FlippedTwiceAreThemselves) {
    for (int type = 0; type < 8; ++type) {
        for (const int flip : {MODIFY_FLIP_HORIZONTAL, MODIFY_FLIP_VERTICAL}) {
            EXPECT_EQ(IMGTransposeOp::type(IMGTransposeOp::type(type, flip), flip), type);
        }
        const int turned = IMGTransposeOp::type(type, MODIFY_ROTATE_CLOCKWISE);
        EXPECT_EQ(IMGTransposeOp::type(turned, MODIFY_ROTATE_COUNTERCLOCKWISE), type);
    }
}

TEST(TransposeTypes, RefuseANumberThatIsNoModification) {
    for (const int modification :
         {7, 12, -1, std::numeric_limits<int>::max(), std::numeric_limits<int>::min()}) {
        try {
            IMGTransposeOp::type(ROTATE_0, modification);
            ADD_FAILURE() << modification;
        } catch (const NSException& exception) {
            EXPECT_EQ(exception.name(), Imaging::Platform::NSInternalInconsistencyException);
            EXPECT_EQ(exception.reason(),
                      "Invalid parameter not satisfying: modification_type >= MODIFY_ROTATE_CLOCKWISE && "
                      "modification_type <= MODIFY_FLIP_VERTICAL");
        }
    }
}

TEST(TransposeTypes, RefuseANumberThatIsNoType) {
    for (const int type : {8, -1, std::numeric_limits<int>::max(), std::numeric_limits<int>::min()}) {
        const std::string reason =
            "Invalid parameter not satisfying: type >= FLIP_VERTICAL && type <= ROTATE_270";
        try {
            IMGTransposeOp::type(type, MODIFY_FLIP_VERTICAL);
            ADD_FAILURE() << type;
        } catch (const NSException& exception) {
            EXPECT_EQ(exception.reason(), reason);
        }
        try {
            IMGTransposeOp::reversedType(type);
            ADD_FAILURE() << type;
        } catch (const NSException& exception) {
            EXPECT_EQ(exception.reason(), reason);
        }
    }
}

TEST(TransposeTypes, NameWhereTheMistakeIsAndGoOnWhenTheHandlerReturns) {
    const ToleratedAssertions assertions;
    // Number 1 of row 1 of the table.
    EXPECT_EQ(IMGTransposeOp::type(9, MODIFY_ROTATE_CLOCKWISE), 2);
    EXPECT_EQ(IMGTransposeOp::type(12, 7), 7); // number 4 of row 0
    EXPECT_EQ(IMGTransposeOp::type(0, 12), 0); // beyond the table
    EXPECT_EQ(IMGTransposeOp::type(std::numeric_limits<int>::min(), std::numeric_limits<int>::min()),
              std::numeric_limits<int>::min());
    EXPECT_EQ(IMGTransposeOp::reversedType(8), 8);
    EXPECT_EQ(IMGTransposeOp::reversedType(-5), -5);
    ASSERT_EQ(assertions.failures().size(), 8U);
    const std::array lines = {95, 94, 95, 94, 94, 95, 107, 107};
    for (std::size_t i = 0; i < lines.size(); ++i) {
        EXPECT_EQ(assertions.failures()[i].line, lines[i]) << i;
        EXPECT_EQ(assertions.failures()[i].file, "Imaging/Transpose");
    }
}

TEST(TransposeOp, MapsEveryPixelAboutTheCentre) {
    const Grid picture = distinctPicture(5, 3);
    for (int type = 0; type < 8; ++type) {
        SCOPED_TRACE(type);
        const auto node = IMGTransposeOp::transposeOfType(type, pictureNode(picture));
        Grid expected(10, 9);
        const Mapping mapping = mappingOf(type);
        paint(expected, picture, [&](Spot p) {
            const Spot q = mapping({p.x - 2.5, p.y - 1.5});
            return Spot{q.x + 2.5 + 2, q.y + 1.5 + 3};
        });
        EXPECT_TRUE(Pixels::areAlike(walked(*node, 10, 9, moved(2, 3)), expected));
    }
}

TEST(TransposeOp, MapsEveryPixelOfASourceAwayFromTheOrigin) {
    const Grid picture = distinctPicture(4, 3);
    for (int type = 0; type < 8; ++type) {
        SCOPED_TRACE(type);
        const auto shifted = IMGTranslationOp::translationBy(NSMakePoint(3, 5), pictureNode(picture));
        const auto node = IMGTransposeOp::transposeOfType(type, shifted);
        Grid expected(12, 12);
        const Mapping mapping = mappingOf(type);
        // Centres of an odd and an even side put quarter turns half a pixel off; half a pixel more mends it.
        const double half = mapping.a == 0 ? 0.5 : 0;
        paint(expected, picture, [&](Spot p) {
            const Spot q = mapping({p.x - 2, p.y - 1.5});
            return Spot{q.x + 5 + half, q.y + 6.5 + half};
        });
        const auto offset = static_cast<float>(half);
        EXPECT_TRUE(Pixels::areAlike(walked(*node, 12, 12, moved(offset, offset)), expected));
    }
}

TEST(TransposeOp, QuarterTurnMapsACornerAndBoundsAsCounted) {
    const auto node = IMGTransposeOp::transposeOfType(ROTATE_90, source());
    EXPECT_TRUE(isPoint(node->transform().transformPoint(NSMakePoint(200, 100)), 50, 150));
    const IMGBounds bounds = node->imageBounds();
    EXPECT_TRUE(isRect(bounds.rectangle(), 0, 0, 200, 100));
    EXPECT_TRUE(isRect(bounds.boundingRect(), 50, -50, 100, 200));
}

TEST(TransposeOp, OfAnUnknownTypeActsAsNoTurn) {
    for (const int type : {8, 11, -1, 1000}) {
        const auto node = IMGTransposeOp::transposeOfType(type, source());
        EXPECT_EQ(node->type(), type);
        EXPECT_TRUE(isTransform(node->transform(), NSAffineTransform()));
    }
}

TEST(TransposeOp, PassesThroughAllQuarterTurnsAndAnnouncesEach) {
    const auto node = IMGTransposeOp::transposeOfType(ROTATE_0, source());
    const ChangeCounter counter(node);
    int changes = 0;
    for (const int expected : {7, 6, 5, 4}) {
        EXPECT_EQ(node->nextType(MODIFY_ROTATE_CLOCKWISE), expected);
        EXPECT_EQ(counter.count(), changes) << "asking changes nothing";
        node->modifyType(MODIFY_ROTATE_CLOCKWISE);
        EXPECT_EQ(node->type(), expected);
        EXPECT_EQ(counter.count(), ++changes);
    }
}

TEST(TransposeOp, AnnouncesAnotherTypeOnly) {
    const auto node = IMGTransposeOp::transposeOfType(FLIP_DIAGONAL, source());
    EXPECT_TRUE(isPoint(node->transform().transformPoint(NSMakePoint(100, 50)), 100, 50));
    const ChangeCounter counter(node);
    node->setType(FLIP_DIAGONAL);
    EXPECT_EQ(counter.count(), 0);
    node->setType(FLIP_HORIZONTAL);
    EXPECT_EQ(counter.count(), 1);
    EXPECT_TRUE(isTransform(node->transform(), matrix(-1, 0, 0, 1, 200, 0)));
    node->setType(77);
    EXPECT_EQ(counter.count(), 2) << "the number is not checked";
    EXPECT_THROW(node->modifyType(MODIFY_FLIP_VERTICAL), NSException);
}

TEST(TransposeOp, TurnsAboutTheNewCentreOnceTheSourceHasChanged) {
    const auto below = source();
    const auto node = IMGTransposeOp::transposeOfType(ROTATE_180, below);
    EXPECT_TRUE(isTransform(node->transform(), matrix(-1, 0, 0, -1, 200, 100)));
    below->setExtent(NSMakeRect(10, 20, 30, 40));
    EXPECT_TRUE(isTransform(node->transform(), matrix(-1, 0, 0, -1, 200, 100))) << "nothing was announced";
    below->changed();
    EXPECT_TRUE(isTransform(node->transform(), matrix(-1, 0, 0, -1, 50, 80)));
}

TEST(TransposeOp, TurnsAboutTheCentreOfTheBoundingRectangleOfATurnedSource) {
    const auto turned = IMGRotationOp::rotationByDegrees(90, NSMakePoint(0, 0), source());
    const auto node = IMGTransposeOp::transposeOfType(ROTATE_180, turned);
    // The bounding rectangle is (-100, 0, 100, 200).
    EXPECT_TRUE(isTransform(node->transform(), matrix(-1, 0, 0, -1, -100, 200)));
}

TEST(TransposeOp, OfASourceWithoutFiniteExtentDrawsNothing) {
    const auto below = IMGTranslationOp::translationBy(NSMakePoint(std::numeric_limits<float>::infinity(), 0),
                                                       pictureNode(distinctPicture(4, 3)));
    const auto node = IMGTransposeOp::transposeOfType(ROTATE_90, below);
    EXPECT_TRUE(Pixels::areAlike(walked(*node, 5, 5), Grid(5, 5)));
}

TEST(TransposeOp, ShowsItsSourcesRenderedPicture) {
    const auto below = source();
    below->rendered = CCImage::ccImageWithNSImage(Pixels::imageOf(distinctPicture(2, 2)));
    EXPECT_EQ(IMGTransposeOp(ROTATE_90, below).untransformedImage(), below->rendered);
}

TEST(TransposeOp, CopySharesTheSource) {
    const auto below = source();
    const auto node = IMGTransposeOp::transposeOfType(ROTATE_90, below);
    const auto copy = std::dynamic_pointer_cast<IMGTransposeOp>(node->copy());
    ASSERT_NE(copy, nullptr);
    EXPECT_EQ(copy->type(), ROTATE_90);
    EXPECT_EQ(copy->sources(), IMGImage::Sources{below});
    copy->setType(FLIP_VERTICAL);
    EXPECT_EQ(node->type(), ROTATE_90);
}

TEST(TransposeOp, ComesBackFromItsArchive) {
    const auto node = IMGTransposeOp::transposeOfType(FLIP_ANTIDIAGONAL, pictureNode(distinctPicture(4, 3)));
    EXPECT_EQ(PlainValues(*node).keys, (std::set<std::string>{"source-images", "type"}));
    EXPECT_EQ(node->archiveClassName(), "IMGTransposeOp");
    for (const auto format : bothFormats) {
        const auto back = archivedAndBack(*node, format);
        EXPECT_EQ(back->type(), FLIP_ANTIDIAGONAL);
        EXPECT_TRUE(isTransform(back->transform(), node->transform()));
    }
    PlainValues none;
    const IMGTransposeOp empty(none);
    EXPECT_EQ(empty.type(), FLIP_VERTICAL);
    EXPECT_THROW(empty.transform(), NSException) << "there is no source to turn";
    PlainValues negative;
    negative.numbers["type"] = -3;
    EXPECT_EQ(IMGTransposeOp(negative).type(), -3);
}

TEST(TransposeOp, HasANameForUsers) { EXPECT_EQ(IMGTransposeOp(ROTATE_0, source()).name(), "transpose"); }
