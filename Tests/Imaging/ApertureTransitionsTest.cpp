#include "Imaging/ApertureTransitions.h"

#include "Tests/Imaging/TransitionFixtures.h"

#include <gtest/gtest.h>

using namespace ImagingTests;
using Imaging::IMGColorFadeTransitionOp;
using Imaging::IMGConstantImageGenerator;
using Imaging::IMGDissolveTransitionOp;
using Imaging::IMGIrisTransitionOp;
using Imaging::IMGTranslationOp;
using Imaging::IMGZoomTransitionOp;
using Imaging::Platform::NSColor;

namespace {

const NSColor sand = NSColor::colorWithCalibratedRed(0.8F, 0.6F, 0.4F, 1);
constexpr Pixels::Color sandPixel{0.8, 0.6, 0.4, 1};

using Layers = std::vector<Layer>;

/// A rectangle k times as large around its middle: x = (X + W/2) - kW/2, the sum in the brackets first.
NSRect aroundTheMiddle(NSRect r, float k) {
    const float middleX = r.origin.x + 0.5F * r.size.width;
    const float middleY = r.origin.y + 0.5F * r.size.height;
    const float width = k * r.size.width;
    const float height = k * r.size.height;
    return NSMakeRect(middleX - width / 2, middleY - height / 2, width, height);
}

/// A zoom's layers, or with `cutsArea` an iris's.
Layers expectedLayers(const IMGImage* a, const IMGImage* b, bool cutsArea, int inOut, const Numbers& n) {
    Layer from{a, n.a, n.fittedA(), 1, true};
    Layer to{b, n.b, n.fittedB(), 1, true};
    if (inOut == 1) {
        to.place = aroundTheMiddle(to.place, n.w);
        if (cutsArea) to.area = aroundTheMiddle(to.area, n.w);
        return {from, to};
    }
    if (inOut == 2) {
        from.place = aroundTheMiddle(from.place, n.v());
        if (cutsArea) from.area = aroundTheMiddle(from.area, n.v());
    }
    return {to, from};
}

std::shared_ptr<Imaging::IMGCropAndScale> aperture(bool cutsArea, const std::shared_ptr<IMGImage>& a,
                                                   const std::shared_ptr<IMGImage>& b, NSSize size, int inOut,
                                                   float weight) {
    return cutsArea ? IMGIrisTransitionOp::transitionWithFromImage(a, b, size, inOut, weight)
                    : IMGZoomTransitionOp::transitionWithFromImage(a, b, size, inOut, weight);
}

std::string inWords(bool cutsArea, int inOut, float weight) {
    return std::string(cutsArea ? "iris" : "zoom") + ", in/out " + std::to_string(inOut) + ", weight " +
           std::to_string(weight);
}

std::shared_ptr<IMGDissolveTransitionOp> fade(const Film& film, float balance, float weight) {
    return IMGColorFadeTransitionOp::transitionWithFromImage(film.a, film.b, film.size(), sand, balance,
                                                             weight);
}

/// The fractions that a dissolve draws its two sources with.
std::pair<float, float> fractionsOf(float balance, float weight) {
    const auto a = leaf(NSMakeRect(3, 4, 5, 6));
    const auto b = leaf(NSMakeRect(-7, 2, 9, 8));
    const auto made =
        IMGColorFadeTransitionOp::transitionWithFromImage(a, b, NSMakeSize(10, 10), sand, balance, weight);
    Imaging::Platform::NSGraphicsContext::setCurrentContext(nullptr); // the colour has nowhere to be drawn
    made->drawImage(nullptr, TransformAndClipList(), 2, 1, nullptr);
    if (!a->draws.empty()) return {a->draws.at(0).fraction, 1 - a->draws.at(0).fraction};
    return {1 - b->draws.at(0).fraction, b->draws.at(0).fraction};
}

/// The layer of colour that a fade is made with, as the node below its translation.
std::shared_ptr<IMGTranslationOp> colorLayerOf(const IMGDissolveTransitionOp& fade, std::size_t index) {
    const auto move = std::dynamic_pointer_cast<IMGTranslationOp>(fade.sourceAtIndex(index));
    if (move == nullptr ||
        std::dynamic_pointer_cast<IMGConstantImageGenerator>(move->sourceAtIndex(0)) == nullptr) {
        throw std::runtime_error("the source is not a layer of colour");
    }
    return move;
}

/// A share of a picture where it lies, and a share of the colour.
Grid mixed(const Film& film, const IMGImage* picture, double pictureShare, double colorShare) {
    const NSRect bounds = picture == film.a.get() ? film.boundsA : film.boundsB;
    Grid result(static_cast<int>(bounds.size.width), static_cast<int>(bounds.size.height));
    for (int y = 0; y < result.height(); ++y) {
        for (int x = 0; x < result.width(); ++x) {
            const double up = result.height() - y - 0.5;
            Pixels::Color color = film.colorOf(picture, bounds.origin.x + x + 0.5, bounds.origin.y + up);
            for (std::size_t i = 0; i < 4; ++i)
                color[i] = color[i] * pictureShare + sandPixel[i] * colorShare;
            result.at(x, y) = Pixels::rounded(color);
        }
    }
    return result;
}

/// What a fade shows in its picture's own bounds.
Grid shownAt(NSRect bounds, IMGImage& node) {
    return walked(node, static_cast<int>(bounds.size.width), static_cast<int>(bounds.size.height),
                  moved(-bounds.origin.x, -bounds.origin.y));
}

} // namespace

