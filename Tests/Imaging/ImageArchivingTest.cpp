#include "Platform/Foundation/KeyedArchiver.h"
#include "Tests/Imaging/ImagingTestSupport.h"
#include "Tests/Platform/Foundation/TemporaryFolder.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

using namespace ImagingTests;
using Imaging::Platform::archivedDataWithRootObject;
using Imaging::Platform::NSCoder;
using Imaging::Platform::NSCoding;
using Imaging::Platform::NSData;
using Imaging::Platform::NSPropertyListFormat;
using Imaging::Platform::unarchiveObjectOfClass;
using TestSupport::TemporaryFolder;

namespace {

constexpr NSPropertyListFormat formats[] = {NSPropertyListFormat::Binary, NSPropertyListFormat::XML};

/// A coder over one object's keys, which shows what a class writes and feeds what it reads.
class Keys : public NSCoder {
public:
    std::map<std::string, std::vector<const NSCoding*>, std::less<>> arrays;
    std::map<std::string, const NSCoding*, std::less<>> objects;
    std::map<std::string, std::string, std::less<>> strings;
    std::map<std::string, std::vector<std::shared_ptr<NSCoding>>, std::less<>> givenArrays;
    std::map<std::string, std::shared_ptr<NSCoding>, std::less<>> givenObjects;

    void encodeArray(const std::vector<const NSCoding*>& values, std::string_view key) override {
        arrays.emplace(key, values);
    }
    void encodeObject(const NSCoding* object, std::string_view key) override { objects.emplace(key, object); }
    void encodeString(const std::string& value, std::string_view key) override {
        strings.emplace(key, value);
    }
    bool containsValueForKey(std::string_view key) const override {
        return givenArrays.contains(key) || givenObjects.contains(key) || strings.contains(key);
    }
    std::optional<std::vector<std::shared_ptr<NSCoding>>> decodeArray(std::string_view key) override {
        const auto found = givenArrays.find(key);
        return found == givenArrays.end() ? std::nullopt : std::optional(found->second);
    }
    std::shared_ptr<NSCoding> decodeObject(std::string_view key) override {
        const auto found = givenObjects.find(key);
        return found == givenObjects.end() ? nullptr : found->second;
    }
    std::optional<std::string> decodeString(std::string_view key) override {
        const auto found = strings.find(key);
        return found == strings.end() ? std::nullopt : std::optional(found->second);
    }

    std::set<std::string> written() const {
        std::set<std::string> keys;
        for (const auto& [key, value] : arrays) keys.insert(key);
        for (const auto& [key, value] : objects) keys.insert(key);
        for (const auto& [key, value] : strings) keys.insert(key);
        return keys;
    }
};

Keys keysOf(const NSCoding& object) {
    Keys keys;
    object.encodeWithCoder(keys);
    return keys;
}

/// Writes itself as a node without the key of the sources, as an older program might.
struct WithoutSources : NSCoding {
    std::string archiveClassName() const override { return "IMGImage"; }
    void encodeWithCoder(NSCoder&) const override {}
};

struct Counter {
    int tellings = 0;
    void told(IMGImage&) { ++tellings; }
};

/// How often a change of `source` reaches the observers of `node`.
int tellings(IMGImage& node, IMGImage& source) {
    Counter counter;
    node.addImageDidChangeObserver(&counter, &Counter::told);
    source.changed();
    node.removeImageDidChangeObserver(&counter);
    return counter.tellings;
}

Grid shown(IMGImage& node, int width, int height) {
    return drawnOn(width, height, [&] { node.drawWithTransform(NSAffineTransform(), 2, 1); });
}

NSData pngOf(const Grid& grid) {
    return *Pixels::bitmapOf(grid)->representationUsingType(Imaging::Platform::NSPNGFileType, {});
}

std::string writePicture(const TemporaryFolder& folder, const std::string& name, const Grid& grid) {
    const NSData png = pngOf(grid);
    return folder.write(name, std::string(png.begin(), png.end()));
}

std::shared_ptr<IMGImageFromNSImage> throughArchive(const IMGImageFromNSImage& node,
                                                    NSPropertyListFormat format) {
    return unarchiveObjectOfClass<IMGImageFromNSImage>(archivedDataWithRootObject(node, format));
}

} // namespace

