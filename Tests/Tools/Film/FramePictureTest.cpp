// Also tests: Show/FramedPicture.cpp
// Also tests: Tools/Pictures/Canvas.cpp

#include "Tools/Film/ShowWords.h"

#include "Imaging/CachedImage.h"
#include "Platform/Graphics/GraphicsContext.h"
#include "Tests/Platform/Foundation/TemporaryFolder.h"
#include "Tests/Tools/Support/TestPictures.h"
#include "Tools/Command/Messages.h"
#include "Tools/Pictures/Canvas.h"

#include <gmock/gmock.h>

using namespace TestSupport;
using namespace Imaging;
using namespace Imaging::Tool;

namespace {

/// What a node of a frame's size looks like.
Picture drawn(Imaging::IMGImage& node, PixelSize size) {
    const auto bitmap = drawnOnCanvas(size, "test", "", [&] {
        node.drawWithTransform({}, Imaging::Platform::NSCompositeSourceOver, 1);
        return Imaging::Platform::NSMakeRect(0, 0, static_cast<float>(size.width),
                                             static_cast<float>(size.height));
    });
    Picture picture(static_cast<int>(size.width), static_cast<int>(size.height), clear);
    for (int y = 0; y < picture.height; ++y) {
        for (int x = 0; x < picture.width; ++x) {
            const auto pixel = bitmap->pixelAt(x, y);
            const auto sample = [&](std::size_t i) { return static_cast<std::uint8_t>(pixel.at(i)); };
            picture.at(x, y) = {sample(0), sample(1), sample(2), sample(3)};
        }
    }
    return picture;
}

Show filmOf(const std::string& file, PixelSize size, Fit fit) {
    Show show;
    show.size = size;
    show.background = Imaging::Platform::NSColor::colorWithCalibratedRed(0, 0, 1, 1);
    show.pictures.resize(1);
    show.pictures[0].name = file;
    show.pictures[0].fit = fit;
    return show;
}

Picture framed(const Show& show) { return drawn(*framePicture(show.pictures[0], show), show.size); }

/// Pixels of a picture, a letter each: r, g, b, w, k.
std::string letters(const Picture& picture) {
    const std::vector<std::pair<Pixel, char>> names = {
        {red, 'r'}, {green, 'g'}, {blue, 'b'}, {white, 'w'}, {black, 'k'}};
    std::string text;
    for (int y = 0; y < picture.height; ++y) {
        for (int x = 0; x < picture.width; ++x) {
            char letter = '?';
            for (const auto& [pixel, name] : names) letter = picture.at(x, y) == pixel ? name : letter;
            text += letter;
        }
        text += '\n';
    }
    return text;
}

} // namespace

TEST(FramePicture, FitsPicturesIntoAFrame) {
    const TemporaryFolder folder;
    const std::string file = folder.write("a.png", pngOf(Picture(2, 1, {red, green})));
    EXPECT_EQ(letters(framed(filmOf(file, {2, 3}, Fit::Contain))), "bb\nrg\nbb\n");
    EXPECT_EQ(letters(framed(filmOf(file, {4, 1}, Fit::Contain))), "brgb\n");
    // Twice as high it is 4 x 2, of which the middle is seen.
    EXPECT_EQ(letters(framed(filmOf(file, {2, 1}, Fit::Cover))), "rg\n");
    const std::string high = folder.write("b.png", pngOf(Picture(1, 4, {red, green, white, black})));
    EXPECT_EQ(letters(framed(filmOf(high, {1, 2}, Fit::Cover))), "g\nw\n");
    EXPECT_EQ(letters(framed(filmOf(high, {3, 4}, Fit::Stretch))), "rrr\nggg\nwww\nkkk\n");
}

TEST(FramePicture, PutsTheBackgroundBehindWhatIsTransparent) {
    const TemporaryFolder folder;
    const std::string file = folder.write("a.png", pngOf(Picture(2, 1, {red, clear}), true));
    EXPECT_EQ(letters(framed(filmOf(file, {2, 1}, Fit::Contain))), "rb\n");
    const std::string half = folder.write("b.png", pngOf(Picture(1, 1, {{255, 0, 0, 128}}), true));
    const Pixel mixed = framed(filmOf(half, {1, 1}, Fit::Contain)).at(0, 0);
    EXPECT_NEAR(mixed.red, 128, 1);
    EXPECT_NEAR(mixed.blue, 127, 1);
    EXPECT_EQ(mixed.alpha, 255);
}

TEST(FramePicture, IsOpaquePixelsOfAFramesSize) {
    const TemporaryFolder folder;
    const std::string file = folder.write("a.png", pngOf(randomPicture(37, 23, 3)));
    const Show show = filmOf(file, {64, 48}, Fit::Contain);
    const auto node =
        std::dynamic_pointer_cast<Imaging::IMGImageFromNSImage>(framePicture(show.pictures[0], show));
    ASSERT_NE(node, nullptr);
    const Imaging::Platform::NSRect bounds = node->imageBoundsRect();
    EXPECT_EQ(bounds.origin.x, 0);
    EXPECT_EQ(bounds.origin.y, 0);
    EXPECT_EQ(bounds.size.width, 64);
    EXPECT_EQ(bounds.size.height, 48);
    EXPECT_FALSE(node->fileName().has_value());
    const auto bitmap = std::dynamic_pointer_cast<Imaging::Platform::NSBitmapImageRep>(
        node->untransformedImage()->nsImage()->bestRepresentation());
    ASSERT_NE(bitmap, nullptr);
    EXPECT_EQ(bitmap->samplesPerPixel(), 3);
    EXPECT_FALSE(bitmap->hasAlpha());
}

TEST(FramePicture, ShowsPicturesTheWayUpThatTheyDeclare) {
    const TemporaryFolder folder;
    const Picture stored(2, 1, {red, green});
    for (int orientation = 1; orientation <= 8; ++orientation) {
        SCOPED_TRACE(orientation);
        const std::string file =
            folder.write("a.png", pngWithChunks(stored, pngChunk("eXIf", exifWithOrientation(orientation))));
        const Picture upright = seen(stored, orientation);
        Show show = filmOf(file, {upright.width, upright.height}, Fit::Contain);
        EXPECT_EQ(letters(framed(show)), letters(upright));
        show.size = {2, 1};
        show.asStored = true;
        EXPECT_EQ(letters(framed(show)), "rg\n");
    }
}

TEST(FramePicture, CarriesOutTheStepsFirst) {
    const TemporaryFolder folder;
    const std::string file = folder.write("a.png", pngOf(Picture(3, 1, {red, green, white})));
    Show show = filmOf(file, {1, 1}, Fit::Contain);
    show.pictures[0].steps = {[](FramedNode& picture) { picture.crop(1, 0, 1, 1); }};
    EXPECT_EQ(letters(framed(show)), "g\n");
}

TEST(FramePicture, NamesThePictureThatCannotBeRead) {
    const Show show = filmOf("/nowhere/a.png", {2, 2}, Fit::Contain);
    try {
        framePicture(show.pictures[0], show);
        FAIL();
    } catch (const Failure& failure) {
        EXPECT_EQ(failure.subject(), "/nowhere/a.png");
        EXPECT_STREQ(failure.what(), "there is no such file");
    }
}
