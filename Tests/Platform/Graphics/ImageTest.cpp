#include "Platform/Graphics/Image.h"

#include "Platform/Foundation/Exception.h"
#include "Platform/Graphics/Pictures/DrawablePicture.h"
#include "Tests/Platform/Foundation/TemporaryFolder.h"
#include "Tests/Platform/Pixels/BitmapLayouts.h"

#include <gtest/gtest.h>

#include <algorithm>

#include <cmath>
#include <limits>
#include <string>

using namespace Imaging::Platform;
using namespace Pixels;
using TestSupport::TemporaryFolder;

namespace {

NSData pngOf(const Grid& grid) { return *bitmapOf(grid)->representationUsingType(NSPNGFileType, {}); }

void draw(NSImage& image) {
    Canvas canvas(4, 4);
    image.drawInRect(NSMakeRect(0, 0, 4, 4), NSZeroRect, NSCompositeCopy, 1);
}

/// A form that only an application knows.
class ForeignRep : public NSImageRep {
public:
    ForeignRep() : NSImageRep(100, 100) {}
};

} // namespace

TEST(Image, IsEmptyAndTransparentAtFirst) {
    NSImage image(NSMakeSize(3, 2));
    EXPECT_TRUE(image.representations().empty());
    EXPECT_EQ(image.bestRepresentation(), nullptr);
    EXPECT_EQ(image.encodedData(), nullptr);
    EXPECT_TRUE(NSEqualSizes(image.size(), NSMakeSize(3, 2)));
    EXPECT_FALSE(image.scalesWhenResized());
    EXPECT_FALSE(image.isDataRetained());
    EXPECT_EQ(image.cacheMode(), NSImageCacheDefault);
    Canvas canvas(3, 2, white);
    image.drawInRect(NSMakeRect(0, 0, 2, 2), NSZeroRect, NSCompositeCopy, 1);
    EXPECT_EQ(canvas.pixels().at(0, 0), transparent) << "transparent black, copied, clears";
    EXPECT_EQ(canvas.pixels().at(2, 0), white);
    image.drawInRect(NSMakeRect(0, 0, 3, 2), NSZeroRect, NSCompositeSourceOver, 1);
    EXPECT_EQ(canvas.pixels().at(2, 0), white);
}

TEST(Image, RemembersFlagsWithoutUsingThem) {
    NSImage image(NSMakeSize(3, 2));
    image.setDataRetained(true);
    image.setCacheMode(NSImageCacheBySize);
    EXPECT_TRUE(image.isDataRetained());
    EXPECT_EQ(image.cacheMode(), NSImageCacheBySize);
}

TEST(Image, ShowsTheRepresentationWithTheMostPixelsOfEqualsTheFirst) {
    NSImage image(NSMakeSize(6, 6));
    image.setScalesWhenResized(true);
    const auto small = bitmapOf(Grid(2, 2, red));
    const auto first = bitmapOf(Grid(3, 4, green));
    const auto second = bitmapOf(Grid(4, 3, blue));
    image.addRepresentation(small);
    EXPECT_EQ(shownBy(image, 6, 6).at(3, 3), red);
    image.addRepresentation(first);
    image.addRepresentation(second);
    EXPECT_EQ(image.representations().size(), 3U);
    EXPECT_EQ(image.bestRepresentation(), first);
    EXPECT_EQ(shownBy(image, 6, 6).at(3, 3), green);
    image.removeRepresentation(first);
    EXPECT_EQ(image.bestRepresentation(), second);
    EXPECT_EQ(shownBy(image, 6, 6).at(3, 3), blue);
    image.removeRepresentation(first); // no longer there
    EXPECT_EQ(image.representations().size(), 2U);
    EXPECT_THROW(image.addRepresentation(nullptr), NSException);
}

TEST(Image, ARepresentationOfTheSameSizeOrInAScalingPictureFillsIt) {
    NSImage image(NSMakeSize(4, 4));
    const auto bitmap = bitmapOf(Grid(8, 8, red));
    bitmap->setSize(NSMakeSize(4, 4)); // two pixels a point
    image.addRepresentation(bitmap);
    EXPECT_TRUE(areAlike(shownBy(image, 8, 8), Grid(8, 8, red)));
    image.setSize(NSMakeSize(16, 16));
    image.setScalesWhenResized(true);
    EXPECT_TRUE(areAlike(shownBy(image, 16, 16), Grid(16, 16, red)));
}

