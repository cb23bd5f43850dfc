// What the library promises to threads: pictures are drawn and encoded one at a time, and conversions share
// nothing.

#include "Imaging/BitmapFormats.h"
#include "Tests/Imaging/ImagingTestSupport.h"

#include <gtest/gtest.h>

#include <atomic>
#include <barrier>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>
#include <vector>

using namespace ImagingTests;

namespace {

/// Counts who is inside at once. `visits` is not atomic on purpose: the lock has to guard it.
struct Room {
    std::atomic<int> inside = 0;
    std::atomic<bool> crowded = false;
    int visits = 0;

    void visit() {
        if (++inside > 1) crowded = true;
        ++visits;
        std::this_thread::yield(); // so that others come in, where nothing keeps them out
        --inside;
    }
};

/// A picture that visits a room whenever it is drawn or encoded.
class VisitingPicture : public NSImage {
public:
    VisitingPicture(const Grid& grid, Room& room)
        : NSImage(NSMakeSize(static_cast<float>(grid.width()), static_cast<float>(grid.height()))),
          m_room(room) {
        addRepresentation(Pixels::bitmapOf(grid));
    }

    void drawInRect(NSRect destination, NSRect source, Imaging::Platform::NSCompositingOperation operation,
                    float fraction) override {
        m_room.visit();
        NSImage::drawInRect(destination, source, operation, fraction);
    }
    std::optional<Imaging::Platform::NSData>
    TIFFRepresentation(Imaging::Platform::NSError* error) const override {
        m_room.visit();
        return NSImage::TIFFRepresentation(error);
    }

private:
    Room& m_room;
};

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

constexpr int rounds = 200;

} // namespace

TEST(PictureLock, KeepsDrawingAndEncodingApart) {
    Room room;
    const Grid grid = distinctPicture(5, 3);
    const auto drawing = [&] {
        const auto node = Imaging::imagingImage(std::make_shared<VisitingPicture>(grid, room));
        for (int i = 0; i < rounds; ++i) {
            const Grid drawn = drawnOn(5, 3, [&] { node->drawWithTransform(NSAffineTransform(), 2, 1); });
            if (!Pixels::areAlike(drawn, grid)) ADD_FAILURE() << "round " << i;
        }
    };
    const auto encoding = [&] {
        const VisitingPicture picture(grid, room);
        for (int i = 0; i < rounds; ++i) {
            EXPECT_TRUE(Imaging::ThreadSafeTIFFRepresentation(picture).has_value());
            EXPECT_NE(Imaging::bitmapRepresentationWithABGRFormat(picture), nullptr);
        }
    };
    atOnce({drawing, encoding, drawing, encoding});
    EXPECT_FALSE(room.crowded);
    EXPECT_EQ(room.visits, 2 * rounds + 2 * 2 * rounds);
}

TEST(PictureLock, MakesADrawWaitForAnEncoderOnAnotherThread) {
    // The encoder stays inside until the drawing thread has set out, and only it can let the draw go on.
    class Slow : public NSImage {
    public:
        explicit Slow(std::barrier<>& meet, std::atomic<bool>& done)
            : NSImage(NSMakeSize(2, 2)), m_meet(meet), m_done(done) {
            addRepresentation(Pixels::bitmapOf(Grid(2, 2, Pixels::red)));
        }
        std::optional<Imaging::Platform::NSData>
        TIFFRepresentation(Imaging::Platform::NSError* error) const override {
            m_meet.arrive_and_wait();
            for (int i = 0; i < 1000; ++i) std::this_thread::yield();
            m_done = true;
            return NSImage::TIFFRepresentation(error);
        }

    private:
        std::barrier<>& m_meet;
        std::atomic<bool>& m_done;
    };
    class Checking : public NSImage {
    public:
        explicit Checking(std::atomic<bool>& done) : NSImage(NSMakeSize(2, 2)), m_done(done) {
            addRepresentation(Pixels::bitmapOf(Grid(2, 2, Pixels::red)));
        }
        bool cameLater = false;
        void drawInRect(NSRect, NSRect, Imaging::Platform::NSCompositingOperation, float) override {
            cameLater = m_done;
        }

    private:
        std::atomic<bool>& m_done;
    };
    std::barrier<> meet(2);
    std::atomic<bool> done = false;
    const Slow encoded(meet, done);
    const auto drawn = std::make_shared<Checking>(done);
    const auto node = Imaging::imagingImage(drawn);
    atOnce({[&] { EXPECT_TRUE(Imaging::ThreadSafeTIFFRepresentation(encoded).has_value()); },
            [&] {
                meet.arrive_and_wait(); // the encoder holds the lock by now
                drawnOn(2, 2, [&] { node->drawWithTransform(NSAffineTransform(), 2, 1); });
            }});
    EXPECT_TRUE(drawn->cameLater);
}

