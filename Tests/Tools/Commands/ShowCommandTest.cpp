// Also tests: Tools/Film/FilmProgress.cpp
// Also tests: Tools/Film/FilmSheet.cpp
// Also tests: Tools/Film/PictureCheck.cpp

#include "Tests/Tools/Command/Terminal.h"
#include "Tests/Tools/Support/Command.h"
#include "Tests/Tools/Support/TestPictures.h"

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

#include <csignal>
#include <sstream>

using namespace TestSupport;
using testing::HasSubstr;
using testing::StartsWith;

namespace {

using Arguments = std::vector<std::string>;

Arguments operator+(Arguments a, const Arguments& b) {
    a.insert(a.end(), b.begin(), b.end());
    return a;
}

/// Two pictures of one colour each in a folder "in", red before blue.
std::string redAndBlue(const TemporaryFolder& folder, int width, int height) {
    std::filesystem::create_directory(folder.path("in"));
    folder.write("in/1.png", pngOf(Picture(width, height, red)));
    folder.write("in/2.png", pngOf(Picture(width, height, blue)));
    return folder.path("in");
}

/// The raw frames of a film on standard output.
std::string rawFilm(const Arguments& arguments) {
    const Result result = run(Arguments{"show", "-o", "-", "--format", "raw"} + arguments);
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.err, "");
    return result.out;
}

/// The pixels of a raw frame.
std::vector<Pixel> pixelsOf(const std::string& raw, std::size_t frame, std::size_t pixels) {
    std::vector<Pixel> result;
    for (std::size_t i = frame * pixels; i < (frame + 1) * pixels; ++i) {
        const auto byte = [&](std::size_t k) { return static_cast<std::uint8_t>(raw.at(i * 4 + k)); };
        result.push_back({byte(2), byte(1), byte(0), byte(3)});
    }
    return result;
}

} // namespace

TEST(ShowCommand, WritesNumberedPicturesIntoAFolderThatItMakes) {
    const TemporaryFolder folder;
    const std::string in = redAndBlue(folder, 4, 2);
    // Two frames of each, without a transition.
    const Arguments film = {"show", in, "--size", "4x2", "--fps", "10", "--hold", "0.2", "--duration", "0"};
    EXPECT_EQ(run(film + Arguments{"-o", folder.path("out/")}).err, "");
    EXPECT_EQ(namesIn(folder.path("out")), (std::set<std::string>{"frame-000001.png", "frame-000002.png",
                                                                  "frame-000003.png", "frame-000004.png"}));
    for (const auto& [name, color] : {std::pair("out/frame-000001.png", red),
                                      {"out/frame-000002.png", red},
                                      {"out/frame-000003.png", blue},
                                      {"out/frame-000004.png", blue}}) {
        EXPECT_EQ(pictureOfPNG(folder.read(name)).pixels, Picture(4, 2, color).pixels) << name;
    }
    EXPECT_EQ(run(film + Arguments{"-o", folder.path("jpegs/"), "--frame-format", "jpg"}).err, "");
    const Picture jpeg = pictureOfAnyFormat(folder.read("jpegs/frame-000004.jpg"));
    EXPECT_EQ(jpeg.width, 4);
    EXPECT_GT(jpeg.at(0, 0).blue, 250);
}

TEST(ShowCommand, AFrameThatStandsStillIsThePicture) {
    const TemporaryFolder folder;
    const Picture picture = randomPicture(33, 17, 5);
    const std::string in = folder.write("in.png", pngOf(picture));
    const std::string raw = rawFilm({in, "--size", "33x17", "--fps", "2", "--hold", "1"});
    ASSERT_EQ(raw.size(), 33U * 17 * 4 * 2);
    for (const std::size_t frame : {0, 1}) EXPECT_EQ(pixelsOf(raw, frame, 33 * 17), picture.pixels);
}

TEST(ShowCommand, ADissolveMixesInProportionToItsTime) {
    const TemporaryFolder folder;
    const std::string in = redAndBlue(folder, 2, 2);
    // One frame, a transition of three with the weights 1/4, 1/2 and 3/4, and one frame. The background,
    // which the pictures cover, takes no part in it.
    const std::string raw =
        rawFilm({in, "--size", "2x2", "--fps", "1", "--hold", "1", "--duration", "3", "--ease", "linear",
                 "--transition", "dissolve", "--background", "white"});
    ASSERT_EQ(raw.size(), 5U * 4 * 4);
    for (std::size_t frame = 0; frame < 5; ++frame) {
        const double weight = static_cast<double>(frame) / 4;
        for (const Pixel& pixel : pixelsOf(raw, frame, 4)) {
            EXPECT_NEAR(pixel.red, 255 * (1 - weight), 1.5) << frame;
            EXPECT_NEAR(pixel.blue, 255 * weight, 1.5) << frame;
            EXPECT_EQ(pixel.alpha, 255);
        }
    }
}

