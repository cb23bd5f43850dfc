#pragma once

// Memory in the layouts of bitmap contexts, with bytes around every row that nothing may touch.

#include "Platform/Graphics/CoreGraphics.h"
#include "Tests/Support/Pixels.h"

#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

namespace Pixels {

using namespace Imaging::Platform;

/// A layout of bitmap contexts and of images over memory.
struct Layout {
    bool rgb;
    std::size_t bits;
    CGImageAlphaInfo alpha;

    std::size_t colors() const { return rgb ? 3 : 1; }
    std::size_t samples() const { return colors() + (alpha == kCGImageAlphaNone ? 0 : 1); }
    std::size_t pixelBytes() const { return samples() * bits / 8; }
    bool hasAlpha() const { return alpha >= kCGImageAlphaPremultipliedLast && alpha <= kCGImageAlphaFirst; }
    bool isStraight() const { return alpha == kCGImageAlphaLast || alpha == kCGImageAlphaFirst; }
    bool alphaFirst() const {
        return alpha == kCGImageAlphaPremultipliedFirst || alpha == kCGImageAlphaFirst ||
               alpha == kCGImageAlphaNoneSkipFirst;
    }
    double maximum() const { return bits == 8 ? 255 : 65535; }
    CGColorSpaceRef space() const {
        return rgb ? CGColorSpaceCreateDeviceRGB() : CGColorSpaceCreateDeviceGray();
    }
    std::string name() const {
        return std::string(rgb ? "RGB" : "gray") + " of " + std::to_string(bits) + " bits, alpha " +
               std::to_string(alpha);
    }
};

/// Every layout that an image or a context may have.
inline std::vector<Layout> allLayouts(bool forContexts) {
    std::vector<Layout> all;
    for (const bool rgb : {false, true}) {
        for (const std::size_t bits : {8U, 16U}) {
            for (unsigned alpha = 0; alpha <= kCGImageAlphaNoneSkipFirst; ++alpha) {
                const Layout layout{rgb, bits, static_cast<CGImageAlphaInfo>(alpha)};
                if (!forContexts || !layout.isStraight()) all.push_back(layout);
            }
        }
    }
    return all;
}

/// Pixels in rows with bytes before, between and behind them that nothing may touch.
class GuardedPixels {
public:
    GuardedPixels(const Layout& layout, int width, int height, std::size_t padding)
        : m_layout(layout),
          m_width(width),
          m_height(height),
          m_row_bytes(static_cast<std::size_t>(width) * layout.pixelBytes() + padding),
          m_bytes(guardBytes * 2 + m_row_bytes * static_cast<std::size_t>(height), guard) {}

    std::uint8_t* data() { return m_bytes.data() + guardBytes; }
    std::size_t bytesPerRow() const { return m_row_bytes; }
    const Layout& layout() const { return m_layout; }
    int width() const { return m_width; }
    int height() const { return m_height; }

    unsigned sample(int x, int y, std::size_t index) {
        std::uint16_t value = 0;
        if (m_layout.bits == 8) return *address(x, y, index);
        std::memcpy(&value, address(x, y, index), 2);
        return value;
    }
    void setSample(int x, int y, std::size_t index, unsigned value) {
        const auto word = static_cast<std::uint16_t>(value);
        if (m_layout.bits == 8)
            *address(x, y, index) = static_cast<std::uint8_t>(value);
        else
            std::memcpy(address(x, y, index), &word, 2);
    }

    void fillAtRandom(Random& random) {
        const int maximum = m_layout.bits == 8 ? 255 : 65535;
        for (int y = 0; y < m_height; ++y) {
            for (int x = 0; x < m_width; ++x) {
                const int alpha = random.sample(maximum);
                const bool limited = m_layout.hasAlpha() && !m_layout.isStraight();
                for (std::size_t i = 0; i < m_layout.samples(); ++i) {
                    const bool isAlpha = m_layout.hasAlpha() && i == alphaIndex();
                    const int value = isAlpha ? alpha : random.sample(limited ? alpha : maximum);
                    setSample(x, y, i, static_cast<unsigned>(value));
                }
            }
        }
    }

    /// Premultiplied colour from 0 to 1. `whole` marks what inverted samples are taken from.
    Color meaning(int x, int y, bool inverted = false) {
        const double alpha = m_layout.hasAlpha() ? sample(x, y, alphaIndex()) / m_layout.maximum() : 1;
        const std::size_t first = m_layout.alphaFirst() ? 1 : 0;
        const double whole = m_layout.isStraight() ? 1 : alpha;
        Color color{0, 0, 0, alpha};
        for (std::size_t i = 0; i < 3; ++i) {
            const double value = sample(x, y, first + (m_layout.rgb ? i : 0)) / m_layout.maximum();
            color[i] = (inverted ? whole - value : value) * (m_layout.isStraight() ? alpha : 1);
        }
        return color;
    }

    bool guardsAreIntact() const {
        const auto intact = [this](std::size_t from, std::size_t count) {
            return std::all_of(m_bytes.begin() + static_cast<std::ptrdiff_t>(from),
                               m_bytes.begin() + static_cast<std::ptrdiff_t>(from + count),
                               [](std::uint8_t byte) { return byte == guard; });
        };
        const std::size_t used = static_cast<std::size_t>(m_width) * m_layout.pixelBytes();
        for (std::size_t y = 0; y < static_cast<std::size_t>(m_height); ++y) {
            if (!intact(guardBytes + y * m_row_bytes + used, m_row_bytes - used)) return false;
        }
        return intact(0, guardBytes) && intact(m_bytes.size() - guardBytes, guardBytes);
    }

    CGImageRef image(bool inverted = false) {
        const float decode[2] = {1, 0};
        const auto provider =
            CGDataProviderCreateWithData(data(), m_row_bytes * static_cast<std::size_t>(m_height));
        return CGImageCreate(static_cast<std::size_t>(m_width), static_cast<std::size_t>(m_height),
                             m_layout.bits, m_layout.pixelBytes() * 8, m_row_bytes, m_layout.space(),
                             m_layout.alpha, provider, inverted ? decode : nullptr);
    }

    CGContextRef context() {
        return CGBitmapContextCreate(data(), static_cast<std::size_t>(m_width),
                                     static_cast<std::size_t>(m_height), m_layout.bits, m_row_bytes,
                                     m_layout.space(), m_layout.alpha);
    }

private:
    static constexpr std::size_t guardBytes = 32;
    static constexpr std::uint8_t guard = 0xC7;

    std::size_t alphaIndex() const { return m_layout.alphaFirst() ? 0 : m_layout.colors(); }
    std::uint8_t* address(int x, int y, std::size_t index) {
        return data() + static_cast<std::size_t>(y) * m_row_bytes +
               static_cast<std::size_t>(x) * m_layout.pixelBytes() + index * (m_layout.bits / 8);
    }

    Layout m_layout;
    int m_width;
    int m_height;
    std::size_t m_row_bytes;
    std::vector<std::uint8_t> m_bytes;
};

} // namespace Pixels
