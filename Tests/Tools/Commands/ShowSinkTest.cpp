// Also tests: Tools/Film/EncoderProcess.cpp
// Also tests: Tools/Film/FfmpegSink.cpp
// Also tests: Tools/Film/FilmFile.cpp
// Also tests: Tools/Film/FilmOutput.cpp
// Also tests: Tools/Film/NumberedFramesSink.cpp
// Also tests: Tools/Film/RawSink.cpp

#include "Tests/Tools/Support/Command.h"
#include "Tests/Tools/Support/TestPictures.h"

#include <gmock/gmock.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <fstream>
#include <sys/stat.h>

using namespace TestSupport;
using testing::HasSubstr;

namespace {

using Arguments = std::vector<std::string>;

/// What a program prints.
std::string printed(const std::string& command) {
    std::FILE* const pipe = ::popen(command.c_str(), "r");
    std::string text;
    for (int c = 0; (c = std::fgetc(pipe)) != EOF;) text += static_cast<char>(c);
    EXPECT_EQ(::pclose(pipe), 0) << command;
    return text;
}

std::string facts(const std::string& film, const std::string& entries) {
    return printed("ffprobe -v error -count_frames -select_streams v -show_entries stream=" + entries +
                   " -of default=noprint_wrappers=1:nokey=1 '" + film + "'");
}

/// A film of two pictures: 4 frames of red, 2 between them, and 4 of blue.
Arguments film(const TemporaryFolder& folder, const std::string& out) {
    const std::string first = folder.write("1.png", pngOf(Picture(8, 8, red)));
    const std::string second = folder.write("2.png", pngOf(Picture(8, 8, blue)));
    return {"show", first,    second, "--size",     "64x48", "--fit", "stretch",       "--fps",
            "10",   "--hold", "0.4",  "--duration", "0.2",   "-o",    folder.path(out)};
}

/// An encoder that is only a shell script; the path to put it on.
std::string fakeEncoder(const TemporaryFolder& folder, const std::string& script) {
    std::filesystem::create_directory(folder.path("bin"));
    const std::string program = folder.write("bin/ffmpeg", "#!/bin/sh\n" + script + "\n");
    ::chmod(program.c_str(), 0755);
    return folder.path("bin") + ":/usr/bin:/bin";
}

const std::set<std::string> inputs = {"1.png", "2.png"};
const std::set<std::string> inputsAndEncoder = {"1.png", "2.png", "bin"};

} // namespace

TEST(FilmFile, HasAllFramesInTheAskedSizeAndSaysWhatItsColorsAre) {
    const TemporaryFolder folder;
    for (const auto& [name, codec] : {std::pair("a.mp4", "h264"), {"a.mkv", "h264"}, {"a.webm", "vp9"}}) {
        const Result result = run(film(folder, name));
        EXPECT_EQ(result.err, "");
        EXPECT_EQ(result.status, 0);
        EXPECT_EQ(facts(folder.path(name),
                        "codec_name,width,height,pix_fmt,color_space,r_frame_rate,nb_read_frames"),
                  std::string(codec) + "\n64\n48\nyuv420p\nbt709\n10/1\n10\n")
            << name;
    }
    EXPECT_EQ(namesIn(folder.path("")),
              (std::set<std::string>{"1.png", "2.png", "a.mp4", "a.mkv", "a.webm"}));
}

TEST(FilmFile, HasTheColorsOfThePictures) {
    const TemporaryFolder folder;
    EXPECT_EQ(run(film(folder, "a.mp4")).err, "");
    // ffmpeg decodes by the file's own words about its colours.
    const std::string frames =
        printed("ffmpeg -v error -i '" + folder.path("a.mp4") + "' -f rawvideo -pix_fmt rgb24 -");
    const std::size_t frameBytes = std::size_t{64} * 48 * 3;
    ASSERT_EQ(frames.size(), 10 * frameBytes);
    const auto sample = [&](std::size_t frame, std::size_t i) {
        return static_cast<unsigned char>(frames[frame * frameBytes + frameBytes / 2 + 96 + i]);
    };
    EXPECT_NEAR(sample(0, 0), 255, 6);
    EXPECT_NEAR(sample(0, 1), 0, 6);
    EXPECT_NEAR(sample(9, 2), 255, 6);
    EXPECT_NEAR(sample(9, 0), 0, 6);
}

TEST(FilmFile, GifsLoopOnlyWhereTheFilmDoes) {
    const TemporaryFolder folder;
    Arguments arguments = film(folder, "a.gif");
    EXPECT_EQ(run(arguments).err, "");
    EXPECT_EQ(facts(folder.path("a.gif"), "width,height,nb_read_frames"), "64\n48\n10\n");
    EXPECT_THAT(folder.read("a.gif"), testing::Not(HasSubstr("NETSCAPE2.0")));
    arguments.emplace_back("--loop");
    EXPECT_EQ(run(arguments).err, "");
    EXPECT_EQ(facts(folder.path("a.gif"), "nb_read_frames"), "12\n");
    EXPECT_THAT(folder.read("a.gif"), HasSubstr("NETSCAPE2.0"));
}

TEST(FilmFile, AMissingEncoderIsOneClearLine) {
    const TemporaryFolder folder;
    const Result result = run(film(folder, "a.mp4"), {.environment = {{"PATH", ""}}});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.err, "imaging: " + folder.path("a.mp4") +
                              ": films are encoded by the program ffmpeg, which is not there; install the "
                              "package ffmpeg, or write numbered pictures into a folder: -o FOLDER/\n");
    EXPECT_EQ(namesIn(folder.path("")), inputs);
}

