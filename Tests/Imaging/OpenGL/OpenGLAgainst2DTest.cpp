// Also tests: Imaging/OpenGLGraphicsContext.cpp
//
// Graphs drawn by the OpenGL target, offscreen on the machine's software, and by the 2-D target. Where the
// two are meant to differ, OpenGLDifferencesTest says how.

#include "Imaging/ApertureTransitions.h"
#include "Imaging/Canvas.h"
#include "Imaging/ColorOperations.h"
#include "Imaging/Convolution.h"
#include "Imaging/CropAndScale.h"
#include "Imaging/DirectionalTransitions.h"
#include "Imaging/Generators.h"
#include "Imaging/Kernel.h"
#include "Imaging/Mask.h"
#include "Imaging/TransformOperations.h"
#include "Imaging/Transitions.h"
#include "Imaging/Transpose.h"
#include "Tests/Imaging/OpenGL/ComparedTargets.h"

using namespace Imaging;
using namespace ImagingTests;
using Imaging::Platform::NSColor;

namespace {

constexpr int frameWidth = 201;
constexpr int frameHeight = 149;

constexpr NSRect wholeFrame = Imaging::Platform::NSMakeRect(0, 0, frameWidth, frameHeight);

using Node = std::shared_ptr<IMGImage>;

/// Where a graph is drawn. Exact placements carry whole pixels to whole pixels.
struct Case {
    std::string name;
    Node node;
    NSRect rect;
    bool isExact = false;
    int operation = 2;
    float alpha = 1;
    bool isRetained = false; ///< the target is asked for the whole node
    bool isOnBlack = false;  ///< the frame is filled with black first, as whoever shows dissolves does
};

NSRect centred(NSSize size) {
    return NSMakeRect(std::floor((frameWidth - size.width) / 2), std::floor((frameHeight - size.height) / 2),
                      size.width, size.height);
}

Case exactly(const std::string& name, const Node& node) {
    return {name, node, centred(node->imageSize()), true};
}

Case anyhow(const std::string& name, const Node& node, NSRect rect = NSMakeRect(13, 9, 171, 123)) {
    return {name, node, rect};
}

/// Scaled alike in both directions into the middle of the frame: what is turned and then stretched is drawn
/// otherwise from textures (OpenGLDifferencesTest).
Case fitted(const std::string& name, const Node& node, float scale = 0.83F) {
    const NSSize size = node->imageSize();
    return {name, node, centred({size.width * scale, size.height * scale})};
}

NSAffineTransform turned(float degrees, float x, float y, float scale = 1) {
    NSAffineTransform transform;
    transform.translateXBy(x, y);
    transform.rotateByDegrees(degrees);
    transform.scaleBy(scale);
    return transform;
}

void addPictures(std::vector<Case>& cases, const std::string& kind, Node (*leafOf)(const Grid&)) {
    const Node plain = leafOf(smoothPicture(150, 101));
    const Node fading = leafOf(fadingPicture(150, 101));
    cases.push_back(exactly(kind + ", 1:1", plain));
    cases.push_back(exactly(kind + " with alpha, 1:1", fading));
    cases.push_back(exactly(kind + " of one pixel", leafOf(Grid(1, 1, {90, 20, 60, 255}))));
    cases.push_back(exactly(kind + " of odd size", leafOf(smoothPicture(67, 129))));
    cases.push_back(exactly(kind + " of one row", leafOf(smoothPicture(131, 1))));
    cases.push_back(exactly(kind + " of one column", leafOf(smoothPicture(1, 133))));
    Case faint = exactly(kind + " at three tenths", fading);
    faint.alpha = 0.3F;
    cases.push_back(faint);
    Case copied = exactly(kind + " copied", plain);
    copied.operation = 1;
    cases.push_back(copied);
    cases.push_back({kind + " reaching out", plain, NSMakeRect(-70, -40, 150, 101), true});
    cases.push_back(anyhow(kind + " enlarged", plain));
    cases.push_back(
        anyhow(kind + " enlarged 1.7 times", leafOf(smoothPicture(90, 70)), NSMakeRect(20, 15, 153, 119)));
    cases.push_back(anyhow(kind + " reduced", plain, NSMakeRect(31.5F, 22.25F, 100, 70)));
    cases.push_back(
        anyhow(kind + " of 5,000 pixels", leafOf(smoothPicture(5000, 3)), NSMakeRect(-2400, 20, 5000, 3)));
    cases.push_back(anyhow(kind + " one pixel enlarged", leafOf(Grid(1, 1, {90, 20, 60, 255}))));
    for (const float degrees : {7.0F, 45.0F, 133.0F}) {
        cases.push_back(fitted(kind + " turned by " + std::to_string(degrees),
                               IMGRotationOp::rotationByDegrees(degrees, {75, 50}, plain)));
    }
}

void addPlacing(std::vector<Case>& cases, const std::string& kind, Node (*leafOf)(const Grid&)) {
    const Node plain = leafOf(smoothPicture(120, 80));
    for (const int type : {FLIP_VERTICAL, FLIP_HORIZONTAL, ROTATE_0, ROTATE_90, ROTATE_180, ROTATE_270}) {
        cases.push_back(exactly(kind + ", transposed by " + std::to_string(type),
                                IMGTransposeOp::transposeOfType(type, plain)));
    }
    cases.push_back(exactly(kind + ", translated", IMGTranslationOp::translationBy({11, 5}, plain)));
    cases.push_back(
        exactly(kind + ", a quarter turn", IMGRotationOp::rotationByDegrees(90, {60, 40}, plain)));
    cases.push_back(
        fitted(kind + ", transformed", IMGAffineTransformOp::transformBy(turned(20, 30, 10, 0.8F), plain)));
    for (const int scaling : {0, 1, 2}) {
        for (const bool clip : {false, true}) {
            const auto crop = IMGCropAndScale::cropWithSourceImage(plain, NSMakeRect(20, 10, 60, 60),
                                                                   {80, 60}, scaling, clip);
            cases.push_back(anyhow(kind + ", crop " + std::to_string(scaling) + (clip ? " clipped" : ""),
                                   crop, NSMakeRect(40, 30, 80, 60)));
        }
    }
    const auto crop =
        IMGCropAndScale::cropWithSourceImage(plain, NSMakeRect(20, 10, 80, 60), {80, 60}, 1, true);
    cases.push_back(exactly(kind + ", crop at its own size", crop));
    for (const float degrees : {10.0F, 30.0F, 77.0F}) {
        cases.push_back(fitted(kind + ", clip turned by " + std::to_string(degrees),
                               IMGRotationOp::rotationByDegrees(degrees, {40, 30}, crop), 1.1F));
        const auto twice =
            IMGCropAndScale::cropWithSourceImage(IMGRotationOp::rotationByDegrees(degrees, {40, 30}, crop),
                                                 NSMakeRect(5, 5, 70, 50), {70, 50}, 1, true);
        cases.push_back(fitted(kind + ", clips under a turn of " + std::to_string(degrees), twice, 1.9F));
    }
    const auto composite = std::make_shared<IMGCompositeOp>(
        IMGImage::Sources{leafOf(smoothPicture(100, 70, 2)),
                          IMGTranslationOp::translationBy({30, 20}, leafOf(fadingPicture(60, 40)))});
    cases.push_back(exactly(kind + ", composite", composite));
}

void addCanvasAndGenerators(std::vector<Case>& cases) {
    const Node plain = pictureNode(smoothPicture(120, 80));
    const auto canvas = std::make_shared<IMGCanvas>(NSSize{140, 100}, IMGImage::Sources{plain});
    cases.push_back(exactly("canvas", canvas));
    cases.push_back(exactly("null generator", IMGNullGenerator::generatorWithSize({90, 60})));
    cases.push_back(
        exactly("constant generator", IMGConstantImageGenerator::generatorWithSize(
                                          {90, 60}, NSColor::colorWithCalibratedRed(0.2F, 0.4F, 0.1F, 1))));
    cases.push_back(exactly("half transparent generator",
                            IMGConstantImageGenerator::generatorWithSize(
                                {90, 60}, NSColor::colorWithCalibratedRed(0.2F, 0.4F, 0.1F, 0.5F))));
    const auto generator = IMGConstantImageGenerator::generatorWithSize(
        {90, 60}, NSColor::colorWithCalibratedRed(0.2F, 0.4F, 0.1F, 1));
    cases.push_back(fitted("generator turned", IMGRotationOp::rotationByDegrees(25, {45, 30}, generator)));
}

void addPixelOperations(std::vector<Case>& cases) {
    const Node plain = pictureNode(smoothPicture(120, 80));
    cases.push_back(exactly("colour transform",
                            IMGColorTransformOp::colorTransformWithSourceImage(plain, 0.5F, 0.8F, 1, 1)));
    cases.push_back(exactly("hue adjustment", IMGHueAdjustOp::hueAdjustWithSourceImage(plain, 40)));
    cases.push_back(
        exactly("sharpening", std::make_shared<IMGConvolutionOp>(plain, IMGKernel::kernelSharpen())));
    cases.push_back(exactly("blur", IMGGaussianOp::gaussianWithSourceImage(plain, 3)));
    cases.push_back(
        exactly("mask", std::make_shared<IMGMaskOp>(plain, pictureNode(smoothPicture(120, 80, 1)))));
    cases.push_back(anyhow(
        "blur turned",
        IMGRotationOp::rotationByDegrees(15, {60, 40}, IMGGaussianOp::gaussianWithSourceImage(plain, 3)),
        centred({130, 100})));
}

void addTransitions(std::vector<Case>& cases, const std::string& kind, Node (*leafOf)(const Grid&)) {
    const Node from = leafOf(smoothPicture(120, 80));
    const Node to = leafOf(smoothPicture(120, 80, 2.5));
    const NSSize size = {120, 80};
    const NSColor color = NSColor::colorWithCalibratedRed(0.1F, 0.2F, 0.3F, 1);
    const auto add = [&](const std::string& name, float weight, const Node& node) {
        cases.push_back({kind + ", " + name + " at " + std::to_string(weight), node,
                         NSMakeRect(40, 34, size.width, size.height)});
    };
    for (const float weight : {0.0F, 0.25F, 0.5F, 0.8F, 1.0F}) {
        for (const int direction : {1, 2, 3, 4}) {
            const std::string to4 = " " + std::to_string(direction);
            add("push" + to4, weight,
                IMGPushTransitionOp::transitionWithFromImage(from, to, size, direction, weight));
            add("slide" + to4, weight,
                IMGSlideTransitionOp::transitionWithFromImage(from, to, size, direction, 1 + direction % 2,
                                                              weight));
            add("wipe" + to4, weight,
                IMGWipeTransitionOp::transitionWithFromImage(from, to, size, direction, weight));
            add("slide changer" + to4, weight,
                IMGSlideChangerTransitionOp::transitionWithFromImage(from, to, size, direction, color,
                                                                     weight));
        }
        for (const int inOut : {1, 2}) {
            const std::string to2 = " " + std::to_string(inOut);
            add("spin" + to2, weight,
                IMGSpinTransitionOp::transitionWithFromImage(from, to, size, inOut, weight));
            add("zoom" + to2, weight,
                IMGZoomTransitionOp::transitionWithFromImage(from, to, size, inOut, weight));
            add("iris" + to2, weight,
                IMGIrisTransitionOp::transitionWithFromImage(from, to, size, inOut, weight));
        }
    }
}

Node texturedLeaf(const Grid& grid) { return std::make_shared<OpenGLImage>(alphaFirst(grid, 4)); }
Node pictureLeaf(const Grid& grid) { return pictureNode(grid); }

/// Of textures only: in overlays the two pictures do not add up.
void addDissolves(std::vector<Case>& cases, Node (*leafOf)(const Grid&)) {
    const Node from = leafOf(smoothPicture(120, 80));
    const Node to = leafOf(smoothPicture(120, 80, 2.5));
    const NSColor color = NSColor::colorWithCalibratedRed(0.1F, 0.2F, 0.3F, 1);
    for (const float weight : {0.0F, 0.25F, 0.5F, 0.8F, 1.0F}) {
        const std::string at = " at " + std::to_string(weight);
        Case dissolve = exactly(
            "dissolve" + at, IMGDissolveTransitionOp::transitionWithFromImage(from, to, {120, 80}, weight));
        dissolve.isOnBlack = true;
        cases.push_back(dissolve);
        Case fade = exactly("colour fade" + at, IMGColorFadeTransitionOp::transitionWithFromImage(
                                                    from, to, {120, 80}, color, 0.5F, weight));
        fade.isOnBlack = true;
        cases.push_back(fade);
    }
}

/// With leaves of a kind, named after what the OpenGL target makes of them.
std::vector<Case> casesWith(const std::string& kind, Node (*leafOf)(const Grid&)) {
    std::vector<Case> cases;
    addPictures(cases, kind, leafOf);
    addPlacing(cases, kind, leafOf);
    addTransitions(cases, kind, leafOf);
    return cases;
}

/// A graph for the OpenGL target and the same one for the 2-D target, whose leaves are always pictures:
/// bitmap nodes leave their transforms to the nodes that are drawn after them there.
struct Pair {
    Case drawn;
    Node reference;
};

std::vector<Pair> allPairs() {
    std::vector<Pair> pairs;
    std::vector<Case> pictures = casesWith("overlay", pictureLeaf);
    std::vector<Case> textures = casesWith("texture", texturedLeaf);
    for (const Case& c : pictures) pairs.push_back({c, c.node});
    addDissolves(pictures, pictureLeaf);
    addDissolves(textures, texturedLeaf);
    for (std::size_t i = 0; i < textures.size(); ++i) pairs.push_back({textures[i], pictures[i].node});
    std::vector<Case> others;
    addCanvasAndGenerators(others);
    const std::size_t walked = others.size();
    addPixelOperations(others);
    for (std::size_t i = walked; i < others.size(); ++i) others[i].isRetained = true;
    for (const Case& c : others) pairs.push_back({c, c.node});
    return pairs;
}

/// The first graph and the step to the next: all of them in compatibility contexts as they usually are, every
/// fourth one elsewhere, each time other ones.
std::pair<std::size_t, std::size_t> choiceFor(const Surroundings& s) {
    const bool isUsual =
        s.profile == Imaging::Platform::NSOpenGLProfileVersionLegacy && s.rectangles && s.largestSide == 512;
    if (isUsual) return {0, 1};
    const std::size_t profile = s.profile >> 12; // 0, 1 and 3
    return {(profile + (s.rectangles ? 1 : 0) + (s.largestSide == 64 ? 2 : 0)) % 4, 4};
}

class OpenGLAgainst2D : public testing::TestWithParam<Surroundings> {};

INSTANTIATE_TEST_SUITE_P(Everywhere, OpenGLAgainst2D, testing::ValuesIn(allSurroundings()),
                         [](const auto& chosen) { return nameOf(chosen.param); });

} // namespace

