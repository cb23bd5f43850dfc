// The two threads of a pixel operation: how many there are, what each gets, and what happens when the system
// has none left.

#include "Imaging/Pixels/PixelWorkers.h"
#include "Platform/Codecs/Codec.h"
#include "Platform/Foundation/Exception.h"

#include <gtest/gtest.h>
#include <pthread.h>

#include <array>
#include <cerrno>
#include <vector>

using Imaging::forEachRow;
using Imaging::interleavedRows;
using Imaging::runPixelWorkers;

namespace {

struct Visit {
    pthread_t thread{};
    int visits = 0;
};

void* visit(void* record) {
    auto* const seen = static_cast<Visit*>(record);
    seen->thread = pthread_self();
    ++seen->visits;
    return nullptr;
}

/// What the creations of threads were asked for, and which of them are to fail.
struct Creations {
    int count = 0;
    bool withAttributes = false;
    std::vector<void*> records;
    std::array<bool, 2> fails{};
};
Creations creations;

int watchedCreation(pthread_t* thread, const pthread_attr_t* attributes, void* (*start)(void*),
                    void* record) {
    const int number = creations.count++;
    creations.withAttributes = creations.withAttributes || attributes != nullptr;
    creations.records.push_back(record);
    if (number < 2 && creations.fails[static_cast<std::size_t>(number)]) return EAGAIN;
    return pthread_create(thread, attributes, start, record);
}

class PixelWorkers : public testing::Test {
protected:
    PixelWorkers() {
        creations = {};
        m_original = Imaging::setThreadCreation(watchedCreation);
    }
    ~PixelWorkers() override { Imaging::setThreadCreation(m_original); }

    bool onThisThread(const Visit& seen) const { return pthread_equal(seen.thread, pthread_self()) != 0; }

private:
    Imaging::ThreadCreation m_original;
};

struct Span {
    int height;
    int firstRow;
    int rowStep;
};

std::vector<std::size_t> rowsOf(const Span& span) {
    std::vector<std::size_t> rows;
    forEachRow(span, [&](std::size_t row) { rows.push_back(row); });
    return rows;
}

using RowNumbers = std::vector<std::size_t>;

} // namespace

TEST_F(PixelWorkers, AreTwoThreadsOfTheirOwnWithDefaultAttributes) {
    std::array<Visit, 2> seen;
    runPixelWorkers(visit, &seen[0], &seen[1]);
    EXPECT_EQ(creations.count, 2);
    EXPECT_FALSE(creations.withAttributes);
    EXPECT_EQ(creations.records, (std::vector<void*>{&seen[0], &seen[1]}));
    for (const Visit& one : seen) {
        EXPECT_EQ(one.visits, 1);
        EXPECT_FALSE(onThisThread(one));
    }
}

TEST_F(PixelWorkers, HaveTheCallerDoTheRecordWhoseThreadCannotBeMade) {
    for (const std::array<bool, 2> fails :
         {std::array{true, false}, std::array{false, true}, std::array{true, true}}) {
        creations = {};
        creations.fails = fails;
        std::array<Visit, 2> seen;
        runPixelWorkers(visit, &seen[0], &seen[1]);
        EXPECT_EQ(creations.count, 2);
        for (std::size_t i = 0; i < 2; ++i) {
            EXPECT_EQ(seen[i].visits, 1);
            EXPECT_EQ(onThisThread(seen[i]), fails[i]);
        }
    }
}

TEST_F(PixelWorkers, GetTypedRecordsThatTheyOnlyRead) {
    struct Record {
        int number;
        std::array<int, 2>* results;
    };
    std::array<int, 2> results{};
    runPixelWorkers<Record>(
        [](const Record& record) {
            (*record.results)[static_cast<std::size_t>(record.number)] = 7 + record.number;
        },
        {{{0, &results}, {1, &results}}});
    EXPECT_EQ(results, (std::array{7, 8}));
    EXPECT_EQ(creations.count, 2);
}

TEST_F(PixelWorkers, AreMadeByTheSystemAgainWhenNothingElseIsAskedFor) {
    EXPECT_EQ(Imaging::setThreadCreation(nullptr), watchedCreation);
    std::array<Visit, 2> seen;
    runPixelWorkers(visit, &seen[0], &seen[1]);
    EXPECT_EQ(creations.count, 0);
    EXPECT_EQ(seen[0].visits + seen[1].visits, 2);
}

