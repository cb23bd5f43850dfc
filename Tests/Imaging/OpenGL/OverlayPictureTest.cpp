// Also tests: Imaging/OpenGLGraphicsContext.cpp

#include "Imaging/OpenGL/OverlayPicture.h"

#include "Imaging/GraphicsUtilities.h"
#include "Tests/Imaging/OpenGL/TargetFixture.h"

using namespace ImagingTests;
using testing::ElementsAreArray;
using testing::IsEmpty;

namespace {

/// A picture that 2-D graphics draw on a transparent one of the size, from the top row.
template<class Body>
std::vector<std::uint8_t> drawnBytes(int width, int height, const Body& body) {
    return alphaFirstBytes(drawnOn(width, height, body), 0, 0, width, height);
}

class Overlay : public TargetTest {
protected:
    Overlay() { beginFrame(12, 7); }
    ~Overlay() override { target->endDrawing(); }

    /// What laying a picture of one tile of the frame's size over it comes to; the texture has this name.
    static Lines overlayLines(int name) {
        return joined(
            {{"glEnable(" + rectangle + ")", "glGenTextures(1)"},
             uploadLines(rectangle, name, 12, 12, 7),
             {"glDisable(" + rectangle + ")",
              "glPushAttrib(GL_CURRENT_BIT | GL_COLOR_BUFFER_BIT | GL_TEXTURE_BIT)", "glEnable(GL_BLEND)",
              "glBlendFunc(GL_ONE, GL_ONE_MINUS_SRC_ALPHA)",
              "glTexEnvi(GL_TEXTURE_ENV, GL_TEXTURE_ENV_MODE, GL_MODULATE)", "glMatrixMode(GL_MODELVIEW)",
              "glPushMatrix()", "glOrtho(-1, 1, 1, -1, -1, 1)", "glEnable(" + rectangle + ")",
              "glBindTexture(" + rectangle + ", " + std::to_string(name) + ")", "glBegin(GL_POLYGON)",
              "glEnd()", "glBindTexture(" + rectangle + ", 0)", "glDisable(" + rectangle + ")",
              "glPopMatrix()", "glPopAttrib()", "glDeleteTextures({" + std::to_string(name) + "})"}});
    }
};

} // namespace

TEST_F(Overlay, IsHowAnyOtherNodeIsDrawn) {
    const auto node = pictureNode(distinctPicture(5, 4));
    const auto list = listOfRecords({recordOf(moved(3, 2))});
    target->drawImage(*node, list, 2, 0.5F);
    const Lines lines = gl->takeLines();
    EXPECT_THAT(withoutVertices(lines), ElementsAreArray(overlayLines(1)));
    EXPECT_THAT(vertexLines(lines),
                testing::UnorderedElementsAre(vertexLine(0, 0, -1, -1), vertexLine(12, 0, 1, -1),
                                              vertexLine(12, 7, 1, 1), vertexLine(0, 7, -1, 1)));
    ASSERT_EQ(gl->uploads().size(), 1U);
    EXPECT_EQ(gl->uploads()[0].pixels,
              drawnBytes(12, 7, [&] { node->drawImage(nullptr, list, 2, 0.5F, nullptr); }));
}

TEST_F(Overlay, LiesSourceOverAtFullStrengthWhateverTheOperation) {
    const auto node = pictureNode(distinctPicture(5, 4));
    int name = 0;
    for (const int operation : {1, 6, 13}) {
        target->drawImage(*node, listOfRecords({recordOf({})}), operation, 0.25F);
        EXPECT_THAT(withoutVertices(gl->takeLines()), ElementsAreArray(overlayLines(++name))) << operation;
    }
}

TEST_F(Overlay, HandsTheNodeItsRecordsWithoutATarget) {
    const auto node = leaf(NSMakeRect(0, 0, 10, 20));
    target->drawImage(*node, listOfRecords({recordOf(moved(3, 4), NSMakeRect(1, 2, 3, 4))}), 5, 0.75F);
    ASSERT_EQ(node->draws.size(), 1U);
    EXPECT_EQ(node->draws[0].imageContext, nullptr);
    EXPECT_EQ(node->draws[0].operation, 5);
    EXPECT_EQ(node->draws[0].fraction, 0.75F);
    ASSERT_EQ(node->draws[0].records.size(), 1U);
    EXPECT_TRUE(isRect(node->draws[0].records[0].clipRect(), 1, 2, 3, 4));
}

