#pragma once

#include "Platform/Foundation/Export.h"
#include "Platform/Foundation/Geometry.h"
#include "Platform/OpenGL/ApplicationContext.h"

#include <memory>
#include <vector>

namespace Imaging::Platform {

class NSWindow;
class OpenGLCommands;
class ViewBacking;

/// A rectangle that OpenGL draws into: the pixels of a view that is on no screen, or a part of the
/// application's window. One point is one pixel.
///
/// A view belongs to the thread that gives it to contexts. Views are made with std::make_shared.
class IMAGING_EXPORT NSView : public std::enable_shared_from_this<NSView> {
public:
    /// A view on no screen, which needs no display server. The frame is in the space of the view that it will
    /// be added to.
    explicit NSView(NSRect frame);

    /// A view on the context that the application has made current whenever `makeCurrentContext` is called:
    /// in the frame buffer that is bound then, which need not be 0, from the corner of the viewport that is
    /// set then, with the size of the frame. The first one stays the view's; another one counts as its loss.
    ///
    /// From `makeCurrentContext` to `flushBuffer` or `clearCurrentContext` the context's state is the
    /// library's; after those it is what it was, but for errors, the contents of the drawn part, and the
    /// depth buffer there. A frame should not count on state of the one before. The frame buffer should have
    /// one sample a pixel where what was drawn is read back or captured. Contexts are best destroyed while
    /// the application's is current, so that what they have in it can be deleted.
    static std::shared_ptr<NSView> viewOnCurrentContext(NSRect frame, NSAdoptedContext adopted = {});

    /// A view whose contexts hand every command to `commands`, which are shared by all of them. For tests,
    /// and for whoever draws with an implementation of their own.
    static std::shared_ptr<NSView> viewWithCommands(NSRect frame, std::shared_ptr<OpenGLCommands> commands);

    ~NSView();
    NSView(const NSView&) = delete;
    NSView& operator=(const NSView&) = delete;

    NSRect frame() const { return m_frame; }

    /// Contexts that draw into the view take its size when they are made current or updated.
    void setFrame(NSRect frame) { m_frame = frame; }

    /// The frame's size at the origin.
    NSRect bounds() const { return {NSZeroPoint, m_frame.size}; }

    /// The views in this one, which owns them, from the back to the front.
    const std::vector<std::shared_ptr<NSView>>& subviews() const { return m_subviews; }

    /// Puts a view in front of the others, taking it from where it was. Throws an NSException
    /// (NSInvalidArgumentException) for null, and for a view that holds this one.
    void addSubview(std::shared_ptr<NSView> view);
    void removeFromSuperview();

    /// Null for a view in no other.
    std::shared_ptr<NSView> superview() const { return m_superview.lock(); }

    /// What contexts of this view are made of. Internal.
    const std::shared_ptr<ViewBacking>& backing() const { return m_backing; }

private:
    NSView(NSRect frame, std::shared_ptr<ViewBacking> backing);

    NSRect m_frame;
    std::shared_ptr<ViewBacking> m_backing;
    std::weak_ptr<NSView> m_superview;
    std::vector<std::shared_ptr<NSView>> m_subviews;
};

} // namespace Imaging::Platform
