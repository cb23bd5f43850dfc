// Also tests: Platform/Graphics/Cairo/ClipPath.cpp

#include "Platform/Graphics/CoreGraphics.h"

#include "Tests/Platform/Pixels/GuardedPixels.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>
#include <vector>

using namespace Imaging::Platform;
using namespace Pixels;

namespace {

/// What a layout makes of a premultiplied colour: gray from weights where it has no colour.
Color asLayout(const Layout& layout, Color color) {
    if (!layout.rgb) {
        const double gray = 0.3 * color[0] + 0.59 * color[1] + 0.11 * color[2];
        color[0] = color[1] = color[2] = gray;
    }
    if (!layout.hasAlpha()) color[3] = 1;
    return color;
}

Color over(const Color& s, const Color& d) { return operationResult(NSCompositeSourceOver, s, d); }

/// Draws source at whole pixels of a random target and returns the largest error in steps of the target.
double largestErrorOfDrawing(Random& random, const Layout& from, const Layout& to, bool inverted, int left,
                             int bottom, bool* guardsAreIntact) {
    GuardedPixels source(from, 5, 4, 3);
    GuardedPixels target(to, 8, 6, 5);
    source.fillAtRandom(random);
    target.fillAtRandom(random);
    std::vector<Color> expected;
    for (int y = 0; y < 6; ++y) {
        for (int x = 0; x < 8; ++x) {
            const int sx = x - left;
            const int sy = y - (6 - bottom - 4); // the source's row in memory
            const bool inside = sx >= 0 && sx < 5 && sy >= 0 && sy < 4;
            const Color before = target.meaning(x, y);
            expected.push_back(inside ? asLayout(to, over(source.meaning(sx, sy, inverted), before))
                                      : before);
        }
    }
    CGContextDrawImage(*target.context(),
                       NSMakeRect(static_cast<float>(left), static_cast<float>(bottom), 5, 4),
                       *source.image(inverted));
    double largest = 0;
    for (int y = 0; y < 6; ++y) {
        for (int x = 0; x < 8; ++x) {
            const Color actual = target.meaning(x, y);
            for (std::size_t i = 0; i < 4; ++i) {
                const double distance =
                    std::abs(actual[i] - expected[static_cast<std::size_t>(y * 8 + x)][i]);
                largest = std::max(largest, distance * to.maximum());
            }
        }
    }
    *guardsAreIntact = target.guardsAreIntact() && source.guardsAreIntact();
    return largest;
}

std::vector<std::uint8_t> oneGrayByte(std::uint8_t value) { return {value}; }

} // namespace

TEST(CoreGraphics, CarriesEveryLayoutIntoEveryOtherOnWholePixels) {
    Random random(101);
    for (const Layout& from : allLayouts(false)) {
        for (const Layout& to : allLayouts(true)) {
            for (const bool inverted : {false, true}) {
                if (inverted && from.rgb) continue;
                // Rounded once each: to another depth, premultiplied, composed, turned to gray.
                const double narrowed = from.bits > to.bits ? (inverted ? 1.5 : 1) : 0;
                bool guards = false;
                const double error = largestErrorOfDrawing(random, from, to, inverted, random.integer(-4, 7),
                                                           random.integer(-3, 5), &guards);
                EXPECT_LE(error, 1.51 + narrowed) << from.name() << " into " << to.name();
                EXPECT_TRUE(guards) << from.name() << " into " << to.name();
            }
        }
    }
}

TEST(CoreGraphics, OpaquePixelsOfTheSameDepthArriveBitForBit) {
    Random random(102);
    for (const Layout& from : allLayouts(false)) {
        for (const Layout& to : allLayouts(true)) {
            if (from.hasAlpha() || from.bits != to.bits || (from.rgb && !to.rgb)) continue;
            bool guards = false;
            EXPECT_LE(largestErrorOfDrawing(random, from, to, false, 1, 1, &guards), 1e-6)
                << from.name() << " into " << to.name();
        }
    }
}

