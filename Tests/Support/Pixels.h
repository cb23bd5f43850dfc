#pragma once

// Small pictures for tests: made at random, read back pixel by pixel, and composed by plain arithmetic.

#include "Platform/Graphics/BitmapImageRep.h"
#include "Platform/Graphics/Cairo/CairoSupport.h"
#include "Platform/Graphics/GraphicsContext.h"
#include "Platform/Graphics/Image.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <functional>
#include <iostream>
#include <memory>
#include <ostream>
#include <random>
#include <stdexcept>
#include <vector>

namespace Pixels {

/// One pixel, premultiplied unless a test says otherwise.
struct Rgba {
    std::uint8_t r = 0;
    std::uint8_t g = 0;
    std::uint8_t b = 0;
    std::uint8_t a = 0;

    friend bool operator==(const Rgba&, const Rgba&) = default;
};

inline std::ostream& operator<<(std::ostream& out, const Rgba& pixel) {
    return out << '(' << int{pixel.r} << ' ' << int{pixel.g} << ' ' << int{pixel.b} << ' ' << int{pixel.a}
               << ')';
}

inline constexpr Rgba transparent{0, 0, 0, 0};
inline constexpr Rgba black{0, 0, 0, 255};
inline constexpr Rgba white{255, 255, 255, 255};
inline constexpr Rgba red{255, 0, 0, 255};
inline constexpr Rgba green{0, 255, 0, 255};
inline constexpr Rgba blue{0, 0, 255, 255};

/// A picture as a plain table. (0, 0) is the top left pixel and y counts rows downward, as in memory.
class Grid {
public:
    Grid() = default;
    Grid(int width, int height, Rgba fill = transparent)
        : m_width(width),
          m_height(height),
          m_pixels(static_cast<std::size_t>(width) * static_cast<std::size_t>(height), fill) {}

    int width() const { return m_width; }
    int height() const { return m_height; }
    bool contains(int x, int y) const { return x >= 0 && y >= 0 && x < m_width && y < m_height; }
    Rgba& at(int x, int y) { return m_pixels[index(x, y)]; }
    const Rgba& at(int x, int y) const { return m_pixels[index(x, y)]; }

    /// The pixel whose lower left corner is at (x, y) of a space with y upward.
    const Rgba& above(int x, int y) const { return at(x, m_height - 1 - y); }

    friend bool operator==(const Grid&, const Grid&) = default;

private:
    std::size_t index(int x, int y) const {
        if (!contains(x, y)) throw std::out_of_range("pixel outside the grid");
        return static_cast<std::size_t>(y) * static_cast<std::size_t>(m_width) + static_cast<std::size_t>(x);
    }

    int m_width = 0;
    int m_height = 0;
    std::vector<Rgba> m_pixels;
};

/// Where two pictures differ most.
struct Difference {
    int largest = 0;
    int x = 0;
    int y = 0;
};

inline int difference(Rgba a, Rgba b) {
    return std::max({std::abs(a.r - b.r), std::abs(a.g - b.g), std::abs(a.b - b.b), std::abs(a.a - b.a)});
}

inline Difference difference(const Grid& a, const Grid& b) {
    Difference found;
    for (int y = 0; y < a.height(); ++y) {
        for (int x = 0; x < a.width(); ++x) {
            const int here = difference(a.at(x, y), b.at(x, y));
            if (here > found.largest) found = {here, x, y};
        }
    }
    return found;
}

/// Succeeds when two pictures are of one size and differ by `tolerance` at most; says where they do not.
inline testing::AssertionResult areAlike(const Grid& actual, const Grid& expected, int tolerance = 0) {
    if (actual.width() != expected.width() || actual.height() != expected.height()) {
        return testing::AssertionFailure() << "sizes " << actual.width() << " x " << actual.height()
                                           << " and " << expected.width() << " x " << expected.height();
    }
    const Difference found = difference(actual, expected);
    if (found.largest <= tolerance) return testing::AssertionSuccess();
    return testing::AssertionFailure()
           << "largest difference " << found.largest << " at column " << found.x << ", row " << found.y
           << ": " << actual.at(found.x, found.y) << " instead of " << expected.at(found.x, found.y);
}

/// A generator for one test. The seed is printed; IMAGING_TEST_SEED in the environment replaces it.
class Random {
public:
    explicit Random(std::uint32_t seed) : m_engine(chosen(seed)) {}

    std::mt19937& engine() { return m_engine; }
    int integer(int low, int high) { return std::uniform_int_distribution<int>(low, high)(m_engine); }
    double real(double low, double high) {
        return std::uniform_real_distribution<double>(low, high)(m_engine);
    }
    float single(float low, float high) { return static_cast<float>(real(low, high)); }

