// Also tests: Imaging/OpenGLGraphicsContext.cpp

#include "Imaging/OpenGL/TexturePlacement.h"

#include "Tests/Imaging/OpenGL/TargetFixture.h"

using namespace ImagingTests;
using testing::ElementsAreArray;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

namespace {

/// Draws of a loaded texture of 8 by 4 pixels in a frame of 40 by 20.
class DrawTexture : public TargetTest {
protected:
    DrawTexture() { load(); }

    ~DrawTexture() override {
        target->endDrawing();
        OpenGLCommands::setCurrent(gl);
        texture.reset();
    }

    void load() {
        texture = std::make_unique<OpenGLTexture>(alphaFirst(Grid(8, 4, Pixels::red)));
        texture->loadTextureWithImage(nullptr, 0, 0);
        beginFrame(40, 20);
    }

    Lines draw(const std::vector<TransformAndClipRect>& records, int operation = 2, float fraction = 1,
               bool inverted = false) {
        target->drawTexture(*texture, {8, 4}, listOfRecords(records), operation, fraction, inverted);
        return gl->takeLines();
    }

    /// Everything but the vertices, for a texture of one tile of which one polygon is left.
    static Lines expected(const Lines& mode, const Lines& matrices) {
        return joined(
            {{"glPushAttrib(GL_CURRENT_BIT | GL_TRANSFORM_BIT | GL_COLOR_BUFFER_BIT | GL_TEXTURE_BIT)",
              "glEnable(GL_BLEND)"},
             mode,
             {"glTexEnvi(GL_TEXTURE_ENV, GL_TEXTURE_ENV_MODE, GL_MODULATE)", "glMatrixMode(GL_MODELVIEW)",
              "glPushMatrix()", "glOrtho(-1, 1, 1, -1, -1, 1)"},
             matrices,
             {"glScalef(4, 2, 1)", "glTranslatef(1, -1, 0)", "glEnable(" + rectangle + ")",
              "glBindTexture(" + rectangle + ", 1)", "glBegin(GL_POLYGON)", "glEnd()",
              "glBindTexture(" + rectangle + ", 0)", "glDisable(" + rectangle + ")", "glPopMatrix()",
              "glPopAttrib()"}});
    }

    static Lines sourceOver(const std::string& fraction) {
        return {"glBlendFunc(GL_ONE, GL_ONE_MINUS_SRC_ALPHA)",
                "glColor4f(" + fraction + ", " + fraction + ", " + fraction + ", " + fraction + ")"};
    }

    std::unique_ptr<OpenGLTexture> texture;
};

// Two units of the square over 40 and 20 of the bounds.
const std::string boundsScale = "glScalef(0.05, 0.1, 1)";

} // namespace

TEST_F(DrawTexture, LaysThePictureIntoTheBoundsStepByStep) {
    const Lines lines = draw({recordOf(moved(3, 5))}, 2, 0.5F);
    EXPECT_THAT(withoutVertices(lines),
                ElementsAreArray(
                    expected(sourceOver("0.5"), {"glTranslatef(-1, 1, 0)", boundsScale,
                                                 "glMultMatrixf({1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 3, -5, "
                                                 "0, 1})"})));
    EXPECT_THAT(vertexLines(lines), UnorderedElementsAre(vertexLine(0, 0, -1, -1), vertexLine(8, 0, 1, -1),
                                                         vertexLine(8, 4, 1, 1), vertexLine(0, 4, -1, 1)));
}

TEST_F(DrawTexture, TurnsAnInvertedPictureOver) {
    const Lines lines = draw({recordOf(moved(3, 5))}, 2, 1, true);
    EXPECT_THAT(withoutVertices(lines),
                ElementsAreArray(
                    expected(sourceOver("1"), {"glTranslatef(-1, -1, 0)", "glScalef(0.05, -0.1, 1)",
                                               "glMultMatrixf({1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 3, -5, 0, "
                                               "1})"})));
}

TEST_F(DrawTexture, DrawsWithEachOperation) {
    const Lines matrices = {"glTranslatef(-1, 1, 0)", boundsScale};
    const std::vector<std::pair<int, Lines>> modes = {
        {1, {"glBlendFunc(GL_ONE, GL_ZERO)"}},
        {2, sourceOver("0.25")},
        {6, {"glBlendFunc(GL_ONE_MINUS_DST_ALPHA, GL_ONE)", "glColor4f(0.25, 0.25, 0.25, 0.25)"}},
        {13, {"glBlendFunc(GL_CONSTANT_ALPHA, GL_ONE)", "glBlendColor(1, 1, 1, 0.25)"}},
        {10, {}}};
    for (const auto& [operation, mode] : modes) {
        EXPECT_THAT(withoutVertices(draw({}, operation, 0.25F)), ElementsAreArray(expected(mode, matrices)))
            << operation;
    }
}

TEST_F(DrawTexture, EntersRecordsOneAfterAnotherWithTheLinearPartTransposed) {
    const Lines lines =
        draw({recordOf(matrix(1, 0.5F, 0.25F, 2, 3, 4)), recordOf(matrix(2, 0, 0, 3, -1, 1))});
    EXPECT_THAT(withoutVertices(lines),
                ElementsAreArray(expected(sourceOver("1"), {"glTranslatef(-1, 1, 0)", boundsScale,
                                                            "glMultMatrixf({1, 0.25, 0, 0, 0.5, 2, 0, 0, 0, "
                                                            "0, 1, 0, 3, -4, 0, 1})",
                                                            "glMultMatrixf({2, 0, 0, 0, 0, 3, 0, 0, 0, 0, 1, "
                                                            "0, -1, -1, 0, 1})"})));
}

