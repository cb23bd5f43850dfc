// Graphs as deep as no application builds them, on the stack that a main thread has.

#include "Tests/Imaging/ImagingTestSupport.h"

#include <gtest/gtest.h>

#include <memory>

using namespace ImagingTests;

namespace {

#if defined(__has_feature)
#define IMAGING_HAS_FEATURE(name) __has_feature(name)
#else
#define IMAGING_HAS_FEATURE(name) 0
#endif

// AddressSanitizer makes the frames of a level four to eight times as large.
#if defined(__SANITIZE_ADDRESS__) || IMAGING_HAS_FEATURE(address_sanitizer)
constexpr int depth = 4'000;
#else
constexpr int depth = 10'000;
#endif

/// Graphs are torn down whatever their depth.
constexpr int depthWithoutRecursion = 300'000;

/// Nested plain nodes over a source.
std::shared_ptr<IMGImage> tower(std::shared_ptr<IMGImage> source, int levels = depth) {
    std::shared_ptr<IMGImage> top = std::move(source);
    for (int i = 0; i < levels; ++i) top = std::make_shared<IMGImage>(std::move(top));
    return top;
}

struct Counter {
    int tellings = 0;
    void told(IMGImage&) { ++tellings; }
};

} // namespace

TEST(DeepGraph, IsToldOfChangesUpToItsTop) {
    const auto source = std::make_shared<IMGImage>();
    const auto top = tower(source);
    Counter counter;
    top->addImageDidChangeObserver(&counter, &Counter::told);
    source->changed();
    EXPECT_EQ(counter.tellings, 1);
    top->removeImageDidChangeObserver(&counter);
}

TEST(DeepGraph, DrawsItsPicture) {
    const Grid picture = distinctPicture(5, 3);
    const auto top = tower(pictureNode(picture));
    const Grid drawn = drawnOn(9, 8, [&] { top->drawWithTransform(moved(2, 4), 2, 1); });
    Grid expected(9, 8);
    paint(expected, picture, [](Spot p) { return Spot{p.x + 2, p.y + 4}; });
    EXPECT_TRUE(Pixels::areAlike(drawn, expected));
}

TEST(DeepGraph, KnowsItsBoundsAndThoseOfItsPicture) {
    const auto source = pictureNode(distinctPicture(5, 3));
    const auto top = tower(source);
    EXPECT_TRUE(isRect(top->imageBoundsRect(), 0, 0, 5, 3));
    const auto bounds = top->boundsForImage(*source, NSMakeRect(6, 8, 10, 9));
    ASSERT_TRUE(bounds.has_value());
    EXPECT_TRUE(isRect(bounds->boundingRect(), 6, 8, 10, 9));
    EXPECT_FALSE(top->boundsForImage(*pictureNode(distinctPicture(5, 3)), NSAffineTransform()).has_value());
}

TEST(DeepGraph, FindsAndReplacesItsDeepestSource) {
    const auto source = std::make_shared<IMGImage>();
    const auto fresh = std::make_shared<TestNode>();
    const auto top = tower(source);
    const auto parent = top->parentOfSource(*source);
    ASSERT_NE(parent, nullptr);
    top->replaceSource(source, fresh);
    EXPECT_EQ(parent->sources(), IMGImage::Sources{fresh});
}

TEST(DeepGraph, IsDestroyed) {
    const auto source = std::make_shared<IMGImage>();
    auto top = tower(source, depthWithoutRecursion);
    EXPECT_EQ(source.use_count(), 2);
    top.reset();
    EXPECT_EQ(source.use_count(), 1);
    source->changed();
}

TEST(DeepGraph, IsDestroyedWhereEachNodeHasItsSourceTwice) {
    std::shared_ptr<IMGImage> top = std::make_shared<IMGImage>();
    const std::weak_ptr<IMGImage> seen = top;
    for (int i = 0; i < depthWithoutRecursion; ++i) {
        top = std::make_shared<IMGImage>(IMGImage::Sources{top, top});
    }
    top.reset();
    EXPECT_TRUE(seen.expired());
}
