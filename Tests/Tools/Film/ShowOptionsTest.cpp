// Also tests: Tools/Film/ShowSettings.cpp

#include "Tools/Film/ShowOptions.h"

#include "Tests/Platform/Foundation/TemporaryFolder.h"
#include "Tests/Tools/Support/OptionReading.h"
#include "Tests/Tools/Support/TestPictures.h"
#include "Tools/Command/Messages.h"
#include "Tools/Film/ShowPlan.h"

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

#include <filesystem>
#include <sstream>

using namespace TestSupport;
using namespace Imaging::Tool;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;

namespace {

/// The film of a command line: options, then inputs.
Show film(std::vector<std::string> options, const std::vector<std::string>& inputs,
          const std::vector<std::string>& outputs = {}) {
    ShowOptions show;
    readOptions(show.options(), std::move(options));
    return show.show(inputs, outputs);
}

std::string optionComplaint(const std::vector<std::string>& options) {
    try {
        film(options, {"/nowhere/a.png"});
        return "none";
    } catch (const UsageError& error) {
        return error.what();
    }
}

std::vector<std::string> names(const Show& show) {
    std::vector<std::string> all;
    for (const ShowPicture& picture : show.pictures)
        all.push_back(std::filesystem::path(picture.name).filename().string());
    return all;
}

std::string png() { return pngOf(Picture(1, 1, red)); }

FrameRate rate(const std::string& text) { return parseFrameRate(text, "--fps"); }

} // namespace

TEST(ShowOptions, SortsInputsAsPeopleCount) {
    const TemporaryFolder folder;
    std::vector<std::string> files;
    for (const std::string name : {"IMG_10.png", "IMG_2.png", "img_1.png"})
        files.push_back(folder.write(name, png()));
    EXPECT_THAT(names(film({}, files)), ElementsAre("img_1.png", "IMG_2.png", "IMG_10.png"));
    EXPECT_THAT(names(film({"--keep-order"}, files)), ElementsAre("IMG_10.png", "IMG_2.png", "img_1.png"));
    EXPECT_THAT(names(film({}, {folder.path("")})), ElementsAre("img_1.png", "IMG_2.png", "IMG_10.png"));
    // A picture may be shown more than once.
    EXPECT_THAT(names(film({}, {files[0], files[1], files[0]})),
                ElementsAre("IMG_2.png", "IMG_10.png", "IMG_10.png"));
}

TEST(ShowOptions, PutsThePicturesOfFoldersIntoTheirPlaces) {
    const TemporaryFolder folder;
    std::filesystem::create_directory(folder.path("b"));
    folder.write("b/2.png", png());
    folder.write("b/10.png", png());
    const std::string a = folder.write("a.png", png());
    const std::string c = folder.write("c.png", png());
    EXPECT_THAT(names(film({}, {c, folder.path("b"), a})), ElementsAre("a.png", "2.png", "10.png", "c.png"));
    EXPECT_THAT(names(film({"--keep-order"}, {c, folder.path("b"), a})),
                ElementsAre("c.png", "2.png", "10.png", "a.png"));
}

TEST(ShowOptions, LeavesTheFilmItselfOut) {
    const TemporaryFolder folder;
    const std::string a = folder.write("a.png", png());
    const std::string gif = folder.write("film.gif", png());
    const std::string other = folder.write("other.gif", png());
    EXPECT_THAT(names(film({}, {folder.path("")}, {gif, other})), ElementsAre("a.png"));
    EXPECT_THAT(names(film({}, {a, gif, other}, {gif, other})), ElementsAre("a.png"));
    EXPECT_THAT(names(film({}, {a, gif}, {"-"})), ElementsAre("a.png", "film.gif"));
    EXPECT_THROW(film({}, {gif}, {gif}), Failure);
}

TEST(ShowOptions, OverrideAShowFileButNotWhatItSaysForAPicture) {
    const TemporaryFolder folder;
    const std::string file = folder.write("show", R"({"size": "64x48", "hold": 5, "duration": 2,
        "transition": "zoom", "pictures": ["a.png", {"file": "b.png", "hold": 7, "transition": "iris"}]})");
    const Show show = film({"--hold", "1", "--transition", "wipe", "--fps", "50", "--loop"}, {file});
    EXPECT_EQ(show.size.width, 64);
    EXPECT_EQ(show.rateNumerator, 50);
    EXPECT_TRUE(show.loop);
    EXPECT_EQ(show.pictures[0].hold, 1);
    EXPECT_EQ(show.pictures[0].next.transition.text(), "wipe:direction=right");
    EXPECT_EQ(show.pictures[0].next.duration, 2);
    EXPECT_EQ(show.pictures[1].hold, 7);
    EXPECT_EQ(show.pictures[1].next.transition.text(), "iris:inout=in");
}

