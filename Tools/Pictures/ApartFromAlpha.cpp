// Two nodes around one that knows nothing of alpha: the lower one divides colours by alpha, the upper one
// multiplies by it again. Both show up as what they are when a graph is printed.

#include "Tools/Pictures/ApartFromAlpha.h"

#include "Imaging/BitmapFormats.h"
#include "Imaging/PixelOperation.h"

#include <algorithm>
#include <cstdint>
#include <string>
#include <utility>

namespace Imaging::Tool {

using Imaging::CCImage;
using Imaging::IMGImage;
using Platform::NSBitmapImageRep;

namespace {

/// round(number / divisor), halves up.
std::uint8_t rounded(unsigned number, unsigned divisor) {
    return static_cast<std::uint8_t>((number + divisor / 2) / divisor);
}

/// Calls `visit` with both pixels of each place.
template<class Visit>
void forEachPixel(const NSBitmapImageRep& from, NSBitmapImageRep& to, const Visit& visit) {
    const std::int64_t width = std::min(from.pixelsWide(), to.pixelsWide());
    const std::int64_t height = std::min(from.pixelsHigh(), to.pixelsHigh());
    for (std::int64_t y = 0; y < height; ++y) {
        const std::uint8_t* source = from.bitmapData() + static_cast<std::size_t>(y) * from.bytesPerRow();
        std::uint8_t* target = to.bitmapData() + static_cast<std::size_t>(y) * to.bytesPerRow();
        for (std::int64_t x = 0; x < width; ++x)
            visit(source + x * from.samplesPerPixel(), target + x * to.samplesPerPixel());
    }
}

/// The bitmap of a node's result, or null.
std::shared_ptr<NSBitmapImageRep> bitmapOf(const std::shared_ptr<CCImage>& result) {
    if (result == nullptr || result->nsImage() == nullptr) return nullptr;
    return Imaging::bitmapRepresentationWithCanonicalFormat(*result->nsImage());
}

/// A node whose result has a layout of its own. It is kept for good: the command changes no graph.
class LayoutChange : public Imaging::PixelOperation {
public:
    std::shared_ptr<CCImage> untransformedImage() override {
        if (m_result == nullptr) m_result = changedResult(bitmapOf(sourceResult()));
        return m_result;
    }

protected:
    LayoutChange(std::shared_ptr<IMGImage> source, Imaging::IMGBitmapFormat layout)
        : PixelOperation(std::move(source)), m_layout(layout) {}

private:
    std::shared_ptr<CCImage> changedResult(const std::shared_ptr<NSBitmapImageRep>& source) {
        if (source == nullptr) return nullptr;
        const std::shared_ptr<NSBitmapImageRep> destination = Imaging::initWithSize(
            {static_cast<float>(source->pixelsWide()), static_cast<float>(source->pixelsHigh())}, m_layout);
        if (destination == nullptr) return nullptr;
        computePixels(*source, *destination);
        const auto picture = std::make_shared<Platform::NSImage>(destination->size());
        picture->addRepresentation(destination);
        return CCImage::ccImageWithNSImage(picture);
    }

    Imaging::IMGBitmapFormat m_layout;
    std::shared_ptr<CCImage> m_result;
};

class ColorsWithoutAlpha : public LayoutChange {
public:
    explicit ColorsWithoutAlpha(std::shared_ptr<IMGImage> source)
        : LayoutChange(std::move(source), Imaging::IMGBitmapFormatRGB) {}

    std::string archiveClassName() const override { return "ColorsWithoutAlpha"; }

protected:
    void computePixels(const NSBitmapImageRep& source, NSBitmapImageRep& destination) override {
        forEachPixel(source, destination, [](const std::uint8_t* from, std::uint8_t* to) {
            const unsigned alpha = from[3];
            if (alpha == 0) return; // the zeros that are there
            for (int i = 0; i < 3; ++i) to[i] = rounded(std::min<unsigned>(from[i], alpha) * 255, alpha);
        });
    }
};

class AlphaPutBack : public LayoutChange {
public:
    AlphaPutBack(std::shared_ptr<IMGImage> colors, std::shared_ptr<IMGImage> alpha)
        : LayoutChange(std::move(colors), Imaging::IMGBitmapFormatRGBA), m_alpha(std::move(alpha)) {}

    std::string archiveClassName() const override { return "AlphaPutBack"; }

protected:
    void computePixels(const NSBitmapImageRep& source, NSBitmapImageRep& destination) override {
        const std::shared_ptr<NSBitmapImageRep> alpha = bitmapOf(m_alpha->untransformedImage());
        if (alpha == nullptr) return;
        forEachPixel(*alpha, destination,
                     [](const std::uint8_t* from, std::uint8_t* to) { to[3] = from[3]; });
        forEachPixel(source, destination, [](const std::uint8_t* from, std::uint8_t* to) {
            for (int i = 0; i < 3; ++i) to[i] = rounded(unsigned{from[i]} * to[3], 255);
        });
    }

private:
    std::shared_ptr<IMGImage> m_alpha;
};

} // namespace

std::shared_ptr<IMGImage>
apartFromAlpha(const std::shared_ptr<IMGImage>& source,
               const std::function<std::shared_ptr<IMGImage>(std::shared_ptr<IMGImage>)>& make) {
    return std::make_shared<AlphaPutBack>(make(std::make_shared<ColorsWithoutAlpha>(source)), source);
}

} // namespace Imaging::Tool
