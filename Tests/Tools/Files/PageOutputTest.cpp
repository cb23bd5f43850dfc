// Also tests: Tools/Pictures/Page.cpp

#include "Tests/Tools/Support/Command.h"
#include "Tests/Tools/Support/Rasterized.h"
#include "Tests/Tools/Support/TestPictures.h"

#include <gmock/gmock.h>

#include <regex>

// Pages of vectors that `imaging draw` writes, as other programs show them.

using namespace TestSupport;
using testing::HasSubstr;
using testing::StartsWith;

namespace {

void draw(std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), "draw");
    const Result result = run(arguments);
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.err, "");
    EXPECT_EQ(result.out, "");
}

/// The same drawing as pixels, as a PDF and as an SVG that others turned into pixels.
struct Drawn {
    Picture pixels;
    Picture pdf;
    Picture svg;
};

Drawn drawnInAllWays(const TemporaryFolder& folder, const std::vector<std::string>& arguments) {
    for (const char* name : {"drawn.png", "drawn.pdf", "drawn.svg"}) {
        std::vector<std::string> all = arguments;
        all.insert(all.end(), {"-o", folder.path(name)});
        draw(all);
    }
    return {pictureOfPNG(folder.read("drawn.png")), pictureOfPDF(folder.path("drawn.pdf"), folder),
            pictureOfSVG(folder.path("drawn.svg"), folder)};
}

std::size_t countOf(const std::string& text, const std::string& part) {
    std::size_t count = 0;
    for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) ++count;
    return count;
}

/// The size that an SVG gives itself, "" where it gives none in points.
std::string pageSizeOfSVG(const std::string& svg) {
    std::smatch found;
    const std::regex form("<svg[^>]* width=\"([0-9.]+)pt\" height=\"([0-9.]+)pt\"");
    return std::regex_search(svg, found, form) ? found[1].str() + " x " + found[2].str() : "";
}

void expectWrongUsage(const std::vector<std::string>& arguments, const std::string& message) {
    const Result result = run(arguments);
    EXPECT_EQ(result.status, 2) << message;
    EXPECT_EQ(result.err,
              "imaging: " + arguments[0] + ": " + message + " (see 'imaging " + arguments[0] + " --help')\n");
}

} // namespace

TEST(PageOutput, HasOnePointForAPixel) {
    const TemporaryFolder folder;
    const std::string in = folder.write("in.png", pngOf(randomPicture(61, 37, 5)));
    draw({in, "-o", folder.path("own.pdf")});
    EXPECT_EQ(folder.read("own.pdf").substr(0, 5), "%PDF-");
    EXPECT_THAT(pageSizeOfPDF(folder.path("own.pdf")), StartsWith("61 x 37 pts"));
    draw({in, "-o", folder.path("given.pdf"), "--size", "300x200"});
    EXPECT_THAT(pageSizeOfPDF(folder.path("given.pdf")), StartsWith("300 x 200 pts"));
    draw({in, "-o", folder.path("own.svg")});
    EXPECT_THAT(folder.read("own.svg"), StartsWith("<?xml"));
    EXPECT_EQ(pageSizeOfSVG(folder.read("own.svg")), "61 x 37");
    draw({in, "-o", folder.path("given.SVG"), "--size", "300"});
    EXPECT_EQ(pageSizeOfSVG(folder.read("given.SVG")), "300 x 182");
}

TEST(PageOutput, ShowsThePictureThatThePNGShows) {
    const TemporaryFolder folder;
    const unsigned seed = 20261122;
    SCOPED_TRACE(seed);
    const Picture picture = randomPicture(61, 37, seed);
    const Drawn drawn = drawnInAllWays(folder, {folder.write("in.png", pngOf(picture))});
    EXPECT_EQ(countDifferent(drawn.pixels, picture, 0), 0);
    EXPECT_EQ(countDifferent(drawn.pdf, picture, 0), 0);
    EXPECT_EQ(countDifferent(drawn.svg, picture, 0), 0);
}

TEST(PageOutput, KeepsTransparencyAndPutsTheBackgroundBehind) {
    const TemporaryFolder folder;
    Picture picture(40, 40, clear);
    for (int y = 10; y < 30; ++y) {
        for (int x = 0; x < 20; ++x) picture.at(x, y) = red;
        for (int x = 20; x < 40; ++x) picture.at(x, y) = {0, 0, 255, 128};
    }
    const std::string in = folder.write("in.png", pngOf(picture, true));
    const Drawn bare = drawnInAllWays(folder, {in});
    EXPECT_EQ(countDifferent(bare.pdf, picture, 2), 0);
    EXPECT_EQ(countDifferent(bare.svg, picture, 2), 0);
    const Drawn onGreen = drawnInAllWays(folder, {in, "--background", "lime", "--size", "60x40"});
    for (const Picture& page : {onGreen.pdf, onGreen.svg}) {
        EXPECT_EQ(page.at(2, 20), green) << "beside the picture";
        EXPECT_EQ(page.at(20, 5), green) << "through it";
        EXPECT_EQ(page.at(20, 20), red);
        EXPECT_EQ(countDifferent(page, onGreen.pixels, 2), 0);
    }
    // JPEG's white is for JPEG alone.
    EXPECT_EQ(bare.pdf.at(0, 0), clear);
}

