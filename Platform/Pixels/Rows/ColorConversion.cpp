// Conversions are made by lcms2, with the settings under which it computes exactly rather than from coarse
// tables.

#include "Platform/Pixels/Rows/ColorConversion.h"

#include <lcms2.h>

#include <algorithm>
#include <cstdlib>
#include <limits>
#include <mutex>
#include <new>
#include <numeric>
#include <utility>
#include <vector>

namespace Imaging::Platform {

namespace {

struct CloseProfile {
    void operator()(void* profile) const { cmsCloseProfile(profile); }
};
struct DeleteTransform {
    void operator()(void* transform) const { cmsDeleteTransform(transform); }
};
using Profile = std::unique_ptr<void, CloseProfile>;
using Handle = std::unique_ptr<void, DeleteTransform>;

cmsColorSpaceSignature signature(ColorConversion::Samples samples) {
    switch (samples) {
    case ColorConversion::Samples::Gray:
        return cmsSigGrayData;
    case ColorConversion::Samples::CMYK:
        return cmsSigCmykData;
    default:
        return cmsSigRgbData;
    }
}

cmsUInt32Number layout(ColorConversion::Samples samples, bool wide) {
    switch (samples) {
    case ColorConversion::Samples::Gray:
        return wide ? TYPE_GRAY_16 : TYPE_GRAY_8;
    case ColorConversion::Samples::CMYK:
        return wide ? TYPE_CMYK_16 : TYPE_CMYK_8;
    default:
        return wide ? TYPE_RGBA_16 : TYPE_RGBA_8;
    }
}

Handle transformFrom(const Profile& from, const Profile& to, cmsUInt32Number layoutOfSource) {
    // Without the cache of the last colour one transform can serve several threads. Curves with a matrix are
    // computed exactly for 8-bit RGB; for all else a coarse table would replace them, which is off by up to 6
    // of 255.
    const bool wouldBeTable = cmsIsMatrixShaper(from.get()) != 0 && layoutOfSource != TYPE_RGBA_8;
    return Handle(cmsCreateTransform(from.get(), layoutOfSource, to.get(), TYPE_RGBA_8,
                                     INTENT_RELATIVE_COLORIMETRIC,
                                     cmsFLAGS_NOCACHE | (wouldBeTable ? cmsFLAGS_NOOPTIMIZE : 0)));
}

} // namespace

struct ColorConversion::Transform {
    Profile from;
    Profile to;
    Samples samples;
    Handle narrow;
    Handle wide; ///< made when it is first needed, since making some takes a tenth of a second
    std::once_flag wideIsMade;
    std::vector<std::uint8_t> grays; ///< RGBA for each of the 256 grays; empty for other samples

    /// There are so few grays that each is computed once.
    void makeGrays() {
        std::vector<std::uint8_t> all(256);
        std::iota(all.begin(), all.end(), std::uint8_t{0});
        grays.resize(all.size() * 4);
        cmsDoTransform(narrow.get(), all.data(), grays.data(), static_cast<cmsUInt32Number>(all.size()));
    }

    /// Throws std::bad_alloc when it cannot be made although the narrow one could.
    const Handle& wideOne() {
        std::call_once(wideIsMade, [this] { wide = transformFrom(from, to, layout(samples, true)); });
        if (wide == nullptr) throw std::bad_alloc();
        return wide;
    }
};

ColorConversion::ColorConversion(std::unique_ptr<Transform> transform) : m_transform(std::move(transform)) {}

ColorConversion::~ColorConversion() = default;

std::shared_ptr<const ColorConversion> ColorConversion::toSRGB(ByteView profile, Samples samples) {
    if (profile.empty() || profile.size() > std::numeric_limits<cmsUInt32Number>::max()) return nullptr;
    Profile from(cmsOpenProfileFromMem(profile.data(), static_cast<cmsUInt32Number>(profile.size())));
    if (from == nullptr || cmsGetColorSpace(from.get()) != signature(samples)) return nullptr;
    auto transform = std::make_unique<Transform>();
    transform->from = std::move(from);
    transform->to.reset(cmsCreate_sRGBProfile());
    transform->samples = samples;
    transform->narrow = transformFrom(transform->from, transform->to, layout(samples, false));
    if (transform->narrow == nullptr) return nullptr;
    if (samples == Samples::Gray) transform->makeGrays();
    std::shared_ptr<const ColorConversion> conversion(new ColorConversion(std::move(transform)));
    return conversion->changesNothing(samples) ? nullptr : conversion;
}

/// Whether a grid of colours comes out as it went in, so that converting would only cost time and rounding.
bool ColorConversion::changesNothing(Samples samples) const {
    constexpr int step = 15; // 0, 15 … 255
    if (samples == Samples::CMYK) return false;
    std::vector<std::uint8_t> colors;
    std::vector<std::uint8_t> expected;
    for (int r = 0; r <= 255; r += step) {
        if (samples == Samples::Gray) {
            const auto gray = static_cast<std::uint8_t>(r);
            colors.push_back(gray);
            expected.insert(expected.end(), {gray, gray, gray, 0});
            continue;
        }
        for (int g = 0; g <= 255; g += step) {
            for (int b = 0; b <= 255; b += step) {
                for (const int sample : {r, g, b, 0}) colors.push_back(static_cast<std::uint8_t>(sample));
            }
        }
    }
    if (samples == Samples::RGB) expected = colors;
    std::vector<std::uint8_t> converted(expected.size());
    convert(colors.data(), converted.data(), expected.size() / 4);
    for (std::size_t i = 0; i < expected.size(); ++i) {
        if (i % 4 != 3 && std::abs(expected[i] - converted[i]) > 1) return false;
    }
    return true;
}

void ColorConversion::convert(const std::uint8_t* samples, std::uint8_t* rgba, std::size_t count) const {
    if (!m_transform->grays.empty()) {
        for (std::size_t x = 0; x < count; ++x) {
            std::copy_n(m_transform->grays.data() + std::size_t{samples[x]} * 4, 3, rgba + x * 4);
        }
        return;
    }
    cmsDoTransform(m_transform->narrow.get(), samples, rgba, static_cast<cmsUInt32Number>(count));
}

void ColorConversion::convert(const std::uint16_t* samples, std::uint8_t* rgba, std::size_t count) const {
    cmsDoTransform(m_transform->wideOne().get(), samples, rgba, static_cast<cmsUInt32Number>(count));
}

} // namespace Imaging::Platform