TEST(ShowCommand, FramesOfAPartAreThoseOfTheWhole) {
    const TemporaryFolder folder;
    std::filesystem::create_directory(folder.path("in"));
    for (int i = 0; i < 12; ++i) {
        folder.write("in/" + std::to_string(i) + ".png",
                     pngOf(randomPicture(40 + i, 30, static_cast<unsigned>(i))));
    }
    const std::size_t frameBytes = std::size_t{48} * 32 * 4;
    for (const std::string transition : {"all", "random"}) {
        const Arguments film = {folder.path("in"), "--size", "48x32",        "--fps",   "5",
                                "--hold",          "0.4",    "--duration",   "0.8",     "--loop",
                                "--background",    "navy",   "--transition", transition};
        const std::string whole = rawFilm(film);
        ASSERT_EQ(whole.size(), frameBytes * 12 * (2 + 4));
        std::string parts;
        for (const std::string range : {"1-1", "2-5", "6-6", "7-40", "41-71", "72-72"})
            parts += rawFilm(film + Arguments{"--frames", range});
        EXPECT_TRUE(parts == whole) << transition;
        for (std::size_t i = 3; i < whole.size(); i += 4) {
            ASSERT_EQ(static_cast<unsigned char>(whole[i]), 255) << "the unused byte of pixel " << i / 4;
        }
    }
}

TEST(ShowCommand, RangesOfFramesAreChecked) {
    const TemporaryFolder folder;
    const std::string in = redAndBlue(folder, 2, 2);
    for (const auto& [range, message] : {std::pair("7", "'7' is no range of frames"),
                                         {"5-3", "'5-3' ends before it begins"},
                                         {"0-3", "--frames: "},
                                         {"1-1000", "--frames: "},
                                         {"a-b", "--frames: "}}) {
        const Result result = run({"show", in, "-o", folder.path("out/"), "--frames", range});
        EXPECT_EQ(result.status, 2) << range;
        EXPECT_THAT(result.err, HasSubstr(message));
    }
    EXPECT_FALSE(std::filesystem::exists(folder.path("out")));
}

TEST(ShowCommand, NamesAllBadPicturesBeforeItMakesAnything) {
    const TemporaryFolder folder;
    const std::string good = folder.write("good.png", pngOf(Picture(8, 8, red)));
    const std::string jpeg = jpegOf(randomPicture(64, 64, 3));
    const std::string cut = folder.write("cut.jpg", jpeg.substr(0, jpeg.size() / 2));
    const std::string png = pngOf(randomPicture(64, 64, 4));
    const std::string half = folder.write("half.png", png.substr(0, png.size() / 2));
    const std::string missing = folder.path("missing.png");
    const Arguments film = {"show", "--keep-order", good, cut, half, missing, cut, "--size", "8x8"};
    const Result result = run(film + Arguments{"-o", folder.path("out/")});
    EXPECT_EQ(result.status, 1);
    std::istringstream lines(result.err);
    for (const std::string& name : {cut, half, missing}) {
        std::string line;
        std::getline(lines, line);
        EXPECT_THAT(line, StartsWith("imaging: " + name + ": "));
    }
    EXPECT_EQ(result.err.find(cut), result.err.rfind(cut)) << "each is named once";
    EXPECT_FALSE(std::filesystem::exists(folder.path("out")));

    const Result skipping = run(film + Arguments{"-o", folder.path("out/"), "--skip-bad", "--hold", "0.2"});
    EXPECT_EQ(skipping.status, 0);
    EXPECT_EQ(skipping.err, result.err) << "they are still named";
    EXPECT_EQ(namesIn(folder.path("out")).size(), 5U) << "0.2 s of the only picture that is left";
    const Result none = run({"show", cut, "-o", folder.path("none/"), "--skip-bad"});
    EXPECT_EQ(none.status, 1);
    EXPECT_THAT(none.err, StartsWith("imaging: " + cut + ": the JPEG data ends before"));
}

