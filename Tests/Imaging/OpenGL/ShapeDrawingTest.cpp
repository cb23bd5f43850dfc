// Also tests: Imaging/OpenGLGraphicsContext.cpp

#include "Imaging/OpenGL/ShapeDrawing.h"

#include "Platform/Graphics/Appearance.h"
#include "Platform/Graphics/BezierPath.h"
#include "Platform/Graphics/Color.h"
#include "Tests/Imaging/OpenGL/TargetFixture.h"

using namespace ImagingTests;
using Imaging::Platform::NSBezierPath;
using Imaging::Platform::NSColor;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;

namespace {

const NSColor color = NSColor::colorWithCalibratedRed(1, 0.5F, 0.25F, 0.75F);
const std::string push = "glPushAttrib(GL_CURRENT_BIT | GL_LINE_BIT | GL_COLOR_BUFFER_BIT)";
const Lines sourceOver = {"glEnable(GL_BLEND)", "glBlendFunc(GL_ONE, GL_ONE_MINUS_SRC_ALPHA)",
                          "glColor4f(1, 1, 1, 1)"};
const std::string ownColor = "glColor4f(1, 0.5, 0.25, 0.75)";
const std::string byAlpha = "glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA)";

Lines shape(const std::string& width, const Lines& vertices) {
    return joined(
        {{push}, sourceOver, {ownColor, "glLineWidth(" + width + ")", byAlpha}, vertices, {"glPopAttrib()"}});
}

/// In a frame whose bounds are (8, 4) to (40, 20): a sixteenth and an eighth of the square a unit.
class Shapes : public TargetTest {
protected:
    Shapes() {
        target->beginDrawing(NSMakeRect(8, 4, 32, 16));
        gl->takeLines();
    }
    ~Shapes() override { target->endDrawing(); }
};

} // namespace

TEST_F(Shapes, FillARectangleInTheSquareWithAColourThatIsNotPremultiplied) {
    target->fillRect(NSMakeRect(16, 6, 4, 8), color, 2);
    EXPECT_THAT(gl->takeLines(),
                ElementsAreArray(joined(
                    {{push}, sourceOver, {ownColor, "glRectf(-0.5, -0.75, -0.25, 0.25)", "glPopAttrib()"}})));
}

TEST_F(Shapes, FillWithEachOperation) {
    const std::vector<std::pair<int, Lines>> modes = {
        {1, {"glEnable(GL_BLEND)", "glBlendFunc(GL_ONE, GL_ZERO)"}},
        {6, {"glEnable(GL_BLEND)", "glBlendFunc(GL_ONE_MINUS_DST_ALPHA, GL_ONE)", "glColor4f(1, 1, 1, 1)"}},
        {13, {"glEnable(GL_BLEND)", "glBlendFunc(GL_CONSTANT_ALPHA, GL_ONE)", "glBlendColor(1, 1, 1, 1)"}},
        {0, {"glEnable(GL_BLEND)"}}};
    for (const auto& [operation, mode] : modes) {
        target->fillRect(NSMakeRect(8, 4, 32, 16), color, operation);
        EXPECT_THAT(
            gl->takeLines(),
            ElementsAreArray(joined({{push}, mode, {ownColor, "glRectf(-1, -1, 1, 1)", "glPopAttrib()"}})))
            << operation;
    }
}

TEST_F(Shapes, FrameARectangleWithFourLinesThatCloseItsCorners) {
    // Of width 2: the rectangle (17, 7) to (21, 15) in the middle of the lines, longer by 2 / 32.
    target->frameRect(NSMakeRect(16, 6, 6, 10), color, 2);
    EXPECT_THAT(gl->takeLines(),
                ElementsAreArray(
                    shape("2", {"glBegin(GL_LINES)", "glVertex2f(-0.5, -0.625)", "glVertex2f(-0.125, -0.625)",
                                "glVertex2f(-0.1875, -0.6875)", "glVertex2f(-0.1875, 0.4375)",
                                "glVertex2f(-0.125, 0.375)", "glVertex2f(-0.5, 0.375)",
                                "glVertex2f(-0.4375, 0.4375)", "glVertex2f(-0.4375, -0.6875)", "glEnd()"})));
}

