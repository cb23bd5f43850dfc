#pragma once

#include "Platform/Codecs/Codec.h"

#include <csetjmp>
#include <type_traits>

/// What the codecs of this folder share. Not for use outside it.
namespace Imaging::Platform {

/// Buffers that a library needs beside the decoded picture count towards PictureLimits::maximumBytes from
/// this size on; smaller ones are not worth refusing a picture for.
inline constexpr std::uint64_t uncountedWorkingBytes = 16ULL << 20;

/// Throws as checkPictureLimits does, and where the picture and `workingBytes`, what the format's library
/// takes beside it, are together beyond the limit of bytes. Otherwise returns the bytes of one row.
std::size_t checkLimitsWithWorkingBytes(const PictureHeader& header, const PictureLimits& limits,
                                        std::uint64_t workingBytes);

/// A picture with room for its pixels, all 0: some libraries take damaged data for whole and leave pixels
/// out, which must not show what was in memory before. `workingBytes` estimates the memory that the format's
/// library takes while it decodes. Throws a CodecException, before anything is allocated, as
/// checkPictureLimits does and when both together are beyond the limit of bytes, and when the memory cannot
/// be had.
DecodedPicture allocatePicture(PictureHeader header, const PictureLimits& limits, std::uint64_t workingBytes);

/// The same with pixels of any value, for decoders that write every byte or throw.
DecodedPicture allocateUnwrittenPicture(PictureHeader header, const PictureLimits& limits,
                                        std::uint64_t workingBytes);

/// Memory for a decoder's intermediate rows, all 0. Throws a CodecException (TooLarge) when it
/// cannot be had.
PixelBuffer allocateWorkingBytes(std::uint64_t size);

/// For formats that count pixels by the metre.
inline constexpr double metresPerInch = 0.0254;

/// The unsigned number of `count` bytes (at most 8) at an offset. The bytes must be there.
std::uint64_t littleEndian(ByteView bytes, std::size_t offset, std::size_t count);
std::uint64_t bigEndian(ByteView bytes, std::size_t offset, std::size_t count);

/// Exceptions must not pass through C libraries: false when there is no memory for more bytes.
bool appendBytes(NSData& to, const std::uint8_t* from, std::size_t count) noexcept;

/// For the encoders of formats that are only read. Throws a CodecException (UnsupportedFormat).
[[noreturn]] void failAsReadOnly(std::string_view formatName);

/// The refusal of data that ends too early, in the same words for every format. Throws (CorruptData).
[[noreturn]] void failForShortData(std::string_view formatName);

/// The refusal of damaged data; `why` is a library's message or words of ours. Throws (CorruptData).
[[noreturn]] void failForDamage(std::string_view formatName, std::string_view why);

/// Checks what every encoder takes for granted. Throws a CodecException (CorruptData) for a picture without
/// pixels, and an NSException (NSInvalidArgumentException) for a header or a row distance that makes no
/// sense.
void checkEncodable(const PictureView& picture);

/// A library's message as part of ours: control characters become spaces, and a full stop at the end goes.
std::string oneLine(std::string_view message);

/// Runs steps of a C library that reports errors by longjmp to `failed`, and says whether they all ran. The
/// steps and everything they call leave no object behind that would have to be destroyed.
template<class Steps>
bool ranToTheEnd(std::jmp_buf& failed, Steps steps);

namespace Detail {

/// Keeps the steps' variables out of the frame that calls setjmp, where longjmp would make them
/// indeterminate.
template<class Steps>
[[gnu::noinline]] void call(Steps& steps) {
    steps();
}

} // namespace Detail

template<class Steps>
bool ranToTheEnd(std::jmp_buf& failed, Steps steps) {
    static_assert(std::is_trivially_destructible_v<Steps>);
    if (setjmp(failed) != 0) return false;
    Detail::call(steps);
    return true;
}

} // namespace Imaging::Platform
