// Also tests: Tools/Film/FrameQueue.cpp

#include "Platform/Graphics/Color.h"
#include "Platform/Graphics/GraphicsContext.h"
#include "Tests/Platform/Foundation/TemporaryFolder.h"
#include "Tests/Tools/Support/TestPictures.h"
#include "Tools/Command/Messages.h"
#include "Tools/Film/FrameQueue.h"
#include "Tools/Film/NumberedFramesSink.h"

#include <gtest/gtest.h>

using namespace TestSupport;
using namespace Imaging;
using namespace Imaging::Tool;

namespace {

/// Keeps what is written: the first word of each frame, as often as it is written.
class ListSink : public FilmSink {
public:
    explicit ListSink(std::size_t failsAt = SIZE_MAX) : m_fails_at(failsAt) {}

    void write(const FrameView& frame, std::uint64_t times, std::shared_ptr<const void>) override {
        if (words.size() >= m_fails_at) throw Failure("list", "it is full");
        for (std::uint64_t i = 0; i < times; ++i) words.push_back(frame.words[0]);
    }
    void finish() override { finished = true; }

    std::vector<std::uint32_t> words;
    bool finished = false;

private:
    std::size_t m_fails_at;
};

/// Makes all of a frame the colour whose blue is `number`.
void paintNumber(FrameBuffer& frame, std::uint32_t number) {
    frame.context()->setColor(
        Imaging::Platform::NSColor::colorWithCalibratedRed(0, 0, static_cast<float>(number) / 255, 1));
    frame.context()->fillRect(Imaging::Platform::NSMakeRect(0, 0, 10, 10),
                              Imaging::Platform::NSCompositeCopy);
}

} // namespace

TEST(FrameQueue, WritesAllFramesInOrderAndEachAsOftenAsAsked) {
    ListSink sink;
    FrameQueue queue(sink, {3, 2});
    std::vector<std::uint32_t> expected;
    for (std::uint32_t i = 0; i < 200; ++i) {
        std::unique_ptr<FrameBuffer> frame = queue.take();
        paintNumber(*frame, i);
        queue.give(std::move(frame), 1 + i % 3);
        expected.insert(expected.end(), 1 + i % 3, 0xff000000 | i);
    }
    queue.finish();
    EXPECT_EQ(sink.words, expected);
    EXPECT_EQ(queue.written(), expected.size());
    EXPECT_TRUE(sink.finished);
}

TEST(FrameQueue, AFailureOfTheSinkReachesTheDrawing) {
    ListSink sink(5);
    FrameQueue queue(sink, {1, 1});
    const auto drawOn = [&] {
        for (int i = 0; i < 100; ++i) queue.give(queue.take(), 1);
        queue.finish();
    };
    EXPECT_THROW(drawOn(), Failure);
    EXPECT_EQ(sink.words.size(), 5U);
    EXPECT_FALSE(sink.finished);
}

TEST(FrameQueue, LeavesWhatIsNotWrittenWhenItGoes) {
    ListSink sink;
    {
        FrameQueue queue(sink, {1, 1});
        queue.give(queue.take(), 1);
    }
    EXPECT_FALSE(sink.finished);
    EXPECT_LE(sink.words.size(), 1U);
}

TEST(NumberedFrames, AreEncodedSeveralAtOnce) {
    const TemporaryFolder folder;
    const auto sink = makeNumberedFramesSink(folder.path("out"), FrameFileType::PNG, 1,
                                             {.size = {2, 1}, .firstFrame = 9, .frameCount = 40}, 99);
    {
        FrameQueue queue(*sink, {2, 1});
        for (std::uint32_t i = 0; i < 20; ++i) {
            std::unique_ptr<FrameBuffer> frame = queue.take();
            paintNumber(*frame, i);
            queue.give(std::move(frame), 2);
        }
        queue.finish();
    }
    for (int i = 0; i < 40; ++i) {
        const std::string number = std::to_string(i + 10);
        const Picture picture = pictureOfPNG(folder.read("out/frame-0000" + number + ".png"));
        const Pixel expected{0, 0, static_cast<std::uint8_t>(i / 2)};
        EXPECT_EQ(picture.pixels, std::vector<Pixel>(2, expected)) << number;
    }
}

TEST(NumberedFrames, AreTakenAwayAgainUnlessFinished) {
    const TemporaryFolder folder;
    {
        const auto sink = makeNumberedFramesSink(folder.path("out"), FrameFileType::PNG, 1,
                                                 {.size = {2, 1}, .frameCount = 40}, 39);
        const auto words = std::make_shared<const std::vector<std::uint32_t>>(2);
        for (int i = 0; i < 4; ++i) sink->write({words->data(), 2}, 5, words);
    }
    EXPECT_EQ(folder.count(), 0);
}
