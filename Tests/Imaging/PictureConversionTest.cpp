// Pictures brought into the layouts that pixel operations and renderers need.

#include "Tests/Imaging/ConversionFixtures.h"
#include "Tests/Imaging/CountingCodecs.h"

#include <gtest/gtest.h>

#include <memory>
#include <string_view>
#include <vector>

using namespace ImagingTests;

TEST(CanonicalConversion, GivesThePicturesOwnBitmapOfAnyKnownLayout) {
    for (const Bitmap& bitmap : {someBitmap(white, 1, false), someBitmap(white, 2, true),
                                 someBitmap(rgb, 3, false), someBitmap(rgb, 4, true)}) {
        const auto picture = pictureOf({bitmap});
        EXPECT_EQ(bitmapRepresentationWithCanonicalFormat(*picture), bitmap);
        EXPECT_TRUE(picture->encodings.empty());
    }
}

TEST(CanonicalConversion, GivesTheFirstOfSeveralThatQualifies) {
    const Bitmap unknown = someBitmap(deviceRGB, 3, false);
    const Bitmap first = someBitmap(white, 1, false);
    const Bitmap second = someBitmap(rgb, 4, true);
    const auto picture = pictureOf({unknown, first, second});
    EXPECT_EQ(bitmapRepresentationWithCanonicalFormat(*picture), first);
    const auto otherwise = std::make_shared<NSImage>(NSMakeSize(width, height));
    otherwise->addRepresentation(std::make_shared<Vectors>());
    otherwise->addRepresentation(second);
    otherwise->addRepresentation(first);
    EXPECT_EQ(bitmapRepresentationWithCanonicalFormat(*otherwise), second);
}

TEST(CanonicalConversion, OfDeviceColorWithAlphaDropsTheAlpha) {
    const Bitmap source = someBitmap(deviceRGB, 4, true);
    const Bitmap result = bitmapRepresentationWithCanonicalFormat(*pictureOf({source}));
    ASSERT_NE(result, nullptr);
    EXPECT_EQ(formatOf(result), 3);
    EXPECT_FALSE(result->hasAlpha());
    EXPECT_TRUE(isMadeOf(result, source, [](const Pixel& p) { return Pixel{p[0], p[1], p[2]}; }));
}

TEST(CanonicalConversion, OfDeviceBitmapsWithoutAlphaKeepsTheSamples) {
    const Bitmap color = someBitmap(deviceRGB, 3, false);
    const Bitmap colorResult = bitmapRepresentationWithCanonicalFormat(*pictureOf({color}));
    EXPECT_TRUE(isMadeOf(colorResult, color, same));
    EXPECT_EQ(formatOf(colorResult), 3);
    const Bitmap level = someBitmap(deviceWhite, 1, false);
    const Bitmap levelResult = bitmapRepresentationWithCanonicalFormat(*pictureOf({level}));
    EXPECT_TRUE(isMadeOf(levelResult, level, same));
    EXPECT_EQ(formatOf(levelResult), 1);
}

TEST(CanonicalConversion, OfGrayWithAlphaKeepsTwoSamplesAndAlpha) {
    const Bitmap source = someBitmap(deviceWhite, 2, true);
    const Bitmap result = bitmapRepresentationWithCanonicalFormat(*pictureOf({source}));
    ASSERT_NE(result, nullptr);
    EXPECT_EQ(formatOf(result), 2);
    EXPECT_TRUE(Imaging::hasAlpha(*result));
    EXPECT_TRUE(isMadeOf(result, source, same));
}

TEST(CanonicalConversion, OfBlackIsZeroGrayInvertsIt) {
    for (const std::string_view space : {black, deviceBlack}) {
        for (const int bits : {8, 16}) {
            const Bitmap source = someBitmap(space, 1, false, bits);
            const Bitmap result = bitmapRepresentationWithCanonicalFormat(*pictureOf({source}));
            ASSERT_NE(result, nullptr);
            EXPECT_EQ(formatOf(result), 1);
            EXPECT_TRUE(isMadeOf(result, source,
                                 [bits](const Pixel& p) {
                                     const std::uint16_t byte = bits == 8 ? p[0] : eight(p[0]);
                                     return Pixel{static_cast<std::uint16_t>(255 - byte)};
                                 }))
                << space << bits;
        }
    }
}

