#include "Platform/Pixels/Rows/SampleMixing.h"

#include "Tests/Platform/Pixels/VectorTargets.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>

using namespace Imaging::Platform;
using namespace Pixels;

namespace {

constexpr std::size_t longest = 255;
constexpr double one = 32768; // a factor of 1

std::vector<std::uint32_t> anyWords(Random& random, std::size_t count) {
    std::vector<std::uint32_t> words(count);
    for (std::uint32_t& word : words) word = static_cast<std::uint32_t>(random.engine()());
    return words;
}

int sampleOf(std::uint32_t word, std::size_t i) { return static_cast<int>(word >> 8 * i & 0xff); }

/// Factors of which the sum with the first one, which is not read, is 1.
std::vector<std::int16_t> anyFactors(Random& random, std::size_t taps) {
    std::vector<double> shares;
    double sum = 0;
    for (std::size_t k = 0; k < taps; ++k) {
        shares.push_back(random.integer(0, 3) == 0 ? 0 : random.real(0, 1));
        sum += shares.back();
    }
    std::vector<std::int16_t> factors;
    for (const double share : shares) {
        factors.push_back(static_cast<std::int16_t>(sum > 0 ? std::floor(share / sum * (one - 1)) : 0));
    }
    return factors;
}

struct Rows {
    Rows(Random& random, std::size_t taps, std::size_t count) : factors(anyFactors(random, taps)) {
        for (std::size_t k = 0; k < taps; ++k) words.push_back(anyWords(random, count + 8));
        for (const auto& row : words) rows.push_back(row.data() + random.integer(0, 7));
    }

    double exact(std::size_t sample) const {
        const auto value = [&](std::size_t k) { return sampleOf(rows[k][sample / 4], sample % 4) * 128.0; };
        double sum = value(0);
        for (std::size_t k = 1; k < rows.size(); ++k) sum += (value(k) - value(0)) * factors[k] / one;
        return sum;
    }

    std::vector<std::vector<std::uint32_t>> words;
    std::vector<const std::uint32_t*> rows;
    std::vector<std::int16_t> factors;
};

/// A mix of columns over samples that stand for `width` pixels.
struct Columns {
    Columns(Random& random, std::size_t width, std::size_t taps, std::size_t count) {
        for (std::size_t i = 0; i < width * 4; ++i) {
            samples.push_back(static_cast<std::int16_t>(random.sample(255 * 128)));
        }
        factors.resize((taps - 1) * count * 4);
        for (std::size_t i = 0; i < count; ++i) {
            first.push_back(random.integer(0, static_cast<int>(width - taps)));
            const std::vector<std::int16_t> own = anyFactors(random, taps);
            for (std::size_t k = 1; k < taps; ++k) {
                for (std::size_t j = 0; j < 4; ++j) factors[((k - 1) * count + i) * 4 + j] = own[k];
            }
        }
        mix = {first.data(), factors.data(), taps, count};
    }

    double exact(std::size_t x, std::size_t i) const {
        const auto value = [&](std::size_t k) {
            return samples[(static_cast<std::size_t>(first[x]) + k) * 4 + i] / 128.0;
        };
        double sum = value(0);
        for (std::size_t k = 1; k < mix.taps; ++k) {
            sum += (value(k) - value(0)) * factors[((k - 1) * mix.count + x) * 4] / one;
        }
        return sum;
    }

