// The one shader, written so that core and ES contexts both take it, and the buffer for vertices.

#include "Platform/OpenGL/Programmable/BatchPrograms.h"

#include "Platform/Foundation/Exception.h"
#include "Platform/OpenGL/OpenGLException.h"

#include <epoxy/gl.h>

#include <array>
#include <cstddef>
#include <string>
#include <utility>

namespace Imaging::Platform {

using namespace OpenGL;

namespace {

constexpr const char* vertexShader = R"(
in vec4 position;
in vec4 color;
in vec2 texCoord;
in vec4 edge;
out vec4 vertexColor;
out vec2 vertexTexCoord;
out vec4 vertexEdge;
void main() {
    gl_Position = position;
    vertexColor = color;
    vertexTexCoord = texCoord;
    vertexEdge = edge;
}
)";

constexpr const char* fragmentShader = R"(
in vec4 vertexColor;
in vec2 vertexTexCoord;
in vec4 vertexEdge;
uniform SAMPLER picture;
uniform int texturing; // 0: none, 1: modulate, 2: replace
out vec4 fragment;
void main() {
    vec4 result = vertexColor;
    if (texturing != 0) {
        vec4 texel = texture(picture, vertexTexCoord);
        result = texturing == 1 ? texel * vertexColor : texel;
    }
    vec2 coverage = clamp(vertexEdge.zw - abs(vertexEdge.xy), 0.0, 1.0);
    result.a *= coverage.x * coverage.y;
    fragment = result;
}
)";

constexpr std::array<const char*, 4> attributeNames{"position", "color", "texCoord", "edge"};

/// ES samples textures with few bits unless it is told otherwise, which shows after some layers of blending.
std::string preamble(const OpenGLFacts& facts, bool forRectangles) {
    const bool isES = facts.profile == OpenGLProfile::ES;
    return std::string(isES ? "#version 300 es\nprecision highp float;\nprecision highp sampler2D;\n"
                            : "#version 150\n") +
           "#define SAMPLER " + (forRectangles ? "sampler2DRect\n" : "sampler2D\n");
}

[[noreturn]] void refuse(const std::string& log) {
    throw NSException(NSOpenGLException, "the OpenGL driver refuses the library's shader: " + log);
}

GLuint compiled(GLenum kind, const std::string& begin, const char* source) {
    const GLuint shader = glCreateShader(kind);
    const std::array<const char*, 2> parts{begin.c_str(), source};
    glShaderSource(shader, 2, parts.data(), nullptr);
    glCompileShader(shader);
    GLint isGood = 0;
    glGetShaderiv(shader, GL_COMPILE_STATUS, &isGood);
    if (isGood != 0) return shader;
    std::array<char, 1024> log{};
    glGetShaderInfoLog(shader, static_cast<GLsizei>(log.size()), nullptr, log.data());
    glDeleteShader(shader);
    refuse(log.data());
}

const void* offsetOf(std::size_t bytes) { return reinterpret_cast<const void*>(bytes); }

void describeVertices() {
    const std::array<std::size_t, 4> offsets{offsetof(BatchVertex, position), offsetof(BatchVertex, color),
                                             offsetof(BatchVertex, texCoord), offsetof(BatchVertex, edge)};
    const std::array<GLint, 4> sizes{4, 4, 2, 4};
    for (std::size_t i = 0; i < offsets.size(); ++i) {
        const auto location = static_cast<GLuint>(i);
        glEnableVertexAttribArray(location);
        glVertexAttribPointer(location, sizes.at(i), GL_FLOAT, GL_FALSE, sizeof(BatchVertex),
                              offsetOf(offsets.at(i)));
    }
}

GLenum primitiveOf(BatchKind kind) { return kind == BatchKind::ThinLines ? GL_LINES : GL_TRIANGLES; }

} // namespace

BatchPrograms::Program BatchPrograms::makeProgram(const OpenGLFacts& facts, bool forRectangles) {
    const std::string begin = preamble(facts, forRectangles);
    Program program{glCreateProgram()};
    for (const auto& [kind, source] :
         {std::pair{GL_VERTEX_SHADER, vertexShader}, {GL_FRAGMENT_SHADER, fragmentShader}}) {
        const GLuint shader = compiled(static_cast<GLenum>(kind), begin, source);
        glAttachShader(program.name, shader);
        glDeleteShader(shader); // lives as long as the program
    }
    for (std::size_t i = 0; i < attributeNames.size(); ++i) {
        glBindAttribLocation(program.name, static_cast<GLuint>(i), attributeNames.at(i));
    }
    glLinkProgram(program.name);
    GLint isGood = 0;
    glGetProgramiv(program.name, GL_LINK_STATUS, &isGood);
    if (isGood == 0) {
        std::array<char, 1024> log{};
        glGetProgramInfoLog(program.name, static_cast<GLsizei>(log.size()), nullptr, log.data());
        refuse(log.data());
    }
    program.texturing = glGetUniformLocation(program.name, "texturing");
    return program;
}

BatchPrograms::BatchPrograms(const OpenGLFacts& facts) : m_plain(makeProgram(facts, false)) {
    if (facts.rectangleTextures) m_rectangle = makeProgram(facts, true);
    GLint vertexArrayBefore = 0;
    GLint bufferBefore = 0;
    glGetIntegerv(GL_VERTEX_ARRAY_BINDING, &vertexArrayBefore);
    glGetIntegerv(GL_ARRAY_BUFFER_BINDING, &bufferBefore);
    glGenVertexArrays(1, &m_vertex_array);
    glGenBuffers(1, &m_buffer);
    glBindVertexArray(m_vertex_array);
    glBindBuffer(GL_ARRAY_BUFFER, m_buffer);
    describeVertices();
    glBindVertexArray(static_cast<GLuint>(vertexArrayBefore));
    glBindBuffer(GL_ARRAY_BUFFER, static_cast<GLuint>(bufferBefore));
}

void BatchPrograms::bind() {
    glBindVertexArray(m_vertex_array);
    glBindBuffer(GL_ARRAY_BUFFER, m_buffer);
    m_current = 0;
}

void BatchPrograms::use(Program& program, int mode) {
    if (m_current != program.name) glUseProgram(program.name);
    m_current = program.name;
    if (program.mode != mode) glUniform1i(program.texturing, mode);
    program.mode = mode;
}

void BatchPrograms::draw(BatchKind kind, const std::vector<BatchVertex>& vertices, const RenderState& state) {
    const bool hasRectangle = state.textureRectangle && state.bindingRectangle != 0;
    const bool isTextured =
        hasRectangle || (!state.textureRectangle && state.texture2D && state.binding2D != 0);
    const int mode = !isTextured ? 0 : state.texEnvMode == TexEnvMode::Modulate ? 1 : 2;
    use(hasRectangle ? m_rectangle : m_plain, mode);
    const auto bytes = static_cast<GLsizeiptr>(vertices.size() * sizeof(BatchVertex));
    glBufferData(GL_ARRAY_BUFFER, bytes, vertices.data(), GL_STREAM_DRAW);
    glDrawArrays(primitiveOf(kind), 0, static_cast<GLsizei>(vertices.size()));
}

void BatchPrograms::release() {
    glDeleteVertexArrays(1, &m_vertex_array);
    glDeleteBuffers(1, &m_buffer);
    glDeleteProgram(m_plain.name);
    if (m_rectangle.name != 0) glDeleteProgram(m_rectangle.name);
}

} // namespace Imaging::Platform
