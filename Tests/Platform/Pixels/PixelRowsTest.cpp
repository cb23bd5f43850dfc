// Also tests: Platform/Pixels/Rows/PlainPixelRows.cpp

#include "Platform/Pixels/Rows/PixelRows.h"

#include "Platform/Pixels/Rows/PlainPixelRows.h"
#include "Tests/Support/Pixels.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <hwy/targets.h>
#include <ostream>
#include <set>
#include <string>
#include <vector>

using namespace Imaging::Platform;
using namespace Pixels;

namespace {

using Bytes = std::vector<std::uint8_t>;
using Call = void (*)(const PixelRowRoutines&, const std::uint8_t* from, std::uint8_t* to, std::size_t count);

/// A routine as one from bytes to bytes.
struct Routine {
    const char* name;
    std::size_t bytesFrom; ///< of each pixel
    std::size_t bytesTo;
    Call call;
};

template<class From, class To>
void callAs(void (*routine)(const From*, To*, std::size_t), const std::uint8_t* from, std::uint8_t* to,
            std::size_t count) {
    routine(reinterpret_cast<const From*>(from), reinterpret_cast<To*>(to), count);
}

template<auto routine>
void call(const PixelRowRoutines& rows, const std::uint8_t* from, std::uint8_t* to, std::size_t count) {
    callAs(rows.*routine, from, to, count);
}

const std::array<Routine, 18> allRoutines = {
    Routine{"rgbToRgba", 3, 4, call<&PixelRowRoutines::rgbToRgba>},
    Routine{"rgbToWords", 3, 4, call<&PixelRowRoutines::rgbToWords>},
    Routine{"grayToRgba", 1, 4, call<&PixelRowRoutines::grayToRgba>},
    Routine{"grayToWords", 1, 4, call<&PixelRowRoutines::grayToWords>},
    Routine{"rgbaToOpaque", 4, 4, call<&PixelRowRoutines::rgbaToOpaque>},
    Routine{"grayAlphaToRgba", 2, 4, call<&PixelRowRoutines::grayAlphaToRgba>},
    Routine{"grayAlphaToWords", 2, 4, call<&PixelRowRoutines::grayAlphaToWords>},
    Routine{"rgbaToRgb", 4, 3, call<&PixelRowRoutines::rgbaToRgb>},
    Routine{"rgbaToWords", 4, 4, call<&PixelRowRoutines::rgbaToWords>},
    Routine{"wordsToRgba", 4, 4, call<&PixelRowRoutines::wordsToRgba>},
    Routine{"rgbaToArgb", 4, 4, call<&PixelRowRoutines::rgbaToArgb>},
    Routine{"argbToRgba", 4, 4, call<&PixelRowRoutines::argbToRgba>},
    Routine{"rgbaToGray", 4, 1, call<&PixelRowRoutines::rgbaToGray>},
    Routine{"rgbaToGrayAlpha", 4, 2, call<&PixelRowRoutines::rgbaToGrayAlpha>},
    Routine{"invertColors", 4, 4, call<&PixelRowRoutines::invertColors>},
    Routine{"premultiply", 4, 4, call<&PixelRowRoutines::premultiply>},
    Routine{"unmultiply", 4, 4, call<&PixelRowRoutines::unmultiply>},
    Routine{"narrow", 2, 1, call<&PixelRowRoutines::narrow>}};
static_assert(sizeof(PixelRowRoutines) == allRoutines.size() * sizeof(void (*)()), "a routine is missing");

std::ostream& operator<<(std::ostream& out, const Routine& routine) { return out << routine.name; }

/// Each kind of vector unit that the machine has, one after another.
class PixelRows : public testing::Test {
protected:
    ~PixelRows() override { hwy::SetSupportedTargetsForTest(0); }

