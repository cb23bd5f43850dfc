// The convolution nodes: which pass a kernel takes, what is kept until when, profiles, archives and bad
// kernels.

#include "Imaging/Convolution.h"

#include "Platform/Foundation/KeyedArchiver.h"
#include "Tests/Imaging/ImagingTestSupport.h"
#include "Tests/Imaging/Pixels/ConvolutionFixtures.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstdint>
#include <functional>
#include <limits>
#include <memory>
#include <string>
#include <vector>

using namespace ImagingTests;
using Imaging::IMGConvolutionOp;
using Imaging::IMGGaussianOp;
using Imaging::IMGKernel;
using Imaging::Platform::NSBitmapDescription;
using Imaging::Platform::NSBitmapImageRep;
using Imaging::Platform::NSData;

namespace {

using Bitmap = std::shared_ptr<NSBitmapImageRep>;
using Kernel = std::shared_ptr<IMGKernel>;

Kernel kernelOf(float width, float height, const std::vector<std::int32_t>& taps,
                std::optional<std::string> name = std::nullopt) {
    return std::make_shared<IMGKernel>(NSSize{width, height}, taps.data(), std::move(name));
}

Bitmap emptyBitmap(int width, int height, int samples, std::size_t padding = 0) {
    NSBitmapDescription description;
    description.pixelsWide = width;
    description.pixelsHigh = height;
    description.samplesPerPixel = samples;
    description.hasAlpha = samples % 2 == 0;
    description.colorSpaceName = samples < 3 ? Imaging::Platform::NSCalibratedWhiteColorSpace
                                             : Imaging::Platform::NSCalibratedRGBColorSpace;
    description.bytesPerRow = static_cast<std::size_t>(width * samples) + padding;
    return NSBitmapImageRep::bitmapWithDescription(description);
}

Bitmap randomBitmap(Pixels::Random& random, int width, int height, int samples, std::size_t padding = 5) {
    Bitmap bitmap = emptyBitmap(width, height, samples, padding);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            std::array<std::uint16_t, 5> pixel{};
            for (int i = 0; i < samples; ++i) {
                pixel[static_cast<std::size_t>(i)] = static_cast<std::uint16_t>(random.sample());
            }
            bitmap->setPixelAt(x, y, pixel);
        }
    }
    return bitmap;
}

std::shared_ptr<CCImage> resultOf(const Bitmap& bitmap) {
    auto picture = std::make_shared<NSImage>(
        NSMakeSize(static_cast<float>(bitmap->pixelsWide()), static_cast<float>(bitmap->pixelsHigh())));
    picture->addRepresentation(bitmap);
    return CCImage::ccImageWithNSImage(picture);
}

/// A node that renders what it is given.
std::shared_ptr<TestNode> sourceOf(const Bitmap& bitmap) {
    auto node = std::make_shared<TestNode>();
    node->rendered = resultOf(bitmap);
    node->setExtent(
        NSMakeRect(0, 0, static_cast<float>(bitmap->pixelsWide()), static_cast<float>(bitmap->pixelsHigh())));
    return node;
}

Bitmap bitmapOf(const std::shared_ptr<CCImage>& result) {
    if (result == nullptr || result->nsImage()->representations().empty()) return nullptr;
    return std::dynamic_pointer_cast<NSBitmapImageRep>(result->nsImage()->representations()[0]);
}

GuardedSamples samplesOf(const NSBitmapImageRep& bitmap) {
    GuardedSamples samples(static_cast<int>(bitmap.pixelsWide()), static_cast<int>(bitmap.pixelsHigh()),
                           bitmap.samplesPerPixel(), 0);
    for (int y = 0; y < samples.height(); ++y) {
        for (int x = 0; x < samples.width(); ++x) {
            const auto pixel = bitmap.pixelAt(x, y);
            for (int i = 0; i < samples.samples(); ++i) {
                samples.at(x, y, i) = static_cast<std::uint8_t>(pixel[static_cast<std::size_t>(i)]);
            }
        }
    }
    return samples;
}

