#include "Platform/Foundation/Resources.h"

#include "Platform/Foundation/Exception.h"
#include "Tests/Platform/Foundation/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <string>

using namespace Imaging::Platform;
using TestSupport::ScopedVariable;
using TestSupport::TemporaryFolder;

namespace {

struct Resources : testing::Test {
    ~Resources() override { setResourceFolder(""); }

    ScopedVariable withoutVariable{"IMAGING_RESOURCES", nullptr};
};

} // namespace

TEST_F(Resources, AreFoundInTheSourcesBeforeAnythingIsInstalled) {
    const std::filesystem::path sources = resourceFolders().back();
    EXPECT_TRUE(std::filesystem::exists(sources / "draw_frame_pieces.cpp")) << sources;
    EXPECT_EQ(std::filesystem::path(pathForImageResource("box_topleft")).filename(), "box_topleft.png");
    EXPECT_TRUE(std::filesystem::exists(pathForImageResource("box_topleft")));
}

TEST_F(Resources, LieBesideTheLibraryOrTheProgramThatHoldsIt) {
    // This program holds the library itself.
    const std::string program = std::filesystem::canonical("/proc/self/exe").string();
    const std::string suffix = "share/Imaging/Resources";
    const std::vector<std::string> folders = resourceFolders();
    ASSERT_EQ(folders.size(), 3U) << "where it lies, where it was to be installed, the sources";
    ASSERT_THAT(folders[0], testing::EndsWith(suffix));
    const std::string prefix = folders[0].substr(0, folders[0].size() - suffix.size());
    EXPECT_THAT(program, testing::StartsWith(prefix));
    EXPECT_GT(prefix.size(), 1U);
    EXPECT_THAT(folders[1], testing::EndsWith(suffix));
}

TEST_F(Resources, AreLookedForInTheApplicationsFolderFirstThenInTheEnvironments) {
    const TemporaryFolder application;
    const TemporaryFolder environment;
    const std::string inBoth = application.write("box_top.png", "a");
    environment.write("box_top.png", "e");
    const std::string inOne = environment.write("box_left.png", "e");
    setResourceFolder(application.path(""));
    const ScopedVariable variable("IMAGING_RESOURCES", environment.path("").c_str());
    EXPECT_EQ(resourceFolders()[0], application.path(""));
    EXPECT_EQ(resourceFolders()[1], environment.path(""));
    EXPECT_EQ(pathForImageResource("box_top"), inBoth);
    EXPECT_EQ(pathForImageResource("box_left"), inOne);
    EXPECT_TRUE(std::filesystem::exists(pathForImageResource("box_right"))) << "replaced by neither";
}

TEST_F(Resources, TakesAnEmptyFolderForNone) {
    const std::size_t count = resourceFolders().size();
    setResourceFolder("somewhere");
    EXPECT_EQ(resourceFolders().size(), count + 1);
    setResourceFolder("");
    EXPECT_EQ(resourceFolders().size(), count);
    const ScopedVariable variable("IMAGING_RESOURCES", "");
    EXPECT_EQ(resourceFolders().size(), count);
}

TEST_F(Resources, AreFilesNotFolders) {
    const TemporaryFolder folder;
    std::filesystem::create_directory(folder.path("box_top.png"));
    setResourceFolder(folder.path(""));
    EXPECT_NE(pathForImageResource("box_top"), folder.path("box_top.png"));
}

TEST_F(Resources, ThatAreMissingAreNamedWithWhatToDo) {
    setResourceFolder("/no/such/folder");
    try {
        pathForImageResource("no_such_piece");
        FAIL() << "nothing thrown";
    } catch (const NSException& exception) {
        EXPECT_EQ(exception.name(), NSResourceException);
        EXPECT_THAT(exception.reason(), testing::HasSubstr("no_such_piece.png"));
        EXPECT_THAT(exception.reason(), testing::HasSubstr("/no/such/folder, "));
        EXPECT_THAT(exception.reason(), testing::HasSubstr("IMAGING_RESOURCES"));
    }
}