    std::vector<std::int16_t> samples;
    std::vector<std::int32_t> first;
    std::vector<std::int16_t> factors;
    ColumnMix mix;
};

Squares anySquares(Random& random) {
    Squares squares{};
    const auto word = [&random] { return std::uint64_t{random.engine()()}; };
    for (std::size_t i = 0; i < squaresAtOnce; ++i) {
        squares.above[i] = word() << 32 | word();
        squares.below[i] = word() << 32 | word();
        // Of these the upper half is a pixel's number, which does not count here.
        squares.right[i] = static_cast<std::uint32_t>(word());
        squares.down[i] = static_cast<std::uint32_t>(word());
    }
    return squares;
}

double exactSquare(const Squares& squares, std::size_t x, std::size_t i) {
    const auto factor = [](std::uint32_t position) { return ((position & 0xffff) >> 1) / double{one}; };
    const double right = factor(squares.right[x]);
    const double down = factor(squares.down[x]);
    const auto across = [&](std::uint64_t pair) {
        return sampleOf(static_cast<std::uint32_t>(pair), i) * (1 - right) +
               sampleOf(static_cast<std::uint32_t>(pair >> 32), i) * right;
    };
    return across(squares.above[x]) * (1 - down) + across(squares.below[x]) * down;
}

/// The mean of four words, halves up, sample by sample.
std::uint32_t meanOf(std::uint32_t a, std::uint32_t b, std::uint32_t c, std::uint32_t d) {
    std::uint32_t word = 0;
    for (std::size_t i = 0; i < 4; ++i) {
        const double mean = (sampleOf(a, i) + sampleOf(b, i) + sampleOf(c, i) + sampleOf(d, i)) / 4.0;
        word |= static_cast<std::uint32_t>(std::floor(mean + 0.5)) << 8 * i;
    }
    return word;
}

const std::vector<std::size_t> someTaps = {1, 2, 3, 5, 18, maximumTaps};

} // namespace

TEST(SampleMixing, RowsHaveThePlainCodesBitsOnEveryKindOfVector) {
    Random random(321);
    onEveryVectorTarget([&random](const std::string& name) {
        for (std::size_t count = 0; count <= longest; ++count) {
            const Rows rows(random, someTaps[count % someTaps.size()], count);
            constexpr std::size_t guards = 64;
            std::vector<std::int16_t> vector(count * 4 + guards, -21555);
            std::vector<std::int16_t> plain = vector;
            mixRows(rows.rows.data(), rows.factors.data(), rows.rows.size(), vector.data(), count);
            mixRowsPlain(rows.rows.data(), rows.factors.data(), rows.rows.size(), plain.data(), count);
            ASSERT_EQ(vector, plain) << name << ", " << count << " pixels";
        }
    });
}

TEST(SampleMixing, RowsAreSumsOfProductsThatAreRoundedToNearest) {
    Random random(322);
    for (const std::size_t taps : someTaps) {
        const Rows rows(random, taps, 400);
        std::vector<std::int16_t> samples(1600);
        mixRows(rows.rows.data(), rows.factors.data(), taps, samples.data(), 400);
        for (std::size_t i = 0; i < samples.size(); ++i) {
            ASSERT_NEAR(samples[i], rows.exact(i), 0.5 * static_cast<double>(taps - 1) + 1e-9) << taps;
        }
    }
}

TEST(SampleMixing, ColumnsHaveThePlainCodesBitsOnEveryKindOfVector) {
    Random random(323);
    onEveryVectorTarget([&random](const std::string& name) {
        for (std::size_t count = 0; count <= longest; ++count) {
            const std::size_t taps = someTaps[count % someTaps.size()];
            const Columns columns(random, 100, taps, count);
            const auto from = static_cast<std::size_t>(
                random.integer(0, static_cast<int>(std::min<std::size_t>(count, 9))));
            GuardedWords vector(longest + 8);
            GuardedWords plain = vector;
            const auto at = static_cast<std::size_t>(random.integer(0, 7));
            mixColumns(columns.samples.data(), columns.mix, from, count, vector.from(at));
            mixColumnsPlain(columns.samples.data(), columns.mix, from, count, plain.from(at));
            ASSERT_EQ(vector, plain) << name << ", " << count << " pixels from " << from;
        }
    });
}

