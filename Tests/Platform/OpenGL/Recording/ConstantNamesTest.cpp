#include "Platform/OpenGL/Recording/ConstantNames.h"

#include <gtest/gtest.h>

using namespace Imaging::Platform::OpenGL;

TEST(ConstantNames, AreOpenGLsWords) {
    EXPECT_EQ(nameOf(Primitive::LineLoop), "GL_LINE_LOOP");
    EXPECT_EQ(nameOf(Capability::DepthTest), "GL_DEPTH_TEST");
    EXPECT_EQ(nameOf(TextureTarget::Rectangle), "GL_TEXTURE_RECTANGLE_EXT");
    EXPECT_EQ(nameOf(TextureTarget::Texture2D), "GL_TEXTURE_2D");
    EXPECT_EQ(nameOf(MatrixMode::Projection), "GL_PROJECTION");
    EXPECT_EQ(nameOf(BlendFactor::OneMinusDstAlpha), "GL_ONE_MINUS_DST_ALPHA");
    EXPECT_EQ(nameOf(CullFaceMode::Back), "GL_BACK");
    EXPECT_EQ(nameOf(HintTarget::PolygonSmooth), "GL_POLYGON_SMOOTH_HINT");
    EXPECT_EQ(nameOf(HintMode::Nicest), "GL_NICEST");
    EXPECT_EQ(nameOf(TexEnvMode::Modulate), "GL_MODULATE");
    EXPECT_EQ(nameOf(TexParameter::WrapT), "GL_TEXTURE_WRAP_T");
    EXPECT_EQ(nameOf(TexParameterValue::ClampToEdge), "GL_CLAMP_TO_EDGE");
    EXPECT_EQ(nameOf(PixelStore::UnpackClientStorageApple), "GL_UNPACK_CLIENT_STORAGE_APPLE");
    EXPECT_EQ(nameOf(PixelFormat::Bgra), "GL_BGRA");
    EXPECT_EQ(nameOf(PixelType::UnsignedInt8888), "GL_UNSIGNED_INT_8_8_8_8");
    EXPECT_EQ(nameOf(StringName::Extensions), "GL_EXTENSIONS");
    EXPECT_EQ(nameOf(Error::StackUnderflow), "GL_STACK_UNDERFLOW");
}

TEST(ConstantNames, JoinBitsFromTheLowestUp) {
    EXPECT_EQ(nameOf(AttribBits::Texture | AttribBits::Current | AttribBits::ColorBuffer),
              "GL_CURRENT_BIT | GL_COLOR_BUFFER_BIT | GL_TEXTURE_BIT");
    EXPECT_EQ(nameOf(ClearBits::Color | ClearBits::Depth), "GL_DEPTH_BUFFER_BIT | GL_COLOR_BUFFER_BIT");
}

TEST(ConstantNames, OfUnknownValuesAreHexadecimal) {
    EXPECT_EQ(nameOf(static_cast<Error>(0x8031)), "0x8031");
    EXPECT_EQ(nameOf(static_cast<AttribBits>(0x00200001)), "GL_CURRENT_BIT | 0x200000");
    EXPECT_EQ(nameOf(static_cast<ClearBits>(0)), "0x0000");
}
