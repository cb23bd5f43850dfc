// The path of a clip, which has to be empty where the rectangle is.

#include "Platform/Graphics/Cairo/ClipPath.h"

namespace Imaging::Platform {

NSBezierPath clipPath(NSRect rect) {
    return NSIsEmptyRect(rect) ? NSBezierPath() : NSBezierPath::bezierPathWithRect(rect);
}

} // namespace Imaging::Platform
