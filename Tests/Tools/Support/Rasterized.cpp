#include "Tests/Tools/Support/Rasterized.h"

#include <algorithm>
#include <cstdlib>
#include <regex>
#include <stdexcept>
#include <vector>

namespace TestSupport {

namespace {

std::string outputOf(const std::string& program, const std::vector<std::string>& arguments) {
    const Result result = run(arguments, {.program = program});
    if (result.status != 0) throw std::runtime_error(program + ": " + result.err);
    return result.out;
}

/// Rounded like pixels that were drawn.
std::array<int, 4> premultiplied(const Pixel& p) {
    const auto product = [&p](int sample) { return (sample * p.alpha + 127) / 255; };
    return {product(p.red), product(p.green), product(p.blue), p.alpha};
}

} // namespace

Picture pictureOfPDF(const std::string& path, const TemporaryFolder& folder, int pixelsAPoint) {
    outputOf("pdftocairo", {"-png", "-transp", "-singlefile", "-r", std::to_string(72 * pixelsAPoint), path,
                            folder.path("page")});
    return pictureOfPNG(folder.read("page.png"));
}

Picture pictureOfSVG(const std::string& path, const TemporaryFolder& folder) {
    outputOf("rsvg-convert", {"-d", "72", "-p", "72", "-o", folder.path("page.png"), path});
    return pictureOfPNG(folder.read("page.png"));
}

std::string pageSizeOfPDF(const std::string& path) {
    const std::string facts = outputOf("pdfinfo", {path});
    std::smatch found;
    return std::regex_search(facts, found, std::regex("Page size: +([^\n]*)")) ? found[1].str() : "";
}

int countDifferent(const Picture& a, const Picture& b, int tolerance) {
    if (a.width != b.width || a.height != b.height) return std::max(a.width * a.height, b.width * b.height);
    int count = 0;
    for (std::size_t i = 0; i < a.pixels.size(); ++i) {
        const auto p = premultiplied(a.pixels[i]);
        const auto q = premultiplied(b.pixels[i]);
        const auto isFar = [tolerance](int x, int y) { return std::abs(x - y) > tolerance; };
        if (!std::equal(p.begin(), p.end(), q.begin(), [&](int x, int y) { return !isFar(x, y); })) ++count;
    }
    return count;
}

} // namespace TestSupport
