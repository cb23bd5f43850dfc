// The decorations around pictures. The border's nine pieces are the same for every thread, so they are drawn
// under the lock for pictures; the other two need no pictures.

#include "Imaging/GraphicsUtilities.h"

#include "Imaging/BitmapFormats.h"
#include "Imaging/Geometry.h"
#include "Platform/Foundation/Error.h"
#include "Platform/Foundation/Exception.h"
#include "Platform/Foundation/Resources.h"
#include "Platform/Graphics/Appearance.h"
#include "Platform/Graphics/GraphicsContext.h"
#include "Platform/Graphics/Image.h"
#include "Platform/Graphics/Text.h"

#include <memory>
#include <mutex>

namespace Imaging {

using Platform::NSException;
using Platform::NSMakeRect;

namespace {

std::shared_ptr<NSImage> pieceNamed(const char* name) {
    const std::string path = Platform::pathForImageResource(name);
    Platform::NSError error;
    std::shared_ptr<NSImage> piece = NSImage::imageWithContentsOfFile(path, &error);
    if (piece != nullptr) return piece;
    throw NSException(Platform::NSResourceException, "the resource " + path +
                                                         " cannot be read: " + error.message +
                                                         "; install the library's resources again");
}

struct BorderPieces {
    std::shared_ptr<NSImage> topLeft = pieceNamed("box_topleft");
    std::shared_ptr<NSImage> top = pieceNamed("box_top");
    std::shared_ptr<NSImage> topRight = pieceNamed("box_topright");
    std::shared_ptr<NSImage> left = pieceNamed("box_left");
    std::shared_ptr<NSImage> middle = pieceNamed("box_middle");
    std::shared_ptr<NSImage> right = pieceNamed("box_right");
    std::shared_ptr<NSImage> bottomLeft = pieceNamed("box_bottomleft");
    std::shared_ptr<NSImage> bottom = pieceNamed("box_bottom");
    std::shared_ptr<NSImage> bottomRight = pieceNamed("box_bottomright");
};

/// Read by the first border; when that fails, the next one tries again. Never destroyed: borders may still be
/// drawn while static objects are torn down.
const BorderPieces& borderPieces() {
    static const BorderPieces& pieces = *new BorderPieces;
    return pieces;
}

void drawPiece(NSImage& piece, float x, float y, float width, float height) {
    piece.drawInRect(NSMakeRect(x, y, width, height), bounds(piece), Platform::NSCompositeSourceOver, 1);
}

} // namespace

void DrawFrameInside(NSRect rect) {
    const BorderPieces& piece = borderPieces();
    // Every thread draws the same pictures.
    const std::lock_guard lock(GlobalImageLock());
    const auto [x, y] = rect.origin;
    const auto [w, h] = rect.size;
    const NSSize topLeft = piece.topLeft->size();
    const NSSize top = piece.top->size();
    const NSSize topRight = piece.topRight->size();
    const NSSize left = piece.left->size();
    const NSSize right = piece.right->size();
    const NSSize bottomLeft = piece.bottomLeft->size();
    const NSSize bottom = piece.bottom->size();
    const NSSize bottomRight = piece.bottomRight->size();
    const float sideY = y + bottomLeft.height;
    const float sideHeight = h - bottomLeft.height - topLeft.height;

    drawPiece(*piece.topLeft, x, y + h - topLeft.height, topLeft.width, topLeft.height);
    drawPiece(*piece.top, x + topLeft.width, y + h - top.height, w - topLeft.width - topRight.width,
              top.height);
    drawPiece(*piece.topRight, x + w - topRight.width, y + h - topRight.height, topRight.width,
              topRight.height);
    drawPiece(*piece.bottomLeft, x, y, bottomLeft.width, bottomLeft.height);
    drawPiece(*piece.left, x, sideY, left.width, sideHeight);
    drawPiece(*piece.middle, x + bottomLeft.width, sideY, w - bottomLeft.width - topRight.width,
              h - bottomLeft.height - topRight.height);
    // As wide as the left piece, but placed by its own width.
    drawPiece(*piece.right, x + w - right.width, sideY, left.width, sideHeight);
    drawPiece(*piece.bottom, x + bottomLeft.width, y, w - bottomLeft.width - bottomRight.width,
              bottom.height);
    drawPiece(*piece.bottomRight, x + w - bottomRight.width, y, bottomRight.width, bottomRight.height);
}

void DrawFocusRingInside(NSRect rect) {
    const Platform::NSGraphicsStateScope state;
    Platform::appearance().keyboardFocusIndicator.set();
    Platform::NSFrameRectWithWidth(Platform::NSInsetRect(rect, 8, 8), 2);
}

void HintTextInFrame(NSRect rect, const std::string& text) {
    const Platform::NSFont font = Platform::NSFont::boldSystemFontOfSize(18);
    const NSPoint size = SizeToPoint(Platform::sizeOfText(text, font));
    const NSPoint point = SubtractPoint(RectMidpoint(rect), DividePoint(size, 2));
    Platform::drawTextAtPoint(text, font, Platform::appearance().lightGray, point);
}

} // namespace Imaging
