// Also tests: Imaging/OpenGLTexture.cpp
// Also tests: Imaging/OpenGL/TileDrawing.cpp

#include "Imaging/OpenGL/TileDrawing.h"
#include "Tests/Imaging/OpenGL/TextureFixtures.h"

#include <algorithm>
#include <array>
#include <map>
#include <memory>
#include <string>
#include <vector>

using namespace ImagingTests;
using Imaging::gpc_owned_polygon;
using Imaging::gpc_polygon;
using Imaging::OpenGLTexture;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;

namespace {

/// A tile of a picture by plain numbers.
struct Place {
    int x;
    int y;
    int width;
    int height;
};

class OpenGLTextureDrawing : public RecorderTest {
protected:
    /// A texture of distinct tiles, loaded; its commands so far are forgotten.
    std::unique_ptr<OpenGLTexture> loaded(int width, int height) {
        m_width = width;
        m_height = height;
        auto texture = std::make_unique<OpenGLTexture>(alphaFirst(Grid(width, height, Pixels::red)));
        texture->loadTextureWithImage(nullptr, 0, texture->textureCount());
        gl->takeLines();
        return texture;
    }

    /// The square of pixels as left, bottom, width and height.
    std::array<double, 4> squareOf(double x, double y, double width, double height) const {
        return {2 * x / m_width - 1, 2 * y / m_height - 1, 2 * width / m_width, 2 * height / m_height};
    }

    /// What binding a tile, drawing it and letting it go comes to. The clipper says which contours are left
    /// of it; each is drawn backwards.
    Lines tileLines(const std::string& target, int name, Place tile, const std::array<double, 4>& part,
                    const gpc_polygon& clip) const {
        Lines lines = {"glBindTexture(" + target + ", " + std::to_string(name) + ")"};
        const auto square = squareOf(tile.x, tile.y, tile.width, tile.height);
        const double left = std::max(square[0], part[0]);
        const double bottom = std::max(square[1], part[1]);
        const double right = std::min(2.0 * (tile.x + tile.width) / m_width - 1, part[0] + part[2]);
        const double top = std::min(2.0 * (tile.y + tile.height) / m_height - 1, part[1] + part[3]);
        if (left < right && bottom < top) {
            std::array<Imaging::gpc_vertex, 4> corners = {
                {{left, bottom}, {right, bottom}, {right, top}, {left, top}}};
            const Imaging::gpc_vertex_list contour = {4, corners.data()};
            gpc_owned_polygon limit;
            Imaging::gpc_add_contour(&limit, &contour, 0);
            gpc_owned_polygon result;
            Imaging::gpc_polygon_clip(Imaging::Platform::GPC_INT, &clip, &limit, &result);
            for (int i = 0; i < result.num_contours; ++i) {
                addContour(lines, result.contour[i], tile, square, target == rectangle);
            }
        }
        lines.push_back("glBindTexture(" + target + ", 0)");
        return lines;
    }

    static void addContour(Lines& lines, const Imaging::gpc_vertex_list& contour, Place tile,
                           const std::array<double, 4>& square, bool inPixels) {
        lines.emplace_back("glBegin(GL_POLYGON)");
        for (int k = contour.num_vertices - 1; k >= 0; --k) {
            const auto [x, y] = contour.vertex[k];
            const double s = (x - square[0]) / square[2] * (inPixels ? tile.width : 1);
            const double t = (y - square[1]) / square[3] * (inPixels ? tile.height : 1);
            lines.push_back("glTexCoord2f(" + word(s) + ", " + word(t) + ")");
            lines.push_back("glVertex3f(" + word(x) + ", " + word(y) + ", 0)");
        }
        lines.emplace_back("glEnd()");
    }

    static void expectCoordinates(const Lines& actual, const Lines& expected) {
        EXPECT_THAT(actual, ElementsAreArray(expected));
    }

    int m_width = 0;
    int m_height = 0;
};

void addPolygon(gpc_polygon& polygon, std::vector<Imaging::gpc_vertex> vertices) {
    const Imaging::gpc_vertex_list contour = {static_cast<int>(vertices.size()), vertices.data()};
    Imaging::gpc_add_contour(&polygon, &contour, 0);
}

/// Doubles every coordinate and adds a depth, and notes what it was asked.
struct Doubling : Imaging::OpenGLPointMapping {
    std::vector<NSPoint> asked;
    bool fails = false;

    std::array<float, 3> mapPoint(NSPoint point) override {
        asked.push_back(point);
        if (fails) throwSomething(Thrown::Exception);
        return {2 * point.x, 2 * point.y, point.x + point.y};
    }
};

} // namespace

