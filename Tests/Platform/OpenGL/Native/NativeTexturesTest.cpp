#include "Platform/OpenGL/Native/NativeCommands.h"

#include "Tests/Platform/OpenGL/TextureFixtures.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <vector>

using namespace Imaging::Platform;
using namespace Imaging::Platform::OpenGL;
using namespace Pixels;

namespace {

class NativeTextures : public InEveryContext {};

/// A pixel as a 32-bit word with its first sample in the highest byte.
std::uint32_t wordOf(PixelFormat format, Rgba pixel) {
    const auto joined = [](unsigned a, unsigned b, unsigned c, unsigned d) {
        return (a << 24) | (b << 16) | (c << 8) | d;
    };
    return format == PixelFormat::Rgba ? joined(pixel.r, pixel.g, pixel.b, pixel.a)
                                       : joined(pixel.b, pixel.g, pixel.r, pixel.a);
}

} // namespace

TEST_P(NativeTextures, TakeWordsInPaddedRows) {
    Random random(41);
    const Grid picture = random.grid(5, 3);
    for (const PixelFormat format : {PixelFormat::Rgba, PixelFormat::Bgra}) {
        for (const int rowLength : {0, 5, 9}) {
            OpenGLSurface surface(GetParam(), 5, 3);
            OpenGLCommands& commands = surface.commands();
            const Texture texture(commands, TextureTarget::Texture2D, Grid(1, 1));
            const auto stride = static_cast<std::size_t>(rowLength == 0 ? 5 : rowLength);
            std::vector<std::uint32_t> words(3 * stride, 0x01020304);
            for (int y = 0; y < 3; ++y) {
                for (int x = 0; x < 5; ++x) {
                    words[static_cast<std::size_t>(y) * stride + static_cast<std::size_t>(x)] =
                        wordOf(format, picture.at(x, y));
                }
            }
            commands.bindTexture(TextureTarget::Texture2D, texture.name());
            commands.pixelStorei(PixelStore::UnpackRowLength, rowLength);
            commands.texImage2D(TextureTarget::Texture2D, 5, 3, format, PixelType::UnsignedInt8888,
                                words.data());
            texture.draw(-1, -1, 1, 1);
            EXPECT_TRUE(areAlike(surface.pixels(), flipped(picture)))
                << nameOf(format) << ", rows of " << rowLength;
        }
    }
}

TEST_P(NativeTextures, GoOnWithTheRowsThatWereSetAfterAnUploadThatIsPutInOrder) {
    OpenGLSurface surface(GetParam(), 1, 2);
    OpenGLCommands& commands = surface.commands();
    const Texture texture(commands, TextureTarget::Texture2D, Grid(1, 1));
    commands.bindTexture(TextureTarget::Texture2D, texture.name());
    commands.pixelStorei(PixelStore::UnpackRowLength, 3);
    const std::vector<std::uint32_t> words(6);
    commands.texImage2D(TextureTarget::Texture2D, 3, 2, PixelFormat::Bgra, PixelType::UnsignedInt8888,
                        words.data());
    const std::vector<Rgba> rows{red, green, green, blue, green, green};
    commands.texImage2D(TextureTarget::Texture2D, 1, 2, PixelFormat::Rgba, PixelType::UnsignedByte,
                        rows.data());
    texture.draw(-1, -1, 1, 1);
    EXPECT_EQ(surface.pixels().above(0, 0), red);
    EXPECT_EQ(surface.pixels().above(0, 1), blue);
}

TEST_P(NativeTextures, HaveStorageWithoutPixels) {
    OpenGLSurface surface(GetParam(), 4, 4);
    OpenGLCommands& commands = surface.commands();
    const Texture texture(commands, TextureTarget::Texture2D, Grid(1, 1));
    commands.bindTexture(TextureTarget::Texture2D, texture.name());
    for (const PixelFormat format : {PixelFormat::Rgba, PixelFormat::Bgra}) {
        commands.texImage2D(TextureTarget::Texture2D, 4, 4, format, PixelType::UnsignedInt8888, nullptr);
        commands.clearColor(0, 0, 1, 1);
        commands.clear(ClearBits::Color);
        commands.copyTexSubImage2D(TextureTarget::Texture2D, 0, 0, 0, 0, 4, 4);
        commands.clearColor(0, 0, 0, 0);
        commands.clear(ClearBits::Color);
        texture.draw(-1, -1, 1, 1);
        commands.bindTexture(TextureTarget::Texture2D, texture.name());
        EXPECT_TRUE(areAlike(surface.pixels(), Grid(4, 4, blue)));
    }
}

TEST_P(NativeTextures, RefuseSizesThatCannotBe) {
    OpenGLSurface surface(GetParam(), 4, 4);
    OpenGLCommands& commands = surface.commands();
    const int limit = commands.getMaxTextureSize();
    commands.texImage2D(TextureTarget::Texture2D, limit + 1, 1, PixelFormat::Bgra, PixelType::UnsignedInt8888,
                        nullptr);
    EXPECT_EQ(commands.getError(), Error::InvalidValue);
    commands.texImage2D(TextureTarget::Texture2D, 1, -1, PixelFormat::Rgba, PixelType::UnsignedByte, nullptr);
    EXPECT_EQ(commands.getError(), Error::InvalidValue);
}

TEST_P(NativeTextures, HaveNoRangesWithoutTheExtension) {
    OpenGLSurface surface(GetParam(), 4, 4);
    surface.commands().textureRangeApple(TextureTarget::Texture2D, 0, nullptr);
    EXPECT_EQ(surface.commands().getError(), Error::InvalidOperation);
}

INSTANTIATE_TEST_SUITE_P(Contexts, NativeTextures, everyProfile(), profileName);
