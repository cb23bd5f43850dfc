// Also tests: Tools/Files/PictureFacts.cpp

#include "Tests/Tools/Support/Command.h"
#include "Tests/Tools/Support/TestPictures.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <nlohmann/json.hpp>

using namespace TestSupport;

namespace {

nlohmann::json described(const std::vector<std::string>& files, int status = 0) {
    std::vector<std::string> arguments = {"info", "--json"};
    arguments.insert(arguments.end(), files.begin(), files.end());
    const Result result = run(arguments);
    EXPECT_EQ(result.status, status) << result.err;
    return nlohmann::json::parse(result.out);
}

} // namespace

TEST(InfoCommand, TellsWhatAPictureIs) {
    const TemporaryFolder folder;
    const std::string path = folder.write("a.png", pngOf(Picture(5, 3, red)));
    EXPECT_EQ(described({path}),
              nlohmann::json::parse(R"([{"format": "PNG", "width": 5, "height": 3, "color": "RGB",
                "samplesPerPixel": 3, "bitsPerSample": 8, "alpha": false, "orientation": 1,
                "orientationInWords": "upright", "resolution": null, "profile": null, "file": ")" +
                                    path + "\"}]"));
}

TEST(InfoCommand, ListsPicturesInColumns) {
    const TemporaryFolder folder;
    folder.write("a.png", pngOf(Picture(5, 3, red), true));
    folder.write("longer name.tif", tiffWithStrip(4, 4, 8, 16));
    folder.write("\xc3\xa9.jpg", jpegWithExif(jpegOf(Picture(16, 8, red)), exifWithOrientation(6)));
    const Result result =
        run({"info", "a.png", "longer name.tif", "\xc3\xa9.jpg"}, {.folder = folder.path("")});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.err, "");
    EXPECT_EQ(result.out,
              "FILE             FORMAT  PIXELS  SAMPLES           ALPHA  ORIENTATION    RESOLUTION  PROFILE\n"
              "a.png            PNG     5 x 3   RGB, 4 x 8 bits   yes    1, upright     -           -\n"
              "longer name.tif  TIFF    4 x 4   gray, 1 x 8 bits  no     1, upright     -           -\n"
              "\xc3\xa9.jpg            JPEG    16 x 8  RGB, 3 x 8 bits   no     6, turn right  -           "
              "sRGB IEC61966-2.1\n");
}

TEST(InfoCommand, TellsResolutionsInPixelsPerInch) {
    const TemporaryFolder folder;
    // 11811 and 2835 pixels a metre are 299.9994 and 72.009 an inch.
    const std::string density("\0\0\x2e\x23\0\0\x0b\x13\x01", 9);
    const std::string path =
        folder.write("a.png", pngWithChunks(Picture(1, 1, red), pngChunk("pHYs", density)));
    const nlohmann::json json = described({path});
    EXPECT_NEAR(json[0]["resolution"]["x"].get<double>(), 299.9994, 1e-9);
    EXPECT_NEAR(json[0]["resolution"]["y"].get<double>(), 72.009, 1e-9);
    EXPECT_THAT(run({"info", path}).out, testing::HasSubstr("  300 x 72.01 dpi  "));
}

TEST(InfoCommand, NamesEveryOrientation) {
    const TemporaryFolder folder;
    const std::vector<std::string> words = {"upright",
                                            "mirror left to right",
                                            "turn upside down",
                                            "mirror top to bottom",
                                            "turn right and mirror left to right",
                                            "turn right",
                                            "turn left and mirror left to right",
                                            "turn left"};
    for (int orientation = 1; orientation <= 8; ++orientation) {
        const std::string png =
            pngWithChunks(Picture(1, 1, red), pngChunk("eXIf", exifWithOrientation(orientation)));
        const nlohmann::json json = described({folder.write("a.png", png)});
        EXPECT_EQ(json[0]["orientation"], orientation);
        EXPECT_EQ(json[0]["orientationInWords"], words[static_cast<std::size_t>(orientation - 1)]);
    }
}