TEST(Image, OtherwiseItStandsUnscaledInTheLowerLeftCornerWithNothingAround) {
    Random random(111);
    const Grid picture = random.grid(3, 2);
    const auto image = imageOf(picture);
    image->setSize(NSMakeSize(7, 6));
    const Grid shown = shownBy(*image, 7, 6);
    for (int y = 0; y < 6; ++y) {
        for (int x = 0; x < 7; ++x) {
            EXPECT_EQ(shown.above(x, y), x < 3 && y < 2 ? picture.above(x, y) : transparent)
                << x << ", " << y;
        }
    }
    image->setSize(NSMakeSize(2, 1)); // and is cut off where the picture ends
    const Grid cut = shownBy(*image, 2, 1);
    EXPECT_EQ(cut.above(0, 0), picture.above(0, 0));
    EXPECT_EQ(cut.above(1, 0), picture.above(1, 0));
}

TEST(Image, TheZeroSourceRectangleMeansAllOfThePicture) {
    Random random(112);
    const Grid picture = random.grid(5, 4);
    const auto image = imageOf(picture);
    Canvas canvas(5, 4);
    image->drawInRect(NSMakeRect(0, 0, 5, 4), NSMakeRect(0, 0, 5, 4), NSCompositeCopy, 1);
    EXPECT_TRUE(areAlike(canvas.pixels(), shownBy(*image, 5, 4)));
    EXPECT_TRUE(areAlike(canvas.pixels(), picture));
}

TEST(Image, DrawsNothingWithoutAContext) {
    ASSERT_EQ(NSGraphicsContext::currentContext(), nullptr);
    const auto image = imageOf(Grid(5, 4, red));
    EXPECT_NO_THROW(image->drawInRect(NSMakeRect(0, 0, 5, 4), NSZeroRect, NSCompositeCopy, 1));
}

TEST(Image, AFormThatNobodyKnowsHowToDrawShowsNothing) {
    NSImage image(NSMakeSize(100, 100));
    image.addRepresentation(std::make_shared<ForeignRep>());
    Canvas canvas(4, 4, white);
    image.drawInRect(NSMakeRect(0, 0, 2, 4), NSZeroRect, NSCompositeCopy, 1);
    EXPECT_EQ(canvas.pixels().at(0, 0), transparent);
    EXPECT_EQ(canvas.pixels().at(3, 0), white);
    EXPECT_NO_THROW({ const NSImageFocus focus(image); });
}

TEST(Image, KeepsItsDrawableCopyUntilItIsRecached) {
    for (const int mode : {NSImageCacheDefault, NSImageCacheAlways, NSImageCacheBySize}) {
        const auto image = imageOf(Grid(4, 4, red));
        image->setCacheMode(mode);
        draw(*image);
        const auto bitmap = std::dynamic_pointer_cast<NSBitmapImageRep>(image->bestRepresentation());
        for (int i = 0; i < 16; ++i) bitmap->setPixelAt(i % 4, i / 4, {0, 255, 0, 255});
        EXPECT_TRUE(areAlike(shownBy(*image, 4, 4), Grid(4, 4, red))) << mode;
        image->recache();
        EXPECT_TRUE(areAlike(shownBy(*image, 4, 4), Grid(4, 4, green))) << mode;
    }
}

TEST(Image, EveryChangeLetsTheDrawableCopyGo) {
    const std::vector<std::function<void(NSImage&)>> changes{
        [](NSImage& image) { image.setSize(image.size()); },
        [](NSImage& image) { image.setCacheMode(NSImageCacheAlways); },
        [](NSImage& image) { image.setScalesWhenResized(true); },
        [](NSImage& image) { image.addRepresentation(bitmapOf(Grid(1, 1))); },
        [](NSImage& image) { image.removeRepresentation(nullptr); },
    };
    for (const auto& change : changes) {
        const auto image = imageOf(Grid(4, 4, red));
        draw(*image);
        const auto bitmap = std::dynamic_pointer_cast<NSBitmapImageRep>(image->bestRepresentation());
        for (int i = 0; i < 16; ++i) bitmap->setPixelAt(i % 4, i / 4, {0, 255, 0, 255});
        change(*image);
        EXPECT_EQ(shownBy(*image, 4, 4).at(1, 1), green);
    }
}

