// Pixel operations while others compute too: each has two threads of its own, and graphs on several threads
// may read the same pixels.

#include "Imaging/ColorOperations.h"
#include "Imaging/Mask.h"
#include "Tests/Imaging/PixelOperationFixtures.h"

#include <gtest/gtest.h>

#include <barrier>
#include <thread>
#include <vector>

using namespace ImagingTests;

namespace {

/// Colour transform, hue adjustment and mask over pictures that share the pixels of `colour` and `mask`.
std::vector<std::uint8_t> computedOver(Rows& colour, Rows& withAlpha, Rows& mask) {
    std::vector<std::uint8_t> all;
    const auto add = [&](const std::shared_ptr<CCImage>& result) {
        const auto samples = samplesOf(result);
        all.insert(all.end(), samples.begin(), samples.end());
    };
    const auto multiplied =
        Imaging::IMGColorTransformOp::colorTransformWithSourceImage(colour.node(), 0.5F, 1.5F, 1, 1);
    add(Imaging::IMGHueAdjustOp::hueAdjustWithSourceImage(multiplied, 1)->untransformedImage());
    add(Imaging::IMGHueAdjustOp::hueAdjustWithSourceImage(withAlpha.node(), 2)->untransformedImage());
    add(Imaging::IMGMaskOp(withAlpha.node(), mask.node()).untransformedImage());
    return all;
}

} // namespace

TEST(PixelOperations, OnSeveralThreadsDoNotDisturbEachOther) {
    Pixels::Random random(51);
    Rows colour(61, 33, 3, 5);
    Rows withAlpha(61, 33, 4, 1);
    Rows mask(61, 33, 1, 3);
    for (Rows* const rows : {&colour, &withAlpha, &mask}) rows->fill(random);
    const auto expected = computedOver(colour, withAlpha, mask);
    constexpr int threads = 4;
    std::barrier together(threads);
    std::vector<std::vector<std::uint8_t>> results(threads);
    std::vector<std::thread> running;
    for (auto& result : results) {
        running.emplace_back([&] {
            together.arrive_and_wait();
            for (int i = 0; i < 5; ++i) result = computedOver(colour, withAlpha, mask);
        });
    }
    for (std::thread& thread : running) thread.join();
    for (const auto& result : results) EXPECT_EQ(result, expected);
}
