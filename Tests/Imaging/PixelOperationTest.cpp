// What all pixel operations share, seen through two operations made for the test: how results are made, kept
// and dropped, drawn, searched and archived.

#include "Imaging/PixelOperation.h"
#include "Platform/Codecs/Codec.h"
#include "Tests/Imaging/PixelOperationFixtures.h"

#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <string>

using namespace ImagingTests;

namespace {

/// Writes the complement of every byte of the source.
template<class Base>
class Inverting : public Base {
public:
    explicit Inverting(std::shared_ptr<IMGImage> source) : Base(std::move(source)) {}

    int computations = 0;
    std::optional<Thrown> thrown;
    NSAffineTransform ownTransform;
    using Base::computedFrom;

    std::string archiveClassName() const override { return "Inverting"; }
    NSAffineTransform transform() const override { return ownTransform; }

    void computePixels(const NSBitmapImageRep& source, NSBitmapImageRep& destination) override {
        ++computations;
        if (thrown.has_value()) throwSomething(*thrown);
        for (std::int64_t y = 0; y < source.pixelsHigh(); ++y) {
            for (std::int64_t x = 0; x < source.pixelsWide(); ++x) {
                auto pixel = source.pixelAt(x, y);
                for (auto& sample : pixel) sample = static_cast<std::uint16_t>(255 - sample);
                destination.setPixelAt(x, y, pixel);
            }
        }
    }
};

using UntilChanged = Inverting<Imaging::ChangeCachedOperation>;
using BySource = Inverting<Imaging::SourceCachedOperation>;

Grid inverted(Grid grid) {
    for (int y = 0; y < grid.height(); ++y) {
        for (int x = 0; x < grid.width(); ++x) {
            const auto byte = [](std::uint8_t sample) { return static_cast<std::uint8_t>(255 - sample); };
            Rgba& p = grid.at(x, y);
            p = {byte(p.r), byte(p.g), byte(p.b), byte(p.a)};
        }
    }
    return grid;
}

/// Its inversion is opaque and can be drawn.
Grid transparentPicture(int width, int height) {
    Grid grid(width, height);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            grid.at(x, y) = {static_cast<std::uint8_t>(20 * x), static_cast<std::uint8_t>(30 * y), 9, 0};
        }
    }
    return grid;
}

std::shared_ptr<CCImage> resultOf(const Grid& grid) {
    return CCImage::ccImageWithNSImage(Pixels::imageOf(grid));
}

} // namespace

TEST(PixelOperation, TreatsEveryKnownLayoutUnlessItSaysOtherwise) {
    Rows rows = rowOf(3, {1, 2, 3});
    const UntilChanged node(rows.node());
    for (const IMGBitmapFormat format : allFormats) EXPECT_TRUE(node.treatsFormat(format)) << format;
    EXPECT_FALSE(node.treatsFormat(Imaging::IMGBitmapFormatUnknown));
    EXPECT_FALSE(node.treatsFormat(static_cast<IMGBitmapFormat>(5)));
}

TEST(PixelOperation, MakesAResultOfTheSourcesLayoutAndSize) {
    Pixels::Random random(11);
    for (const IMGBitmapFormat format : allFormats) {
        Rows rows(7, 5, format, 3);
        rows.fill(random);
        UntilChanged node(rows.node());
        const auto result = node.untransformedImage();
        const auto bitmap = bitmapOfResult(result);
        EXPECT_TRUE(isSize(result->size(), 7, 5));
        EXPECT_EQ(Imaging::imgBitmapFormat(*bitmap), format);
        EXPECT_EQ(bitmap->pixelsWide(), 7);
        EXPECT_EQ(bitmap->pixelsHigh(), 5);
        EXPECT_EQ(bitmap->hasAlpha(), format % 2 == 0);
        for (int y = 0; y < 5; ++y) {
            for (int x = 0; x < 7; ++x) {
                for (int i = 0; i < format; ++i) {
                    ASSERT_EQ(bitmap->pixelAt(x, y)[static_cast<std::size_t>(i)], 255 - rows.pixel(x, y)[i]);
                }
            }
        }
    }
}