TEST(ApertureTransitions, ShowTheirLayersInTheirOrder) {
    for (const Shapes& shapes : allShapes()) {
        const auto a = leaf(shapes.a);
        const auto b = leaf(shapes.b);
        for (const bool cutsArea : {false, true}) {
            for (const int inOut : allInOuts) {
                for (const float weight : oddWeights) {
                    SCOPED_TRACE(inWords(cutsArea, inOut, weight));
                    const Numbers numbers{shapes.size, weight, a->imageBoundsRect(), b->imageBoundsRect()};
                    EXPECT_EQ(layersOf(*aperture(cutsArea, a, b, shapes.size, inOut, weight), shapes.size),
                              expectedLayers(a.get(), b.get(), cutsArea, inOut, numbers));
                }
            }
        }
    }
}

TEST(ApertureTransitions, ShowThePixelsOfTheirLayersAllAlong) {
    for (const Film& film : {fillingFilm(), fittedFilm()}) {
        for (const bool cutsArea : {false, true}) {
            for (const int inOut : {1, 2, 0, 5}) {
                // Small pictures that are much reduced are sampled in ways that a plain painter does not
                // know.
                for (const float weight : {0.F, 0.25F, 0.37F, 0.5F, 0.75F, 1.F}) {
                    SCOPED_TRACE(inWords(cutsArea, inOut, weight));
                    EXPECT_TRUE(showsLayers(
                        shownIn(film, *aperture(cutsArea, film.a, film.b, film.size(), inOut, weight)), film,
                        expectedLayers(film.a.get(), film.b.get(), cutsArea, inOut, film.numbers(weight))));
                }
            }
        }
    }
}

TEST(ApertureTransitions, FillTheFrameFromFromAloneToToAlone) {
    const Film film = fillingFilm();
    for (const bool cutsArea : {false, true}) {
        for (const int inOut : {1, 2}) {
            const auto at = [&](float weight) {
                return shownIn(film, *aperture(cutsArea, film.a, film.b, film.size(), inOut, weight));
            };
            EXPECT_TRUE(Pixels::areAlike(at(0), gradientPicture(48, 32, reddish)))
                << inWords(cutsArea, inOut, 0);
            EXPECT_TRUE(Pixels::areAlike(at(1), gradientPicture(48, 32, bluish)))
                << inWords(cutsArea, inOut, 1);
        }
    }
}

TEST(ApertureTransitions, WithoutInOrOutShowFromOverToAtAnyWeight) {
    const Film film = fittedFilm();
    Grid expected(48, 32);
    paint(expected, gradientPicture(48, 16, bluish), [](Spot p) { return Spot{p.x, p.y + 8}; });
    paint(expected, gradientPicture(24, 32, reddish), [](Spot p) { return Spot{p.x + 12, p.y}; });
    for (const bool cutsArea : {false, true}) {
        for (const float weight : {0.F, 0.3F, 1.F}) {
            EXPECT_TRUE(Pixels::areAlike(
                shownIn(film, *aperture(cutsArea, film.a, film.b, film.size(), 0, weight)), expected));
        }
    }
}

// From one of 60 frames to the next less than a sixtieth of the frame changes sides twice over (in width and
// in height), by 255 at most, and a zoomed picture moves by less than a pixel.
TEST(ApertureTransitions, DoNotJumpBetweenNeighbouringFrames) {
    for (const Film& film : {fillingFilm(), fittedFilm()}) {
        for (const bool cutsArea : {false, true}) {
            for (const int inOut : {1, 2}) {
                const double bound = 2.0 * 255 / filmFrames + 2.0 * film.width / filmFrames + 1;
                EXPECT_LE(largestStep(film, filmFrames,
                                      [&](float weight) {
                                          return aperture(cutsArea, film.a, film.b, film.size(), inOut,
                                                          weight);
                                      }),
                          bound)
                    << inWords(cutsArea, inOut, -1);
            }
        }
    }
}

