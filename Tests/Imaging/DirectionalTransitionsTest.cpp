// Also tests: Imaging/TransitionParts/TransitionParts.cpp

#include "Imaging/DirectionalTransitions.h"

#include "Tests/Imaging/TransitionFixtures.h"

#include <gtest/gtest.h>

using namespace ImagingTests;
using Imaging::IMGPushTransitionOp;
using Imaging::IMGSlideChangerTransitionOp;
using Imaging::IMGSlideTransitionOp;
using Imaging::IMGWipeTransitionOp;
using Imaging::Platform::NSColor;

namespace {

const NSColor sand = NSColor::colorWithCalibratedRed(0.8F, 0.6F, 0.4F, 1);
constexpr Pixels::Color sandPixel{0.8, 0.6, 0.4, 1};

/// An area and where it is shown.
struct Row {
    NSRect area;
    NSRect place;
};
using Rows = std::pair<Row, Row>;

// The tables of what is shown where, in terms of bounds (x, y, width, height), the frame W x H, the weight w
// and v = 1 - w.

Rows pushRows(int direction, const Numbers& n) {
    const float w = n.w;
    const float v = n.v();
    const auto [W, H] = n.size;
    const auto [a, as] = n.a;
    const auto [b, bs] = n.b;
    switch (direction) {
    case 1:
        return {{NSMakeRect(a.x + w * as.width, a.y, v * as.width, as.height), NSMakeRect(0, 0, v * W, H)},
                {NSMakeRect(b.x, b.y, w * bs.width, bs.height), NSMakeRect(v * W, 0, w * W, H)}};
    case 2:
        return {{NSMakeRect(a.x, a.y, v * as.width, as.height), NSMakeRect(w * W, 0, v * W, H)},
                {NSMakeRect(b.x + v * bs.width, b.y, w * bs.width, bs.height), NSMakeRect(0, 0, w * W, H)}};
    case 3:
        return {{NSMakeRect(a.x, a.y, as.width, v * as.height), NSMakeRect(0, w * H, W, v * H)},
                {NSMakeRect(b.x, b.y + v * bs.height, bs.width, w * bs.height), NSMakeRect(0, 0, W, w * H)}};
    case 4:
        return {{NSMakeRect(a.x, a.y + w * as.height, as.width, v * as.height), NSMakeRect(0, 0, W, v * H)},
                {NSMakeRect(b.x, b.y, bs.width, w * bs.height), NSMakeRect(0, v * H, W, w * H)}};
    default:
        return {{n.a, NSMakeRect(0, 0, W, H)}, {n.b, NSMakeRect(0, 0, W, H)}};
    }
}

Rows wipeRows(int direction, const Numbers& n) {
    const float w = n.w;
    const float v = n.v();
    const auto [a, as] = n.a;
    const auto [b, bs] = n.b;
    const auto [p, ps] = n.fittedA();
    const auto [q, qs] = n.fittedB();
    switch (direction) {
    case 1:
        return {
            {NSMakeRect(a.x + w * as.width, a.y, v * as.width, as.height),
             NSMakeRect(p.x + w * ps.width, p.y, v * ps.width, ps.height)},
            {NSMakeRect(b.x, b.y, w * bs.width, bs.height), NSMakeRect(q.x, q.y, w * qs.width, qs.height)}};
    case 2:
        return {
            {NSMakeRect(a.x, a.y, v * as.width, as.height), NSMakeRect(p.x, p.y, v * ps.width, ps.height)},
            {NSMakeRect(b.x + v * bs.width, b.y, w * bs.width, bs.height),
             NSMakeRect(q.x + v * qs.width, q.y, w * qs.width, qs.height)}};
    case 3:
        return {
            {NSMakeRect(a.x, a.y, as.width, v * as.height), NSMakeRect(p.x, p.y, ps.width, v * ps.height)},
            {NSMakeRect(b.x, b.y + v * bs.height, bs.width, w * bs.height),
             NSMakeRect(q.x, q.y + v * qs.height, qs.width, w * qs.height)}};
    case 4:
        return {
            {NSMakeRect(a.x, a.y + w * as.height, as.width, v * as.height),
             NSMakeRect(p.x, p.y + w * ps.height, ps.width, v * ps.height)},
            {NSMakeRect(b.x, b.y, bs.width, w * bs.height), NSMakeRect(q.x, q.y, qs.width, w * qs.height)}};
    default:
        return {{n.a, n.fittedA()}, {n.b, n.fittedB()}};
    }
}

/// The moving picture's bounds, its fitted place and how far it has come.
Row slideRow(int direction, NSRect bounds, NSRect fitted, float s) {
    const float rest = 1 - s;
    const auto [m, ms] = bounds;
    const auto [r, rs] = fitted;
    switch (direction) {
    case 1:
        return {NSMakeRect(m.x, m.y, s * ms.width, ms.height),
                NSMakeRect(rest * rs.width, r.y, s * rs.width, rs.height)};
    case 2:
        return {NSMakeRect(m.x + rest * ms.width, m.y, s * ms.width, ms.height),
                NSMakeRect(r.x, r.y, s * rs.width, rs.height)};
    case 3:
        return {NSMakeRect(m.x, m.y + rest * ms.height, ms.width, s * ms.height),
                NSMakeRect(r.x, r.y, rs.width, s * rs.height)};
    case 4:
        return {NSMakeRect(m.x, m.y, ms.width, s * ms.height),
                NSMakeRect(r.x, rest * rs.height, rs.width, s * rs.height)};
    default:
        return {bounds, fitted};
    }
}

/// Where the panels of "from", the colour and "to" lie.
std::vector<NSRect> changerPanels(int direction, const Numbers& n) {
    const auto [W, H] = n.size;
    const float x = 2 * W * n.w;
    const float y = 2 * H * n.w;
    switch (direction) {
    case 1:
        return {NSMakeRect(x, 0, W, H), NSMakeRect(x - W, 0, W, H), NSMakeRect(x - 2 * W, 0, W, H)};
    case 2:
        return {NSMakeRect(-x, 0, W, H), NSMakeRect(W - x, 0, W, H), NSMakeRect(2 * W - x, 0, W, H)};
    case 3:
        return {NSMakeRect(0, -y, W, H), NSMakeRect(0, H - y, W, H), NSMakeRect(0, 2 * H - y, W, H)};
    case 4:
        return {NSMakeRect(0, y, W, H), NSMakeRect(0, y - H, W, H), NSMakeRect(0, y - 2 * H, W, H)};
    default:
        return {NSMakeRect(0, 0, W, H), NSMakeRect(0, 0, W, H), NSMakeRect(0, 0, W, H)};
    }
}

using Layers = std::vector<Layer>;

Layers pushLayers(const IMGImage* a, const IMGImage* b, int direction, const Numbers& n) {
    const auto [from, to] = pushRows(direction, n);
    return {{a, from.area, from.place, 0, true}, {b, to.area, to.place, 0, true}};
}

Layers wipeLayers(const IMGImage* a, const IMGImage* b, int direction, const Numbers& n) {
    const auto [from, to] = wipeRows(direction, n);
    return {{a, from.area, from.place, 1, true}, {b, to.area, to.place, 1, true}};
}

Layers slideLayers(const IMGImage* a, const IMGImage* b, int direction, int inOut, const Numbers& n) {
    if (inOut != 2) {
        const Row to = slideRow(direction, n.b, n.fittedB(), n.w);
        return {{a, n.a, n.fittedA(), 1, true}, {b, to.area, to.place, 1, true}};
    }
    const int opposites[] = {0, 2, 1, 4, 3};
    const int turned = direction >= 0 && direction <= 4 ? opposites[direction] : direction;
    const Row from = slideRow(turned, n.a, n.fittedA(), n.v());
    return {{b, n.b, n.fittedB(), 1, true}, {a, from.area, from.place, 1, true}};
}

Layers changerLayers(const IMGImage* a, const IMGImage* b, int direction, const Numbers& n) {
    const std::vector<NSRect> panels = changerPanels(direction, n);
    return {{a, n.a, fittedInto(panels[0], n.a), 0, false},
            {nullptr, {}, panels[1], 0, false},
            {b, n.b, fittedInto(panels[2], n.b), 0, false}};
}

/// Every transition here as one call: for "in or out" only slide has a use.
struct Kind {
    std::string name;
    int inOut;
    std::shared_ptr<Imaging::IMGCropAndScale> (*make)(const std::shared_ptr<IMGImage>& a,
                                                      const std::shared_ptr<IMGImage>& b, NSSize size,
                                                      int direction, int inOut, float weight);
    Layers (*layers)(const IMGImage* a, const IMGImage* b, int direction, int inOut, const Numbers& n);
};

std::vector<Kind> allKinds() {
    using Node = const std::shared_ptr<IMGImage>&;
    using Pointer = const IMGImage*;
    std::vector<Kind> kinds = {
        {"push", 0,
         [](Node a, Node b, NSSize size, int direction, int, float weight) {
             return IMGPushTransitionOp::transitionWithFromImage(a, b, size, direction, weight);
         },
         [](Pointer a, Pointer b, int direction, int, const Numbers& n) {
             return pushLayers(a, b, direction, n);
         }},
        {"wipe", 0,
         [](Node a, Node b, NSSize size, int direction, int, float weight) {
             return IMGWipeTransitionOp::transitionWithFromImage(a, b, size, direction, weight);
         },
         [](Pointer a, Pointer b, int direction, int, const Numbers& n) {
             return wipeLayers(a, b, direction, n);
         }},
        {"slide changer", 0,
         [](Node a, Node b, NSSize size, int direction, int, float weight) {
             return IMGSlideChangerTransitionOp::transitionWithFromImage(a, b, size, direction, sand, weight);
         },
         [](Pointer a, Pointer b, int direction, int, const Numbers& n) {
             return changerLayers(a, b, direction, n);
         }},
    };
    for (const int inOut : allInOuts) {
        kinds.push_back({"slide", inOut,
                         [](Node a, Node b, NSSize size, int direction, int way, float weight) {
                             return IMGSlideTransitionOp::transitionWithFromImage(a, b, size, direction, way,
                                                                                  weight);
                         },
                         slideLayers});
    }
    return kinds;
}

std::string inWords(const Kind& kind, int direction, float weight) {
    return kind.name + ", direction " + std::to_string(direction) + ", in/out " + std::to_string(kind.inOut) +
           ", weight " + std::to_string(weight);
}

Grid shown(const Film& film, const Kind& kind, int direction, float weight) {
    return shownIn(film, *kind.make(film.a, film.b, film.size(), direction, kind.inOut, weight));
}

Layers expectedLayers(const Film& film, const Kind& kind, int direction, float weight) {
    return kind.layers(film.a.get(), film.b.get(), direction, kind.inOut, film.numbers(weight));
}

} // namespace

