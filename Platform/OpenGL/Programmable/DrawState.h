#pragma once

// Internal: the state of fixed function that shaders draw with, and its attribute stack. Not installed.

#include "Platform/OpenGL/OpenGLConstants.h"

#include <array>
#include <cstddef>
#include <vector>

namespace Imaging::Platform {

/// What a batch is drawn with. A change of it ends the batch.
struct RenderState {
    bool cullFace = false;
    OpenGL::CullFaceMode cullFaceMode = OpenGL::CullFaceMode::Back;
    bool depthTest = false;
    bool blend = false;
    OpenGL::BlendFactor blendSource = OpenGL::BlendFactor::One;
    OpenGL::BlendFactor blendDestination = OpenGL::BlendFactor::Zero;
    std::array<float, 4> blendColor{};
    bool texture2D = false;
    bool textureRectangle = false;
    unsigned binding2D = 0;
    unsigned bindingRectangle = 0;
    OpenGL::TexEnvMode texEnvMode = OpenGL::TexEnvMode::Modulate;
    std::array<int, 4> viewport{}; ///< from the drawable's corner

    friend bool operator==(const RenderState&, const RenderState&) = default;
};

/// All that the attribute stack keeps.
struct DrawState {
    RenderState render;
    std::array<float, 4> color{1, 1, 1, 1};
    std::array<float, 2> texCoord{};
    float lineWidth = 1;
    bool lineSmooth = false;
    OpenGL::MatrixMode matrixMode = OpenGL::MatrixMode::ModelView;
    std::array<float, 4> clearColor{};

    /// Where a capability is kept.
    bool& capability(OpenGL::Capability capability);
};

/// Saved states, the last one on top.
class AttribStack {
public:
    /// False at OpenGLCommands::attribStackDepth, and when it is empty; nothing changes then.
    bool push(OpenGL::AttribBits bits, const DrawState& state);
    /// Puts the groups that were saved back into `state`.
    bool pop(DrawState& state);

private:
    struct Entry {
        OpenGL::AttribBits bits;
        DrawState state;
    };

    std::vector<Entry> m_entries;
};

} // namespace Imaging::Platform
