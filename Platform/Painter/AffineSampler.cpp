// Any other transform: the picture is followed along each device row and interpolated bilinearly, several
// times a pixel where it is reduced.

#include "Platform/Painter/AffineSampler.h"

#include "Platform/Pixels/Rows/SampleMixing.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>

namespace Imaging::Platform {

namespace {

/// A point among pixel centres, on which whole numbers lie.
struct Point {
    double x;
    double y;
};

class AffineReader : public RowReader {
public:
    AffineReader(const PixelImage& image, const Affine& inverse, int across, int down)
        : m_image(image), m_inverse(inverse), m_across(across), m_down(down) {}

    const std::uint32_t* read(int x, int y, int count, std::uint32_t* words) override {
        for (int done = 0; done < count; done += atOnce) {
            const int now = std::min(atOnce, count - done);
            if (m_across * m_down == 1) {
                sample(x + done + 0.5, y + 0.5, now, words + done);
            } else {
                sampleMeans(x + done, y, now, words + done);
            }
        }
        return words;
    }

private:
    static constexpr int atOnce = static_cast<int>(squaresAtOnce);

    Point at(double x, double y) const {
        return {m_inverse.xx * x + m_inverse.xy * y + m_inverse.x0 - 0.5,
                m_inverse.yx * x + m_inverse.yy * y + m_inverse.y0 - 0.5};
    }

    /// Narrows the steps `from` to `end` to those whose positions lie in [0, last), less a little, since they
    /// are followed in steps of 1/65536 below.
    static void narrow(double start, double step, int last, int& from, int& end) {
        constexpr double margin = 1.0 / 256;
        const double low = margin - start;
        const double high = last - margin - start;
        const auto whole = [](double value) { return static_cast<int>(std::clamp(value, -1e6, 1e6)); };
        if (step > 0) {
            from = std::max(from, whole(std::ceil(low / step)));
            end = std::min(end, whole(std::floor(high / step)));
        } else if (step < 0) {
            from = std::max(from, whole(std::ceil(high / step)));
            end = std::min(end, whole(std::floor(low / step)));
        } else if (!(low <= 0 && high > 0)) {
            end = from;
        }
    }

    void sample(double x, double y, int count, std::uint32_t* words) {
        const Point first = at(x, y);
        int from = 0;
        int end = count;
        narrow(first.x, m_inverse.xx, m_image.width() - 1, from, end);
        narrow(first.y, m_inverse.yx, m_image.height() - 1, from, end);
        if (from >= end) from = end = count;
        for (int i = 0; i < from; ++i) gatherClamped(at(x + i, y), static_cast<std::size_t>(i));
        if (from < end) gatherInside(at(x + from, y), from, end);
        for (int i = end; i < count; ++i) gatherClamped(at(x + i, y), static_cast<std::size_t>(i));
        std::array<std::uint32_t, squaresAtOnce> mixed;
        mixSquares(m_squares, static_cast<std::size_t>(count), mixed.data());
        std::memcpy(words, mixed.data(), static_cast<std::size_t>(count) * sizeof(std::uint32_t));
    }

    /// All points and their neighbours lie in the picture. Over 64 pixels the steps' rounding adds up to less
    /// than 1/2000 of a pixel.
    void gatherInside(Point first, int from, int end) {
        constexpr double one = 65536;
        const auto column = static_cast<std::int32_t>(first.x);
        const auto row = static_cast<std::int32_t>(first.y);
        auto x = static_cast<std::int32_t>(std::lround((first.x - column) * one));
        auto y = static_cast<std::int32_t>(std::lround((first.y - row) * one));
        const auto stepX = static_cast<std::int32_t>(std::lround(m_inverse.xx * one));
        const auto stepY = static_cast<std::int32_t>(std::lround(m_inverse.yx * one));
        const std::uint32_t* const origin = m_image.row(row) + column;
        const std::ptrdiff_t width = m_image.width();
        for (int i = from; i < end; ++i, x += stepX, y += stepY) {
            const std::uint32_t* const above = origin + (y >> 16) * width + (x >> 16);
            std::memcpy(&m_squares.above[i], above, sizeof(std::uint64_t));
            std::memcpy(&m_squares.below[i], above + width, sizeof(std::uint64_t));
            m_squares.right[i] = static_cast<std::uint32_t>(x);
            m_squares.down[i] = static_cast<std::uint32_t>(y);
        }
    }

    void gatherClamped(Point point, std::size_t i) {
        const double x = std::clamp(point.x, 0.0, static_cast<double>(m_image.width() - 1));
        const double y = std::clamp(point.y, 0.0, static_cast<double>(m_image.height() - 1));
        const auto left = static_cast<int>(x);
        const auto top = static_cast<int>(y);
        const int right = std::min(left + 1, m_image.width() - 1);
        const int bottom = std::min(top + 1, m_image.height() - 1);
        const auto pair = [&](int row) {
            return m_image.row(row)[left] | std::uint64_t{m_image.row(row)[right]} << 32;
        };
        m_squares.above[i] = pair(top);
        m_squares.below[i] = pair(bottom);
        m_squares.right[i] = static_cast<std::uint32_t>((x - left) * 65536);
        m_squares.down[i] = static_cast<std::uint32_t>((y - top) * 65536);
    }

    /// Means of samples spread evenly over each device pixel.
    void sampleMeans(int x, int y, int count, std::uint32_t* words) {
        std::array<std::uint16_t, squaresAtOnce * 4> sums{}; // of up to 16 · 16 samples of 255
        for (int j = 0; j < m_down; ++j) {
            for (int i = 0; i < m_across; ++i) {
                sample(x + (i + 0.5) / m_across, y + (j + 0.5) / m_down, count, words);
                for (int k = 0; k < count * 4; ++k) {
                    sums[static_cast<std::size_t>(k)] = static_cast<std::uint16_t>(
                        sums[static_cast<std::size_t>(k)] + (words[k / 4] >> 8 * (k % 4) & 0xff));
                }
            }
        }
        const auto samples = static_cast<std::uint32_t>(m_across * m_down);
        for (int k = 0; k < count; ++k) {
            std::uint32_t word = 0;
            for (std::size_t i = 0; i < 4; ++i) {
                word |= (sums[static_cast<std::size_t>(k) * 4 + i] + samples / 2) / samples << 8 * i;
            }
            words[k] = word;
        }
    }

    const PixelImage& m_image;
    Affine m_inverse;
    int m_across;
    int m_down;
    Squares m_squares{};
};

class AffineSampler : public RowSampler {
public:
    AffineSampler(const PlacedLevel& level, int across, int down)
        : m_level(level), m_across(across), m_down(down) {}

    bool isOpaque() const override { return m_level.opaque; }

    std::unique_ptr<RowReader> reader() const override {
        return std::make_unique<AffineReader>(*m_level.image, m_level.inverse, m_across, m_down);
    }

private:
    PlacedLevel m_level;
    int m_across;
    int m_down;
};

} // namespace

std::unique_ptr<RowSampler> makeAffineSampler(const PlacedLevel& level, int across, int down) {
    return std::make_unique<AffineSampler>(level, across, down);
}

} // namespace Imaging::Platform