TEST(FilmFile, PassesOnWhatAFailingEncoderSays) {
    const TemporaryFolder folder;
    for (const auto& [script, words] :
         {std::pair("echo '[libx264 @ 0x55d1c0ffee] no such thing' >&2; exit 1", "[libx264] no such thing"),
          {"cat > /dev/null; echo 'the last frame was bad' >&2; exit 3", "the last frame was bad"},
          {"exit 4", "it ended with status 4 and said nothing"},
          {"kill -9 $$", "it was ended by a signal (Killed)"}}) {
        folder.write("a.mp4", "old");
        const Result result =
            run(film(folder, "a.mp4"), {.environment = {{"PATH", fakeEncoder(folder, script)}}});
        EXPECT_EQ(result.status, 1);
        EXPECT_EQ(result.err,
                  "imaging: " + folder.path("a.mp4") + ": the encoder ffmpeg failed: " + words + "\n");
        EXPECT_EQ(folder.read("a.mp4"), "old");
        std::filesystem::remove(folder.path("a.mp4"));
        EXPECT_EQ(namesIn(folder.path("")), inputsAndEncoder);
    }
}

TEST(FilmFile, AnEncoderThatEndsEarlyIsAFailureAlsoWithStatusZero) {
    const TemporaryFolder folder;
    Arguments arguments = film(folder, "a.mp4");
    arguments.insert(arguments.end(), {"--size", "1920x1080"});
    const Result result =
        run(arguments, {.environment = {{"PATH", fakeEncoder(folder, "head -c 1000 > /dev/null")}}});
    EXPECT_EQ(result.status, 1);
    EXPECT_THAT(result.err, HasSubstr(": the encoder ffmpeg ended before the film did\n"));
    EXPECT_EQ(namesIn(folder.path("")), inputsAndEncoder);
}

TEST(FilmFile, AnInterruptEndsTheEncoderAndLeavesNothing) {
    for (const int number : {SIGINT, SIGTERM, SIGHUP}) {
        const TemporaryFolder folder;
        const std::string path = fakeEncoder(folder, "echo $$ > \"$STARTED\"; exec tail -f /dev/null");
        const std::string started = folder.path("bin/started");
        ASSERT_EQ(::mkfifo(started.c_str(), 0600), 0);
        Command command(film(folder, "a.mp4"), {.environment = {{"PATH", path}, {"STARTED", started}}});
        pid_t encoder = 0;
        std::ifstream(started) >> encoder; // waits until the encoder is there
        ASSERT_GT(encoder, 0);
        ::kill(command.process(), number);
        EXPECT_EQ(command.wait().signal, number);
        EXPECT_EQ(::kill(encoder, 0), -1);
        EXPECT_EQ(errno, ESRCH);
        EXPECT_EQ(namesIn(folder.path("")), inputsAndEncoder);
    }
}

TEST(FilmFile, AFullDiskLeavesNothing) {
    const TemporaryFolder folder;
    for (const auto& [out, format] :
         {std::pair("a.mp4", "mp4"), {"a.raw", "raw"}, {"frames/", "frames"}, {"a.gif", "gif"}}) {
        Arguments arguments = film(folder, out);
        arguments.insert(arguments.end(), {"--format", format});
        const Result result = run(arguments, {.fileSize = 100});
        EXPECT_EQ(result.signal, 0);
        EXPECT_EQ(result.status, 1) << out;
        EXPECT_EQ(result.err.find('\n'), result.err.size() - 1) << result.err;
        const bool isOurs = std::string(format) == "raw" || std::string(format) == "frames";
        EXPECT_THAT(result.err, HasSubstr(isOurs ? "the file would be larger than the system permits"
                                                 : "File too large"));
        EXPECT_EQ(namesIn(folder.path("")), inputs) << out;
    }
    const Result device = run({"show", folder.path("1.png"), "-o", "/dev/full", "--format", "raw"});
    EXPECT_EQ(device.status, 1);
    EXPECT_EQ(device.err, "imaging: /dev/full: the disk is full\n");
}

TEST(NumberedFrames, LeaveOtherFilesAndTheFolderInPlaceOnFailure) {
    const TemporaryFolder folder;
    std::filesystem::create_directory(folder.path("frames"));
    folder.write("frames/frame-000099.png", "another part");
    EXPECT_EQ(run(film(folder, "frames"), {.fileSize = 100}).status, 1);
    EXPECT_EQ(namesIn(folder.path("frames")), std::set<std::string>{"frame-000099.png"});
    folder.write("file", "");
    const Result taken = run(film(folder, "file/"));
    EXPECT_EQ(taken.status, 1);
    EXPECT_EQ(taken.err,
              "imaging: " + folder.path("file/") + ": there is a file of this name; choose another folder\n");
}

TEST(RawFrames, APipeThatNobodyReadsIsAnError) {
    const TemporaryFolder folder;
    Arguments arguments = film(folder, "unused");
    arguments.insert(arguments.end(), {"-o", "-", "--format", "raw"});
    const Result result = run(arguments, {.outputNobodyReads = true});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.err, "imaging: standard output: nobody reads the other end any more\n");
}

TEST(RawFrames, AFileAppearsWhenItIsWhole) {
    const TemporaryFolder folder;
    Arguments arguments = film(folder, "a.raw");
    arguments.insert(arguments.end(), {"--format", "raw"});
    EXPECT_EQ(run(arguments).err, "");
    EXPECT_EQ(folder.read("a.raw").size(), std::size_t{10} * 64 * 48 * 4);
}
