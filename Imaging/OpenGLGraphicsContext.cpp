// Keeps the context, its lock and the balance of holds; what is drawn with which commands is in files of its
// own (OpenGL/TexturePlacement, OverlayPicture, ShapeDrawing, FramePicture).

#include "Imaging/OpenGLGraphicsContext.h"

#include "Imaging/GraphicsUtilities.h"
#include "Imaging/Image.h"
#include "Imaging/OpenGL/ContextMaking.h"
#include "Imaging/OpenGL/FramePicture.h"
#include "Imaging/OpenGL/OverlayPicture.h"
#include "Imaging/OpenGL/ShapeDrawing.h"
#include "Imaging/OpenGL/StateScopes.h"
#include "Imaging/OpenGL/TexturePlacement.h"
#include "Imaging/OpenGLImage.h"
#include "Imaging/OpenGLTexture.h"
#include "Platform/Foundation/Exception.h"
#include "Platform/Graphics/BezierPath.h"
#include "Platform/Graphics/BitmapImageRep.h"
#include "Platform/Graphics/GraphicsContext.h"
#include "Platform/OpenGL/OpenGLContext.h"
#include "Platform/OpenGL/OpenGLException.h"

#include <cmath>
#include <utility>

namespace Imaging {

using Platform::NSException;
using Platform::NSOpenGLContext;
using Platform::OpenGLCommands;
using Platform::OpenGL::AttribBits;
using Platform::OpenGL::Capability;
using Platform::OpenGL::MatrixMode;
using Platform::OpenGL::Primitive;

namespace {

constexpr NSRect unitSquare = Platform::NSMakeRect(-1, -1, 2, 2);

void setMatrices(OpenGLCommands& gl) {
    gl.matrixMode(MatrixMode::Projection);
    gl.loadIdentity();
    gl.ortho(-1, 1, -1, 1, -1, 1);
    gl.matrixMode(MatrixMode::ModelView);
    gl.loadIdentity();
    reportOpenGLError(gl);
}

void smooth(OpenGLCommands& gl) {
    using Platform::OpenGL::HintMode;
    using Platform::OpenGL::HintTarget;
    gl.enable(Capability::Blend);
    gl.enable(Capability::LineSmooth);
    gl.hint(HintTarget::LineSmooth, HintMode::Nicest);
    gl.hint(HintTarget::PointSmooth, HintMode::Nicest);
    gl.hint(HintTarget::PolygonSmooth, HintMode::Nicest);
    reportOpenGLError(gl);
}

/// Toward zero, and 0 for what no viewport could have.
int truncated(float value) { return std::abs(value) < 1e9F ? static_cast<int>(value) : 0; }

void beginFrame(OpenGLCommands& gl, NSRect rect) {
    gl.viewport(truncated(rect.origin.x), truncated(rect.origin.y), truncated(rect.size.width),
                truncated(rect.size.height));
    reportOpenGLError(gl);
    gl.clearColor(0, 0, 0, 0);
    gl.clear(Platform::OpenGL::ClearBits::Color);
    reportOpenGLError(gl);
    setMatrices(gl);
    smooth(gl);
    gl.color4f(1, 1, 1, 1);
    gl.rectf(-1, -1, 1, 1);
    reportOpenGLError(gl);
}

/// Brings a path from the bounds into the normalised square, where it stays, and gives its points there.
PointLists outlinesInSquare(NSBezierPath& path, NSRect bounds) {
    NSAffineTransform toSquare;
    toSquare.scaleXBy(2 / bounds.size.width, 2 / bounds.size.height);
    toSquare.translateXBy(-(bounds.origin.x + bounds.size.width / 2),
                          -(bounds.origin.y + bounds.size.height / 2));
    path.transformUsingAffineTransform(toSquare);
    PointLists outlines;
    GatherVertices(path, outlines);
    return outlines;
}

[[noreturn]] void throwUnprepared() {
    throw NSException(Platform::NSOpenGLException, "the OpenGL drawing target has no context yet; "
                                                   "call prepare or prepareOffscreen with a view first");
}

} // namespace

OpenGLGraphicsContext::OpenGLGraphicsContext()
    : m_context_lock(std::make_shared<OpenGLContextLock>()), m_cache(std::make_unique<OpenGLCache>()) {}

OpenGLGraphicsContext::~OpenGLGraphicsContext() {
    const std::lock_guard lock(*m_context_lock);
    m_frame = {};
    releaseTextures();
    m_opengl_context.reset();
}

// Life

void OpenGLGraphicsContext::prepare(Platform::NSView* view) { prepareContext(view, false); }

void OpenGLGraphicsContext::prepareOffscreen(Platform::NSView* view) { prepareContext(view, true); }

void OpenGLGraphicsContext::prepareContext(Platform::NSView* view, bool isOffscreen) {
    const std::lock_guard lock(*m_context_lock);
    std::shared_ptr<NSOpenGLContext> context = makeContext(view, isOffscreen, m_profile);
    releaseTextures();
    m_opengl_context = std::move(context);
    m_is_lost = false;
}

/// Names are deleted where that can be done; with a context that is gone they are gone too.
void OpenGLGraphicsContext::releaseTextures() {
    bool isCurrent = false;
    try {
        isCurrent =
            m_opengl_context != nullptr && m_cache->count() > 0 && m_opengl_context->makeCurrentContext();
    } catch (...) { // the context cannot be had any more
    }
    if (isCurrent) {
        m_cache->removeAllTextures();
    } else {
        m_cache->forgetAllTextures();
    }
}

void OpenGLGraphicsContext::unprepare(Platform::NSView*) {
    const std::lock_guard lock(*m_context_lock);
    if (m_opengl_context != nullptr) m_opengl_context->clearDrawable();
}

void OpenGLGraphicsContext::reprepare(Platform::NSView* view) {
    const std::lock_guard lock(*m_context_lock);
    if (m_opengl_context == nullptr) throwUnprepared();
    if (m_opengl_context->isLost()) m_cache->forgetAllTextures();
    m_opengl_context->setView(sharedView(view));
    m_is_lost = false;
}

std::shared_ptr<NSOpenGLContext> OpenGLGraphicsContext::openGLContext() const { return m_opengl_context; }

std::shared_ptr<OpenGLContextLock> OpenGLGraphicsContext::contextLock() const { return m_context_lock; }

// Frames

void OpenGLGraphicsContext::beginDrawing(NSRect rect) {
    GraphicsContext::beginDrawing(rect);
    std::unique_lock frame(*m_context_lock);
    if (m_opengl_context == nullptr) throwUnprepared();
    m_is_lost = !m_opengl_context->makeCurrentContext();
    if (m_is_lost) {
        m_cache->forgetAllTextures();
    } else {
        beginFrame(OpenGLCommands::current(), rect);
    }
    m_frame = std::move(frame); // gives up the hold of a frame that was not ended
}

void OpenGLGraphicsContext::endDrawing() {
    const std::unique_lock frame = std::move(m_frame);
    if (frame.owns_lock() && canDraw()) m_opengl_context->flushBuffer();
}

// Pictures

void OpenGLGraphicsContext::drawImage(const std::shared_ptr<IMGImage>& node, NSRect rect,
                                      CompositingOperation operation, float alpha) {
    if (node != nullptr) node->drawInRect(rect, operation, alpha, false, this);
}

void OpenGLGraphicsContext::drawImage(IMGImage& node, const TransformAndClipList& transformClip,
                                      CompositingOperation operation, float fraction) {
    if (!canDraw()) return;
    const auto* const decoded = dynamic_cast<const OpenGLImage*>(&node);
    if (decoded != nullptr && decoded->bitmap() != nullptr) {
        drawBitmap(decoded->bitmap(), transformClip, operation, fraction);
        return;
    }
    drawInOverlay([&] { node.drawImage(nullptr, transformClip, operation, fraction, nullptr); });
}

void OpenGLGraphicsContext::drawBitmap(const std::shared_ptr<NSBitmapImageRep>& bitmap,
                                       const TransformAndClipList& transformClip,
                                       CompositingOperation operation, float fraction) {
    const std::lock_guard lock(*m_context_lock); // also when the last owner of the texture is this one
    std::shared_ptr<OpenGLTexture> texture;
    {
        // Whoever uploads needs the lock.
        const OpenGLContextLock::Pause pause(*m_context_lock);
        texture = m_cache->textureForBitmap(bitmap, *this, true);
    }
    if (texture == nullptr) return;
    drawTexture(*texture, bitmap->size(), transformClip, operation, fraction, false);
}

void OpenGLGraphicsContext::drawTexture(OpenGLTexture& texture, NSSize imageSize,
                                        const TransformAndClipList& transformClip,
                                        CompositingOperation operation, float fraction, bool inverted) {
    if (!canDraw()) return;
    const std::lock_guard lock(*m_context_lock);
    const TexturePlacement placement(imageSize, transformClip, bounds(), imageClipRect());
    if (!placement.isDrawable()) return;
    OpenGLCommands& gl = OpenGLCommands::current();
    const AttribScope attributes(gl, AttribBits::Current | AttribBits::Transform | AttribBits::ColorBuffer |
                                         AttribBits::Texture);
    SetCompositedModeGL(operation, fraction);
    gl.texEnvi(Platform::OpenGL::TexEnvMode::Modulate);
    reportOpenGLError(gl);
    const ModelViewScope matrix(gl);
    placement.multiplyMatrix(gl, inverted);
    const NSRect whole = Platform::NSMakeRect(0, 0, static_cast<float>(texture.pixelsWide()),
                                              static_cast<float>(texture.pixelsHigh()));
    texture.drawImage(whole, placement.clip());
}

void OpenGLGraphicsContext::preloadBitmap(const std::shared_ptr<NSBitmapImageRep>& bitmap,
                                          float timeUntilNeeded) {
    if (isPrepared() && bitmap != nullptr) m_cache->scheduleBitmap(bitmap, timeUntilNeeded, *this);
}

// Overlays

template<class Draw>
void OpenGLGraphicsContext::drawInOverlay(const Draw& draw) {
    if (!canDraw()) return;
    const std::shared_ptr<OpenGLCommands> gl = OpenGLCommands::currentOrNull();
    const std::shared_ptr<Platform::NSImage> picture = overlayPicture(bounds().size, draw);
    if (picture == nullptr) return;
    const std::lock_guard lock(*m_context_lock);
    // 2-D drawing may go through a context of its own, as that of a cube does.
    if (OpenGLCommands::currentOrNull() != gl && m_opengl_context != nullptr) {
        m_opengl_context->makeCurrentContext();
    }
    drawOverlay(OpenGLCommands::current(), picture);
}

void OpenGLGraphicsContext::drawHintText(const std::string& text, NSRect inside) {
    drawInOverlay([&] { HintTextInFrame(inside, text); });
}

void OpenGLGraphicsContext::drawFrameInside(NSRect rect, bool drawBackground) {
    if (!canDraw()) return;
    drawImage(framePicture(rect, drawBackground), rect, Platform::NSCompositeSourceOver, 1);
}

// Shapes

template<class Shape>
void OpenGLGraphicsContext::drawShape(const Shape& shape) {
    if (!canDraw() || Platform::NSIsEmptyRect(bounds())) return;
    const std::lock_guard lock(*m_context_lock);
    shape(OpenGLCommands::current());
}

void OpenGLGraphicsContext::fillRect(NSRect rect, const NSColor& color, CompositingOperation operation) {
    drawShape([&](OpenGLCommands& gl) {
        drawRectangle(gl, MapRectGL(rect, bounds(), unitSquare), color, operation);
    });
}

void OpenGLGraphicsContext::frameRect(NSRect rect, const NSColor& color, float lineWidth) {
    drawShape([&](OpenGLCommands& gl) {
        const NSRect inset = Platform::NSInsetRect(rect, lineWidth / 2, lineWidth / 2);
        // Half the width in the units of the square, measured along x and taken for both axes.
        const float overlap = lineWidth / bounds().size.width;
        drawFrame(gl, MapRectGL(inset, bounds(), unitSquare), overlap, color, lineWidth);
    });
}

void OpenGLGraphicsContext::fillBezierPath(NSBezierPath& path, const NSColor& color) {
    drawShape([&](OpenGLCommands& gl) {
        drawOutlines(gl, outlinesInSquare(path, bounds()), Primitive::Polygon, color, path.lineWidth());
    });
}

void OpenGLGraphicsContext::strokeBezierPath(NSBezierPath& path, const NSColor& color) {
    drawShape([&](OpenGLCommands& gl) {
        drawOutlines(gl, outlinesInSquare(path, bounds()), Primitive::LineLoop, color, path.lineWidth());
    });
}

} // namespace Imaging
