#pragma once

#include "Platform/Foundation/Export.h"
#include "Platform/Foundation/Geometry.h"

#include <string>

/// Text in the fonts that are installed on the machine.
///
/// Texts are UTF-8; bytes that are none count as U+FFFD each. Characters that the font lacks come from other
/// families, and where no font has them a box with their number stands for them. Right-to-left scripts,
/// ligatures and combining characters are set as Unicode has them. Lines end where the text says so (LF, CR,
/// CR LF, U+2028 or U+2029), never at a width.
///
/// Everything here is safe on every thread. Each thread keeps the fonts that it used until it ends.
///
/// The functions throw an NSException: NSGraphicsException when the machine has no font at all or drawing
/// fails, NSInvalidArgumentException when a text has more than a mebibyte.
///
/// Example:
/// @code
/// float size = 24;
/// while (sizeOfText("Sunset at the lake", NSFont::systemFontOfSize(size)).width > 100) size -= 1;
/// @endcode
namespace Imaging::Platform {

class NSColor;

enum class NSFontWeight { Regular, Bold };

/// A font: a family, a size in points (the units of the space that is drawn in) and a weight. A small value.
class IMAGING_EXPORT NSFont {
public:
    /// The family as fontconfig knows it, or several separated by commas, the first of which that is
    /// installed counts. Where none is, the nearest that is takes its place. With a size that is not a
    /// positive finite number texts have no extent, and nothing is drawn.
    static NSFont fontWithFamily(std::string family, float size, NSFontWeight weight = NSFontWeight::Regular);

    /// In the family that the appearance names at the moment of the call.
    static NSFont systemFontOfSize(float size);
    static NSFont boldSystemFontOfSize(float size);

    const std::string& family() const { return m_family; }
    float pointSize() const { return m_point_size; }
    NSFontWeight weight() const { return m_weight; }

private:
    NSFont(std::string family, float size, NSFontWeight weight);

    std::string m_family;
    float m_point_size;
    NSFontWeight m_weight;
};

/// How much room a text takes: its longest line's width, and the heights of its lines together, each from the
/// font's ascent to its descent. Ink may reach a little beyond. Proportional to the font's size, since
/// nothing is rounded to pixels. An empty text takes no room.
IMAGING_EXPORT NSSize sizeOfText(const std::string& text, const NSFont& font);

/// Draws a text into the current context, source-over and antialiased, so that the lower left corner of the
/// room that it takes lies at `point`. Right-to-left lines end at the right side of that room, others begin
/// at the left one. Onto pixels each letter begins at the nearest whole one. PDF and SVG targets get text
/// with its fonts. Text that is larger than 4096 or lies further out than 2^20 in the target's pixels is
/// drawn by its outlines, so that colour glyphs, which have none, are left out there. Without a current
/// context nothing happens. The graphics state stays as it was.
IMAGING_EXPORT void drawTextAtPoint(const std::string& text, const NSFont& font, const NSColor& color,
                                    NSPoint point);

} // namespace Imaging::Platform
