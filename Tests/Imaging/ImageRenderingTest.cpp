// Also tests: Imaging/Drawing/DrawnPicture.cpp

#include "Tests/Imaging/ImagingTestSupport.h"

#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <string>
#include <variant>

using namespace ImagingTests;
using Imaging::Platform::NSBitmapImageRep;
using Imaging::Platform::NSData;
using Imaging::Platform::NSError;
using Imaging::Platform::NSErrorCode;

namespace {

/// (x, y) becomes (6 - y, x + 2).
const NSAffineTransform turned = matrix(0, 1, -1, 0, 6, 2);

Grid turnedPicture(const Grid& picture) {
    Grid expected(picture.height(), picture.width());
    paint(expected, picture, [&](Spot p) { return Spot{picture.height() - p.y, p.x}; });
    return expected;
}

/// A picture in which neighbouring pixels do not differ, so that lossy formats keep it.
Grid halves(int width, int height, Rgba left, Rgba right) {
    Grid grid(width, height, left);
    for (int y = 0; y < height; ++y) {
        for (int x = width / 2; x < width; ++x) grid.at(x, y) = right;
    }
    return grid;
}

std::string formatOf(const NSBitmapImageRep& bitmap) {
    return std::get<std::string>(*bitmap.valueForProperty(Imaging::Platform::NSImageSourceFormat));
}

} // namespace

TEST(ImageOfANode, IsItsRenderedResultUnderTheIdentity) {
    const auto source = leaf(NSMakeRect(0, 0, 5, 3));
    const auto node = nodeOver({source});
    node->rendered = CCImage::ccImageWithNSImage(Pixels::imageOf(distinctPicture(5, 3)));
    EXPECT_EQ(node->image(), node->rendered);
    EXPECT_TRUE(node->draws.empty());
    EXPECT_TRUE(source->draws.empty());
}

TEST(ImageOfANode, IsNoneForAPlainNodeUnderTheIdentity) {
    const auto node = std::make_shared<IMGImage>(IMGImage::Sources{pictureNode(distinctPicture(5, 3))});
    EXPECT_EQ(node->image(), nullptr);
    EXPECT_EQ(IMGImage().image(), nullptr); // without a failed assertion: bounds are not needed
}

TEST(ImageOfANode, IsDrawnUnderAnyOtherTransform) {
    const Grid picture = distinctPicture(5, 3);
    const auto node = nodeOver({pictureNode(picture)}, turned);
    const std::shared_ptr<CCImage> image = node->image();
    ASSERT_NE(image, nullptr);
    EXPECT_TRUE(isSize(image->size(), 3, 5));
    EXPECT_TRUE(Pixels::areAlike(Pixels::shownBy(*image->nsImage(), 3, 5), turnedPicture(picture)));
}

TEST(ImageOfANode, IsDrawnBySourceOverInFullAndNotRetained) {
    const auto node = nodeOver({leaf(NSMakeRect(0, 0, 5, 3))}, turned);
    node->defaultOperation = 13;
    node->defaultFraction = 0.25F;
    node->rendered = CCImage::ccImageWithNSImage(Pixels::imageOf(distinctPicture(5, 3)));
    ASSERT_NE(node->image(), nullptr);
    ASSERT_EQ(node->draws.size(), 1U);
    EXPECT_EQ(node->draws[0].operation, 2);
    EXPECT_EQ(node->draws[0].fraction, 1.0F);
    EXPECT_EQ(node->draws[0].imageContext, nullptr);
    EXPECT_TRUE(node->retainedDraws.empty());
    EXPECT_EQ(node->renderings, 0);
    // At (3, 2, 3, 5), fitted to (0, 0, 3, 5)
    EXPECT_TRUE(isTransform(node->draws[0].records.at(0).transform(), matrix(0, 1, -1, 0, 3, 0)));
}

TEST(ImageOfANode, IsDrawnUnderAnIdentityWithAnotherZero) {
    const auto node = nodeOver({pictureNode(distinctPicture(5, 3))}, matrix(1, -0.0F, 0, 1, 0, 0));
    const auto image = node->image();
    ASSERT_NE(image, nullptr);
    EXPECT_EQ(node->draws.size(), 1U);
    EXPECT_TRUE(Pixels::areAlike(Pixels::shownBy(*image->nsImage(), 5, 3), distinctPicture(5, 3)));
}

