// Also tests: Tools/Commands/TransitionsCommand.cpp

#include "Tests/Tools/Support/Command.h"
#include "Tests/Tools/Support/TestPictures.h"

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <cstdlib>
#include <set>

using namespace TestSupport;
using testing::HasSubstr;
using testing::StartsWith;

namespace {

/// Frames of 40 x 20 pixels: a title of 15 pixels, then 4 between and around cells of 40 x 35, of which the
/// lower 15 are for a label.
constexpr int frameWidth = 40;
constexpr int frameHeight = 20;

class TransitionCommand : public testing::Test {
protected:
    /// The sheet of a transition from red to blue.
    Picture sheet(const std::string& kind, std::vector<std::string> options = {}) const {
        options.insert(options.begin(), {"transition", m_red, m_blue, "--kind", kind, "--cell", "40x20", "-o",
                                         m_folder.path("sheet.png")});
        const Result result = run(options);
        EXPECT_EQ(result.status, 0) << kind;
        EXPECT_EQ(result.err, "") << kind;
        EXPECT_EQ(result.out, "") << kind;
        return pictureOfPNG(m_folder.read("sheet.png"));
    }

    /// The frame at a weight of 0, 0.25, 0.5, 0.75 or 1.
    Picture frame(const std::string& kind, double weight, std::vector<std::string> options = {}) const {
        const Picture whole = sheet(kind, std::move(options));
        const int left = 4 + 44 * static_cast<int>(weight * 4);
        Picture cut(frameWidth, frameHeight, clear);
        for (int y = 0; y < frameHeight; ++y) {
            for (int x = 0; x < frameWidth; ++x) cut.at(x, y) = whole.at(left + x, 19 + y);
        }
        return cut;
    }

    /// The line that wrong usage ends with.
    void expectRefused(const std::vector<std::string>& options, const std::string& line) const {
        std::vector<std::string> arguments = {"transition", m_red, m_blue, "-o", m_folder.path("sheet.png")};
        arguments.insert(arguments.end(), options.begin(), options.end());
        const Result result = run(arguments);
        EXPECT_EQ(result.status, 2) << line;
        EXPECT_EQ(result.out, "");
        EXPECT_EQ(result.err, "imaging: transition: " + line + " (see 'imaging transition --help')\n");
        EXPECT_EQ(m_folder.count(), 2);
    }

    const TemporaryFolder m_folder;
    const std::string m_red = m_folder.write("a.png", pngOf(Picture(8, 4, red)));
    const std::string m_blue = m_folder.write("b.png", pngOf(Picture(8, 4, blue)));
};

/// A frame of one colour with a rectangle of another.
Picture framed(Pixel outside, int left, int top, int width, int height, Pixel inside) {
    Picture picture(frameWidth, frameHeight, outside);
    for (int y = top; y < top + height; ++y) {
        for (int x = left; x < left + width; ++x) picture.at(x, y) = inside;
    }
    return picture;
}

void expectNear(const Picture& actual, const Picture& expected, int tolerance, const std::string& what) {
    for (int y = 0; y < expected.height; ++y) {
        for (int x = 0; x < expected.width; ++x) {
            const Pixel a = actual.at(x, y);
            const Pixel b = expected.at(x, y);
            const bool isNear = std::abs(a.red - b.red) <= tolerance &&
                                std::abs(a.green - b.green) <= tolerance &&
                                std::abs(a.blue - b.blue) <= tolerance;
            ASSERT_TRUE(isNear) << what << ": " << a << " at " << x << ", " << y << " instead of " << b;
        }
    }
}

} // namespace

TEST_F(TransitionCommand, BeginsWithTheOnePictureAndEndsWithTheOther) {
    const nlohmann::json kinds = nlohmann::json::parse(run({"transitions", "--json"}).out);
    for (const nlohmann::json& kind : kinds) {
        if (!kind["available"].get<bool>()) continue;
        const auto name = kind["name"].get<std::string>();
        expectNear(frame(name, 0), Picture(frameWidth, frameHeight, red), 0, name);
        expectNear(frame(name, 1), Picture(frameWidth, frameHeight, blue), 0, name);
    }
}

