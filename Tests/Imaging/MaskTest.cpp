// Masking against its arithmetic for every sample and mask, on every kind of vector code; and what the node
// keeps, checks and archives.
// Also tests: Imaging/Pixels/MaskPlain.cpp
// Also tests: Imaging/Pixels/MaskVectors.cpp

#include "Imaging/Mask.h"
#include "Imaging/Pixels/MaskVectors.h"
#include "Platform/Foundation/KeyedArchiver.h"
#include "Tests/Imaging/PixelOperationFixtures.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

using namespace ImagingTests;
using Imaging::IMGMaskOp;
using Imaging::MaskRecord;
using Imaging::Platform::archivedDataWithRootObject;
using Imaging::Platform::NSPropertyListFormat;
using Imaging::Platform::unarchiveObjectOfClass;

namespace {

using Bytes = std::vector<std::uint8_t>;

Rows maskedByHand(Rows source, Rows mask, int samples, Rows destination) {
    for (int y = 0; y < source.height(); ++y) {
        for (int x = 0; x < source.width(); ++x) {
            for (int i = 0; i < samples; ++i) {
                const int product = source.pixel(x, y)[i] * *mask.pixel(x, y);
                destination.pixel(x, y)[i] = static_cast<std::uint8_t>(product / 256);
            }
        }
    }
    return destination;
}

MaskRecord maskRecord(Rows& source, Rows& mask, Rows& destination) {
    auto record = recordOver<MaskRecord>(source, destination);
    record.mask = mask.data();
    record.maskBytesPerRow = mask.bytesPerRow();
    return record;
}

using Worker = void (*)(const MaskRecord&);

/// A destination that was masked by a worker, for both threads.
Rows maskedBy(Worker worker, Rows& source, Rows& mask, Rows destination) {
    for (const MaskRecord& record : Imaging::interleavedRows(maskRecord(source, mask, destination))) {
        worker(record);
    }
    return destination;
}

Worker workerFor(int samples) {
    return samples == 2 ? Imaging::mask_worker<Imaging::GAPixel> : Imaging::mask_worker<Imaging::RGBAPixel>;
}

Worker plainWorkerFor(int samples) {
    return samples == 2 ? Imaging::Plain::mask_worker<Imaging::GAPixel>
                        : Imaging::Plain::mask_worker<Imaging::RGBAPixel>;
}

Bytes maskedPixel(const Bytes& rgba, std::uint8_t mask) {
    Rows source = rowOf(4, rgba);
    Rows gray = rowOf(1, {mask});
    return samplesOf(IMGMaskOp(source.node(), gray.node()).untransformedImage());
}

Rows filled(int width, int height, int samples, Pixels::Random& random) {
    Rows rows(width, height, samples, 3);
    rows.fill(random);
    return rows;
}

std::vector<int> linesOf(const ToleratedAssertions& assertions) {
    std::vector<int> lines;
    for (const auto& failure : assertions.failures()) lines.push_back(failure.line);
    return lines;
}

} // namespace

// The arithmetic

TEST(Masking, DividesTheProductBy256AndTruncates) {
    EXPECT_EQ(maskedPixel({255, 128, 1, 255}, 255), (Bytes{254, 127, 0, 254}));
    EXPECT_EQ(maskedPixel({255, 128, 1, 255}, 0), (Bytes{0, 0, 0, 0}));
    EXPECT_EQ(maskedPixel({255, 128, 3, 200}, 128), (Bytes{127, 64, 1, 100}));
}

TEST(Masking, AgreesWithItsArithmeticForEverySampleAndMask) {
    for (const int samples : {2, 4}) {
        Rows source(256, 256, samples, 0);
        Rows mask(256, 256, 1, 0);
        for (int y = 0; y < 256; ++y) {
            for (int x = 0; x < 256; ++x) {
                *mask.pixel(x, y) = static_cast<std::uint8_t>(y);
                for (int i = 0; i < samples; ++i) {
                    source.pixel(x, y)[i] = static_cast<std::uint8_t>(x + 67 * i);
                }
            }
        }
        const Rows fresh(256, 256, samples, 0);
        const Rows expected = maskedByHand(source, mask, samples, fresh);
        EXPECT_EQ(maskedBy(plainWorkerFor(samples), source, mask, fresh), expected);
        onEveryTarget([&] { ASSERT_EQ(maskedBy(workerFor(samples), source, mask, fresh), expected); });
    }
}

