// Draws a picture with operations put over it, one node after another, into a new picture.

#include "Tools/Command/Progress.h"
#include "Tools/Commands/AllCommands.h"
#include "Tools/Files/Input.h"
#include "Tools/Files/Output.h"
#include "Tools/Pictures/Canvas.h"
#include "Tools/Pictures/Operations.h"

namespace Imaging::Tool {

using Platform::NSColor;
using Platform::NSRect;

namespace {

const SubcommandText applyText = {
    "apply", "Turn, cut, scale, place, colour and filter a picture",
    "[OPTION...] INPUT [OPERATION...] -o OUTPUT",
    R"(INPUT is a picture file of any usual format, an http, https or file URL, '-'
for standard input, or a graph that 'imaging archive' made. A picture is first
brought the way up that its file declares, unless --no-orient is given. Then
the operations are carried out one after another, each on what the one before
made; any may be given several times. All places are counted in pixels from the
upper left corner of what there is then, to the right and down.

OUTPUT is a .jpg, .png, .tiff, .gif, .bmp or .jp2 file, or '-' for standard
output, which needs --format. It is as large as what the last operation made.
It may be the INPUT. It is written whole or not at all, with 8 bits a sample,
and without alpha where all of it is opaque. JPEG has no alpha: what is
transparent becomes white, or the --background. Colours are sRGB.)",
    R"(  imaging apply photo.jpg --turn right -o upright.jpg
  imaging apply photo.jpg --rotate -1.5 --crop 40,40,1200,800 -o level.jpg
  imaging apply photo.jpg --scale 800x600 --fit stretch -o small.png
  imaging apply photo.jpg --color 1.1,1,0.9 --sharpen -o warm.jpg
  imaging apply photo.jpg --canvas 800x600 --mask vignette.png -o soft.png
  imaging apply logo.png --translate 20,10 --canvas 400x100 -o banner.png
  imaging apply a.png --flip horizontal --rotate 30 -o b.png --background navy)"};

class ApplyCommand : public Subcommand {
public:
    const SubcommandText& text() const override { return applyText; }

protected:
    OptionTable options() override;
    void checkOperands() const override { requireOneOperand("an input"); }
    ExitStatus run() override;

private:
    PictureOutput m_output;
    OperationOptions m_operations;
};

OptionTable ApplyCommand::options() {
    return joined({m_operations.options(), m_output.whereOptions("picture", "OUTPUT"),
                   m_output.backgroundOptions(), m_output.howOptions()});
}

ExitStatus ApplyCommand::run() {
    const std::string& input = operands().front();
    const std::vector<Step> steps = m_operations.steps();

    Progress progress(1, quiet());
    progress.beginStep(shownName(input));
    const std::shared_ptr<Imaging::IMGImage> node = loadNode(input);
    requireDrawable(node, input);
    const auto upright = orientedNode(node, m_output.asStored ? Upright::AsStored : Upright::AsDeclared);
    const FramedNode picture = processed(upright, input, steps);
    const PixelSize size = picture.size();
    const auto bitmap =
        drawnOnCanvas(size, shownPath(m_output.path), "--scale or --crop it to a smaller size", [&] {
            const NSRect whole = rectOf(size);
            if (!m_output.format.hasAlpha)
                paint(whole, NSColor::whiteColor()); // for a background that lets it through
            paint(whole, m_output.background);
            picture.draw();
            return whole;
        });
    m_output.write(*bitmap);
    return Done;
}

} // namespace

std::unique_ptr<Subcommand> makeApplyCommand() { return std::make_unique<ApplyCommand>(); }

} // namespace Imaging::Tool