TEST(ApertureTransitions, RefuseAPictureThatIsNotThere) {
    const auto some = leaf(NSMakeRect(1, 2, 3, 4));
    const NSSize size = NSMakeSize(4, 4);
    for (const bool cutsArea : {false, true}) {
        EXPECT_THROW(aperture(cutsArea, nullptr, some, size, 1, 0.5F), NSException);
        EXPECT_THROW(aperture(cutsArea, some, nullptr, size, 1, 0.5F), NSException);
    }
    for (const float weight : {0.25F, 0.75F}) {
        EXPECT_THROW(IMGColorFadeTransitionOp::transitionWithFromImage(nullptr, some, size, sand, 0, weight),
                     NSException);
        EXPECT_THROW(IMGColorFadeTransitionOp::transitionWithFromImage(some, nullptr, size, sand, 0, weight),
                     NSException);
    }
}

TEST(ApertureTransitions, DrawWhateverTheWeightIs) {
    const Film film = fillingFilm();
    const float infinity = std::numeric_limits<float>::infinity();
    for (const float weight : {infinity, -infinity, std::numeric_limits<float>::quiet_NaN(), 1e30F, -1.F}) {
        for (const int inOut : {1, 2}) {
            for (const bool cutsArea : {false, true}) {
                EXPECT_NO_THROW(
                    shownIn(film, *aperture(cutsArea, film.a, film.b, film.size(), inOut, weight)));
            }
        }
        for (const float balance : {-1.F, 0.F, 1.F, infinity}) {
            EXPECT_NO_THROW(shownIn(film, *fade(film, balance, weight)));
        }
    }
}

TEST(ZoomTransition, HasTheNumbersOfAnExample) {
    const auto a = leaf(NSMakeRect(10, 20, 40, 80));
    const auto b = leaf(NSMakeRect(-8, 4, 64, 32));
    const NSSize size = NSMakeSize(100, 100);
    const auto in = layersOf(*IMGZoomTransitionOp::transitionWithFromImage(a, b, size, 1, 0.25F), size);
    EXPECT_EQ(in[0], (Layer{a.get(), NSMakeRect(10, 20, 40, 80), NSMakeRect(25, 0, 50, 100), 1, true}));
    EXPECT_EQ(in[1],
              (Layer{b.get(), NSMakeRect(-8, 4, 64, 32), NSMakeRect(37.5F, 43.75F, 25, 12.5F), 1, true}));
    const auto out = layersOf(*IMGZoomTransitionOp::transitionWithFromImage(a, b, size, 2, 0.25F), size);
    EXPECT_EQ(out[0], (Layer{b.get(), NSMakeRect(-8, 4, 64, 32), NSMakeRect(0, 25, 100, 50), 1, true}));
    EXPECT_EQ(out[1],
              (Layer{a.get(), NSMakeRect(10, 20, 40, 80), NSMakeRect(31.25F, 12.5F, 37.5F, 75), 1, true}));
}

TEST(ZoomTransition, ShowsTheWholePictureInTheMiddle) {
    // Four fields of one colour each: reduced to a half they are still four fields.
    Grid fields(32, 16);
    const Rgba colors[] = {Pixels::red, Pixels::green, Pixels::blue, Pixels::white};
    for (int y = 0; y < 16; ++y) {
        for (int x = 0; x < 32; ++x) fields.at(x, y) = colors[x / 16 + 2 * (y / 8)];
    }
    const auto made = IMGZoomTransitionOp::transitionWithFromImage(
        pictureAt(Grid(32, 16, Pixels::black), 5, -3), pictureAt(fields, -9, 2), NSMakeSize(32, 16), 1, 0.5F);
    const Grid drawn = walked(*made, 32, 16);
    for (int y = 0; y < 16; ++y) {
        for (int x = 0; x < 32; ++x) {
            const bool nearASeam = x == 15 || x == 16 || y == 7 || y == 8;
            if (nearASeam) continue;
            const bool inside = x >= 8 && x < 24 && y >= 4 && y < 12;
            EXPECT_EQ(drawn.at(x, y), inside ? colors[x / 16 + 2 * (y / 8)] : Pixels::black)
                << x << ", " << y;
        }
    }
}

