// Also tests: Imaging/OpenGLGraphicsContext.cpp
//
// Where the OpenGL target is meant to draw otherwise than the 2-D target, and how.

#include "Imaging/ColorOperations.h"
#include "Imaging/Convolution.h"
#include "Imaging/TransformOperations.h"
#include "Imaging/Transitions.h"
#include "Imaging/Transpose.h"
#include "Tests/Imaging/OpenGL/ComparedTargets.h"

using namespace Imaging;
using namespace ImagingTests;
using Imaging::Platform::NSBezierPath;
using Imaging::Platform::NSColor;

namespace {

constexpr int width = 41;
constexpr int height = 31;

class OpenGLDifferences : public testing::Test {
protected:
    Grid inOpenGL(const Drawing& drawing) { return m_offscreen.frame(drawing); }
    static Grid in2D(const Drawing& drawing) { return frameIn2D(width, height, drawing); }

    static std::shared_ptr<OpenGLImage> texture(Rgba pixel) {
        return std::make_shared<OpenGLImage>(alphaFirst(Grid(12, 8, pixel)));
    }

    /// Fills the frame with black, which takes the white that frames begin with away.
    static void blacken(GraphicsContext& target) {
        target.fillRect(NSMakeRect(0, 0, width, height), NSColor::blackColor(), 1);
    }

private:
    OffscreenTarget m_offscreen{{}, width, height};
};

constexpr NSRect place = Imaging::Platform::NSMakeRect(10, 10, 12, 8);

Rgba at(const Grid& grid, int x, int y) { return grid.above(x, y); }

} // namespace

TEST_F(OpenGLDifferences, FramesBeginOpaqueAndWhite) {
    const Grid frame = inOpenGL([](GraphicsContext&) {});
    EXPECT_EQ(frame, Grid(width, height, Pixels::white));
}

TEST_F(OpenGLDifferences, OperationsWithoutABlendFunctionKeepTheOneBefore) {
    // Destination-out would clear; the blend function of the frame, replacing, is still in force.
    const auto drawing = [](const std::shared_ptr<IMGImage>& node) -> Drawing {
        return [=](GraphicsContext& t) {
            blacken(t);
            t.drawImage(node, place, Imaging::Platform::NSCompositeDestinationOut, 1);
        };
    };
    const Rgba pixel{100, 50, 25, 255};
    EXPECT_EQ(at(in2D(drawing(pictureNode(Grid(12, 8, pixel)))), 12, 12), Pixels::transparent);
    EXPECT_EQ(at(inOpenGL(drawing(texture(pixel))), 12, 12), pixel);
}

TEST_F(OpenGLDifferences, CopyIgnoresTheFraction) {
    const auto node = texture({100, 50, 25, 255});
    const auto picture = pictureNode(Grid(12, 8, {100, 50, 25, 255}));
    const auto drawing = [](const std::shared_ptr<IMGImage>& drawn) -> Drawing {
        return
            [=](GraphicsContext& t) { t.drawImage(drawn, place, Imaging::Platform::NSCompositeCopy, 0.5F); };
    };
    EXPECT_EQ(at(inOpenGL(drawing(node)), 12, 12), (Rgba{100, 50, 25, 255}));
    EXPECT_LE(Pixels::difference(at(in2D(drawing(picture)), 12, 12), {50, 25, 13, 128}), 1);
}

TEST_F(OpenGLDifferences, OverlaysLieSourceOverWhateverTheOperation) {
    const auto picture = pictureNode(Grid(12, 8, {100, 50, 25, 255}));
    const Drawing drawing = [&](GraphicsContext& t) {
        t.drawImage(picture, place, Imaging::Platform::NSCompositeDestinationOver, 1);
    };
    EXPECT_EQ(at(inOpenGL(drawing), 12, 12), (Rgba{100, 50, 25, 255})) << "over the white";
    EXPECT_EQ(at(in2D(drawing), 12, 12), Pixels::white) << "below it";
}

TEST_F(OpenGLDifferences, DissolvesOfOverlaysDoNotAddUp) {
    const auto from = pictureNode(Grid(12, 8, {200, 0, 0, 255}));
    const auto to = pictureNode(Grid(12, 8, {0, 200, 0, 255}));
    const auto dissolve = IMGDissolveTransitionOp::transitionWithFromImage(from, to, {12, 8}, 0.5F);
    const Drawing drawing = [&](GraphicsContext& t) {
        blacken(t);
        t.drawImage(dissolve, place, 2, 1);
    };
    EXPECT_LE(Pixels::difference(at(in2D(drawing), 12, 12), {100, 100, 0, 255}), 1);
    EXPECT_LE(Pixels::difference(at(inOpenGL(drawing), 12, 12), {50, 100, 0, 255}), 1)
        << "half of the first shows through half of the second";
}

TEST_F(OpenGLDifferences, PlusLighterDrawsWithTheColourOfWhoeverDrewBefore) {
    const auto node = texture({200, 100, 50, 255});
    // A constant alpha takes the place of the fraction, and the frame's white is the colour.
    const Drawing drawing = [&](GraphicsContext& t) {
        blacken(t);
        t.drawImage(node, place, Imaging::Platform::NSCompositePlusLighter, 0.5F);
    };
    EXPECT_LE(Pixels::difference(at(inOpenGL(drawing), 12, 12), {100, 50, 25, 255}), 1);
}

