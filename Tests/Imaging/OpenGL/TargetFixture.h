#pragma once

// An OpenGL drawing target on a recorder, and pictures for it.

#include "Imaging/OpenGLGraphicsContext.h"
#include "Imaging/OpenGLImage.h"
#include "Platform/OpenGL/OpenGLContext.h"
#include "Platform/OpenGL/View.h"
#include "Tests/Imaging/OpenGL/TextureFixtures.h"

#include <memory>
#include <optional>
#include <thread>

namespace ImagingTests {

using Imaging::OpenGLContextLock;
using Imaging::OpenGLGraphicsContext;
using Imaging::OpenGLImage;
using Imaging::OpenGLTexture;
using Imaging::Platform::NSOpenGLContext;
using Imaging::Platform::NSView;

class TargetTest : public RecorderTest {
protected:
    TargetTest() { prepareFresh({}); }

    /// Afterwards neither the target nor a context is left, and the lock was free.
    ~TargetTest() override {
        if (target != nullptr) {
            EXPECT_TRUE(isLockFree());
            target.reset();
        }
        NSOpenGLContext::clearCurrentContext();
    }

    /// A new target, prepared on a new recorder whose commands so far are forgotten.
    void prepareFresh(const Abilities& abilities) {
        target.reset();
        begin(abilities);
        view = NSView::viewWithCommands(NSMakeRect(0, 0, 40, 20), gl);
        target = std::make_unique<OpenGLGraphicsContext>();
        target->prepareOnce(view.get());
        gl->takeLines();
    }

    /// Begins a frame of the size, whose commands are forgotten.
    void beginFrame(float width, float height) {
        target->beginDrawing(NSMakeRect(0, 0, width, height));
        gl->takeLines();
    }

    /// As seen from another thread.
    bool isLockFree() {
        bool taken = false;
        std::thread([&] {
            const auto lock = target->contextLock();
            taken = lock->try_lock();
            if (taken) lock->unlock();
        }).join();
        return taken;
    }

    std::shared_ptr<NSView> view;
    std::unique_ptr<OpenGLGraphicsContext> target;
};

inline TransformAndClipRect recordOf(const NSAffineTransform& transform) {
    return TransformAndClipRect::transformAndClipRectWithTransform(transform);
}

inline TransformAndClipRect recordOf(const NSAffineTransform& transform, NSRect clip) {
    return TransformAndClipRect::transformAndClipRectWithTransform(transform, clip);
}

inline TransformAndClipList listOfRecords(const std::vector<TransformAndClipRect>& records) {
    TransformAndClipList list;
    for (const TransformAndClipRect& record : records) list = list.appending(record);
    return list;
}

/// The texture coordinates and vertices of polygons, each in one line, whichever vertex the clipper begins
/// with.
inline Lines vertexLines(const Lines& lines) {
    Lines vertices;
    for (std::size_t i = 0; i + 1 < lines.size(); ++i) {
        if (lines[i].starts_with("glTexCoord2f(")) vertices.push_back(lines[i] + " " + lines[i + 1]);
    }
    return vertices;
}

/// The lines without those of vertices.
inline Lines withoutVertices(const Lines& lines) {
    Lines rest;
    for (const std::string& line : lines) {
        if (!line.starts_with("glTexCoord2f(") && !line.starts_with("glVertex3f(")) rest.push_back(line);
    }
    return rest;
}

inline std::string vertexLine(double s, double t, double x, double y) {
    return "glTexCoord2f(" + word(s) + ", " + word(t) + ") glVertex3f(" + word(x) + ", " + word(y) + ", 0)";
}

} // namespace ImagingTests