    /// 0 to 255, where the ends come up as often as all the rest.
    int sample(int highest = 255) {
        const int choice = integer(0, 7);
        return choice == 0 ? 0 : choice == 1 ? highest : integer(0, highest);
    }

    Rgba pixel() {
        const int alpha = sample();
        const auto color = [&] { return static_cast<std::uint8_t>(sample(alpha)); };
        const std::uint8_t r = color();
        const std::uint8_t g = color();
        return {r, g, color(), static_cast<std::uint8_t>(alpha)};
    }

    /// Premultiplied pixels with many transparent and opaque ones among them.
    Grid grid(int width, int height) {
        Grid made(width, height);
        for (int y = 0; y < height; ++y) {
            for (int x = 0; x < width; ++x) made.at(x, y) = pixel();
        }
        return made;
    }

private:
    static std::uint32_t chosen(std::uint32_t seed) {
        const char* const wanted = std::getenv("IMAGING_TEST_SEED");
        if (wanted != nullptr) seed = static_cast<std::uint32_t>(std::strtoul(wanted, nullptr, 10));
        std::cout << "seed " << seed << std::endl;
        return seed;
    }

    std::mt19937 m_engine;
};

/// A bitmap of calibrated RGB with alpha last, premultiplied.
inline std::shared_ptr<Imaging::Platform::NSBitmapImageRep> bitmapOf(const Grid& grid) {
    Imaging::Platform::NSBitmapDescription description;
    description.pixelsWide = grid.width();
    description.pixelsHigh = grid.height();
    auto bitmap = Imaging::Platform::NSBitmapImageRep::bitmapWithDescription(description);
    for (int y = 0; y < grid.height(); ++y) {
        for (int x = 0; x < grid.width(); ++x) {
            const Rgba& p = grid.at(x, y);
            bitmap->setPixelAt(x, y, {p.r, p.g, p.b, p.a});
        }
    }
    return bitmap;
}

/// A picture of one point a pixel.
inline std::shared_ptr<Imaging::Platform::NSImage> imageOf(const Grid& grid) {
    auto image = std::make_shared<Imaging::Platform::NSImage>(
        Imaging::Platform::NSMakeSize(static_cast<float>(grid.width()), static_cast<float>(grid.height())));
    image->addRepresentation(bitmapOf(grid));
    return image;
}

/// A bitmap of 8-bit premultiplied RGB with alpha last as a table.
inline Grid gridOf(const Imaging::Platform::NSBitmapImageRep& bitmap) {
    Grid grid(static_cast<int>(bitmap.pixelsWide()), static_cast<int>(bitmap.pixelsHigh()));
    if (bitmap.bitsPerSample() != 8 || bitmap.samplesPerPixel() != 4 || !bitmap.hasAlpha()) {
        throw std::invalid_argument("only RGBA of 8 bits is read here");
    }
    for (int y = 0; y < grid.height(); ++y) {
        for (int x = 0; x < grid.width(); ++x) {
            const auto p = bitmap.pixelAt(x, y);
            const auto byte = [&](std::size_t i) { return static_cast<std::uint8_t>(p[i]); };
            grid.at(x, y) = {byte(0), byte(1), byte(2), byte(3)};
        }
    }
    return grid;
}

/// An ARGB32 surface as a table, straight from its memory.
inline Grid gridOf(cairo_surface_t* surface) {
    cairo_surface_flush(surface);
    Grid grid(cairo_image_surface_get_width(surface), cairo_image_surface_get_height(surface));
    const unsigned char* const data = cairo_image_surface_get_data(surface);
    const auto stride = static_cast<std::ptrdiff_t>(cairo_image_surface_get_stride(surface));
    for (int y = 0; y < grid.height(); ++y) {
        for (int x = 0; x < grid.width(); ++x) {
            std::uint32_t word = 0;
            std::copy_n(data + y * stride + std::ptrdiff_t{4} * x, 4,
                        reinterpret_cast<unsigned char*>(&word));
            const auto byte = [word](int shift) { return static_cast<std::uint8_t>(word >> shift); };
            grid.at(x, y) = {byte(16), byte(8), byte(0), byte(24)};
        }
    }
    return grid;
}

inline void fillSurface(cairo_surface_t* surface, const Grid& grid) {
    cairo_surface_flush(surface);
    unsigned char* const data = cairo_image_surface_get_data(surface);
    const auto stride = static_cast<std::ptrdiff_t>(cairo_image_surface_get_stride(surface));
    for (int y = 0; y < grid.height(); ++y) {
        for (int x = 0; x < grid.width(); ++x) {
            const Rgba& p = grid.at(x, y);
            const std::uint32_t word = std::uint32_t{p.a} << 24 | std::uint32_t{p.r} << 16 |
                                       std::uint32_t{p.g} << 8 | std::uint32_t{p.b};
            std::copy_n(reinterpret_cast<const unsigned char*>(&word), 4,
                        data + y * stride + std::ptrdiff_t{4} * x);
        }
    }
    cairo_surface_mark_dirty(surface);
}

/// Pixels to draw on, with a context of theirs as the thread's current one until the end of the scope.
class Canvas {
public:
    Canvas(int width, int height, Rgba fill = transparent) : Canvas(Grid(width, height, fill)) {}