TEST_F(TransitionCommand, MovesTheWayThatTheDirectionSays) {
    // A quarter of the way, what comes has come in by 10 columns or 5 rows, at the side away from which it
    // moves.
    for (const std::string kind : {"push", "slide", "wipe"}) {
        const std::string direction = kind + ":direction=";
        expectNear(frame(direction + "left", 0.25), framed(red, 30, 0, 10, 20, blue), 0, direction + "left");
        expectNear(frame(direction + "right", 0.25), framed(red, 0, 0, 10, 20, blue), 0, direction + "right");
        expectNear(frame(direction + "up", 0.25), framed(red, 0, 15, 40, 5, blue), 0, direction + "up");
        expectNear(frame(direction + "down", 0.25), framed(red, 0, 0, 40, 5, blue), 0, direction + "down");
    }
    // What goes has gone by as much.
    const std::string out = "slide:inout=out:direction=";
    expectNear(frame(out + "left", 0.25), framed(red, 30, 0, 10, 20, blue), 0, out + "left");
    expectNear(frame(out + "right", 0.25), framed(red, 0, 0, 10, 20, blue), 0, out + "right");
    expectNear(frame(out + "up", 0.25), framed(red, 0, 15, 40, 5, blue), 0, out + "up");
    expectNear(frame(out + "down", 0.25), framed(red, 0, 0, 40, 5, blue), 0, out + "down");
    // Two frames' widths go by, so that the panel has come half way in.
    const std::string changer = "slide-changer:color=lime:direction=";
    expectNear(frame(changer + "left", 0.25), framed(red, 20, 0, 20, 20, green), 0, changer + "left");
    expectNear(frame(changer + "right", 0.75), framed(green, 0, 0, 20, 20, blue), 0, changer + "right");
    expectNear(frame(changer + "up", 0.75), framed(green, 0, 10, 40, 10, blue), 0, changer + "up");
    expectNear(frame(changer + "down", 0.25), framed(red, 0, 0, 40, 10, green), 0, changer + "down");
    expectNear(frame(changer + "down", 0.5), Picture(frameWidth, frameHeight, green), 0, "the panel");
}

TEST_F(TransitionCommand, GrowsShrinksAndTurnsInTheMiddle) {
    for (const std::string kind : {"zoom", "iris"}) {
        expectNear(frame(kind, 0.5), framed(red, 10, 5, 20, 10, blue), 0, kind);
        expectNear(frame(kind + ":inout=out", 0.5), framed(blue, 10, 5, 20, 10, red), 0, kind);
    }
    // After half a turn a picture of half the size lies level again, half transparent.
    const Pixel mixed{128, 0, 128, 255};
    expectNear(frame("spin", 0.5), framed(red, 10, 5, 20, 10, mixed), 1, "spin");
    expectNear(frame("spin:inout=out", 0.5), framed(blue, 10, 5, 20, 10, mixed), 1, "spin out");
}

TEST_F(TransitionCommand, MixesColours) {
    const auto all = [](Pixel pixel) { return Picture(frameWidth, frameHeight, pixel); };
    expectNear(frame("dissolve", 0.25), all({191, 0, 64, 255}), 1, "dissolve");
    // Half way to the colour the old picture has lost half of its light, and the colour covers it by a half.
    expectNear(frame("color-fade:color=lime", 0.25), all({64, 128, 0, 255}), 1, "half way to the colour");
    // On the way from the colour both are added.
    expectNear(frame("color-fade:color=lime", 0.75), all({0, 128, 128, 255}), 1, "half way from the colour");
    expectNear(frame("color-fade:color=lime", 0.5), all(green), 1, "the colour");
    // All colour after a quarter; two thirds of what is left later it is one third there.
    expectNear(frame("color-fade:color=lime:balance=-0.5", 0.25), all(green), 1, "the colour early");
    expectNear(frame("color-fade:color=lime:balance=-0.5", 0.75), all({0, 85, 170, 255}), 1, "two thirds");
}

