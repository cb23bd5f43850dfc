// What native contexts of every kind have in common.

#include "Platform/OpenGL/Contexts/NativeContext.h"

namespace Imaging::Platform {

NativeContext::~NativeContext() = default;
ViewBacking::~ViewBacking() = default;

} // namespace Imaging::Platform