namespace {

/// A show file of three pictures of 4 x 2 pixels, the second of which cannot be treated as it says.
std::string withABadOperation(const TemporaryFolder& folder, const std::string& operation) {
    folder.write("1.png", pngOf(Picture(4, 2, red)));
    folder.write("2.png", pngOf(Picture(4, 2, clear), true));
    folder.write("3.png", pngOf(Picture(4, 2, blue)));
    return folder.write("show.json", R"({"size": "4x2", "fps": 10, "hold": 0.2, "duration": 0, "pictures": [
        "1.png", {"file": "2.png", "operations": [)" +
                                         operation + R"(]}, "2.png", "3.png"]})");
}

} // namespace

TEST(ShowCommand, TellsOperationsThatCannotBeCarriedOutBeforeAnythingIsDrawn) {
    for (const auto& [operation, why] : std::vector<std::pair<std::string, std::string>>{
             {R"({"crop": [9, 0, 2, 2]})",
              ": --crop: the 2 x 2 pixels at 9,0 lie outside the picture, which is "
              "4 x 2 pixels there; choose a place inside\n"},
             {R"({"rotate": 30}, {"crop": [90, 0, 2, 2]})", // 4 cos 30 + 2 sin 30 = 4.5, 4 sin 30 + 2 cos 30
                                                            // = 3.7
              ": --crop: the 2 x 2 pixels at 90,0 lie outside the picture, which is 5 x 4 pixels there"},
             {R"({"flip": "vertical"}, {"scale": "400000"})", ": the result would be "}}) {
        SCOPED_TRACE(operation);
        const TemporaryFolder folder;
        // What is large is no harm until an operation has to see it.
        const std::string file = withABadOperation(folder, operation.find("scale") == std::string::npos
                                                               ? operation
                                                               : operation + R"(, {"sharpen": true})");
        const Result result = run({"show", file, "-o", folder.path("out/")});
        EXPECT_EQ(result.status, 1);
        EXPECT_THAT(result.err, StartsWith("imaging: " + folder.path("2.png") + why));
        EXPECT_FALSE(std::filesystem::exists(folder.path("out")));

        const Result dry = run({"show", file, "--dry-run"});
        EXPECT_EQ(dry.status, 1);
        EXPECT_EQ(dry.err, result.err);
        EXPECT_EQ(dry.out, "");

        const Result skipping = run({"show", file, "-o", folder.path("out/"), "--skip-bad"});
        EXPECT_EQ(skipping.status, 0);
        EXPECT_EQ(skipping.err, result.err) << "it is still named";
        EXPECT_EQ(namesIn(folder.path("out")).size(), 6U) << "the same file without operations stays";
        EXPECT_THAT(run({"show", file, "--dry-run", "--skip-bad"}).out, StartsWith("3 pictures, 6 frames "));
    }
}

TEST(ShowCommand, NamesTheMaskThatDoesNotFitAPicture) {
    const TemporaryFolder folder;
    folder.write("mask.png", pngOf(Picture(3, 3, white)));
    const std::string file = withABadOperation(folder, R"({"mask": "mask.png"})");
    for (const Arguments& rest : {Arguments{"-o", folder.path("out/")}, {"--dry-run"}}) {
        const Result result = run(Arguments{"show", file} + rest);
        EXPECT_EQ(result.status, 1);
        EXPECT_THAT(result.err, StartsWith("imaging: " + folder.path("mask.png") +
                                           ": --mask: the mask has 3 x 3 pixels, the picture 4 x 2 there"));
    }
    EXPECT_FALSE(std::filesystem::exists(folder.path("out")));
}

TEST(ShowCommand, CarriesOutOperationsThatOnlyPixelsCanTellAbout) {
    const TemporaryFolder folder;
    folder.write("1.png", pngOf(Picture(4, 2, white), true)); // with alpha, but opaque
    const std::string file = folder.write(
        "show.json",
        R"({"size": "4x2", "pictures": [{"file": "1.png", "operations": [{"color": "1,0,0"}]}]})");
    EXPECT_THAT(run({"show", file, "--dry-run"}).out, StartsWith("1 picture, 75 frames "));
    EXPECT_EQ(pixelsOf(rawFilm({file}), 74, 8), std::vector<Pixel>(8, red));
}

TEST(ShowCommand, TellsItsProgressInLinesOfJson) {
    const TemporaryFolder folder;
    const std::string in = redAndBlue(folder, 2, 2);
    const Result result = run({"show", in, "--size", "4x4", "-o", "/dev/null", "--format", "raw", "--json"});
    EXPECT_EQ(result.status, 0);
    std::vector<nlohmann::json> lines;
    std::istringstream all(result.out);
    for (std::string line; std::getline(all, line);) lines.push_back(nlohmann::json::parse(line));
    ASSERT_GE(lines.size(), 2U);
    EXPECT_EQ(lines.front()["event"], "start");
    EXPECT_EQ(lines.front()["frames"], 175); // 3 s, 1 s and 3 s of 25 frames
    EXPECT_EQ(lines.back()["event"], "done");
    EXPECT_EQ(lines.back()["frames"], 175);
}

TEST(ShowCommand, RefusesAContactSheetOnStandardOutputByItsOwnName) {
    const Result result = run({"show", "/nowhere/a.png", "--contact-sheet", "-"});
    EXPECT_EQ(result.status, 2);
    EXPECT_EQ(result.err,
              "imaging: show: --contact-sheet: the sheet needs a file, not '-' (see 'imaging show "
              "--help')\n");
}

TEST(ShowCommand, DrawsAContactSheetOfTheFilm) {
    const TemporaryFolder folder;
    const std::string in = redAndBlue(folder, 16, 9);
    const Arguments film = {"show",   in,  "--size",     "160x90", "--fps",  "5",
                            "--hold", "1", "--duration", "1",      "--ease", "linear"};
    const Result result = run(film + Arguments{"--contact-sheet", folder.path("sheet.png")});
    EXPECT_EQ(result.err, "");
    const Picture sheet = pictureOfPNG(folder.read("sheet.png"));
    // Three cells of 320 x 180 in a row: red, the second of the transition's five frames, blue.
    ASSERT_GT(sheet.width, 3 * 320);
    const int middle = sheet.height / 2;
    const int gap = (sheet.width - 3 * 320) / 4;
    const auto cell = [&](int i) { return sheet.at(gap + i * (320 + gap) + 160, middle); };
    EXPECT_EQ(cell(0), red);
    EXPECT_NEAR(cell(1).red, 255 * 2 / 3.0, 2);
    EXPECT_NEAR(cell(1).blue, 255 / 3.0, 2);
    EXPECT_EQ(cell(2), blue);
    // The same while a film is made.
    run(film + Arguments{"--contact-sheet", folder.path("both.png"), "-o", folder.path("frames/")});
    EXPECT_EQ(pictureOfPNG(folder.read("both.png")).pixels, sheet.pixels);
    EXPECT_EQ(namesIn(folder.path("frames")).size(), 15U);
}

TEST(ShowCommand, ADryRunReadsNoPictureAndMakesNothing) {
    const TemporaryFolder folder;
    const Result result =
        run({"show", folder.path("a.png"), folder.path("b.png"), "--dry-run", "-o", folder.path("out/")});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.err, "");
    EXPECT_THAT(result.out, HasSubstr("175 frames"));
    EXPECT_EQ(folder.count(), 0);
}

