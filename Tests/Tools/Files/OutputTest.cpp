// Also tests: Tools/Command/StandardOutput.cpp

#include "Tests/Tools/Support/Command.h"
#include "Tests/Tools/Support/TestPictures.h"

#include <gmock/gmock.h>

#include <csignal>
#include <sys/stat.h>

using namespace TestSupport;

TEST(CommandOutput, AFullDiskLeavesNothingAndTheOldFileAsItWas) {
    const TemporaryFolder folder;
    const std::string in = folder.write("in.png", pngOf(randomPicture(100, 100, 14)));
    folder.write("old.png", "old");
    // Nothing of more than 1000 bytes can be written: the picture has 30,000 and the graph as many.
    for (const std::vector<std::string>& arguments :
         std::vector<std::vector<std::string>>{{"draw", in, "-o", folder.path("old.png")},
                                               {"draw", in, "-o", folder.path("new.tif")},
                                               {"archive", "--embed", in, "-o", folder.path("new.graph")},
                                               {"sheet", in, "-o", folder.path("new.png")}}) {
        const Result result = run(arguments, {.fileSize = 1000});
        EXPECT_EQ(result.signal, 0);
        EXPECT_EQ(result.status, 1);
        EXPECT_EQ(result.err,
                  "imaging: " + arguments.back() + ": the file would be larger than the system permits\n");
    }
    EXPECT_EQ(namesIn(folder.path("")), (std::set<std::string>{"in.png", "old.png"}));
    EXPECT_EQ(folder.read("old.png"), "old");
}

TEST(CommandOutput, AFullDeviceIsAnError) {
    const TemporaryFolder folder;
    const std::string in = folder.write("in.png", pngOf(Picture(2, 2, red)));
    const Result direct = run({"draw", in, "-o", "/dev/full", "--format", "png"});
    EXPECT_EQ(direct.status, 1);
    EXPECT_EQ(direct.err, "imaging: /dev/full: the disk is full\n");
    for (const std::vector<std::string>& arguments :
         std::vector<std::vector<std::string>>{{"info", in},
                                               {"info", "--json", in},
                                               {"--help"},
                                               {"draw", "--help"},
                                               {"--version"},
                                               {"draw", in, "-o", "-", "--format", "jpg"},
                                               {"sheet", in, "-o", "-", "--format", "png"},
                                               {"archive", in, "-o", "-"}}) {
        const Result result = run(arguments, {.outputPath = "/dev/full"});
        EXPECT_EQ(result.status, 1) << arguments[0];
        EXPECT_EQ(result.err, "imaging: standard output: the disk is full\n") << arguments[0];
    }
}

TEST(CommandOutput, AClosedOutputIsAnErrorAndNoFileTakesItsPlace) {
    const TemporaryFolder folder;
    const std::string in = folder.write("in.png", pngOf(Picture(2, 2, red)));
    const Result result = run({"info", in}, {.closeOutput = true});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.err, "imaging: standard output: Bad file descriptor\n");
    EXPECT_EQ(run({"draw", in, "-o", folder.path("out.png")}, {.closeOutput = true}).status, 0);
    EXPECT_EQ(pictureOfPNG(folder.read("out.png")).pixels, Picture(2, 2, red).pixels);
}

TEST(CommandOutput, APipeThatNobodyReadsIsAnError) {
    const TemporaryFolder folder;
    const std::string in = folder.write("in.png", pngOf(Picture(2, 2, red)));
    for (const std::vector<std::string>& arguments :
         std::vector<std::vector<std::string>>{{"info", in}, {"draw", in, "-o", "-", "--format", "png"}}) {
        const Result result = run(arguments, {.outputNobodyReads = true});
        EXPECT_EQ(result.signal, 0);
        EXPECT_EQ(result.status, 1);
        EXPECT_EQ(result.err, "imaging: standard output: nobody reads the other end any more\n");
    }
}

TEST(CommandOutput, FoldersThatAreMissingAreNamedBeforeTheWork) {
    const TemporaryFolder folder;
    const std::string out = folder.path("missing/out.png");
    for (const std::string subcommand : {"draw", "archive", "sheet"}) {
        const Result result = run({subcommand, "/nowhere/a.png", "-o", out});
        EXPECT_EQ(result.status, 1);
        EXPECT_EQ(result.err, "imaging: " + out + ": the folder does not exist; make it first\n");
    }
    const Result result = run({"draw", "/nowhere/a.png", "-o", folder.path(""), "--format", "png"});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.err, "imaging: " + folder.path("") + ": this is a folder, not a file\n");
    EXPECT_EQ(folder.count(), 0);
}

TEST(CommandOutput, AFolderWithoutPermissionIsAnError) {
    const TemporaryFolder folder;
    const std::string in = folder.write("in.png", pngOf(Picture(2, 2, red)));
    std::filesystem::create_directory(folder.path("locked"));
    ASSERT_EQ(chmod(folder.path("locked").c_str(), 0500), 0);
    const std::string out = folder.path("locked/out.png");
    const Result result = run({"draw", in, "-o", out}, {.withoutPrivileges = true});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.err, "imaging: " + out + ": writing there is not permitted\n");
    ASSERT_EQ(chmod(folder.path("locked").c_str(), 0700), 0);
    EXPECT_TRUE(std::filesystem::is_empty(folder.path("locked")));
}

TEST(CommandOutput, ContinuesAFileThatTheShellHasOpened) {
    const TemporaryFolder folder;
    folder.write("list.txt", "");
    const std::string in = folder.write("in.png", pngOf(Picture(2, 2, red)));
    const Result result = run({"info", in}, {.outputPath = folder.path("list.txt")});
    EXPECT_EQ(result.status, 0);
    EXPECT_THAT(folder.read("list.txt"), testing::HasSubstr("  PNG     2 x 2 "));
}
