#pragma once

// Internal: one picture format. Not installed.

#include "Platform/Codecs/Codec.h"

namespace Imaging::Platform {

/// The codec of TIFF.
std::shared_ptr<const Codec> makeTiffCodec();

} // namespace Imaging::Platform