TEST_F(DrawTexture, ClipsByARecordsRectangleUnderTheRecordsSoFar) {
    // Of the picture at (3, 5) the part from 2 to 6 across and 1 to 4 up is left, which is the texture's
    // columns 2 to 6 and rows 0 to 3.
    const Lines lines = draw({recordOf(moved(3, 5), NSMakeRect(2, 1, 4, 6))});
    EXPECT_THAT(vertexLines(lines),
                UnorderedElementsAre(vertexLine(2, 0, -0.5, -1), vertexLine(6, 0, 0.5, -1),
                                     vertexLine(6, 3, 0.5, 0.5), vertexLine(2, 3, -0.5, 0.5)));
    // The second record's clip lies in the space that it moves by 4 more.
    const Lines second = draw({recordOf(moved(3, 5)), recordOf(moved(-4, 0), NSMakeRect(4, 0, 4, 4))});
    EXPECT_THAT(vertexLines(second), UnorderedElementsAre(vertexLine(4, 0, 0, -1), vertexLine(8, 0, 1, -1),
                                                          vertexLine(8, 4, 1, 1), vertexLine(4, 4, 0, 1)));
}

TEST_F(DrawTexture, ClipsByTheBounds) {
    // Moved out by a quarter to the left and by half downward: the upper right part is left.
    const Lines lines = draw({recordOf(moved(-2, -2))});
    EXPECT_THAT(vertexLines(lines), UnorderedElementsAre(vertexLine(2, 0, -0.5, -1), vertexLine(8, 0, 1, -1),
                                                         vertexLine(8, 2, 1, 0), vertexLine(2, 2, -0.5, 0)));
}

TEST_F(DrawTexture, ClipsByTheImageClipRectangleOfTheFrame) {
    target->setImageClipRect(NSMakeRect(0, 0, 7, 20));
    const Lines lines = draw({recordOf(moved(3, 5))});
    EXPECT_THAT(vertexLines(lines), UnorderedElementsAre(vertexLine(0, 0, -1, -1), vertexLine(4, 0, 0, -1),
                                                         vertexLine(4, 4, 0, 1), vertexLine(0, 4, -1, 1)));
    target->setImageClipRect(NSMakeRect(0, 0, 0, 0.5F));
    EXPECT_THAT(vertexLines(draw({})), IsEmpty()) << "not the zero rectangle, and without area";
}

TEST_F(DrawTexture, ClipsUnderAQuarterTurn) {
    // The picture stands upright from (16, 5) to (20, 13); its lower half is left.
    const auto turned = matrix(0, 1, -1, 0, 20, 5);
    const Lines lines = draw({recordOf(turned, NSMakeRect(0, 0, 4, 4))});
    EXPECT_THAT(vertexLines(lines), UnorderedElementsAre(vertexLine(0, 0, -1, -1), vertexLine(4, 0, 0, -1),
                                                         vertexLine(4, 4, 0, 1), vertexLine(0, 4, -1, 1)));
    EXPECT_THAT(lines,
                testing::Contains("glMultMatrixf({0, -1, 0, 0, 1, 0, 0, 0, 0, 0, 1, 0, 20, -5, 0, 1})"));
}

TEST_F(DrawTexture, BindsTheTilesOfAPictureOfWhichNothingIsLeft) {
    EXPECT_THAT(vertexLines(draw({recordOf(moved(100, 0))})), IsEmpty());
    const Lines lines = draw({recordOf(moved(3, 5), NSMakeRect(20, 20, 4, 4))});
    EXPECT_THAT(vertexLines(lines), IsEmpty());
    EXPECT_THAT(lines, testing::Contains("glBindTexture(" + rectangle + ", 1)"));
}

TEST_F(DrawTexture, CountsOnlyTheBoundsSizeForThePlaceButTheirOriginForTheClip) {
    target->endDrawing();
    target->beginDrawing(NSMakeRect(2, 1, 40, 20));
    gl->takeLines();
    const Lines lines = draw({});
    EXPECT_THAT(lines, testing::IsSupersetOf({std::string("glTranslatef(-1, 1, 0)"), boundsScale}));
    EXPECT_THAT(vertexLines(lines),
                UnorderedElementsAre(vertexLine(2, 0, -0.5, -1), vertexLine(8, 0, 1, -1),
                                     vertexLine(8, 3, 1, 0.5), vertexLine(2, 3, -0.5, 0.5)));
}

TEST_F(DrawTexture, IssuesNothingForWhatHasNoAreaOrNoInverse) {
    EXPECT_THAT(draw({recordOf(matrix(0, 0, 0, 1, 0, 0))}), IsEmpty());
    EXPECT_THAT(draw({recordOf(matrix(NAN, 0, 0, 1, 0, 0))}), IsEmpty());
    target->drawTexture(*texture, {0, 4}, {}, 2, 1, false);
    target->drawTexture(*texture, {8, -1}, {}, 2, 1, false);
    EXPECT_THAT(gl->takeLines(), IsEmpty());
    target->endDrawing();
    beginFrame(0, 20);
    EXPECT_THAT(draw({}), IsEmpty());
}

TEST_F(DrawTexture, HoldsTheLockOnlyWhileItDrawsOutsideAFrame) {
    target->endDrawing();
    draw({});
    EXPECT_TRUE(isLockFree());
}
