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

Step rotation(const std::string& value, const std::string&) {
    const double degrees =
        parseNumbers(value, "--rotate", 1, "no angle in degrees", "a number such as 30 or -12.5")[0];
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

Step turn(const std::string& value, const std::string&) {
    static const Words words = {
        {"left", Imaging::ROTATE_90}, {"right", Imaging::ROTATE_270}, {"180", Imaging::ROTATE_180}};
    return transposition(parseWord(value, "--turn", "turn", words));
}

Step flip(const std::string& value, const std::string&) {
    static const Words words = {{"horizontal", Imaging::FLIP_HORIZONTAL},
                                {"vertical", Imaging::FLIP_VERTICAL},
                                {"diagonal", Imaging::FLIP_DIAGONAL},
                                {"antidiagonal", Imaging::FLIP_ANTIDIAGONAL}};
    return transposition(parseWord(value, "--flip", "flip", words));
}

Step crop(const std::string& value, const std::string&) {
    const auto refuse = [&value] {
        throw UsageError("--crop: '" + value +
                         "' is no area; give X,Y,W,H in whole pixels from the upper left corner, such as "
                         "10,20,400,300");
    };
    const std::vector<double> numbers =
        parseNumbers(value, "--crop", 4, "no area",
                     "X,Y,W,H in whole pixels from the upper left corner, such as 10,20,400,300");
    for (const double number : numbers) {
        if (number != std::floor(number)) refuse();
    }
    if (numbers[2] < 1 || numbers[3] < 1) refuse();
    return [numbers](FramedNode& picture) { picture.crop(numbers[0], numbers[1], numbers[2], numbers[3]); };
}

Step scale(const std::string& value, const std::string& fit) {
    static const Words words = {{"contain", Imaging::SCALE_PROPORTIONALLY},
                                {"stretch", Imaging::SCALE_TO_FILL},
                                {"none", Imaging::SCALE_NONE}};
    const PixelSize size = parseSize(value, "--scale");
    const std::int32_t scaling =
        fit.empty() ? Imaging::SCALE_PROPORTIONALLY : parseWord(fit, "--fit", "way to fit", words);
    return [size, scaling](FramedNode& picture) { picture.scale(size, scaling); };
}

Step translation(const std::string& value, const std::string&) {
    const std::vector<double> shift = parseNumbers(value, "--translate", 2, "no distance",
                                                   "X,Y in pixels to the right and down, such as 40,-15");
    return [shift](FramedNode& picture) { picture.move(shift[0], shift[1]); };
}

Step canvas(const std::string& value, const std::string&) {
    const PixelSize size = parseWholeSize(value, "--canvas");
    return [size](FramedNode& picture) { picture.putOnCanvas(size); };
}

} // namespace

const std::vector<Operation>& placingOperations() {
    static const std::vector<Operation> operations = {
        {"--rotate", "DEGREES",
         "Turn it clockwise about its middle, or counter-\n"
         "clockwise below 0; the picture grows to hold all of\n"
         "it, with transparent corners",
         rotation},
        {"--turn", "WAY", "A quarter turn left or right, or a half turn: 180.\nNo pixel is lost or blurred",
         turn},
        {"--flip", "WAY",
         "Mirror it: horizontal (left and right are swapped),\n"
         "vertical (top and bottom), diagonal (upper left and\n"
         "lower right) or antidiagonal (upper right and lower\n"
         "left)",
         flip},
        {"--crop", "X,Y,W,H",
         "Cut out W x H pixels, the upper left one X pixels\n"
         "from the left edge and Y from the top. What lies\n"
         "beyond the picture is transparent",
         crop},
        {"--scale", "SIZE",
         "Bring it into WxH pixels; W or xH alone keeps the\n"
         "shape",
         scale, "--fit", "FIT",
         "How the --scale before it brings it into another\n"
         "shape: contain (all of it, in the middle of what is\n"
         "transparent; the default), stretch, or none (not\n"
         "scaled, in the middle, and cut)"},
        {"--translate", "X,Y",
         "Move it X pixels to the right and Y down; the size\n"
         "stays. What leaves it is cut off, unless a --canvas\n"
         "comes next",
         translation},
        {"--canvas", "WxH",
         "Put it at the upper left of a transparent canvas of\n"
         "that size, or where a --translate before moved it;\n"
         "what is beyond the canvas is cut off",
         canvas},
    };
    return operations;
}

} // namespace Imaging::Tool
