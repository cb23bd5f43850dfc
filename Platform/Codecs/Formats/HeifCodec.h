#pragma once

// Internal: one picture format. Not installed.

#include "Platform/Codecs/Codec.h"

namespace Imaging::Platform {

/// The codec of HEIC and AVIF, which are only read. Only there where Imaging is built with libheif.
std::shared_ptr<const Codec> makeHeifCodec();

} // namespace Imaging::Platform