TEST(DirectionalTransitions, ShowTheAreasOfTheirTablesAtTheirPlaces) {
    for (const Shapes& shapes : allShapes()) {
        const auto a = off(shapes.a);
        const auto b = off(shapes.b);
        for (const Kind& kind : allKinds()) {
            for (const int direction : allDirections) {
                for (const float weight : oddWeights) {
                    SCOPED_TRACE(inWords(kind, direction, weight));
                    const Numbers numbers{shapes.size, weight, a->imageBoundsRect(), b->imageBoundsRect()};
                    const auto made = kind.make(a, b, shapes.size, direction, kind.inOut, weight);
                    EXPECT_EQ(layersOf(*made, shapes.size),
                              kind.layers(a.get(), b.get(), direction, kind.inOut, numbers));
                }
            }
        }
    }
}

TEST(DirectionalTransitions, ShowThePixelsOfTheirLayersAllAlong) {
    const float weights[] = {0, 0.125F, 0.25F, 0.37F, 0.5F, 0.75F, 0.9F, 1};
    for (const Film& film : {fillingFilm(), fittedFilm()}) {
        for (const Kind& kind : allKinds()) {
            for (const int direction : {1, 2, 3, 4, 0, 5}) {
                for (const float weight : weights) {
                    SCOPED_TRACE(inWords(kind, direction, weight));
                    EXPECT_TRUE(showsLayers(shown(film, kind, direction, weight), film,
                                            expectedLayers(film, kind, direction, weight), sandPixel));
                }
            }
        }
    }
}