TEST(PixelOperation, KeepsTheExactSizeOfPicturesWiderThanFloatsCount) {
    constexpr int width = (1 << 24) + 3; // a float would make it 2^24 + 4
    Rows rows(width, 1, 1, 0);
    rows.clear();
    struct Measuring : Imaging::ChangeCachedOperation {
        using ChangeCachedOperation::ChangeCachedOperation;
        explicit Measuring(std::shared_ptr<IMGImage> source) : ChangeCachedOperation(std::move(source)) {}
        std::int64_t width = 0;
        void computePixels(const NSBitmapImageRep&, NSBitmapImageRep& destination) override {
            width = destination.pixelsWide();
        }
    };
    Measuring node(rows.node());
    EXPECT_NE(node.untransformedImage(), nullptr);
    EXPECT_EQ(node.width, width);
}

TEST(PixelOperation, TakesAConvertedPictureWhereTheLayoutIsUnknown) {
    Imaging::Platform::NSBitmapDescription description;
    description.pixelsWide = 3;
    description.pixelsHigh = 2;
    description.bitsPerSample = 16;
    description.samplesPerPixel = 3;
    description.hasAlpha = false;
    const auto deep = NSBitmapImageRep::bitmapWithDescription(description);
    deep->setPixelAt(1, 1, {0xFFFF, 0, 0x8080});
    const auto picture = std::make_shared<NSImage>(NSMakeSize(3, 2));
    picture->addRepresentation(deep);
    UntilChanged node(std::make_shared<IMGImageFromNSImage>(picture));
    const auto bitmap = bitmapOfResult(node.untransformedImage());
    EXPECT_EQ(Imaging::imgBitmapFormat(*bitmap), IMGBitmapFormatRGB);
    EXPECT_EQ(bitmap->pixelAt(1, 1), (std::array<std::uint16_t, 5>{0, 255, 127, 0, 0}));
}

TEST(PixelOperation, CarriesNoColorProfileOver) {
    const auto bitmap = Pixels::bitmapOf(transparentPicture(2, 2));
    bitmap->setProperty(Imaging::Platform::NSImageColorSyncProfileData, Imaging::Platform::NSData{1, 2, 3});
    const auto picture = std::make_shared<NSImage>(NSMakeSize(2, 2));
    picture->addRepresentation(bitmap);
    UntilChanged node(std::make_shared<IMGImageFromNSImage>(picture));
    EXPECT_TRUE(bitmapOfResult(node.untransformedImage())->properties().empty());
}

TEST(PixelOperation, HasNoResultWithoutOneOfItsSourceAndTriesAgain) {
    const auto source = std::make_shared<TestNode>();
    UntilChanged untilChanged(source);
    BySource bySource(source);
    EXPECT_EQ(untilChanged.untransformedImage(), nullptr);
    EXPECT_EQ(bySource.untransformedImage(), nullptr);
    source->rendered = CCImage::ccImageWithCIImage(nullptr); // a result without a picture
    EXPECT_EQ(untilChanged.untransformedImage(), nullptr);
    EXPECT_EQ(bySource.untransformedImage(), nullptr);
    source->rendered = resultOf(transparentPicture(2, 2));
    EXPECT_NE(untilChanged.untransformedImage(), nullptr);
    EXPECT_NE(bySource.untransformedImage(), nullptr);
}

TEST(PixelOperation, HasAnEmptyResultWhereTheConversionFails) {
    const auto source = std::make_shared<TestNode>();
    source->rendered = CCImage::ccImageWithNSImage(std::make_shared<NSImage>(NSMakeSize(0, 0)));
    ASSERT_EQ(Imaging::bitmapRepresentationWithCanonicalFormat(*source->rendered->nsImage()), nullptr);
    UntilChanged untilChanged(source);
    BySource bySource(source);
    for (const auto& result : {untilChanged.untransformedImage(), bySource.untransformedImage()}) {
        ASSERT_NE(result, nullptr);
        ASSERT_NE(result->nsImage(), nullptr);
        EXPECT_TRUE(isSize(result->size(), 0, 0));
        EXPECT_TRUE(result->nsImage()->representations().empty());
    }
    EXPECT_EQ(untilChanged.computations + bySource.computations, 0);
}

TEST(PixelOperation, PassesOnWhatTheComputationThrowsAndKeepsNothing) {
    UntilChanged node(pictureNode(transparentPicture(2, 2)));
    node.thrown = Thrown::Exception;
    EXPECT_THROW(node.untransformedImage(), NSException);
    EXPECT_EQ(node.image(), nullptr);
    node.thrown.reset();
    EXPECT_NE(node.untransformedImage(), nullptr);
}