TEST(CanonicalConversion, OfPlanarAndPaddedBitmapsKeepsTheSamples) {
    const Bitmap planar = someBitmap(rgb, 4, true, 8, true);
    const Bitmap fromPlanar = bitmapRepresentationWithCanonicalFormat(*pictureOf({planar}));
    EXPECT_TRUE(isMadeOf(fromPlanar, planar, same));
    EXPECT_EQ(formatOf(fromPlanar), 4); // as it was encoded and decoded
    NSBitmapDescription description;
    description.pixelsWide = width;
    description.pixelsHigh = height;
    description.samplesPerPixel = 3;
    description.hasAlpha = false;
    description.bitsPerPixel = 32;
    const Bitmap padded = NSBitmapImageRep::bitmapWithDescription(description);
    const Bitmap pattern = someBitmap(rgb, 3, false);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) padded->setPixelAt(x, y, pattern->pixelAt(x, y));
    }
    const Bitmap fromPadded = bitmapRepresentationWithCanonicalFormat(*pictureOf({padded}));
    EXPECT_TRUE(isMadeOf(fromPadded, pattern, same));
    EXPECT_EQ(formatOf(fromPadded), 3);
}

TEST(CanonicalConversion, OfSixteenBitsRoundsToEightAndDropsAlpha) {
    const Bitmap color = someBitmap(rgb, 3, false, 16);
    const Bitmap colorResult = bitmapRepresentationWithCanonicalFormat(*pictureOf({color}));
    ASSERT_NE(colorResult, nullptr);
    EXPECT_EQ(formatOf(colorResult), 3);
    EXPECT_TRUE(isMadeOf(colorResult, color, [](const Pixel& p) {
        return Pixel{eight(p[0]), eight(p[1]), eight(p[2])};
    }));
    const Bitmap level = someBitmap(white, 1, false, 16);
    const Bitmap levelResult = bitmapRepresentationWithCanonicalFormat(*pictureOf({level}));
    ASSERT_NE(levelResult, nullptr);
    EXPECT_EQ(formatOf(levelResult), 1);
    EXPECT_TRUE(isMadeOf(levelResult, level, [](const Pixel& p) { return Pixel{eight(p[0])}; }));
    const Bitmap translucent =
        bitmapRepresentationWithCanonicalFormat(*pictureOf({someBitmap(rgb, 4, true, 16)}));
    ASSERT_NE(translucent, nullptr);
    EXPECT_EQ(formatOf(translucent), 3);
}

TEST(CanonicalConversion, OfSixteenBitColorWithAlphaKeepsThePremultipliedColor) {
    // Two bitmaps, so that it is not decoded by way of PNG, which holds colour unmultiplied.
    const Bitmap source = someBitmap(rgb, 4, true, 16);
    const Bitmap result =
        bitmapRepresentationWithCanonicalFormat(*pictureOf({source, someBitmap(rgb, 3, false, 16)}));
    EXPECT_TRUE(isMadeOf(result, source, [](const Pixel& p) {
        return Pixel{eight(p[0]), eight(p[1]), eight(p[2])};
    }));
}

TEST(CanonicalConversion, OfSixteenBitGrayWithAlphaKeepsTwoSamples) {
    const Bitmap source = someBitmap(white, 2, true, 16);
    const Bitmap result =
        bitmapRepresentationWithCanonicalFormat(*pictureOf({source, someBitmap(white, 1, false, 16)}));
    ASSERT_NE(result, nullptr);
    EXPECT_EQ(formatOf(result), 2);
    // A source of an unknown layout has no alpha that counts, so all of it is opaque.
    EXPECT_TRUE(isMadeOf(result, source, [](const Pixel& p) { return Pixel{eight(p[0]), 255}; }));
}

