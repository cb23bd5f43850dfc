#pragma once

// Nodes, drawing targets and pictures for the tests of the graph, which record what they are asked and fail
// where they are told to.

#include "Imaging/BitmapFormats.h"
#include "Imaging/CachedImage.h"
#include "Imaging/Image.h"
#include "Platform/Foundation/AssertionHandler.h"
#include "Platform/Foundation/Exception.h"
#include "Platform/Graphics/BitmapImageRep.h"
#include "Platform/Graphics/GraphicsContext.h"
#include "Tests/Support/Pixels.h"

#include <gtest/gtest.h>

#include <cmath>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace ImagingTests {

using Imaging::CCImage;
using Imaging::IMGBounds;
using Imaging::IMGDrawingTarget;
using Imaging::IMGImage;
using Imaging::IMGImageFromNSImage;
using Imaging::TransformAndClipList;
using Imaging::TransformAndClipRect;
using Pixels::Grid;
using Pixels::Rgba;
using Imaging::Platform::NSAffineTransform;
using Imaging::Platform::NSException;
using Imaging::Platform::NSImage;
using Imaging::Platform::NSMakePoint;
using Imaging::Platform::NSMakeRect;
using Imaging::Platform::NSMakeSize;
using Imaging::Platform::NSPoint;
using Imaging::Platform::NSRect;
using Imaging::Platform::NSSize;

// Values

inline NSAffineTransform matrix(float m11, float m12, float m21, float m22, float tX, float tY) {
    return NSAffineTransform({m11, m12, m21, m22, tX, tY});
}

inline NSAffineTransform moved(float x, float y) { return matrix(1, 0, 0, 1, x, y); }

inline testing::AssertionResult isRect(NSRect r, float x, float y, float width, float height) {
    if (Imaging::Platform::NSEqualRects(r, NSMakeRect(x, y, width, height)))
        return testing::AssertionSuccess();
    return testing::AssertionFailure() << "the rectangle is (" << r.origin.x << ", " << r.origin.y << ", "
                                       << r.size.width << ", " << r.size.height << ")";
}

inline testing::AssertionResult isPoint(NSPoint p, float x, float y) {
    if (p.x == x && p.y == y) return testing::AssertionSuccess();
    return testing::AssertionFailure() << "the point is (" << p.x << ", " << p.y << ")";
}

inline testing::AssertionResult isSize(NSSize s, float width, float height) {
    if (s.width == width && s.height == height) return testing::AssertionSuccess();
    return testing::AssertionFailure() << "the size is (" << s.width << ", " << s.height << ")";
}

/// Equality by value, so that it does not matter which zero an entry is.
inline testing::AssertionResult isTransform(const NSAffineTransform& t, const NSAffineTransform& expected) {
    if (t.isEqual(expected)) return testing::AssertionSuccess();
    const auto m = t.transformStruct();
    return testing::AssertionFailure() << "the transform is (" << m.m11 << ", " << m.m12 << ", " << m.m21
                                       << ", " << m.m22 << ", " << m.tX << ", " << m.tY << ")";
}

// Nodes

/// What a node or target was asked to draw.
struct DrawCall {
    const void* image = nullptr; ///< the CCImage that was passed down
    const IMGImage* node = nullptr;
    std::vector<TransformAndClipRect> records;
    int operation = -1;
    float fraction = -1;
    IMGDrawingTarget* imageContext = nullptr;

    DrawCall(const void* itsImage, const IMGImage* itsNode, const TransformAndClipList& list,
             int itsOperation, float itsFraction, IMGDrawingTarget* context)
        : image(itsImage),
          node(itsNode),
          operation(itsOperation),
          fraction(itsFraction),
          imageContext(context) {
        for (const TransformAndClipRect* record : list.records()) records.push_back(*record);
    }
};

/// Where a node throws, and what.
enum class Failing { Nowhere, Transform, Draw, Bounds, Rendering };
enum class Thrown { Exception, StandardException, Number };

inline void throwSomething(Thrown kind) {
    switch (kind) {
    case Thrown::Exception:
        throw NSException(Imaging::Platform::NSGenericException, "thrown by a test");
    case Thrown::StandardException:
        throw std::runtime_error("thrown by a test");
    case Thrown::Number:
        throw 17;
    }
}

/// A node with a given transform and, where it has an extent, the bounds of a leaf. It records the draws and
/// changes that reach it and otherwise behaves like any node.
class TestNode : public IMGImage {
public:
    using IMGImage::IMGImage;

