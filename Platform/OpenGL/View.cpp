// Views in views, and the choice of what stands behind one: pixels off the screen, the application's
// context, or commands that somebody supplies.

#include "Platform/OpenGL/View.h"

#include "Platform/Foundation/Exception.h"
#include "Platform/OpenGL/Contexts/AdoptedContext.h"
#include "Platform/OpenGL/Contexts/NativeContext.h"
#include "Platform/OpenGL/Contexts/SuppliedCommands.h"

#include <algorithm>
#include <utility>

namespace Imaging::Platform {

NSView::NSView(NSRect frame) : NSView(frame, offscreenBacking()) {}

NSView::NSView(NSRect frame, std::shared_ptr<ViewBacking> backing)
    : m_frame(frame), m_backing(std::move(backing)) {}

NSView::~NSView() = default;

std::shared_ptr<NSView> NSView::viewOnCurrentContext(NSRect frame, NSAdoptedContext adopted) {
    return std::shared_ptr<NSView>(new NSView(frame, adoptedBacking(std::move(adopted))));
}

std::shared_ptr<NSView> NSView::viewWithCommands(NSRect frame, std::shared_ptr<OpenGLCommands> commands) {
    if (!commands) throw NSException(NSInvalidArgumentException, "a view cannot draw without commands");
    return std::shared_ptr<NSView>(new NSView(frame, suppliedCommandsBacking(std::move(commands))));
}

void NSView::addSubview(std::shared_ptr<NSView> view) {
    if (!view) throw NSException(NSInvalidArgumentException, "there is no view to add");
    for (const NSView* above = this; above != nullptr; above = above->superview().get()) {
        if (above == view.get()) throw NSException(NSInvalidArgumentException, "a view cannot hold itself");
    }
    view->removeFromSuperview();
    view->m_superview = weak_from_this();
    m_subviews.push_back(std::move(view));
}

void NSView::removeFromSuperview() {
    const std::shared_ptr<NSView> above = superview();
    if (!above) return;
    m_superview.reset();
    std::erase_if(above->m_subviews,
                  [this](const std::shared_ptr<NSView>& view) { return view.get() == this; });
}

} // namespace Imaging::Platform