TEST(CanonicalConversion, GoesThroughPNGForOneSixteenBitBitmapAndNotForEightBits) {
    const CountedCodec png("PNG");
    const CountedCodec tiff("TIFF");
    EXPECT_NE(bitmapRepresentationWithCanonicalFormat(*pictureOf({someBitmap(deviceRGB, 3, false)})),
              nullptr);
    EXPECT_EQ(png.encodings(), 0);
    EXPECT_EQ(png.decodings(), 0);
    EXPECT_EQ(tiff.encodings(), 1);
    EXPECT_EQ(tiff.decodings(), 1);
    EXPECT_NE(bitmapRepresentationWithCanonicalFormat(*pictureOf({someBitmap(rgb, 3, false, 16)})), nullptr);
    EXPECT_EQ(png.encodings(), 1);
    EXPECT_EQ(png.decodings(), 1);
    EXPECT_EQ(tiff.encodings(), 2);
    EXPECT_EQ(tiff.decodings(), 2);
}

TEST(CanonicalConversion, DoesNotGoThroughPNGForSeveralBitmaps) {
    const CountedCodec png("PNG");
    const auto picture = pictureOf({someBitmap(rgb, 3, false, 16), someBitmap(rgb, 3, false, 16)});
    EXPECT_NE(bitmapRepresentationWithCanonicalFormat(*picture), nullptr);
    EXPECT_EQ(png.encodings(), 0);
}

TEST(CanonicalConversion, GoesThroughPNGForTheOnlyBitmapAmongOtherForms) {
    const CountedCodec png("PNG");
    const auto picture = pictureOf({someBitmap(rgb, 3, false, 16)});
    picture->addRepresentation(std::make_shared<Vectors>());
    EXPECT_NE(bitmapRepresentationWithCanonicalFormat(*picture), nullptr);
    EXPECT_EQ(png.encodings(), 1);
}

TEST(CanonicalConversion, IsNoneWhereTheWayThroughPNGFails) {
    CountedCodec png("PNG");
    png.failToEncode();
    EXPECT_EQ(bitmapRepresentationWithCanonicalFormat(*pictureOf({someBitmap(rgb, 3, false, 16)})), nullptr);
    EXPECT_EQ(png.encodings(), 1);
}

TEST(CanonicalConversion, OfADrawnPictureIsWhatWasDrawn) {
    const Grid grid = distinctPicture(width, height);
    NSImage picture(NSMakeSize(width, height));
    {
        const Imaging::Platform::NSImageFocus focus(picture);
        pictureNode(grid)->drawWithTransform(NSAffineTransform(), 2, 1);
    }
    const Bitmap result = bitmapRepresentationWithCanonicalFormat(picture);
    ASSERT_NE(result, nullptr);
    EXPECT_EQ(formatOf(result), 4);
    EXPECT_TRUE(Pixels::areAlike(Pixels::gridOf(*result), grid));
}

TEST(OtherConversions, DoNotGoThroughPNG) {
    const CountedCodec png("PNG");
    const auto picture = pictureOf({someBitmap(rgb, 4, true, 16)});
    EXPECT_NE(bitmapRepresentationWithAlphaFormat(*picture), nullptr);
    EXPECT_NE(bitmapRepresentationWithRGBAFormat(*picture), nullptr);
    EXPECT_NE(bitmapRepresentationWithMaskFormat(*picture), nullptr);
    EXPECT_NE(bitmapRepresentationWithABGRFormat(*picture), nullptr);
    EXPECT_EQ(png.encodings(), 0);
}

TEST(AlphaConversion, GivesThePicturesOwnBitmapWithAlpha) {
    const Bitmap levels = someBitmap(white, 2, true);
    const Bitmap colors = someBitmap(rgb, 4, true);
    EXPECT_EQ(bitmapRepresentationWithAlphaFormat(*pictureOf({someBitmap(rgb, 3, false), levels, colors})),
              levels);
    EXPECT_EQ(bitmapRepresentationWithAlphaFormat(*pictureOf({colors, levels})), colors);
}

TEST(AlphaConversion, AddsAnOpaqueAlpha) {
    const Bitmap level = someBitmap(white, 1, false);
    const Bitmap levelResult = bitmapRepresentationWithAlphaFormat(*pictureOf({level}));
    ASSERT_TRUE(isMadeOf(levelResult, level, [](const Pixel& p) { return Pixel{p[0], 255}; }));
    EXPECT_EQ(formatOf(levelResult), 2);
    EXPECT_TRUE(levelResult->hasAlpha());
    const Bitmap color = someBitmap(rgb, 3, false);
    const Bitmap colorResult = bitmapRepresentationWithAlphaFormat(*pictureOf({color}));
    ASSERT_TRUE(isMadeOf(colorResult, color, [](const Pixel& p) { return Pixel{p[0], p[1], p[2], 255}; }));
    EXPECT_EQ(formatOf(colorResult), 4);
    EXPECT_TRUE(colorResult->hasAlpha());
}

