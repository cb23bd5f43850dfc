#include "Resources/FramePieces.h"

#include "Platform/Graphics/BezierPath.h"
#include "Platform/Graphics/BitmapImageRep.h"
#include "Platform/Graphics/GraphicsContext.h"
#include "Platform/Graphics/Image.h"

// An empty picture's well: sunk a little into whatever it lies on. Nothing but translucent white, gray and
// black, so that it takes on the ground's colour: on light grounds the shadow shows, on dark ones the rim and
// the light that it catches.

namespace Resources {

using namespace Imaging::Platform;

namespace {

constexpr float corner = 12;
constexpr float side = 2 * corner + 1; // between the corners lies one pixel, which is stretched
constexpr float rimRadius = 7;

NSColor shade(float white, float alpha) { return NSColor::colorWithCalibratedWhite(white, alpha); }

/// A rectangle with rounded corners, each a quarter of a circle to within 0.03 % of its radius.
NSBezierPath roundedRect(NSRect r, float radius) {
    const float handle = radius * 0.44771526F; // from the corner to the control point
    const float left = NSMinX(r);
    const float right = NSMaxX(r);
    const float bottom = NSMinY(r);
    const float top = NSMaxY(r);
    NSBezierPath path;
    path.moveToPoint(NSMakePoint(left + radius, bottom));
    path.lineToPoint(NSMakePoint(right - radius, bottom));
    path.curveToPoint(NSMakePoint(right, bottom + radius), NSMakePoint(right - handle, bottom),
                      NSMakePoint(right, bottom + handle));
    path.lineToPoint(NSMakePoint(right, top - radius));
    path.curveToPoint(NSMakePoint(right - radius, top), NSMakePoint(right, top - handle),
                      NSMakePoint(right - handle, top));
    path.lineToPoint(NSMakePoint(left + radius, top));
    path.curveToPoint(NSMakePoint(left, top - radius), NSMakePoint(left + handle, top),
                      NSMakePoint(left, top - handle));
    path.lineToPoint(NSMakePoint(left, bottom + radius));
    path.curveToPoint(NSMakePoint(left + radius, bottom), NSMakePoint(left, bottom + handle),
                      NSMakePoint(left + handle, bottom));
    path.closePath();
    return path;
}

/// What lies between two shapes.
void fillBetween(const NSBezierPath& outer, const NSBezierPath& inner, const NSColor& color) {
    NSBezierPath path = outer;
    path.appendBezierPath(inner);
    path.setWindingRule(NSWindingRule::EvenOdd);
    color.set();
    path.fill();
}

/// The shadow of the upper and side walls, softer the further in: layers of which each reaches less far.
void drawInnerShadow(NSRect well, float radius) {
    const NSGraphicsStateScope state;
    const NSBezierPath edge = roundedRect(well, radius);
    edge.addClip();
    constexpr int layers = 6;
    for (int layer = 1; layer <= layers; ++layer) {
        const auto depth = static_cast<float>(layer);
        NSRect lit = NSInsetRect(well, depth * 0.5F, 0);
        lit.size.height -= depth;
        lit.origin.y -= side; // the lower wall throws none
        lit.size.height += side;
        fillBetween(roundedRect(NSInsetRect(well, -side * 2, -side * 2), 0), roundedRect(lit, radius),
                    shade(0, 0.030F));
    }
}

void drawFrame(NSRect whole) {
    // The lowest row is the light that the lower rim catches.
    const NSRect rim =
        NSMakeRect(whole.origin.x, whole.origin.y + 1, whole.size.width, whole.size.height - 1);
    const NSBezierPath outer = roundedRect(rim, rimRadius);
    NSBezierPath caught = outer;
    caught.transformUsingAffineTransform(NSAffineTransform({1, 0, 0, 1, 0, -1}));
    {
        const NSGraphicsStateScope state;
        NSBezierPath outside = NSBezierPath::bezierPathWithRect(whole);
        outside.appendBezierPath(outer);
        outside.setWindingRule(NSWindingRule::EvenOdd);
        outside.addClip();
        shade(1, 0.45F).set();
        caught.fill();
    }
    const NSRect well = NSInsetRect(rim, 1, 1);
    const NSBezierPath inner = roundedRect(well, rimRadius - 1);
    shade(0.3F, 0.08F).set();
    inner.fill();
    drawInnerShadow(well, rimRadius - 1);
    fillBetween(outer, inner, shade(0.55F, 0.62F));
}

std::shared_ptr<NSImage> cutOut(NSImage& frame, NSRect part) {
    auto piece = std::make_shared<NSImage>(part.size);
    const NSImageFocus focus(*piece);
    frame.drawInRect({NSZeroPoint, part.size}, part, NSCompositeCopy, 1);
    return piece;
}

} // namespace

std::vector<FramePiece> drawnFramePieces() {
    NSImage frame(NSMakeSize(side, side));
    {
        const NSImageFocus focus(frame);
        drawFrame(NSMakeRect(0, 0, side, side));
    }
    const float far = corner + 1; // where the right and the upper corners begin
    const auto piece = [&frame](const char* name, float x, float y, float width, float height) {
        return FramePiece{name, cutOut(frame, NSMakeRect(x, y, width, height))};
    };
    return {
        piece("box_topleft", 0, far, corner, corner),     piece("box_top", corner, far, 1, corner),
        piece("box_topright", far, far, corner, corner),  piece("box_left", 0, corner, corner, 1),
        piece("box_middle", corner, corner, 1, 1),        piece("box_right", far, corner, corner, 1),
        piece("box_bottomleft", 0, 0, corner, corner),    piece("box_bottom", corner, 0, 1, corner),
        piece("box_bottomright", far, 0, corner, corner),
    };
}

} // namespace Resources
