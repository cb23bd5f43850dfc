// Draws one picture or graph into a bitmap, or onto a page of vectors, with a border and a line of text over
// it.

#include "Imaging/Generators.h"
#include "Imaging/GraphicsUtilities.h"
#include "Platform/Graphics/GraphicsContext.h"
#include "Tools/Command/Progress.h"
#include "Tools/Commands/AllCommands.h"
#include "Tools/Files/Input.h"
#include "Tools/Files/Output.h"
#include "Tools/Pictures/Canvas.h"
#include "Tools/Pictures/Page.h"

#include <algorithm>
#include <optional>

namespace Imaging::Tool {

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

OUTPUT is a .jpg, .png, .tiff, .gif, .bmp, .jp2, .pdf or .svg file, or '-' for
standard output, which needs --format. It may be the INPUT. It is written whole
or not at all, with 8 bits a sample, and without alpha where all of it is
opaque. JPEG has no alpha: what is transparent becomes white. GIF has at most
256 colours. PDF and SVG are a page of one point for a pixel, on which pictures
keep up to 8 of their own pixels a point, and frame and text stay sharp at any
size.)",
    R"(  imaging draw photo.jpg -o photo.png
  imaging draw photo.jpg -o small.jpg --size 800 --quality 80
  imaging draw photo.jpg -o square.png --size 512x512 --fit cover
  imaging draw logo.png -o card.jpg --size 1200x630 --background '#204060'
  imaging draw photo.jpg -o card.pdf --size 360 --frame 6,white --hint Draft
  imaging draw http://example.com/a.jpg -o - --format png > a.png
  imaging draw layers.graph -o layers.tif)"};

/// What is drawn over the edges of a picture.
struct Border {
    float width;
    NSColor color;
};

/// "WIDTH,COLOR"
Border parseBorder(const std::string& text, const std::string& option) {
    const std::size_t comma = text.find(',');
    const double width = parseNumbers(text.substr(0, comma), option, 1, "no width in pixels", "12 or 2.5")[0];
    if (!(width > 0)) throw UsageError(option + ": the width has to be more than 0");
    if (comma == std::string::npos) {
        throw UsageError(option + ": '" + text + "' has no colour; give both, as in 12,white or 4,#00000080");
    }
    return {.width = static_cast<float>(width), .color = parseColor(text.substr(comma + 1), option)};
}

/// Covers the inside of a rectangle's edges. A border wider than half of the rectangle fills it.
void drawBorder(const Border& border, NSRect rect) {
    const float width = std::min({border.width, rect.size.width / 2, rect.size.height / 2});
    Imaging::IMGSimpleFrameGenerator::generatorWithSize(rect.size, border.color, width)
        ->drawInRect(rect, Platform::NSCompositeSourceOver, 1.0F, false, nullptr);
}

class DrawCommand : public Subcommand {
public:
    const SubcommandText& text() const override { return drawText; }

protected:
    OptionTable options() override;
    void checkOperands() const override { requireOneOperand("an input"); }
    ExitStatus run() override;

private:
    NSRect drawOnWhole(const Drawing& drawing, PixelSize size) const;

    PictureOutput m_output{.takesPages = true};
    std::optional<PixelSize> m_size; ///< a side of it may be missing
    Fit m_fit = Fit::Contain;
    std::optional<Border> m_border;
    std::string m_hint;
};

OptionTable DrawCommand::options() {
    return joined({m_output.whereOptions("picture", "OUTPUT"),
                   {{"--size", "SIZE",
                     "The new size in pixels as WxH; W or xH alone keeps\n"
                     "the shape. Without it the input's own",
                     into(m_size, parseSize)},
                    {"--fit", "FIT",
                     "How to bring it into another shape: contain (all of\n"
                     "it, in the middle of the background; the default),\n"
                     "cover (fill and cut) or stretch",
                     into(m_fit, parseFit)},
                    {"--frame", "WIDTH,COLOR",
                     "Draw a frame so many pixels wide over the edges of\n"
                     "the picture, such as 12,white; alpha counts",
                     into(m_border, parseBorder)},
                    {"--hint", "TEXT",
                     "Write a text into the middle of the picture, in bold\n"
                     "light gray of 18 pixels, on one line",
                     into(m_hint)}},
                   m_output.backgroundOptions(),
                   m_output.howOptions()});
}

/// Gives the rectangle of the whole size.
NSRect DrawCommand::drawOnWhole(const Drawing& drawing, PixelSize size) const {
    const NSRect whole = rectOf(size);
    if (!m_output.format.hasAlpha)
        paint(whole, NSColor::whiteColor()); // for a background that lets it through
    paint(whole, m_output.background);
    const NSRect place = drawing.placed(whole, m_fit);
    drawing.drawInRect(place);
    // A picture that covers the size reaches beyond it; its edges are then those that are seen.
    const NSRect seen = Platform::NSIntersectionRect(place, whole);
    if (m_border.has_value()) drawBorder(*m_border, seen);
    if (!m_hint.empty()) Imaging::HintTextInFrame(seen, m_hint);
    return whole;
}

ExitStatus DrawCommand::run() {
    const std::string& input = operands().front();
    Progress progress(1, quiet());
    progress.beginStep(shownName(input));
    const Drawing drawing(loadNode(input), input,
                          m_output.asStored ? Upright::AsStored : Upright::AsDeclared);
    const PixelSize size = drawing.completed(m_size.value_or(PixelSize()));
    const auto draw = [&] { return drawOnWhole(drawing, size); };
    const std::string name = shownPath(m_output.path);
    const std::string advice = "choose a smaller --size";
    const PageFormat page = m_output.format.page;
    if (page != PageFormat::None) {
        writeOutput(drawnOnPage(page, size, name, advice, draw), m_output.path);
    } else {
        m_output.write(*drawnOnCanvas(size, name, advice, draw));
    }
    return Done;
}

} // namespace

std::unique_ptr<Subcommand> makeDrawCommand() { return std::make_unique<DrawCommand>(); }

} // namespace Imaging::Tool