TEST(PageOutput, FitsLikePixels) {
    const TemporaryFolder folder;
    Picture stripes(80, 40, red);
    for (int y = 0; y < 40; ++y) {
        for (int x = 40; x < 80; ++x) stripes.at(x, y) = blue;
    }
    const std::string in = folder.write("in.png", pngOf(stripes));
    for (const char* fit : {"contain", "cover", "stretch"}) {
        SCOPED_TRACE(fit);
        const Drawn drawn =
            drawnInAllWays(folder, {in, "--size", "60x60", "--fit", fit, "--background", "white"});
        // Enlarging and reducing blend the two columns at the border of red and blue each in its own way.
        EXPECT_LE(countDifferent(drawn.pdf, drawn.pixels, 2), 2 * 60);
        EXPECT_LE(countDifferent(drawn.svg, drawn.pixels, 2), 2 * 60);
        EXPECT_EQ(drawn.pdf.at(10, 30), red);
        EXPECT_EQ(drawn.svg.at(50, 30), blue);
    }
}

TEST(PageOutput, EmbedsPicturesWithMorePixelsThanPoints) {
    const TemporaryFolder folder;
    const unsigned seed = 77;
    SCOPED_TRACE(seed);
    const Picture picture = randomPicture(240, 160, seed);
    draw({folder.write("in.png", pngOf(picture)), "-o", folder.path("small.pdf"), "--size", "60"});
    EXPECT_THAT(pageSizeOfPDF(folder.path("small.pdf")), StartsWith("60 x 40 pts"));
    EXPECT_EQ(countDifferent(pictureOfPDF(folder.path("small.pdf"), folder, 4), picture, 0), 0);
}

TEST(PageOutput, DrawsGraphs) {
    const TemporaryFolder folder;
    const std::string a = folder.write("a.png", pngOf(Picture(60, 40, blue)));
    const std::string b = folder.write("b.png", pngOf(Picture(20, 20, red)));
    ASSERT_EQ(run({"archive", "--embed", a, b, "-o", folder.path("two.graph")}).status, 0);
    const Drawn drawn = drawnInAllWays(folder, {folder.path("two.graph")});
    EXPECT_EQ(drawn.pixels.width, 60);
    EXPECT_EQ(countDifferent(drawn.pdf, drawn.pixels, 1), 0);
    EXPECT_EQ(countDifferent(drawn.svg, drawn.pixels, 1), 0);
}

TEST(PageOutput, GoesToStandardOutputAndToFilesOfAnyName) {
    const TemporaryFolder folder;
    const std::string png = pngOf(Picture(8, 6, red));
    const Result pdf = run({"draw", "-", "-o", "-", "--format", "pdf"}, {.input = png});
    EXPECT_EQ(pdf.status, 0);
    EXPECT_EQ(pdf.err, "");
    EXPECT_EQ(pdf.out.substr(0, 5), "%PDF-");
    EXPECT_THAT(pdf.out.substr(pdf.out.size() - 6), HasSubstr("%%EOF"));
    const Result svg = run({"draw", "-", "-o", "-", "--format", "SVG"}, {.input = png});
    EXPECT_THAT(svg.out, HasSubstr("</svg>"));
    draw({folder.write("in.png", png), "-o", folder.path("page.dat"), "--format", "pdf"});
    EXPECT_EQ(pictureOfPDF(folder.path("page.dat"), folder).at(4, 3), red);
}

TEST(PageOutput, IsWrittenWholeOrNotAtAll) {
    const TemporaryFolder folder;
    const std::string in = folder.write("in.png", pngOf(randomPicture(100, 100, 14)));
    folder.write("old.pdf", "old");
    for (const char* name : {"old.pdf", "new.pdf", "new.svg"}) {
        const Result result = run({"draw", in, "-o", folder.path(name)}, {.fileSize = 1000});
        EXPECT_EQ(result.status, 1);
        EXPECT_EQ(result.err,
                  "imaging: " + folder.path(name) + ": the file would be larger than the system permits\n");
    }
    EXPECT_EQ(folder.read("old.pdf"), "old");
    EXPECT_EQ(namesIn(folder.path("")), (std::set<std::string>{"in.png", "old.pdf"}));
    const Result full = run({"draw", in, "-o", "/dev/full", "--format", "svg"});
    EXPECT_EQ(full.err, "imaging: /dev/full: the disk is full\n");
}