TEST(DirectionalTransitions, FillTheFrameFromFromAloneToToAlone) {
    const Film film = fillingFilm();
    const Grid from = gradientPicture(48, 32, reddish);
    const Grid to = gradientPicture(48, 32, bluish);
    for (const Kind& kind : allKinds()) {
        for (const int direction : {1, 2, 3, 4}) {
            SCOPED_TRACE(inWords(kind, direction, -1));
            EXPECT_TRUE(Pixels::areAlike(shown(film, kind, direction, 0), from));
            EXPECT_TRUE(Pixels::areAlike(shown(film, kind, direction, 1), to));
        }
    }
}

TEST(DirectionalTransitions, WithoutMovementShowToOverFromAtAnyWeight) {
    const Film film = fillingFilm();
    const Grid to = gradientPicture(48, 32, bluish);
    const Grid from = gradientPicture(48, 32, reddish);
    for (const Kind& kind : allKinds()) {
        for (const float weight : {0.F, 0.4F, 1.F}) {
            SCOPED_TRACE(inWords(kind, 0, weight));
            // Out, it is "from" that lies above.
            const Grid& upper = kind.name == "slide" && kind.inOut == 2 ? from : to;
            EXPECT_TRUE(Pixels::areAlike(shown(film, kind, 0, weight), upper));
            EXPECT_TRUE(Pixels::areAlike(shown(film, kind, 9, weight), upper));
        }
    }
}

