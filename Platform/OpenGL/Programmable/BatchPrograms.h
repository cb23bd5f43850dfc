#pragma once

// Internal: what draws batches in contexts without fixed function. Not installed.

#include "Platform/OpenGL/OpenGLFacts.h"
#include "Platform/OpenGL/Programmable/DrawState.h"
#include "Platform/OpenGL/Programmable/VertexBatch.h"

#include <vector>

namespace Imaging::Platform {

/// The one shader, as a program for each kind of texture that the context has, and the buffer that vertices
/// pass through. Made and used while the context is current.
class BatchPrograms {
public:
    /// Leaves everything bound that was. Throws an NSException (NSOpenGLException) with the driver's words
    /// when it refuses the shader.
    explicit BatchPrograms(const OpenGLFacts& facts);

    /// Binds the buffer and its vertex array. To be called once before draws, whenever others may have bound
    /// theirs.
    void bind();

    /// Draws with what is bound: texture unit 0 has the texture that `state` draws with.
    void draw(BatchKind kind, const std::vector<BatchVertex>& vertices, const RenderState& state);

    /// Deletes all of it.
    void release();

private:
    struct Program {
        unsigned name = 0;
        int texturing = -1; ///< place of the uniform
        int mode = 0;       ///< its value
    };

    Program makeProgram(const OpenGLFacts& facts, bool forRectangles);
    void use(Program& program, int mode);

    Program m_plain;     ///< 2D textures, and none
    Program m_rectangle; ///< without a name where there are none
    unsigned m_current = 0;
    unsigned m_vertex_array = 0;
    unsigned m_buffer = 0;
};

} // namespace Imaging::Platform
