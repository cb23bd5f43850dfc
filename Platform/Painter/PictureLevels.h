#pragma once

// Internal: the ready-to-draw form of a picture. Not installed.

#include "Platform/Painter/PictureRows.h"
#include "Platform/Pixels/Rows/PixelImage.h"

#include <memory>
#include <mutex>
#include <vector>

namespace Imaging::Platform {

/// The pixels of a picture, rows downward, and halves of them for drawing the picture small.
///
/// Level 0 holds all pixels, level k a quarter as many as level k − 1. A picture that is made of rows holds
/// none at first: each level is made when it is first needed, straight from the rows where no finer one is
/// there, so that a photograph that is only ever drawn small never exists a second time at full size.
///
/// Memory: 4 bytes a pixel of each level made, which all together comes to 16/3 bytes a pixel of the picture
/// (8 where it is a single row or column). Levels are kept until `letGo` or `letGoOfAll`.
///
/// `level`, `letGo` and `letGoOfAll` may be called from any threads; what `level` gives stays valid for who
/// holds it.
class PictureLevels {
public:
    explicit PictureLevels(std::shared_ptr<const PictureRows> rows);

    /// A picture of pixels that are there already, and that may be drawn into.
    explicit PictureLevels(std::shared_ptr<PixelImage> pixels);
    ~PictureLevels();
    PictureLevels(const PictureLevels&) = delete;
    PictureLevels& operator=(const PictureLevels&) = delete;

    int width() const { return m_width; }
    int height() const { return m_height; }

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

    /// A copy of the pixels.
    std::shared_ptr<PixelImage> copiedPixels();

    /// Lets go of all levels that can be made again: of this picture, and of all that there are.
    void letGo();
    static void letGoOfAll();

private:
    using Levels = std::vector<std::shared_ptr<PixelImage>>;

    std::shared_ptr<PixelImage> madeLevel(Levels& levels, int k) const;

    std::shared_ptr<const PictureRows> m_rows;
    int m_width;
    int m_height;
    mutable std::mutex m_lock;
    Levels m_levels; ///< guarded by m_lock
    bool m_changing = false;
};

} // namespace Imaging::Platform