// A frame of 48 x 32 moves by less than a pixel from one of 60 frames to the next. Every sample of the
// pictures changes by 2 over a pixel, and where a boundary passes it changes by 180 at most (alpha: 255).
TEST(DirectionalTransitions, DoNotJumpBetweenNeighbouringFrames) {
    for (const Film& film : {fillingFilm(), fittedFilm()}) {
        for (const Kind& kind : allKinds()) {
            for (const int direction : {1, 2, 3, 4}) {
                SCOPED_TRACE(inWords(kind, direction, -1));
                // The changer's strip goes twice as fast and has two boundaries; fitted pictures have two
                // more.
                const double speed = kind.name == "slide changer" ? 2 : 1;
                const double boundaries = speed == 2 ? 4 : 2;
                const double inside = 2 * speed * film.width / filmFrames;
                const double swept = 255 * boundaries * speed / filmFrames;
                EXPECT_LE(largestStep(film, filmFrames,
                                      [&](float weight) {
                                          return kind.make(film.a, film.b, film.size(), direction, kind.inOut,
                                                           weight);
                                      }),
                          inside + swept + 1);
            }
        }
    }
}

TEST(DirectionalTransitions, ShowTheSameRetainedAndWalked) {
    const Film film = fillingFilm();
    for (const Kind& kind : allKinds()) {
        for (const int direction : {1, 4}) {
            const auto made = kind.make(film.a, film.b, film.size(), direction, kind.inOut, 0.25F);
            const auto retained = drawnOn(48, 32, [&] { made->drawInRect(NSMakeRect(0, 0, 48, 32)); });
            EXPECT_TRUE(Pixels::areAlike(retained, shownIn(film, *made))) << inWords(kind, direction, 0.25F);
        }
    }
}

TEST(DirectionalTransitions, RefuseAPictureThatIsNotThere) {
    const auto some = off(NSMakeRect(1, 2, 3, 4));
    for (const Kind& kind : allKinds()) {
        EXPECT_THROW(kind.make(nullptr, some, NSMakeSize(4, 4), 1, kind.inOut, 0.5F), NSException);
        EXPECT_THROW(kind.make(some, nullptr, NSMakeSize(4, 4), 1, kind.inOut, 0.5F), NSException);
    }
}

TEST(DirectionalTransitions, DrawWhateverTheWeightIs) {
    const Film film = fillingFilm();
    const float infinity = std::numeric_limits<float>::infinity();
    for (const Kind& kind : allKinds()) {
        for (const int direction : {1, 2, 3, 4}) {
            for (const float weight : {infinity, -infinity, std::numeric_limits<float>::quiet_NaN(), 1e30F}) {
                SCOPED_TRACE(inWords(kind, direction, weight));
                EXPECT_NO_THROW(shown(film, kind, direction, weight));
            }
        }
    }
}

TEST(DirectionalTransitions, ShowEmptyPicturesAsNothing) {
    const auto empty = off(NSMakeRect(3, 4, 0, 0));
    for (const Kind& kind : allKinds()) {
        const auto made = kind.make(empty, empty, NSMakeSize(8, 6), 1, kind.inOut, 0.5F);
        const Grid drawn = walked(*made, 8, 6);
        if (kind.name == "slide changer") continue; // its panel fills the frame then
        EXPECT_TRUE(Pixels::areAlike(drawn, Grid(8, 6))) << kind.name;
    }
}

