#include "Imaging/OpenGLCache.h"

#include "Platform/OpenGL/OpenGLContext.h"
#include "Platform/OpenGL/OpenGLPixelFormat.h"
#include "Platform/OpenGL/View.h"
#include "Tests/Imaging/OpenGL/TextureFixtures.h"

using namespace ImagingTests;
using Imaging::OpenGLCache;
using Imaging::OpenGLContextLock;
using Imaging::OpenGLTexture;
using Imaging::Platform::NSOpenGLContext;

namespace {

/// An owner whose context records.
struct Owner : Imaging::OpenGLContextOwner {
    std::shared_ptr<NSOpenGLContext> context;
    std::shared_ptr<OpenGLContextLock> lock = std::make_shared<OpenGLContextLock>();

    std::shared_ptr<NSOpenGLContext> openGLContext() const override { return context; }
    std::shared_ptr<OpenGLContextLock> contextLock() const override { return lock; }
};

class OpenGLCacheTest : public RecorderTest {
protected:
    OpenGLCacheTest() {
        begin({.largestSide = 4});
        m_view = Imaging::Platform::NSView::viewWithCommands(NSMakeRect(0, 0, 40, 30), gl);
        owner.context =
            NSOpenGLContext::contextWithFormat(Imaging::Platform::NSOpenGLPixelFormat::defaultPixelFormat());
        owner.context->setView(m_view);
    }

    std::shared_ptr<OpenGLTexture> textureOf(const std::shared_ptr<NSBitmapImageRep>& bitmap) {
        return cache.textureForBitmap(bitmap, owner, true);
    }

    ~OpenGLCacheTest() override {
        OpenGLCommands::setCurrent(gl);
        cache.removeAllTextures();
    }

    Owner owner;
    OpenGLCache cache;

private:
    std::shared_ptr<Imaging::Platform::NSView> m_view;
};

} // namespace

TEST_F(OpenGLCacheTest, HasABitmapsTextureWithAllTiles) {
    const auto texture = textureOf(alphaFirst(distinctPicture(6, 5)));
    ASSERT_NE(texture, nullptr);
    EXPECT_EQ(texture->pixelsWide(), 6U);
    EXPECT_EQ(gl->uploads().size(), 4U);
}

TEST_F(OpenGLCacheTest, UploadsABitmapOnce) {
    const auto bitmap = alphaFirst(distinctPicture(4, 4));
    cache.scheduleBitmap(bitmap, 2.5F, owner);
    EXPECT_EQ(gl->uploads().size(), 1U) << "when it is scheduled";
    cache.scheduleBitmap(bitmap, 1, owner);
    const auto texture = textureOf(bitmap);
    EXPECT_EQ(textureOf(bitmap), texture);
    EXPECT_EQ(gl->uploads().size(), 1U);
    EXPECT_EQ(cache.count(), 1U);
    EXPECT_NE(textureOf(alphaFirst(distinctPicture(4, 4))), texture) << "equal pixels, another bitmap";
}

TEST_F(OpenGLCacheTest, MakesTheContextCurrentAndGivesTheLockBack) {
    OpenGLCommands::setCurrent(nullptr);
    EXPECT_NE(textureOf(alphaFirst(distinctPicture(4, 4))), nullptr);
    EXPECT_EQ(NSOpenGLContext::currentContext(), owner.context);
    EXPECT_EQ(owner.lock->holds(), 0U);
}

TEST_F(OpenGLCacheTest, KeepsTheNewestThirtyTwoAndTheNewOne) {
    std::vector<std::shared_ptr<NSBitmapImageRep>> bitmaps;
    for (int i = 0; i < 40; ++i) {
        bitmaps.push_back(alphaFirst(distinctPicture(2, 2)));
        cache.scheduleBitmap(bitmaps.back(), 0, owner);
    }
    EXPECT_EQ(cache.count(), 33U);
    EXPECT_EQ(gl->deletedNames(), 7U);
    EXPECT_EQ(bitmaps[6].use_count(), 1);
    EXPECT_GT(bitmaps[7].use_count(), 1);
    const std::size_t uploads = gl->uploads().size();
    textureOf(bitmaps[7]);
    EXPECT_EQ(gl->uploads().size(), uploads) << "still there";
    textureOf(bitmaps[6]);
    EXPECT_EQ(gl->uploads().size(), uploads + 1) << "uploaded again";
}

TEST_F(OpenGLCacheTest, HasNothingForNullOrWithoutAContext) {
    EXPECT_EQ(textureOf(nullptr), nullptr);
    owner.context = nullptr;
    EXPECT_EQ(textureOf(alphaFirst(distinctPicture(4, 4))), nullptr);
    EXPECT_EQ(cache.count(), 0U);
}

TEST_F(OpenGLCacheTest, KeepsNothingOfABitmapThatCannotBeUploaded) {
    Imaging::Platform::NSBitmapDescription description;
    description.pixelsWide = description.pixelsHigh = 4;
    description.samplesPerPixel = 3;
    description.hasAlpha = false;
    const auto bitmap = NSBitmapImageRep::bitmapWithDescription(description);
    EXPECT_THROW(cache.scheduleBitmap(bitmap, 0, owner), NSException);
    EXPECT_EQ(cache.count(), 0U);
    EXPECT_EQ(bitmap.use_count(), 1);
    EXPECT_EQ(owner.lock->holds(), 0U);
}

TEST_F(OpenGLCacheTest, ForgetsTexturesOfAContextThatIsGoneWithoutDeletingThem) {
    const auto bitmap = alphaFirst(distinctPicture(4, 4));
    textureOf(bitmap);
    gl->takeLines();
    cache.forgetAllTextures();
    EXPECT_EQ(cache.count(), 0U);
    EXPECT_EQ(gl->deletedNames(), 0U);
    const unsigned lost = *gl->liveNames().begin();
    gl->deleteTextures(1, &lost);
}
