#pragma once

#include "Platform/Foundation/Export.h"

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <memory>
#include <optional>

namespace Imaging::Platform {

/// The product of the factors, or nullopt when it does not fit in 64 bits. Every size that becomes an
/// allocation or an offset goes through here first.
IMAGING_EXPORT std::optional<std::uint64_t> checkedProduct(std::initializer_list<std::uint64_t> factors);

/// Memory for pixels: owned, movable, never copied by accident, never resized. From 4 MiB on it lies on huge
/// pages where the system grants them, since taking fresh small pages costs more than filling them.
///
/// Example:
/// @code
/// PixelBuffer pixels;
/// if (const auto size = checkedProduct({640, 480, 4})) pixels = PixelBuffer::zeroed(*size);
/// @endcode
class IMAGING_EXPORT PixelBuffer {
public:
    PixelBuffer() = default;

    /// All bytes 0. Throws std::bad_alloc when the memory cannot be had.
    static PixelBuffer zeroed(std::size_t size);

    /// For decoders that write every byte themselves. Throws std::bad_alloc.
    static PixelBuffer uninitialised(std::size_t size);

    std::uint8_t* data() { return m_bytes.get(); }
    const std::uint8_t* data() const { return m_bytes.get(); }
    std::size_t size() const { return m_size; }
    bool empty() const { return m_size == 0; }

private:
    struct Free {
        std::size_t mapped; /// the length of the mapping; 0 for memory of the heap

        void operator()(std::uint8_t* bytes) const;
    };
    using Bytes = std::unique_ptr<std::uint8_t, Free>;

    PixelBuffer(Bytes bytes, std::size_t size);
    static Bytes mapped(std::size_t size);

    Bytes m_bytes;
    std::size_t m_size = 0;
};

} // namespace Imaging::Platform
