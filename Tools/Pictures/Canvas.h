#pragma once

#include "Imaging/Image.h"
#include "Platform/Foundation/Exception.h"
#include "Show/Canvas.h"
#include "Show/FramedNode.h"
#include "Show/NodeGraph.h"
#include "Show/Orientation.h"
#include "Tools/Command/Messages.h"
#include "Tools/Command/Values.h"
#include "Tools/Files/Input.h"

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace Imaging::Platform {
class NSGraphicsContext;
}

/// What the command draws with, in which everything that goes wrong is told with the name of what it went
/// wrong with: as Failures for `name`.
namespace Imaging::Tool {

/// What `work` gives. What it throws as an NSException is thrown as a Failure for the input `name`; `prefix`
/// goes before the reason.
template<class Work>
auto naming(const std::string& name, const Work& work, const std::string& prefix = {}) {
    try {
        return work();
    } catch (const Platform::NSException& exception) {
        throw Failure(shownName(name), prefix + exception.reason());
    }
}

/// What people do about a picture that is too large to be drawn.
inline const std::string makeItSmaller = "--scale or --crop it to a smaller size";

/// As `Imaging::requirePictures`.
void requirePictures(const std::shared_ptr<IMGImage>& root, const std::string& name);

/// As `Imaging::requireDrawable`.
void requireDrawable(const std::shared_ptr<IMGImage>& root, const std::string& name);

/// A picture with steps carried out on it.
FramedNode processed(const std::shared_ptr<IMGImage>& node, const std::string& name,
                     const std::vector<Step>& steps);

/// A node that is ready to be drawn, the way up that its picture declares unless it is asked for as stored.
/// Only a node that is a picture itself declares one; pictures further down in a graph are drawn as they are
/// stored.
class Drawing {
public:
    /// Throws a Failure for `name` when a picture of the graph is missing, or when there is nothing to draw.
    Drawing(std::shared_ptr<IMGImage> node, const std::string& name, Upright upright);

    /// In pixels, the right way up; a fraction counts as a whole pixel.
    PixelSize size() const { return m_size; }

    /// The asked size with a missing side filled in from the shape, rounded, at least 1; the own size when
    /// both are missing.
    PixelSize completed(PixelSize asked) const;

    /// Where the drawing goes on a place of whole pixels; see `placedIn`.
    Platform::NSRect placed(Platform::NSRect place, Fit fit) const;

    /// Draws all of it into the rectangle of the calling thread's current context.
    void drawInRect(Platform::NSRect rect) const;

private:
    std::shared_ptr<IMGImage> m_node;
    PixelSize m_size;
};

/// As `Imaging::drawnOnCanvas`, for the output `name`.
std::shared_ptr<Platform::NSBitmapImageRep>
drawnOnCanvas(PixelSize size, const std::string& name, const std::string& advice,
              const std::function<Platform::NSRect()>& drawAndSelect);

/// Makes a context the thread's current one until the end of the scope.
class CurrentContextScope {
public:
    explicit CurrentContextScope(std::shared_ptr<Platform::NSGraphicsContext> context);
    ~CurrentContextScope();
    CurrentContextScope(const CurrentContextScope&) = delete;
    CurrentContextScope& operator=(const CurrentContextScope&) = delete;

private:
    std::shared_ptr<Platform::NSGraphicsContext> m_before;
};

} // namespace Imaging::Tool
