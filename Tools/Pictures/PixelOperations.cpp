// The operations that compute new pixels: a row of the table each, and the step that its value makes.

#include "Imaging/BitmapFormats.h"
#include "Imaging/ColorOperations.h"
#include "Imaging/Convolution.h"
#include "Imaging/Kernel.h"
#include "Imaging/Mask.h"
#include "Tools/Command/Messages.h"
#include "Tools/Files/Input.h"
#include "Tools/Files/KernelFile.h"
#include "Tools/Pictures/ApartFromAlpha.h"
#include "Tools/Pictures/Operations.h"

#include <cmath>
#include <numbers>

namespace Imaging::Tool {

using Imaging::IMGBitmapFormat;
using Imaging::IMGImage;

namespace {

/// How a layout is called in messages.
std::string layoutName(IMGBitmapFormat layout) {
    switch (layout) {
    case Imaging::IMGBitmapFormatGrayscale:
        return "gray without alpha";
    case Imaging::IMGBitmapFormatGrayscaleAlpha:
        return "gray with alpha";
    case Imaging::IMGBitmapFormatRGB:
        return "RGB without alpha";
    case Imaging::IMGBitmapFormatRGBA:
        return "RGB with alpha";
    default:
        return "of an unknown layout";
    }
}

/// Nodes leave pictures of layouts that they do not treat black; people are told instead.
void requireLayout(FramedNode& picture, const std::string& option,
                   std::initializer_list<IMGBitmapFormat> treated, const std::string& advice) {
    const IMGBitmapFormat layout = picture.layout();
    for (const IMGBitmapFormat one : treated) {
        if (one == layout) return;
    }
    throw Failure(shownName(picture.name()), option + ": the picture is " + layoutName(layout) +
                                                 " there, which cannot be treated; " + advice);
}

/// Puts a node over plain pixels in colour that changes nothing but colour; alpha, if any, is kept.
template<class Make>
void changeColors(FramedNode& picture, const Make& make) {
    const bool hasAlpha = picture.layout() == Imaging::IMGBitmapFormatRGBA;
    picture.recolor([&](const std::shared_ptr<IMGImage>& node) -> std::shared_ptr<IMGImage> {
        return hasAlpha ? apartFromAlpha(node, make) : make(node);
    });
}

constexpr std::initializer_list<IMGBitmapFormat> colored = {Imaging::IMGBitmapFormatRGB,
                                                            Imaging::IMGBitmapFormatRGBA};

Step color(const GivenText& given, const GivenText&) {
    const std::vector<double> factors =
        parseNumbers(given.text, given.option, 3, "no red, green and blue factor", "R,G,B such as 1.2,1,0.8");
    return [factors, option = given.option](FramedNode& picture) {
        const auto factor = [&](std::size_t i) { return static_cast<float>(factors[i]); };
        picture.recompute();
        picture.dropNeedlessAlpha();
        requireLayout(picture, option, colored,
                      "make an RGB picture of it first, with 'imaging draw IN -o OUT.jpg'");
        changeColors(picture, [&](const std::shared_ptr<IMGImage>& node) {
            return Imaging::IMGColorTransformOp::colorTransformWithSourceImage(node, factor(0), factor(1),
                                                                               factor(2), 1);
        });
    };
}

Step hue(const GivenText& given, const GivenText&) {
    const double degrees =
        parseNumbers(given.text, given.option, 1, "no angle in degrees", "a number such as 30 or -12.5")[0];
    // Nodes undo a single turn only.
    const double radians = std::remainder(degrees, 360) * std::numbers::pi / 180;
    return [radians, option = given.option](FramedNode& picture) {
        picture.recompute();
        requireLayout(picture, option, colored, "gray has no hue to turn");
        changeColors(picture, [&](const std::shared_ptr<IMGImage>& node) {
            return Imaging::IMGHueAdjustOp::hueAdjustWithSourceImage(node, static_cast<float>(radians));
        });
    };
}

Step blur(const GivenText& given, const GivenText&) {
    constexpr double largest = 200; // the taps of much wider bells are cut down to 0
    const double radius =
        parseNumbers(given.text, given.option, 1, "no radius in pixels", "a number such as 2 or 0.7")[0];
    if (radius < 0 || radius > largest) {
        throw UsageError(given.option + ": '" + given.text +
                         "' is no radius in pixels; give a number from 0 to 200, such as 2");
    }
    return [radius](FramedNode& picture) {
        picture.recompute();
        picture.recolor([&](const std::shared_ptr<IMGImage>& node) {
            return Imaging::IMGGaussianOp::gaussianWithSourceImage(node, static_cast<float>(radius));
        });
    };
}

Step convolution(const std::function<std::shared_ptr<Imaging::IMGKernel>()>& makeKernel) {
    return [makeKernel](FramedNode& picture) {
        const std::shared_ptr<Imaging::IMGKernel> kernel = makeKernel();
        picture.recompute();
        picture.recolor([&](const std::shared_ptr<IMGImage>& node) {
            return std::make_shared<Imaging::IMGConvolutionOp>(node, kernel);
        });
    };
}

Step sharpen(const GivenText&, const GivenText&) {
    return convolution([] { return Imaging::IMGKernel::kernelSharpen(); });
}

Step kernel(const GivenText& file, const GivenText&) {
    return convolution([file] { return kernelOfFile(file.text, file.option); });
}

std::string inWords(PixelSize size, const std::string& between) {
    return std::to_string(size.width) + between + std::to_string(size.height);
}

/// The gray of a picture as a mask of the size that another one has.
std::shared_ptr<IMGImage> loadMask(const GivenText& file, const FramedNode& picture) {
    FramedNode mask(loadNode(file.text), file.text);
    const PixelSize own = mask.size();
    const PixelSize needed = picture.size();
    if (own.width != needed.width || own.height != needed.height) {
        throw Failure(shownName(file.text),
                      file.option + ": the mask has " + inWords(own, " x ") + " pixels, the picture " +
                          inWords(needed, " x ") +
                          " there; they must be equal, so scale one of them first, with "
                          "'imaging apply MASK --scale " +
                          inWords(needed, "x") + " --fit stretch -o OUT.png'");
    }
    mask.recompute();
    return mask.node();
}

Step mask(const GivenText& file, const GivenText&) {
    return [file](FramedNode& picture) {
        picture.recompute();
        requireLayout(picture, file.option,
                      {Imaging::IMGBitmapFormatGrayscaleAlpha, Imaging::IMGBitmapFormatRGBA},
                      "a mask needs alpha to work on, so put it on a canvas first, with --canvas " +
                          inWords(picture.size(), "x"));
        const std::shared_ptr<IMGImage> maskNode = loadMask(file, picture);
        picture.recolor([&](const std::shared_ptr<IMGImage>& node) {
            return std::make_shared<Imaging::IMGMaskOp>(node, maskNode);
        });
    };
}

} // namespace

const std::vector<Operation>& pixelOperations() {
    static const std::vector<Operation> operations = {
        {.name = "--color",
         .typeName = "R,G,B",
         .help = "Multiply red, green and blue; transparency stays as\n"
                 "it is",
         .make = color},
        {.name = "--hue",
         .typeName = "DEGREES",
         .help = "Turn the colours on the colour wheel, from red by\n"
                 "way of green to blue; transparency stays as it is",
         .make = hue},
        {.name = "--blur",
         .typeName = "RADIUS",
         .help = "Blur it by a Gaussian bell of that radius (sigma) in\n"
                 "pixels",
         .make = blur},
        {.name = "--sharpen",
         .typeName = "",
         .help = "Raise each pixel against its neighbours",
         .make = sharpen},
        {.name = "--kernel",
         .typeName = "FILE",
         .help = "Convolve it with the whole numbers of a text file, a\n"
                 "line for each row, divided by their sum. A single\n"
                 "line works along both axes",
         .make = kernel,
         .valueIsFile = true},
        {.name = "--mask",
         .typeName = "FILE",
         .help = "Multiply it, which must have alpha, by the gray of a\n"
                 "picture of the same size: white keeps it, black\n"
                 "makes it transparent",
         .make = mask,
         .valueIsFile = true},
    };
    return operations;
}

} // namespace Imaging::Tool