TEST(CoreGraphics, PremultipliedPixelsOnNothingArriveBitForBit) {
    Random random(103);
    for (const Layout& layout : allLayouts(true)) {
        if (!layout.hasAlpha()) continue;
        GuardedPixels source(layout, 6, 5, 1);
        GuardedPixels target(layout, 6, 5, 4);
        source.fillAtRandom(random);
        for (int i = 0; i < 30; ++i) {
            for (std::size_t s = 0; s < layout.samples(); ++s) target.setSample(i % 6, i / 6, s, 0);
        }
        CGContextDrawImage(*target.context(), NSMakeRect(0, 0, 6, 5), *source.image());
        for (int i = 0; i < 30; ++i) {
            for (std::size_t s = 0; s < layout.samples(); ++s) {
                ASSERT_EQ(target.sample(i % 6, i / 6, s), source.sample(i % 6, i / 6, s)) << layout.name();
            }
        }
    }
}

TEST(CoreGraphics, SixteenBitsKeepTheirPrecisionUnderWholePixelMoves) {
    const Layout layout{true, 16, kCGImageAlphaPremultipliedLast};
    GuardedPixels source(layout, 2, 2, 0);
    GuardedPixels target(layout, 4, 3, 0);
    for (int i = 0; i < 12; ++i) {
        for (std::size_t s = 0; s < 4; ++s) target.setSample(i % 4, i / 4, s, 0);
    }
    for (int i = 0; i < 4; ++i) {
        for (std::size_t s = 0; s < 4; ++s)
            source.setSample(i % 2, i / 2, s, s == 3 ? 65535 : 1000U + 7 * s + static_cast<unsigned>(i));
    }
    const auto context = target.context();
    NSAffineTransform move;
    move.translateXBy(1, 1);
    CGContextConcatCTM(*context, move);
    CGContextDrawImage(*context, NSMakeRect(1, 0, 2, 2), *source.image());
    EXPECT_EQ(target.sample(2, 0, 1), 1007U); // upper left: row 0, since y = 1 to 3 of 3
    EXPECT_EQ(target.sample(3, 1, 0), 1003U);
    EXPECT_EQ(target.sample(1, 0, 3), 0U);
    EXPECT_EQ(target.sample(2, 2, 3), 0U);
}

TEST(CoreGraphics, ImagesAreCutAtTheEdgesAndThoseOutsideChangeNothing) {
    Random random(104);
    const Layout layout{true, 8, kCGImageAlphaPremultipliedFirst};
    for (const auto& [left, bottom] : std::vector<std::pair<int, int>>{
             {-5, 0}, {8, 0}, {0, -4}, {0, 6}, {-4, -3}, {7, 5}, {-1000000, 2}, {2, 900000000}}) {
        bool guards = false;
        EXPECT_LE(largestErrorOfDrawing(random, layout, layout, false, left, bottom, &guards), 1.01)
            << left << ", " << bottom;
        EXPECT_TRUE(guards);
    }
}

TEST(CoreGraphics, AnInvertedDecodeTurnsGrayRound) {
    std::vector<std::uint8_t> gray = oneGrayByte(40);
    std::vector<std::uint8_t> result = oneGrayByte(0);
    const float inverted[2] = {1, 0};
    const float plain[2] = {0, 1};
    const float half[2] = {0, 0.5F};
    const auto image = [&](const float* decode, const CGColorSpaceRef& space, std::size_t bits) {
        return CGImageCreate(1, 1, 8, bits, bits / 8, space, kCGImageAlphaNone,
                             CGDataProviderCreateWithData(gray.data(), 1), decode);
    };
    const auto space = CGColorSpaceCreateDeviceGray();
    const auto context = CGBitmapContextCreate(result.data(), 1, 1, 8, 1, space, kCGImageAlphaNone);
    CGContextDrawImage(*context, NSMakeRect(0, 0, 1, 1), *image(inverted, space, 8));
    EXPECT_EQ(result[0], 215);
    CGContextDrawImage(*context, NSMakeRect(0, 0, 1, 1), *image(plain, space, 8));
    EXPECT_EQ(result[0], 40);
    EXPECT_EQ(image(half, space, 8), nullptr);
    std::vector<std::uint8_t> rgb(3);
    EXPECT_EQ(CGImageCreate(1, 1, 8, 24, 3, CGColorSpaceCreateDeviceRGB(), kCGImageAlphaNone,
                            CGDataProviderCreateWithData(rgb.data(), 3), inverted),
              nullptr);
}

