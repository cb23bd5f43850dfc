#pragma once

#include "Platform/Foundation/AffineTransform.h"
#include "Platform/Foundation/Export.h"
#include "Platform/Foundation/Geometry.h"
#include "Platform/Graphics/Color.h"
#include "Platform/Pixels/CompositingOperation.h"

#include <cstddef>
#include <memory>
#include <vector>

typedef struct _cairo cairo_t; // NOLINT(bugprone-reserved-identifier): Cairo's own name

namespace Imaging::Platform {

class NSBezierPath;

/// A place to draw: a Cairo context with a y axis that points up, a stack of graphics states, and the
/// compositing that the library's pictures need.
///
/// A graphics state holds the transform, the clip and the colour. Under a transform without an inverse (a
/// zero, infinite or undefined factor) nothing is drawn until an earlier state is restored.
///
/// Every drawing operation touches only the shape that it draws: the operation's result replaces what is
/// there in proportion to the shape's and the clip's coverage, and pixels outside stay as they are, also
/// under operations such as source-in that would clear them elsewhere.
///
/// One context belongs to one thread at a time. Each thread has its own current context.
///
/// Example:
/// @code
/// const NSGraphicsStateScope state;
/// NSColor::blackColor().set();
/// NSFrameRectWithWidth(NSMakeRect(10, 10, 100, 50), 2);
/// @endcode
class IMAGING_EXPORT NSGraphicsContext : public std::enable_shared_from_this<NSGraphicsContext> {
public:
    /// A context on a caller's Cairo context, which is referenced, not copied. `height` is that of the page
    /// in the units of the Cairo context's user space at this moment; the point (0, 0) of the new context
    /// lies at that space's (0, height), and y grows upward. The Cairo context's own transform and clip at
    /// this moment stay in force. Throws an NSException (NSGraphicsException) when the Cairo context is in
    /// error or the height is not finite.
    static std::shared_ptr<NSGraphicsContext> graphicsContextWithCairo(cairo_t* cairo, double height);

    NSGraphicsContext(const NSGraphicsContext&) = delete;
    NSGraphicsContext& operator=(const NSGraphicsContext&) = delete;
    ~NSGraphicsContext();

    /// The calling thread's context, or null.
    static std::shared_ptr<NSGraphicsContext> currentContext();
    static void setCurrentContext(std::shared_ptr<NSGraphicsContext> context);

    void saveGraphicsState();

    /// Throws an NSException (NSGraphicsException) when there is no saved state left.
    void restoreGraphicsState();

    std::size_t savedStateCount() const { return m_saved_states.size(); }

    /// Makes `transform` act before the current transform on everything that is drawn from now on.
    void concat(const NSAffineTransform& transform);

    /// The clip becomes what it has in common with the path's inside. A path with coordinates that are not
    /// finite leaves nothing. Edges are antialiased.
    void addClip(const NSBezierPath& path);

    void setColor(const NSColor& color) { m_state.color = color; }
    const NSColor& color() const { return m_state.color; }

    /// Paths are filled and stroked with the colour, source-over, antialiased. A path with coordinates that
    /// are not finite draws nothing.
    void fillPath(const NSBezierPath& path);
    void strokePath(const NSBezierPath& path);

    /// Fills with the colour and an operation of its own; numbers that name no operation count as
    /// source-over.
    void fillRect(NSRect rect, NSCompositingOperation operation);
    void fillRect(NSRect rect, int operation) { fillRect(rect, compositingOperation(operation)); }

    /// The Cairo context, for drawing that this class has no words for. It is the context's own; its user
    /// space has y pointing up. Callers leave its state as they found it.
    cairo_t* cairo() const { return m_cairo; }

    /// True once anything was drawn.
    bool hasPainted() const { return m_has_painted; }

    /// Called by whoever drew through `cairo()`.
    void notePainted() { m_has_painted = true; }

    /// False while the transform has no inverse, so that drawing would be in vain.
    bool canDraw() const { return !m_state.degenerate; }

private:
    struct State {
        NSColor color;
        bool degenerate = false;
    };

    explicit NSGraphicsContext(cairo_t* cairo);
    void fillShape(const NSBezierPath& path, NSCompositingOperation operation);

    cairo_t* m_cairo;
    State m_state;
    std::vector<State> m_saved_states;
    bool m_has_painted = false;
};

/// Saves the current context's graphics state and restores it at the end of the scope, on the way out of
/// an exception too, together with whatever was saved since and not restored. It restores on the context
/// that it saved, whichever is current then. Without a current context it does nothing.
class IMAGING_EXPORT NSGraphicsStateScope {
public:
    NSGraphicsStateScope();
    ~NSGraphicsStateScope();
    NSGraphicsStateScope(const NSGraphicsStateScope&) = delete;
    NSGraphicsStateScope& operator=(const NSGraphicsStateScope&) = delete;

private:
    std::shared_ptr<NSGraphicsContext> m_context;
    std::size_t m_depth = 0;
};

/// Fills with the current context's colour and the copy operation, so that alpha replaces alpha. These
/// functions do nothing without a current context.
IMAGING_EXPORT void NSRectFill(NSRect rect);
IMAGING_EXPORT void NSRectFillUsingOperation(NSRect rect, NSCompositingOperation operation);
inline void NSRectFillUsingOperation(NSRect rect, int operation) {
    NSRectFillUsingOperation(rect, compositingOperation(operation));
}

/// Fills with the appearance's window background and the copy operation. The current colour stays.
IMAGING_EXPORT void NSDrawWindowBackground(NSRect rect);

/// Draws a frame of a width, inwards from the rectangle's edges, with the current colour and the copy
/// operation. Where twice the width is more than a side the whole rectangle is filled.
IMAGING_EXPORT void NSFrameRectWithWidth(NSRect rect, float width);

/// The clip becomes what it has in common with the rectangle; nothing where that has no area.
IMAGING_EXPORT void NSRectClip(NSRect rect);

} // namespace Imaging::Platform