TEST(ImageOfANode, ReachesUpToZeroAtNegativeCoordinates) {
    const Grid picture = distinctPicture(5, 3);
    const auto node = nodeOver({pictureNode(picture)}, moved(-9, -7));
    const auto image = node->image();
    ASSERT_NE(image, nullptr);
    EXPECT_TRUE(isSize(image->size(), 9, 7));
    Grid expected(9, 7);
    paint(expected, picture, [](Spot p) { return p; });
    EXPECT_TRUE(Pixels::areAlike(Pixels::shownBy(*image->nsImage(), 9, 7), expected));
}

TEST(ImageOfANode, IsNoneWhereRenderingFails) {
    const auto throwing = nodeOver({pictureNode(distinctPicture(5, 3))}, turned);
    for (const Thrown kind : {Thrown::Exception, Thrown::StandardException, Thrown::Number}) {
        throwing->thrown = kind;
        for (const Failing place : {Failing::Transform, Failing::Draw}) {
            throwing->failing = place;
            EXPECT_EQ(throwing->image(), nullptr);
        }
    }
    const auto unrendered = nodeOver({pictureNode(distinctPicture(5, 3))});
    unrendered->failing = Failing::Rendering;
    EXPECT_EQ(unrendered->image(), nullptr);
}

TEST(ImageOfANode, IsNoneWithoutBoundsOrArea) {
    TestNode bare;
    bare.ownTransform = turned;
    EXPECT_EQ(bare.image(), nullptr); // a failed assertion
    const auto flat = nodeOver({leaf(NSMakeRect(4, 5, 8, 0))}, turned);
    EXPECT_EQ(flat->image(), nullptr);
}

TEST(ImageOfANode, LeavesTheCurrentContextAsItWas) {
    const Pixels::Canvas canvas(4, 4);
    const auto context = Imaging::Platform::NSGraphicsContext::currentContext();
    const auto node = nodeOver({pictureNode(distinctPicture(5, 3))}, turned);
    EXPECT_NE(node->image(), nullptr);
    EXPECT_EQ(Imaging::Platform::NSGraphicsContext::currentContext(), context);
    node->failing = Failing::Draw;
    EXPECT_EQ(node->image(), nullptr);
    EXPECT_FALSE(node->representationUsingType(Imaging::Platform::NSPNGFileType, {}).has_value());
    EXPECT_EQ(Imaging::Platform::NSGraphicsContext::currentContext(), context);
}

TEST(RepresentationOfANode, IsALosslessFileOfTheNodeAtItsSize) {
    Grid picture = distinctPicture(5, 3);
    picture.at(1, 2) = {60, 20, 0, 120}; // premultiplied
    picture.at(4, 0) = Pixels::transparent;
    const auto node = nodeOver({pictureNode(picture)}, turned);
    const struct {
        int type;
        const char* format;
    } cases[] = {{Imaging::Platform::NSTIFFFileType, "TIFF"}, {Imaging::Platform::NSPNGFileType, "PNG"}};
    for (const auto& [type, format] : cases) {
        const std::optional<NSData> data = node->representationUsingType(type, {});
        ASSERT_TRUE(data.has_value()) << format;
        const auto decoded = NSBitmapImageRep::imageRepWithData(*data);
        ASSERT_NE(decoded, nullptr) << format;
        EXPECT_EQ(formatOf(*decoded), format);
        EXPECT_TRUE(isSize(decoded->size(), 3, 5));
        // PNG holds colour unmultiplied, which may cost one step of a translucent pixel.
        EXPECT_TRUE(Pixels::areAlike(Pixels::gridOf(*decoded), turnedPicture(picture), type == 0 ? 0 : 1))
            << format;
    }
}

TEST(RepresentationOfANode, IsAJPEGOfTheGivenQuality) {
    const Rgba red{200, 30, 40, 255};
    const Rgba blue{20, 60, 210, 255};
    const auto node = nodeOver({pictureNode(halves(32, 16, red, blue))}, matrix(-1, 0, 0, 1, 50, 3));
    const auto encoded = [&](double quality) {
        return node->representationUsingType(
            Imaging::Platform::NSJPEGFileType,
            {{std::string(Imaging::Platform::NSImageCompressionFactor), quality}});
    };
    const std::optional<NSData> good = encoded(1.0);
    ASSERT_TRUE(good.has_value());
    const auto decoded = NSBitmapImageRep::imageRepWithData(*good);
    ASSERT_NE(decoded, nullptr);
    EXPECT_EQ(formatOf(*decoded), "JPEG");
    EXPECT_EQ(decoded->pixelsWide(), 32);
    EXPECT_EQ(decoded->pixelsHigh(), 16);
    const auto isAbout = [&](int x, int y, Rgba color) {
        const auto p = decoded->pixelAt(x, y);
        return std::abs(p[0] - color.r) <= 4 && std::abs(p[1] - color.g) <= 4 &&
               std::abs(p[2] - color.b) <= 4;
    };
    EXPECT_TRUE(isAbout(1, 1, blue)); // mirrored
    EXPECT_TRUE(isAbout(30, 14, red));
    const Grid noise = Pixels::Random(20260101).grid(64, 64);
    const auto noisy = nodeOver({pictureNode(noise)});
    const auto sizeAt = [&](double quality) {
        const auto data = noisy->representationUsingType(
            Imaging::Platform::NSJPEGFileType,
            {{std::string(Imaging::Platform::NSImageCompressionFactor), quality}});
        return data.has_value() ? data->size() : 0;
    };
    EXPECT_LT(sizeAt(0.1), sizeAt(0.9));
}

