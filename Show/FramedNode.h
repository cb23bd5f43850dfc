#pragma once

#include "Imaging/BitmapFormats.h"
#include "Imaging/Image.h"
#include "Tools/Command/Values.h"

#include <cstdint>
#include <memory>
#include <string>

namespace Imaging::Tool {

/// A picture on its way through operations: a node, and the rectangle of the space that it is drawn in that
/// counts as the picture. The frame's size is in whole pixels; where it lies does not matter to people, who
/// count from its upper left corner, to the right and downward.
class FramedNode {
public:
    /// Framed by the rectangle around the node. Throws a Failure for `name` when it has none.
    FramedNode(std::shared_ptr<Imaging::IMGImage> node, std::string name);

    const std::shared_ptr<Imaging::IMGImage>& node() const { return m_node; }
    const std::string& name() const { return m_name; }
    PixelSize size() const;

    /// Puts a node over the picture that touches no pixels. `make` gets the present one and the middle of the
    /// frame; the new frame is the rectangle around the old one under the new node's transform.
    template<class Make>
    void turn(const Make& make) {
        cut();
        adoptTurned(make(m_node, middle()));
    }

    /// Makes the picture plain pixels in sRGB, as operations that compute new ones want it: what is placed or
    /// cut, or has colours of another space, is drawn, with alpha; other pictures, and what such an operation
    /// computed, stay as they are.
    void recompute();

    /// Leaves alpha away where all of a picture is opaque. For a picture that is plain pixels.
    void dropNeedlessAlpha();

    /// The layout of plain pixels.
    Imaging::IMGBitmapFormat layout() const;

    /// Puts a node over plain pixels that computes new ones in the same place.
    template<class Make>
    void recolor(const Make& make) {
        m_node = make(m_node);
    }

    /// Moves the picture within its frame. What leaves it is not lost to a canvas that follows.
    void move(double right, double down);

    /// Cuts a rectangle out. What it has beyond the picture is transparent. Throws a Failure when it lies
    /// outside the picture.
    void crop(double left, double top, double width, double height);

    /// Brings the picture into a size by an IMGImageScaling; SCALE_NONE puts it in the middle.
    void scale(PixelSize size, std::int32_t scaling);

    /// Puts the picture onto a canvas, their upper left corners together.
    void putOnCanvas(PixelSize size);

    /// Draws it so that the frame's lower left corner is at (0, 0) of the calling thread's current context.
    void draw() const;

private:
    /// What lies beyond the frame, if anything: what a move left there, which a canvas may still show, or
    /// what a canvas covers, which nothing may.
    enum class Beyond { Nothing, Moved, Covered };

    Platform::NSPoint middle() const;
    void cut();
    void adoptTurned(std::shared_ptr<Imaging::IMGImage> node);
    void adoptBitmap(std::shared_ptr<Platform::NSBitmapImageRep> bitmap);
    std::shared_ptr<Platform::NSBitmapImageRep> bitmap() const;

    std::shared_ptr<Imaging::IMGImage> m_node;
    std::string m_name;
    Platform::NSRect m_frame;
    Beyond m_beyond = Beyond::Nothing;
};

} // namespace Imaging::Tool
