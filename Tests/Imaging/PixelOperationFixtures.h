#pragma once

// Bitmaps of the four layouts for the tests of pixel operations, with padded rows whose padding is watched,
// and a way to run a test with the vector code of every kind of processor that this one can stand in for.

#include "Imaging/BitmapFormats.h"
#include "Imaging/CachedImage.h"
#include "Tests/Imaging/ImagingTestSupport.h"

#include <gtest/gtest.h>
#include <hwy/highway.h>
#include <hwy/targets.h>

#include <algorithm>
#include <cstdint>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

namespace ImagingTests {

using Imaging::IMGBitmapFormat;
using Imaging::IMGBitmapFormatGrayscale;
using Imaging::IMGBitmapFormatGrayscaleAlpha;
using Imaging::IMGBitmapFormatRGB;
using Imaging::IMGBitmapFormatRGBA;
using Imaging::Platform::NSBitmapImageRep;

inline constexpr IMGBitmapFormat allFormats[] = {IMGBitmapFormatGrayscale, IMGBitmapFormatGrayscaleAlpha,
                                                 IMGBitmapFormatRGB, IMGBitmapFormatRGBA};

/// Samples in rows of `width` pixels and `padding` bytes of 0xA5 each, and 64 such bytes behind them all.
class Rows {
public:
    static constexpr std::uint8_t guard = 0xA5;

    Rows(int width, int height, int samples, int padding)
        : m_width(width),
          m_height(height),
          m_samples(samples),
          m_bytes_per_row(width * samples + padding),
          m_bytes(index(height) + 64, guard) {}

    void fill(Pixels::Random& random) {
        forEachSample([&](std::uint8_t& sample) { sample = static_cast<std::uint8_t>(random.sample()); });
    }
    void clear() {
        forEachSample([](std::uint8_t& sample) { sample = 0; });
    }

    int width() const { return m_width; }
    int height() const { return m_height; }
    std::uint32_t bytesPerRow() const { return static_cast<std::uint32_t>(m_bytes_per_row); }
    std::uint8_t* data() { return m_bytes.data(); }
    std::uint8_t* pixel(int x, int y) { return m_bytes.data() + index(y) + index(x, m_samples); }

    friend bool operator==(const Rows&, const Rows&) = default;

    /// A bitmap over these bytes, which must outlive it.
    std::shared_ptr<NSBitmapImageRep> bitmap() {
        Imaging::Platform::NSBitmapDescription description;
        description.pixelsWide = m_width;
        description.pixelsHigh = m_height;
        description.samplesPerPixel = m_samples;
        description.hasAlpha = m_samples % 2 == 0;
        description.colorSpaceName = m_samples <= 2 ? Imaging::Platform::NSCalibratedWhiteColorSpace
                                                    : Imaging::Platform::NSCalibratedRGBColorSpace;
        description.bytesPerRow = static_cast<std::size_t>(m_bytes_per_row);
        return NSBitmapImageRep::bitmapOverPlanes(description, {m_bytes.data()});
    }

    std::shared_ptr<IMGImageFromNSImage> node() {
        const auto picture =
            std::make_shared<NSImage>(NSMakeSize(static_cast<float>(m_width), static_cast<float>(m_height)));
        picture->addRepresentation(bitmap());
        return std::make_shared<IMGImageFromNSImage>(picture);
    }

private:
    template<class Body>
    void forEachSample(const Body& body) {
        for (int y = 0; y < m_height; ++y) {
            for (int i = 0; i < m_width * m_samples; ++i)
                body(m_bytes[index(y) + static_cast<std::size_t>(i)]);
        }
    }
    static std::size_t index(int count, int size) {
        return static_cast<std::size_t>(count) * static_cast<std::size_t>(size);
    }
    std::size_t index(int y) const { return index(y, m_bytes_per_row); }

    int m_width;
    int m_height;
    int m_samples;
    int m_bytes_per_row;
    std::vector<std::uint8_t> m_bytes;
};

/// A picture of one row.
inline Rows rowOf(int samples, const std::vector<std::uint8_t>& values) {
    Rows rows(static_cast<int>(values.size()) / samples, 1, samples, 0);
    std::copy(values.begin(), values.end(), rows.data());
    return rows;
}

/// The only bitmap of a result, which must be there.
inline std::shared_ptr<NSBitmapImageRep> bitmapOfResult(const std::shared_ptr<CCImage>& result) {
    if (result == nullptr || result->nsImage() == nullptr) throw std::runtime_error("no result");
    const auto& representations = result->nsImage()->representations();
    if (representations.size() != 1) throw std::runtime_error("not one representation");
    return std::dynamic_pointer_cast<NSBitmapImageRep>(representations.front());
}

/// All samples of a result, row after row, without padding.
inline std::vector<std::uint8_t> samplesOf(const std::shared_ptr<CCImage>& result) {
    const auto bitmap = bitmapOfResult(result);
    std::vector<std::uint8_t> samples;
    for (std::int64_t y = 0; y < bitmap->pixelsHigh(); ++y) {
        for (std::int64_t x = 0; x < bitmap->pixelsWide(); ++x) {
            const auto pixel = bitmap->pixelAt(x, y);
            for (int i = 0; i < bitmap->samplesPerPixel(); ++i) {
                samples.push_back(static_cast<std::uint8_t>(pixel[static_cast<std::size_t>(i)]));
            }
        }
    }
    return samples;
}

/// A worker's record over the bytes of two pictures of one size.
template<class Record>
Record recordOver(Rows& source, Rows& destination) {
    Record record;
    record.width = source.width();
    record.height = source.height();
    record.sourceBytesPerRow = source.bytesPerRow();
    record.destinationBytesPerRow = destination.bytesPerRow();
    record.source = source.data();
    record.destination = destination.data();
    return record;
}

struct Counter {
    int tellings = 0;
    void told(IMGImage&) { ++tellings; }
};

/// Writes itself under the name of a class with the keys of a plain node alone, as an older program might.
class Bare : public IMGImage {
public:
    Bare(std::string name, std::shared_ptr<IMGImage> source)
        : IMGImage(std::move(source)), m_name(std::move(name)) {}
    std::string archiveClassName() const override { return m_name; }

private:
    std::string m_name;
};

inline bool areAllZero(const std::vector<std::uint8_t>& samples) {
    return std::all_of(samples.begin(), samples.end(), [](std::uint8_t sample) { return sample == 0; });
}

/// Runs the body once with the vector code for each kind of processor that can run here.
template<class Body>
void onEveryTarget(const Body& body) {
    const std::vector<std::int64_t> targets = hwy::SupportedAndGeneratedTargets();
    ASSERT_FALSE(targets.empty());
    for (const std::int64_t target : targets) {
        SCOPED_TRACE(hwy::TargetName(target));
        hwy::SetSupportedTargetsForTest(target);
        body();
        hwy::SetSupportedTargetsForTest(0);
        if (testing::Test::HasFatalFailure()) return;
    }
}

/// Sizes with every length of a row up to beyond the longest vectors, and single columns.
inline std::vector<NSSize> oddSizes() {
    std::vector<NSSize> sizes;
    for (int width = 1; width <= 255; ++width) sizes.push_back(NSMakeSize(static_cast<float>(width), 1));
    for (const NSSize size : {NSSize{1, 2}, NSSize{1, 37}, NSSize{2, 3}, NSSize{67, 5}, NSSize{300, 2}}) {
        sizes.push_back(size);
    }
    return sizes;
}

} // namespace ImagingTests
