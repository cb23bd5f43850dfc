// Also tests: Imaging/OpenGLCache.cpp

#include "Tests/Imaging/OpenGL/TargetFixture.h"

#include <thread>
#include <vector>

using namespace ImagingTests;

namespace {

class OpenGLTargetThreads : public TargetTest {};

} // namespace

TEST_F(OpenGLTargetThreads, PreloadWhileAnotherThreadDrawsFrames) {
    constexpr int count = 60;
    std::vector<std::shared_ptr<NSBitmapImageRep>> bitmaps;
    for (int i = 0; i < count; ++i) bitmaps.push_back(alphaFirst(Grid(8, 4, Pixels::red)));
    const auto picture = pictureNode(distinctPicture(5, 4)); // goes through an overlay
    std::thread loader([&] {
        for (const auto& bitmap : bitmaps) target->preloadBitmap(bitmap, 1);
        NSOpenGLContext::clearCurrentContext();
    });
    for (int i = 0; i < count; ++i) {
        OpenGLImage node(bitmaps[static_cast<std::size_t>(i)]);
        target->beginDrawing(NSMakeRect(0, 0, 40, 20));
        target->drawImage(node, listOfRecords({recordOf(moved(3, 5))}), 2, 1);
        target->drawImage(picture, NSMakeRect(0, 0, 5, 4), 2, 1);
        target->endDrawing();
    }
    loader.join();
    EXPECT_TRUE(isLockFree());
    EXPECT_EQ(gl->attribDepth(), 0U);
    EXPECT_GE(gl->uploads().size(), static_cast<std::size_t>(2 * count)) << "each bitmap and each overlay";
}

TEST_F(OpenGLTargetThreads, WaitForTheLockOfAFrame) {
    target->beginDrawing(NSMakeRect(0, 0, 40, 20));
    int order = 0;
    int loaded = 0;
    std::thread other([&] {
        const auto lock = target->contextLock();
        const std::lock_guard hold(*lock);
        loaded = ++order;
    });
    const int drawn = ++order;
    target->endDrawing();
    other.join();
    EXPECT_EQ(drawn, 1);
    EXPECT_EQ(loaded, 2);
}