    template<class Body>
    static void onEveryTarget(const Body& body) {
        const std::vector<std::int64_t> targets = hwy::SupportedAndGeneratedTargets();
        ASSERT_FALSE(targets.empty());
        std::set<const PixelRowRoutines*> seen;
        for (const std::int64_t target : targets) {
            hwy::SetSupportedTargetsForTest(target);
            SCOPED_TRACE(hwy::TargetName(target));
            ASSERT_TRUE(seen.insert(&pixelRows()).second) << "the same code as another target's";
            body(pixelRows());
            hwy::SetSupportedTargetsForTest(0);
        }
    }
};

Bytes randomBytes(Random& random, std::size_t size) {
    Bytes bytes(size);
    std::generate(bytes.begin(), bytes.end(), [&] { return static_cast<std::uint8_t>(random.sample()); });
    return bytes;
}

constexpr std::size_t guardBytes = 96; // more than the widest vector
constexpr std::uint8_t guard = 0xC7;

/// The target's memory after a call, with untouched bytes before and behind the pixels.
Bytes targetAfter(const Routine& routine, const PixelRowRoutines& rows, const Bytes& source,
                  std::size_t sourceAt, std::size_t targetAt, std::size_t count) {
    Bytes target(targetAt + guardBytes + count * routine.bytesTo + guardBytes, guard);
    routine.call(rows, source.data() + sourceAt, target.data() + targetAt + guardBytes, count);
    return target;
}

/// dividend / divisor, rounded to nearest with ties upward.
unsigned roundedQuotient(unsigned dividend, unsigned divisor) {
    return (2 * dividend + divisor) / (2 * divisor);
}

using Pixel = std::array<std::uint8_t, 4>;

template<std::size_t size>
std::array<std::uint8_t, size> afterPlain(const char* name, const std::vector<std::uint8_t>& pixel) {
    std::array<std::uint8_t, size> result{};
    for (const Routine& routine : allRoutines) {
        if (std::string(name) != routine.name) continue;
        EXPECT_EQ(pixel.size(), routine.bytesFrom);
        EXPECT_EQ(size, routine.bytesTo);
        routine.call(plainPixelRows(), pixel.data(), result.data(), 1);
        return result;
    }
    ADD_FAILURE() << "there is no routine " << name;
    return result;
}

} // namespace

TEST_F(PixelRows, OfPlainCodePutSamplesWhereTheyBelong) {
    const std::vector<std::uint8_t> color{10, 20, 30};
    const std::vector<std::uint8_t> pixel{10, 20, 30, 40};
    EXPECT_EQ(afterPlain<4>("rgbToRgba", color), (Pixel{10, 20, 30, 255}));
    EXPECT_EQ(afterPlain<4>("grayToRgba", {7}), (Pixel{7, 7, 7, 255}));
    EXPECT_EQ(afterPlain<4>("grayAlphaToRgba", {7, 9}), (Pixel{7, 7, 7, 9}));
    EXPECT_EQ(afterPlain<4>("rgbaToOpaque", pixel), (Pixel{10, 20, 30, 255}));
    EXPECT_EQ(afterPlain<3>("rgbaToRgb", pixel), (std::array<std::uint8_t, 3>{10, 20, 30}));
    EXPECT_EQ(afterPlain<4>("rgbaToArgb", pixel), (Pixel{40, 10, 20, 30}));
    EXPECT_EQ(afterPlain<4>("argbToRgba", pixel), (Pixel{20, 30, 40, 10}));
    EXPECT_EQ(afterPlain<4>("invertColors", pixel), (Pixel{245, 235, 225, 40}));
    // 30 parts of 200, 59 of 100 and 11 of 7 are 119.77 parts of 100.
    EXPECT_EQ(afterPlain<1>("rgbaToGray", {200, 100, 7, 5}), (std::array<std::uint8_t, 1>{120}));
    EXPECT_EQ(afterPlain<2>("rgbaToGrayAlpha", {200, 100, 7, 5}), (std::array<std::uint8_t, 2>{120, 5}));
    EXPECT_EQ(afterPlain<4>("premultiply", {255, 100, 3, 51}), (Pixel{51, 20, 1, 51}));
    EXPECT_EQ(afterPlain<4>("unmultiply", {51, 20, 60, 51}), (Pixel{255, 100, 255, 51}));
    EXPECT_EQ(afterPlain<4>("unmultiply", {51, 20, 60, 0}), (Pixel{0, 0, 0, 0}));
}

