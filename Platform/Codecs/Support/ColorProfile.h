#pragma once

#include "Platform/Codecs/Codec.h"

/// The ICC profiles of pictures: which are believed when a picture is read, and which are written.
namespace Imaging::Platform {

/// The bytes when they are an ICC profile for such samples that colours can be converted by: RGB profiles fit
/// RGB, gray ones gray. Otherwise nothing, because a profile for other samples (a CMYK one, say, after
/// conversion to RGB) describes colours that the picture does not have.
NSData matchingProfile(ByteView profile, SampleColor color);

/// Whether lcms2 makes a conversion to sRGB of the profile, without taking much more memory than it has
/// bytes.
bool convertsColors(ByteView profile, SampleColor color);

/// sRGB, or gray with the curve of sRGB; always the same bytes. Safe on every thread.
const NSData& standardProfile(SampleColor color);

/// What an encoder writes: the picture's own profile where it fits its samples, or else the standard one.
NSData profileToWrite(const PictureHeader& header);

/// The same for formats that have only RGB: a gray picture's own profile has no place there, and nothing is
/// said of its colours then.
NSData rgbProfileToWrite(const PictureHeader& header);

} // namespace Imaging::Platform
