#include "Platform/Graphics/GraphicsContext.h"
#include "Platform/Graphics/Text.h"
#include "Tools/Command/Messages.h"
#include "Tools/Command/Progress.h"
#include "Tools/Commands/AllCommands.h"
#include "Tools/Files/Input.h"
#include "Tools/Files/Output.h"
#include "Tools/Film/FilmFrames.h"
#include "Tools/Film/FramePicture.h"
#include "Tools/Film/Show.h"
#include "Tools/Film/ShowSettings.h"
#include "Tools/Film/TransitionKinds.h"
#include "Tools/Pictures/Canvas.h"
#include "Tools/Pictures/SheetLayout.h"

#include <algorithm>
#include <array>
#include <cmath>

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

class TransitionCommand : public Subcommand {
public:
    const SubcommandText& text() const override { return transitionText; }

protected:
    OptionTable options() override;
    void checkOperands() const override;
    ExitStatus run() override;

private:
    /// Everything that was asked for, once it was checked.
    struct Request {
        Show show; ///< a film of the two pictures
        std::vector<double> weights;
        std::int64_t columns = 0;
    };

    OptionTable frameOptions();
    Transition checkedTransition() const;
    PixelSize checkedCell() const;
    Request checkedRequest() const;
    std::shared_ptr<Platform::NSBitmapImageRep> sheet(const Request& request) const;

    PictureOutput m_output;
    std::string m_kind;
    std::string m_direction;
    std::string m_in_out;
    std::string m_color;
    std::string m_balance;
    std::string m_weights = "5";
    std::string m_easing = "linear";
    std::string m_cell = "480x270";
    std::string m_columns;
    std::string m_fit = "contain";
    std::string m_background = "black";
};

OptionTable TransitionCommand::options() {
    return joined({{{"--kind", "NAME",
                     "The transition, with parameters or without:\n"
                     "NAME[:PARAMETER=VALUE...]; 'imaging transitions'\n"
                     "lists them",
                     into(m_kind)},
                    {"--direction", "WAY", "The parameter direction, such as left", into(m_direction)},
                    {"--in-out,--inout", "WORD", "The parameter inout: in or out", into(m_in_out)},
                    {"--color", "COLOR", "The parameter color", into(m_color)},
                    {"--balance", "N", "The parameter balance, -1 to 1", into(m_balance)}},
                   frameOptions(),
                   m_output.whereOptions("sheet", "SHEET"),
                   m_output.howOptions()});
}

OptionTable TransitionCommand::frameOptions() {
    return {{"--weights", "N", "How many frames, from 0 to 1 in equal steps (5)", into(m_weights)},
            {"--ease", "EASING",
             "How the weights follow the steps: linear, in, out or\n"
             "in-out (linear)",
             into(m_easing)},
            {"--cell", "WxH", "Pixels of each frame (480x270)", into(m_cell)},
            {"--columns", "N",
             "Frames in a row. By default all of up to 6, and of\n"
             "more about as many as there are rows",
             into(m_columns)},
            {"--fit", "FIT",
             "How a picture of another shape fits a frame:\n"
             "contain, cover or stretch (contain)",
             into(m_fit)},
            {"--background", "COLOR", "The colour behind pictures in a frame (black)", into(m_background)}};
}

Transition TransitionCommand::checkedTransition() const {
    if (m_kind.empty())
        throw UsageError("the transition is missing: --kind NAME; known are " +
                         enumeration(drawnKindNames()));
    auto [name, settings] = splitTransition(m_kind, "--kind");
    const std::array<std::pair<std::string, const std::string*>, 4> options = {
        {{"direction", &m_direction}, {"inout", &m_in_out}, {"color", &m_color}, {"balance", &m_balance}}};
    for (const auto& [parameter, value] : options) {
        if (value->empty()) continue;
        // What an option says counts more than what stands behind the name.
        std::erase_if(settings,
                      [&wanted = parameter](const auto& setting) { return setting.first == wanted; });
        settings.emplace_back(parameter, *value);
    }
    return makeTransition(name, settings, "--kind");
}

PixelSize TransitionCommand::checkedCell() const {
    const PixelSize cell = parseFrameSize(m_cell, "--cell");
    if (std::min(cell.width, cell.height) >= smallestCell) return cell;
    throw UsageError("--cell: '" + m_cell + "' is too small; each side takes at least " +
                     std::to_string(smallestCell) + " pixels");
}