TEST(PushTransition, ShowsTheHalvesSideBySideHalfWay) {
    const Film film = fillingFilm();
    const Grid from = gradientPicture(48, 32, reddish);
    const Grid to = gradientPicture(48, 32, bluish);
    Grid expected(48, 32);
    paint(
        expected, from,
        [](Spot p) {
            return Spot{p.x - 24, p.y};
        },
        [](Spot p) { return p.x > 24; });
    paint(
        expected, to,
        [](Spot p) {
            return Spot{p.x + 24, p.y};
        },
        [](Spot p) { return p.x < 24; });
    const auto made = IMGPushTransitionOp::transitionWithFromImage(film.a, film.b, film.size(), 1, 0.5F);
    EXPECT_TRUE(Pixels::areAlike(shownIn(film, *made), expected));
}

TEST(PushTransition, MovesBothPicturesTheWayThatTheDirectionSays) {
    const Film film = fillingFilm();
    const Grid from = gradientPicture(48, 32, reddish);
    const Grid to = gradientPicture(48, 32, bluish);
    // By direction: where a quarter of the way takes "from", and where "to" comes from.
    const std::map<int, std::pair<Spot, Spot>> moves = {
        {1, {{-12, 0}, {36, 0}}}, {2, {{12, 0}, {-36, 0}}}, {3, {{0, 8}, {0, -24}}}, {4, {{0, -8}, {0, 24}}}};
    for (const auto& [direction, move] : moves) {
        Grid expected(48, 32);
        const auto by = [](Spot offset) {
            return [offset](Spot p) { return Spot{p.x + offset.x, p.y + offset.y}; };
        };
        paint(expected, from, by(move.first));
        paint(expected, to, by(move.second));
        const auto made =
            IMGPushTransitionOp::transitionWithFromImage(film.a, film.b, film.size(), direction, 0.25F);
        EXPECT_TRUE(Pixels::areAlike(shownIn(film, *made), expected)) << direction;
    }
}

TEST(PushTransition, HasTheNumbersOfAnExample) {
    const auto a = off(NSMakeRect(10, 20, 40, 80));
    const auto b = off(NSMakeRect(-8, 4, 16, 32));
    const NSSize size = NSMakeSize(200, 100);
    const auto left = layersOf(*IMGPushTransitionOp::transitionWithFromImage(a, b, size, 1, 0.25F), size);
    EXPECT_EQ(left[0], (Layer{a.get(), NSMakeRect(20, 20, 30, 80), NSMakeRect(0, 0, 150, 100), 0, true}));
    EXPECT_EQ(left[1], (Layer{b.get(), NSMakeRect(-8, 4, 4, 32), NSMakeRect(150, 0, 50, 100), 0, true}));
    const auto up = layersOf(*IMGPushTransitionOp::transitionWithFromImage(a, b, size, 3, 0.25F), size);
    EXPECT_EQ(up[0], (Layer{a.get(), NSMakeRect(10, 20, 40, 60), NSMakeRect(0, 25, 200, 75), 0, true}));
    EXPECT_EQ(up[1], (Layer{b.get(), NSMakeRect(-8, 28, 16, 8), NSMakeRect(0, 0, 200, 25), 0, true}));
}

TEST(SlideTransition, HasTheNumbersOfAnExample) {
    const auto a = off(NSMakeRect(10, 20, 40, 80));
    const auto b = off(NSMakeRect(-8, 4, 16, 32));
    const NSSize size = NSMakeSize(200, 100); // both pictures are 50 wide at 75 there
    const NSRect fitted = NSMakeRect(75, 0, 50, 100);
    const auto slide = [&](int direction, int inOut) {
        return layersOf(*IMGSlideTransitionOp::transitionWithFromImage(a, b, size, direction, inOut, 0.25F),
                        size);
    };
    EXPECT_EQ(slide(1, 1)[0], (Layer{a.get(), NSMakeRect(10, 20, 40, 80), fitted, 1, true}));
    EXPECT_EQ(slide(1, 1)[1],
              (Layer{b.get(), NSMakeRect(-8, 4, 4, 32), NSMakeRect(37.5F, 0, 12.5F, 100), 1, true}))
        << "left: counted from the frame's edge";
    EXPECT_EQ(slide(2, 1)[1],
              (Layer{b.get(), NSMakeRect(4, 4, 4, 32), NSMakeRect(75, 0, 12.5F, 100), 1, true}))
        << "right: counted from the fitted place";
    EXPECT_EQ(slide(3, 2)[0], (Layer{b.get(), NSMakeRect(-8, 4, 16, 32), fitted, 1, true}));
    EXPECT_EQ(slide(3, 2)[1],
              (Layer{a.get(), NSMakeRect(10, 20, 40, 60), NSMakeRect(75, 25, 50, 75), 1, true}))
        << "up and out is down and in, backwards";
}

