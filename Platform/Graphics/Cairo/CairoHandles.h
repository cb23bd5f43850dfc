#pragma once

// Internal: owners of what Cairo counts references of. Not installed.

#include <cairo.h>
#include <memory>

namespace Imaging::Platform {

struct CairoDeleter {
    void operator()(cairo_t* context) const { cairo_destroy(context); }
    void operator()(cairo_surface_t* surface) const { cairo_surface_destroy(surface); }
    void operator()(cairo_pattern_t* pattern) const { cairo_pattern_destroy(pattern); }
};
using CairoContext = std::unique_ptr<cairo_t, CairoDeleter>;
using CairoSurface = std::unique_ptr<cairo_surface_t, CairoDeleter>;
using CairoPattern = std::unique_ptr<cairo_pattern_t, CairoDeleter>;

/// Saves a context's state and restores it at the end of the scope.
class CairoStateScope {
public:
    explicit CairoStateScope(cairo_t* context) : m_context(context) { cairo_save(context); }
    ~CairoStateScope() { cairo_restore(m_context); }
    CairoStateScope(const CairoStateScope&) = delete;
    CairoStateScope& operator=(const CairoStateScope&) = delete;

private:
    cairo_t* m_context;
};

} // namespace Imaging::Platform
