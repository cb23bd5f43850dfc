// A bitmap is a checked description over planes of bytes, its own or somebody else's. How it comes from files
// and goes into them is in BitmapCoding.cpp, how it comes from a context in FocusedBitmap.cpp.

#include "Platform/Graphics/BitmapImageRep.h"

#include "Platform/Foundation/Exception.h"
#include "Platform/Pixels/PictureLimits.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace Imaging::Platform {

namespace {

/// 0 for a name that is none of ours.
int colorSamplesOf(std::string_view colorSpaceName) {
    for (const std::string_view gray : {NSCalibratedWhiteColorSpace, NSCalibratedBlackColorSpace,
                                        NSDeviceWhiteColorSpace, NSDeviceBlackColorSpace}) {
        if (colorSpaceName == gray) return 1;
    }
    if (colorSpaceName == NSCalibratedRGBColorSpace || colorSpaceName == NSDeviceRGBColorSpace) return 3;
    return colorSpaceName == NSDeviceCMYKColorSpace ? 4 : 0;
}

/// The named constant that a name equals, so that bitmaps need not keep the caller's characters.
std::string_view namedColorSpace(std::string_view name) {
    for (const std::string_view known :
         {NSCalibratedWhiteColorSpace, NSCalibratedBlackColorSpace, NSCalibratedRGBColorSpace,
          NSDeviceWhiteColorSpace, NSDeviceBlackColorSpace, NSDeviceRGBColorSpace, NSDeviceCMYKColorSpace}) {
        if (name == known) return known;
    }
    return {};
}

/// Fills in what the description leaves open; false when it makes no sense.
bool resolve(NSBitmapDescription& d) {
    const int colorSamples = colorSamplesOf(d.colorSpaceName);
    if (d.pixelsWide < 1 || d.pixelsHigh < 1 || colorSamples == 0) return false;
    if (d.bitsPerSample != 8 && d.bitsPerSample != 16) return false;
    if (d.samplesPerPixel < colorSamples + (d.hasAlpha ? 1 : 0) || d.samplesPerPixel > 5) return false;
    const int usedBits = d.bitsPerSample * (d.isPlanar ? 1 : d.samplesPerPixel);
    if (d.bitsPerPixel == 0) d.bitsPerPixel = usedBits;
    if (d.bitsPerPixel < usedBits || d.bitsPerPixel % 8 != 0) return false;
    const auto rowBytes = checkedProduct(
        {static_cast<std::uint64_t>(d.pixelsWide), static_cast<std::uint64_t>(d.bitsPerPixel / 8)});
    if (!rowBytes.has_value()) return false;
    if (d.bytesPerRow == 0) d.bytesPerRow = *rowBytes;
    return d.bytesPerRow >= *rowBytes;
}

/// The bytes of all planes, or nullopt when they are beyond the limits.
std::optional<std::size_t> checkedSize(const NSBitmapDescription& resolved) {
    const PictureLimits limits = pictureLimits();
    const auto width = static_cast<std::uint64_t>(resolved.pixelsWide);
    const auto height = static_cast<std::uint64_t>(resolved.pixelsHigh);
    const auto planes = static_cast<std::uint64_t>(resolved.isPlanar ? resolved.samplesPerPixel : 1);
    const auto pixels = checkedProduct({width, height});
    const auto bytes = checkedProduct({resolved.bytesPerRow, height, planes});
    if (!pixels.has_value() || *pixels > limits.maximumPixels) return std::nullopt;
    if (!bytes.has_value() || *bytes > limits.maximumBytes) return std::nullopt;
    return *bytes;
}

} // namespace

NSImageRep::NSImageRep(std::int64_t pixelsWide, std::int64_t pixelsHigh)
    : m_pixels_wide(pixelsWide),
      m_pixels_high(pixelsHigh),
      m_size{static_cast<float>(pixelsWide), static_cast<float>(pixelsHigh)} {}

NSImageRep::~NSImageRep() = default;

NSBitmapImageRep::NSBitmapImageRep(const NSBitmapDescription& resolved, const Planes& planes, PixelBuffer own)
    : NSImageRep(resolved.pixelsWide, resolved.pixelsHigh),
      m_own_pixels(std::move(own)),
      m_planes(planes),
      m_bytes_per_row(resolved.bytesPerRow),
      m_bits_per_sample(resolved.bitsPerSample),
      m_samples_per_pixel(resolved.samplesPerPixel),
      m_bits_per_pixel(resolved.bitsPerPixel),
      m_bitmap_format(resolved.bitmapFormat),
      m_has_alpha(resolved.hasAlpha),
      m_is_planar(resolved.isPlanar),
      m_color_space_name(namedColorSpace(resolved.colorSpaceName)) {}

NSBitmapImageRep::~NSBitmapImageRep() = default;

