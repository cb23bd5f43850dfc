#include "Show/TransitionKinds.h"

#include "Tools/Command/Messages.h"

#include <gmock/gmock.h>

#include <set>

using namespace Imaging::Tool;
using testing::ElementsAre;

namespace {

std::string parsed(const std::string& text) { return parseTransition(text, "--transition").text(); }

template<class Call>
std::string complaint(const Call& call) {
    try {
        call();
        return "none";
    } catch (const UsageError& error) {
        return error.what();
    }
}

std::string parseComplaint(const std::string& text) {
    return complaint([&] { parseTransition(text, "--transition"); });
}

std::string choiceComplaint(const std::string& text) {
    return complaint([&] { TransitionChoice(text, "--transition", 1); });
}

/// The numbers that a parameter's words stand for.
std::int32_t number(const std::string& text, std::size_t parameter = 0) {
    return parseTransition(text, "x").values.at(parameter).word;
}

std::vector<std::string> texts(const std::vector<Transition>& transitions) {
    std::vector<std::string> all;
    for (const Transition& transition : transitions) all.push_back(transition.text());
    return all;
}

std::vector<std::string> first(const TransitionChoice& choice, std::size_t count) {
    std::vector<std::string> all;
    for (std::size_t i = 0; i < count; ++i) all.push_back(choice.at(i).text());
    return all;
}

const TransitionKind& kind(const std::string& name) {
    for (const TransitionKind& one : transitionKinds()) {
        if (one.name == name) return one;
    }
    throw std::runtime_error("no kind " + name);
}

} // namespace

TEST(TransitionKinds, HaveDefaultsForAllParameters) {
    EXPECT_EQ(parsed("dissolve"), "dissolve");
    EXPECT_EQ(parsed("spin"), "spin:inout=in");
    EXPECT_EQ(parsed("push"), "push:direction=left");
    EXPECT_EQ(parsed("slide"), "slide:direction=left:inout=in");
    EXPECT_EQ(parsed("wipe"), "wipe:direction=right");
    EXPECT_EQ(parsed("slide-changer"), "slide-changer:direction=left:color=black");
    EXPECT_EQ(parsed("zoom"), "zoom:inout=in");
    EXPECT_EQ(parsed("iris"), "iris:inout=in");
    EXPECT_EQ(parsed("color-fade"), "color-fade:color=black:balance=0");
}

TEST(TransitionKinds, ReadWhatTheyWrite) {
    for (const TransitionKind& one : transitionKinds()) {
        if (one.needsOpenGL) continue;
        for (const Transition& variant : variantsOf(one)) EXPECT_EQ(parsed(variant.text()), variant.text());
    }
    EXPECT_EQ(parsed("slide:inout=out:direction=up"), "slide:direction=up:inout=out");
    EXPECT_EQ(parsed("color-fade:balance=-0.5:color=#ff8000"), "color-fade:color=#ff8000:balance=-0.5");
    const Transition fade = parseTransition("color-fade:balance=-0.5:color=#ff8000", "x");
    EXPECT_EQ(fade.values[0].color.redComponent(), 1.0F);
    EXPECT_EQ(fade.values[0].color.greenComponent(), 128.0F / 255);
    EXPECT_EQ(fade.values[1].number, -0.5F);
}

TEST(TransitionKinds, TurnDirectionsThatPeopleSeeIntoThoseOfTheClasses) {
    for (const std::string name : {"push", "slide"}) {
        EXPECT_EQ(number(name + ":direction=left"), 1);
        EXPECT_EQ(number(name + ":direction=right"), 2);
        EXPECT_EQ(number(name + ":direction=up"), 3);
        EXPECT_EQ(number(name + ":direction=down"), 4);
    }
    for (const std::string name : {"wipe", "slide-changer"}) {
        EXPECT_EQ(number(name + ":direction=right"), 1);
        EXPECT_EQ(number(name + ":direction=left"), 2);
        EXPECT_EQ(number(name + ":direction=down"), 3);
        EXPECT_EQ(number(name + ":direction=up"), 4);
    }
    EXPECT_EQ(number("slide:inout=in", 1), 1);
    EXPECT_EQ(number("slide:inout=out", 1), 2);
}

TEST(TransitionKinds, ComplainInWordsThatHelp) {
    EXPECT_EQ(parseComplaint("disolve"),
              "--transition: there is no transition named 'disolve'; known are dissolve, spin, push, slide, "
              "wipe, slide-changer, zoom, iris and color-fade; did you mean 'dissolve'?");
    EXPECT_EQ(parseComplaint(""), "--transition: there is no transition named ''; known are dissolve, spin, "
                                  "push, slide, wipe, slide-changer, zoom, iris and color-fade");
    EXPECT_EQ(parseComplaint("cube"),
              "--transition: the transition 'cube' needs OpenGL, which this version does not draw with yet");
    EXPECT_EQ(parseComplaint("dissolve:direction=up"),
              "--transition: the transition 'dissolve' has no parameters, so no 'direction'");
    EXPECT_EQ(parseComplaint("slide:in-out=in"),
              "--transition: the transition 'slide' has no parameter named 'in-out'; known are direction and "
              "inout; did you mean 'inout'?");
    EXPECT_EQ(parseComplaint("push:colour=red"),
              "--transition: the transition 'push' has no parameter named 'colour'; known is direction");
    EXPECT_EQ(
        parseComplaint("push:direction=lef"),
        "--transition: push:direction: there is no direction named 'lef'; known are left, right, up and "
        "down; did you mean 'left'?");
    EXPECT_EQ(parseComplaint("push:left"), "--transition: 'left' after 'push' is no parameter; give "
                                           "NAME:PARAMETER=VALUE, such as push:direction=up");
    EXPECT_EQ(parseComplaint("push:"), "--transition: '' after 'push' is no parameter; give "
                                       "NAME:PARAMETER=VALUE, such as push:direction=up");
    EXPECT_EQ(parseComplaint("push:direction=up:direction=up"),
              "--transition: the parameter 'direction' of 'push' is given twice");
    for (const std::string balance : {"1.5", "-1.01", "nan", "", "middle", "0,5", "1 "}) {
        EXPECT_EQ(parseComplaint("color-fade:balance=" + balance),
                  "--transition: color-fade:balance: '" + balance + "' is not a number from -1 to 1");
    }
    EXPECT_THAT(parseComplaint("color-fade:color=blak"),
                testing::StartsWith("--transition: color-fade:color: 'blak' is no colour; known are "));
}

