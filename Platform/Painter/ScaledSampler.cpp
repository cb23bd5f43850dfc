// Scalings along the axes: each device pixel is the exact mean of the area that falls on it, or lies between
// its neighbours. Rows are mixed first, then their columns.

#include "Platform/Painter/ScaledSampler.h"

#include "Platform/Pixels/Rows/SampleMixing.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

namespace Imaging::Platform {

namespace {

/// Which pixels along one axis make up each device pixel, and with what factors.
struct AxisMix {
    int begin = 0;                     ///< the first device pixel that is described
    std::size_t taps = 1;              ///< how many neighbouring pixels are mixed
    std::vector<std::int32_t> first;   ///< of them, for each device pixel
    std::vector<std::int16_t> factors; ///< `taps` a device pixel, the first of which is not used
};

/// The shares of the pixels low, low + 1 … of an interval; those beyond the ends go to the outermost.
struct Shares {
    std::int64_t low = 0;
    std::vector<double> shares;
};

Shares sharesOf(double from, double to, int length) {
    const double last = length - 1;
    Shares result;
    result.low = static_cast<std::int64_t>(std::clamp(std::floor(from), 0.0, last));
    const auto high =
        static_cast<std::int64_t>(std::clamp(std::ceil(to) - 1, static_cast<double>(result.low), last));
    result.shares.assign(static_cast<std::size_t>(high - result.low + 1), 0);
    for (std::int64_t i = result.low; i <= high; ++i) {
        const double left = i == result.low ? from : std::max(from, static_cast<double>(i));
        const double right = i == high ? to : std::min(to, static_cast<double>(i + 1));
        result.shares[static_cast<std::size_t>(i - result.low)] = std::max(0.0, right - left) / (to - from);
    }
    return result;
}

/// Factors that add up exactly, by rounding where the sum has come to rather than each by itself.
void appendFactors(const Shares& shares, std::size_t shift, std::size_t taps,
                   std::vector<std::int16_t>& factors) {
    constexpr double one = 32768;
    double sum = 0;
    std::int64_t given = 0;
    const std::size_t start = factors.size();
    factors.resize(start + taps, 0);
    for (std::size_t i = 0; i < shares.shares.size(); ++i) {
        sum += shares.shares[i];
        const std::int64_t now = std::llround(sum * one);
        factors[start + shift + i] = static_cast<std::int16_t>(std::min<std::int64_t>(now - given, 32767));
        given = now;
    }
}

/// Device pixel i covers the picture from (i·step + offset) on, `step` long; less than a pixel widens to one,
/// which is linear interpolation.
AxisMix axisMix(double step, double offset, int begin, int end, int length) {
    const double half = std::max(1.0, std::abs(step)) / 2;
    std::vector<Shares> all;
    AxisMix mix;
    mix.begin = begin;
    for (int i = begin; i < end; ++i) {
        const double centre = (i + 0.5) * step + offset;
        all.push_back(sharesOf(centre - half, centre + half, length));
        mix.taps = std::max(mix.taps, all.back().shares.size());
    }
    for (const Shares& shares : all) {
        // Near the end the same number of pixels is read, of which the first then do not count.
        const std::int64_t first =
            std::min<std::int64_t>(shares.low, length - static_cast<std::int64_t>(mix.taps));
        mix.first.push_back(static_cast<std::int32_t>(first));
        appendFactors(shares, static_cast<std::size_t>(shares.low - first), mix.taps, mix.factors);
    }
    return mix;
}

/// The factors as `mixColumns` reads them: tap after tap, each four times.
std::vector<std::int16_t> spreadFactors(const AxisMix& mix) {
    const std::size_t count = mix.first.size();
    std::vector<std::int16_t> spread((mix.taps - 1) * count * 4);
    for (std::size_t k = 1; k < mix.taps; ++k) {
        for (std::size_t i = 0; i < count; ++i) {
            std::fill_n(spread.begin() + static_cast<std::ptrdiff_t>(((k - 1) * count + i) * 4), 4,
                        mix.factors[i * mix.taps + k]);
        }
    }
    return spread;
}

/// Where the axes begin; what there may be of a slant, too little to be seen, is taken at the area's middle.
double columnOffset(const Affine& inverse, PixelRect area) {
    return inverse.x0 + inverse.xy * (area.top + area.bottom) / 2;
}

double rowOffset(const Affine& inverse, PixelRect area) {
    return inverse.y0 + inverse.yx * (area.left + area.right) / 2;
}

class ScaledSampler : public RowSampler {
public:
    ScaledSampler(const PlacedLevel& level, PixelRect area);

