// What pictures promise to threads: levels may be asked for and let go from any of them.

#include "Platform/Graphics/GraphicsContext.h"
#include "Platform/Graphics/Pictures/BitmapRows.h"
#include "Tests/Platform/Graphics/DrawnPictures.h"

#include <gtest/gtest.h>
#include <lcms2.h>

#include <atomic>
#include <barrier>
#include <thread>

using namespace Imaging::Platform;
using namespace Pixels;

/// ThreadSanitizer asks for what it is not to report. Cairo hands small objects from thread to thread by
/// atomic operations of its own, and the libraries below text lock by system calls of their own, which it
/// does not see in libraries that were built without it.
extern "C" const char* __tsan_default_suppressions(); // NOLINT(bugprone-reserved-identifier): its own name
extern "C" const char* __tsan_default_suppressions() {
    return "race:libcairo.so\nrace:libglib-2.0.so\nrace:libgobject-2.0.so\nrace:libpango\n"
           "race:libfontconfig.so\nrace:libharfbuzz.so\nrace:libfreetype.so\n";
}

namespace {

/// Runs the bodies at the same time, each on a thread of its own.
void atOnce(const std::vector<std::function<void()>>& bodies) {
    std::barrier start(static_cast<std::ptrdiff_t>(bodies.size()));
    std::vector<std::thread> threads;
    threads.reserve(bodies.size());
    for (const auto& body : bodies) {
        threads.emplace_back([&start, &body] {
            start.arrive_and_wait();
            body();
        });
    }
    for (std::thread& thread : threads) thread.join();
}

Grid drawn(DrawablePicture& picture, int width, int height, float degrees) {
    Canvas canvas(width, height, blue);
    NSAffineTransform turn;
    turn.rotateByDegrees(degrees);
    canvas.context().concat(turn);
    drawPicture(canvas.context(), picture, wholeOf(width, height), picture.bounds(), NSCompositeSourceOver,
                0.8);
    return canvas.pixels();
}

struct Job {
    int width;
    int height;
    float degrees;
};

/// At full size, from level 1, 2 and 3, turned and not. The large ones are split over threads of their own.
const std::vector<Job> jobs = {{700, 500, 0}, {300, 220, 0}, {120, 90, 20}, {60, 40, 0}, {600, 400, 5}};

NSData profile(double gamma) {
    cmsToneCurve* const curve = cmsBuildGamma(nullptr, gamma);
    cmsToneCurve* curves[3] = {curve, curve, curve};
    const cmsCIExyY white{0.3127, 0.3290, 1};
    const cmsCIExyYTRIPLE primaries{{0.68, 0.32, 1}, {0.265, 0.69, 1}, {0.15, 0.06, 1}};
    const cmsHPROFILE made = cmsCreateRGBProfile(&white, &primaries, curves);
    cmsFreeToneCurve(curve);
    cmsUInt32Number size = 0;
    cmsSaveProfileToMem(made, nullptr, &size);
    NSData bytes(size);
    cmsSaveProfileToMem(made, bytes.data(), &size);
    cmsCloseProfile(made);
    return bytes;
}

} // namespace

TEST(PictureThreads, OnePictureIsDrawnByManyWhileItsMemoryIsTakenBack) {
    Random random(381);
    const auto picture = drawableOf(random.grid(700, 500));
    std::vector<Grid> expected;
    for (const Job& job : jobs) expected.push_back(drawn(*picture, job.width, job.height, job.degrees));
    std::atomic<int> drawing = static_cast<int>(jobs.size());
    std::atomic<int> wrong = 0;
    std::vector<std::function<void()>> bodies;
    for (std::size_t i = 0; i < jobs.size(); ++i) {
        bodies.emplace_back([&, i] {
            for (int round = 0; round < 6; ++round) {
                const Grid shown = drawn(*picture, jobs[i].width, jobs[i].height, jobs[i].degrees);
                if (!(shown == expected[i])) ++wrong;
            }
            --drawing;
        });
    }
    bodies.emplace_back([&drawing] {
        while (drawing > 0) {
            releasePictureMemory();
            std::this_thread::yield();
        }
    });
    atOnce(bodies);
    EXPECT_EQ(wrong, 0);
}

TEST(PictureThreads, PicturesComeAndGoWhileMemoryIsTakenBack) {
    Random random(382);
    const Grid grid = random.grid(40, 30);
    const auto reference = drawableOf(grid);
    const Grid expected = drawn(*reference, 13, 9, 0);
    std::atomic<int> wrong = 0;
    std::atomic<int> making = 3;
    const auto makeAndDraw = [&] {
        for (int round = 0; round < 40; ++round) {
            const auto picture = drawableOf(grid);
            if (!(drawn(*picture, 13, 9, 0) == expected)) ++wrong;
            const auto copy = picture->copy();
            if (!(drawn(*copy, 13, 9, 0) == expected)) ++wrong;
        }
        --making;
    };
    atOnce({makeAndDraw, makeAndDraw, makeAndDraw, [&making] {
                while (making > 0) releasePictureMemory();
            }});
    EXPECT_EQ(wrong, 0);
}

TEST(PictureThreads, OneBitmapWithAProfileIsConvertedByMany) {
    const auto bitmap = bitmapOf(Grid(600, 300, {200, 90, 140, 255}));
    bitmap->setProperty(NSImageColorSyncProfileData, profile(1.9));
    const auto rows = std::make_shared<BitmapRows>(bitmap);
    std::vector<std::uint32_t> expected(600);
    rows->read(0, expected.data());
    ASSERT_NE(pixelOf(expected[0]), (Rgba{200, 90, 140, 255}));
    DrawablePicture picture(rows, wholeOf(600, 300));
    std::atomic<int> wrong = 0;
    const auto read = [&] {
        for (int round = 0; round < 3; ++round) {
            const auto level = picture.level(round % 2);
            for (int y = 0; y < level->height(); ++y) {
                for (int x = 0; x < level->width(); ++x) wrong += level->row(y)[x] != expected[0] ? 1 : 0;
            }
            std::vector<std::uint32_t> row(600);
            rows->read(7, row.data());
            if (row != expected) ++wrong;
            picture.letGo();
        }
    };
    atOnce({read, read, read});
    EXPECT_EQ(wrong, 0);
}