Taps2 tapsOf(const IMGKernel& kernel) {
    return {static_cast<int>(kernel.size().width),
            static_cast<int>(kernel.size().height),
            {kernel.dataAsIntArray(), kernel.dataAsIntArray() + kernel.tapCount()},
            kernel.divisor()};
}

/// What a node with a kernel should make of a bitmap.
GuardedSamples expectedOf(const NSBitmapImageRep& bitmap, const IMGKernel& kernel) {
    GuardedSamples source = samplesOf(bitmap);
    GuardedSamples between(source.width(), source.height(), source.samples(), 0);
    GuardedSamples result(source.width(), source.height(), source.samples(), 0);
    const Taps2 taps = tapsOf(kernel);
    if (taps.height == 1) {
        referenceLines(source, between, taps, true);
        referenceLines(between, result, taps, false);
    } else {
        referenceRectangle(source, result, taps);
    }
    return result;
}

testing::AssertionResult isConvolved(const std::shared_ptr<CCImage>& result, const NSBitmapImageRep& source,
                                     const IMGKernel& kernel) {
    const Bitmap bitmap = bitmapOf(result);
    if (bitmap == nullptr) return testing::AssertionFailure() << "there is no result";
    GuardedSamples actual = samplesOf(*bitmap);
    GuardedSamples expected = expectedOf(source, kernel);
    return areEqual(actual, expected);
}

/// Counts the changes that reach it, and what it finds at each.
struct Observer {
    std::vector<float> radii;
    int changes = 0;
    void nodeChanged(IMGImage& node) {
        ++changes;
        const auto* const gaussian = dynamic_cast<const IMGGaussianOp*>(&node);
        if (gaussian != nullptr) radii.push_back(gaussian->radius());
    }
};

const char* const condition =
    "Invalid parameter not satisfying: kernel_size.width > 1 && kernel_size.height >= 1";

} // namespace

TEST(Convolution, GivesWhatTheArithmeticSaysInEveryLayout) {
    Pixels::Random random(20261212);
    const std::vector<Kernel> kernels = {IMGKernel::kernelSharpen(),
                                         IMGKernel::kernelGaussianWithSigma(1.5),
                                         IMGKernel::kernelSeparableGaussianWithSigma(0.5),
                                         IMGKernel::kernelSeparableGaussianWithSigma(3),
                                         kernelOf(3, 3, {-1, 0, 1, -2, 0, 2, -1, 0, 1}),
                                         kernelOf(2, 1, {1, 1})};
    for (int samples = 1; samples <= 4; ++samples) {
        for (const Kernel& kernel : kernels) {
            const Bitmap bitmap = randomBitmap(random, random.integer(1, 60), random.integer(1, 40), samples);
            IMGConvolutionOp node(sourceOf(bitmap), kernel);
            const auto result = node.untransformedImage();
            EXPECT_TRUE(isConvolved(result, *bitmap, *kernel)) << samples << " samples";
            EXPECT_EQ(Imaging::imgBitmapFormat(*bitmapOf(result)), samples);
            EXPECT_TRUE(isSize(result->size(), static_cast<float>(bitmap->pixelsWide()),
                               static_cast<float>(bitmap->pixelsHigh())));
        }
    }
}

TEST(Convolution, KeepsAUniformPictureUnderSharpen) {
    const Bitmap bitmap = emptyBitmap(6, 5, 1);
    for (int y = 0; y < 5; ++y) {
        for (int x = 0; x < 6; ++x) bitmap->setPixelAt(x, y, {131});
    }
    IMGConvolutionOp node(sourceOf(bitmap), IMGKernel::kernelSharpen());
    const Bitmap result = bitmapOf(node.untransformedImage());
    for (int y = 0; y < 5; ++y) {
        for (int x = 0; x < 6; ++x) EXPECT_EQ(result->pixelAt(x, y)[0], 131);
    }
}

