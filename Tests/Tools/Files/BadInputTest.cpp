// Also tests: Tools/Files/Input.cpp

#include "Imaging/CachedImage.h"
#include "Platform/Foundation/KeyedArchiver.h"
#include "Tests/Tools/Support/Command.h"
#include "Tests/Tools/Support/TestPictures.h"

#include <gmock/gmock.h>

#include <sys/stat.h>

using namespace TestSupport;
using Imaging::IMGImage;
using testing::HasSubstr;
using testing::StartsWith;

namespace {

std::string archived(const Imaging::Platform::NSCoding& root) {
    const Imaging::Platform::NSData data = Imaging::Platform::archivedDataWithRootObject(root);
    return {data.begin(), data.end()};
}

/// Each subcommand that draws or keeps what it reads must fail with one line about the file that has this in
/// it, and leave nothing.
void expectRefusal(const TemporaryFolder& folder, const std::string& file, const std::string& message) {
    const std::set<std::string> before = namesIn(folder.path(""));
    for (const std::vector<std::string>& arguments : std::vector<std::vector<std::string>>{
             {"draw", file, "-o", folder.path("out.png")},
             {"apply", file, "--turn", "left", "-o", folder.path("out.png")},
             {"archive", file, "-o", folder.path("out.graph")},
             {"archive", "--embed", file, "-o", folder.path("out.graph")},
             {"sheet", file, "-o", folder.path("out.jpg")}}) {
        const Result result = run(arguments);
        EXPECT_EQ(result.status, 1) << arguments[0];
        EXPECT_EQ(result.out, "");
        EXPECT_THAT(result.err, StartsWith("imaging: " + file + ": ")) << arguments[0];
        EXPECT_THAT(result.err, HasSubstr(message)) << arguments[0];
        EXPECT_EQ(result.err.find('\n'), result.err.size() - 1) << "one line: " << result.err;
        EXPECT_EQ(namesIn(folder.path("")), before) << arguments[0];
    }
}

/// The same, and `info` refuses it too.
void expectRefusalByAll(const TemporaryFolder& folder, const std::string& file, const std::string& message) {
    expectRefusal(folder, file, message);
    const Result info = run({"info", file});
    EXPECT_EQ(info.status, 1);
    EXPECT_THAT(info.err, StartsWith("imaging: " + file + ": "));
    EXPECT_THAT(info.err, HasSubstr(message));
    EXPECT_EQ(info.err.find('\n'), info.err.size() - 1) << "one line: " << info.err;
}

constexpr const char* xmlStart = R"(<?xml version="1.0" encoding="UTF-8"?>
<plist version="1.0"><dict><key>$archiver</key><string>NSKeyedArchiver</string><key>$version</key>
<integer>100000</integer><key>$top</key><dict><key>root</key><dict><key>CF$UID</key><integer>1</integer></dict>
</dict><key>$objects</key><array><string>$null</string>)";
constexpr const char* xmlEnd = "</array></dict></plist>";

std::string reference(int number) {
    return "<dict><key>CF$UID</key><integer>" + std::to_string(number) + "</integer></dict>";
}

std::string object(int classNumber, const std::string& parts) {
    return "<dict><key>$class</key>" + reference(classNumber) + parts + "</dict>";
}

std::string className(const std::string& name) {
    return "<dict><key>$classname</key><string>" + name + "</string></dict>";
}

/// An archive in XML; the objects are numbered from 1.
std::string xmlArchive(const std::string& objects) { return xmlStart + objects + xmlEnd; }

} // namespace

TEST(BadInput, NamesFilesThatAreNotThere) {
    const TemporaryFolder folder;
    expectRefusalByAll(folder, folder.path("missing.png"), "there is no such file");
    folder.write("file", "x");
    expectRefusalByAll(folder, folder.path("file/a.png"), "a part of the path is not a folder");
}

