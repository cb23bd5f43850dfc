// Also tests: Imaging/CCImage.cpp
// Also tests: Imaging/Drawing/RecordClips.cpp

#include "Imaging/CachedImage.h"

#include "Tests/Imaging/ImagingTestSupport.h"

#include <gtest/gtest.h>

#include <limits>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

using namespace ImagingTests;

namespace {

TransformAndClipRect record(const NSAffineTransform& transform) {
    return TransformAndClipRect::transformAndClipRectWithTransform(transform);
}

TransformAndClipRect clipped(const NSAffineTransform& transform, NSRect clip) {
    return TransformAndClipRect::transformAndClipRectWithTransform(transform, clip);
}

TransformAndClipList listOf(const std::vector<TransformAndClipRect>& records) {
    TransformAndClipList list;
    for (const TransformAndClipRect& each : records) list = list.appending(each);
    return list;
}

bool isInside(Spot p, NSRect r) {
    return p.x > r.origin.x && p.x < r.origin.x + r.size.width && p.y > r.origin.y &&
           p.y < r.origin.y + r.size.height;
}

Grid drawn(const std::shared_ptr<NSImage>& picture, const std::vector<TransformAndClipRect>& records) {
    const auto image = CCImage::ccImageWithNSImage(picture);
    return drawnOn(12, 11, [&] { image->drawWithTransformClip(listOf(records), 2, 1, nullptr); });
}

const Grid thePicture = distinctPicture(5, 3);

// The three levels of the tests below, as transforms and as plain arithmetic.
const NSAffineTransform outerTransform = moved(2, 1);
Spot outerPlace(Spot p) { return {p.x + 2, p.y + 1}; }
const NSAffineTransform middleTransform = matrix(0, 1, -1, 0, 6, 1); // (x, y) becomes (6 - y, x + 1)
Spot middlePlace(Spot p) { return {6 - p.y, p.x + 1}; }
const NSAffineTransform innerTransform = matrix(-1, 0, 0, 1, 6, 1); // (6 - x, y + 1)
Spot innerPlace(Spot p) { return {6 - p.x, p.y + 1}; }

Spot wholePlace(Spot p) { return outerPlace(middlePlace(innerPlace(p))); }

} // namespace

TEST(CachedImage, HoldsAPictureAndHasItsSize) {
    const auto picture = std::make_shared<NSImage>(NSMakeSize(7.5F, 4.25F));
    const auto image = CCImage::ccImageWithNSImage(picture);
    EXPECT_EQ(image->nsImage(), picture);
    EXPECT_EQ(picture.use_count(), 2);
    EXPECT_TRUE(isSize(image->size(), 7.5F, 4.25F));
    EXPECT_EQ(image->ciImage(), nullptr);
    picture->setSize(NSMakeSize(9, 2));
    EXPECT_TRUE(isSize(image->size(), 9, 2));
}

TEST(CachedImage, OfAPictureOfTheOtherServiceKeepsNothingAndDrawsNothing) {
    const auto image = CCImage::ccImageWithCIImage(nullptr);
    EXPECT_EQ(image->ciImage(), nullptr);
    EXPECT_EQ(image->nsImage(), nullptr);
    EXPECT_TRUE(isSize(image->size(), 0, 0));
    EXPECT_NO_THROW(image->forceToCache());
    const Grid pixels = drawnOn(6, 5, [&] {
        image->drawWithTransformClip(listOf({clipped(moved(1, 1), NSMakeRect(0, 0, 2, 2))}), 1, 1, nullptr);
    });
    EXPECT_TRUE(Pixels::areAlike(pixels, Grid(6, 5)));
}

TEST(CachedImage, IsReadyToDrawOnceItIsForcedToCache) {
    const Grid before = distinctPicture(5, 3);
    const auto picture = Pixels::imageOf(before);
    const auto image = CCImage::ccImageWithNSImage(picture);
    image->forceToCache();
    const auto bitmap =
        std::dynamic_pointer_cast<Imaging::Platform::NSBitmapImageRep>(picture->representations()[0]);
    bitmap->setPixelAt(1, 1, {1, 2, 3, 255}); // not announced, so the ready copy is drawn
    EXPECT_TRUE(Pixels::areAlike(Pixels::shownBy(*picture, 5, 3), before));
    EXPECT_EQ(picture->representations().size(), 1U);
    EXPECT_EQ(picture->representations()[0], bitmap);
}

