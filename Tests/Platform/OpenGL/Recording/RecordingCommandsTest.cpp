#include "Platform/OpenGL/Recording/RecordingCommands.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <vector>

using namespace Imaging::Platform;
using namespace Imaging::Platform::OpenGL;
using testing::ElementsAre;

TEST(RecordingCommands, WriteDownVerticesInTheirOrder) {
    RecordingCommands recorder;
    recorder.begin(Primitive::Polygon);
    recorder.color4f(0.5f, 1, 0, 0.1f);
    recorder.texCoord2f(0.25f, 1);
    recorder.vertex3f(-1, 2.5f, 0);
    recorder.vertex2f(3, -4);
    recorder.end();
    recorder.rectf(-1, -1, 1, 1);
    EXPECT_THAT(recorder.lines(), ElementsAre("glBegin(GL_POLYGON)", "glColor4f(0.5, 1, 0, 0.1)",
                                              "glTexCoord2f(0.25, 1)", "glVertex3f(-1, 2.5, 0)",
                                              "glVertex2f(3, -4)", "glEnd()", "glRectf(-1, -1, 1, 1)"));
    EXPECT_EQ(recorder.getError(), Error::None);
}

TEST(RecordingCommands, WriteDownMatrices) {
    RecordingCommands recorder;
    recorder.matrixMode(MatrixMode::Projection);
    recorder.loadIdentity();
    recorder.ortho(-1, 1, -1, 1, -1, 1);
    recorder.frustum(-1, 1, -1, 1, 3, 5);
    recorder.translatef(1, 2, 3);
    recorder.scalef(2, 2, 1);
    recorder.rotatef(-90, 0, 1, 0);
    recorder.multMatrixf({1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 5, -6, 0, 1});
    EXPECT_THAT(recorder.lines(),
                ElementsAre("glMatrixMode(GL_PROJECTION)", "glLoadIdentity()", "glOrtho(-1, 1, -1, 1, -1, 1)",
                            "glFrustum(-1, 1, -1, 1, 3, 5)", "glTranslatef(1, 2, 3)", "glScalef(2, 2, 1)",
                            "glRotatef(-90, 0, 1, 0)",
                            "glMultMatrixf({1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 5, -6, 0, 1})"));
}

TEST(RecordingCommands, WriteDownStateTexturesAndTheFrameBuffer) {
    RecordingCommands recorder;
    recorder.blendFunc(BlendFactor::ConstantAlpha, BlendFactor::One);
    recorder.blendColor(1, 1, 1, 0.5f);
    recorder.cullFace(CullFaceMode::Back);
    recorder.lineWidth(2);
    recorder.hint(HintTarget::LineSmooth, HintMode::Nicest);
    recorder.bindTexture(TextureTarget::Rectangle, 7);
    recorder.texParameteri(TextureTarget::Rectangle, TexParameter::MinFilter, TexParameterValue::Linear);
    recorder.texEnvi(TexEnvMode::Replace);
    recorder.pixelStorei(PixelStore::UnpackAlignment, 4);
    recorder.copyTexSubImage2D(TextureTarget::Texture2D, 1, 2, 3, 4, 5, 6);
    recorder.textureRangeApple(TextureTarget::Rectangle, 0, nullptr);
    recorder.viewport(1, 2, 30, 40);
    recorder.clearColor(0, 0, 0, 1);
    recorder.clear(ClearBits::Color);
    recorder.readBufferBack();
    recorder.flush();
    recorder.finish();
    EXPECT_THAT(recorder.takeLines(),
                ElementsAre("glBlendFunc(GL_CONSTANT_ALPHA, GL_ONE)", "glBlendColor(1, 1, 1, 0.5)",
                            "glCullFace(GL_BACK)", "glLineWidth(2)", "glHint(GL_LINE_SMOOTH_HINT, GL_NICEST)",
                            "glBindTexture(GL_TEXTURE_RECTANGLE_EXT, 7)",
                            "glTexParameteri(GL_TEXTURE_RECTANGLE_EXT, GL_TEXTURE_MIN_FILTER, GL_LINEAR)",
                            "glTexEnvi(GL_TEXTURE_ENV, GL_TEXTURE_ENV_MODE, GL_REPLACE)",
                            "glPixelStorei(GL_UNPACK_ALIGNMENT, 4)",
                            "glCopyTexSubImage2D(GL_TEXTURE_2D, 0, 1, 2, 3, 4, 5, 6)",
                            "glTextureRangeAPPLE(GL_TEXTURE_RECTANGLE_EXT, 0, NULL)",
                            "glViewport(1, 2, 30, 40)", "glClearColor(0, 0, 0, 1)",
                            "glClear(GL_COLOR_BUFFER_BIT)", "glReadBuffer(GL_BACK)", "glFlush()",
                            "glFinish()"));
    EXPECT_TRUE(recorder.lines().empty());
    EXPECT_EQ(recorder.getViewport(), (std::array{1, 2, 30, 40}));
    EXPECT_EQ(recorder.getError(), Error::None);
}

