// Also tests: Tools/Pictures/GraphText.cpp
// Also tests: Tools/Pictures/NodeText.cpp

#include "Imaging/CachedImage.h"
#include "Imaging/Canvas.h"
#include "Imaging/CropAndScale.h"
#include "Imaging/TransformOperations.h"
#include "Imaging/Transpose.h"
#include "Platform/Foundation/KeyedArchiver.h"
#include "Tests/Tools/Support/Command.h"
#include "Tests/Tools/Support/TestPictures.h"

#include <gmock/gmock.h>

using namespace TestSupport;
using namespace Imaging;
using testing::HasSubstr;

namespace {

using Sources = IMGImage::Sources;

std::string shown(const std::vector<std::string>& arguments, const Surroundings& surroundings = {}) {
    std::vector<std::string> all = {"graph"};
    all.insert(all.end(), arguments.begin(), arguments.end());
    const Result result = run(all, surroundings);
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.err, "");
    return result.out;
}

std::string graphFile(const TemporaryFolder& folder, const IMGImage& root) {
    const Imaging::Platform::NSData data = Imaging::Platform::archivedDataWithRootObject(root);
    return folder.write("a.graph", std::string(data.begin(), data.end()));
}

std::shared_ptr<IMGImage> picture(const TemporaryFolder& folder, const std::string& name, int width,
                                  int height) {
    return IMGImage::imageWithContentsOfFile(folder.write(name, pngOf(Picture(width, height, red))));
}

} // namespace

TEST(GraphCommand, ShowsAPictureInOneLine) {
    EXPECT_EQ(shown({"-"}, {.input = pngOf(Picture(60, 40, red))}),
              "IMGImageFromNSImage picture in memory  bounds 0,0 60x40\n");
}

TEST(GraphCommand, IndentsSourcesInTheirOrderWithTheirBounds) {
    const TemporaryFolder folder;
    const auto a = picture(folder, "a.png", 60, 40);
    const auto b = picture(folder, "b.png", 10, 20);
    const auto turned = IMGRotationOp::rotationByDegrees(90, {5, 10}, b);
    const auto moved = IMGTranslationOp::translationBy({2.5F, -1}, turned);
    const auto fitted =
        IMGCropAndScale::cropWithSourceImage(a, {{1, 2}, {30, 20}}, {15, 10}, SCALE_TO_FILL, true);
    const auto canvas =
        std::make_shared<IMGCanvas>(Imaging::Platform::NSMakeSize(80, 50), Sources{fitted, moved});
    const std::string graph = graphFile(folder, *canvas);
    // About (5, 10) the 10 x 20 pixels become 20 x 10 at (-5, 5). The bounds of a chain prepend: (x, y) is
    // moved before it is turned.
    EXPECT_EQ(
        shown({graph}),
        "IMGCanvas 80x50  bounds 0,0 80x50\n"
        "  IMGCropAndScale 1,2 30x20 to 15x10 SCALE_TO_FILL CLIP  bounds 0,0 15x10\n"
        "    IMGImageFromNSImage " +
            folder.path("a.png") +
            "  bounds 0,0 60x40\n"
            "  IMGTranslationOp 2.5,-1  bounds -4,7.5 20x10, 0,0 10x20 under [0 1 -1 0 16 7.5]\n"
            "    IMGRotationOp 90 degrees about 5,10  bounds -5,5 20x10, 0,0 10x20 under [0 1 -1 0 15 5]\n"
            "      IMGImageFromNSImage " +
            folder.path("b.png") + "  bounds 0,0 10x20\n");
}

TEST(GraphCommand, TellsWhatIsParticularToEachKindOfNode) {
    const TemporaryFolder folder;
    const auto a = picture(folder, "a.png", 6, 4);
    const auto canvas = std::make_shared<IMGCanvas>(Imaging::Platform::NSMakeSize(6, 4), Sources{a});
    canvas->canvasTransform()->translateXBy(3, 4);
    const IMGCompositeOp root(Sources{
        IMGAffineTransformOp::transformBy(Imaging::Platform::NSAffineTransform({2, 0, 0, 3, -1, 0.1F}),
                                          canvas),
        IMGTransposeOp::transposeOfType(FLIP_DIAGONAL, canvas), IMGTransposeOp::transposeOfType(-7, canvas),
        IMGCropAndScale::cropWithSourceImage(canvas, {{0, 0}, {1, 1}}, {2, 2}, 9, false)});
    const std::string text = shown({graphFile(folder, root)});
    for (const std::string line :
         {"IMGCompositeOp  bounds ", "\n  IMGAffineTransformOp [2 0 0 3 -1 0.1]  bounds ",
          "\n    IMGCanvas 6x4 under [1 0 0 1 3 4] #1  bounds 0,0 6x4\n",
          "\n    IMGCanvas 6x4 under [1 0 0 1 3 4] #1 (see above)\n",
          "\n  IMGTransposeOp FLIP_DIAGONAL  bounds 1,-1 4x6, 0,0 6x4 under [0 1 1 0 1 -1]\n",
          "\n  IMGTransposeOp type -7  bounds 0,0 6x4\n",
          "\n  IMGCropAndScale 0,0 1x1 to 2x2 mode 9 NO_CLIP  bounds 0,0 2x2\n"}) {
        EXPECT_THAT(text, HasSubstr(line));
    }
}