TEST(Convolution, RaisesAPixelAgainstItsSurroundingsBySharpening) {
    const Bitmap bitmap = emptyBitmap(3, 3, 1);
    for (int i = 0; i < 9; ++i) bitmap->setPixelAt(i % 3, i / 3, {100});
    bitmap->setPixelAt(1, 1, {120});
    IMGConvolutionOp node(sourceOf(bitmap), IMGKernel::kernelSharpen());
    const Bitmap result = bitmapOf(node.untransformedImage());
    EXPECT_EQ(result->pixelAt(1, 1)[0], 180); // (16 · 120 - 12 · 100) / 4
    EXPECT_EQ(result->pixelAt(0, 1)[0], 100); // copied
}

TEST(Convolution, LeavesTheCornersOfABlurUnfilteredAndTheSidesHalfFiltered) {
    Pixels::Random random(20261213);
    const Bitmap bitmap = randomBitmap(random, 9, 9, 1);
    const Kernel kernel = kernelOf(3, 1, {1, 2, 1});
    IMGConvolutionOp node(sourceOf(bitmap), kernel);
    const Bitmap result = bitmapOf(node.untransformedImage());
    const auto at = [&](int x, int y) { return int{bitmap->pixelAt(x, y)[0]}; };
    EXPECT_EQ(result->pixelAt(0, 0)[0], at(0, 0));
    EXPECT_EQ(result->pixelAt(8, 8)[0], at(8, 8));
    EXPECT_EQ(result->pixelAt(4, 0)[0], (at(3, 0) + 2 * at(4, 0) + at(5, 0)) / 4);
    EXPECT_EQ(result->pixelAt(8, 4)[0], (at(8, 3) + 2 * at(8, 4) + at(8, 5)) / 4);
}

TEST(Convolution, CopiesPicturesSmallerThanTheKernel) {
    Pixels::Random random(20261214);
    for (const auto& kernel :
         {IMGKernel::kernelGaussianWithSigma(5), IMGKernel::kernelSeparableGaussianWithSigma(5)}) {
        for (const int width : {1, 2, 5}) {
            for (const int height : {1, 2, 5}) {
                const Bitmap bitmap = randomBitmap(random, width, height, 4);
                IMGConvolutionOp node(sourceOf(bitmap), kernel);
                GuardedSamples actual = samplesOf(*bitmapOf(node.untransformedImage()));
                GuardedSamples expected = samplesOf(*bitmap);
                EXPECT_TRUE(areEqual(actual, expected));
            }
        }
    }
}

TEST(Convolution, FiltersNoColumnsOfAPictureWithFewerRowsThanTheKernel) {
    Pixels::Random random(20261215);
    const Bitmap bitmap = randomBitmap(random, 40, 6, 3);
    const Kernel kernel =
        IMGKernel::kernelSeparableGaussianWithSigma(2.5); // h = 3, so 7 rows would be needed
    IMGConvolutionOp node(sourceOf(bitmap), kernel);
    GuardedSamples source = samplesOf(*bitmap);
    GuardedSamples expected(40, 6, 3, 0);
    referenceLines(source, expected, tapsOf(*kernel), true);
    GuardedSamples actual = samplesOf(*bitmapOf(node.untransformedImage()));
    EXPECT_TRUE(areEqual(actual, expected));
}

TEST(Convolution, DrawsThePictureUnchangedWithTheIdentityKernelOfNoRadius) {
    Pixels::Random random(20261216);
    const Bitmap bitmap = randomBitmap(random, 11, 7, 3);
    for (const float radius : {0.0F, std::numeric_limits<float>::quiet_NaN()}) {
        IMGGaussianOp node(sourceOf(bitmap), radius);
        GuardedSamples actual = samplesOf(*bitmapOf(node.untransformedImage()));
        GuardedSamples expected = samplesOf(*bitmap);
        EXPECT_TRUE(areEqual(actual, expected));
    }
}

