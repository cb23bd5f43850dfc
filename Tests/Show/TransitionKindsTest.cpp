#include "Show/TransitionKinds.h"

#include "Platform/Foundation/Exception.h"
#include "Show/KnownWords.h"
#include "Show/Transition.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <set>

using namespace Imaging;
using testing::Contains;

namespace {

using Type = TransitionParameter::Type;

std::string nameComplaint(const std::string& name) {
    try {
        transitionKindNamed(name);
        return "none";
    } catch (const Platform::NSException& exception) {
        return exception.reason();
    }
}

} // namespace

TEST(TransitionKinds, HaveNamesOfTheirOwnAndWordsForPeople) {
    std::set<std::string> names;
    for (const TransitionKind& kind : transitionKinds()) {
        SCOPED_TRACE(kind.name);
        EXPECT_TRUE(names.insert(kind.name).second);
        EXPECT_EQ(kind.name.find_first_of(":=, "), std::string::npos)
            << "which the text forms give a meaning";
        EXPECT_FALSE(kind.summary.empty());
        EXPECT_NE(kind.build, nullptr);
    }
    EXPECT_THAT(names, testing::IsSupersetOf({"dissolve", "push", "color-fade"}));
}

TEST(TransitionKinds, HaveParametersWhoseDefaultsAreRight) {
    for (const TransitionKind& kind : transitionKinds()) {
        std::set<std::string> names;
        for (const TransitionParameter& parameter : kind.parameters) {
            SCOPED_TRACE(kind.name + ":" + parameter.name);
            EXPECT_TRUE(names.insert(parameter.name).second);
            EXPECT_FALSE(parameter.help.empty());
            const bool isNumber = parameter.type == Type::Number || parameter.type == Type::WholeNumber;
            EXPECT_EQ(isNumber, parameter.low < parameter.high);
            EXPECT_EQ(parameter.type == Type::Word, !parameter.words.empty());
            EXPECT_NO_THROW(transitionValue(parameter, parameter.byDefault));
        }
    }
}

TEST(TransitionKinds, TellTheParametersOfAllKindsOnce) {
    const std::vector<TransitionParameter> all = transitionParameters();
    const auto named = [&](const std::string& name) {
        return std::count_if(all.begin(), all.end(), [&](const auto& one) { return one.name == name; });
    };
    for (const TransitionKind& kind : transitionKinds()) {
        for (const TransitionParameter& parameter : kind.parameters)
            EXPECT_EQ(named(parameter.name), 1) << parameter.name;
    }
    EXPECT_EQ(named("direction"), 1);
    EXPECT_EQ(named("slant"), 0);
}

TEST(TransitionKinds, AreFoundByTheirNames) {
    for (const std::string& name : drawnKindNames()) EXPECT_EQ(transitionKindNamed(name).name, name);
    const std::string known = enumeration(drawnKindNames());
    EXPECT_EQ(nameComplaint("disolve"),
              "there is no transition named 'disolve'; known are " + known + "; did you mean 'dissolve'?");
    EXPECT_EQ(nameComplaint(""), "there is no transition named ''; known are " + known);
    EXPECT_THAT(drawnKindNames(), Contains("dissolve"));
}

TEST(TransitionKinds, SayWhyTheyCannotBeDrawn) {
    const TransitionKind flat{.name = "flat", .summary = "A kind"};
    EXPECT_EQ(whyNotDrawn(flat), "");
    for (const TransitionKind& kind : transitionKinds()) {
        SCOPED_TRACE(kind.name);
        const bool isDrawn = whyNotDrawn(kind).empty();
        const std::vector<std::string> names = drawnKindNames();
        const bool isListed = std::find(names.begin(), names.end(), kind.name) != names.end();
        EXPECT_EQ(isDrawn, isListed);
        EXPECT_EQ(nameComplaint(kind.name),
                  isDrawn ? "none" : "the transition '" + kind.name + "' " + whyNotDrawn(kind));
    }
}
