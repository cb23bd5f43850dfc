#include "Show/Schedule.h"

#include "Platform/Foundation/Exception.h"

#include <gmock/gmock.h>

#include <tuple>

using namespace Imaging;
using testing::ElementsAre;
using testing::HasSubstr;

namespace {

using Row = std::tuple<std::size_t, bool, std::uint64_t, std::uint64_t>;

constexpr bool still = false;
constexpr bool moves = true;

/// Pictures that all stand as long, with linear transitions of one length.
Show film(std::size_t pictures, double hold, double duration) {
    Show show;
    for (std::size_t i = 0; i < pictures; ++i) {
        ShowPicture picture;
        picture.hold = hold;
        picture.next.duration = duration;
        picture.next.easing = Easing::Linear;
        show.pictures.push_back(picture);
    }
    return show;
}

Show atRate(Show show, std::int64_t numerator, std::int64_t denominator) {
    show.rateNumerator = numerator;
    show.rateDenominator = denominator;
    return show;
}

std::vector<Row> rows(const Schedule& schedule) {
    std::vector<Row> all;
    for (const Schedule::Part& part : schedule.parts())
        all.emplace_back(part.picture, part.moves, part.first, part.count);
    return all;
}

std::string complaint(const Show& show) {
    try {
        const Schedule schedule(show);
        return "none, but " + std::to_string(schedule.frameCount()) + " frames";
    } catch (const Platform::NSException& exception) {
        return exception.what();
    }
}

} // namespace

TEST(Schedule, HoldsEachPictureAndMovesToTheNext) {
    const Schedule schedule(film(2, 3, 1));
    EXPECT_THAT(rows(schedule),
                ElementsAre(Row(0, still, 0, 75), Row(0, moves, 75, 25), Row(1, still, 100, 75)));
    EXPECT_EQ(schedule.frameCount(), 175U);
}

TEST(Schedule, SaysWhatEachFrameShows) {
    const Schedule schedule(film(2, 0.2, 0.12)); // 5 frames, then 3
    for (std::uint64_t frame = 0; frame < 5; ++frame) {
        const FrameContent content = schedule.at(frame);
        EXPECT_EQ(content.picture, 0U);
        EXPECT_FALSE(content.moves);
    }
    for (std::uint64_t frame = 5; frame < 8; ++frame) {
        const FrameContent content = schedule.at(frame);
        EXPECT_EQ(content.picture, 0U);
        EXPECT_TRUE(content.moves);
        EXPECT_EQ(content.step, frame - 5);
        EXPECT_EQ(content.weight, static_cast<float>(frame - 4) / 4); // the still frames are 0 and 1
    }
    for (std::uint64_t frame = 8; frame < 13; ++frame) {
        const FrameContent content = schedule.at(frame);
        EXPECT_EQ(content.picture, 1U);
        EXPECT_FALSE(content.moves);
    }
    EXPECT_EQ(schedule.frameCount(), 13U);
}

TEST(Schedule, EasesTheWeightsOfEachTransitionInItsOwnWay) {
    Show show = film(3, 0.04, 0.12);
    show.pictures[0].next.easing = Easing::In;
    show.pictures[1].next.easing = Easing::Out;
    const Schedule schedule(show); // still frames are 0, 4 and 8
    EXPECT_EQ(schedule.at(1).weight, 1.0F / 64);
    EXPECT_EQ(schedule.at(2).weight, 0.125F);
    EXPECT_EQ(schedule.at(6).weight, 0.875F);
    EXPECT_EQ(schedule.at(7).weight, 63.0F / 64);
}

TEST(Schedule, CountsFramesOfBrokenRates) {
    // At 30000/1001 the parts end at 29.97, 44.96, 74.93, 89.91 and 119.88 frames.
    EXPECT_THAT(rows(Schedule(atRate(film(3, 1, 0.5), 30000, 1001))),
                ElementsAre(Row(0, still, 0, 30), Row(0, moves, 30, 15), Row(1, still, 45, 30),
                            Row(1, moves, 75, 15), Row(2, still, 90, 30)));
    // At 24000/1001 an hour ends at 86313.69 frames, and a minute later at 87752.25.
    EXPECT_THAT(rows(Schedule(atRate(film(2, 3600, 60), 24000, 1001))),
                ElementsAre(Row(0, still, 0, 86314), Row(0, moves, 86314, 87752 - 86314),
                            Row(1, still, 87752, 174066 - 87752)));
}

