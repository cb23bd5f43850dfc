// Kernels: how many taps a size has, the taps of bells, divisors and archives.

#include "Imaging/Kernel.h"

#include "Platform/Foundation/Exception.h"
#include "Platform/Foundation/KeyedArchiver.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <memory>
#include <optional>
#include <string>
#include <vector>

using Imaging::IMGKernel;
using Imaging::NSData;
using Imaging::NSSize;
using Imaging::Platform::NSException;

namespace {

using Taps = std::vector<std::int32_t>;
using Kernel = std::shared_ptr<IMGKernel>;

Taps tapsOf(const IMGKernel& kernel) {
    return Taps(kernel.dataAsIntArray(), kernel.dataAsIntArray() + kernel.tapCount());
}

bool hasSize(const IMGKernel& kernel, float width, float height) {
    return kernel.size().width == width && kernel.size().height == height;
}

template<class Body>
std::string exceptionOf(const Body& body) {
    try {
        body();
    } catch (const NSException& exception) {
        return exception.name();
    }
    return "none";
}

/// An archived kernel with some of its keys.
struct PartsOfKernel : Imaging::Platform::NSCoding {
    std::optional<NSSize> size;
    std::optional<NSData> data;
    std::optional<std::string> name;

    std::string archiveClassName() const override { return "IMGKernel"; }
    void encodeWithCoder(Imaging::Platform::NSCoder& coder) const override {
        if (size.has_value()) coder.encodeSize(*size, "size");
        if (data.has_value()) coder.encodeData(*data, "data");
        if (name.has_value()) coder.encodeString(*name, "name");
    }
};

Kernel unarchived(const Imaging::Platform::NSCoding& object) {
    return Imaging::Platform::unarchiveObjectOfClass<IMGKernel>(
        Imaging::Platform::archivedDataWithRootObject(object));
}

} // namespace

TEST(Kernel, KeepsItsSizeTapsAndName) {
    const Taps taps = {1, -2, 3, 40000, -50000, 6};
    const IMGKernel kernel({3, 2}, taps.data(), "mine");
    EXPECT_TRUE(hasSize(kernel, 3, 2));
    EXPECT_EQ(tapsOf(kernel), taps);
    EXPECT_EQ(kernel.name(), "mine");
    ASSERT_EQ(kernel.data().size(), 24U);
    EXPECT_EQ(std::memcmp(kernel.data().data(), taps.data(), 24), 0);
}

TEST(Kernel, CopiesItsTapsFromTheCaller) {
    Taps taps = {1, 2, 3};
    const IMGKernel kernel({3, 1}, taps.data(), std::nullopt);
    taps[1] = 99;
    EXPECT_EQ(tapsOf(kernel), (Taps{1, 2, 3}));
    EXPECT_EQ(kernel.name(), std::nullopt);
}

TEST(Kernel, OfSizeZeroHasNoDataAndTheDivisorOne) {
    const IMGKernel kernel({0, 0}, nullptr, "empty");
    EXPECT_TRUE(kernel.data().empty());
    EXPECT_EQ(kernel.tapCount(), 0U);
    EXPECT_EQ(kernel.divisor(), 1);
    EXPECT_TRUE(kernel.holdsAllTaps());
}

TEST(Kernel, TruncatesTheByteCountOfASizeThatIsNotWhole) {
    const Taps taps = {5, 6, 7, 8};
    // 1.3 · 2 · 4 = 10.4 bytes, so two whole taps; trunc(2.6) = 2 of them make the divisor.
    const IMGKernel kernel({1.3F, 2}, taps.data(), std::nullopt);
    EXPECT_EQ(kernel.data().size(), 10U);
    EXPECT_EQ(tapsOf(kernel), (Taps{5, 6}));
    EXPECT_EQ(kernel.divisor(), 11);
}

TEST(Kernel, HasTheTapsThatTheProductOfItsSidesRoundsUpTo) {
    // The float next to 8.9 lies below it, but ten times that float rounds to 89.
    Taps taps(89, 1);
    taps.back() = 1000;
    const IMGKernel kernel({10, 8.9F}, taps.data(), std::nullopt);
    EXPECT_EQ(kernel.data().size(), 356U);
    EXPECT_EQ(tapsOf(kernel), taps);
    EXPECT_EQ(kernel.divisor(), 1088);
}

TEST(Kernel, CountsTapsInFloatsBelowTwoToThe24th) {
    // 3.25 · 5162219 is 16777211.75, and the next float is the whole number above.
    const Taps taps(16777212, 1);
    const IMGKernel kernel({3.25F, 5162219}, taps.data(), std::nullopt);
    EXPECT_EQ(kernel.data().size(), 4 * taps.size());
}

