#pragma once

#include "Platform/Codecs/Codec.h"
#include "Platform/Foundation/Data.h"
#include "Platform/Foundation/Export.h"
#include "Show/Show.h"

#include <string>

namespace Imaging {

/// Carries out a picture's steps without drawing anything, to know beforehand that they can be: on an outline
/// of its size and layout where its header says enough, and otherwise, where only pixels can tell, on the
/// picture itself, whose encoded bytes or archived graph is given. Throws what `framedPicture` would throw
/// for the steps; `advice` is the picture's of FramingAdvice.
///
/// Memory: nothing to speak of for an outline, otherwise the decoded picture and what the steps compute.
/// Steps are carried out on the calling thread, and must not look at the pixels of an outline's node.
///
/// Example:
/// @code
/// ShowPicture picture;
/// picture.steps = {[](FramedNode& node) { node.crop(0, 0, 10, 10); }};
/// PictureHeader header;
/// header.width = header.height = 20;
/// const bool isKnown = checkStepsOnOutline(picture, false, header); // true, and nothing was thrown
/// static_cast<void>(isKnown);
/// @endcode
IMAGING_EXPORT void checkSteps(const ShowPicture& picture, bool asStored, const Platform::NSData& bytes,
                               const std::string& advice = "scale or crop it to a smaller size");

/// The part of it that needs no pixels: false where these would be needed.
IMAGING_EXPORT bool checkStepsOnOutline(const ShowPicture& picture, bool asStored,
                                        const Platform::PictureHeader& header,
                                        const std::string& advice = "scale or crop it to a smaller size");

} // namespace Imaging
