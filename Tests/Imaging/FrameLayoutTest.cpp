#include "Imaging/GraphicsUtilities.h"
#include "Platform/Foundation/Data.h"
#include "Platform/Foundation/Exception.h"
#include "Platform/Foundation/Resources.h"
#include "Tests/Platform/Foundation/TemporaryFolder.h"
#include "Tests/Support/Pixels.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>

// The frame's nine pieces are read once in a process. Here they are pictures of nine sizes and colours, so
// that each number of the layout shows.

using namespace Pixels;
using Imaging::DrawFrameInside;
using Imaging::Platform::NSMakeRect;

namespace {

struct Piece {
    const char* name;
    int width;
    int height;
    Rgba color;
};

constexpr Piece topLeft{"box_topleft", 5, 7, {250, 0, 0, 255}};
constexpr Piece top{"box_top", 2, 6, {0, 250, 0, 255}};
constexpr Piece topRight{"box_topright", 4, 9, {0, 0, 250, 255}};
constexpr Piece left{"box_left", 3, 1, {250, 250, 0, 255}};
constexpr Piece middle{"box_middle", 1, 2, {0, 250, 250, 255}};
constexpr Piece right{"box_right", 6, 1, {250, 0, 250, 255}};
constexpr Piece bottomLeft{"box_bottomleft", 8, 5, {120, 0, 0, 255}};
constexpr Piece bottom{"box_bottom", 1, 4, {0, 120, 0, 255}};
constexpr Piece bottomRight{"box_bottomright", 7, 3, {0, 0, 120, 255}};
constexpr std::array<Piece, 9> allPieces{topLeft, top,        topRight, left,       middle,
                                         right,   bottomLeft, bottom,   bottomRight};

void write(const TestSupport::TemporaryFolder& folder, const Piece& piece) {
    const auto png = bitmapOf(Grid(piece.width, piece.height, piece.color))
                         ->representationUsingType(Imaging::Platform::NSPNGFileType, {});
    Imaging::Platform::NSError error;
    if (!png || !writeToFileAtomically(*png, folder.path(std::string(piece.name) + ".png"), &error)) {
        throw std::runtime_error(error.message);
    }
}

Grid frameOn(int width, int height, Imaging::Platform::NSRect rect) {
    Canvas canvas(width, height);
    DrawFrameInside(rect);
    return canvas.pixels();
}

/// Has the pieces read: first with one that is no picture, then with that one mended; then all of them
/// vanish.
struct FrameLayout : testing::Test {
    static void SetUpTestSuite() {
        const TestSupport::TemporaryFolder folder;
        Imaging::Platform::setResourceFolder(folder.path(""));
        for (const Piece& piece : allPieces) write(folder, piece);
        folder.write("box_right.png", "no picture");
        try {
            frameOn(60, 50, NSMakeRect(5, 5, 40, 30));
        } catch (const Imaging::Platform::NSException& exception) {
            failure = exception;
        }
        write(folder, right);
        afterMending = frameOn(60, 50, NSMakeRect(11, 7, 40, 30));
    }
    static void TearDownTestSuite() { Imaging::Platform::setResourceFolder(""); }

    static inline std::optional<Imaging::Platform::NSException> failure;
    static inline Grid afterMending;
};

void lay(Grid& grid, const Piece& piece, int x, int y, int width, int height) {
    for (int row = y; row < y + height; ++row) {
        for (int column = x; column < x + width; ++column) {
            grid.at(column, grid.height() - 1 - row) = piece.color;
        }
    }
}

} // namespace

TEST_F(FrameLayout, NamesThePieceThatCannotBeRead) {
    ASSERT_TRUE(failure.has_value());
    EXPECT_EQ(failure->name(), Imaging::Platform::NSResourceException);
    EXPECT_THAT(failure->reason(), testing::HasSubstr("box_right.png cannot be read: "));
    EXPECT_THAT(failure->reason(), testing::HasSubstr("; install the library's resources again"));
}

TEST_F(FrameLayout, TriesAgainAfterAFailure) { EXPECT_FALSE(areAlike(afterMending, Grid(60, 50))); }

TEST_F(FrameLayout, ReadsThePiecesOnce) {
    // The folder is gone by now.
    EXPECT_TRUE(areAlike(frameOn(60, 50, NSMakeRect(11, 7, 40, 30)), afterMending));
}

TEST_F(FrameLayout, PutsEachPieceWhereItBelongs) {
    // x = 11, y = 7, w = 40, h = 30, in the order in which the pieces are drawn.
    Grid expected(60, 50);
    lay(expected, topLeft, 11, 7 + 30 - 7, 5, 7);
    lay(expected, top, 11 + 5, 7 + 30 - 6, 40 - 5 - 4, 6);
    lay(expected, topRight, 11 + 40 - 4, 7 + 30 - 9, 4, 9);
    lay(expected, bottomLeft, 11, 7, 8, 5);
    lay(expected, left, 11, 7 + 5, 3, 30 - 5 - 7);
    lay(expected, middle, 11 + 8, 7 + 5, 40 - 8 - 4, 30 - 5 - 9); // sized by the corners
    lay(expected, right, 11 + 40 - 6, 7 + 5, 3, 30 - 5 - 7);      // as wide as the left piece
    lay(expected, bottom, 11 + 8, 7, 40 - 8 - 7, 4);
    lay(expected, bottomRight, 11 + 40 - 7, 7, 7, 3);
    EXPECT_TRUE(areAlike(afterMending, expected));
}

TEST_F(FrameLayout, DrawsNothingForNegativeSizes) {
    // 6 x 5, so that every size between corners is negative: only the corners show, later ones on top.
    Grid expected(60, 50);
    lay(expected, topLeft, 20, 20 + 5 - 7, 5, 7);
    lay(expected, topRight, 20 + 6 - 4, 20 + 5 - 9, 4, 9);
    lay(expected, bottomLeft, 20, 20, 8, 5);
    lay(expected, bottomRight, 20 + 6 - 7, 20, 7, 3);
    EXPECT_TRUE(areAlike(frameOn(60, 50, NSMakeRect(20, 20, 6, 5)), expected));
}
