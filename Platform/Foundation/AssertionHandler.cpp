// One handler for the process, copied under a lock and called outside of it.

#include "Platform/Foundation/AssertionHandler.h"

#include "Platform/Foundation/Exception.h"

#include <mutex>

namespace Imaging::Platform {

namespace {

struct Current {
    std::mutex lock;
    std::shared_ptr<NSAssertionHandler> handler = std::make_shared<NSAssertionHandler>();
};

/// Never destroyed: static objects of the program may still fail while they are torn down.
Current& current() {
    static Current& instance = *new Current;
    return instance;
}

} // namespace

NSAssertionHandler::~NSAssertionHandler() = default;

std::shared_ptr<NSAssertionHandler> NSAssertionHandler::currentHandler() {
    const std::lock_guard guard(current().lock);
    return current().handler;
}

void NSAssertionHandler::setCurrentHandler(std::shared_ptr<NSAssertionHandler> handler) {
    if (handler == nullptr) handler = std::make_shared<NSAssertionHandler>();
    {
        const std::lock_guard guard(current().lock);
        current().handler.swap(handler);
    }
    // The old handler, now in `handler`, is released without the lock: its destructor is foreign code.
}

void NSAssertionHandler::handleFailureInFile(const std::string&, int, const std::string& description) {
    throw NSException(NSInternalInconsistencyException, description);
}

void parameterAssertionFailed(const char* condition, const char* file, int line) {
    NSAssertionHandler::currentHandler()->handleFailureInFile(
        file, line, std::string("Invalid parameter not satisfying: ") + condition);
}

} // namespace Imaging::Platform
