#pragma once

#include "Imaging/Image.h"
#include "Show/Show.h"

#include <memory>

namespace Imaging::Tool {

/// A picture of a film as its frames show it: loaded, the way up that it declares unless the film shows
/// pictures as stored, with its steps carried out, fitted into a frame with the film's background behind it.
/// The result is an opaque picture node of 8-bit RGB with the bounds {0, 0, width, height} of a frame;
/// nothing of the file or of what was decoded is kept. Throws a Failure that names the picture.
///
/// Memory: while it works, the decoded picture and about 12 bytes a pixel of the frame, afterwards 3 bytes a
/// pixel of the frame, and 4 more once it was drawn.
///
/// May be called on any thread, on several at a time for different pictures.
std::shared_ptr<Imaging::IMGImage> framePicture(const ShowPicture& picture, const Show& show);

} // namespace Imaging::Tool
