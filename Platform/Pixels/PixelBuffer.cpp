// Small buffers come from the heap. Large ones are mapped so that they begin and end on huge pages, and are
// kept for the next one when they are freed.

#include "Platform/Pixels/PixelBuffer.h"

#include "Platform/Pixels/Memory/SpareMemory.h"

#include <cstdlib>
#include <new>
#include <sys/mman.h>
#include <utility>

namespace Imaging::Platform {

namespace {

constexpr std::size_t hugePage = std::size_t{2} << 20;
constexpr std::size_t mappedFrom = 2 * hugePage;

} // namespace

std::optional<std::uint64_t> checkedProduct(std::initializer_list<std::uint64_t> factors) {
    std::uint64_t product = 1;
    for (const std::uint64_t factor : factors) {
        if (__builtin_mul_overflow(product, factor, &product)) return std::nullopt;
    }
    return product;
}

void PixelBuffer::Free::operator()(std::uint8_t* bytes) const {
    if (mapped == 0) {
        std::free(bytes);
    } else {
        giveSpareMemory(bytes, mapped);
    }
}

PixelBuffer::PixelBuffer(Bytes bytes, std::size_t size) : m_bytes(std::move(bytes)), m_size(size) {
    if (m_bytes == nullptr) throw std::bad_alloc();
}

/// Fresh memory, all bytes 0, that starts and ends on a huge page. Null when there is none.
PixelBuffer::Bytes PixelBuffer::mapped(std::size_t size) {
    if (size > SIZE_MAX / 2) return {nullptr, Free{0}};
    const std::size_t length = (size + (hugePage - 1)) / hugePage * hugePage;
    void* const address =
        mmap(nullptr, length + hugePage, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (address == MAP_FAILED) return {nullptr, Free{0}};
    auto* const start = static_cast<std::uint8_t*>(address);
    const std::size_t before = (hugePage - reinterpret_cast<std::uintptr_t>(start) % hugePage) % hugePage;
    if (before > 0) munmap(start, before);
    munmap(start + before + length, hugePage - before);
    madvise(start + before, length, MADV_HUGEPAGE); // advice: where it is not taken, small pages serve
    return {start + before, Free{length}};
}

PixelBuffer PixelBuffer::zeroed(std::size_t size) {
    if (size >= mappedFrom) return {mapped(size), size};
    // At least one byte, since calloc(0) may answer null without having failed.
    return {Bytes(static_cast<std::uint8_t*>(std::calloc(size == 0 ? 1 : size, 1)), Free{0}), size};
}

PixelBuffer PixelBuffer::uninitialised(std::size_t size) {
    if (size >= mappedFrom && size <= SIZE_MAX / 2) {
        std::size_t length = (size + (hugePage - 1)) / hugePage * hugePage;
        // What was freed a moment ago is still there, which fresh pages are not.
        if (std::uint8_t* const bytes = takeSpareMemory(length)) return {Bytes(bytes, Free{length}), size};
    }
    if (size >= mappedFrom) return {mapped(size), size};
    return {Bytes(static_cast<std::uint8_t*>(std::malloc(size == 0 ? 1 : size)), Free{0}), size};
}

} // namespace Imaging::Platform
