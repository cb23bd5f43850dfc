#pragma once

#include "Platform/Foundation/Geometry.h"
#include "Platform/Graphics/Color.h"
#include "Tools/Command/Values.h"
#include "Tools/Pictures/Canvas.h"

#include <cstddef>
#include <cstdint>

namespace Imaging::Tool {

/// What surrounds each picture of a sheet. Without a width there is none: no mat, line or shadow.
struct Border {
    std::int64_t width = 0;
    Platform::NSColor color = Platform::NSColor::whiteColor();
};

/// Where the cells of a contact sheet lie: in rows from the top, with the same gap between all of them and
/// around them. In pixels; y grows upward from the sheet's lower edge.
class SheetLayout {
public:
    /// `columns` 0 chooses as many as make a sheet about as many cells high as wide, but four if there are so
    /// many pictures.
    SheetLayout(std::size_t pictures, PixelSize cell, std::int64_t columns);

    /// Of a sheet for so many pictures, at most those of the constructor: fewer take fewer rows.
    PixelSize size(std::size_t pictures) const;
    PixelSize size() const { return size(m_pictures); }

    /// The cell of a picture, the first one at the upper left.
    Platform::NSRect cell(std::size_t index) const;

    /// The part of the sheet that the first pictures take.
    Platform::NSRect used(std::size_t pictures) const;

    /// From one cell to the next.
    std::int64_t gap() const { return m_gap; }

private:
    std::size_t m_pictures;
    PixelSize m_cell;
    std::int64_t m_columns;
    std::int64_t m_gap;
};

/// Draws a picture with its border in the middle of a cell, as large as both fit in. The shadow falls into
/// the gap around the cell.
void drawFramed(const Drawing& drawing, Platform::NSRect cell, const Border& border, std::int64_t gap);

} // namespace Imaging::Tool
