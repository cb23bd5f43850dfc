// Lays one picture over another at half strength and writes the result as PNG:
//     two_pictures BACK FRONT OUT.png

#include <Imaging/Imaging.h>
#include <Platform/Graphics/GraphicsContext.h>

#include <cstdio>

using namespace Imaging;
using namespace Imaging::Platform;

int main(int argc, char** argv) {
    if (argc != 4) return std::fprintf(stderr, "usage: two_pictures BACK FRONT OUT.png\n"), 2;
    NSError error;
    const auto back = IMGImage::imageWithContentsOfFile(argv[1], &error);
    const auto front = back ? IMGImage::imageWithContentsOfFile(argv[2], &error) : nullptr;
    if (front == nullptr) return std::fprintf(stderr, "%s\n", error.message.c_str()), 1;

    NSImage page(back->imageSize());
    const NSRect whole{NSZeroPoint, page.size()};
    std::shared_ptr<NSBitmapImageRep> pixels;
    {
        const NSImageFocus focus(page);
        back->drawInRect(whole, NSCompositeSourceOver, 1.0F, false);
        front->drawInRect(whole, NSCompositeSourceOver, 0.5F, false);
        pixels = NSBitmapImageRep::bitmapWithFocusedViewRect(whole);
    }
    const auto png = pixels->representationUsingType(NSPNGFileType, {}, &error);
    if (png && writeToFileAtomically(*png, argv[3], &error)) return 0;
    return std::fprintf(stderr, "%s\n", error.message.c_str()), 1;
}