TEST(AlphaConversion, OfBlackIsZeroGrayInvertsItAndStaysGray) {
    const Bitmap source = someBitmap(black, 1, false);
    const Bitmap result = bitmapRepresentationWithAlphaFormat(*pictureOf({source}));
    EXPECT_TRUE(isMadeOf(result, source, [](const Pixel& p) {
        return Pixel{static_cast<std::uint16_t>(255 - p[0]), 255};
    }));
    EXPECT_EQ(formatOf(result), 2);
}

TEST(AlphaConversion, OfSixteenBitsTakesTheSourceAsOpaque) {
    const Bitmap color = someBitmap(rgb, 4, true, 16); // one more sample than four is still four
    const Bitmap colorResult = bitmapRepresentationWithAlphaFormat(*pictureOf({color}));
    ASSERT_NE(colorResult, nullptr);
    EXPECT_EQ(formatOf(colorResult), 4);
    EXPECT_TRUE(isMadeOf(colorResult, color, [](const Pixel& p) {
        return Pixel{eight(p[0]), eight(p[1]), eight(p[2]), 255};
    }));
    const Bitmap level = someBitmap(white, 2, true, 16);
    const Bitmap levelResult = bitmapRepresentationWithAlphaFormat(*pictureOf({level}));
    ASSERT_NE(levelResult, nullptr);
    EXPECT_EQ(formatOf(levelResult), 2);
    EXPECT_TRUE(isMadeOf(levelResult, level, [](const Pixel& p) { return Pixel{eight(p[0]), 255}; }));
}

TEST(AlphaConversion, OfADeviceBitmapWithAlphaKeepsIt) {
    const Bitmap source = someBitmap(deviceRGB, 4, true);
    const Bitmap result = bitmapRepresentationWithAlphaFormat(*pictureOf({source}));
    ASSERT_TRUE(isMadeOf(result, source, same));
    EXPECT_TRUE(Imaging::hasAlpha(*result));
}

TEST(RGBAConversion, GivesThePicturesOwnRGBABitmapAlone) {
    const Bitmap own = someBitmap(rgb, 4, true);
    EXPECT_EQ(bitmapRepresentationWithRGBAFormat(
                  *pictureOf({someBitmap(white, 2, true), someBitmap(rgb, 3, false), own})),
              own);
}

TEST(RGBAConversion, MakesRGBAOfAnyOther) {
    const Bitmap level = someBitmap(white, 1, false);
    EXPECT_TRUE(isMadeOf(bitmapRepresentationWithRGBAFormat(*pictureOf({level})), level, [](const Pixel& p) {
        return Pixel{p[0], p[0], p[0], 255};
    }));
    const Bitmap translucent = someBitmap(white, 2, true);
    EXPECT_TRUE(isMadeOf(bitmapRepresentationWithRGBAFormat(*pictureOf({translucent})), translucent,
                         [](const Pixel& p) {
                             return Pixel{p[0], p[0], p[0], p[1]};
                         }));
    const Bitmap color = someBitmap(rgb, 3, false);
    EXPECT_TRUE(isMadeOf(bitmapRepresentationWithRGBAFormat(*pictureOf({color})), color, [](const Pixel& p) {
        return Pixel{p[0], p[1], p[2], 255};
    }));
    const Bitmap device = someBitmap(deviceRGB, 4, true);
    EXPECT_TRUE(isMadeOf(bitmapRepresentationWithRGBAFormat(*pictureOf({device})), device, same));
    const Bitmap planar = someBitmap(rgb, 4, true, 8, true);
    EXPECT_TRUE(isMadeOf(bitmapRepresentationWithRGBAFormat(*pictureOf({planar})), planar, same));
    for (const Bitmap& source : {level, translucent, color, device, planar}) {
        EXPECT_EQ(formatOf(bitmapRepresentationWithRGBAFormat(*pictureOf({source}))), 4);
    }
}