TEST(RepresentationOfANode, WalksTheGraphBySourceOverInFull) {
    const auto node = nodeOver({leaf(NSMakeRect(4, 6, 8, 5))});
    node->defaultOperation = 13;
    node->defaultFraction = 0.25F;
    node->rendered = CCImage::ccImageWithNSImage(Pixels::imageOf(distinctPicture(5, 3)));
    const auto data = node->representationUsingType(Imaging::Platform::NSPNGFileType, {});
    ASSERT_TRUE(data.has_value());
    ASSERT_EQ(node->draws.size(), 1U);
    EXPECT_EQ(node->draws[0].operation, 2);
    EXPECT_EQ(node->draws[0].fraction, 1.0F);
    EXPECT_EQ(node->draws[0].imageContext, nullptr);
    EXPECT_TRUE(isTransform(node->draws[0].records.at(0).transform(), moved(-4, -6)));
    EXPECT_TRUE(node->retainedDraws.empty());
    // Nothing was drawn, which makes a transparent picture of the size.
    const auto decoded = NSBitmapImageRep::imageRepWithData(*data);
    ASSERT_NE(decoded, nullptr);
    EXPECT_TRUE(Pixels::areAlike(Pixels::gridOf(*decoded), Grid(8, 5)));
}

TEST(RepresentationOfANode, LeavesOutASourceThatThrows) {
    const Grid picture = distinctPicture(5, 3);
    const auto broken = leaf(NSMakeRect(0, 0, 5, 3));
    broken->failing = Failing::Draw;
    const auto data = nodeOver({broken, pictureNode(picture)})
                          ->representationUsingType(Imaging::Platform::NSPNGFileType, {});
    ASSERT_TRUE(data.has_value());
    EXPECT_TRUE(Pixels::areAlike(Pixels::gridOf(*NSBitmapImageRep::imageRepWithData(*data)), picture));
}

TEST(RepresentationOfANode, IsNoneForATypeThatCannotBeWritten) {
    const auto node = nodeOver({pictureNode(distinctPicture(5, 3))});
    for (const int type : {Imaging::Platform::NSJPEG2000FileType + 1, -1, 4711}) {
        NSError error;
        EXPECT_FALSE(node->representationUsingType(type, {}, &error).has_value()) << type;
        EXPECT_EQ(error.code, NSErrorCode::UnsupportedFormat);
        EXPECT_FALSE(error.message.empty());
    }
}

TEST(RepresentationOfANode, IsNoneWhereDrawingFails) {
    const auto node = nodeOver({pictureNode(distinctPicture(5, 3))});
    for (const Failing place : {Failing::Transform, Failing::Draw}) {
        for (const Thrown kind : {Thrown::Exception, Thrown::StandardException, Thrown::Number}) {
            node->failing = place;
            node->thrown = kind;
            NSError error;
            EXPECT_FALSE(
                node->representationUsingType(Imaging::Platform::NSPNGFileType, {}, &error).has_value());
            EXPECT_NE(error.code, NSErrorCode::None);
            EXPECT_FALSE(error.message.empty());
        }
    }
}

TEST(RepresentationOfANode, IsNoneWithoutBoundsOrArea) {
    NSError error;
    EXPECT_FALSE(
        IMGImage().representationUsingType(Imaging::Platform::NSPNGFileType, {}, &error).has_value());
    EXPECT_NE(error.message.find("[m_sources count] > 0"), std::string::npos);
    error = {};
    EXPECT_FALSE(nodeOver({leaf(NSMakeRect(4, 5, 0, 3))})
                     ->representationUsingType(Imaging::Platform::NSTIFFFileType, {}, &error)
                     .has_value());
    EXPECT_FALSE(error.message.empty());
}
