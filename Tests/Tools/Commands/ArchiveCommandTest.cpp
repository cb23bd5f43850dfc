#include "Imaging/CachedImage.h"
#include "Platform/Foundation/KeyedArchiver.h"
#include "Tests/Tools/Support/Command.h"
#include "Tests/Tools/Support/TestPictures.h"

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

using namespace TestSupport;
using Imaging::IMGImage;
using Imaging::IMGImageFromNSImage;

namespace {

std::shared_ptr<IMGImage> unarchived(const std::string& bytes) {
    const auto* start = static_cast<const std::uint8_t*>(static_cast<const void*>(bytes.data()));
    return Imaging::Platform::unarchiveObjectOfClass<IMGImage>({start, bytes.size()});
}

std::string archived(const IMGImage& root) {
    const Imaging::Platform::NSData data = Imaging::Platform::archivedDataWithRootObject(root);
    return {data.begin(), data.end()};
}

std::shared_ptr<IMGImageFromNSImage> picture(const std::shared_ptr<IMGImage>& node) {
    auto leaf = std::dynamic_pointer_cast<IMGImageFromNSImage>(node);
    if (leaf == nullptr) throw std::runtime_error("this node is no picture");
    return leaf;
}

void expectDone(const Result& result) {
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.err, "");
    EXPECT_EQ(result.out, "");
}

/// One picture reached over two ways.
std::shared_ptr<IMGImage> diamond(const std::string& path) {
    const std::shared_ptr<IMGImage> leaf = IMGImage::imageWithContentsOfFile(path);
    const auto left = std::make_shared<IMGImage>(leaf);
    const auto right = std::make_shared<IMGImage>(leaf);
    return std::make_shared<IMGImage>(IMGImage::Sources{left, right});
}

} // namespace

TEST(ArchiveCommand, NamesAPictureByItsWholePath) {
    const TemporaryFolder folder;
    const Picture original = randomPicture(9, 4, 5);
    folder.write("a.png", pngOf(original));
    expectDone(run({"archive", "a.png", "-o", "a.graph"}, {.folder = folder.path("")}));
    EXPECT_EQ(folder.read("a.graph").substr(0, 8), "bplist00");
    const auto leaf = picture(unarchived(folder.read("a.graph")));
    EXPECT_TRUE(std::filesystem::equivalent(leaf->fileName().value(), folder.path("a.png")));
    EXPECT_EQ(leaf->fileName().value().front(), '/');
    EXPECT_EQ(leaf->imageSize().width, 9);
    expectDone(run({"draw", folder.path("a.graph"), "-o", folder.path("b.png")}));
    EXPECT_EQ(pictureOfPNG(folder.read("b.png")).pixels, original.pixels);
}

TEST(ArchiveCommand, EmbedsTheBytesOfAPicture) {
    const TemporaryFolder folder;
    // 144 pixels an inch, which must not make the picture smaller.
    const std::string density("\0\0\x16\x25\0\0\x16\x25\x01", 9);
    const Picture original = randomPicture(9, 4, 6);
    const std::string bytes = pngWithChunks(original, pngChunk("pHYs", density));
    const std::string path = folder.write("a.png", bytes);
    expectDone(run({"archive", "--embed", path, "-o", folder.path("a.graph")}));
    EXPECT_NE(folder.read("a.graph").find(bytes), std::string::npos) << "as they are";
    std::filesystem::remove(path);
    expectDone(run({"draw", folder.path("a.graph"), "-o", folder.path("b.png")}));
    EXPECT_EQ(pictureOfPNG(folder.read("b.png")).pixels, original.pixels);
}

TEST(ArchiveCommand, LaysSeveralPicturesOverOneAnother) {
    const TemporaryFolder folder;
    const std::string back = folder.write("back.png", pngOf(Picture(2, 1, {red, green})));
    const std::string front = folder.write("front.png", pngOf(Picture(2, 1, {clear, blue}), true));
    expectDone(run({"archive", back, front, "-o", folder.path("layers.graph")}));
    const auto root = unarchived(folder.read("layers.graph"));
    EXPECT_EQ(root->archiveClassName(), "IMGImage");
    ASSERT_EQ(root->sources().size(), 2U);
    EXPECT_EQ(picture(root->sources()[0])->fileName(), back);
    expectDone(run({"draw", folder.path("layers.graph"), "-o", folder.path("drawn.png")}));
    EXPECT_EQ(pictureOfPNG(folder.read("drawn.png")).pixels, (std::vector<Pixel>{red, blue}));
}