    bool isOpaque() const override { return m_opaque; }
    std::unique_ptr<RowReader> reader() const override;

    /// The mixed rows for device row y, over the columns that the area needs.
    void mixRow(int y, std::int16_t* samples) const;

    void mixPixels(const std::int16_t* samples, int x, int count, std::uint32_t* words) const {
        const auto from = static_cast<std::size_t>(x - m_columns.begin);
        mixColumns(samples, {m_first.data(), m_factors.data(), m_columns.taps, m_first.size()}, from,
                   from + static_cast<std::size_t>(count), words);
    }

    std::size_t rowSamples() const { return static_cast<std::size_t>(m_end - m_begin) * 4; }

private:
    std::shared_ptr<const PixelImage> m_image;
    bool m_opaque;
    AxisMix m_columns;
    AxisMix m_rows;
    std::vector<std::int16_t> m_factors; ///< of the columns
    std::vector<std::int32_t> m_first;   ///< of the columns, counted from m_begin
    int m_begin;                         ///< the columns of the picture that take part
    int m_end;
};

class ScaledReader : public RowReader {
public:
    explicit ScaledReader(const ScaledSampler& sampler)
        : m_sampler(sampler), m_samples(sampler.rowSamples()) {}

    const std::uint32_t* read(int x, int y, int count, std::uint32_t* words) override {
        if (y != m_row) m_sampler.mixRow(y, m_samples.data());
        m_row = y;
        m_sampler.mixPixels(m_samples.data(), x, count, words);
        return words;
    }

private:
    const ScaledSampler& m_sampler;
    std::vector<std::int16_t> m_samples; // of device row m_row
    int m_row = std::numeric_limits<int>::min();
};

ScaledSampler::ScaledSampler(const PlacedLevel& level, PixelRect area)
    : m_image(level.image),
      m_opaque(level.opaque),
      m_columns(axisMix(level.inverse.xx, columnOffset(level.inverse, area), area.left, area.right,
                        level.image->width())),
      m_rows(axisMix(level.inverse.yy, rowOffset(level.inverse, area), area.top, area.bottom,
                     level.image->height())),
      m_factors(spreadFactors(m_columns)),
      m_first(m_columns.first) {
    const auto [low, high] = std::minmax_element(m_first.begin(), m_first.end());
    m_begin = *low;
    m_end = *high + static_cast<int>(m_columns.taps);
    for (std::int32_t& first : m_first) first -= m_begin;
}

std::unique_ptr<RowReader> ScaledSampler::reader() const { return std::make_unique<ScaledReader>(*this); }

void ScaledSampler::mixRow(int y, std::int16_t* samples) const {
    const auto index = static_cast<std::size_t>(y - m_rows.begin);
    const std::uint32_t* rows[maximumTaps];
    for (std::size_t k = 0; k < m_rows.taps; ++k) {
        rows[k] = m_image->row(m_rows.first[index] + static_cast<int>(k)) + m_begin;
    }
    mixRows(rows, m_rows.factors.data() + index * m_rows.taps, m_rows.taps, samples,
            static_cast<std::size_t>(m_end - m_begin));
}

} // namespace

std::unique_ptr<RowSampler> makeScaledSampler(const PlacedLevel& level, PixelRect area) {
    return std::make_unique<ScaledSampler>(level, area);
}

} // namespace Imaging::Platform
