#pragma once

#include "Platform/Codecs/Codec.h"

#include <csetjmp>
#include <type_traits>

/// What the codecs of this folder share. Not for use outside it.
namespace Platform {

/// The codecs that are there from the start, one maker per file.
std::shared_ptr<const Codec> makeJpegCodec();
std::shared_ptr<const Codec> makePngCodec();
std::shared_ptr<const Codec> makeTiffCodec();

/// Buffers that a library needs beside the decoded picture count towards PictureLimits::maximumBytes from
/// this size on; smaller ones are not worth refusing a picture for.
inline constexpr std::uint64_t uncountedWorkingBytes = 16ULL << 20;

/// A picture with room for its pixels, all 0: some libraries take damaged data for whole and leave pixels
/// out, which must not show what was in memory before. `workingBytes` estimates the memory that the format's
/// library takes while it decodes. Throws a CodecException, before anything is allocated, as
/// checkPictureLimits does and when both together are beyond the limit of bytes, and when the memory cannot
/// be had.
DecodedPicture allocatePicture(PictureHeader header, const PictureLimits& limits, std::uint64_t workingBytes);

/// Memory for a decoder's intermediate rows, all 0. Throws a CodecException (TooLarge) when it
/// cannot be had.
PixelBuffer allocateWorkingBytes(std::uint64_t size);

/// The bytes when they are an ICC profile for such samples: RGB profiles fit RGB, gray ones gray. Otherwise
/// nothing, because a profile for other samples (a CMYK one, say, after conversion to RGB) describes colours
/// that the picture does not have.
NSData matchingProfile(ByteView profile, SampleColor color);

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

} // namespace Platform