TEST(BadInput, NamesFilesThatMayNotBeRead) {
    const TemporaryFolder folder;
    const std::string path = folder.write("secret.png", pngOf(Picture(1, 1, red)));
    ASSERT_EQ(chmod(path.c_str(), 0), 0);
    const Result result = run({"draw", path, "-o", folder.path("a.png")}, {.withoutPrivileges = true});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.err, "imaging: " + path + ": reading it is not permitted\n");
    EXPECT_EQ(run({"info", path}, {.withoutPrivileges = true}).err, result.err);
    EXPECT_EQ(folder.count(), 1);
}

TEST(BadInput, RefusesFoldersButForSheets) {
    const TemporaryFolder folder;
    for (const std::string subcommand : {"draw", "archive"}) {
        const Result result = run({subcommand, folder.path(""), "-o", folder.path("a.png")});
        EXPECT_EQ(result.status, 1);
        EXPECT_EQ(result.err, "imaging: " + folder.path("") + ": this is a folder, not a file\n");
    }
    EXPECT_EQ(folder.count(), 0);
}

TEST(BadInput, RefusesWhatIsNoPicture) {
    const TemporaryFolder folder;
    expectRefusalByAll(folder, folder.write("empty.png", ""), "there is no data");
    expectRefusalByAll(folder, folder.write("text.png", "This is no picture at all"),
                       "the data is not a picture of a known format (JPEG, PNG, TIFF, GIF, BMP, WebP");
    expectRefusalByAll(folder, folder.write("zeros.jpg", std::string(100'000, '\0')),
                       "the data is not a picture of a known format (JPEG, PNG, TIFF, GIF, BMP, WebP");
}

TEST(BadInput, RefusesPicturesThatAreCutShortAnywhere) {
    const TemporaryFolder folder;
    const std::string png = pngOf(randomPicture(30, 30, 9));
    const std::string jpeg = jpegOf(randomPicture(30, 30, 9));
    for (const std::string& whole : {png, jpeg}) {
        for (const std::size_t length : {whole.size() / 20, whole.size() / 2, whole.size() - 20}) {
            SCOPED_TRACE(length);
            expectRefusal(folder, folder.write("cut", whole.substr(0, length)), "");
        }
    }
}

TEST(BadInput, RefusesPicturesWithDamagedPixels) {
    const TemporaryFolder folder;
    std::string png = pngOf(randomPicture(30, 30, 10));
    png[png.size() / 2] = static_cast<char>(png[png.size() / 2] ^ 0x55);
    expectRefusal(folder, folder.write("damaged.png", png), "the PNG data is damaged");
}

TEST(BadInput, RefusesPicturesWithoutPixels) {
    const TemporaryFolder folder;
    const std::string rest = pngChunk("IDAT", "") + pngChunk("IEND", "");
    expectRefusalByAll(folder, folder.write("no-width.png", pngStart(0, 5) + rest), "");
    expectRefusalByAll(folder, folder.write("no-height.png", pngStart(5, 0) + rest), "");
    expectRefusalByAll(folder, folder.write("none.tif", tiffWithStrip(0, 4, 8, 16)), "");
}

TEST(BadInput, RefusesAbsurdlyLargePicturesBeforeMemoryIsTaken) {
    const TemporaryFolder folder;
    const std::string rest = pngChunk("IDAT", "x") + pngChunk("IEND", "");
    expectRefusal(folder, folder.write("huge.png", pngStart(100'000, 100'000) + rest),
                  "the picture is 100000 x 100000 pixels, more than the limit of 268435456 pixels");
    const Result info = run({"info", folder.path("huge.png")});
    EXPECT_EQ(info.status, 0) << "its header is all right";
    EXPECT_THAT(info.out, HasSubstr("  100000 x 100000  "));
    expectRefusal(folder, folder.write("huge.tif", tiffWithStrip(100'000, 100'000, 8, 16)), "");
}

TEST(BadInput, RefusesTiffsWhoseStripsLieAboutTheirPlace) {
    const TemporaryFolder folder;
    // The file has 24 bytes, a directory of 102 and nothing else.
    for (const std::uint32_t offset : {0x7FFFFFF0U, 0xFFFFFFFFU, 0xFFFFFFF8U, 115U, 126U, 200U}) {
        SCOPED_TRACE(offset);
        expectRefusal(folder, folder.write("lying.tif", tiffWithStrip(4, 4, offset, 16)), "the TIFF data");
    }
    expectRefusal(folder, folder.write("lying.tif", tiffWithStrip(40, 40, 8, 1600)), "the TIFF data");
}

TEST(BadInput, ReadsTiffsWhoseStripsLieAboutTheirLengthOnly) {
    const TemporaryFolder folder;
    // Uncompressed pixels have one length only, and they are all there.
    for (const std::uint32_t count : {16U, 4U, 1000U, 0xFFFFFFFFU}) {
        const std::string path = folder.write("lying.tif", tiffWithStrip(4, 4, 8, count));
        EXPECT_EQ(run({"draw", path, "-o", folder.path("out.png")}).status, 0) << count;
        EXPECT_EQ(pictureOfPNG(folder.read("out.png")).pixels, Picture(4, 4, {128, 128, 128, 255}).pixels)
            << count;
    }
}

TEST(BadInput, ReadsAMislabelledPictureAsWhatItIs) {
    const TemporaryFolder folder;
    const std::string path = folder.write("photo.jpg", pngOf(Picture(3, 2, red)));
    const Result info = run({"info", path});
    EXPECT_EQ(info.status, 0);
    EXPECT_THAT(info.out, HasSubstr("  PNG     3 x 2 "));
}

TEST(BadArchive, IsRefusedWhenItIsCutShort) {
    const TemporaryFolder folder;
    const auto picture = IMGImage::imageWithContentsOfFile(folder.write("a.png", pngOf(Picture(2, 2, red))));
    const std::string whole = archived(IMGImage(picture));
    for (const std::size_t length : {std::size_t{8}, std::size_t{20}, whole.size() / 2, whole.size() - 1}) {
        SCOPED_TRACE(length);
        expectRefusalByAll(folder, folder.write("cut.graph", whole.substr(0, length)), "");
    }
}

TEST(BadArchive, IsRefusedWhenItHoldsSomethingElse) {
    const TemporaryFolder folder;
    const auto picture =
        Imaging::Platform::NSImage::imageWithContentsOfFile(folder.write("a.png", pngOf(Picture(2, 2, red))));
    expectRefusalByAll(folder, folder.write("picture.graph", archived(*picture)),
                       "the archive's root object is of another kind than was asked for");
    const std::string plain =
        R"(<?xml version="1.0"?><plist version="1.0"><dict><key>a</key><true/></dict></plist>)";
    expectRefusalByAll(folder, folder.write("plain.xml", plain), "the property list is not a keyed archive");
}

TEST(BadArchive, IsRefusedWithUnknownClassesAndWrongTypes) {
    const TemporaryFolder folder;
    const std::string good = xmlArchive(object(2, "") + className("IMGImage"));
    const std::string childless = folder.write("childless.graph", good);
    for (const std::string subcommand : {"draw", "sheet"}) {
        const Result result = run({subcommand, childless, "-o", folder.path("out.png")});
        EXPECT_EQ(result.status, 1);
        EXPECT_EQ(result.err, "imaging: " + childless +
                                  ": a node of the graph has nothing below it, so the graph has "
                                  "no size\n");
    }
    expectRefusalByAll(
        folder, folder.write("unknown.graph", xmlArchive(object(2, "") + className("IMGTeapot"))),
        "the archive holds an object of the class \"IMGTeapot\", which this program did not register");
    const std::string wrong =
        object(2, "<key>source-images</key><string>none</string>") + className("IMGImage");
    expectRefusalByAll(folder, folder.write("wrong.graph", xmlArchive(wrong)), "source-images");
    const std::string wrongName =
        object(2, "<key>file-name</key><integer>7</integer>") + className("IMGImageFromNSImage");
    expectRefusalByAll(folder, folder.write("wrong-name.graph", xmlArchive(wrongName)), "file-name");
}

TEST(BadArchive, IsRefusedWhenAnObjectContainsItself) {
    const TemporaryFolder folder;
    const std::string objects = object(2, "<key>source-images</key>" + reference(3)) + className("IMGImage") +
                                object(4, "<key>NS.objects</key><array>" + reference(1) + "</array>") +
                                className("NSArray");
    expectRefusalByAll(folder, folder.write("circle.graph", xmlArchive(objects)), "contains itself");
}

TEST(BadArchive, IsRefusedWhenItNestsAMillionDeep) {
    const TemporaryFolder folder;
    std::string deep(R"(<?xml version="1.0"?><plist version="1.0">)");
    for (int i = 0; i < 1'000'000; ++i) deep += "<array>";
    for (int i = 0; i < 1'000'000; ++i) deep += "</array>";
    expectRefusalByAll(folder, folder.write("deep.xml", deep + "</plist>"), "");
    std::string objects;
    for (int i = 0; i < 20'000; ++i) {
        // Node, its list, the next node, …; the two classes come last.
        objects += object(40'001, "<key>source-images</key>" + reference(2 * i + 2));
        objects += object(40'002, "<key>NS.objects</key><array>" + reference(2 * i + 3) + "</array>");
    }
    objects += className("IMGImage") + className("NSArray");
    expectRefusalByAll(folder, folder.write("deep.graph", xmlArchive(objects)), "nest too deeply");
}

TEST(BadArchive, IsRefusedWhenDrawingItWouldTakeForEver) {
    const TemporaryFolder folder;
    std::shared_ptr<IMGImage> node =
        IMGImage::imageWithContentsOfFile(folder.write("a.png", pngOf(Picture(2, 2, red))));
    for (int i = 0; i < 60; ++i) node = std::make_shared<IMGImage>(IMGImage::Sources{node, node});
    const std::string path = folder.write("doubled.graph", archived(*node));
    const Result result = run({"draw", path, "-o", folder.path("out.png")});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.err, "imaging: " + path +
                              ": its nodes are shared so often that drawing would take more than "
                              "100000 steps; make the graph simpler\n");
    // Telling about it and writing it again take no longer than it is.
    EXPECT_THAT(run({"info", path}).out, HasSubstr("61 nodes, 1 picture\n"));
    EXPECT_EQ(run({"archive", path, "-o", folder.path("again.graph")}).status, 0);
}

TEST(BadArchive, MayBeDeepAsLongAsItIsDrawable) {
    const TemporaryFolder folder;
    const std::shared_ptr<IMGImage> leaf =
        IMGImage::imageWithContentsOfFile(folder.write("a.png", pngOf(Picture(2, 2, red))));
    std::shared_ptr<IMGImage> node = leaf;
    // Two sources at every level: whoever asked the last one twice would never come to an end.
    for (int i = 0; i < 400; ++i) node = std::make_shared<IMGImage>(IMGImage::Sources{leaf, node});
    const Result result =
        run({"draw", folder.write("deep.graph", archived(*node)), "-o", folder.path("out.png")});
    EXPECT_EQ(result.status, 0) << result.err;
    EXPECT_EQ(pictureOfPNG(folder.read("out.png")).pixels, Picture(2, 2, red).pixels);
}

TEST(BadArchive, IsRefusedWhenItsPictureIsDamaged) {
    const TemporaryFolder folder;
    const std::string bytes = pngOf(randomPicture(20, 20, 11));
    folder.write("a.png", bytes);
    ASSERT_EQ(run({"archive", "--embed", folder.path("a.png"), "-o", folder.path("a.graph")}).status, 0);
    std::string graph = folder.read("a.graph");
    const std::size_t start = graph.find(bytes);
    ASSERT_NE(start, std::string::npos);
    graph[start + bytes.size() / 2] = static_cast<char>(graph[start + bytes.size() / 2] ^ 0x55);
    expectRefusalByAll(folder, folder.write("a.graph", graph),
                       "a picture in it cannot be used: the bytes in the archive are damaged or no picture");
}

TEST(BadArchive, DoesNotWaitForAPipeThatItNames) {
    const TemporaryFolder folder;
    const std::string pipe = folder.path("pipe");
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    const std::string objects = object(3, "<key>file-name</key>" + reference(2)) + "<string>" + pipe +
                                "</string>" + className("IMGImageFromNSImage");
    expectRefusalByAll(folder, folder.write("pipe.graph", xmlArchive(objects)),
                       "its picture " + pipe + " cannot be used: this is no ordinary file");
}
