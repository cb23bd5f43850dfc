#include "Tests/Tools/Support/Command.h"
#include "Tests/Tools/Support/Rasterized.h"
#include "Tests/Tools/Support/TestPictures.h"

#include <gmock/gmock.h>

#include <cmath>

using namespace TestSupport;

namespace {

constexpr Pixel margin{237, 237, 237, 255};
constexpr Pixel paper{219, 209, 189, 255};

bool isNear(const Pixel& a, const Pixel& b, int tolerance = 2) {
    return std::abs(a.red - b.red) <= tolerance && std::abs(a.green - b.green) <= tolerance &&
           std::abs(a.blue - b.blue) <= tolerance && a.alpha == b.alpha;
}

/// A picture of 200 x 100 pixels, red at its left and blue at its right.
Picture redAndBlue() {
    Picture picture(200, 100, red);
    for (int y = 0; y < 100; ++y) {
        for (int x = 100; x < 200; ++x) picture.at(x, y) = blue;
    }
    return picture;
}

/// Where a point of the picture, counted from its middle with y upward, is on the page: turned by 6 degrees,
/// and scaled from paper 260 wide to the 432 between the margins.
Pixel atPicture(const Picture& page, double x, double y) {
    const double angle = 6 * std::acos(-1.0) / 180;
    const double scale = 432.0 / 260;
    const double right = scale * (x * std::cos(angle) - y * std::sin(angle));
    const double up = scale * (x * std::sin(angle) + y * std::cos(angle));
    return page.at(static_cast<int>(240 + right), static_cast<int>(180 - up));
}

void expectPhotographOnPaper(const Picture& page) {
    ASSERT_EQ(page.width, 480);
    ASSERT_EQ(page.height, 360);
    EXPECT_TRUE(isNear(page.at(2, 2), margin)) << page.at(2, 2);
    // The paper is 260 x 140 on a place of 432 x 312, so 232.6 high.
    EXPECT_TRUE(isNear(page.at(30, 180), paper)) << page.at(30, 180);
    EXPECT_TRUE(isNear(page.at(240, 70), paper)) << page.at(240, 70);
    EXPECT_TRUE(isNear(page.at(240, 55), margin)) << page.at(240, 55);
    EXPECT_TRUE(isNear(atPicture(page, -50, 20), red)) << atPicture(page, -50, 20);
    EXPECT_TRUE(isNear(atPicture(page, -90, -40), red)) << atPicture(page, -90, -40);
    EXPECT_TRUE(isNear(atPicture(page, 90, 40), blue)) << atPicture(page, 90, 40);
    for (const auto& [x, y] : {std::pair{-97, 0}, {97, 0}, {0, 47}, {0, -47}, {-97, 47}, {97, -47}}) {
        EXPECT_TRUE(isNear(atPicture(page, x, y), white)) << x << ", " << y << atPicture(page, x, y);
    }
    EXPECT_TRUE(isNear(atPicture(page, 0, 54), paper)) << atPicture(page, 0, 54);
}

} // namespace

TEST(CairoPageExample, DrawsOneGraphIntoAPDFPageAnSVGFileAndAPNG) {
    const TemporaryFolder folder;
    const Result result = run({folder.write("in.png", pngOf(redAndBlue())), folder.path("")});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.err, "");
    const Picture pixels = pictureOfPNG(folder.read("page.png"));
    expectPhotographOnPaper(pixels);
    // The rasterisers' results come as page.png as well.
    EXPECT_EQ(folder.read("page.pdf").substr(0, 5), "%PDF-");
    EXPECT_THAT(pageSizeOfPDF(folder.path("page.pdf")), testing::StartsWith("480 x 360 pts"));
    const Picture pdf = pictureOfPDF(folder.path("page.pdf"), folder);
    expectPhotographOnPaper(pdf);
    const Picture svg = pictureOfSVG(folder.path("page.svg"), folder);
    expectPhotographOnPaper(svg);
}

TEST(CairoPageExample, SaysWhatIsWrong) {
    const TemporaryFolder folder;
    const Result without = run({});
    EXPECT_EQ(without.status, 2);
    EXPECT_EQ(without.err, "usage: cairo_page PICTURE FOLDER\n");
    const Result missing = run({folder.path("missing.png"), folder.path("")});
    EXPECT_EQ(missing.status, 1);
    EXPECT_THAT(missing.err, testing::HasSubstr("missing.png"));
    EXPECT_EQ(folder.count(), 0);
    const std::string in = folder.write("in.png", pngOf(redAndBlue()));
    const Result nowhere = run({in, folder.path("missing")});
    EXPECT_EQ(nowhere.status, 1);
    EXPECT_NE(nowhere.err, "");
}