TEST(GraphCommand, ShowsWhatApplyWouldDraw) {
    const TemporaryFolder folder;
    const std::string in =
        folder.write("in.png", pngWithChunks(Picture(6, 4, red), pngChunk("eXIf", exifWithOrientation(6))));
    EXPECT_EQ(shown({in, "--crop", "1,0,3,2", "--translate", "2,1", "--canvas", "9x9"}),
              "IMGCanvas 9x9  bounds 0,0 9x9\n"
              "  IMGTranslationOp 0,7  bounds 2,6 3x2, 0,0 3x2 under [1 0 0 1 2 6]\n"
              "    IMGTranslationOp 2,-1  bounds 2,-1 3x2, 0,0 3x2 under [1 0 0 1 2 -1]\n"
              // Upright 4 x 6 about the middle of 6 x 4: from (1, -1) to (5, 5).
              "      IMGCropAndScale 2,3 3x2 to 3x2 SCALE_TO_FILL CLIP  bounds 0,0 3x2\n"
              "        IMGTransposeOp ROTATE_270  bounds 1,-1 4x6, 0,0 6x4 under [0 -1 1 0 1 5]\n"
              "          IMGImageFromNSImage picture in memory  bounds 0,0 6x4\n");
    EXPECT_EQ(shown({in, "--no-orient"}), "IMGImageFromNSImage picture in memory  bounds 0,0 6x4\n");
}

TEST(GraphCommand, WritesGraphviz) {
    const TemporaryFolder folder;
    const auto a = picture(folder, "a \"b\".png", 6, 4);
    const auto moved = IMGTranslationOp::translationBy({2, 1}, a);
    const IMGImage root(Sources{moved, a, moved});
    std::string path = folder.path("a \\\"b\\\".png");
    EXPECT_EQ(shown({graphFile(folder, root), "--dot"}),
              "digraph imaging {\n"
              "  node [shape=box];\n"
              "  n1 [label=\"IMGImage\\nbounds 0,0 8x5\"];\n"
              "  n1 -> n2 [label=\"0\"];\n"
              "  n1 -> n3 [label=\"1\"];\n"
              "  n1 -> n2 [label=\"2\"];\n"
              "  n2 [label=\"IMGTranslationOp 2,1\\nbounds 2,1 6x4, 0,0 6x4 under [1 0 0 1 2 1]\"];\n"
              "  n2 -> n3;\n"
              "  n3 [label=\"IMGImageFromNSImage " +
                  path + "\\nbounds 0,0 6x4\"];\n}\n");
}

TEST(GraphCommand, KeepsALineALineWhateverAFileIsCalled) {
    const TemporaryFolder folder;
    const std::string text = shown({graphFile(folder, *picture(folder, "a\nb\x1b[1m.png", 6, 4))});
    EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 1);
    EXPECT_EQ(text.find('\x1b'), std::string::npos);
}

TEST(GraphCommand, ShowsGraphsThatCannotBeDrawn) {
    const TemporaryFolder folder;
    const auto lost = picture(folder, "lost.png", 6, 4);
    const IMGImage root(Sources{lost, std::make_shared<IMGImage>()});
    const std::string graph = graphFile(folder, root);
    std::filesystem::remove(folder.path("lost.png"));
    const std::string text = shown({graph});
    EXPECT_EQ(text, "IMGImage  no bounds: a node has nothing below it\n"
                    "  IMGImageFromNSImage " +
                        folder.path("lost.png") +
                        " (missing: there is no such file)  bounds 0,0 0x0\n"
                        "  IMGImage  no bounds: a node has nothing below it\n");
    const Result result = run({"graph", graph, "--turn", "left"});
    EXPECT_EQ(result.status, 1) << "but it cannot be worked on";
    EXPECT_EQ(result.out, "");
}

TEST(GraphCommand, TakesTimeByNodesAndNotByWays) {
    const TemporaryFolder folder;
    std::shared_ptr<IMGImage> top = picture(folder, "a.png", 6, 4);
    for (int i = 0; i < 100; ++i) top = std::make_shared<IMGImage>(Sources{top, top});
    const std::string graph = graphFile(folder, *top);
    const std::string text = shown({graph});
    // Each but the root stands there twice, the second time without what is below.
    EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 201);
    EXPECT_THAT(text, HasSubstr("IMGImage  bounds not computed: there are too many ways down from here\n"));
    EXPECT_THAT(text, HasSubstr("#100  bounds 0,0 6x4\n"));
    EXPECT_THAT(shown({graph, "--dot"}), HasSubstr("n100 -> n101 [label=\"1\"];"));
}

TEST(GraphCommand, ShowsDeepGraphs) {
    const TemporaryFolder folder;
    std::shared_ptr<IMGImage> top = picture(folder, "a.png", 6, 4);
    for (int i = 0; i < 1000; ++i) top = IMGTranslationOp::translationBy({1, 2}, top);
    const std::string text = shown({graphFile(folder, *top)});
    EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 1001);
    EXPECT_EQ(text.find("IMGTranslationOp 1,2  bounds 1000,2000 6x4, 0,0 6x4 under [1 0 0 1 1000 2000]\n"),
              0U);
}

TEST(GraphCommand, RefusesWhatItCannotReadAndWrongUsage) {
    const TemporaryFolder folder;
    const Result missing = run({"graph", folder.path("none.png")});
    EXPECT_EQ(missing.status, 1);
    EXPECT_EQ(missing.err, "imaging: " + folder.path("none.png") + ": there is no such file\n");
    const Result wrong = run({"graph", folder.path("none.png"), "--turn", "up"});
    EXPECT_EQ(wrong.status, 2);
    EXPECT_EQ(wrong.err,
              "imaging: graph: --turn: there is no turn named 'up'; known are left, right and 180 (see "
              "'imaging graph --help')\n");
    EXPECT_EQ(run({"graph"}).status, 2);
}
