#pragma once

#include "Imaging/Image.h"
#include "Platform/Foundation/Export.h"
#include "Show/Show.h"

#include <memory>

namespace Imaging {

/// A picture of a show as its frames show it: loaded, the way up that it declares unless the show is of
/// pictures as stored, with its steps carried out, fitted into a frame with the show's background behind it.
/// The result is an opaque picture node of 8-bit RGB with the bounds {0, 0, width, height} of a frame;
/// nothing of the file or of what was decoded is kept.
///
/// Throws an NSException that says what is wrong without the picture's name, and what its node function and
/// steps throw. `steps` begin with a FramedNode that goes by the picture's name.
///
/// Memory: while it works, the decoded picture and about 12 bytes a pixel of the frame, afterwards 3 bytes a
/// pixel of the frame, and 4 more once it was drawn.
///
/// May be called on any thread, on several at a time for different pictures.
///
/// Example:
/// @code
/// Show show;
/// show.size = {320, 240};
/// ShowPicture picture;
/// picture.node = [] { return imagingImage(std::make_shared<NSImage>(NSMakeSize(8, 6))); };
/// const auto framed = framedPicture(picture, show);
/// @endcode
IMAGING_EXPORT std::shared_ptr<IMGImage> framedPicture(const ShowPicture& picture, const Show& show);

/// The same with what people are told to do about pictures that are too large to be drawn on the way, and
/// about frames that are.
struct FramingAdvice {
    std::string picture = "scale or crop it to a smaller size";
    std::string frame = "make the frames smaller";
};
IMAGING_EXPORT std::shared_ptr<IMGImage> framedPicture(const ShowPicture& picture, const Show& show,
                                                       const FramingAdvice& advice);

} // namespace Imaging