TEST(PictureLock, IsTheSameForThreadsThatAskForItAtOnce) {
    constexpr std::size_t count = 8;
    std::vector<std::recursive_mutex*> seen(count, nullptr);
    std::vector<std::function<void()>> bodies;
    for (std::size_t i = 0; i < count; ++i) {
        bodies.emplace_back([&seen, i] { seen[i] = &Imaging::GlobalImageLock(); });
    }
    atOnce(bodies);
    EXPECT_EQ(seen, std::vector<std::recursive_mutex*>(count, &Imaging::GlobalImageLock()));
}

TEST(PictureConversionsOnThreads, ShareNothing) {
    const auto convert = [](std::uint32_t seed) {
        return [seed] {
            std::mt19937 random(seed);
            for (int i = 0; i < rounds / 4; ++i) {
                Grid grid(9, 7);
                for (int y = 0; y < 7; ++y) {
                    for (int x = 0; x < 9; ++x) {
                        const auto byte = [&] { return static_cast<std::uint8_t>(random() & 255U); };
                        const std::uint8_t r = byte();
                        const std::uint8_t g = byte();
                        grid.at(x, y) = {r, g, byte(), 255};
                    }
                }
                const auto picture = Pixels::imageOf(grid);
                const auto abgr = Imaging::bitmapRepresentationWithABGRFormat(*picture);
                const auto mask = Imaging::bitmapRepresentationWithMaskFormat(*picture);
                ASSERT_NE(abgr, nullptr);
                ASSERT_NE(mask, nullptr);
                for (int y = 0; y < 7; ++y) {
                    for (int x = 0; x < 9; ++x) {
                        const Rgba& p = grid.at(x, y);
                        const std::array<std::uint16_t, 5> swizzled = {255, p.r, p.g, p.b};
                        const auto gray =
                            static_cast<std::uint16_t>((30 * p.r + 59 * p.g + 11 * p.b + 50) / 100);
                        ASSERT_EQ(abgr->pixelAt(x, y), swizzled) << "seed " << seed << ", round " << i;
                        ASSERT_EQ(mask->pixelAt(x, y)[0], gray) << "seed " << seed << ", round " << i;
                    }
                }
            }
        };
    };
    atOnce({convert(20260601), convert(20260602), convert(20260603), convert(20260604)});
}

TEST(PictureConversionsOnThreads, MayReadOnePictureTogether) {
    const Grid grid = distinctPicture(5, 3);
    const auto picture = Pixels::imageOf(grid);
    const auto convert = [&] {
        for (int i = 0; i < rounds / 4; ++i) {
            const auto bitmap = Imaging::bitmapRepresentationWithRGBAFormat(*picture);
            const auto fresh = Imaging::bitmapRepresentationWithABGRFormat(*picture);
            ASSERT_NE(bitmap, nullptr);
            ASSERT_NE(fresh, nullptr);
            EXPECT_EQ(fresh->pixelAt(1, 2)[1], bitmap->pixelAt(1, 2)[0]);
        }
    };
    atOnce({convert, convert, convert});
}

TEST(GraphsOnThreads, AreDrawnEachOnItsOwn) {
    const auto draw = [](int tint) {
        return [tint] {
            const Grid grid = distinctPicture(5, 3, tint);
            const auto node = nodeOver({nodeOver({pictureNode(grid)}, moved(1, 2))}, moved(2, 1));
            for (int i = 0; i < rounds / 4; ++i) {
                const Grid drawn = drawnOn(9, 8, [&] { node->drawWithTransform(NSAffineTransform(), 2, 1); });
                Grid expected(9, 8);
                paint(expected, grid, [](Spot p) { return Spot{p.x + 3, p.y + 3}; });
                if (!Pixels::areAlike(drawn, expected)) ADD_FAILURE() << "round " << i;
            }
        };
    };
    atOnce({draw(0), draw(40), draw(80)});
}