TEST(Masking, DoesPicturesOfEverySizeAndLeavesPaddingAlone) {
    Pixels::Random random(41);
    onEveryTarget([&] {
        for (const NSSize size : oddSizes()) {
            for (const int samples : {2, 4}) {
                const int width = static_cast<int>(size.width);
                const int height = static_cast<int>(size.height);
                Rows source(width, height, samples, random.integer(0, 9));
                Rows mask(width, height, 1, random.integer(0, 9));
                source.fill(random);
                mask.fill(random);
                const Rows fresh(width, height, samples, random.integer(0, 9));
                const Rows expected = maskedByHand(source, mask, samples, fresh);
                ASSERT_EQ(maskedBy(workerFor(samples), source, mask, fresh), expected)
                    << width << " x " << height;
                ASSERT_EQ(maskedBy(plainWorkerFor(samples), source, mask, fresh), expected);
            }
        }
    });
}

TEST(Masking, TreatsLayoutsWithAlphaOnly) {
    Pixels::Random random(42);
    for (const IMGBitmapFormat format : allFormats) {
        Rows source = filled(13, 7, format, random);
        Rows mask = filled(13, 7, 1, random);
        const auto result = IMGMaskOp(source.node(), mask.node()).untransformedImage();
        EXPECT_EQ(Imaging::imgBitmapFormat(*bitmapOfResult(result)), format);
        EXPECT_TRUE(isSize(result->size(), 13, 7));
        EXPECT_EQ(IMGMaskOp(source.node(), mask.node()).treatsFormat(format),
                  Imaging::hasAlpha(*bitmapOfResult(result)));
        if (!Imaging::hasAlpha(*bitmapOfResult(result))) {
            EXPECT_TRUE(areAllZero(samplesOf(result)));
            continue;
        }
        const Rows fresh(13, 7, format, 0);
        Rows expected = maskedByHand(source, mask, format, fresh);
        EXPECT_EQ(samplesOf(result),
                  Bytes(expected.data(), expected.data() + std::ptrdiff_t{13} * 7 * format));
    }
}

TEST(Masking, TakesAColouredMaskAsGray) {
    Rows source = rowOf(4, {255, 128, 64, 255});
    Rows white = rowOf(3, {255, 255, 255});
    EXPECT_EQ(samplesOf(IMGMaskOp(source.node(), white.node()).untransformedImage()),
              (Bytes{254, 127, 63, 254}));
    Rows coloured = rowOf(3, {200, 100, 60}); // 60 + 59 + 6.6 = 125.6, rounded to 126
    EXPECT_EQ(samplesOf(IMGMaskOp(source.node(), coloured.node()).untransformedImage()),
              (Bytes{255 * 126 / 256, 128 * 126 / 256, 64 * 126 / 256, 255 * 126 / 256}));
}

// What is checked

TEST(MaskNode, RefusesAMaskOfAnotherSize) {
    Rows source = rowOf(4, {1, 2, 3, 4, 5, 6, 7, 8});
    Rows mask = rowOf(1, {9});
    IMGMaskOp node(source.node(), mask.node());
    try {
        node.untransformedImage();
        FAIL() << "nothing was thrown";
    } catch (const NSException& exception) {
        EXPECT_EQ(exception.name(), "NSInternalInconsistencyException");
        EXPECT_EQ(exception.reason(), "Invalid parameter not satisfying: [mask_rep pixelsWide] == width");
    }
    EXPECT_THROW(node.untransformedImage(), NSException); // and again
}