TEST_F(TransitionCommand, TakesParametersAsOptionsToo) {
    expectNear(frame("push", 0.25, {"--direction", "down"}), framed(red, 0, 0, 40, 5, blue), 0, "down");
    expectNear(frame("push:direction=up", 0.25, {"--direction", "down"}), framed(red, 0, 0, 40, 5, blue), 0,
               "the option counts");
    expectNear(frame("zoom", 0.5, {"--in-out", "out"}), framed(blue, 10, 5, 20, 10, red), 0, "out");
    expectNear(frame("color-fade", 0.25, {"--color", "lime", "--balance", "-0.5"}),
               Picture(frameWidth, frameHeight, green), 1, "fade");
}

TEST_F(TransitionCommand, EasesItsWeights) {
    // The cube of a half is an eighth: 5 columns.
    expectNear(frame("push", 0.5, {"--ease", "in"}), framed(red, 35, 0, 5, 20, blue), 0, "in");
    expectNear(frame("push", 0.5, {"--ease", "out"}), framed(red, 5, 0, 35, 20, blue), 0, "out");
}

TEST_F(TransitionCommand, LaysFramesOutWithLabels) {
    const Picture five = sheet("push");
    EXPECT_EQ(five.width, 5 * 44 + 4);
    EXPECT_EQ(five.height, 15 + 39 + 4);
    const Picture nine = sheet("push", {"--weights", "9", "--columns", "2"});
    EXPECT_EQ(nine.width, 2 * 44 + 4);
    EXPECT_EQ(nine.height, 15 + 5 * 39 + 4);
    EXPECT_EQ(sheet("push", {"--weights", "9"}).width, 4 * 44 + 4);
    // There is lettering above the frames and below each, and none beside the last one.
    const auto hasLetters = [&](const Picture& picture, int left, int top, int width, int height) {
        for (int y = top; y < top + height; ++y) {
            for (int x = left; x < left + width; ++x) {
                if (picture.at(x, y) != Pixel{54, 54, 54, 255}) return true;
            }
        }
        return false;
    };
    EXPECT_TRUE(hasLetters(five, 0, 0, five.width, 19));
    for (int i = 0; i < 5; ++i) EXPECT_TRUE(hasLetters(five, 4 + 44 * i, 39, 40, 15)) << i;
    EXPECT_FALSE(hasLetters(nine, 48, 19 + 4 * 39, 40, 39));
}

TEST_F(TransitionCommand, PutsTheBackgroundBehindPicturesOfAnotherShape) {
    const std::string square = m_folder.write("c.png", pngOf(Picture(6, 6, red)));
    const auto first = [&](const std::vector<std::string>& options) {
        std::vector<std::string> arguments = {"transition", square, m_blue,
                                              "--kind",     "zoom", "--cell",
                                              "40x20",      "-o",   m_folder.path("sheet.png")};
        arguments.insert(arguments.end(), options.begin(), options.end());
        EXPECT_EQ(run(arguments).status, 0);
        const Picture whole = pictureOfPNG(m_folder.read("sheet.png"));
        return std::vector{whole.at(4, 25), whole.at(13, 25), whole.at(14, 25), whole.at(33, 25),
                           whole.at(34, 25)};
    };
    EXPECT_EQ(first({}), (std::vector{black, black, red, red, black}));
    EXPECT_EQ(first({"--background", "yellow"}), (std::vector{yellow, yellow, red, red, yellow}));
    EXPECT_EQ(first({"--fit", "cover"}), (std::vector{red, red, red, red, red}));
}

TEST_F(TransitionCommand, LeavesNoLinesWherePicturesMeet) {
    const std::string light = m_folder.write("c.png", pngOf(Picture(8, 4, white)));
    for (const std::string kind : {"push", "push:direction=up", "wipe", "wipe:direction=down", "slide",
                                   "slide-changer:color=white", "slide-changer:color=white:direction=up"}) {
        const Result result =
            run({"transition", light, light, "--kind", kind, "--cell", "41x23", "--fit", "stretch",
                 "--weights", "8", "--columns", "8", "-o", m_folder.path("sheet.png")});
        ASSERT_EQ(result.status, 0);
        const Picture whole = pictureOfPNG(m_folder.read("sheet.png"));
        for (int i = 0; i < 8; ++i) {
            for (int y = 19; y < 19 + 23; ++y) {
                for (int x = 4 + 45 * i; x < 45 + 45 * i; ++x)
                    ASSERT_EQ(whole.at(x, y), white) << kind << ' ' << i << ' ' << x << ' ' << y;
            }
        }
    }
}

