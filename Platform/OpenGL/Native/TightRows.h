#pragma once

// Internal: rows of pixels without padding, for a while. Not installed.

#include <array>

namespace Imaging::Platform {

/// Until its end, pixels are read and written in rows of 32-bit pixels without padding; then as before. While
/// a context is current.
class TightRows {
public:
    TightRows();
    ~TightRows();
    TightRows(const TightRows&) = delete;
    TightRows& operator=(const TightRows&) = delete;

private:
    std::array<int, 4> m_before{};
};

} // namespace Imaging::Platform