TEST(SampleMixing, ColumnsAreSumsOfProductsThatAreRoundedToNearest) {
    Random random(324);
    for (const std::size_t taps : someTaps) {
        const Columns columns(random, 300, taps, 500);
        std::vector<std::uint32_t> words(500);
        mixColumns(columns.samples.data(), columns.mix, 0, 500, words.data());
        for (std::size_t x = 0; x < words.size(); ++x) {
            for (std::size_t i = 0; i < 4; ++i) {
                ASSERT_NEAR(sampleOf(words[x], i), columns.exact(x, i),
                            0.5 + 0.5 / 128 * static_cast<double>(taps - 1) + 1e-9);
            }
        }
    }
}

TEST(SampleMixing, ShiftedPixelsHaveThePlainCodesBitsOnEveryKindOfVector) {
    Random random(330);
    onEveryVectorTarget([&random](const std::string& name) {
        for (std::size_t count = 0; count <= longest; ++count) {
            const std::vector<std::uint32_t> upper = anyWords(random, count + 9);
            const std::vector<std::uint32_t> lower = anyWords(random, count + 9);
            const std::uint32_t* const above = upper.data() + random.integer(0, 7);
            const std::uint32_t* const below = lower.data() + random.integer(0, 7);
            const auto right = static_cast<std::int16_t>(count % 3 == 0 ? 0 : random.sample(32767));
            const auto down = static_cast<std::int16_t>(count % 5 == 0 ? 0 : random.sample(32767));
            GuardedWords vector(longest + 8);
            GuardedWords plain = vector;
            const auto at = static_cast<std::size_t>(random.integer(0, 7));
            mixShifted(above, below, right, down, vector.from(at), count);
            mixShiftedPlain(above, below, right, down, plain.from(at), count);
            ASSERT_EQ(vector, plain) << name << ", " << count << " pixels by " << right << ", " << down;
        }
    });
}

TEST(SampleMixing, ShiftedPixelsAreMixesOfRowsAndThenOfColumns) {
    Random random(331);
    constexpr std::size_t count = 97;
    for (int round = 0; round < 200; ++round) {
        const std::vector<std::uint32_t> above = anyWords(random, count + 1);
        const std::vector<std::uint32_t> below = anyWords(random, count + 1);
        const auto right = static_cast<std::int16_t>(random.sample(32767));
        const auto down = static_cast<std::int16_t>(random.sample(32767));
        const std::array<const std::uint32_t*, 2> rows{above.data(), below.data()};
        const std::array<std::int16_t, 2> rowFactors{0, down};
        std::vector<std::int16_t> samples((count + 1) * 4);
        mixRowsPlain(rows.data(), rowFactors.data(), 2, samples.data(), count + 1);
        std::vector<std::int32_t> first(count);
        for (std::size_t i = 0; i < count; ++i) first[i] = static_cast<std::int32_t>(i);
        const std::vector<std::int16_t> factors(count * 4, right);
        std::vector<std::uint32_t> expected(count);
        mixColumnsPlain(samples.data(), {first.data(), factors.data(), 2, count}, 0, count, expected.data());
        std::vector<std::uint32_t> words(count);
        mixShifted(above.data(), below.data(), right, down, words.data(), count);
        ASSERT_EQ(words, expected) << right << ", " << down;
    }
}

TEST(SampleMixing, SquaresHaveThePlainCodesBitsOnEveryKindOfVector) {
    Random random(325);
    onEveryVectorTarget([&random](const std::string& name) {
        for (std::size_t count = 0; count <= squaresAtOnce; ++count) {
            const Squares squares = anySquares(random);
            GuardedWords vector(squaresAtOnce);
            mixSquares(squares, count, vector.from(0));
            std::array<std::uint32_t, squaresAtOnce> plain{};
            mixSquaresPlain(squares, count, plain.data());
            for (std::size_t x = 0; x < count; ++x) ASSERT_EQ(vector.from(0)[x], plain[x]) << name;
            GuardedWords untouched(squaresAtOnce);
            std::copy_n(vector.from(0), squaresAtOnce, untouched.from(0));
            ASSERT_EQ(vector, untouched) << name << ": wrote beyond what it may";
        }
    });
}

