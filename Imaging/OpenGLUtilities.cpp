// Reports go to the log as one line, whose place is always the same: those who compare logs of several
// callers see the error's code and nothing that differs between them.

#include "Imaging/OpenGLUtilities.h"

#include "Imaging/Drawing/AssertionLines.h"
#include "Platform/Foundation/Log.h"

namespace Imaging {

void ReportError(unsigned error, const char*, int) {
    if (error == 0) return;
    Platform::NSLog(CheckOpenGLErrorFormat, "Imaging/GraphicsUtilities", AssertionLines::glError,
                    static_cast<int>(error));
}

std::array<float, 3> MakePoint3D(float x, float y, float z) { return {x, y, z}; }

} // namespace Imaging
