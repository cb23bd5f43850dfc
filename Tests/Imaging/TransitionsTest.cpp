#include "Imaging/Transitions.h"

#include "Imaging/GraphicsContext.h"
#include "Tests/Imaging/TransitionFixtures.h"

#include <gtest/gtest.h>

using namespace ImagingTests;
using Imaging::GraphicsContext;
using Imaging::IMGAffineTransformOp;
using Imaging::IMGCropAndScale;
using Imaging::IMGCubeTransitionOp;
using Imaging::IMGDissolveTransitionOp;
using Imaging::IMGSpinTransitionOp;

namespace {

const TransformAndClipList someList{TransformAndClipRect::transformAndClipRectWithTransform(
    matrix(2, 1, -1, 3, 4, 5), NSMakeRect(1, 2, 3, 4))};

std::shared_ptr<TestNode> testNode(float x) { return leaf(NSMakeRect(x, 3, 8, 6), moved(x, 1)); }

/// What each source of a node was asked, after one draw with the operation 7.
std::vector<DrawCall> drawnWith(IMGImage& node, float fraction, IMGDrawingTarget* context = nullptr,
                                const std::shared_ptr<CCImage>& image = nullptr) {
    node.drawImage(image, someList, 7, fraction, context);
    std::vector<DrawCall> calls;
    for (const auto& source : node.sources()) {
        const auto& draws = std::dynamic_pointer_cast<TestNode>(source)->draws;
        calls.insert(calls.end(), draws.begin(), draws.end());
    }
    return calls;
}

/// That each source got the list and one more record, its own transform without a clip.
void expectRecords(const DrawCall& call, const NSAffineTransform& own) {
    ASSERT_EQ(call.records.size(), 2U);
    EXPECT_TRUE(isTransform(call.records[0].transform(), matrix(2, 1, -1, 3, 4, 5)));
    EXPECT_TRUE(call.records[0].hasClipRect());
    EXPECT_TRUE(isTransform(call.records[1].transform(), own));
    EXPECT_FALSE(call.records[1].hasClipRect());
}

/// A target that notes which cube it is asked for.
class CubeTarget : public GraphicsContext {
public:
    struct Call {
        std::shared_ptr<IMGImage> from;
        std::shared_ptr<IMGImage> to;
        NSRect rect;
        std::size_t records;
        NSAffineTransform first;
        std::int32_t direction;
        float weight;
        float alpha;
    };
    std::vector<Call> calls;
    std::optional<Thrown> throws;