TEST(RecordingCommands, CountNamesGeneratedDeletedAndLeft) {
    RecordingCommands recorder;
    std::array<unsigned, 3> names{};
    recorder.genTextures(3, names.data());
    EXPECT_THAT(names, ElementsAre(1, 2, 3));
    const std::array<unsigned, 3> deleted{1, 3, 99};
    recorder.deleteTextures(3, deleted.data());
    EXPECT_EQ(recorder.generatedNames(), 3u);
    EXPECT_EQ(recorder.deletedNames(), 2u);
    EXPECT_THAT(recorder.liveNames(), ElementsAre(2));
    EXPECT_THAT(recorder.lines(), ElementsAre("glGenTextures(3)", "glDeleteTextures({1, 3, 99})"));
}

TEST(RecordingCommands, CountWhatIsPushedAndNotPopped) {
    RecordingCommands recorder;
    recorder.pushAttrib(AttribBits::Current | AttribBits::Transform);
    recorder.matrixMode(MatrixMode::Projection);
    recorder.pushMatrix();
    EXPECT_EQ(recorder.attribDepth(), 1u);
    EXPECT_EQ(recorder.matrixDepth(MatrixMode::Projection), 1u);
    EXPECT_EQ(recorder.matrixDepth(MatrixMode::ModelView), 0u);
    recorder.popAttrib();
    recorder.pushMatrix(); // the mode came back, so this is the other stack
    EXPECT_EQ(recorder.attribDepth(), 0u);
    EXPECT_EQ(recorder.matrixDepth(MatrixMode::ModelView), 1u);
    recorder.popMatrix();
    EXPECT_EQ(recorder.matrixDepth(MatrixMode::ModelView), 0u);
    EXPECT_EQ(recorder.getError(), Error::None);
}

TEST(RecordingCommands, KnowTheLimitsOfTheStacks) {
    RecordingCommands recorder;
    recorder.popMatrix();
    EXPECT_EQ(recorder.getError(), Error::StackUnderflow);
    recorder.popAttrib();
    EXPECT_EQ(recorder.getError(), Error::StackUnderflow);
    for (std::size_t i = 1; i < OpenGLCommands::modelViewStackDepth; ++i) recorder.pushMatrix();
    EXPECT_EQ(recorder.getError(), Error::None);
    recorder.pushMatrix();
    EXPECT_EQ(recorder.getError(), Error::StackOverflow);
    EXPECT_EQ(recorder.matrixDepth(MatrixMode::ModelView), OpenGLCommands::modelViewStackDepth - 1);
    for (std::size_t i = 0; i < OpenGLCommands::attribStackDepth; ++i)
        recorder.pushAttrib(AttribBits::Current);
    EXPECT_EQ(recorder.getError(), Error::None);
    recorder.pushAttrib(AttribBits::Current);
    EXPECT_EQ(recorder.getError(), Error::StackOverflow);
}

TEST(RecordingCommands, RefuseWhatIsNotAllowedBetweenBeginAndEnd) {
    RecordingCommands recorder;
    recorder.begin(Primitive::Lines);
    recorder.blendFunc(BlendFactor::One, BlendFactor::Zero);
    recorder.matrixMode(MatrixMode::Projection);
    recorder.end();
    EXPECT_EQ(recorder.getError(), Error::InvalidOperation);
    EXPECT_EQ(recorder.getError(), Error::None);
    recorder.pushMatrix();
    EXPECT_EQ(recorder.matrixDepth(MatrixMode::ModelView), 1u) << "the mode was not to change";
    recorder.end();
    EXPECT_EQ(recorder.getError(), Error::InvalidOperation);
}