TEST_F(Overlay, IsDrawnForAnOpenGLImageWithoutABitmap) {
    OpenGLImage empty(nullptr);
    target->drawImage(empty, listOfRecords({recordOf({})}), 2, 1);
    EXPECT_THAT(withoutVertices(gl->takeLines()), ElementsAreArray(overlayLines(1)));
}

TEST_F(Overlay, LeavesTheCurrent2DContextAsItWas) {
    Pixels::Canvas canvas(9, 9);
    const auto before = Imaging::Platform::NSGraphicsContext::currentContext();
    canvas.context().saveGraphicsState();
    target->drawHintText("hint", NSMakeRect(0, 0, 12, 7));
    EXPECT_EQ(Imaging::Platform::NSGraphicsContext::currentContext(), before);
    EXPECT_EQ(before->savedStateCount(), 1U);
    EXPECT_FALSE(before->hasPainted());
    before->restoreGraphicsState();
}

TEST_F(Overlay, IssuesNothingWhenDrawingThrowsAndPassesItOn) {
    const auto node = leaf(NSMakeRect(0, 0, 10, 20));
    node->failing = Failing::Draw;
    Pixels::Canvas canvas(9, 9);
    const auto before = Imaging::Platform::NSGraphicsContext::currentContext();
    EXPECT_THROW(target->drawImage(*node, listOfRecords({recordOf({})}), 2, 1), NSException);
    EXPECT_THAT(gl->takeLines(), IsEmpty());
    EXPECT_EQ(Imaging::Platform::NSGraphicsContext::currentContext(), before);
    target->drawImage(nodeOver({node}), NSMakeRect(0, 0, 12, 7), 2, 1); // a walk goes on with the next source
    target->endDrawing();
    EXPECT_TRUE(isLockFree());
}

TEST_F(Overlay, CarriesTheHintText) {
    const NSRect rect = NSMakeRect(-20, -10, 60, 30);
    target->drawHintText("hint", rect);
    EXPECT_THAT(withoutVertices(gl->takeLines()), ElementsAreArray(overlayLines(1)));
    const auto expected = drawnBytes(12, 7, [&] { Imaging::HintTextInFrame(rect, "hint"); });
    EXPECT_EQ(gl->uploads()[0].pixels, expected);
    EXPECT_NE(expected, alphaFirstBytes(Grid(12, 7), 0, 0, 12, 7)) << "some of the text is there";
}

TEST_F(Overlay, DrawsTheNodeIntoTheRectangleWithItself) {
    const auto node = leaf(NSMakeRect(0, 0, 10, 20));
    target->drawImage(node, NSMakeRect(3, 4, 20, 20), 6, 0.25F);
    ASSERT_EQ(node->draws.size(), 1U);
    EXPECT_EQ(node->draws[0].imageContext, static_cast<IMGDrawingTarget*>(target.get()));
    EXPECT_EQ(node->draws[0].operation, 6);
    EXPECT_EQ(node->draws[0].fraction, 0.25F);
    EXPECT_TRUE(isTransform(node->draws[0].records.at(0).transform(), matrix(2, 0, 0, 1, 3, 4)));
    EXPECT_EQ(node->retainedDraws.size(), 0U);
    EXPECT_NO_THROW(target->drawImage(nullptr, NSMakeRect(3, 4, 20, 20), 6, 0.25F));
}

TEST_F(Overlay, IsLeftOutOfBoundsBelowAPixel) {
    target->endDrawing();
    for (const NSRect bounds :
         {NSMakeRect(0, 0, 0.5F, 7), NSMakeRect(0, 0, 12, 0), NSMakeRect(0, 0, -3, 4)}) {
        target->beginDrawing(bounds);
        gl->takeLines();
        target->drawHintText("hint", NSMakeRect(0, 0, 12, 7));
        EXPECT_THAT(gl->takeLines(), IsEmpty());
        target->endDrawing();
        takeLog(); // a viewport of negative size is an error of OpenGL
    }
}

TEST(OverlayPicture, IsTransparentWhereNothingIsDrawn) {
    const auto picture = Imaging::overlayPicture({6, 4}, [] {
        Imaging::Platform::NSColor::colorWithCalibratedRed(1, 0, 0, 1).set();
        Imaging::Platform::NSRectFill(NSMakeRect(1, 0, 2, 3));
    });
    Grid expected(6, 4);
    for (int y = 1; y < 4; ++y) expected.at(1, y) = expected.at(2, y) = Pixels::red;
    EXPECT_EQ(Pixels::shownBy(*picture, 6, 4), expected);
}
