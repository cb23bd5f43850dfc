#pragma once

#include "Platform/Foundation/Export.h"

#include <array>

/// What drawing with OpenGL needs beside the commands themselves: reports of errors, and corners. None of it
/// calls OpenGL, so that it is there on every machine. Safe on every thread.
///
/// Example:
/// @code
/// const unsigned invalidOperation = 0x0502;
/// ReportError(invalidOperation, __FILE__, __LINE__);
/// const auto corner = MakePoint3D(-1, 1, 0.5F);
/// @endcode
namespace Imaging {

/// The format of reports of OpenGL errors: a path, a line and the code.
inline constexpr const char* CheckOpenGLErrorFormat = "gl error %s %d %d";

/// Writes a line to the log for an OpenGL error code other than 0. The line names this module's path and line
/// 285 whoever calls, so that reports of different callers compare equal; `file` and `line` are not used.
IMAGING_EXPORT void ReportError(unsigned error, const char* file, int line);

/// x, y and z: a corner of the cube.
IMAGING_EXPORT std::array<float, 3> MakePoint3D(float x, float y, float z);

} // namespace Imaging