TEST(Image, WithCacheModeNeverEveryDrawShowsTheBitmapOfItsMoment) {
    const auto image = imageOf(Grid(4, 4, red));
    image->setCacheMode(NSImageCacheNever);
    draw(*image);
    const auto bitmap = std::dynamic_pointer_cast<NSBitmapImageRep>(image->bestRepresentation());
    for (int i = 0; i < 16; ++i) bitmap->setPixelAt(i % 4, i / 4, {0, 255, 0, 255});
    EXPECT_TRUE(areAlike(shownBy(*image, 4, 4), Grid(4, 4, green)));
    { const NSImageFocus focus(*image); } // which does not keep a copy either
    for (int i = 0; i < 16; ++i) bitmap->setPixelAt(i % 4, i / 4, {0, 0, 255, 255});
    EXPECT_TRUE(areAlike(shownBy(*image, 4, 4), Grid(4, 4, blue)));
}

TEST(Image, ComesFromEncodedBytesWithThemKept) {
    Random random(113);
    const Grid picture = random.grid(6, 5);
    const NSData png = pngOf(picture);
    const auto image = NSImage::imageWithData(png);
    ASSERT_NE(image, nullptr);
    ASSERT_NE(image->encodedData(), nullptr);
    EXPECT_EQ(*image->encodedData(), png);
    EXPECT_TRUE(NSEqualSizes(image->size(), NSMakeSize(6, 5)));
    ASSERT_EQ(image->representations().size(), 1U);
    EXPECT_NE(std::dynamic_pointer_cast<NSBitmapImageRep>(image->bestRepresentation()), nullptr);
    EXPECT_TRUE(areAlike(shownBy(*image, 6, 5), picture));
    image->addRepresentation(bitmapOf(Grid(1, 1)));
    EXPECT_EQ(image->encodedData(), nullptr) << "the picture was changed";
}

TEST(Image, ComesFromAFileWhateverItsNameWithoutKeepingTheBytes) {
    Random random(114);
    const Grid picture = random.grid(6, 5);
    const TemporaryFolder folder;
    const std::string path = folder.path("picture.jpeg"); // in truth PNG
    ASSERT_TRUE(writeToFileAtomically(pngOf(picture), path));
    const auto image = NSImage::imageWithContentsOfFile(path);
    ASSERT_NE(image, nullptr);
    EXPECT_EQ(image->encodedData(), nullptr);
    EXPECT_TRUE(areAlike(shownBy(*image, 6, 5), picture));
    NSError error;
    EXPECT_EQ(NSImage::imageWithContentsOfFile(folder.path("missing.png"), &error), nullptr);
    EXPECT_EQ(error.code, NSErrorCode::FileNotFound);
    ASSERT_TRUE(writeToFileAtomically(NSData{'n', 'o'}, path));
    EXPECT_EQ(NSImage::imageWithContentsOfFile(path, &error), nullptr);
    EXPECT_EQ(error.code, NSErrorCode::UnsupportedFormat);
}

TEST(Image, ComesFromAFileUrlWithTheBytesKept) {
    const TemporaryFolder folder;
    const std::string path = folder.path("picture.png");
    const NSData png = pngOf(Grid(3, 2, red));
    ASSERT_TRUE(writeToFileAtomically(png, path));
    const auto image = NSImage::imageWithContentsOfURL(NSURL::fileURLWithPath(path));
    ASSERT_NE(image, nullptr);
    EXPECT_EQ(*image->encodedData(), png);
    NSError error;
    EXPECT_EQ(NSImage::imageWithContentsOfURL(NSURL::fileURLWithPath(folder.path("missing")), &error),
              nullptr);
    EXPECT_EQ(error.code, NSErrorCode::FileNotFound);
}

