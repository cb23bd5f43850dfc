#include "Platform/Foundation/PixelBuffer.h"

#include <cstdlib>
#include <new>

namespace Platform {

std::optional<std::uint64_t> checkedProduct(std::initializer_list<std::uint64_t> factors) {
    std::uint64_t product = 1;
    for (const std::uint64_t factor : factors) {
        if (__builtin_mul_overflow(product, factor, &product)) return std::nullopt;
    }
    return product;
}

void PixelBuffer::Free::operator()(std::uint8_t* bytes) const { std::free(bytes); }

PixelBuffer::PixelBuffer(std::uint8_t* bytes, std::size_t size) : m_bytes(bytes), m_size(size) {
    if (bytes == nullptr) throw std::bad_alloc();
}

PixelBuffer PixelBuffer::zeroed(std::size_t size) {
    // At least one byte, since calloc(0) may answer null without having failed.
    return {static_cast<std::uint8_t*>(std::calloc(size == 0 ? 1 : size, 1)), size};
}

PixelBuffer PixelBuffer::uninitialised(std::size_t size) {
    return {static_cast<std::uint8_t*>(std::malloc(size == 0 ? 1 : size)), size};
}

} // namespace Platform
