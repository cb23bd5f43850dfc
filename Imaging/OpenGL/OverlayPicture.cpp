// Operations and fractions act in the 2-D drawing; the picture itself always lies over the frame at full
// strength.

#include "Imaging/OpenGL/OverlayPicture.h"

#include "Imaging/CachedImage.h"
#include "Imaging/OpenGL/StateScopes.h"
#include "Imaging/OpenGLTexture.h"
#include "Platform/Graphics/GraphicsContext.h"

namespace Imaging {

using Platform::NSSize;
using Platform::OpenGL::AttribBits;

std::shared_ptr<NSImage> overlayPicture(NSSize size, const std::function<void()>& draw) {
    if (!(size.width >= 1 && size.height >= 1)) return nullptr;
    const Platform::NSGraphicsStateScope state;
    auto picture = std::make_shared<NSImage>(size);
    const Platform::NSImageFocus focus(*picture); // a new picture is transparent all over
    draw();
    return picture;
}

void drawOverlay(Platform::OpenGLCommands& gl, const std::shared_ptr<NSImage>& picture) {
    const NSSize size = picture->size();
    OpenGLTexture texture(imagingImage(picture), static_cast<int>(size.width), static_cast<int>(size.height));
    const AttribScope attributes(gl, AttribBits::Current | AttribBits::ColorBuffer | AttribBits::Texture);
    gl.enable(Platform::OpenGL::Capability::Blend);
    reportOpenGLError(gl);
    gl.blendFunc(Platform::OpenGL::BlendFactor::One, Platform::OpenGL::BlendFactor::OneMinusSrcAlpha);
    reportOpenGLError(gl);
    gl.texEnvi(Platform::OpenGL::TexEnvMode::Modulate);
    reportOpenGLError(gl);
    const ModelViewScope matrix(gl);
    gl.ortho(-1, 1, 1, -1, -1, 1); // turned over: the first row of tiles is the picture's top
    reportOpenGLError(gl);
    texture.drawImage();
}

} // namespace Imaging
