// One way to ask OpenGL what went wrong, so that every group of commands ends alike.

#include "Imaging/OpenGL/OpenGLErrors.h"

#include "Imaging/GraphicsUtilities.h"
#include "Platform/OpenGL/OpenGLCommands.h"

namespace Imaging {

void reportOpenGLError(Platform::OpenGLCommands& gl) {
    ReportError(static_cast<unsigned>(gl.getError()), __FILE__, __LINE__);
}

} // namespace Imaging