TEST(RowsOfPixelWorkers, AreTheEvenOnesAndTheOddOnes) {
    const auto spans = interleavedRows(Span{9, 5, 5});
    EXPECT_EQ(rowsOf(spans[0]), (RowNumbers{0, 2, 4, 6, 8}));
    EXPECT_EQ(rowsOf(spans[1]), (RowNumbers{7, 5, 3, 1})); // from below, so that the two do not meet
    EXPECT_EQ(rowsOf(interleavedRows(Span{8, 0, 0})[1]), (RowNumbers{7, 5, 3, 1}));
}

TEST(RowsOfPixelWorkers, OfAOneRowPictureAreAllTheFirstOnes) {
    const auto spans = interleavedRows(Span{1, 0, 0});
    EXPECT_EQ(rowsOf(spans[0]), (RowNumbers{0}));
    EXPECT_TRUE(rowsOf(spans[1]).empty());
}

TEST(RowsOfPixelWorkers, OfAnEmptyPictureAreNone) {
    for (const Span& span : interleavedRows(Span{0, 0, 0})) EXPECT_TRUE(rowsOf(span).empty());
}

TEST(RowsOfPixelWorkers, FollowAnyStep) {
    EXPECT_EQ(rowsOf({10, 2, 3}), (RowNumbers{2, 5, 8}));
    EXPECT_EQ(rowsOf({9, 1, 3}), (RowNumbers{7, 4, 1}));
}

TEST(RecordsOfPixelWorkers, HoldWhereTheRowsOfBothBitmapsAre) {
    std::array<std::uint8_t, 64> from{};
    std::array<std::uint8_t, 64> to{};
    Imaging::Platform::NSBitmapDescription description;
    description.pixelsWide = 3;
    description.pixelsHigh = 4;
    description.samplesPerPixel = 3;
    description.hasAlpha = false;
    description.colorSpaceName = Imaging::Platform::NSCalibratedRGBColorSpace;
    description.bytesPerRow = 11;
    const auto source = Imaging::Platform::NSBitmapImageRep::bitmapOverPlanes(description, {from.data()});
    description.bytesPerRow = 14;
    const auto destination = Imaging::Platform::NSBitmapImageRep::bitmapOverPlanes(description, {to.data()});
    ASSERT_NE(source, nullptr);
    ASSERT_NE(destination, nullptr);
    const auto record = Imaging::recordBetween<Imaging::PixelRecord>(*source, *destination);
    EXPECT_EQ(record.width, 3);
    EXPECT_EQ(record.height, 4);
    EXPECT_EQ(Imaging::sourceRow(record, 2), from.data() + 22);
    EXPECT_EQ(Imaging::destinationRow(record, 3), to.data() + 42);
    EXPECT_EQ(rowsOf({record.height, record.firstRow, record.rowStep}), (RowNumbers{0, 1, 2, 3}));
}

TEST(RecordsOfPixelWorkers, RefuseRowsThatTheyCannotCount) {
    const Imaging::Platform::PictureLimits before = Imaging::Platform::pictureLimits();
    Imaging::Platform::setPictureLimits({before.maximumPixels, std::uint64_t{1} << 40});
    std::uint8_t byte = 0;
    Imaging::Platform::NSBitmapDescription description;
    description.pixelsWide = 1;
    description.pixelsHigh = 1;
    description.bytesPerRow = 0xFFFFFFFF;
    const auto longest = Imaging::Platform::NSBitmapImageRep::bitmapOverPlanes(description, {&byte});
    description.bytesPerRow = 0x100000000;
    const auto tooLong = Imaging::Platform::NSBitmapImageRep::bitmapOverPlanes(description, {&byte});
    Imaging::Platform::setPictureLimits(before);
    ASSERT_NE(longest, nullptr);
    ASSERT_NE(tooLong, nullptr);
    EXPECT_NO_THROW(Imaging::requireSizesOfRecords(*longest));
    EXPECT_THROW(Imaging::requireSizesOfRecords(*tooLong), Imaging::Platform::NSException);
}
