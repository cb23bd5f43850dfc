// The operations that place, cut and scale without touching a pixel: a row of the table each, and its step.

#include "Imaging/CropAndScale.h"
#include "Imaging/TransformOperations.h"
#include "Imaging/Transpose.h"
#include "Tools/Command/Messages.h"
#include "Tools/Pictures/Operations.h"

#include <cmath>

namespace Imaging::Tool {

using Imaging::IMGImage;
using Platform::NSPoint;

namespace {

using Words = std::vector<std::pair<std::string, std::int32_t>>;

Step rotation(const GivenText& given, const GivenText&) {
    const double degrees =
        parseNumbers(given.text, given.option, 1, "no angle in degrees", "a number such as 30 or -12.5")[0];
    return [degrees](FramedNode& picture) {
        picture.turn([degrees](const std::shared_ptr<IMGImage>& node, NSPoint middle) {
            // Nodes count counter-clockwise.
            return Imaging::IMGRotationOp::rotationByDegrees(static_cast<float>(-degrees), middle, node);
        });
    };
}

Step transposition(std::int32_t type) {
    return [type](FramedNode& picture) {
        picture.turn([type](const std::shared_ptr<IMGImage>& node, NSPoint) {
            return Imaging::IMGTransposeOp::transposeOfType(type, node);
        });
    };
}

Step turn(const GivenText& given, const GivenText&) {
    static const Words words = {
        {"left", Imaging::ROTATE_90}, {"right", Imaging::ROTATE_270}, {"180", Imaging::ROTATE_180}};
    return transposition(parseWord(given.text, given.option, "turn", words));
}

Step flip(const GivenText& given, const GivenText&) {
    static const Words words = {{"horizontal", Imaging::FLIP_HORIZONTAL},
                                {"vertical", Imaging::FLIP_VERTICAL},
                                {"diagonal", Imaging::FLIP_DIAGONAL},
                                {"antidiagonal", Imaging::FLIP_ANTIDIAGONAL}};
    return transposition(parseWord(given.text, given.option, "flip", words));
}

Step crop(const GivenText& given, const GivenText&) {
    const auto refuse = [&given] {
        throw UsageError(given.option + ": '" + given.text +
                         "' is no area; give X,Y,W,H in whole pixels from the upper left corner, such as "
                         "10,20,400,300");
    };
    const std::vector<double> numbers =
        parseNumbers(given.text, given.option, 4, "no area",
                     "X,Y,W,H in whole pixels from the upper left corner, such as 10,20,400,300");
    for (const double number : numbers) {
        if (number != std::floor(number)) refuse();
    }
    if (numbers[2] < 1 || numbers[3] < 1) refuse();
    return [numbers](FramedNode& picture) { picture.crop(numbers[0], numbers[1], numbers[2], numbers[3]); };
}

Step scale(const GivenText& given, const GivenText& fit) {
    static const Words words = {{"contain", Imaging::SCALE_PROPORTIONALLY},
                                {"stretch", Imaging::SCALE_TO_FILL},
                                {"none", Imaging::SCALE_NONE}};
    const PixelSize size = parseSize(given.text, given.option);
    const std::int32_t scaling = fit.text.empty() ? Imaging::SCALE_PROPORTIONALLY
                                                  : parseWord(fit.text, fit.option, "way to fit", words);
    return [size, scaling](FramedNode& picture) { picture.scale(size, scaling); };
}

Step translation(const GivenText& given, const GivenText&) {
    const std::vector<double> shift = parseNumbers(given.text, given.option, 2, "no distance",
                                                   "X,Y in pixels to the right and down, such as 40,-15");
    return [shift](FramedNode& picture) { picture.move(shift[0], shift[1]); };
}

Step canvas(const GivenText& given, const GivenText&) {
    const PixelSize size = parseWholeSize(given.text, given.option);
    return [size](FramedNode& picture) { picture.putOnCanvas(size); };
}

} // namespace

const std::vector<Operation>& placingOperations() {
    static const std::vector<Operation> operations = {
        {.name = "--rotate",
         .typeName = "DEGREES",
         .help = "Turn it clockwise about its middle, or counter-\n"
                 "clockwise below 0; the picture grows to hold all of\n"
                 "it, with transparent corners",
         .make = rotation},
        {.name = "--turn",
         .typeName = "WAY",
         .help = "A quarter turn left or right, or a half turn: 180.\nNo pixel is lost or blurred",
         .make = turn},
        {.name = "--flip",
         .typeName = "WAY",
         .help = "Mirror it: horizontal (left and right are swapped),\n"
                 "vertical (top and bottom), diagonal (upper left and\n"
                 "lower right) or antidiagonal (upper right and lower\n"
                 "left)",
         .make = flip},
        {.name = "--crop",
         .typeName = "X,Y,W,H",
         .help = "Cut out W x H pixels, the upper left one X pixels\n"
                 "from the left edge and Y from the top. What lies\n"
                 "beyond the picture is transparent",
         .make = crop},
        {.name = "--scale",
         .typeName = "SIZE",
         .help = "Bring it into WxH pixels; W or xH alone keeps the\n"
                 "shape",
         .make = scale,
         .modifier = "--fit",
         .modifierTypeName = "FIT",
         .modifierHelp = "How the --scale before it brings it into another\n"
                         "shape: contain (all of it, in the middle of what is\n"
                         "transparent; the default), stretch, or none (not\n"
                         "scaled, in the middle, and cut)"},
        {.name = "--translate",
         .typeName = "X,Y",
         .help = "Move it X pixels to the right and Y down; the size\n"
                 "stays. What leaves it is cut off, unless a --canvas\n"
                 "comes next",
         .make = translation},
        {.name = "--canvas",
         .typeName = "WxH",
         .help = "Put it at the upper left of a transparent canvas of\n"
                 "that size, or where a --translate before moved it;\n"
                 "what is beyond the canvas is cut off",
         .make = canvas},
    };
    return operations;
}

} // namespace Imaging::Tool
