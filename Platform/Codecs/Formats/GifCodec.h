#pragma once

// Internal: one picture format. Not installed.

#include "Platform/Codecs/Codec.h"

namespace Imaging::Platform {

/// The codec of GIF.
std::shared_ptr<const Codec> makeGifCodec();

} // namespace Imaging::Platform
