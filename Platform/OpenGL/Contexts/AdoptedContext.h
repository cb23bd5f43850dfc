#pragma once

// Internal: contexts that the application has made. Not installed.

#include "Platform/OpenGL/ApplicationContext.h"
#include "Platform/OpenGL/Contexts/NativeContext.h"

#include <memory>

namespace Imaging::Platform {

/// For views on the context that the application makes current before it has us draw.
std::shared_ptr<ViewBacking> adoptedBacking(NSAdoptedContext adopted);

} // namespace Imaging::Platform
