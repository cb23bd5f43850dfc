// Draws a node into a picture and checks a pixel, with the installed library and headers alone.

#include <Imaging/Imaging.h>
#include <Platform/Graphics/GraphicsContext.h>

#include <cstdio>

using namespace Platform;

int main() {
    const auto tile = std::make_shared<NSImage>(NSMakeSize(2, 2));
    {
        const NSImageFocus focus(*tile);
        NSColor::colorWithCalibratedRed(1, 0, 0, 1).set();
        NSRectFill(NSMakeRect(0, 1, 2, 1)); // the upper half
    }
    const auto node = Imaging::imagingImage(tile);
    const auto data = node->representationUsingType(NSPNGFileType, {});
    const auto bitmap = data.has_value() ? NSBitmapImageRep::imageRepWithData(*data) : nullptr;
    if (bitmap == nullptr) return 1;
    const auto top = bitmap->pixelAt(0, 0);
    const auto bottom = bitmap->pixelAt(0, 1);
    std::printf("top %d %d %d %d, bottom alpha %d\n", top[0], top[1], top[2], top[3], bottom[3]);
    return top[0] == 255 && top[1] == 0 && top[3] == 255 && bottom[3] == 0 ? 0 : 1;
}
