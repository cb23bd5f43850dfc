// Also tests: Show/FramedPicture.cpp
// Also tests: Show/Canvas.cpp
// Also tests: Show/OpaqueBitmap.cpp

#include "Show/ShowFrames.h"

#include "Imaging/CachedImage.h"
#include "Platform/Foundation/Exception.h"
#include "Show/Canvas.h"
#include "Show/FramedPicture.h"
#include "Show/OpaqueBitmap.h"
#include "Show/PictureLoading.h"
#include "Tests/Tools/Support/TestPictures.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

using namespace Imaging;
using namespace TestSupport;

namespace {

using Platform::NSException;

std::shared_ptr<IMGImage> nodeOf(const Picture& picture, bool alpha = false) {
    const std::string bytes = pngOf(picture, alpha);
    return nodeWithBytes({bytes.begin(), bytes.end()});
}

Picture drawn(IMGImage& node, PixelSize size) {
    const auto bitmap = drawnOnCanvas(size, "", [&] {
        drawFrame(node, size);
        return Platform::NSMakeRect(0, 0, static_cast<float>(size.width), static_cast<float>(size.height));
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

/// Red, then blue, in frames of 4 x 2; each stands for two frames, and blue pushes red out to the left in
/// three.
Show redAndBlue() {
    Show show;
    show.size = {4, 2};
    show.rateNumerator = 10;
    for (const Pixel& color : {red, blue}) {
        ShowPicture picture;
        picture.node = [color] { return nodeOf(Picture(4, 2, color)); };
        picture.hold = 0.2;
        picture.next = {transitionWithText("push:direction=left"), 0.3, Easing::Linear};
        show.pictures.push_back(picture);
    }
    return show;
}

/// The frames of a part of a show, a letter for each pixel of their upper rows.
std::vector<std::string> letters(const Show& show, std::uint64_t first, std::uint64_t count) {
    const Schedule schedule(show);
    const ShowFrames frames(show, schedule, first, count);
    ShowPictures pictures(frames.pictures(),
                          [&](std::size_t i) { return framedPicture(show.pictures[i], show); });
    std::vector<std::string> all;
    frames.forEach(pictures, [&](const ShowFrames::Frame& frame) {
        EXPECT_EQ(frame.first, first + all.size());
        const Picture picture = drawn(*frame.node, show.size);
        std::string row;
        for (int x = 0; x < picture.width; ++x) {
            EXPECT_EQ(picture.at(x, 1), picture.at(x, 0));
            row += picture.at(x, 0) == red ? 'r' : picture.at(x, 0) == blue ? 'b' : '?';
        }
        all.insert(all.end(), frame.times, row);
    });
    return all;
}

} // namespace

TEST(ShowFrames, ShowPicturesAndTheWayBetweenThem) {
    EXPECT_EQ(letters(redAndBlue(), 0, 7),
              (std::vector<std::string>{"rrrr", "rrrr", "rrrb", "rrbb", "rbbb", "bbbb", "bbbb"}));
}

TEST(ShowFrames, OfAPartAreThoseOfTheWhole) {
    const Show show = redAndBlue();
    const std::vector<std::string> whole = letters(show, 0, 7);
    for (std::uint64_t first = 0; first < 7; ++first) {
        for (std::uint64_t count = 1; first + count <= 7; ++count) {
            const auto begin = whole.begin() + static_cast<std::ptrdiff_t>(first);
            EXPECT_EQ(letters(show, first, count),
                      std::vector<std::string>(begin, begin + static_cast<std::ptrdiff_t>(count)));
        }
    }
}

TEST(ShowFrames, AskForThePicturesInTheirOrder) {
    Show show = redAndBlue();
    show.loop = true;
    const Schedule schedule(show);
    EXPECT_EQ(ShowFrames(show, schedule, 0, schedule.frameCount()).pictures(),
              (std::vector<std::size_t>{0, 1, 0}));
    EXPECT_EQ(ShowFrames(show, schedule, 5, 2).pictures(), (std::vector<std::size_t>{1}));
}

TEST(FramedPicture, ComesFromAFunctionWhereThereIsOne) {
    Show show;
    show.size = {2, 2};
    ShowPicture picture;
    picture.name = "/nowhere/at/all.png";
    picture.node = [] { return nodeOf(Picture(1, 1, green)); };
    EXPECT_EQ(drawn(*framedPicture(picture, show), show.size).pixels, std::vector<Pixel>(4, green));
    picture.node = [this_is = std::string("mine")]() -> std::shared_ptr<IMGImage> {
        throw std::out_of_range(this_is);
    };
    EXPECT_THROW(framedPicture(picture, show), std::out_of_range);
}

TEST(FramedPicture, SaysWhatIsWrongWithAFileWithoutItsName) {
    Show show;
    show.size = {2, 2};
    ShowPicture picture;
    picture.name = "/nowhere/at/all.png";
    try {
        framedPicture(picture, show);
        FAIL();
    } catch (const NSException& exception) {
        EXPECT_EQ(exception.reason(), "there is no such file");
    }
}

TEST(FramedPicture, TellsTheStepsItsName) {
    Show show;
    show.size = {2, 2};
    ShowPicture picture;
    picture.name = "harbour";
    picture.node = [] { return nodeOf(Picture(3, 1, green)); };
    std::string name;
    picture.steps = {[&](FramedNode& node) { name = node.name(); }};
    framedPicture(picture, show);
    EXPECT_EQ(name, "harbour");
}

TEST(Canvas, RefusesSizesThatCannotBeDrawnBeforeAnythingIsDrawn) {
    const auto complaint = [](PixelSize size) -> std::string {
        try {
            drawnOnCanvas(size, "make it smaller", []() -> Platform::NSRect {
                ADD_FAILURE() << "it was drawn";
                return {};
            });
            return "none";
        } catch (const NSException& exception) {
            return exception.reason();
        }
    };
    EXPECT_EQ(complaint({40000, 2}), "the result would be 40000 x 2 pixels, and at most 32750 can be drawn "
                                     "along a side; make it smaller");
    EXPECT_EQ(complaint({32000, 32000}), "the result would be 32000 x 32000 pixels, more than the limit of "
                                         "268435456 pixels; make it smaller");
}

TEST(OpaqueBitmap, HasTheColoursAloneWhereNothingShowsThrough) {
    const auto bitmap = Platform::NSBitmapImageRep::bitmapWithDescription({.pixelsWide = 3, .pixelsHigh = 2});
    for (int i = 0; i < 6; ++i) {
        for (int k = 0; k < 4; ++k) {
            bitmap->bitmapData()[static_cast<std::size_t>(i / 3) * bitmap->bytesPerRow() +
                                 static_cast<std::size_t>(i % 3 * 4 + k)] =
                static_cast<std::uint8_t>(k == 3 ? 255 : 40 * i + k);
        }
    }
    const auto opaque = withoutNeedlessAlpha(*bitmap);
    ASSERT_NE(opaque, nullptr);
    EXPECT_EQ(opaque->samplesPerPixel(), 3);
    for (int i = 0; i < 6; ++i) {
        for (std::size_t k = 0; k < 3; ++k) {
            EXPECT_EQ(static_cast<std::size_t>(opaque->pixelAt(i % 3, i / 3).at(k)),
                      static_cast<std::size_t>(40 * i) + k);
        }
    }
    bitmap->bitmapData()[3] = 254;
    EXPECT_EQ(withoutNeedlessAlpha(*bitmap), nullptr);
}