TEST_F(OpenGLTextureDrawing, LaysOneTileOverTheWholeSquare) {
    const auto texture = loaded(5, 4);
    texture->drawImage();
    const Lines lines = gl->takeLines();
    // The corners by hand, whichever of them the clipper begins with.
    ASSERT_EQ(lines.size(), 14U);
    EXPECT_EQ(lines[0], "glEnable(" + rectangle + ")");
    EXPECT_EQ(lines[1], "glBindTexture(" + rectangle + ", 1)");
    EXPECT_EQ(lines[2], "glBegin(GL_POLYGON)");
    Lines corners;
    for (std::size_t i = 3; i < 11; i += 2) corners.push_back(lines[i] + " " + lines[i + 1]);
    EXPECT_THAT(corners, testing::UnorderedElementsAre("glTexCoord2f(0, 0) glVertex3f(-1, -1, 0)",
                                                       "glTexCoord2f(5, 0) glVertex3f(1, -1, 0)",
                                                       "glTexCoord2f(5, 4) glVertex3f(1, 1, 0)",
                                                       "glTexCoord2f(0, 4) glVertex3f(-1, 1, 0)"));
    EXPECT_EQ(lines[11], "glEnd()");
    EXPECT_EQ(lines[12], "glBindTexture(" + rectangle + ", 0)");
    EXPECT_EQ(lines[13], "glDisable(" + rectangle + ")");
}

TEST_F(OpenGLTextureDrawing, AddressesPowerOfTwoTexturesFromZeroToOne) {
    begin({.rectangles = false});
    const auto texture = loaded(8, 4);
    texture->drawImage();
    EXPECT_THAT(gl->takeLines(),
                testing::IsSupersetOf({"glEnable(GL_TEXTURE_2D)", "glTexCoord2f(0, 0)", "glTexCoord2f(1, 0)",
                                       "glTexCoord2f(1, 1)", "glTexCoord2f(0, 1)"}));
}

TEST_F(OpenGLTextureDrawing, DrawsEachTileInItsPlaceDownTheColumns) {
    for (const bool rectangles : {true, false}) {
        begin({.rectangles = rectangles, .largestSide = 4});
        const auto texture = loaded(6, 5);
        texture->drawImage();
        gpc_owned_polygon whole;
        Imaging::AddRectToPolygon(&whole, NSMakeRect(-1, -1, 2, 2));
        const std::string target = rectangles ? rectangle : flat;
        const std::array<double, 4> all = {-1, -1, 2, 2};
        expectCoordinates(gl->takeLines(), joined({{"glEnable(" + target + ")"},
                                                   tileLines(target, 1, {0, 0, 4, 4}, all, whole),
                                                   tileLines(target, 2, {0, 4, 4, 1}, all, whole),
                                                   tileLines(target, 3, {4, 0, 2, 4}, all, whole),
                                                   tileLines(target, 4, {4, 4, 2, 1}, all, whole),
                                                   {"glDisable(" + target + ")"}}));
    }
}

TEST_F(OpenGLTextureDrawing, CutsTilesByThePolygon) {
    begin({.rectangles = true, .largestSide = 4});
    const auto texture = loaded(8, 8);
    gpc_owned_polygon slanted;
    addPolygon(slanted, {{-0.75, -0.5}, {0.875, -0.25}, {0.25, 0.9375}});
    texture->drawImage(slanted);
    const std::array<double, 4> all = {-1, -1, 2, 2};
    expectCoordinates(gl->takeLines(), joined({{"glEnable(" + rectangle + ")"},
                                               tileLines(rectangle, 1, {0, 0, 4, 4}, all, slanted),
                                               tileLines(rectangle, 2, {0, 4, 4, 4}, all, slanted),
                                               tileLines(rectangle, 3, {4, 0, 4, 4}, all, slanted),
                                               tileLines(rectangle, 4, {4, 4, 4, 4}, all, slanted),
                                               {"glDisable(" + rectangle + ")"}}));
}

TEST_F(OpenGLTextureDrawing, DrawsAPolygonForEachContourThatIsLeft) {
    const auto texture = loaded(8, 8);
    gpc_owned_polygon two;
    addPolygon(two, {{-0.75, -0.5}, {-0.25, -0.5}, {-0.25, 0.5}});
    addPolygon(two, {{0.25, -0.5}, {0.75, -0.5}, {0.75, 0.5}});
    texture->drawImage(two);
    const Lines lines = gl->takeLines();
    EXPECT_EQ(std::count(lines.begin(), lines.end(), "glBegin(GL_POLYGON)"), 2);
    EXPECT_EQ(std::count(lines.begin(), lines.end(), "glEnd()"), 2);
    expectCoordinates(lines, joined({{"glEnable(" + rectangle + ")"},
                                     tileLines(rectangle, 1, {0, 0, 8, 8}, {-1, -1, 2, 2}, two),
                                     {"glDisable(" + rectangle + ")"}}));
}