TEST(MaskConversion, GivesThePicturesOwnGrayBitmapAlone) {
    const Bitmap own = someBitmap(white, 1, false);
    EXPECT_EQ(bitmapRepresentationWithMaskFormat(
                  *pictureOf({someBitmap(rgb, 4, true), someBitmap(white, 2, true), own})),
              own);
}

TEST(MaskConversion, MakesGrayOfAnyOther) {
    const Bitmap translucent = someBitmap(white, 2, true);
    EXPECT_TRUE(isMadeOf(bitmapRepresentationWithMaskFormat(*pictureOf({translucent})), translucent,
                         [](const Pixel& p) { return Pixel{p[0]}; }));
    const Bitmap color = someBitmap(rgb, 3, false);
    EXPECT_TRUE(isMadeOf(bitmapRepresentationWithMaskFormat(*pictureOf({color})), color,
                         [](const Pixel& p) { return Pixel{gray(p[0], p[1], p[2])}; }));
    const Bitmap both = someBitmap(rgb, 4, true);
    EXPECT_TRUE(isMadeOf(bitmapRepresentationWithMaskFormat(*pictureOf({both})), both,
                         [](const Pixel& p) { return Pixel{gray(p[0], p[1], p[2])}; }));
    const Bitmap inverted = someBitmap(black, 1, false);
    EXPECT_TRUE(isMadeOf(bitmapRepresentationWithMaskFormat(*pictureOf({inverted})), inverted,
                         [](const Pixel& p) { return Pixel{static_cast<std::uint16_t>(255 - p[0])}; }));
    for (const Bitmap& source : {translucent, color, both, inverted}) {
        EXPECT_EQ(formatOf(bitmapRepresentationWithMaskFormat(*pictureOf({source}))), 1);
    }
}

TEST(ABGRConversion, PutsAlphaFirstInTheBytes) {
    const Bitmap source = someBitmap(rgb, 4, true);
    const Bitmap result = bitmapRepresentationWithABGRFormat(*pictureOf({source}));
    ASSERT_TRUE(isMadeOf(result, source, [](const Pixel& p) { return Pixel{p[3], p[0], p[1], p[2]}; }));
    EXPECT_EQ(formatOf(result), 4); // it is not recorded in the bitmap
    EXPECT_EQ(result->bitmapFormat(), 0U);
    EXPECT_TRUE(result->hasAlpha());
    EXPECT_EQ(result->bitmapData()[0], source->pixelAt(0, 0)[3]);
}

TEST(ABGRConversion, IsAlwaysAFreshOne) {
    const Bitmap source = someBitmap(rgb, 4, true);
    const auto picture = pictureOf({source});
    const Bitmap first = bitmapRepresentationWithABGRFormat(*picture);
    const Bitmap second = bitmapRepresentationWithABGRFormat(*picture);
    EXPECT_NE(first, source);
    EXPECT_NE(first, second);
    EXPECT_EQ(picture->encodings.size(), 2U);
    EXPECT_EQ(picture->representations(),
              std::vector<std::shared_ptr<Imaging::Platform::NSImageRep>>{source});
}

TEST(ABGRConversion, MakesItOfAnyLayout) {
    const Bitmap level = someBitmap(white, 2, true);
    EXPECT_TRUE(isMadeOf(bitmapRepresentationWithABGRFormat(*pictureOf({level})), level, [](const Pixel& p) {
        return Pixel{p[1], p[0], p[0], p[0]};
    }));
    const Bitmap color = someBitmap(deviceRGB, 3, false);
    EXPECT_TRUE(isMadeOf(bitmapRepresentationWithABGRFormat(*pictureOf({color})), color, [](const Pixel& p) {
        return Pixel{255, p[0], p[1], p[2]};
    }));
    const Bitmap deep = someBitmap(rgb, 4, true, 16);
    EXPECT_TRUE(isMadeOf(bitmapRepresentationWithABGRFormat(*pictureOf({deep})), deep, [](const Pixel& p) {
        return Pixel{255, eight(p[0]), eight(p[1]), eight(p[2])};
    }));
}