TEST(ArchiveCommand, WritesXmlOnDemand) {
    const TemporaryFolder folder;
    const std::string path = folder.write("a.png", pngOf(Picture(2, 1, red)));
    expectDone(run({"archive", "--xml", path, "-o", folder.path("a.xml")}));
    const std::string xml = folder.read("a.xml");
    EXPECT_EQ(xml.substr(0, 5), "<?xml");
    EXPECT_NE(xml.find("<string>" + path + "</string>"), std::string::npos);
    expectDone(run({"draw", folder.path("a.xml"), "-o", folder.path("b.png")}));
    EXPECT_EQ(pictureOfPNG(folder.read("b.png")).pixels, Picture(2, 1, red).pixels);
}

TEST(ArchiveCommand, KeepsADiamondADiamond) {
    const TemporaryFolder folder;
    const std::string path = folder.write("a.png", pngOf(Picture(2, 1, red)));
    folder.write("in.graph", archived(*diamond(path)));
    for (const std::vector<std::string>& options :
         std::vector<std::vector<std::string>>{{}, {"--xml"}, {"--embed"}, {"--embed", "--xml"}}) {
        std::vector<std::string> arguments = {"archive", folder.path("in.graph"), "-o",
                                              folder.path("out.graph")};
        arguments.insert(arguments.end(), options.begin(), options.end());
        expectDone(run(arguments));
        const auto root = unarchived(folder.read("out.graph"));
        ASSERT_EQ(root->sources().size(), 2U);
        EXPECT_NE(root->sources()[0], root->sources()[1]);
        ASSERT_EQ(root->sources()[0]->sources().size(), 1U);
        EXPECT_EQ(root->sources()[0]->sources()[0], root->sources()[1]->sources()[0]);
        const bool embeds = !options.empty() && options[0] == "--embed";
        EXPECT_EQ(picture(root->sources()[0]->sources()[0])->fileName().has_value(), !embeds);
    }
    const Result info = run({"info", "--json", folder.path("out.graph")});
    const nlohmann::json json = nlohmann::json::parse(info.out);
    EXPECT_EQ(json[0]["nodes"], 4);
    EXPECT_EQ(json[0]["pictures"].size(), 1U);
    EXPECT_EQ(json[0]["class"], "IMGImage");
    EXPECT_EQ(json[0]["format"], "graph");
    EXPECT_EQ(json[0]["pictures"][0]["file"], nullptr);
    EXPECT_EQ(json[0]["pictures"][0]["width"], 2);
}

TEST(ArchiveCommand, MakesRelativePathsInAGraphWhole) {
    const TemporaryFolder folder;
    folder.write("a.png", pngOf(Picture(2, 1, red)));
    // A graph whose picture has a relative path, which is only found from that folder.
    const std::filesystem::path before = std::filesystem::current_path();
    std::filesystem::current_path(folder.path(""));
    folder.write("in.graph", archived(*diamond("a.png")));
    std::filesystem::current_path(before);
    expectDone(run({"archive", "in.graph", "-o", "out.graph"}, {.folder = folder.path("")}));
    const auto root = unarchived(folder.read("out.graph"));
    EXPECT_EQ(root->sources()[0]->sources()[0], root->sources()[1]->sources()[0]);
    const std::string path = picture(root->sources()[0]->sources()[0])->fileName().value();
    EXPECT_TRUE(path.starts_with('/')) << path;
    EXPECT_TRUE(std::filesystem::equivalent(path, folder.path("a.png")));
}

