#pragma once

#include "Platform/Foundation/Data.h"

#include <tiffio.h>

namespace Imaging::Platform {

/// What libtiff says while it works on one file. It never prints anything, and the handlers of the process
/// are left to the application.
struct TiffLog {
    bool hasErrors = false;
    bool hasDamage = false; ///< errors, and warnings about pixels that the library guessed
    char message[256] = {}; ///< the first of them, or else the first warning
};

/// The file that libtiff believes to work on: bytes to read or to write.
struct TiffMemory {
    ByteView input;
    NSData* output = nullptr; ///< null where it is read
    std::uint64_t position = 0;
};

struct CloseTiff {
    void operator()(TIFF* tiff) const { TIFFClose(tiff); }
};
using TiffHandle = std::unique_ptr<TIFF, CloseTiff>;

/// Opens memory and log, which must outlive the handle, in a mode of TIFFOpen; null when that fails.
/// `maximumAllocation` is the most that libtiff may allocate at once, in bytes.
TiffHandle openTiff(TiffMemory& memory, TiffLog& log, const char* mode, std::uint64_t maximumAllocation);

/// Throws a CodecException (CorruptData) when the bytes end before the first directory and the values of its
/// standard tags do, or when its values together claim several times the bytes that there are: libtiff keeps
/// a copy of each value, so overlapping ones could make it take thousands of times the file's size.
void checkTiffDirectory(ByteView bytes);

/// The words for a TIFF picture that ends too early. Throws.
[[noreturn]] void failForShortTiff();

} // namespace Imaging::Platform
