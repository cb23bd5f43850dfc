#pragma once

#include "Imaging/Image.h"
#include "Platform/Foundation/Data.h"
#include "Platform/Foundation/Export.h"

#include <memory>
#include <string>

/// Pictures and archived graphs from where people keep them. Thread-safe. Everything throws an NSException
/// (NSInvalidArgumentException) that says what is wrong, without the place, which the caller knows; memory
/// that runs out is a std::bad_alloc.
///
/// Example:
/// @code
/// const bool isFile = !isURL("holidays/harbour.jpg");
/// if (!isFile) static_cast<void>(nodeWithContentsOf("file:///holidays/harbour.jpg"));
/// @endcode
namespace Imaging {

/// True for names with a scheme, such as "http://…". A file of such a name is reached as "./http:…".
IMAGING_EXPORT bool isURL(const std::string& location);

/// All bytes of a file or of what a URL (http, https or file) stands for; never more than the limits on
/// pictures or transfers. Waits for the network.
IMAGING_EXPORT Platform::NSData contentsOf(const std::string& location);

/// The node of a picture, decoded from its bytes, or the root of an archived graph; which of them is told by
/// the content. Pictures of a graph that could not be had are not noticed here (see `requireDrawable`). The
/// bytes are not kept.
IMAGING_EXPORT std::shared_ptr<IMGImage> nodeWithBytes(const Platform::NSData& bytes);

/// The same for a path or URL.
IMAGING_EXPORT std::shared_ptr<IMGImage> nodeWithContentsOf(const std::string& location);

} // namespace Imaging
