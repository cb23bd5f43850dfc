// EXIF names where the first row and column belong; a transposition of the node brings them there.

#include "Show/Orientation.h"

#include "Imaging/CachedImage.h"
#include "Imaging/Transpose.h"
#include "Platform/Graphics/BitmapImageRep.h"
#include "Platform/Graphics/Image.h"

#include <array>
#include <utility>
#include <variant>

namespace Imaging {

using Platform::NSBitmapImageRep;

namespace {

/// What has to be done to a picture of EXIF's orientations 1 to 8. They say where the stored first row and
/// the stored first column belong.
constexpr std::array<std::int32_t, 8> uprightTypes = {
    ROTATE_0,          // top, left
    FLIP_HORIZONTAL,   // top, right
    ROTATE_180,        // bottom, right
    FLIP_VERTICAL,     // bottom, left
    FLIP_ANTIDIAGONAL, // left, top
    ROTATE_270,        // right, top
    FLIP_DIAGONAL,     // right, bottom
    ROTATE_90,         // left, bottom
};

/// The orientation that a picture node's file declares; 1 for all other nodes.
int declaredOrientation(IMGImage& node) {
    auto* picture = dynamic_cast<IMGImageFromNSImage*>(&node);
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
    if (type == ROTATE_0) return node;
    return IMGTransposeOp::transposeOfType(type, std::move(node));
}

} // namespace Imaging