TEST(Kernel, ReadsNoTapsBehindTheExactProductFromTwoToThe24thOn) {
    // 682.75 · 24573 is 2^24 - 1/4, which rounds to 2^24: a quarter of a tap more than there is.
    const Taps taps(16777216, 1);
    EXPECT_EQ(IMGKernel({682.75F, 24573}, taps.data(), std::nullopt).data().size(), 67108863U);
    // The floats beside the odd 4097 · 4099 are even, and the one above is taken.
    const Taps odd(std::size_t{4097} * 4099, 1);
    EXPECT_EQ(IMGKernel({4097, 4099}, odd.data(), std::nullopt).tapCount(), odd.size());
}

TEST(Kernel, HasNoTapsWhereTheSizeIsNotPositive) {
    const Taps taps = {5};
    const float nan = std::numeric_limits<float>::quiet_NaN();
    for (const NSSize size : {NSSize{-3, 1}, NSSize{nan, 1}, NSSize{0, 7}}) {
        const IMGKernel kernel(size, taps.data(), std::nullopt);
        EXPECT_TRUE(kernel.data().empty());
        EXPECT_EQ(kernel.divisor(), 1);
    }
}

TEST(Kernel, NeedsTapsForASize) {
    EXPECT_EQ(exceptionOf([] { IMGKernel({2, 2}, nullptr, std::nullopt); }), "NSInvalidArgumentException");
}

TEST(Kernel, DividesByTheSumOfItsTapsOrByOne) {
    const auto divisor = [](const Taps& taps) {
        return IMGKernel({static_cast<float>(taps.size()), 1}, taps.data(), std::nullopt).divisor();
    };
    EXPECT_EQ(divisor({1, 2, 3}), 6);
    EXPECT_EQ(divisor({-1, 0, 1}), 1);
    EXPECT_EQ(divisor({-4, 1, 1}), -2);
    EXPECT_EQ(divisor({INT32_MAX, 1, 0}), INT32_MIN); // the sum wraps
    EXPECT_EQ(divisor({INT32_MIN, INT32_MIN}), 1);    // to 0
}

TEST(SharpenKernel, HasNineTapsThatSumToFour) {
    const Kernel kernel = IMGKernel::kernelSharpen();
    EXPECT_TRUE(hasSize(*kernel, 3, 3));
    EXPECT_EQ(tapsOf(*kernel), (Taps{-1, -2, -1, -2, 16, -2, -1, -2, -1}));
    EXPECT_EQ(kernel->divisor(), 4);
    EXPECT_EQ(kernel->name(), "sharpen");
}

TEST(SeparableGaussianKernel, HasTheWorkedOutTaps) {
    const auto check = [](double sigma, const Taps& taps, int divisor) {
        const Kernel kernel = IMGKernel::kernelSeparableGaussianWithSigma(sigma);
        EXPECT_TRUE(hasSize(*kernel, static_cast<float>(taps.size()), 1)) << sigma;
        EXPECT_EQ(tapsOf(*kernel), taps);
        EXPECT_EQ(kernel->divisor(), divisor);
        EXPECT_EQ(kernel->name(), "separable gaussian blur");
    };
    check(0.5, {436, 3223, 436}, 4095);
    check(1, {223, 1000, 1649, 1000, 223}, 4095);
    check(2, {287, 536, 781, 885, 781, 536, 287}, 4093);
}

TEST(GaussianKernel, HasTheWorkedOutTaps) {
    const Kernel half = IMGKernel::kernelGaussianWithSigma(0.5);
    EXPECT_TRUE(hasSize(*half, 3, 3));
    EXPECT_EQ(tapsOf(*half), (Taps{46, 343, 46, 343, 2536, 343, 46, 343, 46}));
    EXPECT_EQ(half->divisor(), 4092);
    EXPECT_EQ(half->name(), "gaussian blur");

    const Kernel one = IMGKernel::kernelGaussianWithSigma(1);
    EXPECT_TRUE(hasSize(*one, 5, 5));
    const Taps taps = tapsOf(*one);
    ASSERT_EQ(taps.size(), 25U);
    EXPECT_EQ(Taps(taps.begin() + 10, taps.begin() + 15), (Taps{89, 402, 663, 402, 89}));
    for (const std::size_t corner : {0U, 4U, 20U, 24U}) EXPECT_EQ(taps[corner], 12);
    EXPECT_EQ(one->divisor(), 4083);
}

TEST(GaussianKernels, AreAsWideAsTheTruncatedSigmaPlusOneOnEitherSide) {
    const auto taps = [](double sigma) {
        return IMGKernel::kernelSeparableGaussianWithSigma(sigma)->tapCount();
    };
    EXPECT_EQ(taps(1.9), 5U); // R = trunc(2.9)
    EXPECT_EQ(taps(2.0), 7U);
    EXPECT_EQ(taps(8.0), 19U);
    EXPECT_EQ(taps(-0.5), 1U); // R = trunc(0.5)
    EXPECT_EQ(IMGKernel::kernelGaussianWithSigma(1.9)->tapCount(), 25U);
}

