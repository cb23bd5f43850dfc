// Also tests: Show/FramedNode.cpp

#include "Show/StepCheck.h"

#include "Imaging/TransformOperations.h"
#include "Imaging/Transpose.h"
#include "Platform/Codecs/CodecRegistry.h"
#include "Show/Orientation.h"
#include "Show/PictureLoading.h"
#include "Tests/Tools/Support/TestPictures.h"

#include <gtest/gtest.h>

#include <optional>
#include <random>
#include <string>
#include <vector>

using namespace Imaging;
using namespace TestSupport;

namespace {

using Platform::NSData;
using Platform::NSException;
using Random = std::mt19937;

NSData bytesOf(const std::string& text) { return {text.begin(), text.end()}; }

/// A step that only takes pictures without alpha, as operations on colours do.
void requireRGB(FramedNode& picture) {
    picture.recompute();
    picture.dropNeedlessAlpha();
    if (picture.layout() != IMGBitmapFormatRGB)
        throw NSException(Platform::NSInvalidArgumentException, "there is alpha");
}

int below(Random& random, int limit) { return static_cast<int>(random() % static_cast<unsigned>(limit)); }

/// One of the steps that people can ask for, with numbers that fit pictures of a few pixels or nearly do.
Step anyStep(Random& random) {
    const double a = below(random, 7) - 1;
    const double b = below(random, 5) - 1;
    const PixelSize size{1 + below(random, 12), 1 + below(random, 9)};
    switch (below(random, 8)) {
    case 0:
        return [=](FramedNode& p) {
            p.crop(a, b, static_cast<double>(size.width), static_cast<double>(size.height));
        };
    case 1:
        return [=](FramedNode& p) { p.scale(size, SCALE_TO_FILL); };
    case 2:
        return [=](FramedNode& p) { p.scale(size, SCALE_PROPORTIONALLY); };
    case 3:
        return [=](FramedNode& p) { p.scale(size, SCALE_NONE); };
    case 4:
        return [=](FramedNode& p) { p.move(a, b); };
    case 5:
        return [=](FramedNode& p) { p.putOnCanvas(size); };
    case 6:
        return [=](FramedNode& p) {
            p.turn([](const auto& node, auto) { return IMGTransposeOp::transposeOfType(ROTATE_90, node); });
        };
    default:
        return [=](FramedNode& p) {
            p.turn([a](const auto& node, auto middle) {
                return IMGRotationOp::rotationByDegrees(static_cast<float>(a) * 45, middle, node);
            });
        };
    }
}

/// What carrying steps out on the picture itself comes to: "" or the reason why not.
std::string outcome(const std::vector<Step>& steps, const NSData& bytes) {
    try {
        FramedNode picture(orientedNode(nodeWithBytes(bytes), Upright::AsDeclared));
        for (const Step& step : steps) step(picture);
        return "";
    } catch (const NSException& exception) {
        return exception.reason();
    }
}

/// What the outline comes to; nullopt where pixels would be needed.
std::optional<std::string> outlineOutcome(const std::vector<Step>& steps, const NSData& bytes) {
    ShowPicture picture;
    picture.steps = steps;
    try {
        if (!checkStepsOnOutline(picture, false, Platform::readPictureHeader(bytes))) return std::nullopt;
        return "";
    } catch (const NSException& exception) {
        return exception.reason();
    }
}

std::string complaint(const std::vector<Step>& steps, const NSData& bytes) {
    ShowPicture picture;
    picture.steps = steps;
    try {
        checkSteps(picture, false, bytes);
        return "none";
    } catch (const NSException& exception) {
        return exception.reason();
    }
}

} // namespace

TEST(StepCheck, ComesToWhatThePictureItselfWould) {
    const unsigned seed = std::random_device()();
    SCOPED_TRACE(seed);
    Random random(seed);
    int known = 0;
    for (int round = 0; round < 400; ++round) {
        SCOPED_TRACE(round);
        const bool alpha = below(random, 3) == 0;
        Picture pixels = randomPicture(6 + below(random, 3), 5, random());
        if (alpha) pixels.at(1, 1) = clear;
        const int orientation = 1 + below(random, 8);
        const NSData bytes =
            bytesOf(alpha ? pngOf(pixels, true)
                          : pngWithChunks(pixels, pngChunk("eXIf", exifWithOrientation(orientation))));
        std::vector<Step> steps;
        for (int i = below(random, 4); i >= 0; --i) steps.push_back(anyStep(random));
        if (below(random, 2) == 0) steps.emplace_back(requireRGB);
        std::vector<PixelSize> sizes;
        steps.emplace_back([&](FramedNode& picture) { sizes.push_back(picture.size()); });
        steps.emplace_back([&](FramedNode& picture) {
            picture.recompute();
            sizes.push_back({picture.layout(), 0});
        });
        const std::string real = outcome(steps, bytes);
        const std::size_t count = sizes.size();
        const std::optional<std::string> outline = outlineOutcome(steps, bytes);
        EXPECT_EQ(complaint(steps, bytes), real.empty() ? "none" : real);
        if (!outline.has_value()) continue;
        ++known;
        EXPECT_EQ(*outline, real);
        ASSERT_GE(sizes.size(), 2 * count);
        for (std::size_t i = 0; i < count; ++i) {
            EXPECT_EQ(sizes[count + i].width, sizes[i].width);
            EXPECT_EQ(sizes[count + i].height, sizes[i].height);
        }
    }
    EXPECT_GT(known, 200) << "outlines are of use";
}

TEST(StepCheck, TakesNoPixelsWhereTheSizeSaysItAll) {
    Platform::PictureHeader header;
    header.width = 20000;
    header.height = 12000; // 720 MB, if they were touched
    ShowPicture picture;
    picture.steps = {[](FramedNode& node) { node.crop(19999, 0, 2, 2); },
                     [](FramedNode& node) {
                         node.recompute();
                         EXPECT_EQ(node.layout(), IMGBitmapFormatRGBA);
                     }};
    EXPECT_TRUE(checkStepsOnOutline(picture, false, header));
    picture.steps = {[](FramedNode& node) { node.crop(20000, 0, 2, 2); }};
    EXPECT_THROW(checkStepsOnOutline(picture, false, header), NSException);
}

TEST(StepCheck, AsksThePixelsWhereTheyAloneCanTell) {
    Picture opaque = randomPicture(5, 4, 3);
    const NSData whole = bytesOf(pngOf(opaque, true)); // with alpha, but opaque
    EXPECT_EQ(outlineOutcome({requireRGB}, whole), std::nullopt);
    EXPECT_EQ(complaint({requireRGB}, whole), "none");
    opaque.at(4, 3).alpha = 254;
    EXPECT_EQ(complaint({requireRGB}, bytesOf(pngOf(opaque, true))), "there is alpha");
}

TEST(StepCheck, LetsAnOutlineNotBeDrawn) {
    const NSData bytes = bytesOf(pngOf(randomPicture(3, 3, 1)));
    const std::vector<Step> steps = {[](FramedNode& picture) { picture.draw(); }};
    EXPECT_EQ(outlineOutcome(steps, bytes), std::nullopt);
}
