// One appearance for the process, copied under a lock.

#include "Platform/Graphics/Appearance.h"

#include <mutex>

namespace Imaging::Platform {

namespace {

std::mutex& appearanceLock() {
    static std::mutex lock;
    return lock;
}

Appearance& currentAppearance() {
    static Appearance current;
    return current;
}

} // namespace

Appearance appearance() {
    const std::lock_guard lock(appearanceLock());
    return currentAppearance();
}

void setAppearance(const Appearance& appearance) {
    const std::lock_guard lock(appearanceLock());
    currentAppearance() = appearance;
}

} // namespace Imaging::Platform
