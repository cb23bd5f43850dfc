#pragma once

// Pictures in memory with guarded rows, and convolution by plain arithmetic on tables, for the tests of the
// workers and of the vector code.

#include "Imaging/Pixels/ConvolutionPlain.h"
#include "Tests/Support/Pixels.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

namespace ImagingTests {

/// Interleaved samples, with guard bytes before, behind and between the rows.
class GuardedSamples {
public:
    GuardedSamples(int width, int height, int samples, std::size_t padding)
        : m_width(width),
          m_height(height),
          m_samples(samples),
          m_bytes_per_row(rowSamples() + padding),
          m_bytes(2 * guardBytes + m_bytes_per_row * static_cast<std::size_t>(height), guard) {
        for (int y = 0; y < height; ++y) std::memset(row(y), 0, rowSamples());
    }

    std::uint8_t* data() { return m_bytes.data() + guardBytes; }
    std::uint32_t bytesPerRow() const { return static_cast<std::uint32_t>(m_bytes_per_row); }
    int width() const { return m_width; }
    int height() const { return m_height; }
    int samples() const { return m_samples; }
    std::uint8_t& at(int x, int y, int sample) { return row(y)[x * m_samples + sample]; }

    void fillAtRandom(Pixels::Random& random) {
        for (int y = 0; y < m_height; ++y) {
            for (int i = 0; i < m_width * m_samples; ++i)
                row(y)[i] = static_cast<std::uint8_t>(random.sample());
        }
    }

    bool guardsAreIntact() {
        const auto isGuard = [](std::uint8_t byte) { return byte == guard; };
        for (int y = 0; y < m_height; ++y) {
            if (!std::all_of(row(y) + rowSamples(), row(y) + m_bytes_per_row, isGuard)) return false;
        }
        return std::all_of(m_bytes.begin(), m_bytes.begin() + guardBytes, isGuard) &&
               std::all_of(m_bytes.end() - guardBytes, m_bytes.end(), isGuard);
    }

private:
    static constexpr std::ptrdiff_t guardBytes = 64;
    static constexpr std::uint8_t guard = 0xC7;

    std::size_t rowSamples() const {
        return static_cast<std::size_t>(m_width) * static_cast<std::size_t>(m_samples);
    }
    std::uint8_t* row(int y) { return data() + static_cast<std::size_t>(y) * m_bytes_per_row; }