TEST(PixelOperation, RefusesAResultBeyondThePictureLimits) {
    UntilChanged node(pictureNode(transparentPicture(8, 8)));
    const Imaging::Platform::PictureLimits before = Imaging::Platform::pictureLimits();
    Imaging::Platform::setPictureLimits({63, before.maximumBytes});
    EXPECT_THROW(node.untransformedImage(), NSException);
    Imaging::Platform::setPictureLimits(before);
    EXPECT_NE(node.untransformedImage(), nullptr);
}

TEST(PixelOperation, NeedsASource) {
    EXPECT_THROW(UntilChanged(nullptr), NSException);
    EXPECT_THROW(BySource(nullptr), NSException);
}

TEST(PixelOperation, RendersItsResultAsItsImage) {
    UntilChanged node(pictureNode(transparentPicture(3, 2)));
    EXPECT_EQ(node.image(), node.untransformedImage());
    EXPECT_EQ(node.computations, 1);
}

TEST(ResultUntilChanged, IsComputedOnceAndDroppedByAChange) {
    UntilChanged node(pictureNode(transparentPicture(3, 2)));
    const auto first = node.untransformedImage();
    EXPECT_EQ(node.untransformedImage(), first);
    EXPECT_EQ(node.computations, 1);
    Counter counter;
    node.addImageDidChangeObserver(&counter, &Counter::told);
    node.changed();
    EXPECT_EQ(counter.tellings, 1);
    EXPECT_NE(node.untransformedImage(), first);
    EXPECT_EQ(node.computations, 2);
}

TEST(ResultUntilChanged, IsGoneWhenTheObserversAreTold) {
    struct Asking {
        std::shared_ptr<CCImage> seen;
        void told(IMGImage& node) { seen = node.untransformedImage(); }
    };
    UntilChanged node(pictureNode(transparentPicture(3, 2)));
    const auto first = node.untransformedImage();
    Asking asking;
    node.addImageDidChangeObserver(&asking, &Asking::told);
    node.changed();
    EXPECT_NE(asking.seen, nullptr);
    EXPECT_NE(asking.seen, first);
}

TEST(ResultUntilChanged, IsDroppedByAChangeOfItsSourceAndByAnotherSource) {
    const auto source = pictureNode(transparentPicture(3, 2));
    UntilChanged node(source);
    const auto first = node.untransformedImage();
    source->changed();
    const auto second = node.untransformedImage();
    EXPECT_NE(second, first);
    node.replaceSourceAtIndex(0, pictureNode(transparentPicture(4, 4)));
    EXPECT_TRUE(isSize(node.untransformedImage()->size(), 4, 4));
}

TEST(ResultBySource, IsKeptWhateverChangesAreAnnounced) {
    const auto source = pictureNode(transparentPicture(3, 2));
    BySource node(source);
    const auto first = node.untransformedImage();
    node.changed();
    source->changed();
    EXPECT_EQ(node.untransformedImage(), first);
    EXPECT_EQ(node.computations, 1);
}

TEST(ResultBySource, IsComputedAnewForAnotherResultOfTheSource) {
    const auto source = std::make_shared<TestNode>();
    source->rendered = resultOf(transparentPicture(3, 2));
    BySource node(source);
    const auto first = node.untransformedImage();
    source->rendered = resultOf(transparentPicture(5, 2)); // and no word of it
    const auto second = node.untransformedImage();
    EXPECT_NE(second, first);
    EXPECT_TRUE(isSize(second->size(), 5, 2));
    source->rendered = nullptr;
    EXPECT_EQ(node.untransformedImage(), nullptr);
}

TEST(DrawingAPixelOperation, DrawsTheResultInThePlaceOfTheSource) {
    const Grid grid = transparentPicture(4, 3);
    const auto node = std::make_shared<UntilChanged>(pictureNode(grid));
    const Grid drawn = drawnOn(9, 8, [&] { node->drawWithTransform(moved(2, 4), 2, 1); });
    Grid expected(9, 8);
    paint(expected, inverted(grid), [](Spot spot) { return Spot{spot.x + 2, spot.y + 4}; });
    EXPECT_TRUE(Pixels::areAlike(drawn, expected));
}

