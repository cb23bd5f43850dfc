// Draws a node into a picture and checks a pixel, and sees that the library finds its resources in the folder
// that is given, with the installed library and headers alone.

#include <Imaging/Imaging.h>
#include <Platform/Foundation/Exception.h>
#include <Platform/Foundation/Resources.h>
#include <Platform/Graphics/GraphicsContext.h>

#include <cstdio>
#include <string>

using namespace Imaging::Platform;

namespace {

/// Whether a frame can be drawn, and its pictures come from below the folder.
bool findsResourcesIn(const std::string& folder) {
    try {
        const std::string path = pathForImageResource("box_topleft");
        std::printf("resources in %s\n", path.c_str());
        NSImage tile(NSMakeSize(40, 40));
        const NSImageFocus focus(tile);
        Imaging::DrawFrameInside(NSMakeRect(5, 5, 30, 30));
        return path.compare(0, folder.size(), folder) == 0;
    } catch (const NSException& exception) {
        std::printf("%s\n", exception.what());
        return false;
    }
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 2 || !findsResourcesIn(argv[1])) return 1;
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
