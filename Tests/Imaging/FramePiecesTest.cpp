#include "Resources/FramePieces.h"
#include "Platform/Foundation/Resources.h"
#include "Tests/Imaging/ImagingTestSupport.h"

#include <gtest/gtest.h>

#include <set>
#include <string>

using namespace ImagingTests;

namespace {

Grid shown(NSImage& picture) {
    return Pixels::shownBy(picture, static_cast<int>(picture.size().width),
                           static_cast<int>(picture.size().height));
}

std::shared_ptr<NSImage> pictureInFile(const std::string& name) {
    return NSImage::imageWithContentsOfFile(Imaging::Platform::pathForImageResource(name));
}

} // namespace

TEST(FramePieces, InTheFilesAreWhatTheProgramDraws) {
    const std::vector<Resources::FramePiece> drawn = Resources::drawnFramePieces();
    std::set<std::string> names;
    for (const Resources::FramePiece& piece : drawn) {
        names.insert(piece.name);
        const auto inFile = pictureInFile(piece.name);
        ASSERT_NE(inFile, nullptr) << piece.name;
        EXPECT_TRUE(Imaging::Platform::NSEqualSizes(inFile->size(), piece.picture->size())) << piece.name;
        // A file keeps colours apart from alpha, so faint ones come back a little rounded.
        EXPECT_TRUE(areAlike(shown(*inFile), shown(*piece.picture), 1)) << piece.name;
    }
    EXPECT_EQ(names,
              (std::set<std::string>{"box_topleft", "box_top", "box_topright", "box_left", "box_middle",
                                     "box_right", "box_bottomleft", "box_bottom", "box_bottomright"}));
}

TEST(FramePieces, AreOnePixelThinWhereTheyAreStretched) {
    for (const char* name : {"box_top", "box_middle", "box_bottom"}) {
        EXPECT_EQ(pictureInFile(name)->size().width, 1) << name;
    }
    for (const char* name : {"box_left", "box_middle", "box_right"}) {
        EXPECT_EQ(pictureInFile(name)->size().height, 1) << name;
    }
}

TEST(FramePieces, MeetWithoutASeam) {
    const Grid topLeft = shown(*pictureInFile("box_topleft"));
    const Grid top = shown(*pictureInFile("box_top"));
    const Grid left = shown(*pictureInFile("box_left"));
    const Grid bottomRight = shown(*pictureInFile("box_bottomright"));
    const Grid bottom = shown(*pictureInFile("box_bottom"));
    const Grid right = shown(*pictureInFile("box_right"));
    const Rgba middle = shown(*pictureInFile("box_middle")).at(0, 0);
    for (int i = 0; i < topLeft.width(); ++i) {
        EXPECT_LE(Pixels::difference(topLeft.at(topLeft.width() - 1, i), top.at(0, i)), 2) << i;
        EXPECT_LE(Pixels::difference(topLeft.at(i, topLeft.height() - 1), left.at(i, 0)), 2) << i;
        EXPECT_LE(Pixels::difference(bottomRight.at(0, i), bottom.at(0, i)), 2) << i;
        EXPECT_LE(Pixels::difference(bottomRight.at(i, 0), right.at(i, 0)), 2) << i;
    }
    EXPECT_LE(Pixels::difference(top.at(0, top.height() - 1), middle), 2);
    EXPECT_LE(Pixels::difference(left.at(left.width() - 1, 0), middle), 2);
    EXPECT_LE(Pixels::difference(bottom.at(0, 0), middle), 2);
    EXPECT_LE(Pixels::difference(right.at(0, 0), middle), 2);
}

TEST(FramePieces, LetTheGroundShowThrough) {
    EXPECT_LT(shown(*pictureInFile("box_middle")).at(0, 0).a, 128);
    EXPECT_EQ(shown(*pictureInFile("box_topleft")).at(0, 0), Pixels::transparent) << "round corners";
}
