#pragma once

// Internal: the pixels that a Cairo context draws on, and which of them its clip leaves, as the painter takes
// them. Not installed.

#include "Platform/Graphics/Cairo/CairoSupport.h"
#include "Platform/Painter/Affine.h"
#include "Platform/Painter/Coverage.h"
#include "Platform/Painter/PixelTarget.h"

#include <optional>

namespace Imaging::Platform {

/// The pixels of the surface that a context draws on, (0, 0) being the first one in memory. What is written
/// must be followed by `markDirty`.
class CairoPixels {
public:
    /// nullopt when the context does not draw on 32-bit pixels in memory (but on a PDF page, say).
    static std::optional<CairoPixels> ofContext(cairo_t* context);

    const PixelTarget& target() const { return m_target; }

    /// Maps the context's user space, under `matrix`, to these pixels.
    Affine toPixels(const cairo_matrix_t& matrix) const;

    void markDirty(PixelRect area) const;

private:
    cairo_surface_t* m_surface = nullptr;
    PixelTarget m_target;
    Affine m_device; // the context's device space to these pixels
};

/// How much of each pixel a context's clip covers, as Cairo has it.
class ClipCoverage {
public:
    /// The context's clip now. Throws an NSException (NSGraphicsException) when Cairo fails.
    ClipCoverage(cairo_t* context, const CairoPixels& pixels);

    /// No pixel outside is covered.
    PixelRect area() const { return m_coverage.area; }

    /// Valid as long as this is.
    const Coverage& coverage() const { return m_coverage; }

private:
    void rasterise(cairo_t* context, const CairoPixels& pixels);

    Coverage m_coverage;
    CairoPattern m_mask; ///< null where the area is covered wholly
};

} // namespace Imaging::Platform