    void drawCubeTransition(const std::shared_ptr<IMGImage>& from, const std::shared_ptr<IMGImage>& to,
                            NSRect rect, const TransformAndClipList& list,
                            Imaging::IMGTransitionDirection direction, float weight, float alpha) override {
        calls.push_back(
            {from, to, rect, list.size(), list.records().front()->transform(), direction, weight, alpha});
        if (throws.has_value()) throwSomething(*throws);
    }
};

/// A spin's graph, taken apart.
struct Spin {
    std::shared_ptr<IMGSpinTransitionOp> node;
    std::vector<Layer> layers; ///< lowest first; the picture is the one below a turn
    std::vector<std::optional<NSAffineTransform>> turns;
    float fraction = -1; ///< of the upper layer, when the whole is drawn at 1
};

Spin spinOf(const IMGCropAndScale& frame, NSSize size) {
    EXPECT_TRUE(isRect(frame.sourceArea(), 0, 0, size.width, size.height));
    EXPECT_TRUE(isSize(frame.targetSize(), size.width, size.height));
    EXPECT_EQ(frame.imageScaling(), 1);
    EXPECT_FALSE(frame.doClip());
    Spin spin;
    spin.node = std::dynamic_pointer_cast<IMGSpinTransitionOp>(frame.sourceAtIndex(0));
    if (spin.node == nullptr) throw std::runtime_error("the frame does not show a spin");
    for (const auto& source : spin.node->sources()) {
        Layer layer = layerOf(source);
        const auto crop = source->sourceAtIndex(0);
        const auto turn = std::dynamic_pointer_cast<IMGAffineTransformOp>(crop->sourceAtIndex(0));
        spin.turns.push_back(turn != nullptr ? std::optional(turn->transform()) : std::nullopt);
        if (turn != nullptr) layer.picture = turn->sourceAtIndex(0).get();
        spin.layers.push_back(layer);
    }
    return spin;
}

/// That a transform turns by an angle and scales about a point: the point stays, and one beside it goes where
/// sine and cosine say.
void expectTurn(const NSAffineTransform& turn, Spot centre, double scale, double degrees) {
    const double size = 1 + std::hypot(centre.x, centre.y);
    const auto image = [&](double x, double y) {
        return turn.transformPoint(NSMakePoint(static_cast<float>(x), static_cast<float>(y)));
    };
    const double radians = degrees * std::acos(-1.0) / 180;
    const double tolerance = 1e-5 * size * (1 + std::fabs(scale));
    EXPECT_TRUE(isNearPoint(image(centre.x, centre.y), centre.x, centre.y, tolerance));
    EXPECT_TRUE(isNearPoint(image(centre.x + 10, centre.y), centre.x + 10 * scale * std::cos(radians),
                            centre.y + 10 * scale * std::sin(radians), tolerance + 1e-4 * std::fabs(scale)));
    EXPECT_TRUE(isNearPoint(image(centre.x, centre.y + 10), centre.x - 10 * scale * std::sin(radians),
                            centre.y + 10 * scale * std::cos(radians), tolerance + 1e-4 * std::fabs(scale)));
}

Spot middleOf(NSRect r) { return {r.origin.x + r.size.width / 2.0, r.origin.y + r.size.height / 2.0}; }

/// The fraction of the upper layer of a spin, drawn at 0.5.
float upperFraction(float nodesWeight) {
    IMGSpinTransitionOp spin(IMGImage::Sources{testNode(1), testNode(2)});
    spin.setWeight(nodesWeight);
    return drawnWith(spin, 0.5F).at(1).fraction;
}

/// A picture of four fields of one colour each, top left first.
Grid fourFields(int width, int height, const std::array<Rgba, 4>& colors) {
    Grid grid(width, height);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            const bool right = x >= width / 2;
            const bool lower = y >= height / 2;
            grid.at(x, y) = colors[(right ? 1U : 0U) + (lower ? 2U : 0U)];
        }
    }
    return grid;
}

} // namespace

// IMGDissolveTransitionOp

TEST(DissolveTransition, SharesTheFractionBetweenItsPictures) {
    struct Case {
        float fraction;
        float weight;
        float from;
        float to;
    };
    const Case cases[] = {{1, 0, 1, 0},
                          {1, 1, 0, 1},
                          {0.5F, 0.25F, 0.375F, 0.125F},
                          {1, 0.5F, 0.5F, 0.5F},
                          {1, 0.75F, 0.25F, 0.75F},
                          {0.5F, 0, 0.5F, 0},
                          {1, 1.5F, -0.5F, 1.5F},
                          {1, -0.25F, 1.25F, -0.25F},
                          {0, 0.5F, 0, 0}};
    for (const Case& c : cases) {
        SCOPED_TRACE(testing::Message() << "fraction " << c.fraction << ", weight " << c.weight);
        const auto dissolve = IMGDissolveTransitionOp::transitionWithFromImage(testNode(1), testNode(2),
                                                                               NSMakeSize(9, 9), c.weight);
        const auto calls = drawnWith(*dissolve, c.fraction);
        ASSERT_EQ(calls.size(), 2U);
        EXPECT_EQ(calls[0].fraction, c.from);
        EXPECT_EQ(calls[1].fraction, c.to);
    }
}

TEST(DissolveTransition, AddsItsPicturesUpWhateverOperationIsAsked) {
    RecordingTarget target;
    const auto image = CCImage::ccImageWithNSImage(Pixels::imageOf(Grid(1, 1)));
    const auto dissolve =
        IMGDissolveTransitionOp::transitionWithFromImage(testNode(1), testNode(2), NSMakeSize(9, 9), 0.25F);
    const auto calls = drawnWith(*dissolve, 1, &target, image);
    ASSERT_EQ(calls.size(), 2U);
    for (const DrawCall& call : calls) {
        EXPECT_EQ(call.operation, 13);
        EXPECT_EQ(call.imageContext, &target);
        EXPECT_EQ(call.image, image.get());
    }
    expectRecords(calls[0], moved(1, 1));
    expectRecords(calls[1], moved(2, 1));
}