TEST(Image, ItsSizeFollowsTheDeclaredResolution) {
    const auto bitmap = bitmapOf(Grid(30, 20, red));
    bitmap->setProperty(NSImageResolutionX, 300.0);
    bitmap->setProperty(NSImageResolutionY, 300.0);
    const auto image = NSImage::imageWithData(*bitmap->TIFFRepresentation());
    EXPECT_EQ(image->size().width, 7.2F);
    EXPECT_EQ(image->size().height, 4.8F);
    EXPECT_EQ(image->bestRepresentation()->pixelsWide(), 30);
    Canvas canvas(8, 5);
    image->drawInRect(NSMakeRect(0, 0, 7.2F, 4.8F), NSZeroRect, NSCompositeSourceOver, 1);
    EXPECT_LE(difference(canvas.pixels().above(3, 3), red), 1);
    EXPECT_NEAR(canvas.pixels().above(7, 1).a, 255 * 0.2, 3);
}

TEST(Image, TiffHoldsTheBestBitmapWithAllItsSamples) {
    Random random(115);
    NSBitmapDescription d;
    d.pixelsWide = 5;
    d.pixelsHigh = 3;
    d.bitsPerSample = 16;
    const auto bitmap = NSBitmapImageRep::bitmapWithDescription(d);
    fillAtRandom(random, *bitmap);
    NSImage image(NSMakeSize(50, 30)); // drawn much larger, in 8 bits
    image.setScalesWhenResized(true);
    image.addRepresentation(bitmapOf(Grid(2, 2, red)));
    image.addRepresentation(bitmap);
    draw(image);
    const auto back = NSBitmapImageRep::imageRepWithData(*image.TIFFRepresentation());
    ASSERT_EQ(back->bitsPerSample(), 16);
    for (int i = 0; i < 15; ++i) EXPECT_EQ(back->pixelAt(i % 5, i / 5), bitmap->pixelAt(i % 5, i / 5));
}

TEST(Image, TiffOfADrawnPictureHoldsWhatWasDrawn) {
    Random random(116);
    const Grid picture = random.grid(4, 3);
    NSImage image(NSMakeSize(4, 3));
    {
        const NSImageFocus focus(image);
        imageOf(picture)->drawInRect(NSMakeRect(0, 0, 4, 3), NSZeroRect, NSCompositeCopy, 1);
    }
    EXPECT_TRUE(areAlike(gridOf(*NSBitmapImageRep::imageRepWithData(*image.TIFFRepresentation())), picture));
}

TEST(Image, TiffOfAnEmptyPictureIsTransparentAndOneWithoutAreaHasNone) {
    const NSImage image(NSMakeSize(4.5F, 3));
    const auto back = NSBitmapImageRep::imageRepWithData(*image.TIFFRepresentation());
    EXPECT_TRUE(areAlike(gridOf(*back), Grid(5, 3)));
    const float notANumber = std::nanf("");
    for (const NSSize size : {NSZeroSize, NSMakeSize(3, 0), NSMakeSize(-3, 3), NSMakeSize(notANumber, 3),
                              NSMakeSize(3e38F, 3), NSMakeSize(3, std::numeric_limits<float>::infinity())}) {
        NSError error;
        EXPECT_EQ(NSImage(size).TIFFRepresentation(&error), std::nullopt);
        EXPECT_NE(error.message, "");
    }
}

TEST(Image, ABitmapLongerThanCairoCanHoldIsDrawnButCannotHaveFocus) {
    NSBitmapDescription d;
    d.pixelsWide = 40000;
    d.pixelsHigh = 1;
    d.samplesPerPixel = 1;
    d.hasAlpha = false;
    d.colorSpaceName = NSCalibratedWhiteColorSpace;
    const auto bitmap = NSBitmapImageRep::bitmapWithDescription(d);
    std::fill_n(bitmap->bitmapData() + 20000, 20000, std::uint8_t{255});
    NSImage image(NSMakeSize(40000, 1));
    image.addRepresentation(bitmap);
    Canvas canvas(4, 4, red);
    image.drawInRect(NSMakeRect(0, 0, 4, 4), NSZeroRect, NSCompositeCopy, 1);
    for (int y = 0; y < 4; ++y) {
        EXPECT_EQ(canvas.pixels().at(0, y), black);
        EXPECT_EQ(canvas.pixels().at(3, y), white);
    }
    EXPECT_THROW(image.lockFocus(), NSException);
    EXPECT_NE(image.TIFFRepresentation(), std::nullopt) << "it can still be written";
    NSColor::whiteColor().set();
    NSRectFill(NSMakeRect(0, 0, 4, 4));
    EXPECT_TRUE(areAlike(canvas.pixels(), Grid(4, 4, white)));
}
