#pragma once

// Internal: one picture format. Not installed.

#include "Platform/Codecs/Codec.h"

namespace Imaging::Platform {

/// The codec of WebP, which is only read.
std::shared_ptr<const Codec> makeWebpCodec();

} // namespace Imaging::Platform
