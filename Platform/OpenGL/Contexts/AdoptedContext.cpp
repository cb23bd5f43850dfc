// A context of the application's: what is current when drawing begins is taken note of and put back when
// it ends, and other threads get companions that share with it.

#include "Platform/OpenGL/Contexts/AdoptedContext.h"

#include "Platform/Foundation/Exception.h"
#include "Platform/OpenGL/Contexts/ContextCommands.h"
#include "Platform/OpenGL/Contexts/EglContext.h"
#include "Platform/OpenGL/Contexts/NativeIdentity.h"
#include "Platform/OpenGL/Native/KeptState.h"
#include "Platform/OpenGL/OpenGLException.h"

#include <optional>
#include <utility>

namespace Imaging::Platform {

namespace {

/// A context for another thread that the application's functions make current there.
class SuppliedCompanion final : public NativeContext {
public:
    explicit SuppliedCompanion(const NSAdoptedContext& adopted) : m_adopted(adopted) {}

    std::unique_ptr<NativeContext> makeCompanion() override { return nullptr; }
    void attach(ViewBacking&, PixelSize) override {}
    void detach() override {}
    bool makeCurrent() override {
        if (!m_adopted.makeCompanionCurrent()) return false;
        if (!m_commands) m_commands = commandsOfCurrentContext();
        m_commands->setDrawable({});
        return true;
    }
    void release() override {
        if (m_commands) m_commands->flush();
        if (m_adopted.releaseCompanion) m_adopted.releaseCompanion();
    }
    bool flush() override {
        m_commands->flush();
        return true;
    }
    void setSwapInterval(int) override {}
    std::shared_ptr<OpenGLCommands> commands() override { return m_commands; }

private:
    NSAdoptedContext m_adopted;
    std::shared_ptr<NativeCommands> m_commands;
};

class AdoptedContext final : public NativeContext {
public:
    explicit AdoptedContext(NSAdoptedContext adopted) : m_adopted(std::move(adopted)) {}
    ~AdoptedContext() override {
        // Otherwise what the commands have goes with the application's context.
        if (m_commands && currentNativeContext() == m_identity) m_commands->releaseObjects();
    }

    std::unique_ptr<NativeContext> makeCompanion() override;
    void attach(ViewBacking&, PixelSize size) override { m_size = size; }
    void detach() override { m_size = {}; }
    bool makeCurrent() override;
    void release() override { giveBackState(); }
    bool flush() override;
    void setSwapInterval(int) override {}
    std::shared_ptr<OpenGLCommands> commands() override { return m_commands; }

private:
    void keepState();
    void giveBackState();

    NSAdoptedContext m_adopted;
    const void* m_identity = nullptr;
    std::optional<EglOrigin> m_origin;
    PixelSize m_size;
    std::shared_ptr<NativeCommands> m_commands;
    std::optional<KeptState> m_kept; // while we draw
};

std::unique_ptr<NativeContext> AdoptedContext::makeCompanion() {
    if (m_adopted.makeCompanionCurrent) return std::make_unique<SuppliedCompanion>(m_adopted);
    if (!m_origin || !m_commands) return nullptr;
    return EglContext::makeSharing(*m_origin, m_commands->facts());
}

bool AdoptedContext::makeCurrent() {
    const void* const current = currentNativeContext();
    if (current == nullptr) {
        throw NSException(NSOpenGLException,
                          "no OpenGL context is current for the view to draw with; make the "
                          "application's context current before drawing");
    }
    if (m_identity != nullptr && current != m_identity) return false; // the one that we know is gone
    if (!m_commands) {
        m_commands = commandsOfCurrentContext();
        m_identity = current;
        m_origin = currentEglOrigin();
    }
    keepState();
    return true;
}

void AdoptedContext::keepState() {
    if (m_kept) return;
    m_kept.emplace(m_commands->facts());
    const std::array<int, 4>& area = m_kept->viewport();
    m_commands->setDrawable({area[0], area[1], m_size.width, m_size.height, true});
    m_commands->viewport(0, 0, m_size.width, m_size.height);
    m_commands->pixelStorei(OpenGL::PixelStore::UnpackRowLength, 0);
    m_commands->pixelStorei(OpenGL::PixelStore::UnpackAlignment, 4);
}

void AdoptedContext::giveBackState() {
    if (!m_kept) return;
    if (currentNativeContext() == m_identity) {
        m_commands->flush();
        m_kept->restore();
    }
    m_kept.reset();
}

bool AdoptedContext::flush() {
    giveBackState();
    if (m_adopted.flush) m_adopted.flush();
    return true;
}

class AdoptedBacking final : public ViewBacking {
public:
    explicit AdoptedBacking(NSAdoptedContext adopted) : m_adopted(std::move(adopted)) {}

    std::unique_ptr<NativeContext> makeContext(const NSOpenGLPixelFormat&, NativeContext* share) override {
        if (share == nullptr) return std::make_unique<AdoptedContext>(m_adopted);
        throw NSException(NSOpenGLException,
                          "an adopted context shares what its application made it share; make it "
                          "without another context");
    }

private:
    NSAdoptedContext m_adopted;
};

} // namespace

std::shared_ptr<ViewBacking> adoptedBacking(NSAdoptedContext adopted) {
    return std::make_shared<AdoptedBacking>(std::move(adopted));
}

} // namespace Imaging::Platform
