// Chooses the level of a picture and the kind of sampler for a placement: the cheapest kind that gives what
// the placement asks for.

#include "Platform/Painter/PictureSampler.h"

#include "Platform/Painter/AffineSampler.h"
#include "Platform/Painter/ScaledSampler.h"
#include "Platform/Painter/ShiftedSampler.h"
#include "Platform/Painter/WholePixelSampler.h"

#include <algorithm>
#include <cmath>
#include <optional>

namespace Imaging::Platform {

namespace {

/// The most samples along an axis that are averaged to one device pixel.
constexpr int mostSamples = 16;

/// How far one device pixel goes in the picture, along the device's axes.
struct Steps {
    double across;
    double down;

    explicit Steps(const Affine& inverse)
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
Affine halved(const Affine& inverse, bool acrossX, bool acrossY) {
    return inverse.then(Affine::scaling(acrossX ? 0.5 : 1, acrossY ? 0.5 : 1));
}

PlacedLevel placedLevel(PictureLevels& picture, const Affine& inverse, int k) {
    PlacedLevel level{picture.level(k), inverse, picture.isOpaque()};
    for (int i = 0; i < k; ++i) level.inverse = halved(level.inverse, true, true);
    return level;
}

/// Whether there is neither rotation nor slant, as far as can be seen within an area.
bool isAlongAxes(const Affine& inverse, PixelRect area) {
    constexpr double invisible = 1.0 / 1024;
    return std::abs(inverse.xy) * area.height() <= invisible &&
           std::abs(inverse.yx) * area.width() <= invisible;
}

/// Where one axis is reduced much more than the other, that axis alone is halved on.
std::unique_ptr<RowSampler> scaledSampler(PlacedLevel level, PixelRect area) {
    while (std::abs(level.inverse.xx) > maximumScaledStep && level.image->width() > 1) {
        level.image = halved(*level.image, true, false);
        level.inverse = halved(level.inverse, true, false);
    }
    while (std::abs(level.inverse.yy) > maximumScaledStep && level.image->height() > 1) {
        level.image = halved(*level.image, false, true);
        level.inverse = halved(level.inverse, false, true);
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

/// Whether the picture keeps some of its shape: beyond this, coordinates say nothing any more.
bool isDrawnOut(const Affine& inverse, const Steps& steps) {
    constexpr double farthest = 1e12;
    const double area = std::abs(inverse.xx * inverse.yy - inverse.xy * inverse.yx);
    return !((steps.across * steps.across + steps.down * steps.down) / area <= farthest);
}

} // namespace

std::unique_ptr<RowSampler> makePictureSampler(PictureLevels& picture, const Affine& placement,
                                               PixelRect area) {
    if (area.isEmpty()) return nullptr;
    const std::optional<Affine> back = placement.inverse();
    if (!back.has_value() || !back->isFinite()) return nullptr;
    const Affine& inverse = *back;
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