TEST(ShowCommand, OutputsAreCheckedBeforeThePicturesAre) {
    const TemporaryFolder folder;
    for (const auto& [arguments, status, message] : std::vector<std::tuple<Arguments, int, std::string>>{
             {{}, 2, "the output is missing"},
             {{"-o", folder.path("film.avi")}, 2, "those that work are .mp4, .mkv, .webm and .gif"},
             {{"-o", "-"}, 2, "only raw frames go to standard output"},
             {{"-o", folder.path("a.mp4"), "--size", "641x479"}, 2, "choose 642x480"},
             {{"-o", folder.path("a.gif"), "--crf", "20"}, 2, "--crf: only .mp4"},
             {{"-o", folder.path("a.mp4"), "--crf", "52"}, 2, "--crf: "},
             {{"-o", folder.path("a.mp4"), "--preset", "veryfats"}, 2, "did you mean 'veryfast'?"},
             {{"-o", folder.path("a.mp4"), "--frame-format", "png"}, 2, "--frame-format: only numbered"},
             {{"-o", folder.path("no/a.mp4")}, 1, "the folder does not exist; make it first"},
             {{"-o", "-", "--format", "raw", "--json"}, 2, "--json: "}}) {
        const Result result = run(Arguments{"show", "/nowhere/a.png"} + arguments);
        EXPECT_EQ(result.status, status) << message;
        EXPECT_THAT(result.err, HasSubstr(message));
    }
    EXPECT_EQ(folder.count(), 0);
}

TEST(ShowCommand, ShowsABarOnATerminalAndLeavesNothingWhenItIsInterrupted) {
    for (const int number : {SIGINT, SIGTERM, SIGHUP}) {
        const TemporaryFolder folder;
        const std::string in = redAndBlue(folder, 4, 4);
        Terminal terminal;
        Command command({"show", in, "--size", "4x4", "--hold", "80000", "-o", folder.path("out/")},
                        {.errorDescriptor = terminal.slave()});
        terminal.closeSlave();
        EXPECT_THAT(terminal.readUntil(" of 4000025 frames, "), HasSubstr(" of 4000025 frames, "));
        EXPECT_TRUE(std::filesystem::exists(folder.path("out/frame-0000001.png")));
        ::kill(command.process(), number);
        EXPECT_EQ(command.wait().signal, number);
        EXPECT_EQ(namesIn(folder.path("")), std::set<std::string>{"in"});
    }
}
