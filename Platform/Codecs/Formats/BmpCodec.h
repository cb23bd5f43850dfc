#pragma once

// Internal: one picture format. Not installed.

#include "Platform/Codecs/Codec.h"

namespace Imaging::Platform {

/// The codec of BMP.
std::shared_ptr<const Codec> makeBmpCodec();

} // namespace Imaging::Platform
