#include "Tests/Tools/Support/Command.h"

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

using namespace TestSupport;
using testing::HasSubstr;
using testing::Not;

namespace {

/// No driver is found where there is no folder of drivers.
const Surroundings withoutDrivers = {
    .environment = {{"__EGL_VENDOR_LIBRARY_DIRS", "/nonexistent"}, {"__EGL_VENDOR_LIBRARY_FILENAMES", ""}}};

} // namespace

TEST(DoctorCommand, TellsWhatEachKindOfContextCanDo) {
    const Result result = run({"doctor"});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.err, "");
    for (const char* text :
         {"OpenGL, fixed function\n", "OpenGL, core\n", "OpenGL, ES\n", "  version   ", "  renderer   ",
          "  largest texture   ", "  tiles               up to 512 pixels"}) {
        EXPECT_THAT(result.out, HasSubstr(text));
    }
    EXPECT_THAT(result.out, Not(HasSubstr("extensions")));
    EXPECT_THAT(run({"doctor", "--extensions"}).out, HasSubstr("  extensions          GL_"));
}

TEST(DoctorCommand, WritesTheSameAsJson) {
    const Result result = run({"doctor", "--json"});
    EXPECT_EQ(result.status, 0);
    const auto json = nlohmann::json::parse(result.out);
    ASSERT_EQ(json.size(), 3U);
    EXPECT_EQ(json[0]["kind"], "fixed function");
    EXPECT_EQ(json[1]["kind"], "core");
    EXPECT_EQ(json[2]["kind"], "ES");
    EXPECT_EQ(json[2]["largestRectangleTexture"], 0);
    for (const auto& kind : json) {
        EXPECT_TRUE(kind["available"].get<bool>());
        EXPECT_GE(kind["largestTexture"].get<int>(), 1024);
        EXPECT_FALSE(kind["renderer"].get<std::string>().empty());
        EXPECT_THAT(kind["extensions"].get<std::string>(), HasSubstr("GL_"));
    }
}

TEST(DoctorCommand, NamesWhatIsMissingAndThePackageThatHasIt) {
    const Result result = run({"doctor"}, withoutDrivers);
    EXPECT_EQ(result.status, 1);
    EXPECT_THAT(result.out, HasSubstr("  missing             "));
    EXPECT_THAT(result.out, HasSubstr("apt install"));
    EXPECT_THAT(result.out, Not(HasSubstr("renderer")));
    const auto json = nlohmann::json::parse(run({"doctor", "--json"}, withoutDrivers).out);
    EXPECT_FALSE(json[0]["available"].get<bool>());
    EXPECT_THAT(json[0]["missing"].get<std::string>(), HasSubstr("apt install"));
}

TEST(DoctorCommand, TakesNoInput) {
    const Result result = run({"doctor", "photo.jpg"});
    EXPECT_EQ(result.status, 2);
    EXPECT_THAT(result.err, HasSubstr("this takes no input"));
}
