#pragma once

// Internal: where the headers of BMP files have their fields. Not installed.

#include <cstddef>
#include <cstdint>

/// A file begins with a header of its own, which is followed by one of several kinds about the picture.
/// Numbers are little-endian. The kinds are told apart by their sizes, with which they begin, and but for the
/// oldest one each begins like the shorter ones.
namespace Imaging::Platform::BmpHeaders {

/// A number: where it stands, counted from the beginning of its header, and how many bytes it has.
struct Field {
    std::size_t offset;
    std::size_t size;

    constexpr std::size_t end() const { return offset + size; }
};

// The file's own header.
inline constexpr std::size_t fileHeader = 14; ///< its size, and so where the second one begins
inline constexpr Field pixelsOffset{10, 4};

// Sizes of the kinds of the second header.
inline constexpr std::size_t coreHeader = 12;
inline constexpr std::size_t windowsHeader = 40;
inline constexpr std::size_t headerWithColorMasks = 52;
inline constexpr std::size_t headerWithAlphaMask = 56;
inline constexpr std::size_t os2Header = 64;
inline constexpr std::size_t headerVersion5 = 124;

// The oldest kind.
inline constexpr Field coreWidth{4, 2};
inline constexpr Field coreHeight{6, 2};
inline constexpr Field coreBits{10, 2};

// All others.
inline constexpr Field headerSize{0, 4};
inline constexpr Field infoWidth{4, 4};  ///< signed
inline constexpr Field infoHeight{8, 4}; ///< signed; negative where the first row in the file is the top one
inline constexpr Field infoBits{14, 2};
inline constexpr Field infoCompression{16, 4};
inline constexpr Field pixelsPerMetreX{24, 4};
inline constexpr Field pixelsPerMetreY{28, 4};
inline constexpr Field colorsUsed{32, 4};

// Version 5.
inline constexpr Field colorSpace{56, 4};
inline constexpr Field profileOffset{112, 4}; ///< counted from the second header
inline constexpr Field profileSize{116, 4};

// Values of `infoCompression`. OS/2 2.x means something else by 3 and 4, which is told by its header.
inline constexpr std::uint32_t plain = 0;
inline constexpr std::uint32_t runs8 = 1;
inline constexpr std::uint32_t runs4 = 2;
inline constexpr std::uint32_t bitFields = 3;
inline constexpr std::uint32_t bitFieldsWithAlpha = 6;

// Values of `colorSpace`, four letters each.
inline constexpr std::uint32_t isSRGB = 0x73524742;     ///< "sRGB"
inline constexpr std::uint32_t hasProfile = 0x4d424544; ///< "MBED"
inline constexpr std::uint32_t isUnstated = 0x57696e20; ///< "Win ", which promises nothing

/// Rows are filled up to whole groups of 4 bytes.
constexpr std::uint64_t rowBytes(std::uint32_t pixels, std::uint32_t bitsPerPixel) {
    return (std::uint64_t{pixels} * bitsPerPixel + 31) / 32 * 4;
}

} // namespace Imaging::Platform::BmpHeaders