TEST(CachedImage, SwallowsWhatGoesWrongWhenItIsForcedToCache) {
    const auto image = CCImage::ccImageWithNSImage(std::make_shared<NSImage>(NSMakeSize(0, 4)));
    EXPECT_THROW(image->nsImage()->lockFocus(), NSException);
    EXPECT_NO_THROW(image->forceToCache());
}

TEST(CachedImageDrawing, AppliesTheDeepestRecordFirst) {
    const Grid pixels = drawn(Pixels::imageOf(thePicture),
                              {record(outerTransform), record(middleTransform), record(innerTransform)});
    Grid expected(12, 11);
    paint(expected, thePicture, wholePlace);
    EXPECT_TRUE(Pixels::areAlike(pixels, expected));
}

TEST(CachedImageDrawing, WithoutRecordsDrawsAtTheOrigin) {
    const Grid pixels = drawn(Pixels::imageOf(thePicture), {});
    Grid expected(12, 11);
    paint(expected, thePicture, [](Spot p) { return p; });
    EXPECT_TRUE(Pixels::areAlike(pixels, expected));
}

TEST(CachedImageDrawing, TakesEachClipInTheSpaceOfItsOwnRecord) {
    // Where the picture lies in the spaces of the three records: in its own coordinates for the innermost,
    // at (1, 1, 5, 3) for the middle one and at (2, 2, 3, 5) for the outer one.
    const NSRect innerClip = NSMakeRect(1, 0, 3, 2);
    const NSRect middleClip = NSMakeRect(2, 2, 3, 2);
    const NSRect outerClip = NSMakeRect(2, 3, 2, 3);
    struct Case {
        std::vector<TransformAndClipRect> records;
        bool inner, middle, outer;
    };
    std::vector<Case> cases;
    for (int mask = 0; mask < 8; ++mask) {
        const bool inner = (mask & 1) != 0;
        const bool middle = (mask & 2) != 0;
        const bool outer = (mask & 4) != 0;
        cases.push_back({{outer ? clipped(outerTransform, outerClip) : record(outerTransform),
                          middle ? clipped(middleTransform, middleClip) : record(middleTransform),
                          inner ? clipped(innerTransform, innerClip) : record(innerTransform)},
                         inner,
                         middle,
                         outer});
    }
    for (const Case& each : cases) {
        Grid expected(12, 11);
        int painted = 0;
        paint(expected, thePicture, wholePlace, [&](Spot p) {
            const bool visible = (!each.inner || isInside(p, innerClip)) &&
                                 (!each.middle || isInside(innerPlace(p), middleClip)) &&
                                 (!each.outer || isInside(middlePlace(innerPlace(p)), outerClip));
            painted += visible ? 1 : 0;
            return visible;
        });
        ASSERT_GT(painted, 0);
        EXPECT_TRUE(Pixels::areAlike(drawn(Pixels::imageOf(thePicture), each.records), expected))
            << each.inner << each.middle << each.outer;
    }
}

TEST(CachedImageDrawing, LetsNothingThroughWhereTheClipsShareNothing) {
    const Grid pixels = drawn(Pixels::imageOf(thePicture), {clipped(outerTransform, NSMakeRect(0, 0, 2, 3)),
                                                            clipped(moved(0, 0), NSMakeRect(2, 0, 3, 3))});
    EXPECT_TRUE(Pixels::areAlike(pixels, Grid(12, 11)));
}

TEST(CachedImageDrawing, LetsNothingThroughAnEmptyClip) {
    EXPECT_TRUE(Pixels::areAlike(
        drawn(Pixels::imageOf(thePicture), {clipped(outerTransform, NSMakeRect(0, 0, 0, 0))}), Grid(12, 11)));
}

TEST(CachedImageDrawing, IgnoresAClipThatIsTurnedOff) {
    auto each = clipped(outerTransform, NSMakeRect(1, 1, 1, 1));
    each.setHasClipRect(false);
    Grid expected(12, 11);
    paint(expected, thePicture, outerPlace);
    EXPECT_TRUE(Pixels::areAlike(drawn(Pixels::imageOf(thePicture), {each}), expected));
}