TEST(DissolveTransition, DrawsTheFirstSourceFirst) {
    std::vector<std::string> log;
    const auto from = testNode(1);
    const auto to = testNode(2);
    from->name = "from";
    to->name = "to";
    from->log = to->log = &log;
    drawnWith(*IMGDissolveTransitionOp::transitionWithFromImage(from, to, NSMakeSize(9, 9), 0.5F), 1);
    EXPECT_EQ(log, (std::vector<std::string>{"from", "to"}));
}

TEST(DissolveTransition, GivesAThirdSourceTheFirstOnesShare) {
    const auto dissolve =
        IMGDissolveTransitionOp::transitionWithFromImage(testNode(1), testNode(2), NSMakeSize(9, 9), 0.25F);
    dissolve->addSource(testNode(3));
    dissolve->addSource(testNode(4));
    const auto calls = drawnWith(*dissolve, 1);
    ASSERT_EQ(calls.size(), 4U);
    EXPECT_EQ(calls[2].fraction, 0.75F);
    EXPECT_EQ(calls[3].fraction, 0.25F);
}

TEST(DissolveTransition, GivesTheNextSourceTheShareOfOneThatThrows) {
    for (const Failing place : {Failing::Draw, Failing::Transform}) {
        for (const Thrown kind : {Thrown::Exception, Thrown::StandardException, Thrown::Number}) {
            const auto from = testNode(1);
            const auto to = testNode(2);
            from->failing = place;
            from->thrown = kind;
            const auto dissolve =
                IMGDissolveTransitionOp::transitionWithFromImage(from, to, NSMakeSize(9, 9), 0.25F);
            EXPECT_NO_THROW(drawnWith(*dissolve, 1));
            ASSERT_EQ(to->draws.size(), 1U);
            EXPECT_EQ(to->draws[0].fraction, 0.75F);
        }
    }
}

TEST(DissolveTransition, LiesWhereItsSourcesLieWhateverTheFrameIs) {
    const auto dissolve = IMGDissolveTransitionOp::transitionWithFromImage(
        leaf(NSMakeRect(1, 2, 3, 4)), leaf(NSMakeRect(-5, 1, 2, 2)), NSMakeSize(100, 100), 0.5F);
    EXPECT_TRUE(isRect(dissolve->imageBoundsRect(), -5, 1, 9, 5));
}

TEST(DissolveTransition, ShowsFromThenBothThenTo) {
    // "from" in columns 1 to 8 and "to" in columns 4 to 11, both in rows 2 to 7.
    const Rgba from{200, 40, 10, 255};
    const Rgba to{20, 100, 240, 255};
    const auto shown = [&](float weight) {
        const auto dissolve = IMGDissolveTransitionOp::transitionWithFromImage(
            pictureAt(Grid(8, 6, from), 1, 2), pictureAt(Grid(8, 6, to), 4, 2), NSMakeSize(3, 3), weight);
        return walked(*dissolve, 13, 9);
    };
    const auto expected = [&](double share) {
        Grid grid(13, 9);
        for (int y = 2; y < 8; ++y) {
            for (int x = 1; x < 12; ++x) {
                Pixels::Color sum{};
                for (std::size_t i = 0; i < 4; ++i) {
                    if (x < 9) sum[i] += Pixels::colorOf(from)[i] * (1 - share);
                    if (x >= 4) sum[i] += Pixels::colorOf(to)[i] * share;
                }
                grid.at(x, 8 - y) = Pixels::rounded(sum);
            }
        }
        return grid;
    };
    for (const float weight : {0.F, 1.F}) EXPECT_TRUE(Pixels::areAlike(shown(weight), expected(weight)));
    for (const float weight : {0.25F, 0.37F, 0.5F, 0.75F}) {
        EXPECT_TRUE(Pixels::areAlike(shown(weight), expected(weight), 1)) << weight;
    }
}

TEST(DissolveTransition, DoesNotJumpBetweenNeighbouringFrames) {
    const Film film{NSMakeRect(0, 0, 48, 32), NSMakeRect(0, 0, 48, 32), 48, 32};
    // Every sample changes by 180 at most over the film, and each of two products and a sum is rounded.
    EXPECT_LE(largestStep(film, filmFrames,
                          [&](float weight) {
                              return IMGDissolveTransitionOp::transitionWithFromImage(film.a, film.b,
                                                                                      film.size(), weight);
                          }),
              180.0 / filmFrames + 1.5);
}

