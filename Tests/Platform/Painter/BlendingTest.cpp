#include "Platform/Painter/Blending.h"

#include "Platform/Pixels/CompositingOperation.h"
#include "Tests/Platform/Pixels/VectorTargets.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

using namespace Imaging::Platform;
using namespace Pixels;

namespace {

constexpr int operationCount = 14;
constexpr std::size_t longest = 255;
constexpr double promised = 0.55; // of 255, from the exact result

/// Any word: premultiplied or not.
std::uint32_t anyWord(Random& random) {
    return random.integer(0, 1) == 0 ? wordOf(random.pixel()) : static_cast<std::uint32_t>(random.engine()());
}

std::vector<std::uint32_t> anyWords(Random& random, std::size_t count) {
    std::vector<std::uint32_t> words(count);
    for (std::uint32_t& word : words) word = anyWord(random);
    return words;
}

std::vector<std::uint8_t> anyCoverage(Random& random, std::size_t count) {
    std::vector<std::uint8_t> coverage(count);
    for (std::uint8_t& cover : coverage) cover = static_cast<std::uint8_t>(random.sample());
    return coverage;
}

/// One row by the vector code and one by the plain code, from and to the same places.
testing::AssertionResult rowsAreEqual(Random& random, const Blend& blend, bool covered, std::size_t count) {
    const auto offset = [&random] { return static_cast<std::size_t>(random.integer(0, 7)); };
    const std::vector<std::uint32_t> source = anyWords(random, count + 8);
    const std::vector<std::uint8_t> coverage = anyCoverage(random, count + 8);
    const std::uint32_t* const from = source.data() + offset();
    const std::uint8_t* const covers = covered ? coverage.data() + offset() : nullptr;
    GuardedWords vector(longest + 8);
    const std::size_t at = offset();
    for (std::size_t x = 0; x < count; ++x) vector.from(at)[x] = anyWord(random);
    GuardedWords plain = vector;
    blendRow(blend, from, covers, vector.from(at), count);
    blendRowPlain(blend, from, covers, plain.from(at), count);
    if (vector == plain) return testing::AssertionSuccess();
    return testing::AssertionFailure() << "operation " << blend.operation << ", fraction " << blend.fraction
                                       << ", " << count << " pixels, opaque " << blend.opaqueTarget;
}

std::int16_t anyFraction(Random& random) {
    const int choice = random.integer(0, 3);
    if (choice == 0) return Blend::one;
    return static_cast<std::int16_t>(choice == 1 ? random.integer(0, 2) : random.integer(0, Blend::one));
}

/// The largest distance in 255ths between a blended row and the exact results, colour only where the target
/// has no alpha.
double largestError(Random& random, int operation, double fraction, bool covered, bool opaque,
                    const std::vector<Rgba>& source, const std::vector<Rgba>& target) {
    std::vector<std::uint32_t> from;
    std::vector<std::uint32_t> words;
    for (const Rgba p : source) from.push_back(wordOf(p));
    for (const Rgba p : target) words.push_back(wordOf(p));
    const std::vector<std::uint8_t> coverage = anyCoverage(random, source.size());
    blendRow({compositingOperation(operation), blendFraction(fraction), opaque}, from.data(),
             covered ? coverage.data() : nullptr, words.data(), words.size());
    double largest = 0;
    for (std::size_t x = 0; x < words.size(); ++x) {
        Rgba before = target[x];
        if (opaque) before.a = 255;
        const double cover = covered ? coverage[x] / 255.0 : 1;
        const Color exact = composed(operation, source[x], before, fraction, cover);
        const Color actual = colorOf(pixelOf(words[x]));
        for (std::size_t i = 0; i < (opaque ? 3 : 4); ++i) {
            largest = std::max(largest, std::abs(actual[i] - exact[i]) * 255);
        }
    }
    return largest;
}

std::vector<Rgba> premultiplied(Random& random, std::size_t count, int leastAlpha = 0) {
    std::vector<Rgba> pixels;
    while (pixels.size() < count) {
        const Rgba p = random.pixel();
        if (p.a >= leastAlpha) pixels.push_back(p);
    }
    return pixels;
}

/// Pixels of which every sample is nothing or all of what there can be.
std::vector<Rgba> extremePixels() {
    std::vector<Rgba> all = {transparent};
    for (int bits = 0; bits < 8; ++bits) {
        const auto sample = [bits](int i) { return static_cast<std::uint8_t>((bits >> i & 1) * 255); };
        all.push_back({sample(0), sample(1), sample(2), 255});
    }
    return all;
}

} // namespace

