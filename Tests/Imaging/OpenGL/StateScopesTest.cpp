#include "Imaging/OpenGL/StateScopes.h"

#include "Tests/Imaging/OpenGL/RecorderFixture.h"

using namespace ImagingTests;
using Imaging::AttribScope;
using Imaging::ModelViewScope;
using Imaging::TextureScope;
using Imaging::Platform::OpenGL::AttribBits;
using Imaging::Platform::OpenGL::TextureTarget;
using testing::ElementsAre;

namespace {

class StateScopes : public RecorderTest {};

} // namespace

TEST_F(StateScopes, PutEverythingBackInTheOppositeOrder) {
    {
        const AttribScope attributes(*gl, AttribBits::Current | AttribBits::Texture);
        const ModelViewScope matrix(*gl);
        const TextureScope texturing(*gl, TextureTarget::Texture2D);
        EXPECT_THAT(gl->takeLines(),
                    ElementsAre("glPushAttrib(GL_CURRENT_BIT | GL_TEXTURE_BIT)", "glMatrixMode(GL_MODELVIEW)",
                                "glPushMatrix()", "glEnable(GL_TEXTURE_2D)"));
    }
    EXPECT_THAT(gl->takeLines(), ElementsAre("glDisable(GL_TEXTURE_2D)", "glPopMatrix()", "glPopAttrib()"));
}

TEST_F(StateScopes, PutEverythingBackWhenAnExceptionPasses) {
    EXPECT_THROW(
        {
            const AttribScope attributes(*gl, AttribBits::Current);
            const ModelViewScope matrix(*gl);
            throw 17;
        },
        int);
    EXPECT_EQ(gl->attribDepth(), 0U);
    EXPECT_EQ(gl->matrixDepth(Imaging::Platform::OpenGL::MatrixMode::ModelView), 0U);
}
