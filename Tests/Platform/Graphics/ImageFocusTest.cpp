// Also tests: Platform/Graphics/Pictures/CachedImageRep.cpp

#include "Platform/Foundation/Exception.h"
#include "Platform/Graphics/Image.h"
#include "Platform/Graphics/Pictures/CachedImageRep.h"
#include "Tests/Platform/Pixels/BitmapLayouts.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <stdexcept>
#include <string>
#include <thread>

using namespace Imaging::Platform;
using namespace Pixels;

namespace {

void fill(const NSColor& color, NSRect rect) {
    color.set();
    NSRectFill(rect);
}

const NSColor redColor = NSColor::colorWithCalibratedRed(1, 0, 0, 1);
const NSColor greenColor = NSColor::colorWithCalibratedRed(0, 1, 0, 1);

std::string exceptionName(const std::function<void()>& action) {
    try {
        action();
    } catch (const NSException& exception) {
        return exception.name();
    }
    return "";
}

/// The measures of the pixels that the current context draws on.
std::pair<int, int> focusedPixels() {
    cairo_surface_t* const surface = cairo_get_target(NSGraphicsContext::currentContext()->cairo());
    return {cairo_image_surface_get_width(surface), cairo_image_surface_get_height(surface)};
}

} // namespace

TEST(ImageFocus, DrawsIntoThePictureWithItsOriginAtTheLowerLeft) {
    NSImage image(NSMakeSize(5, 4));
    {
        const NSImageFocus focus(image);
        fill(redColor, NSMakeRect(1, 0, 2, 1));
    }
    const Grid shown = shownBy(image, 5, 4);
    for (int y = 0; y < 4; ++y) {
        for (int x = 0; x < 5; ++x) {
            EXPECT_EQ(shown.above(x, y), (x == 1 || x == 2) && y == 0 ? red : transparent) << x << ", " << y;
        }
    }
}

TEST(ImageFocus, BeginsWithWhatThePictureShows) {
    Random random(121);
    const Grid picture = random.grid(5, 4);
    const auto image = imageOf(picture);
    {
        const NSImageFocus focus(*image);
        fill(redColor, NSMakeRect(0, 0, 1, 1));
    }
    Grid expected = picture;
    expected.at(0, 3) = red;
    EXPECT_TRUE(areAlike(shownBy(*image, 5, 4), expected));
}

TEST(ImageFocus, PaintingReplacesTheRepresentationsAndForgetsTheEncodedBytes) {
    const auto image =
        NSImage::imageWithData(*bitmapOf(Grid(3, 2, blue))->representationUsingType(NSPNGFileType, {}));
    const auto bitmap = image->bestRepresentation();
    image->addRepresentation(bitmapOf(Grid(1, 1)));
    {
        const NSImageFocus focus(*image);
        fill(redColor, NSMakeRect(0, 0, 1, 1));
    }
    ASSERT_EQ(image->representations().size(), 1U);
    EXPECT_NE(image->bestRepresentation(), bitmap);
    EXPECT_NE(std::dynamic_pointer_cast<NSCachedImageRep>(image->bestRepresentation()), nullptr);
    EXPECT_EQ(image->bestRepresentation()->pixelsWide(), 3);
    EXPECT_EQ(image->bestRepresentation()->pixelsHigh(), 2);
    EXPECT_EQ(image->encodedData(), nullptr);
    EXPECT_EQ(shownBy(*image, 3, 2).at(2, 0), blue);
}

TEST(ImageFocus, WithoutPaintingKeepsEverythingAndCountsAsReadyToDraw) {
    const NSData png = *bitmapOf(Grid(4, 4, red))->representationUsingType(NSPNGFileType, {});
    const auto image = NSImage::imageWithData(png);
    const auto bitmap = std::dynamic_pointer_cast<NSBitmapImageRep>(image->bestRepresentation());
    {
        const NSImageFocus focus(*image);
        redColor.set();
        NSRectClip(NSMakeRect(0, 0, 1, 1));
    }
    ASSERT_EQ(image->representations().size(), 1U);
    EXPECT_EQ(image->bestRepresentation(), bitmap);
    EXPECT_NE(image->encodedData(), nullptr);
    for (int i = 0; i < 16; ++i) bitmap->setPixelAt(i % 4, i / 4, {0, 255, 0, 255});
    EXPECT_TRUE(areAlike(shownBy(*image, 4, 4), Grid(4, 4, red))) << "made ready by the focus";
    image->recache();
    EXPECT_TRUE(areAlike(shownBy(*image, 4, 4), Grid(4, 4, green)));
}