TEST_P(OpenGLAgainst2D, GraphsLookTheSame) {
    OffscreenTarget offscreen(GetParam(), frameWidth, frameHeight);
    const std::vector<Pair> pairs = allPairs();
    EXPECT_GE(pairs.size(), 60U);
    const auto [first, step] = choiceFor(GetParam());
    Distance worst;
    std::size_t drawn = 0;
    for (std::size_t i = first; i < pairs.size(); i += step) {
        ++drawn;
        const Case& c = pairs[i].drawn;
        const Node& reference = pairs[i].reference;
        const auto drawingOf = [&](const Node& node) -> Drawing {
            return [&](GraphicsContext& target) {
                if (c.isOnBlack) target.fillRect(wholeFrame, NSColor::blackColor(), 1);
                if (c.isRetained) {
                    node->drawInRect(c.rect, c.operation, c.alpha, true, &target);
                } else {
                    target.drawImage(node, c.rect, c.operation, c.alpha);
                }
            };
        };
        const Distance distance = distanceOf(offscreen.frame(drawingOf(c.node)),
                                             frameIn2D(frameWidth, frameHeight, drawingOf(reference)));
        if (c.isExact) {
            EXPECT_LE(distance.largest, 1) << c.name;
            continue;
        }
        EXPECT_LE(distance.mean, 1) << c.name;
        EXPECT_LE(distance.largestAwayFromEdges, 4)
            << c.name << " at column " << distance.x << ", row " << distance.y;
        worst.mean = std::max(worst.mean, distance.mean);
        worst.largestAwayFromEdges = std::max(worst.largestAwayFromEdges, distance.largestAwayFromEdges);
    }
    std::cout << drawn << " graphs; placed anyhow the worst mean is " << worst.mean
              << ", the largest away from edges " << worst.largestAwayFromEdges << std::endl;
}

TEST_P(OpenGLAgainst2D, FramesOfClosedPathsLookTheSame) {
    OffscreenTarget offscreen(GetParam(), frameWidth, frameHeight);
    const auto frame = IMGSimpleFrameGenerator::generatorWithSize(
        {90, 60}, NSColor::colorWithCalibratedRed(0.5F, 0, 0.1F, 1), 5);
    const Drawing drawing = [&](GraphicsContext& target) {
        target.drawImage(frame, NSMakeRect(40, 30, 90, 60), 2, 1);
    };
    EXPECT_LE(distanceOf(offscreen.frame(drawing), frameIn2D(frameWidth, frameHeight, drawing)).largest, 1);
}
