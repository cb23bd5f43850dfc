// Also tests: Platform/Pixels/Memory/SpareMemory.cpp

#include "Platform/Pixels/PixelBuffer.h"
#include "Platform/Pixels/Memory/SpareMemory.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <utility>
#include <vector>

using namespace Imaging::Platform;

TEST(PixelBuffer, BeginsEmpty) {
    const PixelBuffer buffer;
    EXPECT_TRUE(buffer.empty());
    EXPECT_EQ(buffer.size(), 0u);
    EXPECT_EQ(buffer.data(), nullptr);
}

TEST(PixelBuffer, ZeroedMemoryIsZeroThroughout) {
    const PixelBuffer buffer = PixelBuffer::zeroed(100'003);
    ASSERT_EQ(buffer.size(), 100'003u);
    EXPECT_TRUE(
        std::all_of(buffer.data(), buffer.data() + buffer.size(), [](std::uint8_t b) { return b == 0; }));
}

TEST(PixelBuffer, UninitialisedMemoryCanBeWrittenThroughout) {
    PixelBuffer buffer = PixelBuffer::uninitialised(4099);
    std::memset(buffer.data(), 0xA5, buffer.size());
    EXPECT_EQ(buffer.data()[0], 0xA5);
    EXPECT_EQ(buffer.data()[4098], 0xA5);
}

TEST(PixelBuffer, LargeMemoryIsZeroAndCanBeWrittenToItsLastByte) {
    for (const std::size_t size : {(4U << 20) - 1, 4U << 20, (4U << 20) + 1, (6U << 20) + 4099}) {
        PixelBuffer zeroed = PixelBuffer::zeroed(size);
        PixelBuffer any = PixelBuffer::uninitialised(size);
        ASSERT_EQ(zeroed.size(), size);
        ASSERT_TRUE(std::all_of(zeroed.data(), zeroed.data() + size, [](auto byte) { return byte == 0; }));
        std::fill_n(zeroed.data(), size, std::uint8_t{7});
        std::copy_n(zeroed.data(), size, any.data());
        EXPECT_EQ(any.data()[size - 1], 7);
    }
}

TEST(PixelBuffer, FreedMemoryServesTheNextBufferThatNeedsNoZeros) {
    constexpr std::size_t size = 9U << 20;
    releaseSpareMemory();
    const std::uint8_t* freed = nullptr;
    {
        PixelBuffer buffer = PixelBuffer::uninitialised(size);
        std::fill_n(buffer.data(), size, std::uint8_t{7});
        freed = buffer.data();
    }
    const PixelBuffer larger = PixelBuffer::uninitialised(2 * size);
    EXPECT_NE(larger.data(), freed);
    PixelBuffer again = PixelBuffer::uninitialised(size - (1U << 20));
    EXPECT_EQ(again.data(), freed);
    std::fill_n(again.data(), again.size(), std::uint8_t{9});
    again = PixelBuffer();
    const PixelBuffer zeroed = PixelBuffer::zeroed(size);
    EXPECT_TRUE(std::all_of(zeroed.data(), zeroed.data() + size, [](auto byte) { return byte == 0; }));
}

TEST(PixelBuffer, NoMoreIsKeptThanItsLimits) {
    releaseSpareMemory();
    constexpr std::size_t smallest = std::size_t{8} << 20;
    std::vector<PixelBuffer> buffers;
    for (std::size_t i = 0; i < 5; ++i) buffers.push_back(PixelBuffer::uninitialised(smallest << i));
    while (!buffers.empty()) buffers.erase(buffers.begin());
    const auto isKept = [](std::size_t size) {
        std::uint8_t* const bytes = takeSpareMemory(size);
        if (bytes != nullptr) giveSpareMemory(bytes, size);
        return bytes != nullptr;
    };
    EXPECT_FALSE(isKept(smallest)) << "the first of five";
    for (std::size_t i = 1; i < 5; ++i) EXPECT_TRUE(isKept(smallest << i)) << i;
    buffers.push_back(PixelBuffer::uninitialised(smallest << 6));
    buffers.clear();
    EXPECT_FALSE(isKept(smallest << 6)) << "512 MiB are too many";
    releaseSpareMemory();
    for (std::size_t i = 1; i < 5; ++i) EXPECT_FALSE(isKept(smallest << i)) << "after all was released";
}

TEST(PixelBuffer, MoreThanThereIsThrows) {
    EXPECT_THROW((void)PixelBuffer::zeroed(std::size_t{1} << 60), std::bad_alloc);
    EXPECT_THROW((void)PixelBuffer::uninitialised(SIZE_MAX), std::bad_alloc);
}

TEST(PixelBuffer, MovingHandsTheMemoryOver) {
    PixelBuffer first = PixelBuffer::zeroed(16);
    const std::uint8_t* address = first.data();
    first.data()[15] = 9;
    const PixelBuffer second = std::move(first);
    EXPECT_EQ(second.data(), address);
    EXPECT_EQ(second.data()[15], 9);
}

TEST(PixelBuffer, OfNoBytesIsNoFailure) {
    EXPECT_TRUE(PixelBuffer::zeroed(0).empty());
    EXPECT_TRUE(PixelBuffer::uninitialised(0).empty());
}

TEST(CheckedProduct, MultipliesUpToSixtyFourBits) {
    EXPECT_EQ(checkedProduct({}), 1u);
    EXPECT_EQ(checkedProduct({6000, 4000, 4}), 96'000'000u);
    EXPECT_EQ(checkedProduct({0xFFFFFFFFu, 0xFFFFFFFFu}), 0xFFFFFFFE00000001u);
    EXPECT_EQ(checkedProduct({1ULL << 63, 1}), 1ULL << 63);
    EXPECT_EQ(checkedProduct({1ULL << 40, 0, 1ULL << 10}), 0u);
}

TEST(CheckedProduct, GivesNothingBeyondSixtyFourBits) {
    EXPECT_EQ(checkedProduct({1ULL << 63, 2}), std::nullopt);
    EXPECT_EQ(checkedProduct({1ULL << 32, 1ULL << 31, 2}), std::nullopt);
    EXPECT_EQ(checkedProduct({UINT64_MAX, UINT64_MAX}), std::nullopt);
}
