#include "Platform/Painter/ShiftedSampler.h"

#include "Platform/Painter/ScaledSampler.h"
#include "Tests/Support/Pixels.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <vector>

using namespace Imaging::Platform;
using namespace Pixels;

namespace {

PlacedLevel anyLevel(Random& random, int width, int height, double x, double y) {
    const std::shared_ptr<PixelImage> image = PixelImage::uninitialised(width, height);
    for (int row = 0; row < height; ++row) {
        for (int column = 0; column < width; ++column) {
            image->row(row)[column] = static_cast<std::uint32_t>(random.engine()());
        }
    }
    return {image, Affine::translation(x, y), false};
}

std::vector<std::uint32_t> rowOf(const RowSampler& sampler, PixelRect area, int y) {
    std::vector<std::uint32_t> words(static_cast<std::size_t>(area.width()));
    const std::unique_ptr<RowReader> reader = sampler.reader();
    const std::uint32_t* const read = reader->read(area.left, y, area.width(), words.data());
    return {read, read + area.width()};
}

/// How far two words are apart in their samples at most.
int mostApart(std::uint32_t a, std::uint32_t b) {
    int most = 0;
    for (int shift = 0; shift < 32; shift += 8) {
        most =
            std::max(most, std::abs(static_cast<int>(a >> shift & 255) - static_cast<int>(b >> shift & 255)));
    }
    return most;
}

} // namespace

TEST(ShiftedSampler, GivesTheScaledSamplersBitsInsideAndTheOutermostPixelsBeyond) {
    Random random(812);
    for (int round = 0; round < 300; ++round) {
        // Steps of 1/64, whose sums with the places of pixels are exact in both ways of reckoning.
        const double x = random.integer(-200, 200) / 64.0;
        const double y = random.integer(-200, 200) / 64.0;
        const PlacedLevel level = anyLevel(random, random.integer(1, 40), random.integer(1, 9), x, y);
        const PixelRect area{random.integer(-5, 3), random.integer(-5, 3), random.integer(4, 45),
                             random.integer(4, 12)};
        const auto shifted = makeShiftedSampler(level, area);
        ASSERT_NE(shifted, nullptr);
        const auto scaled = makeScaledSampler(level, area);
        for (int row = area.top; row < area.bottom; ++row) {
            const bool isRowInside = row + y >= 0 && row + y + 1 < level.image->height();
            const std::vector<std::uint32_t> ours = rowOf(*shifted, area, row);
            const std::vector<std::uint32_t> theirs = rowOf(*scaled, area, row);
            for (int i = 0; i < area.width(); ++i) {
                const double column = area.left + i + x;
                const bool isInside = isRowInside && column >= 0 && column + 1 < level.image->width();
                // At the edges the scaled sampler gives the outermost pixel a share of 32767/32768.
                ASSERT_LE(mostApart(ours[static_cast<std::size_t>(i)], theirs[static_cast<std::size_t>(i)]),
                          isInside ? 0 : 1)
                    << x << ", " << y << ", pixel " << area.left + i << ", " << row << " of "
                    << level.image->width() << " x " << level.image->height();
            }
        }
    }
}

TEST(ShiftedSampler, ReadsAnyPartOfARow) {
    Random random(813);
    const PlacedLevel level = anyLevel(random, 50, 4, -3.375, 1.25);
    const PixelRect area{0, 0, 60, 6};
    const auto sampler = makeShiftedSampler(level, area);
    const std::unique_ptr<RowReader> reader = sampler->reader();
    for (int y = 0; y < 6; ++y) {
        const std::vector<std::uint32_t> whole = rowOf(*sampler, area, y);
        for (int from = 0; from < 60; from += 7) {
            std::uint32_t words[3];
            const std::uint32_t* const read = reader->read(from, y, 3, words);
            for (int i = 0; i < 3; ++i) ASSERT_EQ(read[i], whole[static_cast<std::size_t>(from + i)]);
        }
    }
}

TEST(ShiftedSampler, IsForMovesAlone) {
    Random random(814);
    PlacedLevel level = anyLevel(random, 8, 8, 0.5, 0.25);
    const PixelRect area{0, 0, 1000, 1000};
    EXPECT_NE(makeShiftedSampler(level, area), nullptr);
    level.inverse.xx = 1 + 1e-5; // a hundredth of a pixel over the area
    EXPECT_EQ(makeShiftedSampler(level, area), nullptr);
    level.inverse.xx = 1 + 1e-7;
    EXPECT_NE(makeShiftedSampler(level, area), nullptr);
    level.inverse.yy = -1;
    EXPECT_EQ(makeShiftedSampler(level, area), nullptr);
    level.inverse.yy = 1;
    level.inverse.xy = 1e-5;
    EXPECT_EQ(makeShiftedSampler(level, area), nullptr);
    level.inverse.xy = 0;
    level.inverse.x0 = 1e10;
    EXPECT_EQ(makeShiftedSampler(level, area), nullptr);
}
