#pragma once

// Internal: reports of OpenGL errors, for drawing code. Not installed.

namespace Imaging::Platform {
class OpenGLCommands;
}

namespace Imaging {

/// Asks for the error of the commands just issued and hands it to `ReportError`; drawing goes on.
void reportOpenGLError(Platform::OpenGLCommands& gl);

} // namespace Imaging
