#include "Tools/Pictures/SheetLayout.h"

#include "Platform/Graphics/BitmapImageRep.h"
#include "Platform/Graphics/GraphicsContext.h"
#include "Platform/Graphics/Image.h"

#include <algorithm>
#include <cmath>

namespace Imaging::Tool {

using Platform::NSColor;
using Platform::NSMakeRect;
using Platform::NSRect;

namespace {

constexpr double shadowAlpha = 0.7;

std::int64_t chosenColumns(std::size_t pictures) {
    const auto count = static_cast<std::int64_t>(pictures);
    const auto root = static_cast<std::int64_t>(std::ceil(std::sqrt(static_cast<double>(pictures))));
    return std::max(std::min<std::int64_t>(count, 4), root);
}

/// How much of a blurred bar from `low` to `high` there is at each pixel centre from `first` on: the integral
/// of a normal distribution over the bar.
std::vector<double> blurredBar(double first, std::size_t count, double low, double high, double sigma) {
    std::vector<double> values(count);
    const double scale = 1 / (sigma * std::sqrt(2.0));
    for (std::size_t i = 0; i < count; ++i) {
        const double at = first + static_cast<double>(i) + 0.5;
        values[i] = (std::erf((at - low) * scale) - std::erf((at - high) * scale)) / 2;
    }
    return values;
}

/// The shadow of a rectangle as a soft black picture: a blurred rectangle is the product of two blurred bars.
void drawShadow(NSRect rect, double sigma, float drop) {
    const float reach = std::ceil(static_cast<float>(3 * sigma));
    const NSRect area = Platform::NSInsetRect(Platform::NSOffsetRect(rect, 0, -drop), -reach, -reach);
    Platform::NSBitmapDescription description;
    description.pixelsWide = static_cast<std::int64_t>(area.size.width);
    description.pixelsHigh = static_cast<std::int64_t>(area.size.height);
    auto bitmap = Platform::NSBitmapImageRep::bitmapWithDescription(description);
    if (bitmap == nullptr) return; // too large for the picture limits, where the sheet itself is refused
    const auto width = static_cast<std::size_t>(description.pixelsWide);
    const auto height = static_cast<std::size_t>(description.pixelsHigh);
    const auto margin = static_cast<double>(reach);
    const auto across = blurredBar(0, width, margin, static_cast<double>(width) - margin, sigma);
    const auto down = blurredBar(0, height, margin, static_cast<double>(height) - margin, sigma);
    for (std::size_t y = 0; y < height; ++y) {
        std::uint8_t* row = bitmap->bitmapData() + y * bitmap->bytesPerRow();
        for (std::size_t x = 0; x < width; ++x) {
            row[x * 4 + 3] = static_cast<std::uint8_t>(std::lround(255 * shadowAlpha * across[x] * down[y]));
        }
    }
    Platform::NSImage shadow(area.size);
    shadow.addRepresentation(std::move(bitmap));
    shadow.drawInRect(area, Platform::NSZeroRect, Platform::NSCompositeSourceOver, 1);
}

/// A line around the picture, a fifth darker than the mat that it lies on.
NSColor lineColor(const NSColor& mat) {
    return NSColor::colorWithCalibratedRed(mat.redComponent() * 0.8F, mat.greenComponent() * 0.8F,
                                           mat.blueComponent() * 0.8F, mat.alphaComponent());
}

} // namespace

SheetLayout::SheetLayout(std::size_t pictures, PixelSize cell, std::int64_t columns)
    : m_pictures(pictures),
      m_cell(cell),
      m_columns(columns > 0 ? columns : chosenColumns(pictures)),
      m_gap(std::max<std::int64_t>(4, std::min(cell.width, cell.height) / 10)) {}

PixelSize SheetLayout::size(std::size_t pictures) const {
    const auto count = static_cast<std::int64_t>(pictures);
    const std::int64_t rows = (count + m_columns - 1) / m_columns;
    return {m_columns * (m_cell.width + m_gap) + m_gap, rows * (m_cell.height + m_gap) + m_gap};
}

NSRect SheetLayout::cell(std::size_t index) const {
    const std::int64_t column = static_cast<std::int64_t>(index) % m_columns;
    const std::int64_t row = static_cast<std::int64_t>(index) / m_columns;
    const std::int64_t left = m_gap + column * (m_cell.width + m_gap);
    const std::int64_t bottom = size().height - (row + 1) * (m_cell.height + m_gap);
    return NSMakeRect(static_cast<float>(left), static_cast<float>(bottom), static_cast<float>(m_cell.width),
                      static_cast<float>(m_cell.height));
}

NSRect SheetLayout::used(std::size_t pictures) const {
    const PixelSize taken = size(pictures);
    return NSMakeRect(0, static_cast<float>(size().height - taken.height), static_cast<float>(taken.width),
                      static_cast<float>(taken.height));
}

void drawFramed(const Drawing& drawing, NSRect cell, const Border& border, std::int64_t gap) {
    if (border.width == 0) {
        drawing.drawInRect(drawing.placed(cell, Fit::Contain));
        return;
    }
    const auto width = static_cast<float>(border.width);
    const NSRect picture = drawing.placed(Platform::NSInsetRect(cell, width, width), Fit::Contain);
    const NSRect mat = Platform::NSInsetRect(picture, -width, -width);
    drawShadow(mat, static_cast<double>(gap) / 5, std::round(static_cast<float>(gap) / 7));
    paint(mat, border.color);
    if (border.width > 1) paint(Platform::NSInsetRect(picture, -1, -1), lineColor(border.color));
    drawing.drawInRect(picture);
}

} // namespace Imaging::Tool