TEST(ImageFocus, WithoutPaintingLeavesAnEmptyPictureEmpty) {
    NSImage image(NSMakeSize(3, 3));
    { const NSImageFocus focus(image); }
    EXPECT_TRUE(image.representations().empty());
    image.addRepresentation(bitmapOf(Grid(3, 3, red)));
    EXPECT_TRUE(areAlike(shownBy(image, 3, 3), Grid(3, 3, red)));
}

TEST(ImageFocus, NestsAndGivesTheEarlierContextBack) {
    Canvas canvas(4, 4, black);
    NSImage outer(NSMakeSize(4, 4));
    NSImage inner(NSMakeSize(4, 4));
    outer.lockFocus();
    const auto outerContext = NSGraphicsContext::currentContext();
    EXPECT_NE(outerContext.get(), &canvas.context());
    inner.lockFocus();
    EXPECT_NE(NSGraphicsContext::currentContext(), outerContext);
    fill(greenColor, NSMakeRect(0, 0, 4, 4));
    inner.unlockFocus();
    EXPECT_EQ(NSGraphicsContext::currentContext(), outerContext);
    fill(redColor, NSMakeRect(0, 0, 4, 4));
    inner.drawInRect(NSMakeRect(0, 0, 2, 4), NSZeroRect, NSCompositeCopy, 1);
    outer.unlockFocus();
    EXPECT_EQ(NSGraphicsContext::currentContext().get(), &canvas.context());
    outer.drawInRect(NSMakeRect(0, 0, 4, 4), NSZeroRect, NSCompositeCopy, 1);
    EXPECT_EQ(canvas.pixels().at(1, 1), green);
    EXPECT_EQ(canvas.pixels().at(2, 1), red);
}

TEST(ImageFocus, CannotBeTakenTwiceOrGivenBackWithoutBeingTaken) {
    NSImage image(NSMakeSize(4, 4));
    EXPECT_EQ(exceptionName([&] { image.unlockFocus(); }), NSImageCacheException);
    image.lockFocus();
    const auto context = NSGraphicsContext::currentContext();
    EXPECT_EQ(exceptionName([&] { image.lockFocus(); }), NSImageCacheException);
    EXPECT_EQ(NSGraphicsContext::currentContext(), context);
    image.unlockFocus();
    EXPECT_EQ(exceptionName([&] { image.unlockFocus(); }), NSImageCacheException);
    EXPECT_EQ(NSGraphicsContext::currentContext(), nullptr);
}

TEST(ImageFocus, IsGivenBackWhenAnExceptionPasses) {
    Canvas canvas(4, 4, black);
    NSImage image(NSMakeSize(4, 4));
    try {
        const NSImageFocus focus(image);
        fill(redColor, NSMakeRect(0, 0, 4, 4));
        NSGraphicsContext::currentContext()->saveGraphicsState();
        throw std::runtime_error("out");
    } catch (const std::runtime_error&) {
    }
    EXPECT_EQ(NSGraphicsContext::currentContext().get(), &canvas.context());
    image.lockFocus(); // which can be taken again
    image.unlockFocus();
    EXPECT_TRUE(areAlike(shownBy(image, 4, 4), Grid(4, 4, red))) << "what was drawn by then stays";
}

TEST(ImageFocus, IsRefusedForSizesThatCannotBeDrawn) {
    const float notANumber = std::nanf("");
    const float infinity = std::numeric_limits<float>::infinity();
    for (const NSSize size :
         {NSZeroSize, NSMakeSize(0, 4), NSMakeSize(4, 0), NSMakeSize(-4, 4), NSMakeSize(4, -4),
          NSMakeSize(notANumber, 4), NSMakeSize(4, notANumber), NSMakeSize(40000, 4), NSMakeSize(4, 40000),
          NSMakeSize(infinity, 4), NSMakeSize(4, 3e38F)}) {
        NSImage empty(size);
        EXPECT_EQ(exceptionName([&] { empty.lockFocus(); }), NSImageCacheException)
            << size.width << size.height;
        EXPECT_EQ(NSGraphicsContext::currentContext(), nullptr);
        NSImage withBitmap(size);
        withBitmap.addRepresentation(bitmapOf(Grid(2, 2, red)));
        EXPECT_EQ(exceptionName([&] { withBitmap.lockFocus(); }), NSImageCacheException);
        EXPECT_EQ(withBitmap.representations().size(), 1U);
        if (size.width == 40000 || size.height > 1000) continue; // these can be scaled to
        withBitmap.setScalesWhenResized(true);
        EXPECT_EQ(exceptionName([&] { withBitmap.lockFocus(); }), NSImageCacheException);
    }
    const LimitScope limits({100, 1000});
    NSImage tooLarge(NSMakeSize(11, 10));
    EXPECT_EQ(exceptionName([&] { tooLarge.lockFocus(); }), NSImageCacheException);
    NSImage fits(NSMakeSize(10, 10));
    EXPECT_EQ(exceptionName([&] { const NSImageFocus focus(fits); }), "");
}