    NSAffineTransform ownTransform;
    std::optional<IMGBounds> extent;
    std::shared_ptr<CCImage> rendered;
    int defaultOperation = 2;
    float defaultFraction = 1;
    Failing failing = Failing::Nowhere;
    Thrown thrown = Thrown::Exception;
    std::optional<int> label; ///< nodes of one label are equal
    std::string name;
    std::vector<std::string>* log = nullptr; ///< receives the names of nodes that change or draw

    int changes = 0;
    int renderings = 0;
    std::vector<DrawCall> draws;
    std::vector<DrawCall> retainedDraws;

    void setExtent(NSRect rect) { extent = IMGBounds::boundsWithRect(rect, NSAffineTransform()); }

    NSAffineTransform transform() const override {
        failIn(Failing::Transform);
        return ownTransform;
    }
    std::shared_ptr<CCImage> untransformedImage() override {
        ++renderings;
        failIn(Failing::Rendering);
        return rendered;
    }
    Imaging::Platform::NSCompositingOperation defaultCompositingOperation() const override {
        return Imaging::Platform::compositingOperation(defaultOperation);
    }
    float defaultCompositingFraction() const override { return defaultFraction; }
    IMGBounds imageBounds() const override { return extent.has_value() ? *extent : IMGImage::imageBounds(); }

    using IMGImage::boundsForImage;
    std::optional<IMGBounds> boundsForImage(const IMGImage& image,
                                            const NSAffineTransform& transform) const override {
        failIn(Failing::Bounds);
        if (!extent.has_value()) return IMGImage::boundsForImage(image, transform);
        if (!isEqual(image)) return std::nullopt;
        return IMGBounds::boundsWithRect(extent->rectangle(), transform);
    }

    bool isEqual(const IMGImage& other) const override {
        const auto* const node = dynamic_cast<const TestNode*>(&other);
        return node == this || (node != nullptr && label.has_value() && label == node->label);
    }

    void changed() override {
        ++changes;
        if (log != nullptr) log->push_back(name);
        IMGImage::changed();
    }

    void drawImage(const std::shared_ptr<CCImage>& image, const TransformAndClipList& list,
                   Imaging::CompositingOperation operation, float fraction,
                   IMGDrawingTarget* imageContext) override {
        draws.emplace_back(image.get(), this, list, operation, fraction, imageContext);
        if (log != nullptr) log->push_back(name);
        failIn(Failing::Draw);
        IMGImage::drawImage(image, list, operation, fraction, imageContext);
    }

    void drawRetainedImage(const std::shared_ptr<CCImage>& image, const TransformAndClipList& list,
                           Imaging::CompositingOperation operation, float fraction,
                           IMGDrawingTarget* imageContext) override {
        retainedDraws.emplace_back(image.get(), this, list, operation, fraction, imageContext);
        IMGImage::drawRetainedImage(image, list, operation, fraction, imageContext);
    }

private:
    void failIn(Failing place) const {
        if (failing == place) throwSomething(thrown);
    }
};

inline std::shared_ptr<TestNode> leaf(NSRect extent, const NSAffineTransform& transform = {}) {
    auto node = std::make_shared<TestNode>();
    node->setExtent(extent);
    node->ownTransform = transform;
    return node;
}

inline std::shared_ptr<TestNode> nodeOver(IMGImage::Sources sources,
                                          const NSAffineTransform& transform = {}) {
    auto node = std::make_shared<TestNode>(std::move(sources));
    node->ownTransform = transform;
    return node;
}

inline std::shared_ptr<IMGImageFromNSImage> pictureNode(const Grid& grid) {
    return std::make_shared<IMGImageFromNSImage>(Pixels::imageOf(grid));
}

// Drawing

/// A drawing target that notes what it is asked to draw.
class RecordingTarget : public IMGDrawingTarget {
public:
    std::vector<DrawCall> calls;
    bool fails = false;

    void drawImage(IMGImage& node, const TransformAndClipList& list, Imaging::CompositingOperation operation,
                   float fraction) override {
        calls.emplace_back(nullptr, &node, list, operation, fraction, this);
        if (fails) throwSomething(Thrown::Exception);
    }
};

/// What is drawn on a picture of a size in the body, one pixel a point.
template<class Body>
Grid drawnOn(int width, int height, const Body& body) {
    NSImage picture(NSMakeSize(static_cast<float>(width), static_cast<float>(height)));
    const Imaging::Platform::NSImageFocus focus(picture);
    body();
    const auto bitmap = Imaging::Platform::NSBitmapImageRep::bitmapWithFocusedViewRect(
        NSMakeRect(0, 0, static_cast<float>(width), static_cast<float>(height)));
    return Pixels::gridOf(*bitmap);
}

