#include "Tools/Canvas.h"
#include "Tools/Input.h"
#include "Tools/Output.h"
#include "Tools/Progress.h"
#include "Tools/Subcommand.h"

#include <CLI/CLI.hpp>

namespace Tool {

using Platform::NSColor;
using Platform::NSRect;

namespace {

const SubcommandText drawText = {
    "draw", "Draw a picture or graph into a new picture", "[OPTION...] INPUT -o OUTPUT",
    R"(INPUT is a picture file of any usual format, an http, https or file URL, '-'
for standard input, or a graph that 'imaging archive' made; which of them is
told by its content. A picture is drawn the way up that its file declares,
unless --no-orient is given; pictures inside a graph of several are drawn as
they are stored.

OUTPUT is a .jpg, .png, .tiff, .gif, .bmp or .jp2 file, or '-' for standard
output, which needs --format. It may be the INPUT. It is written whole or not
at all, with 8 bits a sample, and without alpha where all of it is opaque. JPEG
has no alpha: what is transparent becomes white. GIF has at most 256 colours.)",
    R"(  imaging draw photo.jpg -o photo.png
  imaging draw photo.jpg -o small.jpg --size 800 --quality 80
  imaging draw photo.jpg -o square.png --size 512x512 --fit cover
  imaging draw logo.png -o card.jpg --size 1200x630 --background '#204060'
  imaging draw http://example.com/a.jpg -o - --format png > a.png
  imaging draw layers.graph -o layers.tif)"};

class DrawCommand : public Subcommand {
public:
    const SubcommandText& text() const override { return drawText; }

protected:
    void declare(CLI::App& app) override;
    ExitStatus run() override;

private:
    PictureOutput m_output;
    std::string m_size;
    std::string m_fit = "contain";
};

void DrawCommand::declare(CLI::App& app) {
    m_output.declareWhere(app, "picture", "OUTPUT");
    app.add_option("--size", m_size,
                   "The new size in pixels as WxH; W or xH alone keeps\n"
                   "the shape. Without it the input's own")
        ->type_name("SIZE");
    app.add_option("--fit", m_fit,
                   "How to bring it into another shape: contain (all of\n"
                   "it, in the middle of the background; the default),\n"
                   "cover (fill and cut) or stretch")
        ->type_name("FIT");
    m_output.declareBackground(app);
    m_output.declareHow(app);
}

ExitStatus DrawCommand::run() {
    const std::string& input = onlyOperand("an input");
    const OutputFormat format = m_output.checkedFormat();
    const PixelSize asked = m_size.empty() ? PixelSize{} : parseSize(m_size, "--size", false);
    const Fit fit = parseFit(m_fit, "--fit");
    const NSColor background = m_output.backgroundFor(format);

    Progress progress(1, quiet());
    progress.beginStep(shownName(input));
    const Drawing drawing(loadNode(input), input,
                          m_output.asStored ? Upright::AsStored : Upright::AsDeclared);
    const PixelSize size = drawing.completed(asked);
    const auto bitmap = drawnOnCanvas(
        size, shownPath(m_output.path), "choose a smaller --size",
        [&drawing, &size, &format, &background, fit] {
            const NSRect whole = {Platform::NSZeroPoint,
                                  {static_cast<float>(size.width), static_cast<float>(size.height)}};
            if (!format.hasAlpha)
                paint(whole, NSColor::whiteColor()); // for a background that lets it through
            paint(whole, background);
            drawing.drawInRect(drawing.placed(whole, fit));
            return whole;
        });
    m_output.write(*bitmap);
    return Done;
}

} // namespace

std::unique_ptr<Subcommand> makeDrawCommand() { return std::make_unique<DrawCommand>(); }

} // namespace Tool