// IMGSpinTransitionOp

TEST(SpinTransition, DrawsEverySourceButTheFirstWithItsWeight) {
    RecordingTarget target;
    IMGSpinTransitionOp spin(IMGImage::Sources{testNode(1), testNode(2), testNode(3)});
    spin.setWeight(0.25F);
    const auto calls = drawnWith(spin, 0.5F, &target);
    ASSERT_EQ(calls.size(), 3U);
    EXPECT_EQ(calls[0].fraction, 0.5F);
    EXPECT_EQ(calls[1].fraction, 0.125F);
    EXPECT_EQ(calls[2].fraction, 0.125F) << "not 0.03125";
    for (const DrawCall& call : calls) {
        EXPECT_EQ(call.operation, 2);
        EXPECT_EQ(call.imageContext, &target);
    }
    expectRecords(calls[0], moved(1, 1));
    expectRecords(calls[2], moved(3, 1));
}

TEST(SpinTransition, GivesTheNextSourceTheFractionOfOneThatThrows) {
    for (const Failing place : {Failing::Draw, Failing::Transform}) {
        const auto first = testNode(1);
        first->failing = place;
        const auto second = testNode(2);
        const auto third = testNode(3);
        IMGSpinTransitionOp spin(IMGImage::Sources{first, second, third});
        spin.setWeight(0.25F);
        EXPECT_NO_THROW(drawnWith(spin, 0.5F));
        EXPECT_EQ(second->draws.at(0).fraction, 0.5F);
        EXPECT_EQ(third->draws.at(0).fraction, 0.125F);
    }
}

TEST(SpinTransition, CoversItsFrameWhateverItsSourcesCover) {
    const auto below = leaf(NSMakeRect(-100, -100, 2000, 2000), moved(5, 6));
    const auto spin = std::make_shared<IMGSpinTransitionOp>(IMGImage::Sources{below});
    EXPECT_TRUE(isSize(spin->size(), 0, 0)) << "at first";
    const ChangeCounter counter(spin);
    spin->setImageSize(NSMakeSize(64, 48));
    spin->setWeight(0.5F);
    EXPECT_EQ(counter.count(), 0);
    EXPECT_TRUE(isSize(spin->size(), 64, 48));
    EXPECT_TRUE(isRect(spin->imageBounds().rectangle(), 0, 0, 64, 48));
    EXPECT_TRUE(isTransform(*spin->imageBounds().transform(), NSAffineTransform()));
    const auto own = spin->boundsForImage(*spin, moved(7, 8));
    ASSERT_TRUE(own.has_value());
    EXPECT_TRUE(isRect(own->rectangle(), 0, 0, 64, 48));
    EXPECT_TRUE(isTransform(*own->transform(), moved(7, 8)));
    const auto found = spin->boundsForImage(*below, moved(7, 8));
    ASSERT_TRUE(found.has_value());
    EXPECT_TRUE(isTransform(*found->transform(), moved(12, 14)));
    EXPECT_FALSE(spin->boundsForImage(*testNode(1), NSAffineTransform()).has_value());
}

TEST(SpinTransition, TurnsTheMovingPictureOverTheStillOne) {
    for (const Shapes& shapes : allShapes()) {
        const auto a = leaf(shapes.a);
        const auto b = leaf(shapes.b);
        const Numbers n{shapes.size, 0, a->imageBoundsRect(), b->imageBoundsRect()};
        const Layer from{a.get(), n.a, n.fittedA(), 1, false};
        const Layer to{b.get(), n.b, n.fittedB(), 1, false};
        for (const int inOut : allInOuts) {
            for (const float weight : {0.F, 0.25F, 0.5F, 0.75F, 1.F, 0.37F, -0.25F, 1.5F}) {
                SCOPED_TRACE(testing::Message() << "in/out " << inOut << ", weight " << weight);
                const Spin spin =
                    spinOf(*IMGSpinTransitionOp::transitionWithFromImage(a, b, shapes.size, inOut, weight),
                           shapes.size);
                EXPECT_TRUE(isSize(spin.node->size(), shapes.size.width, shapes.size.height));
                const std::vector<Layer> expected =
                    inOut == 1 ? std::vector{from, to} : std::vector{to, from};
                EXPECT_EQ(spin.layers, expected);
                ASSERT_EQ(spin.turns.size(), 2U);
                EXPECT_FALSE(spin.turns[0].has_value());
                ASSERT_EQ(spin.turns[1].has_value(), inOut == 1 || inOut == 2);
                if (!spin.turns[1].has_value()) continue;
                const double scale = inOut == 1 ? weight : 1 - weight;
                expectTurn(*spin.turns[1], middleOf(inOut == 1 ? n.b : n.a), scale, weight * 360.0);
            }
        }
    }
}

