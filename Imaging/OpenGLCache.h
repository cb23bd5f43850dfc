#pragma once

#include "Imaging/OpenGLContextLock.h"
#include "Platform/Foundation/Export.h"

#include <memory>
#include <mutex>
#include <vector>

namespace Imaging::Platform {
class NSBitmapImageRep;
class NSOpenGLContext;
} // namespace Imaging::Platform

namespace Imaging {

class OpenGLTexture;

/// Who has an OpenGL context that textures are loaded with: a drawing target.
class IMAGING_EXPORT OpenGLContextOwner {
public:
    virtual ~OpenGLContextOwner();

    /// Null before there is one.
    virtual std::shared_ptr<Platform::NSOpenGLContext> openGLContext() const = 0;

    /// The lock that guards every command of that context. Never null.
    virtual std::shared_ptr<OpenGLContextLock> contextLock() const = 0;

protected:
    OpenGLContextOwner() = default;
    OpenGLContextOwner(const OpenGLContextOwner&) = default;
    OpenGLContextOwner& operator=(const OpenGLContextOwner&) = default;
};

/// The textures of bitmaps that one drawing target drew or is going to draw, found again by the bitmap
/// itself. A bitmap that is scheduled is uploaded at once, on the calling thread; the cache keeps bitmap and
/// texture, and of textures beyond the newest 32 drops those that are done when a new one comes.
///
/// Functions may be called on any thread. While they upload they hold the owner's lock, with its context
/// current on the calling thread, where it stays current. The same context must be given every time, and be
/// current when the textures go: the owner calls `removeAllTextures` before it lets its context go.
///
/// Example:
/// @code
/// OpenGLCache cache;
/// cache.forgetAllTextures();
/// const bool isEmpty = cache.count() == 0;
/// @endcode
class IMAGING_EXPORT OpenGLCache {
public:
    OpenGLCache();
    ~OpenGLCache();
    OpenGLCache(const OpenGLCache&) = delete;
    OpenGLCache& operator=(const OpenGLCache&) = delete;

    /// Has a bitmap uploaded that is needed in so many seconds. Nothing happens for one that is there
    /// already, for null, and while the owner has no context that could be made current. Throws what
    /// OpenGLTexture's constructor throws for the bitmap; it is not kept then.
    void scheduleBitmap(const std::shared_ptr<Platform::NSBitmapImageRep>& bitmap, float timeUntilNeeded,
                        OpenGLContextOwner& context);

    /// The bitmap's texture with all tiles uploaded, scheduled now if it was not; null where it cannot be had
    /// in time. `immediate` says to wait long for it rather than to leave it out of a frame; bitmaps are
    /// uploaded at once, so there is nothing to wait for yet. Give up the owner's lock around the call.
    std::shared_ptr<OpenGLTexture> textureForBitmap(const std::shared_ptr<Platform::NSBitmapImageRep>& bitmap,
                                                    OpenGLContextOwner& context, bool immediate);

    /// How many textures there are.
    std::size_t count() const;

    /// Lets all textures go, while their context is current.
    void removeAllTextures();

    /// Lets them go when their context is gone with them, so that nothing is deleted.
    void forgetAllTextures();

private:
    struct Load {
        std::shared_ptr<Platform::NSBitmapImageRep> bitmap;
        std::shared_ptr<OpenGLTexture> texture;
    };

    std::shared_ptr<OpenGLTexture> find(const Platform::NSBitmapImageRep* bitmap) const;
    std::vector<Load> takeAll();
    void add(Load load);

    mutable std::recursive_mutex m_textures_lock;
    std::vector<Load> m_textures; ///< oldest first
};

} // namespace Imaging
