// The records act twice: as matrices on what is drawn, and as transforms on the clips, which are brought back
// into the picture's own square by the inverse.

#include "Imaging/OpenGL/TexturePlacement.h"

#include "Imaging/OpenGL/OpenGLErrors.h"
#include "Platform/OpenGL/OpenGLCommands.h"

#include <utility>

namespace Imaging {

using Platform::OpenGLCommands;

namespace {

bool hasArea(NSSize size) { return size.width > 0 && size.height > 0; }

OpenGLCommands::Matrix matrixOf(const NSAffineTransform& transform) {
    const auto t = transform.transformStruct();
    return {t.m11, t.m21, 0, 0, t.m12, t.m22, 0, 0, 0, 0, 1, 0, t.tX, -t.tY, 0, 1};
}

} // namespace

TexturePlacement::TexturePlacement(NSSize imageSize, TransformAndClipList records, NSRect bounds,
                                   NSRect imageClip)
    : m_image_size(imageSize), m_records(std::move(records)), m_bounds(bounds) {
    clipToRecords(imageClip);
    m_is_drawable = hasArea(imageSize) && hasArea(bounds.size) && m_transform.isInvertible();
    if (!m_is_drawable) return;
    NSAffineTransform toPicture = m_transform;
    toPicture.invert();
    NSAffineTransform toSquare;
    toSquare.scaleXBy(1, -1);
    toSquare.translateXBy(-1, -1);
    toSquare.scaleXBy(2 / imageSize.width, 2 / imageSize.height);
    toSquare.prependTransform(toPicture);
    TransformPolygon(&m_clip, toSquare);
}

void TexturePlacement::clipToRecords(NSRect imageClip) {
    AddRectToPolygon(&m_clip, m_bounds);
    if (!Platform::NSEqualRects(imageClip, Platform::NSZeroRect)) {
        ClipPolygonToTransformedRect(&m_clip, imageClip, NSAffineTransform());
    }
    for (const TransformAndClipRect* record : m_records.records()) {
        m_transform.prependTransform(record->transform());
        if (record->hasClipRect()) ClipPolygonToTransformedRect(&m_clip, record->clipRect(), m_transform);
    }
}

void TexturePlacement::multiplyMatrix(OpenGLCommands& gl, bool isInverted) const {
    gl.ortho(-1, 1, 1, -1, -1, 1);
    reportOpenGLError(gl);
    gl.translatef(-1, isInverted ? -1.0F : 1.0F, 0);
    reportOpenGLError(gl);
    gl.scalef(2 / m_bounds.size.width, (isInverted ? -2.0F : 2.0F) / m_bounds.size.height, 1);
    reportOpenGLError(gl);
    for (const TransformAndClipRect* record : m_records.records()) {
        gl.multMatrixf(matrixOf(record->transform()));
        reportOpenGLError(gl);
    }
    gl.scalef(m_image_size.width / 2, m_image_size.height / 2, 1);
    reportOpenGLError(gl);
    gl.translatef(1, -1, 0);
    reportOpenGLError(gl);
}

} // namespace Imaging