TEST(Schedule, RoundsWhereEachPartBegins) {
    // A quarter of a second is 2.5 frames: the boundaries are 2.5, 5, 7.5 and 10, halves counting up.
    EXPECT_THAT(
        rows(Schedule(atRate(film(4, 0.25, 0), 10, 1))),
        ElementsAre(Row(0, still, 0, 3), Row(1, still, 3, 2), Row(2, still, 5, 3), Row(3, still, 8, 2)));
    // Parts that are shorter than half a frame may have none.
    EXPECT_THAT(rows(Schedule(atRate(film(3, 0.04, 0), 10, 1))), ElementsAre(Row(1, still, 0, 1)));
}

TEST(Schedule, DoesNotDriftOverThousandsOfPictures) {
    const Schedule schedule(atRate(film(10'000, 0.1, 0.1), 30000, 1001));
    ASSERT_EQ(schedule.parts().size(), 19'999U);
    for (std::uint64_t i = 0; i < 19'999; ++i) {
        // i tenths of a second are 3000 i / 1001 frames; this is rounding to nearest in whole numbers.
        const std::uint64_t expected = (6000 * i + 1001) / 2002;
        ASSERT_EQ(schedule.parts()[i].first, expected) << i;
    }
    EXPECT_EQ(schedule.frameCount(), (6000 * 19'999ULL + 1001) / 2002);
}

TEST(Schedule, CutsWhereATransitionTakesNoTime) {
    Show show = film(3, 1, 0);
    show.pictures[1].next.duration = 0.4;
    EXPECT_THAT(rows(Schedule(show)), ElementsAre(Row(0, still, 0, 25), Row(1, still, 25, 25),
                                                  Row(1, moves, 50, 10), Row(2, still, 60, 25)));
}

TEST(Schedule, EndsALoopWithTheWayToItsFirstPicture) {
    Show show = film(2, 1, 0.4);
    show.loop = true;
    const Schedule schedule(show);
    EXPECT_THAT(rows(schedule), ElementsAre(Row(0, still, 0, 25), Row(0, moves, 25, 10),
                                            Row(1, still, 35, 25), Row(1, moves, 60, 10)));
    EXPECT_EQ(schedule.at(69).picture, 1U);
    EXPECT_EQ(schedule.at(69).weight, 10.0F / 11);
}

TEST(Schedule, HasNoTransitionForASinglePicture) {
    Show show = film(1, 2, 1);
    EXPECT_THAT(rows(Schedule(show)), ElementsAre(Row(0, still, 0, 50)));
    show.loop = true;
    EXPECT_THAT(rows(Schedule(show)), ElementsAre(Row(0, still, 0, 50)));
}

TEST(Schedule, MovesOnAtOnceFromPicturesThatDoNotStand) {
    EXPECT_THAT(rows(Schedule(film(3, 0, 1))), ElementsAre(Row(0, moves, 0, 25), Row(1, moves, 25, 25)));
}

TEST(Schedule, NeverReachesTheEndsWithinATransition) {
    // 86.4 million frames: the last weight is nearer to 1 than any float but 1.
    Show show = atRate(film(2, 0, 86400), 1000, 1);
    show.pictures[0].next.easing = Easing::Out;
    const Schedule slow(show);
    EXPECT_EQ(slow.frameCount(), 86'400'000U);
    EXPECT_LT(slow.at(86'399'999).weight, 1.0F);
    show.pictures[0].next.easing = Easing::In;
    EXPECT_GT(Schedule(show).at(0).weight, 0.0F);
}

TEST(Schedule, RefusesShowsWithoutFramesOrWithTooMany) {
    EXPECT_EQ(
        complaint(film(2, 0, 0)),
        "NSInvalidArgumentException: the show would have no frame; let its pictures stand or its transitions "
        "take longer");
    EXPECT_THAT(complaint(film(1, 0.019, 0)), HasSubstr("no frame")); // less than half of one
    EXPECT_EQ(complaint(film(1, 0.02, 0)), "none, but 1 frames");
    // 100 million frames are as many as 4 million seconds.
    EXPECT_EQ(complaint(film(46, 86400, 0)), "none, but 99360000 frames");
    EXPECT_EQ(complaint(film(47, 86400, 0)), "NSRangeException: the show would have more than 100000000 "
                                             "frames; take fewer pictures, shorter times or a lower rate");
}