TEST(ArchivedNode, WritesItsSourcesInOrderAndNothingElse) {
    const auto a = std::make_shared<IMGImage>();
    const auto b = std::make_shared<IMGImage>();
    const auto node = std::make_shared<IMGImage>(IMGImage::Sources{b, a, b});
    const auto parent = std::make_shared<IMGImage>(node); // an observer, which is not written
    const Keys keys = keysOf(*node);
    EXPECT_EQ(keys.written(), std::set<std::string>{"source-images"});
    EXPECT_EQ(keys.arrays.at("source-images"), (std::vector<const NSCoding*>{b.get(), a.get(), b.get()}));
    EXPECT_EQ(node->archiveClassName(), "IMGImage");
    EXPECT_TRUE(keysOf(IMGImage()).arrays.at("source-images").empty());
}

TEST(ArchivedNode, ComesBackWithItsSourcesInOrder) {
    const Grid first = distinctPicture(5, 3);
    const Grid second = distinctPicture(3, 4, 120);
    const auto empty = std::make_shared<IMGImage>();
    const IMGImage node({pictureNode(first), empty, pictureNode(second)});
    for (const NSPropertyListFormat format : formats) {
        const auto back = unarchiveObjectOfClass<IMGImage>(archivedDataWithRootObject(node, format));
        ASSERT_EQ(back->sources().size(), 3U);
        EXPECT_TRUE(Pixels::areAlike(shown(*back->sourceAtIndex(0), 5, 3), first));
        EXPECT_TRUE(back->sourceAtIndex(1)->sources().empty());
        EXPECT_TRUE(Pixels::areAlike(shown(*back->sourceAtIndex(2), 3, 4), second));
        EXPECT_EQ(std::dynamic_pointer_cast<IMGImageFromNSImage>(back), nullptr);
    }
}

TEST(ArchivedNode, ObservesItsSourcesWhenItComesBack) {
    const IMGImage node(
        {std::make_shared<IMGImage>(std::make_shared<IMGImage>()), std::make_shared<IMGImage>()});
    for (const NSPropertyListFormat format : formats) {
        const auto back = unarchiveObjectOfClass<IMGImage>(archivedDataWithRootObject(node, format));
        EXPECT_EQ(tellings(*back, *back->sourceAtIndex(0)->sourceAtIndex(0)), 1);
        EXPECT_EQ(tellings(*back, *back->sourceAtIndex(1)), 1);
    }
}

TEST(ArchivedNode, ComesBackAsADiamondFromADiamond) {
    const auto bottom = pictureNode(distinctPicture(5, 3));
    const auto left = std::make_shared<IMGImage>(bottom);
    const auto right = std::make_shared<IMGImage>(IMGImage::Sources{bottom, bottom});
    const IMGImage root({left, right, bottom});
    for (const NSPropertyListFormat format : formats) {
        const auto back = unarchiveObjectOfClass<IMGImage>(archivedDataWithRootObject(root, format));
        ASSERT_EQ(back->sources().size(), 3U);
        const auto shared = back->sourceAtIndex(2);
        EXPECT_EQ(back->sourceAtIndex(0)->sources(), IMGImage::Sources{shared});
        EXPECT_EQ(back->sourceAtIndex(1)->sources(), (IMGImage::Sources{shared, shared}));
        EXPECT_NE(back->sourceAtIndex(0), back->sourceAtIndex(1));
        EXPECT_EQ(tellings(*back, *shared), 3); // by itself, and through each side once
        EXPECT_TRUE(Pixels::areAlike(shown(*back, 5, 3), distinctPicture(5, 3)));
    }
}

