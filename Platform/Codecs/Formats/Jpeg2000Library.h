#pragma once

#include "Platform/Foundation/Data.h"

#include <openjpeg.h>

namespace Imaging::Platform {

/// What openjpeg says while it works on one picture: the first message, and whether it was an error.
struct Jpeg2000Log {
    bool hasErrors = false;
    bool hasWarnings = false;
    char message[200] = {};
};

/// The file that openjpeg believes to work on: bytes to read or to write.
struct Jpeg2000Memory {
    ByteView input;
    NSData* output = nullptr; ///< null where it is read
    std::size_t position = 0;
};

struct DestroyJpeg2000Codec {
    void operator()(opj_codec_t* codec) const { opj_destroy_codec(codec); }
};
struct DestroyJpeg2000Image {
    void operator()(opj_image_t* image) const { opj_image_destroy(image); }
};
struct DestroyJpeg2000Stream {
    void operator()(opj_stream_t* stream) const { opj_stream_destroy(stream); }
};
using Jpeg2000Handle = std::unique_ptr<opj_codec_t, DestroyJpeg2000Codec>;
using Jpeg2000Image = std::unique_ptr<opj_image_t, DestroyJpeg2000Image>;
using Jpeg2000Stream = std::unique_ptr<opj_stream_t, DestroyJpeg2000Stream>;

/// A stream on memory, which must outlive it. Throws std::bad_alloc.
Jpeg2000Stream openJpeg2000Stream(Jpeg2000Memory& memory);

/// Collects the messages of a codec in the log, which must outlive it. Nothing is ever printed.
void listenTo(const Jpeg2000Handle& codec, Jpeg2000Log& log);

} // namespace Imaging::Platform
