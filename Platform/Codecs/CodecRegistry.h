#pragma once

#include "Platform/Codecs/Codec.h"

/// Which picture formats there are, and the decoding of bytes whose format is not known beforehand.
///
/// Example:
/// @code
/// std::shared_ptr<const Codec> png = codecForFormat("PNG");
/// const std::vector<std::uint8_t> bytes = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1a, '\n'};
/// bool isPNG = codecForData(bytes) == png;
/// if (isPNG) registerCodec(png);
/// @endcode
namespace Imaging::Platform {

/// The codec that recognises the bytes, the one for a format name, or null. Safe on every thread.
IMAGING_EXPORT std::shared_ptr<const Codec> codecForData(ByteView bytes);
IMAGING_EXPORT std::shared_ptr<const Codec> codecForFormat(std::string_view formatName);

/// Adds a format, or replaces the codec of the same format name. The last one added is asked first.
IMAGING_EXPORT void registerCodec(std::shared_ptr<const Codec> codec);

/// Decodes bytes of whatever known format within the process's limits. Throws a CodecException, with
/// NSErrorCode::UnsupportedFormat when no codec recognises them.
IMAGING_EXPORT DecodedPicture decodePicture(ByteView bytes);
IMAGING_EXPORT PictureHeader readPictureHeader(ByteView bytes);

} // namespace Imaging::Platform
