#pragma once

// Internal: one picture format. Not installed.

#include "Platform/Codecs/Codec.h"

namespace Imaging::Platform {

/// The codec of JPEG XL, which is only read. Only there where Imaging is built with libjxl.
std::shared_ptr<const Codec> makeJxlCodec();

} // namespace Imaging::Platform
