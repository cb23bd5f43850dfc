// Draws a frame of a transition between two pictures into a PNG:
//     transition FROM TO WEIGHT OUTPUT.png
// A film is the same with a weight that goes from 0 to 1, a fresh node for every frame.

#include <Imaging/Imaging.h>
#include <Platform/Graphics/GraphicsContext.h>

#include <cstdio>
#include <cstdlib>

using namespace Imaging;
using namespace Imaging::Platform;

int main(int argc, char** argv) {
    if (argc != 5) return std::fprintf(stderr, "usage: transition FROM TO WEIGHT OUTPUT.png\n"), 2;
    NSError error;
    const auto from = IMGImage::imageWithContentsOfFile(argv[1], &error);
    const auto to = from ? IMGImage::imageWithContentsOfFile(argv[2], &error) : nullptr;
    if (to == nullptr) return std::fprintf(stderr, "%s: %s\n", argv[from ? 2 : 1], error.message.c_str()), 1;

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
    if (png && writeToFileAtomically(*png, argv[4], &error)) return 0;
    return std::fprintf(stderr, "%s: %s\n", argv[4], error.message.c_str()), 1;
}
