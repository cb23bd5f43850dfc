#pragma once

// Internal: the pixels that a Cairo context draws on, and which of them its clip leaves. Not installed.

#include "Platform/Graphics/Cairo/CairoSupport.h"
#include "Platform/Painter/PictureSampler.h"

#include <cstdint>
#include <optional>

namespace Imaging::Platform {

/// The pixels of the surface that a context draws on, (0, 0) being the first one in memory. What is written
/// must be followed by `markDirty`.
class PixelTarget {
public:
    /// nullopt when the context does not draw on 32-bit pixels in memory (but on a PDF page, say).
    static std::optional<PixelTarget> ofContext(cairo_t* context);

    /// Whether the top byte of a word is no alpha.
    bool isOpaque() const { return m_opaque; }

    PixelRect area() const { return {0, 0, m_width, m_height}; }
    std::uint32_t* row(int y) const {
        return reinterpret_cast<std::uint32_t*>(m_data + static_cast<std::ptrdiff_t>(y) * m_stride);
    }

    /// Maps the context's user space, under `matrix`, to these pixels.
    cairo_matrix_t toPixels(const cairo_matrix_t& matrix) const;

    void markDirty(PixelRect area) const;

private:
    cairo_surface_t* m_surface = nullptr;
    unsigned char* m_data = nullptr;
    int m_stride = 0;
    int m_width = 0;
    int m_height = 0;
    bool m_opaque = false;
    cairo_matrix_t m_device{}; // the context's device space to these pixels
};

/// How much of each pixel of a target a context's clip covers, as Cairo has it.
class ClipCoverage {
public:
    /// The context's clip now. Throws an NSException (NSGraphicsException) when Cairo fails.
    ClipCoverage(cairo_t* context, const PixelTarget& target);

    /// No pixel outside is covered.
    PixelRect area() const { return m_area; }

    /// The coverage of row y of the area from its left edge on, 255 for whole pixels; null where the whole
    /// row is.
    const std::uint8_t* row(int y) const;

private:
    std::optional<PixelRect> wholePixels(cairo_t* context, const PixelTarget& target) const;
    void rasterise(cairo_t* context, const PixelTarget& target);

    PixelRect m_area;
    CairoPattern m_mask; ///< null where the area is covered wholly
    const unsigned char* m_data = nullptr;
    int m_stride = 0;
};

} // namespace Imaging::Platform
