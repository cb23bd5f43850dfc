// Convolutions run two threads each; these run under ThreadSanitizer too.

#include "Imaging/Kernel.h"
#include "Imaging/Pixels/ConvolutionPasses.h"
#include "Imaging/Pixels/PixelWorkers.h"
#include "Tests/Imaging/Pixels/ConvolutionFixtures.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <thread>
#include <vector>

using namespace ImagingTests;
using namespace Imaging;

namespace {

Taps2 tapsOf(const IMGKernel& kernel) {
    return {static_cast<int>(kernel.size().width),
            static_cast<int>(kernel.size().height),
            {kernel.dataAsIntArray(), kernel.dataAsIntArray() + kernel.tapCount()},
            kernel.divisor()};
}

/// Both kinds of convolution of a random picture, against the plain arithmetic.
void convolveSomething(Pixels::Random& random) {
    GuardedSamples source(211, 97, 3, 4);
    GuardedSamples between(211, 97, 3, 0);
    GuardedSamples expected(211, 97, 3, 0);
    GuardedSamples result(211, 97, 3, 7);
    source.fillAtRandom(random);
    const Taps2 row = tapsOf(*IMGKernel::kernelSeparableGaussianWithSigma(2));
    convolveSeparably(lineRecord(source, result, row), 3);
    referenceLines(source, between, row, true);
    referenceLines(between, expected, row, false);
    EXPECT_TRUE(areEqual(result, expected));
    const Taps2 square = tapsOf(*IMGKernel::kernelSharpen());
    convolveRectangle(rectangleRecord(source, result, square), 3);
    referenceRectangle(source, expected, square);
    EXPECT_TRUE(areEqual(result, expected));
}

/// Fails for every second thread, or for all.
int failingEveryOther(pthread_t* thread, const pthread_attr_t* attributes, void* (*body)(void*),
                      void* argument) {
    static int calls = 0;
    return calls++ % 2 == 0 ? EAGAIN : pthread_create(thread, attributes, body, argument);
}

int failing(pthread_t*, const pthread_attr_t*, void* (*)(void*), void*) { return EAGAIN; }

} // namespace

TEST(ConvolutionOnThreads, GivesTheSameAsOneThread) {
    Pixels::Random random(20261221);
    for (int round = 0; round < 5; ++round) convolveSomething(random);
}

TEST(ConvolutionOnThreads, SharesNothingBetweenConvolutions) {
    std::vector<Pixels::Random> randoms;
    for (std::uint32_t i = 0; i < 3; ++i) randoms.emplace_back(20261222 + i);
    std::vector<std::thread> threads;
    threads.reserve(randoms.size());
    for (Pixels::Random& random : randoms) threads.emplace_back([&random] { convolveSomething(random); });
    for (std::thread& thread : threads) thread.join();
}

TEST(ConvolutionOnThreads, IsCompleteWhereThreadsCannotBeMade) {
    Pixels::Random random(20261223);
    for (const ThreadCreation creation : {failing, failingEveryOther}) {
        setThreadCreation(creation);
        convolveSomething(random);
        setThreadCreation(nullptr);
    }
}
