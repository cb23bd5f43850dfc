#include "Platform/Codecs/CodecSupport.h"

#include <algorithm>
#include <limits>
#include <new>

namespace Platform {

namespace {

// Offsets of two fields in the header of an ICC profile (ICC.1:2010, 7.2).
constexpr std::size_t profileHeaderSize = 128;
constexpr std::size_t profileColorSpace = 16;
constexpr std::size_t profileSignature = 36;

bool hasFourLetters(ByteView bytes, std::size_t offset, std::string_view letters) {
    return std::equal(letters.begin(), letters.end(), bytes.begin() + static_cast<std::ptrdiff_t>(offset));
}

[[noreturn]] void failForMemory(std::uint64_t bytes) {
    throw CodecException(NSErrorCode::TooLarge,
                         "there is not enough memory for a picture of " + std::to_string(bytes) + " bytes");
}

} // namespace

PixelBuffer allocateWorkingBytes(std::uint64_t size) {
    if (size > std::numeric_limits<std::size_t>::max()) failForMemory(size);
    try {
        return PixelBuffer::zeroed(static_cast<std::size_t>(size));
    } catch (const std::bad_alloc&) {
        failForMemory(size);
    }
}

DecodedPicture allocatePicture(PictureHeader header, const PictureLimits& limits,
                               std::uint64_t workingBytes) {
    const std::size_t bytesPerRow = checkPictureLimits(header, limits);
    const std::uint64_t size = std::uint64_t{bytesPerRow} * header.height; // checked just now
    const bool counts = workingBytes > uncountedWorkingBytes;
    if (counts && workingBytes > limits.maximumBytes - size) {
        // Either sum may be absurd, so the two are named one by one instead of added up.
        throw CodecException(NSErrorCode::TooLarge, "decoding the picture takes " +
                                                        std::to_string(workingBytes) + " bytes beside its " +
                                                        std::to_string(size) + ", more than the limit of " +
                                                        std::to_string(limits.maximumBytes) + " bytes");
    }
    DecodedPicture picture;
    picture.pixels = allocateWorkingBytes(size);
    picture.bytesPerRow = bytesPerRow;
    picture.header = std::move(header);
    return picture;
}

NSData matchingProfile(ByteView profile, SampleColor color) {
    if (profile.size() < profileHeaderSize || !hasFourLetters(profile, profileSignature, "acsp")) return {};
    const std::string_view space = color == SampleColor::RGB ? "RGB " : "GRAY";
    if (!hasFourLetters(profile, profileColorSpace, space)) return {};
    return {profile.begin(), profile.end()};
}

void checkEncodable(const PictureView& picture) {
    const PictureHeader& header = picture.header;
    if (header.bitsPerSample != 8 && header.bitsPerSample != 16) {
        throw NSException(NSInvalidArgumentException, "pictures have 8 or 16 bits per sample");
    }
    constexpr std::uint64_t anything = std::numeric_limits<std::uint64_t>::max();
    const std::size_t rowBytes = checkPictureLimits(header, {anything, anything});
    if (picture.pixels == nullptr || (header.height > 1 && picture.bytesPerRow < rowBytes)) {
        throw NSException(NSInvalidArgumentException, "the rows of a picture must not overlap");
    }
}

std::string oneLine(std::string_view message) {
    std::string line(message);
    std::replace_if(
        line.begin(), line.end(), [](unsigned char c) { return c < 0x20 || c == 0x7f; }, ' ');
    while (!line.empty() && (line.back() == '.' || line.back() == ' ')) line.pop_back();
    return line;
}

} // namespace Platform
