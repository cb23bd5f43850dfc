// Moves by parts of a pixel: every device pixel mixes the same four neighbours by the same factors.

#include "Platform/Painter/ShiftedSampler.h"

#include "Platform/Pixels/Rows/SampleMixing.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace Imaging::Platform {

namespace {

/// Device pixel i shows pixels i + whole and i + whole + 1, the second one to a part of 1/32768.
struct Shift {
    std::int64_t whole = 0;
    std::int16_t part = 0;
};

/// Rounded as the scaled sampler does it, where the first pixel's share is what is rounded.
Shift shiftOf(double offset) {
    constexpr double one = 32768;
    const double whole = std::floor(offset);
    const auto rest = static_cast<std::int64_t>(one) - std::llround((1 - (offset - whole)) * one);
    return {static_cast<std::int64_t>(whole), static_cast<std::int16_t>(std::min<std::int64_t>(rest, 32767))};
}

class ShiftedReader : public RowReader {
public:
    ShiftedReader(const PixelImage& image, Shift right, Shift down)
        : m_image(image), m_right(right), m_down(down) {}

    const std::uint32_t* read(int x, int y, int count, std::uint32_t* words) override {
        const std::uint32_t* const above = row(y + m_down.whole);
        const std::uint32_t* const below = row(y + m_down.whole + 1);
        const std::int64_t column = x + m_right.whole;
        const std::int64_t last = m_image.width() - 1;
        // Where both columns of a pixel lie within the picture they stand side by side.
        const std::int64_t from = std::clamp<std::int64_t>(-column, 0, count);
        const std::int64_t end = std::clamp<std::int64_t>(last - column, from, count);
        mixAtEdge(above, below, column, 0, from, words);
        mixShifted(above + (from < end ? column + from : 0), below + (from < end ? column + from : 0),
                   m_right.part, m_down.part, words + from, static_cast<std::size_t>(end - from));
        mixAtEdge(above, below, column, end, count, words);
        return words;
    }

private:
    const std::uint32_t* row(std::int64_t y) const {
        return m_image.row(static_cast<int>(std::clamp<std::int64_t>(y, 0, m_image.height() - 1)));
    }

    /// Pixels `from` to `end`, whose neighbours to the right lie outside or at the picture's edge.
    void mixAtEdge(const std::uint32_t* above, const std::uint32_t* below, std::int64_t column,
                   std::int64_t from, std::int64_t end, std::uint32_t* words) const {
        const std::int64_t last = m_image.width() - 1;
        for (std::int64_t i = from; i < end; ++i) {
            const std::int64_t left = std::clamp<std::int64_t>(column + i, 0, last);
            const std::int64_t right = std::clamp<std::int64_t>(column + i + 1, 0, last);
            const std::array<std::uint32_t, 2> a{above[left], above[right]};
            const std::array<std::uint32_t, 2> b{below[left], below[right]};
            mixShiftedPlain(a.data(), b.data(), m_right.part, m_down.part, words + i, 1);
        }
    }

    const PixelImage& m_image;
    Shift m_right;
    Shift m_down;
};

class ShiftedSampler : public RowSampler {
public:
    ShiftedSampler(const PlacedLevel& level, Shift right, Shift down)
        : m_image(level.image), m_opaque(level.opaque), m_right(right), m_down(down) {}

    bool isOpaque() const override { return m_opaque; }

    std::unique_ptr<RowReader> reader() const override {
        return std::make_unique<ShiftedReader>(*m_image, m_right, m_down);
    }

private:
    std::shared_ptr<const PixelImage> m_image;
    bool m_opaque;
    Shift m_right;
    Shift m_down;
};

/// Whether neighbouring device pixels show neighbouring pixels, as far as can be seen within an area. Cairo
/// knows places to 1/256 of a pixel, so this comes to a fraction of that.
bool onlyMoves(const Affine& inverse, PixelRect area) {
    constexpr double invisible = 1.0 / 1024;
    const double length =
        std::max({std::abs(area.left), std::abs(area.right), std::abs(area.top), std::abs(area.bottom)});
    const auto isSmall = [length](double factor) { return std::abs(factor) * length <= invisible; };
    return isSmall(inverse.xx - 1) && isSmall(inverse.yy - 1) && isSmall(inverse.xy) && isSmall(inverse.yx);
}

} // namespace

std::unique_ptr<RowSampler> makeShiftedSampler(const PlacedLevel& level, PixelRect area) {
    constexpr double farthest = 1e9;
    const Affine& inverse = level.inverse;
    if (!onlyMoves(inverse, area) || !(std::abs(inverse.x0) < farthest) ||
        !(std::abs(inverse.y0) < farthest)) {
        return nullptr;
    }
    return std::make_unique<ShiftedSampler>(level, shiftOf(inverse.x0), shiftOf(inverse.y0));
}

} // namespace Imaging::Platform
