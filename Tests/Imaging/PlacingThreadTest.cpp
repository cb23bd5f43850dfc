// Transforms that nodes keep may be asked for and dropped on several threads at once.

#include "Imaging/TransformOperations.h"
#include "Imaging/Transpose.h"
#include "Tests/Imaging/ImagingTestSupport.h"

#include <gtest/gtest.h>

#include <atomic>
#include <barrier>
#include <thread>
#include <vector>

using namespace ImagingTests;

namespace {

/// Asks for the transform on three threads while a fourth keeps dropping it; the number of answers that
/// were not what they should be.
int wrongAnswers(IMGImage& node, const NSAffineTransform& expected) {
    constexpr int rounds = 2000;
    std::atomic<int> wrong = 0;
    std::barrier start(4);
    std::vector<std::thread> threads;
    for (int i = 0; i < 3; ++i) {
        threads.emplace_back([&] {
            start.arrive_and_wait();
            for (int round = 0; round < rounds; ++round) wrong += node.transform().isEqual(expected) ? 0 : 1;
        });
    }
    threads.emplace_back([&] {
        start.arrive_and_wait();
        for (int round = 0; round < rounds; ++round) node.changed();
    });
    for (std::thread& thread : threads) thread.join();
    return wrong;
}

} // namespace

TEST(PlacingThreads, TransformsAreWholeWhileTheyAreDropped) {
    const auto picture = pictureNode(distinctPicture(4, 2));
    const auto rotation = Imaging::IMGRotationOp::rotationByDegrees(90, NSMakePoint(2, 3), picture);
    EXPECT_EQ(wrongAnswers(*rotation, matrix(0, 1, -1, 0, 5, 1)), 0);
    const auto translation = Imaging::IMGTranslationOp::translationBy(NSMakePoint(7, -9), picture);
    EXPECT_EQ(wrongAnswers(*translation, moved(7, -9)), 0);
    const auto transpose = Imaging::IMGTransposeOp::transposeOfType(Imaging::ROTATE_180, picture);
    EXPECT_EQ(wrongAnswers(*transpose, matrix(-1, 0, 0, -1, 4, 2)), 0);
    // A transposition asks its source, whose own lock is taken meanwhile.
    const auto above = Imaging::IMGTransposeOp::transposeOfType(Imaging::ROTATE_180, transpose);
    EXPECT_EQ(wrongAnswers(*above, matrix(-1, 0, 0, -1, 4, 2)), 0);
}
