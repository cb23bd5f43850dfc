#pragma once

// Internal: the ready-to-draw form of a picture. Not installed.

#include "Platform/Foundation/Geometry.h"
#include "Platform/Graphics/BitmapImageRep.h"
#include "Platform/Pixels/Rows/PixelImage.h"

#include <memory>
#include <mutex>
#include <vector>

namespace Imaging::Platform {

/// Something that is read row by row as premultiplied words in the sRGB colour space. It can be read from
/// several threads at a time.
class PictureRows {
public:
    virtual ~PictureRows() = default;

    virtual int width() const = 0;
    virtual int height() const = 0;

    /// Whether every pixel is known to be opaque.
    virtual bool isOpaque() const = 0;

    /// Row y, counted from the top, into `width` words.
    virtual void read(int y, std::uint32_t* words) const = 0;
};

/// Pixels that cover `bounds` of a picture's own space, and halves of them for drawing the picture small. The
/// pixels' rows run downward, the space's y axis upward, so the first row lies at the top of the bounds.
///
/// Level 0 holds all pixels, level k a quarter as many as level k − 1. A picture that is made of rows holds
/// none at first: each level is made when it is first needed, straight from the rows where no finer one is
/// there, so that a photograph that is only ever drawn small never exists a second time at full size.
///
/// Memory: 4 bytes a pixel of each level made, which all together comes to 16/3 bytes a pixel of the picture
/// (8 where it is a single row or column). Levels are kept until `letGo`, which a picture's `recache` and
/// `releasePictureMemory` lead to.
///
/// `level` and `letGo` may be called from any threads; what `level` gives stays valid for who holds it.
class DrawablePicture {
public:
    DrawablePicture(std::shared_ptr<const PictureRows> rows, NSRect bounds);

    /// A picture of pixels that are there already, and that may be drawn into.
    DrawablePicture(std::shared_ptr<PixelImage> pixels, NSRect bounds);
    ~DrawablePicture();
    DrawablePicture(const DrawablePicture&) = delete;
    DrawablePicture& operator=(const DrawablePicture&) = delete;

    int width() const { return m_width; }
    int height() const { return m_height; }
    NSRect bounds() const { return m_bounds; }

    /// Whether every pixel is known to be opaque.
    bool isOpaque() const;

    /// How many levels there can be: the last one is a single pixel.
    int levelCount() const;

    /// The pixels reduced `k` times, 0 <= k < levelCount(). Throws like PixelImage::transparent.
    std::shared_ptr<const PixelImage> level(int k);

    /// The pixels themselves, to be drawn into between `beginChanges` and `endChanges`. Made if need be.
    std::shared_ptr<PixelImage> pixels();

    /// From the one to the other the pixels may change, so that levels are made anew for each draw. Where
    /// they did change, the rows are not read any more.
    void beginChanges();
    void endChanges(bool changed);

    /// Whether a word belongs to the picture's own pixels.
    bool holds(const std::uint32_t* word) const;

    /// A copy of pixels of its own.
    std::shared_ptr<DrawablePicture> copy();

    /// The same pixels over other bounds.
    std::shared_ptr<DrawablePicture> withBounds(NSRect bounds);

    /// Lets go of all levels that can be made again.
    void letGo();

private:
    using Levels = std::vector<std::shared_ptr<PixelImage>>;

    std::shared_ptr<PixelImage> madeLevel(Levels& levels, int k) const;

    std::shared_ptr<const PictureRows> m_rows;
    int m_width;
    int m_height;
    NSRect m_bounds;
    mutable std::mutex m_lock;
    Levels m_levels; ///< guarded by m_lock
    bool m_changing = false;
};

/// A representation that exists only as drawn pixels.
class NSCachedImageRep : public NSImageRep {
public:
    explicit NSCachedImageRep(std::shared_ptr<DrawablePicture> picture);
    ~NSCachedImageRep() override;

    const std::shared_ptr<DrawablePicture>& picture() const { return m_picture; }

private:
    std::shared_ptr<DrawablePicture> m_picture;
};

} // namespace Imaging::Platform