TEST(PageOutput, RefusesPagesThatReadersRefuse) {
    const TemporaryFolder folder;
    const std::string in = folder.write("in.png", pngOf(Picture(2, 2, red)));
    const std::string pdf = folder.path("large.pdf");
    const Result tooWide = run({"draw", in, "-o", pdf, "--size", "14401x10"});
    EXPECT_EQ(tooWide.status, 1);
    EXPECT_EQ(tooWide.err, "imaging: " + pdf +
                               ": the page would be 14401 x 10 points, and at most 14400 along a side can be "
                               "read; choose a smaller --size\n");
    const std::string svg = folder.path("large.svg");
    const Result tooHigh = run({"draw", in, "-o", svg, "--size", "10x32751"});
    EXPECT_EQ(tooHigh.status, 1);
    EXPECT_EQ(tooHigh.err, "imaging: " + svg +
                               ": the page would be 10 x 32751 points, and at most 32750 along a side can be "
                               "read; choose a smaller --size\n");
    draw({in, "-o", pdf, "--size", "14400x10"});
    EXPECT_THAT(pageSizeOfPDF(pdf), StartsWith("14400 x 10 pts"));
    draw({in, "-o", svg, "--size", "14401x10"});
    EXPECT_EQ(pageSizeOfSVG(folder.read("large.svg")), "14401 x 10");
}

TEST(PageOutput, HasNoQuality) {
    for (const char* name : {"a.pdf", "a.svg"}) {
        expectWrongUsage({"draw", "a.png", "-o", name, "--quality", "80"},
                         "--quality: only JPEG and JPEG 2000 have a quality; leave it out or write a .jpg");
    }
}

TEST(PageOutput, IsWhatDrawAloneWrites) {
    const std::string reason = ": only 'imaging draw' writes PDF and SVG; write a picture such as .png here";
    for (const std::string subcommand : {"apply", "sheet"}) {
        expectWrongUsage({subcommand, "a.png", "-o", "a.pdf"}, "-o a.pdf" + reason);
        expectWrongUsage({subcommand, "a.png", "-o", "a.Svg"}, "-o a.Svg" + reason);
        expectWrongUsage({subcommand, "a.png", "-o", "-", "--format", "pdf"}, "--format pdf" + reason);
        const Result help = run({subcommand, "--help"});
        EXPECT_THAT(help.out, testing::Not(HasSubstr("pdf")));
    }
    EXPECT_THAT(run({"draw", "--help"}).out, HasSubstr("pdf or svg"));
}

TEST(PageOutput, HasFrameAndTextAsVectors) {
    const TemporaryFolder folder;
    const std::string in = folder.write("in.png", pngOf(Picture(240, 120, black)));
    const Drawn drawn = drawnInAllWays(folder, {in, "--frame", "7.5,#ff000080", "--hint", "Quartz 12"});
    EXPECT_EQ(countOf(folder.read("drawn.svg"), "<image"), 1U) << "the picture itself";
    const Result text = run({folder.path("drawn.pdf"), "-"}, {.program = "pdftotext"});
    EXPECT_THAT(text.out, HasSubstr("Quartz 12"));
    const Result pictures = run({"-list", folder.path("drawn.pdf")}, {.program = "pdfimages"});
    EXPECT_EQ(countOf(pictures.out, "\n"), 3U) << "a heading of two lines and one picture\n" << pictures.out;
    for (const Picture& page : {drawn.pdf, drawn.svg}) {
        ASSERT_EQ(page.width, 240);
        // Half red on black, then the half pixel where the frame ends, then black.
        EXPECT_NEAR(page.at(3, 60).red, 128, 1);
        EXPECT_NEAR(page.at(7, 60).red, 64, 3);
        EXPECT_EQ(page.at(8, 60), black);
        // Glyphs are rendered by each program in its own way, in the same places.
        int differentOutside = 0;
        int inked = 0;
        for (int y = 0; y < 120; ++y) {
            for (int x = 0; x < 240; ++x) {
                const bool inMiddle = x >= 60 && x < 180 && y >= 45 && y < 75;
                if (inMiddle && page.at(x, y).green > 85) ++inked;
                const int far = page.at(x, y).red - drawn.pixels.at(x, y).red;
                if (!inMiddle && std::abs(far) > 3) ++differentOutside;
            }
        }
        EXPECT_EQ(differentOutside, 0);
        EXPECT_GT(inked, 200);
    }
}
