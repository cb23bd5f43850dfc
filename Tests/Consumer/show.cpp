// Draws the frames of a show of two pictures that are made in memory, with the installed library of shows
// alone, and checks a pixel of each: red, then blue coming up over it, then blue.

#include <Imaging/CachedImage.h>
#include <Platform/Graphics/BitmapImageRep.h>
#include <Platform/Graphics/GraphicsContext.h>
#include <Platform/Graphics/Image.h>
#include <Show/Canvas.h>
#include <Show/FramedPicture.h>
#include <Show/ShowFrames.h>

#include <cstdio>
#include <memory>
#include <string>

using namespace Imaging;
using namespace Imaging::Platform;

namespace {

std::shared_ptr<IMGImage> pictureOf(const NSColor& color) {
    const auto picture = std::make_shared<NSImage>(NSMakeSize(3, 2));
    const NSImageFocus focus(*picture);
    color.set();
    NSRectFill(NSMakeRect(0, 0, 3, 2));
    return imagingImage(picture);
}

/// A letter for the lowest pixel of a frame on the left: r, b or ?.
char letterOf(IMGImage& node, PixelSize size) {
    const auto bitmap = drawnOnCanvas(size, "make the frames smaller", [&] {
        drawFrame(node, size);
        return NSMakeRect(0, 0, static_cast<float>(size.width), static_cast<float>(size.height));
    });
    const auto pixel = bitmap->pixelAt(0, static_cast<int>(size.height) - 1);
    return pixel[0] == 255 && pixel[2] == 0 ? 'r' : pixel[0] == 0 && pixel[2] == 255 ? 'b' : '?';
}

} // namespace

int main() {
    Show show;
    show.size = {6, 4};
    show.rateNumerator = 4;
    for (const NSColor& color :
         {NSColor::colorWithCalibratedRed(1, 0, 0, 1), NSColor::colorWithCalibratedRed(0, 0, 1, 1)}) {
        ShowPicture picture;
        picture.node = [color] { return pictureOf(color); };
        picture.hold = 0.5;
        picture.next = {makeTransition("push", {{"direction", "up"}}), 0.75, Easing::Linear};
        show.pictures.push_back(picture);
    }
    const Schedule schedule(show);
    const ShowFrames frames(show, schedule, 0, schedule.frameCount());
    ShowPictures pictures(frames.pictures(),
                          [&](std::size_t i) { return framedPicture(show.pictures[i], show); });
    std::string letters;
    frames.forEach(pictures, [&](const ShowFrames::Frame& frame) {
        letters += std::string(frame.times, letterOf(*frame.node, show.size));
    });
    std::printf("frames %s\n", letters.c_str());
    return letters == "rrbbbbb" ? 0 : 1;
}
