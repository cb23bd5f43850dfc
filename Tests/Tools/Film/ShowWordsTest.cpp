#include "Tools/Film/ShowWords.h"

#include "Tools/Command/Messages.h"

#include <gmock/gmock.h>

using namespace Imaging;
using namespace Imaging::Tool;

namespace {

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
    return complaint([&] { parseTransitionChoice(text, "--transition", 1); });
}

} // namespace

TEST(ShowWords, ComplainAboutTransitionsInWordsThatHelp) {
    EXPECT_EQ(parseComplaint("disolve"), "--transition: there is no transition named 'disolve'; known are " +
                                             enumeration(drawnKindNames()) + "; did you mean 'dissolve'?");
    EXPECT_EQ(parseComplaint(""),
              "--transition: there is no transition named ''; known are " + enumeration(drawnKindNames()));
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

TEST(ShowWords, ComplainAboutListsThatAreNone) {
    EXPECT_EQ(choiceComplaint("zoom,all"),
              "--transition: 'all' stands alone; a list is of transitions by name");
    EXPECT_EQ(choiceComplaint("random,zoom"),
              "--transition: 'random' stands alone; a list is of transitions by name");
    EXPECT_THAT(choiceComplaint("zoom,"),
                testing::StartsWith("--transition: there is no transition named ''"));
    EXPECT_THAT(choiceComplaint("zoom,cube"), testing::HasSubstr("needs OpenGL"));
    EXPECT_EQ(choiceComplaint("all"), "none");
}

TEST(ShowWords, ComplainAboutEasings) {
    EXPECT_EQ(parseEasing("in-out", "--ease"), Easing::InOut);
    EXPECT_EQ(complaint([] { parseEasing("inout", "--ease"); }),
              "--ease: there is no easing named 'inout'; known are linear, in, out and "
              "in-out; did you mean 'in-out'?");
}

TEST(ShowWords, RefuseColoursOfTransitionsThatLetSomethingThrough) {
    EXPECT_EQ(
        parseComplaint("color-fade:color=transparent"),
        "--transition: color-fade:color: 'transparent' lets something through, which a film cannot; give "
        "an opaque colour");
    EXPECT_EQ(parseComplaint("slide-changer:color=#ff000080"),
              "--transition: slide-changer:color: '#ff000080' lets something through, which a film cannot; "
              "give an opaque colour");
    EXPECT_EQ(parseComplaint("color-fade:color=#ff0000ff"), "none");
}

TEST(ShowWords, SayWhichOptionsMakeAFilmPossible) {
    Show show;
    show.pictures.resize(47);
    for (ShowPicture& picture : show.pictures) picture.hold = picture.next.duration = 0;
    EXPECT_EQ(complaint([&] { scheduleOf(show); }),
              "the film would have no frame; give its pictures a longer --hold or --duration");
    for (ShowPicture& picture : show.pictures) picture.hold = 86400;
    EXPECT_EQ(
        complaint([&] { scheduleOf(show); }),
        "the film would have more than 100000000 frames; take fewer pictures, shorter times or a smaller "
        "--fps");
    show.pictures.resize(2);
    EXPECT_EQ(scheduleOf(show).parts().size(), 2U);
}
