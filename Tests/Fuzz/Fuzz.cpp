#include "Tests/Fuzz/Fuzz.h"

#include <cstdio>
#include <cstdlib>

namespace Fuzz {

namespace {

using Imaging::Platform::PictureHeader;

void require(bool condition, const char* what) {
    if (condition) return;
    std::fprintf(stderr, "%s\n", what);
    std::abort();
}

bool areEqual(const PictureHeader& a, const PictureHeader& b) {
    return a.formatName == b.formatName && a.width == b.width && a.height == b.height &&
           a.bitsPerSample == b.bitsPerSample && a.color == b.color && a.hasAlpha == b.hasAlpha &&
           a.orientation == b.orientation && a.resolutionX == b.resolutionX &&
           a.resolutionY == b.resolutionY && a.colorProfile == b.colorProfile;
}

/// Reads every byte, so that a sanitizer sees what was never written.
bool hasColorsWithinAlpha(const Imaging::Platform::DecodedPicture& picture) {
    const PictureHeader& header = picture.header;
    const auto samples = static_cast<std::size_t>(header.samplesPerPixel());
    std::uint64_t sum = 0;
    for (std::size_t i = 0; i < picture.pixels.size(); ++i) sum += picture.pixels.data()[i];
    if (!header.hasAlpha || header.bitsPerSample != 8 || header.formatName == "TIFF" ||
        header.formatName == "JPEG XL" || header.formatName == "JPEG 2000" || header.formatName == "HEIF") {
        return sum != UINT64_MAX; // files may hold premultiplied samples, which are theirs to get right
    }
    for (std::size_t i = 0; i + samples <= picture.pixels.size(); i += samples) {
        for (std::size_t s = 0; s + 1 < samples; ++s) {
            if (picture.pixels.data()[i + s] > picture.pixels.data()[i + samples - 1]) return false;
        }
    }
    return true;
}

} // namespace

void decode(std::string_view formatName, Imaging::Platform::ByteView bytes) {
    constexpr Imaging::Platform::PictureLimits limits{1'000'000, 16'000'000};
    static const std::shared_ptr<const Imaging::Platform::Codec> codec =
        Imaging::Platform::codecForFormat(formatName);
    require(codec != nullptr, "this format was not built in");
    codec->recognises(bytes);
    try {
        const Imaging::Platform::DecodedPicture picture = codec->decode(bytes, limits);
        const PictureHeader& header = picture.header;
        require(picture.bytesPerRow == header.width * header.bytesPerPixel(), "the rows have another length");
        require(picture.pixels.size() == picture.bytesPerRow * header.height,
                "the pixels do not fill the rows");
        require(std::uint64_t{header.width} * header.height <= limits.maximumPixels,
                "the limits were not kept");
        require(hasColorsWithinAlpha(picture), "a colour exceeds its alpha");
        require(areEqual(codec->readHeader(bytes), header), "the header alone says something else");
    } catch (const Imaging::Platform::CodecException& exception) {
        require(!exception.reason().empty(), "the refusal has no words");
    }
}

} // namespace Fuzz