TEST(SlideTransition, OutIsTheOppositeWayInRunBackwards) {
    for (const Film& film : {fillingFilm(), fittedFilm()}) {
        for (const auto& [direction, opposite] : {std::pair{1, 2}, {2, 1}, {3, 4}, {4, 3}, {0, 0}, {7, 7}}) {
            for (const float weight : {0.F, 0.25F, 0.5F, 0.75F, 1.F}) {
                const auto out = IMGSlideTransitionOp::transitionWithFromImage(film.a, film.b, film.size(),
                                                                               direction, 2, weight);
                const auto in = IMGSlideTransitionOp::transitionWithFromImage(film.b, film.a, film.size(),
                                                                              opposite, 1, 1 - weight);
                EXPECT_EQ(layersOf(*out, film.size()), layersOf(*in, film.size())) << direction;
            }
        }
    }
}

TEST(SlideTransition, OutToTheLeftTakesFromOffOverToWhichStays) {
    const Film film = fillingFilm();
    Grid expected = gradientPicture(48, 32, bluish);
    paint(expected, gradientPicture(48, 32, reddish), [](Spot p) { return Spot{p.x - 12, p.y}; });
    const auto made = IMGSlideTransitionOp::transitionWithFromImage(film.a, film.b, film.size(), 1, 2, 0.25F);
    EXPECT_TRUE(Pixels::areAlike(shownIn(film, *made), expected));
}

TEST(SlideTransition, LeavesFromVisibleWhereToDoesNotCoverIt) {
    // "from" stands in the middle of the frame, 24 wide; "to" is as wide as the frame, 16 high.
    const Film film = fittedFilm();
    Grid expected(48, 32);
    paint(expected, gradientPicture(24, 32, reddish), [](Spot p) { return Spot{p.x + 12, p.y}; });
    paint(expected, gradientPicture(48, 16, bluish), [](Spot p) { return Spot{p.x, p.y + 8}; });
    const auto made = IMGSlideTransitionOp::transitionWithFromImage(film.a, film.b, film.size(), 2, 1, 1);
    EXPECT_TRUE(Pixels::areAlike(shownIn(film, *made), expected));
}

TEST(SlideTransition, EndsLeftwardAndDownwardAtTheFramesEdge) {
    const Film film = fittedFilm();
    Grid atTheLeft = Grid(48, 32);
    paint(atTheLeft, gradientPicture(48, 16, bluish), [](Spot p) { return Spot{p.x, p.y + 8}; });
    paint(atTheLeft, gradientPicture(24, 32, reddish), [](Spot p) { return Spot{p.x, p.y}; });
    const auto left = IMGSlideTransitionOp::transitionWithFromImage(film.b, film.a, film.size(), 1, 1, 1);
    EXPECT_TRUE(Pixels::areAlike(shownIn(film, *left), atTheLeft));
    Grid atTheBottom = Grid(48, 32);
    paint(atTheBottom, gradientPicture(24, 32, reddish), [](Spot p) { return Spot{p.x + 12, p.y}; });
    paint(atTheBottom, gradientPicture(48, 16, bluish), [](Spot p) { return Spot{p.x, p.y}; });
    const auto down = IMGSlideTransitionOp::transitionWithFromImage(film.a, film.b, film.size(), 4, 1, 1);
    EXPECT_TRUE(Pixels::areAlike(shownIn(film, *down), atTheBottom));
}

