// Lays pictures out in cells, each read, drawn and let go of before the next one.

#include "Tools/Command/Messages.h"
#include "Tools/Command/Progress.h"
#include "Tools/Commands/AllCommands.h"
#include "Tools/Files/Input.h"
#include "Tools/Files/Output.h"
#include "Tools/Files/PictureFiles.h"
#include "Tools/Pictures/Canvas.h"
#include "Tools/Pictures/SheetLayout.h"

#include <algorithm>
#include <optional>

namespace Imaging::Tool {

using Platform::NSColor;
using Platform::NSRect;

namespace {

const SubcommandText sheetText = {
    "sheet", "Lay pictures out on a contact sheet", "[OPTION...] INPUT... -o SHEET",
    R"(INPUT is a picture file of any usual format, a folder, an http, https or file
URL, '-' for standard input, or a graph that 'imaging archive' made. A folder
stands for the pictures in it, told by their content, in the order in which
people count (IMG_2 before IMG_10); hidden files, folders in it and the SHEET
itself are left out.

Each picture is drawn the way up that its file declares (unless --no-orient is
given), as large as it fits into its cell. A picture that cannot be read is
named at once and no sheet is made, unless --skip-bad is given.

SHEET is a .jpg, .png, .tiff, .gif, .bmp or .jp2 file, or '-' for standard
output, which needs --format.)",
    R"(  imaging sheet Pictures -o sheet.png
  imaging sheet *.jpg -o sheet.jpg --columns 6 --cell 240x240 --quality 85
  imaging sheet Pictures -o sheet.png --background white --frame 6,#eeeeee
  imaging sheet Pictures -o sheet.tif --skip-bad --frame none)"};

/// Narrower cells would be nothing but frame, and wider ones cannot be drawn.
constexpr std::int64_t smallestCell = 16;

class SheetCommand : public Subcommand {
public:
    const SubcommandText& text() const override { return sheetText; }

protected:
    OptionTable options() override;
    void checkOperands() const override { requireOperands("a picture or folder"); }
    ExitStatus run() override;

private:
    std::vector<std::string> names() const;
    std::optional<Drawing> drawingFor(const std::string& name) const;
    std::size_t drawAll(const std::vector<std::string>& names, const SheetLayout& layout) const;

    PictureOutput m_output;
    std::optional<std::int64_t> m_columns;
    PixelSize m_cell = {420, 280};
    NSColor m_background = NSColor::colorWithCalibratedWhite(54.0F / 255, 1); // #363636
    Border m_border;
    bool m_skip_bad = false;
};

PixelSize parseCell(const std::string& text, const std::string& option) {
    const PixelSize cell = parseWholeSize(text, option);
    if (std::min(cell.width, cell.height) >= smallestCell) return cell;
    throw UsageError(option + ": '" + text + "' is too small; each side takes at least " +
                     std::to_string(smallestCell) + " pixels");
}

/// "WIDTH,COLOR" or "none".
Border parseBorder(const std::string& text, const std::string& option, PixelSize cell) {
    if (text == "none") return {};
    const std::size_t comma = text.find(',');
    if (comma == std::string::npos) {
        throw UsageError(option + ": '" + text + "' is no frame; give WIDTH,COLOR, such as 8,white, or none");
    }
    // At least half of the cell is left for the picture.
    const std::int64_t widest = std::min(cell.width, cell.height) / 4;
    return {.width = parseNumber(text.substr(0, comma), option, 0, widest),
            .color = parseColor(text.substr(comma + 1), option)};
}

Border borderFor(PixelSize cell) {
    return {.width = std::max<std::int64_t>(1, std::min(cell.width, cell.height) / 40)};
}

OptionTable SheetCommand::options() {
    const auto border = [this](const std::string& text, const std::string& option) {
        return parseBorder(text, option, m_cell);
    };
    return joined({m_output.whereOptions("sheet", "SHEET"),
                   {{"--columns", "N",
                     "Pictures in a row. By default about as many as there\n"
                     "are rows",
                     into(m_columns, wholeNumber(1, 1000))},
                    {"--cell", "WxH",
                     "The space for a picture and its frame in pixels\n"
                     "(420x280)",
                     into(m_cell, parseCell)},
                    {"--background", "COLOR",
                     "The colour between the pictures: #rgb, #rrggbb,\n"
                     "#rrggbbaa, transparent, or a name such as white,\n"
                     "black, gray or navy (#363636)",
                     into(m_background, parseColor)},
                    {"--frame", "WIDTH,COLOR",
                     "The mat around each picture: its width in pixels and\n"
                     "its colour, or none (1/40 of the cell, white)",
                     orElse(into(m_border, border), [this] { m_border = borderFor(m_cell); })},
                    {"--skip-bad", "",
                     "Go on without pictures that cannot be read; they are\n"
                     "still named",
                     raise(m_skip_bad)}},
                   m_output.howOptions()});
}

/// All pictures, with those of the folders in the folders' places.
std::vector<std::string> SheetCommand::names() const {
    std::vector<std::string> all;
    for (const std::string& input : operands()) {
        if (isFolder(input)) {
            const std::vector<std::string> pictures = picturesInFolder(input, m_output.path);
            all.insert(all.end(), pictures.begin(), pictures.end());
        } else {
            all.push_back(input);
        }
    }
    return all;
}

std::optional<Drawing> SheetCommand::drawingFor(const std::string& name) const {
    try {
        return Drawing(loadNode(name), name, m_output.asStored ? Upright::AsStored : Upright::AsDeclared);
    } catch (const Failure& failure) {
        if (!m_skip_bad) throw;
        report(failure.subject(), failure.what());
        return std::nullopt;
    }
}

/// Draws one picture after another, of which each is let go of before the next is read. Gives their number.
std::size_t SheetCommand::drawAll(const std::vector<std::string>& names, const SheetLayout& layout) const {
    Progress progress(names.size(), quiet());
    std::size_t drawn = 0;
    for (const std::string& name : names) {
        progress.beginStep(shownName(name));
        const std::optional<Drawing> drawing = drawingFor(name);
        if (drawing.has_value()) drawFramed(*drawing, layout.cell(drawn++), m_border, layout.gap());
    }
    return drawn;
}

ExitStatus SheetCommand::run() {
    const std::vector<std::string> pictures = names();
    const SheetLayout layout(pictures.size(), m_cell, m_columns.value_or(0));
    const auto bitmap = drawnOnCanvas(
        layout.size(), shownPath(m_output.path), "choose a smaller --cell or make several sheets", [&] {
            const NSRect whole = layout.used(pictures.size());
            if (!m_output.format.hasAlpha) paint(whole, NSColor::whiteColor());
            paint(whole, m_background);
            const std::size_t drawn = drawAll(pictures, layout);
            if (drawn == 0) throw Failure(shownPath(m_output.path), "none of the pictures can be read");
            return layout.used(drawn);
        });
    m_output.write(*bitmap);
    return Done;
}

} // namespace

std::unique_ptr<Subcommand> makeSheetCommand() { return std::make_unique<SheetCommand>(); }

} // namespace Imaging::Tool
