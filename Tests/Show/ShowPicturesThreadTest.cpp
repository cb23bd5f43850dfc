// Also tests: Show/ShowPictures.cpp

#include "Show/ShowPictures.h"

#include <gtest/gtest.h>

#include <atomic>
#include <stdexcept>

using namespace Imaging;

namespace {

/// Nodes that know which picture they are.
class NumberedNode : public IMGImage {
public:
    explicit NumberedNode(std::size_t picture) : number(picture) { ++alive; }
    ~NumberedNode() override { --alive; }

    std::size_t number;
    static inline std::atomic<int> alive = 0;
};

std::size_t numberOf(const ShowPictures::Node& node) {
    return dynamic_cast<const NumberedNode&>(*node).number;
}

} // namespace

TEST(ShowPictures, ComeInTheirOrderAndLeaveWhenTheyArePast) {
    const std::vector<std::size_t> order = {4, 0, 2, 0, 1, 3, 4};
    std::atomic<int> most = 0;
    {
        ShowPictures pictures(order, [&](std::size_t picture) {
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

TEST(ShowPictures, AFailureReachesWhoAsksForThePictureAndNobodyBefore) {
    ShowPictures pictures({0, 1, 2}, [](std::size_t picture) {
        if (picture == 1) throw std::runtime_error("it is bad");
        return std::make_shared<NumberedNode>(picture);
    });
    EXPECT_EQ(numberOf(pictures.at(0, 0)), 0U);
    EXPECT_THROW(pictures.at(1, 0), std::runtime_error);
    EXPECT_EQ(numberOf(pictures.at(0, 0)), 0U);
    EXPECT_THROW(pictures.at(2, 1), std::runtime_error);
}

TEST(ShowPictures, CanGoAtAnyTime) {
    for (std::size_t asked = 0; asked < 4; ++asked) {
        ShowPictures pictures(std::vector<std::size_t>(100, 7),
                              [](std::size_t picture) { return std::make_shared<NumberedNode>(picture); });
        for (std::size_t place = 0; place < asked; ++place) pictures.at(place, place);
    }
    EXPECT_EQ(NumberedNode::alive, 0);
}
