// Also tests: Show/ColorNames.cpp
// Also tests: Show/KnownWords.cpp
// Also tests: Show/PictureLoading.cpp
// Also tests: Show/NodeGraph.cpp
// Also tests: Show/Orientation.cpp

#include "Show/Placement.h"

#include "Imaging/CachedImage.h"
#include "Imaging/Canvas.h"
#include "Imaging/Transpose.h"
#include "Platform/Foundation/Exception.h"
#include "Show/ColorNames.h"
#include "Show/KnownWords.h"
#include "Show/NodeGraph.h"
#include "Show/Orientation.h"
#include "Show/PictureLoading.h"
#include "Tests/Tools/Support/TestPictures.h"

#include <gtest/gtest.h>

using namespace Imaging;
using namespace TestSupport;

namespace {

using Platform::NSException;
using Platform::NSMakeRect;
using Platform::NSRect;

void expectRect(NSRect rect, float left, float bottom, float width, float height) {
    EXPECT_EQ(rect.origin.x, left);
    EXPECT_EQ(rect.origin.y, bottom);
    EXPECT_EQ(rect.size.width, width);
    EXPECT_EQ(rect.size.height, height);
}

template<class Call>
std::string complaint(const Call& call) {
    try {
        call();
        return "none";
    } catch (const NSException& exception) {
        return exception.reason();
    }
}

std::shared_ptr<IMGImage> nodeOf(const std::string& bytes) {
    return nodeWithBytes({bytes.begin(), bytes.end()});
}

} // namespace

TEST(Placement, KeepsPicturesInShapeAndInTheMiddle) {
    const NSRect place = NSMakeRect(7, -3, 100, 50);
    expectRect(placedIn(place, {40, 40}, Fit::Contain), 32, -3, 50, 50);
    expectRect(placedIn(place, {40, 10}, Fit::Contain), 7, 9, 100, 25); // 25 are left, the odd one above
    expectRect(placedIn(place, {40, 40}, Fit::Cover), 7, -28, 100, 100);
    expectRect(placedIn(place, {3, 9}, Fit::Stretch), 7, -3, 100, 50);
}

TEST(Placement, FillsInMissingSidesFromTheShape) {
    EXPECT_EQ(completedSize({0, 0}, {30, 20}).height, 20);
    EXPECT_EQ(completedSize({15, 0}, {30, 20}).height, 10);
    EXPECT_EQ(completedSize({0, 1}, {30, 20}).width, 2); // 1.5
    EXPECT_EQ(completedSize({1, 0}, {3000, 20}).height, 1) << "never less than one";
    EXPECT_EQ(wholePixels(2.001F), 2);
    EXPECT_EQ(wholePixels(2.1F), 3);
    EXPECT_EQ(wholePixels(0), 1);
}

TEST(ColorNames, AreThoseOfPeopleAndOfDigits) {
    EXPECT_EQ(colorNamed("Navy").blueComponent(), 128.0F / 255);
    EXPECT_EQ(colorNamed("#f80").greenComponent(), 136.0F / 255);
    EXPECT_EQ(colorNamed("#ff800040").alphaComponent(), 64.0F / 255);
    EXPECT_EQ(colorNamed("transparent").alphaComponent(), 0);
    EXPECT_EQ(opaqueColorNamed("#123456ff").redComponent(), 18.0F / 255);
    EXPECT_EQ(complaint([] { opaqueColorNamed("#1234"); }),
              "'#1234' lets something through, which a film cannot; give an opaque colour");
    for (const std::string text : {"", "#", "#12", "#12345", "#gggggg", "# 12345"})
        EXPECT_TRUE(
            complaint([&] { colorNamed(text); }).starts_with("'" + text + "' is no colour; known are #rgb"));
    EXPECT_TRUE(complaint([] { colorNamed("blak"); }).ends_with("; did you mean 'black'?"));
}

TEST(KnownWords, NameTheNearestWord) {
    const std::vector<std::string> known = {"left", "right", "up"};
    EXPECT_EQ(unknownWord("way", "lfet", known),
              "there is no way named 'lfet'; known are left, right and up; did you mean 'left'?");
    EXPECT_EQ(suggestion("sideways", known), "");
    EXPECT_EQ(enumeration({}), "");
    EXPECT_EQ(enumeration({"a"}), "a");
}

TEST(PictureLoading, TellsURLsFromFiles) {
    for (const std::string url : {"http://a/b", "https://a", "file:/a", "file:///a", "x-y+z.1://"})
        EXPECT_TRUE(isURL(url)) << url;
    for (const std::string file : {"a.png", "./http://a", "a:b", ":", "://", "a b://c", "http:a"})
        EXPECT_FALSE(isURL(file)) << file;
    EXPECT_EQ(complaint([] { nodeWithContentsOf("/nowhere/a.png"); }), "there is no such file");
    EXPECT_NE(complaint([] { nodeOf("neither picture nor graph"); }), "none");
}

TEST(NodeGraph, FindsAllNodesOnceAndTheRootFirst) {
    const auto picture = nodeOf(pngOf(Picture(3, 2, red)));
    const auto root =
        std::make_shared<IMGCanvas>(Platform::NSMakeSize(5, 5), IMGImage::Sources{picture, picture});
    const auto nodes = nodesOf(root);
    ASSERT_EQ(nodes.size(), 2U);
    EXPECT_EQ(nodes[0], root);
    EXPECT_EQ(waysBelow(root).at(root.get()), 3U);
    EXPECT_EQ(picturesOf(root).size(), 1U);
    EXPECT_EQ(complaint([&] { requireDrawable(root); }), "none");
    expectRect(drawableBounds(*picture), 0, 0, 3, 2);
}

TEST(NodeGraph, RefusesGraphsThatTakeTooManySteps) {
    std::shared_ptr<IMGImage> node = nodeOf(pngOf(Picture(1, 1, red)));
    for (int i = 0; i < 40; ++i)
        node = std::make_shared<IMGCanvas>(Platform::NSMakeSize(1, 1), IMGImage::Sources{node, node});
    EXPECT_TRUE(complaint([&] { requireDrawable(node); }).starts_with("its nodes are shared so often"));
}

TEST(Orientation, TurnsPicturesTheWayUpThatTheyDeclare) {
    const auto stored = nodeOf(pngWithChunks(Picture(3, 2, red), pngChunk("eXIf", exifWithOrientation(6))));
    EXPECT_EQ(orientedNode(stored, Upright::AsStored), stored);
    const auto upright = orientedNode(stored, Upright::AsDeclared);
    EXPECT_NE(upright, stored);
    EXPECT_EQ(drawableBounds(*upright).size.width, 2);
    EXPECT_EQ(drawableBounds(*upright).size.height, 3);
    const auto plain = nodeOf(pngOf(Picture(3, 2, red)));
    EXPECT_EQ(orientedNode(plain, Upright::AsDeclared), plain);
}
