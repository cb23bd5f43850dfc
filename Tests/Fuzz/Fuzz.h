#pragma once

#include "Platform/Codecs/Codec.h"
#include "Platform/Codecs/CodecRegistry.h"

#include <cstddef>
#include <cstdint>
#include <string_view>

/// What the fuzz targets share. Each target defines LLVMFuzzerTestOneInput, which a fuzzer calls with bytes
/// of its own making, or the replaying program with those of files.
namespace Fuzz {

/// Decodes the bytes with the codec of a format, under limits that are small enough for many runs a second.
/// Ends the program when the codec does anything but give a whole picture or throw a CodecException, or when
/// the header that was read alone is not that of the picture.
void decode(std::string_view formatName, Imaging::Platform::ByteView bytes);

} // namespace Fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);
