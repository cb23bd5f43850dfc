#pragma once

#include "Platform/Foundation/Export.h"

#include <string>

namespace Imaging::Platform {

/// Which OpenGL a context speaks.
enum class OpenGLProfile {
    Compatibility, ///< 1.4 and later, with fixed function
    Core,          ///< 3.2 and later, shaders only
    ES,            ///< OpenGL ES 3.0 and later
};

/// What a context can do, found out once when it is first made current. Callers ask these instead of versions
/// and names of extensions. A record never changes once its context gave it out.
struct IMAGING_EXPORT OpenGLFacts {
    OpenGLProfile profile = OpenGLProfile::Compatibility;
    int majorVersion = 0;
    int minorVersion = 0;

    /// TextureTarget::Rectangle exists, under whatever name the context has it.
    bool rectangleTextures = false;
    /// The commands and enumerants that end in Apple exist; otherwise nobody issues them.
    bool clientStorage = false;
    /// The context reads PixelFormat::Bgra itself. Otherwise uploads still take it, and pay for putting the
    /// samples in order on the way.
    bool bgraUploads = false;
    /// The context smooths lines itself. Otherwise smoothed lines are drawn as quadrilaterals with soft
    /// edges.
    bool smoothLines = false;
    /// Textures of PixelFormat::Rgba may have any size, not only powers of two.
    bool anyTextureSize = false;

    int maximumTextureSize = 0;          ///< pixels a side
    int maximumRectangleTextureSize = 0; ///< pixels a side; 0 without rectangle textures

    std::string vendor;
    std::string renderer;
    std::string version;
    /// The names of the extensions with one space between them, also where the context gives single names
    /// only. It says GL_EXT_texture_rectangle wherever there are rectangle textures.
    std::string extensions;

    /// Whether `extensions` holds exactly this name. False for an empty one.
    bool hasExtension(const std::string& name) const;
};

/// "OpenGL 3.3 core", for messages.
IMAGING_EXPORT std::string describe(const OpenGLFacts& facts);

} // namespace Imaging::Platform
