// Draws a frame of a transition between two pictures into a PNG:
//     transition FROM TO WEIGHT OUTPUT.png
// A film is the same with a weight that goes from 0 to 1, a fresh node for every frame.

#include <Imaging/Imaging.h>
#include <Platform/Graphics/GraphicsContext.h>

#include <cstdlib>

using namespace Imaging;
using namespace Platform;

int main(int argc, char** argv) {
    if (argc != 5) return 2;
    const auto from = IMGImage::imageWithContentsOfFile(argv[1]);
    const auto to = IMGImage::imageWithContentsOfFile(argv[2]);
    if (!from || !to) return 1;

    const NSSize size = {1280, 720};
    const auto frame = IMGIrisTransitionOp::transitionWithFromImage(from, to, size, IMGTransitionIn,
                                                                    std::strtof(argv[3], nullptr));
    NSImage page(size);
    const NSImageFocus focus(page); // what follows is drawn into the page
    NSColor::blackColor().set();
    NSRectFill({NSZeroPoint, size});
    frame->drawInRect({NSZeroPoint, size}, NSCompositeSourceOver, 1.0F, false);

    const auto bitmap = NSBitmapImageRep::bitmapWithFocusedViewRect({NSZeroPoint, size});
    const auto png = bitmap->representationUsingType(NSPNGFileType, {});
    return png && writeToFileAtomically(*png, argv[4]) ? 0 : 1;
}
