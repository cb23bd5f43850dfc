#include "Show/Orientation.h"

#include "Imaging/CachedImage.h"
#include "Imaging/Transpose.h"
#include "Platform/Graphics/BitmapImageRep.h"
#include "Platform/Graphics/Image.h"

#include <array>
#include <utility>
#include <variant>

namespace Imaging::Tool {

using Imaging::IMGImage;
using Platform::NSBitmapImageRep;

namespace {

/// What has to be done to a picture of EXIF's orientations 1 to 8. They say where the stored first row and
/// the stored first column belong.
constexpr std::array<std::int32_t, 8> uprightTypes = {
    Imaging::ROTATE_0,          // top, left
    Imaging::FLIP_HORIZONTAL,   // top, right
    Imaging::ROTATE_180,        // bottom, right
    Imaging::FLIP_VERTICAL,     // bottom, left
    Imaging::FLIP_ANTIDIAGONAL, // left, top
    Imaging::ROTATE_270,        // right, top
    Imaging::FLIP_DIAGONAL,     // right, bottom
    Imaging::ROTATE_90,         // left, bottom
};

/// The orientation that a picture node's file declares; 1 for all other nodes.
int declaredOrientation(IMGImage& node) {
    auto* picture = dynamic_cast<Imaging::IMGImageFromNSImage*>(&node);
    const auto image = picture != nullptr ? picture->untransformedImage()->nsImage() : nullptr;
    if (image == nullptr) return 1;
    const auto bitmap = std::dynamic_pointer_cast<NSBitmapImageRep>(image->bestRepresentation());
    if (bitmap == nullptr) return 1;
    const auto value = bitmap->valueForProperty(Platform::NSImageOrientation);
    const int* number = value.has_value() ? std::get_if<int>(&*value) : nullptr;
    return number != nullptr && *number >= 1 && *number <= 8 ? *number : 1;
}

} // namespace

std::shared_ptr<IMGImage> orientedNode(std::shared_ptr<IMGImage> node, Upright upright) {
    if (upright == Upright::AsStored) return node;
    const std::int32_t type = uprightTypes.at(static_cast<std::size_t>(declaredOrientation(*node) - 1));
    if (type == Imaging::ROTATE_0) return node;
    return Imaging::IMGTransposeOp::transposeOfType(type, std::move(node));
}

} // namespace Imaging::Tool
