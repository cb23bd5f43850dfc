#pragma once

// Internal: the two threads that every pixel operation computes its result on. Not installed.

#include "Platform/Graphics/BitmapImageRep.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <pthread.h>

namespace Imaging {

/// The records of workers count pixels and the bytes of a row in 32 bits. Throws an NSException
/// (NSInvalidArgumentException) for a bitmap with longer sides or rows.
void requireSizesOfRecords(const Platform::NSBitmapImageRep& bitmap);

/// A worker's record with the fields that all of them have: the size of the destination, and both bitmaps'
/// rows and pixels.
template<class Record>
Record recordBetween(const Platform::NSBitmapImageRep& source, Platform::NSBitmapImageRep& destination) {
    Record record{};
    record.width = static_cast<std::int32_t>(destination.pixelsWide());
    record.height = static_cast<std::int32_t>(destination.pixelsHigh());
    record.sourceRowLength = static_cast<std::uint32_t>(source.bytesPerRow());
    record.destinationRowLength = static_cast<std::uint32_t>(destination.bytesPerRow());
    record.source = source.bitmapData();
    record.destination = destination.bitmapData();
    return record;
}

/// Runs a worker on two POSIX threads with default attributes, one for each record, and returns when both
/// have ended; they are joined in the order of their creation. The calling thread computes nothing itself,
/// except the record of a thread that could not be made. Workers must not throw.
void runPixelWorkers(void* (*worker)(void*), void* firstRecord, void* secondRecord);

/// The same with typed records, which the workers only read.
template<class Record>
void runPixelWorkers(void (*worker)(const Record&), const std::array<Record, 2>& records) {
    struct Job {
        void (*worker)(const Record&);
        const Record* record;
    };
    std::array<Job, 2> jobs = {{{worker, &records[0]}, {worker, &records[1]}}};
    runPixelWorkers(
        [](void* given) -> void* {
            const auto* const job = static_cast<const Job*>(given);
            job->worker(*job->record);
            return nullptr;
        },
        &jobs[0], &jobs[1]);
}

/// The records of the two threads, which take turns: one has the even rows, the other the odd ones. For
/// records with the fields `firstRow` and `rowStep`.
template<class Record>
std::array<Record, 2> interleavedRows(Record record) {
    record.firstRow = 0;
    record.rowStep = 2;
    std::array<Record, 2> records = {record, record};
    records[1].firstRow = 1;
    return records;
}

/// Calls `row` with the number of every row of a record: firstRow, firstRow + rowStep, … below the height.
/// Records with an odd first row walk upward from the last of them: two threads that walked in step would
/// wait for each other at every fresh page of the destination, and would share the cache lines in which
/// one row ends and the next begins.
template<class Record, class Row>
void forEachRow(const Record& record, const Row& row) {
    const std::int64_t first = record.firstRow;
    const std::int64_t step = record.rowStep;
    if (first >= record.height) return;
    const std::int64_t count = (record.height - first + step - 1) / step;
    for (std::int64_t i = 0; i < count; ++i) {
        row(static_cast<std::size_t>(first + step * (first % 2 == 0 ? i : count - 1 - i)));
    }
}

/// What makes a thread; answers as pthread_create does.
using ThreadCreation = int (*)(pthread_t*, const pthread_attr_t*, void* (*)(void*), void*);

/// Puts another function in the place of pthread_create and returns the one in use so far, so that tests can
/// have it fail. Null restores pthread_create.
ThreadCreation setThreadCreation(ThreadCreation creation);

} // namespace Imaging