TEST(SampleMixing, SquaresAreBilinear) {
    Random random(326);
    for (int round = 0; round < 100; ++round) {
        const Squares squares = anySquares(random);
        std::array<std::uint32_t, squaresAtOnce> words{};
        mixSquares(squares, squaresAtOnce, words.data());
        for (std::size_t x = 0; x < squaresAtOnce; ++x) {
            for (std::size_t i = 0; i < 4; ++i) {
                ASSERT_NEAR(sampleOf(words[x], i), exactSquare(squares, x, i), 0.5 + 1.5 / 128);
            }
        }
    }
}

TEST(SampleMixing, EqualPixelsMixToThemselvesWhateverTheFactors) {
    Random random(327);
    for (int value = 0; value < 256; ++value) {
        const std::uint32_t word = static_cast<std::uint32_t>(value) * 0x01010101U;
        const std::vector<std::uint32_t> row(20, word);
        const std::vector<const std::uint32_t*> rows(maximumTaps, row.data());
        const std::vector<std::int16_t> factors = anyFactors(random, maximumTaps);
        std::vector<std::int16_t> samples(80);
        mixRows(rows.data(), factors.data(), maximumTaps, samples.data(), 20);
        ASSERT_EQ(samples, std::vector<std::int16_t>(80, static_cast<std::int16_t>(value * 128)));

        Columns columns(random, 40, maximumTaps, 30);
        columns.samples.assign(160, static_cast<std::int16_t>(value * 128));
        std::vector<std::uint32_t> words(30);
        mixColumns(columns.samples.data(), columns.mix, 0, 30, words.data());
        ASSERT_EQ(words, std::vector<std::uint32_t>(30, word));

        Squares squares = anySquares(random);
        std::fill_n(squares.above, squaresAtOnce, std::uint64_t{word} << 32 | word);
        std::fill_n(squares.below, squaresAtOnce, std::uint64_t{word} << 32 | word);
        std::vector<std::uint32_t> mixed(squaresAtOnce);
        mixSquares(squares, squaresAtOnce, mixed.data());
        ASSERT_EQ(mixed, std::vector<std::uint32_t>(squaresAtOnce, word));
    }
}

TEST(SampleMixing, HalvedRowsAreMeansOnEveryKindOfVector) {
    Random random(328);
    onEveryVectorTarget([&random](const std::string& name) {
        for (std::size_t count = 0; count <= longest; ++count) {
            const std::vector<std::uint32_t> upper = anyWords(random, 2 * count + 8);
            const std::vector<std::uint32_t> lower = anyWords(random, 2 * count + 8);
            const std::uint32_t* const above = upper.data() + random.integer(0, 7);
            const std::uint32_t* const below = count % 5 == 0 ? above : lower.data() + random.integer(0, 7);
            GuardedWords vector(longest + 8);
            GuardedWords plain = vector;
            GuardedWords expected = vector;
            const auto at = static_cast<std::size_t>(random.integer(0, 7));
            halveRow(above, below, vector.from(at), count);
            halveRowPlain(above, below, plain.from(at), count);
            for (std::size_t x = 0; x < count; ++x) {
                expected.from(at)[x] = meanOf(above[2 * x], above[2 * x + 1], below[2 * x], below[2 * x + 1]);
            }
            ASSERT_EQ(vector, expected) << name << ", " << count << " pixels";
            ASSERT_EQ(plain, expected) << count << " pixels";
        }
    });
}

TEST(SampleMixing, MeansOfTwoRowsRoundHalvesUp) {
    Random random(329);
    for (std::size_t count = 0; count <= longest; ++count) {
        const std::vector<std::uint32_t> above = anyWords(random, count);
        const std::vector<std::uint32_t> below = anyWords(random, count);
        GuardedWords words(longest);
        GuardedWords expected = words;
        meanRow(above.data(), below.data(), words.from(0), count);
        for (std::size_t x = 0; x < count; ++x) {
            expected.from(0)[x] = meanOf(above[x], above[x], below[x], below[x]);
        }
        ASSERT_EQ(words, expected) << count;
    }
}
