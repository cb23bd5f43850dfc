#pragma once

// Internal: rectangles of whole pixels. Not installed.

#include <algorithm>

namespace Imaging::Platform {

/// Pixels of a device from (left, top) up to but without (right, bottom), y downward.
struct PixelRect {
    int left = 0;
    int top = 0;
    int right = 0;
    int bottom = 0;

    int width() const { return right - left; }
    int height() const { return bottom - top; }
    bool isEmpty() const { return left >= right || top >= bottom; }
};

/// What both have in common; empty, with whatever numbers, where that is nothing.
inline PixelRect intersection(PixelRect a, PixelRect b) {
    return {std::max(a.left, b.left), std::max(a.top, b.top), std::min(a.right, b.right),
            std::min(a.bottom, b.bottom)};
}

} // namespace Imaging::Platform