TEST_F(OpenGLTextureDrawing, BindsTilesThatThePartMissesAndDrawsNothingOfThem) {
    begin({.rectangles = true, .largestSide = 4});
    const auto texture = loaded(8, 4);
    gpc_owned_polygon whole;
    Imaging::AddRectToPolygon(&whole, NSMakeRect(-1, -1, 2, 2));
    texture->drawImage(NSMakeRect(5, 1, 2, 2), whole);
    expectCoordinates(
        gl->takeLines(),
        joined({{"glEnable(" + rectangle + ")", "glBindTexture(" + rectangle + ", 1)",
                 "glBindTexture(" + rectangle + ", 0)"},
                tileLines(rectangle, 2, {4, 0, 4, 4}, {0.25, -0.5, 0.5, 1}, whole), // of 8 by 4 pixels
                {"glDisable(" + rectangle + ")"}}));
    texture->drawImage(NSMakeRect(4, 0, 0, 4), whole);
    EXPECT_THAT(gl->takeLines(),
                ElementsAre("glEnable(" + rectangle + ")", "glBindTexture(" + rectangle + ", 1)",
                            "glBindTexture(" + rectangle + ", 0)", "glBindTexture(" + rectangle + ", 2)",
                            "glBindTexture(" + rectangle + ", 0)", "glDisable(" + rectangle + ")"));
}

TEST_F(OpenGLTextureDrawing, DrawsNothingOutsideThePolygon) {
    const auto texture = loaded(8, 4);
    const gpc_polygon nothing{};
    texture->drawImage(nothing);
    EXPECT_THAT(gl->takeLines(),
                ElementsAre("glEnable(" + rectangle + ")", "glBindTexture(" + rectangle + ", 1)",
                            "glBindTexture(" + rectangle + ", 0)", "glDisable(" + rectangle + ")"));
}

TEST_F(OpenGLTextureDrawing, PutsTheCornersOfTilesWhereTheObjectSays) {
    begin({.rectangles = true, .largestSide = 4});
    const auto texture = loaded(8, 4); // tiles from -1 to 0 and from 0 to 1
    Doubling doubling;
    texture->drawImage(NSMakeRect(2, 1, 4, 2), doubling); // from -0.5 to 0.5 on both axes
    EXPECT_THAT(gl->takeLines(),
                ElementsAre("glEnable(" + rectangle + ")", "glBindTexture(" + rectangle + ", 1)",
                            "glBegin(GL_POLYGON)", "glTexCoord2f(2, 1)", "glVertex3f(-1, -1, -1)",
                            "glTexCoord2f(4, 1)", "glVertex3f(0, -1, -0.5)", "glTexCoord2f(4, 3)",
                            "glVertex3f(0, 1, 0.5)", "glTexCoord2f(2, 3)", "glVertex3f(-1, 1, 0)", "glEnd()",
                            "glBindTexture(" + rectangle + ", 0)", "glBindTexture(" + rectangle + ", 2)",
                            "glBegin(GL_POLYGON)", "glTexCoord2f(0, 1)", "glVertex3f(0, -1, -0.5)",
                            "glTexCoord2f(2, 1)", "glVertex3f(1, -1, 0)", "glTexCoord2f(2, 3)",
                            "glVertex3f(1, 1, 1)", "glTexCoord2f(0, 3)", "glVertex3f(0, 1, 0.5)", "glEnd()",
                            "glBindTexture(" + rectangle + ", 0)", "glDisable(" + rectangle + ")"));
    EXPECT_EQ(doubling.asked.size(), 8U);
}

TEST_F(OpenGLTextureDrawing, AsksTheObjectNothingAboutTilesThatThePartMisses) {
    begin({.rectangles = false, .largestSide = 4});
    const auto texture = loaded(8, 4);
    Doubling doubling;
    texture->drawImage(NSMakeRect(0, 0, 4, 4), doubling);
    EXPECT_EQ(doubling.asked.size(), 4U);
    EXPECT_THAT(gl->takeLines(), testing::IsSupersetOf({"glTexCoord2f(0, 0)", "glTexCoord2f(1, 1)"}));
}

TEST_F(OpenGLTextureDrawing, LeavesNoPolygonOpenWhenTheObjectThrows) {
    const auto texture = loaded(8, 4);
    Doubling doubling;
    doubling.fails = true;
    EXPECT_THROW(texture->drawImage(NSMakeRect(0, 0, 8, 4), doubling), NSException);
    EXPECT_FALSE(gl->isInsideBegin());
    EXPECT_EQ(gl->takeLines().back(), "glDisable(" + rectangle + ")");
}

TEST_F(OpenGLTextureDrawing, GivesNeighbouringTilesTheSameEdge) {
    begin({.rectangles = true, .largestSide = 4});
    const auto texture = loaded(4 * 7 + 3, 1); // thirty-firsts, which are no binary fractions
    texture->drawImage();
    std::map<std::string, int> edges;
    for (const std::string& line : gl->takeLines()) {
        if (line.starts_with("glVertex3f(")) ++edges[line];
    }
    // Two ends of the row once for each corner, seven inner edges twice.
    EXPECT_EQ(edges.size(), 18U);
}

TEST(TileDrawing, CountsSquaresFromThePicturesFirstRow) {
    const Imaging::PictureSquare picture{8, 4, true};
    const Imaging::Square square = picture.squareOf(NSMakeRect(2, 1, 4, 2));
    EXPECT_EQ(square.left, -0.5);
    EXPECT_EQ(square.right, 0.5);
    EXPECT_EQ(square.bottom, -0.5);
    EXPECT_EQ(square.top, 0.5);
}
