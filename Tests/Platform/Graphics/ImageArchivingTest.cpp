#include "Platform/Foundation/KeyedArchiver.h"
#include "Platform/Graphics/Image.h"
#include "Tests/Platform/Pixels/BitmapLayouts.h"

#include <gtest/gtest.h>

#include <string>

using namespace Imaging::Platform;
using namespace Pixels;

namespace {

std::shared_ptr<NSImage> archivedAndBack(const NSImage& image,
                                         NSPropertyListFormat format = NSPropertyListFormat::Binary) {
    return unarchiveObjectOfClass<NSImage>(archivedDataWithRootObject(image, format));
}

/// Something that an archive of a picture could hold, and a picture made of it.
class Forged : public NSImage {
public:
    Forged(std::optional<NSData> data, std::optional<NSSize> size)
        : NSImage(NSZeroSize), m_data(std::move(data)), m_size(size) {}

    void encodeWithCoder(NSCoder& coder) const override {
        if (m_data.has_value()) coder.encodeData(*m_data, "data");
        if (m_size.has_value()) coder.encodeSize(*m_size, "size");
    }

private:
    std::optional<NSData> m_data;
    std::optional<NSSize> m_size;
};

} // namespace

TEST(ImageArchiving, KeepsTheEncodedBytesAsTheyAre) {
    Random random(131);
    const NSData jpeg = *bitmapOf(random.grid(20, 10))->representationUsingType(NSJPEGFileType, {});
    const auto image = NSImage::imageWithData(jpeg);
    for (const auto format : {NSPropertyListFormat::Binary, NSPropertyListFormat::XML}) {
        const auto back = archivedAndBack(*image, format);
        ASSERT_NE(back->encodedData(), nullptr);
        EXPECT_EQ(*back->encodedData(), jpeg);
        EXPECT_TRUE(NSEqualSizes(back->size(), image->size()));
        EXPECT_TRUE(areAlike(shownBy(*back, 20, 10), shownBy(*image, 20, 10)));
    }
}

TEST(ImageArchiving, KeepsTheSizeThatWasSet) {
    const auto image =
        NSImage::imageWithData(*bitmapOf(Grid(4, 4, red))->representationUsingType(NSPNGFileType, {}));
    image->setSize(NSMakeSize(10, 6));
    const auto back = archivedAndBack(*image);
    EXPECT_TRUE(NSEqualSizes(back->size(), NSMakeSize(10, 6)));
    EXPECT_TRUE(areAlike(shownBy(*back, 10, 6), shownBy(*image, 10, 6)));
    EXPECT_EQ(shownBy(*back, 10, 6).above(9, 5), transparent) << "unscaled in the corner, as before";
}

TEST(ImageArchiving, KeepsWhatWasDrawnBitForBit) {
    Random random(132);
    const Grid picture = random.grid(9, 7);
    NSImage image(NSMakeSize(9, 7));
    {
        const NSImageFocus focus(image);
        imageOf(picture)->drawInRect(NSMakeRect(0, 0, 9, 7), NSZeroRect, NSCompositeCopy, 1);
    }
    const auto back = archivedAndBack(image);
    EXPECT_TRUE(NSEqualSizes(back->size(), NSMakeSize(9, 7)));
    EXPECT_TRUE(areAlike(shownBy(*back, 9, 7), picture));
}

TEST(ImageArchiving, KeepsSixteenBitSamples) {
    Random random(133);
    NSBitmapDescription d;
    d.pixelsWide = 5;
    d.pixelsHigh = 4;
    d.bitsPerSample = 16;
    d.samplesPerPixel = 3;
    d.hasAlpha = false;
    const auto bitmap = NSBitmapImageRep::bitmapWithDescription(d);
    fillAtRandom(random, *bitmap);
    NSImage image(NSMakeSize(5, 4));
    image.addRepresentation(bitmap);
    const auto back =
        std::dynamic_pointer_cast<NSBitmapImageRep>(archivedAndBack(image)->bestRepresentation());
    ASSERT_NE(back, nullptr);
    for (int i = 0; i < 20; ++i) EXPECT_EQ(back->pixelAt(i % 5, i / 5), bitmap->pixelAt(i % 5, i / 5));
}

TEST(ImageArchiving, APictureWithManyPixelsAPointStillFillsItsSizeWithAllOfThem) {
    // As files round resolutions, the size that follows from the file is a little off.
    for (const float points : {7.2F, 10.0F, 13.7F}) {
        for (const bool drawnInto : {false, true}) {
            const auto bitmap = bitmapOf(Grid(30, 20, blue));
            bitmap->setSize(NSMakeSize(points, points * 2 / 3));
            NSImage image(bitmap->size());
            image.addRepresentation(bitmap);
            if (drawnInto) {
                const NSImageFocus focus(image);
                NSColor::colorWithCalibratedRed(0, 0, 1, 1).set();
                NSRectFill(NSMakeRect(0, 0, 1, 1));
            }
            const auto back = archivedAndBack(image);
            EXPECT_TRUE(NSEqualSizes(back->size(), image.size())) << points;
            EXPECT_TRUE(NSEqualSizes(back->bestRepresentation()->size(), image.size())) << points;
            EXPECT_TRUE(areAlike(shownBy(*back, 30, 20), Grid(30, 20, blue))) << points << drawnInto;
            const NSImageFocus focus(*back);
            cairo_surface_t* const surface = cairo_get_target(NSGraphicsContext::currentContext()->cairo());
            EXPECT_EQ(cairo_image_surface_get_width(surface), 30);
        }
    }
}

TEST(ImageArchiving, AnEmptyPictureHasOnlyASize) {
    const auto back = archivedAndBack(NSImage(NSMakeSize(3.5F, 2)));
    EXPECT_TRUE(back->representations().empty());
    EXPECT_TRUE(NSEqualSizes(back->size(), NSMakeSize(3.5F, 2)));
    EXPECT_EQ(NSImage(NSZeroSize).archiveClassName(), "NSImage");
}

TEST(ImageArchiving, BytesThatCannotBeDecodedGiveAnEmptyPictureOfSizeZero) {
    const auto back = archivedAndBack(Forged(NSData{1, 2, 3}, NSMakeSize(8, 8)));
    EXPECT_TRUE(back->representations().empty());
    EXPECT_EQ(back->encodedData(), nullptr);
    EXPECT_TRUE(NSEqualSizes(back->size(), NSZeroSize));
}

TEST(ImageArchiving, MissingPartsAreTakenAsUsual) {
    const auto nothing = archivedAndBack(Forged(std::nullopt, std::nullopt));
    EXPECT_TRUE(NSEqualSizes(nothing->size(), NSZeroSize));
    const NSData png = *bitmapOf(Grid(4, 3, red))->representationUsingType(NSPNGFileType, {});
    const auto withoutSize = archivedAndBack(Forged(png, std::nullopt));
    EXPECT_TRUE(NSEqualSizes(withoutSize->size(), NSMakeSize(4, 3)));
}

TEST(ImageArchiving, APictureThatCannotBeEncodedThrows) {
    NSImage image(NSMakeSize(2, 2));
    class ForeignRep : public NSImageRep {
    public:
        ForeignRep() : NSImageRep(100, 100) {}
    };
    image.addRepresentation(std::make_shared<ForeignRep>());
    // What it shows is nothing, and that is what is archived.
    EXPECT_TRUE(areAlike(shownBy(*archivedAndBack(image), 2, 2), Grid(2, 2)));
    image.setSize(NSZeroSize);
    EXPECT_THROW(archivedDataWithRootObject(image), NSException);
}
