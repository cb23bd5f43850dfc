#include "Tools/Pictures/NodeText.h"

#include "Imaging/CachedImage.h"
#include "Imaging/Canvas.h"
#include "Imaging/ColorOperations.h"
#include "Imaging/Convolution.h"
#include "Imaging/CropAndScale.h"
#include "Imaging/Mask.h"
#include "Imaging/TransformOperations.h"
#include "Imaging/Transpose.h"
#include "Platform/Foundation/Exception.h"
#include "Show/NodeGraph.h"
#include "Tools/Command/Messages.h"

#include <array>
#include <charconv>
#include <cmath>
#include <limits>
#include <optional>

namespace Imaging::Tool {

using Imaging::IMGImage;
using Platform::NSAffineTransform;
using Platform::NSPoint;
using Platform::NSRect;
using Platform::NSSize;

namespace {

std::string words(float number) {
    // Neither the sign of a zero nor the smallest normal number, which rectangles around points end at, says
    // anything to people.
    if (std::fabs(number) <= std::numeric_limits<float>::min()) number = 0;
    std::array<char, 32> digits{};
    const auto [end, failure] =
        std::to_chars(digits.data(), digits.data() + digits.size(), number, std::chars_format::general, 7);
    return {digits.data(), end};
}

std::string words(NSPoint p) { return words(p.x) + "," + words(p.y); }

std::string words(NSSize s) { return words(s.width) + "x" + words(s.height); }

std::string words(NSRect r) { return words(r.origin) + " " + words(r.size); }

std::string words(const NSAffineTransform& transform) {
    const auto m = transform.transformStruct();
    std::string text;
    for (const float entry : {m.m11, m.m12, m.m21, m.m22, m.tX, m.tY})
        text += (text.empty() ? "" : " ") + words(entry);
    return "[" + text + "]";
}

std::string pictureWords(Imaging::IMGImageFromNSImage& node) {
    if (const auto why = whyPictureIsMissing(node)) {
        return node.fileName().value_or("picture in the archive") + " (missing: " + *why + ")";
    }
    return node.fileName().value_or("picture in memory");
}

std::string affineWords(Imaging::IMGAffineTransformOp& node) { return words(node.affineTransform()); }

std::string rotationWords(Imaging::IMGRotationOp& node) {
    return words(node.rotationDegrees()) + " degrees about " + words(node.origin());
}

std::string translationWords(Imaging::IMGTranslationOp& node) { return words(node.translation()); }

std::string transposeWords(Imaging::IMGTransposeOp& node) {
    static constexpr std::array names = {"FLIP_VERTICAL", "FLIP_HORIZONTAL", "FLIP_ANTIDIAGONAL",
                                         "FLIP_DIAGONAL", "ROTATE_0",        "ROTATE_90",
                                         "ROTATE_180",    "ROTATE_270"};
    const auto type = static_cast<std::uint32_t>(node.type());
    return type < names.size() ? names[type] : "type " + std::to_string(node.type());
}

std::string cropWords(Imaging::IMGCropAndScale& node) {
    static constexpr std::array names = {"SCALE_PROPORTIONALLY", "SCALE_TO_FILL", "SCALE_NONE"};
    const auto mode = static_cast<std::uint32_t>(node.imageScaling());
    const std::string scaling =
        mode < names.size() ? names[mode] : "mode " + std::to_string(node.imageScaling());
    return words(node.sourceArea()) + " to " + words(node.targetSize()) + " " + scaling +
           (node.doClip() ? " CLIP" : " NO_CLIP");
}

std::string canvasWords(Imaging::IMGCanvas& node) {
    const std::string size = words(node.size());
    return node.transform().isEqual(NSAffineTransform()) ? size : size + " under " + words(node.transform());
}

std::string colorWords(Imaging::IMGColorTransformOp& node) {
    return words(node.redMultiplier()) + "," + words(node.greenMultiplier()) + "," +
           words(node.blueMultiplier());
}

std::string hueWords(Imaging::IMGHueAdjustOp& node) { return words(node.angle()) + " radians"; }

std::string gaussianWords(Imaging::IMGGaussianOp& node) { return "radius " + words(node.radius()); }

std::string convolutionWords(Imaging::IMGConvolutionOp& node) {
    if (dynamic_cast<const Imaging::IMGGaussianOp*>(&node) != nullptr) return {};
    return node.name() +
           (node.kernel() != nullptr ? " " + words(node.kernel()->size()) : " without a kernel");
}

std::string maskWords(Imaging::IMGMaskOp& node) {
    return node.maskImage() != nullptr ? "by " + node.maskImage()->archiveClassName() : "without a mask";
}

/// What `describe` says of a node of its class; nothing of others.
template<class Node, std::string (*describe)(Node&)>
std::optional<std::string> ifItIs(IMGImage& node) {
    auto* const typed = dynamic_cast<Node*>(&node);
    return typed != nullptr ? std::optional(describe(*typed)) : std::nullopt;
}

constexpr std::array details = {
    &ifItIs<Imaging::IMGImageFromNSImage, pictureWords>,
    &ifItIs<Imaging::IMGAffineTransformOp, affineWords>,
    &ifItIs<Imaging::IMGRotationOp, rotationWords>,
    &ifItIs<Imaging::IMGTranslationOp, translationWords>,
    &ifItIs<Imaging::IMGTransposeOp, transposeWords>,
    &ifItIs<Imaging::IMGCropAndScale, cropWords>,
    &ifItIs<Imaging::IMGCanvas, canvasWords>,
    &ifItIs<Imaging::IMGColorTransformOp, colorWords>,
    &ifItIs<Imaging::IMGHueAdjustOp, hueWords>,
    &ifItIs<Imaging::IMGGaussianOp, gaussianWords>,
    &ifItIs<Imaging::IMGConvolutionOp, convolutionWords>,
    &ifItIs<Imaging::IMGMaskOp, maskWords>,
};

} // namespace

std::string nodeInWords(IMGImage& node) {
    std::string text = node.archiveClassName();
    for (const auto& detail : details) {
        if (const auto found = detail(node); found.has_value() && !found->empty()) text += " " + *found;
    }
    return escaped(text);
}

std::string boundsInWords(const IMGImage& node) {
    try {
        const Imaging::IMGBounds bounds = node.imageBounds();
        const std::string around = "bounds " + words(bounds.boundingRect());
        if (!bounds.transform().has_value() || bounds.transform()->isEqual(NSAffineTransform()))
            return around;
        return around + ", " + words(bounds.rectangle()) + " under " + words(*bounds.transform());
    } catch (const Platform::NSException&) { // which nodes without sources raise
        return "no bounds: a node has nothing below it";
    }
}

} // namespace Imaging::Tool
