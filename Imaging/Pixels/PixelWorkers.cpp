// The two threads of the pixel operations. They are made for each computation and joined before it is over;
// only `runPixelWorkers` knows that they are POSIX threads, and how many.

#include "Imaging/Pixels/PixelWorkers.h"

#include "Platform/Foundation/Exception.h"

#include <atomic>
#include <limits>

namespace Imaging {

namespace {

// Tests put a failing one here, since no machine runs out of threads when it should.
std::atomic<ThreadCreation> threadCreation = pthread_create;

} // namespace

void requireSizesOfRecords(const Platform::NSBitmapImageRep& bitmap) {
    constexpr std::int64_t longestSide = std::numeric_limits<std::int32_t>::max();
    constexpr std::uint64_t longestRow = std::numeric_limits<std::uint32_t>::max();
    if (bitmap.pixelsWide() > longestSide || bitmap.pixelsHigh() > longestSide ||
        bitmap.bytesPerRow() > longestRow) {
        throw Platform::NSException(Platform::NSInvalidArgumentException,
                                    "a bitmap's sides or rows are too long for a pixel operation");
    }
}

/// Two POSIX threads as the header promises them: a JobQueue's would be neither new ones nor in the hands of
/// `setThreadCreation`.
void runPixelWorkers(void* (*worker)(void*), void* firstRecord, void* secondRecord) {
    const std::array<void*, 2> records = {firstRecord, secondRecord};
    const ThreadCreation create = threadCreation; // once, so that both threads are made alike
    std::array<pthread_t, 2> threads{};
    std::array<bool, 2> created{};
    for (std::size_t i = 0; i < 2; ++i) created[i] = create(&threads[i], nullptr, worker, records[i]) == 0;
    for (std::size_t i = 0; i < 2; ++i) {
        if (!created[i]) worker(records[i]); // a system out of threads still gets its picture
    }
    for (std::size_t i = 0; i < 2; ++i) {
        if (created[i]) pthread_join(threads[i], nullptr);
    }
}

ThreadCreation setThreadCreation(ThreadCreation creation) {
    return threadCreation.exchange(creation != nullptr ? creation : pthread_create);
}

} // namespace Imaging