    int m_width;
    int m_height;
    int m_samples;
    std::size_t m_bytes_per_row;
    std::vector<std::uint8_t> m_bytes;
};

struct Taps2 {
    int width;
    int height;
    std::vector<std::int32_t> taps;
    std::int32_t divisor;
};

/// The sum in 32 bits with a sign, divided by truncation, limited to a sample; worked out in 64 bits.
inline int limitedQuotient(std::int64_t sum, std::int64_t divisor) {
    std::int64_t wrapped = sum % (std::int64_t{1} << 32);
    if (wrapped >= std::int64_t{1} << 31) wrapped -= std::int64_t{1} << 32;
    if (wrapped < -(std::int64_t{1} << 31)) wrapped += std::int64_t{1} << 32;
    return static_cast<int>(std::clamp<std::int64_t>(wrapped / divisor, 0, 255));
}

/// What the two-dimensional path makes of a picture, on a destination of zero bytes.
inline void referenceRectangle(GuardedSamples& source, GuardedSamples& result, const Taps2& kernel) {
    const int hx = kernel.width / 2;
    const int hy = kernel.height / 2;
    const int w = source.width();
    const int h = source.height();
    for (int s = 0; s < source.samples(); ++s) {
        for (int y = hx; y < h - hx; ++y) {
            for (int j = 0; j < w - 2 * hy; ++j) {
                if (hx + j >= w) continue;
                std::int64_t sum = 0;
                for (int ky = 0; ky < kernel.height; ++ky) {
                    for (int kx = 0; kx < kernel.width; ++kx) {
                        const int sx = std::clamp(j + (hy - hx) + kx, 0, w - 1);
                        const int sy = std::clamp(y - hy + ky, 0, h - 1);
                        const auto tap =
                            kernel.taps[static_cast<std::size_t>(std::int64_t{ky} * kernel.width + kx)];
                        sum += std::int64_t{tap} * source.at(sx, sy, s);
                    }
                }
                result.at(hx + j, y, s) = static_cast<std::uint8_t>(limitedQuotient(sum, kernel.divisor));
            }
        }
        for (int y = 0; y < h; ++y) {
            for (int x = 0; x < w; ++x) {
                if (y < hy || y >= h - hy || x < hx || x >= w - hx) result.at(x, y, s) = source.at(x, y, s);
            }
        }
    }
}

/// One of the passes of a row of taps: along the rows, or else along the columns.
inline void referenceLines(GuardedSamples& source, GuardedSamples& result, const Taps2& kernel,
                           bool alongRows) {
    const int half = kernel.width / 2;
    const int length = alongRows ? source.width() : source.height();
    for (int y = 0; y < source.height(); ++y) {
        for (int x = 0; x < source.width(); ++x) {
            const int position = alongRows ? x : y;
            for (int s = 0; s < source.samples(); ++s) {
                if (position < half || position >= length - half) {
                    result.at(x, y, s) = source.at(x, y, s);
                    continue;
                }
                std::int64_t sum = 0;
                for (int k = 0; k < kernel.width; ++k) {
                    const int at = position - half + k;
                    const int sample = alongRows ? source.at(at, y, s) : source.at(x, at, s);
                    sum += std::int64_t{kernel.taps[static_cast<std::size_t>(k)]} * sample;
                }
                result.at(x, y, s) = static_cast<std::uint8_t>(limitedQuotient(sum, kernel.divisor));
            }
        }
    }
}

inline testing::AssertionResult areEqual(GuardedSamples& actual, GuardedSamples& expected) {
    for (int y = 0; y < actual.height(); ++y) {
        for (int x = 0; x < actual.width(); ++x) {
            for (int s = 0; s < actual.samples(); ++s) {
                if (actual.at(x, y, s) == expected.at(x, y, s)) continue;
                return testing::AssertionFailure()
                       << "column " << x << ", row " << y << ", sample " << s << ": "
                       << int{actual.at(x, y, s)} << " instead of " << int{expected.at(x, y, s)};
            }
        }
    }
    if (!actual.guardsAreIntact()) return testing::AssertionFailure() << "bytes beside the pixels changed";
    return testing::AssertionSuccess();
}

template<class Record>
Record convolutionRecord(GuardedSamples& source, GuardedSamples& destination, const Taps2& kernel) {
    Record record;
    record.source = source.data();
    record.destination = destination.data();
    record.sourceBytesPerRow = source.bytesPerRow();
    record.destinationBytesPerRow = destination.bytesPerRow();
    record.width = source.width();
    record.height = source.height();
    record.taps = kernel.taps.data();
    record.divisor = kernel.divisor;
    return record;
}

inline Imaging::Convolve2Record rectangleRecord(GuardedSamples& source, GuardedSamples& destination,
                                                const Taps2& kernel) {
    auto record = convolutionRecord<Imaging::Convolve2Record>(source, destination, kernel);
    record.kernelWidth = kernel.width;
    record.kernelHeight = kernel.height;
    return record;
}

inline Imaging::Convolve1Record lineRecord(GuardedSamples& source, GuardedSamples& destination,
                                           const Taps2& kernel) {
    auto record = convolutionRecord<Imaging::Convolve1Record>(source, destination, kernel);
    record.kernelLength = kernel.width;
    return record;
}

inline int someDivisor(Pixels::Random& random, std::int64_t sum) {
    switch (random.integer(0, 4)) {
    case 0:
        return random.integer(0, 1) == 0 ? 1 : -1;
    case 1:
        return random.integer(-3000000, -2);
    case 2:
        return random.integer(2, 2000000000);
    default:
        return sum == 0 ? 1 : static_cast<int>(std::clamp<std::int64_t>(sum, INT32_MIN, INT32_MAX));
    }
}

/// Kernels of all kinds: bells, negative taps, taps beyond 16 bits, sums that wrap, zeros.
inline Taps2 someKernel(Pixels::Random& random, int width, int height) {
    Taps2 kernel{width, height, {}, 1};
    const int kind = random.integer(0, 5);
    std::int64_t sum = 0;
    for (int i = 0; i < width * height; ++i) {
        std::int32_t tap = 0;
        if (kind == 0) tap = random.integer(0, 900);
        if (kind == 1) tap = random.integer(-20, 40);
        if (kind == 2) tap = random.integer(INT32_MIN, INT32_MAX);
        if (kind == 3) tap = random.integer(-3, 3) * 32768 + random.integer(-1, 1);
        if (kind == 4) tap = 5; // one group of all taps
        if (kind == 5) tap = random.integer(0, 3) == 0 ? random.integer(-40000, 40000) : 0;
        kernel.taps.push_back(tap);
        sum += tap;
    }
    kernel.divisor = someDivisor(random, sum);
    return kernel;
}

inline std::string described(const GuardedSamples& picture, const Taps2& kernel) {
    return std::to_string(picture.width()) + " x " + std::to_string(picture.height()) + " of " +
           std::to_string(picture.samples()) + " samples, kernel " + std::to_string(kernel.width) + " x " +
           std::to_string(kernel.height) + " / " + std::to_string(kernel.divisor);
}

} // namespace ImagingTests