TEST(SpinTransition, MakesTheTransformOfAnExample) {
    const auto a = leaf(NSMakeRect(2, 4, 10, 20));
    const auto b = leaf(NSMakeRect(-6, 2, 8, 12)); // its middle is (-2, 8)
    const NSSize size = NSMakeSize(40, 30);
    const Spin in = spinOf(*IMGSpinTransitionOp::transitionWithFromImage(a, b, size, 1, 0.25F), size);
    // (x, y) goes to (-2, 8) + (-(y - 8), x + 2) / 4.
    EXPECT_TRUE(isTransform(*in.turns[1], matrix(0, 0.25F, -0.25F, 0, 0, 8.5F)));
    const Spin out = spinOf(*IMGSpinTransitionOp::transitionWithFromImage(a, b, size, 2, 0.25F), size);
    // (x, y) goes to (7, 14) + 3 (-(y - 14), x - 7) / 4.
    EXPECT_TRUE(isTransform(*out.turns[1], matrix(0, 0.75F, -0.75F, 0, 17.5F, 8.75F)));
}

TEST(SpinTransition, FadesTheMovingPicture) {
    struct Case {
        int inOut;
        float weight;
        float upper;
    };
    const Case cases[] = {{1, 0, 0},         {1, 0.25F, 0.25F}, {1, 1, 1},         {2, 0, 1},
                          {2, 0.25F, 0.75F}, {2, 1, 0},         {0, 0.25F, 0.25F}, {7, 1, 1}};
    for (const Case& c : cases) {
        SCOPED_TRACE(testing::Message() << "in/out " << c.inOut << ", weight " << c.weight);
        const auto a = leaf(NSMakeRect(2, 4, 10, 20));
        const auto b = leaf(NSMakeRect(-6, 2, 8, 12));
        const auto made =
            IMGSpinTransitionOp::transitionWithFromImage(a, b, NSMakeSize(40, 30), c.inOut, c.weight);
        made->drawImage(nullptr, someList, 7, 0.5F, nullptr);
        const auto& upper = c.inOut == 1 ? b : a;
        const auto& lower = c.inOut == 1 ? a : b;
        EXPECT_EQ(upper->draws.at(0).fraction, 0.5F * c.upper);
        EXPECT_EQ(lower->draws.at(0).fraction, 0.5F);
        EXPECT_EQ(upper->draws.at(0).operation, 2);
    }
    EXPECT_EQ(upperFraction(3), 1.5F) << "a weight beyond 1 passes through";
}

TEST(SpinTransition, ShowsFromAloneAtFirstAndToAloneAtLast) {
    const Film film = fillingFilm();
    for (const int inOut : {1, 2}) {
        const auto at = [&](float weight) {
            return shownIn(film, *IMGSpinTransitionOp::transitionWithFromImage(film.a, film.b, film.size(),
                                                                               inOut, weight));
        };
        EXPECT_TRUE(Pixels::areAlike(at(0), gradientPicture(48, 32, reddish))) << inOut;
        EXPECT_TRUE(Pixels::areAlike(at(1), gradientPicture(48, 32, bluish))) << inOut;
    }
}

TEST(SpinTransition, ShowsThePictureUpsideDownAndHalfAsLargeHalfWay) {
    const Rgba below{40, 80, 120, 255};
    const std::array<Rgba, 4> colors = {Pixels::red, Pixels::green, Pixels::blue, Pixels::white};
    const auto made = IMGSpinTransitionOp::transitionWithFromImage(
        pictureAt(Grid(32, 16, below), 5, -3), pictureAt(fourFields(32, 16, colors), -9, 2),
        NSMakeSize(32, 16), 1, 0.5F);
    const Grid drawn = walked(*made, 32, 16);
    // The middles of the four fields of 8 x 4, each turned to the opposite place.
    for (std::size_t i = 0; i < 4; ++i) {
        const int column = i % 2 == 0 ? 12 : 20;
        const int row = i < 2 ? 6 : 10;
        const Rgba wanted = Pixels::rounded(Pixels::composed(2, colors[3 - i], below, 0.5, 1));
        EXPECT_LE(Pixels::difference(drawn.at(column, row), wanted), 1) << drawn.at(column, row) << wanted;
    }
    EXPECT_EQ(drawn.at(5, 8), below);
    EXPECT_EQ(drawn.at(16, 2), below);
}

