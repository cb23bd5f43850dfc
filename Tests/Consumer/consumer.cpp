// Draws a node into a picture and checks a pixel, takes a graph of several classes through an archive, and
// sees that the library finds its resources in the folder that is given, with the installed library and
// headers alone.

#include <Imaging/Imaging.h>
#include <Platform/Foundation/Exception.h>
#include <Platform/Foundation/KeyedArchiver.h>
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

/// The class names of a graph, depth first.
std::string classesOf(const Imaging::IMGImage& node) {
    std::string names = node.archiveClassName();
    for (const auto& source : node.sources()) names += " " + classesOf(*source);
    return names;
}

/// A canvas with a crop of the picture, turned and made brighter, and a dissolve of it and nothing.
std::shared_ptr<Imaging::IMGImage> graphOver(const std::shared_ptr<Imaging::IMGImage>& picture) {
    using namespace Imaging;
    const auto brighter = IMGColorTransformOp::colorTransformWithSourceImage(picture, 1, 1, 2, 1);
    const auto turned = IMGTransposeOp::transposeOfType(ROTATE_180, brighter);
    const auto crop = IMGCropAndScale::cropWithSourceImage(turned, NSMakeRect(0, 0, 2, 1), NSMakeSize(4, 2),
                                                           SCALE_TO_FILL, true);
    const auto nothing = IMGNullGenerator::generatorWithSize(NSMakeSize(3, 3));
    const auto both =
        IMGDissolveTransitionOp::transitionWithFromImage(picture, nothing, NSMakeSize(3, 3), 0.5F);
    return std::make_shared<IMGCanvas>(NSMakeSize(7, 5), IMGImage::Sources{crop, both});
}

/// Whether a graph comes back from an archive as it was, which it does only where all classes are known.
bool comesBackFromArchive(const std::shared_ptr<Imaging::IMGImage>& picture) {
    const std::string expected =
        "IMGCanvas IMGCropAndScale IMGTransposeOp IMGColorTransformOp IMGImageFromNSImage "
        "IMGDissolveTransitionOp IMGImageFromNSImage IMGNullGenerator";
    try {
        const auto node =
            unarchiveObjectOfClass<Imaging::IMGImage>(archivedDataWithRootObject(*graphOver(picture)));
        std::printf("archived: %s\n", classesOf(*node).c_str());
        return classesOf(*node) == expected && NSEqualSizes(node->imageSize(), NSMakeSize(7, 5)) &&
               node->sourceAtIndex(0)->sourceAtIndex(0)->imageSize().width == 2;
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
    if (!comesBackFromArchive(node)) return 1;
    const auto data = node->representationUsingType(NSPNGFileType, {});
    const auto bitmap = data.has_value() ? NSBitmapImageRep::imageRepWithData(*data) : nullptr;
    if (bitmap == nullptr) return 1;
    const auto top = bitmap->pixelAt(0, 0);
    const auto bottom = bitmap->pixelAt(0, 1);
    std::printf("top %d %d %d %d, bottom alpha %d\n", top[0], top[1], top[2], top[3], bottom[3]);
    return top[0] == 255 && top[1] == 0 && top[3] == 255 && bottom[3] == 0 ? 0 : 1;
}