std::shared_ptr<NSBitmapImageRep>
NSBitmapImageRep::bitmapWithDescription(const NSBitmapDescription& description) {
    return bitmapOnOwnPixels(description, PixelBuffer::zeroed);
}

std::shared_ptr<NSBitmapImageRep>
NSBitmapImageRep::bitmapWithUninitialisedPixels(const NSBitmapDescription& description) {
    return bitmapOnOwnPixels(description, PixelBuffer::uninitialised);
}

/// All planes lie in one piece of memory, one after another.
std::shared_ptr<NSBitmapImageRep>
NSBitmapImageRep::bitmapOnOwnPixels(const NSBitmapDescription& description,
                                    PixelBuffer (*allocate)(std::size_t size)) {
    NSBitmapDescription resolved = description;
    if (!resolve(resolved)) return nullptr;
    const std::optional<std::size_t> size = checkedSize(resolved);
    if (!size.has_value()) return nullptr;
    PixelBuffer own = allocate(*size);
    Planes planes{};
    const std::size_t planeBytes = resolved.bytesPerRow * static_cast<std::size_t>(resolved.pixelsHigh);
    const int count = resolved.isPlanar ? resolved.samplesPerPixel : 1;
    for (int i = 0; i < count; ++i) {
        planes[static_cast<std::size_t>(i)] = own.data() + static_cast<std::size_t>(i) * planeBytes;
    }
    return std::shared_ptr<NSBitmapImageRep>(new NSBitmapImageRep(resolved, planes, std::move(own)));
}

std::shared_ptr<NSBitmapImageRep> NSBitmapImageRep::bitmapOverPlanes(const NSBitmapDescription& description,
                                                                     const Planes& planes) {
    NSBitmapDescription resolved = description;
    if (!resolve(resolved) || !checkedSize(resolved).has_value()) return nullptr;
    const int count = resolved.isPlanar ? resolved.samplesPerPixel : 1;
    for (int i = 0; i < count; ++i) {
        if (planes[static_cast<std::size_t>(i)] == nullptr) return nullptr;
    }
    return std::shared_ptr<NSBitmapImageRep>(new NSBitmapImageRep(resolved, planes, PixelBuffer()));
}

std::shared_ptr<NSBitmapImageRep>
NSBitmapImageRep::bitmapAdoptingPixels(const NSBitmapDescription& description, PixelBuffer pixels) {
    NSBitmapDescription resolved = description;
    if (!resolve(resolved)) return nullptr;
    const Planes planes{pixels.data()};
    return std::shared_ptr<NSBitmapImageRep>(new NSBitmapImageRep(resolved, planes, std::move(pixels)));
}

std::optional<NSImageProperty> NSBitmapImageRep::valueForProperty(std::string_view name) const {
    const auto found = m_properties.find(name);
    if (found == m_properties.end()) return std::nullopt;
    return found->second;
}

void NSBitmapImageRep::setProperty(std::string_view name, NSImageProperty value) {
    m_properties.insert_or_assign(std::string(name), std::move(value));
}

/// Checked for each sample: these are for looking at pixels, not for going over pictures.
std::uint8_t* NSBitmapImageRep::sampleAddress(std::int64_t x, std::int64_t y, int sample) const {
    if (x < 0 || y < 0 || x >= pixelsWide() || y >= pixelsHigh()) {
        throw NSException(NSRangeException, "pixel outside the bitmap");
    }
    const auto sampleBytes = static_cast<std::size_t>(m_bits_per_sample / 8);
    const std::size_t at = static_cast<std::size_t>(y) * m_bytes_per_row +
                           static_cast<std::size_t>(x) * static_cast<std::size_t>(m_bits_per_pixel / 8);
    const auto index = static_cast<std::size_t>(sample);
    return m_is_planar ? m_planes[index] + at : m_planes[0] + at + index * sampleBytes;
}

std::array<std::uint16_t, 5> NSBitmapImageRep::pixelAt(std::int64_t x, std::int64_t y) const {
    std::array<std::uint16_t, 5> samples{};
    for (int i = 0; i < m_samples_per_pixel; ++i) {
        const std::uint8_t* const address = sampleAddress(x, y, i);
        std::uint16_t& value = samples[static_cast<std::size_t>(i)];
        if (m_bits_per_sample == 16) {
            std::memcpy(&value, address, 2);
        } else {
            value = *address;
        }
    }
    return samples;
}

void NSBitmapImageRep::setPixelAt(std::int64_t x, std::int64_t y,
                                  const std::array<std::uint16_t, 5>& samples) {
    for (int i = 0; i < m_samples_per_pixel; ++i) {
        std::uint8_t* const address = sampleAddress(x, y, i);
        const std::uint16_t value = samples[static_cast<std::size_t>(i)];
        if (m_bits_per_sample == 16) {
            std::memcpy(address, &value, 2);
        } else {
            *address = static_cast<std::uint8_t>(value);
        }
    }
}

} // namespace Imaging::Platform