TEST(SpinTransition, TurnsCounterClockwise) {
    // A quarter of the way, a quarter of the size: what was at the right is now at the top.
    const std::array<Rgba, 4> colors = {Pixels::red, Pixels::green, Pixels::red, Pixels::green};
    const auto made = IMGSpinTransitionOp::transitionWithFromImage(
        pictureAt(Grid(64, 64, Pixels::black), 5, -3), pictureAt(fourFields(64, 64, colors), -9, 2),
        NSMakeSize(64, 64), 1, 0.25F);
    const Grid drawn = walked(*made, 64, 64);
    EXPECT_NEAR(drawn.above(32, 36).g, 64, 2);
    EXPECT_NEAR(drawn.above(32, 36).r, 0, 2);
    EXPECT_NEAR(drawn.above(32, 28).r, 64, 2);
    EXPECT_NEAR(drawn.above(32, 28).g, 0, 2);
}

TEST(SpinTransition, WithoutInOrOutShowsFromOverToUnturned) {
    const Film film = fillingFilm();
    const Grid a = gradientPicture(48, 32, reddish);
    const Grid b = gradientPicture(48, 32, bluish);
    Grid expected(48, 32);
    for (int y = 0; y < 32; ++y) {
        for (int x = 0; x < 48; ++x) {
            expected.at(x, y) = Pixels::rounded(Pixels::composed(2, a.at(x, y), b.at(x, y), 0.25, 1));
        }
    }
    const auto made = IMGSpinTransitionOp::transitionWithFromImage(film.a, film.b, film.size(), 0, 0.25F);
    EXPECT_TRUE(Pixels::areAlike(shownIn(film, *made), expected, 1));
}

// From one of 720 frames to the next a corner (28.9 from the middle) moves by 7.3 / 720 of that, 0.3 pixels:
// along the outline, 160 long, 48 pixels of the 1536 change by 255 at most, and inside samples change by 2 a
// pixel. Fading, they change by 180 / 720.
TEST(SpinTransition, DoesNotJumpBetweenNeighbouringFrames) {
    const Film film = fillingFilm();
    for (const int inOut : {1, 2}) {
        EXPECT_LE(largestStep(film, 720,
                              [&](float weight) {
                                  return IMGSpinTransitionOp::transitionWithFromImage(
                                      film.a, film.b, film.size(), inOut, weight);
                              }),
                  255 * 48.0 / 1536 + 2 * 0.3 + 0.25 + 1)
            << inOut;
    }
}

// IMGCubeTransitionOp

TEST(CubeTransition, HandsEverythingToTheTarget) {
    const auto a = testNode(1);
    const auto b = testNode(2);
    for (const int direction : allDirections) {
        CubeTarget target;
        const auto cube =
            IMGCubeTransitionOp::transitionWithFromImage(a, b, NSMakeSize(64, 48), direction, 0.375F);
        cube->drawImage(nullptr, someList, 7, 0.625F, &target);
        ASSERT_EQ(target.calls.size(), 1U);
        const CubeTarget::Call& call = target.calls[0];
        EXPECT_EQ(call.from, a);
        EXPECT_EQ(call.to, b);
        EXPECT_TRUE(isRect(call.rect, 0, 0, 64, 48));
        EXPECT_EQ(call.records, 1U) << "the list as it was";
        EXPECT_TRUE(isTransform(call.first, matrix(2, 1, -1, 3, 4, 5)));
        EXPECT_EQ(call.direction, direction);
        EXPECT_EQ(call.weight, 0.375F);
        EXPECT_EQ(call.alpha, 0.625F);
    }
    EXPECT_TRUE(a->draws.empty() && b->draws.empty());
}