TEST(CoreGraphics, SamplesBeyondColourAndAlphaArePassedOver) {
    // Two gray pixels with two bytes of something else each.
    const std::vector<std::uint8_t> pixels{10, 99, 99, 20, 99, 99};
    std::vector<std::uint8_t> result(2);
    const auto space = CGColorSpaceCreateDeviceGray();
    const auto image = CGImageCreate(2, 1, 8, 24, 6, space, kCGImageAlphaNone,
                                     CGDataProviderCreateWithData(pixels.data(), 6), nullptr);
    ASSERT_NE(image, nullptr);
    const auto context = CGBitmapContextCreate(result.data(), 2, 1, 8, 2, space, kCGImageAlphaNone);
    CGContextDrawImage(*context, NSMakeRect(0, 0, 2, 1), *image);
    EXPECT_EQ(result, (std::vector<std::uint8_t>{10, 20}));
}

TEST(CoreGraphics, ImagesAreRefusedWhenTheLayoutMakesNoSense) {
    std::vector<std::uint8_t> bytes(1000);
    const auto provider = CGDataProviderCreateWithData(bytes.data(), bytes.size());
    const auto rgb = CGColorSpaceCreateDeviceRGB();
    const auto made = [&](std::size_t width, std::size_t height, std::size_t bits, std::size_t pixelBits,
                          std::size_t rowBytes, unsigned alpha) {
        return CGImageCreate(width, height, bits, pixelBits, rowBytes, rgb,
                             static_cast<CGImageAlphaInfo>(alpha), provider, nullptr) != nullptr;
    };
    EXPECT_TRUE(made(10, 10, 8, 24, 30, kCGImageAlphaNone));
    EXPECT_FALSE(made(0, 10, 8, 24, 30, kCGImageAlphaNone));
    EXPECT_FALSE(made(10, 0, 8, 24, 30, kCGImageAlphaNone));
    EXPECT_FALSE(made(10, 10, 4, 24, 30, kCGImageAlphaNone));
    EXPECT_FALSE(made(10, 10, 32, 96, 120, kCGImageAlphaNone));
    EXPECT_FALSE(made(10, 10, 8, 16, 30, kCGImageAlphaNone)) << "a pixel shorter than its samples";
    EXPECT_FALSE(made(10, 10, 8, 24, 40, kCGImageAlphaLast)) << "no room for alpha";
    EXPECT_FALSE(made(10, 10, 8, 28, 40, kCGImageAlphaNone)) << "no whole bytes";
    EXPECT_FALSE(made(10, 10, 8, 24, 29, kCGImageAlphaNone)) << "a row shorter than its pixels";
    EXPECT_FALSE(made(10, 10, 8, 32, 40, 7)) << "no such place for alpha";
    constexpr std::size_t large = std::numeric_limits<std::size_t>::max();
    EXPECT_FALSE(made(large / 2, 10, 8, 24, large, kCGImageAlphaNone));
    EXPECT_FALSE(made(10, large, 8, 24, 30, kCGImageAlphaNone));
    EXPECT_FALSE(made(10, 3, 8, 24, large, kCGImageAlphaNone));
    EXPECT_FALSE(made(1, 1, 8, large - 7, large, kCGImageAlphaNone));
    EXPECT_EQ(CGImageCreate(10, 10, 8, 24, 30, nullptr, kCGImageAlphaNone, provider, nullptr), nullptr);
    EXPECT_EQ(CGImageCreate(10, 10, 8, 24, 30, rgb, kCGImageAlphaNone, nullptr, nullptr), nullptr);
}