TEST_F(PixelRows, OfPlainCodePutSamplesWhereTheyBelongInWords) {
    const std::array<std::uint8_t, 4> pixel{0x10, 0x20, 0x30, 0x40};
    std::uint32_t word = 0;
    plainPixelRows().rgbToWords(pixel.data(), &word, 1);
    EXPECT_EQ(word, 0xFF102030U);
    plainPixelRows().grayToWords(pixel.data(), &word, 1);
    EXPECT_EQ(word, 0xFF101010U);
    plainPixelRows().grayAlphaToWords(pixel.data(), &word, 1);
    EXPECT_EQ(word, 0x20101010U);
    plainPixelRows().rgbaToWords(pixel.data(), &word, 1);
    EXPECT_EQ(word, 0x40102030U);
    Pixel back{};
    plainPixelRows().wordsToRgba(&word, back.data(), 1);
    EXPECT_EQ(back, pixel);
}

TEST_F(PixelRows, OfEveryLengthAreThoseOfPlainCodeAndTouchNothingAround) {
    Random random(71);
    onEveryTarget([&](const PixelRowRoutines& rows) {
        for (const Routine& routine : allRoutines) {
            for (std::size_t count = 0; count <= 255; ++count) {
                // The source ends with its last pixel, so that reading on is noticed where memory is watched.
                const Bytes source = randomBytes(random, count * routine.bytesFrom);
                ASSERT_EQ(targetAfter(routine, rows, source, 0, 0, count),
                          targetAfter(routine, plainPixelRows(), source, 0, 0, count))
                    << routine << ", " << count << " pixels";
            }
        }
    });
}

TEST_F(PixelRows, MayLieAnywhereInMemory) {
    Random random(72);
    onEveryTarget([&](const PixelRowRoutines& rows) {
        for (const Routine& routine : allRoutines) {
            const std::string name = routine.name;
            const std::size_t sourceStep = name.rfind("words", 0) == 0 ? 4 : 1; // words are aligned as such
            const std::size_t targetStep = name.find("Words") != std::string::npos ? 4 : 1;
            const Bytes source = randomBytes(random, 64 + 300 * routine.bytesFrom);
            for (std::size_t at = 0; at <= 17; ++at) {
                const std::size_t from = at * sourceStep;
                const std::size_t to = (17 - at) * targetStep;
                ASSERT_EQ(targetAfter(routine, rows, source, from, to, 200),
                          targetAfter(routine, plainPixelRows(), source, from, to, 200))
                    << routine << ", " << at;
            }
        }
    });
}

TEST_F(PixelRows, MayBeChangedWhereTheyLie) {
    Random random(73);
    onEveryTarget([&](const PixelRowRoutines& rows) {
        for (const Routine& routine : allRoutines) {
            if (routine.bytesFrom != routine.bytesTo) continue;
            for (const std::size_t count : {1, 5, 64, 131, 255}) {
                const Bytes source = randomBytes(random, count * 4);
                Bytes expected(source.size());
                routine.call(plainPixelRows(), source.data(), expected.data(), count);
                for (const PixelRowRoutines* code : {&rows, &plainPixelRows()}) {
                    Bytes changed = source;
                    routine.call(*code, changed.data(), changed.data(), count);
                    ASSERT_EQ(changed, expected) << routine << ", " << count << " pixels";
                }
            }
        }
    });
}

