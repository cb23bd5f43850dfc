#pragma once

// Internal: bitmaps as the painter reads them. Not installed.

#include "Platform/Painter/PictureRows.h"
#include "Platform/Pixels/Rows/ColorConversion.h"
#include "Platform/Pixels/Rows/PixelLayout.h"

#include <memory>

namespace Imaging::Platform {

class NSBitmapImageRep;

/// A bitmap, read in place: its pixels must stay as they are for as long as this is read. Colours are
/// converted from the bitmap's profile to sRGB; without a profile, or with one that does not fit the bitmap's
/// colour space or cannot be read, its numbers are taken as sRGB.
class BitmapRows : public PictureRows {
public:
    explicit BitmapRows(std::shared_ptr<const NSBitmapImageRep> bitmap);

    int width() const override { return static_cast<int>(m_pixels.width); }
    int height() const override { return static_cast<int>(m_pixels.height); }
    bool isOpaque() const override { return !m_layout.hasAlpha(); }
    void read(int y, std::uint32_t* words) const override;

private:
    std::shared_ptr<const NSBitmapImageRep> m_bitmap;
    SourcePixels m_pixels;
    PixelLayout m_layout;
    std::shared_ptr<const ColorConversion> m_conversion; ///< null where numbers stay as they are
};

/// Pixels of another owner, which must outlive this, taken as sRGB.
class PlainRows : public PictureRows {
public:
    PlainRows(const SourcePixels& pixels, const PixelLayout& layout) : m_pixels(pixels), m_layout(layout) {}

    int width() const override { return static_cast<int>(m_pixels.width); }
    int height() const override { return static_cast<int>(m_pixels.height); }
    bool isOpaque() const override { return !m_layout.hasAlpha(); }
    void read(int y, std::uint32_t* words) const override;

private:
    SourcePixels m_pixels;
    PixelLayout m_layout;
};

} // namespace Imaging::Platform
