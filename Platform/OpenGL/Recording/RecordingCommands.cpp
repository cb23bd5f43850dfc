// Writes each command down as a line of text, checks it as OpenGL would, and counts names, attributes and
// matrices.

#include "Platform/OpenGL/Recording/RecordingCommands.h"

#include "Platform/OpenGL/Recording/ConstantNames.h"

#include <algorithm>
#include <charconv>
#include <concepts>
#include <cstring>
#include <utility>

namespace Imaging::Platform {

using namespace OpenGL;

namespace {

template<typename Value>
std::string wordOf(Value value) {
    if constexpr (requires { nameOf(value); }) {
        return nameOf(value);
    } else {
        std::array<char, 64> text{};
        const std::to_chars_result result = std::to_chars(text.data(), text.data() + text.size(), value);
        return {text.data(), result.ptr};
    }
}

std::string wordOf(const void* pointer) { return pointer == nullptr ? "NULL" : "pixels"; }

template<typename Values>
std::string listOf(const Values& values) {
    std::string text;
    for (const auto& value : values) text += (text.empty() ? "" : ", ") + wordOf(value);
    return "{" + text + "}";
}

std::string wordOf(const OpenGLCommands::Matrix& matrix) { return listOf(matrix); }
std::string wordOf(const std::vector<unsigned>& names) { return listOf(names); }

OpenGLFacts usualFacts() {
    OpenGLFacts facts;
    facts.majorVersion = 2;
    facts.minorVersion = 1;
    facts.rectangleTextures = true;
    facts.bgraUploads = true;
    facts.smoothLines = true;
    facts.anyTextureSize = true;
    facts.maximumTextureSize = 2048;
    facts.maximumRectangleTextureSize = 2048;
    facts.vendor = facts.renderer = "recorder";
    facts.version = "2.1";
    facts.extensions = "GL_EXT_texture_rectangle";
    return facts;
}

} // namespace

RecordingCommands::RecordingCommands() : RecordingCommands(usualFacts()) {}
RecordingCommands::RecordingCommands(OpenGLFacts facts) : m_facts(std::move(facts)) {}
RecordingCommands::~RecordingCommands() = default;

template<typename... Arguments>
void RecordingCommands::record(const char* command, const Arguments&... arguments) {
    std::string text;
    ((text += (text.empty() ? "" : ", ") + wordOf(arguments)), ...);
    m_lines.push_back(std::string(command) + "(" + text + ")");
}

std::vector<std::string> RecordingCommands::takeLines() { return std::exchange(m_lines, {}); }

void RecordingCommands::noteError(Error error) {
    if (m_own_error == Error::None) m_own_error = error;
}

bool RecordingCommands::isOutsideBegin() {
    if (m_inside_begin) noteError(Error::InvalidOperation);
    return !m_inside_begin;
}

std::size_t RecordingCommands::matrixDepth(MatrixMode mode) const {
    const auto found = m_matrix_depths.find(mode);
    return found == m_matrix_depths.end() ? 0 : found->second;
}

// Each command is written down first, also where it is wrong: what was asked for is what tests look at.

void RecordingCommands::begin(Primitive primitive) {
    record("glBegin", primitive);
    if (isOutsideBegin()) m_inside_begin = true;
}

void RecordingCommands::end() {
    record("glEnd");
    if (!m_inside_begin) noteError(Error::InvalidOperation);
    m_inside_begin = false;
}

void RecordingCommands::vertex2f(float x, float y) { record("glVertex2f", x, y); }
void RecordingCommands::vertex3f(float x, float y, float z) { record("glVertex3f", x, y, z); }
void RecordingCommands::texCoord2f(float s, float t) { record("glTexCoord2f", s, t); }
void RecordingCommands::color4f(float red, float green, float blue, float alpha) {
    record("glColor4f", red, green, blue, alpha);
}

void RecordingCommands::rectf(float x1, float y1, float x2, float y2) {
    record("glRectf", x1, y1, x2, y2);
    isOutsideBegin();
}

void RecordingCommands::matrixMode(MatrixMode mode) {
    record("glMatrixMode", mode);
    if (isOutsideBegin()) m_state.matrix_mode = mode;
}

void RecordingCommands::loadIdentity() {
    record("glLoadIdentity");
    isOutsideBegin();
}

void RecordingCommands::ortho(double left, double right, double bottom, double top, double near, double far) {
    record("glOrtho", left, right, bottom, top, near, far);
    isOutsideBegin();
}

void RecordingCommands::frustum(double left, double right, double bottom, double top, double near,
                                double far) {
    record("glFrustum", left, right, bottom, top, near, far);
    isOutsideBegin();
}

void RecordingCommands::translatef(float x, float y, float z) {
    record("glTranslatef", x, y, z);
    isOutsideBegin();
}

void RecordingCommands::scalef(float x, float y, float z) {
    record("glScalef", x, y, z);
    isOutsideBegin();
}

void RecordingCommands::rotatef(float degrees, float x, float y, float z) {
    record("glRotatef", degrees, x, y, z);
    isOutsideBegin();
}

void RecordingCommands::multMatrixf(const Matrix& matrix) {
    record("glMultMatrixf", matrix);
    isOutsideBegin();
}

void RecordingCommands::pushMatrix() {
    record("glPushMatrix");
    if (!isOutsideBegin()) return;
    const std::size_t limit =
        m_state.matrix_mode == MatrixMode::ModelView ? modelViewStackDepth : projectionStackDepth;
    std::size_t& depth = m_matrix_depths[m_state.matrix_mode];
    if (depth + 1 == limit) return noteError(Error::StackOverflow);
    ++depth;
}

void RecordingCommands::popMatrix() {
    record("glPopMatrix");
    if (!isOutsideBegin()) return;
    std::size_t& depth = m_matrix_depths[m_state.matrix_mode];
    if (depth == 0) return noteError(Error::StackUnderflow);
    --depth;
}

void RecordingCommands::pushAttrib(AttribBits bits) {
    record("glPushAttrib", bits);
    if (!isOutsideBegin()) return;
    if (m_attribs.size() == attribStackDepth) return noteError(Error::StackOverflow);
    m_attribs.push_back({bits, m_state});
}

void RecordingCommands::popAttrib() {
    record("glPopAttrib");
    if (!isOutsideBegin()) return;
    if (m_attribs.empty()) return noteError(Error::StackUnderflow);
    restore(m_attribs.back());
    m_attribs.pop_back();
}

void RecordingCommands::restore(const SavedState& saved) {
    const auto bringBack = [&](Capability capability, AttribBits bit) {
        if (!contains(saved.bits, bit | AttribBits::Enable)) return;
        m_state.enabled.erase(capability);
        if (saved.state.enabled.contains(capability)) m_state.enabled.insert(capability);
    };
    bringBack(Capability::LineSmooth, AttribBits::Line);
    bringBack(Capability::CullFace, AttribBits::Polygon);
    bringBack(Capability::DepthTest, AttribBits::DepthBuffer);
    bringBack(Capability::Blend, AttribBits::ColorBuffer);
    bringBack(Capability::Texture2D, AttribBits::Texture);
    bringBack(Capability::TextureRectangle, AttribBits::Texture);
    if (contains(saved.bits, AttribBits::Transform)) m_state.matrix_mode = saved.state.matrix_mode;
    if (contains(saved.bits, AttribBits::Viewport)) m_state.viewport = saved.state.viewport;
    if (contains(saved.bits, AttribBits::Texture)) m_state.bindings = saved.state.bindings;
}

void RecordingCommands::enable(Capability capability) {
    record("glEnable", capability);
    if (isOutsideBegin()) m_state.enabled.insert(capability);
}

void RecordingCommands::disable(Capability capability) {
    record("glDisable", capability);
    if (isOutsideBegin()) m_state.enabled.erase(capability);
}

bool RecordingCommands::isEnabled(Capability capability) { return m_state.enabled.contains(capability); }

void RecordingCommands::blendFunc(BlendFactor source, BlendFactor destination) {
    record("glBlendFunc", source, destination);
    isOutsideBegin();
}

void RecordingCommands::blendColor(float red, float green, float blue, float alpha) {
    record("glBlendColor", red, green, blue, alpha);
    isOutsideBegin();
}

void RecordingCommands::cullFace(CullFaceMode mode) {
    record("glCullFace", mode);
    isOutsideBegin();
}

void RecordingCommands::lineWidth(float width) {
    record("glLineWidth", width);
    if (isOutsideBegin() && !(width > 0)) noteError(Error::InvalidValue);
}

void RecordingCommands::hint(HintTarget target, HintMode mode) {
    record("glHint", target, mode);
    isOutsideBegin();
}

void RecordingCommands::genTextures(std::size_t count, unsigned* names) {
    record("glGenTextures", count);
    if (!isOutsideBegin()) return;
    for (std::size_t i = 0; i < count; ++i) {
        names[i] = ++m_last_name;
        m_live_names.insert(m_last_name);
    }
    m_generated += count;
}

void RecordingCommands::deleteTextures(std::size_t count, const unsigned* names) {
    record("glDeleteTextures", std::vector<unsigned>(names, names + count));
    if (!isOutsideBegin()) return;
    for (std::size_t i = 0; i < count; ++i) {
        m_deleted += m_live_names.erase(names[i]);
        for (auto& [target, bound] : m_state.bindings) {
            if (bound == names[i]) bound = 0;
        }
    }
}

void RecordingCommands::bindTexture(TextureTarget target, unsigned name) {
    record("glBindTexture", target, name);
    if (isOutsideBegin()) m_state.bindings[target] = name;
}

void RecordingCommands::texParameteri(TextureTarget target, TexParameter parameter, TexParameterValue value) {
    record("glTexParameteri", target, parameter, value);
    isOutsideBegin();
}

void RecordingCommands::texEnvi(TexEnvMode mode) {
    m_lines.push_back("glTexEnvi(GL_TEXTURE_ENV, GL_TEXTURE_ENV_MODE, " + nameOf(mode) + ")");
    isOutsideBegin();
}

void RecordingCommands::pixelStorei(PixelStore parameter, int value) {
    record("glPixelStorei", parameter, value);
    if (isOutsideBegin()) m_pixel_store[parameter] = value;
}

void RecordingCommands::texImage2D(TextureTarget target, int width, int height, PixelFormat format,
                                   PixelType type, const void* pixels) {
    m_lines.push_back("glTexImage2D(" + nameOf(target) + ", 0, GL_RGBA, " + wordOf(width) + ", " +
                      wordOf(height) + ", 0, " + nameOf(format) + ", " + nameOf(type) + ", " +
                      wordOf(pixels) + ")");
    if (!isOutsideBegin()) return;
    if (width < 0 || height < 0) return noteError(Error::InvalidValue);
    Upload upload{m_state.bindings[target], target, width, height, format, type, {}};
    const auto row = static_cast<std::size_t>(width) * 4;
    const int rowLength = m_pixel_store[PixelStore::UnpackRowLength];
    const std::size_t stride = rowLength == 0 ? row : static_cast<std::size_t>(rowLength) * 4;
    if (pixels != nullptr) upload.pixels.resize(row * static_cast<std::size_t>(height));
    for (std::size_t y = 0; !upload.pixels.empty() && y < static_cast<std::size_t>(height); ++y) {
        std::memcpy(upload.pixels.data() + y * row, static_cast<const std::uint8_t*>(pixels) + y * stride,
                    row);
    }
    m_uploads.push_back(std::move(upload));
}

void RecordingCommands::copyTexSubImage2D(TextureTarget target, int xOffset, int yOffset, int x, int y,
                                          int width, int height) {
    record("glCopyTexSubImage2D", target, 0, xOffset, yOffset, x, y, width, height);
    isOutsideBegin();
}

void RecordingCommands::textureRangeApple(TextureTarget target, std::size_t length, const void* pointer) {
    record("glTextureRangeAPPLE", target, length, pointer);
    isOutsideBegin();
}

void RecordingCommands::viewport(int x, int y, int width, int height) {
    record("glViewport", x, y, width, height);
    if (!isOutsideBegin()) return;
    if (width < 0 || height < 0) return noteError(Error::InvalidValue);
    m_state.viewport = {x, y, width, height};
}

void RecordingCommands::clearColor(float red, float green, float blue, float alpha) {
    record("glClearColor", red, green, blue, alpha);
    isOutsideBegin();
}

void RecordingCommands::clear(ClearBits bits) {
    record("glClear", bits);
    isOutsideBegin();
}

void RecordingCommands::readBufferBack() {
    m_lines.emplace_back("glReadBuffer(GL_BACK)");
    isOutsideBegin();
}

void RecordingCommands::readPixels(int x, int y, int width, int height, void* pixels) {
    m_lines.push_back("glReadPixels(" + wordOf(x) + ", " + wordOf(y) + ", " + wordOf(width) + ", " +
                      wordOf(height) + ", GL_RGBA, GL_UNSIGNED_BYTE, " +
                      wordOf(static_cast<const void*>(pixels)) + ")");
    if (!isOutsideBegin()) return;
    if (width < 0 || height < 0) return noteError(Error::InvalidValue);
    auto* rgba = static_cast<std::uint8_t*>(pixels);
    std::fill_n(rgba, static_cast<std::size_t>(width) * static_cast<std::size_t>(height) * 4,
                std::uint8_t{0});
    if (m_pixel_source) m_pixel_source(x, y, width, height, rgba);
}

std::string RecordingCommands::getString(StringName name) {
    switch (name) {
    case StringName::Vendor:
        return m_facts.vendor;
    case StringName::Renderer:
        return m_facts.renderer;
    case StringName::Version:
        return m_facts.version;
    case StringName::Extensions:
        return m_facts.extensions;
    }
    noteError(Error::InvalidEnum);
    return {};
}

Error RecordingCommands::getError() {
    if (m_errors.empty()) return std::exchange(m_own_error, Error::None);
    const Error error = m_errors.front();
    m_errors.pop_front();
    return error;
}

void RecordingCommands::flush() { record("glFlush"); }
void RecordingCommands::finish() { record("glFinish"); }

} // namespace Imaging::Platform
