#pragma once

// Internal: one picture format. Not installed.

#include "Platform/Codecs/Codec.h"

namespace Imaging::Platform {

/// The codec of PNG.
std::shared_ptr<const Codec> makePngCodec();

} // namespace Imaging::Platform
