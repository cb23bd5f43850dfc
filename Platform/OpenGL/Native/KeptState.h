#pragma once

// Internal: the state of an application's context, kept while the library draws in it. Not installed.

#include "Platform/OpenGL/OpenGLFacts.h"

#include <array>
#include <vector>

namespace Imaging::Platform {

/// Takes note of what the library changes in a context, and of what would change its drawing, and puts all of
/// that to OpenGL's defaults. The frame buffer that is bound for drawing stays, and is read from too.
///
/// Kept are: capabilities, blending, culling, depth, masks, the clear colour, the viewport, how pixels are
/// packed, texture unit 0 with its bindings and sampler, and the program, vertex array, buffers and frame
/// buffers that are bound; with fixed function also all attributes and the current matrices. Texture units
/// beyond the first keep their bindings untouched.
class KeptState {
public:
    /// While the context of these facts is current.
    explicit KeptState(const OpenGLFacts& facts);

    /// While it is current again. Once.
    void restore();

    /// x, y, width and height as the application had set it.
    const std::array<int, 4>& viewport() const { return m_viewport; }

private:
    void keepCapabilities();
    void keepBlending();
    void keepMasks();
    void keepPixelStore();
    void keepTextures();
    void keepBindings();
    void keepFixedFunction();
    void restoreCapabilities();
    void restoreBlending();
    void restoreMasks();
    void restoreTextures();
    void restoreBindings();
    void restoreFixedFunction();
    bool hasPolygonMode() const { return m_profile != OpenGLProfile::ES; }

    struct Capability {
        unsigned name;
        bool isOn;
    };
    struct PixelStoreValue {
        unsigned name;
        int value;
    };

    OpenGLProfile m_profile;
    int m_version; ///< 10 · major + minor
    bool m_has_rectangles;

    std::vector<Capability> m_capabilities;
    std::array<int, 4> m_blend_factors{}; // colour and alpha of source, then of destination
    std::array<int, 2> m_blend_equations{};
    std::array<float, 4> m_blend_color{};
    std::array<unsigned char, 4> m_color_mask{};
    unsigned char m_depth_mask = 1;
    int m_depth_func = 0;
    int m_cull_mode = 0;
    int m_front_face = 0;
    std::array<int, 2> m_polygon_mode{};
    std::array<float, 4> m_clear_color{};
    std::array<int, 4> m_viewport{};
    std::vector<PixelStoreValue> m_pixel_store;
    int m_active_texture = 0;
    int m_texture_2d = 0;
    int m_texture_rectangle = 0;
    int m_sampler = 0;
    int m_program = 0;
    int m_vertex_array = 0;
    int m_array_buffer = 0;
    int m_unpack_buffer = 0;
    int m_pack_buffer = 0;
    int m_read_frame_buffer = 0;
    int m_read_buffer = 0;
    std::array<std::array<float, 16>, 3> m_matrices{}; // projection, texture, modelview
};

} // namespace Imaging::Platform
