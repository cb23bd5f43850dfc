#include "Imaging/SizedNode.h"

#include "Tests/Imaging/ImagingTestSupport.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>

using namespace ImagingTests;

namespace {

/// A program's own node of a fixed size.
class Page : public Imaging::SizedNode {
public:
    using SizedNode::SizedNode;
    explicit Page(NSSize size, Sources sources = {}) : SizedNode(size, std::move(sources)) {}

    using SizedNode::setSize;
    using SizedNode::wholeRect;

    std::string archiveClassName() const override { return "Page"; }
    std::shared_ptr<IMGImage> copy() const override { return std::make_shared<Page>(size(), sources()); }
};

struct Counter {
    int tellings = 0;
    void told(IMGImage&) { ++tellings; }
};

} // namespace

TEST(SizedNode, LiesAtTheOriginWithItsSizeWhateverItsSourcesCover) {
    const Page page(NSMakeSize(30, 20), {leaf(NSMakeRect(-100, -100, 500, 500))});
    EXPECT_TRUE(isSize(page.size(), 30, 20));
    EXPECT_TRUE(isRect(page.wholeRect(), 0, 0, 30, 20));
    EXPECT_TRUE(isRect(page.imageBounds().rectangle(), 0, 0, 30, 20));
    EXPECT_TRUE(isTransform(*page.imageBounds().transform(), NSAffineTransform()));
}

TEST(SizedNode, HasTheZeroSizeUntilItIsGivenOne) {
    Page page(leaf(NSMakeRect(1, 2, 3, 4)));
    EXPECT_TRUE(isRect(page.imageBounds().rectangle(), 0, 0, 0, 0));
    Counter counter;
    page.addImageDidChangeObserver(&counter, &Counter::told);
    page.setSize(NSMakeSize(7, 5));
    EXPECT_TRUE(isRect(page.imageBoundsRect(), 0, 0, 7, 5));
    EXPECT_EQ(counter.tellings, 0);
    EXPECT_TRUE(isSize(Page().size(), 0, 0));
}

TEST(SizedNode, AnswersForItselfAndHasItsSourcesAnswerForOthers) {
    const auto source = leaf(NSMakeRect(1, 2, 3, 4), moved(10, 20));
    const Page page(NSMakeSize(30, 20), {source});
    const NSAffineTransform turned = matrix(0, 1, -1, 0, 7, 8);
    const auto own = page.boundsForImage(page, turned);
    ASSERT_TRUE(own.has_value());
    EXPECT_TRUE(isRect(own->rectangle(), 0, 0, 30, 20));
    EXPECT_TRUE(isTransform(*own->transform(), turned));
    const auto below = page.boundsForImage(*source, moved(100, 0));
    ASSERT_TRUE(below.has_value());
    EXPECT_TRUE(isRect(below->boundingRect(), 111, 22, 3, 4));
    EXPECT_FALSE(page.boundsForImage(*leaf(NSMakeRect(0, 0, 1, 1)), turned).has_value());
}