TEST(MaskNode, ReportsWidthAndHeightEachAndMasksWhatBothHave) {
    Rows source(3, 2, 4, 0);
    for (int i = 0; i < 24; ++i) source.data()[i] = 100;
    for (const auto& [width, height, lines] :
         {std::tuple{2, 2, std::vector{184}}, {3, 1, {185}}, {5, 4, {184, 185}}, {3, 2, {}}}) {
        Rows mask(width, height, 1, 2);
        std::fill_n(mask.data(), (width + 2) * height, std::uint8_t{128});
        const ToleratedAssertions tolerated;
        const auto samples = samplesOf(IMGMaskOp(source.node(), mask.node()).untransformedImage());
        EXPECT_EQ(linesOf(tolerated), lines);
        for (const auto& failure : tolerated.failures()) EXPECT_EQ(failure.file, "Imaging/Mask");
        for (int y = 0; y < 2; ++y) {
            for (int x = 0; x < 3; ++x) {
                const auto sample = samples[static_cast<std::size_t>(4 * (3 * y + x))];
                EXPECT_EQ(sample, x < width && y < height ? 50 : 0) << x << ", " << y;
            }
        }
    }
}

TEST(MaskNode, SaysEachConditionInItsWords) {
    Rows source = rowOf(4, {1, 2, 3, 4});
    IMGMaskOp node(source.node(), std::make_shared<TestNode>()); // a mask without a picture fails them all
    EXPECT_THROW(node.untransformedImage(), NSException);
    const ToleratedAssertions tolerated;
    EXPECT_TRUE(areAllZero(samplesOf(node.untransformedImage())));
    const std::string before = "Invalid parameter not satisfying: ";
    ASSERT_EQ(linesOf(tolerated), (std::vector{183, 184, 185}));
    EXPECT_EQ(tolerated.failures()[0].description,
              before + "[mask_rep imgBitmapFormat] == IMGBitmapFormatGrayscale");
    EXPECT_EQ(tolerated.failures()[1].description, before + "[mask_rep pixelsWide] == width");
    EXPECT_EQ(tolerated.failures()[2].description, before + "[mask_rep pixelsHigh] == height");
}

TEST(MaskNode, ChecksTheMaskOfSourcesThatItDoesNotMaskToo) {
    Rows source = rowOf(3, {1, 2, 3});
    Rows mask = rowOf(1, {1, 2});
    EXPECT_THROW(IMGMaskOp(source.node(), mask.node()).untransformedImage(), NSException);
}

// What is kept

TEST(MaskNode, WithoutAMaskPassesItsSourcesResultThrough) {
    const auto source = std::make_shared<TestNode>();
    IMGMaskOp node(source, nullptr);
    EXPECT_EQ(node.maskImage(), nullptr);
    EXPECT_EQ(node.untransformedImage(), nullptr);
    source->rendered = CCImage::ccImageWithNSImage(Pixels::imageOf(distinctPicture(2, 2)));
    EXPECT_EQ(node.untransformedImage(), source->rendered);
    source->rendered = CCImage::ccImageWithCIImage(nullptr);
    EXPECT_EQ(node.untransformedImage(), source->rendered);
}

TEST(MaskNode, HasNoResultWithoutOneOfItsSourceAndAsksNoMask) {
    const auto mask = std::make_shared<TestNode>();
    IMGMaskOp node(std::make_shared<TestNode>(), mask);
    EXPECT_EQ(node.untransformedImage(), nullptr);
    EXPECT_EQ(mask->renderings, 0);
}

TEST(MaskNode, KeepsItsResultUntilTheSourceHasAnotherOrTheMaskIsAnother) {
    Rows first = rowOf(4, {100, 100, 100, 100});
    Rows second = rowOf(4, {200, 200, 200, 200});
    Rows half = rowOf(1, {128});
    Rows quarter = rowOf(1, {64});
    const auto source = std::make_shared<TestNode>();
    source->rendered = first.node()->untransformedImage();
    const auto mask = half.node();
    IMGMaskOp node(source, mask);
    const auto result = node.untransformedImage();
    node.changed();
    EXPECT_EQ(node.untransformedImage(), result);
    source->rendered = second.node()->untransformedImage();
    EXPECT_EQ(samplesOf(node.untransformedImage()), (Bytes{100, 100, 100, 100}));
    node.setMaskImage(quarter.node());
    EXPECT_EQ(samplesOf(node.untransformedImage()), (Bytes{50, 50, 50, 50}));
    node.setMaskImage(nullptr);
    EXPECT_EQ(node.untransformedImage(), source->rendered);
    node.setMaskImage(mask);
    EXPECT_EQ(samplesOf(node.untransformedImage()), (Bytes{100, 100, 100, 100}));
}

