#include "Tools/Film/FilmOutput.h"

#include "Tests/Tools/Support/OptionReading.h"
#include "Tools/Command/Messages.h"

#include <gtest/gtest.h>

using namespace TestSupport;
using namespace Imaging::Tool;

namespace {

FilmOutput output(const std::vector<std::string>& arguments) {
    FilmOutput output;
    readOptions(output.options(), arguments);
    return output;
}

std::string complaint(const std::vector<std::string>& arguments) {
    try {
        output(arguments);
        return "none";
    } catch (const UsageError& error) {
        return error.what();
    }
}

} // namespace

TEST(FilmOutput, TakesTypedValuesFromItsOptions) {
    const FilmOutput film = output({"-o", "a.MKV", "--crf", "51", "--preset", "slow"});
    EXPECT_EQ(film.path, "a.MKV");
    EXPECT_EQ(film.format, std::nullopt);
    EXPECT_EQ(film.crf, 51);
    EXPECT_EQ(film.preset, "slow");
    const FilmOutput frames = output({"-o", "f/", "--frame-format", "jpeg", "--quality", "35"});
    EXPECT_EQ(frames.frameFormat, FrameFileType::JPEG);
    EXPECT_EQ(frames.quality, 35) << "jpeg is another word for jpg";
    EXPECT_EQ(output({"-o", "x", "--format", "webm", "--crf", "63"}).format, FilmKind::WebM);
}

TEST(FilmOutput, RefusesOptionsThatDoNotFitTheKindOfFilm) {
    EXPECT_EQ(complaint({"-o", "a.gif", "--crf", "3"}), "--crf: only .mp4, .mkv and .webm films have one");
    EXPECT_EQ(complaint({"-o", "a.webm", "--preset", "slow"}), "--preset: only .mp4 and .mkv films have one");
    EXPECT_EQ(complaint({"-o", "a.mp4", "--frame-format", "png"}),
              "--frame-format: only numbered pictures in a folder have one");
    const std::string quality = "--quality: only numbered JPEG pictures have one; add --frame-format jpg";
    EXPECT_EQ(complaint({"-o", "a.mp4", "--quality", "50"}), quality);
    EXPECT_EQ(complaint({"-o", "f/", "--quality", "50"}), quality);
    EXPECT_EQ(complaint({"-o", "f/", "--frame-format", "png", "--quality", "50"}), quality);
}

TEST(FilmOutput, RefusesValuesBeyondWhatTheEncoderTakes) {
    EXPECT_EQ(complaint({"-o", "a.mp4", "--crf", "52"}), "--crf: '52' is not a whole number from 0 to 51");
    EXPECT_EQ(complaint({"-o", "a.webm", "--crf", "64"}), "--crf: '64' is not a whole number from 0 to 63");
    EXPECT_EQ(complaint({"-o", "a.webm", "--crf", "63"}), "none");
    EXPECT_EQ(complaint({"-o", "f/", "--frame-format", "jpg", "--quality", "0"}),
              "--quality: '0' is not a whole number from 1 to 100");
    EXPECT_EQ(complaint({"-o", "f/", "--frame-format", "bmp"}),
              "--frame-format: there is no format named 'bmp'; known are png, jpg and jpeg");
    EXPECT_EQ(
        complaint({"-o", "a", "--format", "mp5"}),
        "--format: there is no format named 'mp5'; known are mp4, mkv, webm, gif, frames and raw; did you "
        "mean 'mp4'?");
}

TEST(FilmOutput, RefusesValuesThatAreNoneAlsoWhereNoFilmIsMade) {
    EXPECT_EQ(complaint({"--crf", "many"}), "--crf: 'many' is not a whole number from 0 to 63");
    EXPECT_EQ(complaint({"--crf", "20", "--preset", "slow"}), "none");
}
