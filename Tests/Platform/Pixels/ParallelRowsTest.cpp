#include "Platform/Pixels/Rows/ParallelRows.h"

#include "Tests/Support/NoMoreThreads.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <latch>
#include <mutex>
#include <numeric>
#include <set>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>
#include <vector>

using namespace Imaging::Platform;
using namespace TestSupport;

namespace {

using Bands = std::vector<std::pair<std::int64_t, std::int64_t>>;

/// The bands that were asked for, in the order of their rows.
Bands bandsFor(std::int64_t rows, std::int64_t minimumRowsPerBand, std::int64_t bandLimit) {
    std::mutex lock;
    Bands bands;
    forEachRowBand(
        rows, minimumRowsPerBand,
        [&](std::int64_t first, std::int64_t end) {
            const std::lock_guard guard(lock);
            bands.emplace_back(first, end);
        },
        bandLimit);
    std::sort(bands.begin(), bands.end());
    return bands;
}

} // namespace

TEST(ParallelRows, AreAsManyBandsAsTheLimitAllowsAndDifferByOneRowAtMost) {
    EXPECT_EQ(bandsFor(12, 1, 3), (Bands{{0, 4}, {4, 8}, {8, 12}}));
    EXPECT_EQ(bandsFor(14, 1, 4), (Bands{{0, 4}, {4, 8}, {8, 11}, {11, 14}}));
    EXPECT_EQ(bandsFor(2, 1, 5), (Bands{{0, 1}, {1, 2}}));
}

TEST(ParallelRows, HoldTheMinimumOfRowsEach) {
    EXPECT_EQ(bandsFor(12, 6, 4), (Bands{{0, 6}, {6, 12}}));
    EXPECT_EQ(bandsFor(11, 6, 4), (Bands{{0, 11}}));
    EXPECT_EQ(bandsFor(17, 5, 8), (Bands{{0, 6}, {6, 12}, {12, 17}}));
    EXPECT_EQ(bandsFor(3, 100, 8), (Bands{{0, 3}}));
}

TEST(ParallelRows, TakeALimitOrAMinimumBelowOneForOne) {
    EXPECT_EQ(bandsFor(9, 1, 0), (Bands{{0, 9}}));
    EXPECT_EQ(bandsFor(9, 1, -3), (Bands{{0, 9}}));
    EXPECT_EQ(bandsFor(2, 0, 2), (Bands{{0, 1}, {1, 2}}));
    EXPECT_EQ(bandsFor(2, -7, 2), (Bands{{0, 1}, {1, 2}}));
}

TEST(ParallelRows, AreNotAskedForWithoutRows) {
    EXPECT_EQ(bandsFor(0, 1, 4), Bands{});
    EXPECT_EQ(bandsFor(-5, 1, 4), Bands{});
}

TEST(ParallelRows, SplitNoFurtherThanTheMachineHasCores) {
    EXPECT_GE(rowBandLimit(), 1);
    std::mutex lock;
    std::int64_t bands = 0;
    std::int64_t rows = 0;
    forEachRowBand(100000, 1, [&](std::int64_t first, std::int64_t end) {
        const std::lock_guard guard(lock);
        ++bands;
        rows += end - first;
    });
    EXPECT_EQ(bands, rowBandLimit());
    EXPECT_EQ(rows, 100000);
}

TEST(ParallelRows, WriteEveryRowOnceWithoutAnyLock) {
    std::vector<int> written(1003, 0);
    forEachRowBand(
        1003, 1,
        [&](std::int64_t first, std::int64_t end) {
            for (std::int64_t y = first; y < end; ++y) ++written[static_cast<std::size_t>(y)];
        },
        7);
    EXPECT_EQ(written, std::vector<int>(1003, 1));
}

TEST(ParallelRows, RunBandsAtTheSameTimeAndTheFirstOnTheCallersThread) {
    std::latch all(3); // opens only when three bands are under way at once
    std::mutex lock;
    std::set<std::thread::id> threads;
    std::thread::id first;
    forEachRowBand(
        3, 1,
        [&](std::int64_t row, std::int64_t) {
            all.arrive_and_wait();
            const std::lock_guard guard(lock);
            threads.insert(std::this_thread::get_id());
            if (row == 0) first = std::this_thread::get_id();
        },
        3);
    EXPECT_EQ(threads.size(), 3U);
    EXPECT_EQ(first, std::this_thread::get_id());
}

TEST(ParallelRows, StayOnTheCallersThreadWhereTheyAreFew) {
    std::thread::id thread;
    forEachRowBand(
        10, 6, [&](std::int64_t, std::int64_t) { thread = std::this_thread::get_id(); }, 2);
    EXPECT_EQ(thread, std::this_thread::get_id());
}

TEST(ParallelRows, CarryTheFirstBandsExceptionBackAfterAllHaveEnded) {
    std::vector<int> ended(4, 0);
    const auto body = [&](std::int64_t first, std::int64_t) {
        ended[static_cast<std::size_t>(first)] = 1;
        if (first >= 2) throw std::runtime_error("row " + std::to_string(first));
    };
    try {
        forEachRowBand(4, 1, body, 4);
        ADD_FAILURE() << "nothing was thrown";
    } catch (const std::runtime_error& thrown) {
        EXPECT_STREQ(thrown.what(), "row 2");
    }
    EXPECT_EQ(ended, std::vector<int>(4, 1));
}

TEST(ParallelRows, CarryTheCallersOwnExceptionToo) {
    const auto body = [](std::int64_t first, std::int64_t) {
        if (first == 0) throw std::out_of_range("here");
    };
    EXPECT_THROW(forEachRowBand(4, 1, body, 2), std::out_of_range);
    EXPECT_THROW(forEachRowBand(4, 1, body, 1), std::out_of_range);
}

TEST(ParallelRows, AreDoneByTheCallerWhereNoThreadCanBeStarted) {
    const NoMoreThreads none;
    EXPECT_THROW(std::thread([] {}).join(), std::system_error);
    std::set<std::thread::id> threads;
    std::vector<std::int64_t> firsts;
    forEachRowBand(
        9, 1,
        [&](std::int64_t first, std::int64_t) {
            threads.insert(std::this_thread::get_id());
            firsts.push_back(first);
        },
        3);
    EXPECT_EQ(firsts, (std::vector<std::int64_t>{0, 3, 6}));
    EXPECT_EQ(threads, std::set<std::thread::id>{std::this_thread::get_id()});
}

TEST(ParallelRows, MayBeSplitAgainInsideABand) {
    std::vector<int> written(64, 0);
    forEachRowBand(
        8, 1,
        [&](std::int64_t first, std::int64_t end) {
            const auto fill = [&](std::int64_t from, std::int64_t to) {
                for (std::int64_t i = from; i < to; ++i) ++written[static_cast<std::size_t>(first * 8 + i)];
            };
            forEachRowBand((end - first) * 8, 4, fill, 2);
        },
        4);
    EXPECT_EQ(written, std::vector<int>(64, 1));
}
