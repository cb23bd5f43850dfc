// Asks a context once for its version, limits and extensions, and turns them into facts that callers ask
// for by name.

#include "Platform/OpenGL/Native/ContextFacts.h"

#include "Platform/Foundation/Exception.h"
#include "Platform/OpenGL/OpenGLException.h"

#include <epoxy/gl.h>

#include <array>

namespace Imaging::Platform {

namespace {

std::string stringOf(GLenum name) {
    const auto* text = reinterpret_cast<const char*>(glGetString(name));
    return text == nullptr ? std::string() : std::string(text);
}

int integerOf(GLenum name) {
    GLint value = 0;
    glGetIntegerv(name, &value);
    return value;
}

/// One string in contexts that have it; elsewhere put together from single names.
std::string extensionsOf(const OpenGLFacts& facts) {
    if (facts.majorVersion < 3) return stringOf(GL_EXTENSIONS);
    std::string all;
    const int count = integerOf(GL_NUM_EXTENSIONS);
    for (int i = 0; i < count; ++i) {
        const auto* name = reinterpret_cast<const char*>(glGetStringi(GL_EXTENSIONS, static_cast<GLuint>(i)));
        if (name != nullptr) all += (all.empty() ? "" : " ") + std::string(name);
    }
    return all;
}

OpenGLProfile profileOf(int version) {
    if (!epoxy_is_desktop_gl()) return OpenGLProfile::ES;
    if (version < 32) return OpenGLProfile::Compatibility;
    const bool isCore = (integerOf(GL_CONTEXT_PROFILE_MASK) & GL_CONTEXT_CORE_PROFILE_BIT) != 0;
    return isCore ? OpenGLProfile::Core : OpenGLProfile::Compatibility;
}

void findRectangleTextures(OpenGLFacts& facts, int version) {
    if (facts.profile == OpenGLProfile::ES) return;
    const char* const names[] = {"GL_EXT_texture_rectangle", "GL_ARB_texture_rectangle",
                                 "GL_NV_texture_rectangle"};
    facts.rectangleTextures = version >= 31;
    for (const char* name : names)
        facts.rectangleTextures = facts.rectangleTextures || facts.hasExtension(name);
    if (!facts.rectangleTextures) return;
    facts.maximumRectangleTextureSize = integerOf(GL_MAX_RECTANGLE_TEXTURE_SIZE);
    if (!facts.hasExtension(names[0]))
        facts.extensions += (facts.extensions.empty() ? "" : " ") + std::string(names[0]);
}

/// Fixed function alone smooths lines here: other contexts may refuse the width, or smoothing as a whole.
bool smoothsLines(OpenGLProfile profile) {
    if (profile != OpenGLProfile::Compatibility) return false;
    std::array<GLfloat, 2> widths{};
    glGetFloatv(GL_SMOOTH_LINE_WIDTH_RANGE, widths.data());
    return widths[1] > 1;
}

void refuseOldVersions(const OpenGLFacts& facts, int version) {
    const int needed = facts.profile == OpenGLProfile::ES ? 30 : 14;
    if (version >= needed) return;
    throw NSException(NSOpenGLException,
                      "the context speaks " + describe(facts) + " (" + facts.renderer +
                          "); OpenGL 1.4 or OpenGL ES 3.0 is needed, so install a newer driver");
}

} // namespace

OpenGLFacts factsOfCurrentContext() {
    const int version = epoxy_gl_version();
    OpenGLFacts facts;
    facts.majorVersion = version / 10;
    facts.minorVersion = version % 10;
    facts.profile = profileOf(version);
    facts.vendor = stringOf(GL_VENDOR);
    facts.renderer = stringOf(GL_RENDERER);
    facts.version = stringOf(GL_VERSION);
    refuseOldVersions(facts, version);
    facts.extensions = extensionsOf(facts);
    facts.maximumTextureSize = integerOf(GL_MAX_TEXTURE_SIZE);
    facts.bgraUploads = facts.profile != OpenGLProfile::ES;
    facts.clientStorage = facts.hasExtension("GL_APPLE_client_storage");
    facts.anyTextureSize = version >= 20 || facts.hasExtension("GL_ARB_texture_non_power_of_two");
    facts.smoothLines = smoothsLines(facts.profile);
    findRectangleTextures(facts, version);
    while (glGetError() != GL_NO_ERROR) {
        // A question that an old driver does not know leaves an error that is nobody's.
    }
    return facts;
}

} // namespace Imaging::Platform
