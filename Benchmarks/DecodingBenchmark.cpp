// Decoding a photograph of 24 megapixels, from the file to a bitmap that is ready to be drawn or worked on.

#include "Benchmarks/Ratios.h"
#include "Platform/Codecs/Codec.h"
#include "Platform/Codecs/CodecRegistry.h"
#include "Platform/Graphics/BitmapImageRep.h"

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <unistd.h>

#include <jpeglib.h>

namespace {

using namespace Imaging::Platform;

constexpr std::uint32_t width = 6000;
constexpr std::uint32_t height = 4000;

/// Waves of several lengths with some noise: smooth skies and fine detail, so that a JPEG of it is about as
/// large as one from a camera.
NSData photograph() {
    NSData pixels(std::size_t{width} * height * 3);
    std::uint32_t state = 1;
    for (std::size_t y = 0; y < height; ++y) {
        for (std::size_t x = 0; x < width; ++x) {
            state = state * 1664525 + 1013904223;
            const double noise = static_cast<double>(state >> 24) / 16 * (y % 2000 > 700 ? 1 : 0.25);
            const double wave =
                60 * std::sin(static_cast<double>(x) / 300) * std::cos(static_cast<double>(y) / 210) +
                25 * std::sin(static_cast<double>(x * y % 4001) / 640);
            std::uint8_t* const to = pixels.data() + (y * width + x) * 3;
            for (int i = 0; i < 3; ++i) to[i] = static_cast<std::uint8_t>(110 + wave * (1 - 0.2 * i) + noise);
        }
    }
    return pixels;
}

/// A file in the folder for temporary ones, which goes with the program.
class JpegFile {
public:
    JpegFile()
        : m_path(std::filesystem::temp_directory_path() / ("decoding-" + std::to_string(getpid()) + ".jpg")) {
        const NSData pixels = photograph();
        PictureHeader header;
        header.width = width;
        header.height = height;
        const NSData jpeg =
            codecForFormat("JPEG")->encode({header, pixels.data(), std::size_t{width} * 3}, {0.85});
        if (!writeToFileAtomically(jpeg, m_path)) std::abort();
        std::printf("The JPEG has %zu bytes.\n", jpeg.size());
    }
    ~JpegFile() { std::filesystem::remove(m_path); }
    JpegFile(const JpegFile&) = delete;
    JpegFile& operator=(const JpegFile&) = delete;

    const std::string& path() const { return m_path; }

private:
    std::string m_path;
};

/// What a program does that uses the library in the plainest way: row by row into memory of its own.
void decodeWithTheLibrary(const std::string& path) {
    std::FILE* const file = std::fopen(path.c_str(), "rb");
    if (file == nullptr) std::abort();
    jpeg_decompress_struct info{};
    jpeg_error_mgr errors{};
    info.err = jpeg_std_error(&errors);
    jpeg_create_decompress(&info);
    jpeg_stdio_src(&info, file);
    jpeg_read_header(&info, TRUE);
    info.out_color_space = JCS_RGB;
    jpeg_start_decompress(&info);
    const std::size_t bytesPerRow = std::size_t{info.output_width} * 3;
    auto* const pixels = static_cast<JSAMPLE*>(std::malloc(bytesPerRow * info.output_height));
    while (info.output_scanline < info.output_height) {
        JSAMPROW row = pixels + info.output_scanline * bytesPerRow;
        jpeg_read_scanlines(&info, &row, 1);
    }
    benchmark::DoNotOptimize(pixels[bytesPerRow]);
    jpeg_finish_decompress(&info);
    jpeg_destroy_decompress(&info);
    std::free(pixels);
    std::fclose(file);
}

void decodeWithUs(const std::string& path) {
    const auto bytes = dataWithContentsOfFile(path, std::uint64_t{1} << 30);
    if (!bytes.has_value()) std::abort();
    const auto bitmap = NSBitmapImageRep::imageRepWithData(*bytes);
    if (bitmap == nullptr) std::abort();
    benchmark::DoNotOptimize(bitmap->bitmapData()[0]);
}

} // namespace

int main(int argc, char** argv) {
    const JpegFile file;
    Benchmarks::compare("decoding/24-megapixel JPEG", Benchmarks::ours, [&] { decodeWithUs(file.path()); });
    Benchmarks::compare(
        "decoding/24-megapixel JPEG", "libjpeg", [&] { decodeWithTheLibrary(file.path()); }, 1.10);
    return Benchmarks::run(argc, argv);
}
