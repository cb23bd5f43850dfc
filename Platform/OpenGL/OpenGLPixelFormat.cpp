// Reads lists of attributes, which end with 0, into a record that contexts are made from.

#include "Platform/OpenGL/OpenGLPixelFormat.h"

#include <array>
#include <cstddef>

namespace Imaging::Platform {

namespace {

/// More than any hardware has, and few enough to be told from a list that lost its place.
constexpr std::uint32_t largestValue = 128;

} // namespace

bool NSOpenGLPixelFormat::takeFlag(std::uint32_t attribute) {
    switch (attribute) {
    case NSOpenGLPFADoubleBuffer:
        m_double_buffered = true;
        return true;
    case NSOpenGLPFAOffScreen:
        m_off_screen = true;
        return true;
    default:
        return false;
    }
}

bool NSOpenGLPixelFormat::takeValue(std::uint32_t attribute, std::uint32_t value) {
    if (attribute == NSOpenGLPFAOpenGLProfile) {
        m_profile = static_cast<NSOpenGLProfile>(value);
        return value == NSOpenGLProfileVersionES3_0 || value == NSOpenGLProfileVersionLegacy ||
               value == NSOpenGLProfileVersion3_2Core;
    }
    if (value > largestValue) return false;
    const int number = static_cast<int>(value);
    switch (attribute) {
    case NSOpenGLPFAColorSize:
        m_color_size = number;
        return true;
    case NSOpenGLPFAAlphaSize:
        m_alpha_size = number;
        return true;
    case NSOpenGLPFADepthSize:
        m_depth_size = number;
        return true;
    case NSOpenGLPFAStencilSize:
        m_stencil_size = number;
        return true;
    case NSOpenGLPFASampleBuffers:
        m_has_samples = number > 0;
        return true;
    case NSOpenGLPFASamples:
        m_samples = number;
        return true;
    default:
        return false;
    }
}

std::shared_ptr<const NSOpenGLPixelFormat>
NSOpenGLPixelFormat::pixelFormatWithAttributes(std::span<const std::uint32_t> attributes) {
    std::shared_ptr<NSOpenGLPixelFormat> format(new NSOpenGLPixelFormat);
    for (std::size_t i = 0; i < attributes.size(); ++i) {
        if (attributes[i] == 0) return format;
        if (format->takeFlag(attributes[i])) continue;
        if (i + 1 == attributes.size() || !format->takeValue(attributes[i], attributes[i + 1]))
            return nullptr;
        ++i;
    }
    return nullptr;
}

std::shared_ptr<const NSOpenGLPixelFormat> NSOpenGLPixelFormat::defaultPixelFormat() {
    const std::array<std::uint32_t, 8> attributes{NSOpenGLPFADoubleBuffer,
                                                  NSOpenGLPFAColorSize,
                                                  32,
                                                  NSOpenGLPFAAlphaSize,
                                                  8,
                                                  NSOpenGLPFADepthSize,
                                                  24,
                                                  0};
    return pixelFormatWithAttributes(attributes);
}

} // namespace Imaging::Platform