struct Spot {
    double x;
    double y;
};

/// The same by plain arithmetic, for placements that carry whole pixels to whole pixels: the centre of each
/// pixel of the picture is mapped and, if the picture's pixel there is visible, painted.
template<class Place, class Visible>
void paint(Grid& target, const Grid& picture, const Place& place, const Visible& visible) {
    for (int y = 0; y < picture.height(); ++y) {
        for (int x = 0; x < picture.width(); ++x) {
            const Spot centre{x + 0.5, y + 0.5};
            const Spot spot = place(centre);
            const int column = static_cast<int>(std::floor(spot.x));
            const int row = target.height() - 1 - static_cast<int>(std::floor(spot.y));
            if (target.contains(column, row) && visible(centre)) target.at(column, row) = picture.above(x, y);
        }
    }
}

template<class Place>
void paint(Grid& target, const Grid& picture, const Place& place) {
    paint(target, picture, place, [](Spot) { return true; });
}

/// An opaque picture without any symmetry and without two equal pixels.
inline Grid distinctPicture(int width, int height, int tint = 0) {
    Grid grid(width, height);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            grid.at(x, y) = {static_cast<std::uint8_t>(40 + 20 * x), static_cast<std::uint8_t>(30 + 25 * y),
                             static_cast<std::uint8_t>(tint + 7 * x + 3 * y), 255};
        }
    }
    return grid;
}

// Failures and locks

/// Notes failed assertions and goes on, until the end of the scope.
class ToleratedAssertions {
public:
    struct Failure {
        std::string file;
        int line;
        std::string description;
    };

    ToleratedAssertions() : m_handler(std::make_shared<Handler>()) {
        Imaging::Platform::NSAssertionHandler::setCurrentHandler(m_handler);
    }
    ~ToleratedAssertions() { Imaging::Platform::NSAssertionHandler::setCurrentHandler(nullptr); }
    ToleratedAssertions(const ToleratedAssertions&) = delete;
    ToleratedAssertions& operator=(const ToleratedAssertions&) = delete;

    const std::vector<Failure>& failures() const { return m_handler->failures; }

private:
    struct Handler : Imaging::Platform::NSAssertionHandler {
        std::vector<Failure> failures;
        void handleFailureInFile(const std::string& file, int line, const std::string& description) override {
            failures.push_back({file, line, description});
        }
    };

    std::shared_ptr<Handler> m_handler;
};

/// Whether some thread holds the process's picture lock, as seen from a thread that does not.
inline bool imageLockIsHeld() {
    bool held = false;
    std::thread([&held] {
        held = !Imaging::GlobalImageLock().try_lock();
        if (!held) Imaging::GlobalImageLock().unlock();
    }).join();
    return held;
}

/// A picture that notes how it is drawn and encoded and whether the lock is held meanwhile, and fails where
/// it is told to.
class WatchedPicture : public NSImage {
public:
    using NSImage::NSImage;

    struct Drawing {
        NSRect destination;
        NSRect source;
        int operation;
        float fraction;
        bool lockHeld;
    };
    std::vector<Drawing> drawings;
    mutable std::vector<bool> encodings; ///< for each, whether the lock was held
    std::optional<Thrown> throwsOnDraw;
    std::optional<Thrown> throwsOnEncode;
    bool encodesNothing = false;
    std::optional<Imaging::Platform::NSData> encodesAs;

    void drawInRect(NSRect destination, NSRect source, Imaging::Platform::NSCompositingOperation operation,
                    float fraction) override {
        drawings.push_back({destination, source, operation, fraction, imageLockIsHeld()});
        if (throwsOnDraw.has_value()) throwSomething(*throwsOnDraw);
        NSImage::drawInRect(destination, source, operation, fraction);
    }

    std::optional<Imaging::Platform::NSData>
    TIFFRepresentation(Imaging::Platform::NSError* error) const override {
        encodings.push_back(imageLockIsHeld());
        if (throwsOnEncode.has_value()) throwSomething(*throwsOnEncode);
        if (encodesNothing) return std::nullopt;
        return encodesAs.has_value() ? encodesAs : NSImage::TIFFRepresentation(error);
    }
};

inline std::shared_ptr<WatchedPicture> watchedPicture(const Grid& grid) {
    auto picture = std::make_shared<WatchedPicture>(
        NSMakeSize(static_cast<float>(grid.width()), static_cast<float>(grid.height())));
    picture->addRepresentation(Pixels::bitmapOf(grid));
    return picture;
}

} // namespace ImagingTests