void TransitionCommand::checkOperands() const {
    requireOperands("the picture that a transition begins with");
    const std::vector<std::string>& names = operands();
    if (names.size() < 2) throw UsageError("the picture that a transition ends with is missing");
    if (names.size() > 2) throw UsageError("'" + names[2] + "' is one too many: this takes two pictures");
    if (isStandardInput(names[0]) && isStandardInput(names[1]))
        throw UsageError("standard input cannot be both pictures");
}

TransitionCommand::Request TransitionCommand::checkedRequest() const {
    Request request;
    request.show.size = checkedCell();
    request.show.background = parseOpaqueColor(m_background, "--background");
    request.show.asStored = m_output.asStored;
    for (const std::string& name : operands()) {
        ShowPicture picture;
        picture.name = name;
        picture.fit = parseFit(m_fit, "--fit");
        picture.next.transition = checkedTransition();
        request.show.pictures.push_back(picture);
    }
    const Easing easing = parseEasing(m_easing, "--ease");
    const std::int64_t count = parseNumber(m_weights, "--weights", 2, mostWeights);
    for (std::int64_t i = 0; i < count; ++i)
        request.weights.push_back(eased(easing, static_cast<double>(i) / static_cast<double>(count - 1)));
    request.columns = count <= longestRow ? count : 0;
    if (!m_columns.empty()) request.columns = parseNumber(m_columns, "--columns", 1, 1000);
    return request;
}

/// A frame at a place of the sheet.
void drawFrameAt(Platform::NSPoint place, Imaging::IMGImage& node, PixelSize size) {
    const Platform::NSGraphicsStateScope scope;
    Platform::NSRectClip({place, {static_cast<float>(size.width), static_cast<float>(size.height)}});
    Platform::NSAffineTransform shift;
    shift.translateXBy(place.x, place.y);
    Platform::NSGraphicsContext::currentContext()->concat(shift);
    drawFrame(node, size);
}

std::shared_ptr<Platform::NSBitmapImageRep> TransitionCommand::sheet(const Request& request) const {
    Progress progress(2, quiet());
    std::vector<std::shared_ptr<Imaging::IMGImage>> pictures;
    for (const ShowPicture& picture : request.show.pictures) {
        progress.beginStep(shownName(picture.name));
        pictures.push_back(framePicture(picture, request.show));
    }
    const Transition& transition = request.show.pictures[0].next.transition;
    const PixelSize frame = request.show.size;
    const Lettering lettering(frame);
    const SheetLayout layout(request.weights.size(), {frame.width, frame.height + lettering.strip},
                             request.columns);
    const auto strip = static_cast<float>(lettering.strip);
    const auto width = static_cast<float>(layout.size().width);
    const auto height = static_cast<float>(layout.size().height);
    const PixelSize whole = {layout.size().width, layout.size().height + lettering.strip};
    return drawnOnCanvas(whole, shownPath(m_output.path), "choose a smaller --cell or fewer --weights", [&] {
        paint(NSMakeRect(0, 0, width, height + strip), sheetColor);
        const auto gap = static_cast<float>(layout.gap());
        drawLine(transition.text(), NSMakeRect(gap, height - gap, width - 2 * gap, strip + gap),
                 lettering.fontSize);
        for (std::size_t i = 0; i < request.weights.size(); ++i) {
            const NSRect cell = layout.cell(i);
            drawLine(weightText(request.weights[i]),
                     NSMakeRect(cell.origin.x, cell.origin.y, cell.size.width, strip), lettering.fontSize);
            const Platform::NSSize size = {cell.size.width, cell.size.height - strip};
            const auto node =
                transition.node(pictures[0], pictures[1], size, static_cast<float>(request.weights[i]));
            drawFrameAt({cell.origin.x, cell.origin.y + strip}, *node, frame);
        }
        return NSMakeRect(0, 0, width, height + strip);
    });
}

ExitStatus TransitionCommand::run() {
    const Request request = checkedRequest();
    m_output.checkedFormat();
    m_output.write(*sheet(request));
    return Done;
}

} // namespace

std::unique_ptr<Subcommand> makeTransitionCommand() { return std::make_unique<TransitionCommand>(); }

} // namespace Imaging::Tool
