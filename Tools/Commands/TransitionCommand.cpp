// Lays the frames of one transition out on a sheet, drawn as a film of two pictures would draw them.

#include "Platform/Graphics/GraphicsContext.h"
#include "Platform/Graphics/Text.h"
#include "Show/Show.h"
#include "Show/ShowFrames.h"
#include "Show/TransitionKinds.h"
#include "Tools/Command/Messages.h"
#include "Tools/Command/Progress.h"
#include "Tools/Commands/AllCommands.h"
#include "Tools/Files/Input.h"
#include "Tools/Files/Output.h"
#include "Tools/Film/ShowSettings.h"
#include "Tools/Film/ShowWords.h"
#include "Tools/Pictures/Canvas.h"
#include "Tools/Pictures/SheetLayout.h"

#include <algorithm>
#include <cmath>
#include <optional>
#include <utility>

namespace Imaging::Tool {

using Platform::NSColor;
using Platform::NSMakeRect;
using Platform::NSRect;

namespace {

const SubcommandText transitionText = {
    "transition", "Lay out what a transition looks like", "[OPTION...] FROM TO --kind NAME -o SHEET",
    R"(FROM and TO are pictures as 'imaging draw' takes them. Each is fitted into a
frame as in a film, and the frames of the transition from the one to the other
are laid out on a sheet with their weights: 0 is FROM alone, 1 is TO alone.

SHEET is a .jpg, .png, .tiff, .gif, .bmp or .jp2 file, or '-' for standard
output, which needs --format.)",
    R"(  imaging transition a.jpg b.jpg --kind slide:direction=up -o slide.png
  imaging transition a.jpg b.jpg --kind wipe --direction down -o wipe.png
  imaging transition a.jpg b.jpg --kind color-fade --color white \
    --weights 9 --columns 3 --ease in-out -o fade.jpg)"};

constexpr std::int64_t smallestCell = 16;
constexpr std::int64_t mostWeights = 1000;
/// Up to so many frames stand in one row.
constexpr std::int64_t longestRow = 6;

/// "0.25": at most three decimals.
std::string weightText(double weight) {
    std::string text = std::to_string(std::llround(weight * 1000) + 1000); // "1250"
    text = (text[0] == '2' ? "1." : "0.") + text.substr(1);
    text.erase(text.find_last_not_of('0') + 1);
    if (text.back() == '.') text.pop_back();
    return text;
}

/// Sizes of the lettering, in proportion to the frames.
struct Lettering {
    float fontSize;
    std::int64_t strip; ///< the height that a line takes

    explicit Lettering(PixelSize frame)
        : fontSize(std::clamp(static_cast<float>(frame.height) / 15, 9.0F, 40.0F)),
          strip(std::llround(std::ceil(fontSize * 1.6F))) {}
};

const NSColor letterColor = NSColor::colorWithCalibratedWhite(0.85F, 1);
const NSColor sheetColor = NSColor::colorWithCalibratedWhite(54.0F / 255, 1);

/// A line in the middle of a rectangle, made smaller where it would not fit.
void drawLine(const std::string& text, NSRect rect, float fontSize) {
    const float wanted = Platform::sizeOfText(text, Platform::NSFont::systemFontOfSize(fontSize)).width;
    const float scale = std::min(1.0F, rect.size.width / std::max(wanted, 1.0F));
    const Platform::NSFont font = Platform::NSFont::systemFontOfSize(fontSize * scale);
    const Platform::NSSize size = Platform::sizeOfText(text, font);
    Platform::drawTextAtPoint(
        text, font, letterColor,
        {Platform::NSMidX(rect) - size.width / 2, Platform::NSMidY(rect) - size.height / 2});
}

/// A transition's name and parameters, and the option that they were given by.
struct AskedTransition {
    std::string name;
    std::vector<std::pair<std::string, std::string>> settings;
    std::string option;
};

class TransitionCommand : public Subcommand {
public:
    const SubcommandText& text() const override { return transitionText; }

protected:
    OptionTable options() override;
    void checkOperands() const override;
    ExitStatus run() override;

private:
    OptionTable transitionOptions();
    OptionTable frameOptions();
    Binding intoParameter(const std::string& parameter);
    Transition transition() const;
    Show show() const;
    std::vector<double> weights() const;
    std::shared_ptr<Platform::NSBitmapImageRep> sheet(const Show& show) const;