TEST(DrawingAPixelOperation, PlacesTheResultUnderTheSourcesTransform) {
    const auto source = leaf(NSMakeRect(0, 0, 4, 3), moved(1, 2));
    source->rendered = resultOf(transparentPicture(4, 3));
    UntilChanged node(source);
    node.ownTransform = matrix(0, 1, -1, 0, 6, 0);
    node.drawWithTransform(moved(3, 5), 13, 0.5F);
    ASSERT_EQ(source->draws.size(), 1U);
    EXPECT_EQ(source->draws[0].image, node.untransformedImage().get());
    EXPECT_EQ(source->draws[0].operation, 13);
    EXPECT_EQ(source->draws[0].fraction, 0.5F);
    ASSERT_EQ(source->draws[0].records.size(), 2U);
    EXPECT_TRUE(isTransform(source->draws[0].records[0].transform(), matrix(0, 1, -1, 0, 9, 5)));
    EXPECT_TRUE(isTransform(source->draws[0].records[1].transform(), moved(1, 2)));
}

TEST(DrawingAPixelOperation, PassesAGivenImageOnAndComputesNothing) {
    const auto source = leaf(NSMakeRect(0, 0, 4, 3));
    UntilChanged node(source);
    const auto given = resultOf(transparentPicture(1, 1));
    node.drawImage(given, TransformAndClipList(), 2, 1, nullptr);
    ASSERT_EQ(source->draws.size(), 1U);
    EXPECT_EQ(source->draws[0].image, given.get());
    EXPECT_EQ(source->renderings, 0);
}

TEST(DrawingAPixelOperation, ThatHasNoResultDrawsItsSource) {
    const auto source = leaf(NSMakeRect(0, 0, 4, 3));
    UntilChanged node(source);
    node.drawWithTransform(NSAffineTransform(), 2, 1);
    ASSERT_EQ(source->draws.size(), 1U);
    EXPECT_EQ(source->draws[0].image, nullptr);
}

TEST(DrawingAPixelOperation, ComputesEachOneOfAChain) {
    const Grid grid = distinctPicture(4, 3);
    const auto inner = std::make_shared<UntilChanged>(pictureNode(grid));
    const auto outer = std::make_shared<BySource>(inner);
    EXPECT_TRUE(Pixels::areAlike(drawnOn(4, 3, [&] { outer->drawWithTransform({}, 2, 1); }), grid));
    EXPECT_EQ(inner->computations, 1);
    EXPECT_EQ(outer->computations, 1);
}

TEST(BoundsOfAPixelOperation, AreThoseOfItsSource) {
    UntilChanged node(leaf(NSMakeRect(3, 4, 20, 10)));
    EXPECT_TRUE(isRect(node.imageBoundsRect(), 3, 4, 20, 10));
    node.ownTransform = moved(100, 1);
    EXPECT_TRUE(isRect(node.imageBoundsRect(), 103, 5, 20, 10));
}

TEST(BoundsOfAPixelOperation, AskedAboutItselfAreItsSourcesUnderTheSourcesTransform) {
    const auto source = leaf(NSMakeRect(3, 4, 20, 10), matrix(2, 0, 0, 3, 5, 7));
    const UntilChanged node(source);
    const auto bounds = node.boundsForImage(node, matrix(0, 1, -1, 0, 30, 0));
    ASSERT_TRUE(bounds.has_value());
    EXPECT_TRUE(isRect(bounds->rectangle(), 3, 4, 20, 10));
    // (x, y) goes to (2x + 5, 3y + 7), and then (x, y) to (30 - y, x).
    EXPECT_TRUE(isTransform(*bounds->transform(), matrix(0, 2, -3, 0, 23, 5)));
}

TEST(BoundsOfAPixelOperation, AskedAboutOtherNodesAreFoundBelow) {
    const auto deepest = leaf(NSMakeRect(1, 1, 2, 2), moved(1, 0));
    const auto source = nodeOver({deepest}, moved(10, 20));
    const UntilChanged node(source);
    const auto bounds = node.boundsForImage(*deepest, moved(100, 200));
    ASSERT_TRUE(bounds.has_value());
    EXPECT_TRUE(isTransform(*bounds->transform(), moved(111, 220)));
    EXPECT_FALSE(node.boundsForImage(*leaf(NSMakeRect(0, 0, 1, 1)), moved(0, 0)).has_value());
}

TEST(BoundsOfAPixelOperation, PassOnWhatTheSourceThrowsWhenAskedAboutItself) {
    const auto source = leaf(NSMakeRect(0, 0, 1, 1));
    const UntilChanged node(source);
    source->failing = Failing::Bounds;
    EXPECT_THROW(node.boundsForImage(node, NSAffineTransform()), NSException);
}