TEST(InfoCommand, GoesOnAfterAFileThatCannotBeRead) {
    const TemporaryFolder folder;
    const std::string good = folder.write("good.png", pngOf(Picture(2, 2, red)));
    const std::string text = folder.write("notes.txt", "no picture");
    const std::string missing = folder.path("missing.png");
    const Result result = run({"info", missing, good, text});
    EXPECT_EQ(result.status, 1);
    EXPECT_THAT(result.err,
                testing::AllOf(testing::StartsWith("imaging: " + missing +
                                                   ": there is no such file\nimaging: " + text +
                                                   ": the data is not a picture of a known format (JPEG, "),
                               testing::EndsWith(", JPEG 2000)\n")));
    EXPECT_EQ(std::count(result.err.begin(), result.err.end(), '\n'), 2);
    EXPECT_THAT(result.out, testing::HasSubstr(good + "  PNG     2 x 2   "));
    EXPECT_THAT(result.out, testing::Not(testing::HasSubstr("notes")));
}

TEST(InfoCommand, PutsErrorsIntoTheJson) {
    const TemporaryFolder folder;
    const std::string good = folder.write("good.png", pngOf(Picture(2, 2, red)));
    const nlohmann::json json = described({folder.path("missing.png"), good}, 1);
    ASSERT_EQ(json.size(), 2U);
    EXPECT_EQ(json[0],
              (nlohmann::json{{"file", folder.path("missing.png")}, {"error", "there is no such file"}}));
    EXPECT_EQ(json[1]["width"], 2);
}

TEST(InfoCommand, WritesNothingButTheMessageWhenThereIsNothingToList) {
    const Result result = run({"info", "/nowhere/a.png"});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.out, "");
    EXPECT_EQ(result.err, "imaging: /nowhere/a.png: there is no such file\n");
}

TEST(InfoCommand, ReadsNoFurtherThanTheHeader) {
    const TemporaryFolder folder;
    const std::string whole = pngOf(randomPicture(40, 40, 3));
    const std::string cut = folder.write("cut.png", whole.substr(0, whole.size() - 100));
    EXPECT_EQ(described({cut})[0]["width"], 40);
    const std::string shorter = folder.write("shorter.png", whole.substr(0, 30));
    const Result result = run({"info", shorter});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.err, "imaging: " + shorter +
                              ": the PNG data ends before the picture is complete; the file may "
                              "be cut short\n");
}

TEST(InfoCommand, ReadsStandardInput) {
    const Result result = run({"info", "-"}, {.input = pngOf(Picture(2, 3, red))});
    EXPECT_EQ(result.status, 0);
    EXPECT_THAT(result.out, testing::HasSubstr("\n-     PNG     2 x 3 "));
    const Result empty = run({"info", "-"});
    EXPECT_EQ(empty.status, 1);
    EXPECT_EQ(empty.err, "imaging: standard input: there is no data\n");
}

TEST(InfoCommand, EscapesControlCharactersForPeopleOnly) {
    const TemporaryFolder folder;
    const std::string name = "a\n\x1b[31m\xc2\x9b\xc3\xa4.png";
    const std::string path = folder.write(name, pngOf(Picture(1, 1, red)));
    EXPECT_EQ(described({path})[0]["file"], path);
    EXPECT_THAT(run({"info", path}).out, testing::HasSubstr("/a\\n\\x1b[31m\\x9b\xc3\xa4.png  PNG"));
    const Result missing = run({"info", "/nowhere/" + name});
    EXPECT_EQ(missing.err, "imaging: /nowhere/a\\n\\x1b[31m\\x9b\xc3\xa4.png: there is no such file\n");
}

TEST(InfoCommand, NumbersDoNotDependOnTheLocale) {
    const TemporaryFolder folder;
    const std::string density("\0\0\x0b\x13\0\0\x0b\x13\x01", 9);
    const std::string path =
        folder.write("a.png", pngWithChunks(Picture(1, 1, red), pngChunk("pHYs", density)));
    const Result result = run({"info", path}, {.environment = {{"LC_ALL", "de_DE.UTF-8"}}});
    EXPECT_THAT(result.out, testing::HasSubstr("  72.01 dpi  "));
}
