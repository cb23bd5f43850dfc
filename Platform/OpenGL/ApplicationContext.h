#pragma once

#include <functional>

namespace Imaging::Platform {

/// How the library uses a context that the application made.
struct NSAdoptedContext {
    /// Called by `flushBuffer` when the state is the application's again, to show the frame; null where the
    /// toolkit does that by itself.
    std::function<void()> flush;

    /// Makes a context of the same share group, for uploads, current on the calling thread, which is not the
    /// one that draws, and says whether that succeeded. Null where EGL made the application's context, since
    /// EGL makes another, or where nothing but the drawing thread uploads.
    std::function<bool()> makeCompanionCurrent;
    /// Called on that thread when it is done with it; may be null.
    std::function<void()> releaseCompanion;
};

} // namespace Imaging::Platform