TEST(RecordingCommands, BringBackOnlyTheAttributesThatWereAskedFor) {
    RecordingCommands recorder;
    recorder.enable(Capability::Blend);
    recorder.viewport(1, 1, 5, 5);
    recorder.pushAttrib(AttribBits::ColorBuffer);
    recorder.disable(Capability::Blend);
    recorder.enable(Capability::CullFace);
    recorder.viewport(2, 2, 6, 6);
    recorder.popAttrib();
    EXPECT_TRUE(recorder.isEnabled(Capability::Blend));
    EXPECT_TRUE(recorder.isEnabled(Capability::CullFace));
    EXPECT_EQ(recorder.getViewport(), (std::array{2, 2, 6, 6}));
    recorder.pushAttrib(AttribBits::Enable | AttribBits::Viewport);
    recorder.disable(Capability::CullFace);
    recorder.viewport(3, 3, 7, 7);
    recorder.popAttrib();
    EXPECT_TRUE(recorder.isEnabled(Capability::CullFace));
    EXPECT_EQ(recorder.getViewport(), (std::array{2, 2, 6, 6}));
}

TEST(RecordingCommands, KeepThePixelsOfUploadsWithoutThePaddingOfRows) {
    RecordingCommands recorder;
    unsigned name = 0;
    recorder.genTextures(1, &name);
    recorder.bindTexture(TextureTarget::Texture2D, name);
    std::vector<std::uint8_t> rows(2 * 3 * 4);
    for (std::size_t i = 0; i < rows.size(); ++i) rows[i] = static_cast<std::uint8_t>(i);
    recorder.pixelStorei(PixelStore::UnpackRowLength, 3);
    recorder.texImage2D(TextureTarget::Texture2D, 1, 2, PixelFormat::Bgra, PixelType::UnsignedInt8888,
                        rows.data());
    recorder.texImage2D(TextureTarget::Texture2D, 4, 4, PixelFormat::Rgba, PixelType::UnsignedByte, nullptr);
    ASSERT_EQ(recorder.uploads().size(), 2u);
    EXPECT_EQ(recorder.uploads()[0].name, name);
    EXPECT_EQ(recorder.uploads()[0].width, 1);
    EXPECT_EQ(recorder.uploads()[0].height, 2);
    EXPECT_THAT(recorder.uploads()[0].pixels, ElementsAre(0, 1, 2, 3, 12, 13, 14, 15));
    EXPECT_TRUE(recorder.uploads()[1].pixels.empty());
    EXPECT_EQ(recorder.lines()[3], "glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA, 1, 2, 0, GL_BGRA, "
                                   "GL_UNSIGNED_INT_8_8_8_8, pixels)");
    EXPECT_EQ(recorder.lines()[4],
              "glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA, 4, 4, 0, GL_RGBA, GL_UNSIGNED_BYTE, NULL)");
}

TEST(RecordingCommands, AnswerAsTheyAreTold) {
    OpenGLFacts facts;
    facts.maximumTextureSize = 64;
    facts.extensions = "GL_A GL_B";
    RecordingCommands recorder(facts);
    EXPECT_EQ(recorder.getMaxTextureSize(), 64);
    EXPECT_EQ(recorder.getMaxRectangleTextureSize(), 0);
    EXPECT_EQ(recorder.getString(StringName::Extensions), "GL_A GL_B");

    recorder.answerWithError(Error::OutOfMemory);
    recorder.answerWithError(Error::ContextLost);
    EXPECT_EQ(recorder.getError(), Error::OutOfMemory);
    EXPECT_EQ(recorder.getError(), Error::ContextLost);
    EXPECT_EQ(recorder.getError(), Error::None);

    std::array<std::uint8_t, 8> pixels{};
    recorder.answerPixelsWith([](int x, int y, int width, int height, std::uint8_t* rgba) {
        rgba[0] = static_cast<std::uint8_t>(10 * x + y);
        rgba[7] = static_cast<std::uint8_t>(10 * width + height);
    });
    recorder.readPixels(3, 4, 2, 1, pixels.data());
    EXPECT_THAT(pixels, ElementsAre(34, 0, 0, 0, 0, 0, 0, 21));
    EXPECT_THAT(recorder.lines(), ElementsAre("glReadPixels(3, 4, 2, 1, GL_RGBA, GL_UNSIGNED_BYTE, pixels)"));
}

TEST(RecordingCommands, RefuseALineWidthOfZeroAndNegativeSizes) {
    RecordingCommands recorder;
    recorder.lineWidth(0);
    EXPECT_EQ(recorder.getError(), Error::InvalidValue);
    recorder.viewport(0, 0, -1, 5);
    EXPECT_EQ(recorder.getError(), Error::InvalidValue);
    recorder.texImage2D(TextureTarget::Texture2D, -1, 4, PixelFormat::Rgba, PixelType::UnsignedByte, nullptr);
    EXPECT_EQ(recorder.getError(), Error::InvalidValue);
    EXPECT_TRUE(recorder.uploads().empty());
}
