// A thread for each band but the first, started for the call and joined at its end. These are threads by hand
// rather than jobs of a JobQueue, since every call of the painter comes by here: a queue for the call costs
// half as much again (15 microseconds instead of 10 for two empty bands), and one that is kept would leave
// bands without threads of their own where its threads are busy with others.

#include "Platform/Pixels/Rows/ParallelRows.h"

#include <algorithm>
#include <cstddef>
#include <exception>
#include <new>
#include <system_error>
#include <thread>
#include <vector>

namespace Imaging::Platform {

namespace {

/// One band, and what it threw. Each belongs to one thread until that thread has been joined.
struct Band {
    std::int64_t first;
    std::int64_t end;
    std::exception_ptr thrown;

    void run(const std::function<void(std::int64_t, std::int64_t)>& body) {
        try {
            body(first, end);
        } catch (...) {
            thrown = std::current_exception();
        }
    }
};

std::vector<Band> bandsOf(std::int64_t rows, std::int64_t count) {
    std::vector<Band> bands;
    bands.reserve(static_cast<std::size_t>(count));
    const std::int64_t length = rows / count;
    const std::int64_t longer = rows % count;
    for (std::int64_t i = 0, first = 0; i < count; ++i) {
        const std::int64_t end = first + length + (i < longer ? 1 : 0);
        bands.push_back({first, end, nullptr});
        first = end;
    }
    return bands;
}

} // namespace

std::int64_t rowBandLimit() {
    return std::max<std::int64_t>(1, static_cast<std::int64_t>(std::thread::hardware_concurrency()));
}

void forEachRowBand(std::int64_t rows, std::int64_t minimumRowsPerBand,
                    const std::function<void(std::int64_t first, std::int64_t end)>& body,
                    std::int64_t bandLimit) {
    if (rows <= 0) return;
    const std::int64_t full = rows / std::max<std::int64_t>(1, minimumRowsPerBand);
    const std::int64_t count = std::clamp<std::int64_t>(bandLimit, 1, std::max<std::int64_t>(1, full));
    if (count == 1) {
        body(0, rows);
        return;
    }
    std::vector<Band> bands = bandsOf(rows, count);
    std::vector<std::thread> threads;
    threads.reserve(bands.size() - 1); // nothing may throw between the start of a thread and its join
    std::size_t started = 1;
    try {
        for (; started < bands.size(); ++started) {
            threads.emplace_back([&band = bands[started], &body] { band.run(body); });
        }
    } catch (const std::system_error&) { // no thread to be had: the caller does the rest below
    } catch (const std::bad_alloc&) {    // nor memory for one
    }
    bands[0].run(body);
    for (std::size_t i = started; i < bands.size(); ++i) bands[i].run(body);
    for (std::thread& thread : threads) thread.join();
    for (const Band& band : bands) {
        if (band.thrown != nullptr) std::rethrow_exception(band.thrown);
    }
}

} // namespace Imaging::Platform