TEST_F(TransitionCommand, SaysWhatIsWrongWithItsOptions) {
    std::vector<std::string> names;
    for (const nlohmann::json& kind : nlohmann::json::parse(run({"transitions", "--json"}).out)) {
        if (kind["available"]) names.push_back(kind["name"]);
    }
    std::string known = names.front();
    for (std::size_t i = 1; i < names.size(); ++i)
        known += (i + 1 < names.size() ? ", " : " and ") + names[i];
    expectRefused({}, "the transition is missing: --kind NAME; known are " + known);
    expectRefused({"--kind", "irsi"}, "--kind: there is no transition named 'irsi'; known are " + known +
                                          "; did you mean 'iris'?");
    expectRefused({"--kind", "cube"},
                  "--kind: the transition 'cube' needs OpenGL, which this version does not draw with yet");
    expectRefused({"--kind", "zoom", "--direction", "left"},
                  "--kind: the transition 'zoom' has no parameter named 'direction'; known is inout");
    expectRefused(
        {"--kind", "push", "--direction", "north"},
        "--kind: push:direction: there is no direction named 'north'; known are left, right, up and "
        "down");
    expectRefused({"--kind", "color-fade", "--balance", "2"},
                  "--kind: color-fade:balance: '2' is not a number from -1 to 1");
    expectRefused({"--kind", "zoom", "--weights", "1"},
                  "--weights: '1' is not a whole number from 2 to 1000");
    expectRefused({"--kind", "zoom", "--columns", "0"},
                  "--columns: '0' is not a whole number from 1 to 1000");
    expectRefused({"--kind", "zoom", "--cell", "15x20"},
                  "--cell: '15x20' is too small; each side takes at least 16 pixels");
    expectRefused({"--kind", "zoom", "--ease", "fast"},
                  "--ease: there is no easing named 'fast'; known are linear, in, out and in-out");
    expectRefused({"--kind", "zoom", "--fit", "tight"},
                  "--fit: there is no way to fit named 'tight'; known are contain, cover and stretch");
    expectRefused({"--kind", "zoom", "--background", "#0000"},
                  "--background: '#0000' lets something through, which a film cannot; give an opaque colour");
    expectRefused({"--kind", "zoom", m_red}, "'" + m_red + "' is one too many: this takes two pictures");
}

TEST_F(TransitionCommand, HasAnOptionForEveryParameterOfEveryKind) {
    const std::string help = run({"transition", "--help"}).out;
    int count = 0;
    for (const nlohmann::json& kind : nlohmann::json::parse(run({"transitions", "--json"}).out)) {
        for (const nlohmann::json& parameter : kind["parameters"]) {
            const std::string name = parameter["name"];
            EXPECT_THAT(help, HasSubstr("--" + name));
            if (!kind["available"]) continue;
            const Result result =
                run({"transition", m_red, m_blue, "--kind", kind["name"], "--" + name, parameter["default"],
                     "--cell", "16x16", "-o", m_folder.path("sheet.png")});
            EXPECT_EQ(result.err, "") << kind["name"] << " " << name;
            ++count;
        }
    }
    EXPECT_GT(count, 5);
}

TEST_F(TransitionCommand, RefusesColoursThatLetSomethingThrough) {
    expectRefused(
        {"--kind", "color-fade:color=transparent"},
        "--kind: color-fade:color: 'transparent' lets something through, which a film cannot; give an "
        "opaque colour");
    expectRefused(
        {"--kind", "slide-changer", "--color", "#ff000080"},
        "--kind: slide-changer:color: '#ff000080' lets something through, which a film cannot; give an "
        "opaque colour");
}

