// The list of formats. Codecs do not register themselves, since a linker leaves out what nobody names.

#include "Platform/Codecs/Formats/BuiltInCodecs.h"

#include "Platform/Codecs/Formats/BmpCodec.h"
#include "Platform/Codecs/Formats/GifCodec.h"
#include "Platform/Codecs/Formats/HeifCodec.h"
#include "Platform/Codecs/Formats/Jpeg2000Codec.h"
#include "Platform/Codecs/Formats/JpegCodec.h"
#include "Platform/Codecs/Formats/JxlCodec.h"
#include "Platform/Codecs/Formats/PngCodec.h"
#include "Platform/Codecs/Formats/TiffCodec.h"
#include "Platform/Codecs/Formats/WebpCodec.h"

namespace Imaging::Platform {

std::vector<std::shared_ptr<const Codec>> builtInCodecs() {
    return {
        makeJpegCodec(),     makePngCodec(), makeTiffCodec(), makeGifCodec(), makeBmpCodec(), makeWebpCodec(),
#ifdef IMAGING_WITH_HEIF
        makeHeifCodec(),
#endif
#ifdef IMAGING_WITH_JXL
        makeJxlCodec(),
#endif
        makeJpeg2000Codec(),
    };
}

} // namespace Imaging::Platform
