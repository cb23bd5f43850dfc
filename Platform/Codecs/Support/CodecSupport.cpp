// The steps that codecs have in common: room for pixels within the limits, refusals in the same words for
// every format, and numbers out of bytes.

#include "Platform/Codecs/Support/CodecSupport.h"

#include <algorithm>
#include <limits>
#include <new>

namespace Imaging::Platform {

namespace {

[[noreturn]] void failForMemory(std::uint64_t bytes) {
    throw CodecException(NSErrorCode::TooLarge,
                         "there is not enough memory for a picture of " + std::to_string(bytes) + " bytes");
}

/// Memory that cannot be had is a picture that is too large, not the end of the program.
template<class Allocate>
PixelBuffer allocated(std::uint64_t size, Allocate allocate) {
    if (size > std::numeric_limits<std::size_t>::max()) failForMemory(size);
    try {
        return allocate(static_cast<std::size_t>(size));
    } catch (const std::bad_alloc&) {
        failForMemory(size);
    }
}

/// Everything but the pixels.
DecodedPicture checkedPicture(PictureHeader header, const PictureLimits& limits, std::uint64_t workingBytes) {
    DecodedPicture picture;
    picture.bytesPerRow = checkLimitsWithWorkingBytes(header, limits, workingBytes);
    picture.header = std::move(header);
    return picture;
}

} // namespace

std::size_t checkLimitsWithWorkingBytes(const PictureHeader& header, const PictureLimits& limits,
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
    return bytesPerRow;
}

PixelBuffer allocateWorkingBytes(std::uint64_t size) { return allocated(size, PixelBuffer::zeroed); }

DecodedPicture allocatePicture(PictureHeader header, const PictureLimits& limits,
                               std::uint64_t workingBytes) {
    DecodedPicture picture = checkedPicture(std::move(header), limits, workingBytes);
    picture.pixels =
        allocated(std::uint64_t{picture.bytesPerRow} * picture.header.height, PixelBuffer::zeroed);
    return picture;
}

DecodedPicture allocateUnwrittenPicture(PictureHeader header, const PictureLimits& limits,
                                        std::uint64_t workingBytes) {
    DecodedPicture picture = checkedPicture(std::move(header), limits, workingBytes);
    picture.pixels =
        allocated(std::uint64_t{picture.bytesPerRow} * picture.header.height, PixelBuffer::uninitialised);
    return picture;
}

std::uint64_t littleEndian(ByteView bytes, std::size_t offset, std::size_t count) {
    std::uint64_t value = 0;
    for (std::size_t i = count; i > 0; --i) value = value << 8 | bytes[offset + i - 1];
    return value;
}

std::uint64_t bigEndian(ByteView bytes, std::size_t offset, std::size_t count) {
    std::uint64_t value = 0;
    for (std::size_t i = 0; i < count; ++i) value = value << 8 | bytes[offset + i];
    return value;
}

// Called by C libraries, which exceptions must not pass through.
bool appendBytes(NSData& to, const std::uint8_t* from, std::size_t count) noexcept {
    try {
        to.insert(to.end(), from, from + count);
        return true;
    } catch (const std::exception&) {
        return false;
    }
}

void failAsReadOnly(std::string_view formatName) {
    throw CodecException(NSErrorCode::UnsupportedFormat,
                         std::string(formatName) +
                             " files are only read here; choose a format that is written");
}

void failForShortData(std::string_view formatName) {
    throw CodecException(NSErrorCode::CorruptData,
                         "the " + std::string(formatName) +
                             " data ends before the picture is complete; the file may be cut short");
}

void failForDamage(std::string_view formatName, std::string_view why) {
    throw CodecException(NSErrorCode::CorruptData,
                         "the " + std::string(formatName) + " data is damaged (" + oneLine(why) + ")");
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

} // namespace Imaging::Platform