TEST(ArchiveCommand, ListsAGraphAndItsPictures) {
    const TemporaryFolder folder;
    const std::string path = folder.write("a.png", pngOf(Picture(2, 1, red)));
    expectDone(run({"archive", path, path, "-o", folder.path("two.graph")}));
    const Result result = run({"info", "two.graph"}, {.folder = folder.path("")});
    EXPECT_EQ(result.status, 0);
    EXPECT_THAT(result.out, testing::HasSubstr("\ntwo.graph"));
    EXPECT_THAT(result.out,
                testing::HasSubstr("  graph   3 nodes, 2 pictures\n  " + path + "  PNG     2 x 1 "));
}

TEST(ArchiveCommand, ReadsStandardInputAndWritesStandardOutput) {
    const Result result = run({"archive", "-", "-o", "-"}, {.input = pngOf(Picture(2, 1, red))});
    EXPECT_EQ(result.status, 0) << result.err;
    const auto leaf = picture(unarchived(result.out));
    EXPECT_FALSE(leaf->fileName().has_value());
    EXPECT_EQ(leaf->imageSize().width, 2);
}

TEST(ArchiveCommand, DoesNotReplaceAPictureThatItNames) {
    const TemporaryFolder folder;
    const std::string bytes = pngOf(Picture(2, 1, red));
    const std::string path = folder.write("a.png", bytes);
    const Result result = run({"archive", path, "-o", path});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.err, "imaging: " + path +
                              ": this is a picture of the graph itself, which would be lost; choose "
                              "another name\n");
    EXPECT_EQ(folder.read("a.png"), bytes);
    expectDone(run({"archive", "--embed", path, "-o", path}));
    EXPECT_EQ(folder.read("a.png").substr(0, 6), "bplist");
}

TEST(ArchiveCommand, EmbedsWhatWillNotBeThereLater) {
    const TemporaryFolder folder;
    const Result result =
        run({"archive", "/dev/stdin", "-o", folder.path("a.graph")}, {.input = pngOf({2, 1, red})});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.err,
              "imaging: /dev/stdin: this is no ordinary file, so it will not be there later; add --embed\n");
    EXPECT_EQ(folder.count(), 0);
}

TEST(ArchiveCommand, RefusesPicturesThatCannotBeRead) {
    const TemporaryFolder folder;
    const std::string good = folder.write("good.png", pngOf(Picture(2, 1, red)));
    const std::string whole = pngOf(randomPicture(20, 20, 7));
    const std::string cut = folder.write("cut.png", whole.substr(0, whole.size() / 2));
    for (const std::vector<std::string>& options : std::vector<std::vector<std::string>>{{}, {"--embed"}}) {
        std::vector<std::string> arguments = {"archive", good, cut, "-o", folder.path("a.graph")};
        arguments.insert(arguments.end(), options.begin(), options.end());
        const Result result = run(arguments);
        EXPECT_EQ(result.status, 1);
        EXPECT_EQ(result.err, "imaging: " + cut +
                                  ": the PNG data ends before the picture is complete; the file may "
                                  "be cut short\n");
    }
    EXPECT_EQ(folder.count(), 2);
}

TEST(ArchiveCommand, NamesAPictureThatIsGone) {
    const TemporaryFolder folder;
    const std::string path = folder.write("a.png", pngOf(Picture(2, 1, red)));
    const std::string graph = folder.path("a.graph");
    expectDone(run({"archive", path, path, "-o", graph}));
    std::filesystem::remove(path);
    const std::string line =
        "imaging: " + graph + ": its picture " + path + " cannot be used: there is no such file\n";
    for (const std::vector<std::string>& arguments :
         std::vector<std::vector<std::string>>{{"draw", graph, "-o", folder.path("b.png")},
                                               {"archive", graph, "-o", folder.path("b.graph")},
                                               {"sheet", graph, "-o", folder.path("b.png")}}) {
        const Result result = run(arguments);
        EXPECT_EQ(result.status, 1);
        EXPECT_EQ(result.err, line);
    }
    const Result info = run({"info", "--json", graph});
    EXPECT_EQ(info.status, 1);
    EXPECT_EQ(info.err, line);
    const nlohmann::json json = nlohmann::json::parse(info.out);
    EXPECT_EQ(json[0]["nodes"], 3);
    EXPECT_EQ(json[0]["pictures"][1]["error"], "there is no such file");
    EXPECT_EQ(folder.count(), 1);
}
