#include "Show/TransitionChoice.h"

#include "Platform/Foundation/Exception.h"

#include <gmock/gmock.h>

#include <set>

using namespace Imaging;
using testing::ElementsAre;

namespace {

std::vector<std::string> first(const TransitionChoice& choice, std::size_t count) {
    std::vector<std::string> all;
    for (std::size_t i = 0; i < count; ++i) all.push_back(choice.at(i).text());
    return all;
}

std::string complaint(const std::string& text) {
    try {
        static_cast<void>(TransitionChoice(text, 1));
        return "none";
    } catch (const Platform::NSException& exception) {
        return exception.reason();
    }
}

} // namespace

TEST(TransitionChoice, GoesThroughAListAgainAndAgain) {
    EXPECT_THAT(first(TransitionChoice("zoom", 1), 3),
                ElementsAre("zoom:inout=in", "zoom:inout=in", "zoom:inout=in"));
    EXPECT_THAT(
        first(TransitionChoice("push:direction=up,dissolve", 1), 5),
        ElementsAre("push:direction=up", "dissolve", "push:direction=up", "dissolve", "push:direction=up"));
}

TEST(TransitionChoice, TakesAllKindsInTurnAndTheirVariantsRoundByRound) {
    const std::vector<std::string> names = drawnKindNames();
    const TransitionChoice choice("all", 1);
    for (std::size_t i = 0; i < 12 * names.size(); ++i) {
        const std::vector<Transition> variants = variantsOf(transitionKindNamed(names[i % names.size()]));
        EXPECT_EQ(choice.at(i).text(), variants[i / names.size() % variants.size()].text()) << i;
    }
    EXPECT_EQ(choice.at(names.size()).text(), "dissolve");
}

TEST(TransitionChoice, NeverTakesAKindTwiceInARowAtRandom) {
    for (const std::uint64_t seed : {0ULL, 1ULL, 2ULL, 77ULL, ~0ULL}) {
        SCOPED_TRACE(seed);
        const TransitionChoice choice("random", seed);
        std::set<std::string> seen;
        const TransitionKind* before = nullptr;
        for (std::size_t i = 0; i < 1000; ++i) {
            const Transition transition = choice.at(i);
            EXPECT_NE(transition.kind, before) << i;
            EXPECT_FALSE(transition.kind->needsOpenGL);
            before = transition.kind;
            seen.insert(transition.text());
        }
        // The rarest come about every 72nd time.
        std::size_t variants = 0;
        for (const std::string& name : drawnKindNames())
            variants += variantsOf(transitionKindNamed(name)).size();
        EXPECT_EQ(seen.size(), variants);
    }
}

TEST(TransitionChoice, MakesTheSameRandomChoicesForASeed) {
    const std::vector<std::string> once = first(TransitionChoice("random", 5), 300);
    const TransitionChoice again("random", 5);
    for (std::size_t i = 300; i-- > 0;) EXPECT_EQ(again.at(i).text(), once[i]) << i;
    EXPECT_NE(first(TransitionChoice("random", 6), 300), once);
}

TEST(TransitionChoice, ComplainsAboutListsThatAreNone) {
    EXPECT_EQ(complaint("zoom,all"), "'all' stands alone; a list is of transitions by name");
    EXPECT_EQ(complaint("random,zoom"), "'random' stands alone; a list is of transitions by name");
    EXPECT_THAT(complaint("zoom,"), testing::StartsWith("there is no transition named ''"));
    EXPECT_THAT(complaint("zoom,cube"), testing::HasSubstr("needs OpenGL"));
    EXPECT_EQ(complaint("all"), "none");
}
