#include "Imaging/CachedImage.h"

#include "Platform/Foundation/URL.h"
#include "Tests/Imaging/ImagingTestSupport.h"
#include "Tests/Platform/Foundation/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <fstream>
#include <memory>
#include <optional>
#include <string>
#include <vector>

using namespace ImagingTests;
using Imaging::cacheable;
using Imaging::fixSize;
using Imaging::Platform::NSBitmapImageRep;
using Imaging::Platform::NSData;
using Imaging::Platform::NSError;
using Imaging::Platform::NSURL;
using TestSupport::TemporaryFolder;

namespace {

NSData pngOf(const Grid& grid) {
    return *Pixels::bitmapOf(grid)->representationUsingType(Imaging::Platform::NSPNGFileType, {});
}

std::string writePicture(const TemporaryFolder& folder, const std::string& name, const Grid& grid) {
    const NSData png = pngOf(grid);
    return folder.write(name, std::string(png.begin(), png.end()));
}

/// A bitmap whose declared resolution makes it smaller or larger in points than in pixels.
std::shared_ptr<NSBitmapImageRep> bitmapOfSize(const Grid& grid, float width, float height) {
    const auto bitmap = Pixels::bitmapOf(grid);
    bitmap->setSize(NSMakeSize(width, height));
    return bitmap;
}

std::shared_ptr<NSImage> pictureOf(std::vector<std::shared_ptr<NSBitmapImageRep>> bitmaps, float width,
                                   float height) {
    const auto picture = std::make_shared<NSImage>(NSMakeSize(width, height));
    for (auto& bitmap : bitmaps) picture->addRepresentation(std::move(bitmap));
    return picture;
}

/// A form of a picture that is no bitmap.
class Vectors : public Imaging::Platform::NSImageRep {
public:
    Vectors(std::int64_t width, std::int64_t height) : NSImageRep(width, height) {}
};

Grid shown(IMGImageFromNSImage& node, int width, int height) {
    return drawnOn(width, height, [&] { node.drawWithTransform(NSAffineTransform(), 2, 1); });
}

} // namespace

TEST(PictureNode, HoldsThePictureThatItWasMadeOf) {
    const Grid grid = distinctPicture(5, 3);
    const auto picture = Pixels::imageOf(grid);
    IMGImageFromNSImage node(picture);
    EXPECT_EQ(node.untransformedImage()->nsImage(), picture);
    EXPECT_EQ(node.image(), node.untransformedImage());
    EXPECT_TRUE(node.sources().empty());
    EXPECT_FALSE(node.fileName().has_value());
    EXPECT_FALSE(node.name().has_value());
    EXPECT_EQ(picture->cacheMode(), Imaging::Platform::NSImageCacheAlways);
    EXPECT_TRUE(Pixels::areAlike(shown(node, 5, 3), grid));
}

TEST(PictureNode, NeedsAPicture) {
    try {
        const IMGImageFromNSImage node(std::shared_ptr<NSImage>{});
        FAIL() << "nothing was thrown";
    } catch (const NSException& exception) {
        EXPECT_EQ(exception.name(), "NSInvalidArgumentException");
    }
}

TEST(PictureNode, IsMadeOfAPictureByName) {
    const auto picture = Pixels::imageOf(distinctPicture(5, 3));
    const auto node = Imaging::imagingImage(picture);
    ASSERT_NE(node, nullptr);
    EXPECT_EQ(node->untransformedImage()->nsImage(), picture);
    EXPECT_FALSE(node->fileName().has_value());
}

TEST(PictureNode, ReadsAFileAndRemembersItsPath) {
    const TemporaryFolder folder;
    const Grid grid = distinctPicture(5, 3);
    const std::string path = writePicture(folder, "a picture.dat", grid);
    for (const auto& node :
         {IMGImageFromNSImage::initWithContentsOfFile(path), IMGImage::imageWithContentsOfFile(path)}) {
        ASSERT_NE(node, nullptr);
        EXPECT_EQ(node->fileName(), path);
        EXPECT_EQ(node->name(), path);
        EXPECT_TRUE(node->sources().empty());
        EXPECT_TRUE(Pixels::areAlike(shown(*node, 5, 3), grid));
        EXPECT_EQ(node->untransformedImage()->nsImage()->cacheMode(), Imaging::Platform::NSImageCacheAlways);
    }
}

