// Pixels that are only put into other places: moves by whole pixels, flips and quarter turns. Each device
// pixel is one of the picture, so nothing is rounded.

#include "Platform/Painter/WholePixelSampler.h"

#include <algorithm>
#include <cmath>
#include <optional>

namespace Imaging::Platform {

namespace {

/// Device pixel (x, y) shows pixel (column + x·columnPerX + y·columnPerY, …) of the picture.
struct WholeMap {
    std::int64_t column;
    std::int64_t row;
    int columnPerX;
    int columnPerY;
    int rowPerX;
    int rowPerY;
};

/// The whole number that a factor stands for over a length, if it is one as far as can be seen.
std::optional<int> wholeFactor(double factor, double length) {
    constexpr double invisible = 1.0 / 1024;
    const double nearest = std::round(factor);
    if (!(std::abs(nearest) <= 1) || std::abs(factor - nearest) * length > invisible) return std::nullopt;
    return static_cast<int>(nearest);
}

std::optional<WholeMap> wholeMap(const Affine& inverse, PixelRect area) {
    const double length =
        std::max({std::abs(area.left), std::abs(area.right), std::abs(area.top), std::abs(area.bottom)});
    const auto xx = wholeFactor(inverse.xx, length);
    const auto xy = wholeFactor(inverse.xy, length);
    const auto yx = wholeFactor(inverse.yx, length);
    const auto yy = wholeFactor(inverse.yy, length);
    if (!xx || !xy || !yx || !yy || *xx * *xy != 0 || *yx * *yy != 0 || *xx * *yy - *xy * *yx == 0) {
        return std::nullopt;
    }
    constexpr double invisible = 1.0 / 512;
    constexpr double farthest = 1e9;
    // The centre of device pixel (0, 0) lies at the centre of this one.
    const double column = (*xx + *xy) * 0.5 + inverse.x0 - 0.5;
    const double row = (*yx + *yy) * 0.5 + inverse.y0 - 0.5;
    if (!(std::abs(column) < farthest) || !(std::abs(row) < farthest) ||
        std::abs(column - std::round(column)) > invisible || std::abs(row - std::round(row)) > invisible) {
        return std::nullopt;
    }
    return WholeMap{std::llround(column), std::llround(row), *xx, *xy, *yx, *yy};
}

class WholePixelReader : public RowReader {
public:
    WholePixelReader(const PixelImage& image, const WholeMap& map) : m_image(image), m_map(map) {}

    /// Where the row runs along the picture's own rows it is handed out where it stands, without copying.
    const std::uint32_t* read(int x, int y, int count, std::uint32_t* words) override {
        const std::int64_t column =
            m_map.column + std::int64_t{x} * m_map.columnPerX + std::int64_t{y} * m_map.columnPerY;
        const std::int64_t row =
            m_map.row + std::int64_t{x} * m_map.rowPerX + std::int64_t{y} * m_map.rowPerY;
        const std::int64_t lastColumn = column + std::int64_t{count - 1} * m_map.columnPerX;
        const std::int64_t lastRow = row + std::int64_t{count - 1} * m_map.rowPerX;
        if (!isInside(column, row) || !isInside(lastColumn, lastRow)) {
            readClamped(column, row, count, words);
            return words;
        }
        const std::uint32_t* const first = m_image.row(static_cast<int>(row)) + column;
        if (m_map.columnPerX == 1) return first;
        const std::ptrdiff_t step =
            m_map.columnPerX + static_cast<std::ptrdiff_t>(m_map.rowPerX) * m_image.width();
        for (int i = 0; i < count; ++i) words[i] = first[i * step];
        return words;
    }

private:
    bool isInside(std::int64_t column, std::int64_t row) const {
        return column >= 0 && column < m_image.width() && row >= 0 && row < m_image.height();
    }

    /// Pixels beyond the edges are the outermost ones, looked up one by one.
    void readClamped(std::int64_t column, std::int64_t row, int count, std::uint32_t* words) const {
        for (int i = 0; i < count; ++i, column += m_map.columnPerX, row += m_map.rowPerX) {
            const auto y = static_cast<int>(std::clamp<std::int64_t>(row, 0, m_image.height() - 1));
            words[i] = m_image.row(y)[std::clamp<std::int64_t>(column, 0, m_image.width() - 1)];
        }
    }

    const PixelImage& m_image;
    WholeMap m_map;
};

class WholePixelSampler : public RowSampler {
public:
    WholePixelSampler(const PlacedLevel& level, const WholeMap& map)
        : m_image(level.image), m_map(map), m_opaque(level.opaque) {}

    bool isOpaque() const override { return m_opaque; }

    std::unique_ptr<RowReader> reader() const override {
        return std::make_unique<WholePixelReader>(*m_image, m_map);
    }

private:
    std::shared_ptr<const PixelImage> m_image;
    WholeMap m_map;
    bool m_opaque;
};

} // namespace

std::unique_ptr<RowSampler> makeWholePixelSampler(const PlacedLevel& level, PixelRect area) {
    const std::optional<WholeMap> map = wholeMap(level.inverse, area);
    return map.has_value() ? std::make_unique<WholePixelSampler>(level, *map) : nullptr;
}

} // namespace Imaging::Platform