TEST(CoreGraphics, ProvidersTooShortAreRefusedButTheLastRowNeedsNoPadding) {
    std::vector<std::uint8_t> bytes(100);
    const auto made = [&](std::size_t size) {
        return CGImageCreate(3, 4, 8, 24, 20, CGColorSpaceCreateDeviceRGB(), kCGImageAlphaNone,
                             CGDataProviderCreateWithData(bytes.data(), size), nullptr) != nullptr;
    };
    EXPECT_TRUE(made(69)); // three rows of 20 and one of 9
    EXPECT_FALSE(made(68));
    EXPECT_TRUE(made(80));
}

TEST(CoreGraphics, ContextsAreRefusedWhenTheLayoutMakesNoSense) {
    std::vector<std::uint8_t> bytes(1000);
    const auto rgb = CGColorSpaceCreateDeviceRGB();
    const auto made = [&](void* data, std::size_t width, std::size_t height, std::size_t bits,
                          std::size_t rowBytes, unsigned alpha) {
        return CGBitmapContextCreate(data, width, height, bits, rowBytes, rgb,
                                     static_cast<CGImageAlphaInfo>(alpha)) != nullptr;
    };
    EXPECT_TRUE(made(bytes.data(), 10, 10, 8, 30, kCGImageAlphaNone));
    EXPECT_FALSE(made(nullptr, 10, 10, 8, 30, kCGImageAlphaNone));
    EXPECT_FALSE(made(bytes.data(), 0, 10, 8, 30, kCGImageAlphaNone));
    EXPECT_FALSE(made(bytes.data(), 10, 0, 8, 30, kCGImageAlphaNone));
    EXPECT_FALSE(made(bytes.data(), 10, 10, 5, 30, kCGImageAlphaNone));
    EXPECT_FALSE(made(bytes.data(), 10, 10, 8, 29, kCGImageAlphaNone));
    EXPECT_FALSE(made(bytes.data(), 10, 10, 8, 40, kCGImageAlphaLast)) << "alpha that is not premultiplied";
    EXPECT_FALSE(made(bytes.data(), 10, 10, 8, 40, kCGImageAlphaFirst));
    EXPECT_FALSE(made(bytes.data(), 10, 10, 8, 40, 7));
    EXPECT_FALSE(
        made(bytes.data(), std::numeric_limits<std::size_t>::max() / 2, 10, 8, 40, kCGImageAlphaNone));
    EXPECT_EQ(CGBitmapContextCreate(bytes.data(), 10, 10, 8, 30, nullptr, kCGImageAlphaNone), nullptr);
    EXPECT_EQ(CGContextWithGraphicsContext(nullptr), nullptr);
}

TEST(CoreGraphics, AProviderIsReleasedOnceWhenTheLastImageLetsGo) {
    int released = 0;
    std::vector<std::uint8_t> bytes(3);
    auto provider = CGDataProviderCreateWithData(bytes.data(), 3, [&released] { ++released; });
    EXPECT_EQ(provider->data(), bytes.data());
    EXPECT_EQ(provider->size(), 3U);
    const auto made = [&] {
        return CGImageCreate(1, 1, 8, 24, 3, CGColorSpaceCreateDeviceRGB(), kCGImageAlphaNone, provider,
                             nullptr);
    };
    CGImageRef first = made();
    CGImageRef second = made();
    provider.reset();
    first.reset();
    EXPECT_EQ(released, 0);
    second.reset();
    EXPECT_EQ(released, 1);
    {
        const auto unused = CGDataProviderCreateWithData(bytes.data(), 3, [&released] { ++released; });
    }
    EXPECT_EQ(released, 2);
}