TEST(ShowOptions, TakesAShowFileAlone) {
    const TemporaryFolder folder;
    const std::string file = folder.write("show.json", R"({"pictures": ["a.png"]})");
    const std::string picture = folder.write("a.png", png());
    try {
        film({}, {file, picture});
        FAIL();
    } catch (const Failure& failure) {
        EXPECT_EQ(failure.subject(), file);
        EXPECT_STREQ(failure.what(), "a show file stands alone; leave the other inputs out");
    }
    EXPECT_EQ(names(film({}, {file})), std::vector<std::string>{"a.png"});
}

TEST(ShowOptions, GivesEachPictureTheNextTransition) {
    const Show show = film({"--transition", "zoom,dissolve", "--duration", "0.5", "--ease", "out"},
                           {"/nowhere/1.png", "/nowhere/2.png", "/nowhere/3.png"});
    EXPECT_EQ(show.pictures[0].next.transition.text(), "zoom:inout=in");
    EXPECT_EQ(show.pictures[1].next.transition.text(), "dissolve");
    EXPECT_EQ(show.pictures[2].next.transition.text(), "zoom:inout=in");
    EXPECT_EQ(show.pictures[2].next.duration, 0.5);
    EXPECT_EQ(show.pictures[2].next.easing, Easing::Out);
}

TEST(ShowOptions, MakesOtherRandomChoicesWithAnotherSeed) {
    const std::vector<std::string> inputs(20, "/nowhere/a.png");
    const auto choices = [&](const std::string& seed) {
        std::string all;
        const Show show = film({"--transition", "random", "--seed", seed}, inputs);
        for (const ShowPicture& picture : show.pictures) all += picture.next.transition.text() + " ";
        return all;
    };
    EXPECT_EQ(choices("7"), choices("7"));
    EXPECT_NE(choices("7"), choices("8"));
}

TEST(ShowOptions, ComplainInWordsThatHelp) {
    EXPECT_EQ(optionComplaint({"--fps", "fast"}),
              "--fps: 'fast' is no number of frames per second above 0 and up to 1000; give one such as 25, "
              "23.976 or 30000/1001");
    EXPECT_EQ(optionComplaint({"--hold", "-1"}), "--hold: '-1' is not a number of seconds from 0 to 86400");
    EXPECT_EQ(optionComplaint({"--duration", "1s"}),
              "--duration: '1s' is not a number of seconds from 0 to 86400");
    EXPECT_EQ(optionComplaint({"--size", "1920"}),
              "--size: '1920' is no size in pixels; give WxH, such as 400x300");
    EXPECT_EQ(optionComplaint({"--size", "16385x1"}),
              "--size: '16385x1' is too large for a frame; each side takes at most 16384 pixels");
    EXPECT_EQ(optionComplaint({"--seed", "x"}),
              "--seed: 'x' is not a whole number from 0 to 9223372036854775807");
    EXPECT_EQ(optionComplaint({"--background", "#fff8"}),
              "--background: '#fff8' lets something through, which a film cannot; give an opaque colour");
    EXPECT_THAT(optionComplaint({"--fit", "tight"}),
                StartsWith("--fit: there is no way to fit named 'tight'"));
    EXPECT_THAT(optionComplaint({"--ease", "slow"}), StartsWith("--ease: there is no easing named 'slow'"));
    EXPECT_THAT(optionComplaint({"--transition", "zom"}), HasSubstr("did you mean 'zoom'?"));
    EXPECT_THAT(optionComplaint({"--transition", "cube"}),
                HasSubstr("needs OpenGL, which this version does not draw with yet"));
    EXPECT_EQ(optionComplaint({}), "none");
}

