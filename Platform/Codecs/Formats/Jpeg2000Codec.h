#pragma once

// Internal: one picture format. Not installed.

#include "Platform/Codecs/Codec.h"

namespace Imaging::Platform {

/// The codec of JPEG 2000.
std::shared_ptr<const Codec> makeJpeg2000Codec();

} // namespace Imaging::Platform
