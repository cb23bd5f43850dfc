// What all conversions of pictures have in common: size, failures, and the lock.

#include "Tests/Imaging/ConversionFixtures.h"

#include <gtest/gtest.h>

#include <mutex>
#include <vector>

using namespace ImagingTests;

TEST(PictureConversions, MakeABitmapOfThePicturesSizeWithoutScaling) {
    const Bitmap source = someBitmap(rgb, 3, false);
    const Bitmap larger = bitmapRepresentationWithRGBAFormat(*pictureOf({source}, width + 3.9F, height + 2));
    ASSERT_NE(larger, nullptr);
    EXPECT_EQ(larger->pixelsWide(), width + 3);
    EXPECT_EQ(larger->pixelsHigh(), height + 2);
    EXPECT_EQ(larger->pixelAt(width, height + 1), Pixel{}); // to the right
    EXPECT_EQ(larger->pixelAt(0, 0), Pixel{});              // above
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            const Pixel p = source->pixelAt(x, y);
            EXPECT_EQ(larger->pixelAt(x, y + 2), (Pixel{p[0], p[1], p[2], 255}));
        }
    }
    const Bitmap smaller = bitmapRepresentationWithABGRFormat(*pictureOf({source}, 3, 2));
    ASSERT_NE(smaller, nullptr);
    EXPECT_EQ(smaller->pixelsWide(), 3);
    EXPECT_EQ(smaller->pixelsHigh(), 2);
    const Pixel corner = source->pixelAt(0, height - 1); // the lower left corner stays
    EXPECT_EQ(smaller->pixelAt(0, 1), (Pixel{255, corner[0], corner[1], corner[2]}));
}

TEST(PictureConversions, OfAFreshlyDecodedBitmapThatQualifiesKeepItsPixelSize) {
    // Only what is drawn into a new bitmap takes the picture's size.
    const Bitmap result =
        bitmapRepresentationWithCanonicalFormat(*pictureOf({someBitmap(deviceRGB, 3, false)}, 30, 20));
    ASSERT_NE(result, nullptr);
    EXPECT_EQ(result->pixelsWide(), width);
    EXPECT_EQ(result->pixelsHigh(), height);
}

TEST(PictureConversions, AreNoneForAPictureWithoutArea) {
    for (const Conversion conversion : allConversions) {
        EXPECT_EQ(conversion(NSImage(NSMakeSize(0, 0))), nullptr);
        EXPECT_EQ(conversion(*pictureOf({someBitmap(rgb, 3, false, 16)}, 0, 0)), nullptr);
    }
}

TEST(PictureConversions, AreNoneWhereEncodingFails) {
    for (const Conversion conversion : allConversions) {
        for (const Thrown kind : {Thrown::Exception, Thrown::StandardException, Thrown::Number}) {
            const auto picture = pictureOf({someBitmap(deviceRGB, 3, false, 16)});
            picture->throwsOnEncode = kind;
            EXPECT_EQ(conversion(*picture), nullptr);
            EXPECT_EQ(picture->encodings.size(), 1U);
            EXPECT_FALSE(imageLockIsHeld());
        }
        const auto silent = pictureOf({someBitmap(deviceRGB, 3, false, 16)});
        silent->encodesNothing = true;
        EXPECT_EQ(conversion(*silent), nullptr);
    }
}

TEST(PictureConversions, AreNoneWhereWhatWasEncodedCannotBeDecoded) {
    for (const Conversion conversion : allConversions) {
        const auto picture = pictureOf({someBitmap(deviceRGB, 3, false, 16)});
        picture->encodesAs = Imaging::Platform::NSData{'I', 'I', 42, 0, 1, 2, 3};
        EXPECT_EQ(conversion(*picture), nullptr);
        picture->encodesAs = Imaging::Platform::NSData{};
        EXPECT_EQ(conversion(*picture), nullptr);
    }
}

TEST(PictureConversions, EncodeThePictureUnderTheLock) {
    for (const Conversion conversion : allConversions) {
        const auto picture = pictureOf({someBitmap(deviceRGB, 3, false, 16)});
        EXPECT_NE(conversion(*picture), nullptr);
        EXPECT_EQ(picture->encodings, std::vector<bool>{true});
        EXPECT_FALSE(imageLockIsHeld());
        const std::lock_guard<std::recursive_mutex> held(Imaging::GlobalImageLock());
        EXPECT_NE(conversion(*picture), nullptr); // whoever holds it may convert
    }
}

TEST(TIFFOfAPicture, IsMadeUnderTheLock) {
    const auto picture = pictureOf({someBitmap(rgb, 3, false)});
    const auto data = Imaging::ThreadSafeTIFFRepresentation(*picture);
    ASSERT_TRUE(data.has_value());
    EXPECT_EQ(data, picture->NSImage::TIFFRepresentation());
    EXPECT_EQ(picture->encodings, std::vector<bool>{true});
    EXPECT_FALSE(imageLockIsHeld());
}

TEST(TIFFOfAPicture, PassesWhatEncodingThrowsOnWithTheLockGivenBack) {
    for (const Thrown kind : {Thrown::Exception, Thrown::StandardException, Thrown::Number}) {
        const auto picture = pictureOf({someBitmap(rgb, 3, false)});
        picture->throwsOnEncode = kind;
        EXPECT_ANY_THROW(Imaging::ThreadSafeTIFFRepresentation(*picture));
        EXPECT_EQ(picture->encodings, std::vector<bool>{true});
        EXPECT_FALSE(imageLockIsHeld());
    }
    const auto picture = pictureOf({someBitmap(rgb, 3, false)});
    picture->throwsOnEncode = Thrown::Exception;
    EXPECT_THROW(Imaging::ThreadSafeTIFFRepresentation(*picture), NSException);
}

TEST(TIFFOfAPicture, IsNoneWhereThereIsNone) {
    const auto picture = pictureOf({someBitmap(rgb, 3, false)});
    picture->encodesNothing = true;
    EXPECT_FALSE(Imaging::ThreadSafeTIFFRepresentation(*picture).has_value());
    EXPECT_FALSE(imageLockIsHeld());
}
