#pragma once

// Internal: one picture format. Not installed.

#include "Platform/Codecs/Codec.h"

namespace Imaging::Platform {

/// The codec of JPEG.
std::shared_ptr<const Codec> makeJpegCodec();

} // namespace Imaging::Platform
