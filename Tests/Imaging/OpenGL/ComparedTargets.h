#pragma once

// The same drawing by an OpenGL target, offscreen on the machine's software, and by the 2-D target.

#include "Imaging/CocoaGraphicsContext.h"
#include "Tests/Imaging/OpenGL/TargetFixture.h"
#include "Tests/Platform/OpenGL/OpenGLSurface.h"

#include <functional>
#include <string>
#include <vector>

namespace ImagingTests {

using Imaging::CocoaGraphicsContext;
using Imaging::GraphicsContext;
using Imaging::Platform::NSOpenGLProfile;

/// What a target is to do in a frame of a size.
using Drawing = std::function<void(GraphicsContext&)>;

/// A kind of context, and what is assumed of its textures.
struct Surroundings {
    NSOpenGLProfile profile = Imaging::Platform::NSOpenGLProfileVersionLegacy;
    bool rectangles = true;
    int largestSide = 512;
};

inline std::string nameOf(const Surroundings& surroundings) {
    std::string name = Pixels::profileName({surroundings.profile, 0});
    name += surroundings.rectangles ? "Rectangle" : "PowerOfTwo";
    return name + std::to_string(surroundings.largestSide);
}

/// Compatibility and core contexts with and without rectangle textures, ES without; caps of 64 and 512.
inline std::vector<Surroundings> allSurroundings() {
    using namespace Imaging::Platform;
    std::vector<Surroundings> all;
    for (const int side : {64, 512}) {
        for (const NSOpenGLProfile profile : {NSOpenGLProfileVersionLegacy, NSOpenGLProfileVersion3_2Core}) {
            all.push_back({profile, true, side});
            all.push_back({profile, false, side});
        }
        all.push_back({NSOpenGLProfileVersionES3_0, false, side});
    }
    return all;
}

/// An OpenGL target whose frames are read back. What it logs fails the test.
class OffscreenTarget {
public:
    OffscreenTarget(const Surroundings& surroundings, int width, int height)
        : m_width(width), m_height(height), m_view(std::make_shared<NSView>(rect())) {
        Imaging::Platform::setLogSink([](const std::string& line) { ADD_FAILURE() << line; });
        OpenGLTexture::assumeHardwareAnswers(surroundings.rectangles, surroundings.largestSide);
        m_target.setProfile(surroundings.profile);
        m_target.prepareOffscreen(m_view.get());
    }
    ~OffscreenTarget() {
        OpenGLTexture::forgetHardwareAnswers();
        Imaging::Platform::setLogSink(nullptr);
    }
    OffscreenTarget(const OffscreenTarget&) = delete;
    OffscreenTarget& operator=(const OffscreenTarget&) = delete;

    NSRect rect() const {
        return NSMakeRect(0, 0, static_cast<float>(m_width), static_cast<float>(m_height));
    }

    Grid frame(const Drawing& drawing) {
        m_target.beginDrawing(rect());
        drawing(m_target);
        Grid grid = Pixels::pixelsOf(OpenGLCommands::current(), m_width, m_height);
        m_target.endDrawing();
        return grid;
    }

    OpenGLGraphicsContext& target() { return m_target; }

private:
    int m_width;
    int m_height;
    std::shared_ptr<NSView> m_view;
    OpenGLGraphicsContext m_target;
};

/// The same on white ground by the 2-D target.
inline Grid frameIn2D(int width, int height, const Drawing& drawing) {
    return drawnOn(width, height, [&] {
        const Imaging::Platform::NSGraphicsStateScope state;
        const NSRect rect = NSMakeRect(0, 0, static_cast<float>(width), static_cast<float>(height));
        Imaging::Platform::NSColor::whiteColor().set();
        Imaging::Platform::NSRectFill(rect);
        CocoaGraphicsContext target;
        target.beginDrawing(rect);
        drawing(target);
        target.endDrawing();
    });
}

/// How far the colours of two frames are apart, in 255ths.
struct Distance {
    double mean = 0;
    int largest = 0;              ///< anywhere
    int largestAwayFromEdges = 0; ///< more than two pixels away from a step in the second picture
    int x = 0;                    ///< where the latter is
    int y = 0;
};

inline int colourDifference(Rgba a, Rgba b) {
    return std::max({std::abs(a.r - b.r), std::abs(a.g - b.g), std::abs(a.b - b.b)});
}

/// Whether two neighbours within two pixels differ by more than smooth pictures do.
inline bool isNearAnEdge(const Grid& grid, int x, int y) {
    for (int row = y - 3; row <= y + 2; ++row) {
        for (int column = x - 3; column <= x + 2; ++column) {
            for (const auto& [dx, dy] : {std::pair{1, 0}, {0, 1}}) {
                if (!grid.contains(column, row) || !grid.contains(column + dx, row + dy)) continue;
                if (colourDifference(grid.at(column, row), grid.at(column + dx, row + dy)) > 12) return true;
            }
        }
    }
    return false;
}

inline Distance distanceOf(const Grid& a, const Grid& b) {
    Distance distance;
    double sum = 0;
    for (int y = 0; y < b.height(); ++y) {
        for (int x = 0; x < b.width(); ++x) {
            const int here = colourDifference(a.at(x, y), b.at(x, y));
            sum += here;
            distance.largest = std::max(distance.largest, here);
            if (here > distance.largestAwayFromEdges && !isNearAnEdge(b, x, y)) {
                distance.largestAwayFromEdges = here;
                distance.x = x;
                distance.y = y;
            }
        }
    }
    distance.mean = sum / b.width() / b.height();
    return distance;
}

/// An opaque picture whose neighbouring pixels differ little, darker than white everywhere, without
/// symmetry.
inline Grid smoothPicture(int width, int height, double phase = 0) {
    Grid grid(width, height);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            const auto wave = [&](double across, double up, double shift) {
                const double angle = across * x / 40 + up * y / 50 + shift + phase;
                return static_cast<std::uint8_t>(std::lround(90 + 70 * std::sin(angle)));
            };
            grid.at(x, y) = {wave(1, 0.5, 0), wave(-0.6, 1, 1), wave(0.3, -0.9, 2), 255};
        }
    }
    return grid;
}

/// The same, more transparent from left to right.
inline Grid fadingPicture(int width, int height) {
    Grid grid = smoothPicture(width, height);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            Rgba& pixel = grid.at(x, y);
            const double alpha = 1 - 0.8 * x / width;
            const auto scaled = [&](std::uint8_t v) { return static_cast<std::uint8_t>(v * alpha); };
            pixel = {scaled(pixel.r), scaled(pixel.g), scaled(pixel.b), scaled(255)};
        }
    }
    return grid;
}

} // namespace ImagingTests
