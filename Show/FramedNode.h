#pragma once

#include "Imaging/BitmapFormats.h"
#include "Imaging/CachedImage.h"
#include "Imaging/CropAndScale.h"
#include "Imaging/Image.h"
#include "Platform/Foundation/Exception.h"
#include "Platform/Foundation/Export.h"
#include "Show/Placement.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace Imaging {

/// A picture on its way through operations: a node, and the rectangle of the space that it is drawn in that
/// counts as the picture. The frame's size is in whole pixels; where it lies does not matter to people, who
/// count from its upper left corner, to the right and downward. A copy shares the node, which nothing here
/// changes: operations put new ones over it. One thread at a time.
///
/// Functions throw an NSException (NSInvalidArgumentException) when the picture is not fit for them, and one
/// (NSGenericException) when memory is short.
///
/// Example:
/// @code
/// FramedNode picture(imagingImage(std::make_shared<NSImage>(NSMakeSize(400, 300))));
/// picture.crop(10, 20, 200, 200);
/// picture.scale({100, 0}, SCALE_TO_FILL);
/// const PixelSize size = picture.size(); // 100 x 100
/// static_cast<void>(size);
/// @endcode
class IMAGING_EXPORT FramedNode {
public:
    /// Framed by the rectangle around the node. Throws when it has none. `name` is what steps call the
    /// picture in their messages, and `advice` what people are told to do where it is too large to be drawn.
    explicit FramedNode(std::shared_ptr<IMGImage> node, std::string name = {},
                        std::string advice = "scale or crop it to a smaller size");

    const std::shared_ptr<IMGImage>& node() const { return m_node; }
    const std::string& name() const { return m_name; }

    /// Of the frame.
    PixelSize size() const;

    /// A picture of which only the outline is known; see StepCheck.h. Its node is blank. Where an operation
    /// depends on what its pixels are a NeedsPixels is thrown.
    static FramedNode outline(std::shared_ptr<IMGImage> blank, std::string name, std::string advice,
                              bool mayLetThrough);

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
    IMGBitmapFormat layout() const;

    /// Puts a node over plain pixels that computes new ones in the same place.
    template<class Make>
    void recolor(const Make& make) {
        m_node = make(m_node);
    }

    /// Moves the picture within its frame. What leaves it is not lost to a canvas that follows.
    void move(double right, double down);

    /// Cuts a rectangle out. What it has beyond the picture is transparent. Throws when it lies outside
    /// the picture.
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

    /// What is known of plain pixels that are not there.
    struct Outline {
        IMGBitmapFormat layout = IMGBitmapFormatUnknown;
        bool mayLetThrough = true; ///< false where all of the frame is certainly opaque
    };

    void noteWhetherOpaque(bool staysOpaque);
    Platform::NSPoint middle() const;
    void cut();
    void adoptTurned(std::shared_ptr<IMGImage> node);
    void adoptBitmap(std::shared_ptr<Platform::NSBitmapImageRep> bitmap);
    std::shared_ptr<Platform::NSBitmapImageRep> bitmap() const;

    std::shared_ptr<IMGImage> m_node;
    std::string m_name;
    std::string m_advice;
    Platform::NSRect m_frame;
    Beyond m_beyond = Beyond::Nothing;
    std::optional<Outline> m_outline;
};

/// Thrown by a picture that is only an outline where its pixels would count.
class IMAGING_EXPORT NeedsPixels : public Platform::NSException {
public:
    NeedsPixels();
    ~NeedsPixels() override;
};

/// Something that is done to a picture. It may throw anything, which reaches whoever carries it out.
using Step = std::function<void(FramedNode&)>;

} // namespace Imaging
