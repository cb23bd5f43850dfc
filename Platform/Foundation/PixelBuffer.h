#pragma once

#include "Platform/Foundation/Export.h"

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <memory>
#include <optional>

namespace Platform {

/// The product of the factors, or nullopt when it does not fit in 64 bits. Every size that becomes an
/// allocation or an offset goes through here first.
IMAGING_EXPORT std::optional<std::uint64_t> checkedProduct(std::initializer_list<std::uint64_t> factors);

/// Memory for pixels: owned, movable, never copied by accident, never resized.
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
        void operator()(std::uint8_t* bytes) const;
    };

    PixelBuffer(std::uint8_t* bytes, std::size_t size);

    std::unique_ptr<std::uint8_t, Free> m_bytes;
    std::size_t m_size = 0;
};

} // namespace Platform