TEST(IrisTransition, HasTheNumbersOfAnExample) {
    const auto a = leaf(NSMakeRect(10, 20, 40, 80));
    const auto b = leaf(NSMakeRect(-8, 4, 64, 32));
    const NSSize size = NSMakeSize(100, 100);
    const auto in = layersOf(*IMGIrisTransitionOp::transitionWithFromImage(a, b, size, 1, 0.25F), size);
    EXPECT_EQ(in[1],
              (Layer{b.get(), NSMakeRect(16, 16, 16, 8), NSMakeRect(37.5F, 43.75F, 25, 12.5F), 1, true}));
    const auto out = layersOf(*IMGIrisTransitionOp::transitionWithFromImage(a, b, size, 2, 0.25F), size);
    EXPECT_EQ(out[0], (Layer{b.get(), NSMakeRect(-8, 4, 64, 32), NSMakeRect(0, 25, 100, 50), 1, true}));
    EXPECT_EQ(out[1],
              (Layer{a.get(), NSMakeRect(15, 30, 30, 60), NSMakeRect(31.25F, 12.5F, 37.5F, 75), 1, true}));
}

TEST(IrisTransition, ShowsTheMiddleUnscaledHalfWay) {
    const Film film = fillingFilm();
    Grid expected = gradientPicture(48, 32, reddish);
    paint(
        expected, gradientPicture(48, 32, bluish), [](Spot p) { return p; },
        [](Spot p) { return p.x > 12 && p.x < 36 && p.y > 8 && p.y < 24; });
    const auto in = IMGIrisTransitionOp::transitionWithFromImage(film.a, film.b, film.size(), 1, 0.5F);
    EXPECT_TRUE(Pixels::areAlike(shownIn(film, *in), expected));
    const auto out = IMGIrisTransitionOp::transitionWithFromImage(film.b, film.a, film.size(), 2, 0.5F);
    EXPECT_TRUE(Pixels::areAlike(shownIn(film, *out), expected)) << "the same aperture closing";
}

TEST(ColorFadeTransition, IsADissolveOfAPictureAndALayerOverItsBounds) {
    const auto a = leaf(NSMakeRect(7, -15, 24.5F, 32));
    const auto b = leaf(NSMakeRect(-13, 11, 48, 16));
    const auto make = [&](float weight) {
        return IMGColorFadeTransitionOp::transitionWithFromImage(a, b, NSMakeSize(99, 99), sand, 0, weight);
    };
    const auto first = make(0.25F);
    ASSERT_EQ(first->sources().size(), 2U);
    EXPECT_EQ(first->sourceAtIndex(0), a);
    EXPECT_TRUE(isPoint(colorLayerOf(*first, 1)->translation(), 7, -15));
    EXPECT_TRUE(isSize(colorLayerOf(*first, 1)->sourceAtIndex(0)->imageSize(), 24.5F, 32));
    const auto second = make(0.75F);
    ASSERT_EQ(second->sources().size(), 2U);
    EXPECT_TRUE(isPoint(colorLayerOf(*second, 0)->translation(), -13, 11));
    EXPECT_TRUE(isSize(colorLayerOf(*second, 0)->sourceAtIndex(0)->imageSize(), 48, 16));
    EXPECT_EQ(second->sourceAtIndex(1), b);
}

TEST(ColorFadeTransition, HasItsMomentOfColourWhereTheBalanceSays) {
    // balance, weight, and the share of the picture in the picture-and-colour pair
    struct Case {
        float balance;
        float weight;
        float picture;
        bool secondPhase;
    };
    const Case cases[] = {{0, 0, 1, false},         {0, 0.25F, 0.5F, false},
                          {0, 0.5F, 0, true},       {0, 0.75F, 0.5F, true},
                          {0, 1, 1, true},          {-1, 0, 0, true},
                          {-1, 0.25F, 0.25F, true}, {-1, 1, 1, true},
                          {1, 0, 1, false},         {1, 0.25F, 0.75F, false},
                          {1, 0.75F, 0.25F, false}, {1, 1, 1, true},
                          {0.5F, 0.75F, 0, true},   {0.5F, 0.375F, 0.5F, false},
                          {-0.5F, 0.25F, 0, true},  {0.5F, 0.875F, 0.5F, true}};
    for (const Case& c : cases) {
        SCOPED_TRACE(testing::Message() << "balance " << c.balance << ", weight " << c.weight);
        const auto [first, second] = fractionsOf(c.balance, c.weight);
        EXPECT_EQ(c.secondPhase ? second : first, c.picture);
        const auto a = leaf(NSMakeRect(3, 4, 5, 6));
        const auto made = IMGColorFadeTransitionOp::transitionWithFromImage(
            a, leaf(NSMakeRect(0, 0, 1, 1)), NSMakeSize(10, 10), sand, c.balance, c.weight);
        EXPECT_EQ(made->sourceAtIndex(0) != a, c.secondPhase);
    }
}

