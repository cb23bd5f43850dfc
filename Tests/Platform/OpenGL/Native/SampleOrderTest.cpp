#include "Platform/OpenGL/Native/SampleOrder.h"

#include "Tests/Support/Pixels.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <cstring>
#include <vector>

using namespace Imaging::Platform;
using namespace Imaging::Platform::OpenGL;

namespace {

struct Layout {
    PixelFormat format;
    PixelType type;
};

constexpr Layout layouts[] = {
    {PixelFormat::Rgba, PixelType::UnsignedByte},       {PixelFormat::Bgra, PixelType::UnsignedByte},
    {PixelFormat::Rgba, PixelType::UnsignedInt8888},    {PixelFormat::Bgra, PixelType::UnsignedInt8888},
    {PixelFormat::Rgba, PixelType::UnsignedInt8888Rev}, {PixelFormat::Bgra, PixelType::UnsignedInt8888Rev},
};

/// The four bytes of one pixel, put together sample by sample as OpenGL's reference describes it.
std::array<std::uint8_t, 4> bytesOf(const Layout& layout, Pixels::Rgba pixel) {
    std::array<std::uint8_t, 4> samples{pixel.r, pixel.g, pixel.b, pixel.a};
    if (layout.format == PixelFormat::Bgra) samples = {pixel.b, pixel.g, pixel.r, pixel.a};
    if (layout.type == PixelType::UnsignedByte) return samples;
    std::uint32_t word = 0;
    for (int i = 0; i < 4; ++i) {
        const int place = layout.type == PixelType::UnsignedInt8888 ? 24 - 8 * i : 8 * i;
        word |= static_cast<std::uint32_t>(samples.at(static_cast<std::size_t>(i))) << place;
    }
    std::array<std::uint8_t, 4> bytes{};
    std::memcpy(bytes.data(), &word, 4);
    return bytes;
}

} // namespace

TEST(SampleOrder, IsRedGreenBlueAlphaWhateverItWas) {
    Pixels::Random random(20);
    for (const Layout& layout : layouts) {
        for (const std::size_t count : {1u, 2u, 7u, 64u, 129u}) {
            std::vector<std::uint8_t> source;
            std::vector<std::uint8_t> expected;
            for (std::size_t i = 0; i < count; ++i) {
                const Pixels::Rgba pixel{
                    static_cast<std::uint8_t>(random.sample()), static_cast<std::uint8_t>(random.sample()),
                    static_cast<std::uint8_t>(random.sample()), static_cast<std::uint8_t>(random.sample())};
                for (const std::uint8_t byte : bytesOf(layout, pixel)) source.push_back(byte);
                expected.insert(expected.end(), {pixel.r, pixel.g, pixel.b, pixel.a});
            }
            std::vector<std::uint8_t> ordered(4 * count + 1, 0xA5);
            orderSamples(layout.format, layout.type, source.data(), ordered.data(), count);
            EXPECT_EQ(ordered.back(), 0xA5) << "a byte behind the last pixel was touched";
            ordered.pop_back();
            EXPECT_EQ(ordered, expected) << static_cast<unsigned>(layout.format) << ' '
                                         << static_cast<unsigned>(layout.type) << ' ' << count;
        }
    }
}

TEST(SampleOrder, ReadsAlphaFirstBytesOnLittleEndianMachines) {
    const std::uint32_t one = 1;
    std::uint8_t lowest = 0;
    std::memcpy(&lowest, &one, 1);
    if (lowest != 1) GTEST_SKIP() << "this machine is big-endian";
    const std::array<std::uint8_t, 4> alphaFirst{40, 10, 20, 30};
    std::array<std::uint8_t, 4> ordered{};
    orderSamples(PixelFormat::Bgra, PixelType::UnsignedInt8888, alphaFirst.data(), ordered.data(), 1);
    EXPECT_EQ(ordered, (std::array<std::uint8_t, 4>{10, 20, 30, 40}));
}