TEST(CoreGraphics, ClipsAlphaAndScalesActAsInAGraphicsContext) {
    Random random(105);
    const Layout layout{true, 8, kCGImageAlphaPremultipliedLast};
    GuardedPixels source(layout, 5, 4, 0);
    GuardedPixels target(layout, 16, 12, 3);
    source.fillAtRandom(random);
    target.fillAtRandom(random);
    Grid picture(5, 4);
    Grid before(16, 12);
    const auto copy = [](GuardedPixels& from, Grid& to) {
        for (int y = 0; y < to.height(); ++y) {
            for (int x = 0; x < to.width(); ++x) to.at(x, y) = rounded(from.meaning(x, y));
        }
    };
    copy(source, picture);
    copy(target, before);
    const auto context = target.context();
    CGContextSaveGState(*context);
    CGContextClipToRect(*context, NSMakeRect(2.5F, 1, 9, 8));
    CGContextConcatCTM(*context, NSAffineTransform({2, 0, 0, 2, 1, 1}));
    CGContextClipToRect(*context, NSMakeRect(0, 0, 4, 10));
    CGContextSetAlpha(*context, 0.5F);
    CGContextDrawImage(*context, NSMakeRect(0, 0.5F, 5, 4), *source.image());
    CGContextRestoreGState(*context);
    Grid after(16, 12);
    copy(target, after);
    {
        Canvas canvas(before);
        NSRectClip(NSMakeRect(2.5F, 1, 9, 8));
        canvas.context().concat(NSAffineTransform({2, 0, 0, 2, 1, 1}));
        NSRectClip(NSMakeRect(0, 0, 4, 10));
        imageOf(picture)->drawInRect(NSMakeRect(0, 0.5F, 5, 4), NSZeroRect, NSCompositeSourceOver, 0.5F);
        EXPECT_TRUE(areAlike(after, canvas.pixels(), 1));
    }
    EXPECT_FALSE(areAlike(after, before)) << "something must have been drawn";
    EXPECT_TRUE(target.guardsAreIntact());
    // Afterwards the state is as before: a whole-pixel draw is exact again.
    CGContextDrawImage(*context, NSMakeRect(0, 0, 5, 4), *source.image());
    for (int y = 0; y < 4; ++y) {
        for (int x = 0; x < 5; ++x) {
            const Color expected = over(colorOf(picture.at(x, y)), colorOf(after.at(x, 8 + y)));
            EXPECT_LE(difference(rounded(target.meaning(x, 8 + y)), rounded(expected)), 1);
        }
    }
}

TEST(CoreGraphics, ScaledDrawsLeavePixelsThatAreNotTouchedAsTheyWereWithAllTheirSamples) {
    Random random(106);
    for (const Layout& layout : allLayouts(true)) {
        GuardedPixels target(layout, 10, 8, 2);
        target.fillAtRandom(random);
        GuardedPixels before = target;
        const std::vector<std::uint8_t> bytes{255, 0, 0};
        const auto image = CGImageCreate(1, 1, 8, 24, 3, CGColorSpaceCreateDeviceRGB(), kCGImageAlphaNone,
                                         CGDataProviderCreateWithData(bytes.data(), 3), nullptr);
        CGContextDrawImage(*target.context(), NSMakeRect(2, 3, 4, 2), *image); // scaled, so through 8 bits
        for (int y = 0; y < 8; ++y) {
            for (int x = 0; x < 10; ++x) {
                const int up = 7 - y;
                if (x >= 2 && x < 6 && up >= 3 && up < 5) {
                    const Color actual = target.meaning(x, y);
                    EXPECT_NEAR(actual[0], layout.rgb ? 1 : 0.3, 0.003) << layout.name();
                    continue;
                }
                for (std::size_t i = 0; i < layout.samples(); ++i) {
                    ASSERT_EQ(target.sample(x, y, i), before.sample(x, y, i))
                        << layout.name() << x << ", " << y;
                }
            }
        }
        EXPECT_TRUE(target.guardsAreIntact());
    }
}