TEST(TransitionKinds, HaveAVariantForEachCombinationOfWords) {
    EXPECT_THAT(texts(variantsOf(kind("dissolve"))), ElementsAre("dissolve"));
    EXPECT_THAT(texts(variantsOf(kind("zoom"))), ElementsAre("zoom:inout=in", "zoom:inout=out"));
    EXPECT_THAT(texts(variantsOf(kind("wipe"))), ElementsAre("wipe:direction=right", "wipe:direction=left",
                                                             "wipe:direction=down", "wipe:direction=up"));
    const std::vector<std::string> slides = texts(variantsOf(kind("slide")));
    EXPECT_EQ(slides.size(), 8U);
    EXPECT_EQ(std::set(slides.begin(), slides.end()).size(), 8U);
    EXPECT_EQ(slides[0], "slide:direction=left:inout=in");
    for (const TransitionKind& one : transitionKinds()) {
        if (one.needsOpenGL) continue;
        EXPECT_EQ(variantsOf(one)[0].text(), parsed(one.name));
    }
}

TEST(TransitionChoice, GoesThroughAListAgainAndAgain) {
    EXPECT_THAT(first(TransitionChoice("zoom", "x", 1), 3),
                ElementsAre("zoom:inout=in", "zoom:inout=in", "zoom:inout=in"));
    EXPECT_THAT(
        first(TransitionChoice("push:direction=up,dissolve", "x", 1), 5),
        ElementsAre("push:direction=up", "dissolve", "push:direction=up", "dissolve", "push:direction=up"));
}

TEST(TransitionChoice, TakesAllKindsInTurnAndTheirVariantsRoundByRound) {
    const std::vector<std::string> all = first(TransitionChoice("all", "x", 1), 27);
    EXPECT_THAT(std::vector(all.begin(), all.begin() + 9),
                ElementsAre("dissolve", "spin:inout=in", "push:direction=left",
                            "slide:direction=left:inout=in", "wipe:direction=right",
                            "slide-changer:direction=left:color=black", "zoom:inout=in", "iris:inout=in",
                            "color-fade:color=black:balance=0"));
    EXPECT_THAT(std::vector(all.begin() + 9, all.begin() + 18),
                ElementsAre("dissolve", "spin:inout=out", "push:direction=right",
                            "slide:direction=right:inout=in", "wipe:direction=left",
                            "slide-changer:direction=down:color=black", "zoom:inout=out", "iris:inout=out",
                            "color-fade:color=black:balance=0"));
    EXPECT_EQ(all[19], "spin:inout=in"); // which has two
    EXPECT_EQ(all[20], "push:direction=up");
}

TEST(TransitionChoice, NeverTakesAKindTwiceInARowAtRandom) {
    for (const std::uint64_t seed : {0ULL, 1ULL, 2ULL, 77ULL, ~0ULL}) {
        SCOPED_TRACE(seed);
        const TransitionChoice choice("random", "x", seed);
        std::set<std::string> seen;
        const TransitionKind* before = nullptr;
        for (std::size_t i = 0; i < 1000; ++i) {
            const Transition transition = choice.at(i);
            EXPECT_NE(transition.kind, before) << i;
            EXPECT_FALSE(transition.kind->needsOpenGL);
            before = transition.kind;
            seen.insert(transition.text());
        }
        // 1 + 2 + 4 + 8 + 4 + 4 + 2 + 2 + 1 variants, the rarest of which comes about every 72nd time.
        EXPECT_EQ(seen.size(), 28U);
    }
}

TEST(TransitionChoice, MakesTheSameRandomChoicesForASeed) {
    const std::vector<std::string> once = first(TransitionChoice("random", "x", 5), 300);
    const TransitionChoice again("random", "x", 5);
    for (std::size_t i = 300; i-- > 0;) EXPECT_EQ(again.at(i).text(), once[i]) << i;
    EXPECT_NE(first(TransitionChoice("random", "x", 6), 300), once);
}

TEST(TransitionChoice, ComplainsAboutListsThatAreNone) {
    EXPECT_EQ(choiceComplaint("zoom,all"),
              "--transition: 'all' stands alone; a list is of transitions by name");
    EXPECT_EQ(choiceComplaint("random,zoom"),
              "--transition: 'random' stands alone; a list is of transitions by name");
    EXPECT_THAT(choiceComplaint("zoom,"),
                testing::StartsWith("--transition: there is no transition named ''"));
    EXPECT_THAT(choiceComplaint("zoom,cube"), testing::HasSubstr("needs OpenGL"));
    EXPECT_EQ(choiceComplaint("all"), "none");
}
