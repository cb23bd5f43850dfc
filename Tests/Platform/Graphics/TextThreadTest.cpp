#include "Platform/Graphics/Text.h"

#include "Tests/Support/Ink.h"

#include <gtest/gtest.h>

#include <array>
#include <string>
#include <thread>
#include <vector>

using namespace Imaging::Platform;
using namespace Pixels;

TEST(TextThreads, DrawTheSameAtTheSameTime) {
    const auto draw = [](Grid& grid) {
        for (int i = 0; i < 5; ++i) {
            Canvas canvas(160, 50);
            const NSFont font = NSFont::boldSystemFontOfSize(static_cast<float>(14 + i));
            const NSSize size = sizeOfText("Hamburg \u03a9\n\u0416", font);
            drawTextAtPoint("Hamburg \u03a9\n\u0416", font, NSColor::blackColor(),
                            NSMakePoint(80 - size.width / 2, 25 - size.height / 2));
            grid = canvas.pixels();
        }
    };
    std::array<Grid, 4> grids;
    std::vector<std::thread> threads;
    threads.reserve(grids.size());
    for (Grid& grid : grids) threads.emplace_back(draw, std::ref(grid));
    for (std::thread& thread : threads) thread.join();
    EXPECT_GT(inkOf(grids[0]).count, 100);
    for (const Grid& grid : grids) EXPECT_TRUE(areAlike(grid, grids[0]));
}