TEST(CubeTransition, DrawsNothingWithoutATargetOfItsOwn) {
    const auto a = testNode(1);
    const auto b = testNode(2);
    const auto cube = IMGCubeTransitionOp::transitionWithFromImage(a, b, NSMakeSize(64, 48), 1, 0.5F);
    RecordingTarget target; // no graphics context
    EXPECT_NO_THROW(cube->drawImage(nullptr, someList, 2, 1, nullptr));
    EXPECT_NO_THROW(cube->drawImage(nullptr, someList, 2, 1, &target));
    GraphicsContext plain; // one that renders no cubes
    EXPECT_NO_THROW(cube->drawImage(nullptr, someList, 2, 1, &plain));
    EXPECT_TRUE(a->draws.empty() && b->draws.empty() && target.calls.empty());
    const auto pictures = IMGCubeTransitionOp::transitionWithFromImage(
        pictureNode(distinctPicture(5, 3)), pictureNode(distinctPicture(5, 3)), NSMakeSize(8, 6), 1, 0.5F);
    EXPECT_TRUE(Pixels::areAlike(walked(*pictures, 8, 6), Grid(8, 6)));
}

TEST(CubeTransition, SwallowsWhatTheTargetThrows) {
    const auto cube =
        IMGCubeTransitionOp::transitionWithFromImage(testNode(1), testNode(2), NSMakeSize(64, 48), 1, 0.5F);
    for (const Thrown kind : {Thrown::Exception, Thrown::StandardException, Thrown::Number}) {
        CubeTarget target;
        target.throws = kind;
        EXPECT_NO_THROW(cube->drawImage(nullptr, someList, 2, 1, &target));
        EXPECT_EQ(target.calls.size(), 1U);
    }
}

TEST(CubeTransition, DrawsNothingWithFewerThanTwoSources) {
    CubeTarget target;
    IMGCubeTransitionOp cube(IMGImage::Sources{testNode(1)});
    EXPECT_NO_THROW(cube.drawImage(nullptr, someList, 2, 1, &target));
    EXPECT_TRUE(target.calls.empty());
}

TEST(CubeTransition, CoversItsFrameWhateverItsSourcesCover) {
    const auto below = leaf(NSMakeRect(-100, -100, 2000, 2000), moved(5, 6));
    const auto cube =
        IMGCubeTransitionOp::transitionWithFromImage(below, testNode(1), NSMakeSize(64, 48), 3, 0.5F);
    EXPECT_TRUE(isSize(cube->size(), 64, 48));
    EXPECT_TRUE(isRect(cube->imageBounds().rectangle(), 0, 0, 64, 48));
    EXPECT_TRUE(isTransform(*cube->imageBounds().transform(), NSAffineTransform()));
    const auto own = cube->boundsForImage(*cube, moved(7, 8));
    ASSERT_TRUE(own.has_value());
    EXPECT_TRUE(isRect(own->rectangle(), 0, 0, 64, 48));
    EXPECT_TRUE(isTransform(*own->transform(), moved(7, 8)));
    const auto found = cube->boundsForImage(*below, moved(7, 8));
    ASSERT_TRUE(found.has_value());
    EXPECT_TRUE(isTransform(*found->transform(), moved(12, 14)));
}

// All three

TEST(Transitions, KeepTheirPicturesAsSourcesInOrder) {
    const auto a = testNode(1);
    const auto b = testNode(2);
    const NSSize size = NSMakeSize(9, 9);
    const IMGImage::Sources both{a, b};
    EXPECT_EQ(IMGDissolveTransitionOp::transitionWithFromImage(a, b, size, 0.5F)->sources(), both);
    EXPECT_EQ(IMGCubeTransitionOp::transitionWithFromImage(a, b, size, 1, 0.5F)->sources(), both);
}

TEST(Transitions, RenderNoPictureOfTheirOwn) {
    const auto a = pictureNode(distinctPicture(5, 3));
    const auto b = pictureNode(distinctPicture(4, 4, 50));
    const NSSize size = NSMakeSize(9, 9);
    EXPECT_EQ(IMGDissolveTransitionOp::transitionWithFromImage(a, b, size, 0.5F)->untransformedImage(),
              nullptr);
    EXPECT_EQ(IMGSpinTransitionOp::transitionWithFromImage(a, b, size, 1, 0.5F)->untransformedImage(),
              nullptr);
    EXPECT_EQ(IMGCubeTransitionOp::transitionWithFromImage(a, b, size, 1, 0.5F)->untransformedImage(),
              nullptr);
}

