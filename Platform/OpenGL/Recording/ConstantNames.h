#pragma once

// Internal: the enumerants in OpenGL's own words, for records and messages. Not installed.

#include "Platform/OpenGL/OpenGLConstants.h"

#include <string>

namespace Imaging::Platform::OpenGL {

/// "GL_BLEND" and the like; groups of bits joined with " | " from the lowest up. A value that has no word
/// here is given in hexadecimal.
std::string nameOf(Primitive value);
std::string nameOf(Capability value);
std::string nameOf(TextureTarget value);
std::string nameOf(MatrixMode value);
std::string nameOf(AttribBits value);
std::string nameOf(ClearBits value);
std::string nameOf(BlendFactor value);
std::string nameOf(CullFaceMode value);
std::string nameOf(HintTarget value);
std::string nameOf(HintMode value);
std::string nameOf(TexEnvMode value);
std::string nameOf(TexParameter value);
std::string nameOf(TexParameterValue value);
std::string nameOf(PixelStore value);
std::string nameOf(PixelFormat value);
std::string nameOf(PixelType value);
std::string nameOf(StringName value);
std::string nameOf(Error value);

} // namespace Imaging::Platform::OpenGL
