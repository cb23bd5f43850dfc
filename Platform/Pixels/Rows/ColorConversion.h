#pragma once

// Internal: from a profile's colours to sRGB. Not installed.

#include "Platform/Foundation/Data.h"

#include <cstddef>
#include <cstdint>
#include <memory>

namespace Imaging::Platform {

/// The conversion of samples that an ICC profile describes to sRGB, relative colorimetric. Thread-safe.
class ColorConversion {
public:
    enum class Samples { Gray, RGB, CMYK };

    /// Null when the bytes are no profile for such samples, or one that gives sRGB's colours already (within
    /// 1 of 255 on a grid over all colours).
    static std::shared_ptr<const ColorConversion> toSRGB(ByteView profile, Samples samples);
    ~ColorConversion();

    /// `count` pixels without alpha of 8 or 16 bits a sample (a CMYK sample of 255 is full ink) become RGBA
    /// bytes, of which the alpha is not written. RGB comes with a fourth sample, which is passed over.
    void convert(const std::uint8_t* samples, std::uint8_t* rgba, std::size_t count) const;
    void convert(const std::uint16_t* samples, std::uint8_t* rgba, std::size_t count) const;

private:
    struct Transform;

    explicit ColorConversion(std::unique_ptr<Transform> transform);
    bool changesNothing(Samples samples) const;

    std::unique_ptr<Transform> m_transform;
};

} // namespace Imaging::Platform