TEST(Transitions, RefuseAPictureThatIsNotThere) {
    const auto some = testNode(1);
    const NSSize size = NSMakeSize(9, 9);
    EXPECT_THROW(IMGDissolveTransitionOp::transitionWithFromImage(nullptr, some, size, 0), NSException);
    EXPECT_THROW(IMGDissolveTransitionOp::transitionWithFromImage(some, nullptr, size, 0), NSException);
    EXPECT_THROW(IMGCubeTransitionOp::transitionWithFromImage(nullptr, some, size, 1, 0), NSException);
    EXPECT_THROW(IMGCubeTransitionOp::transitionWithFromImage(some, nullptr, size, 1, 0), NSException);
    EXPECT_THROW(IMGSpinTransitionOp::transitionWithFromImage(nullptr, some, size, 1, 0), NSException);
    EXPECT_THROW(IMGSpinTransitionOp::transitionWithFromImage(some, nullptr, size, 1, 0), NSException);
}

TEST(Transitions, AreCopiedWithAllThatTheyHold) {
    const auto a = testNode(1);
    const auto b = testNode(2);
    const NSSize size = NSMakeSize(9, 9);
    const auto dissolve = std::dynamic_pointer_cast<IMGDissolveTransitionOp>(
        IMGDissolveTransitionOp::transitionWithFromImage(a, b, size, 0.75F)->copy());
    ASSERT_NE(dissolve, nullptr);
    EXPECT_EQ(dissolve->sources(), (IMGImage::Sources{a, b}));
    EXPECT_EQ(drawnWith(*dissolve, 1).at(0).fraction, 0.25F);
    const auto cube = std::dynamic_pointer_cast<IMGCubeTransitionOp>(
        IMGCubeTransitionOp::transitionWithFromImage(a, b, size, 3, 0.75F)->copy());
    ASSERT_NE(cube, nullptr);
    EXPECT_TRUE(isSize(cube->size(), 9, 9));
    CubeTarget target;
    cube->drawImage(nullptr, someList, 2, 1, &target);
    ASSERT_EQ(target.calls.size(), 1U);
    EXPECT_EQ(target.calls[0].direction, 3);
    EXPECT_EQ(target.calls[0].weight, 0.75F);
    const IMGImage::Sources others{testNode(3), testNode(4)};
    IMGSpinTransitionOp original(others);
    original.setImageSize(size);
    original.setWeight(0.75F);
    const auto spin = std::dynamic_pointer_cast<IMGSpinTransitionOp>(original.copy());
    ASSERT_NE(spin, nullptr);
    EXPECT_EQ(spin->sources(), others);
    EXPECT_TRUE(isSize(spin->size(), 9, 9));
    EXPECT_EQ(drawnWith(*spin, 1).at(1).fraction, 0.75F);
}

TEST(Transitions, ArchiveTheirSourcesAlone) {
    const auto a = pictureNode(distinctPicture(5, 3));
    const auto b = pictureNode(distinctPicture(4, 4, 50));
    const auto dissolve = IMGDissolveTransitionOp::transitionWithFromImage(a, b, NSMakeSize(9, 9), 0.75F);
    const auto cube = IMGCubeTransitionOp::transitionWithFromImage(a, b, NSMakeSize(9, 9), 1, 0.75F);
    IMGSpinTransitionOp spin(IMGImage::Sources{a, b});
    EXPECT_EQ(PlainValues(*dissolve).keys, (std::set<std::string>{"source-images"}));
    EXPECT_EQ(PlainValues(*cube).keys, (std::set<std::string>{"source-images"}));
    EXPECT_EQ(PlainValues(spin).keys, (std::set<std::string>{"source-images"}));
    for (const auto format : bothFormats) {
        const auto dissolved = archivedAndBack(*dissolve, format);
        ASSERT_NE(dissolved, nullptr);
        EXPECT_EQ(dissolved->sources().size(), 2U);
        const auto turned = archivedAndBack(*cube, format);
        ASSERT_NE(turned, nullptr);
        EXPECT_TRUE(isSize(turned->size(), 0, 0));
        const auto spun = archivedAndBack(spin, format);
        ASSERT_NE(spun, nullptr);
        EXPECT_EQ(spun->sources().size(), 2U);
    }
}
