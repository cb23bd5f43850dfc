// State and clip are kept by Cairo; what is filled goes to the painter where there are pixels, and to Cairo
// elsewhere. Paths and transforms that Cairo would choke on never reach it.

#include "Platform/Graphics/GraphicsContext.h"

#include "Platform/Foundation/Exception.h"
#include "Platform/Graphics/Appearance.h"
#include "Platform/Graphics/BezierPath.h"
#include "Platform/Graphics/Cairo/CairoPaths.h"
#include "Platform/Graphics/Cairo/CairoPixels.h"
#include "Platform/Graphics/Cairo/CairoSupport.h"
#include "Platform/Graphics/Cairo/ClipPath.h"
#include "Platform/Graphics/Cairo/Compositing.h"
#include "Platform/Painter/ColorSampler.h"
#include "Platform/Painter/Painter.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <optional>
#include <utility>

namespace Imaging::Platform {

namespace {

thread_local std::shared_ptr<NSGraphicsContext> t_current_context;

bool isFinite(const NSBezierPath& path) {
    for (const PathElement& element : path.elements()) {
        for (const NSPoint point : element.points) { // those that an element does not use are zero
            if (!std::isfinite(point.x) || !std::isfinite(point.y)) return false;
        }
    }
    return true;
}

/// The colour as pixels hold it: components clamped, not-a-number counting as 0, each product with alpha
/// rounded to nearest.
std::uint32_t premultipliedWord(const NSColor& color) {
    const auto part = [](float component) { return component > 0 ? std::min(double{component}, 1.0) : 0.0; };
    const double alpha = part(color.alphaComponent());
    const auto sample = [](double value) { return static_cast<std::uint32_t>(std::lround(value * 255)); };
    return sample(alpha) << 24 | sample(part(color.redComponent()) * alpha) << 16 |
           sample(part(color.greenComponent()) * alpha) << 8 | sample(part(color.blueComponent()) * alpha);
}

/// A path's attributes for Cairo's next stroke; false when such a stroke would leave no mark, or one too
/// wide for Cairo's coordinates.
bool setStroke(cairo_t* cairo, const NSBezierPath& path) {
    constexpr double widest = 1 << 20; // device units
    const double width = path.lineWidth();
    cairo_matrix_t matrix;
    cairo_get_matrix(cairo, &matrix);
    const double scale = std::hypot(std::hypot(matrix.xx, matrix.yx), std::hypot(matrix.xy, matrix.yy));
    if (!(width > 0) || !(width * scale <= widest)) return false;
    cairo_set_line_width(cairo, width);
    cairo_set_line_cap(cairo, static_cast<cairo_line_cap_t>(path.lineCapStyle()));
    cairo_set_line_join(cairo, static_cast<cairo_line_join_t>(path.lineJoinStyle()));
    // Cairo takes a limit that is not a number for a reason to fail.
    cairo_set_miter_limit(cairo, path.miterLimit() >= 1 ? double{path.miterLimit()} : 1.0);
    return true;
}

} // namespace

std::shared_ptr<NSGraphicsContext> NSGraphicsContext::graphicsContextWithCairo(cairo_t* cairo,
                                                                               double height) {
    checkStatus(cairo);
    if (!std::isfinite(height)) throw NSException(NSGraphicsException, "the page's height is not finite");
    std::shared_ptr<NSGraphicsContext> context(new NSGraphicsContext(cairo));
    cairo_translate(cairo, 0, height);
    cairo_scale(cairo, 1, -1);
    return context;
}

// The destructor gives the Cairo context back with the state that it came with.
NSGraphicsContext::NSGraphicsContext(cairo_t* cairo) : m_cairo(cairo_reference(cairo)) {
    cairo_save(cairo);
    // What callers drew with before must not show in what is drawn here.
    cairo_set_operator(cairo, CAIRO_OPERATOR_OVER);
    cairo_set_antialias(cairo, CAIRO_ANTIALIAS_DEFAULT);
    cairo_set_tolerance(cairo, 0.1);
    cairo_set_dash(cairo, nullptr, 0, 0);
}

NSGraphicsContext::~NSGraphicsContext() {
    for (std::size_t i = 0; i < m_saved_states.size() + 1; ++i) cairo_restore(m_cairo);
    cairo_destroy(m_cairo);
}

std::shared_ptr<NSGraphicsContext> NSGraphicsContext::currentContext() { return t_current_context; }

void NSGraphicsContext::setCurrentContext(std::shared_ptr<NSGraphicsContext> context) {
    t_current_context = std::move(context);
}

void NSGraphicsContext::saveGraphicsState() {
    cairo_save(m_cairo);
    m_saved_states.push_back(m_state);
}

void NSGraphicsContext::restoreGraphicsState() {
    if (m_saved_states.empty()) throw NSException(NSGraphicsException, "no graphics state is saved");
    cairo_restore(m_cairo);
    m_state = m_saved_states.back();
    m_saved_states.pop_back();
}

void NSGraphicsContext::concat(const NSAffineTransform& transform) {
    cairo_matrix_t before;
    cairo_get_matrix(m_cairo, &before);
    const cairo_matrix_t step = cairoMatrix(transform);
    cairo_matrix_t after;
    cairo_matrix_multiply(&after, &step, &before);
    if (!transform.isInvertible() || !isUsable(after)) {
        m_state.degenerate = true;
        return;
    }
    cairo_set_matrix(m_cairo, &after);
}

void NSGraphicsContext::addClip(const NSBezierPath& path) {
    if (!isFinite(path)) {
        m_state.degenerate = true;
        return;
    }
    cairo_new_path(m_cairo);
    appendPath(m_cairo, path.elements());
    setFillRule(m_cairo, path.windingRule());
    cairo_clip(m_cairo);
}

void NSGraphicsContext::fillShape(const NSBezierPath& path, NSCompositingOperation operation) {
    if (!canDraw() || path.isEmpty() || !isFinite(path)) return;
    const CairoStateScope state(m_cairo);
    cairo_new_path(m_cairo);
    appendPath(m_cairo, path.elements());
    setFillRule(m_cairo, path.windingRule());
    const std::optional<CairoPixels> pixels = CairoPixels::ofContext(m_cairo);
    if (!pixels.has_value() && operation == NSCompositeSourceOver) {
        // A path stays one on pages then. As a clip it would lose the even-odd rule in Cairo's SVGs.
        setSource(m_cairo, m_state.color);
        cairo_fill(m_cairo);
        m_has_painted = true;
        checkStatus(m_cairo);
        return;
    }
    cairo_clip(m_cairo);
    if (pixels.has_value()) {
        const auto sampler = makeColorSampler(premultipliedWord(m_state.color));
        const ClipCoverage clip(m_cairo, *pixels);
        paint(pixels->target(), clip.coverage(), *sampler, operation, 1.0);
        pixels->markDirty(clip.area());
    } else {
        compositeClipArea(m_cairo, operation, 1.0,
                          [this](cairo_t* context) { setSource(context, m_state.color); });
    }
    m_has_painted = true;
}

void NSGraphicsContext::fillPath(const NSBezierPath& path) { fillShape(path, NSCompositeSourceOver); }

void NSGraphicsContext::fillRect(NSRect rect, NSCompositingOperation operation) {
    if (!NSIsEmptyRect(rect)) fillShape(NSBezierPath::bezierPathWithRect(rect), operation);
}

void NSGraphicsContext::strokePath(const NSBezierPath& path) {
    if (!canDraw() || path.isEmpty() || !isFinite(path)) return;
    const CairoStateScope state(m_cairo);
    cairo_new_path(m_cairo);
    appendStrokePath(m_cairo, path.elements());
    if (!setStroke(m_cairo, path)) return;
    setSource(m_cairo, m_state.color);
    cairo_stroke(m_cairo);
    m_has_painted = true;
    checkStatus(m_cairo);
}

NSGraphicsStateScope::NSGraphicsStateScope() : m_context(NSGraphicsContext::currentContext()) {
    if (m_context == nullptr) return;
    m_depth = m_context->savedStateCount();
    m_context->saveGraphicsState();
}

NSGraphicsStateScope::~NSGraphicsStateScope() {
    if (m_context == nullptr) return;
    while (m_context->savedStateCount() > m_depth) m_context->restoreGraphicsState();
}

// What colours and paths do to the current context. They lie below it and only declare these.

void NSColor::set() const {
    if (const auto context = NSGraphicsContext::currentContext()) context->setColor(*this);
}

void NSBezierPath::fill() const {
    if (const auto context = NSGraphicsContext::currentContext()) context->fillPath(*this);
}

void NSBezierPath::stroke() const {
    if (const auto context = NSGraphicsContext::currentContext()) context->strokePath(*this);
}

void NSBezierPath::addClip() const {
    if (const auto context = NSGraphicsContext::currentContext()) context->addClip(*this);
}

void NSRectFill(NSRect rect) { NSRectFillUsingOperation(rect, NSCompositeCopy); }

void NSRectFillUsingOperation(NSRect rect, NSCompositingOperation operation) {
    if (const auto context = NSGraphicsContext::currentContext()) context->fillRect(rect, operation);
}

void NSDrawWindowBackground(NSRect rect) {
    const NSGraphicsStateScope state;
    appearance().windowBackground.set();
    NSRectFill(rect);
}

void NSFrameRectWithWidth(NSRect rect, float width) {
    if (2 * width >= std::min(rect.size.width, rect.size.height)) {
        NSRectFill(rect);
        return;
    }
    if (!isFinite(NSBezierPath::bezierPathWithRect(rect))) return; // one of the four sides might be
    const float inner = rect.size.height - 2 * width;
    NSRectFill(NSMakeRect(NSMinX(rect), NSMinY(rect), rect.size.width, width));
    NSRectFill(NSMakeRect(NSMinX(rect), NSMaxY(rect) - width, rect.size.width, width));
    NSRectFill(NSMakeRect(NSMinX(rect), NSMinY(rect) + width, width, inner));
    NSRectFill(NSMakeRect(NSMaxX(rect) - width, NSMinY(rect) + width, width, inner));
}

void NSRectClip(NSRect rect) {
    if (const auto context = NSGraphicsContext::currentContext()) {
        context->addClip(clipPath(rect));
    }
}

} // namespace Imaging::Platform