TEST(PictureNode, ReadsAURLAndDoesNotRememberIt) {
    const TemporaryFolder folder;
    const Grid grid = distinctPicture(5, 3);
    const NSURL url = NSURL::fileURLWithPath(writePicture(folder, "picture.png", grid));
    for (const auto& node :
         {IMGImageFromNSImage::initWithContentsOfURL(url), IMGImage::imageWithContentsOfURL(url)}) {
        ASSERT_NE(node, nullptr);
        EXPECT_FALSE(node->fileName().has_value());
        EXPECT_FALSE(node->name().has_value());
        EXPECT_TRUE(Pixels::areAlike(shown(*node, 5, 3), grid));
        EXPECT_EQ(node->copy(), nullptr);
    }
}

TEST(PictureNode, IsNoneWhereThePictureCannotBeRead) {
    const TemporaryFolder folder;
    const std::string text = folder.write("text.png", "this is no picture");
    const std::string missing = folder.path("missing.png");
    for (const std::string& path : {text, missing}) {
        NSError error;
        EXPECT_EQ(IMGImageFromNSImage::initWithContentsOfFile(path, &error), nullptr);
        EXPECT_NE(error.code, Imaging::Platform::NSErrorCode::None);
        EXPECT_FALSE(error.message.empty());
        EXPECT_EQ(IMGImage::imageWithContentsOfFile(path), nullptr);
        error = {};
        EXPECT_EQ(IMGImageFromNSImage::initWithContentsOfURL(NSURL::fileURLWithPath(path), &error), nullptr);
        EXPECT_NE(error.code, Imaging::Platform::NSErrorCode::None);
        EXPECT_EQ(IMGImage::imageWithContentsOfURL(NSURL::fileURLWithPath(path)), nullptr);
    }
}

TEST(PictureNode, CopiesByReadingTheFileAgain) {
    const TemporaryFolder folder;
    const Grid first = distinctPicture(5, 3);
    const Grid second = distinctPicture(4, 6, 90);
    const std::string path = writePicture(folder, "picture.png", first);
    const auto node = IMGImageFromNSImage::initWithContentsOfFile(path);
    ASSERT_NE(node, nullptr);
    writePicture(folder, "picture.png", second);
    const auto copy = std::dynamic_pointer_cast<IMGImageFromNSImage>(node->copy());
    ASSERT_NE(copy, nullptr);
    EXPECT_NE(copy, node);
    EXPECT_EQ(copy->fileName(), path);
    EXPECT_TRUE(Pixels::areAlike(shown(*copy, 4, 6), second));
    EXPECT_TRUE(Pixels::areAlike(shown(*node, 5, 3), first));
}

TEST(PictureNode, CopiesToNoneWithoutAFile) {
    const TemporaryFolder folder;
    EXPECT_EQ(pictureNode(distinctPicture(5, 3))->copy(), nullptr);
    folder.write("picture.png", "");
    const std::string path = writePicture(folder, "picture.png", distinctPicture(5, 3));
    const auto node = IMGImageFromNSImage::initWithContentsOfFile(path);
    ASSERT_NE(node, nullptr);
    folder.write("picture.png", "this is no picture any more");
    EXPECT_EQ(node->copy(), nullptr);
}

TEST(PictureNode, HasTheBoundsOfItsPictureAndAnIdentity) {
    const IMGBounds bounds = pictureNode(distinctPicture(5, 3))->imageBounds();
    EXPECT_TRUE(isRect(bounds.rectangle(), 0, 0, 5, 3));
    ASSERT_TRUE(bounds.transform().has_value());
    EXPECT_TRUE(Imaging::isEqualToAffineTransform(*bounds.transform(), NSAffineTransform()));
}

TEST(PictureNode, AnswersABoundsSearchForItselfAlone) {
    const auto node = pictureNode(distinctPicture(5, 3));
    const NSAffineTransform turned = matrix(0, 1, -1, 0, 30, 7);
    const std::optional<IMGBounds> bounds = node->boundsForImage(*node, turned);
    ASSERT_TRUE(bounds.has_value());
    EXPECT_TRUE(isRect(bounds->rectangle(), 0, 0, 5, 3));
    EXPECT_TRUE(isTransform(*bounds->transform(), turned));
    EXPECT_FALSE(node->boundsForImage(*pictureNode(distinctPicture(5, 3)), turned).has_value());
    const auto inRectangle = node->boundsForImage(*node, NSMakeRect(6, 8, 10, 9));
    ASSERT_TRUE(inRectangle.has_value());
    EXPECT_TRUE(isTransform(*inRectangle->transform(), matrix(2, 0, 0, 3, 6, 8)));
}

