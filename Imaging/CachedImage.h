#pragma once

/// Rendered pictures, and the nodes that hold one. Programs include this header; the library's own parts
/// include the one of the two that they need.

#include "Imaging/CCImage.h"     // IWYU pragma: export
#include "Imaging/PictureNode.h" // IWYU pragma: export
