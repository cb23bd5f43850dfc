#pragma once

// Input for the benchmarks of pixel operations: the same pixels for us, for OpenCV and for libvips, and ways
// to give a peer both cores.

#include "Imaging/BitmapFormats.h"
#include "Imaging/CachedImage.h"
#include "Platform/Pixels/PixelBuffer.h"

#include <opencv2/core.hpp>
#include <vips/vips.h>

#include <cstdint>
#include <cstring>
#include <memory>
#include <random>
#include <thread>

namespace Benchmarks {

/// A picture of smooth colour with a little noise, as photographs have it; of its samples the last of two or
/// four is alpha and the largest.
class OperationInput {
public:
    OperationInput(int width, int height, Imaging::IMGBitmapFormat format)
        : m_bitmap(Imaging::bitmapWithSize({static_cast<float>(width), static_cast<float>(height)}, format)) {
        std::minstd_rand random(17);
        const int samples = m_bitmap->samplesPerPixel();
        std::uint8_t* byte = m_bitmap->bitmapData();
        for (int y = 0; y < height; ++y) {
            for (int x = 0; x < width; ++x) {
                for (int i = 0; i < samples; ++i) *byte++ = sample(x, y, i, random());
                if (samples % 2 == 0) byte[-1] = 255;
            }
        }
    }

    std::shared_ptr<Imaging::IMGImageFromNSImage> node() const {
        const auto picture = std::make_shared<Imaging::Platform::NSImage>(m_bitmap->size());
        picture->addRepresentation(m_bitmap);
        return std::make_shared<Imaging::IMGImageFromNSImage>(picture);
    }

    /// The same pixels, not a copy.
    cv::Mat mat() const { return {height(), width(), CV_8UC(samples()), m_bitmap->bitmapData()}; }
    VipsImage* vips() const {
        return vips_image_new_from_memory(m_bitmap->bitmapData(), bytes(), width(), height(), samples(),
                                          VIPS_FORMAT_UCHAR);
    }

    int width() const { return static_cast<int>(m_bitmap->pixelsWide()); }
    int height() const { return static_cast<int>(m_bitmap->pixelsHigh()); }
    int samples() const { return m_bitmap->samplesPerPixel(); }
    std::size_t bytes() const {
        return m_bitmap->bytesPerRow() * static_cast<std::size_t>(m_bitmap->pixelsHigh());
    }
    const std::uint8_t* data() const { return m_bitmap->bitmapData(); }

private:
    static std::uint8_t sample(int x, int y, int i, unsigned noise) {
        return static_cast<std::uint8_t>(40 + (x / (9 + i) + y / (13 - i)) % 180 + (noise >> 7) % 16);
    }

    std::shared_ptr<Imaging::NSBitmapImageRep> m_bitmap;
};

/// Runs `body(firstRow, rowsEnd)` for the two halves of a picture at once, one on this thread.
template<class Body>
void inTwoStrips(int rows, const Body& body) {
    std::thread lower([&] { body(rows / 2, rows); });
    body(0, rows / 2);
    lower.join();
}

/// Has libvips compute a picture into fresh memory, then lets go of both.
inline void computeAndFree(VipsImage* image) {
    std::size_t size = 0;
    void* const pixels = vips_image_write_to_memory(image, &size);
    if (pixels == nullptr) vips_error_exit("computing the picture");
    g_free(pixels);
    g_object_unref(image);
}

/// The least that any operation must do: the source's bytes into memory that is fresh for each run.
inline void copyIntoFreshMemory(const OperationInput& input) {
    auto copy = Imaging::Platform::PixelBuffer::uninitialised(input.bytes());
    std::memcpy(copy.data(), input.data(), input.bytes());
    asm volatile("" : : "r"(copy.data()) : "memory");
}

} // namespace Benchmarks