TEST(ImageFocus, CountsAFractionOfAPixelAsAWholeOneWhenItCouldBeSeen) {
    struct Case {
        float points;
        int pixels;
    };
    for (const Case c :
         {Case{4, 4}, {4.003F, 4}, {4.005F, 5}, {4.5F, 5}, {3.9999F, 4}, {0.001F, 1}, {0.5F, 1}}) {
        NSImage image(NSMakeSize(c.points, 2));
        const NSImageFocus focus(image);
        EXPECT_EQ(focusedPixels(), std::make_pair(c.pixels, 2)) << c.points;
    }
}

TEST(ImageFocus, OnASizeThatIsNotWholeOnePointStaysOnePixel) {
    NSImage image(NSMakeSize(4.5F, 3.25F));
    {
        const NSImageFocus focus(image);
        fill(redColor, NSMakeRect(0, 0, 4.5F, 3.25F));
        fill(greenColor, NSMakeRect(2, 1, 1, 1));
    }
    EXPECT_TRUE(NSEqualSizes(image.size(), NSMakeSize(4.5F, 3.25F)));
    Canvas canvas(6, 5);
    image.drawInRect(NSMakeRect(0, 0, 4.5F, 3.25F), NSZeroRect, NSCompositeSourceOver, 1);
    const Grid shown = canvas.pixels();
    EXPECT_EQ(shown.above(1, 1), red);
    EXPECT_EQ(shown.above(2, 1), green);
    EXPECT_EQ(shown.above(3, 2), red);
    // Half a pixel was drawn, of which half a pixel is shown.
    EXPECT_NEAR(shown.above(4, 1).a, 64, 2);
    EXPECT_EQ(shown.above(5, 1), transparent);
    {
        const NSImageFocus focus(image); // a second time nothing moves
        fill(greenColor, NSMakeRect(0, 0, 1, 1));
    }
    Canvas again(6, 5);
    image.drawInRect(NSMakeRect(0, 0, 4.5F, 3.25F), NSZeroRect, NSCompositeSourceOver, 1);
    Grid expected = shown;
    expected.at(0, 4) = green;
    EXPECT_TRUE(areAlike(again.pixels(), expected));
}

TEST(ImageFocus, HasTheRepresentationsOwnPixelsWhereItFillsThePicture) {
    const auto bitmap = bitmapOf(Grid(30, 20, blue));
    bitmap->setSize(NSMakeSize(7.2F, 4.8F));
    NSImage image(NSMakeSize(7.2F, 4.8F));
    image.addRepresentation(bitmap);
    for (int round = 0; round < 2; ++round) { // from the bitmap, then from what was drawn
        const NSImageFocus focus(image);
        EXPECT_EQ(focusedPixels(), std::make_pair(30, 20));
        fill(redColor, NSMakeRect(0, 0, 3.6F, 2.4F));
    }
    EXPECT_EQ(image.bestRepresentation()->pixelsWide(), 30);
    EXPECT_TRUE(NSEqualSizes(image.bestRepresentation()->size(), image.size()));
    const auto back = NSBitmapImageRep::imageRepWithData(*image.TIFFRepresentation());
    const Grid shown = gridOf(*back);
    EXPECT_EQ(shown.above(14, 9), red);
    EXPECT_EQ(shown.above(15, 9), blue);
    EXPECT_EQ(shown.above(14, 10), blue);
    EXPECT_NEAR(back->size().width, 7.2F, 1e-5) << "the resolution goes along";
}

TEST(ImageFocus, HasOnePixelAPointWhereTheRepresentationDoesNotFillThePicture) {
    Random random(122);
    const Grid picture = random.grid(4, 3);
    const auto image = imageOf(picture);
    image->setSize(NSMakeSize(9, 8));
    {
        const NSImageFocus focus(*image);
        EXPECT_EQ(focusedPixels(), std::make_pair(9, 8));
        fill(redColor, NSMakeRect(8, 7, 1, 1));
    }
    const Grid shown = shownBy(*image, 9, 8);
    for (int y = 0; y < 3; ++y) {
        for (int x = 0; x < 4; ++x) EXPECT_EQ(shown.above(x, y), picture.above(x, y));
    }
    EXPECT_EQ(shown.above(8, 7), red);
    EXPECT_EQ(shown.above(4, 3), transparent);
}

