// Uploads where it is asked, so a load is always done by the time it is found. The list's lock is never held
// while OpenGL works: uploading takes the context's lock, and who holds that may be looking for a texture.

#include "Imaging/OpenGLCache.h"

#include "Imaging/OpenGLTexture.h"
#include "Platform/OpenGL/OpenGLContext.h"

#include <utility>

namespace Imaging {

using Platform::NSBitmapImageRep;

namespace {

constexpr std::size_t loadsThatAlwaysStay = 32;

} // namespace

OpenGLContextOwner::~OpenGLContextOwner() = default;

OpenGLCache::OpenGLCache() = default;
OpenGLCache::~OpenGLCache() = default;

void OpenGLCache::scheduleBitmap(const std::shared_ptr<NSBitmapImageRep>& bitmap, float,
                                 OpenGLContextOwner& context) {
    if (bitmap == nullptr || find(bitmap.get()) != nullptr) return;
    const std::shared_ptr<OpenGLContextLock> contextLock = context.contextLock();
    const std::lock_guard hold(*contextLock);
    const std::shared_ptr<Platform::NSOpenGLContext> native = context.openGLContext();
    if (native == nullptr || !native->makeCurrentContext()) return;
    // Another thread may have been quicker while this one waited for the context.
    if (find(bitmap.get()) != nullptr) return;
    auto texture = std::make_shared<OpenGLTexture>(bitmap);
    texture->loadTextureWithImage(nullptr, 0, texture->textureCount());
    add({bitmap, std::move(texture)});
}

void OpenGLCache::add(Load load) {
    std::vector<Load> dropped; // its names are deleted when the list is free again
    const std::lock_guard lock(m_textures_lock);
    if (m_textures.size() > loadsThatAlwaysStay) {
        const auto end = m_textures.end() - static_cast<std::ptrdiff_t>(loadsThatAlwaysStay);
        dropped.assign(std::make_move_iterator(m_textures.begin()), std::make_move_iterator(end));
        m_textures.erase(m_textures.begin(), end);
    }
    m_textures.push_back(std::move(load));
}

std::shared_ptr<OpenGLTexture> OpenGLCache::textureForBitmap(const std::shared_ptr<NSBitmapImageRep>& bitmap,
                                                             OpenGLContextOwner& context, bool) {
    scheduleBitmap(bitmap, 0, context);
    return find(bitmap.get());
}

std::shared_ptr<OpenGLTexture> OpenGLCache::find(const NSBitmapImageRep* bitmap) const {
    const std::lock_guard lock(m_textures_lock);
    for (const Load& load : m_textures) {
        if (load.bitmap.get() == bitmap) return load.texture;
    }
    return nullptr;
}

std::size_t OpenGLCache::count() const {
    const std::lock_guard lock(m_textures_lock);
    return m_textures.size();
}

std::vector<OpenGLCache::Load> OpenGLCache::takeAll() {
    const std::lock_guard lock(m_textures_lock);
    return std::exchange(m_textures, {});
}

void OpenGLCache::removeAllTextures() { takeAll(); }

void OpenGLCache::forgetAllTextures() {
    for (const Load& load : takeAll()) load.texture->forgetNames();
}

} // namespace Imaging