TEST(CoreGraphics, WithoutAreaOrSenseNothingIsDrawn) {
    Random random(107);
    const Layout layout{true, 8, kCGImageAlphaPremultipliedLast};
    GuardedPixels source(layout, 3, 3, 0);
    source.fillAtRandom(random);
    GuardedPixels target(layout, 6, 6, 0);
    target.fillAtRandom(random);
    GuardedPixels before = target;
    const float notANumber = std::nanf("");
    const auto draw = [&](NSRect rect, const std::function<void(CGContext&)>& setUp) {
        const auto context = target.context();
        setUp(*context);
        CGContextDrawImage(*context, rect, *source.image());
        for (int i = 0; i < 36; ++i) {
            for (std::size_t s = 0; s < 4; ++s) {
                ASSERT_EQ(target.sample(i % 6, i / 6, s), before.sample(i % 6, i / 6, s));
            }
        }
    };
    const NSRect all = NSMakeRect(0, 0, 6, 6);
    const NSRect own = NSMakeRect(1, 1, 3, 3);
    draw(NSMakeRect(0, 0, 0, 6), [](CGContext&) {});
    draw(NSMakeRect(5, 5, -3, -3), [](CGContext&) {});
    draw(NSMakeRect(notANumber, 0, 3, 3), [](CGContext&) {});
    draw(all, [](CGContext& c) { c.concatCTM(NSAffineTransform({0, 0, 0, 1, 0, 0})); });
    draw(all, [&](CGContext& c) { c.concatCTM(NSAffineTransform({1, 0, 0, 1, notANumber, 0})); });
    for (const NSRect rect : {own, all}) {
        draw(rect, [](CGContext& c) { c.setAlpha(0); });
        draw(rect, [&](CGContext& c) { c.setAlpha(notANumber); });
        draw(rect, [](CGContext& c) { c.clipToRect(NSMakeRect(3, 3, 0, 2)); });
        draw(rect, [](CGContext& c) { c.clipToRect(NSMakeRect(3, 3, -2, -2)); });
        draw(rect, [&](CGContext& c) { c.clipToRect(NSMakeRect(3, notANumber, 2, 2)); });
    }
}

TEST(CoreGraphics, RestoringMoreThanWasSavedIsIgnored) {
    const Layout layout{false, 8, kCGImageAlphaNone};
    GuardedPixels target(layout, 1, 1, 0);
    target.setSample(0, 0, 0, 0);
    const auto context = target.context();
    context->restoreGState();
    const std::vector<std::uint8_t> gray = oneGrayByte(70);
    const auto image = CGImageCreate(1, 1, 8, 8, 1, layout.space(), kCGImageAlphaNone,
                                     CGDataProviderCreateWithData(gray.data(), 1), nullptr);
    context->drawImage(NSMakeRect(0, 0, 1, 1), *image);
    EXPECT_EQ(target.sample(0, 0, 0), 70U);
    Canvas canvas(2, 2, black);
    const auto port = CGContextWithGraphicsContext(NSGraphicsContext::currentContext());
    port->restoreGState();
    port->saveGState();
    port->restoreGState();
    EXPECT_EQ(canvas.context().savedStateCount(), 0U);
}

TEST(CoreGraphics, DrawsOnAGraphicsContextWithItsStates) {
    Canvas canvas(6, 6, black);
    const auto port = CGContextWithGraphicsContext(NSGraphicsContext::currentContext());
    const std::vector<std::uint8_t> pixels{255, 0, 0, 0, 255, 0}; // red above green
    const auto image = CGImageCreate(1, 2, 8, 24, 3, CGColorSpaceCreateDeviceRGB(), kCGImageAlphaNone,
                                     CGDataProviderCreateWithData(pixels.data(), 6), nullptr);
    port->saveGState();
    port->concatCTM(NSAffineTransform({1, 0, 0, 1, 2, 1}));
    port->setAlpha(0.4F);
    port->drawImage(NSMakeRect(0, 0, 1, 2), *image);
    port->clipToRect(NSMakeRect(0, 0, 1, 1));
    port->setAlpha(1);
    port->drawImage(NSMakeRect(0, 0, 1, 2), *image);
    port->restoreGState();
    port->drawImage(NSMakeRect(5, 4, 1, 2), *image);
    const Grid shown = canvas.pixels();
    EXPECT_EQ(shown.above(2, 1), green);
    EXPECT_EQ(shown.above(2, 2), (Rgba{102, 0, 0, 255})) << "drawn before the clip, with the alpha of then";
    EXPECT_EQ(shown.above(5, 5), red) << "alpha is part of the state";
    EXPECT_EQ(shown.above(5, 4), green);
    EXPECT_TRUE(canvas.context().hasPainted());
}
