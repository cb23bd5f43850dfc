#pragma once

#include "Platform/Foundation/Data.h"

namespace Imaging::Platform {

/// What a picture's EXIF record says of the way it is shown.
struct ExifFacts {
    int orientation = 1;    ///< 1 (upright) to 8
    double resolutionX = 0; ///< pixels per inch; 0 where it is not stated
    double resolutionY = 0;
};

/// Reads an EXIF record without the "Exif" prefix that JPEG puts before it: it begins with its byte order.
/// Only the first 64 KiB count, which is all that a JPEG could hold. What is missing, damaged or out of range
/// is as in a default ExifFacts; a damaged record is no reason to refuse a picture. Safe on every thread.
ExifFacts readExif(ByteView record);

/// Pixels per inch from a count per unit as EXIF and TIFF write it (2 inches, 3 centimetres), or 0 when that
/// is no resolution.
double pixelsPerInch(double value, int unit);

} // namespace Imaging::Platform