TEST(Convolution, RefusesKernelsThatAreNotWideOrHighEnough) {
    const auto source = sourceOf(emptyBitmap(4, 4, 3));
    const std::vector<Kernel> kernels = {kernelOf(1, 1, {1}), kernelOf(1, 3, {1, 1, 1}), kernelOf(3, 0, {}),
                                         kernelOf(0, 0, {}),  kernelOf(3, 0.5F, {1, 1}), nullptr};
    for (const Kernel& kernel : kernels) {
        IMGConvolutionOp node(source, kernel);
        try {
            node.untransformedImage();
            ADD_FAILURE() << "no exception";
        } catch (const NSException& exception) {
            EXPECT_EQ(exception.name(), "NSInternalInconsistencyException");
            EXPECT_EQ(exception.reason(), condition);
        }
        const ToleratedAssertions tolerated;
        EXPECT_NE(node.untransformedImage(), nullptr);
        ASSERT_EQ(tolerated.failures().size(), 1U);
        EXPECT_EQ(tolerated.failures()[0].file, "Imaging/Convolution");
        EXPECT_EQ(tolerated.failures()[0].line, 344);
        EXPECT_EQ(tolerated.failures()[0].description, condition);
    }
}

TEST(Convolution, RefusesAKernelWithFewerTapsThanItsSizeSays) {
    struct Lying : Imaging::Platform::NSCoding {
        std::string archiveClassName() const override { return "IMGKernel"; }
        void encodeWithCoder(Imaging::Platform::NSCoder& coder) const override {
            coder.encodeSize({50000, 50000}, "size");
            coder.encodeData(NSData(40), "data");
        }
    };
    const auto kernel = Imaging::Platform::unarchiveObjectOfClass<IMGKernel>(
        Imaging::Platform::archivedDataWithRootObject(Lying()));
    IMGConvolutionOp node(sourceOf(emptyBitmap(4, 4, 3)), kernel);
    try {
        node.untransformedImage();
        ADD_FAILURE() << "no exception";
    } catch (const NSException& exception) {
        EXPECT_EQ(exception.name(), "NSInvalidArgumentException");
    }
}

TEST(Convolution, NeedsASource) {
    EXPECT_THROW(IMGConvolutionOp(nullptr, IMGKernel::kernelSharpen()), NSException);
    EXPECT_THROW(IMGGaussianOp(nullptr, 2), NSException);
}

TEST(Convolution, GivesNothingForASourceWithoutAResult) {
    const auto source = std::make_shared<TestNode>();
    IMGConvolutionOp node(source, IMGKernel::kernelSharpen());
    EXPECT_EQ(node.untransformedImage(), nullptr);
    source->rendered = CCImage::ccImageWithCIImage(nullptr); // without a picture
    EXPECT_EQ(node.untransformedImage(), nullptr);
    source->rendered = resultOf(emptyBitmap(4, 4, 3)); // nothing was kept
    EXPECT_NE(node.untransformedImage(), nullptr);
}

TEST(Convolution, GivesAnEmptyResultForAPictureThatCannotBeConverted) {
    const auto source = std::make_shared<TestNode>();
    source->rendered = CCImage::ccImageWithNSImage(std::make_shared<NSImage>(NSMakeSize(0, 0)));
    IMGConvolutionOp node(source, IMGKernel::kernelSharpen());
    const auto result = node.untransformedImage();
    ASSERT_NE(result, nullptr);
    EXPECT_TRUE(isSize(result->size(), 0, 0));
    EXPECT_EQ(bitmapOf(result), nullptr);
}