TEST_F(Shapes, FrameTheFocusRingEightInsideWithAWidthOfTwo) {
    target->drawFocusRingInside(NSMakeRect(8, 4, 32, 20));
    const NSColor ring = Imaging::Platform::appearance().keyboardFocusIndicator;
    const Lines lines = gl->takeLines();
    EXPECT_THAT(lines, testing::Contains("glLineWidth(2)"));
    EXPECT_THAT(lines, testing::Contains("glColor4f(" + word(ring.redComponent()) + ", " +
                                         word(ring.greenComponent()) + ", " + word(ring.blueComponent()) +
                                         ", " + word(ring.alphaComponent()) + ")"));
    // (16, 12) to (32, 16), and half the width further in.
    EXPECT_THAT(lines, testing::Contains("glVertex2f(" + word(2 * 9.0 / 32 - 1 - 2.0 / 32) + ", " +
                                         word(2 * 9.0 / 16 - 1) + ")"));
}

TEST_F(Shapes, FillAPathAsAPolygonForEachPart) {
    NSBezierPath path = NSBezierPath::bezierPathWithRect(NSMakeRect(16, 6, 4, 8));
    path.moveToPoint({8, 4});
    path.lineToPoint({24, 4});
    path.lineToPoint({24, 12});
    path.setLineWidth(3);
    target->fillBezierPath(path, color);
    EXPECT_THAT(gl->takeLines(),
                ElementsAreArray(
                    shape("3", {"glBegin(GL_POLYGON)", "glVertex2f(-0.5, -0.75)", "glVertex2f(-0.25, -0.75)",
                                "glVertex2f(-0.25, 0.25)", "glVertex2f(-0.5, 0.25)",
                                "glVertex2f(-0.5, -0.75)", "glEnd()", "glBegin(GL_POLYGON)",
                                "glVertex2f(-1, -1)", "glVertex2f(0, -1)", "glVertex2f(0, 0)", "glEnd()"})));
}

TEST_F(Shapes, StrokeAPathAsAClosedLineForEachPart) {
    NSBezierPath path;
    path.moveToPoint({8, 4});
    path.lineToPoint({24, 4});
    path.lineToPoint({24, 12});
    target->strokeBezierPath(path, color);
    EXPECT_THAT(gl->takeLines(),
                ElementsAreArray(shape("1", {"glBegin(GL_LINE_LOOP)", "glVertex2f(-1, -1)",
                                             "glVertex2f(0, -1)", "glVertex2f(0, 0)", "glEnd()"})));
}

TEST_F(Shapes, LeaveAPathInTheNormalisedSquare) {
    NSBezierPath filled = NSBezierPath::bezierPathWithRect(NSMakeRect(16, 6, 4, 8));
    NSBezierPath stroked = filled;
    target->fillBezierPath(filled, color);
    target->strokeBezierPath(stroked, color);
    EXPECT_TRUE(isRect(filled.bounds(), -0.5F, -0.75F, 0.25F, 1));
    EXPECT_TRUE(isRect(stroked.bounds(), -0.5F, -0.75F, 0.25F, 1));
}

TEST_F(Shapes, ReportALineWidthOfZeroAndDrawOn) {
    target->frameRect(NSMakeRect(16, 6, 6, 10), color, 0);
    EXPECT_THAT(gl->takeLines(), testing::Contains("glEnd()"));
    EXPECT_THAT(takeLog(), ElementsAre("gl error Imaging/GraphicsUtilities 285 1281"));
}

TEST_F(Shapes, DrawNothingInBoundsWithoutArea) {
    target->endDrawing();
    target->beginDrawing(NSMakeRect(8, 4, 0, 16));
    gl->takeLines();
    NSBezierPath path = NSBezierPath::bezierPathWithRect(NSMakeRect(16, 6, 4, 8));
    target->fillRect(NSMakeRect(16, 6, 4, 8), color, 2);
    target->frameRect(NSMakeRect(16, 6, 4, 8), color, 1);
    target->fillBezierPath(path, color);
    target->strokeBezierPath(path, color);
    EXPECT_THAT(gl->takeLines(), IsEmpty());
    EXPECT_TRUE(isRect(path.bounds(), 16, 6, 4, 8));
}

TEST_F(Shapes, HoldTheLockOnlyWhileTheyAreDrawnOutsideAFrame) {
    target->endDrawing();
    target->fillRect(NSMakeRect(16, 6, 4, 8), color, 2);
    EXPECT_TRUE(isLockFree());
}
