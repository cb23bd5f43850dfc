// Sets the pixel storage that rows without padding need, and what it was again at the end.

#include "Platform/OpenGL/Native/TightRows.h"

#include <epoxy/gl.h>

#include <cstddef>

namespace Imaging::Platform {

namespace {

constexpr std::array<GLenum, 4> parameters{GL_UNPACK_ROW_LENGTH, GL_UNPACK_ALIGNMENT, GL_PACK_ROW_LENGTH,
                                           GL_PACK_ALIGNMENT};
constexpr std::array<int, 4> tight{0, 4, 0, 4};

void set(const std::array<int, 4>& values) {
    for (std::size_t i = 0; i < parameters.size(); ++i) glPixelStorei(parameters.at(i), values.at(i));
}

} // namespace

TightRows::TightRows() {
    for (std::size_t i = 0; i < parameters.size(); ++i) glGetIntegerv(parameters.at(i), &m_before.at(i));
    set(tight);
}

TightRows::~TightRows() { set(m_before); }

} // namespace Imaging::Platform
