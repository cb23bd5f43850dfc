// Every class that the library registers, whichever it is: what holds for all of them is asked of each, so
// that a new class cannot be forgotten.

#include "Imaging/TransformOperations.h"
#include "Platform/Foundation/KeyedArchiver.h"
#include "Tests/Imaging/ImagingTestSupport.h"

#include <gtest/gtest.h>

#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

using namespace ImagingTests;
using Imaging::Platform::archivableClassNames;
using Imaging::Platform::archivedDataWithRootObject;
using Imaging::Platform::NSCoder;
using Imaging::Platform::NSCoding;
using Imaging::Platform::unarchiveObjectWithData;

namespace {

/// Stands in an archive as an object of a class that has no values of its own, over some sources or without
/// the key of the sources.
struct Bare : NSCoding {
    std::string name;
    std::shared_ptr<IMGImage> source;

    std::string archiveClassName() const override { return name; }
    void encodeWithCoder(NSCoder& coder) const override {
        if (source != nullptr) coder.encodeArray({source.get()}, "source-images");
    }
};

std::shared_ptr<NSCoding> fromArchive(const std::string& name, std::shared_ptr<IMGImage> source = nullptr) {
    Bare bare;
    bare.name = name;
    bare.source = std::move(source);
    return unarchiveObjectWithData(archivedDataWithRootObject(bare));
}

/// The classes of this library; test programs register others too.
std::vector<std::string> classes() {
    std::vector<std::string> names = archivableClassNames();
    std::erase_if(names, [](const std::string& name) { return !name.starts_with("IMG"); });
    return names;
}

/// What each node class says of a node that an archive gave no values.
const std::map<std::string, std::string>& wordsOfBareNodes() {
    static const std::map<std::string, std::string> words = {
        {"IMGAffineTransformOp", "[1 0 0 1 0 0]"},
        {"IMGCanvas", "0x0"},
        {"IMGColorTransformOp", "0,0,0"},
        {"IMGCompositeOp", ""},
        {"IMGConstantImageGenerator", ""},
        {"IMGConvolutionOp", "convolution without a kernel"},
        {"IMGCropAndScale", "0,0 0x0 to 0x0 SCALE_PROPORTIONALLY NO_CLIP"},
        {"IMGCubeTransitionOp", ""},
        {"IMGDissolveTransitionOp", ""},
        {"IMGGaussianOp", "radius 0"},
        {"IMGHueAdjustOp", "0 radians"},
        {"IMGImage", ""},
        {"IMGImageFromNSImage",
         "picture in the archive (missing: the bytes in the archive are damaged or no picture)"},
        {"IMGMaskOp", "without a mask"},
        {"IMGNullGenerator", ""},
        {"IMGRotationOp", "0 degrees about 0,0"},
        {"IMGSimpleFrameGenerator", ""},
        {"IMGSpinTransitionOp", ""},
        {"IMGTranslationOp", "0,0"},
        {"IMGTransposeOp", "FLIP_VERTICAL"},
    };
    return words;
}

/// Calls the body with each node class's name and a node of it, over a source or without any.
template<class Body>
void forEachNodeClass(const std::shared_ptr<IMGImage>& source, const Body& body) {
    int count = 0;
    for (const std::string& name : classes()) {
        const auto node = std::dynamic_pointer_cast<IMGImage>(fromArchive(name, source));
        if (node == nullptr) continue; // a kernel is no node
        SCOPED_TRACE(name);
        body(name, *node);
        ++count;
    }
    EXPECT_EQ(count, 20);
}

bool throwsWhenItIsDrawn(IMGImage& node) {
    try {
        const TransformAndClipList list(Imaging::TransformAndClipRect(node.transform()));
        node.drawImage(nullptr, list, 2, 1, nullptr);
        return false;
    } catch (const NSException&) {
        return true;
    }
}

} // namespace

TEST(ArchiveClasses, AreTheNodesAndTheKernelThatHaveValuesOfTheirOwn) {
    std::set<std::string> expected = {"IMGKernel"};
    for (const auto& [name, words] : wordsOfBareNodes()) expected.insert(name);
    const std::vector<std::string> found = classes();
    EXPECT_EQ(std::set<std::string>(found.begin(), found.end()), expected);
}

TEST(ArchiveClasses, EachComesFromAnArchiveWithoutItsValuesAndGoesBackUnderItsName) {
    for (const std::string& name : classes()) {
        SCOPED_TRACE(name);
        const std::shared_ptr<NSCoding> object = fromArchive(name);
        ASSERT_NE(object, nullptr);
        EXPECT_EQ(object->archiveClassName(), name);
        const auto again = unarchiveObjectWithData(archivedDataWithRootObject(*object));
        EXPECT_EQ(again->archiveClassName(), name);
    }
}

TEST(ArchiveClasses, EachNodeSaysItsValuesInWords) {
    forEachNodeClass(nullptr, [](const std::string& name, const IMGImage& node) {
        EXPECT_FALSE(node.description().empty());
        const auto expected = wordsOfBareNodes().find(name);
        ASSERT_NE(expected, wordsOfBareNodes().end()) << "say here what a node of this class says";
        EXPECT_EQ(node.parameterDescription(), expected->second);
    });
}

TEST(ArchiveClasses, EachNodeThatCannotBeDrawnWithoutASourceSaysSo) {
    forEachNodeClass(nullptr, [](const std::string&, IMGImage& node) {
        EXPECT_EQ(node.needsSource(), throwsWhenItIsDrawn(node));
    });
}

TEST(ArchiveClasses, EachNodeWithPixelsOfItsOwnLiesWhereItsSourceDoes) {
    const auto picture = pictureNode(distinctPicture(4, 2));
    int count = 0;
    forEachNodeClass(picture, [&](const std::string& name, IMGImage& node) {
        if (!node.hasOwnPixels() || name == picture->archiveClassName()) return;
        EXPECT_TRUE(isTransform(node.transform(), NSAffineTransform()));
        EXPECT_TRUE(isRect(node.imageBoundsRect(), 0, 0, 4, 2));
        ++count;
    });
    EXPECT_EQ(count, 5); // of colours, hue, mask, kernel and blur
    // What moves, cuts or adds has none.
    for (const char* const name :
         {"IMGImage", "IMGCanvas", "IMGCropAndScale", "IMGTranslationOp", "IMGCompositeOp"}) {
        const auto node = std::dynamic_pointer_cast<IMGImage>(fromArchive(name, picture));
        EXPECT_FALSE(node->hasOwnPixels()) << name;
    }
}

TEST(ArchiveClasses, EachCopyIsOfItsOriginalsClass) {
    const auto picture = pictureNode(distinctPicture(4, 2));
    forEachNodeClass(picture, [&](const std::string& name, const IMGImage& node) {
        if (name == picture->archiveClassName()) return; // which copies a file that this one does not have
        const std::shared_ptr<IMGImage> copied = node.copy();
        ASSERT_NE(copied, nullptr);
        EXPECT_EQ(copied->archiveClassName(), name);
        EXPECT_EQ(copied->needsSource(), node.needsSource());
    });
}
