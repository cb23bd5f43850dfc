#include "Tests/Tools/Support/Command.h"
#include "Tests/Tools/Support/TestPictures.h"

#include <gmock/gmock.h>

using namespace TestSupport;

TEST(TransitionExample, DrawsAFrameInWhichAnIrisOpensOnTheSecondPicture) {
    const TemporaryFolder folder;
    const std::string from = folder.write("from.png", pngOf(Picture(16, 9, red)));
    const std::string to = folder.write("to.png", pngOf(Picture(32, 18, blue)));
    const Result result = run({from, to, "0.5", folder.path("frame.png")});
    EXPECT_EQ(result.err, "");
    ASSERT_EQ(result.status, 0);
    const Picture frame = pictureOfPNG(folder.read("frame.png"));
    ASSERT_EQ(frame.width, 1280);
    ASSERT_EQ(frame.height, 720);
    // The aperture is 640 x 360 in the middle.
    EXPECT_EQ(frame.at(322, 182), blue);
    EXPECT_EQ(frame.at(957, 537), blue);
    EXPECT_EQ(frame.at(317, 360), red);
    EXPECT_EQ(frame.at(640, 542), red);
}

TEST(TransitionExample, SaysWhatIsWrong) {
    const TemporaryFolder folder;
    EXPECT_EQ(run({}).status, 2);
    const Result missing = run({folder.path("missing.png"), folder.path("b.png"), "0", folder.path("c.png")});
    EXPECT_EQ(missing.status, 1);
    EXPECT_THAT(missing.err, testing::HasSubstr("missing.png"));
    EXPECT_EQ(folder.count(), 0);
}