TEST(MaskNode, DoesNotSeeChangesInsideTheMask) {
    Rows source = rowOf(4, {100, 100, 100, 100});
    Rows half = rowOf(1, {128});
    Rows quarter = rowOf(1, {64});
    const auto mask = std::make_shared<TestNode>();
    mask->rendered = half.node()->untransformedImage();
    IMGMaskOp node(source.node(), mask);
    Counter counter;
    node.addImageDidChangeObserver(&counter, &Counter::told);
    const auto result = node.untransformedImage();
    mask->rendered = quarter.node()->untransformedImage();
    mask->changed();
    EXPECT_EQ(counter.tellings, 0);
    EXPECT_EQ(node.untransformedImage(), result);
}

TEST(MaskNode, TellsOfAnotherMaskAndNotOfAnEqualOne) {
    const auto mask = std::make_shared<TestNode>();
    const auto equal = std::make_shared<TestNode>();
    mask->label = equal->label = 5;
    IMGMaskOp node(leaf(NSMakeRect(0, 0, 1, 1)), mask);
    Counter counter;
    node.addImageDidChangeObserver(&counter, &Counter::told);
    node.setMaskImage(mask);
    node.setMaskImage(equal);
    EXPECT_EQ(counter.tellings, 0);
    EXPECT_EQ(node.maskImage(), mask);
    node.setMaskImage(nullptr);
    EXPECT_EQ(counter.tellings, 1);
    node.setMaskImage(nullptr);
    EXPECT_EQ(counter.tellings, 1);
    node.setMaskImage(equal);
    EXPECT_EQ(counter.tellings, 2);
    EXPECT_EQ(node.maskImage(), equal);
}

// The node

TEST(MaskNode, HoldsTheMaskBesideItsSources) {
    const auto source = leaf(NSMakeRect(0, 0, 1, 1));
    const auto mask = leaf(NSMakeRect(0, 0, 1, 1));
    IMGMaskOp node(source, mask);
    EXPECT_EQ(node.sources(), IMGImage::Sources{source});
    EXPECT_EQ(node.maskImage(), mask);
    EXPECT_EQ(node.name(), "mask");
    const auto copy = std::dynamic_pointer_cast<IMGMaskOp>(node.copy());
    ASSERT_NE(copy, nullptr);
    EXPECT_EQ(copy->sources(), IMGImage::Sources{source});
    EXPECT_EQ(copy->maskImage(), mask);
    EXPECT_THROW(IMGMaskOp(nullptr, mask), NSException);
}

TEST(MaskNode, ComesBackFromAnArchiveWithItsMask) {
    const auto shared = pictureNode(distinctPicture(2, 2));
    const IMGMaskOp node(shared, shared);
    for (const auto format : {NSPropertyListFormat::Binary, NSPropertyListFormat::XML}) {
        const auto back = unarchiveObjectOfClass<IMGMaskOp>(archivedDataWithRootObject(node, format));
        ASSERT_EQ(back->sources().size(), 1U);
        EXPECT_EQ(back->maskImage(), back->sourceAtIndex(0)); // one node, as it was
    }
}

TEST(MaskNode, WritesAMaskOnlyWhereThereIsOne) {
    const auto xmlOf = [](const IMGMaskOp& node) {
        const auto data = archivedDataWithRootObject(node, NSPropertyListFormat::XML);
        return std::string(data.begin(), data.end());
    };
    const auto picture = pictureNode(distinctPicture(2, 2));
    EXPECT_NE(xmlOf(IMGMaskOp(picture, picture)).find("mask-image"), std::string::npos);
    const IMGMaskOp unmasked(picture, nullptr);
    EXPECT_EQ(xmlOf(unmasked).find("mask-image"), std::string::npos);
    const auto back =
        unarchiveObjectOfClass<IMGMaskOp>(archivedDataWithRootObject(unmasked, NSPropertyListFormat::Binary));
    EXPECT_EQ(back->maskImage(), nullptr);
}
