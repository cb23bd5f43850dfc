// The limits for pictures: one value for the whole process, copied under a lock.

#include "Platform/Pixels/PictureLimits.h"

#include <mutex>

namespace Imaging::Platform {

namespace {

struct GuardedLimits {
    std::mutex lock;
    PictureLimits limits;
};

/// Never destroyed, so that static objects may make pictures while they are destroyed.
GuardedLimits& current() {
    static GuardedLimits& instance = *new GuardedLimits;
    return instance;
}

} // namespace

PictureLimits pictureLimits() {
    const std::lock_guard guard(current().lock);
    return current().limits;
}

void setPictureLimits(const PictureLimits& limits) {
    const std::lock_guard guard(current().lock);
    current().limits = limits;
}

} // namespace Imaging::Platform