TEST(ArchivedNode, WithoutTheKeyHasNoPlaceForSources) {
    for (const NSPropertyListFormat format : formats) {
        const auto node =
            unarchiveObjectOfClass<IMGImage>(archivedDataWithRootObject(WithoutSources(), format));
        EXPECT_TRUE(node->sources().empty());
        const auto source = std::make_shared<TestNode>();
        node->addSource(source);
        EXPECT_TRUE(node->sources().empty());
        EXPECT_EQ(tellings(*node, *source), 0);
        EXPECT_EQ(source.use_count(), 1);
        EXPECT_TRUE(keysOf(*node).written().empty());
        EXPECT_EQ(node->parentOfSource(*source), nullptr);
        EXPECT_NO_THROW(node->replaceSource(source, std::make_shared<IMGImage>()));
        EXPECT_NO_THROW(node->drawWithTransform(NSAffineTransform(), 2, 1));
        EXPECT_FALSE(node->boundsForImage(*source, NSAffineTransform()).has_value());
        EXPECT_THROW(node->imageBounds(), NSException);
        ASSERT_NE(node->copy(), nullptr);
        EXPECT_TRUE(node->copy()->sources().empty());
    }
}

TEST(ArchivedNode, WithAnEmptyArrayHasAPlaceForSources) {
    const auto node = unarchiveObjectOfClass<IMGImage>(archivedDataWithRootObject(IMGImage()));
    const auto source = std::make_shared<TestNode>();
    node->addSource(source);
    EXPECT_EQ(node->sources(), IMGImage::Sources{source});
    EXPECT_EQ(tellings(*node, *source), 1);
}

TEST(ArchivedNode, WithSomethingElseAmongItsSourcesIsRefused) {
    Keys keys;
    keys.givenArrays["source-images"] = {std::make_shared<IMGImage>(),
                                         std::make_shared<NSImage>(NSMakeSize(3, 2))};
    EXPECT_THROW(IMGImage{keys}, NSException);
    keys.givenArrays["source-images"] = {nullptr};
    EXPECT_THROW(IMGImage{keys}, NSException);
}

