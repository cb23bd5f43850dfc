#include "Platform/Painter/PictureSampler.h"

#include "Platform/Painter/PictureSamplers.h"

#include <algorithm>
#include <cmath>

namespace Imaging::Platform {

namespace {

class ColorReader : public RowReader {
public:
    explicit ColorReader(std::uint32_t word) : m_word(word) {}

    const std::uint32_t* read(int, int, int count, std::uint32_t* words) override {
        std::fill_n(words, count, m_word);
        return words;
    }

private:
    std::uint32_t m_word;
};

class ColorSampler : public RowSampler {
public:
    explicit ColorSampler(std::uint32_t word) : m_word(word) {}

    bool isOpaque() const override { return m_word >> 24 == 255; }
    std::unique_ptr<RowReader> reader() const override { return std::make_unique<ColorReader>(m_word); }

private:
    std::uint32_t m_word;
};

/// The most samples along an axis that are averaged to one device pixel.
constexpr int mostSamples = 16;

/// How far one device pixel goes in the picture, along the device's axes.
struct Steps {
    double across;
    double down;

    explicit Steps(const cairo_matrix_t& inverse)
        : across(std::hypot(inverse.xx, inverse.yx)), down(std::hypot(inverse.xy, inverse.yy)) {}
};

/// How often a picture can be halved before less than one pixel falls on a device pixel.
int halvings(double step, int most) {
    if (!(step >= 2)) return 0;
    return static_cast<int>(std::min<double>(std::floor(std::log2(step)), most));
}

/// The same for averages along the axes, which come out better from finer levels: one less, except where that
/// would mean to go through all of a large picture for each draw.
int finerHalvings(double step, int most) {
    const int k = halvings(step, most);
    return k < 2 ? k : k - 1;
}

/// The inverse for a picture that was halved.
void halve(cairo_matrix_t& inverse, bool acrossX, bool acrossY) {
    cairo_matrix_t half;
    cairo_matrix_init_scale(&half, acrossX ? 0.5 : 1, acrossY ? 0.5 : 1);
    cairo_matrix_multiply(&inverse, &inverse, &half);
}

PlacedLevel placedLevel(DrawablePicture& picture, const cairo_matrix_t& inverse, int k) {
    PlacedLevel level{picture.level(k), inverse, picture.isOpaque()};
    for (int i = 0; i < k; ++i) halve(level.inverse, true, true);
    return level;
}

/// Whether there is neither rotation nor slant, as far as can be seen within an area.
bool isAlongAxes(const cairo_matrix_t& inverse, PixelRect area) {
    constexpr double invisible = 1.0 / 1024;
    return std::abs(inverse.xy) * area.height() <= invisible &&
           std::abs(inverse.yx) * area.width() <= invisible;
}

/// Where one axis is reduced much more than the other, that axis alone is halved on.
std::unique_ptr<RowSampler> scaledSampler(PlacedLevel level, PixelRect area) {
    while (std::abs(level.inverse.xx) > maximumScaledStep && level.image->width() > 1) {
        level.image = halved(*level.image, true, false);
        halve(level.inverse, true, false);
    }
    while (std::abs(level.inverse.yy) > maximumScaledStep && level.image->height() > 1) {
        level.image = halved(*level.image, false, true);
        halve(level.inverse, false, true);
    }
    return makeScaledSampler(level, area);
}

std::unique_ptr<RowSampler> affineSampler(const PlacedLevel& level) {
    // Up to a quarter more than a pixel a step, one sample is enough: what it leaves out cannot be seen.
    const auto samples = [](double step) {
        return step <= 1.25 ? 1 : static_cast<int>(std::min<double>(std::ceil(step), mostSamples));
    };
    const Steps steps(level.inverse);
    return makeAffineSampler(level, samples(steps.across), samples(steps.down));
}

bool isFinite(const cairo_matrix_t& m) {
    return std::isfinite(m.xx) && std::isfinite(m.yx) && std::isfinite(m.xy) && std::isfinite(m.yy) &&
           std::isfinite(m.x0) && std::isfinite(m.y0);
}

/// Whether the picture keeps some of its shape: beyond this, coordinates say nothing any more.
bool isDrawnOut(const cairo_matrix_t& inverse, const Steps& steps) {
    constexpr double farthest = 1e12;
    const double area = std::abs(inverse.xx * inverse.yy - inverse.xy * inverse.yx);
    return !((steps.across * steps.across + steps.down * steps.down) / area <= farthest);
}

} // namespace

std::unique_ptr<RowSampler> makeColorSampler(std::uint32_t word) {
    return std::make_unique<ColorSampler>(word);
}

std::unique_ptr<RowSampler> makePictureSampler(DrawablePicture& picture, const cairo_matrix_t& placement,
                                               PixelRect area) {
    cairo_matrix_t inverse = placement;
    if (area.isEmpty() || cairo_matrix_invert(&inverse) != CAIRO_STATUS_SUCCESS || !isFinite(inverse)) {
        return nullptr;
    }
    const Steps steps(inverse);
    if (isDrawnOut(inverse, steps)) return nullptr;
    const bool straight = isAlongAxes(inverse, area);
    const double reduction = std::min(steps.across, steps.down);
    const double furthest = std::max(steps.across, steps.down);
    const int most = picture.levelCount() - 1;
    const int k = straight ? finerHalvings(reduction, most)
                           : halvings(std::max(reduction, 2 * furthest / mostSamples), most);
    const PlacedLevel level = placedLevel(picture, inverse, k);
    if (k == 0) {
        if (auto whole = makeWholePixelSampler(level, area)) return whole;
        if (auto shifted = makeShiftedSampler(level, area)) return shifted;
    }
    return straight ? scaledSampler(level, area) : affineSampler(level);
}

} // namespace Imaging::Platform
