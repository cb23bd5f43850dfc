// Makes a page in memory on one of Cairo's surfaces for vectors and gives its bytes.

#include "Tools/Pictures/Page.h"

#include "Platform/Graphics/GraphicsContext.h"
#include "Tools/Command/Messages.h"
#include "Tools/Pictures/Canvas.h"

#include <algorithm>
#include <cairo-pdf.h>
#include <cairo-svg.h>
#include <memory>
#include <new>

namespace Imaging::Tool {

using Platform::NSData;
using Platform::NSGraphicsContext;

namespace {

/// ISO 32000-1, annex C: what readers of PDF have to put up with is a page of 200 inches.
constexpr std::int64_t longestPDFSide = 14400;

/// Cairo counts in 1/256 of a point, in 32 bits; pictures are at most this wide and high, too.
constexpr std::int64_t longestSVGSide = 32750;

struct Deleter {
    void operator()(cairo_t* context) const { cairo_destroy(context); }
    void operator()(cairo_surface_t* surface) const { cairo_surface_destroy(surface); }
};
using Context = std::unique_ptr<cairo_t, Deleter>;
using Surface = std::unique_ptr<cairo_surface_t, Deleter>;

/// Cairo is C: nothing may be thrown through it.
cairo_status_t keepBytes(void* closure, const unsigned char* bytes, unsigned int count) {
    auto* file = static_cast<NSData*>(closure);
    try {
        file->insert(file->end(), bytes, bytes + count);
    } catch (const std::bad_alloc&) {
        return CAIRO_STATUS_NO_MEMORY;
    }
    return CAIRO_STATUS_SUCCESS;
}

Surface surfaceInto(NSData& file, PageFormat format, PixelSize size) {
    const auto width = static_cast<double>(size.width);
    const auto height = static_cast<double>(size.height);
    return Surface(format == PageFormat::PDF
                       ? cairo_pdf_surface_create_for_stream(keepBytes, &file, width, height)
                       : cairo_svg_surface_create_for_stream(keepBytes, &file, width, height));
}

void checkPageSize(PageFormat format, PixelSize size, const std::string& name, const std::string& advice) {
    const std::int64_t longest = format == PageFormat::PDF ? longestPDFSide : longestSVGSide;
    if (size.width <= longest && size.height <= longest) return;
    throw Failure(name, "the page would be " + std::to_string(size.width) + " x " +
                            std::to_string(size.height) + " points, and at most " + std::to_string(longest) +
                            " along a side can be read; " + advice);
}

} // namespace

NSData drawnOnPage(PageFormat format, PixelSize size, const std::string& name, const std::string& advice,
                   const std::function<void()>& draw) {
    checkPageSize(format, size, name, advice);
    NSData file;
    const Surface surface = surfaceInto(file, format, size);
    {
        const Context cairo(cairo_create(surface.get()));
        const CurrentContextScope current(
            NSGraphicsContext::graphicsContextWithCairo(cairo.get(), static_cast<double>(size.height)));
        draw();
    }
    cairo_surface_finish(surface.get()); // which writes what is left
    const cairo_status_t status = cairo_surface_status(surface.get());
    if (status == CAIRO_STATUS_NO_MEMORY) throw std::bad_alloc();
    if (status != CAIRO_STATUS_SUCCESS)
        throw Failure(name, std::string("the page could not be made: ") + cairo_status_to_string(status));
    return file;
}

} // namespace Imaging::Tool