TEST(ArchivedNode, TooDeepForArchivesIsRefusedAndDoesNotCrash) {
    std::shared_ptr<IMGImage> top = std::make_shared<IMGImage>();
    for (int i = 0; i < 10'000; ++i) top = std::make_shared<IMGImage>(top);
    EXPECT_THROW(archivedDataWithRootObject(*top), NSException);
}

TEST(ArchivedPictureNode, WritesItsFileNameWhereItHasOne) {
    const TemporaryFolder folder;
    const std::string path = writePicture(folder, "picture.png", distinctPicture(5, 3));
    const auto node = IMGImageFromNSImage::initWithContentsOfFile(path);
    ASSERT_NE(node, nullptr);
    const Keys keys = keysOf(*node);
    EXPECT_EQ(keys.written(), (std::set<std::string>{"source-images", "file-name"}));
    EXPECT_EQ(keys.strings.at("file-name"), path);
    EXPECT_EQ(node->archiveClassName(), "IMGImageFromNSImage");
}

TEST(ArchivedPictureNode, WritesItsPictureWhereItHasNoFileName) {
    const auto node = pictureNode(distinctPicture(5, 3));
    const Keys keys = keysOf(*node);
    EXPECT_EQ(keys.written(), (std::set<std::string>{"source-images", "ns-image"}));
    EXPECT_EQ(keys.objects.at("ns-image"), node->untransformedImage()->nsImage().get());
}

TEST(ArchivedPictureNode, ComesBackFromItsFileAsThatIsThen) {
    const TemporaryFolder folder;
    const std::string path = writePicture(folder, "picture.png", distinctPicture(5, 3));
    const auto node = IMGImageFromNSImage::initWithContentsOfFile(path);
    ASSERT_NE(node, nullptr);
    const Grid later = distinctPicture(4, 6, 90);
    writePicture(folder, "picture.png", later);
    for (const NSPropertyListFormat format : formats) {
        const auto back = throughArchive(*node, format);
        EXPECT_EQ(back->fileName(), path);
        EXPECT_TRUE(isRect(back->imageBoundsRect(), 0, 0, 4, 6));
        EXPECT_TRUE(Pixels::areAlike(shown(*back, 4, 6), later));
    }
}

TEST(ArchivedPictureNode, ComesBackWithoutAPictureWhenItsFileIsGone) {
    const TemporaryFolder folder;
    const std::string path = writePicture(folder, "picture.png", distinctPicture(5, 3));
    const auto node = IMGImageFromNSImage::initWithContentsOfFile(path);
    ASSERT_NE(node, nullptr);
    folder.write("picture.png", "no picture any more");
    const auto other = pictureNode(distinctPicture(4, 2));
    const IMGImage root({node, other});
    for (const NSPropertyListFormat format : formats) {
        const auto back = unarchiveObjectOfClass<IMGImage>(archivedDataWithRootObject(root, format));
        const auto lost = std::dynamic_pointer_cast<IMGImageFromNSImage>(back->sourceAtIndex(0));
        ASSERT_NE(lost, nullptr);
        EXPECT_EQ(lost->fileName(), path);
        ASSERT_NE(lost->untransformedImage(), nullptr);
        EXPECT_EQ(lost->untransformedImage()->nsImage(), nullptr);
        EXPECT_TRUE(isSize(lost->untransformedImage()->size(), 0, 0));
        EXPECT_TRUE(isRect(lost->imageBounds().rectangle(), 0, 0, 0, 0));
        // It draws nothing and keeps the rest from nothing.
        Grid expected(5, 3);
        paint(expected, distinctPicture(4, 2), [](Spot p) { return p; });
        EXPECT_TRUE(Pixels::areAlike(shown(*back, 5, 3), expected));
        EXPECT_TRUE(isRect(back->imageBoundsRect(), 0, 0, 4, 2));
        EXPECT_NO_THROW(keysOf(*lost)); // and its name is written again
        EXPECT_EQ(keysOf(*lost).strings.at("file-name"), path);
    }
}

TEST(ArchivedPictureNode, FromMemoryComesBackWithItsPixels) {
    Grid grid = distinctPicture(5, 3);
    grid.at(1, 1) = Pixels::transparent;
    grid.at(3, 2) = {100, 50, 0, 100};
    for (const NSPropertyListFormat format : formats) {
        const auto back = throughArchive(*pictureNode(grid), format);
        EXPECT_FALSE(back->fileName().has_value());
        EXPECT_TRUE(isRect(back->imageBoundsRect(), 0, 0, 5, 3));
        EXPECT_TRUE(Pixels::areAlike(shown(*back, 5, 3), grid, 1)); // unmultiplied and back
        EXPECT_EQ(back->untransformedImage()->nsImage()->cacheMode(), Imaging::Platform::NSImageCacheAlways);
    }
}

TEST(ArchivedPictureNode, FromMemoryKeepsTheOriginalBytes) {
    const NSData png = pngOf(distinctPicture(5, 3));
    const auto node = Imaging::imagingImage(NSImage::imageWithData(png));
    for (const NSPropertyListFormat format : formats) {
        const auto back = throughArchive(*node, format);
        const auto& bytes = back->untransformedImage()->nsImage()->encodedData();
        ASSERT_NE(bytes, nullptr);
        EXPECT_EQ(*bytes, png);
    }
}

TEST(ArchivedPictureNode, OfADeclaredResolutionComesBackOnePointAPixel) {
    const auto bitmap = Pixels::bitmapOf(distinctPicture(6, 4));
    bitmap->setSize(NSMakeSize(3, 2)); // 144 pixels an inch
    const auto node = Imaging::imagingImage(
        NSImage::imageWithData(*bitmap->representationUsingType(Imaging::Platform::NSTIFFFileType, {})));
    ASSERT_TRUE(isRect(node->imageBoundsRect(), 0, 0, 6, 4));
    for (const NSPropertyListFormat format : formats) {
        const auto back = throughArchive(*node, format);
        EXPECT_TRUE(isRect(back->imageBoundsRect(), 0, 0, 6, 4));
        EXPECT_TRUE(Pixels::areAlike(shown(*back, 6, 4), distinctPicture(6, 4)));
    }
}

TEST(ArchivedPictureNode, PrefersThePictureToTheFile) {
    const TemporaryFolder folder;
    const auto picture = Pixels::imageOf(distinctPicture(4, 2));
    Keys keys;
    keys.strings["file-name"] = writePicture(folder, "picture.png", distinctPicture(5, 3));
    keys.givenObjects["ns-image"] = picture;
    IMGImageFromNSImage node(keys);
    EXPECT_EQ(node.untransformedImage()->nsImage(), picture);
    EXPECT_EQ(node.fileName(), keys.strings["file-name"]);
    EXPECT_EQ(picture->cacheMode(), Imaging::Platform::NSImageCacheAlways);
}

TEST(ArchivedPictureNode, DoesNotTurnToTheFileForAPictureThatIsThereButNull) {
    const TemporaryFolder folder;
    Keys keys;
    keys.strings["file-name"] = writePicture(folder, "picture.png", distinctPicture(5, 3));
    keys.givenObjects["ns-image"] = nullptr;
    IMGImageFromNSImage node(keys);
    EXPECT_EQ(node.untransformedImage()->nsImage(), nullptr);
}

TEST(ArchivedPictureNode, WithNeitherPictureNorFileIsEmpty) {
    Keys keys;
    IMGImageFromNSImage node(keys);
    EXPECT_FALSE(node.fileName().has_value());
    ASSERT_NE(node.untransformedImage(), nullptr);
    EXPECT_EQ(node.untransformedImage()->nsImage(), nullptr);
    EXPECT_TRUE(isSize(node.untransformedImage()->size(), 0, 0));
    EXPECT_TRUE(Pixels::areAlike(shown(node, 4, 3), Grid(4, 3)));
    EXPECT_EQ(node.copy(), nullptr);
    EXPECT_TRUE(keysOf(node).written().empty()); // there is no array of sources either
    EXPECT_NO_THROW(node.description());
}

TEST(ArchivedPictureNode, DoesNotWaitForAPipeThatAnArchiveNames) {
    const TemporaryFolder folder;
    Keys keys;
    keys.strings["file-name"] = folder.path("pipe");
    ASSERT_EQ(mkfifo(folder.path("pipe").c_str(), 0600), 0);
    IMGImageFromNSImage node(keys);
    EXPECT_EQ(node.fileName(), folder.path("pipe"));
    EXPECT_EQ(node.untransformedImage()->nsImage(), nullptr);
}

TEST(ArchivedPictureNode, WithSomethingElseInPlaceOfThePictureIsRefused) {
    Keys keys;
    keys.givenObjects["ns-image"] = std::make_shared<IMGImage>();
    EXPECT_THROW(IMGImageFromNSImage{keys}, NSException);
}

TEST(ArchivedPictureNode, KeepsSourcesThatItWasGiven) {
    const auto node = pictureNode(distinctPicture(5, 3));
    node->addSource(std::make_shared<IMGImage>());
    const auto back = throughArchive(*node, NSPropertyListFormat::Binary);
    ASSERT_EQ(back->sources().size(), 1U);
    EXPECT_EQ(tellings(*back, *back->sourceAtIndex(0)), 1);
}
