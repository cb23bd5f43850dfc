#pragma once

#include "Platform/Foundation/Export.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <span>

namespace Imaging::Platform {

/// Attributes of pixel formats. The comment says whether a value follows. The numbers are the platform's own.
enum NSOpenGLPixelFormatAttribute : std::uint32_t {
    NSOpenGLPFADoubleBuffer = 5,   ///< none: draw into a back buffer that `flushBuffer` shows
    NSOpenGLPFAColorSize = 8,      ///< bits of a pixel's colour, alpha included where it is 32
    NSOpenGLPFAAlphaSize = 11,     ///< bits of alpha
    NSOpenGLPFADepthSize = 12,     ///< bits of depth
    NSOpenGLPFAStencilSize = 13,   ///< bits of stencil
    NSOpenGLPFAOffScreen = 53,     ///< none: for views that are not on a screen
    NSOpenGLPFASampleBuffers = 55, ///< 0 or 1: several samples a pixel
    NSOpenGLPFASamples = 56,       ///< samples a pixel
    NSOpenGLPFAOpenGLProfile = 99, ///< one of the profiles below; without it, the first that the machine has
};

/// Which OpenGL a context is to speak.
enum NSOpenGLProfile : std::uint32_t {
    NSOpenGLProfileVersionES3_0 = 0x0300,  ///< OpenGL ES 3.0 or later; a number of this library's own
    NSOpenGLProfileVersionLegacy = 0x1000, ///< with fixed function
    NSOpenGLProfileVersion3_2Core = 0x3200 ///< core profile 3.2 or later
};

/// What a context's buffers are to be like. Sizes are wishes for at least so many bits; a context takes the
/// nearest that the machine has, 24 bits of depth where 32 are not to be had for instance. Values; any
/// thread.
class IMAGING_EXPORT NSOpenGLPixelFormat {
public:
    /// The format of a list of attributes and their values that ends with 0. Null when an attribute is
    /// unknown, its value is missing or beyond 128 bits or samples, or the 0 is.
    static std::shared_ptr<const NSOpenGLPixelFormat>
    pixelFormatWithAttributes(std::span<const std::uint32_t> attributes);

    /// What a view gets that asks for nothing: double buffered, 8 bits a sample with alpha, 24 of depth.
    static std::shared_ptr<const NSOpenGLPixelFormat> defaultPixelFormat();

    bool isDoubleBuffered() const { return m_double_buffered; }
    bool isOffScreen() const { return m_off_screen; }
    int colorSize() const { return m_color_size; }
    int alphaSize() const { return m_alpha_size; }
    int depthSize() const { return m_depth_size; }
    int stencilSize() const { return m_stencil_size; }
    /// 0 for one sample a pixel.
    int samples() const { return m_has_samples ? m_samples : 0; }
    /// Nothing where any will do: fixed function where there is, else core, else ES.
    std::optional<NSOpenGLProfile> profile() const { return m_profile; }

private:
    NSOpenGLPixelFormat() = default;
    bool takeFlag(std::uint32_t attribute);
    bool takeValue(std::uint32_t attribute, std::uint32_t value);

    bool m_double_buffered = false;
    bool m_off_screen = false;
    bool m_has_samples = false;
    int m_color_size = 24;
    int m_alpha_size = 0;
    int m_depth_size = 0;
    int m_stencil_size = 0;
    int m_samples = 4;
    std::optional<NSOpenGLProfile> m_profile;
};

} // namespace Imaging::Platform
