#pragma once

#include <memory>
#include <string>
#include <vector>

namespace Imaging::Platform {
class NSImage;
}

/// The frame's pictures as they are drawn, for the program that writes them and the test that compares them
/// with the files.
namespace Resources {

struct FramePiece {
    std::string name; ///< the file's, without ".png"
    std::shared_ptr<Imaging::Platform::NSImage> picture;
};

/// The nine pieces, row by row from the top left one.
std::vector<FramePiece> drawnFramePieces();

} // namespace Resources