TEST(Convolution, CarriesTheColourProfileOver) {
    const Bitmap bitmap = emptyBitmap(5, 5, 3);
    const NSData profile = {1, 2, 3, 250};
    bitmap->setProperty(Imaging::Platform::NSImageColorSyncProfileData, profile);
    bitmap->setProperty(Imaging::Platform::NSImageOrientation, 6);
    for (const Kernel& kernel :
         {IMGKernel::kernelSharpen(), IMGKernel::kernelSeparableGaussianWithSigma(1)}) {
        IMGConvolutionOp node(sourceOf(bitmap), kernel);
        const Bitmap result = bitmapOf(node.untransformedImage());
        ASSERT_EQ(result->properties().size(), 1U);
        EXPECT_EQ(std::get<NSData>(*result->valueForProperty(Imaging::Platform::NSImageColorSyncProfileData)),
                  profile);
    }
    IMGConvolutionOp plain(sourceOf(emptyBitmap(5, 5, 3)), IMGKernel::kernelSharpen());
    EXPECT_TRUE(bitmapOf(plain.untransformedImage())->properties().empty());
}

TEST(Convolution, KeepsItsResultWhateverIsAnnounced) {
    Pixels::Random random(20261217);
    const Bitmap bitmap = randomBitmap(random, 8, 8, 3);
    const auto source = sourceOf(bitmap);
    const Kernel first = IMGKernel::kernelSharpen();
    const auto node = std::make_shared<IMGConvolutionOp>(source, first);
    const auto result = node->untransformedImage();
    Observer observer;
    node->addImageDidChangeObserver(&observer, &Observer::nodeChanged);
    node->changed();
    source->changed();
    EXPECT_EQ(node->untransformedImage(), result);
    node->setKernel(IMGKernel::kernelSeparableGaussianWithSigma(1));
    EXPECT_EQ(node->untransformedImage(), result); // the old kernel's
    EXPECT_TRUE(isConvolved(node->untransformedImage(), *bitmap, *first));
    EXPECT_EQ(observer.changes, 3);
}

TEST(Convolution, ComputesAgainWhenTheSourceHasAnotherResult) {
    Pixels::Random random(20261218);
    const Bitmap bitmap = randomBitmap(random, 8, 8, 3);
    const auto source = sourceOf(bitmap);
    IMGConvolutionOp node(source, IMGKernel::kernelSharpen());
    const auto result = node.untransformedImage();
    const Kernel kernel = IMGKernel::kernelSeparableGaussianWithSigma(1);
    node.setKernel(kernel);
    const Bitmap other = randomBitmap(random, 9, 5, 1);
    source->rendered = resultOf(other);
    EXPECT_NE(node.untransformedImage(), result);
    EXPECT_TRUE(isConvolved(node.untransformedImage(), *other, *kernel));
    source->rendered = nullptr;
    EXPECT_EQ(node.untransformedImage(), nullptr);
}

TEST(Convolution, IsNamedAfterItsKernel) {
    const auto source = sourceOf(emptyBitmap(4, 4, 3));
    EXPECT_EQ(IMGConvolutionOp(source, IMGKernel::kernelSharpen()).name(), "sharpen");
    EXPECT_EQ(IMGConvolutionOp(source, kernelOf(2, 1, {1, 1}, "mine")).name(), "mine");
    EXPECT_EQ(IMGConvolutionOp(source, kernelOf(2, 1, {1, 1})).name(), "convolution");
    EXPECT_EQ(IMGConvolutionOp(source, nullptr).name(), "convolution");
    EXPECT_EQ(IMGGaussianOp(source, 2).name(), "separable gaussian blur");
}

TEST(Convolution, IsCopiedWithTheSameSourceAndKernel) {
    const auto source = sourceOf(emptyBitmap(4, 4, 3));
    const IMGConvolutionOp node(source, IMGKernel::kernelSharpen());
    const auto copy = std::dynamic_pointer_cast<IMGConvolutionOp>(node.copy());
    ASSERT_NE(copy, nullptr);
    EXPECT_EQ(copy->sourceAtIndex(0), source);
    EXPECT_EQ(copy->kernel(), node.kernel());
}

TEST(Gaussian, IsCopiedWithTheSameSourceAndRadiusAndAKernelOfItsOwn) {
    const auto source = sourceOf(emptyBitmap(4, 4, 3));
    const IMGGaussianOp node(source, 2.5F);
    const auto copy = std::dynamic_pointer_cast<IMGGaussianOp>(node.copy());
    ASSERT_NE(copy, nullptr);
    EXPECT_EQ(copy->sourceAtIndex(0), source);
    EXPECT_EQ(copy->radius(), 2.5F);
    EXPECT_NE(copy->kernel(), node.kernel());
    EXPECT_EQ(copy->kernel()->data(), node.kernel()->data());
}

