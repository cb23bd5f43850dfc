#pragma once

// Internal: how every pixel operation computes its result. Not installed.
//
// An operation X is three pairs of files, each of which has the same things in the same order for all
// operations (Mask is the shortest one to read):
//
//     Imaging/X.h, .cpp                 the node: its parameters, what it keeps, copies and archives;
//                                       `computePixels` fills an XRecord and has a worker run on two threads
//     Imaging/Pixels/XPlain.h, .cpp     XRecord, which begins with PixelRecord and adds the parameters;
//                                       namespace Plain: the arithmetic of a sample or pixel, then the
//                                       workers, one pixel after another
//     Imaging/Pixels/XVectors.h, .cpp   what vector code wants prepared; then the workers by the same names,
//                                       which give the same bits with vectors
//
// Convolution has a fourth pair, ConvolutionPasses: its vector code weighs rows of samples, and the passes
// make these ready and share more than single rows out to the threads.
//
// To add an operation, write these files with XTest.cpp beside Tests/Imaging/MaskTest.cpp, which holds both
// kinds of workers against arithmetic written out in the test, on every instruction set. Then name the header
// in Imaging/Imaging.h and the class in Imaging/Archive/ArchiveClasses.cpp; nothing else knows the
// operations.

#include "Platform/Graphics/BitmapImageRep.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <pthread.h>

namespace Imaging {

/// One thread's share of an operation: what the records of all operations begin with. Workers read their
/// record and the source and write their own rows of the destination; they share nothing else, and they
/// neither read nor write the padding between rows.
struct PixelRecord {
    const std::uint8_t* source = nullptr;
    std::uint8_t* destination = nullptr;
    std::uint32_t sourceBytesPerRow = 0; ///< padding included
    std::uint32_t destinationBytesPerRow = 0;
    std::int32_t width = 0; ///< of both bitmaps, in pixels
    std::int32_t height = 0;
    std::int32_t firstRow = 0; ///< counted from the top one
    std::int32_t rowStep = 1;
};

/// Records count pixels and the bytes of a row in 32 bits. Throws an NSException (NSInvalidArgumentException)
/// for a bitmap with longer sides or rows.
void requireSizesOfRecords(const Platform::NSBitmapImageRep& bitmap);

/// A record of an operation with the fields that all of them have, for all rows: the size is the
/// destination's. The bitmaps must outlive it.
template<class Record>
Record recordBetween(const Platform::NSBitmapImageRep& source, Platform::NSBitmapImageRep& destination) {
    Record record;
    record.source = source.bitmapData();
    record.destination = destination.bitmapData();
    record.sourceBytesPerRow = static_cast<std::uint32_t>(source.bytesPerRow());
    record.destinationBytesPerRow = static_cast<std::uint32_t>(destination.bytesPerRow());
    record.width = static_cast<std::int32_t>(destination.pixelsWide());
    record.height = static_cast<std::int32_t>(destination.pixelsHigh());
    return record;
}

/// Where a row of a record's bitmaps begins.
inline const std::uint8_t* sourceRow(const PixelRecord& record, std::int64_t row) {
    return record.source + static_cast<std::size_t>(row) * record.sourceBytesPerRow;
}
inline std::uint8_t* destinationRow(const PixelRecord& record, std::int64_t row) {
    return record.destination + static_cast<std::size_t>(row) * record.destinationBytesPerRow;
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

/// The records of the two threads, which take turns: one has the even rows, the other the odd ones.
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
        row(first + step * (first % 2 == 0 ? i : count - 1 - i));
    }
}

/// What makes a thread; answers as pthread_create does.
using ThreadCreation = int (*)(pthread_t*, const pthread_attr_t*, void* (*)(void*), void*);

/// Puts another function in the place of pthread_create and returns the one in use so far, so that tests can
/// have it fail. Null restores pthread_create.
ThreadCreation setThreadCreation(ThreadCreation creation);

} // namespace Imaging
