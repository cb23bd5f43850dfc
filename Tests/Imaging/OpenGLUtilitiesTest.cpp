#include "Imaging/OpenGLUtilities.h"

#include "Platform/Foundation/Log.h"

#include <gtest/gtest.h>

#include <array>
#include <string>
#include <vector>

namespace {

struct OpenGLUtilities : testing::Test {
    ~OpenGLUtilities() override { Imaging::Platform::setLogSink(nullptr); }
};

TEST_F(OpenGLUtilities, ReportNoErrorAsNothing) {
    std::vector<std::string> lines;
    Imaging::Platform::setLogSink([&](const std::string& line) { lines.push_back(line); });
    Imaging::ReportError(0, "somewhere.cpp", 17);
    EXPECT_TRUE(lines.empty());
}

TEST_F(OpenGLUtilities, ReportErrorsInOneLineThatNamesTheSamePlaceWhoeverCalls) {
    std::vector<std::string> lines;
    Imaging::Platform::setLogSink([&](const std::string& line) { lines.push_back(line); });
    Imaging::ReportError(0x0502, "somewhere.cpp", 17);
    Imaging::ReportError(1, nullptr, -5);
    EXPECT_EQ(lines, (std::vector<std::string>{"gl error Imaging/GraphicsUtilities 285 1282",
                                               "gl error Imaging/GraphicsUtilities 285 1"}));
    EXPECT_STREQ(Imaging::CheckOpenGLErrorFormat, "gl error %s %d %d");
}

TEST_F(OpenGLUtilities, MakePointsOfThreeFloatsInOrder) {
    EXPECT_EQ(Imaging::MakePoint3D(1.5F, -2, 3.25F), (std::array<float, 3>{1.5F, -2, 3.25F}));
}

} // namespace
