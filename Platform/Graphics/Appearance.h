#pragma once

#include "Platform/Foundation/Export.h"
#include "Platform/Graphics/Color.h"

#include <string>

namespace Imaging::Platform {

/// How decorations and named things look: the one place where an application changes them, before it draws.
///
/// Example:
/// @code
/// Appearance changed = appearance();
/// changed.systemFontFamily = "DejaVu Sans";
/// setAppearance(changed);
/// @endcode
struct Appearance {
    NSColor darkGray = NSColor::colorWithCalibratedWhite(1.0F / 3, 1);
    NSColor lightGray = NSColor::colorWithCalibratedWhite(2.0F / 3, 1);
    NSColor purple = NSColor::colorWithCalibratedRed(0.5F, 0, 0.5F, 1);
    NSColor cyan = NSColor::colorWithCalibratedRed(0, 1, 1, 1);

    /// What a window shows where nothing is drawn.
    NSColor windowBackground = NSColor::colorWithCalibratedWhite(0.925F, 1);

    /// The ring around what takes the keyboard's input.
    NSColor keyboardFocusIndicator = NSColor::colorWithCalibratedRed(0.25F, 0.5F, 0.85F, 1);

    /// The family of user interface text, as fontconfig knows it; what is not there is replaced by the
    /// nearest, and scripts that it lacks by other families.
    std::string systemFontFamily = "sans-serif";
};

/// The appearance of the whole process. Both are safe on every thread.
IMAGING_EXPORT Appearance appearance();
IMAGING_EXPORT void setAppearance(const Appearance& appearance);

} // namespace Imaging::Platform