TEST(WipeTransition, UncoversToFromTheEdgeWithoutMovingAnything) {
    const Film film = fittedFilm();
    const Grid from = gradientPicture(24, 32, reddish);
    const Grid to = gradientPicture(48, 16, bluish);
    // By direction: which quarter of itself each picture shows ("to") or has lost ("from"), a point of it
    // being given as shares of its width and height.
    const std::map<int, std::function<bool(double, double)>> gone = {
        {1, [](double x, double) { return x < 0.25; }},
        {2, [](double x, double) { return x > 0.75; }},
        {3, [](double, double y) { return y > 0.75; }},
        {4, [](double, double y) { return y < 0.25; }}};
    for (const auto& [direction, isGone] : gone) {
        Grid expected(48, 32);
        const auto& hidden = isGone;
        paint(
            expected, from,
            [](Spot p) {
                return Spot{p.x + 12, p.y};
            },
            [&](Spot p) { return !hidden(p.x / 24, p.y / 32); });
        paint(
            expected, to,
            [](Spot p) {
                return Spot{p.x, p.y + 8};
            },
            [&](Spot p) { return hidden(p.x / 48, p.y / 16); });
        const auto made =
            IMGWipeTransitionOp::transitionWithFromImage(film.a, film.b, film.size(), direction, 0.25F);
        EXPECT_TRUE(Pixels::areAlike(shownIn(film, *made), expected)) << direction;
    }
}

TEST(SlideChangerTransition, ShowsTheColourAloneHalfWay) {
    const Film film = fillingFilm();
    for (const int direction : {1, 2, 3, 4}) {
        const auto made = IMGSlideChangerTransitionOp::transitionWithFromImage(film.a, film.b, film.size(),
                                                                               direction, sand, 0.5F);
        EXPECT_TRUE(Pixels::areAlike(shownIn(film, *made), Grid(48, 32, Pixels::rounded(sandPixel))))
            << direction;
    }
}

TEST(SlideChangerTransition, MovesItsStripTheWayThatTheDirectionSays) {
    const Film film = fillingFilm();
    const Grid from = gradientPicture(48, 32, reddish);
    const Grid to = gradientPicture(48, 32, bluish);
    // At an eighth the strip has moved by a quarter of the frame.
    const std::map<int, Spot> moves = {{1, {12, 0}}, {2, {-12, 0}}, {3, {0, -8}}, {4, {0, 8}}};
    for (const auto& [direction, move] : moves) {
        const Spot offset = move;
        Grid first(48, 32, Pixels::rounded(sandPixel));
        paint(first, from, [&](Spot p) { return Spot{p.x + offset.x, p.y + offset.y}; });
        Grid last(48, 32, Pixels::rounded(sandPixel));
        paint(last, to, [&](Spot p) { return Spot{p.x - offset.x, p.y - offset.y}; });
        const auto at = [&, way = direction](float weight) {
            return shownIn(film, *IMGSlideChangerTransitionOp::transitionWithFromImage(
                                     film.a, film.b, film.size(), way, sand, weight));
        };
        EXPECT_TRUE(Pixels::areAlike(at(0.125F), first)) << direction;
        EXPECT_TRUE(Pixels::areAlike(at(0.875F), last)) << direction;
    }
}

TEST(SlideChangerTransition, FitsPicturesIntoTheirPanels) {
    const Film film = fittedFilm();
    Grid expected(48, 32);
    paint(expected, gradientPicture(24, 32, reddish), [](Spot p) { return Spot{p.x + 12 - 24, p.y}; });
    paint(expected, Grid(48, 32, Pixels::rounded(sandPixel)), [](Spot p) { return Spot{p.x + 24, p.y}; });
    const auto made =
        IMGSlideChangerTransitionOp::transitionWithFromImage(film.a, film.b, film.size(), 2, sand, 0.25F);
    EXPECT_TRUE(Pixels::areAlike(shownIn(film, *made), expected));
}

TEST(SlideChangerTransition, TakesTheColourWithoutItsAlpha) {
    const Film film = fillingFilm();
    const auto made = IMGSlideChangerTransitionOp::transitionWithFromImage(
        film.a, film.b, film.size(), 1, sand.colorWithAlphaComponent(0.25F), 0.5F);
    EXPECT_TRUE(Pixels::areAlike(shownIn(film, *made), Grid(48, 32, Pixels::rounded(sandPixel))));
}
