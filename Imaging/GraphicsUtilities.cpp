// Decorations of picture areas in 2-D graphics, and the few functions that all OpenGL drawing shares:
// coordinates, compositing, and reports of errors.

#include "Imaging/GraphicsUtilities.h"

#include "Imaging/BitmapFormats.h"
#include "Imaging/Geometry.h"
#include "Platform/Foundation/Error.h"
#include "Platform/Foundation/Exception.h"
#include "Platform/Foundation/Log.h"
#include "Platform/Foundation/Resources.h"
#include "Platform/Graphics/Appearance.h"
#include "Platform/Graphics/GraphicsContext.h"
#include "Platform/Graphics/Image.h"
#include "Platform/Graphics/Text.h"
#include "Platform/OpenGL/OpenGLCommands.h"

#include <memory>
#include <mutex>

namespace Imaging {

using Platform::NSException;
using Platform::NSMakeRect;
using Platform::OpenGL::BlendFactor;

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

struct FramePieces {
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

/// Read by the first frame; when that fails, the next one tries again. Never destroyed: frames may still be
/// drawn while static objects are torn down.
const FramePieces& framePieces() {
    static const FramePieces& pieces = *new FramePieces;
    return pieces;
}

void drawPiece(NSImage& piece, float x, float y, float width, float height) {
    piece.drawInRect(NSMakeRect(x, y, width, height), bounds(piece), Platform::NSCompositeSourceOver, 1);
}

void reportErrorOf(Platform::OpenGLCommands& gl) {
    ReportError(static_cast<unsigned>(gl.getError()), __FILE__, __LINE__);
}

void setBlending(Platform::OpenGLCommands& gl, BlendFactor source, BlendFactor destination) {
    gl.blendFunc(source, destination);
    reportErrorOf(gl);
}

/// All four alike, since the textures' colours are multiplied by their alpha.
void setColor(Platform::OpenGLCommands& gl, float fraction) {
    gl.color4f(fraction, fraction, fraction, fraction);
    reportErrorOf(gl);
}

} // namespace

void DrawFrameInside(NSRect rect) {
    const FramePieces& piece = framePieces();
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

const char* CheckOpenGLErrorFormat = "gl error %s %d %d";

void ReportError(unsigned error, const char*, int) {
    if (error == 0) return;
    Platform::NSLog(CheckOpenGLErrorFormat, "Imaging/GraphicsUtilities", 285, static_cast<int>(error));
}

std::array<float, 3> MakePoint3D(float x, float y, float z) { return {x, y, z}; }

NSPoint MapPointGL(NSPoint point, NSRect from, NSRect to) {
    return {(point.x - from.origin.x) * to.size.width / from.size.width + to.origin.x,
            (point.y - from.origin.y) * to.size.height / from.size.height + to.origin.y};
}

NSRect MapRectGL(NSRect rect, NSRect from, NSRect to) {
    return {MapPointGL(rect.origin, from, to),
            {to.size.width * rect.size.width / from.size.width,
             to.size.height * rect.size.height / from.size.height}};
}

void SetCompositedModeGL(int operation, float fraction) {
    Platform::OpenGLCommands& gl = Platform::OpenGLCommands::current();
    gl.enable(Platform::OpenGL::Capability::Blend);
    reportErrorOf(gl);
    switch (operation) {
    case Platform::NSCompositeCopy:
        setBlending(gl, BlendFactor::One, BlendFactor::Zero);
        break;
    case Platform::NSCompositeSourceOver:
        setBlending(gl, BlendFactor::One, BlendFactor::OneMinusSrcAlpha);
        setColor(gl, fraction);
        break;
    case Platform::NSCompositeDestinationOver:
        setBlending(gl, BlendFactor::OneMinusDstAlpha, BlendFactor::One);
        setColor(gl, fraction);
        break;
    case Platform::NSCompositePlusLighter:
        setBlending(gl, BlendFactor::ConstantAlpha, BlendFactor::One);
        gl.blendColor(1, 1, 1, fraction);
        reportErrorOf(gl);
        break;
    default: // nothing in OpenGL's blending stands for them
        break;
    }
}

} // namespace Imaging