TEST_F(OpenGLDifferences, DiagonalFlipsOfTexturesLieElsewhere) {
    for (const int type : {FLIP_DIAGONAL, FLIP_ANTIDIAGONAL}) {
        const auto drawing = [&](const std::shared_ptr<IMGImage>& leafNode) -> Drawing {
            const auto flip = IMGTransposeOp::transposeOfType(type, leafNode);
            return [=](GraphicsContext& t) { t.drawImage(flip, NSMakeRect(10, 10, 8, 12), 2, 1); };
        };
        const Grid picture(12, 8, {100, 50, 25, 255});
        const Grid drawn = inOpenGL(drawing(std::make_shared<OpenGLImage>(alphaFirst(picture))));
        EXPECT_EQ(at(drawn, 12, 14), Pixels::white) << type;
        const Grid overlay = inOpenGL(drawing(pictureNode(picture)));
        EXPECT_EQ(at(overlay, 12, 14), (Rgba{100, 50, 25, 255})) << type;
    }
}

TEST_F(OpenGLDifferences, TexturesThatAreTurnedAndThenStretchedLieElsewhere) {
    const auto drawing = [&](const std::shared_ptr<IMGImage>& leafNode) -> Drawing {
        const auto turned = IMGRotationOp::rotationByDegrees(45, {6, 4}, leafNode);
        return [=](GraphicsContext& t) { t.drawImage(turned, NSMakeRect(5, 5, 30, 10), 2, 1); };
    };
    const Grid picture = smoothPicture(12, 8);
    const Grid reference = in2D(drawing(pictureNode(picture)));
    EXPECT_GT(
        distanceOf(inOpenGL(drawing(std::make_shared<OpenGLImage>(alphaFirst(picture)))), reference).mean, 5);
    EXPECT_LE(distanceOf(inOpenGL(drawing(pictureNode(picture))), reference).mean, 1) << "overlays do not";
}

TEST_F(OpenGLDifferences, PixelOperationsDrawPastTheTargetUnlessTheyAreRetained) {
    const auto blur = IMGGaussianOp::gaussianWithSourceImage(pictureNode(Grid(12, 8, {100, 50, 25, 255})), 1);
    const Drawing walked = [&](GraphicsContext& t) { t.drawImage(blur, place, 2, 1); };
    const Drawing retained = [&](GraphicsContext& t) { blur->drawInRect(place, 2, 1, true, &t); };
    EXPECT_EQ(inOpenGL(walked), Grid(width, height, Pixels::white));
    EXPECT_EQ(at(inOpenGL(retained), 16, 14), (Rgba{100, 50, 25, 255}));
    // The result that is passed down goes to the current 2-D context instead.
    const Grid stray = drawnOn(width, height, [&] { inOpenGL(walked); });
    EXPECT_EQ(at(stray, 16, 14), (Rgba{100, 50, 25, 255}));
}

TEST_F(OpenGLDifferences, ShapesWithAlphaLeaveTheFrameLessOpaque) {
    const Drawing drawing = [](GraphicsContext& t) {
        NSBezierPath path = NSBezierPath::bezierPathWithRect(place);
        t.fillBezierPath(path, NSColor::colorWithCalibratedRed(1, 0, 0, 0.5F));
    };
    // Alpha is blended like a colour: 0.5 · 0.5 + 1 · 0.5.
    EXPECT_LE(Pixels::difference(at(inOpenGL(drawing), 12, 12), {255, 128, 128, 191}), 1);
    EXPECT_LE(Pixels::difference(at(in2D(drawing), 12, 12), {255, 128, 128, 255}), 1);
}

TEST_F(OpenGLDifferences, FilledRectanglesTakeTheirColourAsPremultiplied) {
    const Drawing drawing = [](GraphicsContext& t) {
        t.fillRect(place, NSColor::colorWithCalibratedRed(0.5F, 0, 0, 0.5F), 2);
    };
    // 0.5 + 1 · 0.5 of red, half of the white's green; not premultiplied red would be 0.25 + 0.5.
    EXPECT_LE(Pixels::difference(at(inOpenGL(drawing), 12, 12), {255, 128, 128, 255}), 1);
    EXPECT_LE(Pixels::difference(at(in2D(drawing), 12, 12), {191, 128, 128, 255}), 1);
}

TEST_F(OpenGLDifferences, FilledPathsThatAreNotConvexAreFansFromTheirFirstPoint) {
    NSBezierPath path; // a roof, open below
    path.moveToPoint({10, 5});
    path.lineToPoint({20, 15});
    path.lineToPoint({30, 5});
    path.lineToPoint({20, 25});
    const Drawing drawing = [&](GraphicsContext& t) {
        NSBezierPath copy = path;
        t.fillBezierPath(copy, NSColor::blackColor());
    };
    EXPECT_EQ(at(in2D(drawing), 20, 8), Pixels::white);
    EXPECT_EQ(at(inOpenGL(drawing), 20, 8), Pixels::black) << "the first triangle fills what is open";
    EXPECT_EQ(at(in2D(drawing), 20, 20), Pixels::black);
    EXPECT_EQ(at(inOpenGL(drawing), 20, 20), Pixels::black);
}

TEST_F(OpenGLDifferences, FramesOfRectanglesLieOnTheLineAndBlend) {
    const Drawing drawing = [](GraphicsContext& t) {
        t.frameRect(NSMakeRect(10, 10, 20, 12), NSColor::colorWithCalibratedRed(1, 0, 0, 0.5F), 2);
    };
    EXPECT_LE(Pixels::difference(at(in2D(drawing), 10, 15), {128, 0, 0, 128}), 1) << "replaces";
    const Rgba blended = at(inOpenGL(drawing), 10, 15);
    EXPECT_LE(colourDifference(blended, {255, 128, 128, 255}), 2);
    EXPECT_EQ(at(inOpenGL(drawing), 20, 16), Pixels::white);
}