TEST(Gaussian, BlursWithTheSeparableKernelOfItsRadius) {
    Pixels::Random random(20261219);
    const Bitmap bitmap = randomBitmap(random, 30, 20, 4);
    const auto node = IMGGaussianOp::gaussianWithSourceImage(sourceOf(bitmap), 2);
    EXPECT_EQ(node->radius(), 2.0F);
    EXPECT_EQ(node->kernel()->tapCount(), 7U);
    EXPECT_TRUE(
        isConvolved(node->untransformedImage(), *bitmap, *IMGKernel::kernelSeparableGaussianWithSigma(2)));
}

TEST(Gaussian, IsComputedAgainAfterAnotherRadiusIsSet) {
    Pixels::Random random(20261220);
    const Bitmap bitmap = randomBitmap(random, 30, 20, 3);
    const auto node = IMGGaussianOp::gaussianWithSourceImage(sourceOf(bitmap), 2);
    const auto result = node->untransformedImage();
    node->setRadius(1);
    EXPECT_NE(node->untransformedImage(), result);
    EXPECT_TRUE(
        isConvolved(node->untransformedImage(), *bitmap, *IMGKernel::kernelSeparableGaussianWithSigma(1)));
}

TEST(Gaussian, AnnouncesANewRadiusTwiceAndTheSameOneNever) {
    const auto node = IMGGaussianOp::gaussianWithSourceImage(sourceOf(emptyBitmap(9, 9, 3)), 2);
    const auto result = node->untransformedImage();
    const Kernel kernel = node->kernel();
    Observer observer;
    node->addImageDidChangeObserver(&observer, &Observer::nodeChanged);
    node->setRadius(2);
    EXPECT_EQ(observer.changes, 0);
    EXPECT_EQ(node->untransformedImage(), result);
    EXPECT_EQ(node->kernel(), kernel);
    node->setRadius(3);
    EXPECT_EQ(observer.radii, (std::vector<float>{2, 3})); // the kernel comes before the radius
}

TEST(Gaussian, RefusesARadiusOfTooManyTapsAndStaysAsItWas) {
    const auto source = sourceOf(emptyBitmap(4, 4, 3));
    const auto node = IMGGaussianOp::gaussianWithSourceImage(source, 2);
    const Kernel kernel = node->kernel();
    EXPECT_THROW(node->setRadius(40000), NSException);
    EXPECT_EQ(node->radius(), 2.0F);
    EXPECT_EQ(node->kernel(), kernel);
    EXPECT_THROW(IMGGaussianOp(source, 1e20F), NSException);
}

TEST(Convolution, ComesBackFromAnArchiveWithItsSourceAndKernel) {
    const auto source = pictureNode(distinctPicture(5, 4));
    const IMGConvolutionOp node(source, kernelOf(2, 2, {1, 2, 3, -4}, "mine"));
    const auto back = Imaging::Platform::unarchiveObjectOfClass<IMGConvolutionOp>(
        Imaging::Platform::archivedDataWithRootObject(node));
    ASSERT_EQ(back->sources().size(), 1U);
    EXPECT_EQ(back->kernel()->data(), node.kernel()->data());
    EXPECT_EQ(back->name(), "mine");
    const Bitmap bitmap = bitmapOf(back->sourceAtIndex(0)->untransformedImage());
    EXPECT_TRUE(isConvolved(back->untransformedImage(), *bitmap, *node.kernel()));
}

