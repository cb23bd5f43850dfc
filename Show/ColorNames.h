#pragma once

#include "Platform/Foundation/Export.h"
#include "Platform/Graphics/Color.h"

#include <string>

/// Colours as people write them. Everything here is thread-safe and throws an NSException
/// (NSInvalidArgumentException) whose reason quotes the text and says what would have been right.
///
/// Example:
/// @code
/// [[maybe_unused]] const NSColor sea = colorNamed("navy");
/// [[maybe_unused]] const NSColor veil = colorNamed("#ffffff80");
/// [[maybe_unused]] const NSColor wall = opaqueColorNamed("#363636");
/// @endcode
namespace Imaging {

/// A colour by its name ("white", "navy"; capitals do not matter) or as #rgb, #rgba, #rrggbb or #rrggbbaa,
/// in sRGB; "transparent" is clear.
IMAGING_EXPORT Platform::NSColor colorNamed(const std::string& text);

/// The same for where nothing may show through: throws also for a colour whose alpha is below 1.
IMAGING_EXPORT Platform::NSColor opaqueColorNamed(const std::string& text);

} // namespace Imaging