TEST(CachedImageDrawing, StaysInsideTheClipThatIsInForceAlready) {
    const auto image = CCImage::ccImageWithNSImage(Pixels::imageOf(thePicture));
    const Grid pixels = drawnOn(12, 11, [&] {
        Imaging::Platform::NSRectClip(NSMakeRect(0, 0, 4, 11));
        image->drawWithTransformClip(listOf({clipped(outerTransform, NSMakeRect(0, 1, 5, 2))}), 2, 1,
                                     nullptr);
    });
    Grid expected(12, 11);
    paint(expected, thePicture, outerPlace, [](Spot p) { return p.x < 2 && p.y > 1; });
    EXPECT_TRUE(Pixels::areAlike(pixels, expected));
}

TEST(CachedImageDrawing, ActsWithinTheTransformThatIsInForceAlready) {
    const auto image = CCImage::ccImageWithNSImage(Pixels::imageOf(thePicture));
    const Grid pixels = drawnOn(12, 11, [&] {
        const Imaging::Platform::NSGraphicsStateScope state; // the pixels are read upright again
        Imaging::Platform::NSGraphicsContext::currentContext()->concat(middleTransform);
        image->drawWithTransformClip(listOf({record(innerTransform)}), 2, 1, nullptr);
    });
    Grid expected(12, 11);
    paint(expected, thePicture, [](Spot p) { return middlePlace(innerPlace(p)); });
    EXPECT_TRUE(Pixels::areAlike(pixels, expected));
}

TEST(CachedImageDrawing, AsksThePictureForAllOfItselfInItsOwnPlace) {
    const auto picture = watchedPicture(thePicture);
    const auto image = CCImage::ccImageWithNSImage(picture);
    drawnOn(12, 11, [&] {
        image->drawWithTransformClip(listOf({record(middleTransform)}), 13, 0.25F, nullptr);
        image->drawWithTransformClip(listOf({record(middleTransform)}), -7, 3.5F, nullptr);
    });
    ASSERT_EQ(picture->drawings.size(), 2U);
    EXPECT_TRUE(isRect(picture->drawings[0].destination, 0, 0, 5, 3));
    EXPECT_TRUE(isRect(picture->drawings[0].source, 0, 0, 5, 3));
    EXPECT_EQ(picture->drawings[0].operation, 13);
    EXPECT_EQ(picture->drawings[0].fraction, 0.25F);
    EXPECT_EQ(picture->drawings[1].operation, -7);
    EXPECT_EQ(picture->drawings[1].fraction, 3.5F);
}

TEST(CachedImageDrawing, DoesNotAskTheDrawingTarget) {
    RecordingTarget target;
    const auto picture = watchedPicture(thePicture);
    drawnOn(12, 11, [&] {
        CCImage::ccImageWithNSImage(picture)->drawWithTransformClip(listOf({record(outerTransform)}), 2, 1,
                                                                    &target);
    });
    EXPECT_TRUE(target.calls.empty());
    EXPECT_EQ(picture->drawings.size(), 1U);
}

TEST(CachedImageDrawing, HoldsThePictureLockMeanwhile) {
    const auto picture = watchedPicture(thePicture);
    const auto image = CCImage::ccImageWithNSImage(picture);
    EXPECT_FALSE(imageLockIsHeld());
    drawnOn(12, 11, [&] {
        image->drawWithTransformClip(listOf({record(outerTransform)}), 2, 1, nullptr);
        EXPECT_FALSE(imageLockIsHeld());
    });
    ASSERT_EQ(picture->drawings.size(), 1U);
    EXPECT_TRUE(picture->drawings[0].lockHeld);
}

TEST(CachedImageDrawing, WorksForAThreadThatHoldsTheLockAlready) {
    const auto picture = watchedPicture(thePicture);
    const std::lock_guard<std::recursive_mutex> held(Imaging::GlobalImageLock());
    drawnOn(12, 11, [&] {
        CCImage::ccImageWithNSImage(picture)->drawWithTransformClip(listOf({record(outerTransform)}), 2, 1,
                                                                    nullptr);
    });
    EXPECT_EQ(picture->drawings.size(), 1U);
    EXPECT_TRUE(imageLockIsHeld());
}