TEST(Convolution, WithoutAKernelIsArchivedWithoutOne) {
    const IMGConvolutionOp node(pictureNode(distinctPicture(5, 4)), nullptr);
    const auto back = Imaging::Platform::unarchiveObjectOfClass<IMGConvolutionOp>(
        Imaging::Platform::archivedDataWithRootObject(node));
    EXPECT_EQ(back->kernel(), nullptr);
    EXPECT_EQ(back->sources().size(), 1U);
}

TEST(Convolution, SharesAKernelAcrossAnArchive) {
    const Kernel kernel = IMGKernel::kernelSharpen();
    const auto inner = std::make_shared<IMGConvolutionOp>(pictureNode(distinctPicture(5, 4)), kernel);
    const IMGConvolutionOp outer(inner, kernel);
    const auto back = Imaging::Platform::unarchiveObjectOfClass<IMGConvolutionOp>(
        Imaging::Platform::archivedDataWithRootObject(outer));
    const auto below = std::dynamic_pointer_cast<IMGConvolutionOp>(back->sourceAtIndex(0));
    ASSERT_NE(below, nullptr);
    EXPECT_EQ(below->kernel(), back->kernel());
}

TEST(Gaussian, TakesItsKernelFromTheArchiveAndNotFromTheRadius) {
    IMGGaussianOp node(pictureNode(distinctPicture(5, 4)), 2);
    node.setKernel(kernelOf(3, 1, {1, 1, 1}, "box"));
    const auto back = Imaging::Platform::unarchiveObjectOfClass<IMGGaussianOp>(
        Imaging::Platform::archivedDataWithRootObject(node));
    EXPECT_EQ(back->radius(), 2.0F);
    EXPECT_EQ(back->kernel()->tapCount(), 3U);
    EXPECT_EQ(back->name(), "box");
}

TEST(Gaussian, OfAnArchiveWithoutItsKeysHasNoKernelAndTheRadiusZero) {
    struct Bare : Imaging::Platform::NSCoding {
        std::string archiveClassName() const override { return "IMGGaussianOp"; }
        void encodeWithCoder(Imaging::Platform::NSCoder&) const override {}
    };
    const auto node = Imaging::Platform::unarchiveObjectOfClass<IMGGaussianOp>(
        Imaging::Platform::archivedDataWithRootObject(Bare()));
    EXPECT_EQ(node->radius(), 0.0F);
    EXPECT_EQ(node->kernel(), nullptr);
    EXPECT_TRUE(node->sources().empty());
}

TEST(Convolution, DrawsItsResultInThePlaceOfItsSource) {
    const Grid grid = distinctPicture(6, 5);
    const auto source = pictureNode(grid);
    // The tap at the right of the middle, so that inner pixels show their right neighbours.
    const auto node = std::make_shared<IMGConvolutionOp>(source, kernelOf(3, 3, {0, 0, 0, 0, 0, 1, 0, 0, 0}));
    const Grid drawn = drawnOn(6, 5, [&] { node->drawWithTransform(NSAffineTransform(), 2, 1); });
    Grid expected = grid;
    for (int y = 1; y < 4; ++y) {
        for (int x = 1; x < 5; ++x) expected.at(x, y) = grid.at(x + 1, y);
    }
    EXPECT_TRUE(Pixels::areAlike(drawn, expected));
}

TEST(Convolution, LiesWhereItsSourceLies) {
    auto source = leaf(NSMakeRect(0, 0, 7, 5), moved(10, 20));
    const auto node = std::make_shared<IMGConvolutionOp>(source, IMGKernel::kernelSharpen());
    const auto bounds = node->boundsForImage(*node, moved(100, 200));
    ASSERT_TRUE(bounds.has_value());
    EXPECT_TRUE(isRect(bounds->boundingRect(), 110, 220, 7, 5));
    const auto ofSource = node->boundsForImage(*source, moved(100, 200));
    ASSERT_TRUE(ofSource.has_value());
    EXPECT_TRUE(isRect(ofSource->boundingRect(), 110, 220, 7, 5));
    EXPECT_FALSE(node->boundsForImage(*leaf(NSMakeRect(0, 0, 1, 1)), NSAffineTransform()).has_value());
}
