#include "Platform/Graphics/ColorConversion.h"

#include <lcms2.h>

#include <cstdlib>
#include <limits>
#include <utility>
#include <vector>

namespace Platform {

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
    // Without the cache of the last colour one transform can serve several threads.
    return Handle(cmsCreateTransform(from.get(), layoutOfSource, to.get(), TYPE_RGBA_8,
                                     INTENT_RELATIVE_COLORIMETRIC, cmsFLAGS_NOCACHE));
}

} // namespace

struct ColorConversion::Transform {
    Handle narrow;
    Handle wide;
};

ColorConversion::ColorConversion(std::unique_ptr<Transform> transform) : m_transform(std::move(transform)) {}

ColorConversion::~ColorConversion() = default;

std::shared_ptr<const ColorConversion> ColorConversion::toSRGB(ByteView profile, Samples samples) {
    if (profile.empty() || profile.size() > std::numeric_limits<cmsUInt32Number>::max()) return nullptr;
    const Profile from(cmsOpenProfileFromMem(profile.data(), static_cast<cmsUInt32Number>(profile.size())));
    if (from == nullptr || cmsGetColorSpace(from.get()) != signature(samples)) return nullptr;
    const Profile to(cmsCreate_sRGBProfile());
    auto transform = std::make_unique<Transform>();
    transform->narrow = transformFrom(from, to, layout(samples, false));
    transform->wide = transformFrom(from, to, layout(samples, true));
    if (transform->narrow == nullptr || transform->wide == nullptr) return nullptr;
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
    cmsDoTransform(m_transform->narrow.get(), samples, rgba, static_cast<cmsUInt32Number>(count));
}

void ColorConversion::convert(const std::uint16_t* samples, std::uint8_t* rgba, std::size_t count) const {
    cmsDoTransform(m_transform->wide.get(), samples, rgba, static_cast<cmsUInt32Number>(count));
}

} // namespace Platform
