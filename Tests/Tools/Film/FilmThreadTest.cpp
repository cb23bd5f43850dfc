#include "Imaging/Image.h"
#include "Platform/Graphics/Color.h"
#include "Platform/Graphics/GraphicsContext.h"
#include "Show/ShowPictures.h"
#include "Tests/Platform/Foundation/TemporaryFolder.h"
#include "Tests/Tools/Support/TestPictures.h"
#include "Tools/Command/Messages.h"
#include "Tools/Film/FrameQueue.h"
#include "Tools/Film/NumberedFramesSink.h"

#include <gtest/gtest.h>

#include <atomic>

using namespace TestSupport;
using namespace Imaging::Tool;

namespace {

using Imaging::IMGImage;

/// Nodes that know which picture they are.
class NumberedNode : public IMGImage {
public:
    explicit NumberedNode(std::size_t picture) : number(picture) { ++alive; }
    ~NumberedNode() override { --alive; }

    std::size_t number;
    static inline std::atomic<int> alive = 0;
};

std::size_t numberOf(const FilmPictures::Node& node) {
    return dynamic_cast<const NumberedNode&>(*node).number;
}

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

TEST(FilmPictures, ComeInTheirOrderAndLeaveWhenTheyArePast) {
    const std::vector<std::size_t> order = {4, 0, 2, 0, 1, 3, 4};
    std::atomic<int> most = 0;
    {
        FilmPictures pictures(order, [&](std::size_t picture) {
            auto node = std::make_shared<NumberedNode>(picture);
            most = std::max(most.load(), NumberedNode::alive.load());
            return node;
        });
        for (std::size_t place = 0; place < order.size(); ++place) {
            EXPECT_EQ(numberOf(pictures.at(place, place)), order[place]);
            if (place + 1 < order.size()) {
                EXPECT_EQ(numberOf(pictures.at(place + 1, place)), order[place + 1]);
            }
        }
    }
    EXPECT_LE(most, 3) << "two of a transition and one ahead";
    EXPECT_EQ(NumberedNode::alive, 0);
}

TEST(FilmPictures, AFailureReachesWhoAsksForThePictureAndNobodyBefore) {
    FilmPictures pictures({0, 1, 2}, [](std::size_t picture) {
        if (picture == 1) throw Failure("one", "it is bad");
        return std::make_shared<NumberedNode>(picture);
    });
    EXPECT_EQ(numberOf(pictures.at(0, 0)), 0U);
    EXPECT_THROW(pictures.at(1, 0), Failure);
    EXPECT_EQ(numberOf(pictures.at(0, 0)), 0U);
    EXPECT_THROW(pictures.at(2, 1), Failure);
}

TEST(FilmPictures, CanGoAtAnyTime) {
    for (std::size_t asked = 0; asked < 4; ++asked) {
        FilmPictures pictures(std::vector<std::size_t>(100, 7),
                              [](std::size_t picture) { return std::make_shared<NumberedNode>(picture); });
        for (std::size_t place = 0; place < asked; ++place) pictures.at(place, place);
    }
    EXPECT_EQ(NumberedNode::alive, 0);
}

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
