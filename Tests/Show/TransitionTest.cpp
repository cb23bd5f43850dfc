#include "Show/Transition.h"

#include "Platform/Foundation/Exception.h"
#include "Show/KnownWords.h"

#include <gmock/gmock.h>

#include <set>

using namespace Imaging;
using testing::ElementsAre;

namespace {

using Type = TransitionParameter::Type;

std::string parsed(const std::string& text) { return transitionWithText(text).text(); }

template<class Call>
std::string complaint(const Call& call) {
    try {
        call();
        return "none";
    } catch (const Platform::NSException& exception) {
        EXPECT_EQ(exception.name(), Platform::NSInvalidArgumentException);
        return exception.reason();
    }
}

std::string textComplaint(const std::string& text) {
    return complaint([&] { transitionWithText(text); });
}

/// The numbers that a parameter's words stand for.
std::int32_t number(const std::string& text, std::size_t parameter = 0) {
    return transitionWithText(text).values.at(parameter).word;
}

std::vector<std::string> texts(const std::vector<Transition>& transitions) {
    std::vector<std::string> all;
    for (const Transition& transition : transitions) all.push_back(transition.text());
    return all;
}

std::vector<std::string> variantTexts(const std::string& name) {
    return texts(variantsOf(transitionKindNamed(name)));
}

} // namespace

TEST(Transition, HasDefaultsForAllParameters) {
    EXPECT_EQ(parsed("dissolve"), "dissolve");
    EXPECT_EQ(parsed("slide"), "slide:direction=left:inout=in");
    EXPECT_EQ(parsed("color-fade"), "color-fade:color=black:balance=0");
    for (const std::string& name : drawnKindNames()) {
        std::string expected = name;
        for (const TransitionParameter& parameter : transitionKindNamed(name).parameters)
            expected += ":" + parameter.name + "=" + parameter.byDefault;
        EXPECT_EQ(parsed(name), expected);
        EXPECT_EQ(makeTransition(name).text(), expected);
    }
}

TEST(Transition, ReadsWhatItWrites) {
    for (const std::string& name : drawnKindNames()) {
        for (const std::string& variant : variantTexts(name)) EXPECT_EQ(parsed(variant), variant);
    }
    EXPECT_EQ(parsed("slide:inout=out:direction=up"), "slide:direction=up:inout=out");
    EXPECT_EQ(parsed("color-fade:balance=-0.5:color=#ff8000"), "color-fade:color=#ff8000:balance=-0.5");
    const Transition fade = transitionWithText("color-fade:balance=-0.5:color=#ff8000");
    EXPECT_EQ(fade.values[0].color.redComponent(), 1.0F);
    EXPECT_EQ(fade.values[0].color.greenComponent(), 128.0F / 255);
    EXPECT_EQ(fade.values[1].number, -0.5F);
}

TEST(Transition, TurnsDirectionsThatPeopleSeeIntoThoseOfTheClasses) {
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

TEST(Transition, ComplainsInWordsThatHelp) {
    EXPECT_EQ(textComplaint("disolve"), "there is no transition named 'disolve'; known are " +
                                            enumeration(drawnKindNames()) + "; did you mean 'dissolve'?");
    EXPECT_EQ(textComplaint("dissolve:direction=up"),
              "the transition 'dissolve' has no parameters, so no 'direction'");
    EXPECT_EQ(textComplaint("slide:in-out=in"),
              "the transition 'slide' has no parameter named 'in-out'; known are direction and inout; did "
              "you mean 'inout'?");
    EXPECT_EQ(textComplaint("push:direction=lef"),
              "push:direction: there is no direction named 'lef'; known are left, right, up and down; did "
              "you mean 'left'?");
    EXPECT_EQ(textComplaint("push:left"), "'left' after 'push' is no parameter; give NAME:PARAMETER=VALUE, "
                                          "such as push:direction=up");
    EXPECT_EQ(textComplaint("push:direction=up:direction=up"),
              "the parameter 'direction' of 'push' is given twice");
    EXPECT_EQ(textComplaint("color-fade:balance=1.5"),
              "color-fade:balance: '1.5' is not a number from -1 to 1");
}

TEST(Transition, RefusesColoursThatLetSomethingThrough) {
    for (const TransitionKind& kind : transitionKinds()) {
        if (!whyNotDrawn(kind).empty()) continue;
        for (const TransitionParameter& parameter : kind.parameters) {
            if (parameter.type != Type::Color) continue;
            for (const std::string color : {"transparent", "#fff8", "#00ff00fe"}) {
                EXPECT_EQ(complaint([&] {
                              makeTransition(kind.name, {{parameter.name, color}});
                          }),
                          kind.name + ":" + parameter.name + ": '" + color +
                              "' lets something through, which a film cannot; give an opaque colour");
            }
            EXPECT_NO_THROW(makeTransition(kind.name, {{parameter.name, "#00ff00ff"}}));
        }
    }
    EXPECT_NE(textComplaint("color-fade:color=transparent"), "none");
}

TEST(Transition, TakesWholeNumbersInTheirRangeAlone) {
    const TransitionParameter slats{.name = "slats",
                                    .help = "How many",
                                    .type = Type::WholeNumber,
                                    .byDefault = "8",
                                    .low = 2,
                                    .high = 64};
    EXPECT_EQ(transitionValue(slats, "2").whole, 2);
    EXPECT_EQ(transitionValue(slats, "64").whole, 64);
    EXPECT_EQ(transitionValue(slats, "17").text, "17");
    for (const std::string text : {"1", "65", "8.5", "8.0", "", "many", "-3", " 8", "99999999999"}) {
        EXPECT_EQ(complaint([&] { transitionValue(slats, text); }),
                  "'" + text + "' is not a whole number from 2 to 64");
    }
}

TEST(Transition, HasAVariantForEachCombinationOfWords) {
    EXPECT_THAT(variantTexts("dissolve"), ElementsAre("dissolve"));
    EXPECT_THAT(variantTexts("zoom"), ElementsAre("zoom:inout=in", "zoom:inout=out"));
    EXPECT_THAT(variantTexts("wipe"), ElementsAre("wipe:direction=right", "wipe:direction=left",
                                                  "wipe:direction=down", "wipe:direction=up"));
    const std::vector<std::string> slides = variantTexts("slide");
    EXPECT_EQ(slides.size(), 8U);
    EXPECT_EQ(std::set(slides.begin(), slides.end()).size(), 8U);
    EXPECT_EQ(slides[0], "slide:direction=left:inout=in");
    for (const std::string& name : drawnKindNames()) EXPECT_EQ(variantTexts(name)[0], parsed(name));
}