TEST_F(TransitionCommand, NeedsTwoPictures) {
    const auto line = [](const std::vector<std::string>& arguments) {
        const Result result = run(arguments);
        EXPECT_EQ(result.status, 2);
        return result.err;
    };
    EXPECT_THAT(line({"transition", "--kind", "zoom", "-o", "x.png"}),
                StartsWith("imaging: transition: the picture that a transition begins with is missing ("));
    EXPECT_THAT(line({"transition", m_red, "--kind", "zoom", "-o", "x.png"}),
                StartsWith("imaging: transition: the picture that a transition ends with is missing ("));
    EXPECT_THAT(line({"transition", "-", "-", "--kind", "zoom", "-o", "x.png"}),
                StartsWith("imaging: transition: standard input cannot be both pictures ("));
    EXPECT_THAT(line({"transition", m_red, m_blue, "--kind", "zoom"}),
                StartsWith("imaging: transition: the output is missing"));
}

TEST_F(TransitionCommand, NamesPicturesThatCannotBeReadAndLeavesNothing) {
    const Result result =
        run({"transition", m_red, "/nowhere/b.png", "--kind", "zoom", "-o", m_folder.path("sheet.png")});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.err, "imaging: /nowhere/b.png: there is no such file\n");
    EXPECT_EQ(m_folder.count(), 2);
    const Result large = run({"transition", m_red, m_blue, "--kind", "zoom", "--cell", "9000x100", "-o",
                              m_folder.path("sheet.png")});
    EXPECT_EQ(large.status, 1);
    EXPECT_THAT(large.err, testing::EndsWith("; choose a smaller --cell or fewer --weights\n"));
    EXPECT_EQ(m_folder.count(), 2);
}

TEST(TransitionsCommand, ListsEveryKindWithItsParameters) {
    const Result result = run({"transitions"});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.err, "");
    EXPECT_THAT(result.out, StartsWith("dissolve       The new picture appears as the old one disappears\n"
                                       "spin           "));
    EXPECT_THAT(result.out,
                HasSubstr("\ncube           The pictures are on two sides of a cube that turns\n"
                          "               It needs OpenGL, which this version does not draw with yet\n"));
    EXPECT_THAT(result.out, HasSubstr("                 direction=left|right|up|down (left)\n"));
    EXPECT_THAT(result.out, HasSubstr("                 color=COLOR (black)\n"));
    EXPECT_THAT(result.out, HasSubstr("                 balance=-1...1 (0)\n"));
}

TEST(TransitionsCommand, IsJsonToo) {
    const Result result = run({"transitions", "--json"});
    EXPECT_EQ(result.status, 0);
    const nlohmann::json kinds = nlohmann::json::parse(result.out);
    std::set<std::string> names;
    for (const nlohmann::json& kind : kinds) {
        names.insert(kind["name"]);
        EXPECT_EQ(kind["available"].get<bool>(), kind["name"] != "cube");
        EXPECT_FALSE(kind["summary"].get<std::string>().empty());
    }
    EXPECT_EQ(names.size(), kinds.size());
    const std::string list = run({"transitions"}).out;
    for (const std::string& name : names) EXPECT_THAT("\n" + list, HasSubstr("\n" + name + " "));
    const auto kindNamed = [&](const std::string& name) {
        return *std::find_if(kinds.begin(), kinds.end(),
                             [&](const auto& kind) { return kind["name"] == name; });
    };
    const nlohmann::json slide = kindNamed("slide");
    EXPECT_EQ(slide["parameters"][0]["name"], "direction");
    EXPECT_EQ(slide["parameters"][0]["type"], "word");
    EXPECT_EQ(slide["parameters"][0]["default"], "left");
    EXPECT_EQ(slide["parameters"][0]["words"], (nlohmann::json{"left", "right", "up", "down"}));
    const nlohmann::json balance = kindNamed("color-fade")["parameters"][1];
    EXPECT_EQ(balance["type"], "number");
    EXPECT_EQ(balance["low"], -1);
    EXPECT_EQ(balance["high"], 1);
}

TEST(TransitionsCommand, TakesNoInput) {
    const Result result = run({"transitions", "zoom"});
    EXPECT_EQ(result.status, 2);
    EXPECT_EQ(result.err, "imaging: transitions: 'zoom' is too many: this takes no input (see 'imaging "
                          "transitions --help')\n");
}