TEST_F(PixelRows, ArePremultipliedRoundingToNearestForEveryPairOfBytes) {
    Bytes straight;
    Bytes expected;
    for (unsigned alpha = 0; alpha < 256; ++alpha) {
        for (unsigned color = 0; color < 256; ++color) {
            for (const unsigned c : {color, 255 - color, color ^ 0x55}) {
                straight.push_back(static_cast<std::uint8_t>(c));
                expected.push_back(static_cast<std::uint8_t>(roundedQuotient(c * alpha, 255)));
            }
            straight.push_back(static_cast<std::uint8_t>(alpha));
            expected.push_back(static_cast<std::uint8_t>(alpha));
        }
    }
    const auto check = [&](const PixelRowRoutines& rows) {
        Bytes result(straight.size());
        rows.premultiply(straight.data(), result.data(), 65536);
        EXPECT_EQ(result, expected);
    };
    check(plainPixelRows());
    onEveryTarget(check);
}

TEST_F(PixelRows, AreUnmultipliedRoundingToNearestForEveryPairOfBytes) {
    Bytes rgba;
    Bytes expected;
    for (unsigned alpha = 0; alpha < 256; ++alpha) {
        for (unsigned color = 0; color < 256; ++color) {
            for (const unsigned c : {color, 255 - color, color ^ 0x55}) {
                const unsigned quotient = alpha == 0 ? 0 : roundedQuotient(c * 255, alpha);
                rgba.push_back(static_cast<std::uint8_t>(c));
                expected.push_back(static_cast<std::uint8_t>(std::min(quotient, 255U)));
            }
            rgba.push_back(static_cast<std::uint8_t>(alpha));
            expected.push_back(static_cast<std::uint8_t>(alpha));
        }
    }
    const auto check = [&](const PixelRowRoutines& rows) {
        Bytes result(rgba.size());
        rows.unmultiply(rgba.data(), result.data(), 65536);
        EXPECT_EQ(result, expected);
    };
    check(plainPixelRows());
    onEveryTarget(check);
}

TEST_F(PixelRows, AreGrayByTheWeightsRoundedToNearestForEveryColour) {
    const auto check = [](const PixelRowRoutines& rows) {
        std::array<std::uint8_t, 1024> rgba{};
        std::array<std::uint8_t, 256> gray{};
        std::array<std::uint8_t, 512> grayAlpha{};
        for (std::size_t i = 0; i < 65536; ++i) {
            for (std::size_t b = 0; b < 256; ++b) {
                rgba[b * 4] = static_cast<std::uint8_t>(i >> 8);
                rgba[b * 4 + 1] = static_cast<std::uint8_t>(i);
                rgba[b * 4 + 2] = static_cast<std::uint8_t>(b);
                rgba[b * 4 + 3] = static_cast<std::uint8_t>(i * 7 + b);
            }
            rows.rgbaToGray(rgba.data(), gray.data(), 256);
            rows.rgbaToGrayAlpha(rgba.data(), grayAlpha.data(), 256);
            for (std::size_t b = 0; b < 256; ++b) {
                const auto sum = static_cast<unsigned>(30 * (i >> 8) + 59 * (i & 255) + 11 * b);
                const unsigned expected = roundedQuotient(sum, 100);
                ASSERT_EQ(gray[b], expected) << (i >> 8) << ", " << (i & 255) << ", " << b;
                ASSERT_EQ(grayAlpha[b * 2], expected);
                ASSERT_EQ(grayAlpha[b * 2 + 1], rgba[b * 4 + 3]);
            }
        }
    };
    check(plainPixelRows());
    onEveryTarget(check);
}

TEST_F(PixelRows, OfSixteenBitsBecomeEightRoundingToNearest) {
    std::vector<std::uint16_t> samples;
    Bytes expected;
    for (unsigned v = 0; v < 65536; ++v) {
        samples.push_back(static_cast<std::uint16_t>(v));
        expected.push_back(static_cast<std::uint8_t>(roundedQuotient(v * 255, 65535)));
    }
    const auto check = [&](const PixelRowRoutines& rows) {
        Bytes result(65536);
        rows.narrow(reinterpret_cast<const std::uint8_t*>(samples.data()), result.data(), 65536);
        EXPECT_EQ(result, expected);
    };
    check(plainPixelRows());
    onEveryTarget(check);
}