    explicit Canvas(const Grid& content)
        : m_surface(cairo_image_surface_create(CAIRO_FORMAT_ARGB32, content.width(), content.height())),
          m_cairo(cairo_create(m_surface.get())),
          m_context(Imaging::Platform::NSGraphicsContext::graphicsContextWithCairo(m_cairo.get(),
                                                                                   content.height())),
          m_previous(Imaging::Platform::NSGraphicsContext::currentContext()) {
        fillSurface(m_surface.get(), content);
        Imaging::Platform::NSGraphicsContext::setCurrentContext(m_context);
    }
    ~Canvas() { Imaging::Platform::NSGraphicsContext::setCurrentContext(m_previous); }
    Canvas(const Canvas&) = delete;
    Canvas& operator=(const Canvas&) = delete;

    Imaging::Platform::NSGraphicsContext& context() { return *m_context; }
    cairo_t* cairo() { return m_cairo.get(); }
    cairo_surface_t* surface() { return m_surface.get(); }
    Grid pixels() { return gridOf(m_surface.get()); }

private:
    Imaging::Platform::CairoSurface m_surface;
    Imaging::Platform::CairoContext m_cairo;
    std::shared_ptr<Imaging::Platform::NSGraphicsContext> m_context;
    std::shared_ptr<Imaging::Platform::NSGraphicsContext> m_previous;
};

/// What a drawn picture shows, one pixel a point, copied onto pixels of their own.
inline Grid shownBy(Imaging::Platform::NSImage& image, int width, int height) {
    Canvas canvas(width, height);
    image.drawInRect(
        Imaging::Platform::NSMakeRect(0, 0, static_cast<float>(width), static_cast<float>(height)),
        Imaging::Platform::NSZeroRect, Imaging::Platform::NSCompositeCopy, 1);
    return canvas.pixels();
}

/// A premultiplied pixel of red, green, blue and alpha from 0 to 1.
using Color = std::array<double, 4>;

inline Color colorOf(Rgba p) { return {p.r / 255.0, p.g / 255.0, p.b / 255.0, p.a / 255.0}; }

inline Rgba rounded(const Color& color) {
    const auto byte = [](double v) {
        return static_cast<std::uint8_t>(std::lround(std::clamp(v, 0.0, 1.0) * 255));
    };
    return {byte(color[0]), byte(color[1]), byte(color[2]), byte(color[3])};
}

/// A compositing operation on one premultiplied pixel, by its formula.
inline Color operationResult(int operation, const Color& s, const Color& d) {
    const double sa = s[3];
    const double da = d[3];
    const double darkerAlpha = std::min(1.0, sa + da);
    const auto sample = [&](double S, double D) -> double {
        switch (operation) {
        case 0:
            return 0;
        case 1:
            return S;
        case 3:
            return S * da;
        case 4:
            return S * (1 - da);
        case 5:
            return S * da + D * (1 - sa);
        case 6:
            return D + S * (1 - da);
        case 7:
            return D * sa;
        case 8:
            return D * (1 - sa);
        case 9:
            return D * sa + S * (1 - da);
        case 10:
            return S * (1 - da) + D * (1 - sa);
        case 11:
            return std::max(0.0, S + D - sa - da + darkerAlpha);
        case 13:
            return std::min(1.0, S + D);
        default:
            return S + D * (1 - sa);
        }
    };
    Color result;
    for (std::size_t i = 0; i < 4; ++i) result[i] = sample(s[i], d[i]);
    if (operation == 11) result[3] = darkerAlpha;
    return result;
}

/// The operation on S scaled by the fraction, in proportion to the coverage.
inline Color composed(int operation, Rgba source, Rgba destination, double fraction, double coverage) {
    Color s = colorOf(source);
    for (double& sample : s) sample *= fraction;
    const Color d = colorOf(destination);
    Color result = operationResult(operation, s, d);
    for (std::size_t i = 0; i < 4; ++i) result[i] = d[i] + (result[i] - d[i]) * coverage;
    return result;
}

} // namespace Pixels