    PictureOutput m_output;
    AskedTransition m_asked;
    std::int64_t m_weights = 5;
    Easing m_easing = Easing::Linear;
    PixelSize m_cell = {480, 270};
    std::optional<std::int64_t> m_columns;
    Fit m_fit = Fit::Contain;
    NSColor m_background = NSColor::blackColor();
};

AskedTransition parseTransition(const std::string& text, const std::string& option) {
    auto [name, settings] = splitTransition(text, option);
    return {.name = std::move(name), .settings = std::move(settings), .option = option};
}

PixelSize parseCell(const std::string& text, const std::string& option) {
    const PixelSize cell = parseFrameSize(text, option);
    if (std::min(cell.width, cell.height) >= smallestCell) return cell;
    throw UsageError(option + ": '" + text + "' is too small; each side takes at least " +
                     std::to_string(smallestCell) + " pixels");
}

std::string typeNameOf(const TransitionParameter& parameter) {
    switch (parameter.type) {
    case TransitionParameter::Type::Word:
        return "WORD";
    case TransitionParameter::Type::Color:
        return "COLOR";
    default:
        return "N";
    }
}

/// An option for a parameter. What it says counts more than what stands behind the transition's name.
Binding TransitionCommand::intoParameter(const std::string& parameter) {
    return {.take =
                [this, parameter](const std::string& text, const std::string&) {
                    std::erase_if(m_asked.settings,
                                  [&](const auto& setting) { return setting.first == parameter; });
                    m_asked.settings.emplace_back(parameter, text);
                },
            .emptyIsNone = true};
}

OptionTable TransitionCommand::options() {
    return joined({transitionOptions(), frameOptions(), m_output.whereOptions("sheet", "SHEET"),
                   m_output.howOptions()});
}

OptionTable TransitionCommand::transitionOptions() {
    const std::string missing =
        "the transition is missing: --kind NAME; known are " + enumeration(drawnKindNames());
    OptionTable table = {{"--kind", "NAME",
                          "The transition, with parameters or without:\n"
                          "NAME[:PARAMETER=VALUE...]; 'imaging transitions'\n"
                          "lists them",
                          required(into(m_asked, parseTransition), missing)}};
    for (const TransitionParameter& parameter : transitionParameters()) {
        const std::string& name = parameter.name;
        table.push_back({name == "inout" ? "--in-out,--inout" : "--" + name, typeNameOf(parameter),
                         "The parameter " + name + ", such as " + parameter.byDefault, intoParameter(name)});
    }
    return table;
}

OptionTable TransitionCommand::frameOptions() {
    return {{"--weights", "N", "How many frames, from 0 to 1 in equal steps (5)",
             into(m_weights, wholeNumber(2, mostWeights))},
            {"--ease", "EASING",
             "How the weights follow the steps: linear, in, out or\n"
             "in-out (linear)",
             into(m_easing, parseEasing)},
            {"--cell", "WxH", "Pixels of each frame (480x270)", into(m_cell, parseCell)},
            {"--columns", "N",
             "Frames in a row. By default all of up to 6, and of\n"
             "more about as many as there are rows",
             into(m_columns, wholeNumber(1, 1000))},
            {"--fit", "FIT",
             "How a picture of another shape fits a frame:\n"
             "contain, cover or stretch (contain)",
             into(m_fit, parseFit)},
            {"--background", "COLOR", "The colour behind pictures in a frame (black)",
             into(m_background, parseOpaqueColor)}};
}

void TransitionCommand::checkOperands() const {
    requireOperands("the picture that a transition begins with");
    const std::vector<std::string>& names = operands();
    if (names.size() < 2) throw UsageError("the picture that a transition ends with is missing");
    if (names.size() > 2) throw UsageError("'" + names[2] + "' is one too many: this takes two pictures");
    if (isStandardInput(names[0]) && isStandardInput(names[1]))
        throw UsageError("standard input cannot be both pictures");
}

Transition TransitionCommand::transition() const {
    return makeTransition(m_asked.name, m_asked.settings, m_asked.option);
}

/// A film of the two pictures.
Show TransitionCommand::show() const {
    Show show;
    show.size = m_cell;
    show.background = m_background;
    show.asStored = m_output.asStored;
    for (const std::string& name : operands()) {
        ShowPicture picture;
        picture.name = name;
        picture.fit = m_fit;
        picture.next.transition = transition();
        show.pictures.push_back(picture);
    }
    return show;
}

std::vector<double> TransitionCommand::weights() const {
    std::vector<double> weights;
    for (std::int64_t i = 0; i < m_weights; ++i)
        weights.push_back(eased(m_easing, static_cast<double>(i) / static_cast<double>(m_weights - 1)));
    return weights;
}

/// A frame at a place of the sheet.
void drawFrameAt(Platform::NSPoint place, Imaging::IMGImage& node, PixelSize size) {
    const Platform::NSGraphicsStateScope scope;
    Platform::NSRectClip({place, floats(size)});
    Platform::NSAffineTransform shift;
    shift.translateXBy(place.x, place.y);
    Platform::NSGraphicsContext::currentContext()->concat(shift);
    drawFrame(node, size);
}

/// A strip for the title above all rows, and one for the weight below each frame.
std::shared_ptr<Platform::NSBitmapImageRep> TransitionCommand::sheet(const Show& show) const {
    Progress progress(2, quiet());
    std::vector<std::shared_ptr<Imaging::IMGImage>> pictures;
    for (const ShowPicture& picture : show.pictures) {
        progress.beginStep(shownName(picture.name));
        pictures.push_back(framePicture(picture, show));
    }
    const Transition& transition = show.pictures[0].next.transition;
    const std::vector<double> weights = this->weights();
    const Lettering lettering(m_cell);
    const std::int64_t columns = m_columns.value_or(m_weights <= longestRow ? m_weights : 0);
    const SheetLayout layout(weights.size(), {m_cell.width, m_cell.height + lettering.strip}, columns);
    const auto strip = static_cast<float>(lettering.strip);
    const Platform::NSSize cells = floats(layout.size());
    const PixelSize whole = {layout.size().width, layout.size().height + lettering.strip};
    return drawnOnCanvas(whole, shownPath(m_output.path), "choose a smaller --cell or fewer --weights", [&] {
        paint(rectOf(whole), sheetColor);
        const auto gap = static_cast<float>(layout.gap());
        drawLine(transition.text(), NSMakeRect(gap, cells.height - gap, cells.width - 2 * gap, strip + gap),
                 lettering.fontSize);
        for (std::size_t i = 0; i < weights.size(); ++i) {
            const NSRect cell = layout.cell(i);
            drawLine(weightText(weights[i]), NSMakeRect(cell.origin.x, cell.origin.y, cell.size.width, strip),
                     lettering.fontSize);
            const Platform::NSSize size = {cell.size.width, cell.size.height - strip};
            const auto node = transition.node(pictures[0], pictures[1], size, static_cast<float>(weights[i]));
            drawFrameAt({cell.origin.x, cell.origin.y + strip}, *node, m_cell);
        }
        return rectOf(whole);
    });
}

ExitStatus TransitionCommand::run() {
    m_output.write(*sheet(show()));
    return Done;
}

} // namespace

std::unique_ptr<Subcommand> makeTransitionCommand() { return std::make_unique<TransitionCommand>(); }

} // namespace Imaging::Tool