TEST(PictureNode, EndsASearchThoughItHasSources) {
    const auto node = pictureNode(distinctPicture(5, 3));
    const auto source = leaf(NSMakeRect(1, 2, 3, 4));
    node->addSource(source);
    EXPECT_FALSE(node->boundsForImage(*source, NSAffineTransform()).has_value());
    EXPECT_TRUE(isRect(node->imageBoundsRect(), 0, 0, 5, 3));
}

TEST(PictureNode, DrawsTheRetainedWayWithAllArgumentsUnchanged) {
    class Recording : public IMGImageFromNSImage {
    public:
        using IMGImageFromNSImage::IMGImageFromNSImage;
        std::vector<DrawCall> retained;
        void drawRetainedImage(const std::shared_ptr<CCImage>& image, const TransformAndClipList& list,
                               Imaging::CompositingOperation operation, float fraction,
                               IMGDrawingTarget* imageContext) override {
            retained.emplace_back(image.get(), this, list, operation, fraction, imageContext);
        }
    };
    Recording node(Pixels::imageOf(distinctPicture(5, 3)));
    const auto passed = CCImage::ccImageWithNSImage(Pixels::imageOf(distinctPicture(2, 2)));
    RecordingTarget target;
    node.drawImage(passed,
                   TransformAndClipList(TransformAndClipRect::transformAndClipRectWithTransform(
                       moved(4, 9), NSMakeRect(1, 2, 3, 4))),
                   -5, 0.375F, &target);
    ASSERT_EQ(node.retained.size(), 1U);
    EXPECT_EQ(node.retained[0].image, passed.get());
    EXPECT_EQ(node.retained[0].operation, -5);
    EXPECT_EQ(node.retained[0].fraction, 0.375F);
    EXPECT_EQ(node.retained[0].imageContext, &target);
    ASSERT_EQ(node.retained[0].records.size(), 1U);
    EXPECT_TRUE(isTransform(node.retained[0].records[0].transform(), moved(4, 9)));
    EXPECT_TRUE(isRect(node.retained[0].records[0].clipRect(), 1, 2, 3, 4));
}

TEST(PictureNode, LeavesItselfToADrawingTargetWhereverItStands) {
    const auto node = pictureNode(distinctPicture(5, 3));
    RecordingTarget target;
    nodeOver({nodeOver({node})})->drawWithTransform(moved(4, 9), 13, 0.25F, &target);
    ASSERT_EQ(target.calls.size(), 1U);
    EXPECT_EQ(target.calls[0].node, node.get());
    EXPECT_EQ(target.calls[0].records.size(), 3U);
    EXPECT_EQ(target.calls[0].operation, 13);
    EXPECT_EQ(target.calls[0].fraction, 0.25F);
}

TEST(PictureNode, DescribesItselfByFileAndCachedImage) {
    const TemporaryFolder folder;
    const std::string path = writePicture(folder, "picture.png", distinctPicture(5, 3));
    const auto node = IMGImageFromNSImage::initWithContentsOfFile(path);
    ASSERT_NE(node, nullptr);
    EXPECT_EQ(node->description().rfind(path + " ", 0), 0U);
    EXPECT_NE(node->description().find("CCImage"), std::string::npos);
    EXPECT_EQ(pictureNode(distinctPicture(5, 3))->description().rfind("(null) ", 0), 0U);
}

TEST(PreparingAPicture, MakesOnePointCoverOnePixel) {
    const auto picture = pictureOf({bitmapOfSize(Grid(30, 20), 7.2F, 4.8F)}, 7.2F, 4.8F);
    EXPECT_EQ(cacheable(picture), picture);
    EXPECT_TRUE(isSize(picture->size(), 30, 20));
    EXPECT_TRUE(picture->scalesWhenResized());
    EXPECT_EQ(picture->cacheMode(), Imaging::Platform::NSImageCacheAlways);
    EXPECT_FALSE(picture->isDataRetained());
}

TEST(PreparingAPicture, OfAPhotographAt300PixelsAnInchGivesItsPixelsAsBounds) {
    const auto photograph = Pixels::bitmapOf(Grid(3000, 2000, {70, 80, 90, 255}));
    photograph->setSize(NSMakeSize(720, 480));
    const auto jpeg = photograph->representationUsingType(Imaging::Platform::NSJPEGFileType, {});
    ASSERT_TRUE(jpeg.has_value());
    const auto picture = NSImage::imageWithData(*jpeg);
    ASSERT_NE(picture, nullptr);
    ASSERT_TRUE(isSize(picture->size(), 720, 480));
    const auto node = Imaging::imagingImage(picture);
    EXPECT_TRUE(isSize(picture->size(), 3000, 2000));
    EXPECT_TRUE(isRect(node->imageBounds().rectangle(), 0, 0, 3000, 2000));
    EXPECT_TRUE(isRect(node->imageBoundsRect(), 0, 0, 3000, 2000));
}

