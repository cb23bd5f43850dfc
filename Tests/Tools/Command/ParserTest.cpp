#include "Tools/Command/Parser.h"

#include "Tools/Command/Messages.h"

#include <gmock/gmock.h>

using namespace Imaging::Tool;
using testing::ElementsAre;
using testing::HasSubstr;

namespace {

/// A command with two subcommands.
class Program {
public:
    Program() {
        parser.add({.name = "draw",
                    .summary = "Draw it",
                    .usage = "INPUT",
                    .details = "What it does.",
                    .examples = "  program draw a"},
                   {{"-s,--size", "SIZE", "How large", into(size)}, {"--fast", "", "Hurry", raise(isFast)}});
        parser.add({.name = "list", .summary = "List all"}, {});
    }

    std::string complaint(const std::vector<std::string>& arguments) {
        try {
            parser.parse(arguments);
            return "none";
        } catch (const UsageError& error) {
            return error.what();
        }
    }

    std::string size;
    bool isFast = false;
    Parser parser{
        {.name = "program", .summary = "Does things.", .usage = "SUBCOMMAND"}, "program 7", "The end"};
};

std::string complaint(const std::vector<std::string>& arguments) { return Program().complaint(arguments); }

} // namespace

TEST(Parser, TakesOptionsAndOperandsInAnyOrder) {
    Program program;
    const Parser::Result result = program.parser.parse({"draw", "a", "--size", "3", "[b,c]", "--fast", "-"});
    EXPECT_EQ(result.subcommand, 0U);
    EXPECT_EQ(program.parser.chosen(), 0U);
    EXPECT_THAT(result.operands, ElementsAre("a", "[b,c]", "-"));
    EXPECT_EQ(program.size, "") << "values wait";
    program.parser.fill();
    EXPECT_EQ(program.size, "3");
    EXPECT_TRUE(program.isFast);
}

TEST(Parser, TakesEverythingAfterTwoDashesAsOperands) {
    EXPECT_THAT(Program().parser.parse({"draw", "--fast", "--", "--size", "-x", "--"}).operands,
                ElementsAre("--size", "-x", "--"));
    EXPECT_THAT(Program().parser.parse({"draw", "++", "a"}).operands, ElementsAre("./++", "a"));
}

TEST(Parser, ShowsHelpAndVersionAndNothingElse) {
    EXPECT_EQ(Program().parser.parse({"--version"}).shown, "program 7\n");
    const std::string whole = Program().parser.parse({"--help"}).shown.value();
    EXPECT_THAT(whole, HasSubstr("Usage: program SUBCOMMAND\n"));
    EXPECT_THAT(whole, HasSubstr("draw"));
    EXPECT_THAT(whole, HasSubstr("The end"));
    const std::string help = Program().parser.parse({"draw", "--size", "x", "-h"}).shown.value();
    EXPECT_THAT(help, HasSubstr("Usage: program draw INPUT\n\nWhat it does."));
    EXPECT_THAT(help, HasSubstr("-s,--size SIZE"));
    EXPECT_THAT(help, HasSubstr("How large"));
    EXPECT_THAT(help, HasSubstr("The end\n\nExamples:\n  program draw a\n"));
}

TEST(Parser, SaysWhatIsWrongWithTheArgumentsInItsOwnWords) {
    EXPECT_EQ(complaint({}), "a subcommand is missing; known are draw and list");
    EXPECT_EQ(complaint({"darw"}), "there is no subcommand 'darw'; did you mean 'draw'?");
    EXPECT_EQ(complaint({"--version2"}), "there is no option '--version2'; did you mean '--version'?");
    EXPECT_EQ(complaint({"draw", "--siez=3"}), "there is no option '--siez'; did you mean '--size'?");
    EXPECT_EQ(complaint({"list", "--size", "3"}), "there is no option '--size'");
    EXPECT_EQ(complaint({"draw", "--size"}), "the option --size needs a value");
    EXPECT_EQ(complaint({"draw", "--size="}), "the option --size needs a value");
    EXPECT_EQ(complaint({"draw", "--fast=no"}), "the option --fast takes no value");
}

TEST(Parser, KnowsTheSubcommandAlsoWhereTheRestIsWrong) {
    Program program;
    EXPECT_EQ(program.complaint({"list", "--what"}), "there is no option '--what'");
    EXPECT_EQ(program.parser.chosen(), 1U);
    Program other;
    EXPECT_NE(other.complaint({"nothing"}), "none");
    EXPECT_EQ(other.parser.chosen(), std::nullopt);
}
