// Draws one graph into contexts that the application made itself: a page of a PDF, an SVG file and a PNG.
//     cairo_page PICTURE FOLDER
// The library draws into any cairo_t, beside what the application draws there with Cairo's own calls.

#include <Imaging/Imaging.h>
#include <Platform/Graphics/GraphicsContext.h>

#include <algorithm>
#include <cairo-pdf.h>
#include <cairo-svg.h>
#include <cstdio>
#include <string>

using namespace Imaging;
using namespace Imaging::Platform;

namespace {

constexpr NSSize page = {480, 360}; // points; pixels in the PNG

/// The picture with a white frame, turned a little, on a sheet of paper: five nodes and no new pixels.
std::shared_ptr<IMGImage> photographOnPaper(const std::shared_ptr<IMGImage>& picture) {
    const NSSize size = picture->imageSize();
    const NSSize paper = {size.width * 1.3F, size.height * 1.4F};

    const auto frame =
        IMGSimpleFrameGenerator::generatorWithSize(size, NSColor::whiteColor(), size.width * 0.03F);
    const auto framed = std::make_shared<IMGCompositeOp>(IMGImage::Sources{picture, frame});
    const auto turned = IMGRotationOp::rotationByDegrees(6, {size.width / 2, size.height / 2}, framed);
    const auto placed = IMGTranslationOp::translationBy(
        {(paper.width - size.width) / 2, (paper.height - size.height) / 2}, turned);
    const auto ground = IMGConstantImageGenerator::generatorWithSize(
        paper, NSColor::colorWithCalibratedRed(0.86F, 0.82F, 0.74F, 1));
    return std::make_shared<IMGCanvas>(paper, IMGImage::Sources{ground, placed});
}

/// What the application does itself, with Cairo's y downward: a gray page and a line around it.
void drawOwnPart(cairo_t* cairo) {
    cairo_set_source_rgb(cairo, 0.93, 0.93, 0.93);
    cairo_paint(cairo);
    cairo_rectangle(cairo, 10, 10, page.width - 20, page.height - 20);
    cairo_set_source_rgb(cairo, 0.3, 0.3, 0.3);
    cairo_stroke(cairo);
}

/// Draws the graph into the middle of the page, as large as the margin permits.
void drawGraph(cairo_t* cairo, IMGImage& graph) {
    constexpr float margin = 24;
    const NSSize size = graph.imageSize();
    const float scale =
        std::min((page.width - 2 * margin) / size.width, (page.height - 2 * margin) / size.height);
    const NSSize drawn = {size.width * scale, size.height * scale};
    const NSRect place = {{(page.width - drawn.width) / 2, (page.height - drawn.height) / 2}, drawn};

    // From here on the graph draws into this context; y points up.
    NSGraphicsContext::setCurrentContext(NSGraphicsContext::graphicsContextWithCairo(cairo, page.height));
    graph.drawInRect(place, NSCompositeSourceOver, 1.0F, false);
    NSGraphicsContext::setCurrentContext(nullptr);
}

/// Draws on a surface, closes it and says whether all of that worked. Takes the reference.
bool finish(cairo_surface_t* surface, IMGImage& graph, const char* png = nullptr) {
    cairo_t* const cairo = cairo_create(surface);
    drawOwnPart(cairo);
    drawGraph(cairo, graph);
    cairo_status_t status = cairo_status(cairo);
    cairo_destroy(cairo);
    if (png != nullptr && status == CAIRO_STATUS_SUCCESS) status = cairo_surface_write_to_png(surface, png);
    cairo_surface_finish(surface); // a PDF or SVG is complete only now
    if (status == CAIRO_STATUS_SUCCESS) status = cairo_surface_status(surface);
    cairo_surface_destroy(surface);
    if (status != CAIRO_STATUS_SUCCESS) std::fprintf(stderr, "%s\n", cairo_status_to_string(status));
    return status == CAIRO_STATUS_SUCCESS;
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 3) return std::fprintf(stderr, "usage: cairo_page PICTURE FOLDER\n"), 2;
    NSError error;
    const auto picture = IMGImage::imageWithContentsOfFile(argv[1], &error);
    if (picture == nullptr) return std::fprintf(stderr, "%s: %s\n", argv[1], error.message.c_str()), 1;
    const std::string folder = argv[2];
    const std::string pdf = folder + "/page.pdf";
    const std::string svg = folder + "/page.svg";
    const std::string png = folder + "/page.png";
    try {
        const std::shared_ptr<IMGImage> graph = photographOnPaper(picture);
        const bool done = finish(cairo_pdf_surface_create(pdf.c_str(), page.width, page.height), *graph) &&
                          finish(cairo_svg_surface_create(svg.c_str(), page.width, page.height), *graph) &&
                          finish(cairo_image_surface_create(CAIRO_FORMAT_ARGB32, static_cast<int>(page.width),
                                                            static_cast<int>(page.height)),
                                 *graph, png.c_str());
        return done ? 0 : 1;
    } catch (const NSException& failure) {
        return std::fprintf(stderr, "%s\n", failure.reason().c_str()), 1;
    }
}
