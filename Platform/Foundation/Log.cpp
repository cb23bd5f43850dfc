// A line is put together first and then handed over whole, so that threads do not mix theirs.

#include "Platform/Foundation/Log.h"

#include <cstdarg>
#include <cstdio>
#include <memory>
#include <mutex>

namespace Imaging::Platform {

namespace {

using Sink = std::function<void(const std::string&)>;

struct Current {
    std::mutex lock;
    std::shared_ptr<const Sink> sink;
};

/// Never destroyed: static objects of the program may still log while they are torn down.
Current& current() {
    static Current& instance = *new Current;
    return instance;
}

std::string formatted(const char* format, std::va_list arguments) {
    std::va_list again;
    va_copy(again, arguments);
    const int length = std::vsnprintf(nullptr, 0, format, arguments);
    // A format that the C library cannot follow still says more than silence.
    std::string text = length < 0 ? std::string(format) : std::string(static_cast<std::size_t>(length), '\0');
    if (length > 0) std::vsnprintf(text.data(), text.size() + 1, format, again);
    va_end(again);
    text.erase(text.find_last_not_of("\r\n") + 1);
    return text;
}

/// One call for the whole line, so that lines of several threads do not mix.
void writeToStandardError(const std::string& message) {
    const std::string line = message + "\n";
    std::fwrite(line.data(), 1, line.size(), stderr);
}

} // namespace

void NSLog(const char* format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    const std::string message = formatted(format, arguments);
    va_end(arguments);
    std::shared_ptr<const Sink> sink;
    {
        const std::lock_guard guard(current().lock);
        sink = current().sink;
    }
    if (sink == nullptr) {
        writeToStandardError(message);
    } else {
        (*sink)(message);
    }
}

void setLogSink(Sink sink) {
    std::shared_ptr<const Sink> next;
    if (sink != nullptr) next = std::make_shared<const Sink>(std::move(sink));
    {
        const std::lock_guard guard(current().lock);
        current().sink.swap(next);
    }
    // The old sink, now in `next`, is released without the lock: what it holds is foreign code.
}

} // namespace Imaging::Platform
