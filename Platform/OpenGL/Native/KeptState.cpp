// Reads the state that drawing changes, puts OpenGL's defaults in its place, and writes it back at the
// end.

#include "Platform/OpenGL/Native/KeptState.h"

#include <epoxy/gl.h>

#include <utility>

namespace Imaging::Platform {

namespace {

int integerOf(GLenum name) {
    GLint value = 0;
    glGetIntegerv(name, &value);
    return value;
}

void setCapability(GLenum name, bool isOn) { isOn ? glEnable(name) : glDisable(name); }

/// What must be off for plain drawing, and since which version it exists.
struct Switch {
    GLenum name;
    int sinceDesktop;
    int sinceES;
};
constexpr int never = 1000;
constexpr Switch switches[] = {
    {GL_BLEND, 0, 0},
    {GL_CULL_FACE, 0, 0},
    {GL_DEPTH_TEST, 0, 0},
    {GL_SCISSOR_TEST, 0, 0},
    {GL_STENCIL_TEST, 0, 0},
    {GL_POLYGON_OFFSET_FILL, 0, 0},
    {GL_SAMPLE_ALPHA_TO_COVERAGE, 0, 0},
    {GL_SAMPLE_COVERAGE, 0, 0},
    {GL_COLOR_LOGIC_OP, 0, never},
    {GL_RASTERIZER_DISCARD, 30, 30},
    {GL_FRAMEBUFFER_SRGB, 30, never},
};

constexpr std::array<GLenum, 3> matrixModes{GL_PROJECTION, GL_TEXTURE, GL_MODELVIEW};
constexpr std::array<GLenum, 3> matrixNames{GL_PROJECTION_MATRIX, GL_TEXTURE_MATRIX, GL_MODELVIEW_MATRIX};

} // namespace

KeptState::KeptState(const OpenGLFacts& facts)
    : m_profile(facts.profile),
      m_version(10 * facts.majorVersion + facts.minorVersion),
      m_has_rectangles(facts.rectangleTextures) {
    if (m_profile == OpenGLProfile::Compatibility) keepFixedFunction();
    keepBindings();
    keepTextures();
    keepCapabilities();
    keepBlending();
    keepMasks();
    keepPixelStore();
    glGetFloatv(GL_COLOR_CLEAR_VALUE, m_clear_color.data());
    glGetIntegerv(GL_VIEWPORT, m_viewport.data());
}

void KeptState::restore() {
    glViewport(m_viewport[0], m_viewport[1], m_viewport[2], m_viewport[3]);
    glClearColor(m_clear_color[0], m_clear_color[1], m_clear_color[2], m_clear_color[3]);
    for (const PixelStoreValue& kept : m_pixel_store) glPixelStorei(kept.name, kept.value);
    restoreMasks();
    restoreBlending();
    restoreCapabilities();
    restoreTextures();
    restoreBindings();
    if (m_profile == OpenGLProfile::Compatibility) restoreFixedFunction();
}

void KeptState::keepCapabilities() {
    for (const Switch& one : switches) {
        if (m_version < (m_profile == OpenGLProfile::ES ? one.sinceES : one.sinceDesktop)) continue;
        m_capabilities.push_back({one.name, glIsEnabled(one.name) == GL_TRUE});
        glDisable(one.name);
    }
}

void KeptState::restoreCapabilities() {
    for (const Capability& kept : m_capabilities) setCapability(kept.name, kept.isOn);
}

void KeptState::keepBlending() {
    constexpr GLenum factors[] = {GL_BLEND_SRC_RGB, GL_BLEND_SRC_ALPHA, GL_BLEND_DST_RGB, GL_BLEND_DST_ALPHA};
    for (std::size_t i = 0; i < m_blend_factors.size(); ++i) m_blend_factors[i] = integerOf(factors[i]);
    glBlendFunc(GL_ONE, GL_ZERO);
    if (m_version >= 20) {
        m_blend_equations = {integerOf(GL_BLEND_EQUATION_RGB), integerOf(GL_BLEND_EQUATION_ALPHA)};
        glBlendEquation(GL_FUNC_ADD);
    }
    glGetFloatv(GL_BLEND_COLOR, m_blend_color.data());
}

void KeptState::restoreBlending() {
    const auto [sourceColor, sourceAlpha, targetColor, targetAlpha] = m_blend_factors;
    glBlendFuncSeparate(static_cast<GLenum>(sourceColor), static_cast<GLenum>(targetColor),
                        static_cast<GLenum>(sourceAlpha), static_cast<GLenum>(targetAlpha));
    glBlendColor(m_blend_color[0], m_blend_color[1], m_blend_color[2], m_blend_color[3]);
    if (m_version < 20) return;
    glBlendEquationSeparate(static_cast<GLenum>(m_blend_equations[0]),
                            static_cast<GLenum>(m_blend_equations[1]));
}

void KeptState::keepMasks() {
    glGetBooleanv(GL_COLOR_WRITEMASK, m_color_mask.data());
    glGetBooleanv(GL_DEPTH_WRITEMASK, &m_depth_mask);
    m_depth_func = integerOf(GL_DEPTH_FUNC);
    m_cull_mode = integerOf(GL_CULL_FACE_MODE);
    m_front_face = integerOf(GL_FRONT_FACE);
    glColorMask(GL_TRUE, GL_TRUE, GL_TRUE, GL_TRUE);
    glDepthMask(GL_TRUE);
    glDepthFunc(GL_LESS);
    glCullFace(GL_BACK);
    glFrontFace(GL_CCW);
    if (!hasPolygonMode()) return;
    glGetIntegerv(GL_POLYGON_MODE, m_polygon_mode.data());
    glPolygonMode(GL_FRONT_AND_BACK, GL_FILL);
}

void KeptState::restoreMasks() {
    glColorMask(m_color_mask[0], m_color_mask[1], m_color_mask[2], m_color_mask[3]);
    glDepthMask(m_depth_mask);
    glDepthFunc(static_cast<GLenum>(m_depth_func));
    glCullFace(static_cast<GLenum>(m_cull_mode));
    glFrontFace(static_cast<GLenum>(m_front_face));
    // Contexts with fixed function get both sides back with their attributes.
    if (hasPolygonMode()) glPolygonMode(GL_FRONT_AND_BACK, static_cast<GLenum>(m_polygon_mode[0]));
}

void KeptState::keepPixelStore() {
    constexpr PixelStoreValue defaults[] = {{GL_UNPACK_ROW_LENGTH, 0},  {GL_UNPACK_SKIP_ROWS, 0},
                                            {GL_UNPACK_SKIP_PIXELS, 0}, {GL_UNPACK_ALIGNMENT, 4},
                                            {GL_PACK_ROW_LENGTH, 0},    {GL_PACK_SKIP_ROWS, 0},
                                            {GL_PACK_SKIP_PIXELS, 0},   {GL_PACK_ALIGNMENT, 4}};
    for (const PixelStoreValue& one : defaults) {
        m_pixel_store.push_back({one.name, integerOf(one.name)});
        glPixelStorei(one.name, one.value);
    }
    if (m_profile == OpenGLProfile::ES) return;
    for (const GLenum name : {GL_UNPACK_SWAP_BYTES, GL_PACK_SWAP_BYTES}) {
        m_pixel_store.push_back({name, integerOf(name)});
        glPixelStorei(name, 0);
    }
}

void KeptState::keepTextures() {
    m_active_texture = integerOf(GL_ACTIVE_TEXTURE);
    glActiveTexture(GL_TEXTURE0);
    m_texture_2d = integerOf(GL_TEXTURE_BINDING_2D);
    if (m_has_rectangles) m_texture_rectangle = integerOf(GL_TEXTURE_BINDING_RECTANGLE);
    // Samplers would replace what textures say of themselves.
    if (m_version < (m_profile == OpenGLProfile::ES ? 30 : 33)) return;
    m_sampler = integerOf(GL_SAMPLER_BINDING);
    if (m_sampler != 0) glBindSampler(0, 0);
}

void KeptState::restoreTextures() {
    glActiveTexture(GL_TEXTURE0);
    glBindTexture(GL_TEXTURE_2D, static_cast<GLuint>(m_texture_2d));
    if (m_has_rectangles) glBindTexture(GL_TEXTURE_RECTANGLE, static_cast<GLuint>(m_texture_rectangle));
    if (m_sampler != 0) glBindSampler(0, static_cast<GLuint>(m_sampler));
    glActiveTexture(static_cast<GLenum>(m_active_texture));
}

void KeptState::keepBindings() {
    if (m_version >= 15) m_array_buffer = integerOf(GL_ARRAY_BUFFER_BINDING);
    if (m_version >= 20) m_program = integerOf(GL_CURRENT_PROGRAM);
    if (m_program != 0) glUseProgram(0);
    if (m_version >= 21) {
        m_unpack_buffer = integerOf(GL_PIXEL_UNPACK_BUFFER_BINDING);
        m_pack_buffer = integerOf(GL_PIXEL_PACK_BUFFER_BINDING);
    }
    if (m_unpack_buffer != 0) glBindBuffer(GL_PIXEL_UNPACK_BUFFER, 0);
    if (m_pack_buffer != 0) glBindBuffer(GL_PIXEL_PACK_BUFFER, 0);
    if (m_version < 30) return;
    m_vertex_array = integerOf(GL_VERTEX_ARRAY_BINDING);
    m_read_frame_buffer = integerOf(GL_READ_FRAMEBUFFER_BINDING);
    glBindFramebuffer(GL_READ_FRAMEBUFFER, static_cast<GLuint>(integerOf(GL_DRAW_FRAMEBUFFER_BINDING)));
    m_read_buffer = integerOf(GL_READ_BUFFER);
}

void KeptState::restoreBindings() {
    if (m_version >= 30) {
        // The buffer that is read belongs to the frame buffer that was drawn on.
        if (integerOf(GL_READ_BUFFER) != m_read_buffer) glReadBuffer(static_cast<GLenum>(m_read_buffer));
        glBindFramebuffer(GL_READ_FRAMEBUFFER, static_cast<GLuint>(m_read_frame_buffer));
        glBindVertexArray(static_cast<GLuint>(m_vertex_array));
    }
    if (m_version >= 15) glBindBuffer(GL_ARRAY_BUFFER, static_cast<GLuint>(m_array_buffer));
    if (m_unpack_buffer != 0) glBindBuffer(GL_PIXEL_UNPACK_BUFFER, static_cast<GLuint>(m_unpack_buffer));
    if (m_pack_buffer != 0) glBindBuffer(GL_PIXEL_PACK_BUFFER, static_cast<GLuint>(m_pack_buffer));
    if (m_version >= 20) glUseProgram(static_cast<GLuint>(m_program));
}

/// Attributes go to the application's own stack, which keeps them until it is popped.
void KeptState::keepFixedFunction() {
    glPushAttrib(GL_ALL_ATTRIB_BITS);
    glPushClientAttrib(GL_CLIENT_ALL_ATTRIB_BITS);
    const int units = integerOf(GL_MAX_TEXTURE_UNITS);
    for (int unit = units - 1; unit >= 0; --unit) {
        glActiveTexture(GL_TEXTURE0 + static_cast<GLenum>(unit));
        for (const GLenum target : {GL_TEXTURE_1D, GL_TEXTURE_2D, GL_TEXTURE_3D, GL_TEXTURE_CUBE_MAP})
            glDisable(target);
        if (m_has_rectangles) glDisable(GL_TEXTURE_RECTANGLE);
    }
    for (const GLenum name :
         {GL_LIGHTING, GL_FOG, GL_ALPHA_TEST, GL_LINE_SMOOTH, GL_LINE_STIPPLE, GL_POLYGON_STIPPLE,
          GL_POLYGON_SMOOTH, GL_TEXTURE_GEN_S, GL_TEXTURE_GEN_T, GL_COLOR_SUM}) {
        glDisable(name);
    }
    glShadeModel(GL_SMOOTH);
    glLineWidth(1);
    glColor4f(1, 1, 1, 1);
    glTexEnvi(GL_TEXTURE_ENV, GL_TEXTURE_ENV_MODE, GL_MODULATE);
    for (std::size_t i = 0; i < m_matrices.size(); ++i) {
        glGetFloatv(matrixNames.at(i), m_matrices.at(i).data());
        glMatrixMode(matrixModes.at(i));
        glLoadIdentity();
    }
}

void KeptState::restoreFixedFunction() {
    const int active = integerOf(GL_ACTIVE_TEXTURE);
    glActiveTexture(GL_TEXTURE0); // whose texture matrix was kept
    for (std::size_t i = 0; i < m_matrices.size(); ++i) {
        glMatrixMode(matrixModes.at(i));
        glLoadMatrixf(m_matrices.at(i).data());
    }
    glActiveTexture(static_cast<GLenum>(active));
    glPopClientAttrib();
    glPopAttrib();
}

} // namespace Imaging::Platform