TEST(GaussianKernels, OfASigmaBelowMinusOneAreASingleTap) {
    for (const double sigma : {-1.5, -1000.0, -std::numeric_limits<double>::infinity()}) {
        EXPECT_EQ(tapsOf(*IMGKernel::kernelSeparableGaussianWithSigma(sigma)), (Taps{4096})) << sigma;
        EXPECT_EQ(tapsOf(*IMGKernel::kernelGaussianWithSigma(sigma)), (Taps{4096})) << sigma;
    }
}

TEST(GaussianKernels, LeaveThePictureAsItIsWithoutABell) {
    const double nan = std::numeric_limits<double>::quiet_NaN();
    for (const double sigma : {0.0, -0.0, nan, 1e-200}) {
        const Kernel row = IMGKernel::kernelSeparableGaussianWithSigma(sigma);
        EXPECT_TRUE(hasSize(*row, 3, 1)) << sigma;
        EXPECT_EQ(tapsOf(*row), (Taps{0, 4096, 0})) << sigma;
        const Kernel square = IMGKernel::kernelGaussianWithSigma(sigma);
        EXPECT_TRUE(hasSize(*square, 3, 3)) << sigma;
        EXPECT_EQ(tapsOf(*square), (Taps{0, 0, 0, 0, 4096, 0, 0, 0, 0})) << sigma;
    }
}

TEST(GaussianKernels, HaveAtMost65535TapsASide) {
    const Kernel longest = IMGKernel::kernelSeparableGaussianWithSigma(32766);
    EXPECT_EQ(longest->tapCount(), 65535U);
    EXPECT_EQ(longest->divisor(), 1); // every tap is truncated to 0
    for (const double sigma : {32767.0, 1e9, 1e300, std::numeric_limits<double>::infinity()}) {
        EXPECT_EQ(exceptionOf([&] { IMGKernel::kernelSeparableGaussianWithSigma(sigma); }),
                  "NSInvalidArgumentException");
        EXPECT_EQ(exceptionOf([&] { IMGKernel::kernelGaussianWithSigma(sigma); }),
                  "NSInvalidArgumentException");
    }
}

TEST(GaussianKernels, AreSymmetricAndFallFromTheMiddle) {
    for (const double sigma : {0.3, 1.7, 5.2, 23.0}) {
        const Taps taps = tapsOf(*IMGKernel::kernelSeparableGaussianWithSigma(sigma));
        EXPECT_EQ(Taps(taps.rbegin(), taps.rend()), taps);
        for (std::size_t i = 1; i <= taps.size() / 2; ++i) EXPECT_GE(taps[i], taps[i - 1]);
        const Taps square = tapsOf(*IMGKernel::kernelGaussianWithSigma(sigma));
        EXPECT_EQ(Taps(square.rbegin(), square.rend()), square);
    }
}

TEST(Kernel, ComesBackFromAnArchive) {
    const Taps taps = {1, -2, 3, INT32_MIN, INT32_MAX, 0};
    const IMGKernel kernel({2, 3}, taps.data(), "ours");
    const Kernel back = unarchived(kernel);
    EXPECT_TRUE(hasSize(*back, 2, 3));
    EXPECT_EQ(back->data(), kernel.data());
    EXPECT_EQ(back->name(), "ours");
}

TEST(Kernel, WithoutANameComesBackWithoutOne) {
    const Taps taps = {1, 2};
    EXPECT_EQ(unarchived(IMGKernel({2, 1}, taps.data(), std::nullopt))->name(), std::nullopt);
}

TEST(Kernel, OfAnArchiveWithoutItsKeysIsEmpty) {
    const Kernel kernel = unarchived(PartsOfKernel());
    EXPECT_TRUE(hasSize(*kernel, 0, 0));
    EXPECT_TRUE(kernel->data().empty());
    EXPECT_EQ(kernel->name(), std::nullopt);
    EXPECT_EQ(kernel->divisor(), 1);
}

TEST(Kernel, OfAnArchiveWithTooLittleDataSaysSoAndReadsNoFurther) {
    PartsOfKernel parts;
    parts.size = NSSize{1e9F, 1e9F};
    parts.data = NSData{7, 0, 0, 0, 9}; // one tap in the byte order of every machine that this is tested on
    const Kernel kernel = unarchived(parts);
    EXPECT_FALSE(kernel->holdsAllTaps());
    EXPECT_EQ(kernel->tapCount(), 1U);
    EXPECT_EQ(kernel->divisor(), 7);
    EXPECT_EQ(kernel->copy()->data(), kernel->data());
}

TEST(Kernel, IsCopiedIntoNewDataWithEqualTaps) {
    const Kernel kernel = IMGKernel::kernelSharpen();
    const Kernel copy = kernel->copy();
    EXPECT_NE(copy, kernel);
    EXPECT_TRUE(hasSize(*copy, 3, 3));
    EXPECT_EQ(tapsOf(*copy), tapsOf(*kernel));
    EXPECT_NE(copy->dataAsIntArray(), kernel->dataAsIntArray());
    EXPECT_EQ(copy->name(), kernel->name());
}