TEST(PreparingAPicture, DrawsEachPixelOnAPoint) {
    const Grid grid = distinctPicture(5, 3);
    const auto node = Imaging::imagingImage(pictureOf({bitmapOfSize(grid, 2.5F, 1.5F)}, 2.5F, 1.5F));
    EXPECT_TRUE(Pixels::areAlike(shown(*node, 5, 3), grid));
}

TEST(PreparingAPicture, ThatFitsLeavesTheScalingAlone) {
    const auto picture = pictureOf({bitmapOfSize(Grid(30, 20), 7.2F, 4.8F)}, 30, 20);
    cacheable(picture);
    EXPECT_TRUE(isSize(picture->size(), 30, 20));
    EXPECT_FALSE(picture->scalesWhenResized());
    EXPECT_EQ(picture->cacheMode(), Imaging::Platform::NSImageCacheAlways);
}

TEST(PreparingAPicture, OfSeveralUnequalBitmapsTakesTheLast) {
    const auto last = pictureOf({Pixels::bitmapOf(Grid(30, 20)), Pixels::bitmapOf(Grid(9, 4))}, 12, 8);
    cacheable(last);
    EXPECT_TRUE(isSize(last->size(), 9, 4));
    // What the first bitmap made of the size does not matter to the second, which had that size before.
    const auto unread = pictureOf({Pixels::bitmapOf(Grid(30, 20)), Pixels::bitmapOf(Grid(12, 8))}, 12, 8);
    cacheable(unread);
    EXPECT_TRUE(isSize(unread->size(), 30, 20));
    // A bitmap that has the size which an earlier one brought about still counts as unequal.
    const auto thrice = pictureOf(
        {Pixels::bitmapOf(Grid(30, 20)), Pixels::bitmapOf(Grid(9, 4)), Pixels::bitmapOf(Grid(30, 20))}, 12,
        8);
    cacheable(thrice);
    EXPECT_TRUE(isSize(thrice->size(), 30, 20));
}

TEST(PreparingAPicture, LooksAtBitmapsOnly) {
    const auto picture = std::make_shared<NSImage>(NSMakeSize(12, 8));
    picture->addRepresentation(std::make_shared<Vectors>(30, 20));
    cacheable(picture);
    EXPECT_TRUE(isSize(picture->size(), 12, 8));
    EXPECT_FALSE(picture->scalesWhenResized());
    EXPECT_EQ(picture->cacheMode(), Imaging::Platform::NSImageCacheAlways);
    const auto empty = std::make_shared<NSImage>(NSMakeSize(12, 8));
    EXPECT_EQ(cacheable(empty), empty);
    EXPECT_TRUE(isSize(empty->size(), 12, 8));
}

TEST(PreparingAPicture, OfNoneGivesNone) {
    EXPECT_EQ(cacheable(nullptr), nullptr);
    EXPECT_EQ(fixSize(nullptr), nullptr);
}

TEST(FixingTheSize, CorrectsItAndRetainsTheDataInsteadOfScaling) {
    const auto picture = pictureOf({bitmapOfSize(Grid(30, 20), 7.2F, 4.8F)}, 7.2F, 4.8F);
    EXPECT_EQ(fixSize(picture), picture);
    EXPECT_TRUE(isSize(picture->size(), 30, 20));
    EXPECT_TRUE(picture->isDataRetained());
    EXPECT_FALSE(picture->scalesWhenResized());
    EXPECT_EQ(picture->cacheMode(), Imaging::Platform::NSImageCacheAlways);
}

TEST(FixingTheSize, OfAPictureThatFitsTouchesTheCacheModeOnly) {
    const auto picture = pictureOf({Pixels::bitmapOf(Grid(30, 20))}, 30, 20);
    fixSize(picture);
    EXPECT_TRUE(isSize(picture->size(), 30, 20));
    EXPECT_FALSE(picture->isDataRetained());
    EXPECT_EQ(picture->cacheMode(), Imaging::Platform::NSImageCacheAlways);
}

TEST(FixingTheSize, OfSeveralUnequalBitmapsTakesTheLast) {
    const auto picture = pictureOf({Pixels::bitmapOf(Grid(30, 20)), Pixels::bitmapOf(Grid(9, 4))}, 12, 8);
    fixSize(picture);
    EXPECT_TRUE(isSize(picture->size(), 9, 4));
}