TEST(CachedImageDrawing, RestoresTheGraphicsState) {
    const auto image = CCImage::ccImageWithNSImage(Pixels::imageOf(thePicture));
    std::size_t states = 99;
    const Grid pixels = drawnOn(12, 11, [&] {
        image->drawWithTransformClip(listOf({clipped(middleTransform, NSMakeRect(1, 1, 1, 1))}), 0, 1,
                                     nullptr);
        states = Imaging::Platform::NSGraphicsContext::currentContext()->savedStateCount();
        image->drawWithTransformClip(listOf({record(outerTransform)}), 2, 1, nullptr);
    });
    EXPECT_EQ(states, 0U);
    Grid expected(12, 11);
    paint(expected, thePicture, outerPlace);
    EXPECT_TRUE(Pixels::areAlike(pixels, expected));
}

TEST(CachedImageDrawing, PassesWhatThePictureThrowsOnWithLockAndStateGivenBack) {
    const auto image = CCImage::ccImageWithNSImage(Pixels::imageOf(thePicture));
    for (const Thrown kind : {Thrown::Exception, Thrown::StandardException, Thrown::Number}) {
        const auto failing = watchedPicture(thePicture);
        failing->throwsOnDraw = kind;
        std::size_t states = 99;
        const Grid pixels = drawnOn(12, 11, [&] {
            const auto list = listOf({clipped(middleTransform, NSMakeRect(1, 1, 1, 1))});
            EXPECT_ANY_THROW(
                CCImage::ccImageWithNSImage(failing)->drawWithTransformClip(list, 2, 1, nullptr));
            EXPECT_FALSE(imageLockIsHeld());
            states = Imaging::Platform::NSGraphicsContext::currentContext()->savedStateCount();
            image->drawWithTransformClip(listOf({record(outerTransform)}), 2, 1, nullptr);
        });
        EXPECT_EQ(states, 0U);
        EXPECT_TRUE(failing->drawings.at(0).lockHeld);
        Grid expected(12, 11);
        paint(expected, thePicture, outerPlace);
        EXPECT_TRUE(Pixels::areAlike(pixels, expected));
    }
}

TEST(CachedImageDrawing, UnderATransformWithoutInversePaintsNothingAndLastsNot) {
    const auto image = CCImage::ccImageWithNSImage(Pixels::imageOf(thePicture));
    const float infinite = std::numeric_limits<float>::infinity();
    const float nothing = std::numeric_limits<float>::quiet_NaN();
    for (const NSAffineTransform& flat :
         {matrix(0, 0, 0, 1, 2, 3), matrix(1, 2, 2, 4, 0, 0), matrix(infinite, 0, 0, 1, 0, 0),
          matrix(1, 0, 0, 1, nothing, 0), matrix(nothing, nothing, nothing, nothing, nothing, nothing)}) {
        const Grid pixels = drawnOn(12, 11, [&] {
            EXPECT_NO_THROW(image->drawWithTransformClip(
                listOf({record(outerTransform), clipped(flat, NSMakeRect(0, 0, 3, 3))}), 2, 1, nullptr));
            EXPECT_NO_THROW(
                image->drawWithTransformClip(listOf({record(outerTransform), record(flat)}), 2, 1, nullptr));
            image->drawWithTransformClip(listOf({record(outerTransform)}), 2, 1, nullptr);
        });
        Grid expected(12, 11);
        paint(expected, thePicture, outerPlace);
        EXPECT_TRUE(Pixels::areAlike(pixels, expected));
    }
}

TEST(CachedImageDrawing, WithoutAContextDoesNothing) {
    const auto image = CCImage::ccImageWithNSImage(Pixels::imageOf(thePicture));
    ASSERT_EQ(Imaging::Platform::NSGraphicsContext::currentContext(), nullptr);
    EXPECT_NO_THROW(image->drawWithTransformClip(listOf({clipped(outerTransform, NSMakeRect(0, 0, 1, 1))}), 2,
                                                 1, nullptr));
}

TEST(GlobalImageLock, IsOneRecursiveLockForTheProcess) {
    std::recursive_mutex& lock = Imaging::GlobalImageLock();
    std::recursive_mutex* seenByAnother = nullptr;
    std::thread([&] { seenByAnother = &Imaging::GlobalImageLock(); }).join();
    EXPECT_EQ(&lock, seenByAnother);
    lock.lock();
    EXPECT_TRUE(lock.try_lock());
    EXPECT_TRUE(imageLockIsHeld());
    lock.unlock();
    EXPECT_TRUE(imageLockIsHeld());
    lock.unlock();
    EXPECT_FALSE(imageLockIsHeld());
}
