#pragma once

// Internal: the division that brings a product of two samples back to a sample. Not installed.

#include <cstdint>

namespace Imaging::Platform {

/// product / 255 and product / 65535, rounded to nearest.
constexpr std::uint32_t dividedByMaximum(std::uint32_t product, std::uint8_t) {
    return (product + 127) / 255;
}
constexpr std::uint32_t dividedByMaximum(std::uint32_t product, std::uint16_t) {
    return static_cast<std::uint32_t>((std::uint64_t{product} + 32767) / 65535);
}

} // namespace Imaging::Platform