TEST(FrameRate, ReadsWholeAndBrokenNumbers) {
    const std::vector<std::tuple<std::string, std::int64_t, std::int64_t>> rates = {
        {"25", 25, 1},          {"24", 24, 1},           {"12.5", 25, 2},
        {"0.1", 1, 10},         {"1000", 1000, 1},       {"30000/1001", 30000, 1001},
        {"50/2", 25, 1},        {"23.976", 24000, 1001}, {"23.98", 24000, 1001},
        {"29.97", 30000, 1001}, {"59.94", 60000, 1001},  {"119.88", 120000, 1001},
        {"29.970", 2997, 100},  {"25.000", 25, 1}};
    for (const auto& [text, numerator, denominator] : rates) {
        EXPECT_EQ(rate(text).numerator, numerator) << text;
        EXPECT_EQ(rate(text).denominator, denominator) << text;
    }
    for (const std::string text :
         {"", "0", "-25", "1001", "1000.1", "25/", "/2", "25/0", "2,5", "25.", ".5", "1e2", "25fps", "nan",
          "30000/1001/2", "99999999", "1/99999999", "1.1234567"}) {
        EXPECT_THROW(rate(text), UsageError) << text;
    }
    EXPECT_EQ(textOf(FrameRate{25, 1}), "25");
    EXPECT_EQ(textOf(FrameRate{24000, 1001}), "24000/1001");
}

TEST(ShowPlan, ListsThePartsWithTheirTimes) {
    const Show show = film({"--hold", "0.4", "--duration", "0.2", "--transition", "push:direction=up",
                            "--size", "64x48", "--fps", "50", "--loop"},
                           {"b\n.png", "a.png"});
    EXPECT_EQ(dryRunText(show, Schedule(show)),
              "2 pictures, 60 frames of 64x48 at 50 per second, 0:00:01.200, a loop\n"
              "time         frames  length       shows\n"
              "0:00:00.000  1-20    0:00:00.400  a.png\n"
              "0:00:00.400  21-30   0:00:00.200    push:direction=up, in-out, to b\\n.png\n"
              "0:00:00.600  31-50   0:00:00.400  b\\n.png\n"
              "0:00:01.000  51-60   0:00:00.200    push:direction=up, in-out, to a.png\n");
    const Show single = film({"--hold", "4000"}, {"a.png"});
    EXPECT_THAT(dryRunText(single, Schedule(single)),
                StartsWith("1 picture, 100000 frames of 1920x1080 at 25 per second, 1:06:40.000\n"));
}

TEST(ShowPlan, IsJsonLinesToo) {
    const Show show =
        film({"--hold", "2", "--duration", "1", "--transition", "zoom", "--ease", "in", "--fps", "29.97"},
             {"a\xFF.png", "b.png"});
    std::istringstream lines(dryRunJson(show, Schedule(show)));
    std::vector<nlohmann::json> all;
    for (std::string line; std::getline(lines, line);) all.push_back(nlohmann::json::parse(line));
    // The parts end at 59.94, 89.91 and 149.85 frames.
    ASSERT_EQ(all.size(), 4U);
    EXPECT_EQ(all[0]["shows"], "film");
    EXPECT_EQ(all[0]["pictures"], 2);
    EXPECT_EQ(all[0]["frames"], 150);
    EXPECT_EQ(all[0]["fps"], "30000/1001");
    EXPECT_EQ(all[0]["size"], "1920x1080");
    EXPECT_EQ(all[0]["loop"], false);
    EXPECT_DOUBLE_EQ(all[0]["seconds"], 150 * 1001 / 30000.0);
    EXPECT_EQ(all[1]["shows"], "picture");
    EXPECT_EQ(all[1]["firstFrame"], 1);
    EXPECT_EQ(all[1]["frames"], 60);
    EXPECT_EQ(all[1]["file"], "a\xEF\xBF\xBD.png");
    EXPECT_EQ(all[2]["shows"], "transition");
    EXPECT_EQ(all[2]["firstFrame"], 61);
    EXPECT_EQ(all[2]["frames"], 30);
    EXPECT_DOUBLE_EQ(all[2]["time"], 60 * 1001 / 30000.0);
    EXPECT_EQ(all[2]["transition"], "zoom:inout=in");
    EXPECT_EQ(all[2]["ease"], "in");
    EXPECT_EQ(all[2]["to"], "b.png");
    EXPECT_EQ(all[3]["firstFrame"], 91);
    EXPECT_EQ(all[3]["frames"], 60);
}
