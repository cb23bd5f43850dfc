// Contexts that are nothing but an object with commands, such as a recorder.

#include "Platform/OpenGL/Contexts/SuppliedCommands.h"

#include <utility>

namespace Imaging::Platform {

namespace {

class SuppliedContext final : public NativeContext {
public:
    explicit SuppliedContext(std::shared_ptr<OpenGLCommands> commands) : m_commands(std::move(commands)) {}

    std::unique_ptr<NativeContext> makeCompanion() override {
        return std::make_unique<SuppliedContext>(m_commands);
    }
    void attach(ViewBacking&, PixelSize size) override { m_size = size; }
    void detach() override { m_size = {}; }
    bool makeCurrent() override {
        m_commands->setDrawable({0, 0, m_size.width, m_size.height, false});
        return true;
    }
    void release() override {}
    bool flush() override {
        m_commands->flush();
        return true;
    }
    void setSwapInterval(int) override {}
    std::shared_ptr<OpenGLCommands> commands() override { return m_commands; }

private:
    std::shared_ptr<OpenGLCommands> m_commands;
    PixelSize m_size;
};

class SuppliedBacking final : public ViewBacking {
public:
    explicit SuppliedBacking(std::shared_ptr<OpenGLCommands> commands) : m_commands(std::move(commands)) {}

    std::unique_ptr<NativeContext> makeContext(const NSOpenGLPixelFormat&, NativeContext*) override {
        return std::make_unique<SuppliedContext>(m_commands);
    }

private:
    std::shared_ptr<OpenGLCommands> m_commands;
};

} // namespace

std::shared_ptr<ViewBacking> suppliedCommandsBacking(std::shared_ptr<OpenGLCommands> commands) {
    return std::make_shared<SuppliedBacking>(std::move(commands));
}

} // namespace Imaging::Platform