TEST(Blending, EveryKindOfVectorGivesThePlainCodesBitsAndTouchesNothingElse) {
    Random random(311);
    onEveryVectorTarget([&random](const std::string& name) {
        for (int operation = 0; operation <= operationCount; ++operation) {
            for (std::size_t count = 0; count <= longest; ++count) {
                const bool opaque = random.integer(0, 1) == 1;
                const int number = operation == operationCount ? 99 : operation;
                for (const bool covered : {false, true}) {
                    ASSERT_TRUE(rowsAreEqual(
                        random, {compositingOperation(number), anyFraction(random), opaque}, covered, count))
                        << name;
                }
            }
        }
    });
}

TEST(Blending, StaysWithinWhatIsPromisedOfTheExactResult) {
    Random random(312);
    double worst = 0;
    for (int operation = 0; operation < operationCount; ++operation) {
        for (const bool covered : {false, true}) {
            for (const bool opaque : {false, true}) {
                for (int round = 0; round < 16; ++round) {
                    const double fractions[] = {1, 0, 0.5, 1.0 / 255, 254.0 / 255, 1e-4};
                    const double fraction = round < 6 ? fractions[round] : random.real(0, 1);
                    const double error =
                        largestError(random, operation, fraction, covered, opaque, premultiplied(random, 500),
                                     premultiplied(random, 500, opaque ? 255 : 0));
                    EXPECT_LT(error, promised) << "operation " << operation << ", fraction " << fraction
                                               << ", covered " << covered << ", opaque " << opaque;
                    worst = std::max(worst, error);
                }
            }
        }
    }
    RecordProperty("largest_error_in_255ths", std::to_string(worst));
}

TEST(Blending, HoldsForEveryPairOfAlphas) {
    Random random(313);
    std::vector<Rgba> target;
    for (int alpha = 0; alpha < 256; ++alpha) {
        const auto a = static_cast<std::uint8_t>(alpha);
        target.push_back({a, static_cast<std::uint8_t>(alpha / 2), 0, a});
    }
    for (int alpha = 0; alpha < 256; ++alpha) {
        const auto a = static_cast<std::uint8_t>(alpha);
        const std::vector<Rgba> source(256, {a, static_cast<std::uint8_t>((alpha + 1) / 2), a, a});
        for (int operation = 0; operation < operationCount; ++operation) {
            ASSERT_LT(largestError(random, operation, 1, false, false, source, target), promised)
                << "operation " << operation << ", alpha " << alpha;
        }
    }
}

TEST(Blending, IsExactWhereAllFactorsAreNothingOrOne) {
    const std::vector<Rgba> extremes = extremePixels();
    for (int operation = 0; operation < operationCount; ++operation) {
        for (const double fraction : {0.0, 1.0}) {
            for (const int cover : {0, 255}) {
                for (const Rgba s : extremes) {
                    for (const Rgba d : extremes) {
                        const std::uint32_t from = wordOf(s);
                        const auto covers = static_cast<std::uint8_t>(cover);
                        std::uint32_t word = wordOf(d);
                        blendRow({compositingOperation(operation), blendFraction(fraction), false}, &from,
                                 &covers, &word, 1);
                        ASSERT_EQ(pixelOf(word),
                                  rounded(composed(operation, s, d, fraction, cover == 0 ? 0 : 1)))
                            << operation << ' ' << s << " on " << d;
                    }
                }
            }
        }
    }
}