TEST(ImageFocus, APictureDrawnIntoItselfIsReadAsItIsAtThatMoment) {
    Random random(123);
    for (const int mode : {NSImageCacheDefault, NSImageCacheNever}) {
        for (const bool fromBitmap : {true, false}) {
            const Grid picture = random.grid(6, 6);
            const auto image = fromBitmap ? imageOf(picture) : std::make_shared<NSImage>(NSMakeSize(6, 6));
            image->setCacheMode(mode);
            Grid expected = fromBitmap ? picture : Grid(6, 6);
            {
                const NSImageFocus focus(*image);
                fill(greenColor, NSMakeRect(0, 0, 1, 1));
                expected.at(0, 5) = green;
                image->drawInRect(NSMakeRect(1, 1, 5, 5), NSMakeRect(0, 0, 5, 5), NSCompositeCopy, 1);
            }
            const Grid before = expected;
            for (int y = 1; y < 6; ++y) {
                for (int x = 1; x < 6; ++x) expected.at(x, 5 - y) = before.above(x - 1, y - 1);
            }
            EXPECT_TRUE(areAlike(shownBy(*image, 6, 6), expected)) << mode << fromBitmap;
        }
    }
}

TEST(ImageFocus, APictureThatSharesARepresentationIsNotDrawnInto) {
    NSImage first(NSMakeSize(4, 4));
    {
        const NSImageFocus focus(first);
        fill(redColor, NSMakeRect(0, 0, 4, 4));
    }
    NSImage second(NSMakeSize(4, 4));
    second.addRepresentation(first.bestRepresentation());
    {
        const NSImageFocus focus(second);
        first.drawInRect(NSMakeRect(1, 1, 3, 3), NSMakeRect(0, 0, 3, 3), NSCompositeSourceOver, 1);
        fill(greenColor, NSMakeRect(0, 0, 4, 4));
    }
    EXPECT_TRUE(areAlike(shownBy(first, 4, 4), Grid(4, 4, red)));
    EXPECT_TRUE(areAlike(shownBy(second, 4, 4), Grid(4, 4, green)));
}

TEST(ImageFocus, DrawingAnotherPictureThatIsBeingDrawnIntoShowsItsPresentState) {
    NSImage inner(NSMakeSize(4, 4));
    NSImage outer(NSMakeSize(4, 4));
    inner.lockFocus();
    fill(redColor, NSMakeRect(0, 0, 4, 4));
    outer.lockFocus();
    inner.drawInRect(NSMakeRect(0, 0, 4, 4), NSZeroRect, NSCompositeCopy, 1);
    outer.unlockFocus();
    inner.unlockFocus();
    EXPECT_TRUE(areAlike(shownBy(outer, 4, 4), Grid(4, 4, red)));
}

TEST(ImageFocus, ADrawnPictureKeepsItsPixelsWhateverTheCacheModeAndRecaching) {
    for (const int mode : {NSImageCacheDefault, NSImageCacheNever}) {
        NSImage image(NSMakeSize(4, 4));
        image.setCacheMode(mode);
        {
            const NSImageFocus focus(image);
            fill(redColor, NSMakeRect(0, 0, 4, 4));
        }
        image.recache();
        EXPECT_TRUE(areAlike(shownBy(image, 4, 4), Grid(4, 4, red)));
        {
            const NSImageFocus focus(image);
            fill(greenColor, NSMakeRect(0, 0, 4, 4));
        }
        EXPECT_TRUE(areAlike(shownBy(image, 4, 4), Grid(4, 4, green)));
        image.setScalesWhenResized(true);
        image.setSize(NSMakeSize(8, 8));
        EXPECT_TRUE(areAlike(shownBy(image, 8, 8), Grid(8, 8, green)));
    }
}

TEST(ImageFocus, BelongsToTheThreadThatTookIt) {
    NSImage mine(NSMakeSize(4, 4));
    NSImage theirs(NSMakeSize(4, 4));
    mine.lockFocus();
    std::thread other([&theirs] {
        EXPECT_EQ(NSGraphicsContext::currentContext(), nullptr);
        const NSImageFocus focus(theirs);
        fill(greenColor, NSMakeRect(0, 0, 4, 4));
    });
    other.join();
    fill(redColor, NSMakeRect(0, 0, 4, 4));
    mine.unlockFocus();
    EXPECT_TRUE(areAlike(shownBy(mine, 4, 4), Grid(4, 4, red)));
    EXPECT_TRUE(areAlike(shownBy(theirs, 4, 4), Grid(4, 4, green)));
}