TEST(ColorFadeTransition, FindsItsMomentOfColourNextToItsStart) {
    const float tiny = std::nextafter(-1.F, 0.F); // -1 + 2^-24
    const float split = std::ldexp(1.F, -25);
    const auto a = leaf(NSMakeRect(3, 4, 5, 6));
    const auto phase = [&](float weight) {
        const auto made = IMGColorFadeTransitionOp::transitionWithFromImage(
            a, leaf(NSMakeRect(0, 0, 1, 1)), NSMakeSize(10, 10), sand, tiny, weight);
        return made->sourceAtIndex(0) == a ? 1 : 2;
    };
    EXPECT_EQ(phase(std::nextafter(split, 0.F)), 1);
    EXPECT_EQ(phase(split), 2);
}

TEST(ColorFadeTransition, PassesWeightsBeyondTheEndsThrough) {
    EXPECT_EQ(fractionsOf(0, -0.25F).first, 1.5F);
    EXPECT_EQ(fractionsOf(0, 1.25F).second, 1.5F);
    EXPECT_EQ(fractionsOf(3, 0.5F).first, 0.75F) << "a balance beyond 1 as well";
}

TEST(ColorFadeTransition, ShowsThePicturesMixedWithTheColour) {
    const Film film = fittedFilm();
    const auto first = [&](float weight) { return shownAt(film.boundsA, *fade(film, 0, weight)); };
    const auto second = [&](float weight) { return shownAt(film.boundsB, *fade(film, 0, weight)); };
    // The colour is painted over what there is of "from", not added to it, and takes its share of that too.
    EXPECT_TRUE(Pixels::areAlike(first(0), mixed(film, film.a.get(), 1, 0)));
    EXPECT_TRUE(Pixels::areAlike(first(0.125F), mixed(film, film.a.get(), 0.75 * 0.75, 0.25), 2));
    EXPECT_TRUE(Pixels::areAlike(first(0.25F), mixed(film, film.a.get(), 0.5 * 0.5, 0.5), 2));
    // "to" is added to the colour.
    EXPECT_TRUE(Pixels::areAlike(second(0.5F), mixed(film, film.b.get(), 0, 1)));
    EXPECT_TRUE(Pixels::areAlike(second(0.625F), mixed(film, film.b.get(), 0.25, 0.75), 2));
    EXPECT_TRUE(Pixels::areAlike(second(0.75F), mixed(film, film.b.get(), 0.5, 0.5), 2));
    EXPECT_TRUE(Pixels::areAlike(second(1), mixed(film, film.b.get(), 1, 0)));
}

TEST(ColorFadeTransition, ColoursThePictureAndNotTheFrame) {
    const Film film{NSMakeRect(7, 5, 24, 16), NSMakeRect(3, 11, 30, 12), 48, 32};
    Grid expected(48, 32);
    paint(expected, Grid(30, 12, Pixels::rounded(sandPixel)), [](Spot p) { return Spot{p.x + 3, p.y + 11}; });
    EXPECT_TRUE(Pixels::areAlike(shownIn(film, *fade(film, 0, 0.5F)), expected));
}

TEST(ColorFadeTransition, ShowsToAtTheEndOfABalanceOfOne) {
    const Film film = fillingFilm();
    EXPECT_TRUE(Pixels::areAlike(shownAt(film.boundsB, *fade(film, 1, 1)), gradientPicture(48, 32, bluish)));
    EXPECT_TRUE(Pixels::areAlike(shownAt(film.boundsA, *fade(film, 1, 0)), gradientPicture(48, 32, reddish)));
}

TEST(ColorFadeTransition, BeginsWithTheColourAtABalanceOfMinusOne) {
    const Film film = fillingFilm();
    EXPECT_TRUE(Pixels::areAlike(shownAt(film.boundsB, *fade(film, -1, 0)),
                                 Grid(48, 32, Pixels::rounded(sandPixel))));
}

TEST(ColorFadeTransition, DoesNotJumpBetweenNeighbouringFrames) {
    const Film film{NSMakeRect(0, 0, 48, 32), NSMakeRect(0, 0, 48, 32), 48, 32};
    for (const float balance : {-0.5F, 0.F, 0.5F}) {
        // The shorter phase is a quarter of the film or more, over which samples change by 200 at most.
        const double shortest = (1 - std::fabs(balance)) / 2.0;
        EXPECT_LE(largestStep(film, filmFrames, [&](float weight) { return fade(film, balance, weight); }),
                  200 / (shortest * filmFrames) + 2)
            << balance;
    }
}
