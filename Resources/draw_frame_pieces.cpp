// Draws the nine pictures of the frame and writes them as PNG:
//     draw_frame_pieces FOLDER

#include "Resources/FramePieces.h"

#include "Platform/Foundation/Data.h"
#include "Platform/Graphics/BitmapImageRep.h"
#include "Platform/Graphics/Image.h"

#include <cstdio>

using namespace Imaging::Platform;

namespace {

std::optional<NSData> pngOf(NSImage& picture, NSError* error) {
    const NSImageFocus focus(picture);
    const auto bitmap = NSBitmapImageRep::bitmapWithFocusedViewRect({NSZeroPoint, picture.size()});
    return bitmap->representationUsingType(NSPNGFileType, {}, error);
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 2) return std::fprintf(stderr, "usage: draw_frame_pieces FOLDER\n"), 2;
    for (const Resources::FramePiece& piece : Resources::drawnFramePieces()) {
        const std::string path = std::string(argv[1]) + "/" + piece.name + ".png";
        NSError error;
        const std::optional<NSData> png = pngOf(*piece.picture, &error);
        if (!png || !writeToFileAtomically(*png, path, &error)) {
            return std::fprintf(stderr, "%s: %s\n", path.c_str(), error.message.c_str()), 1;
        }
    }
    return 0;
}
