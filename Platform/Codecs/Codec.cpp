// What all picture formats have in common: their exception, and the check of a header before any memory is
// allocated for it.

#include "Platform/Codecs/Codec.h"

namespace Imaging::Platform {

CodecException::CodecException(NSErrorCode code, std::string_view reason)
    : NSException(NSGenericException, reason), m_code(code) {}

Codec::~Codec() = default;

void Codec::check(ByteView bytes, const PictureLimits& limits) const { decode(bytes, limits); }

std::size_t checkPictureLimits(const PictureHeader& header, const PictureLimits& limits) {
    const std::string size = std::to_string(header.width) + " x " + std::to_string(header.height);
    if (header.width == 0 || header.height == 0) {
        throw CodecException(NSErrorCode::CorruptData,
                             "the picture is " + size + " pixels, which is nothing");
    }
    const std::uint64_t pixels = std::uint64_t{header.width} * header.height; // 32 by 32 bits always fit
    if (pixels > limits.maximumPixels) {
        throw CodecException(NSErrorCode::TooLarge, "the picture is " + size +
                                                        " pixels, more than the limit of " +
                                                        std::to_string(limits.maximumPixels) + " pixels");
    }
    const std::optional<std::uint64_t> bytes = checkedProduct({pixels, header.bytesPerPixel()});
    if (!bytes || *bytes > limits.maximumBytes) {
        throw CodecException(NSErrorCode::TooLarge, "the picture of " + size +
                                                        " pixels takes more memory than the limit of " +
                                                        std::to_string(limits.maximumBytes) + " bytes");
    }
    return header.width * header.bytesPerPixel();
}

} // namespace Imaging::Platform