TEST(Blending, AnySampleSurvivesFactorsOfNothingAndOne) {
    // The 256 values of a sample under an opaque pixel: what is copied, kept or added to nothing stays as is.
    for (int value = 0; value < 256; ++value) {
        const auto v = static_cast<std::uint8_t>(value);
        const Rgba colored{v, 0, 255, 255};
        const auto result = [](int operation, Rgba source, Rgba target, std::uint8_t cover) {
            const std::uint32_t from = wordOf(source);
            std::uint32_t word = wordOf(target);
            blendRow({compositingOperation(operation), Blend::one, false}, &from, &cover, &word, 1);
            return pixelOf(word);
        };
        for (const int operation : {1, 2, 3, 5, 12})
            EXPECT_EQ(result(operation, colored, white, 255), colored);
        for (const int operation : {4, 6, 10, 13, 9}) {
            EXPECT_EQ(result(operation, colored, transparent, 255), colored) << operation;
        }
        for (const int operation : {6, 7}) EXPECT_EQ(result(operation, white, colored, 255), colored);
        for (const int operation : {2, 5, 8, 10, 13, 12}) {
            EXPECT_EQ(result(operation, transparent, colored, 255), colored) << operation;
        }
        for (int operation = 0; operation < operationCount; ++operation) {
            EXPECT_EQ(result(operation, {9, 8, 7, 99}, colored, 0), colored) << operation;
        }
    }
}

TEST(Blending, TheTopByteOfATargetWithoutAlphaCountsAsOpaqueWhateverItHolds) {
    Random random(314);
    for (int operation = 0; operation < operationCount; ++operation) {
        for (int round = 0; round < 100; ++round) {
            const std::uint32_t source = wordOf(random.pixel());
            const auto color = static_cast<std::uint32_t>(random.engine()()) & 0xffffff;
            std::uint32_t words[] = {color, color | 0x5a000000, color | 0xff000000};
            for (std::uint32_t& word : words) {
                blendRow({compositingOperation(operation), 20000, true}, &source, nullptr, &word, 1);
            }
            ASSERT_EQ(words[0] & 0xffffff, words[2] & 0xffffff) << operation;
            ASSERT_EQ(words[1] & 0xffffff, words[2] & 0xffffff) << operation;
        }
    }
}

TEST(Blending, ColourAboveAlphaSaturates) {
    const std::uint32_t glowing = wordOf({255, 200, 0, 0});
    for (const NSCompositingOperation operation :
         {NSCompositeSourceOver, NSCompositePlusLighter, NSCompositeXOR}) {
        std::uint32_t word = wordOf({100, 100, 100, 0});
        blendRow({operation, Blend::one, false}, &glowing, nullptr, &word, 1);
        EXPECT_EQ(pixelOf(word), (Rgba{255, 255, 100, 0})) << operation;
    }
}

TEST(Blending, ARowMayBeBlendedWithItself) {
    Random random(315);
    for (int operation = 0; operation < operationCount; ++operation) {
        const std::vector<std::uint32_t> source = anyWords(random, 101);
        std::vector<std::uint32_t> same = source;
        std::vector<std::uint32_t> other = source;
        blendRow({compositingOperation(operation), 12345, false}, same.data(), nullptr, same.data(),
                 same.size());
        blendRow({compositingOperation(operation), 12345, false}, source.data(), nullptr, other.data(),
                 other.size());
        EXPECT_EQ(same, other) << operation;
    }
}

TEST(Blending, FractionsAreClampedAndRounded) {
    EXPECT_EQ(blendFraction(0), 0);
    EXPECT_EQ(blendFraction(1), Blend::one);
    EXPECT_EQ(blendFraction(-0.5), 0);
    EXPECT_EQ(blendFraction(17), Blend::one);
    EXPECT_EQ(blendFraction(std::nan("")), 0);
    EXPECT_EQ(blendFraction(std::numeric_limits<double>::infinity()), Blend::one);
    EXPECT_EQ(blendFraction(-std::numeric_limits<double>::infinity()), 0);
    EXPECT_EQ(blendFraction(1.0 / 3), 10922); // 10922.33
    EXPECT_EQ(blendFraction(0.25), 8192);     // 8191.75
    EXPECT_EQ(blendFraction(1.4 / 32767), 1);
}
